// The system-information functions and their platform part.  The platform
// file answers the questions the system can answer; the common file turns
// the answers into results under the library's buffer rule and caches the
// program facts.
#ifndef ORU_SRC_SYSTEM_ORU_SYSINFO_INTERNAL_H
#define ORU_SRC_SYSTEM_ORU_SYSINFO_INTERNAL_H

#include "oru/system.h"

#include <cstddef>
#include <cstdint>

namespace oru::sysinfo {

// Room for a node name or a NIS domain name (both at most 64 bytes on
// Linux, 256 allowed by POSIX for host names) and the terminator.
inline constexpr size_t kNameCapacity = 257;

// Copies text[0, length) and a terminator to buf under the buffer rule.
oruResult copy_out(const char* text, size_t length, char* buf, size_t size);
oruResult copy_out(const char* text, char* buf, size_t size);

// The domain of an account by the rules documented for oruGetDomainname:
// `host` is the lower-cased host name, `nisDomain` the NIS domain name or
// null when the system has none.
oruResult account_domain(const char* account, bool local, const char* host, const char* nisDomain,
                         char* buf, size_t size);

// Platform part.

// The computer's name, lower-cased, into buf under the buffer rule.
oruResult host_name(char* buf, size_t size);

// The domain of the account the process runs as, into buf under the buffer
// rule.
oruResult account_domain_name(char* buf, size_t size);

// The name of the processor architecture, a constant text.
const char* architecture_name();

// The path of the running executable, in the manner of a module-file-name
// query: copies at most size bytes to buf and returns the length without
// the terminator; returns size when the path (with its terminator) does not
// fit, 0 when the system cannot tell.
uint32_t executable_path(char* buf, uint32_t size);

// The long form of an executable path from read_executable_path: path
// itself or a replacement from oruMalloc (path is then freed).  Never null.
char* long_form(char* path);

// POSIX systems only.

// The node name, terminated, in out[kNameCapacity].
oruResult node_name(char* out);

// The NIS domain name in out[kNameCapacity]; *present is false when the
// system has none set.
oruResult nis_domain_name(char* out, bool* present);

// Looks up the effective user and calls back with its name and whether it
// is a local account; returns what the callback returns, or
// ORU_E_UNKNOWN_USER / the translated error of the lookup.
using account_callback = oruResult (*)(const char* account, bool local, void* context);
oruResult with_effective_account(account_callback callback, void* context);

// The executable's path from the loader's record of the path the program
// was started with (the fallback when the system's process file system is
// absent).
uint32_t executable_path_from_loader(char* buf, uint32_t size);

}  // namespace oru::sysinfo

#endif  // ORU_SRC_SYSTEM_ORU_SYSINFO_INTERNAL_H
