/*
 * Conversions between the three widths and to and from binary integers.
 * Every rounding goes through the shared round-and-encode step.
 */
#include "decimal/oru_dec_f32.h"
#include "oru/decimal.h"

using namespace oru_dec;

namespace {

// x of format From in format To: exact when To is wider, else rounded
// half-even.  NaN payloads survive when they fit.
template <class To, class From>
typename To::Raw convert(typename From::Raw x, uint32_t* fl) {
  Num n = From::unpack(x);
  switch (n.kind) {
    case kInf:
      return To::inf(n.sign);
    case kSNaN:
      *fl |= kInvalid;
      [[fallthrough]];
    case kQNaN:
      return To::qnan(n.sign, n.c <= (u128)To::MAX_PAYLOAD ? n.c : 0);
    default:
      return finish<To>(n.sign, make256(n.c), n.e, false, kHalfEven, fl);
  }
}

template <class F>
typename F::Raw from_integer(uint32_t sign, uint64_t magnitude, uint32_t* fl) {
  return finish<F>(sign, make256(magnitude), 0, false, kHalfEven, fl);
}

// The value of x rounded half-even to an integer, as sign and magnitude;
// false for NaNs, infinities and magnitudes of 2^64 or more.
template <class F>
bool to_integer(typename F::Raw x, uint32_t* sign, uint64_t* magnitude) {
  Num n = F::unpack(x);
  if (n.kind != kFinite) return false;
  *sign = n.sign;
  u128 c = n.c;
  if (n.e > 0) {
    if (c != 0) {
      if (n.e > 19) return false;
      u256 m = mul128x128(c, pow10_64(n.e));
      if (m.hi != 0 || (m.lo >> 64) != 0) return false;
      c = m.lo;
    }
  } else if (n.e < 0) {
    bool inexact = false;
    c = shift_round(make256(c), -(int64_t)n.e, false, kHalfEven, n.sign, &inexact).lo;
  }
  if ((c >> 64) != 0) return false;
  *magnitude = (uint64_t)c;
  return true;
}

template <class F>
int64_t to_signed(typename F::Raw x, int64_t lo, int64_t hi) {
  uint32_t sign;
  uint64_t m;
  if (to_integer<F>(x, &sign, &m)) {
    if (!sign && m <= (uint64_t)hi) return (int64_t)m;
    if (sign && m <= (uint64_t)hi + 1) return (int64_t)(0 - m);
    (void)lo;
  }
  raise(kInvalid);
  return lo;
}

template <class F>
uint64_t to_unsigned(typename F::Raw x, uint64_t hi) {
  uint32_t sign;
  uint64_t m;
  if (to_integer<F>(x, &sign, &m) && (m == 0 || (!sign && m <= hi))) return m;
  raise(kInvalid);
  return hi;
}

#define WITH_FLAGS(type, expr) \
  uint32_t fl = 0;             \
  type r_ = (expr);            \
  raise(fl);                   \
  return r_

inline uint64_t magnitude(int64_t v) { return v < 0 ? 0 - (uint64_t)v : (uint64_t)v; }

}  // namespace

extern "C" {

ORU_API oruDec64 oruDec32ToDec64(oruDec32 x) { WITH_FLAGS(oruDec64, (convert<F64, F32>(x, &fl))); }
ORU_API oruDec128* oruDec32ToDec128(oruDec128* res, oruDec32 x) {
  WITH_FLAGS(oruDec128*, store(res, convert<F128, F32>(x, &fl)));
}
ORU_API oruDec128* oruDec64ToDec128(oruDec128* res, oruDec64 x) {
  WITH_FLAGS(oruDec128*, store(res, convert<F128, F64>(x, &fl)));
}
ORU_API oruDec32 oruDec64ToDec32(oruDec64 x) { WITH_FLAGS(oruDec32, (convert<F32, F64>(x, &fl))); }
ORU_API oruDec32 oruDec128ToDec32(const oruDec128* x) {
  WITH_FLAGS(oruDec32, (convert<F32, F128>(load(x), &fl)));
}
ORU_API oruDec64 oruDec128ToDec64(const oruDec128* x) {
  WITH_FLAGS(oruDec64, (convert<F64, F128>(load(x), &fl)));
}

ORU_API oruDec32 oruDec32FromInt32(int32_t v) {
  WITH_FLAGS(oruDec32, from_integer<F32>(v < 0, magnitude(v), &fl));
}
ORU_API oruDec32 oruDec32FromUInt32(uint32_t v) {
  WITH_FLAGS(oruDec32, from_integer<F32>(0, v, &fl));
}
ORU_API oruDec32 oruDec32FromInt64(int64_t v) {
  WITH_FLAGS(oruDec32, from_integer<F32>(v < 0, magnitude(v), &fl));
}
ORU_API oruDec32 oruDec32FromUInt64(uint64_t v) {
  WITH_FLAGS(oruDec32, from_integer<F32>(0, v, &fl));
}
ORU_API oruDec64 oruDec64FromInt32(int32_t v) {
  WITH_FLAGS(oruDec64, from_integer<F64>(v < 0, magnitude(v), &fl));
}
ORU_API oruDec64 oruDec64FromUInt32(uint32_t v) {
  WITH_FLAGS(oruDec64, from_integer<F64>(0, v, &fl));
}
ORU_API oruDec64 oruDec64FromInt64(int64_t v) {
  WITH_FLAGS(oruDec64, from_integer<F64>(v < 0, magnitude(v), &fl));
}
ORU_API oruDec64 oruDec64FromUInt64(uint64_t v) {
  WITH_FLAGS(oruDec64, from_integer<F64>(0, v, &fl));
}
ORU_API oruDec128* oruDec128FromInt32(oruDec128* res, int32_t v) {
  WITH_FLAGS(oruDec128*, store(res, from_integer<F128>(v < 0, magnitude(v), &fl)));
}
ORU_API oruDec128* oruDec128FromUInt32(oruDec128* res, uint32_t v) {
  WITH_FLAGS(oruDec128*, store(res, from_integer<F128>(0, v, &fl)));
}
ORU_API oruDec128* oruDec128FromInt64(oruDec128* res, int64_t v) {
  WITH_FLAGS(oruDec128*, store(res, from_integer<F128>(v < 0, magnitude(v), &fl)));
}
ORU_API oruDec128* oruDec128FromUInt64(oruDec128* res, uint64_t v) {
  WITH_FLAGS(oruDec128*, store(res, from_integer<F128>(0, v, &fl)));
}

ORU_API int32_t oruDec32ToInt32(oruDec32 x) {
  return (int32_t)to_signed<F32>(x, INT32_MIN, INT32_MAX);
}
ORU_API uint32_t oruDec32ToUInt32(oruDec32 x) { return (uint32_t)to_unsigned<F32>(x, UINT32_MAX); }
ORU_API int64_t oruDec32ToInt64(oruDec32 x) { return to_signed<F32>(x, INT64_MIN, INT64_MAX); }
ORU_API uint64_t oruDec32ToUInt64(oruDec32 x) { return to_unsigned<F32>(x, UINT64_MAX); }
ORU_API int32_t oruDec64ToInt32(oruDec64 x) {
  return (int32_t)to_signed<F64>(x, INT32_MIN, INT32_MAX);
}
ORU_API uint32_t oruDec64ToUInt32(oruDec64 x) { return (uint32_t)to_unsigned<F64>(x, UINT32_MAX); }
ORU_API int64_t oruDec64ToInt64(oruDec64 x) { return to_signed<F64>(x, INT64_MIN, INT64_MAX); }
ORU_API uint64_t oruDec64ToUInt64(oruDec64 x) { return to_unsigned<F64>(x, UINT64_MAX); }
ORU_API int32_t oruDec128ToInt32(const oruDec128* x) {
  return (int32_t)to_signed<F128>(load(x), INT32_MIN, INT32_MAX);
}
ORU_API uint32_t oruDec128ToUInt32(const oruDec128* x) {
  return (uint32_t)to_unsigned<F128>(load(x), UINT32_MAX);
}
ORU_API int64_t oruDec128ToInt64(const oruDec128* x) {
  return to_signed<F128>(load(x), INT64_MIN, INT64_MAX);
}
ORU_API uint64_t oruDec128ToUInt64(const oruDec128* x) {
  return to_unsigned<F128>(load(x), UINT64_MAX);
}

}  // extern "C"
