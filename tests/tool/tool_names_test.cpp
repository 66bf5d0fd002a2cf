// oru names and oru iso3166 against the library's own answers: single
// names, complete listings, and the exit statuses for what has no name.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "oru/core.h"
#include "oru/l10n.h"
#include "tool_runner.h"

namespace {

// "code\tname" lines of a listing.
std::vector<std::pair<std::string, std::string>> rows(const std::string& text) {
  std::vector<std::pair<std::string, std::string>> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    size_t tab = line.find('\t');
    out.emplace_back(line.substr(0, tab), tab == std::string::npos ? "" : line.substr(tab + 1));
  }
  return out;
}

TEST(ToolNames, SingleNamesAndFailures) {
  scratch_dir dir;
  struct Case {
    std::vector<std::string> args;
    int status;
    std::string out;
  } cases[] = {
      {{"names", "de", "fr"}, 0, "allemand\n"},
      {{"names", "-k", "language", "de", "de_CH"}, 0, "Deutsch\n"},
      {{"names", "--kind=territory", "CH", "de_CH"}, 0, "Schweiz\n"},
      {{"names", "-k", "currency", "USD", "zu"}, 0, "i-US Dollar\n"},
      {{"names", "-k", "symbol", "EUR", "de"}, 0, "\u20ac\n"},
      {{"names", "-k", "symbol", "USD", "xx"}, 0, "US$\n"},
      {{"names", "-k", "symbol", "eur", "de"}, 1, ""},
      {{"names", "de", "de-CH"}, 1, ""},
      {{"names", "-k", "planet", "de", "fr"}, 2, ""},
      {{"names", "de"}, 2, ""},
      {{"names", "-a", "de", "fr"}, 2, ""},
  };
  for (const Case& c : cases) {
    run_result r = run_oru(c.args, dir.path());
    EXPECT_EQ(r.status, c.status) << c.args[c.args.size() - 2];
    EXPECT_EQ(r.out, c.out);
    EXPECT_EQ(r.err.empty(), c.status == 0) << r.err;
  }
}

// A listing is in byte order and each listed name is the library's.
TEST(ToolNames, ListingsMatchTheLibrary) {
  scratch_dir dir;
  struct Case {
    const char* kind;
    const char* locale;
    const char* (*fn)(const char*, const char*);
  } cases[] = {{"symbol", "xx", oruCLDRGetCurrencySymbol},
               {"territory", "en_AU", oruCLDRGetTerritoryDisplayName},
               {"language", "de", oruCLDRGetLanguageDisplayName},
               {"currency", "ja", oruCLDRGetCurrencyDisplayName}};
  for (const Case& c : cases) {
    run_result r = run_oru({"names", "-k", c.kind, "-a", c.locale}, dir.path());
    ASSERT_EQ(r.status, 0) << r.err;
    auto listed = rows(r.out);
    ASSERT_FALSE(listed.empty());
    for (size_t i = 0; i < listed.size(); ++i) {
      EXPECT_EQ(listed[i].second, c.fn(listed[i].first.c_str(), c.locale)) << listed[i].first;
      if (i > 0) {
        EXPECT_LT(listed[i - 1].first, listed[i].first);
      }
    }
  }
  EXPECT_EQ(run_oru({"names", "-a", "de_ch"}, dir.path()).status, 1);
}

TEST(ToolIso3166, ListsAndNames) {
  scratch_dir dir;
  run_result all = run_oru({"iso3166"}, dir.path());
  ASSERT_EQ(all.status, 0);
  const char** codes = oruGetISO3166Countries();
  ASSERT_NE(codes, nullptr);
  std::vector<std::pair<std::string, std::string>> want;
  for (const char** c = codes; *c != nullptr; ++c)
    want.emplace_back(*c, oruGetISO3166CountryName(*c));
  oruFree(codes);
  EXPECT_EQ(rows(all.out), want);

  run_result de = run_oru({"iso3166", "DE"}, dir.path());
  ASSERT_EQ(de.status, 0);
  auto subs = rows(de.out);
  ASSERT_EQ(subs.size(), 16u);
  EXPECT_EQ(subs[3], (std::pair<std::string, std::string>{"DE-BY", "Bayern"}));

  struct Case {
    const char* code;
    int status;
    std::string out;
  } cases[] = {{"DE-BY", 0, "Bayern\n"},
               {"AD-02", 0, "Canillo\n"},
               {"KY", 0, ""},
               {"HK", 1, ""},
               {"de", 1, ""},
               {"DE-XX", 1, ""}};
  for (const Case& c : cases) {
    run_result r = run_oru({"iso3166", c.code}, dir.path());
    EXPECT_EQ(r.status, c.status) << c.code;
    EXPECT_EQ(r.out, c.out) << c.code;
  }
  EXPECT_EQ(run_oru({"iso3166", "DE", "FR"}, dir.path()).status, 2);
}

}  // namespace
