/*
 * Per-thread status flags and their exported view.  The core word keeps
 * invalid in bit 0x01, a denormal-operand bit 0x02 that the exported view
 * never shows or sets, and the other four exceptions in 0x04 .. 0x20; the
 * exported bits are 1, 2, 4, 8, 16.
 */
#include "decimal/oru_dec_flags.h"
#include "oru/decimal.h"

namespace oru_dec {

constinit thread_local FlagBlock t_flags __attribute__((tls_model("initial-exec"))) = {0, 0};

namespace {

uint32_t to_core(int flags) {
  uint32_t f = (uint32_t)flags;
  return ((f & 1u) | ((f & 0x1Eu) << 1)) & kFlagMask;
}

int to_exported(uint32_t core) {
  core &= kFlagMask;
  return (int)((core & 1u) | ((core >> 1) & 0x1Eu));
}

void restore(int flags, int mask) {
  uint32_t m = to_core(mask);
  t_flags.core = (t_flags.core & ~m) | (to_core(flags) & m);
}

}  // namespace
}  // namespace oru_dec

using namespace oru_dec;

extern "C" {

ORU_API void oruDecRaiseFlags(int flags) { t_flags.core |= to_core(flags); }

ORU_API void oruDecLowerFlags(int flags) { t_flags.core &= ~to_core(flags); }

ORU_API int oruDecTestFlags(int mask) { return to_exported(t_flags.core & to_core(mask)); }

ORU_API int oruDecSaveFlags(void) { return to_exported(t_flags.core); }

ORU_API void oruDecRestoreFlags(int flags, int mask) { restore(flags, mask); }

ORU_API int _oruDecSaveAndLowerFlags(int mask) {
  int before = to_exported(t_flags.core);
  t_flags.core &= ~to_core(mask);
  return before;
}

ORU_API int _oruDecGetAndRestoreFlags(int flags, int mask) {
  int before = to_exported(t_flags.core);
  restore(flags, mask);
  return before;
}

}  // extern "C"
