// Character properties: the published examples, and the whole code space
// against expectations computed here from the character database files.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "oru/unicode.h"
#include "ucd_files.h"
#include "unicode/oru_unicode_tables.h"

namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;

TEST(UniProps, Examples) {
  const struct {
    uint32_t c, cls;
  } classes[] = {{0x41, 9},    {0x61, 10},   {0x1C5, 11},    {0x30, 25},   {0xAB, 37},
                 {0xBB, 37},   {0x20, 49},   {0x09, 57},     {0xAD, 58},   {0xD800, 59},
                 {0xE000, 60}, {0x378, 61},  {0x110000, 0},  {0x0237, 10}, {0x20B5, 42},
                 {0x9FBB, 13}, {0x0242, 61}, {0xFFFFFFFF, 0}};
  for (const auto& e : classes) EXPECT_EQ(oruUniCharClass(e.c), e.cls) << std::hex << e.c;
  EXPECT_EQ(oruUniCharIsWhiteSpace(0x09), 1u);
  EXPECT_EQ(oruUniCharIsSeparator(0x09), 0u);
  EXPECT_EQ(oruUniCharIsDefined(0xFFFF), 0u);
  EXPECT_EQ(oruUniCharIsDefined(0x242), 0u);
  EXPECT_EQ(oruUniCharIsDefined(0xE000), 1u);
  EXPECT_EQ(oruUniCharIsDefined(0xD800), 1u);
  EXPECT_EQ(oruUniCharIsLower(0x2B0), 1u);
  EXPECT_EQ(oruUniCharProperties(0x30), 0x40429000u);
  EXPECT_EQ(oruUniCharDigitValue(0x1D7E2), 0u);
  EXPECT_EQ(oruUniCharDigitValue(0xB2), kNone);
  EXPECT_EQ(oruUniCharHexDigitValue(0xFF46), 15u);
  EXPECT_EQ(oruUniCharValidate(0xFDD0), 0);
  EXPECT_EQ(oruUniCharValidate(0x10FFFF), 0);
  EXPECT_EQ(oruUniCharValidate(0x10FFFD), 1);
  EXPECT_EQ(oruUniCharValidate(-1), 0);
}

TEST(UniProps, TableLayout) {
  using namespace oru::unicode;
  for (uint32_t b = 0; b < 32; ++b) EXPECT_EQ(charInfoIndex[b], b);  // U+0000..U+0FFF direct
  EXPECT_EQ(charInfoIndex[0xD800 >> 7], 0x80000000u | ORU_UNI_CS);
  EXPECT_EQ(charInfoIndex[0x4E00 >> 7] & 0x80000000u, 0x80000000u);
  EXPECT_EQ(charInfoIndex[0x50000 >> 7], 0x80000000u | ORU_UNI_CN);
}

// Scalar values by their definition.
bool scalar(int64_t c) {
  return c >= 0 && c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF) &&
         !(c >= 0xFDD0 && c <= 0xFDEF) && (c & 0xFFFF) < 0xFFFE;
}

TEST(UniProps, ValidateWholeRange) {
  for (int64_t c = -3; c <= 0x110003; ++c) {
    ASSERT_EQ(oruUniCharValidate(static_cast<int32_t>(c)), scalar(c) ? 1 : 0) << std::hex << c;
  }
  EXPECT_EQ(oruUniCharValidate(INT32_MIN), 0);
  EXPECT_EQ(oruUniCharValidate(INT32_MAX), 0);
}

TEST(UniProps, WholeCodeSpaceMatchesDatabase) {
  if (!ucd::present()) GTEST_SKIP() << "Unicode 4.1.0 data not found in " << ucd::dir();
  const auto data = ucd::unicode_data();
  const auto core = ucd::property_file("DerivedCoreProperties.txt");
  const auto list = ucd::property_file("PropList.txt");
  const auto words = ucd::property_file("auxiliary/WordBreakProperty.txt");
  const std::map<std::string, uint32_t> classes = {
      {"Lu", 9},  {"Ll", 10}, {"Lt", 11}, {"Lm", 12}, {"Lo", 13}, {"Mn", 17},
      {"Mc", 18}, {"Me", 19}, {"Nd", 25}, {"Nl", 26}, {"No", 27}, {"Pc", 33},
      {"Pd", 34}, {"Ps", 35}, {"Pe", 36}, {"Pi", 37}, {"Pf", 37}, {"Po", 39},
      {"Sm", 41}, {"Sc", 42}, {"Sk", 43}, {"So", 44}, {"Zs", 49}, {"Zl", 50},
      {"Zp", 51}, {"Cc", 57}, {"Cf", 58}, {"Cs", 59}, {"Co", 60}, {"Cn", 61}};
  const struct {
    uint32_t bit;
    const std::vector<ucd::Range>* ranges;
  } bits[] = {{ORU_UNI_ALPHABETIC, &core.at("Alphabetic")},
              {ORU_UNI_LOWERCASE, &core.at("Lowercase")},
              {ORU_UNI_UPPERCASE, &core.at("Uppercase")},
              {ORU_UNI_MATH, &core.at("Math")},
              {ORU_UNI_GRAPHEME_BASE, &core.at("Grapheme_Base")},
              {ORU_UNI_GRAPHEME_EXTEND, &core.at("Grapheme_Extend")},
              {ORU_UNI_ID_START, &core.at("ID_Start")},
              {ORU_UNI_ID_CONTINUE, &core.at("ID_Continue")},
              {ORU_UNI_XID_START, &core.at("XID_Start")},
              {ORU_UNI_XID_CONTINUE, &core.at("XID_Continue")},
              {ORU_UNI_WHITE_SPACE, &list.at("White_Space")},
              {ORU_UNI_DASH, &list.at("Dash")},
              {ORU_UNI_HYPHEN, &list.at("Hyphen")},
              {ORU_UNI_QUOTATION_MARK, &list.at("Quotation_Mark")},
              {ORU_UNI_HEX_DIGIT, &list.at("Hex_Digit")},
              {ORU_UNI_TERMINAL_PUNCTUATION, &list.at("Terminal_Punctuation")},
              {ORU_UNI_STERM, &list.at("STerm")},
              {ORU_UNI_SOFT_DOTTED, &list.at("Soft_Dotted")},
              {ORU_UNI_WB_KATAKANA, &words.at("Katakana")},
              {ORU_UNI_WB_ALETTER, &words.at("ALetter")},
              {ORU_UNI_WB_MIDLETTER, &words.at("MidLetter")},
              {ORU_UNI_WB_MIDNUM, &words.at("MidNum")},
              {ORU_UNI_WB_NUMERIC, &words.at("Numeric")}};
  // Per code point and category letter, so that the walk below does no
  // set or map lookups.
  static uint32_t class_of[128][128];
  for (const auto& [name, value] : classes) class_of[int{name[0]}][int{name[1]}] = value;
  std::vector<uint32_t> expected(0x110000, 0);
  for (const auto& b : bits) {
    for (const auto& r : *b.ranges) {
      for (uint32_t c = r.first; c <= r.last; ++c) expected[c] |= b.bit;
    }
  }
  std::vector<const std::vector<std::string>*> record(0x110000, nullptr);
  for (const auto& e : data) {
    for (uint32_t c = e.first; c <= e.last; ++c) record[c] = &e.fields;
  }

  int failures = 0, digits = 0;
  for (uint32_t c = 0; c <= 0x10FFFF && failures < 10; ++c) {
    static const std::string kUnassigned = "Cn";
    const std::string& cat = record[c] ? (*record[c])[2] : kUnassigned;
    const uint32_t props = expected[c];
    const char major = cat[0];
    uint32_t digit = kNone;
    if (cat == "Nd") {
      digit = std::stoul((*record[c])[6]);
      ++digits;
    }
    uint32_t hex_value = kNone;
    if (props & ORU_UNI_HEX_DIGIT) {
      const uint32_t ascii = c >= 0xFF00 ? c - 0xFEE0 : c;
      hex_value = ascii <= '9' ? ascii - '0' : (ascii | 0x20) - 'a' + 10;
    }
    const uint32_t got[] = {oruUniCharClass(c),
                            oruUniCharProperties(c),
                            oruUniCharIsAlphabetic(c),
                            oruUniCharIsLower(c),
                            oruUniCharIsUpper(c),
                            oruUniCharIsWhiteSpace(c),
                            oruUniCharIsHexDigit(c),
                            oruUniCharIsTitle(c),
                            oruUniCharIsDecimalDigit(c),
                            oruUniCharIsControl(c),
                            oruUniCharIsLetter(c),
                            oruUniCharIsMark(c),
                            oruUniCharIsNumber(c),
                            oruUniCharIsPunctuation(c),
                            oruUniCharIsSymbol(c),
                            oruUniCharIsSeparator(c),
                            oruUniCharIsLetterOrNumber(c),
                            oruUniCharIsLetterOrDecimalDigit(c),
                            oruUniCharIsPrintable(c),
                            oruUniCharIsDefined(c),
                            oruUniCharDigitValue(c),
                            oruUniCharHexDigitValue(c)};
    const uint32_t want[] = {
        class_of[static_cast<unsigned char>(cat[0])][static_cast<unsigned char>(cat[1])],
        props,
        (props & ORU_UNI_ALPHABETIC) != 0,
        (props & ORU_UNI_LOWERCASE) != 0,
        (props & ORU_UNI_UPPERCASE) != 0,
        (props & ORU_UNI_WHITE_SPACE) != 0,
        (props & ORU_UNI_HEX_DIGIT) != 0,
        cat == "Lt",
        cat == "Nd",
        cat == "Cc",
        major == 'L',
        major == 'M',
        major == 'N',
        major == 'P',
        major == 'S',
        major == 'Z',
        major == 'L' || major == 'N',
        major == 'L' || cat == "Nd",
        major != 'C',
        cat != "Cn",
        digit,
        hex_value};
    for (size_t k = 0; k < std::size(want); ++k) {
      if (got[k] != want[k]) {
        ADD_FAILURE() << "U+" << std::hex << c << " (" << cat << ") function #" << std::dec << k
                      << ": got " << got[k] << ", want " << want[k];
        ++failures;
      }
    }
  }
  EXPECT_EQ(digits, 270);
  for (uint32_t c : {0x110000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(oruUniCharProperties(c) | oruUniCharIsPrintable(c) | oruUniCharIsDefined(c), 0u);
    EXPECT_EQ(oruUniCharDigitValue(c) & oruUniCharHexDigitValue(c), kNone);
  }
}

}  // namespace
