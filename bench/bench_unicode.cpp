// UTF-8 validation and counting side by side with ICU (u_strFromUTF8
// preflighting and a U8_NEXT loop) and with a memchr pass over the same
// bytes, the memory-speed floor; and the general category of every code
// point against ICU's u_charType.  Texts of 1 MiB: ASCII, Latin-1-heavy
// (about one accented letter in eight), CJK, and a mix of all lengths.
#include <benchmark/benchmark.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "oru/unicode.h"

namespace {

enum Kind { kAscii, kLatin, kCjk, kMixed };

std::vector<char> make_text(Kind kind) {
  std::mt19937 rng(42 + kind);
  std::vector<char> out;
  out.reserve((1 << 20) + 4);
  while (out.size() < (1 << 20) - 4) {
    uint32_t c = 0x20 + rng() % 0x5F;
    const uint32_t r = rng() % 8;
    if (kind == kLatin && r == 0) c = 0xC0 + rng() % 0x40;
    if (kind == kCjk) c = r == 0 ? 0x3000 + rng() % 0x100 : 0x4E00 + rng() % 0x5000;
    if (kind == kMixed) {
      c = r < 4   ? c
          : r < 6 ? 0x100 + rng() % 0x500
          : r < 7 ? 0x4E00 + rng() % 0x5000
                  : 0x1F300 + rng() % 0x200;
    }
    char b[4];
    out.insert(out.end(), b, oruUTF8PutChar(b, c));
  }
  out.resize(1 << 20, 'x');
  return out;
}

const std::vector<char>& text(Kind kind) {
  static const std::vector<char> texts[] = {make_text(kAscii), make_text(kLatin), make_text(kCjk),
                                            make_text(kMixed)};
  return texts[kind];
}

template <typename F>
void over_text(benchmark::State& state, F f) {
  const auto& t = text(static_cast<Kind>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(f(t.data(), static_cast<int32_t>(t.size())));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(t.size()));
}

void kinds(benchmark::internal::Benchmark* b) {
  b->ArgName("text")->Arg(kAscii)->Arg(kLatin)->Arg(kCjk)->Arg(kMixed);
}

void BM_OruUTF8Validate(benchmark::State& state) {
  over_text(state, [](const char* s, int32_t n) { return oruUTF8Validate(s, n, nullptr); });
}

void BM_OruUTF8CharCount(benchmark::State& state) {
  over_text(state, [](const char* s, int32_t n) { return oruUTF8CharCount(s, n); });
}

void BM_IcuStrFromUTF8Preflight(benchmark::State& state) {
  over_text(state, [](const char* s, int32_t n) {
    UErrorCode err = U_ZERO_ERROR;
    int32_t units = 0;
    u_strFromUTF8(nullptr, 0, &units, s, n, &err);
    return err == U_BUFFER_OVERFLOW_ERROR ? units : -1;
  });
}

void BM_IcuU8NextLoop(benchmark::State& state) {
  over_text(state, [](const char* s, int32_t n) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(s);
    int32_t i = 0, count = 0;
    while (i < n) {
      UChar32 c;
      U8_NEXT(p, i, n, c);
      if (c < 0) return -1;
      ++count;
    }
    return count;
  });
}

void BM_Memchr(benchmark::State& state) {
  over_text(state,
            [](const char* s, int32_t n) { return std::memchr(s, 0, static_cast<size_t>(n)); });
}

BENCHMARK(BM_OruUTF8Validate)->Apply(kinds);
BENCHMARK(BM_OruUTF8CharCount)->Apply(kinds);
BENCHMARK(BM_IcuStrFromUTF8Preflight)->Apply(kinds);
BENCHMARK(BM_IcuU8NextLoop)->Apply(kinds);
BENCHMARK(BM_Memchr)->Apply(kinds);

template <typename F>
void over_code_space(benchmark::State& state, F f) {
  for (auto _ : state) {
    uint32_t sum = 0;
    for (uint32_t c = 0; c < 0x110000; ++c) sum += f(c);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * 0x110000);
}

void BM_OruUniCharClass(benchmark::State& state) {
  over_code_space(state, [](uint32_t c) { return oruUniCharClass(c); });
}

void BM_IcuCharType(benchmark::State& state) {
  over_code_space(
      state, [](uint32_t c) { return static_cast<uint32_t>(u_charType(static_cast<UChar32>(c))); });
}

BENCHMARK(BM_OruUniCharClass);
BENCHMARK(BM_IcuCharType);

}  // namespace
