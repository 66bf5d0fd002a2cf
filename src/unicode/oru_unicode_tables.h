// The compiled-in character-property table and its lookup.
//
// Two stages: charInfoIndex has one word per 128-code-point block, either the
// number of a block of charInfoData or, with bit 31 set, the property word
// of every code point in the block (large uniform ranges: ideographs, Hangul
// syllables, private use, unassigned planes).  Blocks 0-31 of charInfoData
// are U+0000..U+0FFF in order, so the most common scripts take one read.
#ifndef ORU_SRC_UNICODE_ORU_UNICODE_TABLES_H
#define ORU_SRC_UNICODE_ORU_UNICODE_TABLES_H

#include <cstdint>

namespace oru::unicode {

extern const uint32_t charInfoIndex[0x110000 / 128];
extern const uint32_t charInfoData[];

// Bits 0-5 of a property word: the category; bits 8-30: the properties.
constexpr uint32_t kCategoryMask = 0x3F;
constexpr uint32_t kPropertyMask = 0x7FFFFF00;
constexpr uint32_t kUniformBlock = 0x80000000;

inline uint32_t char_info(uint32_t c) noexcept {
  if (c < 0x1000) return charInfoData[c];
  if (c > 0x10FFFF) return 0;
  const uint32_t i = charInfoIndex[c >> 7];
  if (i & kUniformBlock) return i & ~kUniformBlock;
  return charInfoData[(i << 7) + (c & 0x7F)];
}

}  // namespace oru::unicode

#endif  // ORU_SRC_UNICODE_ORU_UNICODE_TABLES_H
