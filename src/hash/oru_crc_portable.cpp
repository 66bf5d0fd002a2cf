// Portable CRC register updates, for processors without carry-less
// multiplication (and as the reference the faster code must agree with).
#include "hash/oru_crc_engine.h"
#include "hash/oru_crc_slice.h"

namespace oru::hash {

uint16_t crc16_arc_portable(uint16_t crc, const unsigned char* p, size_t n) noexcept {
  return reflected_slice8(kCrc16ArcTables, crc, p, n);
}

uint16_t crc16_ccitt_portable(uint16_t crc, const unsigned char* p, size_t n) noexcept {
  return forward16_slice8(kCrc16CcittTables, crc, p, n);
}

uint32_t crc32_portable(uint32_t crc, const unsigned char* p, size_t n) noexcept {
  return reflected_slice8(kCrc32Tables, crc, p, n);
}

uint64_t crc64_portable(uint64_t crc, const unsigned char* p, size_t n) noexcept {
  return reflected_slice8(kCrc64Tables, crc, p, n);
}

}  // namespace oru::hash
