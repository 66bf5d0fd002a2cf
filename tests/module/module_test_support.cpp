#include "module_test_support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

loaded_sample::loaded_sample() {
  EXPECT_EQ(oruDsoLoad(ORU_SAMPLE_LINK, &dso), ORU_OK) << oruDsoGetErrorText();
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

std::string real_path(const std::string& path) {
  std::error_code error;
  std::string real = std::filesystem::canonical(path, error).string();
  return error ? path : real;
}

bool find_module(const std::string& path, oruModuleInfo& found) {
  oruModuleInfo* list = nullptr;
  size_t count = 0;
  EXPECT_EQ(oruGetModuleList(&list, &count), ORU_OK);
  bool hit = false;
  for (size_t i = 0; i < count && !hit; ++i) {
    if (list[i].path[0] == '/' && real_path(list[i].path) == path) {
      found = list[i];
      found.path = nullptr;  // the block is freed below
      hit = true;
    }
  }
  oruFree(list);
  return hit;
}

std::string command_output(const std::string& command) {
  std::string out;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return out;
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
  pclose(pipe);
  return out;
}

line_answer addr2line(const std::string& file, size_t offset) {
  std::ostringstream command;
  command << ORU_ADDR2LINE << " -f -C -e '" << file << "' 0x" << std::hex << offset;
  std::istringstream out(command_output(command.str()));
  line_answer answer;
  std::string where;
  std::getline(out, answer.function);
  std::getline(out, where);
  // "FILE:LINE", possibly followed by " (discriminator N)".
  size_t colon = where.rfind(':');
  if (colon != std::string::npos) {
    answer.file = where.substr(0, colon);
    answer.line = static_cast<unsigned>(std::strtoul(where.c_str() + colon + 1, nullptr, 10));
  }
  return answer;
}

std::string base_name(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}
