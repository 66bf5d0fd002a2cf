// Decoding and encoding one UTF-8 character.
#include "oru/unicode.h"
#include "unicode/oru_utf_internal.h"

using oru::unicode::bytes;
using oru::unicode::is_scalar;
using oru::unicode::kInvalidChar;

namespace {

// Both continuation bytes 10xxxxxx: every top bit set, no bit 6 set.
bool continuations(unsigned b1, unsigned b2) noexcept {
  return ((b1 & b2) & 0x80) != 0 && ((b1 | b2) & 0x40) == 0;
}

unsigned encoded_length(uint32_t c) noexcept {
  return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
}

void encode(unsigned char* p, uint32_t c, unsigned n) noexcept {
  switch (n) {
    case 1:
      p[0] = static_cast<unsigned char>(c);
      break;
    case 2:
      p[0] = static_cast<unsigned char>(0xC0 | c >> 6);
      p[1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
      break;
    case 3:
      p[0] = static_cast<unsigned char>(0xE0 | c >> 12);
      p[1] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
      p[2] = static_cast<unsigned char>(0x80 | (c & 0x3F));
      break;
    default:
      p[0] = static_cast<unsigned char>(0xF0 | c >> 18);
      p[1] = static_cast<unsigned char>(0x80 | ((c >> 12) & 0x3F));
      p[2] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
      p[3] = static_cast<unsigned char>(0x80 | (c & 0x3F));
      break;
  }
}

}  // namespace

extern "C" {

ORU_API uint32_t oruUTF8GetChar(const char* p) {
  const unsigned char* s = bytes(p);
  const unsigned b0 = s[0];
  if (b0 < 0x80) return b0;
  if ((b0 & 0xE0) == 0xC0) {
    const unsigned b1 = s[1];
    if ((b1 & 0xC0) != 0x80) return kInvalidChar;
    const uint32_t c = (b0 & 0x1F) << 6 | (b1 & 0x3F);
    return c < 0x80 ? kInvalidChar : c;
  }
  uint32_t c;
  if ((b0 & 0xF0) == 0xE0) {
    const unsigned b1 = s[1], b2 = s[2];
    if (!continuations(b1, b2)) return kInvalidChar;
    c = (b0 & 0x0F) << 12 | (b1 & 0x3F) << 6 | (b2 & 0x3F);
    if (c < 0x800) return kInvalidChar;
  } else if ((b0 & 0xF8) == 0xF0) {
    const unsigned b1 = s[1], b2 = s[2], b3 = s[3];
    if (!continuations(b1, b2) || (b3 & 0xC0) != 0x80) return kInvalidChar;
    c = (b0 & 0x07) << 18 | (b1 & 0x3F) << 12 | (b2 & 0x3F) << 6 | (b3 & 0x3F);
    if (c < 0x10000) return kInvalidChar;
  } else {
    return kInvalidChar;  // a continuation byte or 0xF8-0xFF
  }
  return is_scalar(c) ? c : kInvalidChar;
}

ORU_API uint32_t _oruUTF8GetChar1(const char* p) {
  const unsigned char* s = bytes(p);
  if (s[0] < 0x80) return s[0];
  return _oruUTF8GetChar2(p);
}

ORU_API uint32_t _oruUTF8GetChar2(const char* p) {
  const unsigned char* s = bytes(p);
  if ((s[0] & 0xE0) == 0xC0) return (s[0] & 0x1Fu) << 6 | (s[1] & 0x3Fu);
  return _oruUTF8GetChar3(p);
}

ORU_API uint32_t _oruUTF8GetChar3(const char* p) {
  const unsigned char* s = bytes(p);
  if ((s[0] & 0xF0) == 0xE0) return (s[0] & 0x0Fu) << 12 | (s[1] & 0x3Fu) << 6 | (s[2] & 0x3Fu);
  return (s[0] & 0x07u) << 18 | (s[1] & 0x3Fu) << 12 | (s[2] & 0x3Fu) << 6 | (s[3] & 0x3Fu);
}

ORU_API char* oruUTF8PutChar(char* p, uint32_t c) {
  if (!is_scalar(c)) return p;
  const unsigned n = encoded_length(c);
  encode(reinterpret_cast<unsigned char*>(p), c, n);
  return p + n;
}

ORU_API char* oruUTF8SafePutChar(char* p, const char* end, int32_t c) {
  const uint32_t u = static_cast<uint32_t>(c);
  if (!is_scalar(u)) return p;  // a negative value is above 0x10FFFF as unsigned
  const unsigned n = encoded_length(u);
  // Compared as addresses so that a pointer already past end is harmless.
  const uintptr_t at = reinterpret_cast<uintptr_t>(p), limit = reinterpret_cast<uintptr_t>(end);
  if (at < limit && limit - at >= n) encode(reinterpret_cast<unsigned char*>(p), u, n);
  return p + n;
}

}  // extern "C"
