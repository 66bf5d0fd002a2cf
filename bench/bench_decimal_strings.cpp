// Decimal text and binary conversions side by side with their peers:
// parsing against libdfp's strtod64/strtod128, ToString against libdfp's
// printf of _Decimal64, and double <-> decimal64 against GCC's casts.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "bench_decimal_strings_peer.h"
#include "oru/decimal.h"

namespace {

constexpr size_t kN = 1024;

// Typical texts: 1 to 16 digits, a point somewhere, some exponents.
const std::vector<std::string>& texts() {
  static std::vector<std::string> t = [] {
    std::mt19937_64 rng(3);
    std::vector<std::string> v;
    for (size_t i = 0; i < kN; ++i) {
      char s[48];
      size_t n = 0;
      if (rng() & 1) s[n++] = '-';
      int nd = 1 + (int)(rng() % 16);
      int point = nd > 1 && rng() % 2 ? 1 + (int)(rng() % (nd - 1)) : -1;
      for (int j = 0; j < nd; ++j) {
        if (j == point) s[n++] = '.';
        s[n++] = (char)('0' + rng() % 10);
      }
      s[n] = '\0';
      if (rng() % 4 == 0) snprintf(s + n, sizeof s - n, "E%d", (int)(rng() % 40) - 20);
      v.push_back(s);
    }
    return v;
  }();
  return t;
}

std::vector<const char*> pointers() {
  std::vector<const char*> p;
  for (const std::string& s : texts()) p.push_back(s.c_str());
  return p;
}

std::vector<oruDec64> values64() {
  std::vector<oruDec64> v;
  for (const std::string& s : texts())
    v.push_back(oruDec64ParseString(nullptr, s.c_str(), nullptr));
  return v;
}

std::vector<double> doubles() {
  std::mt19937_64 rng(9);
  std::uniform_real_distribution<double> d(-1e6, 1e6);
  std::vector<double> v;
  for (size_t i = 0; i < kN; ++i) v.push_back(d(rng));
  return v;
}

void BM_Dec64Parse_oru(benchmark::State& st) {
  std::vector<const char*> p = pointers();
  std::vector<uint64_t> r(kN);
  for (auto _ : st) {
    for (size_t i = 0; i < kN; ++i) r[i] = oruDec64ParseString(nullptr, p[i], nullptr);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_Dec64Parse_libdfp(benchmark::State& st) {
  std::vector<const char*> p = pointers();
  std::vector<uint64_t> r(kN);
  for (auto _ : st) {
    peer_strtod64(p.data(), r.data(), kN);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_Dec128Parse_oru(benchmark::State& st) {
  std::vector<const char*> p = pointers();
  std::vector<oruDec128> r(kN);
  for (auto _ : st) {
    for (size_t i = 0; i < kN; ++i) oruDec128ParseString(&r[i], nullptr, p[i], nullptr);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_Dec128Parse_libdfp(benchmark::State& st) {
  std::vector<const char*> p = pointers();
  std::vector<uint64_t> r(2 * kN);
  for (auto _ : st) {
    peer_strtod128(p.data(), r.data(), kN);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_Dec64ToString_oru(benchmark::State& st) {
  std::vector<oruDec64> v = values64();
  char buf[ORU_DEC64_STRING_MAX];
  for (auto _ : st) {
    size_t total = 0, len;
    for (size_t i = 0; i < kN; ++i) {
      oruDec64ToString(v[i], buf, sizeof buf, &len);
      total += len;
    }
    benchmark::DoNotOptimize(total);
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_Dec64ToString_libdfp_printf(benchmark::State& st) {
  if (!peer_printf_ready()) {
    st.SkipWithError("libdfp's printf hooks are not available");
    return;
  }
  std::vector<oruDec64> v = values64();
  char buf[64];
  for (auto _ : st) benchmark::DoNotOptimize(peer_printf64(v.data(), buf, sizeof buf, kN));
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_DoubleToDec64_oru(benchmark::State& st) {
  std::vector<double> d = doubles();
  std::vector<uint64_t> r(kN);
  for (auto _ : st) {
    for (size_t i = 0; i < kN; ++i) r[i] = oruDoubleToDec64(d[i]);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_DoubleToDec64_gcc(benchmark::State& st) {
  std::vector<double> d = doubles();
  std::vector<uint64_t> r(kN);
  for (auto _ : st) {
    peer_double_to_d64(d.data(), r.data(), kN);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_Dec64ToDouble_oru(benchmark::State& st) {
  std::vector<oruDec64> v = values64();
  std::vector<double> r(kN);
  for (auto _ : st) {
    for (size_t i = 0; i < kN; ++i) r[i] = oruDec64ToDouble(v[i]);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}
void BM_Dec64ToDouble_gcc(benchmark::State& st) {
  std::vector<oruDec64> v = values64();
  std::vector<double> r(kN);
  for (auto _ : st) {
    peer_d64_to_double(v.data(), r.data(), kN);
    benchmark::DoNotOptimize(r.data());
  }
  st.SetItemsProcessed((int64_t)(st.iterations() * kN));
}

}  // namespace

BENCHMARK(BM_Dec64Parse_oru);
BENCHMARK(BM_Dec64Parse_libdfp);
BENCHMARK(BM_Dec128Parse_oru);
BENCHMARK(BM_Dec128Parse_libdfp);
BENCHMARK(BM_Dec64ToString_oru);
BENCHMARK(BM_Dec64ToString_libdfp_printf);
BENCHMARK(BM_DoubleToDec64_oru);
BENCHMARK(BM_DoubleToDec64_gcc);
BENCHMARK(BM_Dec64ToDouble_oru);
BENCHMARK(BM_Dec64ToDouble_gcc);
