// File information, file times and the operations on names on Windows.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"
#include "system/oru_time_internal.h"

#include <windows.h>

namespace oru::file {

oruResult volume_allocation_unit(const char* path, uint32_t* unit) {
  DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, clusters = 0;
  if (!GetDiskFreeSpaceA(path, &sectorsPerCluster, &bytesPerSector, &freeClusters, &clusters)) {
    return oru_map_last_win32_error();
  }
  *unit = static_cast<uint32_t>(sectorsPerCluster * bytesPerSector);
  return ORU_OK;
}

}  // namespace oru::file

using namespace oru::file;

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

int64_t from_filetime(const FILETIME& time) {
  return static_cast<int64_t>((static_cast<uint64_t>(time.dwHighDateTime) << 32) |
                              time.dwLowDateTime);
}

FILETIME to_filetime(int64_t units) {
  FILETIME time;
  time.dwLowDateTime = static_cast<DWORD>(static_cast<uint64_t>(units));
  time.dwHighDateTime = static_cast<DWORD>(static_cast<uint64_t>(units) >> 32);
  return time;
}

// Sets the times through a handle opened for writing; a null time is left
// alone.  The handle is closed in every case; the failure of the time call
// wins over that of the close.
oruResult set_times(HANDLE handle, const FILETIME* access, const FILETIME* modified) {
  if (!SetFileTime(handle, nullptr, access, modified)) {
    DWORD err = GetLastError();
    CloseHandle(handle);
    return oru_map_win32_error(err);
  }
  if (!CloseHandle(handle)) return oru_map_last_win32_error();
  return ORU_OK;
}

}  // namespace

extern "C" {

ORU_API oruResult oruGetFileInfo(const char* path, oruFileInfo* info) {
  if (path == nullptr || info == nullptr) return ORU_E_INVALID_ARG;
  uint32_t wanted = info->mask;
  if (wanted > 63) return ORU_E_INVALID_ARG;
  info->mask = 0;
  if ((wanted & ORU_FINFO_BASIC) != 0) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExA(path, GetFileExInfoStandard, &data)) {
      return oru_map_last_win32_error();
    }
    info->type = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? ORU_FILETYPE_DIRECTORY
                                                                         : ORU_FILETYPE_OTHER;
    info->size = (static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    info->atime = oru::time::from_file_time(from_filetime(data.ftLastAccessTime));
    info->mtime = oru::time::from_file_time(from_filetime(data.ftLastWriteTime));
    info->mask |= ORU_FINFO_BASIC;
  }
  if ((wanted & ORU_FINFO_BLKSIZE) != 0) {
    oruResult result = allocation_unit(path, &info->blksize);
    if (ORU_FAILED(result)) return result;
    info->mask |= ORU_FINFO_BLKSIZE;
  }
  return ORU_OK;
}

ORU_API oruResult oruSetFileTime(const char* path, const oruTimeVal* accessTime,
                                 const oruTimeVal* modificationTime) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  FILETIME access = {}, modified = {};
  if (accessTime != nullptr) access = to_filetime(oru::time::to_file_time(*accessTime));
  if (modificationTime != nullptr) {
    modified = to_filetime(oru::time::to_file_time(*modificationTime));
  }
  // Backup semantics let a directory be opened, so that it takes times too.
  HANDLE handle = CreateFileA(path, GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return oru_map_last_win32_error();
  return set_times(handle, accessTime != nullptr ? &access : nullptr,
                   modificationTime != nullptr ? &modified : nullptr);
}

ORU_API oruResult oruTouchFile(const char* path, int flags) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  // No backup semantics: touching a directory fails (access denied), unlike
  // setting its times.
  DWORD disposition = (flags & ORU_OPEN_CREATE) != 0 ? OPEN_ALWAYS : OPEN_EXISTING;
  HANDLE handle = CreateFileA(path, GENERIC_WRITE, kShareAll, nullptr, disposition,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return oru_map_last_win32_error();
  return set_times(handle, &now, &now);
}

ORU_API oruResult oruMoveFile(const char* oldPath, const char* newPath) {
  if (oldPath == nullptr || newPath == nullptr) return ORU_E_INVALID_ARG;
  DWORD attributes = GetFileAttributesA(oldPath);
  if (attributes == INVALID_FILE_ATTRIBUTES) return oru_map_last_win32_error();
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return ORU_E_IS_DIRECTORY;
  // Without MOVEFILE_REPLACE_EXISTING an existing target stays
  // (ERROR_ALREADY_EXISTS, translated to ORU_E_EXISTS).
  if (!MoveFileA(oldPath, newPath)) return oru_map_last_win32_error();
  return ORU_OK;
}

ORU_API oruResult oruRemoveFile(const char* path) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  if (DeleteFileA(path)) return ORU_OK;
  DWORD err = GetLastError();
  // The system says access denied for a directory too; name it.
  if (err == ERROR_ACCESS_DENIED) {
    DWORD attributes = GetFileAttributesA(path);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      return ORU_E_IS_DIRECTORY;
    }
    return ORU_E_ACCESS_DENIED;
  }
  return oru_map_win32_error(err);
}

ORU_API oruResult oruCreateDirectory(const char* path) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  if (!CreateDirectoryA(path, nullptr)) return oru_map_last_win32_error();
  return ORU_OK;
}

ORU_API oruResult oruRemoveDirectory(const char* path) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  if (!RemoveDirectoryA(path)) return oru_map_last_win32_error();
  return ORU_OK;
}

}  // extern "C"
