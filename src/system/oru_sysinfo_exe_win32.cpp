// The path of the running executable on Windows: the module file name of
// the process, and its long form.

#include "core/oru_internal.h"
#include "system/oru_sysinfo_internal.h"

#include <windows.h>

namespace oru::sysinfo {

namespace {

using GetLongPathNameFunction = DWORD(WINAPI*)(LPCSTR, LPSTR, DWORD);

// Older kernel32 versions lack the long-name query: looked up by name.
GetLongPathNameFunction long_path_name_query() {
  HMODULE kernel = GetModuleHandleA("kernel32.dll");
  if (kernel == nullptr) return nullptr;
  // Through a plain function pointer type: FARPROC has no parameters.
  return reinterpret_cast<GetLongPathNameFunction>(
      reinterpret_cast<void (*)()>(GetProcAddress(kernel, "GetLongPathNameA")));
}

}  // namespace

// GetModuleFileNameA already answers in the manner the common part expects:
// the length, the buffer size when the path was cut, 0 on failure.
uint32_t executable_path(char* buf, uint32_t size) {
  return GetModuleFileNameA(nullptr, buf, size);
}

// The long form in a buffer that starts at 256 bytes and doubles while the
// answer does not fit; the short form stays when the query is missing or
// fails.
char* long_form(char* path) {
  GetLongPathNameFunction query = long_path_name_query();
  if (query == nullptr) return path;
  DWORD size = 256;
  for (;;) {
    char* buf = static_cast<char*>(oruMalloc(size));
    if (buf == nullptr) return path;
    DWORD length = query(path, buf, size);
    if (length == 0) {
      oruFree(buf);
      return path;
    }
    if (length < size) {
      oruFree(path);
      return buf;
    }
    oruFree(buf);
    if (size > UINT32_MAX / 2) return path;
    size *= 2;
  }
}

}  // namespace oru::sysinfo
