// Decimal arithmetic side by side with GCC's built-in _Decimal64 and
// _Decimal128 (Add, Mul, Div) and with libdfp (FusedMulAdd, Quantize), on
// one fixed mix of operands: exact sums and products, ones that round, ties,
// and operands of different exponents.  Every loop does 1024 operations.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "bench_decimal_peer.h"
#include "oru/decimal.h"

namespace {

constexpr size_t kN = 1024;

uint64_t enc64(uint64_t c, int q) {
  uint64_t e = (uint64_t)(q + 398);
  if (c < (1ull << 53)) return e << 53 | c;
  return 3ull << 61 | e << 51 | (c & ((1ull << 51) - 1));
}
void enc128(unsigned __int128 c, int q, uint64_t* out) {
  unsigned __int128 v = (unsigned __int128)(q + 6176) << 113 | c;
  out[0] = (uint64_t)v;
  out[1] = (uint64_t)(v >> 64);
}

struct Operands {
  std::vector<uint64_t> x64, y64, z64, q64, x128, y128, z128, q128;
  Operands() {
    std::mt19937_64 rng(7);
    for (size_t i = 0; i < kN; ++i) {
      uint64_t a, b;
      int ea, eb;
      switch (i % 4) {
        case 0:  // exact: short coefficients, same exponent
          a = rng() % 1000000, b = rng() % 1000000, ea = eb = -2;
          break;
        case 1:  // rounds: full coefficients
          a = 1000000000000000ull + rng() % 9000000000000000ull;
          b = 1000000000000000ull + rng() % 9000000000000000ull;
          ea = -(int)(rng() % 8), eb = -(int)(rng() % 8);
          break;
        case 2:  // ties
          a = 1000000000000000ull + 2 * (rng() % 4000000000000000ull);
          b = 5, ea = 1, eb = 0;
          break;
        default:  // different exponents
          a = rng() % 100000000, b = rng() % 100000000;
          ea = (int)(rng() % 10), eb = -(int)(rng() % 10);
          break;
      }
      x64.push_back(enc64(a, ea));
      y64.push_back(enc64(b == 0 ? 1 : b, eb));
      z64.push_back(enc64(rng() % 10000000000ull, -(int)(rng() % 6)));
      q64.push_back(enc64(1, -(int)(rng() % 4)));
      unsigned __int128 A = (unsigned __int128)a * (i % 4 == 1 ? 1000000000000000000ull : 1);
      unsigned __int128 B = (unsigned __int128)(b == 0 ? 1 : b) * (i % 4 == 1 ? 99999999999ull : 1);
      uint64_t w[2];
      enc128(A, ea, w);
      x128.insert(x128.end(), w, w + 2);
      enc128(B, eb, w);
      y128.insert(y128.end(), w, w + 2);
      enc128((unsigned __int128)(rng() % 10000000000ull) * 1000000007ull, -(int)(rng() % 6), w);
      z128.insert(z128.end(), w, w + 2);
      enc128(1, -(int)(rng() % 4), w);
      q128.insert(q128.end(), w, w + 2);
    }
  }
};

const Operands& ops() {
  static const Operands o;
  return o;
}

void check(bool same, const char* what) {
  if (!same) {
    std::fprintf(stderr, "%s: results differ from the peer library\n", what);
    std::abort();
  }
}

typedef oruDec64 (*Op64)(oruDec64, oruDec64);
typedef oruDec128* (*Op128)(oruDec128*, const oruDec128*, const oruDec128*);

void ours64(Op64 f, const uint64_t* x, const uint64_t* y, uint64_t* r) {
  for (size_t i = 0; i < kN; ++i) r[i] = f(x[i], y[i]);
}
void ours128(Op128 f, const uint64_t* x, const uint64_t* y, uint64_t* r) {
  for (size_t i = 0; i < kN; ++i)
    f((oruDec128*)(r + 2 * i), (const oruDec128*)(x + 2 * i), (const oruDec128*)(y + 2 * i));
}

const Op64 kOps64[3] = {oruDec64Add, oruDec64Mul, oruDec64Div};
const Op128 kOps128[3] = {oruDec128Add, oruDec128Mul, oruDec128Div};

void BM_Dec64_oru(benchmark::State& state) {
  int op = (int)state.range(0);
  const Operands& o = ops();
  std::vector<uint64_t> r(kN), p(kN);
  ours64(kOps64[op], o.x64.data(), o.y64.data(), r.data());
  peer_gcc64(op, o.x64.data(), o.y64.data(), p.data(), kN);
  check(r == p, "decimal64");
  for (auto _ : state) {
    ours64(kOps64[op], o.x64.data(), o.y64.data(), r.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec64_gcc(benchmark::State& state) {
  int op = (int)state.range(0);
  const Operands& o = ops();
  std::vector<uint64_t> r(kN);
  for (auto _ : state) {
    peer_gcc64(op, o.x64.data(), o.y64.data(), r.data(), kN);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec128_oru(benchmark::State& state) {
  int op = (int)state.range(0);
  const Operands& o = ops();
  std::vector<uint64_t> r(2 * kN), p(2 * kN);
  ours128(kOps128[op], o.x128.data(), o.y128.data(), r.data());
  peer_gcc128(op, o.x128.data(), o.y128.data(), p.data(), kN);
  check(r == p, "decimal128");
  for (auto _ : state) {
    ours128(kOps128[op], o.x128.data(), o.y128.data(), r.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec128_gcc(benchmark::State& state) {
  int op = (int)state.range(0);
  const Operands& o = ops();
  std::vector<uint64_t> r(2 * kN);
  for (auto _ : state) {
    peer_gcc128(op, o.x128.data(), o.y128.data(), r.data(), kN);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}

// Arg: 0 Add, 1 Mul, 2 Div.
BENCHMARK(BM_Dec64_oru)->DenseRange(0, 2);
BENCHMARK(BM_Dec64_gcc)->DenseRange(0, 2);
BENCHMARK(BM_Dec128_oru)->DenseRange(0, 2);
BENCHMARK(BM_Dec128_gcc)->DenseRange(0, 2);

void BM_Dec64FusedMulAdd_oru(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(kN), p(kN);
  auto run = [&] {
    for (size_t i = 0; i < kN; ++i) r[i] = oruDec64FusedMulAdd(o.x64[i], o.y64[i], o.z64[i]);
  };
  run();
  peer_dfp64_fma(o.x64.data(), o.y64.data(), o.z64.data(), p.data(), kN);
  // libdfp's fmad64 rounds some of these twice (the product first): its
  // last digit is then one off the correctly rounded result, which the
  // conformance tests check for this library.  Count, do not insist.
  size_t differ = 0;
  for (size_t i = 0; i < kN; ++i) differ += r[i] != p[i];
  state.counters["differ_from_libdfp"] = (double)differ;
  for (auto _ : state) {
    run();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec64FusedMulAdd_libdfp(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(kN);
  for (auto _ : state) {
    peer_dfp64_fma(o.x64.data(), o.y64.data(), o.z64.data(), r.data(), kN);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec64Quantize_oru(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(kN), p(kN);
  auto run = [&] {
    for (size_t i = 0; i < kN; ++i) r[i] = oruDec64Quantize(o.x64[i], o.q64[i], 0);
  };
  run();
  peer_dfp64_quantize(o.x64.data(), o.q64.data(), p.data(), kN);
  check(r == p, "quantized64");
  for (auto _ : state) {
    run();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec64Quantize_libdfp(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(kN);
  for (auto _ : state) {
    peer_dfp64_quantize(o.x64.data(), o.q64.data(), r.data(), kN);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec128FusedMulAdd_oru(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(2 * kN), p(2 * kN);
  auto run = [&] {
    for (size_t i = 0; i < kN; ++i)
      oruDec128FusedMulAdd((oruDec128*)&r[2 * i], (const oruDec128*)&o.x128[2 * i],
                           (const oruDec128*)&o.y128[2 * i], (const oruDec128*)&o.z128[2 * i]);
  };
  run();
  peer_dfp128_fma(o.x128.data(), o.y128.data(), o.z128.data(), p.data(), kN);
  size_t differ = 0;
  for (size_t i = 0; i < kN; ++i) differ += r[2 * i] != p[2 * i] || r[2 * i + 1] != p[2 * i + 1];
  state.counters["differ_from_libdfp"] = (double)differ;
  for (auto _ : state) {
    run();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec128FusedMulAdd_libdfp(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(2 * kN);
  for (auto _ : state) {
    peer_dfp128_fma(o.x128.data(), o.y128.data(), o.z128.data(), r.data(), kN);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec128Quantize_oru(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(2 * kN), p(2 * kN);
  auto run = [&] {
    for (size_t i = 0; i < kN; ++i)
      oruDec128Quantize((oruDec128*)&r[2 * i], (const oruDec128*)&o.x128[2 * i],
                        (const oruDec128*)&o.q128[2 * i], 0);
  };
  run();
  peer_dfp128_quantize(o.x128.data(), o.q128.data(), p.data(), kN);
  check(r == p, "quantized128");
  for (auto _ : state) {
    run();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
void BM_Dec128Quantize_libdfp(benchmark::State& state) {
  const Operands& o = ops();
  std::vector<uint64_t> r(2 * kN);
  for (auto _ : state) {
    peer_dfp128_quantize(o.x128.data(), o.q128.data(), r.data(), kN);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed((int64_t)(state.iterations() * kN));
}
BENCHMARK(BM_Dec64FusedMulAdd_oru);
BENCHMARK(BM_Dec64FusedMulAdd_libdfp);
BENCHMARK(BM_Dec64Quantize_oru);
BENCHMARK(BM_Dec64Quantize_libdfp);
BENCHMARK(BM_Dec128FusedMulAdd_oru);
BENCHMARK(BM_Dec128FusedMulAdd_libdfp);
BENCHMARK(BM_Dec128Quantize_oru);
BENCHMARK(BM_Dec128Quantize_libdfp);

}  // namespace
