/*
 * Hot paths of Add, Sub, Mul and Div for finite operands whose exact result
 * fits 128 bits.  They produce exactly what the general operations of
 * oru_dec_ops.h produce (the tests compare both against the same oracles)
 * and hand every case they do not cover (specials, large exponent gaps,
 * overflow, underflow) to the general code.
 */
#ifndef ORU_DEC_FAST_H
#define ORU_DEC_FAST_H

#include "decimal/oru_dec_ops.h"

namespace oru_dec {

// Rounds a decimal64 result c * 10^e (plus a fraction below one unit when
// sticky) half-even when it needs at most 19 digits dropped and lands in the
// normal range; otherwise defers to finish().
inline uint64_t finish64(uint32_t sign, u128 c, int32_t e, bool sticky, uint32_t* fl) {
  if (c <= F64::MAXC && !sticky && e >= F64::QMIN && e <= F64::QMAX) return F64::pack(sign, c, e);
  int d = digits128(c);
  int drop = d - F64::P;
  if (drop < 1 || drop > 19 || e + drop < F64::QMIN || d + e - 1 < F64::EMIN ||
      e + drop > F64::QMAX - 1)
    return finish<F64>(sign, make256(c), e, sticky, kHalfEven, fl);
  uint64_t rem, div = pow10_64(drop);
  uint64_t q = div_step((uint64_t)(c >> 64), (uint64_t)c, div, &rem);
  uint64_t half = div / 2;
  if (rem > half || (rem == half && (sticky || (q & 1)))) ++q;
  e += drop;
  if (q == 10000000000000000ull) {
    q = 1000000000000000ull;
    ++e;
  }
  if (rem != 0 || sticky) *fl |= kInexact;
  return F64::pack(sign, q, e);
}

// Decodes a decimal64 that is known to be finite.
inline void decode64(uint64_t x, uint64_t* c, int32_t* e) {
  if ((x & 0x6000000000000000ull) != 0x6000000000000000ull) {
    *c = x & ((1ull << 53) - 1);
    *e = (int32_t)((x >> 53) & 0x3FF) - F64::BIAS;
  } else {
    uint64_t v = (1ull << 53) | (x & ((1ull << 51) - 1));
    *c = v > F64::MAXC ? 0 : v;
    *e = (int32_t)((x >> 51) & 0x3FF) - F64::BIAS;
  }
}

inline bool special64(uint64_t x) { return (x & 0x7800000000000000ull) == 0x7800000000000000ull; }

inline uint64_t add64(uint64_t x, uint64_t y, uint32_t negate_y, uint32_t* fl) {
  if (special64(x) || special64(y)) return op_add<F64>(x, y, negate_y, fl);
  uint64_t cx, cy;
  int32_t ex, ey;
  decode64(x, &cx, &ex);
  decode64(y, &cy, &ey);
  uint32_t sx = (uint32_t)(x >> 63), sy = (uint32_t)(y >> 63) ^ negate_y;
  if (ex < ey) {
    uint64_t tc = cx;
    cx = cy;
    cy = tc;
    int32_t te = ex;
    ex = ey;
    ey = te;
    uint32_t ts = sx;
    sx = sy;
    sy = ts;
  }
  int32_t diff = ex - ey;
  if (diff > 19) return op_add<F64>(x, y, negate_y, fl);
  u128 a = (u128)cx * pow10_64(diff), r;
  uint32_t sign;
  if (sx == sy) {
    r = a + cy;
    sign = sx;
  } else if (a >= cy) {
    r = a - cy;
    sign = r == 0 ? 0 : sx;
  } else {
    r = cy - a;
    sign = sy;
  }
  return finish64(sign, r, ey, false, fl);
}

inline uint64_t mul64(uint64_t x, uint64_t y, uint32_t* fl) {
  if (special64(x) || special64(y)) return op_mul<F64>(x, y, fl);
  uint64_t cx, cy;
  int32_t ex, ey;
  decode64(x, &cx, &ex);
  decode64(y, &cy, &ey);
  return finish64((uint32_t)((x ^ y) >> 63), (u128)cx * cy, ex + ey, false, fl);
}

inline uint64_t div64(uint64_t x, uint64_t y, uint32_t* fl) {
  if (special64(x) || special64(y)) return op_div<F64>(x, y, fl);
  uint64_t cx, cy;
  int32_t ex, ey;
  decode64(x, &cx, &ex);
  decode64(y, &cy, &ey);
  if (cx == 0 || cy == 0) return op_div<F64>(x, y, fl);
  // Scale so that the quotient has 17 or 18 digits (it fits 64 bits).
  int k = F64::P + 1 + digits64(cy) - digits64(cx);
  u128 n = (u128)cx * pow10_128(k);
  uint64_t rem;
  uint64_t q = div_step((uint64_t)(n >> 64), (uint64_t)n, cy, &rem);
  int32_t ideal = ex - ey, e = ideal - k;
  if (rem == 0) {
    while (e < ideal && q % 10 == 0) {
      q /= 10;
      ++e;
    }
  }
  return finish64((uint32_t)((x ^ y) >> 63), q, e, rem != 0, fl);
}

// decimal128 sums whose aligned operands fit 128 bits.
inline u128 add128(u128 x, u128 y, uint32_t negate_y, uint32_t* fl) {
  const uint64_t kTop = 0x6000000000000000ull;
  uint64_t hx = (uint64_t)(x >> 64), hy = (uint64_t)(y >> 64);
  if ((hx & kTop) == kTop || (hy & kTop) == kTop) return op_add<F128>(x, y, negate_y, fl);
  const u128 mask = ((u128)1 << 113) - 1;
  u128 cx = x & mask, cy = y & mask;
  if (cx > F128::MAXC || cy > F128::MAXC) return op_add<F128>(x, y, negate_y, fl);
  int32_t ex = (int32_t)((hx >> 49) & 0x3FFF), ey = (int32_t)((hy >> 49) & 0x3FFF);
  uint32_t sx = (uint32_t)(hx >> 63), sy = (uint32_t)(hy >> 63) ^ negate_y;
  if (ex < ey) {
    u128 tc = cx;
    cx = cy;
    cy = tc;
    int32_t te = ex;
    ex = ey;
    ey = te;
    uint32_t ts = sx;
    sx = sy;
    sy = ts;
  }
  int32_t diff = ex - ey;
  if (diff > 3 && (diff > 38 || digits128(cx) + diff > 38)) return op_add<F128>(x, y, negate_y, fl);
  u128 a = cx * pow10_128(diff), r;
  uint32_t sign;
  if (sx == sy) {
    r = a + cy;
    sign = sx;
  } else if (a >= cy) {
    r = a - cy;
    sign = r == 0 ? 0 : sx;
  } else {
    r = cy - a;
    sign = sy;
  }
  if (r <= F128::MAXC) return F128::pack(sign, r, ey - F128::BIAS);
  return finish<F128>(sign, make256(r), ey - F128::BIAS, false, kHalfEven, fl);
}

// decimal128 quotients: the dividend is scaled so that the integer quotient
// has exactly P digits, and the remainder against half the divisor decides
// the rounding, so no digits have to be counted or dropped afterwards.
inline u128 div128(u128 x, u128 y, uint32_t* fl) {
  const uint64_t kTop = 0x6000000000000000ull;
  uint64_t hx = (uint64_t)(x >> 64), hy = (uint64_t)(y >> 64);
  const u128 mask = ((u128)1 << 113) - 1;
  u128 cx = x & mask, cy = y & mask;
  if ((hx & kTop) == kTop || (hy & kTop) == kTop || cx > F128::MAXC || cy > F128::MAXC || cx == 0 ||
      cy == 0)
    return op_div<F128>(x, y, fl);
  int32_t ideal = (int32_t)((hx >> 49) & 0x3FFF) - (int32_t)((hy >> 49) & 0x3FFF);
  uint32_t sign = (uint32_t)((hx ^ hy) >> 63);
  int m = digits128(cx) - digits128(cy);
  // Is cx / cy at least 10^m?
  bool big = m >= 0 ? cmp(make256(cx), mul_pow10(make256(cy), m)) >= 0
                    : cmp(mul_pow10(make256(cx), -m), make256(cy)) >= 0;
  int k = F128::P - m - (big ? 1 : 0);
  u256 q, r;
  divmod256(mul_pow10(make256(cx), k), make256(cy), &q, &r);
  int64_t e = (int64_t)ideal - k;
  if (is_zero(r)) {
    strip_zeros(&q, &e, ideal);
    return finish<F128>(sign, q, e, false, kHalfEven, fl);
  }
  // Inexact.  The common case: a normal result; else extend the quotient
  // by one exact digit and let the general step handle range and flags.
  if (e >= F128::QMIN && e + F128::P - 1 >= F128::EMIN && e < F128::QMAX) {
    u128 twice = r.lo << 1;  // r < cy < 2^113
    u128 c = q.lo;
    if (twice > cy || (twice == cy && (c & 1))) ++c;
    if (c == pow10_128(F128::P)) {
      c = pow10_128(F128::P - 1);
      ++e;
    }
    *fl |= kInexact;
    return F128::pack(sign, c, e);
  }
  u256 ten_r = mul256x64(r, 10), digit, rest;
  divmod256(ten_r, make256(cy), &digit, &rest);
  u256 c = add(mul256x64(q, 10), digit);
  return finish<F128>(sign, c, e - 1, !is_zero(rest), kHalfEven, fl);
}

}  // namespace oru_dec

#endif  // ORU_DEC_FAST_H
