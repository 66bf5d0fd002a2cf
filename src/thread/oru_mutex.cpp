// Recursive mutexes.
//
// The lock word follows the classic three-state futex mutex: taking it is a
// compare-and-exchange from 0 to 1; a thread that finds it held marks it 2
// and sleeps on it (a futex on Linux; see oru_word_wait.h); releasing it is
// an exchange to 0, waking one sleeper only when the old value was 2.  The
// owner's identity makes it recursive and lets a release by any other thread
// be refused.

#include "core/oru_internal.h"
#include "thread/oru_mutex_internal.h"
#include "thread/oru_word_wait.h"

#include <new>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define ORU_HAVE_SINGLE_THREADED 1
#endif

namespace oru::thread {

namespace {

// While the process has one thread there is nobody to exclude, and the C
// library's own mutexes skip their atomic instructions; so do we.  The flag
// only ever goes from true to false, by this very thread creating another.
inline bool single_threaded() {
#if defined(ORU_HAVE_SINGLE_THREADED)
  return __libc_single_threaded != 0;
#else
  return false;
#endif
}

// 0 until the thread first needs it.
constinit thread_local uint64_t t_identity ORU_INITIAL_EXEC_TLS = 0;
std::atomic<uint64_t> g_last_identity{0};

[[gnu::noinline]] uint64_t new_identity() {
  t_identity = g_last_identity.fetch_add(1, std::memory_order_relaxed) + 1;
  return t_identity;
}

inline uint64_t identity() {
  uint64_t self = t_identity;
  return __builtin_expect(self != 0, 1) ? self : new_identity();
}

// The lock word was found held: wait until we can take it.  It is left at 2,
// since other sleepers may remain; that costs one spare wake-up at most.
[[gnu::noinline]] void lock_contended(oruMutexObject* mutex, uint32_t seen) {
  if (seen != 2) seen = mutex->state.exchange(2, std::memory_order_acquire);
  while (seen != 0) {
    wait_while_equal(mutex->state, 2);
    seen = mutex->state.exchange(2, std::memory_order_acquire);
  }
}

}  // namespace

uint64_t self_identity() { return identity(); }

oruResult mutex_lock(oruMutexObject* mutex) {
  uint64_t self = identity();
  if (mutex->owner.load(std::memory_order_relaxed) == self) {
    if (mutex->count == UINT32_MAX) return ORU_E_AGAIN;
    ++mutex->count;
    return ORU_OK;
  }
  uint32_t seen = 0;
  if (single_threaded() && mutex->state.load(std::memory_order_relaxed) == 0) {
    mutex->state.store(1, std::memory_order_relaxed);
  } else if (!mutex->state.compare_exchange_strong(seen, 1, std::memory_order_acquire,
                                                   std::memory_order_relaxed)) {
    lock_contended(mutex, seen);
  }
  mutex->owner.store(self, std::memory_order_relaxed);
  mutex->count = 1;
  return ORU_OK;
}

oruResult mutex_unlock(oruMutexObject* mutex) {
  // A thread without an identity holds nothing (and must not match a free
  // mutex's owner 0).
  uint64_t self = t_identity;
  if (mutex->owner.load(std::memory_order_relaxed) != self || self == 0) {
    return ORU_E_ACCESS_DENIED;
  }
  if (--mutex->count != 0) return ORU_OK;
  mutex->owner.store(0, std::memory_order_relaxed);
  if (single_threaded()) {
    mutex->state.store(0, std::memory_order_relaxed);  // nobody can be asleep on it
  } else if (mutex->state.exchange(0, std::memory_order_release) == 2) {
    wake_one_waiter(mutex->state);
  }
  return ORU_OK;
}

}  // namespace oru::thread

namespace {

inline oruMutexObject* object_of(oruMutex* mutex) { return mutex != nullptr ? *mutex : nullptr; }

}  // namespace

extern "C" {

ORU_API oruResult oruMutexInit(oruMutex* mutex) {
  if (mutex == nullptr) return ORU_E_INVALID_ARG;
  *mutex = nullptr;
  void* memory = oruCalloc(1, sizeof(oruMutexObject));
  if (memory == nullptr) return ORU_E_OUT_OF_MEMORY;
  *mutex = new (memory) oruMutexObject{};
  return ORU_OK;
}

ORU_API oruResult oruMutexDestroy(oruMutex* mutex) {
  oruMutexObject* object = object_of(mutex);
  if (object == nullptr) return ORU_OK;
  *mutex = nullptr;
  // Destroying a mutex that is still held is the caller's fault; the memory
  // goes anyway, as a deleted critical section's would.
  object->~oruMutexObject();
  oruFree(object);
  return ORU_OK;
}

ORU_API oruResult oruMutexLock(oruMutex* mutex) {
  oruMutexObject* object = object_of(mutex);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  return oru::thread::mutex_lock(object);
}

ORU_API oruResult oruMutexTryLock(oruMutex* mutex) {
  oruMutexObject* object = object_of(mutex);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  uint64_t self = oru::thread::self_identity();
  if (object->owner.load(std::memory_order_relaxed) == self) {
    if (object->count == UINT32_MAX) return ORU_E_AGAIN;
    ++object->count;
    return ORU_OK;
  }
  uint32_t seen = 0;
  if (!object->state.compare_exchange_strong(seen, 1, std::memory_order_acquire,
                                             std::memory_order_relaxed)) {
    return ORU_E_BUSY;
  }
  object->owner.store(self, std::memory_order_relaxed);
  object->count = 1;
  return ORU_OK;
}

ORU_API oruResult oruMutexUnlock(oruMutex* mutex) {
  oruMutexObject* object = object_of(mutex);
  if (object == nullptr) return ORU_E_INVALID_ARG;
  return oru::thread::mutex_unlock(object);
}

}  // extern "C"
