// Threads on the Win32 thread interface, with the reaper.
//
// As in the POSIX build, every thread known to the library has a record
// (ThreadData) in the thread table under a handle number that is never
// reused; oruThread is that number, and the system's thread HANDLE stays
// inside the record.  A thread is created suspended and resumed only once
// its record is in the table, so it always finds its record.
//
// The loader sends the library no thread notifications (see DllMain), so
// the library learns that a thread has ended from its handle, which the
// system signals once the thread is gone.  Records that have been handed
// over (detached, joined or adopted) go to the reaper, which waits on their
// handles and, as each thread ends, runs its thread-local destructors, closes
// its handle and frees the record, under the thread lock.
//
// A joiner claims the thread (joining), waits for its handle without the
// lock, reads the exit code and hands the record to the reaper; the handle
// stays open until the reaper has it, so a second joiner waits for the first
// one instead of for a handle that may be closed under it.

#include "core/oru_internal.h"
#include "thread/oru_thread_internal.h"
#include "thread/oru_thread_stack.h"

#include <windows.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace oru::thread {

namespace {

constexpr size_t kReaperStackSize = 0x20000;
// WaitForMultipleObjects takes at most this many handles; the reaper's own
// event takes one of them.
constexpr DWORD kWaitLimit = MAXIMUM_WAIT_OBJECTS;

struct Module {
  CRITICAL_SECTION thread_lock;
  CRITICAL_SECTION key_lock;
  HANDLE reaper_wake;               // auto-reset: records are queued
  CONDITION_VARIABLE thread_ended;  // a joiner has collected a thread
  ThreadData* reaper_queue;         // handed over, not yet in the wait set
};

Module g_module;
// The system thread-local slot holding each thread's record.
DWORD g_self_index = TLS_OUT_OF_INDEXES;
INIT_ONCE g_init_once = INIT_ONCE_STATIC_INIT;
std::atomic<bool> g_initialized{false};

[[noreturn]] void fatal_last_error(const char* context) {
  oru_fatal_error(GetLastError(), context);
}

HANDLE system_thread_of(const ThreadData* record) {
  return reinterpret_cast<HANDLE>(record->system_thread);
}

void queue_for_reaper(ThreadData* record) {
  record->reap_next = g_module.reaper_queue;
  g_module.reaper_queue = record;
  if (!SetEvent(g_module.reaper_wake)) fatal_last_error("thread_detach[oru_thread]: SetEvent");
}

// Releases the record of an ended thread; the reaper, thread lock held.
void delete_thread_data(ThreadData* record) {
  if (!thread_table().remove(record)) std::abort();
  if (!CloseHandle(system_thread_of(record)))
    fatal_last_error("delete_thread_data[oru_thread]: CloseHandle");
  lock_keys();
  if (record->tls_count > tls_key_capacity()) std::abort();
  tls_run_destructors(record);
  unlock_keys();
  oruFree(record->tls_values);
  oruFree(record);
}

// The records the reaper waits for, handle beside record.
struct WaitSet {
  HANDLE* handles;  // handles[0] is the reaper event
  ThreadData** records;
  DWORD count;
  DWORD capacity;
};

// Makes room for one more entry; retries every second while memory is short.
void grow(WaitSet& set) {
  if (set.count < set.capacity) return;
  DWORD capacity = set.capacity * 2;
  for (;;) {
    auto* handles = static_cast<HANDLE*>(oruRealloc(set.handles, capacity * sizeof(HANDLE)));
    if (handles != nullptr) set.handles = handles;
    auto* records =
        static_cast<ThreadData**>(oruRealloc(set.records, capacity * sizeof(ThreadData*)));
    if (records != nullptr) set.records = records;
    if (handles != nullptr && records != nullptr) break;
    Sleep(1000);
    capacity *= 2;
  }
  set.capacity = capacity;
}

DWORD WINAPI reaper(LPVOID) {
  WaitSet set = {};
  set.capacity = kWaitLimit;
  set.handles = static_cast<HANDLE*>(oruCalloc(set.capacity, sizeof(HANDLE)));
  set.records = static_cast<ThreadData**>(oruCalloc(set.capacity, sizeof(ThreadData*)));
  if (set.handles == nullptr || set.records == nullptr)
    oru_fatal_error(ORU_FATAL_OUT_OF_MEMORY, "reaper[oru_thread]: calloc");
  set.handles[0] = g_module.reaper_wake;
  set.count = 1;

  for (;;) {
    // More threads than one wait can watch: watch the first window for a
    // short while, then move it to the back and watch the next.
    DWORD watched = set.count < kWaitLimit ? set.count : kWaitLimit;
    DWORD timeout = watched < set.count ? 10 : INFINITE;
    DWORD result = WaitForMultipleObjects(watched, set.handles, FALSE, timeout);
    if (result == WAIT_FAILED) fatal_last_error("reaper[oru_thread]: WaitForMultipleObjects");
    if (result == WAIT_TIMEOUT) {
      DWORD moved = watched - 1;
      for (DWORD i = 1; i + moved < set.count; ++i) {
        std::swap(set.handles[i], set.handles[i + moved]);
        std::swap(set.records[i], set.records[i + moved]);
      }
      continue;
    }
    DWORD index = result - WAIT_OBJECT_0;
    if (index >= watched) continue;  // abandoned: not one of ours

    lock_threads();
    if (index == 0) {
      while (g_module.reaper_queue != nullptr) {
        ThreadData* record = g_module.reaper_queue;
        g_module.reaper_queue = record->reap_next;
        grow(set);
        set.handles[set.count] = system_thread_of(record);
        set.records[set.count] = record;
        ++set.count;
      }
    } else {
      ThreadData* record = set.records[index];
      --set.count;
      set.handles[index] = set.handles[set.count];
      set.records[index] = set.records[set.count];
      record->finished = 1;
      record->ended = 1;
      delete_thread_data(record);
    }
    unlock_threads();
  }
}

void set_current_record(ThreadData* record, const char* context) {
  if (!TlsSetValue(g_self_index, record)) fatal_last_error(context);
}

BOOL CALLBACK initialize(PINIT_ONCE, PVOID, PVOID*) {
  Module& m = g_module;
  g_self_index = TlsAlloc();
  if (g_self_index == TLS_OUT_OF_INDEXES) fatal_last_error("initialize[oru_thread]: TlsAlloc");
  InitializeCriticalSection(&m.thread_lock);
  InitializeCriticalSection(&m.key_lock);
  InitializeConditionVariable(&m.thread_ended);
  m.reaper_wake = CreateEventA(nullptr, FALSE, FALSE, nullptr);
  if (m.reaper_wake == nullptr) fatal_last_error("initialize[oru_thread]: CreateEvent");
  if (!tls_initialize_keys()) {
    oru_fatal_error(ORU_FATAL_OUT_OF_MEMORY, "initialize[oru_thread]: calloc");
  }
  // The reaper runs the library's code for the rest of the process, so the
  // library must never be unloaded: pin it.
  HMODULE self = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<LPCSTR>(&initialize), &self);
  HANDLE thread = CreateThread(nullptr, system_stack_size(kReaperStackSize), reaper, nullptr,
                               STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (thread == nullptr) fatal_last_error("initialize[oru_thread]: CreateThread");
  // Kept for the life of the process.
  g_initialized.store(true, std::memory_order_release);
  return TRUE;
}

DWORD WINAPI start_thread(LPVOID argument) {
  auto* start = static_cast<StartBlock*>(argument);
  set_current_record(start->record, "start_thread[oru_thread]: TlsSetValue");
  oruThreadStart routine = start->routine;
  void* arg = start->arg;
  oruFree(start);
  return routine(arg);
}

inline uintptr_t handle_of(oruThread thread) { return reinterpret_cast<uintptr_t>(thread); }

}  // namespace

bool threads_initialized() { return g_initialized.load(std::memory_order_acquire); }

void lock_threads() { EnterCriticalSection(&g_module.thread_lock); }
void unlock_threads() { LeaveCriticalSection(&g_module.thread_lock); }

// A record a joiner has claimed goes when the joiner is done with its
// handle.
void thread_detach(ThreadData* record) {
  record->detached = 1;
  if (!record->joining) queue_for_reaper(record);
}

ThreadData* current_record() {
  if (!g_initialized.load(std::memory_order_acquire)) return nullptr;
  return static_cast<ThreadData*>(TlsGetValue(g_self_index));
}

void ensure_initialized() {
  if (g_initialized.load(std::memory_order_acquire)) return;
  InitOnceExecuteOnce(&g_init_once, initialize, nullptr, nullptr);
}

void lock_keys() { EnterCriticalSection(&g_module.key_lock); }
void unlock_keys() { LeaveCriticalSection(&g_module.key_lock); }

ThreadData* get_self() {
  ensure_initialized();
  ThreadData* record = current_record();
  if (record != nullptr) return record;
  record = static_cast<ThreadData*>(oruCalloc(1, sizeof(ThreadData)));
  if (record == nullptr) return nullptr;
  HANDLE process = GetCurrentProcess();
  HANDLE thread = nullptr;
  if (!DuplicateHandle(process, GetCurrentThread(), process, &thread, 0, FALSE,
                       DUPLICATE_SAME_ACCESS)) {
    fatal_last_error("get_self[oru_thread]: DuplicateHandle");
  }
  record->system_thread = reinterpret_cast<uintptr_t>(thread);
  record->id = kAdoptedThreadId;
  enter_adopted_record(record);
  set_current_record(record, "get_self[oru_thread]: TlsSetValue");
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
  DWORD creation = CREATE_SUSPENDED;
  if (stackSize != 0) {
    stackSize = system_stack_size(stackSize);
    creation |= STACK_SIZE_PARAM_IS_A_RESERVATION;
  }
  DWORD id = 0;
  HANDLE system = CreateThread(nullptr, stackSize, start_thread, block, creation, &id);
  if (system == nullptr) {
    result = oru_map_last_win32_error();
    discard_new_thread(&prepared);
    return result;
  }
  record->system_thread = reinterpret_cast<uintptr_t>(system);
  record->id = id;

  lock_threads();
  enter_record(record);
  uintptr_t handle = record->handle;
  if ((flags & ORU_THREAD_DETACHED) != 0) thread_detach(record);
  block->record = record;
  // Still suspended, so even a detached thread cannot have ended and been
  // released yet.
  if (ResumeThread(system) == static_cast<DWORD>(-1))
    fatal_last_error("oruThreadCreate: ResumeThread");
  unlock_threads();

  *thread = reinterpret_cast<oruThread>(handle);
  return ORU_OK;
}

ORU_API oruResult oruThreadJoin(oruThread thread, unsigned* exitStatus) {
  // Before the first thread exists no handle can be known.
  if (!g_initialized.load(std::memory_order_acquire)) return ORU_E_NO_SUCH_PROCESS;
  uintptr_t handle = handle_of(thread);
  lock_threads();
  ThreadData* record;
  for (;;) {
    record = thread_table().find(handle);
    if (record == nullptr) {
      unlock_threads();
      return ORU_E_NO_SUCH_PROCESS;
    }
    if (record->detached) {
      unlock_threads();
      return ORU_E_INVALID_ARG;
    }
    if (record == current_record()) {
      // Waiting for ourselves would never end.
      unlock_threads();
      return oru_map_posix_error(EDEADLK);
    }
    if (!record->joining) break;
    // Another joiner holds the claim: wait until it is done, then look
    // again (the record may be gone, or detached, by then).
    SleepConditionVariableCS(&g_module.thread_ended, &g_module.thread_lock, INFINITE);
  }

  // Ours to collect; while joining is set the record and its handle stay.
  record->joining = 1;
  HANDLE system = system_thread_of(record);
  unlock_threads();
  DWORD waited = WaitForSingleObject(system, INFINITE);
  oruResult result = waited == WAIT_FAILED ? oru_map_last_win32_error() : ORU_OK;
  DWORD status = 0;
  if (result == ORU_OK && !GetExitCodeThread(system, &status)) {
    result = oru_map_last_win32_error();
  }
  lock_threads();
  record->joining = 0;
  WakeAllConditionVariable(&g_module.thread_ended);
  if (record->detached) {
    // A detach came while we waited: the thread is the reaper's now.
    queue_for_reaper(record);
    unlock_threads();
    return ORU_E_INVALID_ARG;
  }
  if (ORU_FAILED(result)) {
    // The thread stays joinable.
    unlock_threads();
    return result;
  }
  record->finished = 1;
  record->ended = 1;
  record->exit_status = status;
  thread_detach(record);
  unlock_threads();
  if (exitStatus != nullptr) *exitStatus = status;
  return ORU_OK;
}

ORU_API void oruThreadExit(unsigned status) { ExitThread(status); }

}  // extern "C"
