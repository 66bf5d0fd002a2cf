// oru normalize and oru case: the streamed output of large inputs, cut into
// many pieces with combining sequences and final sigmas at the piece and
// chunk edges, equals the library's result for the whole text.
#include <gtest/gtest.h>

#include <string>

#include "oru/core.h"
#include "oru/l10n.h"
#include "oru/unicode.h"
#include "tool_runner.h"

namespace {

// About 700 KiB: several chunks of the tool's reader.  The pattern's length is
// odd, so over the chunks its sigmas, marks and Hangul jamo fall on every
// kind of chunk edge; the long runs without an ASCII character force pieces
// to end inside non-ASCII text.
std::string big_text() {
  const std::string pattern =
      "\xCE\x91\xCE\xA3\xCC\x81 e\xCC\x81\xCC\xA3\xCC\x88 \xCE\xA3\xCE\x91\xCE\xA3'\xCE\xA3\n"
      "\xE1\x84\x80\xE1\x85\xA1\xE1\x86\xA8\xEA\xB0\x80\xE1\x86\xA8 I\xCC\x87 i\xCC\x87\xCC\x81 "
      "\xC3\x9F\xEF\xAC\x81\xE1\xBE\x88 A\xCC\x8A\xCC\x81\xCC\xA3\xCE\xA3";
  std::string text;
  while (text.size() < 640 * 1024) text += pattern;
  for (int k = 0; k < 40000; ++k) text += "\xE1\x84\x80\xE1\x85\xA1\xCC\x81";
  text += " \xCE\xA3";
  return text;
}

std::string whole(char* (*f)(const char*, int32_t, uint32_t*), const std::string& s) {
  uint32_t n = 0;
  char* r = f(s.data(), static_cast<int32_t>(s.size()), &n);
  std::string out(r, n);
  oruFree(r);
  return out;
}

std::string whole_nf(const std::string& s, uint32_t form) {
  uint32_t n = 0;
  char* r = oruUTF8Normalize(s.data(), static_cast<int32_t>(s.size()), form, &n);
  std::string out(r, n);
  oruFree(r);
  return out;
}

std::string to_utf16be(const std::string& s) {
  uint32_t n = 0;
  std::string out;
  const std::u16string dummy;
  for (size_t i = 0; i < s.size();) {
    const uint32_t c = oruUTF8GetChar(s.data() + i);
    i += c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    uint16_t u[2];
    const uint16_t* e = oruUTF16PutChar(u, c);
    for (const uint16_t* p = u; p < e; ++p) {
      out += static_cast<char>(*p >> 8);
      out += static_cast<char>(*p & 0xFF);
    }
  }
  (void)n;
  return out;
}

TEST(ToolNormalize, StreamedEqualsWholeText) {
  scratch_dir dir;
  const std::string text = big_text();
  const std::string file = dir.write("in.txt", text);
  const char* names[] = {"nfd", "nfkd", "nfc", "nfkc"};
  for (uint32_t form = 0; form < 4; ++form) {
    const run_result r = run_oru({"normalize", "-f", names[form], file}, dir.path());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.out == whole_nf(text, form)) << names[form];
  }
  const run_result be =
      run_oru({"normalize", "-f", "nfc", "-e", "utf-16be", "-"}, dir.path(), to_utf16be(text));
  ASSERT_EQ(be.status, 0) << be.err;
  EXPECT_TRUE(be.out == to_utf16be(whole_nf(text, ORU_NFC)));
}

TEST(ToolCase, StreamedEqualsWholeText) {
  scratch_dir dir;
  const std::string text = big_text();
  const std::string file = dir.write("in.txt", text);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, "en"), ORU_OK);
  struct {
    const char* flag;
    char* (*f)(const char*, int32_t, uint32_t*);
  } modes[] = {{"-l", oruUTF8ToLower}, {"-u", oruUTF8ToUpper}, {"-F", oruUTF8Casefold}};
  for (const auto& m : modes) {
    const run_result r = run_oru({"case", m.flag, "-L", "en", file}, dir.path());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.out == whole(m.f, text)) << m.flag;
  }
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_LANGUAGE, "tr"), ORU_OK);
  const run_result tr = run_oru({"case", "--lower", "--language=tr", "-"}, dir.path(), text);
  EXPECT_TRUE(tr.out == whole(oruUTF8ToLower, text));
  oruSetLocaleParam(ORU_LP_LANGUAGE, "en");
}

TEST(ToolCase, UsageErrors) {
  scratch_dir dir;
  EXPECT_EQ(run_oru({"case"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"case", "-l", "-u"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"case", "-l", "-L", "turkish"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"normalize"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"normalize", "-f", "nfx"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"normalize", "-f", "nfc", "-e", "latin1"}, dir.path()).status, 2);
  const run_result missing = run_oru({"normalize", "-f", "nfc", "no-such-file"}, dir.path());
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.err.find("no-such-file"), std::string::npos);
  const run_result small = run_oru({"case", "-u"}, dir.path(),
                                   "stra\xC3\x9F"
                                   "e \xFF");
  EXPECT_EQ(small.out, "STRASSE \xEF\xBF\xBD");
}

}  // namespace
