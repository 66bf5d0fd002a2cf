// Simple per-character case mappings and the full, context- and
// language-sensitive string mappings (lower, upper, fold).
#include <cstring>
#include <string>
#include <vector>

#include "oru/core.h"
#include "oru/l10n.h"
#include "oru/unicode.h"
#include "unicode/oru_casenorm_tables.h"
#include "unicode/oru_uni_ordering.h"
#include "unicode/oru_uni_text.h"
#include "unicode/oru_unicode_tables.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

namespace {

enum Condition : uint32_t {
  kNone = 0,
  kAfterSoftDotted = 1,
  kFinalSigma = 2,
  kNotBeforeDot = 3,
  kMoreAbove = 4,
  kAfterI = 5,
};

bool is_cased(uint32_t c) noexcept {
  const uint32_t info = char_info(c);
  return (info & (ORU_UNI_LOWERCASE | ORU_UNI_UPPERCASE)) != 0 ||
         (info & kCategoryMask) == ORU_UNI_LT;
}

// Marks, format characters and the word-internal punctuation (apostrophe,
// middle dot, colon...) do not end a word for Final_Sigma.
bool is_case_ignorable(uint32_t c) noexcept {
  const uint32_t info = char_info(c);
  const uint32_t cat = info & kCategoryMask;
  return cat == ORU_UNI_MN || cat == ORU_UNI_ME || cat == ORU_UNI_CF ||
         (info & ORU_UNI_WB_MIDLETTER) != 0;
}

bool condition_holds(uint32_t cond, const uint32_t* s, size_t n, size_t i) noexcept {
  switch (cond) {
    case kAfterSoftDotted:
    case kAfterI:
      for (size_t j = i; j-- > 0;) {
        const uint32_t cc = combining_class(s[j]);
        if (cc == 230) return false;
        if (cc != 0) continue;
        return cond == kAfterI ? s[j] == 0x49 : (char_info(s[j]) & ORU_UNI_SOFT_DOTTED) != 0;
      }
      return false;
    case kFinalSigma: {
      bool before = false;
      for (size_t j = i; j-- > 0;) {
        if (is_case_ignorable(s[j])) continue;
        before = is_cased(s[j]);
        break;
      }
      if (!before) return false;
      for (size_t j = i + 1; j < n; ++j) {
        if (is_case_ignorable(s[j])) continue;
        return !is_cased(s[j]);
      }
      return true;
    }
    case kNotBeforeDot:
      for (size_t j = i + 1; j < n; ++j) {
        if (s[j] == 0x307) return false;
        const uint32_t cc = combining_class(s[j]);
        if (cc == 0 || cc == 230) return true;
      }
      return true;
    case kMoreAbove:
      for (size_t j = i + 1; j < n; ++j) {
        const uint32_t cc = combining_class(s[j]);
        if (cc == 0) return false;
        if (cc == 230) return true;
      }
      return false;
    default:
      return cond == kNone;
  }
}

// The current locale's language as the two ASCII letters of a record
// header (bits 16-31), read at most once per call; 0 when unknown.
class Language {
 public:
  uint32_t get() {
    if (!read_) {
      read_ = true;
      char buf[3] = {0, 0, 0};
      if (oruGetLocaleParam(ORU_LP_LANGUAGE, 0, buf, sizeof buf) == ORU_OK && buf[0] && buf[1]) {
        code_ = uint32_t{static_cast<unsigned char>(buf[0])} << 24 |
                uint32_t{static_cast<unsigned char>(buf[1])} << 16;
      }
    }
    return code_;
  }

 private:
  bool read_ = false;
  uint32_t code_ = 0;
};

// Maps s[0..n) into out, then puts out into canonical order.
void map_string(const CaseTable& table, const uint32_t* s, size_t n, std::vector<uint32_t>& out,
                Language& language) {
  out.clear();
  out.reserve(n + 6 + n / 64);
  for (size_t i = 0; i < n; ++i) {
    const uint32_t c = s[i];
    if (c < 0x80 && table.data[c] < 0x200000) {  // ASCII never has records
      out.push_back(table.data[c]);
      continue;
    }
    const uint32_t word = case_word(table, c);
    const uint32_t entry = word >> kSpecialShift;
    if (entry == 0 || c > 0x10FFFF) {
      out.push_back(c > 0x10FFFF ? c : word & kSimpleMask);
      continue;
    }
    bool taken = false;
    for (const uint32_t* r = caseSpecial + caseSpecialOffset[entry]; *r; r += 1 + (*r & 0xFF)) {
      const uint32_t header = *r;
      const uint32_t lang = header & 0xFFFF0000u;
      if (lang && lang != language.get()) continue;
      if (!condition_holds((header >> 8) & 0xFF, s, n, i)) continue;
      out.insert(out.end(), r + 1, r + 1 + (header & 0xFF));
      taken = true;
      break;
    }
    if (!taken) out.push_back(word & kSimpleMask);
  }
  canonical_order(out.data(), out.size());
}

uint32_t* map_ucs4(const CaseTable& t, const uint32_t* s, uint32_t len, uint32_t* outLen) {
  if (outLen) *outLen = 0;
  if (!s || len == 0) return nullptr;
  std::vector<uint32_t> out;
  Language language;
  map_string(t, s, len, out, language);
  return copy_ucs4(out.data(), out.size(), outLen);
}

uint16_t* map_utf16(const CaseTable& t, const uint16_t* s, uint32_t len, uint32_t* outLen) {
  if (outLen) *outLen = 0;
  if (!s || len == 0) return nullptr;
  std::vector<uint32_t> in, out;
  decode_utf16(s, len, in);
  Language language;
  map_string(t, in.data(), in.size(), out, language);
  return encode_utf16(out.data(), out.size(), outLen);
}

bool is_blank(unsigned char b) noexcept { return b == ' ' || b == '\n' || b == '\t' || b == '\r'; }

// UTF-8 is mapped word by word: no context reaches across a space, tab or
// line end (they are neither cased nor case-ignorable, and of class 0), so
// each stretch up to one of them maps on its own.  A stretch of ASCII
// without special records (everything but I, J and i in some mappings) maps
// byte by byte; any other is decoded and mapped in full.
char* map_utf8(const CaseTable& t, const char* s, int32_t len, uint32_t* outLen) {
  if (outLen) *outLen = 0;
  if (!s) return nullptr;
  const size_t n = utf8_length(s, len);
  const unsigned char* b = bytes(s);
  OutBuffer out;
  if (!out.reserve(n + 24 + n / 64)) return nullptr;
  std::vector<uint32_t> in, mapped;
  std::string enc;
  Language language;
  size_t i = 0;
  while (i < n) {
    size_t j = i;
    bool plain = true;
    while (j < n) {
      const unsigned char c = b[j++];
      if (c >= 0x80 || t.data[c] >= 0x200000) plain = false;
      if (is_blank(c)) break;
    }
    if (plain) {
      for (size_t k = i; k < j; ++k) {
        if (!out.push(static_cast<char>(t.data[b[k]]))) return nullptr;
      }
    } else {
      decode_utf8(s + i, j - i, in);
      map_string(t, in.data(), in.size(), mapped, language);
      enc.clear();
      append_utf8(enc, mapped.data(), mapped.size());
      if (!out.append(enc.data(), enc.size())) return nullptr;
    }
    i = j;
  }
  return out.release(outLen);
}

}  // namespace

extern "C" {

ORU_API uint32_t oruUniCharToLower(uint32_t c) {
  return c > 0x10FFFF ? c : case_word(kLowerTable, c) & kSimpleMask;
}
ORU_API uint32_t oruUniCharToUpper(uint32_t c) {
  return c > 0x10FFFF ? c : case_word(kUpperTable, c) & kSimpleMask;
}
ORU_API uint32_t oruUniCharToTitle(uint32_t c) {
  return c > 0x10FFFF ? c : (case_word(kTitleTable, c) & 0x7FFFFFFF) & kSimpleMask;
}

ORU_API uint32_t* oruUCS4ToLower(const uint32_t* s, uint32_t len, uint32_t* outLen) {
  return unless_out_of_memory<uint32_t*>([&] { return map_ucs4(kLowerTable, s, len, outLen); });
}
ORU_API uint32_t* oruUCS4ToUpper(const uint32_t* s, uint32_t len, uint32_t* outLen) {
  return unless_out_of_memory<uint32_t*>([&] { return map_ucs4(kUpperTable, s, len, outLen); });
}
ORU_API uint32_t* oruUCS4Casefold(const uint32_t* s, uint32_t len, uint32_t* outLen) {
  return unless_out_of_memory<uint32_t*>([&] { return map_ucs4(kFoldTable, s, len, outLen); });
}
ORU_API uint16_t* oruUTF16ToLower(const uint16_t* s, uint32_t len, uint32_t* outLen) {
  return unless_out_of_memory<uint16_t*>([&] { return map_utf16(kLowerTable, s, len, outLen); });
}
ORU_API uint16_t* oruUTF16ToUpper(const uint16_t* s, uint32_t len, uint32_t* outLen) {
  return unless_out_of_memory<uint16_t*>([&] { return map_utf16(kUpperTable, s, len, outLen); });
}
ORU_API uint16_t* oruUTF16Casefold(const uint16_t* s, uint32_t len, uint32_t* outLen) {
  return unless_out_of_memory<uint16_t*>([&] { return map_utf16(kFoldTable, s, len, outLen); });
}
ORU_API char* oruUTF8ToLower(const char* s, int32_t len, uint32_t* outLen) {
  return unless_out_of_memory<char*>([&] { return map_utf8(kLowerTable, s, len, outLen); });
}
ORU_API char* oruUTF8ToUpper(const char* s, int32_t len, uint32_t* outLen) {
  return unless_out_of_memory<char*>([&] { return map_utf8(kUpperTable, s, len, outLen); });
}
ORU_API char* oruUTF8Casefold(const char* s, int32_t len, uint32_t* outLen) {
  return unless_out_of_memory<char*>([&] { return map_utf8(kFoldTable, s, len, outLen); });
}

}  // extern "C"
