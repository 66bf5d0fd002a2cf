/*
 * The arithmetic operations, written once for both formats.  Each takes
 * encodings, accumulates core flags in *fl and returns an encoding; the
 * exported wrappers add the flags to the calling thread's word.
 */
#ifndef ORU_DEC_OPS_H
#define ORU_DEC_OPS_H

#include "decimal/oru_dec_format.h"

namespace oru_dec {

// A finite operand of the shared addition: sign, coefficient, exponent.
struct Wide {
  uint32_t sign;
  u256 c;
  int64_t e;
};

// Exact addition of two finite values, as far as 256 bits allow: the result
// is (r.c + f) * 10^r.e, with f strictly between 0 and 1 when *sticky is
// set.  Digits of the smaller operand are folded into sticky only when the
// larger one has been scaled to 76 digits, far more than any format keeps,
// so rounding of the result is unaffected.  The zero result of a
// cancellation is positive (the only rounding direction used for sums).
inline void add_exact(Wide a, Wide b, Wide* r, bool* sticky) {
  *sticky = false;
  if (a.e < b.e) {
    Wide t = a;
    a = b;
    b = t;
  }
  int64_t diff = a.e - b.e;
  bool az = is_zero(a.c), bz = is_zero(b.c);
  if (az && bz) {
    *r = Wide{a.sign & b.sign, make256(0), b.e};
    return;
  }
  if (az) {
    *r = b;
    return;
  }
  int da = digits256(a.c);
  int64_t room = 76 - da;
  int64_t s = diff < room ? diff : room;
  u256 A = mul_pow10(a.c, (int)s);
  if (bz) {
    *r = Wide{a.sign, A, a.e - s};
    return;
  }
  int64_t t = diff - s;
  u256 B = b.c;
  bool st = false;
  if (t > 0) {
    if (t >= digits256(b.c)) {
      B = make256(0);
      st = true;
    } else {
      B = div_pow10(b.c, (int)t, &st);
    }
  }
  r->e = a.e - s;
  if (a.sign == b.sign) {
    r->c = add(A, B);
    r->sign = a.sign;
  } else if (st) {
    r->c = sub(sub(A, B), make256(1));
    r->sign = a.sign;
  } else {
    int c = cmp(A, B);
    if (c == 0) {
      r->c = make256(0);
      r->sign = 0;
    } else if (c > 0) {
      r->c = sub(A, B);
      r->sign = a.sign;
    } else {
      r->c = sub(B, A);
      r->sign = b.sign;
    }
  }
  *sticky = st;
}

template <class F>
typename F::Raw op_add(typename F::Raw x, typename F::Raw y, uint32_t negate_y, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  typename F::Raw out;
  if (propagate2<F>(a, b, &out, fl)) return out;
  b.sign ^= negate_y;
  if (a.kind == kInf || b.kind == kInf) {
    if (a.kind == kInf && b.kind == kInf && a.sign != b.sign) {
      *fl |= kInvalid;
      return F::qnan(0, 0);
    }
    return F::inf(a.kind == kInf ? a.sign : b.sign);
  }
  Wide r;
  bool sticky;
  add_exact(Wide{a.sign, make256(a.c), a.e}, Wide{b.sign, make256(b.c), b.e}, &r, &sticky);
  return finish<F>(r.sign, r.c, r.e, sticky, kHalfEven, fl);
}

template <class F>
typename F::Raw op_mul(typename F::Raw x, typename F::Raw y, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  typename F::Raw out;
  if (propagate2<F>(a, b, &out, fl)) return out;
  uint32_t sign = a.sign ^ b.sign;
  if (a.kind == kInf || b.kind == kInf) {
    if ((a.kind == kFinite && a.c == 0) || (b.kind == kFinite && b.c == 0)) {
      *fl |= kInvalid;
      return F::qnan(0, 0);
    }
    return F::inf(sign);
  }
  return finish<F>(sign, mul128x128(a.c, b.c), (int64_t)a.e + b.e, false, kHalfEven, fl);
}

template <class F>
typename F::Raw op_div(typename F::Raw x, typename F::Raw y, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  typename F::Raw out;
  if (propagate2<F>(a, b, &out, fl)) return out;
  uint32_t sign = a.sign ^ b.sign;
  if (a.kind == kInf) {
    if (b.kind == kInf) {
      *fl |= kInvalid;
      return F::qnan(0, 0);
    }
    return F::inf(sign);
  }
  if (b.kind == kInf) return F::pack(sign, 0, F::QMIN);
  if (b.c == 0) {
    if (a.c == 0) {
      *fl |= kInvalid;
      return F::qnan(0, 0);
    }
    *fl |= kDivByZero;
    return F::inf(sign);
  }
  int64_t ideal = (int64_t)a.e - b.e;
  if (a.c == 0) return finish<F>(sign, make256(0), ideal, false, kHalfEven, fl);
  int da = digits128(a.c), db = digits128(b.c);
  // Scale the dividend so that the quotient has at least P + 1 digits.
  int k = F::P + 1 + db - da;
  if (k < 0) k = 0;
  u256 q, r;
  divmod256(mul_pow10(make256(a.c), k), make256(b.c), &q, &r);
  int64_t e = ideal - k;
  bool sticky = !is_zero(r);
  // Exact: remove trailing zeros down to the preferred exponent.
  if (!sticky) strip_zeros(&q, &e, ideal);
  return finish<F>(sign, q, e, sticky, kHalfEven, fl);
}

template <class F>
typename F::Raw op_fma(typename F::Raw x, typename F::Raw y, typename F::Raw z, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y), c = F::unpack(z);
  if ((a.kind | b.kind | c.kind) >= kQNaN) {
    if (a.kind == kSNaN) return nan_result<F>(a, fl);
    if (b.kind == kSNaN) return nan_result<F>(b, fl);
    if (c.kind == kSNaN) return nan_result<F>(c, fl);
    if (a.kind == kQNaN) return nan_result<F>(a, fl);
    if (b.kind == kQNaN) return nan_result<F>(b, fl);
    // Only z is NaN: an invalid product still signals.
    if ((a.kind == kInf && b.kind == kFinite && b.c == 0) ||
        (b.kind == kInf && a.kind == kFinite && a.c == 0))
      *fl |= kInvalid;
    return nan_result<F>(c, fl);
  }
  uint32_t sign = a.sign ^ b.sign;
  if (a.kind == kInf || b.kind == kInf) {
    if ((a.kind == kFinite && a.c == 0) || (b.kind == kFinite && b.c == 0) ||
        (c.kind == kInf && c.sign != sign)) {
      *fl |= kInvalid;
      return F::qnan(0, 0);
    }
    return F::inf(sign);
  }
  if (c.kind == kInf) return F::inf(c.sign);
  Wide r;
  bool sticky;
  add_exact(Wide{sign, mul128x128(a.c, b.c), (int64_t)a.e + b.e}, Wide{c.sign, make256(c.c), c.e},
            &r, &sticky);
  return finish<F>(r.sign, r.c, r.e, sticky, kHalfEven, fl);
}

template <class F>
typename F::Raw op_sqrt(typename F::Raw x, uint32_t* fl) {
  Num a = F::unpack(x);
  if (a.kind >= kQNaN) return nan_result<F>(a, fl);
  if (a.kind == kInf) {
    if (a.sign) {
      *fl |= kInvalid;
      return F::qnan(0, 0);
    }
    return F::inf(0);
  }
  int64_t ideal = a.e >> 1;  // floor(e / 2)
  if (a.c == 0) return F::pack(a.sign, 0, ideal);
  if (a.sign) {
    *fl |= kInvalid;
    return F::qnan(0, 0);
  }
  // Scale to 2P + 2 or 2P + 3 digits with an even exponent, so that the
  // integer root has P + 1 or more digits.
  int d = digits128(a.c);
  int k = 2 * F::P + 2 - d;
  if (((a.e - k) & 1) != 0) ++k;
  u256 n = mul_pow10(make256(a.c), k);
  u256 s = isqrt256(n);
  u256 sq = mul256x128(s, s.lo);  // s < 2^128
  bool sticky = cmp(sq, n) != 0;
  int64_t e = ((int64_t)a.e - k) / 2;
  if (!sticky) strip_zeros(&s, &e, ideal);
  return finish<F>(0, s, e, sticky, kHalfEven, fl);
}

// x - n * y with n the integer nearest x / y, ties to even.  Exact: the
// result never has more digits than y.
template <class F>
typename F::Raw op_remainder(typename F::Raw x, typename F::Raw y, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  typename F::Raw out;
  if (propagate2<F>(a, b, &out, fl)) return out;
  if (a.kind == kInf || (b.kind == kFinite && b.c == 0)) {
    *fl |= kInvalid;
    return F::qnan(0, 0);
  }
  if (b.kind == kInf) return F::pack(a.sign, a.c, a.e);
  int32_t e = a.e < b.e ? a.e : b.e;
  if (a.c == 0) return F::pack(a.sign, 0, e);
  // r = X mod 2Y with X, Y the coefficients at exponent e; the quotient's
  // parity is whether r >= Y.
  u256 Y, r;
  int dx = digits128(a.c), dy = digits128(b.c);
  if (a.e >= b.e) {
    Y = make256(b.c);
    u256 Y2 = add(Y, Y), qt;
    divmod256(make256(a.c), Y2, &qt, &r);
    int k = a.e - b.e;
    while (k > 0) {
      int step = k > 19 ? 19 : k;
      divmod256(mul256x64(r, pow10_64(step)), Y2, &qt, &r);
      k -= step;
    }
  } else {
    int k = b.e - a.e;
    if (dy + k > dx + 1) return F::pack(a.sign, a.c, e);  // |x| < |y| / 2
    Y = mul_pow10(make256(b.c), k);
    u256 Y2 = add(Y, Y), qt;
    divmod256(make256(a.c), Y2, &qt, &r);
  }
  bool odd = cmp(r, Y) >= 0;
  if (odd) r = sub(r, Y);
  uint32_t sign = a.sign;
  u256 twice = add(r, r);
  int c = cmp(twice, Y);
  if (c > 0 || (c == 0 && odd)) {
    r = sub(Y, r);
    sign ^= 1;
  }
  return F::pack(sign, r.lo, e);
}

template <class F>
typename F::Raw op_quantize(typename F::Raw x, typename F::Raw y, int mode, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  typename F::Raw out;
  if (propagate2<F>(a, b, &out, fl)) return out;
  if (a.kind == kInf || b.kind == kInf) {
    if (a.kind == kInf && b.kind == kInf) return F::inf(a.sign);
    *fl |= kInvalid;
    return F::qnan(0, 0);
  }
  if (a.e >= b.e) {
    int s = a.e - b.e;
    if (a.c == 0) return F::pack(a.sign, 0, b.e);
    if (digits128(a.c) + s > F::P) {
      *fl |= kInvalid;
      return F::qnan(0, 0);
    }
    return F::pack(a.sign, a.c * pow10_128(s), b.e);
  }
  bool inexact = false;
  u256 q = shift_round(make256(a.c), (int64_t)b.e - a.e, false, mode, a.sign, &inexact);
  if (inexact) *fl |= kInexact;
  if (q.lo > F::MAXC) {
    *fl |= kInvalid;
    return F::qnan(0, 0);
  }
  return F::pack(a.sign, q.lo, b.e);
}

template <class F>
typename F::Raw op_scaleb(typename F::Raw x, int32_t n, uint32_t* fl) {
  Num a = F::unpack(x);
  if (a.kind >= kQNaN) return nan_result<F>(a, fl);
  if (a.kind == kInf) return F::inf(a.sign);
  return finish<F>(a.sign, make256(a.c), (int64_t)a.e + n, false, kHalfEven, fl);
}

template <class F>
int32_t op_logb(typename F::Raw x, uint32_t* fl) {
  Num a = F::unpack(x);
  if (a.kind == kInf) {
    *fl |= kInvalid;
    return 2147483647;
  }
  if (a.kind != kFinite || a.c == 0) {
    *fl |= kInvalid;
    return (int32_t)0x80000000u;
  }
  return a.e + digits128(a.c) - 1;
}

template <class F>
typename F::Raw op_to_integral(typename F::Raw x, int mode, bool exact, uint32_t* fl) {
  Num a = F::unpack(x);
  if (a.kind >= kQNaN) return nan_result<F>(a, fl);
  if (a.kind == kInf) return F::inf(a.sign);
  if (a.e >= 0) return F::pack(a.sign, a.c, a.e);
  bool inexact = false;
  u256 q = shift_round(make256(a.c), -(int64_t)a.e, false, mode, a.sign, &inexact);
  if (inexact && exact) *fl |= kInexact;
  return F::pack(a.sign, q.lo, 0);
}

// The neighbour of a non-NaN value toward +infinity (up) or -infinity.
template <class F>
typename F::Raw step(const Num& a, bool up) {
  if (a.kind == kInf) {
    if (a.sign == (up ? 0u : 1u)) return F::inf(a.sign);
    return F::pack(a.sign, F::MAXC, F::QMAX);
  }
  if (a.c == 0) return F::pack(up ? 0 : 1, 1, F::QMIN);
  int d = digits128(a.c);
  int64_t s = F::P - d;
  if (a.e - F::QMIN < s) s = a.e - F::QMIN;
  u128 c = a.c * pow10_128((int)s);
  int64_t e = a.e - s;
  if ((a.sign == 0) == up) {
    ++c;
    if (c == pow10_128(F::P)) {
      c = pow10_128(F::P - 1);
      if (++e > F::QMAX) return F::inf(a.sign);
    }
  } else if (c == pow10_128(F::P - 1) && e > F::QMIN) {
    c = pow10_128(F::P) - 1;
    --e;
  } else {
    --c;
  }
  return F::pack(a.sign, c, e);
}

template <class F>
typename F::Raw op_next(typename F::Raw x, bool up, uint32_t* fl) {
  Num a = F::unpack(x);
  if (a.kind >= kQNaN) return nan_result<F>(a, fl);
  return step<F>(a, up);
}

template <class F>
int compare_values(const Num& a, const Num& b);

template <class F>
typename F::Raw op_next_after(typename F::Raw x, typename F::Raw y, uint32_t* fl) {
  Num a = F::unpack(x), b = F::unpack(y);
  typename F::Raw out;
  if (propagate2<F>(a, b, &out, fl)) return out;
  int c = compare_values<F>(a, b);
  if (c == 0) return b.kind == kInf ? F::inf(b.sign) : F::pack(b.sign, b.c, b.e);
  typename F::Raw r = step<F>(a, c < 0);
  Num n = F::unpack(r);
  if (n.kind == kInf) {
    *fl |= kOverflow | kInexact;
  } else if (n.c == 0 || n.e + digits128(n.c) - 1 < F::EMIN) {
    *fl |= kUnderflow | kInexact;
  }
  return r;
}

template <class F>
int op_same_quantum(typename F::Raw x, typename F::Raw y) {
  Num a = F::unpack(x), b = F::unpack(y);
  if (a.kind == kFinite && b.kind == kFinite) return a.e == b.e;
  if (a.kind == kInf && b.kind == kInf) return 1;
  return a.kind >= kQNaN && b.kind >= kQNaN;
}

}  // namespace oru_dec

#endif  // ORU_DEC_OPS_H
