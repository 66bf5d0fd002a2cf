// The binary catalog format: validating a file image (converting it to host
// byte order in place) and looking a msgid up in a validated image.  Shared
// by the library's loader and the `oru catalog` tool, so both reject exactly
// the same files.
#ifndef ORU_L10N_ORU_CATALOG_FORMAT_H
#define ORU_L10N_ORU_CATALOG_FORMAT_H

#include <cstddef>
#include <cstdint>

// Layout: magic "NWMO", u16 version, u16 reserved, u32 size, u32 slot count,
// 16 reserved bytes, then the slots; all big-endian in the file.
constexpr uint32_t ORU_CATALOG_MAGIC = 0x4E574D4Fu;
constexpr size_t ORU_CATALOG_HEADER_SIZE = 32;
constexpr size_t ORU_CATALOG_MIN_SIZE = 36;

// The hash of msgids: h = h * 31 + byte, 32-bit unsigned.
inline uint32_t oru_catalog_hash(const char* text, uint32_t h = 0) {
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
    h = h * 31u + *p;
  }
  return h;
}

// Checks an image of `size` bytes (the whole file; `image` must be 4-byte
// aligned) and converts its header and slots to host byte order in place.
// Returns null when the image is a valid catalog, else a short English
// reason.  On failure the image may be partly converted.
const char* oru_catalog_validate(unsigned char* image, size_t size);

// Number of slots and the slots of a validated image.
uint32_t oru_catalog_slot_count(const unsigned char* image);
const uint32_t* oru_catalog_slots(const unsigned char* image);

// Looks msgid up in a validated image.  Returns a pointer to the entry's
// translation, which may be empty, or null when msgid is not there.
const char* oru_catalog_find(const unsigned char* image, const char* msgid);

#endif  // ORU_L10N_ORU_CATALOG_FORMAT_H
