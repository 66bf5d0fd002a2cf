// Loads and stores of fixed byte order at any alignment.  memcpy keeps them
// free of unaligned access; compilers turn each into one instruction.
#ifndef ORU_SRC_HASH_ORU_HASH_BYTES_H
#define ORU_SRC_HASH_ORU_HASH_BYTES_H

#include <cstdint>
#include <cstring>

namespace oru::hash {

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
inline constexpr bool kLittleEndianHost = false;
#else
inline constexpr bool kLittleEndianHost = true;
#endif

inline uint32_t load_le32(const unsigned char* p) noexcept {
  uint32_t v;
  std::memcpy(&v, p, sizeof v);
  return kLittleEndianHost ? v : __builtin_bswap32(v);
}

inline uint64_t load_le64(const unsigned char* p) noexcept {
  uint64_t v;
  std::memcpy(&v, p, sizeof v);
  return kLittleEndianHost ? v : __builtin_bswap64(v);
}

inline uint64_t load_be64(const unsigned char* p) noexcept {
  uint64_t v;
  std::memcpy(&v, p, sizeof v);
  return kLittleEndianHost ? __builtin_bswap64(v) : v;
}

inline void store_le32(unsigned char* p, uint32_t v) noexcept {
  v = kLittleEndianHost ? v : __builtin_bswap32(v);
  std::memcpy(p, &v, sizeof v);
}

inline void store_le64(unsigned char* p, uint64_t v) noexcept {
  v = kLittleEndianHost ? v : __builtin_bswap64(v);
  std::memcpy(p, &v, sizeof v);
}

}  // namespace oru::hash

#endif  // ORU_SRC_HASH_ORU_HASH_BYTES_H
