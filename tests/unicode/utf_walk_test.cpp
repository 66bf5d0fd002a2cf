// Validation, counting, copying and searching on random text, against simple
// reference walks written here (ICU's U8_NEXT/U16_NEXT plus the scalar rule
// for validity): at every alignment, at many lengths, and with a bad byte at
// every position of a 64-byte window, which is where the wide fast paths
// meet the byte-wise loop.  Both the portable and the SSE2 engines are run,
// whichever the library itself uses.
#include <gtest/gtest.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "oru/unicode.h"
#include "unicode/oru_utf8_scan.h"

namespace {

bool scalar(int64_t c) {
  return c >= 0 && c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF) &&
         !(c >= 0xFDD0 && c <= 0xFDEF) && (c & 0xFFFF) < 0xFFFE;
}

size_t step_of(uint8_t lead) { return lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4; }

// End of the last wholly valid character.
size_t ref_validate(const uint8_t* s, size_t n) {
  size_t i = 0;
  while (i < n) {
    int32_t j = static_cast<int32_t>(i);
    UChar32 c;
    U8_NEXT(s, j, static_cast<int32_t>(n), c);
    if (c < 0 || !scalar(c)) return i;
    i = static_cast<size_t>(j);
  }
  return n;
}

uint32_t ref_count(const uint8_t* s, size_t n) {
  uint32_t count = 0;
  for (size_t i = 0; i < n; ++count) {
    if (i + step_of(s[i]) > n) break;
    i += step_of(s[i]);
  }
  return count;
}

// The lenient value of the character at i, or -1 when it runs past n.
int64_t ref_lenient(const uint8_t* s, size_t n, size_t i) {
  if (s[i] < 0x80) return s[i];
  const size_t k = (s[i] & 0xE0) == 0xC0 ? 2 : (s[i] & 0xF0) == 0xE0 ? 3 : 4;
  if (i + k > n) return -1;
  static const uint8_t lead_mask[5] = {0, 0, 0x1F, 0x0F, 0x07};
  int64_t c = s[i] & lead_mask[k];
  for (size_t t = 1; t < k; ++t) c = c << 6 | (s[i + t] & 0x3F);
  return c;
}

int64_t ref_find(const uint8_t* s, size_t n, uint32_t c) {
  for (size_t i = 0; i < n; i += step_of(s[i])) {
    if (i + step_of(s[i]) > n) return -1;
    if (ref_lenient(s, n, i) == c) return static_cast<int64_t>(i);
  }
  return -1;
}

// Random text: characters drawn from the ranges of a profile.
struct Profile {
  const char* name;
  int ascii, two, three, four;  // weights
};
constexpr Profile kProfiles[] = {
    {"ascii", 100, 0, 0, 0},
    {"latin", 85, 15, 0, 0},
    {"cjk", 5, 0, 95, 0},
    {"mixed", 40, 20, 30, 10},
};

std::vector<uint8_t> random_text(std::mt19937& rng, const Profile& p, size_t bytes) {
  std::vector<uint8_t> out;
  std::uniform_int_distribution<int> pick(0, p.ascii + p.two + p.three + p.four - 1);
  while (out.size() < bytes) {
    int r = pick(rng);
    uint32_t c;
    if ((r -= p.ascii) < 0) {
      c = rng() % 0x80;
    } else if ((r -= p.two) < 0) {
      c = 0x80 + rng() % (0x800 - 0x80);
    } else if ((r -= p.three) < 0) {
      do c = 0x800 + rng() % (0x10000 - 0x800);
      while (!scalar(c));
    } else {
      do c = 0x10000 + rng() % 0x100000;
      while (!scalar(c));
    }
    char buf[4];
    const char* e = oruUTF8PutChar(buf, c);
    out.insert(out.end(), reinterpret_cast<const uint8_t*>(buf),
               reinterpret_cast<const uint8_t*>(e));
  }
  return out;
}

// Bytes that break a sequence or start a bad one.
constexpr uint8_t kBadBytes[] = {0x80, 0xBF, 0xC0, 0xC2, 0xE0, 0xED, 0xF0, 0xF4, 0xF5, 0xFF, 0x41};

struct Engines {
  size_t (*validate)(const unsigned char*, size_t);
  uint32_t (*count)(const unsigned char*, size_t);
};

std::vector<Engines> engines() {
  std::vector<Engines> out = {
      {oru::unicode::utf8_validate_portable, oru::unicode::utf8_count_portable}};
#ifdef ORU_UTF8_SCAN_SSE2
  out.push_back({oru::unicode::utf8_validate_sse2, oru::unicode::utf8_count_sse2});
#endif
  return out;
}

// Checks every engine and the public functions on s[0, n).
void check_span(const uint8_t* s, size_t n) {
  const size_t want_valid = ref_validate(s, n);
  const uint32_t want_count = ref_count(s, n);
  for (const auto& e : engines()) {
    ASSERT_EQ(e.validate(s, n), want_valid);
    ASSERT_EQ(e.count(s, n), want_count);
  }
  const char* text = reinterpret_cast<const char*>(s);
  const char* err = nullptr;
  ASSERT_EQ(oruUTF8Validate(text, static_cast<int32_t>(n), &err), want_valid == n ? 1 : 0);
  ASSERT_EQ(err, text + want_valid);
  ASSERT_EQ(oruUTF8CharCount(text, static_cast<int32_t>(n)), want_count);
}

TEST(UtfWalk, Utf8ValidateAndCountAtEveryAlignment) {
  std::mt19937 rng(20261123);
  std::vector<uint8_t> buffer(512 + 64);
  for (const Profile& profile : kProfiles) {
    SCOPED_TRACE(profile.name);
    for (size_t align = 0; align < 16; ++align) {
      const auto text = random_text(rng, profile, 160 + rng() % 160);
      uint8_t* s = buffer.data() + align;
      std::memcpy(s, text.data(), text.size());
      const size_t n = text.size();
      // Every length: each tail of the wide loops.
      for (size_t len = 0; len <= n; ++len) ASSERT_NO_FATAL_FAILURE(check_span(s, len));
      // A bad byte at every position of a 64-byte window.
      const size_t window = rng() % (n - 64);
      for (size_t pos = window; pos < window + 64; ++pos) {
        for (uint8_t bad : kBadBytes) {
          const uint8_t saved = s[pos];
          s[pos] = bad;
          SCOPED_TRACE(testing::Message()
                       << "align " << align << " pos " << pos << " byte " << int{bad});
          ASSERT_NO_FATAL_FAILURE(check_span(s, n));
          s[pos] = saved;
        }
      }
    }
  }
}

// Whole ill-formed sequences written over valid text at every position of a
// 64-byte window: the range rules that the structure alone does not catch.
TEST(UtfWalk, Utf8RejectedSequencesAtEveryPosition) {
  const std::vector<std::vector<uint8_t>> sequences = {{0xEF, 0xB7, 0x90},
                                                       {0xEF, 0xBF, 0xBE},
                                                       {0xEF, 0xBF, 0xBF},
                                                       {0xED, 0xA0, 0x80},
                                                       {0xE0, 0x80, 0x80},
                                                       {0xE0, 0x9F, 0xBF},
                                                       {0xF4, 0x90, 0x80, 0x80},
                                                       {0xF0, 0x8F, 0xBF, 0xBF},
                                                       {0xF1, 0xBF, 0xBF, 0xBE},
                                                       {0xF3, 0xBF, 0xBF, 0xBF},
                                                       {0xC0, 0x80},
                                                       {0xC1, 0xBF},
                                                       {0xF8, 0x88, 0x80, 0x80},
                                                       {0xEF, 0xBF, 0xBD},
                                                       {0xF0, 0x9F, 0x98, 0x80}};
  std::mt19937 rng(3);
  std::vector<uint8_t> buffer(256);
  for (const Profile& profile : kProfiles) {
    const auto text = random_text(rng, profile, 100);
    for (const auto& seq : sequences) {
      for (size_t pos = 8; pos < 8 + 64; ++pos) {
        std::memcpy(buffer.data(), text.data(), text.size());
        std::memcpy(buffer.data() + pos, seq.data(), seq.size());
        SCOPED_TRACE(testing::Message()
                     << profile.name << " pos " << pos << " lead " << int{seq[0]});
        ASSERT_NO_FATAL_FAILURE(check_span(buffer.data(), text.size()));
      }
    }
  }
}

TEST(UtfWalk, Utf8CopyAndFindAgainstReference) {
  std::mt19937 rng(7);
  for (int round = 0; round < 400; ++round) {
    auto text = random_text(rng, kProfiles[round % 4], 1 + rng() % 80);
    if (round % 3 == 0) text[rng() % text.size()] = kBadBytes[rng() % sizeof kBadBytes];
    const char* src = reinterpret_cast<const char*>(text.data());
    const int32_t n = static_cast<int32_t>(text.size());

    // Copy: whole characters under the size limit and the character limit.
    const uint32_t dst_size = 1 + rng() % (text.size() + 4);
    const uint32_t max_chars = round % 2 ? 0xFFFFFFFF : rng() % 20;
    size_t limit = dst_size < text.size() ? dst_size - 1 : text.size(), want = 0;
    for (uint32_t k = 0; k < max_chars && want < limit && want + step_of(text[want]) <= limit;
         ++k) {
      want += step_of(text[want]);
    }
    std::vector<char> dst(dst_size + 2, 'x');
    ASSERT_EQ(oruUTF8Copy(dst.data(), dst_size, src, n, max_chars), dst.data());
    ASSERT_EQ(std::memcmp(dst.data(), src, want), 0);
    ASSERT_EQ(dst[want], '\0') << round;
    ASSERT_EQ(dst[want + 1], want + 1 < dst.size() - 1 ? dst[want + 1] : 'x');

    // Find: a character of the text, or a random one.
    const size_t at = rng() % text.size();
    const uint32_t c = round % 5 == 0
                           ? static_cast<uint32_t>(rng() % 0x800)
                           : static_cast<uint32_t>(ref_lenient(text.data(), text.size(), at));
    const int64_t first = ref_find(text.data(), text.size(), c);
    const char* got = oruUTF8FindChar(src, n, c);
    ASSERT_EQ(got ? got - src : -1, first) << round;
    // The last match, as the reference finds it on valid text.
    if (ref_validate(text.data(), text.size()) == text.size()) {
      int64_t last = -1;
      for (size_t i = 0; i < text.size(); i += step_of(text[i])) {
        if (ref_lenient(text.data(), text.size(), i) == c) last = static_cast<int64_t>(i);
      }
      const char* got_last = oruUTF8FindLastChar(src, n, c);
      ASSERT_EQ(got_last ? got_last - src : -1, last) << round;
    }
  }
}

TEST(UtfWalk, Utf16AgainstReference) {
  std::mt19937 rng(16);
  const uint16_t specials[] = {0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFDD0, 0xFFFE, 0xFFFF, 0x41, 0xE9};
  for (int round = 0; round < 2000; ++round) {
    std::vector<uint16_t> s;
    const size_t len = rng() % 40;
    while (s.size() < len) {
      const uint32_t r = rng() % 10;
      if (r < 3) {
        s.push_back(specials[rng() % std::size(specials)]);
      } else {
        uint16_t u[2];
        uint32_t c;
        do c = r < 6 ? rng() % 0x10000 : 0x10000 + rng() % 0x100000;
        while (!scalar(c));
        s.insert(s.end(), u, oruUTF16PutChar(u, c));
      }
    }
    const uint32_t n = static_cast<uint32_t>(s.size());
    // Validity and count.
    uint32_t valid = 0;
    while (valid < n) {
      int32_t j = static_cast<int32_t>(valid);
      UChar32 c;
      U16_NEXT(s.data(), j, static_cast<int32_t>(n), c);
      if (U_IS_SURROGATE(c) || !scalar(c)) break;
      valid = static_cast<uint32_t>(j);
    }
    uint32_t count = 0;
    for (uint32_t i = 0; i < n; ++count) {
      const uint32_t k = (s[i] & 0xFC00) == 0xD800 ? 2 : 1;
      if (i + k > n) break;
      i += k;
    }
    const uint16_t* err = nullptr;
    ASSERT_EQ(oruUTF16Validate(s.data(), n, &err), valid == n ? 1 : 0) << round;
    ASSERT_EQ(err, s.data() + valid) << round;
    ASSERT_EQ(oruUTF16CharCount(s.data(), n), count) << round;

    // Find: the first match of a value that occurs in the text.
    if (n == 0) continue;
    const uint16_t* p = s.data() + rng() % n;
    const uint32_t c = (*p & 0xFC00) == 0xD800 && p + 1 < s.data() + n
                           ? ((*p & 0x3FFu) << 10 | (p[1] & 0x3FFu)) + 0x10000
                           : *p;
    int64_t first = -1, last = -1;
    for (uint32_t i = 0; i < n;) {
      const uint32_t k = (s[i] & 0xFC00) == 0xD800 ? 2 : 1;
      if (i + k > n) break;
      const uint32_t v = k == 2 ? ((s[i] & 0x3FFu) << 10 | (s[i + 1] & 0x3FFu)) + 0x10000 : s[i];
      if (v == c) {
        if (first < 0) first = i;
        last = i;
      }
      i += k;
    }
    const uint16_t* got = oruUTF16FindChar(s.data(), n, c);
    ASSERT_EQ(got ? got - s.data() : -1, first) << round;
    if (valid == n) {
      const uint16_t* got_last = oruUTF16FindLastChar(s.data(), n, c);
      ASSERT_EQ(got_last ? got_last - s.data() : -1, last) << round;
    }
  }
}

}  // namespace
