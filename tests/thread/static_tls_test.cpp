// A program with a large block of static thread-local data (the C library
// carves it out of every thread's stack): the reaper still starts and has
// room for destructors, and callers' threads get the stack they ask for.

#include "oru/thread.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "fresh_process.h"
#include "thread_test_support.h"

namespace {

constexpr size_t kStaticTls = 256 * 1024;
__thread char g_static_tls[kStaticTls];

using oru_test::eventually;
using oru_test::expect_in_fresh_process;

// Uses the stack, a KiB a frame, down to `floor`, so that a stack that is
// not really there faults.
[[gnu::noinline]] int use_stack_down_to(const char* floor) {
  volatile char frame[1024];
  frame[0] = 1;
  frame[sizeof frame - 1] = 1;
  if (const_cast<const char*>(&frame[0]) <= floor) return frame[0];
  return use_stack_down_to(floor) + frame[sizeof frame - 1];
}

// The lowest address of the calling thread's stack.
const char* stack_bottom() {
  pthread_attr_t attributes;
  void* low = nullptr;
  size_t size = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return nullptr;
  pthread_attr_getstack(&attributes, &low, &size);
  pthread_attr_destroy(&attributes);
  return static_cast<const char*>(low);
}

std::atomic<size_t> g_left{0};

unsigned measure(void*) {
  g_static_tls[0] = 1;
  char here = 0;
  const char* bottom = stack_bottom();
  g_left = reinterpret_cast<uintptr_t>(&here) - reinterpret_cast<uintptr_t>(bottom);
  // Down to 2 KiB above the bottom; the last frame may reach a little lower.
  return static_cast<unsigned>(use_stack_down_to(bottom + 2048) & 1);
}

TEST(StaticTls, TheLibraryStarts) {
  expect_in_fresh_process([] {
    g_static_tls[0] = 1;
    return oruThreadSelf() != nullptr;
  });
}

// Small stacks are rounded up to the minimum, and every stack leaves the
// routine what was asked for, however much static thread-local data the
// program has.
TEST(StaticTls, ThreadsGetTheStackTheyAskFor) {
  expect_in_fresh_process([] {
    const size_t requests[] = {1, 16 * 1024, 64 * 1024, 200 * 1024};
    for (size_t request : requests) {
      oruThread thread = nullptr;
      oruResult created = oruThreadCreate(&thread, 0, request, measure, nullptr);
      if (created != ORU_OK || oruThreadJoin(thread, nullptr) != ORU_OK) {
        std::fprintf(stderr, "stack %zu: create %x\n", request, created);
        return false;
      }
      // A few KiB go to the start-up frames above the routine.
      if (g_left + 8 * 1024 < request) {
        std::fprintf(stderr, "stack %zu: %zu left\n", request, g_left.load());
        return false;
      }
    }
    return true;
  });
}

std::atomic<int> g_destroyed{0};

void deep_destructor(void*) {
  char here = 0;
  use_stack_down_to(reinterpret_cast<const char*>(reinterpret_cast<uintptr_t>(&here) - 64 * 1024));
  ++g_destroyed;
}

unsigned set_deep_value(void* key) {
  oruTlsSet(*static_cast<oruTlsKey*>(key), &g_destroyed);
  return 0;
}

// Thread-local destructors run on the reaper; they get a real stack there.
TEST(StaticTls, TheReaperHasRoomForDestructors) {
  expect_in_fresh_process([] {
    oruTlsKey key = 0;
    oruThread thread = nullptr;
    if (oruTlsKeyCreate(&key, deep_destructor) != ORU_OK ||
        oruThreadCreate(&thread, 0, 0, set_deep_value, &key) != ORU_OK ||
        oruThreadJoin(thread, nullptr) != ORU_OK) {
      return false;
    }
    return eventually([] { return g_destroyed == 1; });
  });
}

}  // namespace
