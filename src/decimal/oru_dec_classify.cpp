/*
 * Constants, classification and the sign bit operations.
 */
#include "decimal/oru_dec_format.h"
#include "oru/decimal.h"

using namespace oru_dec;

extern "C" {

const oruDec32 oruDEC32_MIN = 0x03000001u;
const oruDec32 oruDEC32_MAX = 0x77F8967Fu;
const oruDec32 oruDEC32_EPSILON = 0x2F800001u;
const oruDec32 oruDEC32_INFINITY = 0x78000000u;
const oruDec32 oruDEC32_QUIET_NAN = 0x7C000000u;
const oruDec32 oruDEC32_SIGNALING_NAN = 0x7E000000u;
const oruDec32 oruDEC32_SUBNORMAL_MIN = 0x00000001u;
const oruDec64 oruDEC64_MIN = 0x01E0000000000001ull;
const oruDec64 oruDEC64_MAX = 0x77FB86F26FC0FFFFull;
const oruDec64 oruDEC64_EPSILON = 0x2FE0000000000001ull;
const oruDec64 oruDEC64_INFINITY = 0x7800000000000000ull;
const oruDec64 oruDEC64_QUIET_NAN = 0x7C00000000000000ull;
const oruDec64 oruDEC64_SIGNALING_NAN = 0x7E00000000000000ull;
const oruDec64 oruDEC64_SUBNORMAL_MIN = 0x0000000000000001ull;
const oruDec128 oruDEC128_MIN = {{0x0000000000000001ull, 0x0042000000000000ull}};
const oruDec128 oruDEC128_MAX = {{0x378D8E63FFFFFFFFull, 0x5FFFED09BEAD87C0ull}};
const oruDec128 oruDEC128_EPSILON = {{0x0000000000000001ull, 0x2FFE000000000000ull}};
const oruDec128 oruDEC128_INFINITY = {{0, 0x7800000000000000ull}};
const oruDec128 oruDEC128_QUIET_NAN = {{0, 0x7C00000000000000ull}};
const oruDec128 oruDEC128_SIGNALING_NAN = {{0, 0x7E00000000000000ull}};
const oruDec128 oruDEC128_SUBNORMAL_MIN = {{0x0000000000000001ull, 0}};

}  // extern "C"

namespace {

template <class F>
int classify(typename F::Raw x) {
  Num n = F::unpack(x);
  switch (n.kind) {
    case kSNaN:
      return ORU_DEC_SIGNALING_NAN;
    case kQNaN:
      return ORU_DEC_QUIET_NAN;
    case kInf:
      return n.sign ? ORU_DEC_NEGATIVE_INFINITY : ORU_DEC_POSITIVE_INFINITY;
    default:
      break;
  }
  if (n.c == 0) return n.sign ? ORU_DEC_NEGATIVE_ZERO : ORU_DEC_POSITIVE_ZERO;
  if (n.e + digits128(n.c) - 1 < F::EMIN)
    return n.sign ? ORU_DEC_NEGATIVE_SUBNORMAL : ORU_DEC_POSITIVE_SUBNORMAL;
  return n.sign ? ORU_DEC_NEGATIVE_NORMAL : ORU_DEC_POSITIVE_NORMAL;
}

template <class F>
int is_class(typename F::Raw x, unsigned set) {
  return (set >> classify<F>(x)) & 1u;
}

constexpr unsigned kFiniteSet =
    (1u << 3) | (1u << 4) | (1u << 5) | (1u << 6) | (1u << 7) | (1u << 8);
constexpr unsigned kInfSet = (1u << 2) | (1u << 9);
constexpr unsigned kNaNSet = (1u << 0) | (1u << 1);
constexpr unsigned kNormalSet = (1u << 3) | (1u << 8);
constexpr unsigned kSubnormalSet = (1u << 4) | (1u << 7);
constexpr unsigned kZeroSet = (1u << 5) | (1u << 6);

}  // namespace

extern "C" {

ORU_API int oruDec64Class(oruDec64 x) { return classify<F64>(x); }
ORU_API int oruDec64IsCanonical(oruDec64 x) { return F64::is_canonical(x); }
ORU_API int oruDec64IsFinite(oruDec64 x) { return is_class<F64>(x, kFiniteSet); }
ORU_API int oruDec64IsInfinite(oruDec64 x) { return is_class<F64>(x, kInfSet); }
ORU_API int oruDec64IsNaN(oruDec64 x) { return is_class<F64>(x, kNaNSet); }
ORU_API int oruDec64IsNormal(oruDec64 x) { return is_class<F64>(x, kNormalSet); }
ORU_API int oruDec64IsSignMinus(oruDec64 x) { return (int)(x >> 63); }
ORU_API int oruDec64IsSubnormal(oruDec64 x) { return is_class<F64>(x, kSubnormalSet); }
ORU_API int oruDec64IsZero(oruDec64 x) { return is_class<F64>(x, kZeroSet); }

ORU_API int oruDec128Class(const oruDec128* x) { return classify<F128>(load(x)); }
ORU_API int oruDec128IsCanonical(const oruDec128* x) { return F128::is_canonical(load(x)); }
ORU_API int oruDec128IsFinite(const oruDec128* x) { return is_class<F128>(load(x), kFiniteSet); }
ORU_API int oruDec128IsInfinite(const oruDec128* x) { return is_class<F128>(load(x), kInfSet); }
ORU_API int oruDec128IsNaN(const oruDec128* x) { return is_class<F128>(load(x), kNaNSet); }
ORU_API int oruDec128IsNormal(const oruDec128* x) { return is_class<F128>(load(x), kNormalSet); }
ORU_API int oruDec128IsSignMinus(const oruDec128* x) { return (int)(load(x) >> 127); }
ORU_API int oruDec128IsSubnormal(const oruDec128* x) {
  return is_class<F128>(load(x), kSubnormalSet);
}
ORU_API int oruDec128IsZero(const oruDec128* x) { return is_class<F128>(load(x), kZeroSet); }

ORU_API oruDec64 oruDec64Negate(oruDec64 x) { return x ^ F64::kSign; }
ORU_API oruDec64 oruDec64Abs(oruDec64 x) { return x & ~F64::kSign; }
ORU_API oruDec64 oruDec64CopySign(oruDec64 x, oruDec64 y) {
  return (x & ~F64::kSign) | (y & F64::kSign);
}
ORU_API oruDec128* oruDec128Negate(oruDec128* res, const oruDec128* x) {
  return store(res, load(x) ^ F128::kSign);
}
ORU_API oruDec128* oruDec128Abs(oruDec128* res, const oruDec128* x) {
  return store(res, load(x) & ~F128::kSign);
}
ORU_API oruDec128* oruDec128CopySign(oruDec128* res, const oruDec128* x, const oruDec128* y) {
  return store(res, (load(x) & ~F128::kSign) | (load(y) & F128::kSign));
}

}  // extern "C"
