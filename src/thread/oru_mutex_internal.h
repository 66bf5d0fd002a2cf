// The object behind an oruMutex slot, and its lock and unlock, which the
// condition variables also use to leave and re-enter the caller's mutex.
#ifndef ORU_SRC_THREAD_ORU_MUTEX_INTERNAL_H
#define ORU_SRC_THREAD_ORU_MUTEX_INTERNAL_H

#include "oru/thread.h"

#include <atomic>
#include <cstdint>

// A recursive mutex built on one lock word, so that taking and releasing it
// uncontended costs one atomic operation each and no call into the system.
//   state: 0 free, 1 held, 2 held and someone may be sleeping on it.
//   owner: the holder's identity (see oru::thread::self_identity), or null.
//   count: how often the holder has entered; touched by the holder only.
struct oruMutexObject {
  std::atomic<uint32_t> state;
  std::atomic<const void*> owner;
  uint32_t count;
};

namespace oru::thread {

// A value unique to each running thread: the address of a thread-local
// byte, one instruction away.
const void* self_identity();

oruResult mutex_lock(oruMutexObject* mutex);
oruResult mutex_unlock(oruMutexObject* mutex);

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_MUTEX_INTERNAL_H
