// Atomic counters that report only the sign of their new value.

#include "oru/thread.h"

#include <atomic>

extern "C" {

ORU_API int oruAtomicIncrement(int32_t* value) {
  if (value == nullptr) return 0;
  int32_t before = std::atomic_ref<int32_t>(*value).fetch_add(1, std::memory_order_seq_cst);
  // Judged by the old value, so that a wrap from the largest value reports 1.
  if (before >= 0) return 1;
  return before == -1 ? 0 : -1;
}

ORU_API int oruAtomicDecrement(int32_t* value) {
  if (value == nullptr) return 0;
  int32_t before = std::atomic_ref<int32_t>(*value).fetch_sub(1, std::memory_order_seq_cst);
  // The counter itself wraps; compute its new value the same way.
  auto after = static_cast<int32_t>(static_cast<uint32_t>(before) - 1u);
  if (after == 0) return 0;
  return after < 0 ? -1 : 1;
}

}  // extern "C"
