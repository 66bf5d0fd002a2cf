// System information: the argument checks, the system constants and the
// once-computed program facts; the platform part answers the rest.

#include "core/oru_internal.h"
#include "oru/file.h"
#include "system/oru_sysinfo_internal.h"

#include <atomic>
#include <cstring>

namespace {

using namespace oru::sysinfo;

constexpr const char* kSystemName =
#if defined(_WIN32)
    "Windows";
#elif defined(__linux__)
    "Linux";
#elif defined(__APPLE__)
    "Darwin";
#elif defined(__FreeBSD__)
    "FreeBSD";
#elif defined(__NetBSD__)
    "NetBSD";
#elif defined(__OpenBSD__)
    "OpenBSD";
#else
    "Unix";
#endif

// "<unknown>" lives in the cache as it is, never freed.
char kUnknownProgram[] = "<unknown>";

std::atomic<char*> g_programName{nullptr};
std::atomic<char*> g_programPath{nullptr};

bool is_size_in_32_bits(size_t size) { return size <= UINT32_MAX; }

// The executable's path in a buffer from oruMalloc that starts at 256 bytes
// and doubles while the path is cut; null when the system cannot tell, or
// (with *outOfMemory set) when memory runs out.
char* read_executable_path(bool* outOfMemory) {
  uint32_t size = 256;
  for (;;) {
    char* buf = static_cast<char*>(oruMalloc(size));
    if (buf == nullptr) {
      *outOfMemory = true;
      return nullptr;
    }
    uint32_t length = executable_path(buf, size);
    if (length == 0) {
      oruFree(buf);
      return nullptr;
    }
    if (length < size) return buf;
    oruFree(buf);
    if (size > UINT32_MAX / 2) return nullptr;
    size *= 2;
  }
}

// Replaces a work buffer by an exact-size copy when one can be had.
char* shrink(char* work) {
  char* copy = oruStrDup(work);
  if (copy == nullptr) return work;
  oruFree(work);
  return copy;
}

// Installs `value` as the cached answer unless another thread was first;
// the loser frees its own copy.  Returns the cached answer.
char* install(std::atomic<char*>& cache, char* value) {
  char* expected = nullptr;
  if (cache.compare_exchange_strong(expected, value, std::memory_order_acq_rel,
                                    std::memory_order_acquire)) {
    return value;
  }
  if (value != kUnknownProgram) oruFree(value);
  return expected;
}

}  // namespace

extern "C" {

ORU_API oruResult oruGetHostname(char* buf, size_t size) {
  if (!is_size_in_32_bits(size) || buf == nullptr) return ORU_E_INVALID_ARG;
  return host_name(buf, size);
}

ORU_API oruResult oruGetDomainname(char* buf, size_t size) {
  if (buf == nullptr) return ORU_E_INVALID_ARG;
  return account_domain_name(buf, size);
}

ORU_API oruResult oruGetArchitecture(char* buf, size_t size) {
  return copy_out(architecture_name(), buf, size);
}

ORU_API oruResult oruGetSystemName(char* buf, size_t size) {
  return copy_out(kSystemName, buf, size);
}

ORU_API int oruGetSystemType(void) {
#if defined(_WIN32)
  return ORU_SYSTEM_TYPE_WINDOWS;
#else
  return ORU_SYSTEM_TYPE_POSIX;
#endif
}

ORU_API const char* oruGetProgramName(void) {
  if (char* cached = g_programName.load(std::memory_order_acquire)) return cached;
  bool outOfMemory = false;
  char* answer = read_executable_path(&outOfMemory);
  // Out of memory is no answer to keep: the next call asks again.
  if (outOfMemory) return kUnknownProgram;
  if (answer == nullptr) {
    answer = kUnknownProgram;
  } else {
    // The base name is never longer than the path, so it fits in place.
    (void)oruGetBasename(answer, answer, std::strlen(answer) + 1);
    answer = shrink(answer);
  }
  return install(g_programName, answer);
}

ORU_API const char* oruGetProgramPath(void) {
  if (char* cached = g_programPath.load(std::memory_order_acquire)) return cached;
  bool outOfMemory = false;
  char* answer = read_executable_path(&outOfMemory);
  if (answer == nullptr) return nullptr;
  return install(g_programPath, shrink(long_form(answer)));
}

}  // extern "C"
