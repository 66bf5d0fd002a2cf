// Normalization in the four forms and the three case mappings in UCS-4,
// UTF-16 and UTF-8.  Checks: results are terminated and well-formed where
// documented; the three encodings agree on valid text; normalizing twice
// equals normalizing once (NFC, NFD), NFD of NFC is NFD; decompositions
// never write past their capacity; canonical ordering keeps canonical
// equivalence; results stay within Unicode's expansion limits.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "oru/core.h"
#include "oru/l10n.h"
#include "oru/unicode.h"

namespace {

using u32s = std::vector<uint32_t>;
using u16s = std::vector<uint16_t>;

template <typename T>
std::vector<T> take(T* p, uint32_t n) {
  std::vector<T> v(p, p + n);
  oruFree(p);
  return v;
}

// Decodes valid UTF-8 / UTF-16 (checked beforehand) into code points.
u32s from8(const char* s, size_t len) {
  u32s out;
  for (size_t i = 0; i < len;) {
    uint32_t c = oruUTF8GetChar(s + i);
    FUZZ_CHECK(c != 0xFFFFFFFFu);
    out.push_back(c);
    char buf[4];
    i += static_cast<size_t>(oruUTF8PutChar(buf, c) - buf);
  }
  return out;
}
u32s from16(const uint16_t* s, size_t len) {
  u32s out;
  for (size_t i = 0; i < len;) {
    uint32_t c = oruUTF16GetChar(s + i);
    FUZZ_CHECK(c != 0xFFFFFFFFu);
    out.push_back(c);
    i += c >= 0x10000 ? 2 : 1;
  }
  return out;
}
std::string to8(const u32s& cps) {
  std::string out;
  for (uint32_t c : cps) {
    char buf[4];
    out.append(buf, oruUTF8PutChar(buf, c));
  }
  return out;
}
u16s to16(const u32s& cps) {
  u16s out;
  for (uint32_t c : cps) {
    uint16_t buf[2];
    out.insert(out.end(), buf, oruUTF16PutChar(buf, c));
  }
  return out;
}

u32s norm4(const u32s& s, uint32_t form) {
  uint32_t n = 1;
  uint32_t* r = oruUCS4Normalize(s.data(), static_cast<uint32_t>(s.size()), form, &n);
  if (s.empty()) {
    FUZZ_CHECK(r == nullptr && n == 0);
    return {};
  }
  FUZZ_CHECK(r != nullptr);
  return take(r, n);
}
u16s norm16(const u16s& s, uint32_t form) {
  uint32_t n = 1;
  uint16_t* r = oruUTF16Normalize(s.data(), static_cast<uint32_t>(s.size()), form, &n);
  if (s.empty()) {
    FUZZ_CHECK(r == nullptr && n == 0);
    return {};
  }
  FUZZ_CHECK(r != nullptr);
  return take(r, n);
}
std::string norm8(const std::string& s, uint32_t form) {
  uint32_t n = 0xFFFFFFFFu;
  char* r = oruUTF8Normalize(s.data(), static_cast<int32_t>(s.size()), form, &n);
  FUZZ_CHECK(r != nullptr && r[n] == '\0');
  std::string out(r, n);
  oruFree(r);
  return out;
}

typedef uint32_t* (*Case4)(const uint32_t*, uint32_t, uint32_t*);
typedef uint16_t* (*Case16)(const uint16_t*, uint32_t, uint32_t*);
typedef char* (*Case8)(const char*, int32_t, uint32_t*);
const Case4 kCase4[] = {oruUCS4ToLower, oruUCS4ToUpper, oruUCS4Casefold};
const Case16 kCase16[] = {oruUTF16ToLower, oruUTF16ToUpper, oruUTF16Casefold};
const Case8 kCase8[] = {oruUTF8ToLower, oruUTF8ToUpper, oruUTF8Casefold};

// Unicode's limits on how far one code point expands (code points).
const uint32_t kNormExpansion[] = {4, 18, 3, 18};  // NFD, NFKD, NFC, NFKC
constexpr uint32_t kCaseExpansion = 3;

// Decomposition into buffers of every capacity up to the full length:
// the return value never changes, nothing is written past capacity, and
// the full buffer holds whole characters.
template <typename T, typename F>
void check_decompose(F fn, uint32_t c, int canonicalOnly) {
  uint32_t need = fn(c, canonicalOnly, nullptr, 0);
  FUZZ_CHECK(need >= 1 && need <= 18 * 4);
  std::vector<T> full(need);
  FUZZ_CHECK(fn(c, canonicalOnly, full.data(), need) == need);
  for (uint32_t cap = 1; cap < need; ++cap) {
    std::vector<T> buf(cap + 2, static_cast<T>(0x5A));
    FUZZ_CHECK(fn(c, canonicalOnly, buf.data(), cap) == need);
    FUZZ_CHECK(buf[cap] == static_cast<T>(0x5A) && buf[cap + 1] == static_cast<T>(0x5A));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  static const char* const kLanguages[] = {"en", "tr", "az", "lt", "de"};
  const char* language = kLanguages[in.ConsumeIntegralInRange<int>(0, 4)];
  FUZZ_CHECK(oruSetLocaleParam(ORU_LP_LANGUAGE, language) == ORU_OK);
  const bool wide = in.ConsumeBool();
  std::vector<uint8_t> bytes = in.ConsumeRemainingBytes<uint8_t>();

  // The raw bytes as UTF-8 (often ill-formed), as UTF-16 units and as UCS-4.
  std::string s8(bytes.begin(), bytes.end());
  u16s s16(bytes.size() / 2);
  if (!s16.empty()) std::memcpy(s16.data(), bytes.data(), s16.size() * 2);
  u32s s4(bytes.size() / 4);
  if (!s4.empty()) std::memcpy(s4.data(), bytes.data(), s4.size() * 4);
  // Mostly code points of the planes in use, sometimes anything.
  if (!wide) {
    for (uint32_t& c : s4) c %= 0x30000;
  }

  // Every entry point on arbitrary input: no crash, terminators in place.
  for (uint32_t form = 0; form < 4; ++form) {
    norm8(s8, form);
    norm16(s16, form);
    u32s r = norm4(s4, form | (wide ? 0x100u : 0u));  // higher bits are ignored
    FUZZ_CHECK(r == norm4(s4, form));
  }
  for (int m = 0; m < 3; ++m) {
    uint32_t n = 0;
    char* r8 = kCase8[m](s8.data(), static_cast<int32_t>(s8.size()), &n);
    FUZZ_CHECK(r8 != nullptr && r8[n] == '\0');
    oruFree(r8);
    uint16_t* r16 = kCase16[m](s16.data(), static_cast<uint32_t>(s16.size()), &n);
    FUZZ_CHECK((r16 == nullptr) == s16.empty());
    oruFree(r16);
    uint32_t* r4 = kCase4[m](s4.data(), static_cast<uint32_t>(s4.size()), &n);
    FUZZ_CHECK((r4 == nullptr) == s4.empty());
    if (r4 != nullptr) FUZZ_CHECK(n <= kCaseExpansion * s4.size());
    oruFree(r4);
  }
  {
    // Canonical ordering in place never changes lengths or crashes.
    std::string o8 = s8;
    oruUTF8CanonicalOrdering(o8.data(), static_cast<int32_t>(o8.size()));
    u16s o16 = s16;
    oruUTF16CanonicalOrdering(o16.data(), static_cast<uint32_t>(o16.size()));
  }

  // Valid text: the UTF-8 bytes decoded, the UTF-16 and UCS-4 forms built
  // from the same code points.
  if (oruUTF8Validate(s8.data(), static_cast<int32_t>(s8.size()), nullptr) == 1) {
    u32s cps = from8(s8.data(), s8.size());
    const u16s c16 = to16(cps);
    FUZZ_CHECK(oruUTF16Validate(c16.data(), static_cast<uint32_t>(c16.size()), nullptr) == 1);
    u32s nfd;
    for (uint32_t form = 0; form < 4; ++form) {
      u32s r4 = norm4(cps, form);
      FUZZ_CHECK(r4.size() <= kNormExpansion[form] * cps.size());
      std::string r8 = norm8(s8, form);
      FUZZ_CHECK(oruUTF8Validate(r8.data(), static_cast<int32_t>(r8.size()), nullptr) == 1);
      FUZZ_CHECK(from8(r8.data(), r8.size()) == r4);
      u16s r16 = norm16(c16, form);
      FUZZ_CHECK(oruUTF16Validate(r16.data(), static_cast<uint32_t>(r16.size()), nullptr) == 1);
      FUZZ_CHECK(from16(r16.data(), r16.size()) == r4);
      if (form == ORU_NFD) nfd = r4;
      if (form == ORU_NFD || form == ORU_NFC) {
        FUZZ_CHECK(norm4(r4, form) == r4);
        FUZZ_CHECK(norm8(r8, form) == r8);
        FUZZ_CHECK(norm16(r16, form) == r16);
      }
      if (form == ORU_NFC) FUZZ_CHECK(norm4(r4, ORU_NFD) == nfd);
    }
    // Canonical ordering keeps canonical equivalence.
    u32s ordered = cps;
    oruUCS4CanonicalOrdering(ordered.data(), static_cast<uint32_t>(ordered.size()));
    FUZZ_CHECK(norm4(ordered, ORU_NFD) == nfd);
    std::string o8 = s8;
    oruUTF8CanonicalOrdering(o8.data(), static_cast<int32_t>(o8.size()));
    FUZZ_CHECK(o8 == to8(ordered));
    u16s o16 = c16;
    oruUTF16CanonicalOrdering(o16.data(), static_cast<uint32_t>(o16.size()));
    FUZZ_CHECK(o16 == to16(ordered));

    for (int m = 0; m < 3; ++m) {
      uint32_t n4 = 0, n8 = 0, n16 = 0;
      uint32_t* r4 = kCase4[m](cps.data(), static_cast<uint32_t>(cps.size()), &n4);
      u32s v4 = r4 != nullptr ? take(r4, n4) : u32s();
      FUZZ_CHECK(v4.size() <= kCaseExpansion * cps.size());
      char* r8 = kCase8[m](s8.data(), static_cast<int32_t>(s8.size()), &n8);
      FUZZ_CHECK(r8 != nullptr);
      std::string v8(r8, n8);
      oruFree(r8);
      FUZZ_CHECK(oruUTF8Validate(v8.data(), static_cast<int32_t>(v8.size()), nullptr) == 1);
      FUZZ_CHECK(from8(v8.data(), v8.size()) == v4);
      uint16_t* r16 = kCase16[m](c16.data(), static_cast<uint32_t>(c16.size()), &n16);
      u16s v16 = r16 != nullptr ? take(r16, n16) : u16s();
      FUZZ_CHECK(from16(v16.data(), v16.size()) == v4);
    }

    // Per character: decompositions in the three encodings agree and keep
    // within their capacity.
    size_t count = 0;
    for (uint32_t c : cps) {
      if (++count > 64) break;
      for (int canonicalOnly = 0; canonicalOnly < 2; ++canonicalOnly) {
        check_decompose<uint32_t>(oruUCS4Decompose, c, canonicalOnly);
        check_decompose<uint16_t>(oruUTF16Decompose, c, canonicalOnly);
        check_decompose<char>(oruUTF8Decompose, c, canonicalOnly);
        uint32_t n = oruUCS4Decompose(c, canonicalOnly, nullptr, 0);
        u32s d(n);
        oruUCS4Decompose(c, canonicalOnly, d.data(), n);
        std::string d8(oruUTF8Decompose(c, canonicalOnly, nullptr, 0), '\0');
        oruUTF8Decompose(c, canonicalOnly, d8.data(), static_cast<uint32_t>(d8.size()));
        FUZZ_CHECK(d8 == to8(d));
        // The full decomposition is what NFD / NFKD make of the lone
        // character.
        FUZZ_CHECK(norm4(u32s{c}, canonicalOnly ? ORU_NFD : ORU_NFKD) == d);
      }
    }
  }
  return 0;
}
