/**
 * @file
 * oru/thread.h - threads, mutexes, condition variables, once-initialisation,
 * atomics and thread-local storage.
 *
 * The first use of threads, thread-local storage or oruStrError starts one
 * background thread of the library's own (the reaper), which releases ended
 * threads and runs their thread-local destructors.  Because that thread and
 * a pthread key destructor of the library stay in place for the life of the
 * process, the library is linked never to be unloaded: dlclose leaves it
 * mapped.
 */
#ifndef ORU_THREAD_H
#define ORU_THREAD_H

#include "oru/core.h"
#include "oru/time.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Marks a function that does not return. */
#if defined(__GNUC__)
#define ORU_NORETURN __attribute__((noreturn))
#else
#define ORU_NORETURN
#endif

/** @{ */
/**
 * Mutexes, condition variables and once-controls are caller-owned,
 * pointer-sized slots.  A slot that is NULL is not initialised (or has been
 * destroyed); the library stores a pointer to its own object in it.
 */
typedef struct oruMutexObject* oruMutex;
typedef struct oruCondVarObject* oruCondVar;
typedef struct oruOnceControl* oruOnce;
/** @} */

/** Start value of an oruOnce (a plain NULL does as well). */
#define ORU_ONCE_INIT NULL

/** @{ */
/**
 * Mutexes are recursive: the owner may lock again, and unlocks as often.
 * A null slot (or a null pointer to one) gives ORU_E_INVALID_ARG, except in
 * oruMutexDestroy, where it is ORU_OK.  oruMutexTryLock gives ORU_E_BUSY when
 * another thread holds the mutex.  Unlocking a mutex the caller does not hold
 * gives ORU_E_ACCESS_DENIED.  A mutex belongs to a thread, known by an
 * identity that no other thread gets while the process lives: a mutex whose
 * owner ended while holding it stays held for good.
 */
ORU_API oruResult oruMutexInit(oruMutex* mutex);
ORU_API oruResult oruMutexDestroy(oruMutex* mutex);
ORU_API oruResult oruMutexLock(oruMutex* mutex);
ORU_API oruResult oruMutexTryLock(oruMutex* mutex);
ORU_API oruResult oruMutexUnlock(oruMutex* mutex);
/** @} */

/** @{ */
/**
 * Condition variables, used with a mutex of this library held by the
 * caller.  A signal releases one thread that is waiting at that moment and is
 * not remembered when nobody waits; a broadcast releases every waiting
 * thread.  Waiters re-check their predicate: a wake-up says only that the
 * predicate may have changed.
 *
 * oruCondVarDestroy gives ORU_E_BUSY while a thread waits; the variable then
 * stays usable.
 *
 * oruCondVarWait and oruCondVarTimedWait give ORU_E_ACCESS_DENIED, and change
 * nothing, when the caller does not hold the mutex.  A null mutex slot gives
 * ORU_E_INVALID_ARG in oruCondVarWait and is skipped by oruCondVarTimedWait.
 *
 * oruCondVarTimedWait waits until an absolute time (see oruGetCurrentTime).
 * It gives ORU_E_TIMEDOUT when the time passes.  On entry the time left is
 * computed in whole milliseconds, truncated, so a deadline less than one
 * millisecond away counts as passed.  In that case, and only then, the wait
 * never begins: the call returns ORU_E_TIMEDOUT at once WITHOUT taking the
 * caller's mutex again, and the caller no longer holds it.  On every other
 * path, including ORU_E_TIMEDOUT after a wait that began, the mutex is held
 * again on return.  So after ORU_E_TIMEDOUT the caller does not hold the
 * mutex exactly when the wait never began.  oruMutexUnlock tells the two
 * apart: it gives ORU_E_ACCESS_DENIED when the wait never began and ORU_OK
 * (releasing the mutex) when it had.  The safe pattern, for a mutex locked
 * once (not recursively) around the wait:
 *
 *     r = oruCondVarTimedWait(&cond, &mutex, &deadline);
 *     if (r == ORU_E_TIMEDOUT) {
 *       oruMutexUnlock(&mutex);   (ORU_E_ACCESS_DENIED if it never began)
 *       oruMutexLock(&mutex);     (held again on both paths)
 *     }
 *
 * The sleep in oruCondVarWait and oruCondVarTimedWait is a cancellation point
 * of pthread_cancel (deferred cancellation).  A cancelled waiter leaves the
 * variable as a timed-out one would (no longer counted; a wake-up it had
 * already been given passes to the next waiter) and, as with
 * pthread_cond_wait, holds the caller's mutex again when the thread's
 * cleanup handlers run.  No other function of this header is a cancellation
 * point (oruThreadJoin and oruCondVarDestroy hold a cancellation off until
 * they return), though callbacks it runs, such as an oruInitOnce routine,
 * may contain some.
 */
ORU_API oruResult oruCondVarInit(oruCondVar* condVar);
ORU_API oruResult oruCondVarDestroy(oruCondVar* condVar);
ORU_API oruResult oruCondVarSignal(oruCondVar* condVar);
ORU_API oruResult oruCondVarBroadcast(oruCondVar* condVar);
ORU_API oruResult oruCondVarWait(oruCondVar* condVar, oruMutex* mutex);
ORU_API oruResult oruCondVarTimedWait(oruCondVar* condVar, oruMutex* mutex,
                                      const oruTimeVal* deadline);
/** @} */

/**
 * Runs init exactly once per slot.  Threads that arrive while it runs wait
 * until it has finished; a call on the same slot from inside init returns
 * ORU_OK at once.  The slot starts as ORU_ONCE_INIT.
 */
ORU_API oruResult oruInitOnce(oruOnce* once, void (*init)(void));

/** @{ */
/**
 * Atomic counters with a full barrier.  Only the sign of the new value is
 * reported: 1 if positive, 0 if zero, -1 if negative (so an increment that
 * wraps from the largest value reports 1, and likewise a decrement that
 * wraps from the smallest).  A null pointer changes nothing and gives 0.
 */
ORU_API int oruAtomicIncrement(int32_t* value);
ORU_API int oruAtomicDecrement(int32_t* value);
/** @} */

/**
 * Threads.
 *
 * An oruThread is a handle number, not an address: every thread known to the
 * library gets a fresh one, and numbers are not reused.  Two handles denote
 * the same thread exactly when they are equal.  A handle that the library
 * never gave out, or whose thread has been released (joined or detached,
 * and ended), is simply unknown: join and detach give ORU_E_NO_SUCH_PROCESS
 * and nothing is touched.
 *
 * On POSIX systems a created thread is a pthread whose end the library
 * collects (pthread_join) itself: do not pthread_join or pthread_detach it.
 * A thread that detaches itself anyway is noticed when it ends and left
 * alone; oruThreadJoin then cannot wait for its system thread to be gone.
 * pthread_cancel may end a created thread: it ends as through
 * oruThreadExit(0).
 *
 * fork: the library holds its locks across fork, so a child forked while
 * other threads use it finds it consistent.  In the child the only thread is
 * the one that forked: the handles of all others are unknown there (their
 * records are dropped without running their thread-local destructors), and
 * the reaper starts again on first use.
 */
typedef struct oruThreadHandle* oruThread;

/** The start routine; its result is the thread's exit status. */
typedef unsigned (*oruThreadStart)(void* arg);

/** oruThreadCreate flag: create the thread detached. */
#define ORU_THREAD_DETACHED 1

/** Starts a thread running start(arg).  stackSize is the stack the routine
 * gets: 0 means the default set by oruSetDefaultStackSize (when that is 0
 * too, the system's default); a size below the system's minimum is rounded
 * up to it; what the system keeps inside a thread's stack for itself (with
 * glibc: the program's static thread-local data and a guard page) is added on
 * top.  Flags other than ORU_THREAD_DETACHED are ignored.  The handle belongs
 * to the library.  ORU_E_INVALID_ARG for a null thread or start,
 * ORU_E_OUT_OF_MEMORY when the library's records cannot be allocated, or the
 * translation of the system's refusal (e.g. ORU_E_AGAIN). */
ORU_API oruResult oruThreadCreate(oruThread* thread, int flags, size_t stackSize,
                                  oruThreadStart start, void* arg);

/** Waits for a joinable thread to end and stores its exit status (a null
 * exitStatus is allowed).  A thread has ended when its routine has returned
 * (or it left through oruThreadExit), its C++ thread_local destructors and
 * the pthread key destructors have run, and its system thread is gone.  Up to
 * then oruThreadSelf and oruTlsGet, called from those destructors, still
 * answer for the thread.  Its oruTlsSet values are destroyed afterwards, on
 * the reaper, possibly after this call has returned.  ORU_E_INVALID_ARG for a
 * detached, already joined or adopted thread (also when it is detached or
 * joined by another thread while this call waits), ORU_E_NO_SUCH_PROCESS for
 * an unknown handle.  A thread joining itself gets the translation of
 * EDEADLK. */
ORU_API oruResult oruThreadJoin(oruThread thread, unsigned* exitStatus);

/** Lets a thread's resources go when it ends; it can no longer be joined. */
ORU_API oruResult oruThreadDetach(oruThread thread);

/** Ends the calling thread with the given exit status.  Its C++ thread_local
 * destructors and the pthread key destructors run as when the routine
 * returns. */
ORU_API ORU_NORETURN void oruThreadExit(unsigned status);

/** The calling thread's handle.  A thread the library did not create gets one
 * on first contact (it counts as detached).  NULL only when memory for that
 * is exhausted. */
ORU_API oruThread oruThreadSelf(void);

/** 1 if both handles denote the same thread, else 0. */
ORU_API int oruThreadEqual(oruThread a, oruThread b);

/** The stack size for threads created with stackSize 0; 0 is the system's
 * default.  Always ORU_OK. */
ORU_API oruResult oruSetDefaultStackSize(size_t size);

/**
 * Thread-local storage.  Keys are small numbers, handed out lowest first; a
 * deleted key is the next one handed out.
 *
 * A key's destructor runs on the old value when oruTlsSet replaces a
 * non-null value (even with the same pointer), in the calling thread.  The
 * values a thread leaves are destroyed later, on the reaper (the library's
 * background thread), with the library's thread and key locks held:
 *  - for a thread created with oruThreadCreate, once it has ended (its
 *    system thread is gone) and has been joined or detached; after a join
 *    this is usually shortly after oruThreadJoin returns, not before;
 *  - for a thread the library did not create, when it exits (once its C++
 *    thread_local destructors have run).
 * No destructor runs for the values of a joinable thread that is never
 * joined, nor for values still set when the process exits (the main thread's
 * among them), nor, in a forked child, for the values of the parent's other
 * threads.  Destructors must not call the thread or thread-local functions.
 */
typedef uint32_t oruTlsKey;

/** Creates a key whose values start as null in every thread; destructor
 * (may be null) runs on the values as described above. */
ORU_API oruResult oruTlsKeyCreate(oruTlsKey* key, void (*destructor)(void* value));
/** Values held under a deleted key are left alone: neither destroyed nor
 * cleared. */
ORU_API oruResult oruTlsKeyDelete(oruTlsKey key);
/** Stores value under the key for the calling thread. */
ORU_API oruResult oruTlsSet(oruTlsKey key, void* value);
/** NULL when the calling thread has stored nothing under the key. */
ORU_API void* oruTlsGet(oruTlsKey key);

#ifdef __cplusplus
}
#endif

#endif /* ORU_THREAD_H */
