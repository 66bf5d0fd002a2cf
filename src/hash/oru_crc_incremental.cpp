// oruUpdateCRC and oruUpdateCRC64: continue a finished CRC over more input.
// A finished CRC is the register after the model's final XOR, so undoing
// that XOR gives back the register to continue from.
#include <cstdint>

#include "hash/oru_crc_engine.h"
#include "oru/hash.h"

using namespace oru::hash;

extern "C" ORU_API uint32_t oruUpdateCRC(uint32_t type, uint32_t crc, const void* data,
                                         size_t length) {
  const auto* p = static_cast<const unsigned char*>(data);
  if (p == nullptr) length = 0;
  const auto crc16 = static_cast<uint16_t>(crc);
  switch (type) {
    case ORU_CRC16_ARC:
      return crc16_arc_update(crc16, p, length);
    case ORU_CRC16_CCITT_FALSE:
    case ORU_CRC16_XMODEM:
      // The two models differ only in their initial value, which is already
      // part of crc.
      return crc16_ccitt_portable(crc16, p, length);
    case ORU_CRC32:
      return crc32_update(crc ^ 0xFFFFFFFFu, p, length) ^ 0xFFFFFFFFu;
    default:
      return 0;
  }
}

extern "C" ORU_API uint64_t oruUpdateCRC64(uint64_t crc, const void* data, size_t length) {
  if (data == nullptr || length == 0) return crc;
  // As in the one-shot form: a buffer that would end beyond the top of the
  // address space cannot exist; treat it as empty.
  auto start = reinterpret_cast<uintptr_t>(data);
  if (length - 1 > UINTPTR_MAX - start) return crc;
  return crc64_update(crc ^ ~0ull, static_cast<const unsigned char*>(data), length) ^ ~0ull;
}
