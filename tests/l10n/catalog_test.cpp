// Message catalogs through the public interface: bindings, the current
// domain, the choice of catalog under the locale parameters, the format's
// rejection rules and the cache that remembers missing catalogs for good.
// Every test uses its own domains: the cache lives as long as the process.
#include <gtest/gtest.h>

#include <string>

#include "catalog_test_support.h"
#include "oru/l10n.h"
#include "oru/thread.h"

namespace {

class Catalog : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, "de"), ORU_OK);
    ASSERT_EQ(oruSetLocaleParam(ORU_LP_TERRITORY, "CH"), ORU_OK);
    ASSERT_EQ(oruSetLocaleParam(ORU_LP_APP_CHARSET, "windows-1252"), ORU_OK);
  }
  catalog_dir dir;
};

TEST_F(Catalog, BindingsAndQueries) {
  EXPECT_EQ(oruBindTextDomain(nullptr, "x"), nullptr);
  EXPECT_EQ(oruBindTextDomain("", "x"), nullptr);
  EXPECT_EQ(oruBindTextDomain("bind.a", nullptr), nullptr);
  std::string d1 = dir.path() + "/one";
  const char* bound = oruBindTextDomain("bind.a", d1.c_str());
  ASSERT_NE(bound, nullptr);
  EXPECT_NE(bound, d1.c_str());
  EXPECT_STREQ(bound, d1.c_str());
  EXPECT_EQ(oruBindTextDomain("bind.a", nullptr), bound);
  EXPECT_EQ(oruBindTextDomain("Bind.A", nullptr), nullptr);  // case-sensitive
  EXPECT_STREQ(oruBindTextDomain("bind.a", "/two"), "/two");
  EXPECT_STREQ(oruBindTextDomain("bind.a", nullptr), "/two");
}

TEST_F(Catalog, UnboundDomainGivesTheVeryMsgid) {
  const char* msgid = "Hello";
  EXPECT_EQ(oruDGetText("unbound.domain", msgid), msgid);
  EXPECT_EQ(oruDCGetTextLC("unbound.domain", "de", msgid, ORU_LC_MESSAGES), msgid);
  EXPECT_EQ(oruDGetText("unbound.domain", nullptr), nullptr);
}

TEST_F(Catalog, CurrentDomainPerThread) {
  EXPECT_STREQ(oruTextDomain(nullptr), "messages");
  const char* name = "current.domain";
  const char* set = oruTextDomain(name);
  EXPECT_STREQ(set, name);
  EXPECT_NE(set, name);
  EXPECT_EQ(oruTextDomain(nullptr), set);
  dir.put("de_CH.windows-1252", "current.domain", catalog_of({{"Yes", "Ja"}}));
  ASSERT_NE(oruBindTextDomain("current.domain", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruGetText("Yes"), "Ja");

  // Another thread starts with the default domain.
  oruThread t = nullptr;
  ASSERT_EQ(oruThreadCreate(
                &t, 0, 0,
                [](void*) -> unsigned {
                  return std::string(oruTextDomain(nullptr)) == "messages" ? 0u : 1u;
                },
                nullptr),
            ORU_OK);
  unsigned status = 9;
  ASSERT_EQ(oruThreadJoin(t, &status), ORU_OK);
  EXPECT_EQ(status, 0u);

  EXPECT_STREQ(oruTextDomain(""), "messages");
  EXPECT_STREQ(oruTextDomain(nullptr), "messages");
  // oruGetText now uses "messages", which has no catalog here.
  const char* msgid = "Yes";
  EXPECT_EQ(oruGetText(msgid), msgid);
}

TEST_F(Catalog, LookupsInOneCatalog) {
  dir.put("de_CH.windows-1252", "look",
          catalog_of({{"File", "Datei"},
                      {"Empty", ""},
                      {"ctx\x04Open",
                       "\xD6"
                       "ffnen"},
                      {"", "Content-Type: text/plain"}}));
  ASSERT_NE(oruBindTextDomain("look", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruDGetText("look", "File"), "Datei");
  const char* empty = "Empty";
  EXPECT_EQ(oruDGetText("look", empty), empty);
  EXPECT_STREQ(oruDGetText("look", "ctx\x04Open"),
               "\xD6"
               "ffnen");
  const char* missing = "Missing";
  EXPECT_EQ(oruDGetText("look", missing), missing);
  // The same pointer every time: the catalog is loaded once.
  EXPECT_EQ(oruDGetText("look", "File"), oruDCGetTextLC("look", nullptr, "File", 6));
  // Other categories have their own files; 0 and 7 have none.
  const char* file = "File";
  EXPECT_EQ(oruDCGetText("look", file, ORU_LC_TIME), file);
  EXPECT_EQ(oruDCGetText("look", file, 7), file);
  EXPECT_EQ(oruDCGetText("look", file, 0), file);
  dir.put("de_CH.windows-1252", "LC_TIME", "look.time", catalog_of({{"File", "Zeit"}}));
  ASSERT_NE(oruBindTextDomain("look.time", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruDCGetText("look.time", "File", ORU_LC_TIME), "Zeit");
  EXPECT_EQ(oruDGetText("look.time", file), file);
}

TEST_F(Catalog, CandidateOrderAndFirstCatalogDecides) {
  // de_CH exists but lacks "Only in de": the msgid comes back unchanged.
  dir.put("de_CH.windows-1252", "order", catalog_of({{"Both", "CH"}}));
  dir.put("de.windows-1252", "order", catalog_of({{"Both", "DE"}, {"Only in de", "de"}}));
  ASSERT_NE(oruBindTextDomain("order", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruDGetText("order", "Both"), "CH");
  const char* only = "Only in de";
  EXPECT_EQ(oruDGetText("order", only), only);

  // Without a de_CH catalog, de decides.
  dir.put("de.windows-1252", "order2", catalog_of({{"Both", "DE"}}));
  ASSERT_NE(oruBindTextDomain("order2", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruDGetText("order2", "Both"), "DE");

  // A catalog with no slots holds nothing, yet it exists and decides.
  dir.put("de_CH.windows-1252", "order3", catalog_of({}));
  dir.put("de.windows-1252", "order3", catalog_of({{"Both", "DE"}}));
  ASSERT_NE(oruBindTextDomain("order3", dir.path().c_str()), nullptr);
  const char* both = "Both";
  EXPECT_EQ(oruDGetText("order3", both), both);

  // The fallback language comes third, once the application has set it.
  dir.put("fr.windows-1252", "order4", catalog_of({{"Both", "FR"}}));
  ASSERT_NE(oruBindTextDomain("order4", dir.path().c_str()), nullptr);
  EXPECT_EQ(oruDGetText("order4", both), both);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_FALLBACK_LANGUAGE, "fr"), ORU_OK);
  // "order4" was missing for de_CH and de only; fr is a new triple.
  EXPECT_STREQ(oruDGetText("order4", "Both"), "FR");

  // An explicit locale is the only candidate.
  dir.put("it_CH.windows-1252", "order5", catalog_of({{"Both", "IT"}}));
  ASSERT_NE(oruBindTextDomain("order5", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruDGetTextLC("order5", "it_CH", "Both"), "IT");
  EXPECT_EQ(oruDGetTextLC("order5", "it", both), both);
  EXPECT_STREQ(oruDGetTextLC("order5", "", "Both"), oruDGetText("order5", "Both"));
  std::string long63(63 - std::string(".windows-1252").size(), 'x');  // fits exactly
  dir.put(long63 + ".windows-1252", "order5", catalog_of({{"Both", "LONG"}}));
  EXPECT_STREQ(oruDGetTextLC("order5", long63.c_str(), "Both"), "LONG");
  std::string long64 = long63 + "y";
  EXPECT_EQ(oruDGetTextLC("order5", long64.c_str(), both), both);
  std::string huge(64, 'z');
  EXPECT_EQ(oruDGetTextLC("order5", huge.c_str(), both), both);
}

TEST_F(Catalog, MissingCatalogsStayMissing) {
  ASSERT_NE(oruBindTextDomain("late", dir.path().c_str()), nullptr);
  const char* msgid = "Late";
  EXPECT_EQ(oruDGetText("late", msgid), msgid);
  // Created afterwards, or made reachable by a new binding: not seen.
  dir.put("de_CH.windows-1252", "late", catalog_of({{"Late", "Spaet"}}));
  EXPECT_EQ(oruDGetText("late", msgid), msgid);
  catalog_dir other;
  other.put("de_CH.windows-1252", "late", catalog_of({{"Late", "Spaet"}}));
  ASSERT_NE(oruBindTextDomain("late", other.path().c_str()), nullptr);
  EXPECT_EQ(oruDGetText("late", msgid), msgid);
  // A loaded catalog stays too, even when its file goes.
  dir.put("de_CH.windows-1252", "kept", catalog_of({{"Kept", "Behalten"}}));
  ASSERT_NE(oruBindTextDomain("kept", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruDGetText("kept", "Kept"), "Behalten");
  std::filesystem::remove(dir.path() + "/de_CH.windows-1252/LC_MESSAGES/kept.mo");
  EXPECT_STREQ(oruDGetText("kept", "Kept"), "Behalten");
}

// Each malformed file is treated as missing, and stays missing after it is
// repaired.
TEST_F(Catalog, RejectedFiles) {
  const std::string good = catalog_of({{"Key", "Wert"}});
  struct broken {
    const char* name;
    std::string bytes;
  };
  std::vector<broken> cases;
  auto with = [&](const char* name, auto change) {
    std::string b = good;
    change(b);
    cases.push_back({name, b});
  };
  with("size-field", [](std::string& b) { put_be32(b, 8, get_be32(b, 8) + 1); });
  with("n-three", [](std::string& b) { put_be32(b, 12, 3); });
  with("last-byte", [](std::string& b) { b.back() = 'x'; });
  with("second-last-byte", [](std::string& b) { b[b.size() - 2] = 'x'; });
  with("slot-past-end", [](std::string& b) {
    for (size_t at = 32; at < 32 + 4 * get_be32(b, 12); at += 4) {
      if (get_be32(b, at) != 0) put_be32(b, at, static_cast<uint32_t>(b.size() - 1));
    }
  });
  with("version-two", [](std::string& b) { b[5] = 2; });
  with("magic", [](std::string& b) { b[0] = 'M'; });
  with("too-short", [](std::string& b) {
    b.assign(35, '\0');
    b.replace(0, 4, "NWMO");
    put_be32(b, 8, 35);
  });
  with("slots-past-end", [](std::string& b) { put_be32(b, 12, 1u << 20); });
  for (const broken& c : cases) {
    std::string domain = std::string("bad.") + c.name;
    dir.put("de_CH.windows-1252", domain, c.bytes);
    dir.put("de.windows-1252", domain, catalog_of({{"Key", "de"}}));
    ASSERT_NE(oruBindTextDomain(domain.c_str(), dir.path().c_str()), nullptr);
    // A rejected first catalog does not exist: the second decides.
    EXPECT_STREQ(oruDGetText(domain.c_str(), "Key"), "de") << c.name;
    dir.put("de_CH.windows-1252", domain, good);
    EXPECT_STREQ(oruDGetText(domain.c_str(), "Key"), "de") << c.name;
  }
  // Version 1 and the reserved fields do not matter.
  std::string v1 = good;
  v1[5] = 1;
  v1[6] = 'r';
  v1[20] = 'r';
  dir.put("de_CH.windows-1252", "good.v1", v1);
  ASSERT_NE(oruBindTextDomain("good.v1", dir.path().c_str()), nullptr);
  EXPECT_STREQ(oruDGetText("good.v1", "Key"), "Wert");
}

// Probing wraps from the last slot to slot 0 and stops at the home slot in
// a table without an empty slot.
TEST_F(Catalog, ProbingWrapsAndStops) {
  // Four slots, all used, laid out as probing places them: "a" (97) and
  // "e" (101) have home slot 1; "c" (99) has home 3 and "g" (103), also
  // home 3, wraps to slot 0.
  const uint32_t n = 4;
  const std::vector<std::pair<std::string, std::string>> order = {
      {"g", "G"}, {"a", "A"}, {"e", "E"}, {"c", "C"}};
  std::string img(32 + 4 * n, '\0');
  img.replace(0, 4, "NWMO");
  put_be32(img, 12, n);
  for (uint32_t slot = 0; slot < n; ++slot) {
    put_be32(img, 32 + 4 * slot, static_cast<uint32_t>(img.size()));
    img += order[slot].first + '\0' + order[slot].second + '\0';
  }
  img += std::string(2, '\0');
  put_be32(img, 8, static_cast<uint32_t>(img.size()));
  ASSERT_EQ(msgid_hash("g") & 3, 3u);
  ASSERT_EQ(msgid_hash("e") & 3, 1u);
  dir.put("de_CH.windows-1252", "probe", img);
  ASSERT_NE(oruBindTextDomain("probe", dir.path().c_str()), nullptr);
  for (const auto& [k, v] : order) EXPECT_STREQ(oruDGetText("probe", k.c_str()), v.c_str()) << k;
  const char* absent = "zz";
  EXPECT_EQ(oruDGetText("probe", absent), absent);  // full table: ends at home
}

}  // namespace
