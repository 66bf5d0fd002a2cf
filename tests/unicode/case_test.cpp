// Case mapping and folding against UnicodeData.txt, SpecialCasing.txt and
// CaseFolding.txt, the context conditions and language records under the
// locale's language, and the empty and ill-formed input rules.
#include <gtest/gtest.h>

#include <algorithm>

#include <map>
#include <string>
#include <vector>

#include "oru/core.h"
#include "oru/l10n.h"
#include "oru/unicode.h"
#include "ucd_files.h"

namespace {

using U32 = std::vector<uint32_t>;
enum Kind { kLower, kUpper, kFold };

U32 hex(const std::string& text) {
  U32 out;
  std::istringstream in(text);
  std::string word;
  while (in >> word) out.push_back(std::stoul(word, nullptr, 16));
  return out;
}

U32 map_ucs4(Kind k, const U32& s) {
  uint32_t n = 99;
  auto* f = k == kLower ? oruUCS4ToLower : k == kUpper ? oruUCS4ToUpper : oruUCS4Casefold;
  uint32_t* r = f(s.data(), static_cast<uint32_t>(s.size()), &n);
  U32 out(r, r + n);
  oruFree(r);
  return out;
}

std::u16string map_utf16(Kind k, const std::u16string& s) {
  uint32_t n = 99;
  auto* f = k == kLower ? oruUTF16ToLower : k == kUpper ? oruUTF16ToUpper : oruUTF16Casefold;
  uint16_t* r = f(reinterpret_cast<const uint16_t*>(s.data()), static_cast<uint32_t>(s.size()), &n);
  std::u16string out(reinterpret_cast<char16_t*>(r), n);
  oruFree(r);
  return out;
}

std::string map_utf8(Kind k, const std::string& s) {
  uint32_t n = 99;
  auto* f = k == kLower ? oruUTF8ToLower : k == kUpper ? oruUTF8ToUpper : oruUTF8Casefold;
  char* r = f(s.data(), static_cast<int32_t>(s.size()), &n);
  std::string out(r, n);
  EXPECT_EQ(r[n], '\0');
  oruFree(r);
  return out;
}

std::string utf8(const U32& s) {
  std::string out;
  for (uint32_t c : s) {
    char buf[4];
    out.append(buf, oruUTF8SafePutChar(buf, buf + 4, static_cast<int32_t>(c)));
  }
  return out;
}

std::u16string utf16(const U32& s) {
  std::u16string out;
  for (uint32_t c : s) {
    uint16_t buf[2];
    const uint16_t* e = oruUTF16SafePutChar(buf, buf + 2, c);
    out.append(reinterpret_cast<const char16_t*>(buf), e - buf);
  }
  return out;
}

void expect_map(Kind k, const U32& in, const U32& out, const std::string& where) {
  EXPECT_EQ(map_ucs4(k, in), out) << where;
  EXPECT_EQ(map_utf16(k, utf16(in)), utf16(out)) << where;
  EXPECT_EQ(map_utf8(k, utf8(in)), utf8(out)) << where;
}

class CaseTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, "en"), ORU_OK); }
  void TearDown() override { oruSetLocaleParam(ORU_LP_LANGUAGE, "en"); }
};

// Every code point mapped on its own (after a space, so that no context
// holds) gives the unconditional SpecialCasing record, else the simple
// mapping of UnicodeData, else itself; folding gives the C or F record.
TEST_F(CaseTest, EveryCodePointAgainstTheDataFiles) {
  if (!ucd::present()) GTEST_SKIP() << "Unicode 4.1.0 data not found in " << ucd::dir();
  std::map<uint32_t, U32> expect[3];
  for (const auto& e : ucd::unicode_data()) {
    for (int k = 0; k < 2; ++k) {
      const std::string& field = e.fields.size() > 13 ? e.fields[k == kLower ? 13 : 12] : "";
      if (!field.empty()) expect[k][e.first] = hex(field);
      if (e.first == 0x49 && k == kLower) {
        EXPECT_EQ(oruUniCharToLower(0x49), 0x69u);
      }
    }
    if (e.fields.size() > 14 && !e.fields[14].empty()) {
      EXPECT_EQ(oruUniCharToTitle(e.first), hex(e.fields[14])[0]);
    }
  }
  std::ifstream special(ucd::dir() + "/SpecialCasing.txt");
  std::string line;
  int records = 0;
  while (std::getline(special, line)) {
    line = line.substr(0, line.find('#'));
    auto f = ucd::split(line, ';');
    if (f.size() < 4) continue;
    ++records;
    if (f.size() > 5 && !ucd::trim(f[4]).empty()) continue;  // conditional: below
    const uint32_t c = hex(f[0])[0];
    expect[kLower][c] = hex(f[1]);
    expect[kUpper][c] = hex(f[3]);
  }
  EXPECT_GT(records, 100);
  std::ifstream folding(ucd::dir() + "/CaseFolding.txt");
  while (std::getline(folding, line)) {
    auto f = ucd::split(line.substr(0, line.find('#')), ';');
    if (f.size() < 3) continue;
    const std::string status = ucd::trim(f[1]);
    if (status == "C" || status == "F") expect[kFold][hex(f[0])[0]] = hex(f[2]);
  }
  for (int k = 0; k < 3; ++k) {
    U32 in, out;
    for (uint32_t c = 0; c <= 0x110000; ++c) {
      if (c < 0x110000 && (c & 0xFFFFF800) != 0xD800 && (c < 0x20000 || c % 37 == 0)) {
        in.push_back(0x20);
        out.push_back(0x20);
        in.push_back(c);
        auto it = expect[k].find(c);
        if (it == expect[k].end()) {
          out.push_back(c);
        } else {
          out.insert(out.end(), it->second.begin(), it->second.end());
        }
      }
      if (in.size() >= 8192 || c == 0x110000) {
        EXPECT_EQ(map_ucs4(Kind(k), in), out) << "mapping " << k << " near " << in[1];
        EXPECT_EQ(map_utf8(Kind(k), utf8(in)), utf8(out)) << "mapping " << k << " near " << in[1];
        if (HasFailure()) return;
        in.clear();
        out.clear();
      }
    }
  }
  for (uint32_t c : {0x41u, 0x3A3u, 0x130u, 0x1F88u, 0x10400u}) {
    const auto it = expect[kLower].find(c);
    if (it != expect[kLower].end() && it->second.size() == 1) {
      EXPECT_EQ(oruUniCharToLower(c), it->second[0]);
    }
  }
}

// The conditional and language records of SpecialCasing in contexts built
// for them, and the same texts outside the context.
TEST_F(CaseTest, ContextsAndLanguages) {
  struct Case {
    const char* lang;
    Kind kind;
    U32 in, out;
  } cases[] = {
      // Final_Sigma: after a cased letter, not before one (marks skipped).
      {"en", kLower, {0x391, 0x3A3}, {0x3B1, 0x3C2}},
      {"en", kLower, {0x391, 0x3A3, 0x301, 0x20}, {0x3B1, 0x3C2, 0x301, 0x20}},
      {"en", kLower, {0x391, 0x3A3, 0x391}, {0x3B1, 0x3C3, 0x3B1}},
      {"en", kLower, {0x3A3}, {0x3C3}},
      {"en", kLower, {0x20, 0x3A3, 0x20}, {0x20, 0x3C3, 0x20}},
      {"en", kLower, {0x391, 0x27, 0x3A3}, {0x3B1, 0x27, 0x3C2}},
      // U+0130 unconditional, then its Turkic records.
      {"en", kLower, {0x130}, {0x69, 0x307}},
      {"tr", kLower, {0x130}, {0x69}},
      {"az", kLower, {0x130}, {0x69}},
      {"tr", kLower, {0x49}, {0x131}},
      {"tr", kLower, {0x49, 0x307}, {0x69}},                        // After_I removes the dot
      {"tr", kLower, {0x49, 0x316, 0x307}, {0x69, 0x316}},          // over a class-220 mark
      {"tr", kLower, {0x49, 0x301, 0x307}, {0x131, 0x301, 0x307}},  // a class-230 blocks
      {"tr", kUpper, {0x69}, {0x130}},
      {"az", kUpper, {0x69}, {0x130}},
      {"en", kUpper, {0x69}, {0x49}},
      {"en", kLower, {0x49, 0x307}, {0x69, 0x307}},
      {"tr", kFold, {0x49}, {0x69}},  // folding has no language records
      {"tr", kFold, {0x130}, {0x69, 0x307}},
      // Lithuanian: keep the dot of i and j under accents.
      {"lt", kLower, {0x49, 0x300}, {0x69, 0x307, 0x300}},
      {"lt", kLower, {0x49}, {0x69}},
      // The inserted dot (230) is put after the class-220 mark.
      {"lt", kLower, {0x4A, 0x316, 0x301}, {0x6A, 0x316, 0x307, 0x301}},
      {"lt", kLower, {0x12E, 0x301}, {0x12F, 0x307, 0x301}},
      {"lt", kLower, {0xCC}, {0x69, 0x307, 0x300}},
      {"lt", kLower, {0xCD}, {0x69, 0x307, 0x301}},
      {"lt", kLower, {0x128}, {0x69, 0x307, 0x303}},
      {"lt", kUpper, {0x69, 0x307}, {0x49}},  // After_Soft_Dotted drops the dot
      {"lt", kUpper, {0x69, 0x316, 0x307}, {0x49, 0x316}},
      {"lt", kUpper, {0x69, 0x301, 0x307}, {0x49, 0x301, 0x307}},
      {"lt", kUpper, {0x61, 0x307}, {0x41, 0x307}},
      {"en", kUpper, {0x69, 0x307}, {0x49, 0x307}},
      // Full mappings and reordering of the result.
      {"en", kUpper, {0xDF}, {0x53, 0x53}},
      {"en", kFold, {0xDF}, {0x73, 0x73}},
      {"en", kFold, {0x1F88}, {0x1F00, 0x3B9}},
      {"en", kUpper, {0x1F80, 0x316}, {0x1F08, 0x399, 0x316}},  // U+0399 is a starter
      {"en", kUpper, {0x390}, {0x399, 0x308, 0x301}},
      {"en", kUpper, {0x61, 0x301, 0x316}, {0x41, 0x316, 0x301}},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, c.lang), ORU_OK);
    std::string where = std::string(c.lang) + " kind " + std::to_string(c.kind) + " first U+";
    where += std::to_string(c.in[0]);
    expect_map(c.kind, c.in, c.out, where);
  }
}

TEST_F(CaseTest, EmptyNullAndIllFormedInput) {
  uint32_t n = 5;
  const uint32_t x = 0x41;
  EXPECT_EQ(oruUCS4ToLower(&x, 0, &n), nullptr);
  EXPECT_EQ(n, 0u);
  n = 5;
  EXPECT_EQ(oruUTF16Casefold(nullptr, 0, &n), nullptr);
  EXPECT_EQ(n, 0u);
  char* e = oruUTF8ToUpper("", 0, nullptr);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(*e, 0);
  oruFree(e);
  EXPECT_EQ(oruUTF8ToUpper(nullptr, -1, &n), nullptr);
  EXPECT_EQ(map_utf8(kUpper, std::string("a\xE0\x80z\xF4", 5)),
            "A\xEF\xBF\xBD\xEF\xBF\xBDZ\xEF\xBF\xBD");
  EXPECT_EQ(map_utf16(kLower,
                      u"A\xDC00"
                      u"B\xD800"),
            u"a\xFFFD"
            u"b\xFFFD");
  const U32 big = {0x110000, 0xFFFFFFFF, 0x41};
  EXPECT_EQ(map_ucs4(kLower, big), (U32{0x110000, 0xFFFFFFFF, 0x61}));
  EXPECT_EQ(oruUniCharToUpper(0xFFFFFFFF), 0xFFFFFFFFu);
  char* t = oruUTF8ToLower("ABC\xC3\x89", -1, &n);  // NUL-terminated input
  EXPECT_STREQ(t, "abc\xC3\xA9");
  EXPECT_EQ(n, 5u);
  oruFree(t);
}

}  // namespace

namespace {

// The edges every string function shares: null and empty input, a null
// length pointer, values above U+10FFFF, and outputs too small for a whole
// decomposition.
TEST(CaseAndNormalizationEdges, NullEmptyAndOutOfRange) {
  uint32_t len = 99;
  const uint32_t u32[] = {0x110000, 'A'};
  const uint16_t u16[] = {'A'};
  EXPECT_EQ(oruUCS4ToLower(nullptr, 1, &len), nullptr);
  EXPECT_EQ(len, 0u);
  EXPECT_EQ(oruUCS4ToUpper(u32, 0, nullptr), nullptr);
  EXPECT_EQ(oruUTF16Casefold(nullptr, 1, nullptr), nullptr);
  EXPECT_EQ(oruUTF16ToLower(u16, 0, &len), nullptr);
  EXPECT_EQ(oruUCS4Normalize(nullptr, 1, ORU_NFC, &len), nullptr);
  EXPECT_EQ(oruUCS4Normalize(u32, 0, ORU_NFC, nullptr), nullptr);
  EXPECT_EQ(oruUTF16Normalize(nullptr, 1, ORU_NFD, nullptr), nullptr);
  EXPECT_EQ(oruUTF16Normalize(u16, 0, ORU_NFD, &len), nullptr);
  EXPECT_EQ(oruUTF8Normalize(nullptr, -1, ORU_NFD, &len), nullptr);
  char* empty = oruUTF8Normalize("", -1, ORU_NFKC, nullptr);
  ASSERT_NE(empty, nullptr);
  EXPECT_STREQ(empty, "");
  oruFree(empty);
  // Above U+10FFFF: unchanged by the simple and the full mappings.
  EXPECT_EQ(oruUniCharToLower(0x110000), 0x110000u);
  EXPECT_EQ(oruUniCharToUpper(0x7FFFFFFF), 0x7FFFFFFFu);
  EXPECT_EQ(oruUniCharToTitle(0x110001), 0x110001u);
  uint32_t* mapped = oruUCS4ToLower(u32, 2, &len);
  ASSERT_NE(mapped, nullptr);
  ASSERT_EQ(len, 2u);
  EXPECT_EQ(mapped[0], 0x110000u);
  EXPECT_EQ(mapped[1], static_cast<uint32_t>('a'));
  oruFree(mapped);
}

TEST(CaseAndNormalizationEdges, DecompositionIntoSmallOutputs) {
  // U+AC01 (Hangul, three jamo) is written whole or not at all; U+1E0A
  // (D + dot above) as far as whole characters fit.
  uint32_t u32[4] = {0, 0, 0, 0};
  EXPECT_EQ(oruUCS4Decompose(0xAC01, 1, u32, 2), 3u);
  EXPECT_EQ(u32[0], 0u);
  EXPECT_EQ(oruUCS4Decompose(0x1E0A, 1, u32, 1), 2u);
  EXPECT_EQ(u32[0], static_cast<uint32_t>('D'));
  EXPECT_EQ(oruUCS4Decompose(0x1E0A, 1, nullptr, 0), 2u);
  uint16_t u16[4] = {0, 0, 0, 0};
  EXPECT_EQ(oruUTF16Decompose(0x1D15E, 1, u16, 2), 4u);  // two supplementary characters
  EXPECT_EQ(u16[0], 0xD834u);
  EXPECT_EQ(oruUTF16Decompose(0x1D15E, 1, nullptr, 0), 4u);
  char u8[8] = {};
  EXPECT_EQ(oruUTF8Decompose(0x1E0A, 1, u8, 2), 3u);  // "D" then a two-byte mark
  EXPECT_STREQ(u8, "D");
  EXPECT_EQ(oruUTF8Decompose(0x1E0A, 1, nullptr, 0), 3u);
  // Ordering: nothing to do for null, one unit, or a lone byte.
  oruUCS4CanonicalOrdering(nullptr, 3);
  oruUTF16CanonicalOrdering(nullptr, 3);
  uint16_t one[] = {0x301};
  oruUTF16CanonicalOrdering(one, 1);
  EXPECT_EQ(one[0], 0x301u);
  oruUTF8CanonicalOrdering(nullptr, -1);
  // An unpaired surrogate stays where it is; marks on either side sort.
  uint16_t mixed[] = {'a', 0x301, 0x316, 0xD800, 0x301, 0x316};
  oruUTF16CanonicalOrdering(mixed, 6);
  const uint16_t sorted[] = {'a', 0x316, 0x301, 0xD800, 0x316, 0x301};
  EXPECT_TRUE(std::equal(mixed, mixed + 6, sorted));
}

}  // namespace
