// System information from the Win32 interface: the computer and account
// names, the processor, and the terminal-services state of the system.

#include "core/oru_internal.h"
#include "system/oru_sysinfo_internal.h"

#include <windows.h>

#include <atomic>
#include <cctype>
#include <new>
#include <vector>

namespace oru::sysinfo {

namespace {

// The runtime library's tolower, byte by byte, up to the terminator.
void lower_in_place(char* text) {
  for (char* p = text; *p != '\0'; ++p) {
    *p = static_cast<char>(std::tolower(static_cast<unsigned char>(*p)));
  }
}

// The processor architectures that have a name; every other value (x64 and
// ARM64 among them) is "unknown".
const char* name_of_architecture(WORD architecture) {
  switch (architecture) {
    case PROCESSOR_ARCHITECTURE_INTEL:
      return "i386";
    case PROCESSOR_ARCHITECTURE_MIPS:
      return "mips";
    case PROCESSOR_ARCHITECTURE_ALPHA:
      return "alpha";
    case PROCESSOR_ARCHITECTURE_PPC:
      return "ppc";
    default:
      return "unknown";
  }
}

// Computed on first use; a race computes the same name twice.
std::atomic<const char*> g_architecture{nullptr};

// The extended version record: its product-suite mask says whether the
// system is a terminal server.
bool read_version(OSVERSIONINFOEXA* info) {
  *info = {};
  info->dwOSVersionInfoSize = sizeof *info;
  return GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(info)) != FALSE;
}

oruResult lookup_domain(char* buf, size_t size) {
  char user[257];
  DWORD userLength = sizeof user;
  if (!GetUserNameA(user, &userLength)) return oru_map_last_win32_error();
  std::vector<BYTE> sid(64);
  std::vector<char> domain(64);
  DWORD sidSize = static_cast<DWORD>(sid.size());
  DWORD domainSize = static_cast<DWORD>(domain.size());
  SID_NAME_USE use;
  if (!LookupAccountNameA(nullptr, user, sid.data(), &sidSize, domain.data(), &domainSize, &use)) {
    DWORD err = GetLastError();
    if (err != ERROR_INSUFFICIENT_BUFFER) return oru_map_win32_error(err);
    // The call reports what it needs of each buffer; only those that are
    // too small grow.
    if (sidSize > sid.size()) sid.resize(sidSize);
    if (domainSize > domain.size()) domain.resize(domainSize);
    sidSize = static_cast<DWORD>(sid.size());
    domainSize = static_cast<DWORD>(domain.size());
    if (!LookupAccountNameA(nullptr, user, sid.data(), &sidSize, domain.data(), &domainSize,
                            &use)) {
      return oru_map_last_win32_error();
    }
  }
  return copy_out(domain.data(), buf, size);
}

}  // namespace

oruResult host_name(char* buf, size_t size) {
  // The old Windows family (top bit of the version word) wants a buffer of
  // its own maximum size; newer systems fill the caller's directly and
  // answer ERROR_BUFFER_OVERFLOW when it is too small.
  if ((GetVersion() & 0x80000000u) != 0) {
    char name[16];
    DWORD length = sizeof name;
    if (!GetComputerNameA(name, &length)) return oru_map_last_win32_error();
    if (length >= size) return ORU_E_BUFFER_TOO_SMALL;
    for (DWORD i = 0; i <= length; ++i) {
      buf[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
    }
    return ORU_OK;
  }
  DWORD length = static_cast<DWORD>(size);
  if (!GetComputerNameA(buf, &length)) return oru_map_last_win32_error();
  lower_in_place(buf);
  return ORU_OK;
}

oruResult account_domain_name(char* buf, size_t size) {
  try {
    return lookup_domain(buf, size);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

const char* architecture_name() {
  const char* name = g_architecture.load(std::memory_order_acquire);
  if (name == nullptr) {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    name = name_of_architecture(info.wProcessorArchitecture);
    g_architecture.store(name, std::memory_order_release);
  }
  return name;
}

}  // namespace oru::sysinfo

using namespace oru::sysinfo;

extern "C" {

ORU_API oruResult oruIsWTSRemoteSession(int* out) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  OSVERSIONINFOEXA info;
  if (!read_version(&info)) return oru_map_last_win32_error();
  *out = (info.wSuiteMask & VER_SUITE_TERMINAL) != 0 && GetSystemMetrics(SM_REMOTESESSION) != 0;
  return ORU_OK;
}

ORU_API oruResult oruIsWindowsTerminalServer(int* out) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  OSVERSIONINFOEXA info;
  if (!read_version(&info)) return oru_map_last_win32_error();
  *out = (info.wSuiteMask & VER_SUITE_TERMINAL) != 0 ? 1 : 0;
  return ORU_OK;
}

}  // extern "C"
