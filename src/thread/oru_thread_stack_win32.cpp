// Stack sizes for the threads the library starts, on Windows.
//
// A stack size passed to CreateThread with STACK_SIZE_PARAM_IS_A_RESERVATION
// is the address space reserved for the stack, in whole allocation units
// (64 KiB), and the system keeps guard pages at its end.  The library's
// stack sizes mean what the routine may use, so one unit is added on top.

#include "thread/oru_thread_stack.h"

#include <cstdint>

namespace oru::thread {

namespace {

constexpr size_t kAllocationUnit = 0x10000;

}  // namespace

size_t system_stack_size(size_t usable) {
  if (usable < kAllocationUnit) usable = kAllocationUnit;
  // A size that cannot grow is left for CreateThread to refuse.
  if (usable > SIZE_MAX - 2 * kAllocationUnit) return usable;
  return (usable + kAllocationUnit - 1) / kAllocationUnit * kAllocationUnit + kAllocationUnit;
}

}  // namespace oru::thread
