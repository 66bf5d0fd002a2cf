// oru uni CHAR...: everything the library knows about a character.
#include <oru/unicode.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_uni;

namespace {

constexpr char kUsage[] =
    "Usage: oru uni [OPTION]... CHAR...\n"
    "Describe characters: the code point, its UTF-8 and UTF-16 forms, its\n"
    "general category and property bits (Unicode 4.1.0), its decimal and\n"
    "hexadecimal digit values, and whether it is a valid scalar value.\n"
    "\n"
    "A CHAR is one character (in UTF-8, as the terminal gives it), U+XXXX,\n"
    "a hexadecimal number (0x1F600) or a decimal number of two or more\n"
    "digits (233); a single digit is that digit character.\n"
    "\n"
    "  -o, --output=FILE  write to FILE instead of standard output\n"
    "      --help         show this help and exit\n"
    "\n"
    "Output: a block of lines per CHAR, blocks separated by a blank line.\n"
    "Forms that cannot be encoded (surrogates, noncharacters, values above\n"
    "U+10FFFF) and missing digit values are shown as '-'.\n"
    "Exit status: 0 on success, 1 if a CHAR was malformed, 2 on bad usage.\n";

struct named_bit {
  uint32_t bit;
  const char* name;
};

constexpr named_bit kProperties[] = {
    {ORU_UNI_ALPHABETIC, "Alphabetic"},
    {ORU_UNI_LOWERCASE, "Lowercase"},
    {ORU_UNI_UPPERCASE, "Uppercase"},
    {ORU_UNI_MATH, "Math"},
    {ORU_UNI_GRAPHEME_BASE, "Grapheme_Base"},
    {ORU_UNI_GRAPHEME_EXTEND, "Grapheme_Extend"},
    {ORU_UNI_ID_START, "ID_Start"},
    {ORU_UNI_ID_CONTINUE, "ID_Continue"},
    {ORU_UNI_XID_START, "XID_Start"},
    {ORU_UNI_XID_CONTINUE, "XID_Continue"},
    {ORU_UNI_WHITE_SPACE, "White_Space"},
    {ORU_UNI_DASH, "Dash"},
    {ORU_UNI_HYPHEN, "Hyphen"},
    {ORU_UNI_QUOTATION_MARK, "Quotation_Mark"},
    {ORU_UNI_HEX_DIGIT, "Hex_Digit"},
    {ORU_UNI_TERMINAL_PUNCTUATION, "Terminal_Punctuation"},
    {ORU_UNI_STERM, "STerm"},
    {ORU_UNI_SOFT_DOTTED, "Soft_Dotted"},
    {ORU_UNI_WB_KATAKANA, "WB=Katakana"},
    {ORU_UNI_WB_ALETTER, "WB=ALetter"},
    {ORU_UNI_WB_MIDLETTER, "WB=MidLetter"},
    {ORU_UNI_WB_MIDNUM, "WB=MidNum"},
    {ORU_UNI_WB_NUMERIC, "WB=Numeric"},
};

const char* category_name(uint32_t category) {
  static constexpr struct {
    uint32_t value;
    const char* name;
  } kNames[] = {{ORU_UNI_LU, "Lu"}, {ORU_UNI_LL, "Ll"}, {ORU_UNI_LT, "Lt"}, {ORU_UNI_LM, "Lm"},
                {ORU_UNI_LO, "Lo"}, {ORU_UNI_MN, "Mn"}, {ORU_UNI_MC, "Mc"}, {ORU_UNI_ME, "Me"},
                {ORU_UNI_ND, "Nd"}, {ORU_UNI_NL, "Nl"}, {ORU_UNI_NO, "No"}, {ORU_UNI_PC, "Pc"},
                {ORU_UNI_PD, "Pd"}, {ORU_UNI_PS, "Ps"}, {ORU_UNI_PE, "Pe"}, {ORU_UNI_PI, "Pi/Pf"},
                {ORU_UNI_PO, "Po"}, {ORU_UNI_SM, "Sm"}, {ORU_UNI_SC, "Sc"}, {ORU_UNI_SK, "Sk"},
                {ORU_UNI_SO, "So"}, {ORU_UNI_ZS, "Zs"}, {ORU_UNI_ZL, "Zl"}, {ORU_UNI_ZP, "Zp"},
                {ORU_UNI_CC, "Cc"}, {ORU_UNI_CF, "Cf"}, {ORU_UNI_CS, "Cs"}, {ORU_UNI_CO, "Co"},
                {ORU_UNI_CN, "Cn"}};
  for (const auto& n : kNames) {
    if (n.value == category) return n.name;
  }
  return "none";
}

bool parse_hex(const char* p, uint32_t& out) {
  if (*p == '\0' || std::strlen(p) > 8) return false;
  uint32_t v = 0;
  for (; *p != '\0'; ++p) {
    const char c = *p;
    uint32_t digit;
    if (c >= '0' && c <= '9') {
      digit = static_cast<uint32_t>(c - '0');
    } else if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f') {
      digit = static_cast<uint32_t>((c | 0x20) - 'a' + 10);
    } else {
      return false;
    }
    v = v << 4 | digit;
  }
  out = v;
  return true;
}

// One operand as a code point; see the usage text for the forms.
bool parse_char(const char* text, uint32_t& c) {
  if ((text[0] == 'U' || text[0] == 'u') && text[1] == '+') return parse_hex(text + 2, c);
  if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) return parse_hex(text + 2, c);
  const size_t len = std::strlen(text);
  if (len >= 2 && std::strspn(text, "0123456789") == len) {
    uint64_t v = 0;
    for (const char* p = text; *p != '\0'; ++p) {
      v = v * 10 + static_cast<uint64_t>(*p - '0');
      if (v > 0xFFFFFFFFu) return false;
    }
    c = static_cast<uint32_t>(v);
    return true;
  }
  if (len == 0 || !oruUTF8Validate(text, -1, nullptr) || oruUTF8CharCount(text, -1) != 1) {
    return false;
  }
  c = oruUTF8GetChar(text);
  return true;
}

std::string value_or_dash(uint32_t v) { return v == 0xFFFFFFFFu ? "-" : std::to_string(v); }

void describe(FILE* out, uint32_t c) {
  std::fprintf(out, "U+%04" PRIX32 "\n", c);
  char utf8[4];
  const char* end8 = oruUTF8PutChar(utf8, c);
  std::fprintf(out, "  UTF-8       ");
  if (end8 == utf8) std::fprintf(out, "-");
  for (const char* p = utf8; p < end8; ++p) {
    std::fprintf(out, "%s%02X", p == utf8 ? "" : " ", static_cast<unsigned char>(*p));
  }
  uint16_t utf16[2];
  const uint16_t* end16 = oruUTF16PutChar(utf16, c);
  std::fprintf(out, "\n  UTF-16      ");
  if (end16 == utf16) std::fprintf(out, "-");
  for (const uint16_t* p = utf16; p < end16; ++p) {
    std::fprintf(out, "%s%04X", p == utf16 ? "" : " ", static_cast<unsigned>(*p));
  }
  const uint32_t category = oruUniCharClass(c);
  std::fprintf(out, "\n  category    %s (%" PRIu32 ")\n  properties  ", category_name(category),
               category);
  const uint32_t props = oruUniCharProperties(c);
  if (props == 0) std::fprintf(out, "-");
  bool first = true;
  for (const named_bit& b : kProperties) {
    if (props & b.bit) {
      std::fprintf(out, "%s%s", first ? "" : " ", b.name);
      first = false;
    }
  }
  const uint32_t digit = oruUniCharDigitValue(c), hex = oruUniCharHexDigitValue(c);
  std::fprintf(out, "\n  digit       %s", value_or_dash(digit).c_str());
  std::fprintf(out, "\n  hex digit   %s", value_or_dash(hex).c_str());
  std::fprintf(out, "\n  scalar      %s\n",
               oruUniCharValidate(static_cast<int32_t>(c)) ? "valid" : "not valid");
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_uni, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_uni.name;
  if (opts.operands.empty()) return oru_usage_error(cmd, "no character given");
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  int status = ORU_EXIT_OK;
  bool any = false;
  for (const char* text : opts.operands) {
    uint32_t c = 0;
    if (!parse_char(text, c)) {
      std::fflush(out.stream());
      status = oru_fail(cmd, std::string("malformed character '") + text + "'", ORU_E_INVALID_ARG);
      continue;
    }
    if (any) std::fputc('\n', out.stream());
    describe(out.stream(), c);
    any = true;
  }
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_uni = {"uni", "describe Unicode characters", kUsage, run};
