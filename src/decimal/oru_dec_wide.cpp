/*
 * The two wide-integer routines too long to inline: long division and the
 * integer square root.
 */
#include "decimal/oru_dec_wide.h"

namespace oru_dec {

namespace {

void to_limbs(const u256& v, uint64_t out[4]) {
  out[0] = (uint64_t)v.lo;
  out[1] = (uint64_t)(v.lo >> 64);
  out[2] = (uint64_t)v.hi;
  out[3] = (uint64_t)(v.hi >> 64);
}

u256 from_limbs(const uint64_t in[4]) {
  return u256{((u128)in[1] << 64) | in[0], ((u128)in[3] << 64) | in[2]};
}

}  // namespace

void divmod256(const u256& n, const u256& d, u256* q, u256* r) {
  if (d.hi == 0 && (d.lo >> 64) == 0) {
    uint64_t rem;
    *q = divmod64(n, (uint64_t)d.lo, &rem);
    *r = make256(rem);
    return;
  }
  if (cmp(n, d) < 0) {
    *q = make256(0);
    *r = n;
    return;
  }
  uint64_t un_in[4], vn_in[4];
  to_limbs(n, un_in);
  to_limbs(d, vn_in);
  int dn = 4;
  while (vn_in[dn - 1] == 0) --dn;
  int nn = 4;
  while (un_in[nn - 1] == 0) --nn;
  // Normalise so that the divisor's top limb has its high bit set.
  int s = __builtin_clzll(vn_in[dn - 1]);
  uint64_t vn[4] = {0, 0, 0, 0}, un[5] = {0, 0, 0, 0, 0};
  for (int i = dn - 1; i > 0; --i) vn[i] = (vn_in[i] << s) | (s ? vn_in[i - 1] >> (64 - s) : 0);
  vn[0] = vn_in[0] << s;
  un[nn] = s ? un_in[nn - 1] >> (64 - s) : 0;
  for (int i = nn - 1; i > 0; --i) un[i] = (un_in[i] << s) | (s ? un_in[i - 1] >> (64 - s) : 0);
  un[0] = un_in[0] << s;

  uint64_t qq[4] = {0, 0, 0, 0};
  const u128 base = (u128)1 << 64;
  for (int j = nn - dn; j >= 0; --j) {
    u128 num = ((u128)un[j + dn] << 64) | un[j + dn - 1];
    u128 qhat, rhat;
    if (un[j + dn] < vn[dn - 1]) {
      uint64_t rest;
      qhat = div_step(un[j + dn], un[j + dn - 1], vn[dn - 1], &rest);
      rhat = rest;
    } else {
      qhat = num / vn[dn - 1];
      rhat = num % vn[dn - 1];
    }
    while (qhat >= base || qhat * vn[dn - 2] > ((rhat << 64) | un[j + dn - 2])) {
      --qhat;
      rhat += vn[dn - 1];
      if (rhat >= base) break;
    }
    // Multiply and subtract.
    __int128 borrow = 0;
    u128 carry = 0;
    for (int i = 0; i < dn; ++i) {
      u128 p = qhat * vn[i] + carry;
      carry = p >> 64;
      __int128 t = (__int128)un[i + j] - (uint64_t)p + borrow;
      un[i + j] = (uint64_t)t;
      borrow = t >> 64;
    }
    __int128 t = (__int128)un[j + dn] - (uint64_t)carry + borrow;
    un[j + dn] = (uint64_t)t;
    if (t < 0) {
      // qhat was one too large: add the divisor back.
      --qhat;
      u128 c = 0;
      for (int i = 0; i < dn; ++i) {
        u128 sum = (u128)un[i + j] + vn[i] + c;
        un[i + j] = (uint64_t)sum;
        c = sum >> 64;
      }
      un[j + dn] += (uint64_t)c;
    }
    qq[j] = (uint64_t)qhat;
  }
  *q = from_limbs(qq);
  uint64_t rr[4] = {0, 0, 0, 0};
  for (int i = 0; i < dn; ++i) rr[i] = (un[i] >> s) | (s ? un[i + 1] << (64 - s) : 0);
  *r = from_limbs(rr);
}

u256 isqrt256(const u256& n) {
  if (is_zero(n)) return n;
  // Newton's iteration from a power of two at or above the root decreases
  // monotonically to the floor of the root.
  int bits = bit_length(n);
  int e = (bits + 1) / 2;
  u256 x = e >= 128 ? u256{0, (u128)1 << (e - 128)} : u256{(u128)1 << e, 0};
  for (;;) {
    u256 qt, rm;
    divmod256(n, x, &qt, &rm);
    u256 y = add(x, qt);
    y = u256{(y.lo >> 1) | (y.hi << 127), y.hi >> 1};
    if (cmp(y, x) >= 0) return x;
    x = y;
  }
}

}  // namespace oru_dec
