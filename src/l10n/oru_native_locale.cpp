// Windows-style locale names (German_Germany.1252) to the standard form
// language_TERRITORY.charset (de_DE.windows-1252).

#include "core/oru_internal.h"
#include "l10n/oru_locale_tables.h"
#include "oru/l10n.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <string>

using namespace oru_l10n;

extern "C" {

ORU_API oruResult oruNativeToStdLocale(const char* native, char* out, size_t size) {
  if (native == nullptr || out == nullptr || size == 0) return ORU_E_INVALID_ARG;
  try {
    std::string name(native);
    std::string language, territory, codepage;
    size_t us = name.find('_');
    size_t dot = name.rfind('.');
    if (dot != std::string::npos && (us == std::string::npos || dot > us)) {
      codepage = name.substr(dot + 1, name.find('@', dot) - dot - 1);
    } else {
      dot = std::string::npos;
    }
    language = name.substr(0, us != std::string::npos ? us : dot);
    if (us != std::string::npos) {
      territory = name.substr(us + 1, dot != std::string::npos ? dot - us - 1 : std::string::npos);
    }
    const char* lang =
        oru_locale_lookup(oruLanguageNameTable, oruLanguageNameTableSize, language.c_str());
    if (lang == nullptr || std::strlen(lang) != 2) lang = "en";
    const char* terr =
        oru_locale_lookup(oruTerritoryNameTable, oruTerritoryNameTableSize, territory.c_str());
    if (terr == nullptr) return ORU_E_INVALID_ARG;
    const char* charset =
        oru_locale_lookup(oruCodePageTable, oruCodePageTableSize, codepage.c_str());
    if (charset == nullptr) return ORU_E_INVALID_ARG;
    if (size <= std::strlen(lang) + std::strlen(terr) + std::strlen(charset) + 2)
      return ORU_E_BUFFER_TOO_SMALL;
    std::snprintf(out, size, "%s_%s.%s", lang, terr, charset);
    return ORU_OK;
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // extern "C"
