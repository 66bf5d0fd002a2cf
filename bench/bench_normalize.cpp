// oruUTF8Normalize (NFC, NFD), oruUTF8Casefold and oruUTF8ToLower against
// ICU's Normalizer2::normalizeUTF8 and ucasemap_utf8FoldCase /
// ucasemap_utf8ToLower, on 1 MiB of English, French (precomposed and
// decomposed), Korean Hangul and Japanese.
#include <benchmark/benchmark.h>
#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/ucasemap.h>

#include <string>

#include "oru/core.h"
#include "oru/unicode.h"

namespace {

enum Text { kEnglish, kFrench, kFrenchNfd, kKorean, kJapanese };

std::string make_text(int which) {
  static const char* const kSamples[] = {
      "The quick brown fox jumps over the lazy dog while the sun sets slowly. ",
      "L'\xC3\xA9t\xC3\xA9 fut tr\xC3\xA8s chaud \xC3\xA0 No\xC3\xABl, o\xC3\xB9 la for\xC3\xAAt "
      "\xC3\xA9tait d\xC3\xA9j\xC3\xA0 ferm\xC3\xA9\x65, \xC3\xA7\x61 ne va pas. ",
      "",
      "\xED\x95\x9C\xEA\xB5\xAD\xEC\x96\xB4\xEB\x8A\x94 \xEC\x95\x84\xEB\xA6\x84\xEB\x8B\xB5"
      "\xEA\xB3\xA0 \xEC\x89\xBD\xEC\x8A\xB5\xEB\x8B\x88\xEB\x8B\xA4. ",
      "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87\xE7\xAB\xA0\xE3\x81\xA7"
      "\xE3\x81\x99\xE3\x80\x82\xE3\x82\xAB\xE3\x82\xBF\xE3\x82\xAB\xE3\x83\x8A\xE3\x82\x82"
      "\xE3\x81\x82\xE3\x82\x8A\xE3\x81\xBE\xE3\x81\x99\xE3\x80\x82",
  };
  const int sample = which == kFrenchNfd ? kFrench : which;
  std::string text;
  while (text.size() < (1u << 20)) text += kSamples[sample];
  if (which == kFrenchNfd) {
    uint32_t n = 0;
    char* d = oruUTF8Normalize(text.data(), static_cast<int32_t>(text.size()), ORU_NFD, &n);
    text.assign(d, n);
    oruFree(d);
  }
  return text;
}

const std::string& text(int which) {
  static const std::string texts[] = {make_text(0), make_text(1), make_text(2), make_text(3),
                                      make_text(4)};
  return texts[which];
}

void label(benchmark::State& state, const std::string& s) {
  static const char* const kNames[] = {"english", "french", "french-nfd", "korean", "japanese"};
  state.SetLabel(kNames[state.range(0)]);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * s.size()));
}

void BM_OruNormalize(benchmark::State& state, uint32_t form) {
  const std::string& s = text(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    uint32_t n = 0;
    char* r = oruUTF8Normalize(s.data(), static_cast<int32_t>(s.size()), form, &n);
    benchmark::DoNotOptimize(r);
    oruFree(r);
  }
  label(state, s);
}

void BM_IcuNormalize(benchmark::State& state, bool nfc) {
  const std::string& s = text(static_cast<int>(state.range(0)));
  UErrorCode err = U_ZERO_ERROR;
  const icu::Normalizer2* norm =
      nfc ? icu::Normalizer2::getNFCInstance(err) : icu::Normalizer2::getNFDInstance(err);
  for (auto _ : state) {
    std::string out;
    out.reserve(s.size() + s.size() / 4);
    icu::StringByteSink<std::string> sink(&out);
    UErrorCode e = U_ZERO_ERROR;
    norm->normalizeUTF8(0, s, sink, nullptr, e);
    benchmark::DoNotOptimize(out.data());
  }
  label(state, s);
}

void BM_OruCase(benchmark::State& state, bool fold) {
  const std::string& s = text(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    uint32_t n = 0;
    char* r =
        (fold ? oruUTF8Casefold : oruUTF8ToLower)(s.data(), static_cast<int32_t>(s.size()), &n);
    benchmark::DoNotOptimize(r);
    oruFree(r);
  }
  label(state, s);
}

void BM_IcuCase(benchmark::State& state, bool fold) {
  const std::string& s = text(static_cast<int>(state.range(0)));
  UErrorCode err = U_ZERO_ERROR;
  UCaseMap* map = ucasemap_open("en", 0, &err);
  std::string out(s.size() * 3 + 16, '\0');
  for (auto _ : state) {
    UErrorCode e = U_ZERO_ERROR;
    const int32_t n = (fold ? ucasemap_utf8FoldCase : ucasemap_utf8ToLower)(
        map, out.data(), static_cast<int32_t>(out.size()), s.data(), static_cast<int32_t>(s.size()),
        &e);
    benchmark::DoNotOptimize(n);
  }
  ucasemap_close(map);
  label(state, s);
}

BENCHMARK_CAPTURE(BM_OruNormalize, nfc, ORU_NFC)->DenseRange(0, 4);
BENCHMARK_CAPTURE(BM_IcuNormalize, nfc, true)->DenseRange(0, 4);
BENCHMARK_CAPTURE(BM_OruNormalize, nfd, ORU_NFD)->DenseRange(0, 4);
BENCHMARK_CAPTURE(BM_IcuNormalize, nfd, false)->DenseRange(0, 4);
BENCHMARK_CAPTURE(BM_OruCase, fold, true)->DenseRange(0, 4);
BENCHMARK_CAPTURE(BM_IcuCase, fold, true)->DenseRange(0, 4);
BENCHMARK_CAPTURE(BM_OruCase, lower, false)->DenseRange(0, 4);
BENCHMARK_CAPTURE(BM_IcuCase, lower, false)->DenseRange(0, 4);

}  // namespace
