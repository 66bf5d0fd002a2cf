// oruComputeCRC: the four 16- and 32-bit models, each call from the model's
// initial value.
#include "hash/oru_crc_engine.h"
#include "oru/hash.h"

using namespace oru::hash;

extern "C" ORU_API uint32_t oruComputeCRC(uint32_t type, const void* data, size_t length) {
  const auto* p = static_cast<const unsigned char*>(data);
  if (p == nullptr) length = 0;
  switch (type) {
    case ORU_CRC16_ARC:
      return crc16_arc_update(0x0000u, p, length);
    case ORU_CRC16_CCITT_FALSE:
      return crc16_ccitt_portable(0xFFFFu, p, length);
    case ORU_CRC16_XMODEM:
      return crc16_ccitt_portable(0x0000u, p, length);
    case ORU_CRC32:
      return crc32_update(0xFFFFFFFFu, p, length) ^ 0xFFFFFFFFu;
    default:
      return 0;
  }
}
