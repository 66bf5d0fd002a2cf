// Conversions between host order and big- or little-endian order.  The
// library is built for little-endian hosts; each direction pair is the same
// operation, so the second name is an alias of the first symbol.

#include "core/oru_internal.h"
#include "oru/text.h"

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "oru is built for little-endian hosts");

extern "C" {

ORU_API uint16_t oruBE2Host16(uint16_t value) { return __builtin_bswap16(value); }
ORU_API uint32_t oruBE2Host32(uint32_t value) { return __builtin_bswap32(value); }
ORU_API uint64_t oruBE2Host64(uint64_t value) { return __builtin_bswap64(value); }
ORU_API uint16_t oruLE2Host16(uint16_t value) { return value; }
ORU_API uint32_t oruLE2Host32(uint32_t value) { return value; }
ORU_API uint64_t oruLE2Host64(uint64_t value) { return value; }

ORU_API uint16_t oruHost2BE16(uint16_t value) ORU_ALIAS(oruBE2Host16);
ORU_API uint32_t oruHost2BE32(uint32_t value) ORU_ALIAS(oruBE2Host32);
ORU_API uint64_t oruHost2BE64(uint64_t value) ORU_ALIAS(oruBE2Host64);
ORU_API uint16_t oruHost2LE16(uint16_t value) ORU_ALIAS(oruLE2Host16);
ORU_API uint32_t oruHost2LE32(uint32_t value) ORU_ALIAS(oruLE2Host32);
ORU_API uint64_t oruHost2LE64(uint64_t value) ORU_ALIAS(oruLE2Host64);

}  // extern "C"
