// Randomized differential of Add, Sub, Mul and Div on both widths against
// GCC's built-in _Decimal64/_Decimal128 arithmetic (the same BID encoding).
// A NaN result is checked against this library's own rule instead: the
// first signalling NaN quieted, else the first quiet NaN, else the default
// quiet NaN, payload and sign kept.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "gcc_decimal_peer.h"
#include "oru/decimal.h"

namespace {

typedef unsigned __int128 u128;

struct Gen {
  std::mt19937_64 rng{12345};
  u128 coefficient(int p) {
    int digits = 1 + (int)(rng() % p);
    u128 c = 0;
    for (int i = 0; i < digits; ++i) c = c * 10 + rng() % 10;
    // Some runs of nines and zeros, where carries and ties live.
    if (rng() % 8 == 0) {
      c = 1;
      for (int i = 0; i < digits; ++i) c *= 10;
      c -= 1 + rng() % 3;
    }
    return c;
  }
  int exponent(int qmin, int qmax) {
    switch (rng() % 6) {
      case 0:
        return qmin + (int)(rng() % (uint64_t)(qmax - qmin + 1));
      case 1:
        return qmin + (int)(rng() % 40);
      case 2:
        return qmax - (int)(rng() % 40);
      default:
        return -20 + (int)(rng() % 40);
    }
  }
  int special() { return rng() % 40 == 0 ? 1 + (int)(rng() % 4) : 0; }
};

uint64_t make64(Gen& g) {
  uint64_t s = (g.rng() & 1) << 63;
  switch (g.special()) {
    case 1:
      return s | 0x7800000000000000ull;
    case 2:
      return s | 0x7C00000000000000ull | (g.rng() % 1000);
    case 3:
      return s | 0x7E00000000000000ull | (g.rng() % 1000);
    case 4:
      return s | ((uint64_t)(g.exponent(-398, 369) + 398) << 53);
  }
  uint64_t c = (uint64_t)g.coefficient(16);
  uint64_t e = (uint64_t)(g.exponent(-398, 369) + 398);
  if (c < (1ull << 53)) return s | e << 53 | c;
  return s | 3ull << 61 | e << 51 | (c & ((1ull << 51) - 1));
}

u128 make128(Gen& g) {
  u128 s = (u128)(g.rng() & 1) << 127, top = (u128)1 << 64;
  switch (g.special()) {
    case 1:
      return s | (u128)0x7800000000000000ull * top;
    case 2:
      return s | (u128)0x7C00000000000000ull * top | (g.rng() % 1000);
    case 3:
      return s | (u128)0x7E00000000000000ull * top | (g.rng() % 1000);
    case 4:
      return s | (u128)(g.exponent(-6176, 6111) + 6176) << 113;
  }
  return s | (u128)(g.exponent(-6176, 6111) + 6176) << 113 | g.coefficient(34);
}

// The NaN this library must give for x op y when either is a NaN, or the
// default NaN for an invalid operation; sign_bit/nan_bits/snan_bit pick the
// width's fields.
template <class T>
T expected_nan(T x, T y, T nan_mask, T snan_bit, T payload_mask) {
  auto is_nan = [&](T v) { return (v & nan_mask) == nan_mask; };
  auto is_snan = [&](T v) { return is_nan(v) && (v & snan_bit); };
  T pick = 0;
  if (is_snan(x))
    pick = x;
  else if (is_snan(y))
    pick = y;
  else if (is_nan(x))
    pick = x;
  else if (is_nan(y))
    pick = y;
  else
    return nan_mask;  // the default quiet NaN
  T sign = pick & ~(~(T)0 >> 1);
  return sign | nan_mask | (pick & payload_mask);
}

TEST(GccDifferential, Decimal64) {
  Gen g;
  oruDec64 (*ours[4])(oruDec64, oruDec64) = {oruDec64Add, oruDec64Sub, oruDec64Mul, oruDec64Div};
  int mismatches = 0;
  for (int i = 0; i < 60000 && mismatches < 20; ++i) {
    uint64_t x = make64(g), y = make64(g);
    int op = i & 3;
    uint64_t got = ours[op](x, y), want = gcc_dec64(op, x, y);
    if ((want & 0x7C00000000000000ull) == 0x7C00000000000000ull)
      want = expected_nan<uint64_t>(x, y, 0x7C00000000000000ull, 0x0200000000000000ull,
                                    (1ull << 50) - 1);
    if (got != want) {
      ++mismatches;
      ADD_FAILURE() << "op " << op << std::hex << " x " << x << " y " << y << " got " << got
                    << " want " << want;
    }
  }
}

TEST(GccDifferential, Decimal128) {
  Gen g;
  oruDec128* (*ours[4])(oruDec128*, const oruDec128*, const oruDec128*) = {
      oruDec128Add, oruDec128Sub, oruDec128Mul, oruDec128Div};
  const u128 nan = (u128)0x7C00000000000000ull << 64, snan = (u128)0x0200000000000000ull << 64;
  int mismatches = 0;
  for (int i = 0; i < 30000 && mismatches < 20; ++i) {
    u128 x = make128(g), y = make128(g);
    int op = i & 3;
    uint64_t xa[2] = {(uint64_t)x, (uint64_t)(x >> 64)}, ya[2] = {(uint64_t)y, (uint64_t)(y >> 64)};
    uint64_t wa[2];
    gcc_dec128(op, xa, ya, wa);
    oruDec128 a, b, r;
    memcpy(&a, xa, 16);
    memcpy(&b, ya, 16);
    ours[op](&r, &a, &b);
    u128 got = (u128)r.w[1] << 64 | r.w[0], want = (u128)wa[1] << 64 | wa[0];
    if ((want & nan) == nan) want = expected_nan<u128>(x, y, nan, snan, ((u128)1 << 110) - 1);
    if (got != want) {
      ++mismatches;
      ADD_FAILURE() << "op " << op << std::hex << " x " << (uint64_t)(x >> 64) << ":" << (uint64_t)x
                    << " y " << (uint64_t)(y >> 64) << ":" << (uint64_t)y << " got "
                    << (uint64_t)(got >> 64) << ":" << (uint64_t)got << " want "
                    << (uint64_t)(want >> 64) << ":" << (uint64_t)want;
    }
  }
}

}  // namespace
