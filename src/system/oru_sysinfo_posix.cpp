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

// The processor architecture this code runs as.  Only the four historic
// names exist; every other architecture is "unknown" by definition.
constexpr const char* kArchitecture =
#if defined(__i386__) || defined(_M_IX86)
    "i386";
#elif defined(__mips__)
    "mips";
#elif defined(__alpha__) || defined(_M_ALPHA)
    "alpha";
#elif (defined(__powerpc__) || defined(__ppc__)) && !defined(__powerpc64__)
    "ppc";
#else
    "unknown";
#endif

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

// The node name, lower-cased: ASCII letters only, so that the answer does
// not depend on the locale.
oruResult host_name(char* buf, size_t size) {
  char name[kNameCapacity];
  oruResult r = node_name(name);
  if (ORU_FAILED(r)) return r;
  r = copy_out(name, buf, size);
  if (ORU_FAILED(r)) return r;
  for (char* p = buf; *p != '\0'; ++p) {
    if (*p >= 'A' && *p <= 'Z') *p = static_cast<char>(*p - 'A' + 'a');
  }
  return ORU_OK;
}

oruResult account_domain_name(char* buf, size_t size) {
  struct request {
    char* buf;
    size_t size;
  } req{buf, size};
  return with_effective_account(
      [](const char* account, bool local, void* context) -> oruResult {
        auto* q = static_cast<request*>(context);
        char host[kNameCapacity] = "";
        char nis[kNameCapacity] = "";
        bool hasNis = false;
        if (local) {
          oruResult r = oruGetHostname(host, sizeof host);
          if (ORU_FAILED(r)) return r;
        } else {
          oruResult r = nis_domain_name(nis, &hasNis);
          if (ORU_FAILED(r)) return r;
        }
        return account_domain(account, local, host, hasNis ? nis : nullptr, q->buf, q->size);
      },
      &req);
}

const char* architecture_name() { return kArchitecture; }

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
