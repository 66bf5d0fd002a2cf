#include "oru/thread.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <pthread.h>
#endif
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <thread>
#include <vector>

#include "thread_test_support.h"

namespace {

using oru_test::eventually;
using oru_test::Gate;

void* as_arg(uintptr_t value) { return reinterpret_cast<void*>(value); }

unsigned return_arg(void* arg) { return static_cast<unsigned>(reinterpret_cast<uintptr_t>(arg)); }

unsigned wait_at_gate(void* gate) {
  static_cast<Gate*>(gate)->wait();
  return 7;
}

// True once the reaper has released the thread's record.
bool released(oruThread thread) {
  return eventually([&] { return oruThreadDetach(thread) == ORU_E_NO_SUCH_PROCESS; });
}

TEST(Thread, JoinGivesTheExitStatus) {
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, return_arg, as_arg(0xC0FFEE)), ORU_OK);
  ASSERT_NE(thread, nullptr);
  unsigned status = 0;
  EXPECT_EQ(oruThreadJoin(thread, &status), ORU_OK);
  EXPECT_EQ(status, 0xC0FFEEu);
  // A second join fails, whether or not the reaper has been there yet.
  oruResult again = oruThreadJoin(thread, &status);
  EXPECT_TRUE(again == ORU_E_INVALID_ARG || again == ORU_E_NO_SUCH_PROCESS) << again;
  EXPECT_TRUE(released(thread));
  EXPECT_EQ(oruThreadJoin(thread, &status), ORU_E_NO_SUCH_PROCESS);
}

TEST(Thread, JoinWithoutStatusPointer) {
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, return_arg, nullptr), ORU_OK);
  EXPECT_EQ(oruThreadJoin(thread, nullptr), ORU_OK);
}

TEST(Thread, CreateRejectsNullArguments) {
  oruThread thread = nullptr;
  EXPECT_EQ(oruThreadCreate(nullptr, 0, 0, return_arg, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruThreadCreate(&thread, 0, 0, nullptr, nullptr), ORU_E_INVALID_ARG);
}

TEST(Thread, UnknownHandlesAreNoSuchProcess) {
  for (uintptr_t bogus : {uintptr_t{0}, uintptr_t{1}, uintptr_t{0x1234}, UINTPTR_MAX}) {
    auto thread = reinterpret_cast<oruThread>(bogus);
    EXPECT_EQ(oruThreadJoin(thread, nullptr), ORU_E_NO_SUCH_PROCESS);
    EXPECT_EQ(oruThreadDetach(thread), ORU_E_NO_SUCH_PROCESS);
  }
}

TEST(Thread, DetachedThreadsCannotBeJoined) {
  Gate gate;
  oruThread detached = nullptr, joinable = nullptr, flagged = nullptr;
  ASSERT_EQ(oruThreadCreate(&detached, ORU_THREAD_DETACHED, 0, wait_at_gate, &gate), ORU_OK);
  ASSERT_EQ(oruThreadCreate(&joinable, 0, 0, wait_at_gate, &gate), ORU_OK);
  // Bits other than ORU_THREAD_DETACHED are ignored.
  ASSERT_EQ(oruThreadCreate(&flagged, ~ORU_THREAD_DETACHED, 0, wait_at_gate, &gate), ORU_OK);

  EXPECT_EQ(oruThreadJoin(detached, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruThreadDetach(detached), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruThreadDetach(joinable), ORU_OK);
  EXPECT_EQ(oruThreadDetach(joinable), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruThreadJoin(joinable, nullptr), ORU_E_INVALID_ARG);

  gate.open();
  unsigned status = 0;
  EXPECT_EQ(oruThreadJoin(flagged, &status), ORU_OK);
  EXPECT_EQ(status, 7u);
  EXPECT_TRUE(released(detached));
  EXPECT_TRUE(released(joinable));
}

TEST(Thread, SelfIsStableAndDistinctInAdoptedThreads) {
  oruThread main_self = oruThreadSelf();
  ASSERT_NE(main_self, nullptr);
  EXPECT_EQ(oruThreadEqual(main_self, oruThreadSelf()), 1);

  std::atomic<oruThread> first{nullptr};
  oruThread second = nullptr;
  Gate done;
  std::thread a([&] {
    first = oruThreadSelf();
    EXPECT_EQ(oruThreadSelf(), first);
    done.wait();  // keep it alive so its handle cannot be released meanwhile
  });
  std::thread b([&] { second = oruThreadSelf(); });
  b.join();
  ASSERT_TRUE(eventually([&] { return first != nullptr; }));
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(oruThreadEqual(first, main_self), 0);
  EXPECT_EQ(oruThreadEqual(first, second), 0);
  // Adopted threads count as detached.
  EXPECT_EQ(oruThreadJoin(first, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruThreadDetach(first), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruThreadJoin(main_self, nullptr), ORU_E_INVALID_ARG);
  done.open();
  a.join();
  // Once ended, an adopted thread's record goes.
  EXPECT_TRUE(released(first));
  EXPECT_TRUE(released(second));
}

std::atomic<oruThread> g_seen_self{nullptr};

unsigned record_self(void*) {
  g_seen_self = oruThreadSelf();
  return 0;
}

TEST(Thread, SelfInACreatedThreadIsItsHandle) {
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, record_self, nullptr), ORU_OK);
  ASSERT_EQ(oruThreadJoin(thread, nullptr), ORU_OK);
  EXPECT_EQ(oruThreadEqual(g_seen_self, thread), 1);
}

unsigned exit_early(void*) { oruThreadExit(77); }

// Leaves through the system's own call, behind the library's back.
#if defined(_WIN32)
unsigned system_exit_early(void*) { ExitThread(0); }
#else
unsigned system_exit_early(void*) { pthread_exit(nullptr); }
#endif

TEST(Thread, LeavingEarlyStillEndsTheThread) {
  oruThread thread = nullptr;
  unsigned status = 0;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, exit_early, nullptr), ORU_OK);
  EXPECT_EQ(oruThreadJoin(thread, &status), ORU_OK);
  EXPECT_EQ(status, 77u);
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, system_exit_early, nullptr), ORU_OK);
  EXPECT_EQ(oruThreadJoin(thread, &status), ORU_OK);
  EXPECT_EQ(status, 0u);
  ASSERT_EQ(oruThreadCreate(&thread, ORU_THREAD_DETACHED, 0, exit_early, nullptr), ORU_OK);
  EXPECT_TRUE(released(thread));
}

std::atomic<oruResult> g_self_join{ORU_OK};

unsigned join_self(void*) {
  g_self_join = oruThreadJoin(oruThreadSelf(), nullptr);
  return 0;
}

TEST(Thread, JoiningItselfIsRefused) {
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, join_self, nullptr), ORU_OK);
  EXPECT_EQ(oruThreadJoin(thread, nullptr), ORU_OK);
  EXPECT_EQ(g_self_join, _oru_map_posix_error(EDEADLK));
}

TEST(Thread, AnAdoptedThreadCanJoin) {
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, return_arg, as_arg(5)), ORU_OK);
  unsigned status = 0;
  oruResult result = ORU_E_FAIL;
  std::thread([&] { result = oruThreadJoin(thread, &status); }).join();
  EXPECT_EQ(result, ORU_OK);
  EXPECT_EQ(status, 5u);
}

TEST(Thread, JoinRacingDetachHasExactlyOneWinner) {
  for (int round = 0; round < 100; ++round) {
    Gate gate;
    oruThread thread = nullptr;
    ASSERT_EQ(oruThreadCreate(&thread, 0, 0, wait_at_gate, &gate), ORU_OK);
    oruResult joined = ORU_E_FAIL, detached = ORU_E_FAIL, joined_too = ORU_E_FAIL;
    std::thread joiner([&] { joined = oruThreadJoin(thread, nullptr); });
    std::thread second_joiner([&] { joined_too = oruThreadJoin(thread, nullptr); });
    std::thread detacher([&] { detached = oruThreadDetach(thread); });
    if (round % 2 == 0) gate.open();
    detacher.join();
    gate.open();
    joiner.join();
    second_joiner.join();
    int winners = (joined == ORU_OK) + (joined_too == ORU_OK) + (detached == ORU_OK);
    EXPECT_EQ(winners, 1) << joined << " " << joined_too << " " << detached;
    for (oruResult loser : {joined, joined_too, detached}) {
      EXPECT_TRUE(loser == ORU_OK || loser == ORU_E_INVALID_ARG || loser == ORU_E_NO_SUCH_PROCESS)
          << loser;
    }
    EXPECT_TRUE(released(thread));
  }
}

std::atomic<size_t> g_stack_size{0};

unsigned measure_stack(void*) {
  size_t size = 0;
#if defined(_WIN32)
  ULONG_PTR low = 0;
  ULONG_PTR high = 0;
  GetCurrentThreadStackLimits(&low, &high);
  size = high - low;
#else
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
  }
#endif
  g_stack_size = size;
  return 0;
}

TEST(Thread, StackSizeComesFromTheArgumentOrTheDefault) {
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 3 << 20, measure_stack, nullptr), ORU_OK);
  ASSERT_EQ(oruThreadJoin(thread, nullptr), ORU_OK);
  EXPECT_GE(g_stack_size, size_t{3} << 20);

  EXPECT_EQ(oruSetDefaultStackSize(5 << 20), ORU_OK);
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, measure_stack, nullptr), ORU_OK);
  ASSERT_EQ(oruThreadJoin(thread, nullptr), ORU_OK);
  EXPECT_GE(g_stack_size, size_t{5} << 20);
  EXPECT_EQ(oruSetDefaultStackSize(0), ORU_OK);

  // A stack below the system's minimum is rounded up, not refused.
  ASSERT_EQ(oruThreadCreate(&thread, 0, 1, return_arg, as_arg(3)), ORU_OK);
  unsigned status = 0;
  EXPECT_EQ(oruThreadJoin(thread, &status), ORU_OK);
  EXPECT_EQ(status, 3u);
}

}  // namespace
