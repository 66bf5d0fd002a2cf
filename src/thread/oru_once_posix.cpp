// One-time initialisation.
//
// The slot starts null and receives a control block on first use; the block
// is never freed, since a late caller may still be reading it.  The done flag
// gives the fast path a single acquire load; the recursive lock makes
// latecomers wait while init runs and lets init itself call back in.

#include "core/oru_internal.h"
#include "oru/thread.h"
#include "thread/oru_pthread_util.h"

#include <atomic>

struct oruOnceControl {
  std::atomic<uint32_t> done;
  // Set while init runs; only the thread that holds the lock can see it set,
  // so seeing it means a call from inside init.
  bool running;
  pthread_mutex_t lock;
};

namespace {

// The control block of a slot, installed if the slot is still empty; null
// with *result set when it cannot be created.
oruOnceControl* control_of(oruOnce* once, oruResult* result) {
  std::atomic_ref<oruOnceControl*> slot(*once);
  oruOnceControl* control = slot.load(std::memory_order_acquire);
  if (control != nullptr) return control;

  auto* fresh = static_cast<oruOnceControl*>(oruCalloc(1, sizeof(oruOnceControl)));
  if (fresh == nullptr) {
    *result = ORU_E_OUT_OF_MEMORY;
    return nullptr;
  }
  int error = oru::thread::init_recursive_mutex(&fresh->lock);
  if (error != 0) {
    oruFree(fresh);
    *result = oru_map_posix_error(error);
    return nullptr;
  }
  if (slot.compare_exchange_strong(control, fresh, std::memory_order_acq_rel,
                                   std::memory_order_acquire)) {
    return fresh;
  }
  // Another thread installed its block first; use that one.
  pthread_mutex_destroy(&fresh->lock);
  oruFree(fresh);
  return control;
}

}  // namespace

extern "C" ORU_API oruResult oruInitOnce(oruOnce* once, void (*init)(void)) {
  if (once == nullptr || init == nullptr) return ORU_E_INVALID_ARG;
  oruResult result = ORU_OK;
  oruOnceControl* control = control_of(once, &result);
  if (control == nullptr) return result;
  if (control->done.load(std::memory_order_acquire) != 0) return ORU_OK;

  int error = pthread_mutex_lock(&control->lock);
  if (error != 0) return oru_map_posix_error(error);
  if (control->done.load(std::memory_order_relaxed) == 0 && !control->running) {
    control->running = true;
    init();
    control->running = false;
    control->done.store(1, std::memory_order_release);
  }
  pthread_mutex_unlock(&control->lock);
  return ORU_OK;
}
