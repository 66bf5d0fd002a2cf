// ASCII classification, case conversion and case-insensitive comparison.

#include "oru/text.h"

#include <gtest/gtest.h>

#include <cctype>
#include <clocale>
#include <cstring>
#include <string>

namespace {

// The classes spelled out independently of the library's tables.
const std::string kDigits = "0123456789";
const std::string kHex = "0123456789ABCDEFabcdef";
const std::string kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::string kLower = "abcdefghijklmnopqrstuvwxyz";
const std::string kSpace = " \t\n\v\f\r";
const std::string kPunct = "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~";

bool in(const std::string& set, int byte) {
  return byte != 0 && set.find(static_cast<char>(byte)) != std::string::npos;
}

int reference_class(int b) {
  int bits = 0;
  if (in(kDigits, b)) bits |= 0x01;
  if (in(kHex, b)) bits |= 0x02;
  if (in(kUpper, b)) bits |= 0x04;
  if (in(kLower, b)) bits |= 0x08;
  if (in(kSpace, b)) bits |= 0x10;
  if (in(kPunct, b)) bits |= 0x20;
  if (b < 0x20 || b == 0x7F) bits |= 0x40;
  return bits;
}

struct Classifier {
  const char* name;
  int (*fn)(char);
  int mask;
};

const Classifier kClassifiers[] = {
    {"isDigit", oruASCIIisDigit, 0x01}, {"isXDigit", oruASCIIisXDigit, 0x02},
    {"isUpper", oruASCIIisUpper, 0x04}, {"isLower", oruASCIIisLower, 0x08},
    {"isAlpha", oruASCIIisAlpha, 0x0C}, {"isAlNum", oruASCIIisAlNum, 0x0D},
    {"isSpace", oruASCIIisSpace, 0x10}, {"isPunct", oruASCIIisPunct, 0x20},
    {"isCntrl", oruASCIIisCntrl, 0x40}, {"isGraph", oruASCIIisGraph, 0x2D},
    {"isPrint", oruASCIIisPrint, 0x3D},
};

TEST(ASCIIClass, EveryByteThroughEveryClassifier) {
  ASSERT_EQ(kPunct.size(), 32u);
  for (int b = 0; b < 256; ++b) {
    const char c = static_cast<char>(b);
    for (const auto& k : kClassifiers) {
      // The masked bits themselves, not a normalised truth value.
      EXPECT_EQ(k.fn(c), reference_class(b) & k.mask) << k.name << " of byte " << b;
    }
  }
}

TEST(ASCIIClass, AgreesWithTheCLocaleExceptPrint) {
  std::setlocale(LC_ALL, "C");
  for (int b = 0; b < 256; ++b) {
    const char c = static_cast<char>(b);
    const bool ascii = b < 0x80;
    EXPECT_EQ(oruASCIIisDigit(c) != 0, ascii && std::isdigit(b)) << b;
    EXPECT_EQ(oruASCIIisXDigit(c) != 0, ascii && std::isxdigit(b)) << b;
    EXPECT_EQ(oruASCIIisAlpha(c) != 0, ascii && std::isalpha(b)) << b;
    EXPECT_EQ(oruASCIIisSpace(c) != 0, ascii && std::isspace(b)) << b;
    EXPECT_EQ(oruASCIIisPunct(c) != 0, ascii && std::ispunct(b)) << b;
    EXPECT_EQ(oruASCIIisCntrl(c) != 0, ascii && std::iscntrl(b)) << b;
    EXPECT_EQ(oruASCIIisGraph(c) != 0, ascii && std::isgraph(b)) << b;
    // Unlike isprint, every space character is printable here.
    EXPECT_EQ(oruASCIIisPrint(c) != 0, ascii && (std::isprint(b) || std::isspace(b))) << b;
  }
}

TEST(ASCIIClass, NotableBytes) {
  EXPECT_NE(oruASCIIisPrint('\t'), 0);
  EXPECT_EQ(oruASCIIisGraph(' '), 0);
  EXPECT_EQ(oruASCIIisAlpha(static_cast<char>(0xE9)), 0);
  EXPECT_EQ(oruASCIIisCntrl('\n'), 0x40);
  EXPECT_EQ(oruASCIIisSpace('\n'), 0x10);
  EXPECT_EQ(oruASCIIisAlNum('7'), 0x01);
  EXPECT_EQ(oruASCIIisXDigit('f'), 0x02);
}

TEST(ASCIICase, EveryByte) {
  for (int b = 0; b < 256; ++b) {
    const char c = static_cast<char>(b);
    const int lower = in(kUpper, b) ? b + 32 : b;
    const int upper = in(kLower, b) ? b - 32 : b;
    EXPECT_EQ(oruASCIIToLower(c), lower) << b;
    EXPECT_EQ(oruASCIIToUpper(c), upper) << b;
  }
  EXPECT_EQ(oruASCIIToUpper(static_cast<char>(0xE9)), 0xE9);
  EXPECT_EQ(oruASCIIToLower('Z'), 'z');
}

TEST(ASCIIStrCaseCmp, Examples) {
  EXPECT_EQ(oruASCIIStrCaseCmp("Hello", "hELLO", -1), 0);
  EXPECT_EQ(oruASCIIStrCaseCmp("abc", "abd", 2), 0);
  EXPECT_EQ(oruASCIIStrCaseCmp("", "A", -1), -65);
  EXPECT_LT(oruASCIIStrCaseCmp("A", "_", -1), 0);
  EXPECT_GT(oruASCIIStrCaseCmp("a", "_", -1), 0);
}

TEST(ASCIIStrCaseCmp, CountLimits) {
  EXPECT_EQ(oruASCIIStrCaseCmp("abc", "xyz", 0), 0);
  EXPECT_EQ(oruASCIIStrCaseCmp("abc", "abd", 3), -1);
  EXPECT_EQ(oruASCIIStrCaseCmp("abc", "ABD", -1), -1);
  EXPECT_EQ(oruASCIIStrCaseCmp("abc", "abd", INT64_MIN), -1);
  // The count may exceed the strings: the terminator still ends them.
  EXPECT_EQ(oruASCIIStrCaseCmp("same", "SAME", 1000), 0);
  EXPECT_EQ(oruASCIIStrCaseCmp("ab", "abc", 1000), -'c');
}

TEST(ASCIIStrCaseCmp, TerminatorComparesRawBytes) {
  // The other byte is not folded when one side ends.
  EXPECT_EQ(oruASCIIStrCaseCmp("A", "", -1), 'A');
  EXPECT_EQ(oruASCIIStrCaseCmp("", "a", -1), -'a');
  EXPECT_EQ(oruASCIIStrCaseCmp("", "", -1), 0);
}

TEST(ASCIIStrCaseCmp, FoldsOnlyWhenBit5Differs) {
  // "[" and "{" differ in bit 5 but neither is a letter: raw difference.
  EXPECT_EQ(oruASCIIStrCaseCmp("[", "{", -1), '[' - '{');
  // "A" (0x41) against "_" (0x5F) agree in bit 5: raw, so A sorts first.
  EXPECT_EQ(oruASCIIStrCaseCmp("A", "_", -1), 'A' - '_');
  // "a" (0x61) against "_" (0x5F) differ in bit 5: "a" folds to itself.
  EXPECT_EQ(oruASCIIStrCaseCmp("a", "_", -1), 'a' - '_');
  // Bytes above 0x7F never fold.
  EXPECT_EQ(oruASCIIStrCaseCmp("\xC9", "\xE9", -1), 0xC9 - 0xE9);
  EXPECT_EQ(oruASCIIStrCaseCmp("\xE9t\xE9", "\xE9T\xE9", -1), 0);
}

TEST(ASCIIStrCaseCmp, IsAntisymmetricOverAllBytePairs) {
  for (int x = 1; x < 256; ++x) {
    for (int y = 1; y < 256; ++y) {
      const char a[2] = {static_cast<char>(x), 0};
      const char b[2] = {static_cast<char>(y), 0};
      int ab = oruASCIIStrCaseCmp(a, b, -1);
      int ba = oruASCIIStrCaseCmp(b, a, -1);
      ASSERT_EQ(ab, -ba) << x << " " << y;
      const bool same_letter = std::tolower(x) == std::tolower(y) && x < 0x80 && y < 0x80;
      ASSERT_EQ(ab == 0, x == y || same_letter) << x << " " << y;
    }
  }
}

}  // namespace
