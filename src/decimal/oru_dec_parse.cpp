/*
 * The incremental decimal parser: a state machine fed one character at a
 * time (narrow and 16-bit text share it), the value taken out through the
 * width's ScaleB, and the whole-string wrappers.
 */
#include "decimal/oru_dec_f32.h"
#include "decimal/oru_dec_ops.h"
#include "oru/decimal.h"

using namespace oru_dec;

namespace {

enum State : uint8_t {
  kSkipSpace = 0,
  kStart = 1,
  kAfterSign = 2,
  kCoeff = 3,
  kSurplus = 4,
  kExpStart = 5,
  kExpDigits = 6,
  kInfWord = 7,
  kNanWord = 8,
  kPayload = 9,
  kError = 10
};

// Bits of the parser's flags byte; the low two hold the rounding
// information about dropped digits (kExact .. kAboveHalf).
constexpr uint8_t kRndMask = 0x03;
constexpr uint8_t kNegative = 0x04;
constexpr uint8_t kDigitSeen = 0x08;
constexpr uint8_t kPointSeen = 0x10;
constexpr uint8_t kStoring = 0x20;
constexpr uint8_t kExpNegative = 0x40;
constexpr uint8_t kExpDigitSeen = 0x80;

constexpr int32_t kInfinityMark = 2147483647;
// scale saturates here so that absurdly long inputs cannot overflow it; the
// value is then far outside every width anyway.
constexpr int32_t kScaleLimit = 1000000000;

int init(oruDecParser* p, uint32_t precision, uint32_t point, uint32_t group, int skip) {
  p->decimalPoint = point;
  p->groupSeparator = group;
  p->count = 0;
  p->flags = 0;
  p->scale = 0;
  p->exponent = 0;
  for (uint32_t& w : p->digits) w = 0;
  if (point == 0 || (precision != 7 && precision != 16 && precision != 34)) {
    p->precision = 0;
    p->state = kError;
    return -1;
  }
  p->precision = (uint8_t)precision;
  p->state = (skip & 1) ? kSkipSpace : kStart;
  return 0;
}

inline uint32_t lower_ascii(uint32_t c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; }

inline void add_scale(oruDecParser* p, int32_t d) {
  int32_t s = p->scale + d;
  if (s > kScaleLimit) s = kScaleLimit;
  if (s < -kScaleLimit) s = -kScaleLimit;
  p->scale = s;
}

// One character, already classified by the caller's width: space says
// whether it is white space there.
int next(oruDecParser* p, uint32_t c, bool space) {
  static const char kInf[] = "infinity";
  static const char kNan[] = "nan";
  bool digit = c >= '0' && c <= '9';
  uint32_t lc = lower_ascii(c);
  switch (p->state) {
    case kSkipSpace:
      if (space) return ORU_DEC_PARSE_MORE;
      [[fallthrough]];
    case kStart:
      if (c == '+' || c == '-') {
        if (c == '-') p->flags |= kNegative;
        p->state = kAfterSign;
        return ORU_DEC_PARSE_MORE;
      }
      if (c == '.') {
        p->flags |= kPointSeen;
        p->state = kCoeff;
        return ORU_DEC_PARSE_MORE;
      }
      [[fallthrough]];
    case kAfterSign:
      if (digit) {
        p->flags |= kDigitSeen;
        if (c != '0') {
          p->flags |= kStoring;
          p->digits[0] = c - '0';
          p->count = 1;
        }
        p->state = kCoeff;
        return ORU_DEC_PARSE_VALID;
      }
      if (lc == 'i') {
        p->count = 1;
        p->exponent = kInfinityMark;
        p->state = kInfWord;
        return ORU_DEC_PARSE_MORE;
      }
      if (lc == 'n') {
        p->count = 1;
        p->state = kNanWord;
        return ORU_DEC_PARSE_MORE;
      }
      break;
    case kCoeff:
    case kSurplus:
      if (digit) {
        p->flags |= kDigitSeen;
        uint32_t d = c - '0';
        bool point = (p->flags & kPointSeen) != 0;
        if (p->state == kSurplus) {
          if (!point) add_scale(p, -1);
          if (d != 0) p->flags |= 1;  // 2 becomes 3, 0 becomes 1
          return ORU_DEC_PARSE_VALID;
        }
        if (p->count < p->precision) {
          if (d != 0) p->flags |= kStoring;
          if (p->flags & kStoring) {
            uint32_t& w = p->digits[p->count / 8];
            w = w * 10 + d;
            ++p->count;
          }
          if (point) add_scale(p, 1);
          return ORU_DEC_PARSE_VALID;
        }
        p->flags |= (uint8_t)(d == 0 ? kExact : d < 5 ? kBelowHalf : d == 5 ? kHalf : kAboveHalf);
        if (!point) add_scale(p, -1);
        p->state = kSurplus;
        return ORU_DEC_PARSE_VALID;
      }
      if (c == p->groupSeparator && c != 0 && (p->flags & kDigitSeen) && !(p->flags & kPointSeen))
        return ORU_DEC_PARSE_VALID;
      if (c == p->decimalPoint && !(p->flags & kPointSeen)) {
        p->flags |= kPointSeen;
        return ORU_DEC_PARSE_VALID;
      }
      if (lc == 'e' && (p->flags & kDigitSeen)) {
        p->state = kExpStart;
        return ORU_DEC_PARSE_MORE;
      }
      break;
    case kExpStart:
      if (c == '+' || c == '-') {
        if (c == '-') p->flags |= kExpNegative;
        p->state = kExpDigits;
        return ORU_DEC_PARSE_MORE;
      }
      if (digit) {
        p->flags |= kExpDigitSeen;
        p->exponent = (int32_t)(c - '0');
        p->state = kExpDigits;
        return ORU_DEC_PARSE_VALID;
      }
      break;
    case kExpDigits:
      if (digit) {
        p->flags |= kExpDigitSeen;
        int32_t e = p->exponent * 10 + (int32_t)(c - '0');
        p->exponent = e > 9999 ? 9999 : e;
        return ORU_DEC_PARSE_VALID;
      }
      break;
    case kInfWord:
      if (p->count < 8 && lc == (uint32_t)kInf[p->count]) {
        ++p->count;
        if (p->count == 8) {
          p->state = kError;
          return ORU_DEC_PARSE_END;
        }
        return p->count == 3 ? ORU_DEC_PARSE_VALID : ORU_DEC_PARSE_MORE;
      }
      break;
    case kNanWord:
      if (p->count < 3) {
        if (lc == (uint32_t)kNan[p->count]) {
          ++p->count;
          return p->count == 3 ? ORU_DEC_PARSE_VALID : ORU_DEC_PARSE_MORE;
        }
        break;
      }
      if (c == '(') {
        p->state = kPayload;
        return ORU_DEC_PARSE_MORE;
      }
      break;
    case kPayload:
      if (c < 128 && (c == '_' || digit || (lc >= 'a' && lc <= 'z'))) return ORU_DEC_PARSE_MORE;
      if (c == ')') {
        p->state = kError;
        return ORU_DEC_PARSE_END;
      }
      break;
    default:
      return ORU_DEC_PARSE_ERROR;
  }
  p->state = kError;
  return ORU_DEC_PARSE_ERROR;
}

inline bool narrow_space(uint32_t c) { return c == ' ' || (c >= 0x09 && c <= 0x0D); }

// The space class of 16-bit text: ASCII white space and the Unicode spaces
// that are not no-break spaces.
inline bool wide_space(uint32_t c) {
  return narrow_space(c) || c == 0x1680 || (c >= 0x2000 && c <= 0x2006) ||
         (c >= 0x2008 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x205F || c == 0x3000;
}

// Steps 2-6 of taking the value out, in format F with precision P.
template <class F>
typename F::Raw get_value(const oruDecParser* p, uint32_t* fl) {
  uint32_t neg = (p->flags & kNegative) ? 1 : 0;
  typename F::Raw r;
  if (!(p->flags & kDigitSeen)) {
    r = p->exponent == kInfinityMark ? F::inf(0) : F::qnan(0, 0);
  } else {
    u128 c = 0;
    int n = p->count;
    for (int i = 0; i * 8 < n; ++i) {
      int in_word = n - i * 8 < 8 ? n - i * 8 : 8;
      c = c * pow10_64(in_word) + p->digits[i];
    }
    int rnd = p->flags & kRndMask;
    if (rnd != kExact) {
      *fl |= kInexact;
      if (rnd == kAboveHalf || (rnd == kHalf && (p->digits[0] & 1))) ++c;
    }
    int64_t e = (p->flags & kExpNegative) ? -(int64_t)p->exponent : p->exponent;
    e -= p->scale;
    r = finish<F>(0, make256(c), e, false, kHalfEven, fl);
  }
  if (neg) r ^= F::kSign;
  return r;
}

int format_point(const oruDecNumberFormat* f) { return f ? (int)(f->decimalPoint & 0xFF) : '.'; }
int format_group(const oruDecNumberFormat* f) { return f ? (int)(f->groupSeparator & 0xFF) : 0; }

// ParseString steps 1-4: runs the parser over str; returns whether a
// number was found.
bool parse_string(oruDecParser* p, uint32_t precision, const oruDecNumberFormat* format,
                  const char* str, const char** end) {
  if (end) *end = str;
  init(p, precision, (uint32_t)format_point(format), (uint32_t)format_group(format), 1);
  const char* last = nullptr;
  for (const char* s = str; *s; ++s) {
    int r = next(p, (unsigned char)*s, narrow_space((unsigned char)*s));
    if (r & 1) last = s;
    if (r & 2) break;
  }
  if (!last) return false;
  if (end) *end = last + 1;
  return true;
}

oruDec32 dec32_value(const oruDecParser* p, uint32_t* fl) {
  if (p->precision != 7) return F32::qnan(0, 0);
  // Read in decimal64, then narrowed to decimal32.
  oruDecParser q = *p;
  uint64_t d = get_value<F64>(&q, fl);
  Num n = F64::unpack(d);
  if (n.kind == kInf) return F32::inf(n.sign);
  if (n.kind != kFinite) return F32::qnan(n.sign, 0);
  return finish<F32>(n.sign, make256(n.c), n.e, false, kHalfEven, fl);
}

}  // namespace

extern "C" {

ORU_API int oruDecParseInit(oruDecParser* parser, uint32_t precision, char decimalPoint,
                            char groupSeparator, int skipSpace) {
  return init(parser, precision, (unsigned char)decimalPoint, (unsigned char)groupSeparator,
              skipSpace);
}

ORU_API int oruDecParseInitW(oruDecParser* parser, uint32_t precision, uint16_t decimalPoint,
                             uint16_t groupSeparator, int skipSpace) {
  return init(parser, precision, decimalPoint, groupSeparator, skipSpace);
}

ORU_API int oruDecParseNextChar(oruDecParser* parser, char c) {
  uint32_t u = (unsigned char)c;
  return next(parser, u, narrow_space(u));
}

ORU_API int oruDecParseNextWChar(oruDecParser* parser, uint16_t wc) {
  return next(parser, wc, wide_space(wc));
}

ORU_API oruDec32 oruDec32ParseGetValue(const oruDecParser* parser) {
  uint32_t fl = 0;
  oruDec32 r = dec32_value(parser, &fl);
  raise(fl);
  return r;
}

ORU_API oruDec64 oruDec64ParseGetValue(const oruDecParser* parser) {
  if (parser->precision != 16) return F64::qnan(0, 0);
  uint32_t fl = 0;
  oruDec64 r = get_value<F64>(parser, &fl);
  raise(fl);
  return r;
}

ORU_API oruDec128* oruDec128ParseGetValue(oruDec128* res, const oruDecParser* parser) {
  if (parser->precision != 34) return store(res, F128::qnan(0, 0));
  uint32_t fl = 0;
  u128 r = get_value<F128>(parser, &fl);
  raise(fl);
  return store(res, r);
}

ORU_API oruDec32 oruDec32ParseString(const oruDecNumberFormat* format, const char* str,
                                     const char** end) {
  oruDecParser p;
  if (!parse_string(&p, 7, format, str, end)) return F32::pack(0, 0, 0);
  return oruDec32ParseGetValue(&p);
}

ORU_API oruDec64 oruDec64ParseString(const oruDecNumberFormat* format, const char* str,
                                     const char** end) {
  oruDecParser p;
  if (!parse_string(&p, 16, format, str, end)) return F64::pack(0, 0, 0);
  return oruDec64ParseGetValue(&p);
}

ORU_API oruDec128* oruDec128ParseString(oruDec128* res, const oruDecNumberFormat* format,
                                        const char* str, const char** end) {
  oruDecParser p;
  if (!parse_string(&p, 34, format, str, end)) return store(res, F128::pack(0, 0, 0));
  return oruDec128ParseGetValue(res, &p);
}

}  // extern "C"
