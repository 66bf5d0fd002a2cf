// Locale display names: a hash lookup in the locale, then in its language,
// then in root.  Constant data only, so no allocation and no locking.

#include "l10n/oru_l10n_tables.h"
#include "oru/l10n.h"

#include <cstring>

namespace {

bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
bool is_upper(char c) { return c >= 'A' && c <= 'Z'; }

// "ll" or "ll_TT"; reads no byte past the terminating NUL.
bool valid_locale(const char* locale) {
  if (!is_lower(locale[0]) || !is_lower(locale[1])) return false;
  if (locale[2] == '\0') return true;
  return locale[2] == '_' && is_upper(locale[3]) && is_upper(locale[4]) && locale[5] == '\0';
}

// The record of a locale name, or null when the library has none.
const oruCLDRLocale* find_locale(const char* name) {
  int32_t slot = static_cast<int32_t>(oru_l10n_hash(name) & (ORU_CLDR_LOCALE_HOME_SLOTS - 1));
  do {
    int32_t item = oru_cldr_locale_index[slot].item;
    if (item < 0) return nullptr;
    const oruCLDRLocale& rec = oru_cldr_locales[item];
    if (std::strncmp(rec.name, name, sizeof rec.name) == 0) return &rec;
    slot = oru_cldr_locale_index[slot].next;
  } while (slot >= 0);
  return nullptr;
}

// The code's string in one locale, or null.
const char* find_in(const oruCLDRLocale& rec, int kind, const char* code, uint32_t h) {
  const oruCLDRKindRange& range = rec.kinds[kind];
  if (range.slots == 0) return nullptr;
  const oruCLDRKindTable& table = oru_cldr_kinds[kind];
  int32_t slot = static_cast<int32_t>(range.home + (h & (range.slots - 1)));
  do {
    int32_t item = table.slots[slot].item;
    if (item < 0) return nullptr;
    const oruCLDREntry& entry = table.entries[item];
    // Keys are at most three bytes and NUL-terminated, so a longer code
    // differs at the key's NUL.
    if (std::strncmp(entry.key, code, sizeof entry.key) == 0) return oru_l10n_pool() + entry.name;
    slot = table.slots[slot].next;
  } while (slot >= 0);
  return nullptr;
}

const char* lookup(int kind, const char* code, const char* locale) {
  if (code == nullptr || locale == nullptr || !valid_locale(locale)) return nullptr;
  uint32_t h = oru_l10n_hash(code);
  const char* found = nullptr;
  if (const oruCLDRLocale* rec = find_locale(locale)) found = find_in(*rec, kind, code, h);
  if (found == nullptr && locale[2] == '_') {
    const char language[3] = {locale[0], locale[1], '\0'};
    if (const oruCLDRLocale* rec = find_locale(language)) found = find_in(*rec, kind, code, h);
  }
  if (found == nullptr) found = find_in(oru_cldr_locales[0], kind, code, h);
  return found;
}

}  // namespace

extern "C" {

ORU_API const char* oruCLDRGetLanguageDisplayName(const char* code, const char* locale) {
  return lookup(ORU_CLDR_LANGUAGE, code, locale);
}

ORU_API const char* oruCLDRGetTerritoryDisplayName(const char* code, const char* locale) {
  return lookup(ORU_CLDR_TERRITORY, code, locale);
}

ORU_API const char* oruCLDRGetCurrencyDisplayName(const char* code, const char* locale) {
  return lookup(ORU_CLDR_CURRENCY, code, locale);
}

ORU_API const char* oruCLDRGetCurrencySymbol(const char* code, const char* locale) {
  return lookup(ORU_CLDR_SYMBOL, code, locale);
}

}  // extern "C"
