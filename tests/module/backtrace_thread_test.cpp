// Backtraces captured and symbolized from many threads at once, through the
// sample object's chain of three calls (run under ThreadSanitizer too).
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "module_test_support.h"

namespace {

TEST(BacktraceThreads, ConcurrentCaptureAndSymbolization) {
  loaded_sample sample;
  ASSERT_NE(sample.outer, nullptr);
  constexpr int kThreads = 8;
  constexpr int kRounds = 200;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      void* frames[32];
      void* first[3] = {};
      for (int round = 0; round < kRounds; ++round) {
        size_t count = sample.outer(frames, 32);
        if (count < 4) ++wrong;
        if (round == 0) std::memcpy(first, frames, sizeof first);
        // The same call sites every time, whatever the other threads do.
        if (std::memcmp(first, frames, sizeof first) != 0) ++wrong;
      }
      // Symbolizing is thread-safe as well; once per thread keeps it quick.
      const char* names[] = {"sample_inner", "sample_middle", "sample_outer"};
      int i = t % 3;
      oruSymbolInfo* info = nullptr;
      if (oruSymbolizeAddress(first[i], &info) != ORU_OK || info->symbolName == nullptr ||
          std::strcmp(info->symbolName, names[i]) != 0) {
        ++wrong;
      }
      oruFree(info);
      // Loading and unloading concurrently with the others' use.
      oruDso own = nullptr;
      if (oruDsoLoad(ORU_SAMPLE_FILE, &own) != ORU_OK || oruDsoUnload(own) != ORU_OK) ++wrong;
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
