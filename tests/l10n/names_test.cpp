// Locale display names: the documented examples, every code of every locale
// against CLDR's XML (resolved independently by cldr_oracle.py), malformed
// locales, and the layout rules of the generated tables.
#include "l10n/oru_l10n_tables.h"
#include "oru/l10n.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

const std::string kRoot = ORU_SOURCE_DIR;
const std::string kCldr = "/usr/share/unicode/cldr/common";
const std::string kIsoCodes = "/usr/share/iso-codes/json";

using Lookup = const char* (*)(const char*, const char*);
const Lookup kLookups[ORU_CLDR_KIND_COUNT] = {
    oruCLDRGetLanguageDisplayName, oruCLDRGetTerritoryDisplayName, oruCLDRGetCurrencyDisplayName,
    oruCLDRGetCurrencySymbol};
const char* const kKindNames[ORU_CLDR_KIND_COUNT] = {"language", "territory", "currency", "symbol"};

bool readable(const std::string& path) { return std::ifstream(path).good(); }

std::string slurp(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

std::string str(const char* s) { return s ? s : "(null)"; }

TEST(CldrNames, DocumentedExamples) {
  struct Case {
    Lookup fn;
    const char* code;
    const char* locale;
    const char* expected;
  } cases[] = {
      {oruCLDRGetLanguageDisplayName, "de", "fr", "allemand"},
      {oruCLDRGetLanguageDisplayName, "de", "de_CH", "Deutsch"},
      {oruCLDRGetCurrencySymbol, "EUR", "de", "\u20ac"},
      {oruCLDRGetCurrencySymbol, "CHF", "de_CH", "CHF"},
      {oruCLDRGetCurrencySymbol, "USD", "fr", "$US"},
      {oruCLDRGetCurrencySymbol, "USD", "en", "$"},
      {oruCLDRGetCurrencySymbol, "USD", "xx", "US$"},
      {oruCLDRGetCurrencySymbol, "USD", "xx_YY", "US$"},
      {oruCLDRGetCurrencyDisplayName, "USD", "zu", "i-US Dollar"},
      {oruCLDRGetTerritoryDisplayName, "CH", "de_CH", "Schweiz"},
      {oruCLDRGetTerritoryDisplayName, "CH", "de_XX", "Schweiz"},  // no record: its language
      {oruCLDRGetCurrencySymbol, "eur", "de", nullptr},
      {oruCLDRGetCurrencySymbol, "EURO", "de", nullptr},
      {oruCLDRGetCurrencySymbol, "EU", "de", nullptr},
      {oruCLDRGetCurrencySymbol, "", "de", nullptr},
      {oruCLDRGetLanguageDisplayName, "de", "xx", nullptr},  // root has symbols only
      {oruCLDRGetTerritoryDisplayName, "ch", "de", nullptr},
  };
  for (const Case& c : cases)
    EXPECT_EQ(str(c.fn(c.code, c.locale)), str(c.expected)) << c.code << " in " << c.locale;
}

TEST(CldrNames, MalformedLocalesAndNullArgumentsGiveNull) {
  const char* bad[] = {"",      "d",         "deu",    "de-CH",  "de_ch",  "DE",     "De",
                       "dE",    "de_C",      "de_CHE", "de_CH_", "de ",    " de",    "d1",
                       "de_1A", "\xc3\xa4n", "de\n",   "_CH",    "de__CH", "de_CHx", "de_C\xc3",
                       "root",  "de_Ch",     "de CH",  "e",      "{}",     "`a",     "a{"};
  for (const char* locale : bad)
    for (Lookup fn : kLookups) {
      EXPECT_EQ(fn("USD", locale), nullptr) << '"' << locale << '"';
      EXPECT_EQ(fn("DE", locale), nullptr) << '"' << locale << '"';
    }
  for (Lookup fn : kLookups) {
    EXPECT_EQ(fn(nullptr, "de"), nullptr);
    EXPECT_EQ(fn("USD", nullptr), nullptr);
    EXPECT_EQ(fn(nullptr, nullptr), nullptr);
  }
}

// Every locale against CLDR: each code the oracle resolves gives its value,
// and every other code the tables know of gives null.
TEST(CldrNames, EveryCodeOfEveryLocaleMatchesCldr) {
  if (!readable(kCldr + "/main/root.xml")) GTEST_SKIP() << "CLDR source " << kCldr << " is absent";
  if (std::system("python3 -c pass >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "python3 is not available to run the oracle";
  std::string command = "python3 " + kRoot + "/tests/l10n/cldr_oracle.py " + kCldr + " root";
  for (int i = 1; i < ORU_CLDR_LOCALE_COUNT; ++i)
    command += std::string(" ") + oru_cldr_locales[i].name;
  std::string out = ::testing::TempDir() + "/cldr_oracle.txt";
  ASSERT_EQ(std::system((command + " >" + out).c_str()), 0) << command;

  // expected[locale][kind][code]; root's answers are those of "xx".
  std::unordered_map<std::string, std::unordered_map<std::string, std::string>>
      expected[ORU_CLDR_KIND_COUNT];
  std::set<std::string> codes[ORU_CLDR_KIND_COUNT];
  std::istringstream lines(slurp(out));
  std::remove(out.c_str());
  std::string line;
  size_t rows = 0;
  while (std::getline(lines, line)) {
    std::vector<std::string> f;
    std::istringstream fields(line);
    for (std::string x; std::getline(fields, x, '\t');) f.push_back(x);
    ASSERT_EQ(f.size(), 4u) << line;
    int kind = 0;
    while (kind < ORU_CLDR_KIND_COUNT && f[1] != kKindNames[kind]) ++kind;
    ASSERT_LT(kind, ORU_CLDR_KIND_COUNT) << line;
    expected[kind][f[0] == "root" ? "xx" : f[0]][f[2]] = f[3];
    codes[kind].insert(f[2]);
    ++rows;
  }
  ASSERT_GT(rows, 10000u);
  for (int kind = 0; kind < ORU_CLDR_KIND_COUNT; ++kind) {
    const oruCLDRKindTable& t = oru_cldr_kinds[kind];
    for (uint32_t e = 0; e < t.entry_count; ++e) codes[kind].insert(t.entries[e].key);
  }

  size_t checked = 0, wrong = 0;
  for (int i = 0; i < ORU_CLDR_LOCALE_COUNT; ++i) {
    std::string locale = i == 0 ? "xx" : oru_cldr_locales[i].name;
    for (int kind = 0; kind < ORU_CLDR_KIND_COUNT; ++kind) {
      const auto& want = expected[kind][locale];
      for (const std::string& code : codes[kind]) {
        auto it = want.find(code);
        const char* expect = it == want.end() ? nullptr : it->second.c_str();
        const char* got = kLookups[kind](code.c_str(), locale.c_str());
        ++checked;
        bool same =
            got == nullptr ? expect == nullptr : expect != nullptr && !std::strcmp(got, expect);
        if (!same && ++wrong <= 20)
          ADD_FAILURE() << kKindNames[kind] << ' ' << code << " in " << locale << ": got "
                        << str(got) << ", CLDR gives " << str(expect);
      }
    }
  }
  EXPECT_EQ(wrong, 0u) << "of " << checked;
}

// A chain from `slot` through `slots` that reaches `item`; false when the
// chain ends first or runs longer than the table (a cycle).
bool chain_reaches(const oruL10nSlot* slots, uint32_t size, int32_t slot, int32_t item) {
  for (uint32_t steps = 0; slot >= 0 && steps <= size; ++steps) {
    if (static_cast<uint32_t>(slot) >= size) return false;
    if (slots[slot].item == item) return true;
    if (slots[slot].item < 0) return false;
    slot = slots[slot].next;
  }
  return false;
}

uint32_t home_slots_for(uint32_t entries) {
  if (entries == 0) return 0;
  uint32_t n = 4;
  while (n < entries) n *= 2;
  return n;
}

TEST(CldrTables, LayoutRules) {
  const oruCLDRLocale* L = oru_cldr_locales;
  EXPECT_STREQ(L[0].name, "");
  for (int k = 0; k < ORU_CLDR_KIND_COUNT - 1; ++k) EXPECT_EQ(L[0].kinds[k].slots, 0u);
  EXPECT_GT(L[0].kinds[ORU_CLDR_SYMBOL].slots, 0u);
  for (int i = 1; i < ORU_CLDR_LOCALE_COUNT; ++i) {
    EXPECT_LT(std::strcmp(L[i - 1].name, L[i].name), 0) << L[i].name;
    EXPECT_EQ(L[i].name[sizeof L[i].name - 1], '\0');
  }
  // The locale index reaches every record from its home slot.
  for (int i = 0; i < ORU_CLDR_LOCALE_COUNT; ++i)
    EXPECT_TRUE(chain_reaches(oru_cldr_locale_index, oru_cldr_locale_index_size,
                              oru_l10n_hash(L[i].name) & (ORU_CLDR_LOCALE_HOME_SLOTS - 1), i))
        << L[i].name;

  std::map<std::string, uint32_t> offset_of;  // each string once in the pool
  for (int kind = 0; kind < ORU_CLDR_KIND_COUNT; ++kind) {
    const oruCLDRKindTable& t = oru_cldr_kinds[kind];
    uint32_t next_entry = 0, next_slot = 0, used_slots = 0;
    for (int i = 0; i < ORU_CLDR_LOCALE_COUNT; ++i) {
      const oruCLDRKindRange& r = L[i].kinds[kind];
      SCOPED_TRACE(std::string(kKindNames[kind]) + " of '" + L[i].name + "'");
      // Runs are contiguous and cover the tables; slot counts follow the rule.
      ASSERT_EQ(r.first, next_entry);
      ASSERT_LE(r.first, r.end);
      next_entry = r.end;
      ASSERT_EQ(r.slots, home_slots_for(r.end - r.first));
      if (r.slots == 0) continue;
      ASSERT_EQ(r.home, next_slot);
      // Home run, then this locale's overflow, before the next locale's run.
      uint32_t stop = r.home + r.slots;
      while (stop < t.slot_count && t.slots[stop].item >= 0 &&
             t.slots[stop].item < static_cast<int32_t>(r.end) &&
             t.slots[stop].item >= static_cast<int32_t>(r.first))
        ++stop;
      next_slot = stop;
      for (uint32_t s = r.home; s < stop; ++s) {
        const oruL10nSlot& slot = t.slots[s];
        if (slot.item >= 0) ++used_slots;
        EXPECT_TRUE(slot.item == -1 || (slot.item >= static_cast<int32_t>(r.first) &&
                                        slot.item < static_cast<int32_t>(r.end)));
        EXPECT_TRUE(slot.next == -1 || (slot.next >= static_cast<int32_t>(r.home + r.slots) &&
                                        slot.next < static_cast<int32_t>(stop)));
      }
      for (uint32_t e = r.first; e < r.end; ++e) {
        const oruCLDREntry& entry = t.entries[e];
        ASSERT_NE(std::memchr(entry.key, '\0', sizeof entry.key), nullptr);
        EXPECT_GT(std::strlen(entry.key), 0u);
        if (e > r.first) {
          EXPECT_LT(std::strcmp(t.entries[e - 1].key, entry.key), 0);
        }
        EXPECT_TRUE(chain_reaches(t.slots, t.slot_count,
                                  r.home + (oru_l10n_hash(entry.key) & (r.slots - 1)),
                                  static_cast<int32_t>(e)))
            << entry.key;
        ASSERT_LT(entry.name, oru_l10n_pool_size);
        const char* text = oru_l10n_pool() + entry.name;
        ASSERT_NE(std::memchr(text, '\0', oru_l10n_pool_size - entry.name), nullptr);
        auto [it, fresh] = offset_of.emplace(text, entry.name);
        EXPECT_TRUE(fresh || it->second == entry.name) << "duplicated in the pool: " << text;
      }
    }
    EXPECT_EQ(next_entry, t.entry_count) << kKindNames[kind];
    EXPECT_EQ(next_slot, t.slot_count) << kKindNames[kind];
    EXPECT_EQ(used_slots, t.entry_count) << kKindNames[kind];
  }
  EXPECT_EQ(oru_l10n_pool()[oru_l10n_pool_size - 1], '\0');
}

// The committed tables are exactly what the generator makes of its sources.
TEST(CldrTables, GeneratedTablesAreCurrent) {
  if (!readable(kCldr + "/main/root.xml")) GTEST_SKIP() << "CLDR source " << kCldr << " is absent";
  if (!readable(kIsoCodes + "/iso_3166-2.json"))
    GTEST_SKIP() << "iso-codes source " << kIsoCodes << " is absent";
  if (std::system("python3 -c pass >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "python3 is not available to rerun the generator";
  std::string dir = ::testing::TempDir() + "/l10n_regenerated";
  std::string command = "mkdir -p " + dir + " && python3 " + kRoot +
                        "/data/cldr/gen_l10n_tables.py " + dir + " >/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
  for (const char* file : {"oru_l10n_pool.cpp", "oru_cldr_tables.cpp", "oru_iso3166_tables.cpp"}) {
    EXPECT_TRUE(slurp(dir + "/" + file) == slurp(kRoot + "/src/l10n/" + file))
        << file << " is stale: rerun data/cldr/gen_l10n_tables.py";
    std::remove((dir + "/" + file).c_str());
  }
}

}  // namespace
