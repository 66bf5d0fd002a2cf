// The fatal-error routine: caption, context, system text, exit code 1.

#include "core/oru_internal.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#endif

#include <cerrno>
#include <string>

namespace {

// Other tests of this binary start the library's background thread; a death
// test that only forks would inherit its locks in whatever state they were.
class FatalErrorDeathTest : public testing::Test {
 protected:
  void SetUp() override {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
#if defined(_WIN32)
    // Standard error, not a message box (inherited by the child).
    SetEnvironmentVariableA("ORU_FATAL_STDERR", "1");
#endif
  }
};

#if defined(_WIN32)

// The numbers are Win32 error numbers here, and the texts the system's (the
// test run sets ORU_FATAL_STDERR, so the text goes to standard error rather
// than into a message box).
TEST_F(FatalErrorDeathTest, WritesCaptionContextAndSystemTextThenExits1) {
  EXPECT_EXIT(oru_fatal_error(5, "initialize[oru_thread]: CreateThread"),
              testing::ExitedWithCode(1),
              "^Fatal YDA error: initialize\\[oru_thread\\]: CreateThread: .+\n$");
}

TEST_F(FatalErrorDeathTest, AllocationFailureNamesMemory) {
  EXPECT_EXIT(oru_fatal_error(ORU_FATAL_OUT_OF_MEMORY, "reaper[oru_thread]: calloc"),
              testing::ExitedWithCode(1),
              "^Fatal YDA error: reaper\\[oru_thread\\]: calloc: .*memory.*\n$");
}

TEST_F(FatalErrorDeathTest, NumberWithoutTextIsNamed) {
  EXPECT_EXIT(oru_fatal_error(0xFFFF, "ctx"), testing::ExitedWithCode(1),
              "^Fatal YDA error: ctx: error 65535\n$");
}

#else

TEST_F(FatalErrorDeathTest, WritesCaptionContextAndSystemTextThenExits1) {
  EXPECT_EXIT(oru_fatal_error(EAGAIN, "initialize[oru_thread]: CreateThread"),
              testing::ExitedWithCode(1),
              "^Fatal YDA error: initialize\\[oru_thread\\]: CreateThread: "
              "Resource temporarily unavailable\n$");
}

TEST_F(FatalErrorDeathTest, AllocationFailureNamesMemory) {
  EXPECT_EXIT(oru_fatal_error(ORU_FATAL_OUT_OF_MEMORY, "reaper[oru_thread]: calloc"),
              testing::ExitedWithCode(1),
              "^Fatal YDA error: reaper\\[oru_thread\\]: calloc: Cannot allocate memory\n$");
}

#endif  // _WIN32

TEST_F(FatalErrorDeathTest, LongContextIsCutNotOverrun) {
  std::string context(3000, 'x');
  EXPECT_EXIT(oru_fatal_error(EIO, context.c_str()), testing::ExitedWithCode(1),
              "^Fatal YDA error: x+\n$");
}

TEST_F(FatalErrorDeathTest, UnknownNumberStillGivesAText) {
  EXPECT_EXIT(oru_fatal_error(999999, "ctx"), testing::ExitedWithCode(1),
              "^Fatal YDA error: ctx: .+\n$");
}

}  // namespace
