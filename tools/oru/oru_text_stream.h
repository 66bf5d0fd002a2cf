// Streams a text file through a whole-text transformation (normalization,
// case mapping) in bounded memory: input is gathered until a cut point that
// no rule of the transformation reaches across, and each piece before such
// a cut is transformed and written on its own, so the output equals the
// transformation of the whole text.
#ifndef ORU_TOOLS_ORU_TEXT_STREAM_H
#define ORU_TOOLS_ORU_TEXT_STREAM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "oru_tool.h"

// Text of code units Unit (char for UTF-8, uint16_t for UTF-16).  `cut(s, n)`
// returns the largest position at which s[0..n) may be cut (0: none);
// `transform(s, n, out)` appends the transformed units.  Pending text beyond
// `limit` units with no cut point is transformed at a character boundary
// anyway, so memory stays bounded whatever the input.
template <typename Unit, typename Cut, typename Transform>
class oru_text_stream {
 public:
  oru_text_stream(FILE* out, bool big_endian, Cut cut, Transform transform, size_t limit)
      : out_(out), big_endian_(big_endian), cut_(cut), transform_(transform), limit_(limit) {}

  void consume(const unsigned char* data, size_t n) {
    if constexpr (sizeof(Unit) == 1) {
      pending_.insert(pending_.end(), reinterpret_cast<const char*>(data),
                      reinterpret_cast<const char*>(data) + n);
    } else {
      for (size_t i = 0; i < n; ++i) {
        odd_.push_back(data[i]);
        if (odd_.size() == 2) {
          pending_.push_back(big_endian_ ? Unit(odd_[0] << 8 | odd_[1])
                                         : Unit(odd_[1] << 8 | odd_[0]));
          odd_.clear();
        }
      }
    }
    size_t at = cut_(pending_.data(), pending_.size());
    if (at == 0 && pending_.size() > limit_) at = boundary(pending_.size() - 4);
    if (at > 0) emit(at);
  }

  // Transforms what is left; a trailing odd byte of UTF-16 is dropped as
  // the incomplete unit it is.
  void finish() {
    if (!pending_.empty()) emit(pending_.size());
  }

 private:
  // A position near `at` that does not split a character.
  size_t boundary(size_t at) const {
    if constexpr (sizeof(Unit) == 1) {
      while (at > 0 && (static_cast<unsigned char>(pending_[at]) & 0xC0) == 0x80) --at;
    } else {
      if (at > 0 && (pending_[at] & 0xFC00) == 0xDC00) --at;
    }
    return at;
  }

  void emit(size_t n) {
    result_.clear();
    transform_(pending_.data(), n, result_);
    if constexpr (sizeof(Unit) == 1) {
      std::fwrite(result_.data(), 1, result_.size(), out_);
    } else {
      bytes_.clear();
      for (Unit u : result_) {
        const unsigned char hi = static_cast<unsigned char>(u >> 8), lo = u & 0xFF;
        bytes_.push_back(big_endian_ ? hi : lo);
        bytes_.push_back(big_endian_ ? lo : hi);
      }
      std::fwrite(bytes_.data(), 1, bytes_.size(), out_);
    }
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(n));
  }

  FILE* out_;
  bool big_endian_;
  Cut cut_;
  Transform transform_;
  size_t limit_;
  std::vector<Unit> pending_, result_;
  std::vector<unsigned char> odd_, bytes_;
};

#endif  // ORU_TOOLS_ORU_TEXT_STREAM_H
