// The user-default locale on Windows: items of GetUserDefaultLCID()'s locale
// read with GetLocaleInfoA.  The language and territory come from the
// abbreviated names (DEU, CHE) through the locale-name tables; the character
// sets are the locale's default ANSI and OEM code pages, which the caller
// turns into registered names.

#include "l10n/oru_locale_internal.h"
#include "l10n/oru_locale_tables.h"

#include <windows.h>

#include <clocale>
#include <cstring>

namespace oru_l10n {
namespace {

// One item of the user-default locale; false when the system has none.
bool user_item(LCTYPE item, std::string& out) {
  char buffer[16];  // abbreviations are three letters, code pages at most 6
  int n = GetLocaleInfoA(GetUserDefaultLCID(), item, buffer, static_cast<int>(sizeof buffer));
  if (n <= 1) return false;
  out.assign(buffer, static_cast<size_t>(n - 1));
  return true;
}

}  // namespace

const char* oru_platform_runtime_locale() { return std::setlocale(LC_CTYPE, nullptr); }

bool oru_platform_user_language(std::string& out) {
  std::string abbreviation;
  if (!user_item(LOCALE_SABBREVLANGNAME, abbreviation)) return false;
  const char* code =
      oru_locale_lookup(oruLanguageNameTable, oruLanguageNameTableSize, abbreviation.c_str());
  // A three-letter code (or none) is not a language parameter.
  out = code != nullptr && std::strlen(code) == 2 ? code : "en";
  return true;
}

bool oru_platform_user_territory(std::string& out) {
  std::string abbreviation;
  if (!user_item(LOCALE_SABBREVCTRYNAME, abbreviation)) return false;
  if (const char* code = oru_locale_lookup(oruTerritoryNameTable, oruTerritoryNameTableSize,
                                           abbreviation.c_str())) {
    out = code;
  } else {
    out = abbreviation.substr(0, 2);
  }
  return true;
}

bool oru_platform_user_charset(std::string& out) {
  return user_item(LOCALE_IDEFAULTANSICODEPAGE, out);
}

bool oru_platform_console_charset(std::string& out) {
  return user_item(LOCALE_IDEFAULTCODEPAGE, out);
}

}  // namespace oru_l10n
