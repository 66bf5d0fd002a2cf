// oru charset, oru convert and oru locale.  The conversions are checked
// against oruConvertString on the same input and against iconv(1) on real
// text in several sets, on inputs larger than the tool's read chunk so that
// sequences split across chunks are exercised.
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "oru/text.h"
#include "tool_runner.h"

namespace {

std::string convert_string(const std::string& in, const char* from, const char* to,
                           oruResult* code = nullptr) {
  char* out = nullptr;
  size_t len = 0;
  oruResult r = oruConvertString(in.data(), in.size(), from, to, nullptr, &len, nullptr, &out);
  if (code) *code = r;
  std::string s = r == ORU_OK ? std::string(out, len) : "";
  oruFree(out);
  return s;
}

TEST(ToolCharset, DescribeAndList) {
  scratch_dir dir;
  run_result r = run_oru({"charset", "latin1", "106"}, dir.path());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("MIBenum: 4\nName: ISO_8859-1:1987\nMIME name: ISO-8859-1\nAliases: "),
            std::string::npos)
      << r.out;
  for (const char* alias : {"latin1", "l1", "IBM819", "CP819", "csISOLatin1", "iso-ir-100"})
    EXPECT_NE(r.out.find(alias), std::string::npos) << alias;
  EXPECT_NE(r.out.find("\n\nMIBenum: 106\nName: UTF-8\nMIME name: UTF-8\nAliases: \n"
                       "Convertible: yes\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(run_oru({"charset", "SCSU"}, dir.path()).out.find("Convertible: no"),
            std::string::npos);
  r = run_oru({"charset", "no-such-set"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("no-such-set"), std::string::npos);
  EXPECT_EQ(run_oru({"charset"}, dir.path()).status, 2);

  r = run_oru({"charset", "--list"}, dir.path());
  EXPECT_EQ(r.status, 0);
  std::set<uint32_t> mibs;
  uint32_t mib = 0;
  for (size_t i = 0; _oruCSNameAt(i, &mib); ++i) mibs.insert(mib);
  size_t lines = 0;
  for (char c : r.out) lines += c == '\n';
  EXPECT_EQ(lines, mibs.size());
  EXPECT_EQ(r.out.compare(0, 16, "3\tANSI_X3.4-1968"), 0) << r.out.substr(0, 40);
  EXPECT_NE(r.out.find("\n106\tUTF-8\t\n"), std::string::npos);
}

// UTF-8 text with malformed sequences everywhere, chunk boundaries included.
std::string damaged_text(size_t size) {
  const std::string words[] = {"plain ASCII ",
                               "Gr\xC3\xBC\xC3\x9F"
                               "e ",
                               "\xE6\x97\xA5\xE6\x9C\xAC ",
                               "\xE2\x82\xAC ",
                               "\xF0\x9F\x98\x80 ",
                               "\xFF",
                               "\xC3",
                               "\xE2\x82",
                               "\x80\x80",
                               "\xED\xA0\x80",
                               "\xC0\xAF"};
  std::string s;
  unsigned seed = 99;
  while (s.size() < size) {
    seed = seed * 1103515245u + 12345u;
    s += words[(seed >> 16) % 11];
  }
  // A bad sequence straddling the tool's 128 KiB chunk boundary.
  s.replace(128 * 1024 - 1, 3, "\xE2\x82\x41");
  return s;
}

TEST(ToolConvert, EqualsConvertString) {
  scratch_dir dir;
  const std::string text = damaged_text(300 * 1024);
  dir.write("in.txt", text);
  for (const char* to : {"UTF-16LE", "ISO-8859-1", "ISO-2022-JP", "UTF-7", "utf-8"}) {
    run_result r = run_oru({"convert", "-f", "UTF-8", "-t", to, "in.txt"}, dir.path());
    EXPECT_EQ(r.status, 0) << to << r.err;
    oruResult code;
    const std::string expect = convert_string(text, "UTF-8", to, &code);
    ASSERT_EQ(code, ORU_OK);
    EXPECT_TRUE(r.out == expect) << to << ": " << r.out.size() << " bytes, expected "
                                 << expect.size();
  }
  // Standard input works the same.
  run_result r = run_oru({"convert", "-f", "UTF-8", "-t", "latin1"}, dir.path(), text);
  EXPECT_TRUE(r.out == convert_string(text, "UTF-8", "latin1"));
}

TEST(ToolConvert, InvalidInputStopsWithItsOffset) {
  scratch_dir dir;
  std::string text(200 * 1024, 'a');
  text[150000] = '\x80';  // not 7-bit: invalid in ISO-2022-JP
  dir.write("in.txt", text);
  run_result r = run_oru({"convert", "-f", "ISO-2022-JP", "-t", "UTF-8", "-o", "out.txt", "in.txt"},
                         dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("byte offset 150000"), std::string::npos) << r.err;
  EXPECT_FALSE(dir.exists("out.txt"));
  // A truncated final sequence in a set other than UTF-8.
  dir.write("cut.txt", std::string("abc\x82", 4));
  r = run_oru({"convert", "-f", "Shift_JIS", "-t", "UTF-8", "cut.txt"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("byte offset 3"), std::string::npos) << r.err;
  r = run_oru({"convert", "-f", "SCSU", "-t", "UTF-8", "cut.txt"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(run_oru({"convert", "-t", "UTF-8"}, dir.path()).status, 2);
}

TEST(ToolConvert, AgreesWithIconvOnValidText) {
  scratch_dir dir;
  const struct {
    const char* set;
    std::string sample;  // UTF-8 text the set can encode
  } sets[] = {
      {"ISO-8859-1",
       "Gr\xC3\xBC\xC3\x9F"
       "e aus K\xC3\xB6ln, \xC3\xA7"
       "a va? "},
      {"KOI8-R", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, \xD0\xBC\xD0\xB8\xD1\x80! "},
      {"SHIFT_JIS", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87 abc "},
      {"EUC-JP", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87 abc "},
      {"ISO-2022-JP", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E abc "},
      {"GB18030", "\xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80 "},
      {"BIG5", "\xE4\xB8\xAD\xE6\x96\x87 xyz "},
      {"UTF-16LE", "\xE2\x82\xAC \xF0\x9F\x98\x80 text "},
  };
  for (const auto& s : sets) {
    std::string utf8;
    while (utf8.size() < 140 * 1024) utf8 += s.sample;
    dir.write("utf8.txt", utf8);
    run_result ref = run_program("iconv", {"-f", "UTF-8", "-t", s.set, "utf8.txt"}, dir.path());
    ASSERT_EQ(ref.status, 0) << s.set << ref.err;
    run_result ours = run_oru({"convert", "-f", "UTF-8", "-t", s.set, "utf8.txt"}, dir.path());
    EXPECT_EQ(ours.status, 0) << s.set << ours.err;
    EXPECT_TRUE(ours.out == ref.out) << "UTF-8 to " << s.set;
    dir.write("native.txt", ref.out);
    ref = run_program("iconv", {"-f", s.set, "-t", "UTF-8", "native.txt"}, dir.path());
    ours = run_oru({"convert", "-f", s.set, "-t", "UTF-8", "native.txt"}, dir.path());
    EXPECT_EQ(ours.status, 0) << s.set << ours.err;
    EXPECT_TRUE(ours.out == ref.out && ours.out == utf8) << s.set << " to UTF-8";
  }
}

TEST(ToolLocale, ParametersAndNativeNames) {
  scratch_dir dir;
  const char* saved[3];
  const char* vars[] = {"LC_ALL", "LC_CTYPE", "LANG"};
  std::string copies[3];
  for (int i = 0; i < 3; ++i) {
    const char* v = std::getenv(vars[i]);
    saved[i] = v ? (copies[i] = v).c_str() : nullptr;
  }
  unsetenv("LC_ALL");
  unsetenv("LC_CTYPE");
  setenv("LANG", "de_CH.utf8", 1);
  run_result r = run_oru({"locale"}, dir.path());
  for (int i = 0; i < 3; ++i) {
    if (saved[i])
      setenv(vars[i], saved[i], 1);
    else
      unsetenv(vars[i]);
  }
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out,
            "language\tde\tde\nfallback-language\t\t\nterritory\tCH\tCH\napp-string\t\t\n"
            "system-charset\tUTF-8\tUTF-8\nconsole-charset\tUTF-8\tUTF-8\n"
            "app-charset\tUTF-8\tUTF-8\n");
  r = run_oru({"locale", "-n", "German_Germany.1252"}, dir.path());
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "de_DE.windows-1252\n");
  r = run_oru({"locale", "--native=German.1252"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "");
}

}  // namespace
