#include "oru/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <thread>
#include <vector>

namespace {

TEST(Once, RejectsNullArguments) {
  oruOnce once = ORU_ONCE_INIT;
  EXPECT_EQ(oruInitOnce(nullptr, [] {}), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruInitOnce(&once, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(once, nullptr);
}

std::atomic<int> g_runs{0};
std::atomic<int> g_arrived{0};
std::atomic<bool> g_finished{false};
constexpr int kRacers = 8;

void slow_init() {
  ++g_runs;
  // Keep init running until every racer has called in, so that the others
  // really arrive while it runs and must be held back.
  while (g_arrived.load() < kRacers) std::this_thread::yield();
  g_finished = true;
}

// Control blocks live as long as the process, so the slots are static.
oruOnce g_racers_once = ORU_ONCE_INIT;

TEST(Once, RunsOnceAndHoldsLatecomersUntilDone) {
  oruOnce& once = g_racers_once;
  std::atomic<int> early{0};
  std::vector<std::thread> racers;
  for (int i = 0; i < kRacers; ++i) {
    racers.emplace_back([&] {
      ++g_arrived;
      EXPECT_EQ(oruInitOnce(&once, slow_init), ORU_OK);
      if (!g_finished) ++early;
    });
  }
  for (auto& racer : racers) racer.join();
  EXPECT_EQ(g_runs, 1);
  EXPECT_EQ(early, 0);
  EXPECT_EQ(oruInitOnce(&once, slow_init), ORU_OK);
  EXPECT_EQ(g_runs, 1);
  EXPECT_NE(once, nullptr);
}

oruOnce g_recursive = ORU_ONCE_INIT;
int g_recursive_runs = 0;
oruResult g_inner_result = ORU_E_FAIL;

void recursive_init() {
  ++g_recursive_runs;
  g_inner_result = oruInitOnce(&g_recursive, recursive_init);
}

TEST(Once, CallFromInsideInitReturnsWithoutRunningAgain) {
  EXPECT_EQ(oruInitOnce(&g_recursive, recursive_init), ORU_OK);
  EXPECT_EQ(g_recursive_runs, 1);
  EXPECT_EQ(g_inner_result, ORU_OK);
}

int g_first = 0, g_second = 0;
oruOnce g_a = ORU_ONCE_INIT, g_b = ORU_ONCE_INIT;

TEST(Once, SlotsAreIndependent) {
  oruOnce& a = g_a;
  oruOnce& b = g_b;
  EXPECT_EQ(oruInitOnce(&a, [] { ++g_first; }), ORU_OK);
  EXPECT_EQ(oruInitOnce(&b, [] { ++g_second; }), ORU_OK);
  EXPECT_EQ(oruInitOnce(&a, [] { ++g_first; }), ORU_OK);
  EXPECT_EQ(g_first, 1);
  EXPECT_EQ(g_second, 1);
}

TEST(Atomic, ReportsTheSignOfTheNewValue) {
  struct Case {
    int32_t before;
    int increment;  // expected result of an increment from before
    int decrement;  // expected result of a decrement from before
  };
  const Case cases[] = {
      {-2, -1, -1},
      {-1, 0, -1},
      {0, 1, -1},
      {1, 1, 0},
      {2, 1, 1},
      // The counter wraps; the sign reported is judged as documented.
      {INT32_MAX, 1, 1},
      {INT32_MIN, -1, 1},
  };
  for (const Case& c : cases) {
    int32_t value = c.before;
    EXPECT_EQ(oruAtomicIncrement(&value), c.increment) << c.before;
    EXPECT_EQ(value, static_cast<int32_t>(static_cast<uint32_t>(c.before) + 1u));
    value = c.before;
    EXPECT_EQ(oruAtomicDecrement(&value), c.decrement) << c.before;
    EXPECT_EQ(value, static_cast<int32_t>(static_cast<uint32_t>(c.before) - 1u));
  }
  EXPECT_EQ(oruAtomicIncrement(nullptr), 0);
  EXPECT_EQ(oruAtomicDecrement(nullptr), 0);
}

TEST(Atomic, CountsExactlyUnderContention) {
  int32_t counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 10000; ++i) {
        if (t % 2 == 0) {
          oruAtomicIncrement(&counter);
        } else {
          oruAtomicDecrement(&counter);
        }
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(counter, 0);
  // Plain increments after the race still see the counter's real value.
  EXPECT_EQ(oruAtomicIncrement(&counter), 1);
  EXPECT_EQ(oruAtomicDecrement(&counter), 0);
}

}  // namespace
