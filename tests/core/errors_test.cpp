// The translators from errno values and Win32 error numbers to results.

#include "oru/core.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#endif

#include <cerrno>
#include <cstdint>
#include <map>

namespace {

uint32_t u(oruResult r) { return static_cast<uint32_t>(r); }

TEST(PosixErrors, EveryTableRowByName) {
  const std::map<int, oruResult> table = {
      {EPERM, ORU_E_ACCESS_DENIED},
      {EACCES, ORU_E_ACCESS_DENIED},
      {ENOENT, ORU_E_NOT_FOUND},
      {ESRCH, ORU_E_NO_SUCH_PROCESS},
      {EIO, ORU_E_IO},
      {ENXIO, ORU_E_NO_DEVICE},
      {ENOEXEC, ORU_E_EXEC_FORMAT},
      {EBADF, ORU_E_HANDLE},
      {ECHILD, ORU_E_NO_CHILD},
      {EAGAIN, ORU_E_AGAIN},
      {ENOMEM, ORU_E_OUT_OF_MEMORY},
      {EFAULT, ORU_E_BAD_ADDRESS},
      {EBUSY, ORU_E_BUSY},
      {ETXTBSY, ORU_E_BUSY},
      {EEXIST, ORU_E_EXISTS},
      {EXDEV, ORU_E_CROSS_DEVICE},
      {ENOTDIR, ORU_E_PATH_NOT_FOUND},
      {EISDIR, ORU_E_IS_DIRECTORY},
      {EINVAL, ORU_E_INVALID_ARG},
      {ENFILE, ORU_E_TOO_MANY_FILES},
      {EMFILE, ORU_E_TOO_MANY_FILES},
      {ENOSPC, ORU_E_NO_SPACE},
      {EROFS, ORU_E_READ_ONLY_FS},
      {EPIPE, ORU_E_BROKEN_PIPE},
      {ENAMETOOLONG, ORU_E_NAME_TOO_LONG},
      {ENOLCK, ORU_E_NO_LOCKS},
  };
  for (const auto& [err, expected] : table) {
    EXPECT_EQ(u(_oru_map_posix_error(err)), u(expected)) << "errno " << err;
  }
  EXPECT_EQ(_oru_map_posix_error(0), ORU_OK);

  // Everything else up to well past the C library's range keeps its number.
  for (int err = 1; err < 4096; ++err) {
    if (table.count(err)) continue;
    EXPECT_EQ(u(_oru_map_posix_error(err)), 0x96220000u | static_cast<uint32_t>(err))
        << "errno " << err;
  }
}

TEST(PosixErrors, NotADirectoryIsAMissingPath) {
  EXPECT_EQ(u(_oru_map_posix_error(ENOTDIR)), u(ORU_E_PATH_NOT_FOUND));
  EXPECT_NE(u(_oru_map_posix_error(ENOTDIR)), u(ORU_E_NOT_DIRECTORY));
}

TEST(PosixErrors, UnknownNumbersKeepFacility0x1622) {
  EXPECT_EQ(u(_oru_map_posix_error(99)), 0x96220063u);
  oruResult r = _oru_map_posix_error(99);
  EXPECT_TRUE(ORU_FAILED(r));
  EXPECT_EQ(ORU_RESULT_FACILITY(r), ORU_FACILITY_POSIX);
  EXPECT_EQ(ORU_RESULT_CODE(r), 99u);
}

#if defined(_WIN32)
TEST(Win32Errors, LastErrorIsTheThreadsLastError) {
  SetLastError(ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(u(_oru_map_last_win32_error()), u(ORU_E_NOT_FOUND));
  SetLastError(ERROR_INVALID_FUNCTION);
  EXPECT_EQ(u(_oru_map_last_win32_error()), 0x80070001u);
  SetLastError(0);
  EXPECT_EQ(_oru_map_last_win32_error(), ORU_OK);
}
#else
TEST(PosixErrors, LastErrorIsErrno) {
  errno = ENOENT;
  EXPECT_EQ(u(_oru_map_last_win32_error()), u(ORU_E_NOT_FOUND));
  errno = 0;
  EXPECT_EQ(_oru_map_last_win32_error(), ORU_OK);
}
#endif

const std::map<uint32_t, oruResult>& win32_table() {
  static const std::map<uint32_t, oruResult> table = {
      {2, ORU_E_NOT_FOUND},
      {51, ORU_E_NOT_FOUND},
      {3, ORU_E_PATH_NOT_FOUND},
      {4, ORU_E_TOO_MANY_FILES},
      {113, ORU_E_TOO_MANY_FILES},
      {5, ORU_E_ACCESS_DENIED},
      {82, ORU_E_ACCESS_DENIED},
      {6, ORU_E_HANDLE},
      {8, ORU_E_OUT_OF_MEMORY},
      {14, ORU_E_OUT_OF_MEMORY},
      {11, ORU_E_EXEC_FORMAT},
      {193, ORU_E_EXEC_FORMAT},
      {13, ORU_E_INVALID_ARG},
      {87, ORU_E_INVALID_ARG},
      {123, ORU_E_INVALID_ARG},
      {131, ORU_E_INVALID_ARG},
      {161, ORU_E_INVALID_ARG},
      {267, ORU_E_INVALID_ARG},
      {15, ORU_E_NO_DEVICE},
      {20, ORU_E_NO_DEVICE},
      {16, ORU_E_BUSY},
      {129, ORU_E_BUSY},
      {170, ORU_E_BUSY},
      {231, ORU_E_BUSY},
      {2401, ORU_E_BUSY},
      {2402, ORU_E_BUSY},
      {2404, ORU_E_BUSY},
      {17, ORU_E_CROSS_DEVICE},
      {19, ORU_E_READ_ONLY_FS},
      {21, ORU_E_NOT_READY},
      {22, ORU_E_IO},
      {23, ORU_E_IO},
      {25, ORU_E_IO},
      {27, ORU_E_IO},
      {29, ORU_E_IO},
      {30, ORU_E_IO},
      {31, ORU_E_IO},
      {110, ORU_E_IO},
      {32, ORU_E_LOCK_FAILED},
      {33, ORU_E_LOCK_FAILED},
      {167, ORU_E_LOCK_FAILED},
      {36, ORU_E_NO_LOCKS},
      {39, ORU_E_NO_SPACE},
      {112, ORU_E_NO_SPACE},
      {50, ORU_E_NOT_IMPLEMENTED},
      {120, ORU_E_NOT_IMPLEMENTED},
      {80, ORU_E_EXISTS},
      {183, ORU_E_EXISTS},
      {89, ORU_E_AGAIN},
      {164, ORU_E_AGAIN},
      {109, ORU_E_BROKEN_PIPE},
      {230, ORU_E_BROKEN_PIPE},
      {232, ORU_E_BROKEN_PIPE},
      {233, ORU_E_BROKEN_PIPE},
      {111, ORU_E_BUFFER_TOO_SMALL},
      {122, ORU_E_BUFFER_TOO_SMALL},
      {127, ORU_E_SYMBOL},
      {128, ORU_E_NO_CHILD},
      {145, ORU_E_DIR_NOT_EMPTY},
      {206, ORU_E_NAME_TOO_LONG},
      {487, ORU_E_BAD_ADDRESS},
      {998, ORU_E_BAD_ADDRESS},
  };
  return table;
}

TEST(Win32Errors, EveryTableRow) {
  for (const auto& [err, expected] : win32_table()) {
    EXPECT_EQ(u(_oru_map_win32_error(err)), u(expected)) << "error " << err;
  }
  EXPECT_EQ(_oru_map_win32_error(0), ORU_OK);
}

TEST(Win32Errors, EverythingElseIsFacility7) {
  for (uint32_t err = 1; err < 20000; ++err) {
    if (win32_table().count(err)) continue;
    EXPECT_EQ(u(_oru_map_win32_error(err)), 0x80070000u | err) << "error " << err;
  }
}

TEST(Win32Errors, DecisionOrder) {
  // 267 is tested before the 2..233 table; 2403 alone of 2401-2404 falls out.
  EXPECT_EQ(u(_oru_map_win32_error(267)), u(ORU_E_INVALID_ARG));
  EXPECT_EQ(u(_oru_map_win32_error(2403)), 0x80070963u);
  EXPECT_EQ(u(_oru_map_win32_error(2400)), 0x80070960u);
  EXPECT_EQ(u(_oru_map_win32_error(2405)), 0x80070965u);
  EXPECT_EQ(u(_oru_map_win32_error(1)), 0x80070001u);
  EXPECT_EQ(u(_oru_map_win32_error(234)), 0x800700EAu);
}

TEST(Win32Errors, HighBitsSurviveTheFallback) {
  // The fallback ORs the facility in; it does not mask the number.
  EXPECT_EQ(u(_oru_map_win32_error(0x12345678u)), 0x92375678u);
  EXPECT_EQ(u(_oru_map_win32_error(0x80070005u)), 0x80070005u);
  EXPECT_EQ(u(_oru_map_win32_error(0xFFFFFFFFu)), 0xFFFFFFFFu);
}

TEST(ResultCodes, SeverityAndFacilities) {
  EXPECT_TRUE(ORU_SUCCEEDED(ORU_OK));
  EXPECT_TRUE(ORU_SUCCEEDED(ORU_S_OUTPUT_FULL));
  EXPECT_TRUE(ORU_FAILED(ORU_E_UNEXPECTED));
  EXPECT_EQ(ORU_RESULT_FACILITY(ORU_E_BUSY), ORU_FACILITY_ORU);
  EXPECT_EQ(ORU_RESULT_FACILITY(ORU_E_INVALID_ARG), ORU_FACILITY_WIN32);
  EXPECT_EQ(ORU_RESULT_FACILITY(ORU_E_FAIL), 0u);
  EXPECT_EQ(u(ORU_E_ARG_OUT_OF_RANGE), 0x9623002Cu);
}

}  // namespace
