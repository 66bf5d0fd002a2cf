// Slicing-by-eight: one table lookup per input byte, but eight independent
// lookups per step instead of a chain of eight dependent ones.
#ifndef ORU_SRC_HASH_ORU_CRC_SLICE_H
#define ORU_SRC_HASH_ORU_CRC_SLICE_H

#include "hash/oru_crc_tables.h"
#include "hash/oru_hash_bytes.h"

#include <cstddef>
#include <cstdint>

namespace oru::hash {

// Reflected register of up to 64 bits: the register lines up with the
// first bytes of each little-endian eight-byte word.
template <typename T>
inline T reflected_slice8(const CrcTables<T>& tab, T crc, const unsigned char* p,
                          size_t n) noexcept {
  while (n >= 8) {
    uint64_t v = load_le64(p) ^ crc;
    crc =
        static_cast<T>(tab.t[7][v & 0xFF] ^ tab.t[6][(v >> 8) & 0xFF] ^ tab.t[5][(v >> 16) & 0xFF] ^
                       tab.t[4][(v >> 24) & 0xFF] ^ tab.t[3][(v >> 32) & 0xFF] ^
                       tab.t[2][(v >> 40) & 0xFF] ^ tab.t[1][(v >> 48) & 0xFF] ^ tab.t[0][v >> 56]);
    p += 8;
    n -= 8;
  }
  while (n-- > 0) {
    crc = static_cast<T>(tab.t[0][(crc ^ *p++) & 0xFF] ^ (crc >> 8));
  }
  return crc;
}

// Forward 16-bit register: it lines up with the first two bytes of each
// big-endian eight-byte word.
inline uint16_t forward16_slice8(const CrcTables<uint16_t>& tab, uint16_t crc,
                                 const unsigned char* p, size_t n) noexcept {
  while (n >= 8) {
    uint64_t v = load_be64(p) ^ (static_cast<uint64_t>(crc) << 48);
    crc = static_cast<uint16_t>(tab.t[7][v >> 56] ^ tab.t[6][(v >> 48) & 0xFF] ^
                                tab.t[5][(v >> 40) & 0xFF] ^ tab.t[4][(v >> 32) & 0xFF] ^
                                tab.t[3][(v >> 24) & 0xFF] ^ tab.t[2][(v >> 16) & 0xFF] ^
                                tab.t[1][(v >> 8) & 0xFF] ^ tab.t[0][v & 0xFF]);
    p += 8;
    n -= 8;
  }
  while (n-- > 0) {
    crc = static_cast<uint16_t>((crc << 8) ^ tab.t[0][((crc >> 8) ^ *p++) & 0xFF]);
  }
  return crc;
}

}  // namespace oru::hash

#endif  // ORU_SRC_HASH_ORU_CRC_SLICE_H
