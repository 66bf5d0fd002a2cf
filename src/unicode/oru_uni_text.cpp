// Whole-string decoding and encoding for the case-mapping and normalization
// functions.
#include "unicode/oru_uni_text.h"

#include <cstring>

#include "oru/core.h"
#include "oru/unicode.h"
#include "unicode/oru_utf_internal.h"

namespace oru::unicode {

size_t utf8_sequence(const unsigned char* s, size_t n, size_t i) noexcept {
  const unsigned b0 = s[i];
  if (b0 < 0x80) return 1;
  const size_t len = b0 >= 0xC2 && b0 < 0xE0   ? 2
                     : b0 >= 0xE0 && b0 < 0xF0 ? 3
                     : b0 >= 0xF0 && b0 < 0xF5 ? 4
                                               : 0;
  if (len == 0 || n - i < len) return 0;
  uint32_t c = b0 & (0x7Fu >> len);
  for (size_t k = 1; k < len; ++k) {
    if (!is_continuation(s[i + k])) return 0;
    c = c << 6 | (s[i + k] & 0x3Fu);
  }
  if (len == 3 && (c < 0x800 || (c & 0xF800) == 0xD800)) return 0;
  if (len == 4 && (c < 0x10000 || c > 0x10FFFF)) return 0;
  return len;
}

void decode_utf8(const char* s, size_t n, std::vector<uint32_t>& out) {
  out.clear();
  out.reserve(n);
  const unsigned char* b = bytes(s);
  size_t i = 0;
  while (i < n) {
    if (b[i] < 0x80) {
      out.push_back(b[i++]);
      continue;
    }
    const size_t len = utf8_sequence(b, n, i);
    if (len == 0) {
      out.push_back(kReplacementChar);
      ++i;
      continue;
    }
    out.push_back(len == 2 ? _oruUTF8GetChar2(s + i) : _oruUTF8GetChar3(s + i));
    i += len;
  }
}

void decode_utf16(const uint16_t* s, size_t n, std::vector<uint32_t>& out) {
  out.clear();
  out.reserve(n);
  for (size_t i = 0; i < n; ++i) {
    const uint16_t u = s[i];
    if ((u & 0xF800) != 0xD800) {
      out.push_back(u);
    } else if (is_high_surrogate(u) && i + 1 < n && is_low_surrogate(s[i + 1])) {
      out.push_back(combine_surrogates(u, s[i + 1]));
      ++i;
    } else {
      out.push_back(kReplacementChar);
    }
  }
}

void decode_utf16_raw(const uint16_t* s, size_t n, std::vector<uint32_t>& out) {
  out.clear();
  out.reserve(n);
  for (size_t i = 0; i < n; ++i) {
    if (is_high_surrogate(s[i]) && i + 1 < n && is_low_surrogate(s[i + 1])) {
      out.push_back(combine_surrogates(s[i], s[i + 1]));
      ++i;
    } else {
      out.push_back(s[i]);
    }
  }
}

namespace {
uint32_t scalar_or_replacement(uint32_t c) noexcept {
  // Noncharacters are kept: they are well-formed text.
  return (c <= 0x10FFFF && (c & 0xFFF800) != 0xD800) ? c : kReplacementChar;
}
}  // namespace

uint16_t* encode_utf16(const uint32_t* s, size_t n, uint32_t* outLen) {
  size_t size = 0;
  for (size_t i = 0; i < n; ++i) size += scalar_or_replacement(s[i]) < 0x10000 ? 1 : 2;
  auto* out = static_cast<uint16_t*>(oruMalloc((size ? size : 1) * sizeof(uint16_t)));
  if (!out) {
    if (outLen) *outLen = 0;
    return nullptr;
  }
  uint16_t* p = out;
  for (size_t i = 0; i < n; ++i) {
    const uint32_t c = scalar_or_replacement(s[i]);
    if (c < 0x10000) {
      *p++ = static_cast<uint16_t>(c);
    } else {
      *p++ = static_cast<uint16_t>(0xD800 | ((c - 0x10000) >> 10));
      *p++ = static_cast<uint16_t>(0xDC00 | (c & 0x3FF));
    }
  }
  if (outLen) *outLen = static_cast<uint32_t>(size);
  return out;
}

void append_utf8(std::string& out, const uint32_t* s, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    const uint32_t c = scalar_or_replacement(s[i]);
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      const char buf[2] = {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
      out.append(buf, 2);
    } else if (c < 0x10000) {
      const char buf[3] = {static_cast<char>(0xE0 | c >> 12),
                           static_cast<char>(0x80 | ((c >> 6) & 0x3F)),
                           static_cast<char>(0x80 | (c & 0x3F))};
      out.append(buf, 3);
    } else {
      const char buf[4] = {
          static_cast<char>(0xF0 | c >> 18), static_cast<char>(0x80 | ((c >> 12) & 0x3F)),
          static_cast<char>(0x80 | ((c >> 6) & 0x3F)), static_cast<char>(0x80 | (c & 0x3F))};
      out.append(buf, 4);
    }
  }
}

OutBuffer::~OutBuffer() { oruFree(data_); }

bool OutBuffer::reserve(size_t capacity) {
  if (capacity <= cap_) return true;
  char* grown = static_cast<char*>(oruRealloc(data_, capacity + 1));  // + 1: the terminator
  if (!grown) {
    oruFree(data_);
    data_ = nullptr;
    size_ = cap_ = 0;
    return false;
  }
  data_ = grown;
  cap_ = capacity;
  return true;
}

char* OutBuffer::release(uint32_t* outLen) {
  if (!data_ && !reserve(0 + 1)) return nullptr;
  data_[size_] = 0;
  if (outLen) *outLen = static_cast<uint32_t>(size_);
  char* out = data_;
  data_ = nullptr;
  size_ = cap_ = 0;
  return out;
}

uint32_t* copy_ucs4(const uint32_t* s, size_t n, uint32_t* outLen) {
  auto* out = static_cast<uint32_t*>(oruMalloc((n ? n : 1) * sizeof(uint32_t)));
  if (!out) {
    if (outLen) *outLen = 0;
    return nullptr;
  }
  if (n) std::memcpy(out, s, n * sizeof(uint32_t));
  if (outLen) *outLen = static_cast<uint32_t>(n);
  return out;
}

}  // namespace oru::unicode
