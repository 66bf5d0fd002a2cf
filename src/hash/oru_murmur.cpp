// oruMurmurHash64: the library's own MurmurHash2-64 variant.  Unlike
// MurmurHash64A it multiplies the hash before XORing in each block, mixes
// the tail like a block, and mixes the length separately at the end.
#include "hash/oru_hash_bytes.h"
#include "hash/oru_murmur_mix.h"
#include "oru/hash.h"

using namespace oru::hash;

extern "C" ORU_API uint64_t oruMurmurHash64(const void* data, size_t length, uint64_t seed) {
  const auto* p = static_cast<const unsigned char*>(data);
  if (p == nullptr) length = 0;

  uint64_t h = seed;
  size_t blocks = length / 8;
  for (size_t i = 0; i < blocks; ++i, p += 8) {
    h = (h * kMurmurM) ^ murmur_mix(load_le64(p));
  }

  uint64_t tail = 0;
  for (size_t i = 0; i < length % 8; ++i) {
    tail |= static_cast<uint64_t>(p[i]) << (8 * i);
  }
  return murmur_finish(h, tail, static_cast<uint64_t>(length));
}
