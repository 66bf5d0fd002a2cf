/* The peers of the decimal text and conversion benchmarks, as loops so that
 * both sides pay one call per value: libdfp's strtod64/strtod128 and its
 * printf of _Decimal64, and GCC's casts between double and _Decimal64. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "bench_decimal_strings_peer.h"

_Decimal64 strtod64(const char* s, char** end);
_Decimal128 strtod128(const char* s, char** end);
int register_printf_dfp(void);

void peer_strtod64(const char* const* s, uint64_t* r, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    _Decimal64 d = strtod64(s[i], NULL);
    memcpy(&r[i], &d, 8);
  }
}

void peer_strtod128(const char* const* s, uint64_t* r, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    _Decimal128 d = strtod128(s[i], NULL);
    memcpy(&r[2 * i], &d, 16);
  }
}

int peer_printf_ready(void) { return register_printf_dfp() == 0; }

size_t peer_printf64(const uint64_t* x, char* buf, size_t size, size_t n) {
  static const char* volatile fmt = "%.15De";
  size_t total = 0;
  for (size_t i = 0; i < n; ++i) {
    _Decimal64 d;
    memcpy(&d, &x[i], 8);
    total += (size_t)snprintf(buf, size, fmt, d);
  }
  return total;
}

void peer_double_to_d64(const double* x, uint64_t* r, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    _Decimal64 d = (_Decimal64)x[i];
    memcpy(&r[i], &d, 8);
  }
}

void peer_d64_to_double(const uint64_t* x, double* r, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    _Decimal64 d;
    memcpy(&d, &x[i], 8);
    r[i] = (double)d;
  }
}
