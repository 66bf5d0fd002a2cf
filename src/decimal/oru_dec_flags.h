/*
 * The arithmetic core's per-thread status flags and rounding directions.
 */
#ifndef ORU_DEC_FLAGS_H
#define ORU_DEC_FLAGS_H

#include <cstdint>

namespace oru_dec {

// Core flag bits (the exported bits differ; see oru_dec_flags.cpp).
constexpr uint32_t kInvalid = 0x01;
constexpr uint32_t kDenormal = 0x02;
constexpr uint32_t kDivByZero = 0x04;
constexpr uint32_t kOverflow = 0x08;
constexpr uint32_t kUnderflow = 0x10;
constexpr uint32_t kInexact = 0x20;
constexpr uint32_t kFlagMask = 0x3D;

// Core rounding directions.
enum Mode : int { kHalfEven = 0, kFloor = 1, kCeiling = 2, kDown = 3, kHalfAway = 4 };

// The block lives in initial-exec TLS so that reaching it from inside the
// shared library is a plain segment-relative access, not a call.
struct FlagBlock {
  uint32_t reserved;  // kept zero, never read
  uint32_t core;
};

extern constinit thread_local FlagBlock t_flags __attribute__((tls_model("initial-exec")));

inline void raise(uint32_t core_bits) {
  if (core_bits) t_flags.core |= core_bits;
}

// Exported rounding value to core value, as used by Quantize and RoundExact:
// a mode with any of its low three bits set is nearest-even.
inline int mode_from_table(int mode) {
  static constexpr int kTable[5] = {kHalfEven, kHalfAway, kCeiling, kFloor, kDown};
  if ((mode & 7) != 0 || mode < 0 || mode > 4) return kHalfEven;
  return kTable[mode];
}

}  // namespace oru_dec

#endif  // ORU_DEC_FLAGS_H
