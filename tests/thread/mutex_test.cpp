#include "oru/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

#include "thread_test_support.h"

namespace {

TEST(Mutex, NullSlotsAreRejected) {
  oruMutex empty = nullptr;
  EXPECT_EQ(oruMutexInit(nullptr), ORU_E_INVALID_ARG);
  for (oruMutex* slot : {&empty, static_cast<oruMutex*>(nullptr)}) {
    EXPECT_EQ(oruMutexLock(slot), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruMutexTryLock(slot), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruMutexUnlock(slot), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruMutexDestroy(slot), ORU_OK);
  }
}

TEST(Mutex, DestroyClearsTheSlotAndMayBeRepeated) {
  oruMutex mutex = nullptr;
  ASSERT_EQ(oruMutexInit(&mutex), ORU_OK);
  ASSERT_NE(mutex, nullptr);
  EXPECT_EQ(oruMutexDestroy(&mutex), ORU_OK);
  EXPECT_EQ(mutex, nullptr);
  EXPECT_EQ(oruMutexDestroy(&mutex), ORU_OK);
  EXPECT_EQ(oruMutexLock(&mutex), ORU_E_INVALID_ARG);
}

TEST(Mutex, IsRecursiveAndExcludesOtherThreads) {
  oruMutex mutex = nullptr;
  ASSERT_EQ(oruMutexInit(&mutex), ORU_OK);
  ASSERT_EQ(oruMutexLock(&mutex), ORU_OK);
  ASSERT_EQ(oruMutexLock(&mutex), ORU_OK);
  ASSERT_EQ(oruMutexTryLock(&mutex), ORU_OK);  // the owner may always enter
  EXPECT_EQ(oru_test::try_lock_elsewhere(&mutex), ORU_E_BUSY);
  EXPECT_EQ(oruMutexUnlock(&mutex), ORU_OK);
  EXPECT_EQ(oruMutexUnlock(&mutex), ORU_OK);
  EXPECT_EQ(oru_test::try_lock_elsewhere(&mutex), ORU_E_BUSY);  // still held once
  EXPECT_EQ(oruMutexUnlock(&mutex), ORU_OK);
  EXPECT_EQ(oru_test::try_lock_elsewhere(&mutex), ORU_OK);
  EXPECT_EQ(oruMutexDestroy(&mutex), ORU_OK);
}

TEST(Mutex, UnlockByANonOwnerIsRefused) {
  oruMutex mutex = nullptr;
  ASSERT_EQ(oruMutexInit(&mutex), ORU_OK);
  EXPECT_EQ(oruMutexUnlock(&mutex), ORU_E_ACCESS_DENIED);
  ASSERT_EQ(oruMutexLock(&mutex), ORU_OK);
  oruResult result = ORU_OK;
  std::thread([&] { result = oruMutexUnlock(&mutex); }).join();
  EXPECT_EQ(result, ORU_E_ACCESS_DENIED);
  EXPECT_EQ(oruMutexUnlock(&mutex), ORU_OK);
  EXPECT_EQ(oruMutexDestroy(&mutex), ORU_OK);
}

// Ownership is a thread's, not its stack's: a later thread that gets the
// exited owner's cached stack (and so its thread-local block) is a stranger.
TEST(Mutex, AnOwnerThatExitedIsNotSucceededByALaterThread) {
  oruMutex mutex = nullptr;
  ASSERT_EQ(oruMutexInit(&mutex), ORU_OK);
  std::thread([&] { EXPECT_EQ(oruMutexLock(&mutex), ORU_OK); }).join();
  oruResult unlocked = ORU_OK, tried = ORU_OK;
  std::thread([&] {
    unlocked = oruMutexUnlock(&mutex);
    tried = oruMutexTryLock(&mutex);
  }).join();
  EXPECT_EQ(unlocked, ORU_E_ACCESS_DENIED);
  EXPECT_EQ(tried, ORU_E_BUSY);
  EXPECT_EQ(oruMutexTryLock(&mutex), ORU_E_BUSY);
  EXPECT_EQ(oruMutexUnlock(&mutex), ORU_E_ACCESS_DENIED);
  EXPECT_EQ(oruMutexDestroy(&mutex), ORU_OK);
}

TEST(Mutex, SerialisesUpdates) {
  oruMutex mutex = nullptr;
  ASSERT_EQ(oruMutexInit(&mutex), ORU_OK);
  long counter = 0;  // deliberately plain: the mutex alone protects it
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 5000; ++i) {
        oruMutexLock(&mutex);
        oruMutexLock(&mutex);
        ++counter;
        oruMutexUnlock(&mutex);
        oruMutexUnlock(&mutex);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(counter, 20000);
  EXPECT_EQ(oruMutexDestroy(&mutex), ORU_OK);
}

// A mutex taken while the process still had one thread must exclude, and
// hand over to, threads started afterwards.
bool held_across_the_first_thread() {
#if __has_include(<sys/single_threaded.h>)
  if (!__libc_single_threaded) return false;
#endif
  oruMutex mutex = nullptr;
  if (oruMutexInit(&mutex) != ORU_OK || oruMutexLock(&mutex) != ORU_OK ||
      oruMutexLock(&mutex) != ORU_OK) {
    return false;
  }
  std::atomic<int> stage{0};
  oruResult tried = ORU_OK, locked = ORU_E_FAIL;
  std::thread other([&] {
    tried = oruMutexTryLock(&mutex);
    stage = 1;
    locked = oruMutexLock(&mutex);  // sleeps until both unlocks
    stage = 2;
    oruMutexUnlock(&mutex);
  });
  while (stage == 0) std::this_thread::yield();
  bool ok = tried == ORU_E_BUSY && stage == 1;
  oruMutexUnlock(&mutex);
  oruMutexUnlock(&mutex);
  other.join();
  return ok && locked == ORU_OK && oruMutexDestroy(&mutex) == ORU_OK;
}

TEST(Mutex, HeldWhileSingleThreadedStillExcludesLaterThreads) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(held_across_the_first_thread() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

}  // namespace
