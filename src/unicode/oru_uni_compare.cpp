// Binary (code-point order) comparison of UCS-4, UTF-16 and UTF-8 strings.
#include <cstring>

#include "oru/unicode.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

extern "C" {

ORU_API int32_t oruUCS4BinaryCompare(const uint32_t* lhs, uint32_t lhsLen, const uint32_t* rhs,
                                     uint32_t rhsLen) {
  const uint32_t n = lhsLen < rhsLen ? lhsLen : rhsLen;
  for (uint32_t i = 0; i < n; ++i) {
    if (lhs[i] != rhs[i]) return lhs[i] < rhs[i] ? -1 : 1;
  }
  return lhsLen < rhsLen ? -1 : lhsLen > rhsLen ? 1 : 0;
}

ORU_API int32_t oruUTF16BinaryCompare(const uint16_t* lhs, uint32_t lhsLen, const uint16_t* rhs,
                                      uint32_t rhsLen) {
  uint32_t i = 0, j = 0;
  while (i < lhsLen && j < rhsLen) {
    const uint16_t a = lhs[i], b = rhs[j];
    // Equal units outside the surrogate range need no decoding.
    if (a == b && (a & 0xF800) != 0xD800) {
      ++i;
      ++j;
      continue;
    }
    const uint32_t ka = is_high_surrogate(a) ? 2 : 1, kb = is_high_surrogate(b) ? 2 : 1;
    const uint32_t left_a = lhsLen - i, left_b = rhsLen - j;
    if (ka > left_a || kb > left_b) {
      // A high surrogate in the last unit: compare raw units, then what is left.
      if (a != b) return a < b ? -1 : 1;
      return left_a < left_b ? -1 : left_a > left_b ? 1 : 0;
    }
    const uint32_t ca = ka == 2 ? combine_surrogates(a, lhs[i + 1]) : a;
    const uint32_t cb = kb == 2 ? combine_surrogates(b, rhs[j + 1]) : b;
    if (ca != cb) return ca < cb ? -1 : 1;
    i += ka;
    j += kb;
  }
  const bool lhs_done = i >= lhsLen, rhs_done = j >= rhsLen;
  if (lhs_done && rhs_done) return 0;
  return lhs_done ? -1 : 1;
}

ORU_API int32_t oruUTF8BinaryCompare(const char* lhs, int32_t lhsLen, const char* rhs,
                                     int32_t rhsLen) {
  const size_t a = utf8_length(lhs, lhsLen), b = utf8_length(rhs, rhsLen);
  const size_t n = a < b ? a : b;
  if (n != 0) {
    const int r = std::memcmp(lhs, rhs, n);
    if (r != 0) return r;
  }
  return a < b ? -1 : a > b ? 1 : 0;
}

}  // extern "C"
