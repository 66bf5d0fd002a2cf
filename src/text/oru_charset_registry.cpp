// Name and number lookups over the compiled-in registry: binary searches,
// no allocation, no locks.

#include "core/oru_internal.h"
#include "oru/text.h"
#include "text/oru_charset_tables.h"

namespace oru_charset {
namespace {

// Binary search of a MIBenum-sorted table; nullptr when absent.
const char* find_mib(const oruCSMIBRow* rows, size_t count, uint32_t mib) {
  size_t lo = 0, hi = count;
  while (lo < hi) {
    size_t mid = (lo + hi) / 2;
    if (rows[mid].mib == mib) return rows[mid].name;
    if (rows[mid].mib < mib) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return nullptr;
}

}  // namespace

const char* oru_charset_iconv_name(uint32_t mib) {
  return find_mib(oruIconvNameTable, oruIconvNameTableSize, mib);
}

}  // namespace oru_charset

using namespace oru_charset;

extern "C" {

ORU_API int32_t oruCSNameToMIBenum(const char* name) {
  if (name == nullptr) return -1;
  size_t lo = 0, hi = oruCSNameTableSize;
  while (lo < hi) {
    size_t mid = (lo + hi) / 2;
    int c = oru_charset_name_compare(name, oruCSNameTable[mid].name);
    if (c == 0) return static_cast<int32_t>(oruCSNameTable[mid].mib);
    if (c < 0) {
      hi = mid;
    } else {
      lo = mid + 1;
    }
  }
  return -1;
}

ORU_API const char* oruMIBenumToCSName(uint32_t mib) {
  return find_mib(oruCSMIBTable, oruCSMIBTableSize, mib);
}

ORU_API const char* oruMIBenumToCSMIMEName(uint32_t mib) {
  const char* mime = find_mib(oruCSMIMETable, oruCSMIMETableSize, mib);
  return mime != nullptr ? mime : find_mib(oruCSMIBTable, oruCSMIBTableSize, mib);
}

ORU_API const char* _oruCSNameAt(size_t index, uint32_t* mibOut) {
  if (index >= oruCSNameTableSize) return nullptr;
  if (mibOut != nullptr) *mibOut = oruCSNameTable[index].mib;
  return oruCSNameTable[index].name;
}

}  // extern "C"
