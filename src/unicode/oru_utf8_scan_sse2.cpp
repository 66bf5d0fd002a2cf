// Validation and counting with SSE2: runs of ASCII are skipped 64 bytes at a
// time (four loads OR-ed into one sign-bit test), then 16 at a time to find
// the first non-ASCII byte; multi-byte text goes through the same byte-wise
// checks as the portable engine.
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

// Advances i over ASCII bytes; stops at the first non-ASCII byte, or near n
// (fewer than 16 bytes left), where the caller's byte loop takes over.
size_t skip_ascii(const unsigned char* s, size_t n, size_t i) noexcept {
  while (i + 64 <= n) {
    const __m128i any = _mm_or_si128(_mm_or_si128(load(s + i), load(s + i + 16)),
                                     _mm_or_si128(load(s + i + 32), load(s + i + 48)));
    if (_mm_movemask_epi8(any) != 0) break;
    i += 64;
  }
  while (i + 16 <= n) {
    const int mask = _mm_movemask_epi8(load(s + i));
    if (mask != 0) return i + static_cast<size_t>(std::countr_zero(static_cast<unsigned>(mask)));
    i += 16;
  }
  return i;
}

}  // namespace

size_t utf8_validate_sse2(const unsigned char* s, size_t n) noexcept {
  size_t i = 0;
  while (i < n) {
    if (s[i] < 0x80) {
      i = skip_ascii(s, n, i + 1);
      while (i < n && s[i] < 0x80 && n - i < 16) ++i;
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
  while (i < n) {
    if (s[i] < 0x80) {
      const size_t run_start = i;
      i = skip_ascii(s, n, i + 1);
      while (i < n && s[i] < 0x80 && n - i < 16) ++i;
      count += static_cast<uint32_t>(i - run_start);
      continue;
    }
    const size_t k = utf8_seq_len(s[i]);
    if (k > n - i) break;  // an incomplete final sequence is not counted
    i += k;
    ++count;
  }
  return count;
}

}  // namespace oru::unicode

#endif  // ORU_UTF8_SCAN_SSE2
