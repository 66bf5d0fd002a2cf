// Locale parameters on Windows: the derivations from the user-default
// locale (GetLocaleInfoA on GetUserDefaultLCID) and from the C runtime's
// locale name, and the overrides.  The user-default locale is whatever the
// system has, so its test runs only where the build names the expected
// answers (under Wine, which takes the locale from LC_ALL: see
// CMakeLists.txt); each test case runs in a process of its own under CTest.

#include "oru/l10n.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace {

std::string get(uint32_t id, uint32_t flags = 0) {
  char buf[64];
  oruResult r = oruGetLocaleParam(id, flags, buf, sizeof buf);
  return r == ORU_OK ? buf : "<error>";
}

// Language, territory, system, console and application character sets,
// separated by "|".
std::string derived(uint32_t flags) {
  return get(ORU_LP_LANGUAGE, flags) + "|" + get(ORU_LP_TERRITORY, flags) + "|" +
         get(ORU_LP_SYSTEM_CHARSET, flags) + "|" + get(ORU_LP_CONSOLE_CHARSET, flags) + "|" +
         get(ORU_LP_APP_CHARSET, flags);
}

TEST(LocaleParamsWin32, UserDefaultLocale) {
  const char* expect = std::getenv("ORU_TEST_USER_LOCALE");
  if (expect == nullptr) GTEST_SKIP() << "ORU_TEST_USER_LOCALE names no expected user locale";
  // The C runtime starts in the "C" locale, which the derivations skip.
  EXPECT_EQ(derived(0), expect);
  EXPECT_EQ(derived(ORU_LP_FROM_SYSTEM), expect);
}

TEST(LocaleParamsWin32, RuntimeLocaleComesFirst) {
  const std::string system = derived(ORU_LP_FROM_SYSTEM);
  const struct {
    const char* name;
    const char* expect;  // language, territory, system set
  } cases[] = {
      {"German_Switzerland.1252", "de|CH|windows-1252"},
      {"Russian_Russia.1251", "ru|RU|windows-1251"},
      {"Japanese_Japan.932", "ja|JP|Windows-31J"},
  };
  int tried = 0;
  for (const auto& c : cases) {
    const char* name = std::setlocale(LC_ALL, c.name);
    if (name == nullptr) continue;
    ++tried;
    EXPECT_EQ(get(ORU_LP_LANGUAGE) + "|" + get(ORU_LP_TERRITORY) + "|" + get(ORU_LP_SYSTEM_CHARSET),
              c.expect)
        << name;
    // The application set follows the runtime; the console never does.
    EXPECT_EQ(get(ORU_LP_APP_CHARSET), get(ORU_LP_SYSTEM_CHARSET)) << name;
    EXPECT_EQ(get(ORU_LP_CONSOLE_CHARSET), get(ORU_LP_CONSOLE_CHARSET, ORU_LP_FROM_SYSTEM));
    EXPECT_EQ(derived(ORU_LP_FROM_SYSTEM), system) << name;
  }
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(derived(0), system);
  if (tried == 0) GTEST_SKIP() << "the C runtime knows none of the locale names";
}

TEST(LocaleParamsWin32, OverridesAndValidation) {
  EXPECT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, "DE"), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, "deu"), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruSetLocaleParam(ORU_LP_TERRITORY, "de"), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruSetLocaleParam(7, "x"), ORU_E_INVALID_ARG);
  const std::string system = derived(ORU_LP_FROM_SYSTEM);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, "fr"), ORU_OK);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_TERRITORY, "CH"), ORU_OK);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_SYSTEM_CHARSET, "ISO-8859-15"), ORU_OK);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_CONSOLE_CHARSET, "IBM850"), ORU_OK);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_APP_CHARSET, "UTF-8"), ORU_OK);
  EXPECT_EQ(derived(0), "fr|CH|ISO-8859-15|IBM850|UTF-8");
  // The flag passes over the overrides, except the application set's.
  std::string fromSystem = derived(ORU_LP_FROM_SYSTEM);
  EXPECT_EQ(fromSystem.substr(0, fromSystem.rfind('|')), system.substr(0, system.rfind('|')));
  EXPECT_EQ(get(ORU_LP_APP_CHARSET, ORU_LP_FROM_SYSTEM), "UTF-8");
  // Setting the character sets to the empty string unsets them.
  for (uint32_t id : {4u, 5u, 6u}) EXPECT_EQ(oruSetLocaleParam(id, ""), ORU_OK);
  EXPECT_EQ(get(ORU_LP_SYSTEM_CHARSET), get(ORU_LP_SYSTEM_CHARSET, ORU_LP_FROM_SYSTEM));
  EXPECT_EQ(get(ORU_LP_APP_CHARSET), get(ORU_LP_SYSTEM_CHARSET));
}

}  // namespace
