// Stand-ins for the module platform part on Windows until its Win32 backend
// lands: loading fails with the loader's reason "not supported", and the
// module list and symbol lookups know nothing.

#include "core/oru_internal.h"
#include "oru/module.h"
#include "system/oru_module_internal.h"

#include <cstdio>

namespace oru::module {

namespace {

void not_supported(char* why, size_t size) {
  if (why != nullptr && size > 0) std::snprintf(why, size, "%s", "not supported");
}

}  // namespace

void* platform_open(const char*, char* why, size_t size) {
  not_supported(why, size);
  return nullptr;
}
void* platform_symbol(void*, const char*, bool* found, char* why, size_t size) {
  if (found != nullptr) *found = false;
  not_supported(why, size);
  return nullptr;
}
bool platform_close(void*, char* why, size_t size) {
  not_supported(why, size);
  return false;
}
std::string platform_path(void*) { return std::string(); }
std::vector<module_entry> platform_modules() { return {}; }
bool platform_find_module(uintptr_t, module_entry&) { return false; }
bool platform_exported_symbol(uintptr_t, std::string&, uintptr_t&) { return false; }
bool debug_lookup(const module_entry&, uintptr_t, debug_answer&) { return false; }

}  // namespace oru::module

extern "C" {

ORU_API oruResult oruCaptureBacktrace(unsigned, void**, size_t, size_t* count) {
  if (count != nullptr) *count = 0;
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruGetFileVersionNumbers(const char*, oruVersionNumbers*) {
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruGetFileVersionString(const char*, int, char*, size_t) {
  return ORU_E_NOT_SUPPORTED;
}

}  // extern "C"
