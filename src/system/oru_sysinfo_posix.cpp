// System information from POSIX calls: uname and the account database.

#include "core/oru_internal.h"
#include "system/oru_sysinfo_internal.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace oru::sysinfo {

namespace {

oruResult copy_name(const char* name, char* out) {
  size_t length = std::strlen(name);
  if (length >= kNameCapacity) return ORU_E_NAME_TOO_LONG;
  std::memcpy(out, name, length + 1);
  return ORU_OK;
}

// Whether the local account file lists `name` with user id `uid`, in
// *found.  A file that cannot be read counts as not listing it, unless
// memory ran out: that is reported, not taken for an answer.
oruResult is_local_account(const char* name, uid_t uid, bool* found) {
  *found = false;
  FILE* file = std::fopen("/etc/passwd", "re");
  if (file == nullptr) return errno == ENOMEM ? ORU_E_OUT_OF_MEMORY : ORU_OK;
  const size_t nameLength = std::strlen(name);
  char* line = nullptr;
  size_t capacity = 0;
  errno = 0;
  while (!*found && getline(&line, &capacity, file) >= 0) {
    // name:password:uid:...
    if (std::strncmp(line, name, nameLength) != 0 || line[nameLength] != ':') continue;
    const char* uidField = std::strchr(line + nameLength + 1, ':');
    if (uidField == nullptr) continue;
    char* end = nullptr;
    errno = 0;
    unsigned long value = std::strtoul(uidField + 1, &end, 10);
    *found = errno == 0 && end != uidField + 1 && *end == ':' && value == uid;
  }
  const bool outOfMemory = !*found && errno == ENOMEM;
  std::free(line);
  std::fclose(file);
  return outOfMemory ? ORU_E_OUT_OF_MEMORY : ORU_OK;
}

}  // namespace

oruResult node_name(char* out) {
  struct utsname names;
  if (uname(&names) != 0) return oru_map_posix_error(errno);
  return copy_name(names.nodename, out);
}

oruResult nis_domain_name(char* out, bool* present) {
  *present = false;
  char name[kNameCapacity] = "";
  if (getdomainname(name, sizeof name - 1) != 0) return oru_map_posix_error(errno);
  // Linux reports an unset domain as "(none)".
  if (name[0] == '\0' || std::strcmp(name, "(none)") == 0) return ORU_OK;
  *present = true;
  return copy_name(name, out);
}

oruResult with_effective_account(account_callback callback, void* context) {
  const uid_t uid = geteuid();
  long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
  size_t size = suggested > 0 ? static_cast<size_t>(suggested) : 1024;
  for (;;) {
    char* storage = static_cast<char*>(oruMalloc(size));
    if (storage == nullptr) return ORU_E_OUT_OF_MEMORY;
    struct passwd entry;
    struct passwd* found = nullptr;
    int err = getpwuid_r(uid, &entry, storage, size, &found);
    if (err == ERANGE && size < (size_t{1} << 20)) {
      oruFree(storage);
      size *= 2;
      continue;
    }
    oruResult r;
    if (err != 0) {
      r = oru_map_posix_error(err);
    } else if (found == nullptr || entry.pw_name == nullptr) {
      r = ORU_E_UNKNOWN_USER;
    } else {
      bool local = false;
      r = is_local_account(entry.pw_name, uid, &local);
      if (ORU_SUCCEEDED(r)) r = callback(entry.pw_name, local, context);
    }
    oruFree(storage);
    return r;
  }
}

}  // namespace oru::sysinfo

extern "C" {

// No remote desktop sessions or terminal servers outside Windows.
ORU_API oruResult oruIsWTSRemoteSession(int* out) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  *out = 0;
  return ORU_OK;
}

ORU_API oruResult oruIsWindowsTerminalServer(int* out) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  *out = 0;
  return ORU_OK;
}

}  // extern "C"
