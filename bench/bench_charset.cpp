// oruConvertString against the C library's iconv called directly with a
// descriptor opened once (the output allocated per call, as oruConvertString
// does), UTF-8 to UTF-16LE and to ISO-8859-1 on 64 B and 1 MiB; and
// oruCSNameToMIBenum against a strcasecmp loop over the same names.
#include "oru/text.h"

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <strings.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

// Latin-1 text in UTF-8, so both targets can encode every character.
std::string text(size_t n) {
  static const std::string unit =
      "Gr\xC3\xBC\xC3\x9F"
      "e aus K\xC3\xB6ln, \xC3\xA7"
      "a va? 0123456789 ";
  std::string s;
  while (s.size() < n) s += unit;
  s.resize(n);
  while (!s.empty() && (static_cast<unsigned char>(s.back()) & 0xC0) == 0x80) s.pop_back();
  if (!s.empty() && static_cast<unsigned char>(s.back()) >= 0xC0) s.pop_back();
  return s;
}

void sizes(benchmark::internal::Benchmark* b) { b->Arg(64)->Arg(1 << 20); }

void BM_OruConvertString(benchmark::State& state, const char* to) {
  const std::string in = text(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    char* out = nullptr;
    size_t len = 0;
    if (oruConvertString(in.data(), in.size(), "UTF-8", to, nullptr, &len, nullptr, &out) != ORU_OK)
      state.SkipWithError("conversion failed");
    benchmark::DoNotOptimize(out);
    oruFree(out);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

void BM_RawIconv(benchmark::State& state, const char* to) {
  const std::string in = text(static_cast<size_t>(state.range(0)));
  iconv_t cd = iconv_open(to, "UTF-8");
  for (auto _ : state) {
    size_t cap = 2 * in.size() + 8;  // room for either target, no growth
    char* out = static_cast<char*>(std::malloc(cap + 2));
    char* src = const_cast<char*>(in.data());
    char* dst = out;
    size_t srcLeft = in.size(), dstLeft = cap;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    if (iconv(cd, &src, &srcLeft, &dst, &dstLeft) == static_cast<size_t>(-1) ||
        iconv(cd, nullptr, nullptr, &dst, &dstLeft) == static_cast<size_t>(-1))
      state.SkipWithError("conversion failed");
    dst[0] = dst[1] = 0;
    benchmark::DoNotOptimize(out);
    std::free(out);
  }
  iconv_close(cd);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

BENCHMARK_CAPTURE(BM_OruConvertString, utf16le, "UTF-16LE")->Apply(sizes);
BENCHMARK_CAPTURE(BM_RawIconv, utf16le, "UTF-16LE")->Apply(sizes);
BENCHMARK_CAPTURE(BM_OruConvertString, latin1, "ISO-8859-1")->Apply(sizes);
BENCHMARK_CAPTURE(BM_RawIconv, latin1, "ISO-8859-1")->Apply(sizes);

const std::vector<std::string>& name_mix() {
  static const std::vector<std::string> names = {
      "UTF-8",  "utf-16le", "ISO-8859-1",  "latin1", "windows-1252", "Shift_JIS", "EUC-JP",
      "KOI8-R", "us-ascii", "csISOLatin2", "IBM037", "GB18030",      "Big5",      "no-such-set"};
  return names;
}

void BM_OruCSNameToMIBenum(benchmark::State& state) {
  for (auto _ : state)
    for (const auto& n : name_mix()) benchmark::DoNotOptimize(oruCSNameToMIBenum(n.c_str()));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * name_mix().size()));
}

void BM_StrCaseCmpLoop(benchmark::State& state) {
  std::vector<std::pair<const char*, uint32_t>> table;
  uint32_t mib = 0;
  for (size_t i = 0; const char* n = _oruCSNameAt(i, &mib); ++i) table.emplace_back(n, mib);
  for (auto _ : state) {
    for (const auto& n : name_mix()) {
      int32_t found = -1;
      for (const auto& row : table) {
        if (strcasecmp(row.first, n.c_str()) == 0) {
          found = static_cast<int32_t>(row.second);
          break;
        }
      }
      benchmark::DoNotOptimize(found);
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * name_mix().size()));
}

BENCHMARK(BM_OruCSNameToMIBenum);
BENCHMARK(BM_StrCaseCmpLoop);

}  // namespace
