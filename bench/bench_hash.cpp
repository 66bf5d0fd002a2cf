// Checksums, MD5 and DES side by side with the usual libraries: zlib's
// crc32, liblzma's lzma_crc64 and OpenSSL's MD5 and DES, on buffers of
// 64 bytes, 4 KiB and 1 MiB.
#define OPENSSL_SUPPRESS_DEPRECATED  // MD5() and DES_* are deprecated, not gone
#include "oru/hash.h"

#include <benchmark/benchmark.h>
#include <lzma.h>
#include <openssl/des.h>
#include <openssl/evp.h>
#include <openssl/md5.h>
#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

const std::vector<unsigned char>& data() {
  static const std::vector<unsigned char> bytes = [] {
    std::vector<unsigned char> v(1 << 20);
    std::mt19937 rng(1);
    for (auto& b : v) b = static_cast<unsigned char>(rng());
    return v;
  }();
  return bytes;
}

void sizes(benchmark::internal::Benchmark* b) { b->Arg(64)->Arg(4096)->Arg(1 << 20); }

template <typename F>
void run(benchmark::State& state, F f) {
  const size_t n = static_cast<size_t>(state.range(0));
  const unsigned char* p = data().data();
  for (auto _ : state) benchmark::DoNotOptimize(f(p, n));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

// Both sides of each pair must agree before their speed means anything.
void check(bool same, const char* what) {
  if (!same) {
    std::fprintf(stderr, "%s: results differ from the peer library\n", what);
    std::abort();
  }
}

void BM_Crc32_oru(benchmark::State& state) {
  run(state, [](const unsigned char* p, size_t n) { return oruComputeCRC(ORU_CRC32, p, n); });
}
void BM_Crc32_zlib(benchmark::State& state) {
  run(state, [](const unsigned char* p, size_t n) { return crc32(0, p, static_cast<uInt>(n)); });
}

void BM_Crc64_oru(benchmark::State& state) {
  run(state, [](const unsigned char* p, size_t n) { return oruComputeCRC64(p, n); });
}
void BM_Crc64_lzma(benchmark::State& state) {
  run(state, [](const unsigned char* p, size_t n) { return lzma_crc64(p, n, 0); });
}

void BM_Md5_oru(benchmark::State& state) {
  run(state, [](const unsigned char* p, size_t n) {
    oruMD5Context ctx;
    oruMD5Init(&ctx);
    oruMD5Update(&ctx, p, n);
    unsigned char digest[16];
    oruMD5Final(digest, &ctx);
    return digest[0];
  });
}
void BM_Md5_openssl(benchmark::State& state) {
  run(state, [](const unsigned char* p, size_t n) {
    unsigned char digest[16];
    MD5(p, n, digest);
    return digest[0];
  });
}
void BM_Md5_openssl_evp(benchmark::State& state) {
  run(state, [](const unsigned char* p, size_t n) {
    unsigned char digest[16];
    unsigned int len = 0;
    EVP_Digest(p, n, digest, &len, EVP_md5(), nullptr);
    return digest[0];
  });
}

const unsigned char kDesKey[8] = {0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};

// OpenSSL's key and block types are plain (non-const) arrays.
void openssl_key_setup(DES_key_schedule* ks) {
  DES_cblock key;
  std::memcpy(key, kDesKey, sizeof key);
  DES_set_key_unchecked(&key, ks);
}

// Each 8-byte block of the buffer on its own, as ECB does.
void BM_DesEcb_oru(benchmark::State& state) {
  oruDESKeySchedule ks;
  oruDESKeySetup(kDesKey, &ks);
  std::vector<unsigned char> buf(data().begin(), data().begin() + state.range(0));
  for (auto _ : state) {
    for (size_t i = 0; i < buf.size(); i += 8) oruDESBlockCipherECB(&ks, &buf[i], 0);
    benchmark::DoNotOptimize(buf.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
void BM_DesEcb_openssl(benchmark::State& state) {
  DES_key_schedule ks;
  openssl_key_setup(&ks);
  std::vector<unsigned char> buf(data().begin(), data().begin() + state.range(0));
  for (auto _ : state) {
    for (size_t i = 0; i < buf.size(); i += 8) {
      auto* block = reinterpret_cast<DES_cblock*>(&buf[i]);
      DES_ecb_encrypt(block, block, &ks, DES_ENCRYPT);
    }
    benchmark::DoNotOptimize(buf.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

// Fails the run early when a pair disagrees.
const bool kAgree = [] {
  const unsigned char* p = data().data();
  for (size_t n : {size_t{0}, size_t{1}, size_t{64}, size_t{4096}, size_t{1} << 20}) {
    check(oruComputeCRC(ORU_CRC32, p, n) == crc32(0, p, static_cast<uInt>(n)), "CRC-32");
    check(oruComputeCRC64(p, n) == lzma_crc64(p, n, 0), "CRC-64");
    oruMD5Context ctx;
    oruMD5Init(&ctx);
    oruMD5Update(&ctx, p, n);
    unsigned char a[16], b[16];
    oruMD5Final(a, &ctx);
    MD5(p, n, b);
    check(std::memcmp(a, b, 16) == 0, "MD5");
  }
  oruDESKeySchedule oks;
  oruDESKeySetup(kDesKey, &oks);
  DES_key_schedule sks;
  openssl_key_setup(&sks);
  DES_cblock a, b;
  std::memcpy(a, p, 8);
  std::memcpy(b, p, 8);
  oruDESBlockCipherECB(&oks, a, 0);
  DES_ecb_encrypt(&b, &b, &sks, DES_ENCRYPT);
  check(std::memcmp(a, b, 8) == 0, "DES");
  return true;
}();

}  // namespace

BENCHMARK(BM_Crc32_oru)->Apply(sizes);
BENCHMARK(BM_Crc32_zlib)->Apply(sizes);
BENCHMARK(BM_Crc64_oru)->Apply(sizes);
BENCHMARK(BM_Crc64_lzma)->Apply(sizes);
BENCHMARK(BM_Md5_oru)->Apply(sizes);
BENCHMARK(BM_Md5_openssl)->Apply(sizes);
BENCHMARK(BM_Md5_openssl_evp)->Apply(sizes);
BENCHMARK(BM_DesEcb_oru)->Apply(sizes);
BENCHMARK(BM_DesEcb_openssl)->Apply(sizes);
