// oruMurmurHash64: the library's own MurmurHash2-64 variant.  Unlike
// MurmurHash64A it multiplies the hash before XORing in each block, mixes
// the tail like a block, and mixes the length separately at the end.
#include "hash/oru_hash_bytes.h"
#include "oru/hash.h"

namespace {

constexpr uint64_t kM = 0xC6A4A7935BD1E995ull;
constexpr int kR = 47;

constexpr uint64_t mix(uint64_t k) {
  k *= kM;
  k ^= k >> kR;
  return k * kM;
}

}  // namespace

extern "C" ORU_API uint64_t oruMurmurHash64(const void* data, size_t length, uint64_t seed) {
  const auto* p = static_cast<const unsigned char*>(data);
  if (p == nullptr) length = 0;

  uint64_t h = seed;
  size_t blocks = length / 8;
  for (size_t i = 0; i < blocks; ++i, p += 8) {
    h = (h * kM) ^ mix(oru::hash::load_le64(p));
  }

  uint64_t tail = 0;
  for (size_t i = 0; i < length % 8; ++i) {
    tail |= static_cast<uint64_t>(p[i]) << (8 * i);
  }
  h = ((h * kM) ^ mix(tail)) * kM;

  h ^= mix(static_cast<uint64_t>(length));

  h ^= h >> kR;
  h *= kM;
  h ^= h >> kR;
  return h;
}
