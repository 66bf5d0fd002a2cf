// Every decimal64 / decimal128 operation on random bit patterns, with a
// differential against GCC's _Decimal64 / _Decimal128 arithmetic (compiled
// by gcc into the peer library) for add, subtract, multiply and divide,
// and the invariants between the other operations: classification, sign
// operations, comparisons, string round trips and buffer rules,
// conversions between the widths, integers and binary floating point.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "gcc_decimal_peer.h"
#include "oru/core.h"
#include "oru/decimal.h"

namespace {

typedef unsigned __int128 u128;

constexpr uint64_t kNan64 = 0x7C00000000000000ull, kSNan64 = 0x0200000000000000ull;
constexpr uint64_t kSign64 = 0x8000000000000000ull;

u128 to128(const oruDec128& d) { return (u128)d.w[1] << 64 | d.w[0]; }
oruDec128 from128(u128 v) { return oruDec128{{(uint64_t)v, (uint64_t)(v >> 64)}}; }

// The NaN the library gives for x op y (the first signalling NaN quieted,
// else the first quiet NaN, else the default NaN), payload and sign kept;
// a payload of p digits or more reads as zero.
template <class T>
T expected_nan(T x, T y, T nanMask, T snanBit, T payloadMask, T payloadLimit) {
  auto is_nan = [&](T v) { return (v & nanMask) == nanMask; };
  auto is_snan = [&](T v) { return is_nan(v) && (v & snanBit); };
  T pick;
  if (is_snan(x))
    pick = x;
  else if (is_snan(y))
    pick = y;
  else if (is_nan(x))
    pick = x;
  else if (is_nan(y))
    pick = y;
  else
    return nanMask;
  T sign = pick & ~(~(T)0 >> 1);
  T payload = pick & payloadMask;
  if (payload >= payloadLimit) payload = 0;
  return sign | nanMask | payload;
}

void differential64(uint64_t x, uint64_t y) {
  oruDec64 (*ours[4])(oruDec64, oruDec64) = {oruDec64Add, oruDec64Sub, oruDec64Mul, oruDec64Div};
  for (int op = 0; op < 4; ++op) {
    uint64_t got = ours[op](x, y), want = gcc_dec64(op, x, y);
    if ((want & kNan64) == kNan64) {
      want = expected_nan<uint64_t>(x, y, kNan64, kSNan64, (1ull << 50) - 1, 1000000000000000ull);
    }
    if (got != want) {
      std::fprintf(stderr, "dec64 op %d x %016llx y %016llx got %016llx want %016llx\n", op,
                   (unsigned long long)x, (unsigned long long)y, (unsigned long long)got,
                   (unsigned long long)want);
      FUZZ_CHECK(got == want);
    }
  }
}

void differential128(u128 x, u128 y) {
  oruDec128* (*ours[4])(oruDec128*, const oruDec128*, const oruDec128*) = {
      oruDec128Add, oruDec128Sub, oruDec128Mul, oruDec128Div};
  const u128 nan = (u128)kNan64 << 64, snan = (u128)kSNan64 << 64;
  u128 limit = 1;
  for (int i = 0; i < 33; ++i) limit *= 10;
  for (int op = 0; op < 4; ++op) {
    oruDec128 a = from128(x), b = from128(y), r;
    ours[op](&r, &a, &b);
    uint64_t wa[2];
    gcc_dec128(op, a.w, b.w, wa);
    u128 got = to128(r), want = (u128)wa[1] << 64 | wa[0];
    if ((want & nan) == nan)
      want = expected_nan<u128>(x, y, nan, snan, ((u128)1 << 110) - 1, limit);
    if (got != want) {
      std::fprintf(stderr, "dec128 op %d x %016llx:%016llx y %016llx:%016llx got %016llx:%016llx\n",
                   op, (unsigned long long)(x >> 64), (unsigned long long)x,
                   (unsigned long long)(y >> 64), (unsigned long long)y,
                   (unsigned long long)(got >> 64), (unsigned long long)got);
      FUZZ_CHECK(got == want);
    }
  }
}

// ToString: the buffer rules, and parsing the text back gives the same
// encoding for a canonical non-NaN value.
void strings64(oruDec64 x) {
  char buf[ORU_DEC64_STRING_MAX];
  size_t len = 0;
  FUZZ_CHECK(oruDec64ToString(x, buf, sizeof buf, &len) == ORU_OK);
  FUZZ_CHECK(len == std::strlen(buf) && len < sizeof buf);
  char small[ORU_DEC64_STRING_MAX];
  size_t len2 = 0;
  FUZZ_CHECK(oruDec64ToString(x, small, len, &len2) == ORU_E_BUFFER_TOO_SMALL && len2 == len);
  if (len > 0) FUZZ_CHECK(small[0] == '\0');
  if (oruDec64IsCanonical(x) && !oruDec64IsNaN(x)) {
    const char* end = nullptr;
    FUZZ_CHECK(oruDec64ParseString(nullptr, buf, &end) == x && end == buf + len);
  }
}

void strings128(const oruDec128& x) {
  char buf[ORU_DEC128_STRING_MAX];
  size_t len = 0;
  FUZZ_CHECK(oruDec128ToString(&x, buf, sizeof buf, &len) == ORU_OK);
  FUZZ_CHECK(len == std::strlen(buf) && len < sizeof buf);
  if (oruDec128IsCanonical(&x) && !oruDec128IsNaN(&x)) {
    const char* end = nullptr;
    oruDec128 back;
    oruDec128ParseString(&back, nullptr, buf, &end);
    FUZZ_CHECK(to128(back) == to128(x) && end == buf + len);
  }
}

// FormatString / FormatWString under a random record: the measured length
// is exact, a buffer one shorter is too small, narrow and wide agree.
template <typename Fmt, typename FmtW>
void formats(Fmt fmt, FmtW fmtw, const oruDecNumberFormat& format) {
  static std::vector<char> big(16384);  // fixed, grouped, exponent 6111
  size_t len = 0;
  FUZZ_CHECK(fmt(&format, big.data(), big.size(), &len) == ORU_OK);
  FUZZ_CHECK(len == std::strlen(big.data()));
  std::vector<char> exact(len + 1, '\x5A');
  FUZZ_CHECK(fmt(&format, exact.data(), len + 1, nullptr) == ORU_OK);
  FUZZ_CHECK(std::strcmp(exact.data(), big.data()) == 0);
  std::vector<char> shorter(len + 1, '\x5A');
  size_t len2 = 0;
  FUZZ_CHECK(fmt(&format, shorter.data(), len, &len2) == ORU_E_BUFFER_TOO_SMALL && len2 == len);
  FUZZ_CHECK(shorter[len] == '\x5A');
  std::vector<uint16_t> wide(len + 1);
  size_t wlen = 0;
  FUZZ_CHECK(fmtw(&format, wide.data(), len + 1, &wlen) == ORU_OK && wlen == len);
  for (size_t i = 0; i < len; ++i) {
    FUZZ_CHECK(wide[i] == static_cast<unsigned char>(big[i]) ||
               big[i] == (char)format.decimalPoint || big[i] == (char)format.groupSeparator);
  }
}

void operations64(oruDec64 x, oruDec64 y, oruDec64 z, int n, int mode) {
  // Classification agrees with the predicates.
  const int cls = oruDec64Class(x);
  FUZZ_CHECK(cls >= 0 && cls <= 9);
  FUZZ_CHECK(oruDec64IsNaN(x) == (cls <= 1));
  FUZZ_CHECK(oruDec64IsInfinite(x) == (cls == 2 || cls == 9));
  FUZZ_CHECK(oruDec64IsZero(x) == (cls == 5 || cls == 6));
  FUZZ_CHECK(oruDec64IsSubnormal(x) == (cls == 4 || cls == 7));
  FUZZ_CHECK(oruDec64IsNormal(x) == (cls == 3 || cls == 8));
  FUZZ_CHECK(oruDec64IsFinite(x) == (cls >= 3 && cls <= 8));
  FUZZ_CHECK(oruDec64IsSignMinus(x) == ((x & kSign64) != 0));
  // Sign operations touch the sign bit only.
  FUZZ_CHECK(oruDec64Negate(x) == (x ^ kSign64));
  FUZZ_CHECK(oruDec64Abs(x) == (x & ~kSign64));
  FUZZ_CHECK(oruDec64CopySign(x, y) == ((x & ~kSign64) | (y & kSign64)));
  // Comparisons.
  const bool unordered = oruDec64IsNaN(x) || oruDec64IsNaN(y);
  FUZZ_CHECK(oruDec64QuietUnordered(x, y) == (unordered ? 1 : 0));
  FUZZ_CHECK(oruDec64QuietOrdered(x, y) == (unordered ? 0 : 1));
  FUZZ_CHECK(oruDec64QuietNotEqual(x, y) == 1 - oruDec64QuietEqual(x, y));
  if (!unordered) {
    FUZZ_CHECK(oruDec64QuietLess(x, y) + oruDec64QuietEqual(x, y) + oruDec64QuietGreater(x, y) ==
               1);
    FUZZ_CHECK(oruDec64SignalingLessEqual(x, y) == oruDec64QuietLessEqual(x, y));
    FUZZ_CHECK(oruDec64QuietGreaterEqual(x, y) == oruDec64QuietLessEqual(y, x));
  }
  FUZZ_CHECK(oruDec64TotalOrder(x, y) || oruDec64TotalOrder(y, x));
  FUZZ_CHECK(oruDec64TotalOrderMag(x, y) == oruDec64TotalOrder(oruDec64Abs(x), oruDec64Abs(y)));
  FUZZ_CHECK(oruDec64SameQuantum(x, y) == oruDec64SameQuantum(y, x));
  // The rest, for the sanitizers.
  oruDec64 r = oruDec64FusedMulAdd(x, y, z);
  r ^= oruDec64Sqrt(x) ^ oruDec64Remainder(x, y) ^ oruDec64Quantize(x, y, mode) ^
       oruDec64ScaleB(x, n) ^ oruDec64RoundHalfEven(x) ^ oruDec64RoundHalfUp(x) ^
       oruDec64RoundCeiling(x) ^ oruDec64RoundFloor(x) ^ oruDec64RoundDown(x) ^
       oruDec64Round(x, mode) ^ oruDec64RoundExact(x, mode) ^ oruDec64NextUp(x) ^
       oruDec64NextDown(x) ^ oruDec64NextAfter(x, y) ^ oruDec64MinNum(x, y) ^ oruDec64MaxNum(x, y) ^
       oruDec64MinNumMag(x, y) ^ oruDec64MaxNumMag(x, y);
  (void)oruDec64LogB(x);
  oruDec64 inc = x;
  oruDec64Increment(&inc);
  FUZZ_CHECK(inc == oruDec64Add(x, oruDec64FromInt32(1)));
  oruDec64 dec = x;
  oruDec64Decrement(&dec);
  FUZZ_CHECK(dec == oruDec64Sub(x, oruDec64FromInt32(1)));
  (void)r;
  // Width conversions: widening then narrowing gives back a canonical
  // non-NaN value.
  oruDec128 wide;
  oruDec64ToDec128(&wide, x);
  if (oruDec64IsCanonical(x) && !oruDec64IsNaN(x)) FUZZ_CHECK(oruDec128ToDec64(&wide) == x);
  (void)oruDec64ToDec32(x);
  (void)oruDec32ToDec64(static_cast<oruDec32>(x));
  // Integers.
  (void)oruDec64ToInt32(x);
  (void)oruDec64ToUInt32(x);
  (void)oruDec64ToUInt64(x);
  const int64_t i64 = static_cast<int64_t>(y) % 1000000000000000ll;
  FUZZ_CHECK(oruDec64ToInt64(oruDec64FromInt64(i64)) == i64);
  (void)oruDec64FromUInt64(y);
  // Binary floating point.
  (void)oruDec64ToDouble(x);
  (void)oruDec64ToFloat(x);
  strings64(x);
}

void operations128(const oruDec128& x, const oruDec128& y, const oruDec128& z, int n, int mode) {
  const int cls = oruDec128Class(&x);
  FUZZ_CHECK(cls >= 0 && cls <= 9);
  FUZZ_CHECK(oruDec128IsNaN(&x) == (cls <= 1));
  FUZZ_CHECK(oruDec128IsInfinite(&x) == (cls == 2 || cls == 9));
  FUZZ_CHECK(oruDec128IsZero(&x) == (cls == 5 || cls == 6));
  FUZZ_CHECK(oruDec128IsSubnormal(&x) == (cls == 4 || cls == 7));
  FUZZ_CHECK(oruDec128IsNormal(&x) == (cls == 3 || cls == 8));
  FUZZ_CHECK(oruDec128IsFinite(&x) == (cls >= 3 && cls <= 8));
  oruDec128 r, s;
  FUZZ_CHECK(to128(*oruDec128Negate(&r, &x)) == (to128(x) ^ ((u128)kSign64 << 64)));
  FUZZ_CHECK(to128(*oruDec128Abs(&r, &x)) == (to128(x) & ~((u128)kSign64 << 64)));
  oruDec128CopySign(&r, &x, &y);
  const bool unordered = oruDec128IsNaN(&x) || oruDec128IsNaN(&y);
  FUZZ_CHECK(oruDec128QuietUnordered(&x, &y) == (unordered ? 1 : 0));
  FUZZ_CHECK(oruDec128QuietNotEqual(&x, &y) == 1 - oruDec128QuietEqual(&x, &y));
  if (!unordered) {
    FUZZ_CHECK(oruDec128QuietLess(&x, &y) + oruDec128QuietEqual(&x, &y) +
                   oruDec128QuietGreater(&x, &y) ==
               1);
    FUZZ_CHECK(oruDec128SignalingGreaterEqual(&x, &y) == oruDec128QuietGreaterEqual(&x, &y));
  }
  FUZZ_CHECK(oruDec128TotalOrder(&x, &y) || oruDec128TotalOrder(&y, &x));
  (void)oruDec128QuietOrdered(&x, &y);
  (void)oruDec128QuietLessEqual(&x, &y);
  (void)oruDec128SignalingGreater(&x, &y);
  (void)oruDec128SignalingLess(&x, &y);
  (void)oruDec128SignalingLessEqual(&x, &y);
  (void)oruDec128TotalOrderMag(&x, &y);
  (void)oruDec128SameQuantum(&x, &y);
  oruDec128FusedMulAdd(&r, &x, &y, &z);
  oruDec128Sqrt(&r, &x);
  oruDec128Remainder(&r, &x, &y);
  oruDec128Quantize(&r, &x, &y, mode);
  oruDec128ScaleB(&r, &x, n);
  (void)oruDec128LogB(&x);
  oruDec128RoundHalfEven(&r, &x);
  oruDec128RoundHalfUp(&r, &x);
  oruDec128RoundCeiling(&r, &x);
  oruDec128RoundFloor(&r, &x);
  oruDec128RoundDown(&r, &x);
  oruDec128Round(&r, &x, mode);
  oruDec128RoundExact(&r, &x, mode);
  oruDec128NextUp(&r, &x);
  oruDec128NextDown(&r, &x);
  oruDec128NextAfter(&r, &x, &y);
  oruDec128MinNum(&r, &x, &y);
  oruDec128MaxNum(&r, &x, &y);
  oruDec128MinNumMag(&r, &x, &y);
  oruDec128MaxNumMag(&r, &x, &y);
  // The result may be an operand.
  r = x;
  oruDec128Add(&r, &r, &y);
  oruDec128Add(&s, &x, &y);
  FUZZ_CHECK(to128(r) == to128(s));
  r = x;
  oruDec128Increment(&r);
  oruDec128 one;
  oruDec128FromInt32(&one, 1);
  FUZZ_CHECK(to128(r) == to128(*oruDec128Add(&s, &x, &one)));
  r = x;
  oruDec128Decrement(&r);
  FUZZ_CHECK(to128(r) == to128(*oruDec128Sub(&s, &x, &one)));
  (void)oruDec128ToDec64(&x);
  (void)oruDec128ToDec32(&x);
  (void)oruDec128ToInt32(&x);
  (void)oruDec128ToUInt32(&x);
  (void)oruDec128ToInt64(&x);
  (void)oruDec128ToUInt64(&x);
  (void)oruDec128ToFloat(&x);
  // A double survives a trip through decimal128 (34 digits are plenty).
  double d;
  std::memcpy(&d, &y.w[0], sizeof d);
  if (std::isfinite(d)) {
    oruDec128FromInt64(&r, 0);
    oruDoubleToDec128(&r, d);
    double back = oruDec128ToDouble(&r);
    FUZZ_CHECK(back == d && std::signbit(back) == std::signbit(d));
  }
  strings128(x);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const uint64_t x64 = in.ConsumeIntegral<uint64_t>();
  const uint64_t y64 = in.ConsumeIntegral<uint64_t>();
  const uint64_t z64 = in.ConsumeIntegral<uint64_t>();
  oruDec128 x, y, z;
  x.w[0] = in.ConsumeIntegral<uint64_t>();
  x.w[1] = in.ConsumeIntegral<uint64_t>();
  y.w[0] = in.ConsumeIntegral<uint64_t>();
  y.w[1] = in.ConsumeIntegral<uint64_t>();
  z.w[0] = in.ConsumeIntegral<uint64_t>();
  z.w[1] = in.ConsumeIntegral<uint64_t>();
  const int n = in.ConsumeIntegralInRange<int>(-20000, 20000);
  const int mode = in.ConsumeIntegralInRange<int>(-1, 5);
  oruDecNumberFormat format;
  format.style = in.ConsumeIntegralInRange<uint32_t>(0, 3);
  format.digits = in.ConsumeIntegralInRange<int32_t>(-1, 40);
  format.decimalPoint = in.ConsumeBool() ? '.' : ',';
  format.groupSeparator = in.ConsumeBool() ? 0u : (format.decimalPoint == '.' ? ',' : '.');
  format.groupSize = in.ConsumeIntegralInRange<uint32_t>(0, 4);
  format.rounding = in.ConsumeIntegralInRange<int32_t>(0, 4);
  format.showPlus = in.ConsumeBool();

  const int saved = oruDecSaveFlags();
  oruDecLowerFlags(0x1F);
  differential64(x64, y64);
  differential128(to128(x), to128(y));
  operations64(x64, y64, z64, n, mode);
  operations128(x, y, z, n, mode);
  formats([&](const oruDecNumberFormat* f, char* b, size_t s,
              size_t* l) { return oruDec64FormatString(x64, f, b, s, l); },
          [&](const oruDecNumberFormat* f, uint16_t* b, size_t s, size_t* l) {
            return oruDec64FormatWString(x64, f, b, s, l);
          },
          format);
  formats([&](const oruDecNumberFormat* f, char* b, size_t s,
              size_t* l) { return oruDec128FormatString(&x, f, b, s, l); },
          [&](const oruDecNumberFormat* f, uint16_t* b, size_t s, size_t* l) {
            return oruDec128FormatWString(&x, f, b, s, l);
          },
          format);
  const oruDec32 x32 = static_cast<oruDec32>(z64);
  formats([&](const oruDecNumberFormat* f, char* b, size_t s,
              size_t* l) { return oruDec32FormatString(x32, f, b, s, l); },
          [&](const oruDecNumberFormat* f, uint16_t* b, size_t s, size_t* l) {
            return oruDec32FormatWString(x32, f, b, s, l);
          },
          format);
  // Flags stay per call: what the operations raised is only flag bits.
  FUZZ_CHECK((oruDecSaveFlags() & ~0x1F) == 0);
  oruDecRestoreFlags(saved, 0x1F);
  FUZZ_CHECK(oruDecSaveFlags() == saved);
  return 0;
}
