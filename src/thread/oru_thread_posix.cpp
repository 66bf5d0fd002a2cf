// Threads on pthreads, with the reaper.
//
// Every thread known to the library has a record (ThreadData) in the thread
// table under a handle number that is never reused; oruThread is that
// number.  Records are freed only by the reaper thread, and only once the
// thread has ended AND has been handed over (detached, joined, or adopted):
//
//  - a created thread marks its record "ended" under the thread lock when
//    its start routine returns, or from the pthread key destructor when it
//    leaves through oruThreadExit or pthread_exit;
//  - an adopted thread (one the library did not create) gets a record on
//    first contact, handed over at once, and marks it ended from the same
//    key destructor when the thread exits;
//  - whichever of "ended" and "handed over" comes second puts the record on
//    the reaper queue and wakes the reaper.
//
// The reaper pthread_join()s created threads, so their system thread is
// truly gone, then releases the records under the thread lock, running the
// thread-local destructors there.  Joiners do not pthread_join: they wait for
// "ended" on a condition shared by all joiners and look the handle up again
// after every wake-up, so a record that vanished meanwhile is never touched.

#include "core/oru_internal.h"
#include "thread/oru_pthread_util.h"
#include "thread/oru_thread_internal.h"

#include <limits.h>
#include <unistd.h>
#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace oru::thread {

constinit thread_local ThreadData* t_self __attribute__((tls_model("initial-exec"))) = nullptr;

namespace {

// The start routine's argument, allocated by the creator and freed by the
// new thread.  record stays null until the creator has entered the record in
// the table: the new thread waits for it (the stand-in for starting the
// thread suspended).
struct StartBlock {
  oruThreadStart routine;
  void* arg;
  ThreadData* record;
};

constexpr size_t kReaperStackSize = 0x20000;

struct Module {
  pthread_mutex_t thread_lock;
  pthread_mutex_t key_lock;
  pthread_cond_t reaper_wake;   // the reaper event
  pthread_cond_t thread_ended;  // joiners wait here
  pthread_cond_t start_gate;    // new threads wait here for their record
  // Holds each library thread's record so that its destructor tells us when
  // the thread exits without returning from its start routine, or when an
  // adopted thread ends.
  pthread_key_t end_key;
  ThreadData* reaper_queue;  // ended and handed over, not yet taken
  uintptr_t last_handle;
  ThreadTable table;
};

Module g_module;
pthread_once_t g_init_once = PTHREAD_ONCE_INIT;
std::atomic<bool> g_initialized{false};
std::atomic<size_t> g_default_stack_size{0};

void fatal(int error, const char* context) {
  oru_fatal_error(static_cast<unsigned long>(error), context);
}

void lock_threads() { pthread_mutex_lock(&g_module.thread_lock); }
void unlock_threads() { pthread_mutex_unlock(&g_module.thread_lock); }

uintptr_t new_handle() {
  g_module.last_handle += 4;
  return g_module.last_handle;
}

void queue_for_reaper(ThreadData* record) {
  record->reap_next = g_module.reaper_queue;
  g_module.reaper_queue = record;
  int error = pthread_cond_signal(&g_module.reaper_wake);
  if (error != 0) fatal(error, "thread_detach[oru_thread]: SetEvent");
}

// Hands a record to the reaper; thread lock held.  It is released as soon as
// its thread has ended, which may already be the case.
void thread_detach(ThreadData* record) {
  record->detached = 1;
  if (record->ended) queue_for_reaper(record);
}

// The calling thread is done with the library: after this its record may be
// freed at any moment.
void thread_end(ThreadData* record, unsigned status) {
  lock_threads();
  record->ended = 1;
  record->exit_status = status;
  pthread_cond_broadcast(&g_module.thread_ended);
  if (record->detached) queue_for_reaper(record);
  unlock_threads();
}

// The end_key destructor: the thread exits holding a record it has not
// marked ended (an adopted thread, or a created one leaving through
// oruThreadExit or pthread_exit).
void on_thread_exit(void* value) {
  auto* record = static_cast<ThreadData*>(value);
  t_self = nullptr;
  thread_end(record, record->exit_pending);
}

// Releases a record; called by the reaper with the thread lock held.
void delete_thread_data(ThreadData* record) {
  if (!g_module.table.remove(record)) std::abort();
  lock_keys();
  if (record->tls_count > tls_key_capacity()) std::abort();
  tls_run_destructors(record);
  unlock_keys();
  oruFree(record->tls_values);
  oruFree(record);
}

void* reaper(void*) {
  lock_threads();
  for (;;) {
    while (g_module.reaper_queue == nullptr) {
      int error = pthread_cond_wait(&g_module.reaper_wake, &g_module.thread_lock);
      if (error != 0) fatal(error, "reaper[oru_thread]: WaitForMultipleObjects");
    }
    ThreadData* batch = g_module.reaper_queue;
    g_module.reaper_queue = nullptr;

    // Wait for the system threads to be gone without holding the lock: an
    // exiting thread may still need it (a destructor of another library that
    // calls into this one adopts the thread afresh).
    unlock_threads();
    // pthread_join fails only if someone detached the thread behind our back
    // with the raw pthread call; it then cleans up after itself.
    for (ThreadData* record = batch; record != nullptr; record = record->reap_next) {
      if (record->id != kAdoptedThreadId) pthread_join(record->system_thread, nullptr);
    }
    lock_threads();

    while (batch != nullptr) {
      ThreadData* record = batch;
      batch = record->reap_next;
      delete_thread_data(record);
    }
  }
  return nullptr;
}

void initialize() {
  Module& m = g_module;
  int error = pthread_key_create(&m.end_key, on_thread_exit);
  if (error != 0) fatal(error, "initialize[oru_thread]: TlsAlloc");
  error = init_recursive_mutex(&m.thread_lock);
  if (error != 0) fatal(error, "initialize[oru_thread]: InitializeCriticalSection");
  error = pthread_cond_init(&m.reaper_wake, nullptr);
  if (error == 0) error = pthread_cond_init(&m.thread_ended, nullptr);
  if (error == 0) error = pthread_cond_init(&m.start_gate, nullptr);
  if (error != 0) fatal(error, "initialize[oru_thread]: CreateEvent");
  error = init_recursive_mutex(&m.key_lock);
  if (error != 0) fatal(error, "initialize[oru_thread]: InitializeCriticalSection");
  if (!tls_initialize_keys()) fatal(ORU_FATAL_OUT_OF_MEMORY, "initialize[oru_thread]: calloc");

  pthread_attr_t attributes;
  error = pthread_attr_init(&attributes);
  if (error == 0) {
    pthread_attr_setstacksize(&attributes, kReaperStackSize);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    error = pthread_create(&thread, &attributes, reaper, nullptr);
    pthread_attr_destroy(&attributes);
  }
  if (error != 0) fatal(error, "initialize[oru_thread]: CreateThread");
  g_initialized.store(true, std::memory_order_release);
}

void* start_thread(void* argument) {
  auto* start = static_cast<StartBlock*>(argument);
  lock_threads();
  while (start->record == nullptr) pthread_cond_wait(&g_module.start_gate, &g_module.thread_lock);
  ThreadData* record = start->record;
  record->id = static_cast<uint32_t>(gettid());
  unlock_threads();

  int error = pthread_setspecific(g_module.end_key, record);
  if (error != 0) fatal(error, "start_thread[oru_thread]: TlsSetValue");
  t_self = record;
  oruThreadStart routine = start->routine;
  void* arg = start->arg;
  oruFree(start);

  unsigned status = routine(arg);

  // Ending here, so the key destructor must not end the record again.
  pthread_setspecific(g_module.end_key, nullptr);
  t_self = nullptr;
  thread_end(record, status);
  return nullptr;
}

size_t usable_stack_size(size_t requested) {
  // Windows rounds a small stack up to its minimum; do the same.
  auto minimum = static_cast<size_t>(PTHREAD_STACK_MIN);
  return requested < minimum ? minimum : requested;
}

inline uintptr_t handle_of(oruThread thread) { return reinterpret_cast<uintptr_t>(thread); }

}  // namespace

void ensure_initialized() { pthread_once(&g_init_once, initialize); }

void lock_keys() { pthread_mutex_lock(&g_module.key_lock); }
void unlock_keys() { pthread_mutex_unlock(&g_module.key_lock); }

ThreadData* get_self() {
  ThreadData* record = t_self;
  if (record != nullptr) return record;
  ensure_initialized();
  record = static_cast<ThreadData*>(oruCalloc(1, sizeof(ThreadData)));
  if (record == nullptr) return nullptr;
  record->id = kAdoptedThreadId;
  lock_threads();
  record->handle = new_handle();
  g_module.table.insert(record);
  // Nobody can join an adopted thread: its record goes when it ends.
  thread_detach(record);
  unlock_threads();
  int error = pthread_setspecific(g_module.end_key, record);
  if (error != 0) fatal(error, "get_self[oru_thread]: TlsSetValue");
  t_self = record;
  return record;
}

}  // namespace oru::thread

using namespace oru::thread;

extern "C" {

ORU_API oruResult oruThreadCreate(oruThread* thread, int flags, size_t stackSize,
                                  oruThreadStart start, void* arg) {
  ensure_initialized();
  if (thread == nullptr || start == nullptr) return ORU_E_INVALID_ARG;

  auto* block = static_cast<StartBlock*>(oruCalloc(1, sizeof(StartBlock)));
  auto* record = static_cast<ThreadData*>(oruCalloc(1, sizeof(ThreadData)));
  if (block == nullptr || record == nullptr) {
    oruFree(block);
    oruFree(record);
    return ORU_E_OUT_OF_MEMORY;
  }
  block->routine = start;
  block->arg = arg;

  if (stackSize == 0) stackSize = g_default_stack_size.load(std::memory_order_relaxed);
  pthread_attr_t attributes;
  int error = pthread_attr_init(&attributes);
  if (error == 0) {
    if (stackSize != 0)
      error = pthread_attr_setstacksize(&attributes, usable_stack_size(stackSize));
    if (error == 0)
      error = pthread_create(&record->system_thread, &attributes, start_thread, block);
    pthread_attr_destroy(&attributes);
  }
  if (error != 0) {
    oruFree(block);
    oruFree(record);
    return oru_map_posix_error(error);
  }

  lock_threads();
  uintptr_t handle = new_handle();
  record->handle = handle;
  g_module.table.insert(record);
  if ((flags & ORU_THREAD_DETACHED) != 0) thread_detach(record);
  block->record = record;
  error = pthread_cond_broadcast(&g_module.start_gate);
  if (error != 0) fatal(error, "oruThreadCreate: ResumeThread");
  unlock_threads();

  // The record may be gone already (a detached thread that has finished).
  *thread = reinterpret_cast<oruThread>(handle);
  return ORU_OK;
}

ORU_API oruResult oruThreadJoin(oruThread thread, unsigned* exitStatus) {
  // Before the first thread exists no handle can be known.
  if (!g_initialized.load(std::memory_order_acquire)) return ORU_E_NO_SUCH_PROCESS;
  uintptr_t handle = handle_of(thread);
  lock_threads();
  ThreadData* record = g_module.table.find(handle);
  if (record == nullptr) {
    unlock_threads();
    return ORU_E_NO_SUCH_PROCESS;
  }
  if (record->detached) {
    unlock_threads();
    return ORU_E_INVALID_ARG;
  }
  if (record == t_self) {
    // Waiting for ourselves would never end.
    unlock_threads();
    return oru_map_posix_error(EDEADLK);
  }
  while (!record->ended) {
    pthread_cond_wait(&g_module.thread_ended, &g_module.thread_lock);
    record = g_module.table.find(handle);
    if (record == nullptr) {
      unlock_threads();
      return ORU_E_NO_SUCH_PROCESS;
    }
  }
  if (record->detached) {
    // Another joiner or a detach came first.
    unlock_threads();
    return ORU_E_INVALID_ARG;
  }
  unsigned status = record->exit_status;
  thread_detach(record);
  unlock_threads();
  if (exitStatus != nullptr) *exitStatus = status;
  return ORU_OK;
}

ORU_API oruResult oruThreadDetach(oruThread thread) {
  if (!g_initialized.load(std::memory_order_acquire)) return ORU_E_NO_SUCH_PROCESS;
  lock_threads();
  ThreadData* record = g_module.table.find(handle_of(thread));
  oruResult result = ORU_OK;
  if (record == nullptr) {
    result = ORU_E_NO_SUCH_PROCESS;
  } else if (record->detached) {
    result = ORU_E_INVALID_ARG;
  } else {
    thread_detach(record);
  }
  unlock_threads();
  return result;
}

ORU_API void oruThreadExit(unsigned status) {
  // The end_key destructor ends the record with this status.
  ThreadData* record = t_self;
  if (record != nullptr) record->exit_pending = status;
  pthread_exit(nullptr);
}

ORU_API oruThread oruThreadSelf(void) {
  ThreadData* record = get_self();
  return record != nullptr ? reinterpret_cast<oruThread>(record->handle) : nullptr;
}

ORU_API int oruThreadEqual(oruThread a, oruThread b) { return a == b ? 1 : 0; }

ORU_API oruResult oruSetDefaultStackSize(size_t size) {
  g_default_stack_size.store(size, std::memory_order_relaxed);
  return ORU_OK;
}

}  // extern "C"
