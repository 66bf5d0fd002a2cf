// Stand-ins for the system-information platform part on Windows until its
// Win32 backend lands: every query reports ORU_E_NOT_SUPPORTED.

#include "core/oru_internal.h"
#include "oru/system.h"
#include "system/oru_sysinfo_internal.h"

namespace oru::sysinfo {

oruResult node_name(char*) { return ORU_E_NOT_SUPPORTED; }
oruResult nis_domain_name(char*, bool* present) {
  if (present != nullptr) *present = false;
  return ORU_E_NOT_SUPPORTED;
}
oruResult with_effective_account(account_callback, void*) { return ORU_E_NOT_SUPPORTED; }
uint32_t executable_path(char*, uint32_t) { return 0; }
uint32_t executable_path_from_loader(char*, uint32_t) { return 0; }

}  // namespace oru::sysinfo

extern "C" {

ORU_API oruResult oruIsWTSRemoteSession(int* out) {
  if (out != nullptr) *out = 0;
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruIsWindowsTerminalServer(int* out) {
  if (out != nullptr) *out = 0;
  return ORU_E_NOT_SUPPORTED;
}

}  // extern "C"
