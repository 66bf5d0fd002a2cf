// The buffer rule of the system-information functions and the decision
// which domain an account belongs to; no system calls.

#include "system/oru_sysinfo_internal.h"

#include <cstring>

namespace oru::sysinfo {

oruResult copy_out(const char* text, size_t length, char* buf, size_t size) {
  if (buf == nullptr) return ORU_E_INVALID_ARG;
  if (length >= size) return ORU_E_BUFFER_TOO_SMALL;
  std::memcpy(buf, text, length);
  buf[length] = '\0';
  return ORU_OK;
}

oruResult copy_out(const char* text, char* buf, size_t size) {
  return copy_out(text, std::strlen(text), buf, size);
}

oruResult account_domain(const char* account, bool local, const char* host, const char* nisDomain,
                         char* buf, size_t size) {
  // A qualified name carries its domain; an empty qualifier does not count.
  if (const char* at = std::strrchr(account, '@'); at != nullptr && at[1] != '\0') {
    return copy_out(at + 1, buf, size);
  }
  if (const char* slash = std::strchr(account, '\\'); slash != nullptr && slash != account) {
    return copy_out(account, static_cast<size_t>(slash - account), buf, size);
  }
  // A local account belongs to this computer, as on Windows.
  if (local) return copy_out(host, buf, size);
  if (nisDomain != nullptr && nisDomain[0] != '\0') return copy_out(nisDomain, buf, size);
  return ORU_E_DOMAINNAME;
}

}  // namespace oru::sysinfo
