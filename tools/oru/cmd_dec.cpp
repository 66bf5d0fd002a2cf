// oru dec [-w 32|64|128] [-x] EXPRESSION, oru dec -d HEX: a decimal
// calculator over the library's decimal arithmetic, and a decoder of
// encodings.
#include <oru/decimal.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "oru_tool.h"

extern const oru_command oru_cmd_dec;

namespace {

constexpr char kUsage[] =
    "Usage: oru dec [OPTION]... EXPRESSION\n"
    "  or:  oru dec [-w WIDTH] -d HEX\n"
    "Evaluate EXPRESSION in decimal floating point and print the result, then\n"
    "the status flags it raised in brackets.  Every operation rounds to nearest,\n"
    "ties to even, as the library does; numbers are read by the library's parser.\n"
    "\n"
    "  + - * / with parentheses and unary minus; the functions fma(x,y,z),\n"
    "  sqrt(x), quantize(x,y), scaleb(x,n), remainder(x,y), min(x,y), max(x,y),\n"
    "  round(x[,mode]) (mode 0 half-even, 1 half-up, 2 ceiling, 3 floor, 4 down),\n"
    "  next_up(x), next_down(x), compare(x,y) (-1, 0, 1 or NaN) and class(x).\n"
    "\n"
    "  -w, --width=WIDTH  32, 64 (default) or 128; decimal32 values are worked\n"
    "                     in decimal64 and each result is narrowed to decimal32\n"
    "  -x, --hex          also print the result's encoding\n"
    "  -d, --decode=HEX   describe the encoding HEX instead: class, sign,\n"
    "                     coefficient, exponent, canonical or not\n"
    "      --help         show this help and exit\n";

const char* const kClassNames[] = {
    "signalingNaN", "quietNaN",     "negativeInfinity",  "negativeNormal", "negativeSubnormal",
    "negativeZero", "positiveZero", "positiveSubnormal", "positiveNormal", "positiveInfinity"};

// A value of the chosen width: decimal64 (also carrying decimal32 values)
// or decimal128.  cls >= 0 marks the result of class().
struct Val {
  oruDec64 d64 = 0;
  oruDec128 d128{};
  int cls = -1;
};

struct Failure {
  size_t column;
  std::string message;
};

class Calc {
 public:
  Calc(int width, const char* text) : width_(width), text_(text) {}

  Val run() {
    Val v = expr();
    skip();
    if (text_[pos_] != '\0') fail("unexpected '" + std::string(1, text_[pos_]) + "'");
    return v;
  }

  std::string to_string(const Val& v) const {
    if (v.cls >= 0) return kClassNames[v.cls];
    char b[ORU_DEC128_STRING_MAX];
    if (width_ == 128)
      oruDec128ToString(&v.d128, b, sizeof b, nullptr);
    else if (width_ == 32)
      oruDec32ToString(oruDec64ToDec32(v.d64), b, sizeof b, nullptr);
    else
      oruDec64ToString(v.d64, b, sizeof b, nullptr);
    return b;
  }

 private:
  [[noreturn]] void fail(const std::string& m) const { throw Failure{pos_ + 1, m}; }
  void skip() {
    while (text_[pos_] == ' ' || text_[pos_] == '\t') ++pos_;
  }
  bool eat(char c) {
    skip();
    if (text_[pos_] != c) return false;
    ++pos_;
    return true;
  }
  void expect(char c) {
    if (!eat(c)) fail(std::string("expected '") + c + "'");
  }

  // Rounds a decimal64 result into decimal32 when that is the width.
  Val narrow(Val v) const {
    if (width_ == 32) v.d64 = oruDec32ToDec64(oruDec64ToDec32(v.d64));
    return v;
  }
  Val from_dec64(oruDec64 x) const {
    Val v;
    v.d64 = x;
    return v;
  }
  Val from_dec128(const oruDec128& x) const {
    Val v;
    v.d128 = x;
    return v;
  }
  Val from_int(int64_t i) const {
    Val v;
    if (width_ == 128)
      oruDec128FromInt64(&v.d128, i);
    else
      v.d64 = oruDec64FromInt64(i);
    return v;
  }
  // A class() result stands for its class number in further arithmetic.
  Val plain(const Val& v) const { return v.cls >= 0 ? from_int(v.cls) : v; }

  typedef oruDec64 (*Op64)(oruDec64, oruDec64);
  typedef oruDec128* (*Op128)(oruDec128*, const oruDec128*, const oruDec128*);
  Val binary(const Val& a0, const Val& b0, Op64 f64, Op128 f128) const {
    Val a = plain(a0), b = plain(b0);
    if (width_ == 128) {
      Val r;
      f128(&r.d128, &a.d128, &b.d128);
      return r;
    }
    return narrow(from_dec64(f64(a.d64, b.d64)));
  }

  Val expr() {
    Val v = term();
    for (;;) {
      if (eat('+'))
        v = binary(v, term(), oruDec64Add, oruDec128Add);
      else if (eat('-'))
        v = binary(v, term(), oruDec64Sub, oruDec128Sub);
      else
        return v;
    }
  }
  Val term() {
    Val v = unary();
    for (;;) {
      if (eat('*'))
        v = binary(v, unary(), oruDec64Mul, oruDec128Mul);
      else if (eat('/'))
        v = binary(v, unary(), oruDec64Div, oruDec128Div);
      else
        return v;
    }
  }
  Val unary() {
    if (eat('-')) {
      Val v = plain(unary());
      if (width_ == 128) {
        oruDec128Negate(&v.d128, &v.d128);
        return v;
      }
      return from_dec64(oruDec64Negate(v.d64));
    }
    if (eat('+')) return unary();
    return primary();
  }

  Val number() {
    const char* start = text_ + pos_;
    const char* end = start;
    Val v;
    if (width_ == 128)
      oruDec128ParseString(&v.d128, nullptr, start, &end);
    else if (width_ == 32)
      v.d64 = oruDec32ToDec64(oruDec32ParseString(nullptr, start, &end));
    else
      v.d64 = oruDec64ParseString(nullptr, start, &end);
    if (end == start) fail("expected a number");
    pos_ += (size_t)(end - start);
    return v;
  }

  std::vector<Val> args(size_t min, size_t max, const std::string& name) {
    std::vector<Val> a;
    expect('(');
    do {
      a.push_back(expr());
    } while (a.size() < max && eat(','));
    expect(')');
    if (a.size() < min) fail(name + " needs " + std::to_string(min) + " arguments");
    return a;
  }

  int to_int(const Val& v0) const {
    Val v = plain(v0);
    return width_ == 128 ? oruDec128ToInt32(&v.d128) : oruDec64ToInt32(v.d64);
  }

  Val call(const std::string& f, size_t at) {
    struct Fn2 {
      const char* name;
      Op64 f64;
      Op128 f128;
    };
    static const Fn2 kTwo[] = {{"remainder", oruDec64Remainder, oruDec128Remainder},
                               {"min", oruDec64MinNum, oruDec128MinNum},
                               {"max", oruDec64MaxNum, oruDec128MaxNum}};
    for (const Fn2& fn : kTwo) {
      if (f != fn.name) continue;
      std::vector<Val> a = args(2, 2, f);
      return binary(a[0], a[1], fn.f64, fn.f128);
    }
    bool wide = width_ == 128;
    if (f == "fma") {
      std::vector<Val> a = args(3, 3, f);
      for (Val& v : a) v = plain(v);
      if (wide) {
        Val r;
        oruDec128FusedMulAdd(&r.d128, &a[0].d128, &a[1].d128, &a[2].d128);
        return r;
      }
      return narrow(from_dec64(oruDec64FusedMulAdd(a[0].d64, a[1].d64, a[2].d64)));
    }
    if (f == "quantize") {
      std::vector<Val> a = args(2, 2, f);
      Val x = plain(a[0]), y = plain(a[1]);
      if (wide) return from_dec128(*oruDec128Quantize(&x.d128, &x.d128, &y.d128, 0));
      return narrow(from_dec64(oruDec64Quantize(x.d64, y.d64, 0)));
    }
    if (f == "scaleb" || f == "round") {
      std::vector<Val> a = args(f == "round" ? 1 : 2, 2, f);
      Val x = plain(a[0]);
      int n = a.size() > 1 ? to_int(a[1]) : 0;
      if (f == "round") {
        if (wide) return from_dec128(*oruDec128Round(&x.d128, &x.d128, n));
        return narrow(from_dec64(oruDec64Round(x.d64, n)));
      }
      if (wide) return from_dec128(*oruDec128ScaleB(&x.d128, &x.d128, n));
      return narrow(from_dec64(oruDec64ScaleB(x.d64, n)));
    }
    if (f == "sqrt" || f == "next_up" || f == "next_down" || f == "class") {
      Val x = plain(args(1, 1, f)[0]);
      if (f == "class") {
        Val r;
        if (width_ == 32) {
          r.cls = class32(oruDec64ToDec32(x.d64));
        } else {
          r.cls = wide ? oruDec128Class(&x.d128) : oruDec64Class(x.d64);
        }
        return r;
      }
      if (wide) {
        if (f == "sqrt") return from_dec128(*oruDec128Sqrt(&x.d128, &x.d128));
        if (f == "next_up") return from_dec128(*oruDec128NextUp(&x.d128, &x.d128));
        return from_dec128(*oruDec128NextDown(&x.d128, &x.d128));
      }
      if (width_ == 32 && f != "sqrt") return next32(x, f == "next_up");
      if (f == "sqrt") return narrow(from_dec64(oruDec64Sqrt(x.d64)));
      return from_dec64(f == "next_up" ? oruDec64NextUp(x.d64) : oruDec64NextDown(x.d64));
    }
    if (f == "compare") {
      std::vector<Val> a = args(2, 2, f);
      Val x = plain(a[0]), y = plain(a[1]);
      bool unordered =
          wide ? oruDec128QuietUnordered(&x.d128, &y.d128) : oruDec64QuietUnordered(x.d64, y.d64);
      if (unordered) {
        Val r;
        if (wide) r.d128 = oruDEC128_QUIET_NAN;
        r.d64 = oruDEC64_QUIET_NAN;
        return r;
      }
      bool less = wide ? oruDec128QuietLess(&x.d128, &y.d128) : oruDec64QuietLess(x.d64, y.d64);
      bool more =
          wide ? oruDec128QuietGreater(&x.d128, &y.d128) : oruDec64QuietGreater(x.d64, y.d64);
      return from_int(less ? -1 : more ? 1 : 0);
    }
    pos_ = at;
    fail("unknown function '" + f + "'");
  }

  // decimal32 has no arithmetic of its own: the neighbour is v plus or
  // minus one unit in the last of its seven places, computed exactly in
  // decimal64 (one place finer when stepping toward zero from a power of
  // ten).
  Val next32(const Val& x, bool up) const {
    oruDec64 w = oruDec32ToDec64(oruDec64ToDec32(x.d64));
    if (oruDec64IsNaN(w)) return narrow(from_dec64(oruDec64Add(w, w)));
    oruDec64 max = oruDec32ToDec64(oruDEC32_MAX);
    if (oruDec64IsInfinite(w)) {
      bool neg = oruDec64IsSignMinus(w);
      if (neg == up) return from_dec64(neg ? oruDec64Negate(max) : max);
      return from_dec64(w);
    }
    oruDec64 tiny = oruDec32ToDec64(oruDEC32_SUBNORMAL_MIN);
    if (oruDec64IsZero(w)) return from_dec64(up ? tiny : oruDec64Negate(tiny));
    int a = oruDec64LogB(w);
    bool toward_zero = oruDec64IsSignMinus(w) == up;
    oruDec64 mag = oruDec64Abs(w);
    bool power = oruDec64QuietEqual(mag, oruDec64ScaleB(oruDec64FromInt32(1), a));
    int q = a - 6 - (toward_zero && power ? 1 : 0);
    if (q < -101) q = -101;
    oruDec64 step = oruDec64ScaleB(oruDec64FromInt32(1), q);
    return narrow(from_dec64(up ? oruDec64Add(w, step) : oruDec64Sub(w, step)));
  }

  static int class32(oruDec32 v) {
    bool neg = (v >> 31) != 0;
    if ((v & 0x7C000000u) == 0x7C000000u) return (v & 0x02000000u) ? 0 : 1;
    if ((v & 0x78000000u) == 0x78000000u) return neg ? 2 : 9;
    oruDec64 w = oruDec32ToDec64(v);
    if (oruDec64IsZero(w)) return neg ? 5 : 6;
    bool sub = oruDec64LogB(w) < -95;
    return neg ? (sub ? 4 : 3) : (sub ? 7 : 8);
  }

  Val primary() {
    skip();
    char c = text_[pos_];
    if (c == '(') {
      ++pos_;
      Val v = expr();
      expect(')');
      return v;
    }
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_') {
      size_t at = pos_, p = pos_;
      while ((text_[p] >= 'a' && text_[p] <= 'z') || (text_[p] >= 'A' && text_[p] <= 'Z') ||
             text_[p] == '_')
        ++p;
      std::string name(text_ + at, p - at);
      size_t q = p;
      while (text_[q] == ' ') ++q;
      if (text_[q] == '(' && name != "nan" && name != "NaN") {
        pos_ = p;
        return call(name, at);
      }
    }
    if (c == '\0') fail("unexpected end of the expression");
    return number();
  }

  int width_;
  const char* text_;
  size_t pos_ = 0;
};

std::string flag_text(int f) {
  static const struct {
    int bit;
    const char* name;
  } kNames[] = {{ORU_DEC_INVALID, "invalid"},
                {ORU_DEC_DIVIDE_BY_ZERO, "divide-by-zero"},
                {ORU_DEC_OVERFLOW, "overflow"},
                {ORU_DEC_UNDERFLOW, "underflow"},
                {ORU_DEC_INEXACT, "inexact"}};
  std::string s;
  for (const auto& n : kNames) {
    if (!(f & n.bit)) continue;
    s += s.empty() ? " [" : " ";
    s += n.name;
  }
  return s.empty() ? s : s + "]";
}

bool parse_hex(const char* t, int digits, uint64_t* hi, uint64_t* lo) {
  if (t[0] == '0' && (t[1] == 'x' || t[1] == 'X')) t += 2;
  size_t n = strlen(t);
  if (n == 0 || n > (size_t)digits) return false;
  *hi = *lo = 0;
  for (size_t i = 0; i < n; ++i) {
    char c = t[i];
    int d = c >= '0' && c <= '9'   ? c - '0'
            : c >= 'a' && c <= 'f' ? c - 'a' + 10
            : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                   : -1;
    if (d < 0) return false;
    *hi = (*hi << 4) | (*lo >> 60);
    *lo = (*lo << 4) | (uint64_t)d;
  }
  return true;
}

// Describes an encoding: its fields read from the bits, its class and
// canonical state from the library.
int decode(int width, const char* hex) {
  uint64_t hi, lo;
  if (!parse_hex(hex, width / 4, &hi, &lo))
    return oru_usage_error(oru_cmd_dec.name, std::string("invalid encoding '") + hex + "'");
  Val v;
  int cls;
  bool canonical;
  std::string text;
  char b[ORU_DEC128_STRING_MAX];
  // Field layout: sign, then either a small or a large coefficient form.
  int ebits = width == 32 ? 8 : width == 64 ? 10 : 14;
  int cbits = width - 1 - ebits;  // coefficient bits of the small form
  int bias = width == 32 ? 101 : width == 64 ? 398 : 6176;
  unsigned __int128 x = ((unsigned __int128)hi << 64) | lo;
  unsigned __int128 coeff;
  int64_t exponent;
  bool large = ((x >> (width - 3)) & 3) == 3;
  if (!large) {
    exponent = (int64_t)((x >> cbits) & ((1u << ebits) - 1)) - bias;
    coeff = x & (((unsigned __int128)1 << cbits) - 1);
  } else {
    exponent = (int64_t)((x >> (cbits - 2)) & ((1u << ebits) - 1)) - bias;
    coeff =
        ((unsigned __int128)4 << (cbits - 2)) | (x & (((unsigned __int128)1 << (cbits - 2)) - 1));
  }
  if (width == 128) {
    oruDec128 d{{lo, hi}};
    cls = oruDec128Class(&d);
    canonical = oruDec128IsCanonical(&d);
    oruDec128ToString(&d, b, sizeof b, nullptr);
  } else if (width == 64) {
    cls = oruDec64Class(lo);
    canonical = oruDec64IsCanonical(lo);
    oruDec64ToString(lo, b, sizeof b, nullptr);
  } else {
    oruDec32 d = (oruDec32)lo;
    oruDec32ToString(d, b, sizeof b, nullptr);
    oruDec64 w = oruDec32ToDec64(d);
    cls = oruDec64Class(w);
    if (cls == ORU_DEC_POSITIVE_NORMAL || cls == ORU_DEC_NEGATIVE_NORMAL) {
      if (oruDec64LogB(w) < -95) cls = cls == ORU_DEC_POSITIVE_NORMAL ? 7 : 4;
    }
    // Canonical decimal32: the text reads back to the same bits.
    canonical = oruDec32ParseString(nullptr, b, nullptr) == d || oruDec64IsNaN(w);
  }
  printf("class: %s\n", kClassNames[cls]);
  printf("sign: %c\n", (x >> (width - 1)) & 1 ? '-' : '+');
  bool special = ((x >> (width - 5)) & 0xF) == 0xF;
  if (!special) {
    char digits[48];
    int n = 0;
    unsigned __int128 c = coeff;
    do {
      digits[n++] = (char)('0' + (int)(c % 10));
      c /= 10;
    } while (c);
    std::string s;
    while (n) s += digits[--n];
    printf("coefficient: %s%s\n", s.c_str(),
           large && width == 128 ? " (over the maximum: zero)" : "");
    printf("exponent: %" PRId64 "\n", exponent);
  }
  printf("canonical: %s\n", canonical ? "yes" : "no");
  printf("value: %s\n", b);
  return ORU_EXIT_OK;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'w', "width", true}, {'x', "hex", false}, {'d', "decode", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_dec, argc, argv, kOptions, opts); status >= 0)
    return status;
  const char* cmd = oru_cmd_dec.name;
  int width = 64;
  if (const char* w = opts.last('w')) {
    if (!strcmp(w, "32"))
      width = 32;
    else if (!strcmp(w, "128"))
      width = 128;
    else if (strcmp(w, "64"))
      return oru_usage_error(cmd, std::string("invalid width '") + w + "'");
  }
  if (const char* d = opts.last('d')) {
    if (!opts.operands.empty()) return oru_usage_error(cmd, "an expression and -d together");
    return decode(width, d);
  }
  if (opts.operands.size() != 1) return oru_usage_error(cmd, "expected one expression");
  const char* text = opts.operands[0];
  Calc calc(width, text);
  oruDecLowerFlags(31);
  Val v;
  try {
    v = calc.run();
  } catch (const Failure& f) {
    return oru_usage_error(cmd, "column " + std::to_string(f.column) + ": " + f.message);
  }
  int flags = oruDecSaveFlags();
  printf("%s%s\n", calc.to_string(v).c_str(), flag_text(flags).c_str());
  if (opts.has('x') && v.cls < 0) {
    if (width == 128)
      printf("0x%016" PRIX64 "%016" PRIX64 "\n", v.d128.w[1], v.d128.w[0]);
    else if (width == 32)
      printf("0x%08" PRIX32 "\n", oruDec64ToDec32(v.d64));
    else
      printf("0x%016" PRIX64 "\n", v.d64);
  }
  return ORU_EXIT_OK;
}

}  // namespace

extern const oru_command oru_cmd_dec = {"dec", "decimal floating-point calculator", kUsage, run};
