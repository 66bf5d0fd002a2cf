// Walking UTF-16 text: stepping back and forth, counting, copying, validating.
#include <cstring>

#include "oru/unicode.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

extern "C" {

ORU_API const uint16_t* oruUTF16PrevChar(const uint16_t* p) {
  // A whole run of low surrogates is stepped over, paired or not.
  do {
    --p;
  } while (is_low_surrogate(*p));
  return p;
}

ORU_API const uint16_t* oruUTF16FindNextChar(const uint16_t* p, const uint16_t* end) {
  if (p >= end) return nullptr;
  ++p;
  while (p < end && is_low_surrogate(*p)) ++p;
  return p < end ? p : nullptr;
}

ORU_API const uint16_t* oruUTF16FindPrevChar(const uint16_t* start, const uint16_t* p) {
  if (p <= start) return nullptr;
  --p;
  while (is_low_surrogate(*p)) {
    if (p == start) return nullptr;
    --p;
  }
  return p;
}

ORU_API uint32_t oruUTF16CharCount(const uint16_t* s, uint32_t len) {
  uint32_t i = 0, count = 0;
  while (i < len) {
    const uint32_t k = is_high_surrogate(s[i]) ? 2 : 1;
    if (k > len - i) break;
    i += k;
    ++count;
  }
  return count;
}

ORU_API uint16_t* oruUTF16Copy(uint16_t* dst, uint32_t dstLen, const uint16_t* src, uint32_t srcLen,
                               uint32_t maxChars) {
  const uint32_t limit = dstLen < srcLen ? dstLen : srcLen;
  uint32_t i = 0;
  for (uint32_t chars = 0; i < limit && chars < maxChars; ++chars) {
    const uint32_t k = is_high_surrogate(src[i]) ? 2 : 1;
    if (k > limit - i) break;
    i += k;
  }
  if (i != 0) std::memcpy(dst, src, i * sizeof(uint16_t));
  return dst;
}

ORU_API int oruUTF16Validate(const uint16_t* s, uint32_t len, const uint16_t** errPos) {
  uint32_t i = 0;
  while (i < len) {
    uint32_t c = s[i];
    uint32_t k = 1;
    if ((c & 0xF800) == 0xD800) {
      if (!is_high_surrogate(s[i]) || len - i < 2 || !is_low_surrogate(s[i + 1])) break;
      c = combine_surrogates(s[i], s[i + 1]);
      k = 2;
    }
    if (!is_scalar(c)) break;
    i += k;
  }
  if (errPos) *errPos = s + i;
  return i == len ? 1 : 0;
}

}  // extern "C"
