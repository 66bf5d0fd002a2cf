// The seven locale parameters: process-wide overrides, and the derivations
// from the C library's locale and the user-default locale when a parameter
// is not set.  The override slots are unguarded: they are meant to be set at
// start-up, before other threads read them.

#include "core/oru_internal.h"
#include "l10n/oru_locale_internal.h"
#include "l10n/oru_locale_tables.h"
#include "oru/l10n.h"
#include "oru/text.h"

#include <cstring>
#include <new>

namespace oru_l10n {

int8_t oruCSConversionNeeded = -1;

namespace {

constexpr uint32_t kParamCount = 7;
char* overrides[kParamCount] = {};

// Ids 0, 2, 4, 5 and 6 count an empty override as not set.
const char* effective_override(uint32_t id) {
  const char* v = overrides[id];
  return v != nullptr && *v != '\0' ? v : nullptr;
}

// The C library's locale name, unless it is absent or the plain C locale.
const char* runtime_name() {
  const char* name = oru_platform_runtime_locale();
  if (name == nullptr || std::strcmp(name, "C") == 0) return nullptr;
  return name;
}

bool is_two_letters(const std::string& s) {
  auto alpha = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  return s.size() == 2 && alpha(s[0]) && alpha(s[1]);
}

std::string fold_case(std::string s, bool upper) {
  for (char& c : s) {
    if (upper && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (!upper && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return s;
}

// Language-table lookup: two-letter codes are used, longer codes and misses
// give "en".
std::string language_from_table(const std::string& key) {
  const char* code = oru_locale_lookup(oruLanguageNameTable, oruLanguageNameTableSize, key.c_str());
  return code != nullptr && std::strlen(code) == 2 ? code : "en";
}

std::string derive_language(bool fromSystem) {
  if (!fromSystem) {
    if (const char* rt = runtime_name()) {
      const char* us = std::strchr(rt, '_');
      if (us != nullptr && us - rt < 32) {
        std::string part(rt, us);
        // POSIX names carry the code itself; Windows names an English name.
        if (is_two_letters(part)) return fold_case(part, false);
        return language_from_table(part);
      }
    }
  }
  std::string lang;
  if (oru_platform_user_language(lang)) return lang;
  return "en";
}

std::string derive_territory(bool fromSystem) {
  if (!fromSystem) {
    if (const char* rt = runtime_name()) {
      const char* us = std::strchr(rt, '_');
      if (us != nullptr) {
        const char* end = us + 1 + std::strcspn(us + 1, ".@");
        std::string part(us + 1, end);
        if (is_two_letters(part)) return fold_case(part, true);
        if (*end == '.' && end - us - 1 < 32) {
          if (const char* code =
                  oru_locale_lookup(oruTerritoryNameTable, oruTerritoryNameTableSize, part.c_str()))
            return code;
        }
      }
    }
  }
  std::string territory;
  if (oru_platform_user_territory(territory)) return territory;
  return "";
}

std::string charset_or_default(bool known, const std::string& codeset) {
  std::string name;
  if (known && oru_resolve_codeset(codeset, name)) return name;
  return "US-ASCII";
}

std::string derive_console_charset() {
  std::string codeset;
  bool known = oru_platform_console_charset(codeset);
  return charset_or_default(known, codeset);
}

oruResult copy_out(const std::string& value, char* buffer, size_t size) {
  if (size <= value.size()) return ORU_E_BUFFER_TOO_SMALL;
  std::memcpy(buffer, value.c_str(), value.size() + 1);
  return ORU_OK;
}

bool valid_code(const char* v, char first, char last) {
  return v[0] >= first && v[0] <= last && v[1] >= first && v[1] <= last && v[2] == '\0';
}

void update_conversion_flag() {
  const char* sys = effective_override(ORU_LP_SYSTEM_CHARSET);
  const char* app = effective_override(ORU_LP_APP_CHARSET);
  int32_t sysMib = sys != nullptr ? oruCSNameToMIBenum(sys) : -1;
  int32_t appMib = app != nullptr ? oruCSNameToMIBenum(app) : -1;
  if (sysMib < 0 || appMib < 0) {
    oruCSConversionNeeded = -1;
  } else {
    oruCSConversionNeeded = sysMib != appMib ? 1 : 0;
  }
}

}  // namespace

const char* oru_locale_override(uint32_t id) {
  return id < kParamCount ? effective_override(id) : nullptr;
}

std::string oru_derive_system_charset(bool fromSystem) {
  if (!fromSystem) {
    if (const char* rt = runtime_name()) {
      if (const char* dot = std::strchr(rt, '.')) {
        std::string codeset(dot + 1, dot + 1 + std::strcspn(dot + 1, "@"));
        return charset_or_default(true, codeset);
      }
    }
  }
  std::string codeset;
  bool known = oru_platform_user_charset(codeset);
  return charset_or_default(known, codeset);
}

}  // namespace oru_l10n

using namespace oru_l10n;

extern "C" {

ORU_API oruResult oruGetLocaleParam(uint32_t id, uint32_t flags, char* buffer, size_t size) {
  if (buffer == nullptr || size == 0 || id >= kParamCount) return ORU_E_INVALID_ARG;
  bool fromSystem = (flags & ORU_LP_FROM_SYSTEM) != 0;
  try {
    switch (id) {
      case ORU_LP_FALLBACK_LANGUAGE:
      case ORU_LP_APP_STRING:
        return copy_out(overrides[id] != nullptr ? overrides[id] : "", buffer, size);
      case ORU_LP_APP_CHARSET:
        if (const char* v = effective_override(id)) return copy_out(v, buffer, size);
        return copy_out(oru_derive_system_charset(fromSystem), buffer, size);
      default:
        break;
    }
    if (!fromSystem) {
      if (const char* v = effective_override(id)) return copy_out(v, buffer, size);
    }
    switch (id) {
      case ORU_LP_LANGUAGE:
        return copy_out(derive_language(fromSystem), buffer, size);
      case ORU_LP_TERRITORY:
        return copy_out(derive_territory(fromSystem), buffer, size);
      case ORU_LP_SYSTEM_CHARSET:
        return copy_out(oru_derive_system_charset(fromSystem), buffer, size);
      default:
        return copy_out(derive_console_charset(), buffer, size);
    }
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

ORU_API oruResult oruSetLocaleParam(uint32_t id, const char* value) {
  if (value == nullptr || id >= kParamCount) return ORU_E_INVALID_ARG;
  if ((id == ORU_LP_LANGUAGE || id == ORU_LP_FALLBACK_LANGUAGE) && !valid_code(value, 'a', 'z'))
    return ORU_E_INVALID_ARG;
  if (id == ORU_LP_TERRITORY && !valid_code(value, 'A', 'Z')) return ORU_E_INVALID_ARG;
  oruFree(overrides[id]);
  overrides[id] = oruStrDup(value);  // a failed copy leaves the slot unset
  update_conversion_flag();
  return ORU_OK;
}

}  // extern "C"
