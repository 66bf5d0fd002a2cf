// Decimal parsing, narrow and wide, with random decimal-point and group
// characters.  Checks: an error is final; narrow and wide parsers given
// the same characters answer the same; ParseString reads exactly the
// longest prefix the incremental parser calls a number and gives its
// value; a parser of one precision gives the quiet NaN from the other
// widths; a parsed finite value survives ToString and parsing back.
//
// Input: precision selector, decimal point, group separator, skip-space
// flag, then the text.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "oru/core.h"
#include "oru/decimal.h"

namespace {

struct Values {
  oruDec32 d32;
  oruDec64 d64;
  oruDec128 d128;
  int flags;
};

Values values(const oruDecParser& p) {
  Values v;
  oruDecLowerFlags(0x1F);
  v.d32 = oruDec32ParseGetValue(&p);
  v.d64 = oruDec64ParseGetValue(&p);
  oruDec128ParseGetValue(&v.d128, &p);
  v.flags = oruDecSaveFlags();
  return v;
}

// Feeds text (up to limit characters) and returns the results.
std::vector<int> feed(oruDecParser& p, const std::string& text, size_t limit, bool wide) {
  std::vector<int> results;
  for (size_t i = 0; i < text.size() && i < limit; ++i) {
    int r = wide ? oruDecParseNextWChar(&p, static_cast<unsigned char>(text[i]))
                 : oruDecParseNextChar(&p, text[i]);
    FUZZ_CHECK(r >= 0 && r <= 3);
    results.push_back(r);
    if (r & 2) break;
  }
  return results;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4) return 0;
  static const uint32_t kPrecisions[] = {7, 16, 34, 16, 34, 7, 16, 5};
  const uint32_t precision = kPrecisions[data[0] & 7];
  const char point = static_cast<char>(data[1]);
  const char group = static_cast<char>(data[2]);
  const int skipSpace = data[3] & 1;
  const std::string text(reinterpret_cast<const char*>(data + 4), size - 4);
  const int saved = oruDecSaveFlags();

  // Narrow and wide, fed the same characters.
  oruDecParser narrow, wide;
  const int init = oruDecParseInit(&narrow, precision, point, group, skipSpace);
  const int initW = oruDecParseInitW(&wide, precision, static_cast<unsigned char>(point),
                                     static_cast<unsigned char>(group), skipSpace);
  FUZZ_CHECK(init == initW);
  FUZZ_CHECK(init ==
             ((point == 0 || (precision != 7 && precision != 16 && precision != 34)) ? -1 : 0));
  const std::vector<int> results = feed(narrow, text, text.size(), false);
  FUZZ_CHECK(feed(wide, text, text.size(), true) == results);
  FUZZ_CHECK(std::memcmp(&narrow, &wide, sizeof narrow) == 0);
  if (init != 0) {
    for (int r : results) FUZZ_CHECK(r == ORU_DEC_PARSE_ERROR);
  }
  bool error = false;
  for (size_t i = 0; i < results.size(); ++i) {
    if (error) FUZZ_CHECK(results[i] == ORU_DEC_PARSE_ERROR);
    error |= results[i] == ORU_DEC_PARSE_ERROR;
  }
  const Values all = values(narrow);
  // Only the parser's own width gives a number.
  if (precision != 7) FUZZ_CHECK(all.d32 == oruDEC32_QUIET_NAN);
  if (precision != 16) FUZZ_CHECK(all.d64 == oruDEC64_QUIET_NAN);
  if (precision != 34) {
    FUZZ_CHECK(all.d128.w[0] == oruDEC128_QUIET_NAN.w[0] &&
               all.d128.w[1] == oruDEC128_QUIET_NAN.w[1]);
  }

  // ParseString on the text up to its first NUL, leading space skipped.
  if (init == 0 && skipSpace) {
    const std::string z = text.c_str();
    oruDecNumberFormat format{};
    format.decimalPoint = static_cast<unsigned char>(point);
    format.groupSeparator = static_cast<unsigned char>(group);
    oruDecParser prefix;
    oruDecParseInit(&prefix, precision, point, group, 1);
    std::vector<int> zr = feed(prefix, z, z.size(), false);
    size_t zlongest = 0;
    for (size_t i = 0; i < zr.size(); ++i) {
      if (zr[i] & 1) zlongest = i + 1;
    }
    oruDecParseInit(&prefix, precision, point, group, 1);
    feed(prefix, z, zlongest, false);
    const Values want = values(prefix);
    const char* end = nullptr;
    oruDecLowerFlags(0x1F);
    if (precision == 7) {
      oruDec32 v = oruDec32ParseString(&format, z.c_str(), &end);
      FUZZ_CHECK(zlongest == 0 ? v == 0x32800000u : v == want.d32);
    } else if (precision == 16) {
      oruDec64 v = oruDec64ParseString(&format, z.c_str(), &end);
      FUZZ_CHECK(zlongest == 0 ? v == 0x31C0000000000000ull : v == want.d64);
      // The value survives ToString and parsing back.
      if (zlongest != 0 && oruDec64IsFinite(v)) {
        char buf[ORU_DEC64_STRING_MAX];
        FUZZ_CHECK(oruDec64ToString(v, buf, sizeof buf, nullptr) == ORU_OK);
        FUZZ_CHECK(oruDec64ParseString(nullptr, buf, nullptr) == v);
      }
    } else {
      oruDec128 v;
      oruDec128ParseString(&v, &format, z.c_str(), &end);
      if (zlongest != 0) {
        FUZZ_CHECK(v.w[0] == want.d128.w[0] && v.w[1] == want.d128.w[1]);
        if (oruDec128IsFinite(&v)) {
          char buf[ORU_DEC128_STRING_MAX];
          FUZZ_CHECK(oruDec128ToString(&v, buf, sizeof buf, nullptr) == ORU_OK);
          oruDec128 back;
          oruDec128ParseString(&back, nullptr, buf, nullptr);
          FUZZ_CHECK(back.w[0] == v.w[0] && back.w[1] == v.w[1]);
        }
      }
    }
    FUZZ_CHECK(end == z.c_str() + zlongest);
    // A format without a decimal point reads nothing.
    format.decimalPoint = 0;
    end = nullptr;
    FUZZ_CHECK(oruDec64ParseString(&format, z.c_str(), &end) == 0x31C0000000000000ull);
    FUZZ_CHECK(end == z.c_str());
  }
  oruDecRestoreFlags(saved, 0x1F);
  return 0;
}
