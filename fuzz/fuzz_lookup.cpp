// Name lookups on random text: character-set names, Windows-style locale
// names, the CLDR display names, the ISO 3166 lists, and getopt on random
// argument vectors.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "oru/core.h"
#include "oru/l10n.h"
#include "oru/system.h"
#include "oru/text.h"
#include "oru/unicode.h"

namespace {

std::string ascii_upper(std::string s) {
  for (char& c : s) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return s;
}

void check_charset(const std::string& name) {
  int32_t mib = oruCSNameToMIBenum(name.c_str());
  FUZZ_CHECK(mib >= -1);
  // Case does not matter.
  FUZZ_CHECK(oruCSNameToMIBenum(ascii_upper(name).c_str()) == mib);
  if (mib < 0) {
    FUZZ_CHECK(mib == -1);
    return;
  }
  FUZZ_CHECK(!name.empty());
  const char* primary = oruMIBenumToCSName(static_cast<uint32_t>(mib));
  FUZZ_CHECK(primary != nullptr && oruCSNameToMIBenum(primary) == mib);
  const char* mime = oruMIBenumToCSMIMEName(static_cast<uint32_t>(mib));
  FUZZ_CHECK(mime != nullptr && oruCSNameToMIBenum(mime) == mib);
}

void check_native_locale(const std::string& native, size_t size) {
  std::vector<char> big(512);
  oruResult rc = oruNativeToStdLocale(native.c_str(), big.data(), big.size());
  std::vector<char> buf(size + 1, '\x5A');
  oruResult r = oruNativeToStdLocale(native.c_str(), size == 0 ? buf.data() : buf.data(), size);
  FUZZ_CHECK(buf[size] == '\x5A');
  if (size == 0) {
    FUZZ_CHECK(r == ORU_E_INVALID_ARG);
    return;
  }
  if (rc != ORU_OK) {
    FUZZ_CHECK(rc == ORU_E_INVALID_ARG);
    FUZZ_CHECK(r == ORU_E_INVALID_ARG || r == ORU_E_BUFFER_TOO_SMALL);
    return;
  }
  size_t len = std::strlen(big.data());
  // language_TERRITORY.charset: two letters, "_", two letters, ".".
  FUZZ_CHECK(len >= 7 && big[2] == '_' && big[5] == '.');
  if (size > len) {
    FUZZ_CHECK(r == ORU_OK && std::strcmp(buf.data(), big.data()) == 0);
  } else {
    FUZZ_CHECK(r == ORU_E_BUFFER_TOO_SMALL);
  }
}

bool well_formed_locale(const std::string& l) {
  auto lower = [](char c) { return c >= 'a' && c <= 'z'; };
  auto upper = [](char c) { return c >= 'A' && c <= 'Z'; };
  if (l.size() == 2) return lower(l[0]) && lower(l[1]);
  return l.size() == 5 && lower(l[0]) && lower(l[1]) && l[2] == '_' && upper(l[3]) && upper(l[4]);
}

void check_cldr(const std::string& code, const std::string& locale) {
  typedef const char* (*Fn)(const char*, const char*);
  const Fn fns[] = {oruCLDRGetLanguageDisplayName, oruCLDRGetTerritoryDisplayName,
                    oruCLDRGetCurrencyDisplayName, oruCLDRGetCurrencySymbol};
  for (Fn fn : fns) {
    const char* name = fn(code.c_str(), locale.c_str());
    if (!well_formed_locale(locale)) FUZZ_CHECK(name == nullptr);
    if (name != nullptr) {
      FUZZ_CHECK(oruUTF8Validate(name, -1, nullptr) == 1);
    }
    FUZZ_CHECK(fn(nullptr, locale.c_str()) == nullptr && fn(code.c_str(), nullptr) == nullptr);
  }
}

void check_iso3166(const std::string& code) {
  const char* name = oruGetISO3166CountryName(code.c_str());
  const char** subs = oruGetISO3166Subdivisions(code.c_str());
  FUZZ_CHECK((name == nullptr) == (subs == nullptr));
  if (subs != nullptr) {
    for (const char** s = subs; *s != nullptr; ++s) {
      const size_t n = std::strlen(code.c_str());
      FUZZ_CHECK(std::strncmp(*s, code.c_str(), n) == 0 && (*s)[n] == '-');
      FUZZ_CHECK(oruGetISO3166SubdivisionName(*s) != nullptr);
      if (s != subs) FUZZ_CHECK(std::strcmp(s[-1], *s) < 0);
    }
    oruFree(subs);
  }
  const char* sub = oruGetISO3166SubdivisionName(code.c_str());
  if (sub != nullptr) {
    size_t dash = std::string(code.c_str()).find('-');
    FUZZ_CHECK(dash != std::string::npos);
    FUZZ_CHECK(oruGetISO3166CountryName(code.substr(0, dash).c_str()) != nullptr);
  }
}

void check_getopt(std::vector<std::string>& args, const std::string& optstring) {
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  const int argc = static_cast<int>(args.size());
  opterr = 0;
  optind = 1;
  // Every call but the last consumes an option character or an argument.
  size_t bound = args.size() + 1;
  for (const std::string& a : args) bound += a.size();
  for (size_t steps = 0;; ++steps) {
    FUZZ_CHECK(steps <= bound);
    int c = getopt(argc, argv.data(), optstring.c_str());
    if (c == -1) break;
    FUZZ_CHECK(c >= 0 && c <= 255);
    FUZZ_CHECK(optind >= 0 && optind <= argc + 1);
    if (c == '?' || c == ':') {
      FUZZ_CHECK(c != ':' || (!optstring.empty() && optstring[0] == ':'));
      continue;
    }
    // A reported option is one of optstring (not ':').
    const char* at = std::strchr(optstring.c_str(), c);
    FUZZ_CHECK(c != 0 && c != ':' && at != nullptr);
    if (at[1] == ':') {
      FUZZ_CHECK(optarg != nullptr);
      bool inside = false;
      for (int i = 0; i < argc; ++i) {
        inside |= optarg >= argv[i] && optarg <= argv[i] + args[i].size();
      }
      FUZZ_CHECK(inside);
    }
  }
  FUZZ_CHECK(optind >= 0 && optind <= argc);
  // Operands are never permuted.
  for (int i = 0; i < argc; ++i) FUZZ_CHECK(argv[i] == args[i].data());
  optind = 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  // The functions see C strings: up to the first NUL.
  const std::string a = in.ConsumeRandomLengthString(80).c_str();
  const std::string b = in.ConsumeRandomLengthString(16).c_str();

  check_charset(a);
  check_native_locale(a, in.ConsumeIntegralInRange<size_t>(0, 40));
  check_cldr(a, b);
  check_cldr(b, a);
  check_iso3166(a);
  check_iso3166(b);

  std::string optstring = in.ConsumeRandomLengthString(16);
  std::vector<std::string> args{"prog"};
  while (in.remaining_bytes() > 0 && args.size() < 64)
    args.push_back(in.ConsumeRandomLengthString(12));
  check_getopt(args, optstring);
  return 0;
}
