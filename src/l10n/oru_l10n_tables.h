// The compiled-in locale display names and ISO 3166 lists: record layouts
// and the generated tables (data/cldr/gen_l10n_tables.py writes them).
#ifndef ORU_SRC_L10N_ORU_L10N_TABLES_H
#define ORU_SRC_L10N_ORU_L10N_TABLES_H

#include <cstdint>

// Every display string and country or subdivision name, UTF-8 and
// NUL-terminated, addressed by its offset.
const char* oru_l10n_pool();
extern const uint32_t oru_l10n_pool_size;

// h = h * 31 + byte over a NUL-terminated key, 32-bit; the hash of every
// index below.
inline uint32_t oru_l10n_hash(const char* key) {
  uint32_t h = 0;
  for (; *key != '\0'; ++key) h = h * 31u + static_cast<unsigned char>(*key);
  return h;
}

// One slot of a chained hash index: the record or entry it holds (-1 when
// the slot is empty) and the next slot of its chain (-1 at the end).
struct oruL10nSlot {
  int32_t item;
  int32_t next;
};

// Display names: four kinds, each with its own entries and slots.
enum { ORU_CLDR_LANGUAGE, ORU_CLDR_TERRITORY, ORU_CLDR_CURRENCY, ORU_CLDR_SYMBOL };
inline constexpr int ORU_CLDR_KIND_COUNT = 4;
inline constexpr int ORU_CLDR_LOCALE_COUNT = 190;
inline constexpr uint32_t ORU_CLDR_LOCALE_HOME_SLOTS = 256;

struct oruCLDREntry {
  char key[4];    // the code, NUL-padded
  uint32_t name;  // offset in the pool
};

// A locale's part of one kind: its entries [first, end) and its home slots
// [home, home + slots); slots is 0 or a power of two.
struct oruCLDRKindRange {
  uint32_t first;
  uint32_t end;
  uint32_t home;
  uint32_t slots;
};

struct oruCLDRLocale {
  char name[8];  // "de_CH", NUL-padded; root's is empty
  oruCLDRKindRange kinds[ORU_CLDR_KIND_COUNT];
};

struct oruCLDRKindTable {
  const oruCLDREntry* entries;
  uint32_t entry_count;
  const oruL10nSlot* slots;
  uint32_t slot_count;
};

// Ascending by name, root first.
extern const oruCLDRLocale oru_cldr_locales[ORU_CLDR_LOCALE_COUNT];
extern const oruL10nSlot oru_cldr_locale_index[];  // 256 home slots, then overflow
extern const uint32_t oru_cldr_locale_index_size;
extern const oruCLDRKindTable oru_cldr_kinds[ORU_CLDR_KIND_COUNT];

// ISO 3166.
inline constexpr int ORU_ISO_COUNTRY_COUNT = 204;
inline constexpr uint32_t ORU_ISO_COUNTRY_HOME_SLOTS = 256;
inline constexpr uint32_t ORU_ISO_SUBDIVISION_HOME_SLOTS = 8192;

struct oruISOCountry {
  char code[4];  // alpha-2, NUL-padded
  uint32_t name;
  uint32_t first;  // first subdivision
  uint32_t count;  // number of subdivisions
};

struct oruISOSubdivision {
  char code[8];  // "DE-BY", NUL-padded
  uint32_t name;
};

// Countries sorted by code; subdivisions grouped by country in that order,
// sorted by code within a country.
extern const oruISOCountry oru_iso_countries[ORU_ISO_COUNTRY_COUNT];
extern const oruISOSubdivision oru_iso_subdivisions[];
extern const uint32_t oru_iso_subdivision_count;
extern const oruL10nSlot oru_iso_country_index[];  // 256 home slots, then overflow
extern const uint32_t oru_iso_country_index_size;
extern const oruL10nSlot oru_iso_subdivision_index[];  // 8192 home slots, then overflow
extern const uint32_t oru_iso_subdivision_index_size;

#endif  // ORU_SRC_L10N_ORU_L10N_TABLES_H
