/* The peers of the decimal benchmarks, as loops over operand arrays so that
 * both sides pay one call per operation: GCC's built-in _Decimal64 and
 * _Decimal128 arithmetic, and libdfp's fmad64/quantized64 and 128-bit
 * forms.  op is 0 add, 1 multiply, 2 divide. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "bench_decimal_peer.h"

_Decimal64 fmad64(_Decimal64, _Decimal64, _Decimal64);
_Decimal128 fmad128(_Decimal128, _Decimal128, _Decimal128);
_Decimal64 quantized64(_Decimal64, _Decimal64);
_Decimal128 quantized128(_Decimal128, _Decimal128);

void peer_gcc64(int op, const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n) {
  const _Decimal64* a = (const _Decimal64*)x;
  const _Decimal64* b = (const _Decimal64*)y;
  _Decimal64* out = (_Decimal64*)r;
  size_t i;
  if (op == 0)
    for (i = 0; i < n; ++i) out[i] = a[i] + b[i];
  else if (op == 1)
    for (i = 0; i < n; ++i) out[i] = a[i] * b[i];
  else
    for (i = 0; i < n; ++i) out[i] = a[i] / b[i];
}

void peer_gcc128(int op, const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n) {
  size_t i;
  for (i = 0; i < n; ++i) {
    _Decimal128 a, b, c;
    memcpy(&a, x + 2 * i, 16);
    memcpy(&b, y + 2 * i, 16);
    if (op == 0)
      c = a + b;
    else if (op == 1)
      c = a * b;
    else
      c = a / b;
    memcpy(r + 2 * i, &c, 16);
  }
}

void peer_dfp64_fma(const uint64_t* x, const uint64_t* y, const uint64_t* z, uint64_t* r,
                    size_t n) {
  const _Decimal64* a = (const _Decimal64*)x;
  const _Decimal64* b = (const _Decimal64*)y;
  const _Decimal64* c = (const _Decimal64*)z;
  _Decimal64* out = (_Decimal64*)r;
  size_t i;
  for (i = 0; i < n; ++i) out[i] = fmad64(a[i], b[i], c[i]);
}

void peer_dfp64_quantize(const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n) {
  const _Decimal64* a = (const _Decimal64*)x;
  const _Decimal64* b = (const _Decimal64*)y;
  _Decimal64* out = (_Decimal64*)r;
  size_t i;
  for (i = 0; i < n; ++i) out[i] = quantized64(a[i], b[i]);
}

void peer_dfp128_fma(const uint64_t* x, const uint64_t* y, const uint64_t* z, uint64_t* r,
                     size_t n) {
  size_t i;
  for (i = 0; i < n; ++i) {
    _Decimal128 a, b, c, d;
    memcpy(&a, x + 2 * i, 16);
    memcpy(&b, y + 2 * i, 16);
    memcpy(&c, z + 2 * i, 16);
    d = fmad128(a, b, c);
    memcpy(r + 2 * i, &d, 16);
  }
}

void peer_dfp128_quantize(const uint64_t* x, const uint64_t* y, uint64_t* r, size_t n) {
  size_t i;
  for (i = 0; i < n; ++i) {
    _Decimal128 a, b, d;
    memcpy(&a, x + 2 * i, 16);
    memcpy(&b, y + 2 * i, 16);
    d = quantized128(a, b);
    memcpy(r + 2 * i, &d, 16);
  }
}
