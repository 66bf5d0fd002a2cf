// oruGetRandomNumber: Park-Miller "minimal standard" generator,
// s' = 16807 * s mod (2^31 - 1), with Schrage's factorisation
// m = a * q + r (q = m div a, r = m mod a) so that no product exceeds
// 32 bits.
#include "oru/hash.h"

namespace {

constexpr uint32_t kA = 16807;
constexpr uint32_t kM = 2147483647;  // 2^31 - 1
constexpr uint32_t kQ = kM / kA;     // 127773
constexpr uint32_t kR = kM % kA;     // 2836
static_assert(kQ == 127773 && kR == 2836);

// A state of 0 would stay 0 for ever.
constexpr uint32_t kDefaultSeed = 123459876;

}  // namespace

extern "C" ORU_API uint32_t oruGetRandomNumber(uint32_t* state) {
  if (state == nullptr) return 0;
  uint32_t s = *state;
  if (s == 0) s = kDefaultSeed;
  // Both products stay below 2^31, but their difference may wrap; read as
  // signed it is then negative and one modulus brings it back in range.
  uint32_t t = (s % kQ) * kA - (s / kQ) * kR;
  if (static_cast<int32_t>(t) < 0) t += kM;
  *state = t;
  return t & 0x7FFFFFFFu;
}
