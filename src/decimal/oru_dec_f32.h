/*
 * decimal32, the storage width: its parameters, decoding and encoding in
 * the shape of F64 and F128, so that the shared round-and-encode step
 * (finish<F32>) narrows into it.
 */
#ifndef ORU_DEC_F32_H
#define ORU_DEC_F32_H

#include "decimal/oru_dec_format.h"

namespace oru_dec {

struct F32 {
  typedef uint32_t Raw;
  static constexpr int P = 7;
  static constexpr int QMIN = -101;
  static constexpr int QMAX = 90;
  static constexpr int EMIN = -95;
  static constexpr int BIAS = 101;
  static constexpr uint32_t MAXC = 9999999u;
  static constexpr uint32_t MAX_PAYLOAD = 999999u;
  static constexpr Raw kSign = 1u << 31;

  static Num unpack(Raw x) {
    Num n;
    n.sign = x >> 31;
    if ((x & 0x60000000u) != 0x60000000u) {
      n.kind = kFinite;
      n.e = (int32_t)((x >> 23) & 0xFF) - BIAS;
      n.c = x & ((1u << 23) - 1);
      return n;
    }
    if ((x & 0x78000000u) != 0x78000000u) {
      n.kind = kFinite;
      n.e = (int32_t)((x >> 21) & 0xFF) - BIAS;
      uint32_t c = (1u << 23) | (x & ((1u << 21) - 1));
      n.c = c > MAXC ? 0 : c;
      return n;
    }
    n.e = 0;
    if ((x & 0x7C000000u) == 0x78000000u) {
      n.kind = kInf;
      n.c = 0;
      return n;
    }
    n.kind = (x & 0x02000000u) ? kSNaN : kQNaN;
    uint32_t p = x & ((1u << 20) - 1);
    n.c = p > MAX_PAYLOAD ? 0 : p;
    return n;
  }
  static Raw pack(uint32_t sign, u128 c, int64_t e) {
    uint32_t s = sign << 31, cc = (uint32_t)c, be = (uint32_t)(e + BIAS);
    if (cc < (1u << 23)) return s | (be << 23) | cc;
    return s | 0x60000000u | (be << 21) | (cc & ((1u << 21) - 1));
  }
  static Raw inf(uint32_t sign) { return (sign << 31) | 0x78000000u; }
  static Raw qnan(uint32_t sign, u128 payload) {
    return (sign << 31) | 0x7C000000u | (uint32_t)payload;
  }
};

}  // namespace oru_dec

#endif  // ORU_DEC_F32_H
