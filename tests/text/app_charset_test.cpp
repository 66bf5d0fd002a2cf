// Conversions between the application set, the system set and UTF-8, driven
// by the locale-parameter overrides.

#include "oru/l10n.h"
#include "oru/text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Fn = oruResult (*)(const void*, size_t, size_t*, size_t*, oruReallocFn, char**);

struct Overrides {
  Overrides(const char* system, const char* app) {
    EXPECT_EQ(oruSetLocaleParam(ORU_LP_SYSTEM_CHARSET, system), ORU_OK);
    EXPECT_EQ(oruSetLocaleParam(ORU_LP_APP_CHARSET, app), ORU_OK);
  }
  ~Overrides() {
    oruSetLocaleParam(ORU_LP_SYSTEM_CHARSET, "");
    oruSetLocaleParam(ORU_LP_APP_CHARSET, "");
  }
};

std::pair<oruResult, std::string> run(Fn fn, const std::string& in, size_t len = 0) {
  char* out = nullptr;
  size_t consumed = 0, outLen = 0;
  oruResult r = fn(in.data(), len ? len : in.size(), &consumed, &outLen, nullptr, &out);
  std::string text;
  if (r == ORU_OK) {
    text.assign(out, outLen);
    EXPECT_EQ(consumed, in.size());
    oruFree(out);
  } else {
    EXPECT_EQ(out, nullptr);
  }
  return {r, text};
}

TEST(AppCharset, NoOverridesCopies) {
  // Whatever the derived sets are, they are the same set: a plain copy, even
  // of bytes that are invalid in most sets.
  const std::string odd = "\xFF\xFE\x80 x";
  EXPECT_EQ(run(oruAppToSystemCS, odd), std::make_pair(ORU_OK, odd));
  EXPECT_EQ(run(oruSystemToAppCS, odd), std::make_pair(ORU_OK, odd));
  EXPECT_EQ(run(oruAppToSystemCS, "nul-terminated", SIZE_MAX),
            std::make_pair(ORU_OK, std::string("nul-terminated")));
}

TEST(AppCharset, ConvertsBetweenDifferentSets) {
  Overrides o("windows-1252", "UTF-8");
  EXPECT_EQ(run(oruAppToSystemCS, "\xC3\xA4"), std::make_pair(ORU_OK, std::string("\xE4")));
  EXPECT_EQ(run(oruSystemToAppCS, "\xE4"), std::make_pair(ORU_OK, std::string("\xC3\xA4")));
  EXPECT_EQ(run(oruAppToSystemCS, "\xC3\xA4!", SIZE_MAX),
            std::make_pair(ORU_OK, std::string("\xE4!")));
  // Malformed UTF-8 is repaired; invalid windows-1252 fails.
  EXPECT_EQ(run(oruAppToSystemCS, "a\xFF"), std::make_pair(ORU_OK, std::string("a?")));
  EXPECT_EQ(run(oruSystemToAppCS, "\x81").first, ORU_E_ILLEGAL_SEQUENCE);
}

TEST(AppCharset, SameSetUnderTwoNamesCopies) {
  {
    // Same set: no conversion, so an odd byte count passes unchanged.
    Overrides o("ISO-10646-UCS-2", "UCS-2");
    EXPECT_EQ(run(oruAppToSystemCS, "abc"), std::make_pair(ORU_OK, std::string("abc")));
  }
  {
    // Different sets: the same input is a truncated UCS-2 character.
    Overrides o("ISO-10646-UCS-2", "UTF-8");
    EXPECT_EQ(run(oruSystemToAppCS, "abc").first, ORU_E_ILLEGAL_SEQUENCE);
  }
  {
    Overrides o("ISO-8859-1", "latin1");
    EXPECT_EQ(run(oruAppToSystemCS, "\xE9"), std::make_pair(ORU_OK, std::string("\xE9")));
  }
}

TEST(AppCharset, ToAndFromUTF8) {
  Overrides o("ISO-8859-1", "windows-1252");
  for (Fn fn : {oruAppCSToUTF8, oruLocaleToUTF8})
    EXPECT_EQ(run(fn, "\x80\xE9"), std::make_pair(ORU_OK, std::string("\xE2\x82\xAC\xC3\xA9")));
  for (Fn fn : {oruUTF8ToAppCS, oruUTF8ToLocale}) {
    EXPECT_EQ(run(fn, "\xE2\x82\xAC"), std::make_pair(ORU_OK, std::string("\x80")));
    EXPECT_EQ(run(fn, "\xE2\x82"), std::make_pair(ORU_OK, std::string("?")));
    EXPECT_EQ(run(fn, "\xE2\x80\x80"), std::make_pair(ORU_OK, std::string("?")));  // no U+2000
  }
  EXPECT_EQ(run(oruAppCSToUTF8, "\x81").first, ORU_E_ILLEGAL_SEQUENCE);
  EXPECT_EQ(run(oruAppCSToUTF8, "x", SIZE_MAX), std::make_pair(ORU_OK, std::string("x")));
  // The application set's name must fit 40 characters.
  Overrides tooLong("ISO-8859-1", "a-name-of-exactly-forty-one-characters-xx");
  EXPECT_EQ(run(oruAppCSToUTF8, "x").first, ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(run(oruUTF8ToAppCS, "x").first, ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruAppCSToUTF8("x", 1, nullptr, nullptr, nullptr, nullptr), ORU_E_INVALID_ARG);
}

}  // namespace
