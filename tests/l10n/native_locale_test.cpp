// Windows-style locale names to language_TERRITORY.charset.

#include "oru/l10n.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(NativeToStdLocale, Names) {
  const struct {
    const char* native;
    oruResult code;
    const char* expect;
  } cases[] = {
      {"German_Germany.1252", ORU_OK, "de_DE.windows-1252"},
      {"English_United States.1252", ORU_OK, "en_US.windows-1252"},
      {"Chinese (Simplified)_China.936", ORU_OK, "zh_CN.GBK"},
      {"Filipino_Philippines.1252", ORU_OK, "en_PH.windows-1252"},
      {"German_Germany.1252@euro", ORU_OK, "de_DE.windows-1252"},
      {"GERMAN_SWITZERLAND.850", ORU_OK, "de_CH.IBM850"},
      {"deu_che.65001", ORU_OK, "de_CH.UTF-8"},
      {"Japanese_Japan.50221", ORU_OK, "ja_JP.ISO-2022-JP"},
      {"Klingon_Germany.037", ORU_OK, "en_DE.IBM037"},
      {"Norwegian (Bokm\xC3\xA5l)_Norway.1252", ORU_OK, "nb_NO.windows-1252"},
      {"French_C\xC3\xB4te d\xC2\x92Ivoire.1252", ORU_OK, "fr_CI.windows-1252"},
      {"French_C\xC3\xB4te d'Ivoire.1252", ORU_E_INVALID_ARG, ""},
      {"German_Germany", ORU_E_INVALID_ARG, ""},
      {"German.1252", ORU_E_INVALID_ARG, ""},
      {"German_Germany.9999", ORU_E_INVALID_ARG, ""},
      {"German_Atlantis.1252", ORU_E_INVALID_ARG, ""},
      {"", ORU_E_INVALID_ARG, ""},
  };
  for (const auto& c : cases) {
    char out[64] = "untouched";
    EXPECT_EQ(oruNativeToStdLocale(c.native, out, sizeof out), c.code) << c.native;
    if (c.code == ORU_OK) {
      EXPECT_STREQ(out, c.expect) << c.native;
    }
  }
}

TEST(NativeToStdLocale, BufferAndArguments) {
  const char* expect = "de_DE.windows-1252";
  size_t len = std::strlen(expect);
  char out[64];
  EXPECT_EQ(oruNativeToStdLocale("German_Germany.1252", out, len), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruNativeToStdLocale("German_Germany.1252", out, len + 1), ORU_OK);
  EXPECT_STREQ(out, expect);
  EXPECT_EQ(oruNativeToStdLocale(nullptr, out, sizeof out), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruNativeToStdLocale("German_Germany.1252", nullptr, 8), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruNativeToStdLocale("German_Germany.1252", out, 0), ORU_E_INVALID_ARG);
}

}  // namespace
