// Texts for result codes.
//
// The library's own codes have constant texts; Win32-derived codes get the
// system's message (compiled-in English texts where the system has none);
// errno-derived codes get the C library's text; everything else gets a formatted text that is kept
// per thread under a thread-local key (destructor oruFree), so that it stays valid until the same
// thread asks again.

#include "core/oru_internal.h"
#include "oru/thread.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

struct CodeText {
  uint32_t code;
  const char* text;
};

// ORU_E_UNEXPECTED and ORU_E_NO_DEVICE have no text on purpose: they get the
// formatted fallback.
constexpr CodeText kTexts[] = {
    {0x80000100u, "Operation not performed due to invalid state"},
    {0x80000101u, "Operation not supported."},
    {0x80000102u, "Read only attribute."},
    {0x80000103u, "Invalid NULL pointer."},
    {0x80004001u, "Not implemented"},
    {0x80004002u, "No such interface supported"},
    {0x80004003u, "Invalid pointer"},
    {0x80004004u, "Operation aborted"},
    {0x80004005u, "Unspecified error"},
    {0x80070005u, "Permission denied"},
    {0x80070006u, "Invalid handle"},
    {0x8007000Eu, "Out of memory"},
    {0x80070057u, "Invalid argument"},
    {0x96230001u, "Device or resource busy"},
    {0x96230002u, "Filename too long"},
    {0x96230003u, "File or directory not found"},
    {0x96230004u, "Path not found"},
    {0x96230005u, "Is a directory"},
    {0x96230006u, "Read-only file system or media"},
    {0x96230007u, "No such thread or process"},
    {0x96230008u, "Resource temporarily unavailable"},
    {0x96230009u, "No space left on device"},
    {0x9623000Au, "Disc quota exceeded"},
    {0x9623000Bu, "File or directory exists"},
    {0x9623000Cu, "Name exists"},
    {0x9623000Du, "Name not found"},
    {0x9623000Eu, "File corrupted"},
    {0x9623000Fu, "Buffer too small"},
    {0x96230010u, "Not empty"},
    {0x96230011u, "Unknown user"},
    {0x96230012u, "Can't get hostname"},
    {0x96230013u, "Can't get domainname"},
    {0x96230014u, "Can't get architecture"},
    {0x96230015u, "Can't get operating system name"},
    {0x96230016u, "Can't load dynamic shared object"},
    {0x96230017u, "Can't unload dynamic shared object"},
    {0x96230018u, "Symbol lookup error"},
    {0x96230019u, "Too many open files"},
    {0x9623001Au, "Exec format error"},
    {0x9623001Bu, "Not the same device"},
    {0x9623001Du, "Broken pipe"},
    {0x9623001Eu, "No child processes"},
    {0x9623001Fu, "Record lock failed"},
    {0x96230020u, "No record locks available"},
    {0x96230021u, "I/O error"},
    {0x96230022u, "Device not ready"},
    {0x96230023u, "Directory not empty"},
    {0x96230024u, "Invalid memory address"},
    {0x96230025u, "Connection timed out"},
    {0x96230026u, "Illegal byte sequence"},
    {0x96230027u, "Not a regular file"},
    {0x96230028u, "Result out of range"},
    {0x96230029u, "Is not a directory"},
    {0x9623002Cu, "Argument out of range"},
};

constexpr uint32_t kFacilityInterface = 4;
constexpr size_t kTextBufferSize = 1024;

oruOnce g_once = ORU_ONCE_INIT;
oruTlsKey g_key = 0;
bool g_have_key = false;

void create_key() { g_have_key = ORU_SUCCEEDED(oruTlsKeyCreate(&g_key, oruFree)); }

const char* constant_text(uint32_t code) {
  for (const CodeText& entry : kTexts) {
    if (entry.code == code) return entry.text;
  }
  return nullptr;
}

// Keeps a text for the calling thread until its next call and returns the
// kept copy (null when it cannot be copied).
const char* keep_for_thread(const char* text) {
  char* copy = oruStrDup(text);
  if (g_have_key) {
    // Replacing the previous text runs oruFree on it.
    if (ORU_SUCCEEDED(oruTlsSet(g_key, copy))) return copy;
  }
  // No key (out of memory when it was made, or for this thread's values):
  // fall back to a plain per-thread buffer.
  static thread_local char fallback[kTextBufferSize];
  if (copy == nullptr) return nullptr;
  std::snprintf(fallback, sizeof fallback, "%s", copy);
  oruFree(copy);
  return fallback;
}

const char* formatted(const char* format, uint32_t code) {
  char buffer[kTextBufferSize];
  std::snprintf(buffer, sizeof buffer, format, static_cast<unsigned>(code));
  return keep_for_thread(buffer);
}

}  // namespace

extern "C" ORU_API const char* oruStrError(oruResult code) {
  oruInitOnce(&g_once, create_key);
  auto value = static_cast<uint32_t>(code);
  if (value < 0x80000000u) return formatted("unknown result code %#08x", value);

  switch (ORU_RESULT_FACILITY(value)) {
    case kFacilityInterface:
      // Not looked up, although the low bits may match a known code.
      return formatted("error %#08x", value);
    case ORU_FACILITY_WIN32: {
      char buffer[kTextBufferSize];
      if (oru_system_message(ORU_RESULT_CODE(value), buffer, sizeof buffer)) {
        return keep_for_thread(buffer);
      }
      return formatted("error %#08x", value);
    }
    case ORU_FACILITY_POSIX:
      return std::strerror(static_cast<int>(ORU_RESULT_CODE(value)));
    default: {
      const char* text = constant_text(value);
      return text != nullptr ? text : formatted("error %#08x", value);
    }
  }
}
