// The compiled-in character-set registry and the codec-name table, generated
// by data/charsets/gen_charsets.py.
#ifndef ORU_SRC_TEXT_ORU_CHARSET_TABLES_H
#define ORU_SRC_TEXT_ORU_CHARSET_TABLES_H

#include <cstddef>
#include <cstdint>

namespace oru_charset {

struct oruCSNameRow {
  const char* name;
  uint32_t mib;
};

struct oruCSMIBRow {
  uint32_t mib;
  const char* name;
};

// Every name and alias, sorted under oru_charset_name_compare.
extern const oruCSNameRow oruCSNameTable[];
extern const size_t oruCSNameTableSize;
// Primary names, one row per MIBenum, ascending.
extern const oruCSMIBRow oruCSMIBTable[];
extern const size_t oruCSMIBTableSize;
// Preferred MIME names, ascending by MIBenum.
extern const oruCSMIBRow oruCSMIMETable[];
extern const size_t oruCSMIMETableSize;
// iconv names of the convertible sets, ascending by MIBenum, followed by a
// terminating {0, nullptr} row that is not counted in the size.
extern const oruCSMIBRow oruIconvNameTable[];
extern const size_t oruIconvNameTableSize;

// The name table's order: bytes compared ASCII case-insensitively, and a key
// that is a prefix of a name sorts before it (the raw difference at the
// key's terminator).  No folding of punctuation.
inline int oru_charset_name_compare(const char* key, const char* name) {
  auto lower = [](unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; };
  const auto* k = reinterpret_cast<const unsigned char*>(key);
  const auto* n = reinterpret_cast<const unsigned char*>(name);
  if (*k == 0) return int{*k} - int{*n};
  for (;;) {
    if (*n == 0) return int{*k} - int{*n};
    int a = lower(*k), b = lower(*n);
    if (a != b) return a - b;
    ++k;
    ++n;
    if (*k == 0) return int{*k} - int{*n};
  }
}

// The iconv name for a MIBenum, or nullptr when the set has no converter.
const char* oru_charset_iconv_name(uint32_t mib);

}  // namespace oru_charset

#endif  // ORU_SRC_TEXT_ORU_CHARSET_TABLES_H
