// Locale-independent ASCII classification, case conversion and comparison.
// Everything is a lookup in one of three 256-byte tables built at compile
// time; bytes 0x80-0xFF belong to no class and keep their case.

#include "core/oru_internal.h"
#include "oru/text.h"

#include <array>

namespace {

enum : unsigned char {
  kDigit = 0x01,
  kXDigit = 0x02,
  kUpper = 0x04,
  kLower = 0x08,
  kSpace = 0x10,
  kPunct = 0x20,
  kCntrl = 0x40,
};

constexpr std::array<unsigned char, 256> make_class_table() {
  std::array<unsigned char, 256> t{};
  for (int c = 0; c < 256; ++c) {
    unsigned char bits = 0;
    if (c >= '0' && c <= '9') bits |= kDigit | kXDigit;
    if ((c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f')) bits |= kXDigit;
    if (c >= 'A' && c <= 'Z') bits |= kUpper;
    if (c >= 'a' && c <= 'z') bits |= kLower;
    if (c == ' ' || (c >= 0x09 && c <= 0x0D)) bits |= kSpace;
    if ((c >= 0x21 && c <= 0x2F) || (c >= 0x3A && c <= 0x40) || (c >= 0x5B && c <= 0x60) ||
        (c >= 0x7B && c <= 0x7E))
      bits |= kPunct;
    if (c <= 0x1F || c == 0x7F) bits |= kCntrl;
    t[static_cast<size_t>(c)] = bits;
  }
  return t;
}

constexpr std::array<unsigned char, 256> make_case_table(int from, int to) {
  std::array<unsigned char, 256> t{};
  for (int c = 0; c < 256; ++c) {
    t[static_cast<size_t>(c)] =
        static_cast<unsigned char>(c >= from && c < from + 26 ? c - from + to : c);
  }
  return t;
}

constexpr auto asciiClass = make_class_table();
constexpr auto asciiLower = make_case_table('A', 'a');
constexpr auto asciiUpper = make_case_table('a', 'A');

inline int class_bits(char c, unsigned mask) {
  return asciiClass[static_cast<unsigned char>(c)] & mask;
}

}  // namespace

extern "C" {

ORU_API int oruASCIIisDigit(char c) { return class_bits(c, kDigit); }
ORU_API int oruASCIIisXDigit(char c) { return class_bits(c, kXDigit); }
ORU_API int oruASCIIisUpper(char c) { return class_bits(c, kUpper); }
ORU_API int oruASCIIisLower(char c) { return class_bits(c, kLower); }
ORU_API int oruASCIIisAlpha(char c) { return class_bits(c, kUpper | kLower); }
ORU_API int oruASCIIisAlNum(char c) { return class_bits(c, kDigit | kUpper | kLower); }
ORU_API int oruASCIIisSpace(char c) { return class_bits(c, kSpace); }
ORU_API int oruASCIIisPunct(char c) { return class_bits(c, kPunct); }
ORU_API int oruASCIIisCntrl(char c) { return class_bits(c, kCntrl); }
ORU_API int oruASCIIisGraph(char c) { return class_bits(c, kDigit | kUpper | kLower | kPunct); }
// Includes the space bit, so tab, LF, VT, FF and CR count as printable.
ORU_API int oruASCIIisPrint(char c) {
  return class_bits(c, kDigit | kUpper | kLower | kPunct | kSpace);
}

ORU_API int oruASCIIToLower(char c) { return asciiLower[static_cast<unsigned char>(c)]; }
ORU_API int oruASCIIToUpper(char c) { return asciiUpper[static_cast<unsigned char>(c)]; }

ORU_API int oruASCIIStrCaseCmp(const char* a, const char* b, int64_t n) {
  if (n == 0) return 0;
  // A negative count means no limit; no string is long enough to use up
  // UINT64_MAX.  Counting down unsigned also keeps INT64_MIN from overflowing.
  uint64_t left = n < 0 ? UINT64_MAX : static_cast<uint64_t>(n);
  for (;;) {
    int x = static_cast<unsigned char>(*a++);
    int y = static_cast<unsigned char>(*b++);
    if (x == 0 || y == 0) return x - y;
    // Fold only when the bytes differ in bit 0x20.  Letters therefore compare
    // raw against "[\]^_", which fixes "A" < "_" < "a".
    if ((x ^ y) & 0x20) {
      x = asciiLower[static_cast<size_t>(x)];
      y = asciiLower[static_cast<size_t>(y)];
    }
    if (x != y) return x - y;
    if (--left == 0) return 0;
  }
}

}  // extern "C"
