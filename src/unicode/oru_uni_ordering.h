// The canonical-ordering pass shared by case mapping and normalization.
#ifndef ORU_SRC_UNICODE_ORU_UNI_ORDERING_H
#define ORU_SRC_UNICODE_ORU_UNI_ORDERING_H

#include <cstddef>
#include <cstdint>

#include "unicode/oru_casenorm_tables.h"

namespace oru::unicode {

// Stable insertion sort by combining class: a mark is moved back past every
// preceding mark of higher class; class-0 characters never move and nothing
// crosses them.
inline void canonical_order(uint32_t* s, size_t n) noexcept {
  if (n < 2) return;
  uint32_t prev_class = combining_class(s[0]);
  for (size_t i = 1; i < n; ++i) {
    const uint32_t c = s[i];
    const uint32_t cc = combining_class(c);
    if (cc == 0 || cc >= prev_class) {
      prev_class = cc;
      continue;
    }
    size_t j = i;
    while (j > 0) {
      const uint32_t before = combining_class(s[j - 1]);
      if (before == 0 || before <= cc) break;
      s[j] = s[j - 1];
      --j;
    }
    s[j] = c;
    // prev_class stays: the last position still holds the higher class.
  }
}

}  // namespace oru::unicode

#endif  // ORU_SRC_UNICODE_ORU_UNI_ORDERING_H
