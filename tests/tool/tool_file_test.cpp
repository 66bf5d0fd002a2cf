// oru path and oru stat: output against the library's own calls and stat(2)
// with gmtime for the times.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "oru/file.h"
#include "tool_runner.h"

namespace {

std::string lib(oruResult (*fn)(const char*, char*, size_t), const std::string& path) {
  char out[4096];
  EXPECT_EQ(fn(path.c_str(), out, sizeof out), ORU_OK) << path;
  return out;
}

TEST(ToolPath, TextOperations) {
  scratch_dir dir;
  const std::vector<std::string> paths = {"a/./b/../c", "C:\\x\\..\\y", "\\\\srv\\sh\\d\\f", "file",
                                          "dir/"};
  std::vector<std::string> args = {"path", "dir"};
  args.insert(args.end(), paths.begin(), paths.end());
  run_result r = run_oru(args, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  std::string expected;
  for (const auto& p : paths) expected += lib(oruGetDirname, p) + "\n";
  EXPECT_EQ(r.out, expected);

  args[1] = "base";
  expected.clear();
  for (const auto& p : paths) expected += lib(oruGetBasename, p) + "\n";
  EXPECT_EQ(run_oru(args, dir.path()).out, expected);

  // abs runs in the scratch directory: "a/./b/../c" lands below it.
  r = run_oru({"path", "abs", "a/./b/../c", "C:\\x\\..\\y"}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  std::string real = std::filesystem::canonical(dir.path()).string();
  EXPECT_EQ(r.out, real + "/a/c\nC:\\y\n");

  EXPECT_EQ(run_oru({"path", "join", "C:\\d", "a"}, dir.path()).out, "C:\\d/a\n");
  EXPECT_EQ(run_oru({"path", "join", "", "a"}, dir.path()).out, "a\n");
}

TEST(ToolPath, CanonicalAndTemporaryNames) {
  scratch_dir dir;
  dir.write("f", "x");
  std::string real = std::filesystem::canonical(dir.path()).string();
  run_result r = run_oru({"path", "canon", "./f", "missing", "sub/../f"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, real + "/f\n");  // sub does not exist, so neither does sub/../f
  EXPECT_NE(r.err.find(oruStrError(ORU_E_NOT_FOUND)), std::string::npos) << r.err;

  r = run_oru({"path", "temp", "-p", "pre", "--suffix=.tmp", "."}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  ASSERT_EQ(r.out.size(), std::string("./pre12345678.tmp\n").size()) << r.out;
  EXPECT_EQ(r.out.compare(0, 5, "./pre"), 0);
  EXPECT_TRUE(std::filesystem::is_regular_file(dir.path() + "/" + r.out.substr(2, 15)));
  r = run_oru({"path", "temp", "-d", dir.path()}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(std::filesystem::is_directory(r.out.substr(0, r.out.size() - 1)));
  r = run_oru({"path", "temp", dir.path() + "/missing"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "");
}

TEST(ToolPath, UsageErrors) {
  scratch_dir dir;
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{{"path"},
                                             {"path", "nosuch", "x"},
                                             {"path", "abs"},
                                             {"path", "join", "a"},
                                             {"path", "dir", "-d", "x"},
                                             {"path", "temp", "a", "b"},
                                             {"stat"},
                                             {"stat", "--bogus"}}) {
    run_result r = run_oru(args, dir.path());
    EXPECT_EQ(r.status, 2) << args[1];
    EXPECT_EQ(r.out, "");
  }
  for (const char* c : {"path", "stat"}) {
    run_result help = run_oru({c, "--help"}, dir.path());
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind(std::string("Usage: oru ") + c, 0), 0u);
  }
}

std::string utc(const struct timespec& t) {
  struct tm fields = {};
  time_t seconds = t.tv_sec;
  gmtime_r(&seconds, &fields);
  static const char* const days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03ld %s", fields.tm_year + 1900,
                fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec,
                t.tv_nsec / 1000000, days[fields.tm_wday]);
  return text;
}

TEST(ToolStat, AgainstStat) {
  scratch_dir dir;
  dir.write("f", "12345");
  std::string path = dir.path() + "/f";
  struct timespec times[2] = {{1000000000, 123456789}, {1500000000, 987654321}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  struct statvfs volume = {};
  ASSERT_EQ(statvfs(path.c_str(), &volume), 0);
  run_result r = run_oru({"stat", path, "missing", dir.path()}, dir.path());
  EXPECT_EQ(r.status, 1);
  std::string expected = path + ": file, 5 bytes, accessed " + utc(times[0]) + ", modified " +
                         utc(times[1]) + ", allocation unit " + std::to_string(volume.f_frsize) +
                         "\n";
  ASSERT_EQ(r.out.compare(0, expected.size(), expected), 0) << r.out;
  EXPECT_EQ(r.out.find(dir.path() + ": directory, ", expected.size()), expected.size()) << r.out;
  EXPECT_NE(r.err.find("'missing'"), std::string::npos) << r.err;
}

}  // namespace
