// Rules shared by the UTF-8 and UTF-16 functions: the scalar-value test, the
// sequence length by lead byte, and the resolution of UTF-8 lengths.
#ifndef ORU_SRC_UNICODE_ORU_UTF_INTERNAL_H
#define ORU_SRC_UNICODE_ORU_UTF_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace oru::unicode {

constexpr uint32_t kInvalidChar = 0xFFFFFFFF;

// At most 0x10FFFF, no surrogate, not U+FDD0..U+FDEF, not U+xxFFFE/xxFFFF.
constexpr bool is_scalar(uint32_t c) noexcept {
  return c <= 0x10FFFF && (c & 0xFFF800) != 0xD800 && c - 0xFDD0 >= 0x20 && (c & 0xFFFE) != 0xFFFE;
}

// Bytes of a sequence by lead byte >> 4; no validation: a stray continuation
// byte is a one-byte step, 0xF8-0xFF a four-byte one.
inline constexpr unsigned char utf8SeqLen[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 3, 4};

constexpr unsigned utf8_seq_len(unsigned char lead) noexcept { return utf8SeqLen[lead >> 4]; }
constexpr bool is_continuation(unsigned char b) noexcept { return (b & 0xC0) == 0x80; }
constexpr bool is_high_surrogate(uint16_t u) noexcept { return (u & 0xFC00) == 0xD800; }
constexpr bool is_low_surrogate(uint16_t u) noexcept { return (u & 0xFC00) == 0xDC00; }
constexpr uint32_t combine_surrogates(uint16_t hi, uint16_t lo) noexcept {
  return ((uint32_t{hi} & 0x3FF) << 10 | (uint32_t{lo} & 0x3FF)) + 0x10000;
}

// A UTF-8 length: negative means up to the first zero byte, and a null
// string with a negative length is empty.
inline size_t utf8_length(const char* s, int32_t len) noexcept {
  if (len >= 0) return static_cast<size_t>(len);
  return s ? std::strlen(s) : 0;
}

inline const unsigned char* bytes(const char* p) noexcept {
  return reinterpret_cast<const unsigned char*>(p);
}

// Checks the non-ASCII sequence at s[i] (i < n) and returns its length, or 0
// when it is ill-formed, incomplete, overlong or not a scalar value.
inline size_t utf8_valid_sequence(const unsigned char* s, size_t n, size_t i) noexcept {
  const unsigned b0 = s[i];
  const size_t left = n - i;
  if (b0 < 0xC2) return 0;  // stray continuation byte, or lead of an overlong pair
  if (b0 < 0xE0) return (left >= 2 && is_continuation(s[i + 1])) ? 2 : 0;
  if (b0 < 0xF0) {
    if (left < 3) return 0;
    const unsigned b1 = s[i + 1], b2 = s[i + 2];
    if (((b1 & b2) & 0x80) == 0 || ((b1 | b2) & 0x40) != 0) return 0;
    const uint32_t c = (b0 & 0x0F) << 12 | (b1 & 0x3F) << 6 | (b2 & 0x3F);
    return (c >= 0x800 && is_scalar(c)) ? 3 : 0;
  }
  if (b0 < 0xF8) {
    if (left < 4) return 0;
    const unsigned b1 = s[i + 1], b2 = s[i + 2], b3 = s[i + 3];
    if (((b1 & b2 & b3) & 0x80) == 0 || ((b1 | b2 | b3) & 0x40) != 0) return 0;
    const uint32_t c = (b0 & 0x07) << 18 | (b1 & 0x3F) << 12 | (b2 & 0x3F) << 6 | (b3 & 0x3F);
    return (c >= 0x10000 && is_scalar(c)) ? 4 : 0;
  }
  return 0;
}

}  // namespace oru::unicode

#endif  // ORU_SRC_UNICODE_ORU_UTF_INTERNAL_H
