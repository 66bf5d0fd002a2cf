// The thread module's shared state: the per-thread record, the thread table,
// and what the thread-local storage needs from the thread part.
//
// Locks, in this order only: the thread lock (table, reaper queue, detached
// and ended flags), then the key lock (thread-local key table).
#ifndef ORU_SRC_THREAD_ORU_THREAD_INTERNAL_H
#define ORU_SRC_THREAD_ORU_THREAD_INTERNAL_H

#include "core/oru_internal.h"
#include "oru/thread.h"

#include <cstdint>

namespace oru::thread {

// The id of a thread the library did not create (an adopted thread).
inline constexpr uint32_t kAdoptedThreadId = 0xFFFFFFFFu;

// One per thread known to the library.  Allocated zero-filled; freed only by
// the reaper, once the thread has ended and nobody can join it any more (and
// in a forked child, where the parent's other threads' records are dropped).
struct ThreadData {
  ThreadData* next;       // next record in the same bucket of the table
  ThreadData* reap_next;  // next record in the reaper queue
  uintptr_t handle;       // the thread's oruThread, also the table key
  uint32_t id;            // system thread id, or kAdoptedThreadId
  uint32_t detached;      // handed to the reaper (detached, joined or adopted)
  uint32_t tls_count;     // slots in tls_values
  void** tls_values;      // thread-local values, indexed by key
  // The thread's way out, under the thread lock:
  //  - finished: the thread is past its routine and its C++ thread_local
  //    destructors (it is in the pthread key destructors); exit_status is
  //    valid;
  //  - joining: a joiner has claimed the system thread and will collect it;
  //  - ended: the system thread is gone (collected with pthread_join), or it
  //    is one the library does not collect (adopted, or detached with the
  //    raw pthread call) and it has finished.
  uint32_t finished;
  uint32_t joining;
  uint32_t ended;
  unsigned exit_status;   // valid once finished
  unsigned exit_pending;  // written by the thread itself before it finishes
  // The platform's thread object (a pthread_t, or a Win32 thread HANDLE),
  // kept and interpreted by the platform file alone.
  uintptr_t system_thread;
};

// The thread table: records by handle.  Handles are multiples of 4, so the
// bucket is (handle >> 2) & 255.  The thread lock guards it.
class ThreadTable {
 public:
  void insert(ThreadData* record);
  ThreadData* find(uintptr_t handle) const;
  // False when the record is not in the table.
  bool remove(ThreadData* record);
  // Empties the table but for `keep` (may be null); returns the removed
  // records chained through their next field.
  ThreadData* remove_all_except(ThreadData* keep);

 private:
  static constexpr unsigned kBuckets = 256;
  static unsigned bucket(uintptr_t handle) { return (handle >> 2) & (kBuckets - 1); }
  ThreadData* buckets_[kBuckets] = {};
};

// The calling thread's record, or null.  Read without a lock: each thread
// writes only its own.  On Windows it lives in a system thread-local slot
// (TlsAlloc) of the platform file.
#if defined(_WIN32)
ThreadData* current_record();
#else
extern constinit thread_local ThreadData* t_self ORU_INITIAL_EXEC_TLS;
inline ThreadData* current_record() { return t_self; }
#endif

// The start routine's argument, allocated by the creator and freed by the
// new thread, which runs the routine only once record has been filled in.
struct StartBlock {
  oruThreadStart routine;
  void* arg;
  ThreadData* record;
};

// What oruThreadCreate has prepared before the platform starts the thread.
struct NewThread {
  StartBlock* block;
  ThreadData* record;
  size_t stack_size;  // the caller's, or the default; 0 for the system's
};

// oruThreadCreate's checks and allocations, common to the platforms:
// ORU_E_INVALID_ARG for a null slot or routine, ORU_E_OUT_OF_MEMORY.
oruResult prepare_new_thread(oruThread* thread, oruThreadStart start, void* arg, size_t stackSize,
                             NewThread* prepared);
// Frees what prepare_new_thread allocated, when the thread did not start.
void discard_new_thread(NewThread* prepared);

// Gives a record the next handle and enters it in the table; thread lock
// held.  Handles are multiples of 4 and never reused.
void enter_record(ThreadData* record);
// The same for the record of a thread the library did not create, which
// nobody can join: it goes to the reaper at once.  Takes the thread lock.
void enter_adopted_record(ThreadData* record);
// The table of every known thread's record; thread lock held.
ThreadTable& thread_table();

// Provided by the platform file:
// Whether the module has been set up; no handle is known before.
bool threads_initialized();
// The thread lock.
void lock_threads();
void unlock_threads();
// Hands a record to the reaper, which releases it once its thread has
// ended and no joiner holds it; thread lock held.
void thread_detach(ThreadData* record);
// The module's one-time set-up (locks, key table, fork handlers), and the
// reaper, which is started again in a forked child on its first use there.
void ensure_initialized();

// The calling thread's record, adopting the thread if it has none yet;
// null only when memory for a record is exhausted.
ThreadData* get_self();

// The key lock of the thread-local key table.
void lock_keys();
void unlock_keys();

// Thread-local storage hooks for the thread part.
bool tls_initialize_keys();   // false when the table cannot be allocated
uint32_t tls_key_capacity();  // key lock held
// The destructor rounds over an ended thread's values; both locks held.
void tls_run_destructors(ThreadData* record);

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_THREAD_INTERNAL_H
