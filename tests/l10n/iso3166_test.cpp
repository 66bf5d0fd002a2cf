// ISO 3166 lists: the documented examples, the lists and names against the
// iso-codes JSON files, and the layout rules of the generated tables.
#include "l10n/oru_l10n_tables.h"
#include "oru/l10n.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string kRoot = ORU_SOURCE_DIR;
const std::string kIsoCodes = "/usr/share/iso-codes/json";

// The countries the library lists, in order.
const char kCountries[] =
    "AD AE AF AG AL AM AO AR AT AU AZ BA BB BD BE BF BG BH BI BJ BM BN BO BQ BR BS BT BW BY BZ "
    "CA CD CF CG CH CI CL CM CN CO CR CU CV CY CZ DE DJ DK DM DO DZ EC EE EG EH ER ES ET FI FJ "
    "FM FR GA GB GD GE GH GL GM GN GQ GR GT GW GY HN HR HT HU ID IE IL IN IQ IR IS IT JM JO JP "
    "KE KG KH KI KM KN KP KR KW KY KZ LA LB LC LI LK LR LS LT LU LV LY MA MC MD ME MG MH MK ML "
    "MM MN MO MR MT MU MV MW MX MY MZ NA NE NG NI NL NO NP NR NZ OM PA PE PG PH PK PL PS PT PW "
    "PY QA RO RS RU RW SA SB SC SD SE SG SH SI SK SL SM SN SO SR SS ST SV SY SZ TD TF TG TH TJ "
    "TL TM TN TO TR TT TV TW TZ UA UG UM US UY UZ VC VE VN VU WS YE ZA ZM ZW";

std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> out;
  for (std::string w; in >> w;) out.push_back(w);
  return out;
}

// The codes of a null-terminated array, which is freed.
std::vector<std::string> take(const char** list) {
  std::vector<std::string> out;
  for (const char** p = list; *p != nullptr; ++p) out.push_back(*p);
  oruFree(list);
  return out;
}

std::string str(const char* s) { return s ? s : "(null)"; }

TEST(Iso3166, CountryList) {
  const char** list = oruGetISO3166Countries();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(take(list), words(kCountries));
}

TEST(Iso3166, DocumentedExamples) {
  const char** de = oruGetISO3166Subdivisions("DE");
  ASSERT_NE(de, nullptr);
  std::vector<std::string> codes = take(de);
  ASSERT_EQ(codes.size(), 16u);
  EXPECT_EQ(std::vector<std::string>(codes.begin(), codes.begin() + 4),
            (std::vector<std::string>{"DE-BB", "DE-BE", "DE-BW", "DE-BY"}));
  for (const char* empty : {"KY", "TF"}) {
    const char** list = oruGetISO3166Subdivisions(empty);
    ASSERT_NE(list, nullptr) << empty;
    EXPECT_EQ(list[0], nullptr) << empty;
    oruFree(list);
  }
  for (const char* unknown : {"HK", "de", "", "D", "DEU", "DE-BY", "XX"})
    EXPECT_EQ(oruGetISO3166Subdivisions(unknown), nullptr) << unknown;
  EXPECT_EQ(oruGetISO3166Subdivisions(nullptr), nullptr);

  struct Case {
    const char* (*fn)(const char*);
    const char* code;
    const char* expected;
  } cases[] = {
      {oruGetISO3166CountryName, "AD", "Andorra"},
      {oruGetISO3166CountryName, "US", "United States"},
      {oruGetISO3166CountryName, "TW", "Taiwan, Province Of China"},
      {oruGetISO3166CountryName, "KY", "Cayman Islands"},
      {oruGetISO3166CountryName, "", nullptr},
      {oruGetISO3166CountryName, "de", nullptr},
      {oruGetISO3166CountryName, "HK", nullptr},
      {oruGetISO3166CountryName, "DEU", nullptr},
      {oruGetISO3166CountryName, "DE-BY", nullptr},
      {oruGetISO3166CountryName, nullptr, nullptr},
      {oruGetISO3166SubdivisionName, "AD-02", "Canillo"},
      {oruGetISO3166SubdivisionName, "DE-BW", "Baden-W\u00fcrttemberg"},
      {oruGetISO3166SubdivisionName, "DE-BY", "Bayern"},
      {oruGetISO3166SubdivisionName, "DE-XX", nullptr},
      {oruGetISO3166SubdivisionName, "de-by", nullptr},
      {oruGetISO3166SubdivisionName, "DE-BYX", nullptr},
      {oruGetISO3166SubdivisionName, "DE-BY-01", nullptr},
      {oruGetISO3166SubdivisionName, "DE", nullptr},
      {oruGetISO3166SubdivisionName, "", nullptr},
      {oruGetISO3166SubdivisionName, nullptr, nullptr},
  };
  for (const Case& c : cases) EXPECT_EQ(str(c.fn(c.code)), str(c.expected)) << str(c.code);
}

// Against iso-codes: every listed country's name (TW keeps its fixed
// spelling) and its complete, sorted subdivision list with names; the
// subdivisions of unlisted countries are unknown.
TEST(Iso3166, ListsAndNamesMatchIsoCodes) {
  if (!std::ifstream(kIsoCodes + "/iso_3166-2.json").good())
    GTEST_SKIP() << "iso-codes source " << kIsoCodes << " is absent";
  if (std::system("python3 -c pass >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "python3 is not available to run the oracle";
  std::string out = ::testing::TempDir() + "/iso3166_oracle.txt";
  std::string command =
      "python3 " + kRoot + "/tests/l10n/iso3166_oracle.py " + kIsoCodes + " >" + out;
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
  std::map<std::string, std::string> country_names;
  std::map<std::string, std::map<std::string, std::string>> subdivisions;  // by country
  std::ifstream in(out);
  for (std::string line; std::getline(in, line);) {
    size_t a = line.find('\t'), b = line.find('\t', a + 1);
    ASSERT_NE(b, std::string::npos) << line;
    std::string code = line.substr(a + 1, b - a - 1), name = line.substr(b + 1);
    if (line[0] == 'C')
      country_names[code] = name;
    else
      subdivisions[code.substr(0, code.find('-'))][code] = name;
  }
  in.close();
  std::remove(out.c_str());
  ASSERT_GT(country_names.size(), 200u);

  size_t listed = 0;
  for (const std::string& country : words(kCountries)) {
    SCOPED_TRACE(country);
    std::string want = country == "TW" ? "Taiwan, Province Of China" : country_names[country];
    EXPECT_EQ(str(oruGetISO3166CountryName(country.c_str())), want);
    std::vector<std::string> expected;
    for (const auto& [code, name] : subdivisions[country]) {
      expected.push_back(code);
      EXPECT_EQ(str(oruGetISO3166SubdivisionName(code.c_str())), name) << code;
    }
    const char** list = oruGetISO3166Subdivisions(country.c_str());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(take(list), expected);
    listed += expected.size();
  }
  EXPECT_EQ(listed, oru_iso_subdivision_count);
  for (const auto& [country, subs] : subdivisions) {
    if (std::string(kCountries).find(country) != std::string::npos) continue;
    EXPECT_EQ(oruGetISO3166CountryName(country.c_str()), nullptr) << country;
    for (const auto& [code, name] : subs)
      EXPECT_EQ(oruGetISO3166SubdivisionName(code.c_str()), nullptr) << code;
  }
}

bool chain_reaches(const oruL10nSlot* slots, uint32_t size, int32_t slot, int32_t item) {
  for (uint32_t steps = 0; slot >= 0 && steps <= size; ++steps) {
    if (static_cast<uint32_t>(slot) >= size || slots[slot].item < 0) return false;
    if (slots[slot].item == item) return true;
    slot = slots[slot].next;
  }
  return false;
}

TEST(Iso3166Tables, LayoutRules) {
  uint32_t next = 0;
  for (int c = 0; c < ORU_ISO_COUNTRY_COUNT; ++c) {
    const oruISOCountry& rec = oru_iso_countries[c];
    SCOPED_TRACE(rec.code);
    if (c > 0) {
      EXPECT_LT(std::strcmp(oru_iso_countries[c - 1].code, rec.code), 0);
    }
    ASSERT_EQ(rec.first, next);  // runs contiguous, in country order
    next += rec.count;
    ASSERT_LE(next, oru_iso_subdivision_count);
    ASSERT_LT(rec.name, oru_l10n_pool_size);
    EXPECT_TRUE(chain_reaches(oru_iso_country_index, oru_iso_country_index_size,
                              oru_l10n_hash(rec.code) & (ORU_ISO_COUNTRY_HOME_SLOTS - 1), c));
    for (uint32_t s = rec.first; s < rec.first + rec.count; ++s) {
      const oruISOSubdivision& sub = oru_iso_subdivisions[s];
      ASSERT_NE(std::memchr(sub.code, '\0', sizeof sub.code), nullptr);
      EXPECT_EQ(std::strncmp(sub.code, rec.code, 2), 0) << sub.code;
      EXPECT_EQ(sub.code[2], '-') << sub.code;
      if (s > rec.first) {
        EXPECT_LT(std::strcmp(oru_iso_subdivisions[s - 1].code, sub.code), 0);
      }
      ASSERT_LT(sub.name, oru_l10n_pool_size);
      EXPECT_TRUE(chain_reaches(oru_iso_subdivision_index, oru_iso_subdivision_index_size,
                                oru_l10n_hash(sub.code) & (ORU_ISO_SUBDIVISION_HOME_SLOTS - 1),
                                static_cast<int32_t>(s)))
          << sub.code;
    }
  }
  EXPECT_EQ(next, oru_iso_subdivision_count);  // the runs cover the table
  // Every slot holds something or is an empty home slot; overflow follows.
  struct Index {
    const oruL10nSlot* slots;
    uint32_t size, home, items;
  } indexes[] = {
      {oru_iso_country_index, oru_iso_country_index_size, ORU_ISO_COUNTRY_HOME_SLOTS,
       ORU_ISO_COUNTRY_COUNT},
      {oru_iso_subdivision_index, oru_iso_subdivision_index_size, ORU_ISO_SUBDIVISION_HOME_SLOTS,
       oru_iso_subdivision_count},
  };
  for (const Index& ix : indexes) {
    uint32_t used = 0;
    for (uint32_t s = 0; s < ix.size; ++s) {
      if (s >= ix.home) {
        EXPECT_GE(ix.slots[s].item, 0) << s;
      }
      if (ix.slots[s].item >= 0) ++used;
      EXPECT_TRUE(ix.slots[s].next == -1 || (ix.slots[s].next >= static_cast<int32_t>(ix.home) &&
                                             ix.slots[s].next < static_cast<int32_t>(ix.size)));
    }
    EXPECT_EQ(used, ix.items);
  }
}

}  // namespace
