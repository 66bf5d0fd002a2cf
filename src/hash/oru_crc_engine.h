// The CRC register update behind oruComputeCRC and oruComputeCRC64.
//
// Each function advances a raw register over a buffer: the model's initial
// value goes in, the register (before the final XOR) comes out.  The
// portable functions run anywhere; the carry-less-multiply ones are used
// when the processor has the instruction, and must give identical results.
#ifndef ORU_SRC_HASH_ORU_CRC_ENGINE_H
#define ORU_SRC_HASH_ORU_CRC_ENGINE_H

#include <cstddef>
#include <cstdint>

namespace oru::hash {

// Slicing-by-eight over the compiled-in tables.
uint16_t crc16_arc_portable(uint16_t crc, const unsigned char* p, size_t n) noexcept;
uint16_t crc16_ccitt_portable(uint16_t crc, const unsigned char* p, size_t n) noexcept;
uint32_t crc32_portable(uint32_t crc, const unsigned char* p, size_t n) noexcept;
uint64_t crc64_portable(uint64_t crc, const unsigned char* p, size_t n) noexcept;

// True when this processor can run the *_clmul functions.
bool crc_clmul_supported() noexcept;

// Folding with carry-less multiplication for the reflected models.  Only to
// be called when crc_clmul_supported() is true.
uint16_t crc16_arc_clmul(uint16_t crc, const unsigned char* p, size_t n) noexcept;
uint32_t crc32_clmul(uint32_t crc, const unsigned char* p, size_t n) noexcept;
uint64_t crc64_clmul(uint64_t crc, const unsigned char* p, size_t n) noexcept;

// The fastest of the above that this processor runs.
uint16_t crc16_arc_update(uint16_t crc, const unsigned char* p, size_t n) noexcept;
uint32_t crc32_update(uint32_t crc, const unsigned char* p, size_t n) noexcept;
uint64_t crc64_update(uint64_t crc, const unsigned char* p, size_t n) noexcept;

}  // namespace oru::hash

#endif  // ORU_SRC_HASH_ORU_CRC_ENGINE_H
