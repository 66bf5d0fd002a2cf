// Validation and counting for any processor: ASCII is skipped a 64-bit word
// at a time, everything else goes byte-wise.
#include <cstring>

#include "unicode/oru_utf8_scan.h"
#include "unicode/oru_utf_internal.h"

namespace oru::unicode {
namespace {

bool ascii_word(const unsigned char* p) noexcept {
  uint64_t w;
  std::memcpy(&w, p, sizeof w);
  return (w & 0x8080808080808080ull) == 0;
}

}  // namespace

size_t utf8_validate_portable(const unsigned char* s, size_t n) noexcept {
  size_t i = 0;
  while (i < n) {
    if (s[i] < 0x80) {
      ++i;
      while (i + 8 <= n && ascii_word(s + i)) i += 8;
      continue;
    }
    const size_t k = utf8_valid_sequence(s, n, i);
    if (k == 0) return i;
    i += k;
  }
  return n;
}

uint32_t utf8_count_portable(const unsigned char* s, size_t n) noexcept {
  size_t i = 0;
  uint32_t count = 0;
  while (i < n) {
    if (s[i] < 0x80) {
      const size_t run_start = i++;
      while (i + 8 <= n && ascii_word(s + i)) i += 8;
      count += static_cast<uint32_t>(i - run_start);
      continue;
    }
    const size_t k = utf8_seq_len(s[i]);
    if (k > n - i) break;  // an incomplete final sequence is not counted
    i += k;
    ++count;
  }
  return count;
}

}  // namespace oru::unicode
