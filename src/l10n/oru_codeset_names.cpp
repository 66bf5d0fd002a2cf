// Turning the codeset of a locale name into a registered character-set name.
// Windows names carry code page numbers ("1252"); POSIX names carry set names
// in the registry's spellings ("UTF-8", "ISO-8859-1") or in glibc's
// normalised ones ("utf8", "iso88591", "eucjp").

#include "l10n/oru_locale_internal.h"
#include "l10n/oru_locale_tables.h"
#include "oru/text.h"

namespace oru_l10n {
namespace {

// glibc's normal form: letters lower-cased, digits kept, all else dropped.
std::string normalise(const char* name) {
  std::string out;
  for (const char* p = name; *p; ++p) {
    char c = *p;
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) out += c;
  }
  return out;
}

bool all_digits(const std::string& s) {
  if (s.empty()) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

bool from_mib(int32_t mib, std::string& out) {
  if (mib < 0) return false;
  const char* name = oruMIBenumToCSMIMEName(static_cast<uint32_t>(mib));
  if (name == nullptr) return false;
  out = name;
  return true;
}

}  // namespace

bool oru_resolve_codeset(const std::string& codeset, std::string& out) {
  if (const char* cp = oru_locale_lookup(oruCodePageTable, oruCodePageTableSize, codeset.c_str())) {
    out = cp;
    return true;
  }
  // "CP1252" and "cp1252" are code page numbers too.
  if (codeset.size() > 2 && (codeset[0] == 'c' || codeset[0] == 'C') &&
      (codeset[1] == 'p' || codeset[1] == 'P') && all_digits(codeset.substr(2))) {
    if (const char* cp =
            oru_locale_lookup(oruCodePageTable, oruCodePageTableSize, codeset.c_str() + 2)) {
      out = cp;
      return true;
    }
  }
  if (from_mib(oruCSNameToMIBenum(codeset.c_str()), out)) return true;
  std::string key = normalise(codeset.c_str());
  if (key.empty()) return false;
  uint32_t mib = 0;
  for (size_t i = 0; const char* name = _oruCSNameAt(i, &mib); ++i) {
    if (normalise(name) == key) return from_mib(static_cast<int32_t>(mib), out);
  }
  return false;
}

}  // namespace oru_l10n
