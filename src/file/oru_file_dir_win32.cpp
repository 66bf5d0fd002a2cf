// Directory listings on Windows, over the find-file interface.  The search
// starts when the listing is opened; its first name is handed out by the
// first read.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"

#include <windows.h>

#include <cstring>

using oru::file::hand_out_first_name;
using oru::file::is_dot_or_dot_dot;

struct oruDirRecord {
  char* pattern;  // the directory, a backslash and "*"
  HANDLE find;
  char* pending;  // the first name until the first read takes it
};

extern "C" {

ORU_API oruResult oruOpenDir(const char* path, oruDir* dir) {
  if (path == nullptr || dir == nullptr) return ORU_E_INVALID_ARG;
  auto* record = static_cast<oruDirRecord*>(oruMalloc(sizeof(oruDirRecord)));
  if (record == nullptr) return ORU_E_OUT_OF_MEMORY;
  // "\*" goes on also after a trailing separator: "C:\dir\\*" finds the same.
  size_t length = std::strlen(path);
  record->pattern = static_cast<char*>(oruMalloc(length + 3));
  if (record->pattern == nullptr) {
    oruFree(record);
    return ORU_E_OUT_OF_MEMORY;
  }
  std::memcpy(record->pattern, path, length);
  std::memcpy(record->pattern + length, "\\*", 3);
  WIN32_FIND_DATAA found;
  record->find = FindFirstFileA(record->pattern, &found);
  if (record->find == INVALID_HANDLE_VALUE) {
    oruResult result = oru_map_last_win32_error();
    oruFree(record->pattern);
    oruFree(record);
    return result;
  }
  record->pending = oruStrDup(found.cFileName);
  if (record->pending == nullptr) {
    FindClose(record->find);
    oruFree(record->pattern);
    oruFree(record);
    return ORU_E_OUT_OF_MEMORY;
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
  WIN32_FIND_DATAA found;
  while (FindNextFileA(dir->find, &found)) {
    size_t length = std::strlen(found.cFileName);
    if (length >= size) return ORU_E_BUFFER_TOO_SMALL;  // this entry is lost
    std::memcpy(name, found.cFileName, length + 1);
    if (!is_dot_or_dot_dot(name)) return ORU_OK;
  }
  DWORD err = GetLastError();
  if (err != ERROR_NO_MORE_FILES) return oru_map_win32_error(err);
  if (size == 0) return ORU_E_BUFFER_TOO_SMALL;
  name[0] = '\0';
  return 1;
}

ORU_API oruResult oruCloseDir(oruDir dir) {
  if (dir == nullptr) return ORU_E_INVALID_ARG;
  oruResult result = ORU_OK;
  if (!FindClose(dir->find)) result = oru_map_last_win32_error();
  oruFree(dir->pattern);
  oruFree(dir->pending);
  oruFree(dir);
  return result;
}

}  // extern "C"
