// The runtime core's platform part for Windows: the last Win32 error and the
// system's message texts.

#include "core/oru_internal.h"

#include <windows.h>

extern "C" ORU_API oruResult _oru_map_last_win32_error(void) {
  return _oru_map_win32_error(GetLastError());
}

bool oru_system_message(uint32_t number, char* buffer, size_t size) {
  if (size == 0) return false;
  DWORD length =
      FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, number, 0,
                     buffer, static_cast<DWORD>(size > 0xFFFF ? 0xFFFF : size), nullptr);
  if (length == 0) return false;
  buffer[length < size ? length : size - 1] = '\0';
  return true;
}
