// Running a check where a crash or a hang cannot take the test runner with
// it: in a fresh copy of the test program, or in a forked child, each with a
// hang guard (SIGALRM ends a process that is still running after it).
#ifndef ORU_TESTS_THREAD_FRESH_PROCESS_H
#define ORU_TESTS_THREAD_FRESH_PROCESS_H

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>

#if defined(__SANITIZE_THREAD__)
#define ORU_TEST_UNDER_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORU_TEST_UNDER_TSAN 1
#endif
#endif

#if defined(__SANITIZE_ADDRESS__)
#define ORU_TEST_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORU_TEST_UNDER_ASAN 1
#endif
#endif

namespace oru_test {

// Generous: only a hung implementation ever reaches them.
inline constexpr unsigned kProcessGuardSeconds = 60;
inline constexpr unsigned kChildGuardSeconds = 20;

// Runs check() in a fresh copy of the test program (the thread-safe
// death-test style starts it anew), which starts with one thread; the test
// passes when check() returns true.  Diagnostics go to standard error, which
// gtest shows on failure.
template <class Check>
void expect_in_fresh_process(Check check) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        alarm(kProcessGuardSeconds);
        _exit(check() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

// Runs body() in a forked child and waits for it; true when body returned
// true, false when it returned false, crashed or hung.
template <class Body>
bool in_forked_child(Body body) {
  pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    alarm(kChildGuardSeconds);
    _exit(body() ? 0 : 1);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace oru_test

#endif  // ORU_TESTS_THREAD_FRESH_PROCESS_H
