// Unique temporary directories and files: a name from a per-function
// counter, created new, and the next counter value when the name is taken.

#include "file/oru_file_internal.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

using namespace oru::file;

namespace {

// Each counter starts at the process id shifted left by 16 on its first
// use.  Concurrent callers may both start it; the create-new step sorts out
// any name they draw twice.
struct TempCounter {
  std::atomic<bool> started{false};
  std::atomic<uint32_t> next{0};

  uint32_t draw() {
    if (!started.load(std::memory_order_acquire)) {
      next.store(process_id() << 16, std::memory_order_relaxed);
      started.store(true, std::memory_order_release);
    }
    return next.fetch_add(1, std::memory_order_relaxed);
  }
};

TempCounter directory_counter;
TempCounter file_counter;

oruResult temp_name(const char* directory, const char* prefix, const char* suffix, char* out,
                    size_t size, TempCounter& counter, oruResult (*create)(const char*)) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  std::string systemDirectory;
  if (directory == nullptr) directory = std::getenv("TMPDIR");
  if (directory == nullptr) {
    oruResult result = system_temp_directory(systemDirectory);
    if (ORU_FAILED(result)) return result;
    directory = systemDirectory.c_str();
  }
  if (prefix == nullptr) prefix = "";
  if (suffix == nullptr) suffix = "";
  size_t directoryLength = std::strlen(directory);
  const char separator[2] = {kSeparator, '\0'};
  const char* join =
      directoryLength > 0 && !is_separator(directory[directoryLength - 1]) ? separator : "";
  if (std::strlen(suffix) + std::strlen(prefix) + std::strlen(join) + directoryLength + 9 > size) {
    return ORU_E_BUFFER_TOO_SMALL;
  }
  for (;;) {
    unsigned long value = counter.draw();
    std::snprintf(out, size, "%s%s%s%08lx%s", directory, join, prefix, value, suffix);
    oruResult result = create(out);
    if (result != ORU_E_EXISTS) return result;
  }
}

}  // namespace

extern "C" {

ORU_API oruResult oruGetTempDirName(const char* directory, const char* prefix, const char* suffix,
                                    char* out, size_t size) {
  try {
    return temp_name(directory, prefix, suffix, out, size, directory_counter, create_new_directory);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

ORU_API oruResult oruGetTempFileName(const char* directory, const char* prefix, const char* suffix,
                                     char* out, size_t size) {
  try {
    return temp_name(directory, prefix, suffix, out, size, file_counter, create_new_file);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // extern "C"
