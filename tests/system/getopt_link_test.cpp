// Which getopt a program gets: programs linked with liboru get its BSD
// getopt; programs that link only the C library keep the C library's, even
// with liboru in the process through a helper library or dlopen.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tool_runner.h"

namespace {

TEST(GetoptBinding, ProgramsChooseTheirGetopt) {
  scratch_dir dir;
  struct {
    const char* program;
    const char* name;
    bool bsd;
  } const probes[] = {
      {GETOPT_PROBE_DIRECT, "getopt_probe_direct", true},
      {GETOPT_PROBE_INDIRECT, "getopt_probe_indirect", false},
      {GETOPT_PROBE_DLOPEN, "getopt_probe_dlopen", false},
  };
  for (const auto& p : probes) {
    // The operand first: BSD stops there, the C library permutes.
    const run_result r = run_program(p.program, {"file", "-a", "-bv"}, dir.path());
    ASSERT_EQ(r.status, 0) << p.name << ": " << r.err;
    const std::string expected =
        std::string("name ") + p.name + "\n" +
        (p.bsd ? "optind 1\nargv file\nargv -a\nargv -bv\n"
               : "opt a\nopt b v\noptind 3\nargv -a\nargv -bv\nargv file\n");
    EXPECT_EQ(r.out, expected) << p.name;
    EXPECT_EQ(r.err, "") << p.name;

    // The messages tell the implementations apart too.
    const run_result bad = run_program(p.program, {"-z"}, dir.path());
    EXPECT_EQ(bad.out, std::string("name ") + p.name + "\nopt ?\noptind 2\nargv -z\n");
    if (p.bsd) {
      EXPECT_EQ(bad.err, std::string(p.name) + ": illegal option -- z\n");
    } else {
      EXPECT_EQ(bad.err.find("illegal option"), std::string::npos) << bad.err;
      EXPECT_NE(bad.err.find("-- 'z'"), std::string::npos) << bad.err;
    }
  }
}

#if !defined(ORU_SANITIZED)
// Preloaded, liboru comes before the C library in the lookup order; only the
// version recorded in the program's reference keeps it on the C library.
TEST(GetoptBinding, PreloadedLibraryDoesNotCaptureTheCLibrarysGetopt) {
  scratch_dir dir;
  ASSERT_EQ(setenv("LD_PRELOAD", ORU_LIBRARY_PATH, 1), 0);
  const run_result r = run_program(GETOPT_PROBE_INDIRECT, {"file", "-a"}, dir.path());
  unsetenv("LD_PRELOAD");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "name getopt_probe_indirect\nopt a\noptind 2\nargv -a\nargv file\n");
}
#endif

}  // namespace
