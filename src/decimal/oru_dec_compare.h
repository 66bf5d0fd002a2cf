/*
 * Numeric comparison and the total order, written once for both formats.
 */
#ifndef ORU_DEC_COMPARE_H
#define ORU_DEC_COMPARE_H

#include "decimal/oru_dec_ops.h"

namespace oru_dec {

// Compares the magnitudes of two non-zero finite values exactly.
inline int compare_magnitudes(u128 c1, int32_t e1, u128 c2, int32_t e2) {
  int d1 = digits128(c1), d2 = digits128(c2);
  int32_t a1 = e1 + d1 - 1, a2 = e2 + d2 - 1;
  if (a1 != a2) return a1 < a2 ? -1 : 1;
  // Same adjusted exponent: the difference of exponents is below 34.
  if (e1 == e2) return c1 == c2 ? 0 : (c1 < c2 ? -1 : 1);
  if (e1 > e2) return cmp(mul_pow10(make256(c1), e1 - e2), make256(c2));
  return cmp(make256(c1), mul_pow10(make256(c2), e2 - e1));
}

// -1, 0 or 1 for two non-NaN values.
template <class F>
int compare_values(const Num& a, const Num& b) {
  if (a.kind == kInf || b.kind == kInf) {
    int va = a.kind == kInf ? (a.sign ? -1 : 1) : 0;
    int vb = b.kind == kInf ? (b.sign ? -1 : 1) : 0;
    return va == vb ? 0 : (va < vb ? -1 : 1);
  }
  bool az = a.c == 0, bz = b.c == 0;
  if (az && bz) return 0;
  if (az) return b.sign ? 1 : -1;
  if (bz) return a.sign ? -1 : 1;
  if (a.sign != b.sign) return a.sign ? -1 : 1;
  int m = compare_magnitudes(a.c, a.e, b.c, b.e);
  return a.sign ? -m : m;
}

// The total order of magnitudes: finite numbers (by value, then by
// exponent), infinity, signalling NaNs, quiet NaNs (by payload).
template <class F>
int total_compare_magnitudes(const Num& a, const Num& b) {
  static constexpr int kRank[4] = {0, 1, 3, 2};  // finite, inf, qNaN, sNaN
  int ra = kRank[a.kind], rb = kRank[b.kind];
  if (ra != rb) return ra < rb ? -1 : 1;
  if (a.kind == kInf) return 0;
  if (a.kind != kFinite) return a.c == b.c ? 0 : (a.c < b.c ? -1 : 1);
  if (a.c != 0 || b.c != 0) {
    int m = (a.c == 0) ? -1 : (b.c == 0) ? 1 : compare_magnitudes(a.c, a.e, b.c, b.e);
    if (m != 0) return m;
  }
  return a.e == b.e ? 0 : (a.e < b.e ? -1 : 1);
}

template <class F>
int total_compare(const Num& a, const Num& b) {
  if (a.sign != b.sign) return a.sign ? -1 : 1;
  int m = total_compare_magnitudes<F>(a, b);
  return a.sign ? -m : m;
}

// Comparison predicates: the relation bits say which of less (1), equal (2),
// greater (4) and unordered (8) make the predicate true.
enum Rel { kLess = 1, kEqual = 2, kGreater = 4, kUnordered = 8 };

template <class F>
int op_compare(typename F::Raw x, typename F::Raw y, int relations, bool signaling, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  if (a.kind >= kQNaN || b.kind >= kQNaN) {
    if (signaling || a.kind == kSNaN || b.kind == kSNaN) *fl |= kInvalid;
    return (relations & kUnordered) != 0;
  }
  int c = compare_values<F>(a, b);
  int rel = c < 0 ? kLess : c == 0 ? kEqual : kGreater;
  return (relations & rel) != 0;
}

template <class F>
int op_total_order(typename F::Raw x, typename F::Raw y, bool magnitude) {
  Num a = F::unpack(x), b = F::unpack(y);
  if (magnitude) {
    a.sign = 0;
    b.sign = 0;
  }
  return total_compare<F>(a, b) <= 0;
}

// MinNum, MaxNum and their magnitude forms.  A quiet NaN loses to a
// number; a signalling one raises invalid.  Values that compare equal are
// told apart by the total order, so Min(+0, -0) is -0 and Max(1E1, 10E0)
// is 1E1.
template <class F>
typename F::Raw op_min_max(typename F::Raw x, typename F::Raw y, bool want_max, bool magnitude,
                           uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  if (a.kind >= kQNaN || b.kind >= kQNaN) {
    typename F::Raw out;
    if (a.kind >= kQNaN && b.kind >= kQNaN) {
      propagate2<F>(a, b, &out, fl);
      return out;
    }
    if (a.kind == kSNaN || b.kind == kSNaN) *fl |= kInvalid;
    a = a.kind >= kQNaN ? b : a;
  } else {
    int c = 0;
    if (magnitude) {
      Num ma = a, mb = b;
      ma.sign = mb.sign = 0;
      c = compare_values<F>(ma, mb);
    }
    if (c == 0) c = compare_values<F>(a, b);
    if (c == 0) c = total_compare<F>(a, b);
    if ((c > 0) == want_max) {
      // a is already the answer
    } else {
      a = b;
    }
  }
  if (a.kind == kInf) return F::inf(a.sign);
  return F::pack(a.sign, a.c, a.e);
}

}  // namespace oru_dec

#endif  // ORU_DEC_COMPARE_H
