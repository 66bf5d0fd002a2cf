// Text codecs on Windows without an iconv DLL: the library's own converter.
// The expected bytes, result codes and unconsumed counts are what GNU iconv
// (glibc 2.36) answers for the same calls, so the two platforms are held to
// one behaviour; the code-page sets are checked against the system's own
// conversion.

#include "oru/text.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <string>

namespace {

std::string hex(const std::string& bytes) {
  static const char digits[] = "0123456789abcdef";
  std::string s;
  for (unsigned char c : bytes) {
    if (!s.empty()) s += ' ';
    s += digits[c >> 4];
    s += digits[c & 15];
  }
  return s;
}

bool have_iconv_dll() {
  for (const char* name :
       {"iconv.dll", "libiconv.dll", "libiconv-2.dll", "libiconv2.dll", "iconv-2.dll"}) {
    if (HMODULE m = LoadLibraryA(name)) {
      FreeLibrary(m);
      return true;
    }
  }
  return false;
}

class OwnConverter : public ::testing::Test {
 protected:
  void SetUp() override {
    if (have_iconv_dll()) GTEST_SKIP() << "an iconv DLL is installed and takes the conversions";
  }
};

struct step_case {
  const char* from;
  const char* to;
  std::string input;
  size_t room;
  oruResult result;
  const char* output;  // hex
  size_t left;
};

// One conversion step with iconv's conventions, as glibc's iconv takes it.
TEST_F(OwnConverter, StepsAsIconvTakesThem) {
  using std::string;
  const step_case cases[] = {
      // Byte-order marks: written for UTF-16 and UTF-32 (little-endian),
      // read where the form has one, a character everywhere else.
      {"UTF-8", "UTF-16", "a", 64, ORU_OK, "ff fe 61 00", 0},
      {"UTF-8", "UTF-32", "a", 64, ORU_OK, "ff fe 00 00 61 00 00 00", 0},
      {"UTF-8", "ISO-10646-UCS-2", "a", 64, ORU_OK, "61 00", 0},
      {"UTF-8", "ISO-10646-UCS-4", "a", 64, ORU_OK, "00 00 00 61", 0},
      {"UTF-16", "UTF-8", string("\0a", 2), 64, ORU_OK, "e6 84 80", 0},
      {"UTF-16", "UTF-8",
       string("\xff\xfe"
              "a\0",
              4),
       64, ORU_OK, "61", 0},
      {"UTF-16", "UTF-8", string("\xfe\xff\0a", 4), 64, ORU_OK, "61", 0},
      {"UTF-16", "UTF-8",
       string("\xff\xfe\xff\xfe"
              "a\0",
              6),
       64, ORU_OK, "ef bb bf 61", 0},
      {"ISO-10646-UCS-2", "UTF-8",
       string("\xff\xfe"
              "a\0",
              4),
       64, ORU_OK, "ef bb bf 61", 0},
      {"UTF-32", "UTF-8", string("\0\0\0a", 4), 64, ORU_E_ILLEGAL_SEQUENCE, "", 4},
      {"UTF-32", "UTF-8",
       string("\xff\xfe\0\0"
              "a\0\0\0",
              8),
       64, ORU_OK, "61", 0},
      {"UTF-32", "UTF-8", string("\0\0\xfe\xff\0\0\0a", 8), 64, ORU_OK, "61", 0},
      {"UTF-16LE", "UTF-8",
       string("\xff\xfe"
              "a\0",
              4),
       64, ORU_OK, "ef bb bf 61", 0},
      {"UTF-8", "UTF-16LE",
       "\xef\xbb\xbf"
       "a",
       64, ORU_OK, "ff fe 61 00", 0},
      // Surrogates and the limits of each form.
      {"UTF-16LE", "UTF-8",
       string("\x00\xd8"
              "a\0",
              4),
       64, ORU_E_ILLEGAL_SEQUENCE, "", 4},
      {"UTF-16LE", "UTF-8",
       string("\x00\xdc"
              "a\0",
              4),
       64, ORU_E_ILLEGAL_SEQUENCE, "", 4},
      {"UTF-16LE", "UTF-8", string("\x00\xd8", 2), 64, ORU_OK, "", 2},
      {"UTF-16BE", "UTF-8", string("\xd8\x3d\xde\x00", 4), 64, ORU_OK, "f0 9f 98 80", 0},
      {"UTF-8", "UTF-16BE", "\xf0\x9f\x98\x80", 64, ORU_OK, "d8 3d de 00", 0},
      {"UTF-8", "UTF-32LE", "\xf0\x9f\x98\x80", 64, ORU_OK, "00 f6 01 00", 0},
      {"UTF-8", "ISO-10646-UCS-2", "\xf0\x90\x80\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "", 4},
      {"UTF-32BE", "UTF-8", string("\0\0\xd8\0", 4), 64, ORU_E_ILLEGAL_SEQUENCE, "", 4},
      // Malformed UTF-8: the input stops at the bad sequence; a truncated
      // one at the end is left unconsumed without an error.
      {"UTF-8", "UTF-16LE", "\xed\xa0\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "", 3},
      {"UTF-8", "UTF-16LE", "\xc0\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "", 2},
      {"UTF-8", "UTF-16LE", "\xe2\x82", 64, ORU_OK, "", 2},
      {"UTF-8", "UTF-16LE", "\xe0\x80\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "", 3},
      {"UTF-8", "UTF-16LE", "\xf4\x90\x80\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "", 4},
      {"UTF-8", "UTF-16LE", "\xf0\x8f\xbf\xbf", 64, ORU_E_ILLEGAL_SEQUENCE, "", 4},
      {"UTF-8", "UTF-16LE", "\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "", 1},
      {"UTF-8", "UTF-16LE", "\xc3", 64, ORU_OK, "", 1},
      {"UTF-8", "UTF-16LE", "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80z", 64, ORU_OK,
       "61 00 e4 00 ac 20 3d d8 00 de 7a 00", 0},
      // Characters the target lacks.
      {"UTF-8", "ISO-8859-1", "\xe2\x82\xac", 64, ORU_E_ILLEGAL_SEQUENCE, "", 3},
      {"UTF-8", "US-ASCII", "\xc3\xa4", 64, ORU_E_ILLEGAL_SEQUENCE, "", 2},
      {"US-ASCII", "UTF-8", "\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "", 1},
      {"UTF-8", "windows-1252", "\xe2\x88\x9e", 64, ORU_E_ILLEGAL_SEQUENCE, "", 3},
      // A full output stops in front of the character that does not fit.
      {"UTF-8", "UTF-16LE", "abcdef", 5, ORU_S_OUTPUT_FULL, "61 00 62 00", 4},
      {"UTF-8", "UTF-16", "abcdef", 4, ORU_S_OUTPUT_FULL, "ff fe 61 00", 5},
      {"UTF-8", "UTF-16", "abcdef", 1, ORU_S_OUTPUT_FULL, "", 6},
      // Sets of the system's code pages.
      {"UTF-8", "windows-1252", "a\xe2\x82\xac\xc3\xa4", 64, ORU_OK, "61 80 e4", 0},
      // Bytes the registered set leaves unassigned, whatever the system's
      // table fills in.
      {"windows-1252", "UTF-8", "a\x81", 64, ORU_E_ILLEGAL_SEQUENCE, "61", 1},
      {"UTF-8", "windows-1252", "\xc2\x81", 64, ORU_E_ILLEGAL_SEQUENCE, "", 2},
      {"windows-1251", "UTF-8", "\x98", 64, ORU_E_ILLEGAL_SEQUENCE, "", 1},
      {"TIS-620", "UTF-8", "\xa1\x80", 64, ORU_E_ILLEGAL_SEQUENCE, "e0 b8 81", 1},
      {"UTF-8", "Shift_JIS", "\xe6\x97\xa5\xe6\x9c\xac\xef\xbd\xb1", 64, ORU_OK, "93 fa 96 7b b1",
       0},
      {"Shift_JIS", "UTF-8", "\x93\xfa\x96\x7b\xb1", 64, ORU_OK, "e6 97 a5 e6 9c ac ef bd b1", 0},
      {"Shift_JIS", "UTF-8", "\x93", 64, ORU_OK, "", 1},
      {"Shift_JIS", "UTF-8", "\x93\x20", 64, ORU_E_ILLEGAL_SEQUENCE, "", 2},
      {"UTF-8", "GBK", "\xe4\xb8\xad\xe6\x96\x87", 64, ORU_OK, "d6 d0 ce c4", 0},
      {"GBK", "UTF-8", "\xd6\xd0\xce\xc4", 64, ORU_OK, "e4 b8 ad e6 96 87", 0},
      {"UTF-8", "Big5", "\xe4\xb8\xad\xe6\x96\x87", 64, ORU_OK, "a4 a4 a4 e5", 0},
      {"UTF-8", "EUC-KR", "\xed\x95\x9c\xea\xb8\x80", 64, ORU_OK, "c7 d1 b1 db", 0},
      {"UTF-8", "EUC-JP", "\xe6\x97\xa5\xe6\x9c\xac", 64, ORU_OK, "c6 fc cb dc", 0},
      {"UTF-8", "KOI8-R", "\xd0\x9f\xd1\x80\xd0\xb8", 64, ORU_OK, "f0 d2 c9", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.from) + " -> " + c.to + ": " + hex(c.input));
    oruTextCodec codec = nullptr;
    ASSERT_EQ(oruOpenTextCodec(c.from, c.to, &codec), ORU_OK);
    char out[64];
    const char* in = c.input.data();
    size_t inLeft = c.input.size();
    char* dst = out;
    size_t outLeft = c.room;
    EXPECT_EQ(oruConvertText(codec, &in, &inLeft, &dst, &outLeft), c.result);
    EXPECT_EQ(hex(std::string(out, dst)), c.output);
    EXPECT_EQ(inLeft, c.left);
    EXPECT_EQ(in, c.input.data() + c.input.size() - inLeft);
    EXPECT_EQ(oruCloseTextCodec(codec), ORU_OK);
  }
}

// A reset re-arms the byte-order mark of the output, as in iconv.
TEST_F(OwnConverter, ResetWritesTheMarkAgain) {
  oruTextCodec codec = nullptr;
  ASSERT_EQ(oruOpenTextCodec("UTF-8", "UTF-16", &codec), ORU_OK);
  const uint32_t flags[] = {0, 0, ORU_CONVERT_RESET};
  const char* expect[] = {"ff fe 61 00", "61 00", "ff fe 61 00"};
  for (int i = 0; i < 3; ++i) {
    char out[8];
    const char* in = "a";
    size_t inLeft = 1, outLeft = sizeof out;
    char* dst = out;
    ASSERT_EQ(oruConvertText2(codec, &in, &inLeft, &dst, &outLeft, flags[i]), ORU_OK);
    EXPECT_EQ(hex(std::string(out, dst)), expect[i]) << "call " << i;
  }
  EXPECT_EQ(oruResetTextCodec(codec), ORU_OK);
  EXPECT_EQ(oruCloseTextCodec(codec), ORU_OK);
}

// Sets without a converter here: the stateful ISO-2022 family and UTF-7
// (the system's code pages for them cannot report invalid input), and the
// sets without any converter.
TEST_F(OwnConverter, RefusedSets) {
  for (const char* name : {"ISO-2022-JP", "ISO-2022-KR", "UTF-7", "SCSU", "HP-ROMAN8"}) {
    oruTextCodec codec = reinterpret_cast<oruTextCodec>(1);
    EXPECT_EQ(oruOpenTextCodec("UTF-8", name, &codec), ORU_E_NOT_SUPPORTED) << name;
    EXPECT_EQ(codec, nullptr);
  }
  oruTextCodec codec = nullptr;
  EXPECT_EQ(oruOpenTextCodec("UTF-8", "no-such-set", &codec), ORU_E_INVALID_ARG);
}

// Every single-byte code-page set the system has: each byte the system
// decodes converts to that character and back to the same byte, except the
// bytes the registered set leaves unassigned.
TEST_F(OwnConverter, SingleByteCodePagesRoundTrip) {
  const struct {
    const char* name;
    UINT codePage;
  } sets[] = {{"ISO-8859-2", 28592},  {"ISO-8859-5", 28595},  {"ISO-8859-7", 28597},
              {"ISO-8859-15", 28605}, {"windows-1250", 1250}, {"windows-1251", 1251},
              {"windows-1252", 1252}, {"windows-1253", 1253}, {"windows-1256", 1256},
              {"KOI8-R", 20866},      {"KOI8-U", 21866},      {"IBM437", 437},
              {"IBM850", 850},        {"IBM866", 866},        {"IBM037", 37},
              {"IBM500", 500},        {"macintosh", 10000},   {"TIS-620", 874}};
  int checked = 0;
  for (const auto& s : sets) {
    CPINFO info;
    if (!GetCPInfo(s.codePage, &info)) continue;  // not every system has every table
    ++checked;
    for (int b = 0; b < 256; ++b) {
      const char byte = static_cast<char>(b);
      wchar_t wide[2];
      int n = MultiByteToWideChar(s.codePage, MB_ERR_INVALID_CHARS, &byte, 1, wide, 2);
      char* utf16 = nullptr;
      size_t outLen = 0;
      oruResult r =
          oruConvertString(&byte, 1, s.name, "UTF-16LE", nullptr, &outLen, nullptr, &utf16);
      // The Windows sets have no C1 controls, and TIS-620 nothing at
      // 0x80-0xA0, whatever the system's tables put there.
      const bool windowsSet = std::strncmp(s.name, "windows-", 8) == 0;
      const bool tis = std::strcmp(s.name, "TIS-620") == 0;
      const bool hole = (windowsSet && n == 1 && b >= 0x80 && b <= 0x9F && wide[0] == b) ||
                        (tis && b >= 0x80 && b <= 0xA0);
      if (n != 1 || hole) {
        EXPECT_EQ(r, ORU_E_ILLEGAL_SEQUENCE) << s.name << " byte " << b;
        continue;
      }
      ASSERT_EQ(r, ORU_OK) << s.name << " byte " << b;
      ASSERT_EQ(outLen, 2u);
      EXPECT_EQ((unsigned char)utf16[0] | ((unsigned char)utf16[1] << 8), wide[0])
          << s.name << " byte " << b;
      char* back = nullptr;
      ASSERT_EQ(oruConvertString(utf16, 2, "UTF-16LE", s.name, nullptr, &outLen, nullptr, &back),
                ORU_OK);
      // Where two bytes decode alike, the lower one comes back.
      EXPECT_EQ(outLen, 1u);
      if (static_cast<unsigned char>(back[0]) != b) {
        wchar_t again[2];
        ASSERT_EQ(MultiByteToWideChar(s.codePage, 0, back, 1, again, 2), 1);
        EXPECT_EQ(again[0], wide[0]) << s.name << " byte " << b;
        EXPECT_LT(static_cast<unsigned char>(back[0]), b);
      }
      oruFree(back);
      oruFree(utf16);
    }
  }
  if (checked == 0) GTEST_SKIP() << "the system has none of these code pages";
}

// The whole-string converter's rules hold over the own converter too.
TEST_F(OwnConverter, WholeStrings) {
  const struct {
    const char* from;
    const char* to;
    std::string input;
    oruResult result;
    const char* output;
  } cases[] = {
      {"UTF-8", "ISO-8859-1",
       "A\xff"
       "B",
       ORU_OK, "41 3f 42"},
      {"UTF-8", "ISO-8859-1", "A\xe2\x82", ORU_OK, "41 3f"},
      {"UTF-8", "ISO-8859-1", "x\xe2\x82\xacy", ORU_OK, "78 3f 79"},
      {"UTF-8", "Shift_JIS", "\xf0\x9f\x98\x80!", ORU_OK, "3f 21"},
      {"Shift_JIS", "UTF-8", "\x93\x20", ORU_E_ILLEGAL_SEQUENCE, ""},
      {"UTF-16LE", "UTF-8", std::string("a\0\x00\xdc", 4), ORU_E_ILLEGAL_SEQUENCE, ""},
      {"UTF-8", "UTF-16LE", "ab", ORU_OK, "61 00 62 00"},
  };
  for (const auto& c : cases) {
    char* out = reinterpret_cast<char*>(1);
    size_t consumed = 0, outLen = 0;
    oruResult r = oruConvertString(c.input.data(), c.input.size(), c.from, c.to, &consumed, &outLen,
                                   nullptr, &out);
    EXPECT_EQ(r, c.result) << c.from << " -> " << c.to;
    if (r != ORU_OK) {
      EXPECT_EQ(out, nullptr);
      continue;
    }
    EXPECT_EQ(hex(std::string(out, outLen)), c.output);
    EXPECT_EQ(out[outLen], '\0');
    EXPECT_EQ(out[outLen + 1], '\0');
    EXPECT_EQ(consumed, c.input.size());
    oruFree(out);
  }
}

}  // namespace
