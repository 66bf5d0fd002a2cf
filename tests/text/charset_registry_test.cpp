// The character-set registry against its source: the IANA CSV (when the
// shared data is present) and the generator's committed output.

#include "oru/text.h"
#include "text/oru_charset_tables.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string kRoot = ORU_SOURCE_DIR;
const std::string kCsv = kRoot + "/../shared/data/iana/character-sets.csv";

bool readable(const std::string& path) { return std::ifstream(path).good(); }

std::string slurp(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

// RFC 4180 records: quoted fields may hold commas, quotes and newlines.
std::vector<std::vector<std::string>> parse_csv(const std::string& text) {
  std::vector<std::vector<std::string>> rows(1, std::vector<std::string>(1));
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (quoted) {
      if (c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
        rows.back().back() += '"';
        ++i;
      } else if (c == '"') {
        quoted = false;
      } else {
        rows.back().back() += c;
      }
    } else if (c == '"') {
      quoted = true;
    } else if (c == ',') {
      rows.back().emplace_back();
    } else if (c == '\n') {
      rows.emplace_back(1);
    } else if (c != '\r') {
      rows.back().back() += c;
    }
  }
  if (rows.back().size() == 1 && rows.back()[0].empty()) rows.pop_back();
  return rows;
}

std::string trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t"), e = s.find_last_not_of(" \t");
  return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

TEST(CharsetRegistry, EveryNameOfTheSourceFindsItsSet) {
  if (!readable(kCsv)) GTEST_SKIP() << "registry source " << kCsv << " is absent";
  auto rows = parse_csv(slurp(kCsv));
  ASSERT_GT(rows.size(), 200u);
  const auto& head = rows[0];
  auto col = [&](const char* name) {
    for (size_t i = 0; i < head.size(); ++i)
      if (head[i] == name) return i;
    ADD_FAILURE() << "no column " << name;
    return size_t{0};
  };
  size_t cName = col("Name"), cMib = col("MIBenum"), cAliases = col("Aliases");
  std::set<uint32_t> mibs;
  for (size_t r = 1; r < rows.size(); ++r) {
    uint32_t mib = static_cast<uint32_t>(std::stoul(rows[r][cMib]));
    std::vector<std::string> names{trim(rows[r][cName])};
    std::stringstream aliases(rows[r][cAliases]);
    for (std::string a; std::getline(aliases, a);) names.push_back(trim(a));
    bool later = mib == 2108 || mib == 2109 || mib == 2260;
    if (!later) mibs.insert(mib);
    for (const auto& n : names) {
      if (n.empty() || n.find(' ') != std::string::npos) continue;  // remarks, not names
      int32_t expect = later || (mib == 106 && n != "UTF-8") ? -1 : static_cast<int32_t>(mib);
      EXPECT_EQ(oruCSNameToMIBenum(n.c_str()), expect) << n;
    }
    EXPECT_EQ(oruMIBenumToCSName(mib) != nullptr, !later) << mib;
  }
  // Every number of the source, and the library's own four, and no other.
  for (uint32_t own : {9001u, 9002u, 9003u, 9004u}) mibs.insert(own);
  EXPECT_EQ(mibs.size(), oru_charset::oruCSMIBTableSize);
  for (size_t i = 0; i < oru_charset::oruCSMIBTableSize; ++i)
    EXPECT_TRUE(mibs.count(oru_charset::oruCSMIBTable[i].mib)) << oru_charset::oruCSMIBTable[i].mib;
}

TEST(CharsetRegistry, TablesAreConsistentAndSearchable) {
  std::map<uint32_t, int> namesPerMib;
  for (size_t i = 0; i < oru_charset::oruCSNameTableSize; ++i) {
    uint32_t mib = 0;
    const char* name = _oruCSNameAt(i, &mib);
    ASSERT_NE(name, nullptr);
    ++namesPerMib[mib];
    EXPECT_EQ(oruCSNameToMIBenum(name), static_cast<int32_t>(mib)) << name;
    std::string upper(name), lower(name);
    for (auto& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (auto& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_EQ(oruCSNameToMIBenum(upper.c_str()), static_cast<int32_t>(mib)) << name;
    EXPECT_EQ(oruCSNameToMIBenum(lower.c_str()), static_cast<int32_t>(mib)) << name;
    // A proper prefix or extension of a name is not that name.
    EXPECT_NE(oruCSNameToMIBenum((std::string(name) + "x").c_str()), static_cast<int32_t>(mib))
        << name;
    if (i > 0) {
      EXPECT_LT(oru_charset::oru_charset_name_compare(_oruCSNameAt(i - 1, nullptr), name), 0);
    }
  }
  EXPECT_EQ(_oruCSNameAt(oru_charset::oruCSNameTableSize, nullptr), nullptr);
  // Table 2 covers exactly the numbers of table 1, ascending.
  ASSERT_EQ(namesPerMib.size(), oru_charset::oruCSMIBTableSize);
  for (size_t i = 0; i < oru_charset::oruCSMIBTableSize; ++i) {
    const auto& row = oru_charset::oruCSMIBTable[i];
    EXPECT_TRUE(namesPerMib.count(row.mib)) << row.mib;
    EXPECT_EQ(oruCSNameToMIBenum(row.name), static_cast<int32_t>(row.mib)) << row.name;
    if (i > 0) {
      EXPECT_LT(oru_charset::oruCSMIBTable[i - 1].mib, row.mib);
    }
  }
  EXPECT_EQ(oru_charset::oruCSMIMETableSize, 24u);
  EXPECT_EQ(oru_charset::oruIconvNameTableSize, 178u);
  EXPECT_EQ(oru_charset::oruIconvNameTable[178].name, nullptr);
}

TEST(CharsetRegistry, Examples) {
  const struct {
    const char* name;
    int32_t mib;
  } names[] = {
      {"latin1", 4},         {"LATIN1", 4},          {"l1", 4},
      {"csISOLatin1", 4},    {"ISO_8859-1:1987", 4}, {"iso-ir-100", 4},
      {"ISO_8859-1", 4},     {"ISO-8859-1", 4},      {"IBM819", 4},
      {"CP819", 4},          {"latin-1", -1},        {"", -1},
      {"UTF8", -1},          {"utf_8", -1},          {"utf-8", 106},
      {"Utf-8", 106},        {"csUTF8", -1},         {"US-ASCII", 3},
      {"ANSI_X3.4-1968", 3}, {"UCS-2", 1000},        {"csUnicode", 1000},
      {"UCS-4", 1001},       {"csUCS4", 1001},       {"UCS-2BE", 9001},
      {"ucs-4le", 9004},     {"windows-874", -1},    {"CP51932", -1},
      {"CP50220", -1},       {"SCSU", 1011},         {"CESU-8", 1016},
      {"BOCU-1", 1020},      {"Shift_JIS", 17},
  };
  for (const auto& c : names) EXPECT_EQ(oruCSNameToMIBenum(c.name), c.mib) << c.name;

  const struct {
    uint32_t mib;
    const char* primary;
    const char* mime;
  } mibs[] = {
      {3, "ANSI_X3.4-1968", "US-ASCII"},
      {4, "ISO_8859-1:1987", "ISO-8859-1"},
      {17, "Shift_JIS", "Shift_JIS"},
      {18, "Extended_UNIX_Code_Packed_Format_for_Japanese", "EUC-JP"},
      {106, "UTF-8", "UTF-8"},
      {1000, "ISO-10646-UCS-2", "ISO-10646-UCS-2"},
      {1015, "UTF-16", "UTF-16"},
      {2252, "windows-1252", "windows-1252"},
      {9001, "UCS-2BE", "UCS-2BE"},
      {0, nullptr, nullptr},
      {9005, nullptr, nullptr},
      {2260, nullptr, nullptr},
  };
  for (const auto& c : mibs) {
    EXPECT_STREQ(oruMIBenumToCSName(c.mib), c.primary) << c.mib;
    EXPECT_STREQ(oruMIBenumToCSMIMEName(c.mib), c.mime) << c.mib;
  }
}

// The committed tables are exactly what the generators make of their sources.
void expect_regenerates(const std::string& command, const std::string& committed) {
  if (std::system("python3 -c pass >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "python3 is not available to rerun the generator";
  std::string out = ::testing::TempDir() + "/regenerated_" +
                    ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".cpp";
  ASSERT_EQ(std::system((command + " " + out + " 2>/dev/null").c_str()), 0) << command;
  EXPECT_TRUE(slurp(out) == slurp(committed)) << committed << " is stale: rerun " << command;
  std::remove(out.c_str());
}

TEST(CharsetRegistry, GeneratedTablesAreCurrent) {
  if (!readable(kCsv)) GTEST_SKIP() << "registry source " << kCsv << " is absent";
  expect_regenerates("python3 " + kRoot + "/data/charsets/gen_charsets.py " + kCsv,
                     kRoot + "/src/text/oru_charset_tables.cpp");
}

TEST(CharsetRegistry, GeneratedLocaleTablesAreCurrent) {
  expect_regenerates("python3 " + kRoot + "/data/locale/gen_locale_tables.py",
                     kRoot + "/src/l10n/oru_locale_tables.cpp");
}

}  // namespace
