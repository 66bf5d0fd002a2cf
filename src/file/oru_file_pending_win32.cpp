// Stand-ins for the file area on Windows until its Win32 backend lands:
// every operation reports ORU_E_NOT_SUPPORTED.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"
#include "oru/file.h"

namespace oru::file {

oruResult current_directory(std::string&) { return ORU_E_NOT_SUPPORTED; }
oruResult system_temp_directory(std::string&) { return ORU_E_NOT_SUPPORTED; }
oruResult create_new_directory(const char*) { return ORU_E_NOT_SUPPORTED; }
oruResult create_new_file(const char*) { return ORU_E_NOT_SUPPORTED; }
uint32_t process_id() { return 0; }
oruResult volume_allocation_unit(const char*, uint32_t*) { return ORU_E_NOT_SUPPORTED; }

}  // namespace oru::file

extern "C" {

ORU_API oruResult oruOpenFile(const char*, int, oruFile* file) {
  if (file != nullptr) *file = nullptr;
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruClose(oruFile) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruRead(oruFile, void*, size_t, size_t*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruWrite(oruFile, const void*, size_t, size_t*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruSeek(oruFile, int, int64_t, uint64_t*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruSeekAndRead(oruFile, uint64_t, void*, size_t, size_t*) {
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruSeekAndWrite(oruFile, uint64_t, const void*, size_t, size_t*) {
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruLockFile(oruFile, int, uint64_t, uint64_t) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruUnlockFile(oruFile, int, uint64_t, uint64_t) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruCreateDirectory(const char*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruGetFileInfo(const char*, oruFileInfo*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruMoveFile(const char*, const char*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruRemoveDirectory(const char*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruRemoveFile(const char*) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruSetFileTime(const char*, const oruTimeVal*, const oruTimeVal*) {
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruTouchFile(const char*, int) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruGetCanonicalPath(const char*, char*, size_t) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruGetCurrentDirectory(char*, size_t) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruOpenDir(const char*, oruDir* dir) {
  if (dir != nullptr) *dir = nullptr;
  return ORU_E_NOT_SUPPORTED;
}
ORU_API oruResult oruReadDir(oruDir, char*, size_t) { return ORU_E_NOT_SUPPORTED; }
ORU_API oruResult oruCloseDir(oruDir) { return ORU_E_NOT_SUPPORTED; }

}  // extern "C"
