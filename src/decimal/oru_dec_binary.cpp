/*
 * Conversions between the decimal widths and binary double / float,
 * correctly rounded (half-even) both ways by exact integer arithmetic: a
 * binary value m x 2^k is the decimal m x 5^-k x 10^k, and a decimal value
 * c x 10^q becomes a binary one by scaling c by a power of two and dividing
 * by 10^-q with a sticky remainder.  No binary floating-point arithmetic and
 * no library conversion is involved.
 */
#include <cstring>

#include "decimal/oru_dec_f32.h"
#include "oru/decimal.h"

using namespace oru_dec;

namespace {

// A little-endian unsigned big integer with room for 5^1074 x 2^53 and for
// a decimal coefficient shifted left by 1400 bits.
struct Big {
  static constexpr int kLimbs = 48;
  uint64_t limb[kLimbs];
  int n;  // limbs in use; the top one is non-zero unless n == 0

  explicit Big(u128 v) : limb{}, n(0) {
    limb[0] = (uint64_t)v;
    limb[1] = (uint64_t)(v >> 64);
    n = limb[1] ? 2 : limb[0] ? 1 : 0;
  }
  void mul_small(uint64_t m) {
    uint64_t carry = 0;
    for (int i = 0; i < n; ++i) {
      u128 t = (u128)limb[i] * m + carry;
      limb[i] = (uint64_t)t;
      carry = (uint64_t)(t >> 64);
    }
    if (carry) limb[n++] = carry;
  }
  // Divides by d, returning the remainder.
  uint64_t div_small(uint64_t d) {
    uint64_t r = 0;
    for (int i = n - 1; i >= 0; --i) limb[i] = div_step(r, limb[i], d, &r);
    while (n > 0 && limb[n - 1] == 0) --n;
    return r;
  }
  void shift_left(int bits) {
    int words = bits / 64, b = bits % 64;
    if (n == 0) return;
    for (int i = n - 1 + words + 1; i >= 0; --i) {
      uint64_t hi = i - words >= 0 && i - words < n ? limb[i - words] : 0;
      uint64_t lo = i - words - 1 >= 0 && i - words - 1 < n ? limb[i - words - 1] : 0;
      limb[i] = b ? (hi << b) | (lo >> (64 - b)) : hi;
    }
    n += words + 1;
    while (n > 0 && limb[n - 1] == 0) --n;
  }
  int bits() const { return n ? 64 * (n - 1) + bit_length(limb[n - 1]) : 0; }
  bool bit(int i) const { return i >= 0 && i / 64 < n && ((limb[i / 64] >> (i % 64)) & 1); }
  bool any_below(int i) const {  // any bit below position i set
    for (int w = 0; w < n && w * 64 < i; ++w) {
      uint64_t mask = i - w * 64 >= 64 ? ~0ull : ((1ull << (i - w * 64)) - 1);
      if (limb[w] & mask) return true;
    }
    return false;
  }
  // Bits [from, from + count) as an integer, count <= 64.
  uint64_t extract(int from, int count) const {
    uint64_t r = 0;
    for (int i = count - 1; i >= 0; --i) r = (r << 1) | (bit(from + i) ? 1 : 0);
    return r;
  }
};

// Binary formats: significand bits with the hidden one, exponent range.
struct Binary {
  int mant;  // 53 or 24
  int emax;  // 1023 or 127
  int emin;  // -1022 or -126
};
constexpr Binary kDouble = {53, 1023, -1022};
constexpr Binary kFloat = {24, 127, -126};

// Rounds (Q + sticky fraction) x 2^b to the binary format; returns the
// encoding's bits without the sign.
uint64_t round_binary(const Big& q, int64_t b, bool sticky, const Binary& f, uint32_t* fl) {
  if (q.n == 0 && !sticky) return 0;
  int L = q.bits();
  int64_t E = L - 1 + b;  // exponent of the leading bit
  bool tiny = E < f.emin;
  int64_t lsb = E - (f.mant - 1);  // weight of the last kept bit
  int64_t min_lsb = f.emin - (f.mant - 1);
  if (lsb < min_lsb) lsb = min_lsb;
  int64_t shift = lsb - b;  // bits of q to drop
  uint64_t m;
  bool inexact = sticky;
  if (shift <= 0) {
    m = q.extract(0, L) << -shift;
  } else if (shift > L) {
    // Below one half of the smallest step: rounds to zero.
    m = 0;
    inexact = true;
  } else {
    m = q.extract((int)shift, (int)(L - shift));
    bool half = q.bit((int)shift - 1);
    bool rest = sticky || q.any_below((int)shift - 1);
    if (half || rest) inexact = true;
    if (half && (rest || (m & 1))) ++m;
  }
  if (m >> f.mant) {  // carried to a new power of two
    m >>= 1;
    ++lsb;
  }
  int64_t top = m ? lsb + bit_length(m) - 1 : 0;
  uint64_t exp_bits = (uint64_t)f.emax * 2 + 1;  // all ones
  if (m && top > f.emax) {
    *fl |= kOverflow | kInexact;
    return exp_bits << (f.mant - 1);
  }
  if (inexact) *fl |= tiny ? (kInexact | kUnderflow) : kInexact;
  if (m < (1ull << (f.mant - 1))) return m;  // subnormal or zero
  return ((uint64_t)(lsb - min_lsb + 1) << (f.mant - 1)) | (m & ((1ull << (f.mant - 1)) - 1));
}

// c x 10^q (c non-zero) to the binary format.
uint64_t decimal_to_binary(u128 c, int64_t q, const Binary& f, uint32_t* fl) {
  int d = digits128(c);
  // Far outside the format: 10^(d+q-1) <= value < 10^(d+q).
  int64_t max10 = f.mant == 53 ? 309 : 39;
  int64_t min10 = f.mant == 53 ? -324 : -46;
  if (d + q - 1 >= max10) {
    *fl |= kOverflow | kInexact;
    return ((uint64_t)f.emax * 2 + 1) << (f.mant - 1);
  }
  if (d + q <= min10) {
    *fl |= kUnderflow | kInexact;
    return 0;
  }
  Big big(c);
  if (q >= 0) {
    for (int64_t i = q; i > 0; i -= 19) big.mul_small(pow10_64(i > 19 ? 19 : (int)i));
    return round_binary(big, 0, false, f, fl);
  }
  // Scale so that the quotient keeps at least mant + 2 significant bits:
  // c >= 2^(bits - 1) and 10^-q < 2^(4 * -q).
  int64_t s = 4 * -q + f.mant + 3 - bit_length(c);
  if (s < 0) s = 0;
  big.shift_left((int)s);
  bool sticky = false;
  for (int64_t i = -q; i > 0; i -= 19)
    if (big.div_small(pow10_64(i > 19 ? 19 : (int)i)) != 0) sticky = true;
  return round_binary(big, -s, sticky, f, fl);
}

template <class F>
uint64_t to_binary(typename F::Raw x, const Binary& f, uint32_t* fl) {
  Num n = F::unpack(x);
  uint64_t sign = (uint64_t)n.sign << (f.mant == 53 ? 63 : 31);
  uint64_t exp_ones = ((uint64_t)f.emax * 2 + 1) << (f.mant - 1);
  switch (n.kind) {
    case kInf:
      return sign | exp_ones;
    case kSNaN:
      *fl |= kInvalid;
      [[fallthrough]];
    case kQNaN:
      return sign | exp_ones | (1ull << (f.mant - 2));
    default:
      return sign | (n.c == 0 ? 0 : decimal_to_binary(n.c, n.e, f, fl));
  }
}

// The double given by its bits to format F.
template <class F>
typename F::Raw from_double_bits(uint64_t bits, uint32_t* fl) {
  uint32_t sign = (uint32_t)(bits >> 63);
  int be = (int)((bits >> 52) & 0x7FF);
  uint64_t m = bits & ((1ull << 52) - 1);
  if (be == 0x7FF) {
    if (m == 0) return F::inf(sign);
    if (!(m & (1ull << 51))) *fl |= kInvalid;  // signalling
    return F::qnan(sign, 0);
  }
  int k;
  if (be == 0) {
    k = -1074;
  } else {
    m |= 1ull << 52;
    k = be - 1075;
  }
  if (m == 0) return F::pack(sign, 0, 0);
  // Drop binary zeros so that the decimal work is as small as possible.
  int tz = __builtin_ctzll(m);
  m >>= tz;
  k += tz;
  Big big(m);
  int64_t e = 0;
  if (k >= 0) {
    big.shift_left(k);
  } else {
    for (int i = -k; i > 0; i -= 27) {  // 5^27 fits 64 bits
      uint64_t p = 1;
      for (int j = 0; j < (i > 27 ? 27 : i); ++j) p *= 5;
      big.mul_small(p);
    }
    e = k;
  }
  // Cut to at most 192 bits (more than 57 digits), keeping a sticky bit.
  bool sticky = false;
  while (big.n > 3) {
    if (big.div_small(10000000000000000000ull) != 0) sticky = true;
    e += 19;
  }
  // Limbs above n are zero.
  u256 c{((u128)big.limb[1] << 64) | big.limb[0], (u128)big.limb[2]};
  return finish<F>(sign, c, e, sticky, kHalfEven, fl);
}

uint64_t bits_of(double d) {
  uint64_t b;
  std::memcpy(&b, &d, 8);
  return b;
}
uint64_t bits_of_float(float f) {
  double d = f;  // exact
  return bits_of(d);
}
double double_of(uint64_t b) {
  double d;
  std::memcpy(&d, &b, 8);
  return d;
}
float float_of(uint64_t b) {
  uint32_t u = (uint32_t)b;
  float f;
  std::memcpy(&f, &u, 4);
  return f;
}

#define WITH_FLAGS(type, expr) \
  uint32_t fl = 0;             \
  type r_ = (expr);            \
  raise(fl);                   \
  return r_

}  // namespace

extern "C" {

ORU_API oruDec32 oruDoubleToDec32(double v) {
  WITH_FLAGS(oruDec32, from_double_bits<F32>(bits_of(v), &fl));
}
ORU_API oruDec64 oruDoubleToDec64(double v) {
  WITH_FLAGS(oruDec64, from_double_bits<F64>(bits_of(v), &fl));
}
ORU_API oruDec128* oruDoubleToDec128(oruDec128* res, double v) {
  WITH_FLAGS(oruDec128*, store(res, from_double_bits<F128>(bits_of(v), &fl)));
}
ORU_API oruDec32 oruFloatToDec32(float v) {
  WITH_FLAGS(oruDec32, from_double_bits<F32>(bits_of_float(v), &fl));
}
ORU_API oruDec64 oruFloatToDec64(float v) {
  WITH_FLAGS(oruDec64, from_double_bits<F64>(bits_of_float(v), &fl));
}
ORU_API oruDec128* oruFloatToDec128(oruDec128* res, float v) {
  WITH_FLAGS(oruDec128*, store(res, from_double_bits<F128>(bits_of_float(v), &fl)));
}

ORU_API double oruDec32ToDouble(oruDec32 x) {
  WITH_FLAGS(double, double_of(to_binary<F32>(x, kDouble, &fl)));
}
ORU_API double oruDec64ToDouble(oruDec64 x) {
  WITH_FLAGS(double, double_of(to_binary<F64>(x, kDouble, &fl)));
}
ORU_API double oruDec128ToDouble(const oruDec128* x) {
  WITH_FLAGS(double, double_of(to_binary<F128>(load(x), kDouble, &fl)));
}
ORU_API float oruDec32ToFloat(oruDec32 x) {
  WITH_FLAGS(float, float_of(to_binary<F32>(x, kFloat, &fl)));
}
ORU_API float oruDec64ToFloat(oruDec64 x) {
  WITH_FLAGS(float, float_of(to_binary<F64>(x, kFloat, &fl)));
}
ORU_API float oruDec128ToFloat(const oruDec128* x) {
  WITH_FLAGS(float, float_of(to_binary<F128>(load(x), kFloat, &fl)));
}

}  // extern "C"
