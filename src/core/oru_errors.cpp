// Translation of system error numbers into result codes.
//
// Both translators are plain decisions on the number.  The POSIX one maps by
// symbolic name, so codes of facility 0x1622 carry this C library's numbers.

#include "core/oru_internal.h"

#include <cerrno>

namespace {

constexpr oruResult posix_fallback(int err) {
  return static_cast<oruResult>(0x96220000u | static_cast<uint32_t>(err));
}

constexpr oruResult win32_fallback(uint32_t err) {
  // Only sets bits: high bits of an out-of-range number survive.
  return static_cast<oruResult>(0x80070000u | err);
}

// Win32 numbers from 2 to 233.
oruResult map_win32_low(uint32_t err) {
  switch (err) {
    case 2:   // ERROR_FILE_NOT_FOUND
    case 51:  // ERROR_REM_NOT_LIST
      return ORU_E_NOT_FOUND;
    case 3:  // ERROR_PATH_NOT_FOUND
      return ORU_E_PATH_NOT_FOUND;
    case 4:    // ERROR_TOO_MANY_OPEN_FILES
    case 113:  // ERROR_NO_MORE_SEARCH_HANDLES
      return ORU_E_TOO_MANY_FILES;
    case 5:   // ERROR_ACCESS_DENIED
    case 82:  // ERROR_CANNOT_MAKE
      return ORU_E_ACCESS_DENIED;
    case 6:  // ERROR_INVALID_HANDLE
      return ORU_E_HANDLE;
    case 8:   // ERROR_NOT_ENOUGH_MEMORY
    case 14:  // ERROR_OUTOFMEMORY
      return ORU_E_OUT_OF_MEMORY;
    case 11:   // ERROR_BAD_FORMAT
    case 193:  // ERROR_BAD_EXE_FORMAT
      return ORU_E_EXEC_FORMAT;
    case 13:   // ERROR_INVALID_DATA
    case 87:   // ERROR_INVALID_PARAMETER
    case 123:  // ERROR_INVALID_NAME
    case 131:  // ERROR_NEGATIVE_SEEK
    case 161:  // ERROR_BAD_PATHNAME
      return ORU_E_INVALID_ARG;
    case 15:  // ERROR_INVALID_DRIVE
    case 20:  // ERROR_BAD_UNIT
      return ORU_E_NO_DEVICE;
    case 16:   // ERROR_CURRENT_DIRECTORY
    case 129:  // ERROR_CHILD_NOT_COMPLETE
    case 170:  // ERROR_BUSY
    case 231:  // ERROR_PIPE_BUSY
      return ORU_E_BUSY;
    case 17:  // ERROR_NOT_SAME_DEVICE
      return ORU_E_CROSS_DEVICE;
    case 19:  // ERROR_WRITE_PROTECT
      return ORU_E_READ_ONLY_FS;
    case 21:  // ERROR_NOT_READY
      return ORU_E_NOT_READY;
    case 22:   // ERROR_BAD_COMMAND
    case 23:   // ERROR_CRC
    case 25:   // ERROR_SEEK
    case 27:   // ERROR_SECTOR_NOT_FOUND
    case 29:   // ERROR_WRITE_FAULT
    case 30:   // ERROR_READ_FAULT
    case 31:   // ERROR_GEN_FAILURE
    case 110:  // ERROR_OPEN_FAILED
      return ORU_E_IO;
    case 32:   // ERROR_SHARING_VIOLATION
    case 33:   // ERROR_LOCK_VIOLATION
    case 167:  // ERROR_LOCK_FAILED
      return ORU_E_LOCK_FAILED;
    case 36:  // ERROR_SHARING_BUFFER_EXCEEDED
      return ORU_E_NO_LOCKS;
    case 39:   // ERROR_HANDLE_DISK_FULL
    case 112:  // ERROR_DISK_FULL
      return ORU_E_NO_SPACE;
    case 50:   // ERROR_NOT_SUPPORTED
    case 120:  // ERROR_CALL_NOT_IMPLEMENTED
      return ORU_E_NOT_IMPLEMENTED;
    case 80:   // ERROR_FILE_EXISTS
    case 183:  // ERROR_ALREADY_EXISTS
      return ORU_E_EXISTS;
    case 89:   // ERROR_NO_PROC_SLOTS
    case 164:  // ERROR_MAX_THRDS_REACHED
      return ORU_E_AGAIN;
    case 109:  // ERROR_BROKEN_PIPE
    case 230:  // ERROR_BAD_PIPE
    case 232:  // ERROR_NO_DATA
    case 233:  // ERROR_PIPE_NOT_CONNECTED
      return ORU_E_BROKEN_PIPE;
    case 111:  // ERROR_BUFFER_OVERFLOW
    case 122:  // ERROR_INSUFFICIENT_BUFFER
      return ORU_E_BUFFER_TOO_SMALL;
    case 127:  // ERROR_PROC_NOT_FOUND
      return ORU_E_SYMBOL;
    case 128:  // ERROR_WAIT_NO_CHILDREN
      return ORU_E_NO_CHILD;
    case 145:  // ERROR_DIR_NOT_EMPTY
      return ORU_E_DIR_NOT_EMPTY;
    case 206:  // ERROR_FILENAME_EXCED_RANGE
      return ORU_E_NAME_TOO_LONG;
    default:
      return win32_fallback(err);
  }
}

}  // namespace

extern "C" ORU_API oruResult _oru_map_posix_error(int err) {
  switch (err) {
    case 0:
      return ORU_OK;
    case EPERM:
    case EACCES:
      return ORU_E_ACCESS_DENIED;
    case ENOENT:
      return ORU_E_NOT_FOUND;
    case ESRCH:
      return ORU_E_NO_SUCH_PROCESS;
    case EIO:
      return ORU_E_IO;
    case ENXIO:
      return ORU_E_NO_DEVICE;
    case ENOEXEC:
      return ORU_E_EXEC_FORMAT;
    case EBADF:
      return ORU_E_HANDLE;
    case ECHILD:
      return ORU_E_NO_CHILD;
    case EAGAIN:
      return ORU_E_AGAIN;
    case ENOMEM:
      return ORU_E_OUT_OF_MEMORY;
    case EFAULT:
      return ORU_E_BAD_ADDRESS;
    case EBUSY:
    case ETXTBSY:
      return ORU_E_BUSY;
    case EEXIST:
      return ORU_E_EXISTS;
    case EXDEV:
      return ORU_E_CROSS_DEVICE;
    case ENOTDIR:
      return ORU_E_PATH_NOT_FOUND;  // deliberately not ORU_E_NOT_DIRECTORY
    case EISDIR:
      return ORU_E_IS_DIRECTORY;
    case EINVAL:
      return ORU_E_INVALID_ARG;
    case ENFILE:
    case EMFILE:
      return ORU_E_TOO_MANY_FILES;
    case ENOSPC:
      return ORU_E_NO_SPACE;
    case EROFS:
      return ORU_E_READ_ONLY_FS;
    case EPIPE:
      return ORU_E_BROKEN_PIPE;
    case ENAMETOOLONG:
      return ORU_E_NAME_TOO_LONG;
    case ENOLCK:
      return ORU_E_NO_LOCKS;
    default:
      return posix_fallback(err);
  }
}

extern "C" ORU_API oruResult _oru_map_win32_error(uint32_t err) {
  // The order of the tests is part of the contract: 267 first, then the
  // table of 2 to 233, then 487 and 998, then 2401 to 2404 where 2403 alone
  // falls through to the generic form.
  if (err == 0) return ORU_OK;
  if (err == 267) return ORU_E_INVALID_ARG;  // ERROR_DIRECTORY
  if (err >= 2 && err <= 233) return map_win32_low(err);
  if (err == 487 || err == 998) return ORU_E_BAD_ADDRESS;  // ERROR_INVALID_ADDRESS, ERROR_NOACCESS
  if (err >= 2401 && err <= 2404 && err != 2403) return ORU_E_BUSY;
  return win32_fallback(err);
}
