/*
 * Decimal digits of a coefficient, shared by the text writers.
 */
#ifndef ORU_DEC_DIGITS_H
#define ORU_DEC_DIGITS_H

#include "decimal/oru_dec_wide.h"

namespace oru_dec {

// Writes the decimal digits of c (at least one, "0" for zero) to out, which
// holds 40 characters; returns their number.
inline int coefficient_digits(u128 c, char* out) {
  char tmp[40];
  int n = 0;
  do {
    uint64_t rem;
    c = divmod128_64(c, 10000000000000000000ull, &rem);
    for (int i = 0; i < 19 && (rem != 0 || c != 0); ++i) {
      tmp[n++] = (char)('0' + rem % 10);
      rem /= 10;
    }
  } while (c != 0);
  if (n == 0) tmp[n++] = '0';
  for (int i = 0; i < n; ++i) out[i] = tmp[n - 1 - i];
  return n;
}

}  // namespace oru_dec

#endif  // ORU_DEC_DIGITS_H
