// iconv on Windows.  The system has no iconv, so on first use the library
// looks for a GNU libiconv DLL under its usual names.  Without one it uses
// its own converter with iconv's conventions: UTF-8, UTF-16, UTF-32, UCS-2,
// UCS-4, US-ASCII and ISO-8859-1 by hand, every other set through the
// system's code-page conversions (MultiByteToWideChar/WideCharToMultiByte),
// one character at a time so that an invalid or unmappable character stops
// the input exactly in front of it, as iconv does.

#include "text/oru_iconv.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

namespace oru_charset {
namespace {

// --- A GNU libiconv DLL -----------------------------------------------------

using dll_open_fn = void*(__cdecl*)(const char*, const char*);
using dll_iconv_fn = size_t(__cdecl*)(void*, const char**, size_t*, char**, size_t*);
using dll_close_fn = int(__cdecl*)(void*);
using crt_errno_fn = int*(__cdecl*)();

struct iconv_dll {
  dll_open_fn open = nullptr;
  dll_iconv_fn convert = nullptr;
  dll_close_fn close = nullptr;
  // The DLL sets errno in the C runtime it was linked with, which need not
  // be ours: every runtime present is cleared before a call and read after.
  crt_errno_fn errnos[2] = {nullptr, nullptr};
};

// The address of an export as a function of type F (GetProcAddress gives
// every export one generic type).
template <typename F>
F either(HMODULE module, const char* first, const char* second = nullptr) {
  FARPROC p = GetProcAddress(module, first);
  if (p == nullptr && second != nullptr) p = GetProcAddress(module, second);
  F f;
  static_assert(sizeof f == sizeof p);
  std::memcpy(&f, &p, sizeof f);
  return f;
}

iconv_dll find_dll() {
  iconv_dll dll;
  for (const char* name :
       {"iconv.dll", "libiconv.dll", "libiconv-2.dll", "libiconv2.dll", "iconv-2.dll"}) {
    HMODULE module = LoadLibraryA(name);
    if (module == nullptr) continue;
    dll.open = either<dll_open_fn>(module, "libiconv_open", "iconv_open");
    dll.convert = either<dll_iconv_fn>(module, "libiconv", "iconv");
    dll.close = either<dll_close_fn>(module, "libiconv_close", "iconv_close");
    if (dll.open != nullptr && dll.convert != nullptr && dll.close != nullptr) {
      // Kept loaded for the life of the process.
      int n = 0;
      for (const char* crt : {"ucrtbase.dll", "msvcrt.dll"}) {
        if (HMODULE c = GetModuleHandleA(crt)) {
          dll.errnos[n++] = either<crt_errno_fn>(c, "_errno");
        }
      }
      return dll;
    }
    dll = iconv_dll();
    FreeLibrary(module);
  }
  return dll;
}

const iconv_dll& the_dll() {
  static const iconv_dll dll = find_dll();  // looked for once, on first use
  return dll;
}

void clear_errno(const iconv_dll& dll) {
  errno = 0;
  for (crt_errno_fn f : dll.errnos) {
    if (f != nullptr) *f() = 0;
  }
}

int read_errno(const iconv_dll& dll) {
  if (errno != 0) return errno;
  for (crt_errno_fn f : dll.errnos) {
    if (f != nullptr && *f() != 0) return *f();
  }
  return EINVAL;
}

// --- The library's own converter --------------------------------------------

enum class form : uint8_t {
  utf8,
  utf16,  // with a byte-order mark: read when present, written first
  utf16be,
  utf16le,
  utf32,
  utf32be,
  utf32le,
  ucs2,  // the machine's order, no mark: little-endian
  ucs2be,
  ucs2le,
  ucs4,  // big-endian, no mark
  ucs4be,
  ucs4le,
  ascii,
  latin1,
  single_byte,  // a code page of one byte per character
  double_byte,  // a code page of lead and trail bytes
  gb18030,      // one, two or four bytes
};

// Bytes a system code page assigns beyond the registered set, which are
// holes in the set as GNU iconv has it too.
enum class holes : uint8_t {
  none,
  // A byte 0x80-0x9F mapped to the C1 control of the same value: the
  // Windows and DOS sets have no C1 controls, the system's table only fills
  // its gaps so.
  c1,
  // Code page 874 is TIS-620 with Windows' additions at 0x80-0xA0.
  tis620,
};

struct set_form {
  const char* iconvName;
  form kind;
  UINT codePage;
  holes gaps = holes::none;
};

// The sets the converter handles, by their iconv names.  Where Windows has
// no code page of exactly the set, the nearest superset stands in
// (SHIFT_JIS: 932, TIS-620: 874, EUC-JP: 20932 without JIS X 0212).
constexpr set_form kForms[] = {
    {"UTF-8", form::utf8, 0},
    {"UTF-16", form::utf16, 0},
    {"UTF-16BE", form::utf16be, 0},
    {"UTF-16LE", form::utf16le, 0},
    {"UTF-32", form::utf32, 0},
    {"UTF-32BE", form::utf32be, 0},
    {"UTF-32LE", form::utf32le, 0},
    {"UCS-2", form::ucs2, 0},
    {"UCS-2BE", form::ucs2be, 0},
    {"UCS-2LE", form::ucs2le, 0},
    {"UCS-4", form::ucs4, 0},
    {"UCS-4BE", form::ucs4be, 0},
    {"UCS-4LE", form::ucs4le, 0},
    {"US-ASCII", form::ascii, 0},
    {"ISO-8859-1", form::latin1, 0},
    {"ISO-8859-2", form::single_byte, 28592},
    {"ISO-8859-3", form::single_byte, 28593},
    {"ISO-8859-4", form::single_byte, 28594},
    {"ISO-8859-5", form::single_byte, 28595},
    {"ISO-8859-6", form::single_byte, 28596},
    {"ISO-8859-7", form::single_byte, 28597},
    {"ISO-8859-8", form::single_byte, 28598},
    {"ISO-8859-9", form::single_byte, 28599},
    {"ISO-8859-13", form::single_byte, 28603},
    {"ISO-8859-15", form::single_byte, 28605},
    {"WINDOWS-1250", form::single_byte, 1250, holes::c1},
    {"WINDOWS-1251", form::single_byte, 1251, holes::c1},
    {"WINDOWS-1252", form::single_byte, 1252, holes::c1},
    {"WINDOWS-1253", form::single_byte, 1253, holes::c1},
    {"WINDOWS-1254", form::single_byte, 1254, holes::c1},
    {"WINDOWS-1255", form::single_byte, 1255, holes::c1},
    {"WINDOWS-1256", form::single_byte, 1256, holes::c1},
    {"WINDOWS-1257", form::single_byte, 1257, holes::c1},
    {"WINDOWS-1258", form::single_byte, 1258, holes::c1},
    {"KOI8-R", form::single_byte, 20866},
    {"KOI8-U", form::single_byte, 21866},
    {"MACINTOSH", form::single_byte, 10000},
    {"TIS-620", form::single_byte, 874, holes::tis620},
    {"IBM437", form::single_byte, 437},
    {"IBM775", form::single_byte, 775},
    {"IBM850", form::single_byte, 850},
    {"IBM852", form::single_byte, 852},
    {"IBM855", form::single_byte, 855},
    {"IBM857", form::single_byte, 857},
    {"IBM860", form::single_byte, 860},
    {"IBM861", form::single_byte, 861},
    {"IBM862", form::single_byte, 862},
    {"IBM863", form::single_byte, 863},
    {"IBM864", form::single_byte, 864, holes::c1},
    {"IBM865", form::single_byte, 865},
    {"IBM866", form::single_byte, 866},
    {"IBM869", form::single_byte, 869, holes::c1},
    {"IBM037", form::single_byte, 37},
    {"IBM273", form::single_byte, 20273},
    {"IBM277", form::single_byte, 20277},
    {"IBM278", form::single_byte, 20278},
    {"IBM280", form::single_byte, 20280},
    {"IBM284", form::single_byte, 20284},
    {"IBM285", form::single_byte, 20285},
    {"IBM290", form::single_byte, 20290},
    {"IBM297", form::single_byte, 20297},
    {"IBM420", form::single_byte, 20420},
    {"IBM423", form::single_byte, 20423},
    {"IBM424", form::single_byte, 20424},
    {"IBM500", form::single_byte, 500},
    {"IBM870", form::single_byte, 870},
    {"IBM871", form::single_byte, 20871},
    {"IBM880", form::single_byte, 20880},
    {"IBM905", form::single_byte, 20905},
    {"IBM1026", form::single_byte, 1026},
    {"IBM1047", form::single_byte, 1047},
    {"IBM1140", form::single_byte, 1140},
    {"IBM1141", form::single_byte, 1141},
    {"IBM1142", form::single_byte, 1142},
    {"IBM1143", form::single_byte, 1143},
    {"IBM1144", form::single_byte, 1144},
    {"IBM1145", form::single_byte, 1145},
    {"IBM1146", form::single_byte, 1146},
    {"IBM1147", form::single_byte, 1147},
    {"IBM1148", form::single_byte, 1148},
    {"IBM1149", form::single_byte, 1149},
    {"SHIFT_JIS", form::double_byte, 932},
    {"CP932", form::double_byte, 932},
    {"EUC-JP", form::double_byte, 20932},
    {"GB2312", form::double_byte, 20936},
    {"GBK", form::double_byte, 936},
    {"UHC", form::double_byte, 949},
    {"BIG5", form::double_byte, 950},
    {"GB18030", form::gb18030, 54936},
};

constexpr char32_t kInvalid = 0xFFFFFFFF;
constexpr char32_t kByteOrderMark = 0xFEFF;

struct converter {
  set_form from{};
  set_form to{};
  bool readMark = true;            // a UTF-16/UTF-32 input may still open with a mark
  bool bigInput = false;           // the order a marked input turned out to have
  bool writeMark = true;           // a UTF-16/UTF-32 output still owes its mark
  char32_t decodeTable[256] = {};  // single-byte input
  std::vector<std::pair<char32_t, uint8_t>> encodeTable;  // single-byte output, sorted

  void reset() {
    readMark = true;
    bigInput = false;
    writeMark = true;
  }
};

bool ascii_equal(const char* a, const char* b) {
  for (;; ++a, ++b) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    if (lower(*a) != lower(*b)) return false;
    if (*a == '\0') return true;
  }
}

const set_form* find_form(const char* name) {
  for (const set_form& f : kForms) {
    if (ascii_equal(f.iconvName, name)) return &f;
  }
  return nullptr;
}

bool surrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

// The code page's character for one byte, or kInvalid.
char32_t system_decode_byte(UINT codePage, unsigned char byte) {
  wchar_t wide[2];
  int n = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, reinterpret_cast<LPCCH>(&byte), 1,
                              wide, 2);
  return n == 1 ? static_cast<char32_t>(wide[0]) : kInvalid;
}

// Fills the tables of a single-byte code page; false when the system does
// not know it.
bool load_single_byte(converter& c, const set_form& f, bool input) {
  CPINFO info;
  if (!GetCPInfo(f.codePage, &info) || info.MaxCharSize != 1) return false;
  char32_t table[256];
  for (int b = 0; b < 256; ++b) {
    table[b] = system_decode_byte(f.codePage, static_cast<uint8_t>(b));
    if ((f.gaps == holes::c1 && b >= 0x80 && b <= 0x9F && table[b] == static_cast<char32_t>(b)) ||
        (f.gaps == holes::tis620 && b >= 0x80 && b <= 0xA0)) {
      table[b] = kInvalid;
    }
  }
  if (input) {
    std::memcpy(c.decodeTable, table, sizeof table);
  } else {
    for (int b = 0; b < 256; ++b) {
      if (table[b] != kInvalid) c.encodeTable.emplace_back(table[b], static_cast<uint8_t>(b));
    }
    // Sorted by character; of two bytes for one character the lower wins.
    std::stable_sort(c.encodeTable.begin(), c.encodeTable.end(),
                     [](const auto& x, const auto& y) { return x.first < y.first; });
  }
  return true;
}

bool system_knows(UINT codePage) {
  CPINFO info;
  return GetCPInfo(codePage, &info) != 0;
}

// --- Decoding: one character from the input --------------------------------

enum class step : uint8_t { character, mark, invalid, incomplete };

uint32_t read16(const unsigned char* p, bool big) {
  return big ? (uint32_t{p[0]} << 8) | p[1] : (uint32_t{p[1]} << 8) | p[0];
}

uint32_t read32(const unsigned char* p, bool big) {
  return big ? (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | p[3]
             : (uint32_t{p[3]} << 24) | (uint32_t{p[2]} << 16) | (uint32_t{p[1]} << 8) | p[0];
}

step decode_utf8(const unsigned char* p, size_t n, char32_t& out, size_t& used) {
  unsigned char b = p[0];
  if (b < 0x80) {
    out = b;
    used = 1;
    return step::character;
  }
  size_t length;
  char32_t c;
  if (b >= 0xC2 && b <= 0xDF) {
    length = 2;
    c = b & 0x1F;
  } else if (b >= 0xE0 && b <= 0xEF) {
    length = 3;
    c = b & 0x0F;
  } else if (b >= 0xF0 && b <= 0xF4) {
    length = 4;
    c = b & 0x07;
  } else {
    return step::invalid;
  }
  for (size_t i = 1; i < length; ++i) {
    if (i >= n) return step::incomplete;
    if ((p[i] & 0xC0) != 0x80) return step::invalid;
    c = (c << 6) | (p[i] & 0x3F);
    // Overlong forms, surrogates and values beyond U+10FFFF are caught as
    // soon as the second byte tells.
    if (i == 1 && ((length == 3 && c < 0x20) || (length == 3 && c >= 0x360 && c <= 0x37F) ||
                   (length == 4 && (c < 0x10 || c > 0x10F)))) {
      return step::invalid;
    }
  }
  out = c;
  used = length;
  return step::character;
}

step decode_utf16(converter& cv, const unsigned char* p, size_t n, char32_t& out, size_t& used) {
  if (n < 2) return step::incomplete;
  bool big = cv.from.kind == form::utf16be   ? true
             : cv.from.kind == form::utf16le ? false
                                             : cv.bigInput;
  uint32_t unit = read16(p, big);
  if (cv.from.kind == form::utf16 && cv.readMark) {
    if (unit == 0xFEFF || unit == 0xFFFE) {
      cv.bigInput = unit == 0xFFFE ? !big : big;
      cv.readMark = false;
      used = 2;
      return step::mark;
    }
  }
  if (unit >= 0xDC00 && unit <= 0xDFFF) return step::invalid;
  if (unit >= 0xD800 && unit <= 0xDBFF) {
    if (n < 4) return step::incomplete;
    uint32_t low = read16(p + 2, big);
    if (low < 0xDC00 || low > 0xDFFF) return step::invalid;
    out = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
    used = 4;
  } else {
    out = unit;
    used = 2;
  }
  cv.readMark = false;
  return step::character;
}

step decode_utf32(converter& cv, const unsigned char* p, size_t n, char32_t& out, size_t& used) {
  if (n < 4) return step::incomplete;
  bool big = cv.from.kind == form::utf32be   ? true
             : cv.from.kind == form::utf32le ? false
                                             : cv.bigInput;
  uint32_t unit = read32(p, big);
  if (cv.from.kind == form::utf32 && cv.readMark) {
    if (unit == 0xFEFF || unit == 0xFFFE0000u) {
      cv.bigInput = unit == 0xFFFE0000u ? !big : big;
      cv.readMark = false;
      used = 4;
      return step::mark;
    }
  }
  if (unit > 0x10FFFF || surrogate(unit)) return step::invalid;
  cv.readMark = false;
  out = unit;
  used = 4;
  return step::character;
}

step decode_system(const converter& cv, const unsigned char* p, size_t n, char32_t& out,
                   size_t& used) {
  UINT cp = cv.from.codePage;
  size_t length = 1;
  if (cv.from.kind == form::gb18030) {
    if (p[0] == 0x80 || p[0] == 0xFF) return step::invalid;
    if (p[0] > 0x80) {
      if (n < 2) return step::incomplete;
      length = p[1] >= 0x30 && p[1] <= 0x39 ? 4 : 2;
    }
  } else if (p[0] >= 0x80 && IsDBCSLeadByteEx(cp, p[0])) {
    length = 2;
  }
  if (n < length) return step::incomplete;
  wchar_t wide[2];
  int w = MultiByteToWideChar(cp, MB_ERR_INVALID_CHARS, reinterpret_cast<LPCCH>(p),
                              static_cast<int>(length), wide, 2);
  if (w == 1 && !surrogate(wide[0])) {
    out = wide[0];
  } else if (w == 2 && wide[0] >= 0xD800 && wide[0] <= 0xDBFF && wide[1] >= 0xDC00 &&
             wide[1] <= 0xDFFF) {
    out = 0x10000 + ((char32_t{wide[0]} - 0xD800) << 10) + (char32_t{wide[1]} - 0xDC00);
  } else {
    return step::invalid;
  }
  used = length;
  return step::character;
}

step decode(converter& cv, const unsigned char* p, size_t n, char32_t& out, size_t& used) {
  switch (cv.from.kind) {
    case form::utf8:
      return decode_utf8(p, n, out, used);
    case form::utf16:
    case form::utf16be:
    case form::utf16le:
      return decode_utf16(cv, p, n, out, used);
    case form::utf32:
    case form::utf32be:
    case form::utf32le:
      return decode_utf32(cv, p, n, out, used);
    case form::ucs2:
    case form::ucs2le:
    case form::ucs2be: {
      if (n < 2) return step::incomplete;
      uint32_t unit = read16(p, cv.from.kind == form::ucs2be);
      if (surrogate(unit)) return step::invalid;
      out = unit;
      used = 2;
      return step::character;
    }
    case form::ucs4:
    case form::ucs4be:
    case form::ucs4le: {
      if (n < 4) return step::incomplete;
      uint32_t unit = read32(p, cv.from.kind != form::ucs4le);
      if (unit > 0x10FFFF || surrogate(unit)) return step::invalid;
      out = unit;
      used = 4;
      return step::character;
    }
    case form::ascii:
      if (p[0] >= 0x80) return step::invalid;
      out = p[0];
      used = 1;
      return step::character;
    case form::latin1:
      out = p[0];
      used = 1;
      return step::character;
    case form::single_byte:
      if (cv.decodeTable[p[0]] == kInvalid) return step::invalid;
      out = cv.decodeTable[p[0]];
      used = 1;
      return step::character;
    case form::double_byte:
    case form::gb18030:
      return decode_system(cv, p, n, out, used);
  }
  return step::invalid;
}

// --- Encoding: one character into the output --------------------------------

void write16(unsigned char* p, uint32_t v, bool big) {
  p[big ? 0 : 1] = static_cast<unsigned char>(v >> 8);
  p[big ? 1 : 0] = static_cast<unsigned char>(v);
}

void write32(unsigned char* p, uint32_t v, bool big) {
  for (int i = 0; i < 4; ++i) p[big ? 3 - i : i] = static_cast<unsigned char>(v >> (8 * i));
}

// Writes c into bytes (room for 8); returns the count, 0 when the set has no
// such character.
size_t encode(converter& cv, char32_t c, unsigned char* bytes) {
  switch (cv.to.kind) {
    case form::utf8:
      if (c < 0x80) {
        bytes[0] = static_cast<unsigned char>(c);
        return 1;
      }
      if (c < 0x800) {
        bytes[0] = static_cast<unsigned char>(0xC0 | (c >> 6));
        bytes[1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        return 2;
      }
      if (c < 0x10000) {
        bytes[0] = static_cast<unsigned char>(0xE0 | (c >> 12));
        bytes[1] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
        bytes[2] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        return 3;
      }
      bytes[0] = static_cast<unsigned char>(0xF0 | (c >> 18));
      bytes[1] = static_cast<unsigned char>(0x80 | ((c >> 12) & 0x3F));
      bytes[2] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
      bytes[3] = static_cast<unsigned char>(0x80 | (c & 0x3F));
      return 4;
    case form::utf16:
    case form::utf16be:
    case form::utf16le: {
      bool big = cv.to.kind == form::utf16be;
      size_t at = 0;
      if (cv.to.kind == form::utf16 && cv.writeMark) {
        write16(bytes, kByteOrderMark, big);
        at = 2;
      }
      if (c < 0x10000) {
        write16(bytes + at, c, big);
        return at + 2;
      }
      write16(bytes + at, 0xD800 + ((c - 0x10000) >> 10), big);
      write16(bytes + at + 2, 0xDC00 + ((c - 0x10000) & 0x3FF), big);
      return at + 4;
    }
    case form::utf32:
    case form::utf32be:
    case form::utf32le: {
      bool big = cv.to.kind == form::utf32be;
      size_t at = 0;
      if (cv.to.kind == form::utf32 && cv.writeMark) {
        write32(bytes, kByteOrderMark, big);
        at = 4;
      }
      write32(bytes + at, c, big);
      return at + 4;
    }
    case form::ucs2:
    case form::ucs2be:
    case form::ucs2le:
      if (c >= 0x10000) return 0;
      write16(bytes, c, cv.to.kind == form::ucs2be);
      return 2;
    case form::ucs4:
    case form::ucs4be:
    case form::ucs4le:
      write32(bytes, c, cv.to.kind != form::ucs4le);
      return 4;
    case form::ascii:
    case form::latin1:
      if (c >= (cv.to.kind == form::ascii ? 0x80u : 0x100u)) return 0;
      bytes[0] = static_cast<unsigned char>(c);
      return 1;
    case form::single_byte: {
      auto it = std::lower_bound(cv.encodeTable.begin(), cv.encodeTable.end(), c,
                                 [](const auto& row, char32_t key) { return row.first < key; });
      if (it == cv.encodeTable.end() || it->first != c) return 0;
      bytes[0] = it->second;
      return 1;
    }
    case form::double_byte:
    case form::gb18030: {
      wchar_t wide[2];
      int w = 1;
      if (c < 0x10000) {
        wide[0] = static_cast<wchar_t>(c);
      } else {
        wide[0] = static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
        wide[1] = static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        w = 2;
      }
      // GB18030 holds every character; the system refuses the default
      // character test for it.  For the others a substituted default
      // character means the set has none.
      BOOL defaulted = FALSE;
      bool every = cv.to.kind == form::gb18030;
      int n = WideCharToMultiByte(cv.to.codePage, every ? 0 : WC_NO_BEST_FIT_CHARS, wide, w,
                                  reinterpret_cast<LPSTR>(bytes), 8, nullptr,
                                  every ? nullptr : &defaulted);
      return n <= 0 || defaulted ? 0 : static_cast<size_t>(n);
    }
  }
  return 0;
}

int convert(converter& cv, const char** in, size_t* inLeft, char** out, size_t* outLeft) {
  if (in == nullptr || *in == nullptr) {
    // None of these forms has shift states: flushing writes nothing, and
    // both reset a byte-order mark to be read and written again.
    cv.reset();
    return 0;
  }
  const auto* p = reinterpret_cast<const unsigned char*>(*in);
  size_t n = *inLeft;
  int result = 0;
  while (n > 0) {
    char32_t c = 0;
    size_t used = 0;
    step s = decode(cv, p, n, c, used);
    if (s == step::invalid) {
      result = EILSEQ;
      break;
    }
    if (s == step::incomplete) {
      result = EINVAL;
      break;
    }
    if (s == step::character) {
      unsigned char bytes[8];
      size_t length = encode(cv, c, bytes);
      if (length == 0) {
        result = EILSEQ;
        break;
      }
      if (out == nullptr || *out == nullptr || *outLeft < length) {
        result = E2BIG;
        break;
      }
      std::memcpy(*out, bytes, length);
      *out += length;
      *outLeft -= length;
      cv.writeMark = false;
    }
    p += used;
    n -= used;
  }
  // A mark read and then given back by a full output stays read: the input
  // after it is still in the order it announced.
  *in = reinterpret_cast<const char*>(p);
  *inLeft = n;
  return result;
}

int open_converter(const char* toName, const char* fromName, converter** result) {
  const set_form* from = find_form(fromName);
  const set_form* to = find_form(toName);
  if (from == nullptr || to == nullptr) return EINVAL;
  auto* cv = new (std::nothrow) converter;
  if (cv == nullptr) return ENOMEM;
  cv->from = *from;
  cv->to = *to;
  bool known = true;
  try {
    if (from->kind == form::single_byte) known = load_single_byte(*cv, *from, true);
    if (known && to->kind == form::single_byte) known = load_single_byte(*cv, *to, false);
  } catch (const std::bad_alloc&) {
    delete cv;
    return ENOMEM;
  }
  if (known && from->codePage != 0 && from->kind != form::single_byte) {
    known = system_knows(from->codePage);
  }
  if (known && to->codePage != 0 && to->kind != form::single_byte) {
    known = system_knows(to->codePage);
  }
  if (!known) {
    delete cv;
    return EINVAL;
  }
  *result = cv;
  return 0;
}

// A descriptor is either the DLL's or one of ours.
struct descriptor {
  void* dll = nullptr;
  converter* own = nullptr;
};

}  // namespace

int oru_iconv_open(const char* toName, const char* fromName, oru_iconv_t* cd) {
  auto* d = new (std::nothrow) descriptor;
  if (d == nullptr) return ENOMEM;
  const iconv_dll& dll = the_dll();
  int err = 0;
  if (dll.open != nullptr) {
    clear_errno(dll);
    void* handle = dll.open(toName, fromName);
    if (handle == reinterpret_cast<void*>(-1)) {
      err = read_errno(dll);
    } else {
      d->dll = handle;
    }
  } else {
    err = open_converter(toName, fromName, &d->own);
  }
  if (err != 0) {
    delete d;
    return err;
  }
  *cd = d;
  return 0;
}

int oru_iconv(oru_iconv_t cd, const char** in, size_t* inLeft, char** out, size_t* outLeft) {
  auto* d = static_cast<descriptor*>(cd);
  if (d == nullptr) return EBADF;
  if (d->own != nullptr) return convert(*d->own, in, inLeft, out, outLeft);
  const iconv_dll& dll = the_dll();
  clear_errno(dll);
  size_t r = dll.convert(d->dll, in, inLeft, out, outLeft);
  return r == static_cast<size_t>(-1) ? read_errno(dll) : 0;
}

void oru_iconv_close(oru_iconv_t cd) {
  auto* d = static_cast<descriptor*>(cd);
  if (d == nullptr) return;
  if (d->own != nullptr) {
    delete d->own;
  } else {
    the_dll().close(d->dll);
  }
  delete d;
}

}  // namespace oru_charset
