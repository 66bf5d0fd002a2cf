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

constinit thread_local ThreadData* t_self = nullptr;

namespace {

// The start routine's argument, allocated by the creator and freed by the
// new thread, which runs only once record has been filled in.
struct StartBlock {
  oruThreadStart routine;
  void* arg;
  ThreadData* record;
};

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
  uintptr_t last_handle;
  ThreadTable table;
};

Module g_module;
INIT_ONCE g_init_once = INIT_ONCE_STATIC_INIT;
std::atomic<bool> g_initialized{false};
std::atomic<size_t> g_default_stack_size{0};

[[noreturn]] void fatal_last_error(const char* context) {
  oru_fatal_error(GetLastError(), context);
}

void lock_threads() { EnterCriticalSection(&g_module.thread_lock); }
void unlock_threads() { LeaveCriticalSection(&g_module.thread_lock); }

HANDLE system_thread_of(const ThreadData* record) {
  return reinterpret_cast<HANDLE>(record->system_thread);
}

uintptr_t new_handle() {
  g_module.last_handle += 4;
  return g_module.last_handle;
}

void queue_for_reaper(ThreadData* record) {
  record->reap_next = g_module.reaper_queue;
  g_module.reaper_queue = record;
  if (!SetEvent(g_module.reaper_wake)) fatal_last_error("thread_detach[oru_thread]: SetEvent");
}

// Hands a record to the reaper; thread lock held.  A record a joiner has
// claimed goes when the joiner is done with its handle.
void thread_detach(ThreadData* record) {
  record->detached = 1;
  if (!record->joining) queue_for_reaper(record);
}

// Releases the record of an ended thread; the reaper, thread lock held.
void delete_thread_data(ThreadData* record) {
  if (!g_module.table.remove(record)) std::abort();
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

BOOL CALLBACK initialize(PINIT_ONCE, PVOID, PVOID*) {
  Module& m = g_module;
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
  t_self = start->record;
  oruThreadStart routine = start->routine;
  void* arg = start->arg;
  oruFree(start);
  return routine(arg);
}

inline uintptr_t handle_of(oruThread thread) { return reinterpret_cast<uintptr_t>(thread); }

}  // namespace

void ensure_initialized() {
  if (g_initialized.load(std::memory_order_acquire)) return;
  InitOnceExecuteOnce(&g_init_once, initialize, nullptr, nullptr);
}

void lock_keys() { EnterCriticalSection(&g_module.key_lock); }
void unlock_keys() { LeaveCriticalSection(&g_module.key_lock); }

ThreadData* get_self() {
  ThreadData* record = t_self;
  if (record != nullptr) return record;
  ensure_initialized();
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
  lock_threads();
  record->handle = new_handle();
  g_module.table.insert(record);
  // Nobody can join an adopted thread: its record goes when it ends.
  thread_detach(record);
  unlock_threads();
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
  DWORD creation = CREATE_SUSPENDED;
  if (stackSize != 0) {
    stackSize = system_stack_size(stackSize);
    creation |= STACK_SIZE_PARAM_IS_A_RESERVATION;
  }
  DWORD id = 0;
  HANDLE system = CreateThread(nullptr, stackSize, start_thread, block, creation, &id);
  if (system == nullptr) {
    oruResult result = oru_map_last_win32_error();
    oruFree(block);
    oruFree(record);
    return result;
  }
  record->system_thread = reinterpret_cast<uintptr_t>(system);
  record->id = id;

  lock_threads();
  uintptr_t handle = new_handle();
  record->handle = handle;
  g_module.table.insert(record);
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
    record = g_module.table.find(handle);
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

ORU_API void oruThreadExit(unsigned status) { ExitThread(status); }

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
