// Behaviour the conformance files do not reach: flag handling and its
// per-thread storage, the rounding modes, non-canonical encodings, the
// constants, and a sweep of arbitrary bit patterns through every operation.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <thread>

#include "oru/decimal.h"

namespace {

typedef unsigned __int128 u128;

// c x 10^q in decimal64.
oruDec64 d64(int64_t c, int q) {
  uint64_t s = c < 0 ? 1ull << 63 : 0;
  uint64_t m = (uint64_t)(c < 0 ? -c : c);
  if (m >= (1ull << 53))
    return s | 3ull << 61 | (uint64_t)(q + 398) << 51 | (m & ((1ull << 51) - 1));
  return s | ((uint64_t)(q + 398) << 53) | m;
}
oruDec128 d128(uint64_t hi, uint64_t lo) {
  oruDec128 r;
  r.w[0] = lo;
  r.w[1] = hi;
  return r;
}
oruDec128 d128v(int64_t c, int q) {
  uint64_t s = c < 0 ? 1ull << 63 : 0;
  uint64_t m = (uint64_t)(c < 0 ? -c : c);
  return d128(s | ((uint64_t)(q + 6176) << 49), m);
}
bool same(const oruDec128& a, const oruDec128& b) { return memcmp(&a, &b, 16) == 0; }

class Flags : public ::testing::Test {
 protected:
  void SetUp() override { oruDecLowerFlags(31); }
};

TEST_F(Flags, TranslationAndMasking) {
  oruDecRaiseFlags(32);
  EXPECT_EQ(oruDecTestFlags(31), 0);
  EXPECT_EQ(oruDecSaveFlags(), 0);
  oruDecRaiseFlags(1 | 16);
  EXPECT_EQ(_oruDecSaveAndLowerFlags(16), 17);
  EXPECT_EQ(oruDecSaveFlags(), 1);
  oruDecLowerFlags(31);
  oruDecRaiseFlags(2);
  EXPECT_EQ(_oruDecGetAndRestoreFlags(4, 6), 2);
  EXPECT_EQ(oruDecSaveFlags(), 4);
  EXPECT_EQ(oruDecSaveFlags(), oruDecSaveFlags());
  oruDecRestoreFlags(31, 9);
  EXPECT_EQ(oruDecSaveFlags(), 4 | 9);
  EXPECT_EQ(oruDecTestFlags(8 | 2), 8);
  oruDecRestoreFlags(0, 31);
  EXPECT_EQ(oruDecSaveFlags(), 0);
  for (int f = 1; f <= 16; f <<= 1) {
    oruDecRaiseFlags(f | ~31);
    EXPECT_EQ(oruDecSaveFlags(), f);
    oruDecLowerFlags(-1);
  }
}

TEST_F(Flags, EachThreadHasItsOwn) {
  oruDecRaiseFlags(ORU_DEC_INVALID);
  int seen = -1, after = -1;
  std::thread t([&] {
    seen = oruDecSaveFlags();
    oruDec64Div(d64(1, 0), d64(0, 0));  // raises divide-by-zero there
    after = oruDecSaveFlags();
  });
  t.join();
  EXPECT_EQ(seen, 0);
  EXPECT_EQ(after, ORU_DEC_DIVIDE_BY_ZERO);
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INVALID);
}

TEST_F(Flags, OperationsRaiseTheirs) {
  // Each row is evaluated with the flags cleared first.
  auto run = [](oruDec64 (*f)(oruDec64, oruDec64), oruDec64 x, oruDec64 y, oruDec64 want,
                int flags) {
    oruDecLowerFlags(31);
    EXPECT_EQ(f(x, y), want);
    EXPECT_EQ(oruDecSaveFlags(), flags);
  };
  run(oruDec64Add, d64(1, 16), d64(1, 0), d64(1000000000000000, 1), ORU_DEC_INEXACT);
  run(oruDec64Add, d64(9999999999999999, 0), d64(1, 0), d64(1000000000000000, 1), 0);
  run(oruDec64Add, d64(1000000000000000, 1), d64(5, 0), d64(1000000000000000, 1), ORU_DEC_INEXACT);
  run(oruDec64Add, d64(1000000000000001, 1), d64(5, 0), d64(1000000000000002, 1), ORU_DEC_INEXACT);
  run(oruDec64Add, d64(1, 0), d64(1, -2), d64(101, -2), 0);
  run(oruDec64Div, d64(1, 0), d64(0, 0), oruDEC64_INFINITY, ORU_DEC_DIVIDE_BY_ZERO);
  run(oruDec64Div, d64(0, 0), d64(0, 0), oruDEC64_QUIET_NAN, ORU_DEC_INVALID);
  run(oruDec64NextAfter, oruDEC64_MAX, oruDEC64_INFINITY, oruDEC64_INFINITY,
      ORU_DEC_OVERFLOW | ORU_DEC_INEXACT);
  run(oruDec64NextAfter, oruDEC64_MIN, d64(0, 0), d64(999999999999999, -398),
      ORU_DEC_UNDERFLOW | ORU_DEC_INEXACT);
  run(oruDec64Mul, oruDEC64_MAX, d64(10, 0), oruDEC64_INFINITY, ORU_DEC_OVERFLOW | ORU_DEC_INEXACT);
  run(oruDec64Mul, oruDEC64_MIN, d64(1, -1), d64(1, -384), 0);  // exact subnormal
  run(oruDec64Mul, d64(15, -398), d64(1, -1), d64(2, -398), ORU_DEC_UNDERFLOW | ORU_DEC_INEXACT);
  run(oruDec64Sub, d64(0, 3), d64(0, -2), d64(0, -2), 0);

  oruDecLowerFlags(31);
  EXPECT_EQ(oruDec64NextUp(oruDEC64_MAX), oruDEC64_INFINITY);
  EXPECT_EQ(oruDec64LogB(d64(1234, 0)), 3);
  EXPECT_EQ(oruDecSaveFlags(), 0);
  EXPECT_EQ(oruDec64LogB(d64(0, 0)), (int)0x80000000u);
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INVALID);
  oruDecLowerFlags(31);
  EXPECT_EQ(oruDec64LogB(oruDEC64_INFINITY), 2147483647);
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INVALID);

  oruDecLowerFlags(31);
  EXPECT_EQ(oruDec64Quantize(d64(217, -2), d64(1, -3), 0), d64(2170, -3));
  EXPECT_EQ(oruDec64Quantize(d64(217, -2), d64(1, 17), 0), d64(0, 17));
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INEXACT);
  oruDecLowerFlags(31);
  EXPECT_EQ(oruDec64Quantize(d64(1, 0), d64(1, -16), 0), oruDEC64_QUIET_NAN);
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INVALID);
}

TEST_F(Flags, IncrementAndDecrementInPlace) {
  oruDec64 x = oruDEC64_MAX;
  oruDec64Increment(&x);
  EXPECT_EQ(x, oruDEC64_MAX);
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INEXACT);
  oruDecLowerFlags(31);
  oruDec128 m = oruDEC128_MAX;
  oruDec128Increment(&m);
  EXPECT_TRUE(same(m, oruDEC128_MAX));
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INEXACT);
  x = d64(-1, 0);
  oruDec64Increment(&x);
  EXPECT_EQ(x, d64(0, 0));
  oruDec64Decrement(&x);
  EXPECT_EQ(x, d64(-1, 0));
  oruDec128 y = d128v(5, -1);
  oruDec128Decrement(&y);
  EXPECT_TRUE(same(y, d128v(-5, -1)));
}

// Every direction of Round on ties and near-ties of both signs, against
// the rule written out: the row gives the tenths and the wanted integers for
// half-even, half-up (away), ceiling, floor, down.
TEST_F(Flags, RoundDirectionsOnTies) {
  const struct {
    int tenths;
    int want[5];
  } rows[] = {
      {25, {2, 3, 3, 2, 2}},       {35, {4, 4, 4, 3, 3}},   {-25, {-2, -3, -2, -3, -2}},
      {-35, {-4, -4, -3, -4, -3}}, {24, {2, 2, 3, 2, 2}},   {-26, {-3, -3, -2, -3, -2}},
      {5, {0, 1, 1, 0, 0}},        {-5, {0, -1, 0, -1, 0}}, {30, {3, 3, 3, 3, 3}},
  };
  oruDec64 (*named[5])(oruDec64) = {oruDec64RoundHalfEven, oruDec64RoundHalfUp,
                                    oruDec64RoundCeiling, oruDec64RoundFloor, oruDec64RoundDown};
  oruDec128* (*named128[5])(oruDec128*, const oruDec128*) = {
      oruDec128RoundHalfEven, oruDec128RoundHalfUp, oruDec128RoundCeiling, oruDec128RoundFloor,
      oruDec128RoundDown};
  for (const auto& r : rows) {
    for (int mode = 0; mode < 5; ++mode) {
      oruDec64 x = d64(r.tenths, -1);
      oruDec64 want = d64(r.want[mode], 0);
      if (r.want[mode] == 0 && r.tenths < 0) want |= 1ull << 63;  // -0
      EXPECT_EQ(oruDec64Round(x, mode), want) << r.tenths << " mode " << mode;
      EXPECT_EQ(named[mode](x), want);
      oruDec128 a = d128v(r.tenths, -1), w = d128v(r.want[mode], 0), got;
      if (r.want[mode] == 0 && r.tenths < 0) w.w[1] |= 1ull << 63;
      EXPECT_TRUE(same(*oruDec128Round(&got, &a, mode), w)) << r.tenths << " mode " << mode;
      EXPECT_TRUE(same(*named128[mode](&a, &a), w));
      // RoundExact and Quantize always round half-even.
      EXPECT_EQ(oruDec64RoundExact(x, mode), oruDec64RoundHalfEven(x));
      EXPECT_EQ(oruDec64Quantize(x, d64(1, 0), mode), oruDec64RoundHalfEven(x));
    }
  }
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INEXACT);  // from RoundExact only
  EXPECT_EQ(oruDec64Round(d64(25, -1), 99), d64(2, 0));
  EXPECT_EQ(oruDec64Round(d64(25, -1), -1), d64(2, 0));
}

TEST_F(Flags, NonCanonicalEncodings) {
  // decimal64 large form with coefficient 10^16: zero.
  const oruDec64 big = 0x6C7386F26FC10000ull;
  EXPECT_EQ(oruDec64Class(big), ORU_DEC_POSITIVE_ZERO);
  EXPECT_EQ(oruDec64IsCanonical(big), 0);
  EXPECT_EQ(oruDec64IsZero(big), 1);
  EXPECT_TRUE(oruDec64QuietEqual(big, d64(0, 0)));
  EXPECT_EQ(oruDec64Add(big, d64(1, 0)), d64(1, 0));
  // NaN with an over-large payload, with junk between signal bit and
  // payload, infinity with trailing junk: all read canonically.
  const oruDec64 nan_big = 0x7C00000000000000ull | 1000000000000000ull;
  EXPECT_EQ(oruDec64IsCanonical(nan_big), 0);
  EXPECT_EQ(oruDec64Add(nan_big, d64(1, 0)), oruDEC64_QUIET_NAN);
  EXPECT_EQ(oruDec64IsCanonical(0x7C04000000000005ull), 0);
  EXPECT_EQ(oruDec64Mul(0x7C04000000000005ull, d64(1, 0)), 0x7C00000000000005ull);
  EXPECT_EQ(oruDec64IsCanonical(0x7800000000000001ull), 0);
  EXPECT_EQ(oruDec64Add(0x7A00000000000001ull, d64(1, 0)), oruDEC64_INFINITY);
  EXPECT_EQ(oruDec64Class(0x7A00000000000001ull), ORU_DEC_POSITIVE_INFINITY);
  EXPECT_EQ(oruDec64IsSignMinus(0xFC00000000000000ull), 1);
  EXPECT_EQ(oruDecSaveFlags(), 0);
  // decimal128: every large-form encoding and any coefficient over 10^34-1.
  oruDec128 large = d128(0x6000000000000000ull | (6176ull << 47), 5), over, r;
  over = d128(0x3040000000000000ull | 0x0001ED09BEAD87C0ull, 0x378D8E6400000000ull);
  for (const oruDec128* v : {&large, &over}) {
    EXPECT_EQ(oruDec128IsCanonical(v), 0);
    EXPECT_EQ(oruDec128IsZero(v), 1);
    oruDec128 one = d128v(1, 0);
    EXPECT_TRUE(same(*oruDec128Add(&r, v, &one), one));
  }
  oruDec128 nan128 = d128(0x7C00314DC6448D93ull, 0x38C15B0A00000000ull);  // payload 10^33
  EXPECT_EQ(oruDec128IsCanonical(&nan128), 0);
  EXPECT_TRUE(same(*oruDec128Sqrt(&r, &nan128), oruDEC128_QUIET_NAN));
  EXPECT_EQ(oruDec128Class(&oruDEC128_SIGNALING_NAN), ORU_DEC_SIGNALING_NAN);
  EXPECT_EQ(oruDec128Class(&oruDEC128_QUIET_NAN), ORU_DEC_QUIET_NAN);
  EXPECT_EQ(oruDec128Class(&oruDEC128_SUBNORMAL_MIN), ORU_DEC_POSITIVE_SUBNORMAL);
  EXPECT_EQ(oruDec128Class(&oruDEC128_MIN), ORU_DEC_POSITIVE_NORMAL);
  // Sign operations are pure bit operations.
  EXPECT_EQ(oruDec64Negate(oruDEC64_SIGNALING_NAN), 0xFE00000000000000ull);
  EXPECT_EQ(oruDec64CopySign(big, 1ull << 63), big | 1ull << 63);
  EXPECT_EQ(oruDec64Abs(0xFA00000000000001ull), 0x7A00000000000001ull);
  EXPECT_EQ(oruDecSaveFlags(), 0);
}

// The constants checked through the arithmetic: neighbours and ordering.
TEST_F(Flags, ConstantsAreWhatTheySay) {
  EXPECT_EQ(oruDec64NextUp(oruDEC64_MAX), oruDEC64_INFINITY);
  EXPECT_EQ(oruDec64NextDown(oruDEC64_INFINITY), oruDEC64_MAX);
  EXPECT_EQ(oruDec64NextDown(oruDEC64_SUBNORMAL_MIN), d64(0, -398));
  EXPECT_EQ(oruDec64NextUp(d64(0, 0)), oruDEC64_SUBNORMAL_MIN);
  EXPECT_EQ(oruDec64Class(oruDec64NextDown(oruDEC64_MIN)), ORU_DEC_POSITIVE_SUBNORMAL);
  EXPECT_EQ(oruDec64Class(oruDEC64_MIN), ORU_DEC_POSITIVE_NORMAL);
  EXPECT_TRUE(
      oruDec64QuietEqual(oruDec64Sub(oruDec64NextUp(d64(1, 0)), d64(1, 0)), oruDEC64_EPSILON));
  EXPECT_EQ(oruDec64Class(oruDEC64_SIGNALING_NAN), ORU_DEC_SIGNALING_NAN);
  EXPECT_EQ(oruDec64Class(oruDEC64_QUIET_NAN), ORU_DEC_QUIET_NAN);
  oruDec128 r, one = d128v(1, 0), zero = d128v(0, 0);
  EXPECT_TRUE(same(*oruDec128NextUp(&r, &oruDEC128_MAX), oruDEC128_INFINITY));
  EXPECT_TRUE(same(*oruDec128NextUp(&r, &zero), oruDEC128_SUBNORMAL_MIN));
  oruDec128NextUp(&r, &one);
  oruDec128Sub(&r, &r, &one);
  EXPECT_TRUE(oruDec128QuietEqual(&r, &oruDEC128_EPSILON));
  EXPECT_EQ(oruDec128IsNormal(oruDec128NextDown(&r, &oruDEC128_MIN)), 0);
  EXPECT_EQ(oruDec128IsSubnormal(&r), 1);
  // decimal32 constants have the same shapes.
  EXPECT_EQ(oruDEC32_MAX & 0x001FFFFFu, 9999999u - (1u << 23));
  EXPECT_EQ(oruDEC32_MIN >> 23, (uint32_t)(-95 + 101));
  EXPECT_EQ(oruDEC32_EPSILON >> 23, (uint32_t)(-6 + 101));
  EXPECT_EQ(oruDEC32_INFINITY, 0x78000000u);
  EXPECT_EQ(oruDEC32_QUIET_NAN, 0x7C000000u);
  EXPECT_EQ(oruDEC32_SIGNALING_NAN, 0x7E000000u);
  EXPECT_EQ(oruDEC32_SUBNORMAL_MIN, 1u);
}

// The remainder is exact whatever the size of the quotient (worked out by
// hand: 10^300 = 1 mod 7, = 4 mod 6; 10^6000 = 1 mod 13), ties to even.
TEST_F(Flags, RemainderOfAnyQuotient) {
  EXPECT_EQ(oruDec64Remainder(d64(1, 300), d64(7, 0)), d64(1, 0));
  EXPECT_EQ(oruDec64Remainder(d64(1, 300), d64(6, 0)), d64(-2, 0));
  EXPECT_EQ(oruDec64Remainder(d64(-1, 300), d64(6, 0)), d64(2, 0));
  EXPECT_EQ(oruDec64Remainder(d64(5, 0), d64(2, 0)), d64(1, 0));
  EXPECT_EQ(oruDec64Remainder(d64(7, 0), d64(2, 0)), d64(-1, 0));
  EXPECT_EQ(oruDec64Remainder(d64(1234567890123456, 0), d64(1, -1)), d64(0, -1));
  oruDec128 r, x = d128v(1, 6000), y = d128v(13, 0);
  EXPECT_TRUE(same(*oruDec128Remainder(&r, &x, &y), d128v(1, 0)));
  EXPECT_EQ(oruDecSaveFlags(), 0);
  EXPECT_EQ(oruDec64Remainder(d64(1, 0), d64(0, 0)), oruDEC64_QUIET_NAN);
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INVALID);
}

TEST_F(Flags, ComparisonsAndSelections) {
  oruDec64 ten = d64(10, 0), e1 = d64(1, 1), qnan = oruDEC64_QUIET_NAN;
  EXPECT_EQ(oruDec64QuietEqual(e1, ten), 1);
  EXPECT_EQ(oruDec64TotalOrder(ten, e1), 1);
  EXPECT_EQ(oruDec64TotalOrder(e1, ten), 0);
  EXPECT_EQ(oruDec64QuietLess(qnan, ten), 0);
  EXPECT_EQ(oruDecSaveFlags(), 0);
  EXPECT_EQ(oruDec64SignalingLess(qnan, ten), 0);
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INVALID);
  oruDecLowerFlags(31);
  oruDec64 pz = d64(0, 0), nz = pz | 1ull << 63;
  EXPECT_EQ(oruDec64QuietEqual(pz, nz), 1);
  EXPECT_EQ(oruDec64TotalOrder(pz, nz), 0);
  EXPECT_EQ(oruDec64TotalOrder(nz, pz), 1);
  EXPECT_EQ(oruDec64MaxNum(qnan, d64(3, 0)), d64(3, 0));
  EXPECT_EQ(oruDec64MinNum(pz, nz), nz);
  EXPECT_EQ(oruDec64MaxNum(pz, nz), pz);
  EXPECT_EQ(oruDec64MaxNum(ten, e1), e1);
  EXPECT_EQ(oruDec64MinNum(ten, e1), ten);
  EXPECT_EQ(oruDec64MinNumMag(d64(-3, 0), d64(2, 0)), d64(2, 0));
  EXPECT_EQ(oruDec64MaxNumMag(d64(-3, 0), d64(3, 0)), d64(3, 0));
  EXPECT_EQ(oruDecSaveFlags(), 0);
  EXPECT_EQ(oruDec64MinNum(oruDEC64_SIGNALING_NAN, d64(3, 0)), d64(3, 0));
  EXPECT_EQ(oruDecSaveFlags(), ORU_DEC_INVALID);
  EXPECT_EQ(oruDec64MinNum(qnan | 7, oruDEC64_SIGNALING_NAN | 8), qnan | 8);
}

// Arbitrary bit patterns, random and on the edges of every field, go
// through every operation: results are canonical (bar the bit operations),
// and decimal128 results are the same through an aliased result pointer.
TEST_F(Flags, EveryBitPatternIsAValidInput) {
  std::mt19937_64 rng(20261123);
  std::vector<uint64_t> w;
  const uint64_t tops[] = {0x0000000000000000ull, 0x3000000000000000ull, 0x5FFE000000000000ull,
                           0x6000000000000000ull, 0x77FFFFFFFFFFFFFFull, 0x7800000000000000ull,
                           0x7BFFFFFFFFFFFFFFull, 0x7C00000000000000ull, 0x7DFFFFFFFFFFFFFFull,
                           0x7E00000000000000ull, 0x7FFFFFFFFFFFFFFFull, 0x6C7386F26FC10000ull,
                           0x31C0000000000001ull, 0x01E0000000000001ull, 0x77FB86F26FC0FFFFull};
  for (uint64_t t : tops) {
    w.push_back(t);
    w.push_back(t | 1ull << 63);
  }
  for (int i = 0; i < 400; ++i) w.push_back(rng());
  auto canon64 = [](oruDec64 r) { return oruDec64IsCanonical(r) == 1; };
  auto canon128 = [](const oruDec128& r) { return oruDec128IsCanonical(&r) == 1; };
  size_t n = w.size();
  for (size_t i = 0; i < n; ++i) {
    uint64_t x = w[i], y = w[(i * 7 + 3) % n], z = w[(i * 13 + 5) % n];
    EXPECT_TRUE(canon64(oruDec64Add(x, y)));
    EXPECT_TRUE(canon64(oruDec64Sub(x, y)));
    EXPECT_TRUE(canon64(oruDec64Mul(x, y)));
    EXPECT_TRUE(canon64(oruDec64Div(x, y)));
    EXPECT_TRUE(canon64(oruDec64FusedMulAdd(x, y, z)));
    EXPECT_TRUE(canon64(oruDec64Sqrt(x)));
    EXPECT_TRUE(canon64(oruDec64Remainder(x, y)));
    EXPECT_TRUE(canon64(oruDec64Quantize(x, y, 0)));
    EXPECT_TRUE(canon64(oruDec64ScaleB(x, (int)(z >> 32))));
    EXPECT_TRUE(canon64(oruDec64RoundExact(x, 0)));
    EXPECT_TRUE(canon64(oruDec64Round(x, (int)(z % 5))));
    EXPECT_TRUE(canon64(oruDec64NextUp(x)));
    EXPECT_TRUE(canon64(oruDec64NextDown(x)));
    EXPECT_TRUE(canon64(oruDec64NextAfter(x, y)));
    EXPECT_TRUE(canon64(oruDec64MinNum(x, y)));
    EXPECT_TRUE(canon64(oruDec64MaxNumMag(x, y)));
    (void)oruDec64LogB(x);
    (void)oruDec64Class(x);
    (void)oruDec64TotalOrder(x, y);
    EXPECT_EQ(oruDec64QuietLess(x, y) + oruDec64QuietEqual(x, y) + oruDec64QuietGreater(x, y) +
                  oruDec64QuietUnordered(x, y),
              1);
    EXPECT_NE(oruDec64TotalOrder(x, y) + oruDec64TotalOrder(y, x), 0);

    oruDec128 a = d128(x, y), b = d128(z, x), c = d128(y, z), r, r2;
    typedef oruDec128* (*Bin)(oruDec128*, const oruDec128*, const oruDec128*);
    for (Bin f : {oruDec128Add, oruDec128Sub, oruDec128Mul, oruDec128Div, oruDec128Remainder,
                  oruDec128NextAfter, oruDec128MinNum, oruDec128MaxNumMag}) {
      f(&r, &a, &b);
      EXPECT_TRUE(canon128(r));
      r2 = a;
      f(&r2, &r2, &b);
      EXPECT_TRUE(same(r, r2));
    }
    EXPECT_TRUE(canon128(*oruDec128FusedMulAdd(&r, &a, &b, &c)));
    EXPECT_TRUE(canon128(*oruDec128Sqrt(&r, &a)));
    EXPECT_TRUE(canon128(*oruDec128Quantize(&r, &a, &b, 0)));
    EXPECT_TRUE(canon128(*oruDec128ScaleB(&r, &a, (int)(z >> 32))));
    EXPECT_TRUE(canon128(*oruDec128Round(&r, &a, (int)(z % 5))));
    EXPECT_TRUE(canon128(*oruDec128NextUp(&r, &a)));
    EXPECT_TRUE(canon128(*oruDec128NextDown(&r, &a)));
    (void)oruDec128LogB(&a);
    EXPECT_EQ(oruDec128QuietLess(&a, &b) + oruDec128QuietEqual(&a, &b) +
                  oruDec128QuietGreater(&a, &b) + oruDec128QuietUnordered(&a, &b),
              1);
    EXPECT_NE(oruDec128TotalOrder(&a, &b) + oruDec128TotalOrder(&b, &a), 0);
  }
}

}  // namespace

namespace {

// Integers into decimal32: seven digits, rounded half to even, inexact
// when digits are dropped.  The expected values are the integers rounded by
// hand; decimal64 (exact for them) reads them back.
TEST(Dec32FromIntegers, RoundToSevenDigits) {
  const struct {
    int64_t in;
    int64_t out;
    bool inexact;
  } signedCases[] = {
      {0, 0, false},
      {-1, -1, false},
      {9999999, 9999999, false},
      {10000001, 10000000, true},
      {12345675, 12345680, true},  // a tie goes to the even digit
      {12345665, 12345660, true},
      {2147483647, 2147484000, true},
      {-2147483648LL, -2147484000, true},
      {INT64_MAX, 9223372000000000000LL, true},
  };
  for (const auto& c : signedCases) {
    oruDecLowerFlags(31);
    oruDec32 x = oruDec32FromInt64(c.in);
    EXPECT_EQ(oruDec64ToInt64(oruDec32ToDec64(x)), c.out) << c.in;
    EXPECT_EQ(oruDecTestFlags(ORU_DEC_INEXACT) != 0, c.inexact) << c.in;
    if (c.in >= INT32_MIN && c.in <= INT32_MAX) {
      oruDecLowerFlags(31);
      oruDec32 y = oruDec32FromInt32(static_cast<int32_t>(c.in));
      EXPECT_EQ(oruDec64ToInt64(oruDec32ToDec64(y)), c.out) << c.in;
      EXPECT_EQ(oruDecTestFlags(ORU_DEC_INEXACT) != 0, c.inexact) << c.in;
    }
  }
  EXPECT_EQ(oruDec64ToUInt64(oruDec32ToDec64(oruDec32FromUInt32(4294967295u))), 4294967000u);
  EXPECT_EQ(oruDec64ToUInt64(oruDec32ToDec64(oruDec32FromUInt64(UINT64_MAX))),
            18446740000000000000u);
  EXPECT_EQ(oruDec64ToUInt64(oruDec32ToDec64(oruDec32FromUInt64(7))), 7u);
}

TEST(Classification, FiniteNormalSubnormal) {
  const struct {
    oruDec64 x;
    int finite, normal, subnormal;
  } cases64[] = {
      {oruDEC64_MAX, 1, 1, 0},         {oruDEC64_SUBNORMAL_MIN, 1, 0, 1},
      {oruDec64FromInt32(0), 1, 0, 0}, {oruDEC64_INFINITY, 0, 0, 0},
      {oruDEC64_QUIET_NAN, 0, 0, 0},
  };
  for (const auto& c : cases64) {
    EXPECT_EQ(oruDec64IsFinite(c.x) != 0, c.finite != 0);
    EXPECT_EQ(oruDec64IsNormal(c.x) != 0, c.normal != 0);
    EXPECT_EQ(oruDec64IsSubnormal(c.x) != 0, c.subnormal != 0);
  }
  const struct {
    const oruDec128* x;
    int finite, normal, subnormal;
  } cases128[] = {
      {&oruDEC128_MAX, 1, 1, 0},
      {&oruDEC128_SUBNORMAL_MIN, 1, 0, 1},
      {&oruDEC128_INFINITY, 0, 0, 0},
      {&oruDEC128_SIGNALING_NAN, 0, 0, 0},
  };
  for (const auto& c : cases128) {
    EXPECT_EQ(oruDec128IsFinite(c.x) != 0, c.finite != 0);
    EXPECT_EQ(oruDec128IsNormal(c.x) != 0, c.normal != 0);
    EXPECT_EQ(oruDec128IsSubnormal(c.x) != 0, c.subnormal != 0);
  }
}

}  // namespace
