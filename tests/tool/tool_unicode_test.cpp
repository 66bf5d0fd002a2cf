// oru uni and oru validate.  The character descriptions are checked against
// the library's own answers and ICU's encoders; the streamed validation of
// files larger than the tool's read chunk, with faults placed across chunk
// boundaries, against the library's validators run over the whole buffer.
#include <gtest/gtest.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "oru/unicode.h"
#include "tool_runner.h"

namespace {

TEST(ToolUni, FormsOfTheArgument) {
  scratch_dir dir;
  const run_result one = run_oru({"uni", "U+00E9"}, dir.path());
  ASSERT_EQ(one.status, 0) << one.err;
  EXPECT_EQ(one.out,
            "U+00E9\n"
            "  UTF-8       C3 A9\n"
            "  UTF-16      00E9\n"
            "  category    Ll (10)\n"
            "  properties  Alphabetic Lowercase Grapheme_Base ID_Start ID_Continue XID_Start "
            "XID_Continue WB=ALetter\n"
            "  digit       -\n"
            "  hex digit   -\n"
            "  scalar      valid\n");
  for (const char* same : {"\xC3\xA9", "u+e9", "0xE9", "233", "0x000000e9"}) {
    EXPECT_EQ(run_oru({"uni", same}, dir.path()).out, one.out) << same;
  }
  // A single digit is the digit character.
  EXPECT_EQ(run_oru({"uni", "7"}, dir.path()).out.substr(0, 7), "U+0037\n");
}

TEST(ToolUni, FieldsAgreeWithTheLibraryAndIcu) {
  scratch_dir dir;
  const uint32_t chars[] = {0x0,    0x41,    0xAB,    0x2B0,    0xD800,  0xFDD0,
                            0xFF46, 0x1D7E2, 0x1F600, 0x10FFFF, 0x110000};
  std::vector<std::string> args{"uni"};
  for (uint32_t c : chars) {
    char text[16];
    std::snprintf(text, sizeof text, "U+%X", c);
    args.push_back(text);
  }
  const run_result r = run_oru(args, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  size_t at = 0;
  for (uint32_t c : chars) {
    const size_t end = r.out.find("\n\n", at);
    const std::string block = r.out.substr(at, end == std::string::npos ? end : end - at + 1);
    at = end + 2;
    std::string utf8 = "-", utf16 = "-";
    if (oruUniCharValidate(static_cast<int32_t>(c))) {
      uint8_t b[4];
      int32_t n = 0;
      U8_APPEND_UNSAFE(b, n, c);
      utf8.clear();
      for (int32_t i = 0; i < n; ++i) {
        char hex[4];
        std::snprintf(hex, sizeof hex, i ? " %02X" : "%02X", b[i]);
        utf8 += hex;
      }
      uint16_t u[2];
      n = 0;
      U16_APPEND_UNSAFE(u, n, c);
      utf16.clear();
      for (int32_t i = 0; i < n; ++i) {
        char hex[8];
        std::snprintf(hex, sizeof hex, i ? " %04X" : "%04X", u[i]);
        utf16 += hex;
      }
    }
    EXPECT_NE(block.find("  UTF-8       " + utf8 + "\n"), std::string::npos) << block;
    EXPECT_NE(block.find("  UTF-16      " + utf16 + "\n"), std::string::npos) << block;
    EXPECT_NE(block.find(" (" + std::to_string(oruUniCharClass(c)) + ")\n"), std::string::npos);
    const uint32_t digit = oruUniCharDigitValue(c), hex = oruUniCharHexDigitValue(c);
    EXPECT_NE(block.find("  digit       " + (digit > 9 ? "-" : std::to_string(digit))),
              std::string::npos)
        << block;
    EXPECT_NE(block.find("  hex digit   " + (hex > 15 ? "-" : std::to_string(hex))),
              std::string::npos)
        << block;
    EXPECT_NE(block.find(oruUniCharValidate(static_cast<int32_t>(c)) ? "scalar      valid"
                                                                     : "scalar      not valid"),
              std::string::npos);
    EXPECT_EQ(block.find("properties  -") != std::string::npos, oruUniCharProperties(c) == 0);
  }
}

TEST(ToolUni, MalformedArguments) {
  scratch_dir dir;
  const run_result r = run_oru({"uni", "ab", "U+41", "U+", "0x1FFFFFFFF", "\xC3"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out.substr(0, 7), "U+0041\n");
  EXPECT_EQ(r.out.find("\n\n"), std::string::npos);  // one block only
  EXPECT_NE(r.err.find("oru: uni: malformed character 'ab'"), std::string::npos);
  EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 4) << r.err;
  EXPECT_EQ(run_oru({"uni"}, dir.path()).status, 2);
}

// The validation report of a whole buffer, by the library's validators: an
// invalid sequence is the failing unit plus the UTF-8 continuation bytes
// after it (a noncharacter pair counts once).
std::string expected_report(const std::string& name, const std::string& bytes, int unit_size,
                            bool big_endian) {
  uint64_t first = 0, errors = 0, lines = 0;
  if (unit_size == 1) {
    size_t pos = 0;
    const char* s = bytes.data();
    while (pos < bytes.size()) {
      const char* err = nullptr;
      if (oruUTF8Validate(s + pos, static_cast<int32_t>(bytes.size() - pos), &err)) break;
      const size_t bad = static_cast<size_t>(err - s);
      if (errors++ == 0) first = bad;
      pos = bad + 1;
      while (pos < bytes.size() && (bytes[pos] & 0xC0) == 0x80) ++pos;
    }
  } else {
    std::vector<uint16_t> u(bytes.size() / 2);
    for (size_t i = 0; i < u.size(); ++i) {
      const auto a = static_cast<uint8_t>(bytes[2 * i]), b = static_cast<uint8_t>(bytes[2 * i + 1]);
      u[i] = static_cast<uint16_t>(big_endian ? a << 8 | b : b << 8 | a);
    }
    uint32_t pos = 0;
    const uint32_t n = static_cast<uint32_t>(u.size());
    while (pos < n) {
      const uint16_t* err = nullptr;
      if (oruUTF16Validate(u.data() + pos, n - pos, &err)) break;
      const uint32_t bad = static_cast<uint32_t>(err - u.data());
      if (errors++ == 0) first = 2 * uint64_t{bad};
      const bool pair =
          (u[bad] & 0xFC00) == 0xD800 && bad + 1 < n && (u[bad + 1] & 0xFC00) == 0xDC00;
      pos = bad + (pair ? 2 : 1);
    }
    if (bytes.size() % 2 && errors++ == 0) first = bytes.size() - 1;
    lines = static_cast<uint64_t>(
        std::count(u.begin(), u.begin() + static_cast<ptrdiff_t>(first / 2), 0x0A));
  }
  if (errors == 0) return name + ": valid\n";
  if (unit_size == 1) {
    lines = static_cast<uint64_t>(
        std::count(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(first), '\n'));
  }
  return name + ": invalid at byte " + std::to_string(first) + ", line " +
         std::to_string(lines + 1) + " (" + std::to_string(errors) + " invalid sequence" +
         (errors == 1 ? "" : "s") + ")\n";
}

std::string encode(const std::vector<uint32_t>& chars, int unit_size, bool big_endian) {
  std::string out;
  for (uint32_t c : chars) {
    if (unit_size == 1) {
      // Noncharacters and surrogates too, in the plain bit layout.
      if (c < 0x80) {
        out += static_cast<char>(c);
      } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        out += static_cast<char>(0x80 | (c & 0x3F));
      } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
      } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
      }
      continue;
    }
    uint16_t u[2];
    uint16_t* end = u;
    if (c >= 0x10000) {  // noncharacters too
      *end++ = static_cast<uint16_t>(0xD800 | (c - 0x10000) >> 10);
      *end++ = static_cast<uint16_t>(0xDC00 | (c & 0x3FF));
    } else {
      *end++ = static_cast<uint16_t>(c);
    }
    for (uint16_t* p = u; p < end; ++p) {
      out += static_cast<char>(big_endian ? *p >> 8 : *p & 0xFF);
      out += static_cast<char>(big_endian ? *p & 0xFF : *p >> 8);
    }
  }
  return out;
}

TEST(ToolValidate, StreamedFilesAgreeWithWholeBufferValidation) {
  scratch_dir dir;
  std::mt19937 rng(11);
  const size_t kChunk = 128 * 1024;
  struct {
    const char* option;
    int unit_size;
    bool big_endian;
  } const encodings[] = {{"utf-8", 1, false}, {"utf-16le", 2, false}, {"utf-16be", 2, true}};
  for (const auto& e : encodings) {
    std::vector<std::string> args{"validate", "-e", e.option};
    std::string expected;
    for (int file = 0; file < 6; ++file) {
      // Text of every length class around the chunk boundary, with faults
      // or a split character right at it in most files.
      std::string bytes;
      while (bytes.size() < kChunk + 100) {
        const uint32_t r = rng() % 16;
        const uint32_t c = r < 8    ? (r == 0 ? 0x0A : 0x20 + rng() % 0x5F)
                           : r < 11 ? 0x80 + rng() % 0x700
                           : r < 14 ? 0x4E00 + rng() % 0x100
                                    : 0x1F300 + rng() % 0x100;
        bytes += encode({c}, e.unit_size, e.big_endian);
      }
      std::string text = bytes;
      const size_t boundary = kChunk - static_cast<size_t>(e.unit_size);
      if (file == 1)
        text.insert(boundary, e.unit_size == 1 ? std::string("\xFF") : std::string("\x00\xDC", 2));
      if (file == 2)
        text.insert(kChunk - 2, encode({0xFFFE, 0x1FFFF, 0xD800}, e.unit_size, e.big_endian));
      if (file == 3) text.resize(text.size() - 1);  // cut in the last character
      if (file == 4) text.insert(text.begin() + 10, e.unit_size == 1 ? '\x80' : '\0');
      const std::string name = "f" + std::to_string(file);
      dir.write(name, text);
      args.push_back(name);
      expected += expected_report(name, text, e.unit_size, e.big_endian);
    }
    const run_result r = run_oru(args, dir.path());
    EXPECT_EQ(r.out, expected) << e.option;
    EXPECT_EQ(r.status, expected.find("invalid") == std::string::npos ? 0 : 1);
  }
}

TEST(ToolValidate, SmallCasesAndUsage) {
  scratch_dir dir;
  dir.write("ok", "plain\n\xE2\x82\xAC\n");
  dir.write("bad", "a\nb\n\xC0\x80\xED\xA0\x80z\xF0\x9F\x98");
  dir.write("empty", "");
  const run_result r = run_oru({"validate", "ok", "bad", "empty", "missing"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out,
            "ok: valid\n"
            "bad: invalid at byte 4, line 3 (3 invalid sequences)\n"
            "empty: valid\n");
  EXPECT_NE(r.err.find("oru: validate: cannot read 'missing'"), std::string::npos);
  EXPECT_EQ(run_oru({"validate", "ok"}, dir.path()).status, 0);
  EXPECT_EQ(run_oru({"validate"}, dir.path(), "\xEF\xBF\xBF").out,
            "-: invalid at byte 0, line 1 (1 invalid sequence)\n");
  EXPECT_EQ(run_oru({"validate", "-e", "latin1", "ok"}, dir.path()).status, 2);
}

}  // namespace
