// The runtime core's platform part for POSIX systems.

#include "core/oru_internal.h"

#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

// strerror_r comes in two flavours; accept either.
[[maybe_unused]] const char* system_text(int result, const char* buffer) {
  return result == 0 ? buffer : nullptr;
}
[[maybe_unused]] const char* system_text(const char* result, const char*) { return result; }

void write_all(int fd, const char* text, size_t length) {
  while (length > 0) {
    ssize_t n = ::write(fd, text, length);
    if (n < 0) {
      if (errno == EINTR) continue;
      return;
    }
    text += n;
    length -= static_cast<size_t>(n);
  }
}

}  // namespace

// POSIX has no thread-local Win32 error; its last system error is errno.
extern "C" ORU_API oruResult _oru_map_last_win32_error(void) { return _oru_map_posix_error(errno); }

// There is no FormatMessageA here: the compiled-in English texts stand in for
// it, so the same code prints the same text on every platform.
bool oru_system_message(uint32_t number, char* buffer, size_t size) {
  const char* text = oru_win32_message_text(number);
  if (text == nullptr || size == 0) return false;
  std::snprintf(buffer, size, "%s", text);
  return true;
}

void oru_fatal_error(unsigned long err, const char* context) noexcept {
  // Built in one buffer and written with a single write(2): stdio may be
  // what is broken, and other threads may be writing too.
  static constexpr char caption[] = "Fatal YDA error";
  char message[1024];
  int used = std::snprintf(message, sizeof message, "%s: ", context);
  if (used < 0) used = 0;
  if (static_cast<size_t>(used) >= sizeof message) used = sizeof message - 1;

  char text[512];
  const char* system = system_text(strerror_r(static_cast<int>(err), text, sizeof text), text);
  if (system != nullptr && system[0] != '\0') {
    std::snprintf(message + used, sizeof message - static_cast<size_t>(used), "%s", system);
  } else {
    std::snprintf(message + used, sizeof message - static_cast<size_t>(used), "error %d",
                  static_cast<int>(err));
  }

  char line[sizeof caption + 2 + sizeof message + 1];
  int length = std::snprintf(line, sizeof line, "%s: %s\n", caption, message);
  if (length > 0) write_all(STDERR_FILENO, line, static_cast<size_t>(length));
  _exit(1);
}
