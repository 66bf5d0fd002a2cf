// The module tests' helpers on Windows: the sample DLL and the module list.
// (binutils' readers are the POSIX oracles and have no part here.)
#include <gtest/gtest.h>

#include <filesystem>

#include "module_test_support.h"

loaded_sample::loaded_sample() {
  EXPECT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, &dso), ORU_OK) << oruDsoGetErrorText();
  outer = reinterpret_cast<sample_chain>(symbol("sample_outer"));
}

loaded_sample::~loaded_sample() {
  if (dso != nullptr) {
    EXPECT_EQ(oruDsoUnload(dso), ORU_OK) << oruDsoGetErrorText();
  }
}

void* loaded_sample::symbol(const char* name) const {
  void* address = nullptr;
  EXPECT_EQ(oruDsoGetSymbol(dso, name, &address), ORU_OK) << oruDsoGetErrorText();
  return address;
}

// Windows paths compare without regard to case or the kind of separator.
std::string real_path(const std::string& path) {
  std::error_code error;
  std::string real = std::filesystem::weakly_canonical(path, error).make_preferred().string();
  if (error) real = path;
  for (char& c : real) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return real;
}

bool find_module(const std::string& path, oruModuleInfo& found) {
  oruModuleInfo* list = nullptr;
  size_t count = 0;
  EXPECT_EQ(oruGetModuleList(&list, &count), ORU_OK);
  bool hit = false;
  for (size_t i = 0; i < count && !hit; ++i) {
    if (real_path(list[i].path) == path) {
      found = list[i];
      found.path = nullptr;  // the block is freed below
      hit = true;
    }
  }
  oruFree(list);
  return hit;
}

std::string base_name(const std::string& path) {
  size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}
