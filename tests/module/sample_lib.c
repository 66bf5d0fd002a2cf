/* The shared object the module tests load: a function, a data object and a
 * chain of three calls that captures a backtrace at its innermost end.  The
 * calls are kept out of line, each followed by a side effect so that none
 * becomes a jump. */
#include <oru/module.h>

#ifdef _WIN32
#define SAMPLE_API __declspec(dllexport)
#else
#define SAMPLE_API __attribute__((visibility("default")))
#endif

SAMPLE_API int sample_counter = 41;

/* Counted atomically: the chain runs on many threads at once. */
SAMPLE_API int sample_calls;

static void count_call(void) { __atomic_fetch_add(&sample_calls, 1, __ATOMIC_RELAXED); }

SAMPLE_API int sample_add(int a, int b) { return a + b + sample_counter - 41; }

SAMPLE_API __attribute__((noinline)) size_t sample_inner(void** addresses, size_t capacity) {
  size_t count = 0;
  if (oruCaptureBacktrace(0, addresses, capacity, &count) != ORU_OK) count = 0;
  count_call();
  return count;
}

SAMPLE_API __attribute__((noinline)) size_t sample_middle(void** addresses, size_t capacity) {
  size_t count = sample_inner(addresses, capacity);
  count_call();
  return count;
}

SAMPLE_API __attribute__((noinline)) size_t sample_outer(void** addresses, size_t capacity) {
  size_t count = sample_middle(addresses, capacity);
  count_call();
  return count;
}
