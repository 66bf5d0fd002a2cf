// getopt: every branch with standard error captured, rescans, and the C
// library's getopt in its no-permutation mode ("+" optstrings) as an oracle
// for return values, optind, optarg and optopt.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <errno.h>

#include <string>
#include <vector>

#include "oru/system.h"

namespace {

// One getopt implementation and its variables.
struct parser {
  int (*next)(int, char* const*, const char*);
  char** arg;
  int* ind;
  int* err;
  int* opt;
};

const parser kOru = {getopt, &optarg, &optind, &opterr, &optopt};

// Runs one whole scan and writes down each answer: "a" for an option,
// "b=x" with its argument, "?z" and ":b" with optopt, and "end@N" with
// optind.  Each scan starts with optind = `start` (the caller's business).
std::string scan(const parser& p, const char* optstring, std::vector<std::string> args) {
  args.insert(args.begin(), "prog");
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  const int argc = static_cast<int>(args.size());
  std::string trace;
  for (int calls = 0; calls < 32; ++calls) {
    const int c = p.next(argc, argv.data(), optstring);
    if (!trace.empty()) trace += ' ';
    if (c == -1) return trace + "end@" + std::to_string(*p.ind);
    if (c == '?' || c == ':') {
      trace += static_cast<char>(c);
      trace += static_cast<char>(*p.opt);
    } else {
      trace += static_cast<char>(c);
      if (*p.arg != nullptr) trace += std::string("=") + *p.arg;
    }
  }
  return trace + " (no end)";
}

std::string oru_scan(const char* optstring, const std::vector<std::string>& args) {
  optind = 1;
  optarg = nullptr;
  return scan(kOru, optstring, args);
}

TEST(Getopt, Branches) {
  struct {
    const char* optstring;
    std::vector<std::string> args;
    const char* trace;
    const char* err;  // on standard error, "prog" standing for the program name
  } const cases[] = {
      {"ab:", {"-a", "-b", "x", "file"}, "a b=x end@4", ""},
      {"ab:", {"-abx"}, "a b=x end@2", ""},
      {"ab:", {"-ab", "x", "y"}, "a b=x end@3", ""},
      {"ab:", {"-a", "--", "-b"}, "a end@3", ""},
      {"ab:", {"-a", "--more", "-b"}, "a end@3", ""},
      {"ab:", {"-a", "-", "-b"}, "a end@2", ""},
      {"ab:", {"file", "-a"}, "end@1", ""},
      {"ab:", {}, "end@1", ""},
      {"ab:", {"-b", "-a"}, "b=-a end@3", ""},
      {"ab:", {"-b", ""}, "b= end@3", ""},
      {"ab", {"-z"}, "?z end@2", "prog: illegal option -- z\n"},
      {"ab",
       {"-zaz", "x"},
       "?z a ?z end@2",
       "prog: illegal option -- z\nprog: illegal option -- z\n"},
      {"ab", {"-:"}, "?: end@2", "prog: illegal option -- :\n"},
      {":ab", {"-z"}, "?z end@2", ""},
      {"b:", {"-b"}, "?b end@2", "prog: option requires an argument -- b\n"},
      {"ab:", {"-ab"}, "a ?b end@2", "prog: option requires an argument -- b\n"},
      {":b:", {"-b"}, ":b end@2", ""},
      // '-' as an option character counts only inside optstring.
      {"a-", {"-", "x"}, "- end@2", ""},
  };
  const std::string name = program_invocation_short_name;
  for (const auto& c : cases) {
    testing::internal::CaptureStderr();
    const std::string trace = oru_scan(c.optstring, c.args);
    const std::string err = testing::internal::GetCapturedStderr();
    std::string expected = c.err;
    for (size_t at = 0; (at = expected.find("prog", at)) != std::string::npos;) {
      expected.replace(at, 4, name);
      at += name.size();
    }
    EXPECT_EQ(trace, c.trace) << c.optstring << " " << testing::PrintToString(c.args);
    EXPECT_EQ(err, expected) << c.optstring << " " << testing::PrintToString(c.args);
  }
}

TEST(Getopt, OpterrZeroIsSilentAndOptargIsClearedOnlyByPlainOptions) {
  opterr = 0;
  testing::internal::CaptureStderr();
  EXPECT_EQ(oru_scan("ab:", {"-z", "-b"}), "?z ?b end@3");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  opterr = 1;

  char* argv[] = {const_cast<char*>("prog"), const_cast<char*>("-bx"), const_cast<char*>("-z"),
                  const_cast<char*>("-a"), nullptr};
  optind = 1;
  opterr = 0;
  EXPECT_EQ(getopt(4, argv, "ab:"), 'b');
  EXPECT_STREQ(optarg, "x");
  EXPECT_EQ(getopt(4, argv, "ab:"), '?');  // an error leaves optarg alone
  EXPECT_STREQ(optarg, "x");
  EXPECT_EQ(getopt(4, argv, "ab:"), 'a');
  EXPECT_EQ(optarg, nullptr);
  EXPECT_EQ(getopt(4, argv, "ab:"), -1);
  opterr = 1;
}

TEST(Getopt, SecondScanAfterTheEnd) {
  const std::vector<std::string> args = {"-ab", "x", "-a", "rest"};
  EXPECT_EQ(oru_scan("ab:", args), "a b=x a end@4");
  EXPECT_EQ(oru_scan("ab:", args), "a b=x a end@4");
  // The end leaves nothing behind: a different argv scans from its start.
  EXPECT_EQ(oru_scan("ab:", {"-ba", "-a"}), "b=a a end@3");
}

TEST(Getopt, DashInsideAClusterEndsTheScanAndLeavesNothingBehind) {
  static char a[] = "prog", b[] = "-a-b", c[] = "x";
  static char* argv[] = {a, b, c, nullptr};
  optind = 1;
  EXPECT_EQ(getopt(3, argv, "ab"), 'a');
  EXPECT_EQ(getopt(3, argv, "ab"), -1);
  EXPECT_EQ(optind, 1);
  // Like every end, it leaves the position empty: a new scan of another
  // argv starts at its first argument, not inside "-a-b" (whose storage
  // may be gone by then).
  static char d[] = "-a", e[] = "y";
  static char* other[] = {a, d, e, nullptr};
  optind = 1;
  EXPECT_EQ(getopt(3, other, "ab"), 'a');
  EXPECT_EQ(getopt(3, other, "ab"), -1);
  EXPECT_EQ(optind, 2);
  optind = 1;
}

TEST(Getopt, BadInputEndsTheScan) {
  char* argv[] = {const_cast<char*>("prog"), const_cast<char*>("-a"), nullptr};
  // Through a pointer: the C library's declaration says these are never null.
  int (*volatile next)(int, char* const*, const char*) = getopt;
  optind = 1;
  EXPECT_EQ(next(2, nullptr, "a"), -1);
  EXPECT_EQ(next(2, argv, nullptr), -1);
  optind = -3;
  EXPECT_EQ(getopt(2, argv, "a"), -1);
  optind = 5;
  EXPECT_EQ(getopt(2, argv, "a"), -1);
  EXPECT_EQ(optind, 5);
  // argc larger than the array: the terminating null ends it.
  optind = 2;
  EXPECT_EQ(getopt(3, argv, "a"), -1);
  // Option bytes above 127 come back unsigned, never as -1.
  char high[] = "-\xff";
  char* argv2[] = {const_cast<char*>("prog"), high, nullptr};
  optind = 1;
  EXPECT_EQ(getopt(2, argv2, "\xff"), 0xff);
  EXPECT_EQ(getopt(2, argv2, "\xff"), -1);
  optind = 1;
}

// The C library's getopt, asked directly in the C library so that this
// program's own binding (to liboru) does not matter.
bool c_library_parser(parser& p) {
  void* libc = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
  if (libc == nullptr) return false;
  p.next = reinterpret_cast<int (*)(int, char* const*, const char*)>(dlsym(libc, "getopt"));
  p.arg = static_cast<char**>(dlsym(libc, "optarg"));
  p.ind = static_cast<int*>(dlsym(libc, "optind"));
  p.err = static_cast<int*>(dlsym(libc, "opterr"));
  p.opt = static_cast<int*>(dlsym(libc, "optopt"));
  dlclose(libc);
  return p.next != nullptr && p.next != getopt && p.arg && p.ind && p.err && p.opt &&
         p.ind != &optind;
}

TEST(Getopt, AgreesWithTheCLibraryWithoutPermutation) {
  parser libc{};
  if (!c_library_parser(libc)) GTEST_SKIP() << "the C library's getopt is not reachable";
  // Tokens on which both describe the same parser: no '-' inside a cluster
  // and no "--x" (GNU reads that as options).
  const std::vector<std::string> tokens = {"-a", "-b", "-ab", "-ba", "-bx", "-abx", "x",
                                           "-",  "--", "-z",  "-az", "-za", "-:",   "-b:"};
  const char* const optstrings[] = {"ab:", ":ab:", "a:b", "ab"};
  opterr = 0;
  *libc.err = 0;
  int compared = 0;
  std::vector<std::string> args;
  auto compare = [&](const char* optstring) {
    optind = 1;
    optarg = nullptr;
    const std::string ours = scan(kOru, optstring, args);
    *libc.ind = 0;  // a full restart of the C library's parser
    *libc.arg = nullptr;
    const std::string theirs = scan(libc, (std::string("+") + optstring).c_str(), args);
    ++compared;
    return ours == theirs ? testing::AssertionSuccess()
                          : testing::AssertionFailure()
                                << optstring << " " << testing::PrintToString(args)
                                << "\n  oru: " << ours << "\n libc: " << theirs;
  };
  for (const char* optstring : optstrings) {
    const size_t n = tokens.size();
    for (size_t count = 0; count <= 3; ++count) {
      size_t total = 1;
      for (size_t i = 0; i < count; ++i) total *= n;
      for (size_t k = 0; k < total; ++k) {
        args.clear();
        for (size_t i = 0, v = k; i < count; ++i, v /= n) args.push_back(tokens[v % n]);
        ASSERT_TRUE(compare(optstring));
      }
    }
  }
  opterr = 1;
  *libc.err = 1;
  EXPECT_GT(compared, 10000);
}

}  // namespace
