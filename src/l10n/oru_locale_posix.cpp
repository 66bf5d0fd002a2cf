// The user-default locale on POSIX systems: the name in LC_ALL, LC_CTYPE or
// LANG (the first that is set and not empty, as setlocale(LC_CTYPE, "")
// would choose), of the form language_TERRITORY.codeset@modifier.  A name
// without a codeset takes the one the C library gives the locale, when it
// knows the locale (the C locale's is ANSI_X3.4-1968).

#include "l10n/oru_locale_internal.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <cstring>

namespace oru_l10n {
namespace {

std::string user_default_name() {
  for (const char* var : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = std::getenv(var);
    if (value != nullptr && *value != '\0') return value;
  }
  return "C";
}

bool is_alpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

char fold(char c, bool upper) {
  if (upper && c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
  if (!upper && c >= 'A' && c <= 'Z') return static_cast<char>(c - 'A' + 'a');
  return c;
}

// Two letters ending at a separator in `seps` (or the end), case-folded.
bool two_letters(const std::string& s, size_t at, const char* seps, bool upper, std::string& out) {
  if (s.size() < at + 2 || !is_alpha(s[at]) || !is_alpha(s[at + 1])) return false;
  if (s.size() > at + 2 && std::strchr(seps, s[at + 2]) == nullptr) return false;
  out.assign({fold(s[at], upper), fold(s[at + 1], upper)});
  return true;
}

}  // namespace

const char* oru_platform_runtime_locale() { return setlocale(LC_CTYPE, nullptr); }

bool oru_platform_user_language(std::string& out) {
  return two_letters(user_default_name(), 0, "_.@", false, out);
}

bool oru_platform_user_territory(std::string& out) {
  std::string name = user_default_name();
  size_t us = name.find('_');
  size_t end = name.find_first_of(".@");
  if (us == std::string::npos || us > end) return false;
  return two_letters(name, us + 1, ".@", true, out);
}

bool oru_platform_user_charset(std::string& out) {
  std::string name = user_default_name();
  size_t dot = name.find('.');
  if (dot != std::string::npos) {
    out = name.substr(dot + 1, name.find('@', dot) - dot - 1);
    return !out.empty();
  }
  locale_t loc = newlocale(LC_CTYPE_MASK, name.c_str(), static_cast<locale_t>(nullptr));
  if (loc == static_cast<locale_t>(nullptr)) return false;
  const char* codeset = nl_langinfo_l(CODESET, loc);
  bool ok = codeset != nullptr && *codeset != '\0';
  if (ok) out = codeset;
  freelocale(loc);
  return ok;
}

// A POSIX console shows text in the user's locale.
bool oru_platform_console_charset(std::string& out) { return oru_platform_user_charset(out); }

}  // namespace oru_l10n
