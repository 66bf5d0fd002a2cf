// The kernel32 entry points that older systems lack, looked up by name.

#include "file/oru_file_win32.h"

#include <atomic>

namespace oru::file {

namespace {

// Resolved once, without a lock: concurrent first calls look the same names
// up twice and store the same values.
struct DynamicEntryPoints {
  std::atomic<bool> resolved{false};
  std::atomic<GetLongPathNameFunction> longPathName{nullptr};
  std::atomic<GetFinalPathNameByHandleFunction> finalPathName{nullptr};
};

DynamicEntryPoints entry_points;

// FARPROC has no parameters; going through a plain function pointer type
// keeps GCC's -Wcast-function-type quiet.
template <typename Function>
Function entry_point(HMODULE module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

void resolve() {
  if (entry_points.resolved.load(std::memory_order_acquire)) return;
  if (HMODULE kernel = GetModuleHandleA("kernel32.dll")) {
    entry_points.longPathName.store(
        entry_point<GetLongPathNameFunction>(kernel, "GetLongPathNameA"),
        std::memory_order_relaxed);
    entry_points.finalPathName.store(
        entry_point<GetFinalPathNameByHandleFunction>(kernel, "GetFinalPathNameByHandleA"),
        std::memory_order_relaxed);
  }
  entry_points.resolved.store(true, std::memory_order_release);
}

}  // namespace

GetLongPathNameFunction get_long_path_name() {
  resolve();
  return entry_points.longPathName.load(std::memory_order_relaxed);
}

GetFinalPathNameByHandleFunction get_final_path_name_by_handle() {
  resolve();
  return entry_points.finalPathName.load(std::memory_order_relaxed);
}

}  // namespace oru::file
