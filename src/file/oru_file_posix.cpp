// File handles on POSIX systems: open, close, read, write, seek, positional
// I/O and byte-range locks.  The handle is the descriptor itself.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <climits>

using namespace oru::file;

namespace {

int descriptor(oruFile file) { return static_cast<int>(reinterpret_cast<intptr_t>(file)); }

// One system read or write moves at most this much (Linux stops a little
// short of 2 GiB); larger counts go in pieces.
constexpr size_t kChunk = size_t{1} << 30;

// Counts travel as 32-bit values through the interface contract.
oruResult check_transfer(const void* buffer, size_t count) {
  if (!fits_32_bits(count)) return ORU_E_INVALID_ARG;
  if (buffer == nullptr && count > 0) return ORU_E_INVALID_ARG;
  return ORU_OK;
}

// Reads like a synchronous Win32 read: a regular file gives everything up to
// its end, a pipe what is there.  A piece that comes back short ends the
// read; EOF (a closed pipe included) is a count of 0.
template <typename ReadPiece>
oruResult read_all(void* buffer, size_t count, size_t* bytesRead, ReadPiece piece) {
  char* at = static_cast<char*>(buffer);
  size_t done = 0;
  // At least one call, so that a count of 0 still reports a bad handle.
  do {
    size_t want = count - done < kChunk ? count - done : kChunk;
    ssize_t n = piece(at + done, want, done);
    if (n < 0) {
      if (errno == EINTR) continue;
      if (done > 0) break;  // report what arrived; the error comes again
      return oru_map_posix_error(errno);
    }
    done += static_cast<size_t>(n);
    if (static_cast<size_t>(n) < want) break;
  } while (done < count);
  *bytesRead = done;
  return ORU_OK;
}

// Writes everything or fails, like a synchronous Win32 write.
template <typename WritePiece>
oruResult write_all(const void* buffer, size_t count, size_t* bytesWritten, WritePiece piece) {
  const char* at = static_cast<const char*>(buffer);
  size_t done = 0;
  do {
    size_t want = count - done < kChunk ? count - done : kChunk;
    ssize_t n = piece(at + done, want, done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return oru_map_posix_error(errno);
    }
    if (n == 0 && want > 0) return ORU_E_NO_SPACE;  // no progress and no error
    done += static_cast<size_t>(n);
  } while (done < count);
  if (bytesWritten != nullptr) *bytesWritten = done;
  return ORU_OK;
}

oruResult lock_range(oruFile file, int flags, uint64_t offset, uint64_t length, short type,
                     bool wait) {
  struct flock range = {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  if ((flags & ORU_LOCK_ALL) != 0) {
    range.l_start = 0;
    range.l_len = 0;  // to the end of all possible offsets
  } else {
    if (length == 0) return ORU_OK;  // a range of no bytes holds nothing
    if (offset > static_cast<uint64_t>(INT64_MAX)) return ORU_E_INVALID_ARG;
    range.l_start = static_cast<off_t>(offset);
    range.l_len =
        length > static_cast<uint64_t>(INT64_MAX) - offset ? 0 : static_cast<off_t>(length);
  }
  // Open-file-description locks belong to the handle, as Windows locks do;
  // classic fcntl locks belong to the process and would let a second handle
  // of the same process through.
  int command = wait ? F_OFD_SETLKW : F_OFD_SETLK;
  while (::fcntl(descriptor(file), command, &range) != 0) {
    if (errno == EINTR) continue;
    if (!wait && (errno == EAGAIN || errno == EACCES)) return ORU_E_AGAIN;
    return oru_map_posix_error(errno);
  }
  return ORU_OK;
}

}  // namespace

extern "C" {

ORU_API oruResult oruOpenFile(const char* path, int flags, oruFile* file) {
  int access;
  switch (flags & 3) {
    case ORU_OPEN_READ:
      access = O_RDONLY;
      break;
    case ORU_OPEN_WRITE:
      access = O_WRONLY;
      break;
    case ORU_OPEN_READ | ORU_OPEN_WRITE:
      access = O_RDWR;
      break;
    default:
      return ORU_E_INVALID_ARG;
  }
  if (path == nullptr || file == nullptr) return ORU_E_INVALID_ARG;
  int disposition;
  if ((flags & ORU_OPEN_CREATE) != 0 && (flags & ORU_OPEN_EXCL) != 0) {
    disposition = O_CREAT | O_EXCL;
  } else if ((flags & ORU_OPEN_TRUNC) != 0) {
    // Truncating an existing file needs write access (as on Windows); POSIX
    // leaves O_RDONLY | O_TRUNC undefined.
    if ((flags & ORU_OPEN_CREATE) == 0 && access == O_RDONLY) return ORU_E_INVALID_ARG;
    disposition = (flags & ORU_OPEN_CREATE) != 0 ? O_CREAT | O_TRUNC : O_TRUNC;
  } else {
    disposition = (flags & ORU_OPEN_CREATE) != 0 ? O_CREAT : 0;
  }
  int fd;
  do {
    fd = ::open(path, access | disposition | O_CLOEXEC, 0666);
  } while (fd < 0 && errno == EINTR);
  // A directory is no file to open, whatever the access asked for.
  if (fd < 0) return errno == EISDIR ? ORU_E_ACCESS_DENIED : oru_map_posix_error(errno);
  struct stat status;
  if (::fstat(fd, &status) == 0 && S_ISDIR(status.st_mode)) {
    ::close(fd);
    return ORU_E_ACCESS_DENIED;
  }
  *file = reinterpret_cast<oruFile>(static_cast<intptr_t>(fd));
  return ORU_OK;
}

ORU_API oruResult oruClose(oruFile file) {
  // The descriptor is gone after close even when it reports EINTR.
  if (::close(descriptor(file)) != 0 && errno != EINTR) return oru_map_posix_error(errno);
  return ORU_OK;
}

ORU_API oruResult oruRead(oruFile file, void* buffer, size_t count, size_t* bytesRead) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  if (bytesRead == nullptr) return ORU_E_INVALID_ARG;
  int fd = descriptor(file);
  return read_all(buffer, count, bytesRead,
                  [fd](char* at, size_t want, size_t) { return ::read(fd, at, want); });
}

ORU_API oruResult oruWrite(oruFile file, const void* buffer, size_t count, size_t* bytesWritten) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  int fd = descriptor(file);
  return write_all(buffer, count, bytesWritten,
                   [fd](const char* at, size_t want, size_t) { return ::write(fd, at, want); });
}

ORU_API oruResult oruSeek(oruFile file, int origin, int64_t offset, uint64_t* position) {
  int whence;
  switch (origin) {
    case ORU_SEEK_SET:
      whence = SEEK_SET;
      break;
    case ORU_SEEK_CUR:
      whence = SEEK_CUR;
      break;
    case ORU_SEEK_END:
      whence = SEEK_END;
      break;
    default:
      return ORU_E_INVALID_ARG;
  }
  off_t now = ::lseek(descriptor(file), static_cast<off_t>(offset), whence);
  if (now < 0) return oru_map_posix_error(errno);
  if (position != nullptr) *position = static_cast<uint64_t>(now);
  return ORU_OK;
}

ORU_API oruResult oruSeekAndRead(oruFile file, uint64_t offset, void* buffer, size_t count,
                                 size_t* bytesRead) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  if (bytesRead == nullptr) return ORU_E_INVALID_ARG;
  if (offset > static_cast<uint64_t>(INT64_MAX)) return ORU_E_INVALID_ARG;
  int fd = descriptor(file);
  return read_all(buffer, count, bytesRead, [fd, offset](char* at, size_t want, size_t done) {
    ssize_t n = ::pread(fd, at, want, static_cast<off_t>(offset + done));
    // A pipe has no offsets: read it as it comes, as Windows does.
    if (n < 0 && errno == ESPIPE) n = ::read(fd, at, want);
    return n;
  });
}

ORU_API oruResult oruSeekAndWrite(oruFile file, uint64_t offset, const void* buffer, size_t count,
                                  size_t* bytesWritten) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  if (offset > static_cast<uint64_t>(INT64_MAX)) return ORU_E_INVALID_ARG;
  int fd = descriptor(file);
  return write_all(buffer, count, bytesWritten,
                   [fd, offset](const char* at, size_t want, size_t done) {
                     ssize_t n = ::pwrite(fd, at, want, static_cast<off_t>(offset + done));
                     if (n < 0 && errno == ESPIPE) n = ::write(fd, at, want);
                     return n;
                   });
}

ORU_API oruResult oruLockFile(oruFile file, int flags, uint64_t offset, uint64_t length) {
  short type = (flags & ORU_LOCK_EXCLUSIVE) != 0 ? F_WRLCK : F_RDLCK;
  return lock_range(file, flags, offset, length, type, (flags & ORU_LOCK_NONBLOCK) == 0);
}

ORU_API oruResult oruUnlockFile(oruFile file, int flags, uint64_t offset, uint64_t length) {
  return lock_range(file, flags, offset, length, F_UNLCK, false);
}

}  // extern "C"
