#include "oru/core.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#endif

#include <cerrno>
#include <cstdint>
#include <cstdio>
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
  // Samples across the generic, Win32-style and own facilities; only the
  // first four texts end in a full stop.
  EXPECT_EQ(text_of(ORU_E_INVALID_STATE), "Operation not performed due to invalid state");
  EXPECT_EQ(text_of(ORU_E_NULL_POINTER), "Invalid NULL pointer.");
  EXPECT_EQ(text_of(ORU_E_FAIL), "Unspecified error");
  EXPECT_EQ(text_of(ORU_E_BUSY), "Device or resource busy");
  EXPECT_EQ(text_of(ORU_E_NO_SUCH_PROCESS), "No such thread or process");
  EXPECT_EQ(text_of(ORU_E_BROKEN_PIPE), "Broken pipe");  // just past the hole
  EXPECT_EQ(text_of(ORU_E_TIMEDOUT), "Connection timed out");
  EXPECT_EQ(text_of(ORU_E_ARG_OUT_OF_RANGE), "Argument out of range");
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

#if defined(_WIN32)

// The system's own text for a Win32 error number: the oracle on Windows,
// where the texts come from FormatMessageA (and Wine words some of them
// differently from Windows).
std::string system_text(uint32_t number) {
  char buffer[1024];
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                number, 0, buffer, sizeof buffer, nullptr);
  if (length == 0) {
    char formatted[32];
    std::snprintf(formatted, sizeof formatted, "error %#08x", 0x80070000u | number);
    return formatted;
  }
  return std::string(buffer, length);
}

TEST(StrError, Win32CodesGiveTheSystemMessage) {
  EXPECT_EQ(text_of(ORU_E_INVALID_ARG), system_text(87));
  EXPECT_EQ(text_of(_oru_map_posix_error(EACCES)), system_text(5));
  EXPECT_EQ(text_of(_oru_map_posix_error(ENOMEM)), system_text(14));
  EXPECT_EQ(text_of(_oru_map_posix_error(EBADF)), system_text(6));
  for (uint32_t number : {1u, 2u, 193u, 998u, 2403u, 0xFFFFu}) {
    EXPECT_EQ(text_of(static_cast<oruResult>(0x80070000u | number)), system_text(number)) << number;
  }
  EXPECT_NE(text_of(ORU_E_INVALID_ARG).find("\r\n"), std::string::npos);
}

#else

TEST(StrError, Win32CodesGiveTheEnglishSystemMessage) {
  // The library's own Win32-facility codes, and what errno values map to.
  EXPECT_EQ(text_of(ORU_E_INVALID_ARG), "The parameter is incorrect.\r\n");
  EXPECT_EQ(text_of(_oru_map_posix_error(EINVAL)), "The parameter is incorrect.\r\n");
  EXPECT_EQ(text_of(_oru_map_posix_error(EACCES)), "Access is denied.\r\n");
  EXPECT_EQ(text_of(_oru_map_posix_error(ENOMEM)),
            "Not enough memory resources are available to complete this operation.\r\n");
  EXPECT_EQ(text_of(_oru_map_posix_error(EBADF)), "The handle is invalid.\r\n");
  // Numbers through the Win32 translator and as raw codes.
  EXPECT_EQ(text_of(static_cast<oruResult>(0x80070002u)),
            "The system cannot find the file specified.\r\n");
  EXPECT_EQ(text_of(static_cast<oruResult>(0x800700C1u)),
            "%1 is not a valid Win32 application.\r\n");
  EXPECT_EQ(text_of(static_cast<oruResult>(0x800703E6u)), "Invalid access to memory location.\r\n");
  // Numbers without a text keep the formatted form.
  EXPECT_EQ(text_of(static_cast<oruResult>(0x80070001u)), "error 0x80070001");
  EXPECT_EQ(text_of(static_cast<oruResult>(0x80070963u)), "error 0x80070963");  // 2403
}

TEST(StrError, EveryWin32NumberTheTranslatorNamesHasAText) {
  // The translator names a number when it gives anything but the generic
  // form, or when the generic form is one of the library's own codes;
  // exactly those numbers have a system text, one line ending in "\r\n".
  for (uint32_t number = 1; number <= 0xFFFF; ++number) {
    const auto code = static_cast<oruResult>(0x80070000u | number);
    const bool named = _oru_map_win32_error(number) != code || code == ORU_E_ACCESS_DENIED ||
                       code == ORU_E_HANDLE || code == ORU_E_OUT_OF_MEMORY ||
                       code == ORU_E_INVALID_ARG;
    const std::string text = text_of(code);
    if (named) {
      ASSERT_GE(text.size(), 3u) << number;
      EXPECT_EQ(text.substr(text.size() - 2), "\r\n") << number;
      EXPECT_EQ(text.find('\n'), text.size() - 1) << number;
    } else {
      char expected[32];
      std::snprintf(expected, sizeof expected, "error %#08x", static_cast<unsigned>(code));
      ASSERT_EQ(text, expected) << number;
    }
  }
}

#endif  // _WIN32

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
    for (uint32_t i = 0; i < 100; ++i) {
      char expected[32];
      std::snprintf(expected, sizeof expected, "error %#08x", 0x80040000u + i);
      EXPECT_STREQ(oruStrError(static_cast<oruResult>(0x80040000u + i)), expected);
    }
  }).join();
  // Another thread's calls leave this thread's text alone.
  EXPECT_STREQ(mine, "unknown result code 0x000001");
  // Constant texts outlive later calls.
  const char* constant = oruStrError(ORU_E_FAIL);
  oruStrError(0x2);
  EXPECT_STREQ(constant, "Unspecified error");
}

}  // namespace
