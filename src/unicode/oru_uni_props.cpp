// Character properties from the compiled-in Unicode 4.1.0 table.
#include "oru/unicode.h"
#include "unicode/oru_unicode_tables.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

namespace {

uint32_t category(uint32_t c) noexcept { return char_info(c) & kCategoryMask; }
unsigned property(uint32_t c, uint32_t bit) noexcept { return (char_info(c) & bit) ? 1u : 0u; }
// The major class: 8 L, 16 M, 24 N, 32 P, 40 S, 48 Z, 56 C.
uint32_t major(uint32_t c) noexcept { return category(c) & 0x38; }

}  // namespace

extern "C" {

ORU_API uint32_t oruUniCharClass(uint32_t c) { return category(c); }
ORU_API uint32_t oruUniCharProperties(uint32_t c) { return char_info(c) & kPropertyMask; }

ORU_API unsigned oruUniCharIsAlphabetic(uint32_t c) { return property(c, ORU_UNI_ALPHABETIC); }
ORU_API unsigned oruUniCharIsLower(uint32_t c) { return property(c, ORU_UNI_LOWERCASE); }
ORU_API unsigned oruUniCharIsUpper(uint32_t c) { return property(c, ORU_UNI_UPPERCASE); }
ORU_API unsigned oruUniCharIsWhiteSpace(uint32_t c) { return property(c, ORU_UNI_WHITE_SPACE); }
ORU_API unsigned oruUniCharIsHexDigit(uint32_t c) { return property(c, ORU_UNI_HEX_DIGIT); }

ORU_API unsigned oruUniCharIsTitle(uint32_t c) { return category(c) == ORU_UNI_LT; }
ORU_API unsigned oruUniCharIsDecimalDigit(uint32_t c) { return category(c) == ORU_UNI_ND; }
ORU_API unsigned oruUniCharIsControl(uint32_t c) { return category(c) == ORU_UNI_CC; }
ORU_API unsigned oruUniCharIsLetter(uint32_t c) { return major(c) == 8; }
ORU_API unsigned oruUniCharIsMark(uint32_t c) { return major(c) == 16; }
ORU_API unsigned oruUniCharIsNumber(uint32_t c) { return major(c) == 24; }
ORU_API unsigned oruUniCharIsPunctuation(uint32_t c) { return major(c) == 32; }
ORU_API unsigned oruUniCharIsSymbol(uint32_t c) { return major(c) == 40; }
ORU_API unsigned oruUniCharIsSeparator(uint32_t c) { return major(c) == 48; }

ORU_API unsigned oruUniCharIsLetterOrNumber(uint32_t c) {
  return ((major(c) - 8) & ~16u) == 0;  // 8 or 24
}

ORU_API unsigned oruUniCharIsLetterOrDecimalDigit(uint32_t c) {
  const uint32_t cat = category(c);
  return (cat & 0x38) == 8 || cat == ORU_UNI_ND;
}

ORU_API unsigned oruUniCharIsPrintable(uint32_t c) {
  const uint32_t cat = category(c);
  return cat != 0 && (cat & 0x38) != 0x38;
}

ORU_API unsigned oruUniCharIsDefined(uint32_t c) {
  const uint32_t cat = category(c);
  return cat != 0 && cat != ORU_UNI_CN;
}

ORU_API int oruUniCharValidate(int32_t c) { return is_scalar(static_cast<uint32_t>(c)) ? 1 : 0; }

// Decided over the fixed runs of decimal digits of the character database
// rather than read from a table: each run of ten starts at its zero.
ORU_API uint32_t oruUniCharDigitValue(uint32_t c) {
  static constexpr uint32_t kZeros[] = {
      0x0030, 0x0660, 0x06F0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0BE6, 0x0C66, 0x0CE6,
      0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0x1946, 0x19D0, 0xFF10, 0x104A0,
  };
  if (c - 0x30 < 10) return c - 0x30;
  if (c - 0x1D7CE < 50) return (c - 0x1D7CE) % 10;  // five runs of mathematical digits
  if (c < 0x0660 || c > 0x104A9) return kInvalidChar;
  for (uint32_t zero : kZeros) {
    if (c - zero < 10) return c - zero;
  }
  return kInvalidChar;
}

ORU_API uint32_t oruUniCharHexDigitValue(uint32_t c) {
  if (c - 0x30 < 10) return c - 0x30;
  if (c - 0x41 < 6) return c - 0x37;
  if (c - 0x61 < 6) return c - 0x57;
  if (c - 0xFF10 < 10) return c - 0xFF10;
  if (c - 0xFF21 < 6) return c - 0xFF17;
  if (c - 0xFF41 < 6) return c - 0xFF37;
  return kInvalidChar;
}

}  // extern "C"
