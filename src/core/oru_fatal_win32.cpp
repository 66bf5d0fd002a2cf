// The fatal-error routine on Windows: a message box, or standard error when
// nobody could see the box.

#include "core/oru_internal.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

namespace {

// Whether the fatal text goes to standard error instead of a message box:
// when ORU_FATAL_STDERR is set (test runs), or when the process has no
// interactive desktop (a service, a session without a visible window
// station), where a message box would wait for a click nobody can give.
bool fatal_to_stderr() {
  if (GetEnvironmentVariableA("ORU_FATAL_STDERR", nullptr, 0) > 0) return true;
  HWINSTA station = GetProcessWindowStation();
  if (station == nullptr) return true;
  USEROBJECTFLAGS flags = {};
  DWORD needed = 0;
  if (!GetUserObjectInformationA(station, UOI_FLAGS, &flags, sizeof flags, &needed)) return true;
  return (flags.dwFlags & WSF_VISIBLE) == 0;
}

void write_stderr(const char* text, size_t length) {
  HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
  while (error != nullptr && error != INVALID_HANDLE_VALUE && length > 0) {
    DWORD written = 0;
    if (!WriteFile(error, text, static_cast<DWORD>(length), &written, nullptr) || written == 0)
      return;
    text += written;
    length -= written;
  }
}

// The system's text for a Win32 error number, as oru_system_message gives
// it; repeated here so that the routine stands alone.
bool system_text(uint32_t number, char* buffer, size_t size) {
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                number, 0, buffer, static_cast<DWORD>(size), nullptr);
  if (length == 0) return false;
  buffer[length < size ? length : size - 1] = '\0';
  return true;
}

}  // namespace

void oru_fatal_error(unsigned long err, const char* context) noexcept {
  static constexpr char caption[] = "Fatal YDA error";
  char message[1024];
  int used = std::snprintf(message, sizeof message, "%s: ", context);
  if (used < 0) used = 0;
  if (static_cast<size_t>(used) >= sizeof message) used = sizeof message - 1;
  size_t rest = sizeof message - static_cast<size_t>(used);
  if (rest <= 1 || !system_text(static_cast<uint32_t>(err), message + used, rest)) {
    std::snprintf(message + used, rest, "error %d", static_cast<int>(err));
  }

  if (fatal_to_stderr()) {
    // The same line the POSIX build writes: the system text without its
    // line break, then one "\n".
    size_t length = std::strlen(message);
    while (length > 0 && (message[length - 1] == '\n' || message[length - 1] == '\r')) --length;
    message[length] = '\0';
    char line[sizeof caption + 2 + sizeof message + 1];
    int total = std::snprintf(line, sizeof line, "%s: %s\n", caption, message);
    if (total > 0) write_stderr(line, static_cast<size_t>(total));
  } else {
    MessageBoxA(nullptr, message, caption, 0);
  }
  ExitProcess(1);
}
