#include "oru/core.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <thread>

namespace {

std::string text_of(oruResult code) {
  const char* text = oruStrError(code);
  return text != nullptr ? text : "(null)";
}

TEST(StrError, SuccessCodesAreUnknown) {
  EXPECT_EQ(text_of(ORU_OK), "unknown result code 00000000");
  EXPECT_EQ(text_of(ORU_S_OUTPUT_FULL), "unknown result code 0x000001");
  EXPECT_EQ(text_of(0x1234), "unknown result code 0x001234");
  EXPECT_EQ(text_of(0x7FFFFFFF), "unknown result code 0x7fffffff");
}

TEST(StrError, LibraryCodesHaveTheirTexts) {
  struct Case {
    oruResult code;
    const char* text;
  };
  const Case cases[] = {
      {ORU_E_INVALID_STATE, "Operation not performed due to invalid state"},
      {ORU_E_NOT_SUPPORTED, "Operation not supported."},
      {ORU_E_READ_ONLY, "Read only attribute."},
      {ORU_E_NULL_POINTER, "Invalid NULL pointer."},
      {ORU_E_NOT_IMPLEMENTED, "Not implemented"},
      {ORU_E_NO_INTERFACE, "No such interface supported"},
      {ORU_E_POINTER, "Invalid pointer"},
      {ORU_E_ABORT, "Operation aborted"},
      {ORU_E_FAIL, "Unspecified error"},
      {ORU_E_BUSY, "Device or resource busy"},
      {ORU_E_NAME_TOO_LONG, "Filename too long"},
      {ORU_E_NOT_FOUND, "File or directory not found"},
      {ORU_E_PATH_NOT_FOUND, "Path not found"},
      {ORU_E_IS_DIRECTORY, "Is a directory"},
      {ORU_E_READ_ONLY_FS, "Read-only file system or media"},
      {ORU_E_NO_SUCH_PROCESS, "No such thread or process"},
      {ORU_E_AGAIN, "Resource temporarily unavailable"},
      {ORU_E_NO_SPACE, "No space left on device"},
      {ORU_E_QUOTA, "Disc quota exceeded"},
      {ORU_E_EXISTS, "File or directory exists"},
      {ORU_E_NAME_EXISTS, "Name exists"},
      {ORU_E_NAME_NOT_FOUND, "Name not found"},
      {ORU_E_CORRUPTED, "File corrupted"},
      {ORU_E_BUFFER_TOO_SMALL, "Buffer too small"},
      {ORU_E_NOT_EMPTY, "Not empty"},
      {ORU_E_UNKNOWN_USER, "Unknown user"},
      {ORU_E_HOSTNAME, "Can't get hostname"},
      {ORU_E_DOMAINNAME, "Can't get domainname"},
      {ORU_E_ARCHITECTURE, "Can't get architecture"},
      {ORU_E_SYSTEM_NAME, "Can't get operating system name"},
      {ORU_E_DSO_LOAD, "Can't load dynamic shared object"},
      {ORU_E_DSO_UNLOAD, "Can't unload dynamic shared object"},
      {ORU_E_SYMBOL, "Symbol lookup error"},
      {ORU_E_TOO_MANY_FILES, "Too many open files"},
      {ORU_E_EXEC_FORMAT, "Exec format error"},
      {ORU_E_CROSS_DEVICE, "Not the same device"},
      {ORU_E_BROKEN_PIPE, "Broken pipe"},
      {ORU_E_NO_CHILD, "No child processes"},
      {ORU_E_LOCK_FAILED, "Record lock failed"},
      {ORU_E_NO_LOCKS, "No record locks available"},
      {ORU_E_IO, "I/O error"},
      {ORU_E_NOT_READY, "Device not ready"},
      {ORU_E_DIR_NOT_EMPTY, "Directory not empty"},
      {ORU_E_BAD_ADDRESS, "Invalid memory address"},
      {ORU_E_TIMEDOUT, "Connection timed out"},
      {ORU_E_ILLEGAL_SEQUENCE, "Illegal byte sequence"},
      {ORU_E_NOT_REGULAR_FILE, "Not a regular file"},
      {ORU_E_RANGE, "Result out of range"},
      {ORU_E_NOT_DIRECTORY, "Is not a directory"},
      {ORU_E_ARG_OUT_OF_RANGE, "Argument out of range"},
  };
  for (const Case& c : cases) EXPECT_EQ(text_of(c.code), c.text) << std::hex << c.code;
}

TEST(StrError, UnlistedCodesAreFormatted) {
  EXPECT_EQ(text_of(ORU_E_NO_DEVICE), "error 0x9623001c");
  EXPECT_EQ(text_of(ORU_E_UNEXPECTED), "error 0x8000ffff");
  EXPECT_EQ(text_of(static_cast<oruResult>(0x9623002Au)), "error 0x9623002a");
  EXPECT_EQ(text_of(static_cast<oruResult>(0x80000000u)), "error 0x80000000");
  EXPECT_EQ(text_of(static_cast<oruResult>(0xFFFFFFFFu)), "error 0xffffffff");
  // Facility 4 is never looked up, even where the low bits match a code.
  EXPECT_EQ(text_of(static_cast<oruResult>(0x80040005u)), "error 0x80040005");
}

TEST(StrError, Win32CodesFallBackToTheNumberWithoutASystemText) {
  // This system has no message texts for Win32 numbers.
  EXPECT_EQ(text_of(ORU_E_INVALID_ARG), "error 0x80070057");
  EXPECT_EQ(text_of(static_cast<oruResult>(0x80070002u)), "error 0x80070002");
}

TEST(StrError, ErrnoCodesUseTheCLibraryText) {
  // strerror may reuse its buffer on the next call: compare copies.
  const std::string domain = std::strerror(EDOM);
  EXPECT_EQ(text_of(_oru_map_posix_error(EDOM)), domain);
  const std::string missing = std::strerror(ENOENT);
  EXPECT_EQ(text_of(static_cast<oruResult>(0x96220000u | ENOENT)), missing);
  const std::string unknown = std::strerror(0xFFFF);
  EXPECT_EQ(text_of(static_cast<oruResult>(0x9622FFFFu)), unknown);
}

TEST(StrError, FormattedTextsArePerThread) {
  const char* mine = oruStrError(0x1);
  ASSERT_NE(mine, nullptr);
  std::thread([] {
    for (int i = 0; i < 100; ++i) {
      EXPECT_STREQ(oruStrError(static_cast<oruResult>(0x80040000u + i)),
                   ("error 0x8004" + std::string(i < 16 ? "000" : "00") +
                    [i] {
                      char hex[8];
                      std::snprintf(hex, sizeof hex, "%x", i);
                      return std::string(hex);
                    }())
                       .c_str());
    }
  }).join();
  // Another thread's calls leave this thread's text alone.
  EXPECT_STREQ(mine, "unknown result code 0x000001");
  // Constant texts are not kept per thread either: they outlive any call.
  const char* constant = oruStrError(ORU_E_FAIL);
  oruStrError(0x2);
  EXPECT_STREQ(constant, "Unspecified error");
}

}  // namespace
