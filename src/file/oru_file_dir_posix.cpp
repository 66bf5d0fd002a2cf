// Directory listings on POSIX systems, over opendir and readdir.  As with
// the Windows find-file interface, the first entry is read when the listing
// is opened and handed out by the first read.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"

#include <dirent.h>
#include <cerrno>
#include <cstring>

using oru::file::hand_out_first_name;
using oru::file::is_dot_or_dot_dot;

struct oruDirRecord {
  DIR* stream;
  char* pending;  // the first name until the first read takes it
};

namespace {

// The next entry, or null with *error set (0 at the end).
struct dirent* next_entry(DIR* stream, int* error) {
  errno = 0;
  struct dirent* entry = ::readdir(stream);
  *error = entry == nullptr ? errno : 0;
  return entry;
}

}  // namespace

extern "C" {

ORU_API oruResult oruOpenDir(const char* path, oruDir* dir) {
  if (path == nullptr || dir == nullptr) return ORU_E_INVALID_ARG;
  auto* record = static_cast<oruDirRecord*>(oruMalloc(sizeof(oruDirRecord)));
  if (record == nullptr) return ORU_E_OUT_OF_MEMORY;
  record->pending = nullptr;
  record->stream = ::opendir(path);
  if (record->stream == nullptr) {
    int err = errno;
    oruFree(record);
    return oru_map_posix_error(err);
  }
  int error;
  struct dirent* first = next_entry(record->stream, &error);
  if (first == nullptr && error != 0) {
    ::closedir(record->stream);
    oruFree(record);
    return oru_map_posix_error(error);
  }
  if (first != nullptr) {
    record->pending = oruStrDup(first->d_name);
    if (record->pending == nullptr) {
      ::closedir(record->stream);
      oruFree(record);
      return ORU_E_OUT_OF_MEMORY;
    }
  }
  *dir = record;
  return ORU_OK;
}

ORU_API oruResult oruReadDir(oruDir dir, char* name, size_t size) {
  if (dir == nullptr) return ORU_E_INVALID_ARG;
  if (name == nullptr && size > 0) return ORU_E_INVALID_ARG;
  oruResult first;
  if (dir->pending != nullptr && hand_out_first_name(&dir->pending, name, size, &first)) {
    return first;
  }
  for (;;) {
    int error;
    struct dirent* entry = next_entry(dir->stream, &error);
    if (entry == nullptr) {
      if (error != 0) return oru_map_posix_error(error);
      if (size == 0) return ORU_E_BUFFER_TOO_SMALL;
      name[0] = '\0';
      return 1;
    }
    size_t length = std::strlen(entry->d_name);
    if (length >= size) return ORU_E_BUFFER_TOO_SMALL;  // this entry is lost
    std::memcpy(name, entry->d_name, length + 1);
    if (!is_dot_or_dot_dot(name)) return ORU_OK;
  }
}

ORU_API oruResult oruCloseDir(oruDir dir) {
  if (dir == nullptr) return ORU_E_INVALID_ARG;
  oruResult result = ORU_OK;
  if (::closedir(dir->stream) != 0) result = oru_map_posix_error(errno);
  oruFree(dir->pending);
  oruFree(dir);
  return result;
}

}  // extern "C"
