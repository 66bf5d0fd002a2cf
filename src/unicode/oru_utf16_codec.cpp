// Decoding and encoding one UTF-16 character.
#include "oru/unicode.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

extern "C" {

ORU_API uint32_t oruUTF16GetChar(const uint16_t* p) {
  uint32_t c = p[0];
  if ((c & 0xF800) == 0xD800) {
    if (!is_high_surrogate(p[0]) || !is_low_surrogate(p[1])) return kInvalidChar;
    c = combine_surrogates(p[0], p[1]);
  }
  return is_scalar(c) ? c : kInvalidChar;
}

ORU_API uint16_t* oruUTF16PutChar(uint16_t* p, uint32_t c) {
  if (!is_scalar(c)) return p;
  if (c < 0x10000) {
    p[0] = static_cast<uint16_t>(c);
    return p + 1;
  }
  p[0] = static_cast<uint16_t>(0xD800 | (((c - 0x10000) >> 10) & 0x3FF));
  p[1] = static_cast<uint16_t>(0xDC00 | (c & 0x3FF));
  return p + 2;
}

ORU_API uint16_t* oruUTF16SafePutChar(uint16_t* p, const uint16_t* end, uint32_t c) {
  if (!is_scalar(c)) return p;
  const size_t n = c < 0x10000 ? 1 : 2;
  const uintptr_t at = reinterpret_cast<uintptr_t>(p), limit = reinterpret_cast<uintptr_t>(end);
  if (at < limit && (limit - at) / sizeof(uint16_t) >= n) oruUTF16PutChar(p, c);
  return p + n;
}

}  // extern "C"
