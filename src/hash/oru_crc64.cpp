// oruComputeCRC64: CRC-64/XZ.  The tables are built by the compiler, so
// there is nothing to set up on first use and no race between threads.
#include "hash/oru_crc_engine.h"
#include "oru/hash.h"

extern "C" ORU_API uint64_t oruComputeCRC64(const void* data, size_t length) {
  if (data == nullptr || length == 0) return 0;
  // A buffer whose last byte would lie beyond the top of the address
  // space cannot exist; answer it like the empty one instead of wrapping.
  auto start = reinterpret_cast<uintptr_t>(data);
  if (length - 1 > UINTPTR_MAX - start) return 0;
  return oru::hash::crc64_update(~0ull, static_cast<const unsigned char*>(data), length) ^ ~0ull;
}
