// The constants and block mix of oruMurmurHash64, shared by the one-shot
// and the incremental form so that the two cannot drift apart.
#ifndef ORU_SRC_HASH_ORU_MURMUR_MIX_H
#define ORU_SRC_HASH_ORU_MURMUR_MIX_H

#include <cstdint>

namespace oru::hash {

inline constexpr uint64_t kMurmurM = 0xC6A4A7935BD1E995ull;
inline constexpr int kMurmurR = 47;

constexpr uint64_t murmur_mix(uint64_t k) {
  k *= kMurmurM;
  k ^= k >> kMurmurR;
  return k * kMurmurM;
}

// The steps after the last whole block: the tail (0 to 7 bytes as a
// little-endian number) mixed like a block, the length, the final avalanche.
constexpr uint64_t murmur_finish(uint64_t h, uint64_t tail, uint64_t length) {
  h = ((h * kMurmurM) ^ murmur_mix(tail)) * kMurmurM;
  h ^= murmur_mix(length);
  h ^= h >> kMurmurR;
  h *= kMurmurM;
  h ^= h >> kMurmurR;
  return h;
}

}  // namespace oru::hash

#endif  // ORU_SRC_HASH_ORU_MURMUR_MIX_H
