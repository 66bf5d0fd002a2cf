// CRC by folding with carry-less multiplication (PCLMULQDQ) for the
// reflected models, chosen at run time when the processor has it.
//
// A reflected register holds the message with its first bit in bit 0, so a
// 128-bit lane value X stands for the polynomial whose x^127 coefficient is
// bit 0.  Split X = H * x^64 + L (H the low quadword).  Moving X forward by D
// bits multiplies it by x^D; modulo the CRC polynomial P that is
//   H * (x^(D+64) mod P) + L * (x^D mod P),
// a value of at most 128 bits that can be XORed into the input D bits
// further on.  A carry-less product of two reflected quadwords comes out
// multiplied by x once more, so the constants are x^(D+63) and x^(D-1)
// modulo P.  At the end the 128-bit remainder is itself a 16-byte message
// with the same CRC as everything folded into it, and the ordinary table
// code finishes it together with the last few bytes.
#include "hash/oru_crc_engine.h"
#include "hash/oru_crc_slice.h"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define ORU_CRC_HAVE_CLMUL 1
#include <cpuid.h>
#include <immintrin.h>
#else
#define ORU_CRC_HAVE_CLMUL 0
#endif

namespace oru::hash {

#if ORU_CRC_HAVE_CLMUL

namespace {

// x^n modulo the polynomial of a reflected model of the given width, in
// the reflected quadword form that the multiplier takes (x^63 at bit 0).
constexpr uint64_t xpow_mod_reflected(unsigned n, unsigned width, uint64_t reflected_poly) {
  uint64_t mask = width == 64 ? ~0ull : (1ull << width) - 1;
  uint64_t poly = 0;  // in natural bit order, without the x^width term
  for (unsigned i = 0; i < width; ++i) {
    if ((reflected_poly >> i) & 1u) poly |= 1ull << (width - 1 - i);
  }
  uint64_t r = 1;
  for (unsigned i = 0; i < n; ++i) {
    bool top = (r >> (width - 1)) & 1u;
    r = (r << 1) & mask;
    if (top) r ^= poly;
  }
  uint64_t reflected = 0;
  for (unsigned i = 0; i < 64; ++i) {
    if ((r >> i) & 1u) reflected |= 1ull << (63 - i);
  }
  return reflected;
}

// The pair of constants that moves a lane forward by `distance` bits: the
// first multiplies the low quadword, the second the high one.
struct FoldPair {
  uint64_t low;
  uint64_t high;
};

struct FoldKeys {
  FoldPair by512;  // four lanes of 16 bytes: one loop step
  FoldPair by384;
  FoldPair by256;
  FoldPair by128;
};

constexpr FoldPair fold_pair(unsigned distance, unsigned width, uint64_t reflected_poly) {
  return {xpow_mod_reflected(distance + 63, width, reflected_poly),
          xpow_mod_reflected(distance - 1, width, reflected_poly)};
}

constexpr FoldKeys fold_keys(unsigned width, uint64_t reflected_poly) {
  return {fold_pair(512, width, reflected_poly), fold_pair(384, width, reflected_poly),
          fold_pair(256, width, reflected_poly), fold_pair(128, width, reflected_poly)};
}

constexpr FoldKeys kCrc16ArcKeys = fold_keys(16, kCrc16ArcPoly);
constexpr FoldKeys kCrc32Keys = fold_keys(32, kCrc32Poly);
constexpr FoldKeys kCrc64Keys = fold_keys(64, kCrc64Poly);

// Below this many bytes the table code is as quick as setting up the lanes.
constexpr size_t kMinFoldLength = 64;

#define ORU_CLMUL_TARGET __attribute__((target("pclmul,sse2")))

ORU_CLMUL_TARGET inline __m128i fold_keys_vector(const FoldPair& pair) {
  return _mm_set_epi64x(static_cast<long long>(pair.high), static_cast<long long>(pair.low));
}

// x moved forward by the distance of `keys`, XORed into `data`.
ORU_CLMUL_TARGET inline __m128i fold(__m128i x, __m128i keys, __m128i data) {
  __m128i lo = _mm_clmulepi64_si128(x, keys, 0x00);
  __m128i hi = _mm_clmulepi64_si128(x, keys, 0x11);
  return _mm_xor_si128(_mm_xor_si128(lo, hi), data);
}

ORU_CLMUL_TARGET inline __m128i load(const unsigned char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

template <typename T>
ORU_CLMUL_TARGET T fold_reflected(const FoldKeys& keys, const CrcTables<T>& tables, T crc,
                                  const unsigned char* p, size_t n) noexcept {
  if (n < kMinFoldLength) return reflected_slice8(tables, crc, p, n);

  // The initial register is the same as XORing it into the first bytes.
  __m128i x0 = _mm_xor_si128(load(p), _mm_cvtsi64_si128(static_cast<long long>(crc)));
  __m128i x1 = load(p + 16);
  __m128i x2 = load(p + 32);
  __m128i x3 = load(p + 48);
  p += 64;
  n -= 64;

  const __m128i k512 = fold_keys_vector(keys.by512);
  while (n >= 64) {
    x0 = fold(x0, k512, load(p));
    x1 = fold(x1, k512, load(p + 16));
    x2 = fold(x2, k512, load(p + 32));
    x3 = fold(x3, k512, load(p + 48));
    p += 64;
    n -= 64;
  }

  // Bring the four lanes to the end of the last one.  The products do
  // not depend on each other; only the XORs are chained.
  const __m128i k128 = fold_keys_vector(keys.by128);
  __m128i x = fold(x0, fold_keys_vector(keys.by384),
                   fold(x1, fold_keys_vector(keys.by256), fold(x2, k128, x3)));
  while (n >= 16) {
    x = fold(x, k128, load(p));
    p += 16;
    n -= 16;
  }

  unsigned char rest[16];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(rest), x);
  crc = reflected_slice8(tables, T{0}, rest, sizeof rest);
  return reflected_slice8(tables, crc, p, n);
}

}  // namespace

bool crc_clmul_supported() noexcept {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return false;
  return (ecx & bit_PCLMUL) != 0 && (edx & bit_SSE2) != 0;
}

uint16_t crc16_arc_clmul(uint16_t crc, const unsigned char* p, size_t n) noexcept {
  return fold_reflected(kCrc16ArcKeys, kCrc16ArcTables, crc, p, n);
}

uint32_t crc32_clmul(uint32_t crc, const unsigned char* p, size_t n) noexcept {
  return fold_reflected(kCrc32Keys, kCrc32Tables, crc, p, n);
}

uint64_t crc64_clmul(uint64_t crc, const unsigned char* p, size_t n) noexcept {
  return fold_reflected(kCrc64Keys, kCrc64Tables, crc, p, n);
}

#else  // no carry-less multiply on this target: the portable code serves

bool crc_clmul_supported() noexcept { return false; }

uint16_t crc16_arc_clmul(uint16_t crc, const unsigned char* p, size_t n) noexcept {
  return crc16_arc_portable(crc, p, n);
}

uint32_t crc32_clmul(uint32_t crc, const unsigned char* p, size_t n) noexcept {
  return crc32_portable(crc, p, n);
}

uint64_t crc64_clmul(uint64_t crc, const unsigned char* p, size_t n) noexcept {
  return crc64_portable(crc, p, n);
}

#endif

}  // namespace oru::hash
