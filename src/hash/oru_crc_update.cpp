// Picks, once per process, the fastest CRC code this processor runs.
#include "hash/oru_crc_engine.h"

namespace oru::hash {
namespace {

bool use_clmul() noexcept {
  static const bool supported = crc_clmul_supported();
  return supported;
}

}  // namespace

uint16_t crc16_arc_update(uint16_t crc, const unsigned char* p, size_t n) noexcept {
  return use_clmul() ? crc16_arc_clmul(crc, p, n) : crc16_arc_portable(crc, p, n);
}

uint32_t crc32_update(uint32_t crc, const unsigned char* p, size_t n) noexcept {
  return use_clmul() ? crc32_clmul(crc, p, n) : crc32_portable(crc, p, n);
}

uint64_t crc64_update(uint64_t crc, const unsigned char* p, size_t n) noexcept {
  return use_clmul() ? crc64_clmul(crc, p, n) : crc64_portable(crc, p, n);
}

}  // namespace oru::hash
