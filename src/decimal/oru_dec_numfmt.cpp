/*
 * Formatting under a caller's number-format record: fixed, scientific,
 * engineering and general styles, rounded by the record's direction with
 * the shared rounding step, grouped and written as narrow or 16-bit text.
 * The fixed, scientific and general styles lay out digits as Python's
 * format() does for decimals, so that either can check the other.
 */
#include <cstring>

#include "decimal/oru_dec_digits.h"
#include "decimal/oru_dec_f32.h"
#include "oru/decimal.h"

using namespace oru_dec;

namespace {

int core_mode(int32_t mode) {
  switch (mode) {
    case ORU_DEC_ROUND_HALF_UP:
      return kHalfAway;
    case ORU_DEC_ROUND_CEILING:
      return kCeiling;
    case ORU_DEC_ROUND_FLOOR:
      return kFloor;
    case ORU_DEC_ROUND_DOWN:
      return kDown;
    default:
      return kHalfEven;
  }
}

// A finite value as a digit string and exponent, free of the width's
// range once rounded.
struct Digits {
  u256 c;
  int64_t e;
};

// Drops `drop` digits (when positive) by mode.
void drop_digits(Digits* d, int64_t drop, int mode, uint32_t sign) {
  if (drop <= 0) return;
  bool inexact = false;
  d->c = shift_round(d->c, drop, false, mode, sign, &inexact);
  d->e += drop;
}

// Rounds to `places` significant digits, keeping that many after a carry.
void round_significant(Digits* d, int64_t places, int mode, uint32_t sign) {
  int nd = is_zero(d->c) ? 1 : digits256(d->c);
  if (is_zero(d->c)) return;
  drop_digits(d, nd - places, mode, sign);
  if (digits256(d->c) > places && places < nd) {
    uint64_t r;
    d->c = divmod64(d->c, 10, &r);
    ++d->e;
  }
}

// Collects output characters, counting all and storing what fits.
template <class Ch>
struct Out {
  Ch* buf;
  size_t size;
  size_t n;
  void put(uint32_t c) {
    if (n < size) buf[n] = (Ch)c;
    ++n;
  }
  void text(const char* s) {
    while (*s) put((unsigned char)*s++);
  }
};

template <class Ch>
void format_value(const Num& num, const oruDecNumberFormat& f, Out<Ch>* o) {
  if (num.sign)
    o->put('-');
  else if (f.showPlus)
    o->put('+');
  if (num.kind == kInf) {
    o->text("Infinity");
    return;
  }
  if (num.kind != kFinite) {
    o->text(num.kind == kSNaN ? "sNaN" : "NaN");
    return;
  }
  int mode = core_mode(f.rounding);
  Digits d{make256(num.c), num.e};
  bool has_prec = f.digits >= 0;
  int64_t prec = f.digits;
  uint32_t style = f.style;
  if (style > ORU_DEC_STYLE_GENERAL) style = ORU_DEC_STYLE_GENERAL;
  int64_t pad = 0;  // zeros after the coefficient's digits
  if (has_prec) {
    if (style == ORU_DEC_STYLE_SCIENTIFIC || style == ORU_DEC_STYLE_ENGINEERING) {
      // Exactly `places` significant digits, padded with zeros when short.
      int64_t places = style == ORU_DEC_STYLE_SCIENTIFIC ? prec + 1 : (prec ? prec : 1);
      round_significant(&d, places, mode, num.sign);
      int nd = digits256(d.c);
      if (!is_zero(d.c) && nd < places) {
        pad = places - nd;
        d.e -= pad;
      }
    } else if (style == ORU_DEC_STYLE_FIXED) {
      drop_digits(&d, -prec - d.e, mode, num.sign);
      if (d.e > -prec) {  // padded with zeros down to the last place shown
        pad = is_zero(d.c) ? 0 : d.e + prec;
        d.e = -prec;
      }
    } else {
      if (prec == 0) prec = 1;
      int nd = is_zero(d.c) ? 1 : digits256(d.c);
      if (nd > prec) round_significant(&d, prec, mode, num.sign);
    }
  }
  if (is_zero(d.c) && d.e > 0 && style == ORU_DEC_STYLE_FIXED) d.e = 0;
  char dig[80];
  int64_t nd;
  {
    // Up to 77 digits: the coefficient may have grown by fixed padding.
    u256 c = d.c;
    char tmp[80];
    int n = 0;
    do {
      uint64_t r;
      c = divmod64(c, 10, &r);
      tmp[n++] = (char)('0' + r);
    } while (!is_zero(c));
    nd = n;
    for (int64_t i = 0; i < nd; ++i) dig[i] = tmp[nd - 1 - i];
  }
  int64_t stored = nd;
  nd += pad;
  auto digit = [&](int64_t i) -> uint32_t { return i < stored ? (unsigned char)dig[i] : '0'; };
  int64_t left = d.e + nd;
  int64_t dot;
  switch (style) {
    case ORU_DEC_STYLE_SCIENTIFIC:
      dot = (is_zero(d.c) && has_prec) ? 1 - prec : 1;
      break;
    case ORU_DEC_STYLE_FIXED:
      dot = left;
      break;
    case ORU_DEC_STYLE_ENGINEERING: {
      int64_t adj = left - 1;
      int64_t m = ((adj % 3) + 3) % 3;
      dot = is_zero(d.c) ? 1 : 1 + m;
      break;
    }
    default:
      dot = (d.e <= 0 && left > -6) ? left : 1;
      break;
  }
  // Integer part, grouped.
  int64_t int_len = dot <= 0 ? 1 : dot;
  uint32_t group = f.groupSeparator;
  int64_t gsize = f.groupSize ? f.groupSize : 3;
  for (int64_t i = 0; i < int_len; ++i) {
    o->put(dot <= 0 || i >= nd ? '0' : digit(i));
    int64_t remaining = int_len - 1 - i;
    if (group && remaining > 0 && remaining % gsize == 0) o->put(group);
  }
  // Fraction.
  int64_t frac_len = dot < 0 ? -dot + nd : (nd > dot ? nd - dot : 0);
  if (frac_len > 0) {
    o->put(f.decimalPoint ? f.decimalPoint : '.');
    for (int64_t i = 0; i < frac_len; ++i) {
      int64_t pos = dot < 0 ? i + dot : dot + i;  // index into dig
      o->put(pos < 0 ? '0' : digit(pos));
    }
  }
  int64_t exp = left - dot;
  if (exp != 0 || style == ORU_DEC_STYLE_SCIENTIFIC || style == ORU_DEC_STYLE_ENGINEERING) {
    o->put('E');
    o->put(exp < 0 ? '-' : '+');
    char t[24];
    int n = 0;
    uint64_t a = (uint64_t)(exp < 0 ? -exp : exp);
    do {
      t[n++] = (char)('0' + a % 10);
      a /= 10;
    } while (a);
    while (n) o->put((unsigned char)t[--n]);
  }
}

template <class Ch>
oruResult format(const Num& n, const oruDecNumberFormat* f, Ch* buf, size_t size, size_t* length) {
  if (!buf) return ORU_E_INVALID_ARG;
  static const oruDecNumberFormat kDefault = {ORU_DEC_STYLE_GENERAL, -1, '.', 0, 3, 0, 0};
  Out<Ch> o{buf, size, 0};
  format_value(n, f ? *f : kDefault, &o);
  if (length) *length = o.n;
  if (o.n + 1 > size) {
    if (size > 0) buf[0] = 0;
    return ORU_E_BUFFER_TOO_SMALL;
  }
  buf[o.n] = 0;
  return ORU_OK;
}

}  // namespace

extern "C" {

ORU_API oruResult oruDec32FormatString(oruDec32 x, const oruDecNumberFormat* format_, char* buf,
                                       size_t size, size_t* length) {
  return format(F32::unpack(x), format_, buf, size, length);
}
ORU_API oruResult oruDec64FormatString(oruDec64 x, const oruDecNumberFormat* format_, char* buf,
                                       size_t size, size_t* length) {
  return format(F64::unpack(x), format_, buf, size, length);
}
ORU_API oruResult oruDec128FormatString(const oruDec128* x, const oruDecNumberFormat* format_,
                                        char* buf, size_t size, size_t* length) {
  if (!x) return ORU_E_INVALID_ARG;
  return format(F128::unpack(load(x)), format_, buf, size, length);
}
ORU_API oruResult oruDec32FormatWString(oruDec32 x, const oruDecNumberFormat* format_,
                                        uint16_t* buf, size_t size, size_t* length) {
  return format(F32::unpack(x), format_, buf, size, length);
}
ORU_API oruResult oruDec64FormatWString(oruDec64 x, const oruDecNumberFormat* format_,
                                        uint16_t* buf, size_t size, size_t* length) {
  return format(F64::unpack(x), format_, buf, size, length);
}
ORU_API oruResult oruDec128FormatWString(const oruDec128* x, const oruDecNumberFormat* format_,
                                         uint16_t* buf, size_t size, size_t* length) {
  if (!x) return ORU_E_INVALID_ARG;
  return format(F128::unpack(load(x)), format_, buf, size, length);
}

}  // extern "C"
