// Stack sizes for the threads the library starts.
//
// glibc places each thread's static thread-local block (the TLS of the
// program and of every library loaded at start-up) and a guard page inside
// the stack it is given, so a thread asked to get N bytes of stack gets N
// minus that overhead, and a request below the overhead is refused outright.
// The library's stack sizes mean what the routine may use, as elsewhere, so
// the overhead is added on top.  glibc tells its minimum for the process
// through __pthread_get_minstack (the guard page, the static TLS and
// PTHREAD_STACK_MIN); it is looked up at run time because it is not part of
// the public interface.

#include "thread/oru_thread_stack.h"

#include <dlfcn.h>
#include <limits.h>
#include <pthread.h>
#include <cstdint>

namespace oru::thread {

namespace {

using MinimumStack = size_t (*)(const pthread_attr_t*);

size_t system_minimum() { return static_cast<size_t>(PTHREAD_STACK_MIN); }

// The part of a stack that the C library keeps for itself.
size_t compute_overhead() {
  auto minimum_stack =
      reinterpret_cast<MinimumStack>(dlsym(RTLD_DEFAULT, "__pthread_get_minstack"));
  if (minimum_stack == nullptr) return 0;
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return 0;
  size_t minimum = minimum_stack(&attributes);
  pthread_attr_destroy(&attributes);
  return minimum > system_minimum() ? minimum - system_minimum() : 0;
}

}  // namespace

size_t system_stack_size(size_t usable) {
  // Fixed for the life of the process: the static TLS block never grows.
  static const size_t overhead = compute_overhead();
  size_t minimum = system_minimum();
  if (usable < minimum) usable = minimum;
  // A size that cannot grow is left for pthread_create to refuse.
  return usable > SIZE_MAX - overhead ? usable : usable + overhead;
}

}  // namespace oru::thread
