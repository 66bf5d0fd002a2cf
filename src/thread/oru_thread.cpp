// What the threads of both platforms share: handles and the table, the
// first steps of creating a thread, and the operations that only consult
// the table.  How threads start, end and are collected is the platform
// file's.

#include "core/oru_internal.h"
#include "thread/oru_thread_internal.h"

#include <atomic>

namespace oru::thread {

namespace {

ThreadTable g_table;      // thread lock
uintptr_t g_last_handle;  // thread lock
std::atomic<size_t> g_default_stack_size{0};

inline uintptr_t handle_of(oruThread thread) { return reinterpret_cast<uintptr_t>(thread); }

}  // namespace

ThreadTable& thread_table() { return g_table; }

void enter_record(ThreadData* record) {
  g_last_handle += 4;
  record->handle = g_last_handle;
  g_table.insert(record);
}

void enter_adopted_record(ThreadData* record) {
  lock_threads();
  enter_record(record);
  thread_detach(record);
  unlock_threads();
}

oruResult prepare_new_thread(oruThread* thread, oruThreadStart start, void* arg, size_t stackSize,
                             NewThread* prepared) {
  *prepared = NewThread{};
  if (thread == nullptr || start == nullptr) return ORU_E_INVALID_ARG;
  prepared->block = static_cast<StartBlock*>(oruCalloc(1, sizeof(StartBlock)));
  prepared->record = static_cast<ThreadData*>(oruCalloc(1, sizeof(ThreadData)));
  if (prepared->block == nullptr || prepared->record == nullptr) {
    discard_new_thread(prepared);
    return ORU_E_OUT_OF_MEMORY;
  }
  prepared->block->routine = start;
  prepared->block->arg = arg;
  prepared->stack_size =
      stackSize != 0 ? stackSize : g_default_stack_size.load(std::memory_order_relaxed);
  return ORU_OK;
}

void discard_new_thread(NewThread* prepared) {
  oruFree(prepared->block);
  oruFree(prepared->record);
  *prepared = NewThread{};
}

}  // namespace oru::thread

using namespace oru::thread;

extern "C" {

ORU_API oruResult oruThreadDetach(oruThread thread) {
  if (!threads_initialized()) return ORU_E_NO_SUCH_PROCESS;
  lock_threads();
  ThreadData* record = g_table.find(handle_of(thread));
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
