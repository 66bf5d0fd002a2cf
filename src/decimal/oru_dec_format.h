/*
 * The two arithmetic formats (decimal64, decimal128): their parameters,
 * decoding into sign / coefficient / exponent, encoding, and the single
 * round-and-encode step that every rounded operation ends in, so that
 * rounding, overflow and underflow are decided in exactly one place.
 */
#ifndef ORU_DEC_FORMAT_H
#define ORU_DEC_FORMAT_H

#include <cstdint>
#include <cstring>

#include "decimal/oru_dec_flags.h"
#include "decimal/oru_dec_wide.h"
#include "oru/decimal.h"

namespace oru_dec {

enum Kind : uint32_t { kFinite = 0, kInf = 1, kQNaN = 2, kSNaN = 3 };

// A decoded value.  For NaNs c is the payload (zero when over-large).
struct Num {
  u128 c;
  int32_t e;
  uint32_t sign;
  Kind kind;
};

struct F64 {
  typedef uint64_t Raw;
  static constexpr int P = 16;
  static constexpr int QMIN = -398;
  static constexpr int QMAX = 369;
  static constexpr int EMIN = -383;
  static constexpr int BIAS = 398;
  static constexpr uint64_t MAXC = 9999999999999999ull;
  static constexpr uint64_t MAX_PAYLOAD = 999999999999999ull;

  static constexpr Raw kSign = 1ull << 63;

  static Num unpack(Raw x) {
    Num n;
    n.sign = (uint32_t)(x >> 63);
    if ((x & 0x6000000000000000ull) != 0x6000000000000000ull) {
      n.kind = kFinite;
      n.e = (int32_t)((x >> 53) & 0x3FF) - BIAS;
      n.c = x & ((1ull << 53) - 1);
      return n;
    }
    if ((x & 0x7800000000000000ull) != 0x7800000000000000ull) {
      n.kind = kFinite;
      n.e = (int32_t)((x >> 51) & 0x3FF) - BIAS;
      uint64_t c = (1ull << 53) | (x & ((1ull << 51) - 1));
      n.c = c > MAXC ? 0 : c;
      return n;
    }
    n.e = 0;
    if ((x & 0x7C00000000000000ull) == 0x7800000000000000ull) {
      n.kind = kInf;
      n.c = 0;
      return n;
    }
    n.kind = (x & 0x0200000000000000ull) ? kSNaN : kQNaN;
    uint64_t p = x & ((1ull << 50) - 1);
    n.c = p > MAX_PAYLOAD ? 0 : p;
    return n;
  }
  // c must not exceed MAXC and e must lie in [QMIN, QMAX].
  static Raw pack(uint32_t sign, u128 c, int64_t e) {
    uint64_t s = (uint64_t)sign << 63, cc = (uint64_t)c, be = (uint64_t)(e + BIAS);
    if (cc < (1ull << 53)) return s | (be << 53) | cc;
    return s | 0x6000000000000000ull | (be << 51) | (cc & ((1ull << 51) - 1));
  }
  static Raw inf(uint32_t sign) { return ((uint64_t)sign << 63) | 0x7800000000000000ull; }
  static Raw qnan(uint32_t sign, u128 payload) {
    return ((uint64_t)sign << 63) | 0x7C00000000000000ull | (uint64_t)payload;
  }
  static bool is_canonical(Raw x) {
    if ((x & 0x6000000000000000ull) != 0x6000000000000000ull) return true;
    if ((x & 0x7800000000000000ull) != 0x7800000000000000ull)
      return ((1ull << 53) | (x & ((1ull << 51) - 1))) <= MAXC;
    if ((x & 0x7C00000000000000ull) == 0x7800000000000000ull)
      return (x & 0x03FFFFFFFFFFFFFFull) == 0;
    return (x & 0x01FC000000000000ull) == 0 && (x & ((1ull << 50) - 1)) <= MAX_PAYLOAD;
  }
};

struct F128 {
  typedef u128 Raw;  // high word in the upper half
  static constexpr int P = 34;
  static constexpr int QMIN = -6176;
  static constexpr int QMAX = 6111;
  static constexpr int EMIN = -6143;
  static constexpr int BIAS = 6176;
  static constexpr u128 MAXC = (((u128)0x0001ED09BEAD87C0ull) << 64) | 0x378D8E63FFFFFFFFull;
  static constexpr u128 MAX_PAYLOAD =
      (((u128)0x0000314DC6448D93ull) << 64) | 0x38C15B09FFFFFFFFull;  // 10^33 - 1
  static constexpr Raw kSign = (u128)1 << 127;

  static Num unpack(Raw x) {
    Num n;
    uint64_t hi = (uint64_t)(x >> 64);
    n.sign = (uint32_t)(hi >> 63);
    if ((hi & 0x6000000000000000ull) != 0x6000000000000000ull) {
      n.kind = kFinite;
      n.e = (int32_t)((hi >> 49) & 0x3FFF) - BIAS;
      u128 c = x & (((u128)1 << 113) - 1);
      n.c = c > MAXC ? 0 : c;
      return n;
    }
    if ((hi & 0x7800000000000000ull) != 0x7800000000000000ull) {
      // The large form always holds at least 2^113: non-canonical, zero.
      n.kind = kFinite;
      n.e = (int32_t)((hi >> 47) & 0x3FFF) - BIAS;
      n.c = 0;
      return n;
    }
    n.e = 0;
    if ((hi & 0x7C00000000000000ull) == 0x7800000000000000ull) {
      n.kind = kInf;
      n.c = 0;
      return n;
    }
    n.kind = (hi & 0x0200000000000000ull) ? kSNaN : kQNaN;
    u128 p = x & (((u128)1 << 110) - 1);
    n.c = p > MAX_PAYLOAD ? 0 : p;
    return n;
  }
  static Raw pack(uint32_t sign, u128 c, int64_t e) {
    return ((u128)sign << 127) | ((u128)(uint64_t)(e + BIAS) << 113) | c;
  }
  static Raw inf(uint32_t sign) {
    return ((u128)sign << 127) | ((u128)0x7800000000000000ull << 64);
  }
  static Raw qnan(uint32_t sign, u128 payload) {
    return ((u128)sign << 127) | ((u128)0x7C00000000000000ull << 64) | payload;
  }
  static bool is_canonical(Raw x) {
    uint64_t hi = (uint64_t)(x >> 64);
    if ((hi & 0x6000000000000000ull) != 0x6000000000000000ull)
      return (x & (((u128)1 << 113) - 1)) <= MAXC;
    if ((hi & 0x7800000000000000ull) != 0x7800000000000000ull) return false;
    if ((hi & 0x7C00000000000000ull) == 0x7800000000000000ull)
      return (x & ((((u128)0x03FFFFFFFFFFFFFFull) << 64) | ~(uint64_t)0)) == 0;
    return (hi & 0x01FFC00000000000ull) == 0 && (x & (((u128)1 << 110) - 1)) <= MAX_PAYLOAD;
  }
};

// A caller's decimal128 object, copied in or out (it need not be aligned).
inline u128 load(const oruDec128* p) {
  uint64_t w[2];
  std::memcpy(w, p, sizeof w);
  return ((u128)w[1] << 64) | w[0];
}

inline oruDec128* store(oruDec128* p, u128 v) {
  uint64_t w[2] = {(uint64_t)v, (uint64_t)(v >> 64)};
  std::memcpy(p, w, sizeof w);
  return p;
}

// Rounding information about dropped digits.
enum Rnd { kExact = 0, kBelowHalf = 1, kHalf = 2, kAboveHalf = 3 };

inline bool round_up(int rnd, int mode, uint32_t sign, bool odd) {
  switch (mode) {
    case kHalfEven:
      return rnd == kAboveHalf || (rnd == kHalf && odd);
    case kHalfAway:
      return rnd >= kHalf;
    case kCeiling:
      return rnd != kExact && !sign;
    case kFloor:
      return rnd != kExact && sign;
    default:
      return false;
  }
}

// c / 10^drop (drop >= 1) rounded by mode; sticky says that the true value
// lies a little above c.  *inexact is set when anything non-zero is dropped.
inline u256 shift_round(const u256& c, int64_t drop, bool sticky, int mode, uint32_t sign,
                        bool* inexact) {
  int d = digits256(c);
  u256 q;
  int rnd;
  if (drop <= 19 && c.hi == 0) {
    // One division, the remainder compared with one half of the divisor.
    uint64_t rem, div = pow10_64((int)drop), half = div / 2;
    q = make256(divmod128_64(c.lo, div, &rem));
    rnd = rem == 0      ? (sticky ? kBelowHalf : kExact)
          : rem < half  ? kBelowHalf
          : rem == half ? (sticky ? kAboveHalf : kHalf)
                        : kAboveHalf;
  } else if (drop > d) {
    q = make256(0);
    rnd = (!is_zero(c) || sticky) ? kBelowHalf : kExact;
  } else {
    bool st = sticky;
    q = div_pow10(c, (int)drop - 1, &st);
    uint64_t digit;
    q = divmod64(q, 10, &digit);
    rnd = digit > 5       ? kAboveHalf
          : digit == 5    ? (st ? kAboveHalf : kHalf)
          : (digit || st) ? kBelowHalf
                          : kExact;
  }
  if (rnd != kExact) {
    *inexact = true;
    if (round_up(rnd, mode, sign, (q.lo & 1) != 0)) q = add(q, make256(1));
  }
  return q;
}

// The round-and-encode step: the exact value (c + f) * 10^e with sign,
// where f is 0 when sticky is false and lies strictly between 0 and 1
// otherwise, becomes the nearest representable value by mode, with the
// overflow, underflow and inexact flags added to *flags.
template <class F>
typename F::Raw finish(uint32_t sign, u256 c, int64_t e, bool sticky, int mode, uint32_t* flags) {
  if (is_zero(c) && !sticky) {
    if (e < F::QMIN) e = F::QMIN;
    if (e > F::QMAX) e = F::QMAX;
    return F::pack(sign, 0, e);
  }
  int d = digits256(c);
  // Tiny: the exact value lies below the smallest normal.
  bool tiny = d + e - 1 < F::EMIN;
  int64_t drop = d - F::P;
  if (F::QMIN - e > drop) drop = F::QMIN - e;
  if (drop <= 0 && sticky) {
    c = mul256x64(c, 10);
    --e;
    drop = 1;
  }
  if (drop > 0) {
    bool inexact = false;
    c = shift_round(c, drop, sticky, mode, sign, &inexact);
    e += drop;
    if (c.lo == pow10_128(F::P) && c.hi == 0) {
      c.lo = pow10_128(F::P - 1);
      ++e;
    }
    if (inexact) *flags |= tiny ? (kInexact | kUnderflow) : kInexact;
  }
  if (e > F::QMAX) {
    if (is_zero(c)) return F::pack(sign, 0, F::QMAX);
    int dc = digits128(c.lo);
    if (dc + (e - F::QMAX) <= F::P) {
      // Exact, with the coefficient padded by zeros to reach the range.
      return F::pack(sign, c.lo * pow10_128((int)(e - F::QMAX)), F::QMAX);
    }
    *flags |= kOverflow | kInexact;
    bool to_inf = mode == kHalfEven || mode == kHalfAway || (mode == kCeiling && !sign) ||
                  (mode == kFloor && sign);
    return to_inf ? F::inf(sign) : F::pack(sign, F::MAXC, F::QMAX);
  }
  return F::pack(sign, c.lo, e);
}

// Removes trailing zeros of an exact result while its exponent stays at or
// below the preferred one, in steps of 16, 8, 4, 2 and 1 digits.
inline void strip_zeros(u256* q, int64_t* e, int64_t ideal) {
  if (*e >= ideal || is_zero(*q)) return;
  if (q->hi == 0) {
    // The largest k up to the gap with 10^k dividing q: 2^k by counting
    // binary zeros, 5^k by the inverse test (true for all k up to some
    // bound, so a binary search finds it).
    u128 v = q->lo;
    uint64_t low = (uint64_t)v;
    int64_t hi = low ? __builtin_ctzll(low) : 64 + __builtin_ctzll((uint64_t)(v >> 64));
    if (hi > ideal - *e) hi = ideal - *e;
    if (hi > 38) hi = 38;
    int64_t lo = 0;
    while (lo < hi) {
      int64_t mid = (lo + hi + 1) / 2;
      if (v * kPow5.inv[mid] <= kPow5.lim[mid])
        lo = mid;
      else
        hi = mid - 1;
    }
    q->lo = (v >> lo) * kPow5.inv[lo];
    *e += lo;
    return;
  }
  for (int k = 16; k >= 1; k /= 2) {
    while (*e + k <= ideal) {
      uint64_t rem;
      u256 t = divmod64(*q, pow10_64(k), &rem);
      if (rem != 0) break;
      *q = t;
      *e += k;
    }
  }
}

// NaN propagation: a signalling NaN (first in operand order) raises invalid
// and is returned quieted; else the first quiet NaN is returned.
template <class F>
inline typename F::Raw nan_result(const Num& n, uint32_t* flags) {
  if (n.kind == kSNaN) *flags |= kInvalid;
  return F::qnan(n.sign, n.c);
}

template <class F>
inline bool propagate2(const Num& a, const Num& b, typename F::Raw* out, uint32_t* flags) {
  if ((a.kind | b.kind) < kQNaN) return false;
  if (a.kind == kSNaN)
    *out = nan_result<F>(a, flags);
  else if (b.kind == kSNaN)
    *out = nan_result<F>(b, flags);
  else if (a.kind == kQNaN)
    *out = nan_result<F>(a, flags);
  else
    *out = nan_result<F>(b, flags);
  return true;
}

}  // namespace oru_dec

#endif  // ORU_DEC_FORMAT_H
