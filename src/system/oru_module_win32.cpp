// The system loader, the stack walker and the module list on Windows:
// LoadLibraryA/GetProcAddress/FreeLibrary, a toolhelp snapshot of the
// process's modules, GetModuleHandleExA and the image headers for the module
// of an address, the export directory and the function table for exported
// symbols, and RtlCaptureStackBackTrace.

#include "core/oru_internal.h"
#include "system/oru_module_internal.h"

#include <windows.h>
// After windows.h, which it needs.
#include <tlhelp32.h>

#include <cstring>
#include <new>

namespace oru::module {

namespace {

void copy_text(const std::string& text, char* why, size_t size) {
  const size_t length = text.size() < size - 1 ? text.size() : size - 1;
  std::memcpy(why, text.data(), length);
  why[length] = '\0';
}

// The system's message for the calling thread's last error, as one line.
void last_error_text(char* why, size_t size) {
  DWORD error = GetLastError();
  char* message = nullptr;
  DWORD n = FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, error, 0, reinterpret_cast<LPSTR>(&message), 0, nullptr);
  std::string text;
  try {
    if (n != 0 && message != nullptr) {
      text.assign(message, n);
      while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
        text.pop_back();
      }
    }
    if (text.empty()) text = "system error " + std::to_string(error);
  } catch (const std::bad_alloc&) {
    text.clear();
  }
  if (message != nullptr) LocalFree(message);
  copy_text(text, why, size);
}

std::string module_file(HMODULE module) {
  char buffer[MAX_PATH * 4];
  DWORD n = GetModuleFileNameA(module, buffer, sizeof buffer);
  if (n == 0 || n >= sizeof buffer) return std::string();
  return std::string(buffer, n);
}

// The image of a mapped module: its headers give the extent.
size_t image_size(HMODULE module) {
  const auto* base = reinterpret_cast<const unsigned char*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  if (dos->e_magic != IMAGE_DOS_SIGNATURE) return 0;
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  if (nt->Signature != IMAGE_NT_SIGNATURE) return 0;
  return nt->OptionalHeader.SizeOfImage;
}

HMODULE module_of(uintptr_t address) {
  HMODULE module = nullptr;
  if (!GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCSTR>(address), &module)) {
    return nullptr;
  }
  return module;
}

}  // namespace

void* platform_open(const char* path, char* why, size_t size) {
  std::string native;
  try {
    native = path;
  } catch (const std::bad_alloc&) {
    copy_text("out of memory", why, size);
    return nullptr;
  }
  // The loader takes only backslashes as separators.
  for (char& c : native) {
    if (c == '/') c = '\\';
  }
  // No dialog box for a missing dependency or drive: the caller is told.
  DWORD oldMode = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &oldMode);
  HMODULE module = LoadLibraryA(native.c_str());
  if (module == nullptr) last_error_text(why, size);
  SetThreadErrorMode(oldMode, nullptr);
  return module;
}

void* platform_symbol(void* native, const char* name, bool* found, char* why, size_t size) {
  FARPROC p = GetProcAddress(static_cast<HMODULE>(native), name);
  *found = p != nullptr;
  if (p == nullptr) last_error_text(why, size);
  void* address = nullptr;
  static_assert(sizeof address == sizeof p);
  std::memcpy(&address, &p, sizeof address);
  return address;
}

bool platform_close(void* native, char* why, size_t size) {
  if (FreeLibrary(static_cast<HMODULE>(native))) return true;
  last_error_text(why, size);
  return false;
}

std::string platform_path(void* native) { return module_file(static_cast<HMODULE>(native)); }

std::vector<module_entry> platform_modules() {
  std::vector<module_entry> list;
  HANDLE snapshot = INVALID_HANDLE_VALUE;
  // A snapshot taken while a module loads fails with ERROR_BAD_LENGTH: ask
  // again.
  for (int attempt = 0; attempt < 16 && snapshot == INVALID_HANDLE_VALUE; ++attempt) {
    snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    if (snapshot == INVALID_HANDLE_VALUE && GetLastError() != ERROR_BAD_LENGTH) break;
  }
  if (snapshot == INVALID_HANDLE_VALUE) return list;
  MODULEENTRY32 entry;
  entry.dwSize = sizeof entry;
  try {
    // The executable comes first in the snapshot, the rest in load order.
    for (BOOL more = Module32First(snapshot, &entry); more; more = Module32Next(snapshot, &entry)) {
      module_entry m;
      m.path = entry.szExePath;
      m.base = reinterpret_cast<uintptr_t>(entry.modBaseAddr);
      m.size = entry.modBaseSize;
      m.bias = m.base;
      list.push_back(std::move(m));
    }
  } catch (const std::bad_alloc&) {
    CloseHandle(snapshot);
    throw;
  }
  CloseHandle(snapshot);
  return list;
}

bool platform_find_module(uintptr_t address, module_entry& module) {
  HMODULE handle = module_of(address);
  if (handle == nullptr) return false;
  module.path = module_file(handle);
  module.base = reinterpret_cast<uintptr_t>(handle);
  module.size = image_size(handle);
  module.bias = module.base;
  return true;
}

bool platform_exported_symbol(uintptr_t address, std::string& name, uintptr_t& start) {
  HMODULE handle = module_of(address);
  if (handle == nullptr) return false;
  const auto* base = reinterpret_cast<const unsigned char*>(handle);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& dir = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
  if (dir.VirtualAddress == 0 || dir.Size == 0) return false;
  // The export directory has no sizes; the function table of the image
  // does.  An exported name counts only when it starts the function that
  // holds the address.
  DWORD64 imageBase = 0;
  PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(address, &imageBase, nullptr);
  if (function == nullptr) return false;
  const DWORD begin = function->BeginAddress;
  const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + dir.VirtualAddress);
  const auto* functions = reinterpret_cast<const DWORD*>(base + exports->AddressOfFunctions);
  const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
  const auto* ordinals = reinterpret_cast<const WORD*>(base + exports->AddressOfNameOrdinals);
  for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
    if (ordinals[i] >= exports->NumberOfFunctions) continue;
    if (functions[ordinals[i]] != begin) continue;
    name = reinterpret_cast<const char*>(base + names[i]);
    start = reinterpret_cast<uintptr_t>(base) + begin;
    return true;
  }
  return false;
}

}  // namespace oru::module

extern "C" {

ORU_API oruResult oruCaptureBacktrace(unsigned skip, void** addresses, size_t capacity,
                                      size_t* count) {
  if (count == nullptr || (addresses == nullptr && capacity != 0)) return ORU_E_INVALID_ARG;
  // The walker counts in 16 bits; this frame itself is the first it reports.
  constexpr ULONG kLimit = 0xFFFF;
  const ULONG first = skip >= kLimit ? kLimit : skip + 1;
  const ULONG wanted = capacity > kLimit ? kLimit : static_cast<ULONG>(capacity);
  USHORT n = wanted == 0 ? 0 : RtlCaptureStackBackTrace(first, wanted, addresses, nullptr);
  for (USHORT i = 0; i < n; ++i) {
    // A return address points after the call; the call is one byte earlier.
    addresses[i] = static_cast<char*>(addresses[i]) - 1;
  }
  *count = n;
  // A frame beyond the last one stored means the stack was deeper.
  void* probe = nullptr;
  bool deeper = n == wanted && first + n < kLimit &&
                RtlCaptureStackBackTrace(first + n, 1, &probe, nullptr) == 1;
  return deeper ? ORU_S_OUTPUT_FULL : ORU_OK;
}

}  // extern "C"
