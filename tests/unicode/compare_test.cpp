// Binary comparison: the three encodings of the same random text order alike
// and agree with ICU's code-point-order comparison; the edge cases of
// surrogates, prefixes and NUL-terminated input.
#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <cstdint>
#include <random>
#include <vector>

#include "oru/unicode.h"

namespace {

int sign(int64_t v) { return (v > 0) - (v < 0); }

struct Text {
  std::vector<uint32_t> ucs4;
  std::vector<uint16_t> utf16;
  std::vector<char> utf8;
};

Text encode(const std::vector<uint32_t>& chars) {
  Text t{chars, {}, {}};
  t.utf16.reserve(1);  // ICU takes a null string as a wrong argument, even when empty
  for (uint32_t c : chars) {
    uint16_t u[2];
    t.utf16.insert(t.utf16.end(), u, oruUTF16PutChar(u, c));
    char b[4];
    t.utf8.insert(t.utf8.end(), b, oruUTF8PutChar(b, c));
  }
  return t;
}

TEST(BinaryCompare, EncodingsAgreeWithEachOtherAndIcu) {
  std::mt19937 rng(5);
  // Characters around the places where unit order and code-point order part.
  const uint32_t alphabet[] = {0x41,   0x7F,   0x80,    0x7FF,   0x800,   0xD7FF,
                               0xE000, 0xFFFD, 0x10000, 0x1F600, 0x10FFFD};
  for (int round = 0; round < 5000; ++round) {
    std::vector<uint32_t> a(rng() % 6), b;
    for (auto& c : a) c = alphabet[rng() % std::size(alphabet)];
    b = a;
    if (rng() % 4) {  // a change or a cut somewhere, or equal
      if (!b.empty() && rng() % 2) {
        b[rng() % b.size()] = alphabet[rng() % std::size(alphabet)];
      } else {
        b.resize(rng() % 6, alphabet[rng() % std::size(alphabet)]);
      }
    }
    const Text x = encode(a), y = encode(b);
    const int want = sign(u_strCompare(reinterpret_cast<const UChar*>(x.utf16.data()),
                                       static_cast<int32_t>(x.utf16.size()),
                                       reinterpret_cast<const UChar*>(y.utf16.data()),
                                       static_cast<int32_t>(y.utf16.size()), true));
    const int32_t r4 = oruUCS4BinaryCompare(x.ucs4.data(), static_cast<uint32_t>(x.ucs4.size()),
                                            y.ucs4.data(), static_cast<uint32_t>(y.ucs4.size()));
    const int32_t r16 =
        oruUTF16BinaryCompare(x.utf16.data(), static_cast<uint32_t>(x.utf16.size()), y.utf16.data(),
                              static_cast<uint32_t>(y.utf16.size()));
    const int32_t r8 = oruUTF8BinaryCompare(x.utf8.data(), static_cast<int32_t>(x.utf8.size()),
                                            y.utf8.data(), static_cast<int32_t>(y.utf8.size()));
    ASSERT_EQ(r4, want) << round << " " << testing::PrintToString(a) << " "
                        << testing::PrintToString(b);
    ASSERT_EQ(r16, want) << round;
    ASSERT_EQ(sign(r8), want) << round;
  }
}

TEST(BinaryCompare, EdgeCases) {
  const uint16_t fffd[] = {0xFFFD}, pair[] = {0xD800, 0xDC00};
  EXPECT_EQ(oruUTF16BinaryCompare(fffd, 1, pair, 2), -1);
  EXPECT_EQ(oruUTF16BinaryCompare(pair, 2, fffd, 1), 1);
  // A lone high surrogate at the end against a full pair: raw units equal,
  // the longer remainder is greater.
  const uint16_t lone[] = {0x61, 0xD83D}, full[] = {0x61, 0xD83D, 0xDE00};
  EXPECT_EQ(oruUTF16BinaryCompare(lone, 2, full, 3), -1);
  EXPECT_EQ(oruUTF16BinaryCompare(full, 3, lone, 2), 1);
  EXPECT_EQ(oruUTF16BinaryCompare(lone, 2, lone, 2), 0);
  const uint16_t low[] = {0xDC00}, e000[] = {0xE000};
  EXPECT_EQ(oruUTF16BinaryCompare(low, 1, e000, 1), -1);  // a lone low surrogate is its own value
  EXPECT_EQ(oruUTF16BinaryCompare(low, 0, e000, 0), 0);
  EXPECT_EQ(oruUTF16BinaryCompare(e000, 0, e000, 1), -1);

  const uint32_t u[] = {1, 2, 0xFFFFFFFF};
  EXPECT_EQ(oruUCS4BinaryCompare(u, 2, u, 3), -1);
  EXPECT_EQ(oruUCS4BinaryCompare(u + 2, 1, u, 1), 1);  // unsigned order
  EXPECT_EQ(oruUCS4BinaryCompare(u, 0, u, 0), 0);

  EXPECT_EQ(oruUTF8BinaryCompare("abc", -1, "abd", -1), 'c' - 'd');  // the byte difference
  EXPECT_EQ(oruUTF8BinaryCompare("ab", -1, "abc", -1), -1);
  EXPECT_EQ(oruUTF8BinaryCompare("abc", 2, "ab", -1), 0);
  EXPECT_EQ(oruUTF8BinaryCompare(nullptr, -1, "", -1), 0);
  EXPECT_EQ(oruUTF8BinaryCompare(nullptr, -1, "a", -1), -1);
  EXPECT_GT(oruUTF8BinaryCompare("\xF0\x90\x80\x80", -1, "\xEF\xBF\xBD", -1), 0);
}

}  // namespace
