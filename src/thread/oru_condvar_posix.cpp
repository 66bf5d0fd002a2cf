// Condition variables on pthreads.
//
// The variable keeps its own guard and counts the threads that wait.  A
// signal must release exactly one thread that is waiting at that moment and
// nothing at all when nobody waits (a wake-up is never remembered for a later
// arrival).  A single pthread condition cannot promise that: a thread that
// starts waiting just after a signal may consume it in place of the thread
// it was meant for.  So every waiter queues a small record of its own, with
// its own pthread condition, and a signal releases the oldest queued record.
// The number of queued records is the count of waiters.
//
// Counting a waiter, releasing the caller's mutex and going to sleep all
// happen under the guard, and pthread_cond_wait gives up the guard and sleeps
// in one step, so a signal can never slip in between: a counted waiter is
// always a sleeping (or released) one.
//
// The sleep is a cancellation point (pthread_cancel).  A cancelled waiter
// leaves as a timed-out one would, hands on a wake-up it had been given, and
// enters the caller's mutex again as pthread_cond_wait does, before the
// caller's own cleanup handlers run.

#include "core/oru_internal.h"
#include "thread/oru_mutex_internal.h"
#include "thread/oru_pthread_util.h"
#include "thread/oru_waiter_queue.h"

#include <cerrno>
#include <ctime>

namespace {

struct Waiter {
  Waiter* next;
  Waiter* previous;
  pthread_cond_t wake;
  bool released;
};

}  // namespace

struct oruCondVarObject {
  // Threads queued and not yet released; the queue holds exactly these.
  oru::thread::WaiterQueue<Waiter> queue;
  pthread_mutex_t guard;
  // Released threads that have not yet re-entered the guard to leave.  The
  // variable must outlive them, so destroy waits for them (briefly: they are
  // runnable).
  uint32_t leaving;
  pthread_cond_t drained;
};

namespace {

// Waiters time their sleep on the monotonic clock, so that setting the
// system clock neither stretches nor shortens a timed wait once it has
// started (the deadline itself is read on the real-time clock, on entry).
// Never destroyed: threads may still be waiting while the process exits.
class WaiterConditionAttributes {
 public:
  WaiterConditionAttributes() {
    usable_ = pthread_condattr_init(&attributes_) == 0;
    if (usable_) pthread_condattr_setclock(&attributes_, CLOCK_MONOTONIC);
  }
  WaiterConditionAttributes(const WaiterConditionAttributes&) = delete;
  WaiterConditionAttributes& operator=(const WaiterConditionAttributes&) = delete;

  const pthread_condattr_t* get() const { return usable_ ? &attributes_ : nullptr; }
  clockid_t clock() const { return usable_ ? CLOCK_MONOTONIC : CLOCK_REALTIME; }

 private:
  pthread_condattr_t attributes_;
  bool usable_;
};

const WaiterConditionAttributes& waiter_attributes() {
  static const auto* attributes = new WaiterConditionAttributes;
  return *attributes;
}

inline oruCondVarObject* object_of(oruCondVar* condVar) {
  return condVar != nullptr ? *condVar : nullptr;
}

inline oruMutexObject* mutex_of(oruMutex* mutex) { return mutex != nullptr ? *mutex : nullptr; }

// Releases the oldest waiter; the guard is held and the queue is not empty.
oruResult release_one(oruCondVarObject* object) {
  Waiter* waiter = object->queue.first;
  int error = pthread_cond_signal(&waiter->wake);
  if (error != 0) return oru_map_posix_error(error);
  object->queue.remove(waiter);
  waiter->released = true;
  ++object->leaving;
  return ORU_OK;
}

// A waiter's exit from the queue, with the guard held: a released waiter
// counts itself off "leaving"; one that was not released (timed out, or its
// wait failed) takes itself out of the queue.  Returns whether it was
// released.
bool leave_queue(oruCondVarObject* object, Waiter* waiter) {
  if (waiter->released) {
    if (--object->leaving == 0) pthread_cond_broadcast(&object->drained);
    return true;
  }
  object->queue.remove(waiter);
  return false;
}

// Enters the caller's mutex again after a wait; a null slot is skipped.
void reenter(oruMutex* mutex) {
  oruMutexObject* object = mutex_of(mutex);
  if (object != nullptr) oru::thread::mutex_lock(object);
}

timespec monotonic_deadline(clockid_t clock, int64_t milliseconds) {
  timespec now = {};
  clock_gettime(clock, &now);
  timespec deadline;
  int64_t nanoseconds = static_cast<int64_t>(now.tv_nsec) + (milliseconds % 1000) * 1000000;
  deadline.tv_sec = now.tv_sec + static_cast<time_t>(milliseconds / 1000) +
                    static_cast<time_t>(nanoseconds / 1000000000);
  deadline.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
  return deadline;
}

// The cleanup of a waiter that pthread_cancel ends inside its sleep.
struct CancelledWait {
  oruCondVarObject* object;
  Waiter* waiter;
  oruMutex* mutex;
};

// pthread_cond_wait has taken the guard again when this runs.
void on_cancel(void* argument) {
  auto* cancelled = static_cast<CancelledWait*>(argument);
  oruCondVarObject* object = cancelled->object;
  // A signal already meant for this thread must not be lost with it.
  if (leave_queue(object, cancelled->waiter) && !object->queue.empty()) release_one(object);
  pthread_cond_destroy(&cancelled->waiter->wake);
  pthread_mutex_unlock(&object->guard);
  reenter(cancelled->mutex);
}

void release_guard(oruCondVarObject* object, const char* context) {
  int error = pthread_mutex_unlock(&object->guard);
  if (error != 0) oru_fatal_error(static_cast<unsigned long>(error), context);
}

}  // namespace

extern "C" {

ORU_API oruResult oruCondVarInit(oruCondVar* condVar) {
  if (condVar == nullptr) return ORU_E_INVALID_ARG;
  auto* object = static_cast<oruCondVarObject*>(oruCalloc(1, sizeof(oruCondVarObject)));
  if (object == nullptr) return ORU_E_OUT_OF_MEMORY;
  int error = pthread_mutex_init(&object->guard, nullptr);
  if (error == 0) {
    error = pthread_cond_init(&object->drained, nullptr);
    if (error != 0) pthread_mutex_destroy(&object->guard);
  }
  if (error != 0) {
    oruFree(object);
    return oru_map_posix_error(error);
  }
  *condVar = object;
  return ORU_OK;
}

ORU_API oruResult oruCondVarDestroy(oruCondVar* condVar) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_OK;
  oru::thread::CancellationOff no_cancellation;
  int error = pthread_mutex_lock(&object->guard);
  if (error != 0) return oru_map_posix_error(error);
  for (;;) {
    if (!object->queue.empty()) {
      pthread_mutex_unlock(&object->guard);
      return ORU_E_BUSY;
    }
    if (object->leaving == 0) break;
    pthread_cond_wait(&object->drained, &object->guard);
  }
  *condVar = nullptr;
  pthread_mutex_unlock(&object->guard);
  oruResult result = ORU_OK;
  error = pthread_cond_destroy(&object->drained);
  if (error != 0) result = oru_map_posix_error(error);
  error = pthread_mutex_destroy(&object->guard);
  if (error != 0 && result == ORU_OK) result = oru_map_posix_error(error);
  oruFree(object);
  return result;
}

ORU_API oruResult oruCondVarSignal(oruCondVar* condVar) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  int error = pthread_mutex_lock(&object->guard);
  if (error != 0) return oru_map_posix_error(error);
  oruResult result = ORU_OK;
  if (!object->queue.empty()) result = release_one(object);
  release_guard(object, "oruCondVarSignal: ReleaseMutex");
  return result;
}

ORU_API oruResult oruCondVarBroadcast(oruCondVar* condVar) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  int error = pthread_mutex_lock(&object->guard);
  if (error != 0) return oru_map_posix_error(error);
  oruResult result = ORU_OK;
  while (!object->queue.empty()) {
    result = release_one(object);
    if (ORU_FAILED(result)) break;
  }
  release_guard(object, "oruCondVarBroadcast: ReleaseMutex");
  return result;
}

ORU_API oruResult oruCondVarWait(oruCondVar* condVar, oruMutex* mutex) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  int error = pthread_mutex_lock(&object->guard);
  if (error != 0) return oru_map_posix_error(error);
  oruMutexObject* callerMutex = mutex_of(mutex);
  if (callerMutex == nullptr) {
    pthread_mutex_unlock(&object->guard);
    return ORU_E_INVALID_ARG;
  }
  oruResult left = oru::thread::mutex_unlock(callerMutex);
  if (ORU_FAILED(left)) {
    // The caller does not hold its mutex; nothing has changed yet.
    pthread_mutex_unlock(&object->guard);
    return left;
  }

  Waiter waiter = {};
  error = pthread_cond_init(&waiter.wake, waiter_attributes().get());
  if (error == 0) {
    object->queue.push_back(&waiter);
    CancelledWait cancelled = {object, &waiter, mutex};
    pthread_cleanup_push(on_cancel, &cancelled);
    while (!waiter.released) {
      error = pthread_cond_wait(&waiter.wake, &object->guard);
      if (error != 0) break;
    }
    pthread_cleanup_pop(0);
    if (leave_queue(object, &waiter)) error = 0;
    pthread_cond_destroy(&waiter.wake);
  }
  pthread_mutex_unlock(&object->guard);

  if (error != 0) {
    reenter(mutex);
    return oru_map_posix_error(error);
  }
  // The slot may have been cleared while we slept.
  return oruMutexLock(mutex);
}

ORU_API oruResult oruCondVarTimedWait(oruCondVar* condVar, oruMutex* mutex,
                                      const oruTimeVal* deadline) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr || deadline == nullptr) return ORU_E_INVALID_ARG;
  int error = pthread_mutex_lock(&object->guard);
  if (error != 0) return oru_map_posix_error(error);
  oruMutexObject* callerMutex = mutex_of(mutex);
  if (callerMutex != nullptr) {
    oruResult left = oru::thread::mutex_unlock(callerMutex);
    if (ORU_FAILED(left)) {
      pthread_mutex_unlock(&object->guard);
      return left;
    }
  }

  oruTimeVal now;
  oruGetCurrentTime(&now);
  int64_t remaining = (static_cast<int64_t>(deadline->sec) - now.sec) * 1000 +
                      (static_cast<int64_t>(deadline->usec) - now.usec) / 1000;
  if (remaining <= 0) {
    // Deliberately returns without entering the caller's mutex again.
    pthread_mutex_unlock(&object->guard);
    return ORU_E_TIMEDOUT;
  }
  if (remaining >= 0xFFFFFFFF) remaining = 0xFFFFFFFE;

  const WaiterConditionAttributes& attributes = waiter_attributes();
  Waiter waiter = {};
  bool released = false;
  error = pthread_cond_init(&waiter.wake, attributes.get());
  if (error == 0) {
    timespec until = monotonic_deadline(attributes.clock(), remaining);
    object->queue.push_back(&waiter);
    CancelledWait cancelled = {object, &waiter, mutex};
    pthread_cleanup_push(on_cancel, &cancelled);
    while (!waiter.released) {
      error = pthread_cond_timedwait(&waiter.wake, &object->guard, &until);
      if (error != 0) break;
    }
    pthread_cleanup_pop(0);
    // A release that raced with the timeout still counts as a wake-up.
    released = leave_queue(object, &waiter);
    pthread_cond_destroy(&waiter.wake);
  }
  pthread_mutex_unlock(&object->guard);

  if (released) return oruMutexLock(mutex);
  reenter(mutex);
  return error == ETIMEDOUT ? ORU_E_TIMEDOUT : oru_map_posix_error(error);
}

}  // extern "C"
