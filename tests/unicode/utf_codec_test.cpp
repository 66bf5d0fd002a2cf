// Decoding and encoding single characters: every scalar value through every
// encoder and decoder, checked against ICU's macros; every short byte and
// unit sequence through the checked decoders against ICU plus the scalar
// rule; the rejected forms and the documented behaviour of the edge cases.
#include <gtest/gtest.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "oru/unicode.h"

namespace {

constexpr uint32_t kBad = 0xFFFFFFFF;

bool scalar(int64_t c) {
  return c >= 0 && c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF) &&
         !(c >= 0xFDD0 && c <= 0xFDEF) && (c & 0xFFFF) < 0xFFFE;
}

TEST(UtfCodec, EveryCodePointRoundTrips) {
  for (uint32_t c = 0; c <= 0x110001; ++c) {
    char buf[8];
    std::memset(buf, 0x55, sizeof buf);
    uint16_t units[4] = {0x5555, 0x5555, 0x5555, 0x5555};
    char* end8 = oruUTF8PutChar(buf, c);
    uint16_t* end16 = oruUTF16PutChar(units, c);
    if (!scalar(c)) {
      ASSERT_EQ(end8, buf) << std::hex << c;
      ASSERT_EQ(end16, units) << std::hex << c;
      ASSERT_EQ(buf[0], 0x55);
      ASSERT_EQ(units[0], 0x5555);
      ASSERT_EQ(oruUTF8SafePutChar(buf, buf + 8, static_cast<int32_t>(c)), buf);
      ASSERT_EQ(oruUTF16SafePutChar(units, units + 4, c), units);
      continue;
    }
    uint8_t icu8[4];
    int32_t n8 = 0;
    U8_APPEND_UNSAFE(icu8, n8, c);
    uint16_t icu16[2];
    int32_t n16 = 0;
    U16_APPEND_UNSAFE(icu16, n16, c);
    ASSERT_EQ(end8 - buf, n8) << std::hex << c;
    ASSERT_EQ(std::memcmp(buf, icu8, n8), 0) << std::hex << c;
    ASSERT_EQ(end16 - units, n16) << std::hex << c;
    ASSERT_EQ(std::memcmp(units, icu16, n16 * 2), 0) << std::hex << c;
    ASSERT_EQ(oruUTF8GetChar(buf), c);
    ASSERT_EQ(_oruUTF8GetChar1(buf), c);
    if (c >= 0x80) {
      ASSERT_EQ(_oruUTF8GetChar2(buf), c);
    }
    if (c >= 0x800) {
      ASSERT_EQ(_oruUTF8GetChar3(buf), c);
    }
    ASSERT_EQ(oruUTF16GetChar(units), c);

    // The safe encoders: exact room writes, one short writes nothing, and
    // both report the full length.
    char safe[8];
    std::memset(safe, 0x55, sizeof safe);
    ASSERT_EQ(oruUTF8SafePutChar(safe, safe + n8 - 1, static_cast<int32_t>(c)), safe + n8);
    ASSERT_EQ(safe[0], 0x55);
    ASSERT_EQ(oruUTF8SafePutChar(safe, safe + n8, static_cast<int32_t>(c)), safe + n8);
    ASSERT_EQ(std::memcmp(safe, icu8, n8), 0);
    uint16_t safe16[2] = {0x5555, 0x5555};
    ASSERT_EQ(oruUTF16SafePutChar(safe16, safe16 + n16 - 1, c), safe16 + n16);
    ASSERT_EQ(safe16[0], 0x5555);
    ASSERT_EQ(oruUTF16SafePutChar(safe16, safe16 + n16, c), safe16 + n16);
    ASSERT_EQ(std::memcmp(safe16, icu16, n16 * 2), 0);
  }
  char b[4];
  EXPECT_EQ(oruUTF8SafePutChar(b, b + 4, -1), b);
  EXPECT_EQ(oruUTF8SafePutChar(b, b + 4, INT32_MIN), b);
}

// The checked decoder on an exact-length sequence, by ICU and the scalar rule.
uint32_t expected_utf8(const uint8_t* s, int32_t n) {
  int32_t i = 0;
  UChar32 c;
  U8_NEXT(s, i, n, c);
  return (c >= 0 && i == n && scalar(c)) ? static_cast<uint32_t>(c) : kBad;
}

int32_t announced_length(uint8_t lead) {
  return lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

TEST(UtfCodec, CheckedUtf8DecoderAgainstIcu) {
  // Every one-, two- and three-byte sequence; four-byte ones with every
  // second byte and the interesting third and fourth bytes.
  const uint8_t tails[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xF0, 0xFF};
  uint8_t s[4];
  for (unsigned b0 = 0; b0 < 256; ++b0) {
    s[0] = static_cast<uint8_t>(b0);
    const int32_t n = announced_length(s[0]);
    if (n == 1) {
      ASSERT_EQ(oruUTF8GetChar(reinterpret_cast<char*>(s)), b0 < 0x80 ? b0 : kBad) << b0;
      continue;
    }
    for (unsigned b1 = 0; b1 < 256; ++b1) {
      s[1] = static_cast<uint8_t>(b1);
      if (n == 2) {
        ASSERT_EQ(oruUTF8GetChar(reinterpret_cast<char*>(s)), expected_utf8(s, 2))
            << b0 << " " << b1;
        continue;
      }
      for (unsigned b2 = 0; b2 < 256; ++b2) {
        s[2] = static_cast<uint8_t>(b2);
        if (n == 3) {
          ASSERT_EQ(oruUTF8GetChar(reinterpret_cast<char*>(s)), expected_utf8(s, 3))
              << std::hex << b0 << " " << b1 << " " << b2;
          continue;
        }
        if (std::memchr(tails, static_cast<int>(b2), sizeof tails) == nullptr) continue;
        for (uint8_t b3 : tails) {
          s[3] = b3;
          // ICU reads no 5- and 6-byte forms; those leads are invalid here.
          const uint32_t want = b0 >= 0xF8 ? kBad : expected_utf8(s, 4);
          ASSERT_EQ(oruUTF8GetChar(reinterpret_cast<char*>(s)), want)
              << std::hex << b0 << " " << b1 << " " << b2 << " " << unsigned{b3};
        }
      }
    }
  }
}

TEST(UtfCodec, CheckedUtf16DecoderAgainstIcu) {
  const uint16_t seconds[] = {0x0000, 0x0041, 0xD7FF, 0xD800, 0xDBFF, 0xDC00,
                              0xDFFE, 0xDFFF, 0xE000, 0xFDD0, 0xFFFE, 0xFFFF};
  for (uint32_t u = 0; u <= 0xFFFF; ++u) {
    for (uint16_t second : seconds) {
      const uint16_t s[2] = {static_cast<uint16_t>(u), second};
      int32_t i = 0;
      UChar32 c;
      U16_NEXT(s, i, 2, c);
      const uint32_t want = (U_IS_SURROGATE(c) || !scalar(c)) ? kBad : static_cast<uint32_t>(c);
      ASSERT_EQ(oruUTF16GetChar(s), want) << std::hex << u << " " << second;
    }
  }
}

TEST(UtfCodec, RejectedForms) {
  const std::string bad[] = {"\xC0\x80",
                             "\xC1\xBF",
                             "\xE0\x80\x80",
                             "\xE0\x9F\xBF",
                             "\xED\xA0\x80",
                             "\xED\xBF\xBF",
                             "\xEF\xB7\x90",
                             "\xEF\xB7\xAF",
                             "\xEF\xBF\xBE",
                             "\xEF\xBF\xBF",
                             "\xF0\x8F\xBF\xBF",
                             "\xF0\x9F\xBF\xBE",
                             "\xF4\x8F\xBF\xBF",
                             "\xF4\x90\x80\x80",
                             "\xF7\xBF\xBF\xBF",
                             "\xF8\x88\x80\x80",
                             "\x80",
                             "\xBF",
                             "\xE2\x28\xA1",
                             "\xE2\x82\xEC",
                             "\xF0\x90\x80\x7F"};
  for (const auto& s : bad) {
    EXPECT_EQ(oruUTF8GetChar(s.c_str()), kBad) << testing::PrintToString(s);
    const char* err = nullptr;
    EXPECT_EQ(oruUTF8Validate(s.data(), static_cast<int32_t>(s.size()), &err), 0);
    EXPECT_EQ(err, s.data());
  }
  for (uint32_t c :
       {0xD800u, 0xDFFFu, 0xFDD0u, 0xFDEFu, 0xFFFEu, 0x1FFFFu, 0x10FFFEu, 0x110000u, 0xFFFFFFFFu}) {
    char b[4] = {};
    uint16_t u[2] = {};
    EXPECT_EQ(oruUTF8PutChar(b, c), b) << std::hex << c;
    EXPECT_EQ(oruUTF16PutChar(u, c), u) << std::hex << c;
    EXPECT_EQ(b[0], 0);
  }
  char b[4];
  EXPECT_EQ(oruUTF8PutChar(b, 0xFDF0) - b, 3);
  const uint16_t lone[][2] = {{0xDC00, 0xDC00}, {0xD800, 0x0041}, {0xD800, 0xD800}, {0xFFFE, 0}};
  for (const auto& s : lone) EXPECT_EQ(oruUTF16GetChar(s), kBad);
}

TEST(UtfCodec, UncheckedDecodersAreLenient) {
  // Continuation bytes are not looked at; a stray continuation or an
  // F8-FF lead decodes as a four-byte form.
  EXPECT_EQ(_oruUTF8GetChar1("\xC0\x80"), 0u);
  EXPECT_EQ(_oruUTF8GetChar1("\xC3\x29"), 0xE9u);
  EXPECT_EQ(_oruUTF8GetChar1("\xED\xA0\x80"), 0xD800u);
  EXPECT_EQ(_oruUTF8GetChar1("\x80\x81\x82\x83"), 0x1083u);
  EXPECT_EQ(_oruUTF8GetChar2("\xFF\xBF\xBF\xBF"), 0x1FFFFFu);
  EXPECT_EQ(_oruUTF8GetChar3("\xF4\x90\x80\x80"), 0x110000u);
}

TEST(UtfCodec, SafePutCharMeasuresTheNeededSize) {
  const uint32_t text[] = {0x41, 0xE9, 0x20AC, 0x1F600, 0xD800, 0x10FFFD};
  char* p = nullptr;
  char none[1];
  p = none;
  for (uint32_t c : text) p = oruUTF8SafePutChar(p, none, static_cast<int32_t>(c));
  EXPECT_EQ(p - none, 1 + 2 + 3 + 4 + 0 + 4);
  uint16_t none16[1];
  uint16_t* q = none16;
  for (uint32_t c : text) q = oruUTF16SafePutChar(q, none16, c);
  EXPECT_EQ(q - none16, 1 + 1 + 1 + 2 + 0 + 2);
}

TEST(UtfCodec, Navigation) {
  const char s[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";  // a é € 😀 z
  const char* end = s + sizeof s - 1;
  const char* starts[] = {s, s + 1, s + 3, s + 6, s + 10};
  for (int k = 1; k < 5; ++k) {
    EXPECT_EQ(oruUTF8PrevChar(starts[k]), starts[k - 1]);
    EXPECT_EQ(oruUTF8FindPrevChar(s, starts[k]), starts[k - 1]);
    EXPECT_EQ(oruUTF8FindNextChar(starts[k - 1], end), starts[k]);
  }
  EXPECT_EQ(oruUTF8FindNextChar(starts[4], end), nullptr);
  EXPECT_EQ(oruUTF8FindNextChar(s + 6, s + 9), nullptr);  // reaches end inside the character
  EXPECT_EQ(oruUTF8FindPrevChar(s, s), nullptr);
  EXPECT_EQ(oruUTF8FindPrevChar(s + 2, s + 3), nullptr);  // start is a continuation byte
  EXPECT_EQ(oruUTF8FindPrevChar(s + 1, s + 3), s + 1);

  const uint16_t u[] = {0x61, 0xD83D, 0xDE00, 0xDC00, 0xDC01, 0x62};
  EXPECT_EQ(oruUTF16PrevChar(u + 3), u + 1);  // just after a pair: the high surrogate
  EXPECT_EQ(oruUTF16PrevChar(u + 5), u + 1);  // a run of low surrogates is stepped over whole
  EXPECT_EQ(oruUTF16PrevChar(u + 6), u + 5);
  EXPECT_EQ(oruUTF16FindPrevChar(u + 2, u + 5), nullptr);
  EXPECT_EQ(oruUTF16FindPrevChar(u, u + 3), u + 1);
  EXPECT_EQ(oruUTF16FindPrevChar(u, u), nullptr);
  EXPECT_EQ(oruUTF16FindNextChar(u, u + 6), u + 1);
  EXPECT_EQ(oruUTF16FindNextChar(u + 1, u + 6), u + 5);
  EXPECT_EQ(oruUTF16FindNextChar(u + 5, u + 6), nullptr);
}

TEST(UtfCodec, CountCopyValidateExamples) {
  EXPECT_EQ(oruUTF8CharCount("\xE2\x82", 2), 0u);
  EXPECT_EQ(oruUTF8CharCount("a\x80", 2), 2u);
  EXPECT_EQ(oruUTF8CharCount("a\xC3\xA9", -1), 2u);
  EXPECT_EQ(oruUTF8CharCount(nullptr, -1), 0u);
  EXPECT_EQ(oruUTF8CharCount("", 0), 0u);

  const char* err = nullptr;
  const char empty[] = "";
  EXPECT_EQ(oruUTF8Validate(empty, 0, &err), 1);
  EXPECT_EQ(err, empty);
  const char abff[] = "ab\xFF";
  EXPECT_EQ(oruUTF8Validate(abff, 3, &err), 0);
  EXPECT_EQ(err, abff + 2);
  EXPECT_EQ(oruUTF8Validate(abff, -1, nullptr), 0);
  EXPECT_EQ(oruUTF8Validate("ab\xE2\x82\xAC", -1, &err), 1);
  EXPECT_EQ(oruUTF8Validate("ab\xE2\x82\xAC", 4, nullptr), 0);  // cut inside the character
  EXPECT_EQ(oruUTF8Validate(nullptr, -1, nullptr), 1);

  char dst[8];
  std::memset(dst, 'x', sizeof dst);
  EXPECT_EQ(oruUTF8Copy(dst, 4, "abcdef", 6, 0xFFFFFFFF), dst);
  EXPECT_STREQ(dst, "abc");
  std::memset(dst, 'x', sizeof dst);
  oruUTF8Copy(dst, 4, "ab\xE2\x82\xAC", 5, 0xFFFFFFFF);
  EXPECT_STREQ(dst, "ab");
  std::memset(dst, 'x', sizeof dst);
  oruUTF8Copy(dst, 3, "abc", -1, 0xFFFFFFFF);  // no truncation: the terminator at dst[3]
  EXPECT_STREQ(dst, "abc");
  std::memset(dst, 'x', sizeof dst);
  oruUTF8Copy(dst, 8, "a\xC3\xA9z", -1, 2);
  EXPECT_STREQ(dst, "a\xC3\xA9");
  std::memset(dst, 'x', sizeof dst);
  oruUTF8Copy(dst, 0, "abc", 3, 0xFFFFFFFF);
  EXPECT_EQ(dst[0], 'x');
  oruUTF8Copy(dst, 0, nullptr, -1, 0xFFFFFFFF);
  EXPECT_EQ(dst[0], '\0');
  dst[0] = 'x';
  oruUTF8Copy(dst, 8, nullptr, 5, 0xFFFFFFFF);
  EXPECT_EQ(dst[0], '\0');

  const uint16_t u[] = {0x61, 0xD83D, 0xDE00, 0x62};
  uint16_t d[4] = {9, 9, 9, 9};
  oruUTF16Copy(d, 2, u, 4, 0xFFFFFFFF);  // the pair would not fit
  EXPECT_EQ(d[0], 0x61);
  EXPECT_EQ(d[1], 9);
  oruUTF16Copy(d, 4, u, 4, 2);
  EXPECT_EQ(d[2], 0xDE00);
  EXPECT_EQ(d[3], 9);
  EXPECT_EQ(oruUTF16CharCount(u, 4), 3u);
  EXPECT_EQ(oruUTF16CharCount(u, 2), 1u);  // a final high surrogate is not counted
}

TEST(UtfCodec, SearchExamples) {
  const uint16_t u[] = {0x61, 0xD83D, 0xDE00, 0x62, 0xD83D};
  EXPECT_EQ(oruUTF16FindChar(u, 5, 0x1F600), u + 1);
  EXPECT_EQ(oruUTF16FindLastChar(u, 5, 0x1F600), u + 1);
  EXPECT_EQ(oruUTF16FindChar(u, 5, 0xD83D), nullptr);  // never paired with what is past the end
  EXPECT_EQ(oruUTF16FindLastChar(u, 5, 0xD83D), nullptr);
  EXPECT_EQ(oruUTF16FindLastChar(u, 5, 0x61), u);
  EXPECT_EQ(oruUTF16FindChar(u, 0, 0x61), nullptr);

  const char s[] =
      "\x80"
      "ab\xE2\x82\xAC"
      "a\xE2\x82";
  EXPECT_EQ(oruUTF8FindChar(s, -1, 0x20AC), s + 3);
  EXPECT_EQ(oruUTF8FindLastChar(s, -1, 'a'), s + 6);
  EXPECT_EQ(oruUTF8FindChar(s, -1, 'a'), s + 1);
  EXPECT_EQ(oruUTF8FindLastChar(s, -1, 0x20AC), s + 3);
  EXPECT_EQ(oruUTF8FindLastChar("\x80\x80", -1, 0), nullptr);
  EXPECT_EQ(oruUTF8FindChar(nullptr, -1, 0), nullptr);
  const char overlong[] = "\xC0\x80";  // decoded leniently as U+0000
  EXPECT_EQ(oruUTF8FindChar(overlong, 2, 0), overlong);
  EXPECT_EQ(oruUTF8FindLastChar(overlong, 2, 0), overlong);
}

}  // namespace
