/*
 * The to-scientific-string form of decimal values: plain notation while the
 * exponent is not positive and the adjusted exponent is at least -6,
 * otherwise one digit before the point and an explicit exponent.
 */
#include <cstring>

#include "decimal/oru_dec_digits.h"
#include "decimal/oru_dec_f32.h"
#include "oru/decimal.h"

using namespace oru_dec;

namespace {

// Writes the text of n into out (at least 48 characters); returns its
// length.
int to_text(const Num& n, char* out) {
  char* p = out;
  if (n.sign) *p++ = '-';
  if (n.kind == kInf) {
    std::memcpy(p, "Infinity", 8);
    return (int)(p + 8 - out);
  }
  if (n.kind != kFinite) {
    if (n.kind == kSNaN) *p++ = 's';
    std::memcpy(p, "NaN", 3);
    p += 3;
    if (n.c != 0) p += coefficient_digits(n.c, p);
    return (int)(p - out);
  }
  char d[40];
  int nd = coefficient_digits(n.c, d);
  int64_t adjusted = (int64_t)n.e + nd - 1;
  if (n.e <= 0 && adjusted >= -6) {
    if (n.e == 0) {
      std::memcpy(p, d, (size_t)nd);
      p += nd;
    } else if (nd > -n.e) {
      int before = nd + n.e;
      std::memcpy(p, d, (size_t)before);
      p += before;
      *p++ = '.';
      std::memcpy(p, d + before, (size_t)(nd - before));
      p += nd - before;
    } else {
      *p++ = '0';
      *p++ = '.';
      for (int i = 0; i < -n.e - nd; ++i) *p++ = '0';
      std::memcpy(p, d, (size_t)nd);
      p += nd;
    }
    return (int)(p - out);
  }
  *p++ = d[0];
  if (nd > 1) {
    *p++ = '.';
    std::memcpy(p, d + 1, (size_t)(nd - 1));
    p += nd - 1;
  }
  *p++ = 'E';
  *p++ = adjusted < 0 ? '-' : '+';
  char e[8];
  int ne = 0;
  uint64_t a = (uint64_t)(adjusted < 0 ? -adjusted : adjusted);
  do {
    e[ne++] = (char)('0' + a % 10);
    a /= 10;
  } while (a != 0);
  while (ne > 0) *p++ = e[--ne];
  return (int)(p - out);
}

oruResult put(const Num& n, char* buf, size_t size, size_t* length) {
  if (!buf) return ORU_E_INVALID_ARG;
  char text[64];
  int len = to_text(n, text);
  if (length) *length = (size_t)len;
  if (size < (size_t)len + 1) {
    if (size > 0) buf[0] = '\0';
    return ORU_E_BUFFER_TOO_SMALL;
  }
  std::memcpy(buf, text, (size_t)len);
  buf[len] = '\0';
  return ORU_OK;
}

}  // namespace

extern "C" {

ORU_API oruResult oruDec32ToString(oruDec32 x, char* buf, size_t size, size_t* length) {
  return put(F32::unpack(x), buf, size, length);
}

ORU_API oruResult oruDec64ToString(oruDec64 x, char* buf, size_t size, size_t* length) {
  return put(F64::unpack(x), buf, size, length);
}

ORU_API oruResult oruDec128ToString(const oruDec128* x, char* buf, size_t size, size_t* length) {
  if (!x) return ORU_E_INVALID_ARG;
  return put(F128::unpack(load(x)), buf, size, length);
}

}  // extern "C"
