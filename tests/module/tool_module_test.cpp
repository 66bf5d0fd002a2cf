// oru dso, oru modules and oru backtrace: their output against the library's
// own answers in this process, nm(1)-independent offsets from readelf(1).
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "module_test_support.h"
#include "tool_runner.h"

namespace {

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The symbol's value in the file (its offset in the object) from readelf.
unsigned long symbol_value(const std::string& file, const std::string& name) {
  std::istringstream table(
      command_output(std::string(ORU_READELF) + " -W --dyn-syms '" + file + "'"));
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::string number, value, size, type, bind, vis, ndx, symbol;
    if (fields >> number >> value >> size >> type >> bind >> vis >> ndx >> symbol &&
        symbol == name) {
      return std::strtoul(value.c_str(), nullptr, 16);
    }
  }
  return 0;
}

TEST(ToolDso, AttributesAndSymbols) {
  scratch_dir dir;
  run_result r = run_oru({"dso", ORU_SAMPLE_LINK, "sample_add", "sample_counter"}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> out = lines_of(r.out);
  ASSERT_EQ(out.size(), 12u) << r.out;
  EXPECT_EQ(out[0], std::string("Path: ") + ORU_SAMPLE_LINK);
  const char* names[] = {"FileVersion", "ProductVersion", "CompanyName",     "FileDescription",
                         "ProductName", "InternalName",   "OriginalFilename"};
  for (int a = 1; a <= 7; ++a) {
    char value[256];
    std::string expected =
        oruGetFileVersionString(ORU_SAMPLE_LINK, a, value, sizeof value) == ORU_OK ? value : "-";
    EXPECT_EQ(out[a], std::string(names[a - 1]) + ": " + expected);
  }
  EXPECT_EQ(out[8], "FileVersionNumbers: 3.4.5.0");
  EXPECT_EQ(out[9], "ProductVersionNumbers: 3.0.0.0");
  const std::string file = real_path(ORU_SAMPLE_FILE);
  for (int i = 0; i < 2; ++i) {
    const std::string name = i == 0 ? "sample_add" : "sample_counter";
    char expected[64];
    std::snprintf(expected, sizeof expected, "(offset %#lx in the object)",
                  symbol_value(file, name));
    EXPECT_EQ(out[10 + i].rfind(name + ": 0x", 0), 0u) << out[10 + i];
    EXPECT_NE(out[10 + i].find(expected), std::string::npos) << out[10 + i] << " " << expected;
  }
}

TEST(ToolDso, LoaderMessagesOnFailure) {
  scratch_dir dir;
  run_result r = run_oru({"dso", "/nonexistent/libnone.so"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("/nonexistent/libnone.so"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find(oruStrError(ORU_E_DSO_LOAD)), std::string::npos) << r.err;

  r = run_oru({"dso", ORU_SAMPLE_LINK, "sample_none", "sample_add"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("sample_none"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find(oruStrError(ORU_E_SYMBOL)), std::string::npos) << r.err;
  EXPECT_NE(r.out.find("sample_add: 0x"), std::string::npos) << "the other symbols go on";

  EXPECT_EQ(run_oru({"dso"}, dir.path()).status, 2);
}

TEST(ToolModules, TheToolAndItsLibrary) {
  scratch_dir dir;
  run_result r = run_oru({"modules"}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> out = lines_of(r.out);
  ASSERT_GE(out.size(), 3u);
  auto path_of = [](const std::string& line) {
    std::istringstream fields(line);
    std::string base, size, path;
    fields >> base >> size >> path;
    EXPECT_EQ(base.rfind("0x", 0), 0u) << line;
    EXPECT_GT(std::strtoull(size.c_str(), nullptr, 10), 0u) << line;
    return path;
  };
  EXPECT_EQ(real_path(path_of(out[0])), real_path(ORU_TOOL_PATH));
  // The tool's library is the one this test links.
  oruModuleInfo m{};
  bool found_library = false;
  for (const std::string& line : out) {
    std::string path = path_of(line);
    if (path[0] == '/' && find_module(real_path(path), m) &&
        real_path(path).find("liboru.so") != std::string::npos) {
      found_library = true;
    }
  }
  EXPECT_TRUE(found_library) << r.out;
  EXPECT_EQ(run_oru({"modules", "extra"}, dir.path()).status, 2);
}

TEST(ToolBacktrace, NamedFramesFromInnermost) {
  scratch_dir dir;
  run_result r = run_oru({"backtrace"}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> out = lines_of(r.out);
  ASSERT_GE(out.size(), 5u) << r.out;
  const char* names[] = {"capture_innermost(void**)", "capture_middle(void**)",
                         "capture_outer(void**)"};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(out[i].rfind("#" + std::to_string(i) + " 0x", 0), 0u) << out[i];
    EXPECT_NE(out[i].find(real_path(ORU_TOOL_PATH)), std::string::npos) << out[i];
#if ORU_HAVE_LIBDW
    // The tool exports none of these: their names come from the full symbol
    // table, which only the DWARF reader reads.
    EXPECT_NE(out[i].find(names[i]), std::string::npos) << out[i];
    EXPECT_NE(out[i].find("cmd_backtrace.cpp:"), std::string::npos) << out[i];
#endif
  }
#if ORU_HAVE_LIBDW
  bool main_seen = false;
  for (const std::string& line : out)
    main_seen = main_seen || line.find(" main+0x") != std::string::npos;
  EXPECT_TRUE(main_seen) << r.out;
#else
  (void)names;
#endif
}

}  // namespace
