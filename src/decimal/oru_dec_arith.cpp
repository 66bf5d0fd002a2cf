/*
 * The exported arithmetic and comparison functions of both widths: thin
 * wrappers that copy the operands, run the shared core and add its flags to
 * the calling thread's word.
 */
#include "decimal/oru_dec_compare.h"
#include "decimal/oru_dec_fast.h"
#include "decimal/oru_dec_ops.h"
#include "oru/decimal.h"

using namespace oru_dec;

namespace {

int round_mode(int mode) {
  switch (mode) {
    case ORU_DEC_ROUND_HALF_UP:
      return kHalfAway;
    case ORU_DEC_ROUND_CEILING:
      return kCeiling;
    case ORU_DEC_ROUND_FLOOR:
      return kFloor;
    case ORU_DEC_ROUND_DOWN:
      return kDown;
    default:
      return kHalfEven;
  }
}

// Runs expr with a local flag word fl and raises what it collected.
#define WITH_FLAGS(type, expr) \
  uint32_t fl = 0;             \
  type r_ = (expr);            \
  raise(fl);                   \
  return r_

}  // namespace

extern "C" {

/* decimal64 */

ORU_API oruDec64 oruDec64Add(oruDec64 x, oruDec64 y) { WITH_FLAGS(oruDec64, add64(x, y, 0, &fl)); }
ORU_API oruDec64 oruDec64Sub(oruDec64 x, oruDec64 y) { WITH_FLAGS(oruDec64, add64(x, y, 1, &fl)); }
ORU_API oruDec64 oruDec64Mul(oruDec64 x, oruDec64 y) { WITH_FLAGS(oruDec64, mul64(x, y, &fl)); }
ORU_API oruDec64 oruDec64Div(oruDec64 x, oruDec64 y) { WITH_FLAGS(oruDec64, div64(x, y, &fl)); }
ORU_API oruDec64 oruDec64FusedMulAdd(oruDec64 x, oruDec64 y, oruDec64 z) {
  WITH_FLAGS(oruDec64, op_fma<F64>(x, y, z, &fl));
}
ORU_API oruDec64 oruDec64Sqrt(oruDec64 x) { WITH_FLAGS(oruDec64, op_sqrt<F64>(x, &fl)); }
ORU_API oruDec64 oruDec64Remainder(oruDec64 x, oruDec64 y) {
  WITH_FLAGS(oruDec64, op_remainder<F64>(x, y, &fl));
}
ORU_API oruDec64 oruDec64Quantize(oruDec64 x, oruDec64 y, int mode) {
  WITH_FLAGS(oruDec64, op_quantize<F64>(x, y, mode_from_table(mode), &fl));
}
ORU_API oruDec64 oruDec64ScaleB(oruDec64 x, int n) {
  WITH_FLAGS(oruDec64, op_scaleb<F64>(x, n, &fl));
}
ORU_API int oruDec64LogB(oruDec64 x) { WITH_FLAGS(int, op_logb<F64>(x, &fl)); }
ORU_API oruDec64 oruDec64RoundHalfEven(oruDec64 x) {
  WITH_FLAGS(oruDec64, op_to_integral<F64>(x, kHalfEven, false, &fl));
}
ORU_API oruDec64 oruDec64RoundHalfUp(oruDec64 x) {
  WITH_FLAGS(oruDec64, op_to_integral<F64>(x, kHalfAway, false, &fl));
}
ORU_API oruDec64 oruDec64RoundCeiling(oruDec64 x) {
  WITH_FLAGS(oruDec64, op_to_integral<F64>(x, kCeiling, false, &fl));
}
ORU_API oruDec64 oruDec64RoundFloor(oruDec64 x) {
  WITH_FLAGS(oruDec64, op_to_integral<F64>(x, kFloor, false, &fl));
}
ORU_API oruDec64 oruDec64RoundDown(oruDec64 x) {
  WITH_FLAGS(oruDec64, op_to_integral<F64>(x, kDown, false, &fl));
}
ORU_API oruDec64 oruDec64Round(oruDec64 x, int mode) {
  WITH_FLAGS(oruDec64, op_to_integral<F64>(x, round_mode(mode), false, &fl));
}
ORU_API oruDec64 oruDec64RoundExact(oruDec64 x, int mode) {
  WITH_FLAGS(oruDec64, op_to_integral<F64>(x, mode_from_table(mode), true, &fl));
}
ORU_API oruDec64 oruDec64NextUp(oruDec64 x) { WITH_FLAGS(oruDec64, op_next<F64>(x, true, &fl)); }
ORU_API oruDec64 oruDec64NextDown(oruDec64 x) { WITH_FLAGS(oruDec64, op_next<F64>(x, false, &fl)); }
ORU_API oruDec64 oruDec64NextAfter(oruDec64 x, oruDec64 y) {
  WITH_FLAGS(oruDec64, op_next_after<F64>(x, y, &fl));
}
ORU_API void oruDec64Increment(oruDec64* x) {
  uint32_t fl = 0;
  *x = add64(*x, F64::pack(0, 1, 0), 0, &fl);
  raise(fl);
}
ORU_API void oruDec64Decrement(oruDec64* x) {
  uint32_t fl = 0;
  *x = add64(*x, F64::pack(0, 1, 0), 1, &fl);
  raise(fl);
}
ORU_API int oruDec64SameQuantum(oruDec64 x, oruDec64 y) { return op_same_quantum<F64>(x, y); }

#define CMP64(name, rel, sig)                                           \
  ORU_API int oruDec64##name(oruDec64 x, oruDec64 y) {                  \
    WITH_FLAGS(int, op_compare<F64>(x, y, rel, sig, &fl));              \
  }                                                                     \
  ORU_API int oruDec128##name(const oruDec128* x, const oruDec128* y) { \
    WITH_FLAGS(int, op_compare<F128>(load(x), load(y), rel, sig, &fl)); \
  }

CMP64(QuietEqual, kEqual, false)
CMP64(QuietNotEqual, kLess | kGreater | kUnordered, false)
CMP64(QuietGreater, kGreater, false)
CMP64(QuietGreaterEqual, kGreater | kEqual, false)
CMP64(QuietLess, kLess, false)
CMP64(QuietLessEqual, kLess | kEqual, false)
CMP64(QuietOrdered, kLess | kEqual | kGreater, false)
CMP64(QuietUnordered, kUnordered, false)
CMP64(SignalingGreater, kGreater, true)
CMP64(SignalingGreaterEqual, kGreater | kEqual, true)
CMP64(SignalingLess, kLess, true)
CMP64(SignalingLessEqual, kLess | kEqual, true)

ORU_API int oruDec64TotalOrder(oruDec64 x, oruDec64 y) { return op_total_order<F64>(x, y, false); }
ORU_API int oruDec64TotalOrderMag(oruDec64 x, oruDec64 y) {
  return op_total_order<F64>(x, y, true);
}
ORU_API int oruDec128TotalOrder(const oruDec128* x, const oruDec128* y) {
  return op_total_order<F128>(load(x), load(y), false);
}
ORU_API int oruDec128TotalOrderMag(const oruDec128* x, const oruDec128* y) {
  return op_total_order<F128>(load(x), load(y), true);
}

#define MINMAX(name, want_max, mag)                                                            \
  ORU_API oruDec64 oruDec64##name(oruDec64 x, oruDec64 y) {                                    \
    WITH_FLAGS(oruDec64, op_min_max<F64>(x, y, want_max, mag, &fl));                           \
  }                                                                                            \
  ORU_API oruDec128* oruDec128##name(oruDec128* res, const oruDec128* x, const oruDec128* y) { \
    uint32_t fl = 0;                                                                           \
    u128 r = op_min_max<F128>(load(x), load(y), want_max, mag, &fl);                           \
    raise(fl);                                                                                 \
    return store(res, r);                                                                      \
  }

MINMAX(MinNum, false, false)
MINMAX(MaxNum, true, false)
MINMAX(MinNumMag, false, true)
MINMAX(MaxNumMag, true, true)

/* decimal128 */

#define R128(expr)  \
  uint32_t fl = 0;  \
  u128 r_ = (expr); \
  raise(fl);        \
  return store(res, r_)

ORU_API oruDec128* oruDec128Add(oruDec128* res, const oruDec128* x, const oruDec128* y) {
  R128(add128(load(x), load(y), 0, &fl));
}
ORU_API oruDec128* oruDec128Sub(oruDec128* res, const oruDec128* x, const oruDec128* y) {
  R128(add128(load(x), load(y), 1, &fl));
}
ORU_API oruDec128* oruDec128Mul(oruDec128* res, const oruDec128* x, const oruDec128* y) {
  R128(op_mul<F128>(load(x), load(y), &fl));
}
ORU_API oruDec128* oruDec128Div(oruDec128* res, const oruDec128* x, const oruDec128* y) {
  R128(div128(load(x), load(y), &fl));
}
ORU_API oruDec128* oruDec128FusedMulAdd(oruDec128* res, const oruDec128* x, const oruDec128* y,
                                        const oruDec128* z) {
  R128(op_fma<F128>(load(x), load(y), load(z), &fl));
}
ORU_API oruDec128* oruDec128Sqrt(oruDec128* res, const oruDec128* x) {
  R128(op_sqrt<F128>(load(x), &fl));
}
ORU_API oruDec128* oruDec128Remainder(oruDec128* res, const oruDec128* x, const oruDec128* y) {
  R128(op_remainder<F128>(load(x), load(y), &fl));
}
ORU_API oruDec128* oruDec128Quantize(oruDec128* res, const oruDec128* x, const oruDec128* y,
                                     int mode) {
  R128(op_quantize<F128>(load(x), load(y), mode_from_table(mode), &fl));
}
ORU_API oruDec128* oruDec128ScaleB(oruDec128* res, const oruDec128* x, int n) {
  R128(op_scaleb<F128>(load(x), n, &fl));
}
ORU_API int oruDec128LogB(const oruDec128* x) { WITH_FLAGS(int, op_logb<F128>(load(x), &fl)); }
ORU_API oruDec128* oruDec128RoundHalfEven(oruDec128* res, const oruDec128* x) {
  R128(op_to_integral<F128>(load(x), kHalfEven, false, &fl));
}
ORU_API oruDec128* oruDec128RoundHalfUp(oruDec128* res, const oruDec128* x) {
  R128(op_to_integral<F128>(load(x), kHalfAway, false, &fl));
}
ORU_API oruDec128* oruDec128RoundCeiling(oruDec128* res, const oruDec128* x) {
  R128(op_to_integral<F128>(load(x), kCeiling, false, &fl));
}
ORU_API oruDec128* oruDec128RoundFloor(oruDec128* res, const oruDec128* x) {
  R128(op_to_integral<F128>(load(x), kFloor, false, &fl));
}
ORU_API oruDec128* oruDec128RoundDown(oruDec128* res, const oruDec128* x) {
  R128(op_to_integral<F128>(load(x), kDown, false, &fl));
}
ORU_API oruDec128* oruDec128Round(oruDec128* res, const oruDec128* x, int mode) {
  R128(op_to_integral<F128>(load(x), round_mode(mode), false, &fl));
}
ORU_API oruDec128* oruDec128RoundExact(oruDec128* res, const oruDec128* x, int mode) {
  R128(op_to_integral<F128>(load(x), mode_from_table(mode), true, &fl));
}
ORU_API oruDec128* oruDec128NextUp(oruDec128* res, const oruDec128* x) {
  R128(op_next<F128>(load(x), true, &fl));
}
ORU_API oruDec128* oruDec128NextDown(oruDec128* res, const oruDec128* x) {
  R128(op_next<F128>(load(x), false, &fl));
}
ORU_API oruDec128* oruDec128NextAfter(oruDec128* res, const oruDec128* x, const oruDec128* y) {
  R128(op_next_after<F128>(load(x), load(y), &fl));
}
ORU_API void oruDec128Increment(oruDec128* x) {
  uint32_t fl = 0;
  u128 r = add128(load(x), F128::pack(0, 1, 0), 0, &fl);
  raise(fl);
  store(x, r);
}
ORU_API void oruDec128Decrement(oruDec128* x) {
  uint32_t fl = 0;
  u128 r = add128(load(x), F128::pack(0, 1, 0), 1, &fl);
  raise(fl);
  store(x, r);
}
ORU_API int oruDec128SameQuantum(const oruDec128* x, const oruDec128* y) {
  return op_same_quantum<F128>(load(x), load(y));
}

}  // extern "C"
