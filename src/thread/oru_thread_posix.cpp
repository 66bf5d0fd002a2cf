// Threads on pthreads, with the reaper.
//
// Every thread known to the library has a record (ThreadData) in the thread
// table under a handle number that is never reused; oruThread is that
// number.  Records are freed only by the reaper thread, and only once the
// thread has ended AND has been handed over (detached, joined, or adopted).
//
// A thread's end comes in two steps.  It "finishes" when the library's
// pthread key destructor runs: its routine has returned (or it left through
// oruThreadExit or pthread_exit) and its C++ thread_local destructors are
// done.  Its system thread is "ended" once pthread_join has collected it.
// Until then the thread keeps its record, so oruThreadSelf and oruTlsGet
// keep answering for it in whatever destructors still run.  Exactly one
// party collects a created thread: a joiner that claimed it, else the
// reaper, which is handed the record when it has finished (so that its
// pthread_join never waits for long).  The reaper then runs the thread-local
// destructors and frees the record under the thread lock.
//
// Threads the library does not own the end of are never joined: adopted
// threads (ones the library did not create), and created threads that
// detached themselves with the raw pthread call, which the key destructor
// notices; such a thread is ended as soon as it finishes, because its
// descriptor may belong to an unrelated thread soon after.
//
// fork: the thread lock and the key lock are held across it, and the child,
// whose only thread is the one that forked, forgets every other thread's
// record and starts a reaper of its own on first use.

#include "core/oru_internal.h"
#include "thread/oru_pthread_util.h"
#include "thread/oru_thread_internal.h"
#include "thread/oru_thread_stack.h"

#include <unistd.h>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <type_traits>

namespace oru::thread {

constinit thread_local ThreadData* t_self ORU_INITIAL_EXEC_TLS = nullptr;

namespace {

// What the reaper and the destructors it runs may use; the system's own
// share of a stack comes on top (see system_stack_size).
constexpr size_t kReaperStackSize = 0x20000;

struct Module {
  pthread_mutex_t thread_lock;
  pthread_mutex_t key_lock;
  pthread_cond_t reaper_wake;   // the reaper event
  pthread_cond_t thread_ended;  // joiners wait here
  pthread_cond_t start_gate;    // new threads wait here for their record
  // Holds each library thread's record, so that its destructor tells us when
  // the thread finishes, whichever way it leaves.
  pthread_key_t end_key;
  ThreadData* reaper_queue;  // finished and handed over, not yet taken
};

Module g_module;
pthread_once_t g_init_once = PTHREAD_ONCE_INIT;
std::atomic<bool> g_initialized{false};
// Whether this process has its reaper; cleared in a forked child.
std::atomic<bool> g_reaper_running{false};

void fatal(int error, const char* context) {
  oru_fatal_error(static_cast<unsigned long>(error), context);
}

// The record keeps the pthread_t in its platform field.
static_assert(std::is_same_v<pthread_t, uintptr_t>,
              "the record's field must be usable as a pthread_t");
inline pthread_t system_thread_of(const ThreadData* record) { return record->system_thread; }
inline pthread_t* system_thread_slot(ThreadData* record) { return &record->system_thread; }

void queue_for_reaper(ThreadData* record) {
  record->reap_next = g_module.reaper_queue;
  g_module.reaper_queue = record;
  int error = pthread_cond_signal(&g_module.reaper_wake);
  if (error != 0) fatal(error, "thread_detach[oru_thread]: SetEvent");
}

// Passes a record to the reaper once it is its business: handed over,
// finished, and not being collected by a joiner.  Thread lock held.
void release_when_ready(ThreadData* record) {
  if (record->detached && record->finished && !record->joining) queue_for_reaper(record);
}

// Whether the calling thread has been detached with the raw pthread call.
// When that cannot be told, it is taken as detached: leaving a system thread
// uncollected costs its stack, joining a foreign one can hang for ever.
bool detached_by_the_application() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return true;
  int state = PTHREAD_CREATE_DETACHED;
  pthread_attr_getdetachstate(&attributes, &state);
  pthread_attr_destroy(&attributes);
  return state == PTHREAD_CREATE_DETACHED;
}

// The end_key destructor: the thread has finished.  Unless its system
// thread is ours to collect, the record may be freed as soon as the lock is
// released, so the thread lets go of it first.
void on_thread_exit(void* value) {
  auto* record = static_cast<ThreadData*>(value);
  bool collectable = record->id != kAdoptedThreadId && !detached_by_the_application();
  lock_threads();
  record->finished = 1;
  record->exit_status = record->exit_pending;
  if (!collectable) {
    record->ended = 1;
    t_self = nullptr;
  }
  pthread_cond_broadcast(&g_module.thread_ended);
  release_when_ready(record);
  unlock_threads();
}

// Releases a record; called by the reaper with the thread lock held.
void delete_thread_data(ThreadData* record) {
  if (!thread_table().remove(record)) std::abort();
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

    // Collect the system threads still on their way out, without the lock:
    // their remaining destructors may call into the library.  Nobody else
    // touches a queued record.
    unlock_threads();
    for (ThreadData* record = batch; record != nullptr; record = record->reap_next) {
      if (!record->ended) pthread_join(system_thread_of(record), nullptr);
    }
    lock_threads();

    while (batch != nullptr) {
      ThreadData* record = batch;
      batch = record->reap_next;
      record->ended = 1;
      delete_thread_data(record);
    }
  }
  return nullptr;
}

// Thread lock held.
void start_reaper() {
  pthread_attr_t attributes;
  int error = pthread_attr_init(&attributes);
  if (error == 0) {
    error = pthread_attr_setstacksize(&attributes, system_stack_size(kReaperStackSize));
    if (error == 0) error = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    if (error == 0) error = pthread_create(&thread, &attributes, reaper, nullptr);
    pthread_attr_destroy(&attributes);
  }
  if (error != 0) fatal(error, "initialize[oru_thread]: CreateThread");
  g_reaper_running.store(true, std::memory_order_release);
}

// fork: the tables must not be copied half-changed, so the locks are held
// across it.
void before_fork() {
  lock_threads();
  lock_keys();
}

void after_fork_in_parent() {
  unlock_keys();
  unlock_threads();
}

// The child's only thread is the one that forked.  The locks and conditions
// are made anew (they may name threads of the parent), the other threads'
// records are dropped without running destructors (their threads never run
// here), and the reaper, which did not come along, starts on first use.
void after_fork_in_child() {
  Module& m = g_module;
  int error = init_recursive_mutex(&m.thread_lock);
  if (error == 0) error = init_recursive_mutex(&m.key_lock);
  if (error != 0) fatal(error, "after_fork[oru_thread]: InitializeCriticalSection");
  error = pthread_cond_init(&m.reaper_wake, nullptr);
  if (error == 0) error = pthread_cond_init(&m.thread_ended, nullptr);
  if (error == 0) error = pthread_cond_init(&m.start_gate, nullptr);
  if (error != 0) fatal(error, "after_fork[oru_thread]: CreateEvent");
  m.reaper_queue = nullptr;
  ThreadData* gone = thread_table().remove_all_except(t_self);
  while (gone != nullptr) {
    ThreadData* record = gone;
    gone = record->next;
    oruFree(record->tls_values);
    oruFree(record);
  }
  g_reaper_running.store(false, std::memory_order_relaxed);
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
  error = pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);
  if (error != 0) fatal(error, "initialize[oru_thread]: pthread_atfork");
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

  // The end_key destructor finishes the record, after the thread_local
  // destructors, exactly as when the thread leaves through oruThreadExit.
  record->exit_pending = routine(arg);
  return nullptr;
}

inline uintptr_t handle_of(oruThread thread) { return reinterpret_cast<uintptr_t>(thread); }

}  // namespace

bool threads_initialized() { return g_initialized.load(std::memory_order_acquire); }

void lock_threads() { pthread_mutex_lock(&g_module.thread_lock); }
void unlock_threads() { pthread_mutex_unlock(&g_module.thread_lock); }

// The record is released once its thread has finished, which may already be
// the case.
void thread_detach(ThreadData* record) {
  record->detached = 1;
  release_when_ready(record);
}

void ensure_initialized() {
  if (g_reaper_running.load(std::memory_order_acquire)) return;
  pthread_once(&g_init_once, initialize);
  lock_threads();
  if (!g_reaper_running.load(std::memory_order_relaxed)) start_reaper();
  unlock_threads();
}

void lock_keys() { pthread_mutex_lock(&g_module.key_lock); }
void unlock_keys() { pthread_mutex_unlock(&g_module.key_lock); }

ThreadData* get_self() {
  ThreadData* record = t_self;
  if (record != nullptr) return record;
  ensure_initialized();
  record = static_cast<ThreadData*>(oruCalloc(1, sizeof(ThreadData)));
  if (record == nullptr) return nullptr;
  record->id = kAdoptedThreadId;
  enter_adopted_record(record);
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
  NewThread prepared;
  oruResult result = prepare_new_thread(thread, start, arg, stackSize, &prepared);
  if (ORU_FAILED(result)) return result;
  StartBlock* block = prepared.block;
  ThreadData* record = prepared.record;
  stackSize = prepared.stack_size;

  pthread_attr_t attributes;
  int error = pthread_attr_init(&attributes);
  if (error == 0) {
    // Windows rounds a small stack up to its minimum; so do we.
    if (stackSize != 0)
      error = pthread_attr_setstacksize(&attributes, system_stack_size(stackSize));
    // pthread_create must store the id in the record itself, before the new
    // thread runs: a thread that ends at once is joined by the reaper from
    // this field, possibly before pthread_create has returned here.
    if (error == 0)
      error = pthread_create(system_thread_slot(record), &attributes, start_thread, block);
    pthread_attr_destroy(&attributes);
  }
  if (error != 0) {
    discard_new_thread(&prepared);
    return oru_map_posix_error(error);
  }

  lock_threads();
  enter_record(record);
  uintptr_t handle = record->handle;
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
  CancellationOff no_cancellation;
  lock_threads();
  ThreadData* record = thread_table().find(handle);
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
  if (record->joining) {
    // Another joiner collects the thread and then hands it over.  The
    // record may be gone after any wake-up, so it is looked up again.
    while (!record->ended) {
      pthread_cond_wait(&g_module.thread_ended, &g_module.thread_lock);
      record = thread_table().find(handle);
      if (record == nullptr) {
        unlock_threads();
        return ORU_E_NO_SUCH_PROCESS;
      }
    }
    unlock_threads();
    return ORU_E_INVALID_ARG;
  }

  // Ours to collect; while joining is set the record stays.  The system
  // thread is joined only once the thread has finished: by then it is known
  // whether the application detached it, and the wait is short.
  record->joining = 1;
  while (!record->finished) pthread_cond_wait(&g_module.thread_ended, &g_module.thread_lock);
  if (!record->ended) {
    pthread_t system_thread = system_thread_of(record);
    unlock_threads();
    pthread_join(system_thread, nullptr);
    lock_threads();
    record->ended = 1;
  }
  record->joining = 0;
  pthread_cond_broadcast(&g_module.thread_ended);
  if (record->detached) {
    // A detach came while we waited: the thread is the reaper's now.
    release_when_ready(record);
    unlock_threads();
    return ORU_E_INVALID_ARG;
  }
  unsigned status = record->exit_status;
  thread_detach(record);
  unlock_threads();
  if (exitStatus != nullptr) *exitStatus = status;
  return ORU_OK;
}

ORU_API void oruThreadExit(unsigned status) {
  // The end_key destructor finishes the record with this status.
  ThreadData* record = t_self;
  if (record != nullptr) record->exit_pending = status;
  pthread_exit(nullptr);
}

}  // extern "C"
