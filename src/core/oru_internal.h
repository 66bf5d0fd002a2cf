// Shared by the library's own modules; not installed.
#ifndef ORU_SRC_CORE_ORU_INTERNAL_H
#define ORU_SRC_CORE_ORU_INTERNAL_H

#include "oru/core.h"

#include <cerrno>
#include <cstdint>

// Exports a second name for a function defined in the same translation unit,
// so both names are one symbol (one address), not a wrapper.
#if defined(__ELF__)
#define ORU_ALIAS(target) __attribute__((alias(#target)))
#elif defined(_WIN32)
// PE/COFF: the export table lists both names at one address.  GCC wants the
// second name's attributes to match its target's (nothrow for C functions).
#define ORU_ALIAS(target) __attribute__((alias(#target), nothrow))
#else
#error "ORU_ALIAS needs a backend for this object format"
#endif

// Thread-local variables that the library reads on hot paths use the
// initial-exec model on ELF (no call through __tls_get_addr); elsewhere the
// compiler's default applies.
#if defined(__ELF__)
#define ORU_INITIAL_EXEC_TLS __attribute__((tls_model("initial-exec")))
#else
#define ORU_INITIAL_EXEC_TLS
#endif

// The translators under the names the modules use.
inline oruResult oru_map_posix_error(int err) { return _oru_map_posix_error(err); }
inline oruResult oru_map_win32_error(uint32_t err) { return _oru_map_win32_error(err); }
inline oruResult oru_map_last_win32_error() { return _oru_map_last_win32_error(); }

// The English system message of a Win32 error number that the translator
// names (as FormatMessageA gives it, "\r\n" included), or null for any other
// number.  The text source of Win32-facility codes where the system has none.
const char* oru_win32_message_text(uint32_t number);

// Writes the system's message for a Win32 error number into buffer (size
// bytes, always terminated) and returns true, or returns false when the
// system has no message for it.
bool oru_system_message(uint32_t number, char* buffer, size_t size);

// The system error number that reports an allocation failure to
// oru_fatal_error: ERROR_OUTOFMEMORY on Windows, ENOMEM elsewhere.
#if defined(_WIN32)
inline constexpr unsigned long ORU_FATAL_OUT_OF_MEMORY = 14;
#else
inline constexpr unsigned long ORU_FATAL_OUT_OF_MEMORY = ENOMEM;
#endif

// Ends the process after a system failure that cannot be reported to the
// caller.  err is the system's error number (GetLastError() on Windows, the
// errno-style value returned or set by the failing call elsewhere); context
// names the failing step, e.g. "initialize[oru_thread]: TlsAlloc".
// The text "<context>: <system message>" is shown with the caption
// "Fatal YDA error" (on POSIX written to standard error as
// "Fatal YDA error: <context>: <system message>") and the process exits with
// code 1.
[[noreturn]] void oru_fatal_error(unsigned long err, const char* context) noexcept;

#endif  // ORU_SRC_CORE_ORU_INTERNAL_H
