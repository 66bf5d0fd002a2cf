// Concurrent first calls of the cached program facts agree on one pointer.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "oru/system.h"

namespace {

TEST(SystemInfoThreads, ConcurrentFirstCallsAgree) {
  constexpr int kThreads = 16;
  std::atomic<int> waiting{kThreads};
  std::vector<const char*> names(kThreads), paths(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      // Start together, so that several threads find the caches empty.
      waiting.fetch_sub(1);
      while (waiting.load() > 0) std::this_thread::yield();
      paths[i] = oruGetProgramPath();
      names[i] = oruGetProgramName();
    });
  }
  for (std::thread& t : threads) t.join();
  ASSERT_NE(names[0], nullptr);
  ASSERT_NE(paths[0], nullptr);
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(names[i], names[0]);
    EXPECT_EQ(paths[i], paths[0]);
  }
#if defined(_WIN32)
  EXPECT_STREQ(names[0], "oru_system_sysinfo_thread_tests.exe");
#else
  EXPECT_STREQ(names[0], "oru_system_sysinfo_thread_tests");
#endif
  EXPECT_EQ(oruGetProgramName(), names[0]);
}

}  // namespace
