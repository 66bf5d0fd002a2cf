// Validation and lookup of catalog images.  A validated image can be read
// without bounds checks: every slot is at most size - 2 and the last two
// bytes are zero, so a msgid starting at a slot ends inside the file and the
// translation after it starts at most at the last byte, which is a NUL.
#include "oru_catalog_format.h"

#include <cstring>

namespace {

uint32_t load_be32(const unsigned char* p) {
  return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | uint32_t{p[3]};
}

uint16_t load_be16(const unsigned char* p) { return static_cast<uint16_t>((p[0] << 8) | p[1]); }

void store32(unsigned char* p, uint32_t v) { std::memcpy(p, &v, 4); }
void store16(unsigned char* p, uint16_t v) { std::memcpy(p, &v, 2); }
uint32_t host32(const unsigned char* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

}  // namespace

const char* oru_catalog_validate(unsigned char* image, size_t size) {
  if (image == nullptr || size < ORU_CATALOG_MIN_SIZE) return "shorter than 36 bytes";
  if (size > 0xFFFFFFFFu) return "larger than 4 GiB";
  uint32_t magic = load_be32(image);
  uint16_t version = load_be16(image + 4);
  uint16_t reserved = load_be16(image + 6);
  uint32_t sizeField = load_be32(image + 8);
  uint32_t slots = load_be32(image + 12);
  store32(image, magic);
  store16(image + 4, version);
  store16(image + 6, reserved);
  store32(image + 8, sizeField);
  store32(image + 12, slots);
  if (magic != ORU_CATALOG_MAGIC) return "bad magic (not an NWMO catalog)";
  if (version > 1) return "unsupported format version";
  if (sizeField != size) return "size field differs from the file's size";
  if ((slots & (slots - 1)) != 0) return "slot count is not a power of two";
  if (image[size - 1] != 0 || image[size - 2] != 0) return "last two bytes are not zero";
  // The slot table itself must lie inside the file.
  if (slots > (size - ORU_CATALOG_HEADER_SIZE) / 4) return "slot table extends past the end";
  unsigned char* table = image + ORU_CATALOG_HEADER_SIZE;
  for (uint32_t i = 0; i < slots; ++i) {
    uint32_t offset = load_be32(table + 4 * size_t{i});
    store32(table + 4 * size_t{i}, offset);
    if (offset > size - 2) return "a slot points past the end";
  }
  return nullptr;
}

uint32_t oru_catalog_slot_count(const unsigned char* image) { return host32(image + 12); }

const uint32_t* oru_catalog_slots(const unsigned char* image) {
  return reinterpret_cast<const uint32_t*>(image + ORU_CATALOG_HEADER_SIZE);
}

const char* oru_catalog_find(const unsigned char* image, const char* msgid) {
  uint32_t count = oru_catalog_slot_count(image);
  if (count == 0) return nullptr;
  const uint32_t* slots = oru_catalog_slots(image);
  uint32_t mask = count - 1;
  // Hash and length in one pass: a matching key has the msgid's length,
  // so its translation starts length + 1 bytes after it.
  uint32_t h = 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(msgid);
  for (; *p != 0; ++p) h = h * 31u + *p;
  size_t length = static_cast<size_t>(p - reinterpret_cast<const unsigned char*>(msgid));
  uint32_t home = h & mask;
  uint32_t i = home;
  while (slots[i] != 0) {
    const char* key = reinterpret_cast<const char*>(image) + slots[i];
    if (key[0] == msgid[0] && std::strcmp(key, msgid) == 0) return key + length + 1;
    i = (i + 1) & mask;
    if (i == home) break;
  }
  return nullptr;
}
