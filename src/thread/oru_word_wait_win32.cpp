// Sleeping on a lock word on Windows.
//
// Not std::atomic::wait: the C++ library of mingw-w64 implements it with its
// own table of condition variables, which can miss a wake-up and leave a
// thread asleep on a free mutex for good.  This is the same idea done
// carefully: a word hashes to one of a fixed set of buckets, each a slim
// reader/writer lock with a condition variable.  A sleeper checks the word
// with the bucket's lock held and sleeps releasing it in one step; a waker
// changed the word before it takes the lock.  So either the sleeper sees the
// change, or it is already asleep when the wake-up comes.  Words that share a
// bucket share its wake-ups, so every sleeper in it is woken and each
// re-checks its own word.

#include "thread/oru_word_wait.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstddef>

namespace oru::thread {

namespace {

struct alignas(64) Bucket {
  SRWLOCK lock = SRWLOCK_INIT;
  CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;
};

constexpr size_t kBuckets = 64;
Bucket g_buckets[kBuckets];

Bucket& bucket_of(const std::atomic<uint32_t>& word) {
  auto address = reinterpret_cast<uintptr_t>(&word);
  return g_buckets[(address >> 4) % kBuckets];
}

}  // namespace

void wait_while_equal(std::atomic<uint32_t>& word, uint32_t value) {
  Bucket& bucket = bucket_of(word);
  AcquireSRWLockExclusive(&bucket.lock);
  if (word.load(std::memory_order_relaxed) == value) {
    SleepConditionVariableSRW(&bucket.changed, &bucket.lock, INFINITE, 0);
  }
  ReleaseSRWLockExclusive(&bucket.lock);
}

void wake_one_waiter(std::atomic<uint32_t>& word) {
  Bucket& bucket = bucket_of(word);
  AcquireSRWLockExclusive(&bucket.lock);
  ReleaseSRWLockExclusive(&bucket.lock);
  WakeAllConditionVariable(&bucket.changed);
}

}  // namespace oru::thread
