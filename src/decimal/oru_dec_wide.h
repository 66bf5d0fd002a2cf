/*
 * Wide unsigned integers for the decimal arithmetic core.
 *
 * decimal128 coefficients need 113 bits, their exact products 226 bits and
 * the scaled dividends of division and square root up to 236 bits, so one
 * 256-bit type (two unsigned __int128 halves) carries every intermediate of
 * both widths.  Everything here is header-only so that the compiler can
 * fold the common case (a value that fits 64 or 128 bits) into a few
 * instructions.
 */
#ifndef ORU_DEC_WIDE_H
#define ORU_DEC_WIDE_H

#include <cstdint>

namespace oru_dec {

typedef unsigned __int128 u128;

struct u256 {
  u128 lo;
  u128 hi;
};

constexpr u256 make256(u128 v) { return u256{v, 0}; }

constexpr bool is_zero(const u256& a) { return (a.lo | a.hi) == 0; }

constexpr int cmp(const u256& a, const u256& b) {
  if (a.hi != b.hi) return a.hi < b.hi ? -1 : 1;
  if (a.lo != b.lo) return a.lo < b.lo ? -1 : 1;
  return 0;
}

constexpr u256 add(const u256& a, const u256& b) {
  u256 r{a.lo + b.lo, a.hi + b.hi};
  if (r.lo < a.lo) ++r.hi;
  return r;
}

// a - b; the caller guarantees a >= b.
constexpr u256 sub(const u256& a, const u256& b) {
  u256 r{a.lo - b.lo, a.hi - b.hi};
  if (a.lo < b.lo) --r.hi;
  return r;
}

constexpr u128 mul64x64(uint64_t a, uint64_t b) { return (u128)a * b; }

// The full 256-bit product of two 128-bit values.
constexpr u256 mul128x128(u128 a, u128 b) {
  uint64_t a0 = (uint64_t)a, a1 = (uint64_t)(a >> 64);
  uint64_t b0 = (uint64_t)b, b1 = (uint64_t)(b >> 64);
  if ((a1 | b1) == 0) return u256{(u128)a0 * b0, 0};
  u128 p00 = (u128)a0 * b0, p01 = (u128)a0 * b1, p10 = (u128)a1 * b0, p11 = (u128)a1 * b1;
  u128 mid = (p00 >> 64) + (uint64_t)p01 + (uint64_t)p10;
  u256 r;
  r.lo = (mid << 64) | (uint64_t)p00;
  r.hi = p11 + (p01 >> 64) + (p10 >> 64) + (mid >> 64);
  return r;
}

// The low 256 bits of a * m.
constexpr u256 mul256x64(const u256& a, uint64_t m) {
  u256 lo = mul128x128(a.lo, m);
  lo.hi += a.hi * m;
  return lo;
}

// The low 256 bits of a * b; callers use it only where the product fits.
constexpr u256 mul256x128(const u256& a, u128 b) {
  u256 r = mul128x128(a.lo, b);
  r.hi += a.hi * b;
  return r;
}

// Powers of ten: 10^0 .. 10^19 fit 64 bits, .. 10^38 fit 128 bits and
// .. 10^77 fit 256 bits.
constexpr int kMaxPow256 = 77;

struct Pow10Tables {
  uint64_t p64[20];
  u128 p128[39];
  u256 p256[kMaxPow256 + 1];
  constexpr Pow10Tables() : p64{}, p128{}, p256{} {
    u256 v{1, 0};
    for (int i = 0; i <= kMaxPow256; ++i) {
      p256[i] = v;
      if (i < 39) p128[i] = v.lo;
      if (i < 20) p64[i] = (uint64_t)v.lo;
      v = mul256x64(v, 10);
    }
  }
};

inline constexpr Pow10Tables kPow10{};

// For exact division by 5^k without dividing: the inverse of 5^k modulo
// 2^128, and the largest quotient, (2^128 - 1) / 5^k.  n is a multiple of
// 5^k exactly when n * inverse (mod 2^128) does not exceed that bound, and
// the product is then n / 5^k.
struct Pow5Inverses {
  u128 inv[39];
  u128 lim[39];
  constexpr Pow5Inverses() : inv{}, lim{} {
    u128 p = 1;
    for (int k = 0; k < 39; ++k) {
      u128 x = p;  // correct to 3 bits for an odd number; each step doubles
      for (int i = 0; i < 7; ++i) x *= 2 - p * x;
      inv[k] = x;
      lim[k] = ~(u128)0 / p;
      p *= 5;
    }
  }
};

inline constexpr Pow5Inverses kPow5{};

inline uint64_t pow10_64(int k) { return kPow10.p64[k]; }
inline u128 pow10_128(int k) { return kPow10.p128[k]; }
inline const u256& pow10_256(int k) { return kPow10.p256[k]; }

inline int bit_length(uint64_t v) { return v ? 64 - __builtin_clzll(v) : 0; }
inline int bit_length(u128 v) {
  uint64_t hi = (uint64_t)(v >> 64);
  return hi ? 128 - __builtin_clzll(hi) : bit_length((uint64_t)v);
}
inline int bit_length(const u256& v) { return v.hi ? 128 + bit_length(v.hi) : bit_length(v.lo); }

// Number of decimal digits, 0 for zero.  bits * 1233 / 4096 is log10(2^bits)
// rounded down, at most one below the answer.
inline int digits64(uint64_t v) {
  int d = (bit_length(v) * 1233) >> 12;
  return d + (v >= kPow10.p64[d] ? 1 : 0);
}
inline int digits128(u128 v) {
  int d = (bit_length(v) * 1233) >> 12;
  return d + (v >= kPow10.p128[d] ? 1 : 0);
}
inline int digits256(const u256& v) {
  if (v.hi == 0) return digits128(v.lo);
  int d = (bit_length(v) * 1233) >> 12;
  return d + (cmp(v, kPow10.p256[d]) >= 0 ? 1 : 0);
}

// a * 10^k, for results that fit 256 bits (k <= 77).
inline u256 mul_pow10(const u256& a, int k) {
  if (k <= 19) return mul256x64(a, kPow10.p64[k]);
  if (k <= 38) return mul256x128(a, kPow10.p128[k]);
  if (a.hi == 0) {
    u256 p = kPow10.p256[k];
    u256 r = mul128x128(a.lo, p.lo);
    r.hi += a.lo * p.hi;
    return r;
  }
  return mul256x128(mul256x128(a, kPow10.p128[38]), kPow10.p128[k - 38]);
}

// (hi:lo) / d for hi < d, so that the quotient fits 64 bits: one hardware
// division on x86-64 instead of the runtime's general 128-bit division.
inline uint64_t div_step(uint64_t hi, uint64_t lo, uint64_t d, uint64_t* rem) {
#if defined(__x86_64__)
  uint64_t q, r;
  __asm__("divq %4" : "=a"(q), "=d"(r) : "a"(lo), "d"(hi), "rm"(d) : "cc");
  *rem = r;
  return q;
#else
  u128 n = ((u128)hi << 64) | lo;
  *rem = (uint64_t)(n % d);
  return (uint64_t)(n / d);
#endif
}

// Quotient of a 128-bit value by a 64-bit divisor, remainder in *rem.
inline u128 divmod128_64(u128 n, uint64_t d, uint64_t* rem) {
  uint64_t hi = (uint64_t)(n >> 64), lo = (uint64_t)n;
  if (hi == 0) {
    *rem = lo % d;
    return lo / d;
  }
  uint64_t qh = hi / d, r;
  uint64_t ql = div_step(hi % d, lo, d, &r);
  *rem = r;
  return ((u128)qh << 64) | ql;
}

// Quotient of a by a 64-bit divisor, remainder in *rem.
inline u256 divmod64(const u256& a, uint64_t d, uint64_t* rem) {
  if (a.hi == 0) return u256{divmod128_64(a.lo, d, rem), 0};
  uint64_t limb[4] = {(uint64_t)a.lo, (uint64_t)(a.lo >> 64), (uint64_t)a.hi,
                      (uint64_t)(a.hi >> 64)};
  uint64_t q[4] = {0, 0, 0, 0};
  uint64_t r = 0;
  int top = limb[3] ? 3 : 2;  // a.hi is non-zero here
  for (int i = top; i >= 0; --i) q[i] = div_step(r, limb[i], d, &r);
  *rem = r;
  return u256{((u128)q[1] << 64) | q[0], ((u128)q[3] << 64) | q[2]};
}

// a / 10^k (k >= 0); *inexact is set when a non-zero remainder is dropped.
inline u256 div_pow10(u256 a, int k, bool* inexact) {
  while (k > 0) {
    int step = k > 19 ? 19 : k;
    uint64_t r;
    a = divmod64(a, kPow10.p64[step], &r);
    if (r) *inexact = true;
    k -= step;
  }
  return a;
}

// Full division of a 256-bit value by a non-zero divisor of up to 256 bits
// (Knuth's algorithm D on 64-bit limbs).
void divmod256(const u256& n, const u256& d, u256* q, u256* r);

// Integer square root (floor) of a 256-bit value.
u256 isqrt256(const u256& n);

}  // namespace oru_dec

#endif  // ORU_DEC_WIDE_H
