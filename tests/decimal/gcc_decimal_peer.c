/* GCC's built-in decimal arithmetic (BID on x86-64), called by the
 * differential test and the benchmarks.  Operands and results travel as
 * their encodings; op is 0 add, 1 subtract, 2 multiply, 3 divide. */
#include <stdint.h>
#include <string.h>

#include "gcc_decimal_peer.h"

uint64_t gcc_dec64(int op, uint64_t x, uint64_t y) {
  _Decimal64 a, b, r;
  memcpy(&a, &x, 8);
  memcpy(&b, &y, 8);
  switch (op) {
    case 0:
      r = a + b;
      break;
    case 1:
      r = a - b;
      break;
    case 2:
      r = a * b;
      break;
    default:
      r = a / b;
      break;
  }
  memcpy(&x, &r, 8);
  return x;
}

void gcc_dec128(int op, const uint64_t x[2], const uint64_t y[2], uint64_t out[2]) {
  _Decimal128 a, b, r;
  memcpy(&a, x, 16);
  memcpy(&b, y, 16);
  switch (op) {
    case 0:
      r = a + b;
      break;
    case 1:
      r = a - b;
      break;
    case 2:
      r = a * b;
      break;
    default:
      r = a / b;
      break;
  }
  memcpy(out, &r, 16);
}
