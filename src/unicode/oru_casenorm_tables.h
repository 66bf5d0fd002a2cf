// The compiled-in case-mapping, combining-class, decomposition and
// composition tables (generated) and their lookups.
#ifndef ORU_SRC_UNICODE_ORU_CASENORM_TABLES_H
#define ORU_SRC_UNICODE_ORU_CASENORM_TABLES_H

#include <cstdint>

namespace oru::unicode {

extern const int8_t caseLowerIndex[], caseUpperIndex[], caseTitleIndex[], caseFoldIndex[];
extern const uint32_t caseLowerData[], caseUpperData[], caseTitleData[], caseFoldData[];
extern const uint16_t caseSpecialOffset[];
extern const uint32_t caseSpecial[];
extern const uint8_t cccIndex[];
extern const uint16_t cccData[];
extern const uint8_t decompIndex[];
extern const uint16_t decompOffset[];
extern const uint16_t decompData[];
extern const uint8_t composeIndex[];
extern const uint16_t composeOffset[];
extern const uint16_t composeData[];

// One mapping: its block index and its data.
struct CaseTable {
  const int8_t* index;
  const uint32_t* data;
};

inline constexpr CaseTable kLowerTable{caseLowerIndex, caseLowerData};
inline constexpr CaseTable kUpperTable{caseUpperIndex, caseUpperData};
inline constexpr CaseTable kTitleTable{caseTitleIndex, caseTitleData};
inline constexpr CaseTable kFoldTable{caseFoldIndex, caseFoldData};

constexpr uint32_t kSimpleMask = 0x1FFFFF;
constexpr uint32_t kSpecialShift = 21;

// The mapping word of c: bits 0-20 the simple mapping, bits 21-31 a special
// entry number (0: none).  Code points that never change give themselves.
inline uint32_t case_word(const CaseTable& t, uint32_t c) noexcept {
  if (c < 0x600) return t.data[c];
  if (c >= 0x10480) return c;
  const int block = t.index[c >> 6];
  if (block < 0) return c;
  return t.data[(static_cast<uint32_t>(block) << 6) + (c & 0x3F)];
}

inline uint32_t combining_class(uint32_t c) noexcept {
  if (c >= 0x1D280) return 0;
  const uint32_t block = cccIndex[c >> 6];
  if (block == 255) return 0;
  return cccData[(block << 6) + (c & 0x3F)];
}

// The decomposition record of c (header, then the mapping), or null.
inline const uint16_t* decomposition(uint32_t c) noexcept {
  if (c >= 0x2FA40) return nullptr;
  const uint32_t block = decompIndex[c >> 6];
  if (block == 255) return nullptr;
  const uint16_t at = decompOffset[(block << 6) + (c & 0x3F)];
  return at ? decompData + at : nullptr;
}

// The primary composite of first and second, or 0 when there is none.
inline uint32_t compose_pair(uint32_t first, uint32_t second) noexcept {
  if (first >= 0x3100) return 0;
  const uint32_t block = composeIndex[first >> 4];
  if (block == 255) return 0;
  const uint16_t at = composeOffset[(block << 4) + (first & 0xF)];
  if (!at) return 0;
  const uint16_t* p = composeData + at;
  while (*p) {
    uint32_t s = *p++;
    if ((s & 0xFC00) == 0xD800) s = ((s & 0x3FF) << 10 | (*p++ & 0x3FF)) + 0x10000;
    uint32_t comp = *p++;
    if ((comp & 0xFC00) == 0xD800) comp = ((comp & 0x3FF) << 10 | (*p++ & 0x3FF)) + 0x10000;
    if (s == second) return comp;
  }
  return 0;
}

}  // namespace oru::unicode

#endif  // ORU_SRC_UNICODE_ORU_CASENORM_TABLES_H
