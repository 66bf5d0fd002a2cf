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
//   owner: the holder's identity (see oru::thread::self_identity), or 0.
//   count: how often the holder has entered; touched by the holder only.
struct oruMutexObject {
  std::atomic<uint32_t> state;
  uint32_t count;
  std::atomic<uint64_t> owner;
};

namespace oru::thread {

// The calling thread's identity: a number drawn once per thread from a
// process-wide counter, never 0 and never given to another thread while the
// process lives (unlike the thread's stack or thread-local addresses, which
// a later thread may get again).
uint64_t self_identity();

oruResult mutex_lock(oruMutexObject* mutex);
oruResult mutex_unlock(oruMutexObject* mutex);

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_MUTEX_INTERNAL_H
