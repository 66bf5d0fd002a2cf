// The end of a thread: join waits for everything the thread still runs
// after its routine, a thread that detaches itself behind the library's back
// is left alone, and a forked child keeps working threads.

#include "oru/thread.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "fresh_process.h"
#include "thread_test_support.h"

namespace {

using oru_test::eventually;
using oru_test::expect_in_fresh_process;
using oru_test::in_forked_child;

bool released(oruThread thread) {
  return eventually([&] { return oruThreadDetach(thread) == ORU_E_NO_SUCH_PROCESS; });
}

// What the thread saw while it was already past its routine.  Plain fields
// on purpose: only join's ordering makes reading them safe.
struct AfterRoutine {
  oruThread self_in_thread_local = nullptr;
  void* value_in_thread_local = nullptr;
  bool thread_local_done = false;
  bool key_destructor_done = false;
};

AfterRoutine g_after;
oruTlsKey g_value_key;
pthread_key_t g_foreign_key;
int g_value;

struct SlowThreadLocal {
  bool touched = false;
  ~SlowThreadLocal() {
    if (!touched) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    g_after.self_in_thread_local = oruThreadSelf();
    g_after.value_in_thread_local = oruTlsGet(g_value_key);
    g_after.thread_local_done = true;
  }
};
thread_local SlowThreadLocal t_slow;

// Another library's pthread key, created after the library's own.
void slow_foreign_destructor(void*) {
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  g_after.key_destructor_done = true;
}

unsigned touch_and_end(void* exit_early) {
  t_slow.touched = true;
  oruTlsSet(g_value_key, &g_value);
  pthread_setspecific(g_foreign_key, &g_value);
  if (exit_early != nullptr) oruThreadExit(41);
  return 40;
}

class ThreadEnd : public ::testing::TestWithParam<bool> {};

TEST_P(ThreadEnd, JoinReturnsAfterTheDestructorsTheThreadRuns) {
  bool exit_early = GetParam();
  ASSERT_NE(oruThreadSelf(), nullptr);
  ASSERT_EQ(pthread_key_create(&g_foreign_key, slow_foreign_destructor), 0);
  ASSERT_EQ(oruTlsKeyCreate(&g_value_key, nullptr), ORU_OK);
  g_after = AfterRoutine{};
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, touch_and_end, exit_early ? &g_value : nullptr), ORU_OK);
  unsigned status = 0;
  ASSERT_EQ(oruThreadJoin(thread, &status), ORU_OK);
  EXPECT_EQ(status, exit_early ? 41u : 40u);
  EXPECT_TRUE(g_after.thread_local_done);
  EXPECT_TRUE(g_after.key_destructor_done);
  // Until its end the thread keeps its identity and its values.
  EXPECT_EQ(g_after.self_in_thread_local, thread);
  EXPECT_EQ(g_after.value_in_thread_local, &g_value);
  EXPECT_TRUE(released(thread));
  oruTlsKeyDelete(g_value_key);
  pthread_key_delete(g_foreign_key);
}

INSTANTIATE_TEST_SUITE_P(ReturnOrExit, ThreadEnd, ::testing::Bool());

// --- a thread that detaches itself with the raw pthread call ---------------

pthread_key_t g_slow_key;
std::atomic<bool> g_slow_routine_done{false};
std::atomic<pid_t> g_self_detached_tid{0};

void sleep_a_while(void*) { std::this_thread::sleep_for(std::chrono::milliseconds(200)); }

unsigned set_slow_key(void*) {
  pthread_setspecific(g_slow_key, &g_slow_key);
  g_slow_routine_done = true;
  return 0;
}

unsigned detach_self(void*) {
  g_self_detached_tid = static_cast<pid_t>(syscall(SYS_gettid));
  pthread_detach(pthread_self());
  return 12;
}

void* wait_at_gate(void* gate) {
  static_cast<oru_test::Gate*>(gate)->wait();
  return &g_slow_key;
}

bool task_gone(pid_t tid) {
  std::string path = "/proc/self/task/" + std::to_string(tid);
  return access(path.c_str(), F_OK) != 0;
}

// The library must not join a system thread it no longer owns: that thread's
// descriptor may already belong to an unrelated thread of the application.
bool self_detached_thread_is_left_alone() {
  constexpr size_t kStack = 512 * 1024;
  if (oruThreadSelf() == nullptr || pthread_key_create(&g_slow_key, sleep_a_while) != 0)
    return false;
  // A detached thread whose last destructor keeps its end busy for a while.
  oruThread slow = nullptr, rogue = nullptr;
  if (oruThreadCreate(&slow, ORU_THREAD_DETACHED, 0, set_slow_key, nullptr) != ORU_OK ||
      !eventually([] { return g_slow_routine_done.load(); })) {
    return false;
  }
  unsigned status = 0;
  if (oruThreadCreate(&rogue, 0, kStack, detach_self, nullptr) != ORU_OK ||
      oruThreadJoin(rogue, &status) != ORU_OK || status != 12) {
    std::fprintf(stderr, "join of the self-detached thread: status %u\n", status);
    return false;
  }
  if (!eventually([] { return task_gone(g_self_detached_tid); })) return false;

  // The application's own thread, with the same stack size: it may well get
  // the descriptor and stack the rogue thread left behind.
  oru_test::Gate gate;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStack);
  pthread_t mine;
  int created = pthread_create(&mine, &attributes, wait_at_gate, &gate);
  pthread_attr_destroy(&attributes);
  if (created != 0) return false;
  bool rogue_released = released(rogue) && released(slow);
  gate.open();
  void* result = nullptr;
  int joined = pthread_join(mine, &result);
  std::fprintf(stderr, "released %d, pthread_join %d\n", rogue_released, joined);
  return rogue_released && joined == 0 && result == &g_slow_key;
}

TEST(ThreadEnd, AThreadThatDetachesItselfIsNotJoinedByTheLibrary) {
  expect_in_fresh_process(self_detached_thread_is_left_alone);
}

// --- pthread_cancel ----------------------------------------------------------

struct Cancellable {
  std::atomic<pthread_t> system{};
  std::atomic<bool> waiting{false};
  oruMutex mutex = nullptr;
  oruCondVar cond = nullptr;
};

void unlock_mutex(void* mutex) { oruMutexUnlock(static_cast<oruMutex*>(mutex)); }

unsigned wait_for_ever(void* arg) {
  auto* c = static_cast<Cancellable*>(arg);
  pthread_cleanup_push(unlock_mutex, &c->mutex);
  oruMutexLock(&c->mutex);
  c->system = pthread_self();
  c->waiting = true;
  for (;;) oruCondVarWait(&c->cond, &c->mutex);
  pthread_cleanup_pop(1);
  return 1;
}

struct Joiner {
  oruThread target = nullptr;
  oruResult joined = ORU_E_FAIL;
  unsigned status = 0;
  std::atomic<bool> started{false};
};

void* join_then_test_cancel(void* arg) {
  auto* j = static_cast<Joiner*>(arg);
  j->started = true;
  j->joined = oruThreadJoin(j->target, &j->status);
  pthread_testcancel();
  return nullptr;
}

unsigned wait_at_oru_gate(void* gate) {
  static_cast<oru_test::Gate*>(gate)->wait();
  return 8;
}

// A created thread may be cancelled, and ends as through oruThreadExit(0);
// a joiner that is cancelled finishes its join first.
bool cancellation_ends_threads_cleanly() {
  Cancellable c;
  oruThread waiter = nullptr;
  unsigned status = 99;
  if (oruMutexInit(&c.mutex) != ORU_OK || oruCondVarInit(&c.cond) != ORU_OK ||
      oruThreadCreate(&waiter, 0, 0, wait_for_ever, &c) != ORU_OK ||
      !eventually([&] { return c.waiting.load(); }) || oruMutexLock(&c.mutex) != ORU_OK ||
      oruMutexUnlock(&c.mutex) != ORU_OK || pthread_cancel(c.system) != 0 ||
      oruThreadJoin(waiter, &status) != ORU_OK || status != 0) {
    std::fprintf(stderr, "cancelled waiter: status %u\n", status);
    return false;
  }

  oru_test::Gate gate;
  Joiner j;
  pthread_t joiner;
  if (oruThreadCreate(&j.target, 0, 0, wait_at_oru_gate, &gate) != ORU_OK ||
      pthread_create(&joiner, nullptr, join_then_test_cancel, &j) != 0 ||
      !eventually([&] { return j.started.load(); })) {
    return false;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // let it reach the wait
  void* result = nullptr;
  if (pthread_cancel(joiner) != 0) return false;
  gate.open();
  if (pthread_join(joiner, &result) != 0) return false;
  std::fprintf(stderr, "cancelled joiner: join %x status %u\n", j.joined, j.status);
  oruThread after = nullptr;
  return result == PTHREAD_CANCELED && j.joined == ORU_OK && j.status == 8 &&
         oruThreadCreate(&after, 0, 0, wait_at_oru_gate, &gate) == ORU_OK &&
         oruThreadJoin(after, nullptr) == ORU_OK;
}

TEST(ThreadEnd, CancellationEndsThreadsCleanly) {
  expect_in_fresh_process(cancellation_ends_threads_cleanly);
}

// --- fork ------------------------------------------------------------------

unsigned nothing(void*) { return 0; }

std::atomic<int> g_destroyed{0};
void count_destroyed(void*) { ++g_destroyed; }
oruTlsKey g_counted_key;

unsigned set_counted_value(void*) {
  oruTlsSet(g_counted_key, &g_counted_key);
  return 5;
}

// In the child the threads it creates are released, with their values'
// destructors, just as in the parent.
bool child_releases_its_threads() {
  // One thread released first, so that the reaper is past its start when
  // the process forks: AddressSanitizer's allocator is not locked across
  // fork, and a thread starting under it at that moment can leave one of its
  // locks held for good in the child.
  oruThread warm_up = nullptr;
  if (oruThreadSelf() == nullptr || oruThreadCreate(&warm_up, 0, 0, nothing, nullptr) != ORU_OK ||
      oruThreadJoin(warm_up, nullptr) != ORU_OK || !released(warm_up) ||
      oruTlsKeyCreate(&g_counted_key, count_destroyed) != ORU_OK)
    return false;
  return in_forked_child([] {
    constexpr int kPairs = 300;
    std::vector<oruThread> threads;
    for (int i = 0; i < kPairs; ++i) {
      oruThread thread = nullptr;
      unsigned status = 0;
      if (oruThreadCreate(&thread, 0, 0, set_counted_value, nullptr) != ORU_OK ||
          oruThreadJoin(thread, &status) != ORU_OK || status != 5) {
        return false;
      }
      threads.push_back(thread);
    }
    for (oruThread thread : threads) {
      if (!released(thread)) return false;
    }
    std::fprintf(stderr, "destroyed %d of %d\n", g_destroyed.load(), kPairs);
    return g_destroyed == kPairs;
  });
}

// Children forked while other threads create and join threads, over and
// over, must find the library in a usable state.
bool fork_while_threads_come_and_go() {
  std::atomic<bool> stop{false};
  std::vector<std::thread> churners;
  for (int i = 0; i < 2; ++i) {
    churners.emplace_back([&] {
      while (!stop) {
        oruThread thread = nullptr;
        if (oruThreadCreate(&thread, 0, 0, nothing, nullptr) == ORU_OK) {
          oruThreadJoin(thread, nullptr);
        }
      }
    });
  }
  int failed = 0;
  for (int i = 0; i < 40; ++i) {
    bool ok = in_forked_child([] {
      oruThread thread = nullptr;
      oruTlsKey key = 0;
      return oruThreadCreate(&thread, 0, 0, nothing, nullptr) == ORU_OK &&
             oruThreadJoin(thread, nullptr) == ORU_OK && oruThreadSelf() != nullptr &&
             oruTlsKeyCreate(&key, nullptr) == ORU_OK && oruTlsSet(key, &key) == ORU_OK &&
             oruStrError(ORU_E_UNEXPECTED) != nullptr;
    });
    if (!ok) ++failed;
  }
  stop = true;
  for (auto& churner : churners) churner.join();
  std::fprintf(stderr, "%d of 40 children failed\n", failed);
  return failed == 0;
}

TEST(ThreadFork, TheChildReleasesTheThreadsItCreates) {
#if defined(ORU_TEST_UNDER_TSAN)
  GTEST_SKIP() << "ThreadSanitizer does not support threads in a child of a threaded process";
#endif
  expect_in_fresh_process(child_releases_its_threads);
}

TEST(ThreadFork, ForkingWhileThreadsComeAndGoLeavesTheChildUsable) {
#if defined(ORU_TEST_UNDER_TSAN)
  GTEST_SKIP() << "ThreadSanitizer does not support threads in a child of a threaded process";
#elif defined(ORU_TEST_UNDER_ASAN)
  // Its allocator's locks are not held across fork: a child forked while
  // another thread frees memory can hang in the sanitizer itself.
  GTEST_SKIP() << "AddressSanitizer's allocator does not survive fork amid other threads";
#endif
  expect_in_fresh_process(fork_while_threads_come_and_go);
}

}  // namespace
