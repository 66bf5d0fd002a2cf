// Shared by the module tests: the sample object loaded through the library,
// the module list, and binutils' readelf(1) and addr2line(1) as oracles.
#ifndef ORU_TESTS_MODULE_MODULE_TEST_SUPPORT_H
#define ORU_TESTS_MODULE_MODULE_TEST_SUPPORT_H

#include "oru/module.h"

#include <cstddef>
#include <string>

// The sample's backtrace chain: outer calls middle calls inner, which
// captures into addresses.
using sample_chain = size_t (*)(void** addresses, size_t capacity);

// The sample object, loaded for the lifetime of the value.
struct loaded_sample {
  loaded_sample();
  ~loaded_sample();
  loaded_sample(const loaded_sample&) = delete;
  loaded_sample& operator=(const loaded_sample&) = delete;
  void* symbol(const char* name) const;

  oruDso dso = nullptr;
  sample_chain outer = nullptr;
};

// The real path of a file (symbolic links followed).
std::string real_path(const std::string& path);

// The module-list entry whose real path is `path`; false when none.
bool find_module(const std::string& path, oruModuleInfo& found);

// Standard output of a shell command.
std::string command_output(const std::string& command);

// addr2line's answer for an offset into a file.
struct line_answer {
  std::string function;
  std::string file;
  unsigned line = 0;
};
line_answer addr2line(const std::string& file, size_t offset);

std::string base_name(const std::string& path);

#endif  // ORU_TESTS_MODULE_MODULE_TEST_SUPPORT_H
