// Backtrace capture, symbolization and the module list, side by side with
// glibc's backtrace(3), dladdr(3) and dl_iterate_phdr(3).  The stack is made
// 16 calls deep so the unwinders have some work.

#include "oru/module.h"

#include <benchmark/benchmark.h>

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>

namespace {

constexpr int kDepth = 16;

template <typename F>
__attribute__((noinline)) int nested(int depth, F& f) {
  if (depth == 0) return f();
  int r = nested(depth - 1, f);
  benchmark::DoNotOptimize(r);
  return r + 1;
}

void BM_CaptureOru(benchmark::State& state) {
  void* frames[64];
  auto capture = [&] {
    size_t count = 0;
    oruCaptureBacktrace(0, frames, 64, &count);
    return static_cast<int>(count);
  };
  for (auto _ : state) benchmark::DoNotOptimize(nested(kDepth, capture));
}

void BM_CaptureGlibc(benchmark::State& state) {
  void* frames[64];
  auto capture = [&] { return backtrace(frames, 64); };
  for (auto _ : state) benchmark::DoNotOptimize(nested(kDepth, capture));
}

// Symbolizing an exported function of the C library (module, symbol and,
// with the DWARF reader, an attempt at the line), against dladdr alone.
void BM_SymbolizeOru(benchmark::State& state) {
  void* address = reinterpret_cast<void*>(&dladdr);
  for (auto _ : state) {
    oruSymbolInfo* info = nullptr;
    oruSymbolizeAddress(address, &info);
    benchmark::DoNotOptimize(info);
    oruFree(info);
  }
}

void BM_SymbolizeDladdr(benchmark::State& state) {
  void* address = reinterpret_cast<void*>(&dladdr);
  for (auto _ : state) {
    Dl_info info{};
    benchmark::DoNotOptimize(dladdr(address, &info));
  }
}

void BM_ModulesOru(benchmark::State& state) {
  for (auto _ : state) {
    oruModuleInfo* list = nullptr;
    size_t count = 0;
    oruGetModuleList(&list, &count);
    benchmark::DoNotOptimize(count);
    oruFree(list);
  }
}

void BM_ModulesDlIteratePhdr(benchmark::State& state) {
  for (auto _ : state) {
    size_t count = 0;
    dl_iterate_phdr(
        [](dl_phdr_info*, size_t, void* data) {
          ++*static_cast<size_t*>(data);
          return 0;
        },
        &count);
    benchmark::DoNotOptimize(count);
  }
}

BENCHMARK(BM_CaptureOru);
BENCHMARK(BM_CaptureGlibc);
BENCHMARK(BM_SymbolizeOru);
BENCHMARK(BM_SymbolizeDladdr);
BENCHMARK(BM_ModulesOru);
BENCHMARK(BM_ModulesDlIteratePhdr);

}  // namespace
