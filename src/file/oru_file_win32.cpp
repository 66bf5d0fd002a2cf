// File handles on Windows: open, close, read, write, seek, positional I/O
// and byte-range locks.  The handle is the system's file handle.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"

#include <windows.h>

using namespace oru::file;

namespace {

HANDLE handle_of(oruFile file) { return static_cast<HANDLE>(file); }

// Counts travel as 32-bit values through the system interface.
oruResult check_transfer(const void* buffer, size_t count) {
  if (!fits_32_bits(count)) return ORU_E_INVALID_ARG;
  if (buffer == nullptr && count > 0) return ORU_E_INVALID_ARG;
  return ORU_OK;
}

// An overlapped record that carries only a file offset: with no event and a
// handle opened for synchronous access the call still completes before it
// returns.
OVERLAPPED at_offset(uint64_t offset) {
  OVERLAPPED overlapped = {};
  overlapped.Offset = static_cast<DWORD>(offset);
  overlapped.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return overlapped;
}

// A zero count still goes to the system (so that a bad handle is reported),
// with a byte of our own when the caller gave no buffer.
oruResult read_into(oruFile file, void* buffer, size_t count, size_t* bytesRead,
                    OVERLAPPED* where) {
  char spare;
  DWORD got = 0;
  if (!ReadFile(handle_of(file), buffer != nullptr ? buffer : &spare, static_cast<DWORD>(count),
                &got, where)) {
    DWORD err = GetLastError();
    // A pipe whose writer has gone is at its end.  A positional read past
    // the end of a file fails with ERROR_HANDLE_EOF: that is the end too, as
    // a sequential read there reports it.
    if (err != ERROR_BROKEN_PIPE && !(where != nullptr && err == ERROR_HANDLE_EOF)) {
      return oru_map_win32_error(err);
    }
    got = 0;
  }
  *bytesRead = got;
  return ORU_OK;
}

oruResult write_from(oruFile file, const void* buffer, size_t count, size_t* bytesWritten,
                     OVERLAPPED* where) {
  char spare = 0;
  DWORD put = 0;
  if (!WriteFile(handle_of(file), buffer != nullptr ? buffer : &spare, static_cast<DWORD>(count),
                 &put, where)) {
    return oru_map_last_win32_error();
  }
  if (bytesWritten != nullptr) *bytesWritten = put;
  return ORU_OK;
}

// The range a lock call covers: the whole file (every offset the system
// knows) or the caller's.  A range of no bytes holds nothing (kEmpty); an
// offset of 2^63 or more is refused as on every build (kInvalid).
enum class Range { kSet, kEmpty, kInvalid };

Range lock_range(int flags, uint64_t offset, uint64_t length, OVERLAPPED* where, DWORD* low,
                 DWORD* high) {
  if ((flags & ORU_LOCK_ALL) != 0) {
    *where = at_offset(0);
    *low = 0xFFFFFFFF;
    *high = 0xFFFFFFFF;
    return Range::kSet;
  }
  if (length == 0) return Range::kEmpty;
  if (offset > static_cast<uint64_t>(INT64_MAX)) return Range::kInvalid;
  // A range that would run past the last offset ends there, as the whole
  // file's range does.
  if (length > UINT64_MAX - offset) length = UINT64_MAX - offset;
  *where = at_offset(offset);
  *low = static_cast<DWORD>(length);
  *high = static_cast<DWORD>(length >> 32);
  return Range::kSet;
}

}  // namespace

extern "C" {

ORU_API oruResult oruOpenFile(const char* path, int flags, oruFile* file) {
  DWORD access;
  switch (flags & 3) {
    case ORU_OPEN_READ:
      access = GENERIC_READ;
      break;
    case ORU_OPEN_WRITE:
      access = GENERIC_WRITE;
      break;
    case ORU_OPEN_READ | ORU_OPEN_WRITE:
      access = GENERIC_READ | GENERIC_WRITE;
      break;
    default:
      return ORU_E_INVALID_ARG;
  }
  if (path == nullptr || file == nullptr) return ORU_E_INVALID_ARG;
  const bool create = (flags & ORU_OPEN_CREATE) != 0;
  DWORD disposition;
  if (create && (flags & ORU_OPEN_EXCL) != 0) {
    disposition = CREATE_NEW;
  } else if ((flags & ORU_OPEN_TRUNC) != 0) {
    // The system refuses to truncate through a handle without write access
    // (ERROR_INVALID_PARAMETER); said here so that every build agrees.
    if (!create && access == GENERIC_READ) return ORU_E_INVALID_ARG;
    disposition = create ? CREATE_ALWAYS : TRUNCATE_EXISTING;
  } else {
    disposition = create ? OPEN_ALWAYS : OPEN_EXISTING;
  }
  HANDLE handle = CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return oru_map_last_win32_error();
  *file = handle;
  return ORU_OK;
}

ORU_API oruResult oruClose(oruFile file) {
  if (!CloseHandle(handle_of(file))) return oru_map_last_win32_error();
  return ORU_OK;
}

ORU_API oruResult oruRead(oruFile file, void* buffer, size_t count, size_t* bytesRead) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  if (bytesRead == nullptr) return ORU_E_INVALID_ARG;
  return read_into(file, buffer, count, bytesRead, nullptr);
}

ORU_API oruResult oruWrite(oruFile file, const void* buffer, size_t count, size_t* bytesWritten) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  return write_from(file, buffer, count, bytesWritten, nullptr);
}

ORU_API oruResult oruSeek(oruFile file, int origin, int64_t offset, uint64_t* position) {
  DWORD method;
  switch (origin) {
    case ORU_SEEK_SET:
      method = FILE_BEGIN;
      break;
    case ORU_SEEK_CUR:
      method = FILE_CURRENT;
      break;
    case ORU_SEEK_END:
      method = FILE_END;
      break;
    default:
      return ORU_E_INVALID_ARG;
  }
  LONG high = static_cast<LONG>(static_cast<uint64_t>(offset) >> 32);
  // All ones is also a valid low half: only the last error tells, so it
  // must not hold an older failure.
  SetLastError(NO_ERROR);
  DWORD low =
      SetFilePointer(handle_of(file), static_cast<LONG>(offset & 0xFFFFFFFF), &high, method);
  if (low == INVALID_SET_FILE_POINTER) {
    DWORD err = GetLastError();
    if (err != NO_ERROR) return oru_map_win32_error(err);
  }
  if (position != nullptr) {
    *position = (static_cast<uint64_t>(static_cast<DWORD>(high)) << 32) | low;
  }
  return ORU_OK;
}

ORU_API oruResult oruSeekAndRead(oruFile file, uint64_t offset, void* buffer, size_t count,
                                 size_t* bytesRead) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  if (bytesRead == nullptr) return ORU_E_INVALID_ARG;
  if (offset > static_cast<uint64_t>(INT64_MAX)) return ORU_E_INVALID_ARG;
  OVERLAPPED where = at_offset(offset);
  return read_into(file, buffer, count, bytesRead, &where);
}

ORU_API oruResult oruSeekAndWrite(oruFile file, uint64_t offset, const void* buffer, size_t count,
                                  size_t* bytesWritten) {
  oruResult result = check_transfer(buffer, count);
  if (ORU_FAILED(result)) return result;
  if (offset > static_cast<uint64_t>(INT64_MAX)) return ORU_E_INVALID_ARG;
  OVERLAPPED where = at_offset(offset);
  return write_from(file, buffer, count, bytesWritten, &where);
}

ORU_API oruResult oruLockFile(oruFile file, int flags, uint64_t offset, uint64_t length) {
  OVERLAPPED where;
  DWORD low, high;
  switch (lock_range(flags, offset, length, &where, &low, &high)) {
    case Range::kEmpty:
      return ORU_OK;
    case Range::kInvalid:
      return ORU_E_INVALID_ARG;
    case Range::kSet:
      break;
  }
  const bool nonBlocking = (flags & ORU_LOCK_NONBLOCK) != 0;
  DWORD how = 0;
  if ((flags & ORU_LOCK_EXCLUSIVE) != 0) how |= LOCKFILE_EXCLUSIVE_LOCK;
  if (nonBlocking) how |= LOCKFILE_FAIL_IMMEDIATELY;
  if (!LockFileEx(handle_of(file), how, 0, low, high, &where)) {
    DWORD err = GetLastError();
    // Busy is only news for a caller who asked not to wait; a blocking call
    // that fails so is a lock failure (the translator's answer).
    if (nonBlocking && err == ERROR_LOCK_VIOLATION) return ORU_E_AGAIN;
    return oru_map_win32_error(err);
  }
  return ORU_OK;
}

ORU_API oruResult oruUnlockFile(oruFile file, int flags, uint64_t offset, uint64_t length) {
  OVERLAPPED where;
  DWORD low, high;
  switch (lock_range(flags, offset, length, &where, &low, &high)) {
    case Range::kEmpty:
      return ORU_OK;
    case Range::kInvalid:
      return ORU_E_INVALID_ARG;
    case Range::kSet:
      break;
  }
  if (!UnlockFileEx(handle_of(file), 0, low, high, &where)) return oru_map_last_win32_error();
  return ORU_OK;
}

}  // extern "C"
