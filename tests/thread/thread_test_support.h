// Helpers for the thread tests: waiting with a hang guard, a gate that holds
// threads until the test lets them go, and a lock attempt from another thread.
#ifndef ORU_TESTS_THREAD_THREAD_TEST_SUPPORT_H
#define ORU_TESTS_THREAD_THREAD_TEST_SUPPORT_H

#include "oru/thread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace oru_test {

// Generous: only a hung implementation ever reaches it.
inline constexpr std::chrono::seconds kHangGuard{30};

// Polls until the predicate holds; false if it never does within the guard.
template <class Predicate>
bool eventually(Predicate predicate) {
  auto give_up = std::chrono::steady_clock::now() + kHangGuard;
  while (!predicate()) {
    if (std::chrono::steady_clock::now() > give_up) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

class Gate {
 public:
  void open() {
    std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
    opened_.notify_all();
  }
  void wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    opened_.wait(lock, [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool open_ = false;
};

// oruMutexTryLock from a fresh thread (undone again if it succeeded).
inline oruResult try_lock_elsewhere(oruMutex* mutex) {
  oruResult result = ORU_OK;
  std::thread([&] {
    result = oruMutexTryLock(mutex);
    if (result == ORU_OK) oruMutexUnlock(mutex);
  }).join();
  return result;
}

}  // namespace oru_test

#endif  // ORU_TESTS_THREAD_THREAD_TEST_SUPPORT_H
