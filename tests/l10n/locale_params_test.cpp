// Locale parameters: overrides and their validation, and the derivations
// from the environment, each run in a child process with its own LC_ALL,
// LC_CTYPE and LANG (and, where given, its own C library locale).

#include "oru/l10n.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <functional>
#include <string>

namespace {

std::string get(uint32_t id, uint32_t flags = 0) {
  char buf[64];
  oruResult r = oruGetLocaleParam(id, flags, buf, sizeof buf);
  return r == ORU_OK ? buf : "<error>";
}

// The seven parameters, then ids 0, 2, 4, 5, 6 with ORU_LP_FROM_SYSTEM,
// separated by "|".
std::string all_params() {
  std::string s;
  for (uint32_t id = 0; id < 7; ++id) s += get(id) + "|";
  for (uint32_t id : {0u, 2u, 4u, 5u, 6u}) s += get(id, ORU_LP_FROM_SYSTEM) + "|";
  return s;
}

// Runs body in a child with the given environment (nullptr unsets) and
// returns what it returned; overrides set in the child stay there.
std::string in_child(const char* lcAll, const char* lcCtype, const char* lang,
                     const char* runtimeLocale,
                     const std::function<std::string()>& body = all_params) {
  int fds[2];
  if (pipe(fds) != 0) return "<pipe>";
  pid_t pid = fork();
  if (pid == 0) {
    close(fds[0]);
    auto put = [](const char* var, const char* value) {
      if (value)
        setenv(var, value, 1);
      else
        unsetenv(var);
    };
    put("LC_ALL", lcAll);
    put("LC_CTYPE", lcCtype);
    put("LANG", lang);
    if (runtimeLocale && !std::setlocale(LC_ALL, runtimeLocale)) _exit(2);
    std::string s = body();
    ssize_t n = write(fds[1], s.data(), s.size());
    _exit(n == static_cast<ssize_t>(s.size()) ? 0 : 1);
  }
  close(fds[1]);
  std::string out;
  char buf[256];
  for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;) out.append(buf, static_cast<size_t>(n));
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return "<child failed>";
  return out;
}

TEST(LocaleParams, DerivedFromTheEnvironment) {
  const struct {
    const char *lcAll, *lcCtype, *lang, *runtime;
    const char* expect;  // 0..6, then FROM_SYSTEM 0, 2, 4, 5, 6
  } cases[] = {
      {nullptr, nullptr, nullptr, nullptr,
       "en||||US-ASCII|US-ASCII|US-ASCII|en||US-ASCII|US-ASCII|US-ASCII|"},
      {nullptr, nullptr, "C", nullptr,
       "en||||US-ASCII|US-ASCII|US-ASCII|en||US-ASCII|US-ASCII|US-ASCII|"},
      {nullptr, nullptr, "de_CH.UTF-8", nullptr,
       "de||CH||UTF-8|UTF-8|UTF-8|de|CH|UTF-8|UTF-8|UTF-8|"},
      {nullptr, nullptr, "de_DE.utf8", nullptr,
       "de||DE||UTF-8|UTF-8|UTF-8|de|DE|UTF-8|UTF-8|UTF-8|"},
      {"fr_FR.ISO-8859-1", "ja_JP.UTF-8", "de_DE.UTF-8", nullptr,
       "fr||FR||ISO-8859-1|ISO-8859-1|ISO-8859-1|fr|FR|ISO-8859-1|ISO-8859-1|ISO-8859-1|"},
      {"", "ja_JP.eucjp", "en_US.UTF-8", nullptr,
       "ja||JP||EUC-JP|EUC-JP|EUC-JP|ja|JP|EUC-JP|EUC-JP|EUC-JP|"},
      {nullptr, "", "pt_BR.iso88591", nullptr,
       "pt||BR||ISO-8859-1|ISO-8859-1|ISO-8859-1|pt|BR|ISO-8859-1|ISO-8859-1|ISO-8859-1|"},
      {nullptr, nullptr, "sr_RS.UTF-8@latin", nullptr,
       "sr||RS||UTF-8|UTF-8|UTF-8|sr|RS|UTF-8|UTF-8|UTF-8|"},
      {nullptr, nullptr, "ast_ES.UTF-8", nullptr,
       "en||ES||UTF-8|UTF-8|UTF-8|en|ES|UTF-8|UTF-8|UTF-8|"},
      {nullptr, nullptr, "ru_RU.koi8r", nullptr,
       "ru||RU||KOI8-R|KOI8-R|KOI8-R|ru|RU|KOI8-R|KOI8-R|KOI8-R|"},
      {nullptr, nullptr, "uk_UA.KOI8-U", nullptr,
       "uk||UA||KOI8-U|KOI8-U|KOI8-U|uk|UA|KOI8-U|KOI8-U|KOI8-U|"},
      {nullptr, nullptr, "en_US.CP1252", nullptr,
       "en||US||windows-1252|windows-1252|windows-1252|en|US|windows-1252|windows-1252|windows-"
       "1252|"},
      {nullptr, nullptr, "zh_TW.big5", nullptr, "zh||TW||Big5|Big5|Big5|zh|TW|Big5|Big5|Big5|"},
      {nullptr, nullptr, "xx_YY.bogus", nullptr,
       "xx||YY||US-ASCII|US-ASCII|US-ASCII|xx|YY|US-ASCII|US-ASCII|US-ASCII|"},
      {nullptr, nullptr, "C.UTF-8", nullptr, "en||||UTF-8|UTF-8|UTF-8|en||UTF-8|UTF-8|UTF-8|"},
      // The C library's own locale decides the system and application sets;
      // the console set and the FROM_SYSTEM readings follow the environment.
      {nullptr, "C.UTF-8", "de_CH.ISO-8859-1", "C.UTF-8",
       "en||||UTF-8|UTF-8|UTF-8|en||UTF-8|UTF-8|UTF-8|"},
      {nullptr, nullptr, "de_CH.ISO-8859-1", nullptr,
       "de||CH||ISO-8859-1|ISO-8859-1|ISO-8859-1|de|CH|ISO-8859-1|ISO-8859-1|ISO-8859-1|"},
      // Code page numbers, bare and after "cp"; codesets nothing resolves.
      {nullptr, nullptr, "xx_YY.1252", nullptr,
       "xx||YY||windows-1252|windows-1252|windows-1252|xx|YY|windows-1252|windows-1252|windows-"
       "1252|"},
      {nullptr, nullptr, "en_US.cp1251", nullptr,
       "en||US||windows-1251|windows-1251|windows-1251|en|US|windows-1251|windows-1251|windows-"
       "1251|"},
      {nullptr, nullptr, "en_US.CPxx", nullptr,
       "en||US||US-ASCII|US-ASCII|US-ASCII|en|US|US-ASCII|US-ASCII|US-ASCII|"},
      {nullptr, nullptr, "en_US.-", nullptr,
       "en||US||US-ASCII|US-ASCII|US-ASCII|en|US|US-ASCII|US-ASCII|US-ASCII|"},
      // Letters in either case; names that are not two letters.
      {nullptr, nullptr, "DE_ch.UTF-8", nullptr,
       "de||CH||UTF-8|UTF-8|UTF-8|de|CH|UTF-8|UTF-8|UTF-8|"},
      {nullptr, nullptr, "de_CHE.UTF-8", nullptr, "de||||UTF-8|UTF-8|UTF-8|de||UTF-8|UTF-8|UTF-8|"},
      {nullptr, nullptr, "d1_CH.UTF-8", nullptr,
       "en||CH||UTF-8|UTF-8|UTF-8|en|CH|UTF-8|UTF-8|UTF-8|"},
      {nullptr, nullptr, "de.UTF-8@x_CH", nullptr,
       "de||||UTF-8|UTF-8|UTF-8|de||UTF-8|UTF-8|UTF-8|"},
      // No codeset: the C library's for that locale, none for one it lacks.
      {nullptr, nullptr, "xx_YY", nullptr,
       "xx||YY||US-ASCII|US-ASCII|US-ASCII|xx|YY|US-ASCII|US-ASCII|US-ASCII|"},
      {nullptr, nullptr, "POSIX", nullptr,
       "en||||US-ASCII|US-ASCII|US-ASCII|en||US-ASCII|US-ASCII|US-ASCII|"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(in_child(c.lcAll, c.lcCtype, c.lang, c.runtime), c.expect)
        << (c.lcAll ? c.lcAll : "-") << " " << (c.lcCtype ? c.lcCtype : "-") << " "
        << (c.lang ? c.lang : "-");
  }
}

TEST(LocaleParams, RuntimeLocaleOverridesTheEnvironment) {
  // The C library's locale is C.UTF-8 while the environment says Swiss
  // German in Latin-1: ids 4 and 6 follow the C library, the language and
  // territory (absent from "C.UTF-8") and the console the environment.
  EXPECT_EQ(in_child(nullptr, nullptr, "de_CH.ISO-8859-1", "C.UTF-8"),
            "de||CH||UTF-8|ISO-8859-1|UTF-8|de|CH|ISO-8859-1|ISO-8859-1|ISO-8859-1|");
}

void overrides_and_validation() {
  const struct {
    uint32_t id;
    const char* value;
    oruResult code;
  } sets[] = {
      {0, "DE", ORU_E_INVALID_ARG},
      {0, "deu", ORU_E_INVALID_ARG},
      {0, "d", ORU_E_INVALID_ARG},
      {0, "", ORU_E_INVALID_ARG},
      {1, "d1", ORU_E_INVALID_ARG},
      {2, "de", ORU_E_INVALID_ARG},
      {2, "CHE", ORU_E_INVALID_ARG},
      {7, "x", ORU_E_INVALID_ARG},
      {0, nullptr, ORU_E_INVALID_ARG},
      {0, "fr", ORU_OK},
      {1, "it", ORU_OK},
      {2, "CH", ORU_OK},
      {3, "any string at all", ORU_OK},
      {4, "ISO-8859-15", ORU_OK},
      {5, "IBM850", ORU_OK},
      {6, "UTF-8", ORU_OK},
  };
  for (const auto& s : sets)
    EXPECT_EQ(oruSetLocaleParam(s.id, s.value), s.code) << s.id << " " << (s.value ? s.value : "");
  const char* expect[] = {"fr", "it", "CH", "any string at all", "ISO-8859-15", "IBM850", "UTF-8"};
  for (uint32_t id = 0; id < 7; ++id) EXPECT_EQ(get(id), expect[id]) << id;
  // The flag ignores the overrides of 0, 2, 4 and 5 but not 1, 3 and 6.
  EXPECT_EQ(get(1, ORU_LP_FROM_SYSTEM), "it");
  EXPECT_EQ(get(3, ORU_LP_FROM_SYSTEM), "any string at all");
  EXPECT_EQ(get(6, ORU_LP_FROM_SYSTEM), "UTF-8");
  EXPECT_NE(get(4, ORU_LP_FROM_SYSTEM), "ISO-8859-15");
  // Empty unsets ids 4 to 6; 3 keeps the empty string.
  for (uint32_t id : {3u, 4u, 5u, 6u}) EXPECT_EQ(oruSetLocaleParam(id, ""), ORU_OK);
  EXPECT_EQ(get(3), "");
  EXPECT_EQ(get(4), get(4, ORU_LP_FROM_SYSTEM));
  EXPECT_EQ(get(6), get(4));

  char buf[4];
  EXPECT_EQ(oruGetLocaleParam(0, 0, buf, 2), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetLocaleParam(0, 0, buf, 3), ORU_OK);
  EXPECT_EQ(oruGetLocaleParam(0, 0, nullptr, 3), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetLocaleParam(0, 0, buf, 0), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetLocaleParam(7, 0, buf, sizeof buf), ORU_E_INVALID_ARG);
}

// Overrides are process-wide and ids 0 to 2 cannot be unset, so each test
// sets them in a child of its own; the child reports its failures.
std::string checked(const std::function<void()>& body) {
  body();
  return ::testing::Test::HasFailure() ? "failed" : "ok";
}

TEST(LocaleParams, OverridesAndValidation) {
  EXPECT_EQ(in_child(nullptr, nullptr, "de_CH.UTF-8", nullptr,
                     [] { return checked(overrides_and_validation); }),
            "ok");
}

TEST(LocaleParams, OverrideWinsOverTheEnvironment) {
  // Territory CH set while the environment says Germany.
  EXPECT_EQ(in_child(nullptr, nullptr, "de_DE.UTF-8", nullptr,
                     [] {
                       oruSetLocaleParam(ORU_LP_TERRITORY, "CH");
                       return get(ORU_LP_TERRITORY) + get(ORU_LP_TERRITORY, ORU_LP_FROM_SYSTEM);
                     }),
            "CHDE");
}

TEST(LocaleParams, UnsetFallbackReadsEmpty) {
  EXPECT_EQ(in_child(nullptr, nullptr, nullptr, nullptr,
                     [] {
                       char buf[1] = {'x'};
                       oruResult r = oruGetLocaleParam(ORU_LP_FALLBACK_LANGUAGE, 0, buf, 1);
                       return std::to_string(r) + (buf[0] == '\0' ? "empty" : "not empty");
                     }),
            "0empty");
}

}  // namespace
