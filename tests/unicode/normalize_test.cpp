// Normalization against NormalizationTest.txt in all four forms and all
// three encodings, the decomposition and ordering functions, and bad input.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "oru/core.h"
#include "oru/unicode.h"
#include "ucd_files.h"

namespace {

using U32 = std::vector<uint32_t>;

std::string to_utf8(const U32& s) {
  std::string out;
  for (uint32_t c : s) {
    char buf[4];
    char* e = oruUTF8SafePutChar(buf, buf + 4, static_cast<int32_t>(c));
    if (e == buf) {  // noncharacter: encode by hand
      if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
      } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
      }
    }
    out.append(buf, e);
  }
  return out;
}

std::u16string to_utf16(const U32& s) {
  std::u16string out;
  for (uint32_t c : s) {
    if (c < 0x10000) {
      out += static_cast<char16_t>(c);
    } else {
      out += static_cast<char16_t>(0xD800 | ((c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 | (c & 0x3FF));
    }
  }
  return out;
}

U32 nf_ucs4(const U32& s, uint32_t form) {
  uint32_t n = 99;
  uint32_t* r = oruUCS4Normalize(s.data(), static_cast<uint32_t>(s.size()), form, &n);
  U32 out(r, r + n);
  oruFree(r);
  return out;
}

std::u16string nf_utf16(const std::u16string& s, uint32_t form) {
  uint32_t n = 99;
  uint16_t* r = oruUTF16Normalize(reinterpret_cast<const uint16_t*>(s.data()),
                                  static_cast<uint32_t>(s.size()), form, &n);
  std::u16string out(reinterpret_cast<char16_t*>(r), n);
  oruFree(r);
  return out;
}

std::string nf_utf8(const std::string& s, uint32_t form) {
  uint32_t n = 99;
  char* r = oruUTF8Normalize(s.data(), static_cast<int32_t>(s.size()), form, &n);
  EXPECT_EQ(r[n], '\0');
  std::string out(r, n);
  oruFree(r);
  return out;
}

// Checks form(source) == expected in every encoding.
void expect_form(const U32& source, uint32_t form, const U32& expected, const std::string& where) {
  EXPECT_EQ(nf_ucs4(source, form), expected) << where << " form " << form;
  EXPECT_EQ(nf_utf16(to_utf16(source), form), to_utf16(expected)) << where << " form " << form;
  EXPECT_EQ(nf_utf8(to_utf8(source), form), to_utf8(expected)) << where << " form " << form;
}

U32 hex(const std::string& text) {
  U32 out;
  std::istringstream in(text);
  std::string word;
  while (in >> word) out.push_back(std::stoul(word, nullptr, 16));
  return out;
}

// The file's invariants for one line c1..c5, or for many lines joined with
// spaces: a space neither composes with anything nor lets marks move across
// it, so each line normalizes as it would alone.
void check_invariants(const U32 (&c)[5], const std::string& where) {
  for (int k = 0; k < 3; ++k) {
    expect_form(c[k], ORU_NFC, c[1], where);
    expect_form(c[k], ORU_NFD, c[2], where);
  }
  for (int k = 3; k < 5; ++k) {
    expect_form(c[k], ORU_NFC, c[3], where);
    expect_form(c[k], ORU_NFD, c[4], where);
  }
  for (int k = 0; k < 5; ++k) {
    expect_form(c[k], ORU_NFKC, c[3], where);
    expect_form(c[k], ORU_NFKD, c[4], where);
  }
}

TEST(Normalize, ConformanceFile) {
  if (!ucd::present()) GTEST_SKIP() << "Unicode 4.1.0 data not found in " << ucd::dir();
  std::ifstream in(ucd::dir() + "/NormalizationTest.txt");
  ASSERT_TRUE(in.good());
  std::string line, part;
  std::set<uint32_t> listed;
  int lines = 0;
  U32 joined[5];
  std::vector<std::string> batch_lines;
  auto flush = [&] {
    if (batch_lines.empty()) return;
    check_invariants(joined, "a batch of lines");
    if (HasFailure()) {  // again line by line, to name the failing one
      for (const auto& l : batch_lines) {
        auto f = ucd::split(l.substr(0, l.find('#')), ';');
        U32 c[5];
        for (int k = 0; k < 5; ++k) c[k] = hex(f[k]);
        check_invariants(c, l);
      }
    }
    for (auto& j : joined) j.clear();
    batch_lines.clear();
  };
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    if (line[0] == '@') {
      part = line.substr(0, 6);
      continue;
    }
    auto f = ucd::split(line.substr(0, line.find('#')), ';');
    ASSERT_GE(f.size(), 5u) << line;
    for (int k = 0; k < 5; ++k) {
      const U32 c = hex(f[k]);
      if (k == 0 && part == "@Part1") listed.insert(c[0]);
      joined[k].push_back(0x20);
      joined[k].insert(joined[k].end(), c.begin(), c.end());
    }
    batch_lines.push_back(line);
    if (batch_lines.size() == 128) flush();
    if (HasFailure()) return;
    ++lines;
  }
  flush();
  EXPECT_GT(lines, 17000);
  // Every code point not listed in the character-by-character part is its own
  // normalization in every form.  Checked in batches, each character after a
  // space, which neither composes nor lets marks move across it.  The large
  // uniform ranges (ideographs, Hangul syllables, private use, unassigned
  // planes) are sampled.
  U32 batch;
  for (uint32_t c = 0; c <= 0x110000; ++c) {
    if (c < 0x110000 && (listed.count(c) || (c >= 0xD800 && c < 0xE000))) continue;
    const bool dense = c < 0x3400 || (c >= 0xA000 && c < 0xAC00) || (c >= 0xD7A4 && c < 0xE000) ||
                       (c >= 0xF900 && c < 0x20000) || (c >= 0x2F800 && c < 0x30000) ||
                       (c >= 0xE0000 && c < 0xF0000);
    if (!dense && c % 61 != 0) continue;
    if (c < 0x110000) {
      batch.push_back(0x20);
      batch.push_back(c);
    }
    if (batch.size() >= 8192 || (c == 0x110000 && !batch.empty())) {
      for (uint32_t form = 0; form < 4; ++form) {
        const std::string where = "unlisted code points from " + std::to_string(batch[1]);
        EXPECT_EQ(nf_ucs4(batch, form), batch) << where;
        if (batch[1] < 0x10000) {
          EXPECT_EQ(nf_utf8(to_utf8(batch), form), to_utf8(batch)) << where;
        }
      }
      if (HasFailure()) return;
      batch.clear();
    }
  }
}

TEST(Normalize, Examples) {
  struct Case {
    U32 in;
    uint32_t form;
    U32 out;
  } cases[] = {
      {{0xC5}, ORU_NFD, {0x41, 0x30A}},
      {{0x41, 0x30A}, ORU_NFC, {0xC5}},
      {{0xFB01}, ORU_NFKD, {0x66, 0x69}},
      {{0xFB01}, ORU_NFD, {0xFB01}},
      {{0xD4DB}, ORU_NFD, {0x1111, 0x1171, 0x11B6}},
      {{0x1111, 0x1171, 0x11B6}, ORU_NFC, {0xD4DB}},
      {{0x1100, 0x1161, 0x11A7}, ORU_NFC, {0xAC00}},
      {{0x915, 0x93C}, ORU_NFC, {0x915, 0x93C}},
      {{0x928, 0x93C}, ORU_NFC, {0x929}},
      {{0x61, 0x323, 0x302}, ORU_NFC, {0x1EAD}},
      {{0x61, 0x302, 0x323}, ORU_NFC, {0x1EAD}},
      {{0x301, 0x300, 0x41}, ORU_NFC, {0x301, 0x300, 0x41}},  // no starter first
      {{0x4E00, 0xAC00, 0x11A8, 0x4E00}, ORU_NFC, {0x4E00, 0xAC01, 0x4E00}},
      {{0xAC00, 0x11A8}, ORU_NFKC, {0xAC01}},
      {{0x304B, 0x3099, 0x304B}, ORU_NFC, {0x304C, 0x304B}},
      {{0x304C, 0x4E00}, ORU_NFD, {0x304B, 0x3099, 0x4E00}},
      {{0x110000, 0x301}, ORU_NFC, {0x110000, 0x301}},  // out of range passes
  };
  for (const auto& c : cases) {
    EXPECT_EQ(nf_ucs4(c.in, c.form), c.out);
    if (c.in[0] <= 0x10FFFF) expect_form(c.in, c.form, c.out, "example");
  }
}

TEST(Normalize, EmptyAndBadInput) {
  uint32_t n = 7;
  EXPECT_EQ(oruUCS4Normalize(nullptr, 0, ORU_NFC, &n), nullptr);
  EXPECT_EQ(n, 0u);
  const uint16_t u = 0x41;
  n = 7;
  EXPECT_EQ(oruUTF16Normalize(&u, 0, ORU_NFC, &n), nullptr);
  EXPECT_EQ(n, 0u);
  char* e = oruUTF8Normalize("", -1, ORU_NFD, &n);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(*e, 0);
  EXPECT_EQ(n, 0u);
  oruFree(e);
  EXPECT_EQ(oruUTF8Normalize(nullptr, 5, ORU_NFD, &n), nullptr);
  // Ill-formed bytes and unpaired surrogates become U+FFFD; nothing is read
  // past the length (the sanitizers watch the truncated sequences).
  EXPECT_EQ(nf_utf8(std::string("a\xC3", 2), ORU_NFC), "a\xEF\xBF\xBD");
  EXPECT_EQ(nf_utf8(std::string("\xE0\x80\x80\xCC\x81"), ORU_NFD),
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xCC\x81");
  EXPECT_EQ(nf_utf8("e\xCC\x81\xFF", ORU_NFC), "\xC3\xA9\xEF\xBF\xBD");
  EXPECT_EQ(nf_utf16(u"\xD800"
                     u"a",
                     ORU_NFC),
            u"\xFFFD"
            u"a");
  EXPECT_EQ(nf_utf16(std::u16string(1, u'\xDC00'), ORU_NFD), u"\xFFFD");
}

TEST(Normalize, DecomposeReportsNeededSize) {
  uint32_t out[4] = {0, 0, 0, 0};
  EXPECT_EQ(oruUCS4Decompose(0xD4DB, 0, nullptr, 0), 3u);
  EXPECT_EQ(oruUCS4Decompose(0xD4DB, 0, out, 2), 3u);
  EXPECT_EQ(out[0], 0u);  // a Hangul syllable is written whole or not at all
  EXPECT_EQ(oruUCS4Decompose(0x1E69, 1, out, 4), 3u);  // s, dot below, dot above
  EXPECT_EQ(out[0], 0x73u);
  EXPECT_EQ(out[1], 0x323u);
  EXPECT_EQ(out[2], 0x307u);
  EXPECT_EQ(oruUCS4Decompose(0xFB01, 1, out, 4), 1u);
  EXPECT_EQ(oruUCS4Decompose(0xFB01, 0, out, 4), 2u);
  EXPECT_EQ(oruUCS4Decompose(0x41, 0, out, 0), 1u);
  uint16_t u16[4];
  EXPECT_EQ(oruUTF16Decompose(0x1D15E, 1, u16, 4), 4u);  // two supplementary code points
  EXPECT_EQ(oruUTF16Decompose(0x1D15E, 1, u16, 1), 4u);
  char u8[16] = {};
  EXPECT_EQ(oruUTF8Decompose(0xC5, 1, u8, 2), 3u);
  EXPECT_STREQ(u8, "A");  // the two-byte mark did not fit whole
}

TEST(Normalize, CanonicalOrderingInPlace) {
  uint32_t s[] = {0x61, 0x302, 0x323, 0x301, 0x62, 0x301, 0x316};
  oruUCS4CanonicalOrdering(s, 7);
  EXPECT_EQ(U32(s, s + 7), (U32{0x61, 0x323, 0x302, 0x301, 0x62, 0x316, 0x301}));
  std::u16string u = u"a\u0302\u0323\xD800\u0302\u0323";
  oruUTF16CanonicalOrdering(reinterpret_cast<uint16_t*>(u.data()), static_cast<uint32_t>(u.size()));
  EXPECT_EQ(u, u"a\u0323\u0302\xD800\u0323\u0302");
  std::string b = "a\xCC\x82\xCC\xA3\xFF\xCC\x82\xCC\xA3";
  oruUTF8CanonicalOrdering(b.data(), -1);
  EXPECT_EQ(b, "a\xCC\xA3\xCC\x82\xFF\xCC\xA3\xCC\x82");
  oruUCS4CanonicalOrdering(nullptr, 3);
}

}  // namespace
