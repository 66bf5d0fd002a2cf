// Condition variables on Windows.
//
// The same design as the POSIX build: the variable keeps its own guard (a
// critical section) and a queue of the threads that wait, each with a
// system condition variable of its own.  A signal releases the oldest queued
// thread and nothing at all when nobody waits, so a wake-up is never
// remembered for a later arrival and never taken by a thread that started
// waiting after it.  Counting a waiter, releasing the caller's mutex and
// going to sleep all happen under the guard, and SleepConditionVariableCS
// gives up the guard and sleeps in one step.

#include "core/oru_internal.h"
#include "thread/oru_mutex_internal.h"
#include "thread/oru_waiter_queue.h"

#include <windows.h>

namespace {

struct Waiter {
  Waiter* next;
  Waiter* previous;
  CONDITION_VARIABLE wake;
  bool released;
};

}  // namespace

struct oruCondVarObject {
  // Threads queued and not yet released; the queue holds exactly these.
  oru::thread::WaiterQueue<Waiter> queue;
  CRITICAL_SECTION guard;
  // Released threads that have not yet re-entered the guard to leave; the
  // variable must outlive them, so destroy waits for them.
  uint32_t leaving;
  CONDITION_VARIABLE drained;
};

namespace {

inline oruCondVarObject* object_of(oruCondVar* condVar) {
  return condVar != nullptr ? *condVar : nullptr;
}

inline oruMutexObject* mutex_of(oruMutex* mutex) { return mutex != nullptr ? *mutex : nullptr; }

void enqueue(oruCondVarObject* object, Waiter* waiter) {
  InitializeConditionVariable(&waiter->wake);
  waiter->released = false;
  object->queue.push_back(waiter);
}

// Releases the oldest waiter; the guard is held and the queue is not empty.
void release_one(oruCondVarObject* object) {
  Waiter* waiter = object->queue.first;
  object->queue.remove(waiter);
  waiter->released = true;
  ++object->leaving;
  WakeConditionVariable(&waiter->wake);
}

// A waiter's exit from the queue, guard held: a released waiter counts
// itself off "leaving"; one that was not released (timed out, or its wait
// failed) takes itself out of the queue.  Returns whether it was released.
bool leave_queue(oruCondVarObject* object, Waiter* waiter) {
  if (waiter->released) {
    if (--object->leaving == 0) WakeAllConditionVariable(&object->drained);
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

}  // namespace

extern "C" {

ORU_API oruResult oruCondVarInit(oruCondVar* condVar) {
  if (condVar == nullptr) return ORU_E_INVALID_ARG;
  auto* object = static_cast<oruCondVarObject*>(oruCalloc(1, sizeof(oruCondVarObject)));
  if (object == nullptr) return ORU_E_OUT_OF_MEMORY;
  InitializeCriticalSection(&object->guard);
  InitializeConditionVariable(&object->drained);
  *condVar = object;
  return ORU_OK;
}

ORU_API oruResult oruCondVarDestroy(oruCondVar* condVar) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_OK;
  EnterCriticalSection(&object->guard);
  for (;;) {
    if (!object->queue.empty()) {
      LeaveCriticalSection(&object->guard);
      return ORU_E_BUSY;
    }
    if (object->leaving == 0) break;
    SleepConditionVariableCS(&object->drained, &object->guard, INFINITE);
  }
  *condVar = nullptr;
  LeaveCriticalSection(&object->guard);
  DeleteCriticalSection(&object->guard);
  oruFree(object);
  return ORU_OK;
}

ORU_API oruResult oruCondVarSignal(oruCondVar* condVar) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  EnterCriticalSection(&object->guard);
  if (!object->queue.empty()) release_one(object);
  LeaveCriticalSection(&object->guard);
  return ORU_OK;
}

ORU_API oruResult oruCondVarBroadcast(oruCondVar* condVar) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  EnterCriticalSection(&object->guard);
  while (!object->queue.empty()) release_one(object);
  LeaveCriticalSection(&object->guard);
  return ORU_OK;
}

ORU_API oruResult oruCondVarWait(oruCondVar* condVar, oruMutex* mutex) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  EnterCriticalSection(&object->guard);
  oruMutexObject* callerMutex = mutex_of(mutex);
  if (callerMutex == nullptr) {
    LeaveCriticalSection(&object->guard);
    return ORU_E_INVALID_ARG;
  }
  oruResult left = oru::thread::mutex_unlock(callerMutex);
  if (ORU_FAILED(left)) {
    // The caller does not hold its mutex; nothing has changed yet.
    LeaveCriticalSection(&object->guard);
    return left;
  }

  Waiter waiter;
  enqueue(object, &waiter);
  DWORD error = 0;
  while (!waiter.released) {
    if (!SleepConditionVariableCS(&waiter.wake, &object->guard, INFINITE)) {
      error = GetLastError();
      break;
    }
  }
  if (leave_queue(object, &waiter)) error = 0;
  LeaveCriticalSection(&object->guard);

  if (error != 0) {
    reenter(mutex);
    return oru_map_win32_error(error);
  }
  // The slot may have been cleared while we slept.
  return oruMutexLock(mutex);
}

ORU_API oruResult oruCondVarTimedWait(oruCondVar* condVar, oruMutex* mutex,
                                      const oruTimeVal* deadline) {
  oruCondVarObject* object = object_of(condVar);
  if (object == nullptr || deadline == nullptr) return ORU_E_INVALID_ARG;
  EnterCriticalSection(&object->guard);
  oruMutexObject* callerMutex = mutex_of(mutex);
  if (callerMutex != nullptr) {
    oruResult left = oru::thread::mutex_unlock(callerMutex);
    if (ORU_FAILED(left)) {
      LeaveCriticalSection(&object->guard);
      return left;
    }
  }

  oruTimeVal now;
  oruGetCurrentTime(&now);
  int64_t remaining = (static_cast<int64_t>(deadline->sec) - now.sec) * 1000 +
                      (static_cast<int64_t>(deadline->usec) - now.usec) / 1000;
  if (remaining <= 0) {
    // Deliberately returns without entering the caller's mutex again.
    LeaveCriticalSection(&object->guard);
    return ORU_E_TIMEDOUT;
  }
  if (remaining >= 0xFFFFFFFF) remaining = 0xFFFFFFFE;

  // The sleep is timed on the tick count, so that setting the system clock
  // neither stretches nor shortens a wait once it has started.
  const ULONGLONG until = GetTickCount64() + static_cast<ULONGLONG>(remaining);
  Waiter waiter;
  enqueue(object, &waiter);
  DWORD error = 0;
  while (!waiter.released) {
    ULONGLONG tick = GetTickCount64();
    if (tick >= until) {
      error = ERROR_TIMEOUT;
      break;
    }
    if (!SleepConditionVariableCS(&waiter.wake, &object->guard, static_cast<DWORD>(until - tick))) {
      error = GetLastError();
      if (error != ERROR_TIMEOUT) break;
    }
  }
  // A release that raced with the timeout still counts as a wake-up.
  bool released = leave_queue(object, &waiter);
  LeaveCriticalSection(&object->guard);

  if (released) return oruMutexLock(mutex);
  reenter(mutex);
  return error == ERROR_TIMEOUT ? ORU_E_TIMEDOUT : oru_map_win32_error(error);
}

}  // extern "C"
