// The wide-integer helpers under the decimal arithmetic, checked by the
// identities that define them on random operands of every width.
#include <gtest/gtest.h>

#include <random>

#include "decimal/oru_dec_wide.h"

namespace {

using namespace oru_dec;

u256 random256(std::mt19937_64& rng, int bits) {
  u256 v{((u128)rng() << 64) | rng(), ((u128)rng() << 64) | rng()};
  if (bits <= 0) return make256(0);
  if (bits < 128) return u256{v.lo & (((u128)1 << bits) - 1), 0};
  if (bits < 256) v.hi &= ((u128)1 << (bits - 128)) - 1;
  return v;
}

TEST(WideInteger, DivisionSatisfiesItsIdentity) {
  std::mt19937_64 rng(99);
  for (int i = 0; i < 20000; ++i) {
    u256 n = random256(rng, 1 + (int)(rng() % 256));
    u256 d = random256(rng, 1 + (int)(rng() % 256));
    if (is_zero(d)) d = make256(1);
    u256 q, r;
    divmod256(n, d, &q, &r);
    ASSERT_LT(cmp(r, d), 0);
    // q * d + r == n, with q * d computed limb by limb from q's halves.
    u256 prod = mul256x128(d, q.lo);
    if (q.hi) prod = add(prod, u256{0, d.lo * q.hi});
    ASSERT_EQ(cmp(add(prod, r), n), 0);
  }
}

TEST(WideInteger, SquareRootIsTheFloor) {
  std::mt19937_64 rng(7);
  for (int i = 0; i < 3000; ++i) {
    u256 n = random256(rng, 1 + (int)(rng() % 240));
    u256 s = isqrt256(n);
    ASSERT_EQ(s.hi, 0u);
    u256 sq = mul128x128(s.lo, s.lo);
    ASSERT_LE(cmp(sq, n), 0);
    // n < (s + 1)^2, that is n - s^2 <= 2s.
    u256 twice = add(make256(s.lo), make256(s.lo));
    ASSERT_LE(cmp(sub(n, sq), twice), 0);
  }
}

TEST(WideInteger, PowersDigitsAndScaling) {
  u256 p = make256(1);
  for (int k = 0; k <= kMaxPow256; ++k) {
    ASSERT_EQ(cmp(pow10_256(k), p), 0) << k;
    ASSERT_EQ(digits256(p), k + 1);
    ASSERT_EQ(digits256(sub(p, make256(1))), k);
    ASSERT_EQ(cmp(mul_pow10(make256(1), k), p), 0);
    bool inexact = false;
    ASSERT_EQ(cmp(div_pow10(p, k, &inexact), make256(1)), 0);
    ASSERT_FALSE(inexact);
    if (k > 0) {
      div_pow10(add(p, make256(1)), k, &inexact);
      ASSERT_TRUE(inexact);
    }
    if (k < kMaxPow256) p = mul256x64(p, 10);
  }
  uint64_t rem;
  ASSERT_EQ(div_step(5, 7, 10, &rem), (uint64_t)((((u128)5 << 64) | 7) / 10));
  ASSERT_EQ(rem, (uint64_t)((((u128)5 << 64) | 7) % 10));
}

}  // namespace
