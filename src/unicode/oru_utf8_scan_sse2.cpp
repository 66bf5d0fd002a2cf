// Validation and counting with SSE2, 16 bytes per step.
//
// Runs of ASCII are skipped 128 bytes at a time.  A block with other bytes is
// checked for structure: the continuation bytes (10xxxxxx) must be exactly
// the positions that the lead bytes of the block announce.  When they are,
// the characters of the block start at its non-continuation bytes (so the
// count is their number), and every two- and three-byte character whose lead
// is not one of C0, C1, E0, ED, EF is valid without further tests; only those
// leads and F0-FF, which carry range rules (overlong forms, surrogates,
// noncharacters, the end of the code space), are checked one by one.  A
// block that breaks the structure is ill-formed somewhere and goes through
// the byte-wise loop, which finds the exact position.
#include "unicode/oru_utf8_scan.h"

#ifdef ORU_UTF8_SCAN_SSE2

#include <emmintrin.h>

#include <bit>

#include "unicode/oru_utf_internal.h"

namespace oru::unicode {
namespace {

__m128i load(const unsigned char* p) noexcept {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Unsigned x >= bound, bytewise.
__m128i at_least(__m128i x, unsigned char bound) noexcept {
  const __m128i flip = _mm_set1_epi8(static_cast<char>(0x80));
  return _mm_cmpgt_epi8(_mm_xor_si128(x, flip),
                        _mm_set1_epi8(static_cast<char>((bound - 1) ^ 0x80)));
}

__m128i equal(__m128i x, unsigned char value) noexcept {
  return _mm_cmpeq_epi8(x, _mm_set1_epi8(static_cast<char>(value)));
}

struct Structure {
  unsigned continuation;  // bit j: byte j is 10xxxxxx
  bool matches;           // the continuation bytes are exactly those announced
};

Structure structure(__m128i x) noexcept {
  // 0x80-0xBF are the signed bytes below -64.
  const unsigned actual =
      static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(_mm_set1_epi8(-64), x)));
  const __m128i announced = _mm_or_si128(
      _mm_or_si128(_mm_slli_si128(at_least(x, 0xC0), 1), _mm_slli_si128(at_least(x, 0xE0), 2)),
      _mm_slli_si128(at_least(x, 0xF0), 3));
  return {actual, actual == static_cast<unsigned>(_mm_movemask_epi8(announced))};
}

// Leads whose characters need more than the structure: C0, C1, E0, ED, EF
// and F0-FF.
unsigned special_leads(__m128i x) noexcept {
  const __m128i pair = equal(_mm_and_si128(x, _mm_set1_epi8(static_cast<char>(0xFE))), 0xC0);
  const __m128i three = _mm_or_si128(equal(x, 0xE0), equal(x, 0xED));
  return static_cast<unsigned>(
      _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(pair, three), at_least(x, 0xEF))));
}

// Advances i over ASCII bytes; stops at the first non-ASCII byte, or where
// fewer than 16 bytes are left.
size_t skip_ascii(const unsigned char* s, size_t n, size_t i) noexcept {
  while (n - i >= 128) {
    const __m128i a = _mm_or_si128(_mm_or_si128(load(s + i), load(s + i + 16)),
                                   _mm_or_si128(load(s + i + 32), load(s + i + 48)));
    const __m128i b = _mm_or_si128(_mm_or_si128(load(s + i + 64), load(s + i + 80)),
                                   _mm_or_si128(load(s + i + 96), load(s + i + 112)));
    if (_mm_movemask_epi8(_mm_or_si128(a, b)) != 0) break;
    i += 128;
  }
  while (n - i >= 16) {
    const int mask = _mm_movemask_epi8(load(s + i));
    if (mask != 0) return i + static_cast<size_t>(std::countr_zero(static_cast<unsigned>(mask)));
    i += 16;
  }
  return i;
}

// A block is taken at i when its last character, which may run up to three
// bytes past it, still ends inside the text.
constexpr size_t kBlockReach = 16 + 3;

size_t last_lead(unsigned continuation) noexcept {
  return static_cast<size_t>(31 - std::countl_zero(~continuation & 0xFFFFu));
}

}  // namespace

size_t utf8_validate_sse2(const unsigned char* s, size_t n) noexcept {
  size_t i = 0;
  while (n - i >= kBlockReach) {
    const __m128i x = load(s + i);
    if (_mm_movemask_epi8(x) == 0) {
      i = skip_ascii(s, n, i + 16);
      continue;
    }
    const Structure st = structure(x);
    if (!st.matches) {
      for (const size_t stop = i + 16; i < stop;) {
        if (s[i] < 0x80) {
          ++i;
          continue;
        }
        const size_t k = utf8_valid_sequence(s, n, i);
        if (k == 0) return i;
        i += k;
      }
      continue;
    }
    for (unsigned special = special_leads(x); special != 0; special &= special - 1) {
      const size_t at = i + static_cast<size_t>(std::countr_zero(special));
      if (utf8_valid_sequence(s, n, at) == 0) return at;
    }
    // The last character may run past the block: its continuation bytes
    // there have not been seen yet (a special lead has been checked whole).
    const size_t lead = i + last_lead(st.continuation);
    const size_t next = lead + utf8_seq_len(s[lead]);
    for (size_t t = i + 16; t < next; ++t) {
      if (!is_continuation(s[t])) return lead;
    }
    i = next;
  }
  while (i < n) {
    if (s[i] < 0x80) {
      ++i;
      continue;
    }
    const size_t k = utf8_valid_sequence(s, n, i);
    if (k == 0) return i;
    i += k;
  }
  return n;
}

uint32_t utf8_count_sse2(const unsigned char* s, size_t n) noexcept {
  size_t i = 0;
  uint32_t count = 0;
  while (n - i >= kBlockReach) {
    const __m128i x = load(s + i);
    if (_mm_movemask_epi8(x) == 0) {
      const size_t end = skip_ascii(s, n, i + 16);
      count += static_cast<uint32_t>(end - i);
      i = end;
      continue;
    }
    const Structure st = structure(x);
    if (!st.matches) {
      // Stray or missing continuation bytes: step by lead byte as always.
      for (const size_t stop = i + 16; i < stop; ++count) i += utf8_seq_len(s[i]);
      continue;
    }
    count += static_cast<uint32_t>(std::popcount(~st.continuation & 0xFFFFu));
    const size_t lead = i + last_lead(st.continuation);
    i = lead + utf8_seq_len(s[lead]);
  }
  while (i < n) {
    const size_t k = utf8_seq_len(s[i]);
    if (k > n - i) break;  // an incomplete final sequence is not counted
    i += k;
    ++count;
  }
  return count;
}

}  // namespace oru::unicode

#endif  // ORU_UTF8_SCAN_SSE2
