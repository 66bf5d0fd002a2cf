// ISO 3166 countries and subdivisions: chained hash lookups over constant
// tables; the two listings hand out arrays from oruMalloc.

#include "l10n/oru_l10n_tables.h"
#include "oru/l10n.h"

#include <cstring>

namespace {

// The record a code names in a chained index, or -1.  Records are compared
// by their NUL-padded code field.
template <typename Record>
int32_t find(const oruL10nSlot* index, uint32_t home_slots, const Record* records,
             const char* code) {
  int32_t slot = static_cast<int32_t>(oru_l10n_hash(code) & (home_slots - 1));
  do {
    int32_t item = index[slot].item;
    if (item < 0) return -1;
    // Stored codes end within their field, so a longer code differs there.
    if (std::strncmp(records[item].code, code, sizeof records[item].code) == 0) return item;
    slot = index[slot].next;
  } while (slot >= 0);
  return -1;
}

int32_t find_country(const char* country) {
  if (country == nullptr) return -1;
  return find(oru_iso_country_index, ORU_ISO_COUNTRY_HOME_SLOTS, oru_iso_countries, country);
}

// A null-terminated array of `count` codes taken from consecutive records.
template <typename Record>
const char** list_codes(const Record* records, uint32_t count) {
  auto** list = static_cast<const char**>(oruMalloc((count + 1) * sizeof(const char*)));
  if (list == nullptr) return nullptr;
  for (uint32_t i = 0; i < count; ++i) list[i] = records[i].code;
  list[count] = nullptr;
  return list;
}

}  // namespace

extern "C" {

ORU_API const char** oruGetISO3166Countries(void) {
  return list_codes(oru_iso_countries, ORU_ISO_COUNTRY_COUNT);
}

ORU_API const char** oruGetISO3166Subdivisions(const char* country) {
  int32_t c = find_country(country);
  if (c < 0) return nullptr;
  const oruISOCountry& rec = oru_iso_countries[c];
  return list_codes(oru_iso_subdivisions + rec.first, rec.count);
}

ORU_API const char* oruGetISO3166CountryName(const char* country) {
  int32_t c = find_country(country);
  return c < 0 ? nullptr : oru_l10n_pool() + oru_iso_countries[c].name;
}

ORU_API const char* oruGetISO3166SubdivisionName(const char* code) {
  if (code == nullptr) return nullptr;
  int32_t s =
      find(oru_iso_subdivision_index, ORU_ISO_SUBDIVISION_HOME_SLOTS, oru_iso_subdivisions, code);
  return s < 0 ? nullptr : oru_l10n_pool() + oru_iso_subdivisions[s].name;
}

}  // extern "C"
