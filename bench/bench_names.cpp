// Display names and ISO 3166 lookups.  Territory names in a regional locale
// that falls back to its language (de_CH asks de for most territories), side
// by side with ICU's uloc_getDisplayCountry; the names may differ with the
// CLDR release, which does not matter for the timing.  Subdivision names
// have no peer: every code in turn.
#include "oru/l10n.h"

#include <benchmark/benchmark.h>
#include <unicode/uloc.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// Territories that de_CH does not name itself.
const char* const kTerritories[] = {"FR", "IT", "US", "JP", "BR", "CN", "IN", "ZA",
                                    "AU", "NO", "SE", "PL", "MX", "EG", "KR", "AR"};
constexpr size_t kCount = sizeof kTerritories / sizeof kTerritories[0];

void BM_TerritoryName_oru(benchmark::State& state) {
  size_t i = 0;
  for (auto _ : state) {
    const char* name = oruCLDRGetTerritoryDisplayName(kTerritories[i], "de_CH");
    benchmark::DoNotOptimize(name);
    i = (i + 1) % kCount;
  }
}
BENCHMARK(BM_TerritoryName_oru);

void BM_TerritoryName_icu(benchmark::State& state) {
  // ICU names the territory of a locale ID: "_FR" is France.
  std::vector<std::string> ids;
  for (const char* t : kTerritories) ids.push_back(std::string("_") + t);
  UChar buffer[128];
  size_t i = 0;
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = uloc_getDisplayCountry(ids[i].c_str(), "de_CH", buffer, 128, &status);
    if (U_FAILURE(status) || n <= 0) {
      state.SkipWithError("uloc_getDisplayCountry failed");
      break;
    }
    benchmark::DoNotOptimize(buffer);
    i = (i + 1) % kCount;
  }
}
BENCHMARK(BM_TerritoryName_icu);

void BM_SubdivisionName_oru_all(benchmark::State& state) {
  std::vector<std::string> codes;
  const char** countries = oruGetISO3166Countries();
  for (const char** c = countries; c != nullptr && *c != nullptr; ++c) {
    const char** subs = oruGetISO3166Subdivisions(*c);
    for (const char** s = subs; s != nullptr && *s != nullptr; ++s) codes.push_back(*s);
    oruFree(subs);
  }
  oruFree(countries);
  for (auto _ : state) {
    for (const std::string& code : codes) {
      const char* name = oruGetISO3166SubdivisionName(code.c_str());
      if (name == nullptr) std::abort();
      benchmark::DoNotOptimize(name);
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * codes.size()));
}
BENCHMARK(BM_SubdivisionName_oru_all);

}  // namespace
