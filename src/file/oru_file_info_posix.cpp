// File information, file times and the operations on names on POSIX
// systems.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"
#include "system/oru_time_internal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>

namespace oru::file {

oruResult volume_allocation_unit(const char* path, uint32_t* unit) {
  struct statvfs volume;
  if (::statvfs(path, &volume) != 0) return oru_map_posix_error(errno);
  unsigned long size = volume.f_frsize != 0 ? volume.f_frsize : volume.f_bsize;
  *unit = static_cast<uint32_t>(size);
  return ORU_OK;
}

}  // namespace oru::file

using namespace oru::file;

namespace {

// Through the file-time arithmetic, so that truncation and times before
// 1970 come out as on Windows (100-ns units, then microseconds).
oruTimeVal to_time_val(const struct timespec& time) {
  int64_t fileTime = static_cast<int64_t>(time.tv_sec) * oru::time::kFileTimeUnitsPerSecond +
                     oru::time::kUnixEpochAsFileTime + time.tv_nsec / 100;
  return oru::time::from_file_time(fileTime);
}

struct timespec to_timespec(const oruTimeVal& value) {
  int64_t units = oru::time::to_file_time(value) - oru::time::kUnixEpochAsFileTime;
  int64_t seconds = units / oru::time::kFileTimeUnitsPerSecond;
  int64_t rest = units % oru::time::kFileTimeUnitsPerSecond;
  if (rest < 0) {
    rest += oru::time::kFileTimeUnitsPerSecond;
    --seconds;
  }
  struct timespec time = {};
  time.tv_sec = static_cast<time_t>(seconds);
  time.tv_nsec = static_cast<long>(rest * 100);
  return time;
}

bool is_directory(const char* path) {
  struct stat status;
  return ::lstat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

extern "C" {

ORU_API oruResult oruGetFileInfo(const char* path, oruFileInfo* info) {
  if (path == nullptr || info == nullptr) return ORU_E_INVALID_ARG;
  uint32_t wanted = info->mask;
  if (wanted > 63) return ORU_E_INVALID_ARG;
  info->mask = 0;
  if ((wanted & ORU_FINFO_BASIC) != 0) {
    struct stat status;
    if (::stat(path, &status) != 0) return oru_map_posix_error(errno);
    info->type = S_ISDIR(status.st_mode) ? ORU_FILETYPE_DIRECTORY : ORU_FILETYPE_OTHER;
    info->size = static_cast<uint64_t>(status.st_size);
    info->atime = to_time_val(status.st_atim);
    info->mtime = to_time_val(status.st_mtim);
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
  struct timespec times[2];
  times[0].tv_sec = 0;
  times[0].tv_nsec = UTIME_OMIT;
  times[1] = times[0];
  if (accessTime != nullptr) times[0] = to_timespec(*accessTime);
  if (modificationTime != nullptr) times[1] = to_timespec(*modificationTime);
  if (::utimensat(AT_FDCWD, path, times, 0) != 0) return oru_map_posix_error(errno);
  return ORU_OK;
}

ORU_API oruResult oruTouchFile(const char* path, int flags) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  int creation = (flags & ORU_OPEN_CREATE) != 0 ? O_CREAT : 0;
  int fd;
  do {
    fd = ::open(path, O_WRONLY | creation | O_CLOEXEC, 0666);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) return oru_map_posix_error(errno);
  oruResult result = ORU_OK;
  if (::futimens(fd, nullptr) != 0) result = oru_map_posix_error(errno);
  if (::close(fd) != 0 && errno != EINTR && result == ORU_OK) result = oru_map_posix_error(errno);
  return result;
}

ORU_API oruResult oruMoveFile(const char* oldPath, const char* newPath) {
  if (oldPath == nullptr || newPath == nullptr) return ORU_E_INVALID_ARG;
  struct stat status;
  if (::lstat(oldPath, &status) != 0) return oru_map_posix_error(errno);
  if (S_ISDIR(status.st_mode)) return ORU_E_IS_DIRECTORY;
  if (::renameat2(AT_FDCWD, oldPath, AT_FDCWD, newPath, RENAME_NOREPLACE) == 0) return ORU_OK;
  if (errno != EINVAL && errno != ENOSYS) return oru_map_posix_error(errno);
  // File systems without the no-replace rename: a hard link fails on an
  // existing target as atomically, and the old name then goes.
  if (::link(oldPath, newPath) != 0) return oru_map_posix_error(errno);
  if (::unlink(oldPath) != 0) {
    int err = errno;
    ::unlink(newPath);
    return oru_map_posix_error(err);
  }
  return ORU_OK;
}

ORU_API oruResult oruRemoveFile(const char* path) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  if (::unlink(path) == 0) return ORU_OK;
  int err = errno;
  // Linux says EISDIR, POSIX allows EPERM: either way a directory is named
  // as such, other refusals are access denied.
  if (err == EISDIR || err == EPERM || err == EACCES) {
    return is_directory(path) ? ORU_E_IS_DIRECTORY : ORU_E_ACCESS_DENIED;
  }
  return oru_map_posix_error(err);
}

ORU_API oruResult oruCreateDirectory(const char* path) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  if (::mkdir(path, 0777) != 0) return oru_map_posix_error(errno);
  return ORU_OK;
}

ORU_API oruResult oruRemoveDirectory(const char* path) {
  if (path == nullptr) return ORU_E_INVALID_ARG;
  if (::rmdir(path) != 0) {
    // The errno translator has no entry for a directory that still holds
    // names (ENOTEMPTY, or EEXIST on some systems); the code is the one the
    // Windows build gives for ERROR_DIR_NOT_EMPTY.
    if (errno == ENOTEMPTY || errno == EEXIST) return ORU_E_DIR_NOT_EMPTY;
    return oru_map_posix_error(errno);
  }
  return ORU_OK;
}

}  // extern "C"
