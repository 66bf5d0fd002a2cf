#include "oru/thread.h"

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <pthread.h>
#endif
#include <atomic>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "thread_test_support.h"
#if !defined(_WIN32)
#include "fresh_process.h"
#endif

namespace {

using oru_test::eventually;

oruTimeVal from_now(int32_t milliseconds) {
  oruTimeVal now{};
  oruGetCurrentTime(&now);
  oruTimeVal span{milliseconds / 1000, (milliseconds % 1000) * 1000};
  return oruTimeValAdd(&now, &span);
}

class CondVarTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(oruMutexInit(&mutex_), ORU_OK);
    ASSERT_EQ(oruCondVarInit(&cond_), ORU_OK);
  }
  void TearDown() override {
    EXPECT_EQ(oruCondVarDestroy(&cond_), ORU_OK);
    EXPECT_EQ(oruMutexDestroy(&mutex_), ORU_OK);
  }

  // Starts a thread that announces itself under the mutex and waits until
  // woken (counting the wake-up).  Returns once the thread is counted as a
  // waiter: it released the mutex inside the variable's guard, so holding
  // the mutex after seeing its announcement means it is inside the wait.
  void start_waiter() {
    waiters_.emplace_back([this] {
      oruMutexLock(&mutex_);
      ++announced_;
      EXPECT_EQ(oruCondVarWait(&cond_, &mutex_), ORU_OK);
      ++woken_;
      oruMutexUnlock(&mutex_);
    });
    int expected = static_cast<int>(waiters_.size());
    ASSERT_TRUE(eventually([&] {
      oruMutexLock(&mutex_);
      bool in = announced_ == expected;
      oruMutexUnlock(&mutex_);
      return in;
    }));
  }

  void join_waiters() {
    for (auto& waiter : waiters_) waiter.join();
    waiters_.clear();
  }

  oruMutex mutex_ = nullptr;
  oruCondVar cond_ = nullptr;
  std::vector<std::thread> waiters_;
  int announced_ = 0;  // under mutex_
  std::atomic<int> woken_{0};
};

TEST(CondVar, NullArgumentsAreRejected) {
  oruCondVar empty = nullptr;
  oruMutex mutex = nullptr;
  ASSERT_EQ(oruMutexInit(&mutex), ORU_OK);
  oruTimeVal deadline = from_now(1000);
  EXPECT_EQ(oruCondVarInit(nullptr), ORU_E_INVALID_ARG);
  for (oruCondVar* slot : {&empty, static_cast<oruCondVar*>(nullptr)}) {
    EXPECT_EQ(oruCondVarSignal(slot), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruCondVarBroadcast(slot), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruCondVarWait(slot, &mutex), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruCondVarTimedWait(slot, &mutex, &deadline), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruCondVarDestroy(slot), ORU_OK);
  }
  EXPECT_EQ(oruMutexDestroy(&mutex), ORU_OK);
}

TEST_F(CondVarTest, WaitWithoutMutexIsRejectedAndLeavesTheVariableUsable) {
  oruMutex empty = nullptr;
  EXPECT_EQ(oruCondVarWait(&cond_, &empty), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruCondVarWait(&cond_, nullptr), ORU_E_INVALID_ARG);
  oruTimeVal deadline = from_now(1000);
  EXPECT_EQ(oruCondVarTimedWait(&cond_, &mutex_, nullptr), ORU_E_INVALID_ARG);
  // Nobody is counted: signal and destroy (in TearDown) just work.
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  // A caller that does not hold its mutex is refused before waiting.
  EXPECT_EQ(oruCondVarWait(&cond_, &mutex_), ORU_E_ACCESS_DENIED);
  EXPECT_EQ(oruCondVarTimedWait(&cond_, &mutex_, &deadline), ORU_E_ACCESS_DENIED);
}

TEST_F(CondVarTest, PastDeadlineTimesOutAtOnceWithoutTheMutex) {
  ASSERT_EQ(oruMutexLock(&mutex_), ORU_OK);
  oruTimeVal past = from_now(-1000);
  EXPECT_EQ(oruCondVarTimedWait(&cond_, &mutex_, &past), ORU_E_TIMEDOUT);
  EXPECT_EQ(oru_test::try_lock_elsewhere(&mutex_), ORU_OK);
  EXPECT_EQ(oruMutexUnlock(&mutex_), ORU_E_ACCESS_DENIED);  // no longer ours
  // A null mutex slot is skipped on the way in, too.
  oruMutex empty = nullptr;
  EXPECT_EQ(oruCondVarTimedWait(&cond_, &empty, &past), ORU_E_TIMEDOUT);
}

// Less than a millisecond left counts as passed: the wait never begins and
// the mutex is not taken again.  Unlocking tells the two timeout paths
// apart, and unlock-then-lock leaves the mutex held on both.
TEST_F(CondVarTest, UnlockThenLockHoldsTheMutexAfterEitherTimeout) {
  for (int32_t microseconds : {500, 200000}) {
    ASSERT_EQ(oruMutexLock(&mutex_), ORU_OK);
    oruTimeVal now{};
    oruGetCurrentTime(&now);
    oruTimeVal span{0, microseconds};
    oruTimeVal deadline = oruTimeValAdd(&now, &span);
    ASSERT_EQ(oruCondVarTimedWait(&cond_, &mutex_, &deadline), ORU_E_TIMEDOUT);
    EXPECT_EQ(oruMutexUnlock(&mutex_), microseconds < 1000 ? ORU_E_ACCESS_DENIED : ORU_OK);
    ASSERT_EQ(oruMutexLock(&mutex_), ORU_OK);
    EXPECT_EQ(oru_test::try_lock_elsewhere(&mutex_), ORU_E_BUSY);
    ASSERT_EQ(oruMutexUnlock(&mutex_), ORU_OK);
  }
}

TEST_F(CondVarTest, SignalWithNobodyWaitingIsNotRemembered) {
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  EXPECT_EQ(oruCondVarBroadcast(&cond_), ORU_OK);
  ASSERT_EQ(oruMutexLock(&mutex_), ORU_OK);
  oruTimeVal deadline = from_now(50);
  EXPECT_EQ(oruCondVarTimedWait(&cond_, &mutex_, &deadline), ORU_E_TIMEDOUT);
  // A timed-out wait holds the mutex again and is no longer counted.
  EXPECT_EQ(oru_test::try_lock_elsewhere(&mutex_), ORU_E_BUSY);
  EXPECT_EQ(oruMutexUnlock(&mutex_), ORU_OK);
}

TEST_F(CondVarTest, DestroyWhileWaitingIsBusyAndTheVariableStaysUsable) {
  start_waiter();
  EXPECT_EQ(oruCondVarDestroy(&cond_), ORU_E_BUSY);
  EXPECT_NE(cond_, nullptr);
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  join_waiters();
  EXPECT_EQ(woken_, 1);
}

TEST_F(CondVarTest, EachSignalReleasesExactlyOneWaiter) {
  start_waiter();
  start_waiter();
  start_waiter();
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  ASSERT_TRUE(eventually([&] { return woken_ == 1; }));
  // Two are still counted: a signal that released more would leave fewer.
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  ASSERT_TRUE(eventually([&] { return woken_ == 2; }));
  EXPECT_EQ(oruCondVarDestroy(&cond_), ORU_E_BUSY);
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  join_waiters();
  EXPECT_EQ(woken_, 3);
}

TEST_F(CondVarTest, SignalGoesToAThreadWaitingAtThatMoment) {
  start_waiter();
  ASSERT_EQ(oruMutexLock(&mutex_), ORU_OK);
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  // The released thread cannot return while we hold the mutex; a newcomer
  // that starts waiting now must not take its wake-up.
  std::thread late([this] {
    oruMutexLock(&mutex_);
    ++announced_;
    EXPECT_EQ(oruCondVarWait(&cond_, &mutex_), ORU_OK);
    ++woken_;
    oruMutexUnlock(&mutex_);
  });
  ASSERT_EQ(oruMutexUnlock(&mutex_), ORU_OK);
  ASSERT_TRUE(eventually([&] { return woken_ == 1; }));
  join_waiters();
  ASSERT_TRUE(eventually([&] {
    oruMutexLock(&mutex_);
    bool in = announced_ == 2;
    oruMutexUnlock(&mutex_);
    return in;
  }));
  // The newcomer is still waiting, and is counted.
  EXPECT_EQ(oruCondVarDestroy(&cond_), ORU_E_BUSY);
  EXPECT_EQ(woken_, 1);
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  late.join();
  EXPECT_EQ(woken_, 2);
}

TEST_F(CondVarTest, BroadcastReleasesEveryCountedWaiter) {
  for (int i = 0; i < 5; ++i) start_waiter();
  EXPECT_EQ(oruCondVarBroadcast(&cond_), ORU_OK);
  join_waiters();
  EXPECT_EQ(woken_, 5);
}

TEST_F(CondVarTest, WakeUpsHoldTheMutexAgain) {
  std::atomic<bool> held_after_wait{false};
  std::thread waiter([&] {
    oruMutexLock(&mutex_);
    ++announced_;
    oruTimeVal deadline = from_now(60000);
    EXPECT_EQ(oruCondVarTimedWait(&cond_, &mutex_, &deadline), ORU_OK);
    held_after_wait = oru_test::try_lock_elsewhere(&mutex_) == ORU_E_BUSY;
    oruMutexUnlock(&mutex_);
  });
  ASSERT_TRUE(eventually([&] {
    oruMutexLock(&mutex_);
    bool in = announced_ == 1;
    oruMutexUnlock(&mutex_);
    return in;
  }));
  EXPECT_EQ(oruCondVarSignal(&cond_), ORU_OK);
  waiter.join();
  EXPECT_TRUE(held_after_wait);
}

// A bounded queue with several producers and consumers: a lost wake-up
// hangs it (caught by the guard), a double one breaks the counts.
TEST_F(CondVarTest, ProducersAndConsumersLoseNoWakeUps) {
  constexpr int kItems = 2000, kPairs = 3, kRoom = 4;
  int queued = 0, produced = 0, consumed = 0;  // under mutex_
  oruCondVar not_full = nullptr;
  ASSERT_EQ(oruCondVarInit(&not_full), ORU_OK);
  std::vector<std::thread> threads;
  for (int p = 0; p < kPairs; ++p) {
    threads.emplace_back([&] {
      for (;;) {
        oruMutexLock(&mutex_);
        while (queued == kRoom && produced < kItems) oruCondVarWait(&not_full, &mutex_);
        if (produced == kItems) {
          oruMutexUnlock(&mutex_);
          return;
        }
        ++queued;
        ++produced;
        oruCondVarSignal(&cond_);
        oruMutexUnlock(&mutex_);
      }
    });
    threads.emplace_back([&] {
      for (;;) {
        oruMutexLock(&mutex_);
        while (queued == 0 && consumed < kItems) oruCondVarWait(&cond_, &mutex_);
        if (consumed == kItems) {
          oruCondVarBroadcast(&cond_);
          oruCondVarBroadcast(&not_full);
          oruMutexUnlock(&mutex_);
          return;
        }
        --queued;
        ++consumed;
        oruCondVarSignal(&not_full);
        if (consumed == kItems) {
          oruCondVarBroadcast(&cond_);
          oruCondVarBroadcast(&not_full);
        }
        oruMutexUnlock(&mutex_);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(produced, kItems);
  EXPECT_EQ(consumed, kItems);
  EXPECT_EQ(queued, 0);
  EXPECT_EQ(oruCondVarDestroy(&not_full), ORU_OK);
}

// --- pthread_cancel of a waiter ---------------------------------------------
// (POSIX only: Windows has no cancellation of a thread from outside.)
#if !defined(_WIN32)

struct CancelCase {
  bool timed;
  oruMutex mutex = nullptr;
  oruCondVar cond = nullptr;
  std::atomic<bool> announced{false};
};

void unlock_on_cancel(void* mutex) { oruMutexUnlock(static_cast<oruMutex*>(mutex)); }

void* wait_until_cancelled(void* arg) {
  auto* c = static_cast<CancelCase*>(arg);
  // As with pthread_cond_wait, the mutex is held again when a cancelled
  // wait runs the caller's cleanup handlers.
  pthread_cleanup_push(unlock_on_cancel, &c->mutex);
  oruMutexLock(&c->mutex);
  c->announced = true;
  oruTimeVal deadline = from_now(600000);
  for (;;) {
    if (c->timed) {
      oruCondVarTimedWait(&c->cond, &c->mutex, &deadline);
    } else {
      oruCondVarWait(&c->cond, &c->mutex);
    }
  }
  pthread_cleanup_pop(1);
  return nullptr;
}

// A cancelled waiter must leave the variable as if it had never waited.
bool cancelled_waiter_leaves_no_trace(bool timed) {
  CancelCase c;
  c.timed = timed;
  if (oruMutexInit(&c.mutex) != ORU_OK || oruCondVarInit(&c.cond) != ORU_OK) return false;
  pthread_t waiter;
  if (pthread_create(&waiter, nullptr, wait_until_cancelled, &c) != 0) return false;
  // Announced under the mutex, which it gives up only inside the wait.
  if (!eventually([&] { return c.announced.load(); }) || oruMutexLock(&c.mutex) != ORU_OK ||
      oruMutexUnlock(&c.mutex) != ORU_OK) {
    return false;
  }
  void* result = nullptr;
  if (pthread_cancel(waiter) != 0 || pthread_join(waiter, &result) != 0 ||
      result != PTHREAD_CANCELED) {
    return false;
  }
  oruResult signalled = oruCondVarSignal(&c.cond);
  oruResult broadcast = oruCondVarBroadcast(&c.cond);
  oruResult tried = oruMutexTryLock(&c.mutex);
  oruResult unlocked = oruMutexUnlock(&c.mutex);
  oruResult destroyed = oruCondVarDestroy(&c.cond);
  std::fprintf(stderr, "signal %x broadcast %x trylock %x unlock %x destroy %x\n", signalled,
               broadcast, tried, unlocked, destroyed);
  return signalled == ORU_OK && broadcast == ORU_OK && tried == ORU_OK && unlocked == ORU_OK &&
         destroyed == ORU_OK && oruMutexDestroy(&c.mutex) == ORU_OK;
}

class CondVarCancel : public ::testing::TestWithParam<bool> {};

TEST_P(CondVarCancel, ACancelledWaiterLeavesTheVariableUsable) {
  bool timed = GetParam();
  oru_test::expect_in_fresh_process([timed] { return cancelled_waiter_leaves_no_trace(timed); });
}

INSTANTIATE_TEST_SUITE_P(WaitOrTimedWait, CondVarCancel, ::testing::Bool());
#endif  // !_WIN32

}  // namespace
