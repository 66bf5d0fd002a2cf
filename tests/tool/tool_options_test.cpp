// The tool's own option parser at its edges.  The tool parses its options
// itself, so these hold whichever getopt the process is bound to: the
// library's (BSD, no permutation) or the C library's.
#include <gtest/gtest.h>

#include <sys/utsname.h>

#include <cctype>
#include <string>
#include <vector>

#include "tool_runner.h"

namespace {

TEST(ToolOptions, EdgeCases) {
  scratch_dir dir;
  struct {
    std::vector<std::string> args;
    int status;
    std::string out;  // exact standard output
    std::string err;  // a part of standard error ("" for none at all)
  } const cases[] = {
      // Operands before, between and after options (GNU order, unlike BSD).
      {{"path", "base", "a/b", "-d", "c/d"}, 2, "", "options belong to 'temp' only"},
      {{"path", "temp", dir.path(), "-d", "-p", "x"}, 0, "", ""},
      {{"path", "base", "x/y", "--", "-d"}, 0, "y\n-d\n", ""},
      {{"path", "base", "-", "a/-"}, 0, "-\n-\n", ""},
      {{"path", "join", "--", "-a", "-b"}, 0, "-a/-b\n", ""},
      // Bundled flags with an attached value, and every value form.
      {{"path", "temp", "-dp", "pre", "-sSUF", dir.path()}, 0, "", ""},
      {{"path", "temp", "--pre=", "--suffix", "-x", dir.path()}, 0, "", ""},
      // Values that look like options are taken as values.
      {{"random", "-n", "-1"}, 2, "", ""},
      {{"random", "-s", "--count", "-n2"}, 2, "", ""},
      // A negative number is an operand.
      {{"error", "-2147024809"}, 0, "", ""},
      // Usage errors with their messages.
      {{"path", "temp", "-dz"}, 2, "", "invalid option -- 'z'"},
      {{"path", "temp", "-p"}, 2, "", "option requires an argument -- 'p'"},
      {{"path", "temp", "--prefix"}, 2, "", "option '--prefix' requires an argument"},
      {{"path", "temp", "--directory=yes"}, 2, "", "option '--directory' doesn't allow"},
      {{"error", "--"}, 2, "", "missing operand"},
      {{"random", "--nope"}, 2, "", "unrecognized option '--nope'"},
      {{"hash", "-c", "x", "--help"}, 0, "", ""},
  };
  for (const auto& c : cases) {
    const run_result r = run_oru(c.args, dir.path());
    const std::string shown = testing::PrintToString(c.args);
    EXPECT_EQ(r.status, c.status) << shown << "\n" << r.err;
    if (!c.out.empty()) {
      EXPECT_EQ(r.out, c.out) << shown;
    }
    if (c.err.empty() && c.status == 0) {
      EXPECT_EQ(r.err, "") << shown;
    }
    if (!c.err.empty()) {
      EXPECT_NE(r.err.find(c.err), std::string::npos) << shown << "\n" << r.err;
    }
    if (c.status == 2) {
      EXPECT_EQ(r.out, "") << shown;
    }
  }
}

// `oru info` shows the system facts as the library reports them; the tool
// itself is the running program.
TEST(ToolInfo, SystemFacts) {
  scratch_dir dir;
  const run_result r = run_oru({"info"}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  struct utsname names;
  ASSERT_EQ(uname(&names), 0);
  std::string host = names.nodename;
  for (char& c : host) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const std::string tool = ORU_TOOL_PATH;
  for (const std::string& line :
       {"host name: " + host, std::string("system name: Linux"), std::string("system type: 1"),
        std::string("program name: oru"), "program path: " + tool,
        std::string("remote session: no"), std::string("terminal server: no")}) {
    EXPECT_NE(r.out.find("\n" + line), std::string::npos) << line << "\n" << r.out;
  }
  EXPECT_NE(r.out.find("\naccount domain: "), std::string::npos);
  EXPECT_NE(r.out.find("\narchitecture: "), std::string::npos);
}

}  // namespace
