// Searching UTF-8 and UTF-16 text for a code point.  Nothing is validated:
// each character is decoded leniently, as the unchecked decoders do, and
// compared like any other value.  A character is never decoded from bytes
// beyond the end of the string.
#include "oru/unicode.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

namespace {

// The lenient value of the sequence at p with `avail` bytes left; false when
// the sequence its lead byte announces runs past them (a stray continuation
// byte announces four, as for the unchecked decoder).
bool lenient_utf8(const unsigned char* p, size_t avail, uint32_t& c) noexcept {
  const unsigned b0 = p[0];
  if (b0 < 0x80) {
    c = b0;
    return true;
  }
  const size_t n = (b0 & 0xE0) == 0xC0 ? 2 : (b0 & 0xF0) == 0xE0 ? 3 : 4;
  if (n > avail) return false;
  c = _oruUTF8GetChar2(reinterpret_cast<const char*>(p));
  return true;
}

uint32_t lenient_utf16(const uint16_t* p) noexcept {
  return is_high_surrogate(p[0]) ? combine_surrogates(p[0], p[1]) : p[0];
}

}  // namespace

extern "C" {

ORU_API const char* oruUTF8FindChar(const char* s, int32_t len, uint32_t c) {
  const unsigned char* p = bytes(s);
  const size_t n = utf8_length(s, len);
  for (size_t i = 0; i < n;) {
    const size_t k = utf8_seq_len(p[i]);
    if (k > n - i) return nullptr;
    uint32_t value;
    if (lenient_utf8(p + i, n - i, value) && value == c) return s + i;
    i += k;
  }
  return nullptr;
}

ORU_API const char* oruUTF8FindLastChar(const char* s, int32_t len, uint32_t c) {
  const unsigned char* first = bytes(s);
  const unsigned char* end = first + utf8_length(s, len);
  while (first < end && is_continuation(*first)) ++first;
  if (first == end) return nullptr;
  // Start of the last character whose sequence fits before end; bytes of an
  // incomplete final sequence are dropped one at a time.
  const unsigned char* p;
  for (;;) {
    p = end - 1;
    while (p > first && is_continuation(*p)) --p;
    if (utf8_seq_len(*p) <= static_cast<size_t>(end - p)) break;
    if (--end == first) return nullptr;
  }
  for (;;) {
    uint32_t value;
    if (lenient_utf8(p, static_cast<size_t>(end - p), value) && value == c) {
      return s + (p - bytes(s));
    }
    if (p == first) return nullptr;
    --p;
    while (p > first && is_continuation(*p)) --p;
  }
}

ORU_API const uint16_t* oruUTF16FindChar(const uint16_t* s, uint32_t len, uint32_t c) {
  for (uint32_t i = 0; i < len;) {
    const uint32_t k = is_high_surrogate(s[i]) ? 2 : 1;
    if (k > len - i) return nullptr;  // a final high surrogate is never paired with what follows
    if (lenient_utf16(s + i) == c) return s + i;
    i += k;
  }
  return nullptr;
}

ORU_API const uint16_t* oruUTF16FindLastChar(const uint16_t* s, uint32_t len, uint32_t c) {
  const uint16_t* first = s;
  const uint16_t* end = s + len;
  while (first < end && is_low_surrogate(*first)) ++first;
  if (first == end) return nullptr;
  const uint16_t* p;
  for (;;) {
    p = end - 1;
    while (p > first && is_low_surrogate(*p)) --p;
    if ((is_high_surrogate(*p) ? 2 : 1) <= end - p) break;
    if (--end == first) return nullptr;
  }
  for (;;) {
    if (lenient_utf16(p) == c) return p;
    if (p == first) return nullptr;
    --p;
    while (p > first && is_low_surrogate(*p)) --p;
  }
}

}  // extern "C"
