#include "oru/core.h"

#include <gtest/gtest.h>

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
