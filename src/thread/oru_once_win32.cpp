// One-time initialisation on Windows.
//
// The slot starts null and receives a control block on first use; the block
// is never freed, since a late caller may still be reading it.  The done flag
// gives the fast path a single acquire load; the critical section (recursive
// by nature) makes latecomers wait while init runs and lets init itself call
// back in.

#include "core/oru_internal.h"
#include "oru/thread.h"

#include <windows.h>

#include <atomic>

struct oruOnceControl {
  std::atomic<uint32_t> done;
  // Set while init runs; only the thread inside the critical section can see
  // it set, so seeing it means a call from inside init.
  bool running;
  CRITICAL_SECTION lock;
};

namespace {

// The control block of a slot, installed if the slot is still empty; null
// when it cannot be created.
oruOnceControl* control_of(oruOnce* once) {
  std::atomic_ref<oruOnceControl*> slot(*once);
  oruOnceControl* control = slot.load(std::memory_order_acquire);
  if (control != nullptr) return control;

  auto* fresh = static_cast<oruOnceControl*>(oruCalloc(1, sizeof(oruOnceControl)));
  if (fresh == nullptr) return nullptr;
  InitializeCriticalSection(&fresh->lock);
  if (slot.compare_exchange_strong(control, fresh, std::memory_order_acq_rel,
                                   std::memory_order_acquire)) {
    return fresh;
  }
  // Another thread installed its block first; use that one.
  DeleteCriticalSection(&fresh->lock);
  oruFree(fresh);
  return control;
}

}  // namespace

extern "C" ORU_API oruResult oruInitOnce(oruOnce* once, void (*init)(void)) {
  if (once == nullptr || init == nullptr) return ORU_E_INVALID_ARG;
  oruOnceControl* control = control_of(once);
  if (control == nullptr) return ORU_E_OUT_OF_MEMORY;
  if (control->done.load(std::memory_order_acquire) != 0) return ORU_OK;

  EnterCriticalSection(&control->lock);
  if (control->done.load(std::memory_order_relaxed) == 0 && !control->running) {
    control->running = true;
    init();
    control->running = false;
    control->done.store(1, std::memory_order_release);
  }
  LeaveCriticalSection(&control->lock);
  return ORU_OK;
}
