// The `oru` tool: dispatch and help, exit statuses, stdout/stderr
// separation, -o output files, and the error, random, time and info
// commands against the library itself and the C library's calendar.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "oru/core.h"
#include "oru/hash.h"
#include "tool_runner.h"

namespace {

const char* const kCommands[] = {"error", "hash", "info", "iso3166", "names", "random", "time"};

bool starts_with(const std::string& s, const std::string& prefix) {
  return s.compare(0, prefix.size(), prefix) == 0;
}

TEST(ToolDispatch, HelpVersionAndUsageErrors) {
  scratch_dir dir;
  const run_result list = run_oru({"help"}, dir.path());
  EXPECT_EQ(list.status, 0);
  EXPECT_EQ(list.err, "");
  for (const char* c : kCommands) {
    EXPECT_NE(list.out.find(std::string("\n  ") + c + " "), std::string::npos) << c;
    const run_result help = run_oru({c, "--help"}, dir.path());
    EXPECT_EQ(help.status, 0) << c;
    EXPECT_TRUE(starts_with(help.out, std::string("Usage: oru ") + c)) << help.out;
    EXPECT_EQ(run_oru({"help", c}, dir.path()).out, help.out) << c;
    // An unknown option is a usage error, reported on stderr only.
    const run_result bad = run_oru({c, "--no-such-option"}, dir.path());
    EXPECT_EQ(bad.status, 2) << c;
    EXPECT_EQ(bad.out, "") << c;
    EXPECT_NE(bad.err.find(std::string("Try 'oru ") + c + " --help'"), std::string::npos);
  }
  const run_result version = run_oru({"--version"}, dir.path());
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(starts_with(version.out, "oru ")) << version.out;
  EXPECT_NE(version.out.find(std::string("(library ") + oruGetVersion() + ")"), std::string::npos);

  struct {
    std::vector<std::string> args;
    int status;
  } const usage[] = {{{}, 2}, {{"nosuch"}, 2}, {{"help", "nosuch"}, 2}, {{"help", "a", "b"}, 2}};
  for (const auto& u : usage) {
    const run_result r = run_oru(u.args, dir.path());
    EXPECT_EQ(r.status, u.status);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err, "");
  }
}

TEST(ToolDispatch, GnuStyleOptions) {
  scratch_dir dir;
  const std::string expected = run_oru({"random", "-s", "7", "-n", "3"}, dir.path()).out;
  ASSERT_EQ(std::count(expected.begin(), expected.end(), '\n'), 3);
  const std::vector<std::vector<std::string>> same = {
      {"random", "-s7", "-n3"},
      {"random", "--seed=7", "--count", "3"},
      {"random", "--se=7", "--c=3"},                // unambiguous prefixes
      {"random", "-n", "1", "-s", "7", "-n", "3"},  // the last one counts
  };
  for (const auto& args : same) EXPECT_EQ(run_oru(args, dir.path()).out, expected);
  // Missing value, value given to a flag, ambiguous prefix: usage errors.
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{{"random", "-n"},
                                             {"random", "--count"},
                                             {"error", "--errno"},
                                             {"info", "--output"},
                                             {"hash", "--", "-a", "md5"},
                                             {"random", "extra"}}) {
    const run_result r = run_oru(args, dir.path());
    if (args[0] == "hash") {
      // After "--" everything is a file name: "-a" does not exist, "md5"
      // neither, a failure and not a usage error.
      EXPECT_EQ(r.status, 1);
    } else {
      EXPECT_EQ(r.status, 2) << args.back();
    }
  }
}

TEST(ToolError, CodesErrnosAndWin32Numbers) {
  scratch_dir dir;
  auto line = [](oruResult code, const char* name, const char* facility) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%08X", static_cast<unsigned>(code));
    std::string text = oruStrError(code);
    // System texts end in a line break; the tool keeps one line per code.
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return std::string(hex) + "\t" + name + "\t" + facility + "\t" + text + "\n";
  };
  struct {
    std::vector<std::string> args;
    std::string out;
  } const cases[] = {
      {{"0x96230003", "2518876163"},
       line(ORU_E_NOT_FOUND, "ORU_E_NOT_FOUND", "oru") +
           line(ORU_E_NOT_FOUND, "ORU_E_NOT_FOUND", "oru")},
      {{"--", "-2147024809"}, line(ORU_E_INVALID_ARG, "ORU_E_INVALID_ARG", "win32")},
      {{"0x80004005", "0x9623001c", "0x80040005"},
       line(ORU_E_FAIL, "ORU_E_FAIL", "generic") + line(ORU_E_NO_DEVICE, "ORU_E_NO_DEVICE", "oru") +
           line(static_cast<oruResult>(0x80040005u), "-", "facility-0x4")},
      {{"0"}, line(ORU_OK, "ORU_OK", "generic")},
      {{"-e", "ENOENT", "--errno=ENOTDIR", "-e99"},
       line(ORU_E_NOT_FOUND, "ORU_E_NOT_FOUND", "oru") +
           line(ORU_E_PATH_NOT_FOUND, "ORU_E_PATH_NOT_FOUND", "oru") +
           line(static_cast<oruResult>(0x96220063u), "-", "errno")},
      {{"--win32", "2403", "-w267", "--win32=2401"},
       line(static_cast<oruResult>(0x80070963u), "-", "win32") +
           line(ORU_E_INVALID_ARG, "ORU_E_INVALID_ARG", "win32") +
           line(ORU_E_BUSY, "ORU_E_BUSY", "oru")},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args{"error"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const run_result r = run_oru(args, dir.path());
    EXPECT_EQ(r.status, 0) << c.args[0];
    EXPECT_EQ(r.out, c.out);
    EXPECT_EQ(r.err, "");
  }
  // The texts of the library's own codes are its constant messages.
  EXPECT_NE(run_oru({"error", "0x96230005"}, dir.path()).out.find("\tIs a directory\n"),
            std::string::npos);

  // Malformed operands fail one by one; the others are still explained.
  const run_result bad = run_oru({"error", "zz", "0x96230003", "0x1FFFFFFFF", "0x"}, dir.path());
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.out, line(ORU_E_NOT_FOUND, "ORU_E_NOT_FOUND", "oru"));
  EXPECT_NE(bad.err.find("oru: error: malformed result code 'zz': "), std::string::npos);
  EXPECT_EQ(std::count(bad.err.begin(), bad.err.end(), '\n'), 3) << bad.err;
  EXPECT_EQ(run_oru({"error", "-e", "ENOSUCH"}, dir.path()).status, 1);
  EXPECT_EQ(run_oru({"error", "-w", "-1"}, dir.path()).status, 1);
  EXPECT_EQ(run_oru({"error"}, dir.path()).status, 2);
  // Options and operands are answered in command-line order.
  EXPECT_EQ(run_oru({"error", "0x96230003", "-w", "87", "-e", "EISDIR"}, dir.path()).out,
            line(ORU_E_NOT_FOUND, "ORU_E_NOT_FOUND", "oru") +
                line(ORU_E_INVALID_ARG, "ORU_E_INVALID_ARG", "win32") +
                line(ORU_E_IS_DIRECTORY, "ORU_E_IS_DIRECTORY", "oru"));
}

TEST(ToolRandom, TheLibrarySequence) {
  scratch_dir dir;
  // The generator's published first values from its fixed seed and seed 1.
  EXPECT_EQ(run_oru({"random", "-s", "0", "-n", "3"}, dir.path()).out,
            "520932930\n28925691\n822784415\n");
  EXPECT_EQ(run_oru({"random", "--seed=1", "--count=2"}, dir.path()).out, "16807\n282475249\n");
  uint32_t state = 4294967295u;
  std::string expected;
  for (int i = 0; i < 1000; ++i) expected += std::to_string(oruGetRandomNumber(&state)) + "\n";
  EXPECT_EQ(run_oru({"random", "-s", "4294967295", "-n", "1000"}, dir.path()).out, expected);
  EXPECT_EQ(run_oru({"random", "-n", "0"}, dir.path()).out, "");
  const run_result unseeded = run_oru({"random"}, dir.path());
  EXPECT_EQ(unseeded.status, 0);
  const unsigned long value = std::stoul(unseeded.out);
  EXPECT_TRUE(value >= 1 && value <= 2147483646u) << unseeded.out;
  for (const char* bad : {"-n-1", "-nx", "-s4294967296", "-s", "-n99999999999999999999"}) {
    EXPECT_EQ(run_oru({"random", bad}, dir.path()).status, 2) << bad;
  }
}

TEST(ToolTime, GivenAndCurrentTimes) {
  scratch_dir dir;
  // The C library's UTC calendar is the oracle.
  for (const char* at : {"0", "951782400.25", "1234567890.123456", "2147483647", "-86400"}) {
    const run_result r = run_oru({"time", "--at", at}, dir.path(), "");
    ASSERT_EQ(r.status, 0) << at << r.err;
    const double when = std::stod(at);
    const auto secs = static_cast<time_t>(when < 0 ? when : static_cast<long long>(when));
    std::tm tm{};
    gmtime_r(&secs, &tm);
    char date[64];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &tm);
    const int ms = static_cast<int>((when - static_cast<double>(secs)) * 1000 + 1e-6);
    char expected[128];
    static const char* const kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    std::snprintf(expected, sizeof expected, "\nutc: %s.%03d %s\n", date, ms, kDays[tm.tm_wday]);
    EXPECT_NE(r.out.find(expected), std::string::npos) << r.out << expected;
    EXPECT_TRUE(starts_with(r.out, "seconds: " + std::to_string(static_cast<long long>(secs))));
  }
  const time_t before = std::time(nullptr);
  const run_result now = run_oru({"time"}, dir.path());
  const time_t after = std::time(nullptr);
  ASSERT_EQ(now.status, 0);
  const long long reported = std::stoll(now.out.substr(now.out.find(' ') + 1));
  EXPECT_GE(reported, static_cast<long long>(before));
  EXPECT_LE(reported, static_cast<long long>(after));
  EXPECT_NE(now.out.find("\nlocal: "), std::string::npos);
  for (const char* bad : {"x", "1.", "1.1234567", "2147483648", "-1.5", ""}) {
    EXPECT_EQ(run_oru({"time", "-t", bad}, dir.path()).status, 2) << bad;
  }
}

TEST(ToolInfo, VersionAndFacts) {
  scratch_dir dir;
  const run_result r = run_oru({"info"}, dir.path());
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  EXPECT_TRUE(starts_with(r.out, std::string("library version: ") + oruGetVersion() + "\n"));
  EXPECT_NE(r.out.find("\nbyte order: little-endian\n"), std::string::npos);
  // In a fixed time zone the offset is known.
  const run_result kolkata =
      run_program("env", {"TZ=Asia/Kolkata", ORU_TOOL_PATH, "info"}, dir.path());
  if (kolkata.out.find("utc offset: +00:00") == std::string::npos) {
    EXPECT_NE(kolkata.out.find("\nutc offset: +05:30\n"), std::string::npos) << kolkata.out;
  }
}

TEST(ToolOutput, ReplacedOnlyOnSuccessNeverPartial) {
  scratch_dir dir;
  dir.write("data", "123456789");
  // Success: the file holds exactly what standard output would have held.
  const run_result to_stdout = run_oru({"hash", "data"}, dir.path());
  dir.write("out", "old contents\n");
  const run_result to_file = run_oru({"hash", "-o", "out", "data"}, dir.path());
  EXPECT_EQ(to_file.status, 0);
  EXPECT_EQ(to_file.out, "");
  EXPECT_EQ(dir.read("out"), to_stdout.out);
  // Failure half-way: the old file stays as it was and no temporary file
  // is left beside it.
  const run_result failed = run_oru({"hash", "--output=out", "data", "missing"}, dir.path());
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(dir.read("out"), to_stdout.out);
  EXPECT_EQ(dir.list(), (std::vector<std::string>{"data", "out"}));
  const run_result fresh = run_oru({"random", "-o", "new", "-n", "5", "-nx"}, dir.path());
  EXPECT_EQ(fresh.status, 2);
  EXPECT_FALSE(dir.exists("new"));
  // Unwritable places: below a regular file, in a missing directory, no name.
  for (const char* target : {"data/out", "nodir/out", ""}) {
    const run_result r = run_oru({"info", "-o", target}, dir.path());
    EXPECT_EQ(r.status, 1) << target;
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find(std::string("oru: info: cannot create output '") + target + "': "),
              std::string::npos)
        << r.err;
  }
  EXPECT_EQ(dir.list(), (std::vector<std::string>{"data", "out"}));
}

}  // namespace
