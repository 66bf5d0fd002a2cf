// CRC models: check values, edge cases, and every code path against a plain
// byte-at-a-time reference on random data of every length and alignment.
#include "hash/oru_crc_engine.h"
#include "oru/hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

// A CRC model as published: polynomial in natural bit order.
struct Model {
  const char* name;
  int width;
  uint64_t poly;
  bool reflected;
  uint64_t init;
  uint64_t xorout;
};

constexpr Model kArc{"CRC-16/ARC", 16, 0x8005, true, 0, 0};
constexpr Model kCcittFalse{"CRC-16/CCITT-FALSE", 16, 0x1021, false, 0xFFFF, 0};
constexpr Model kXmodem{"CRC-16/XMODEM", 16, 0x1021, false, 0, 0};
constexpr Model kCrc32{"CRC-32", 32, 0x04C11DB7, true, 0xFFFFFFFF, 0xFFFFFFFF};
constexpr Model kCrc64Xz{"CRC-64/XZ", 64, 0x42F0E1EBA9EA3693ull, true, ~0ull, ~0ull};

uint64_t mask_of(int width) { return width == 64 ? ~0ull : (1ull << width) - 1; }

// The classic byte-wise table algorithm, table built bit by bit from the
// model's parameters alone.
class ReferenceCrc {
 public:
  explicit ReferenceCrc(const Model& m) : m_(m), mask_(mask_of(m.width)) {
    uint64_t rpoly = 0;
    for (int i = 0; i < m.width; ++i) {
      if ((m.poly >> i) & 1) rpoly |= 1ull << (m.width - 1 - i);
    }
    const uint64_t top = 1ull << (m.width - 1);
    for (uint64_t b = 0; b < 256; ++b) {
      uint64_t crc;
      if (m.reflected) {
        crc = b;
        for (int k = 0; k < 8; ++k) crc = (crc & 1) ? (crc >> 1) ^ rpoly : crc >> 1;
      } else {
        crc = b << (m.width - 8);
        for (int k = 0; k < 8; ++k) {
          crc = ((crc & top) ? (crc << 1) ^ m.poly : crc << 1) & mask_;
        }
      }
      table_[b] = crc;
    }
  }

  uint64_t start() const { return m_.init; }
  uint64_t step(uint64_t crc, unsigned char byte) const {
    if (m_.reflected) return table_[(crc ^ byte) & 0xFF] ^ (crc >> 8);
    return ((crc << 8) & mask_) ^ table_[((crc >> (m_.width - 8)) ^ byte) & 0xFF];
  }
  uint64_t finish(uint64_t crc) const { return (crc ^ m_.xorout) & mask_; }

  uint64_t operator()(const unsigned char* p, size_t n) const {
    uint64_t crc = start();
    for (size_t i = 0; i < n; ++i) crc = step(crc, p[i]);
    return finish(crc);
  }

 private:
  Model m_;
  uint64_t mask_;
  uint64_t table_[256];
};

using CrcFunction = std::function<uint64_t(const unsigned char*, size_t)>;

std::vector<unsigned char> random_bytes(size_t n, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<unsigned char> v(n);
  for (auto& b : v) b = static_cast<unsigned char>(rng());
  return v;
}

// Every length from 0 to 4 KiB at every alignment 0..15.  The reference
// runs along the buffer once per alignment, so each prefix costs one step.
void expect_matches_reference(const Model& model, const CrcFunction& crc) {
  constexpr size_t kMaxLength = 4096;
  const ReferenceCrc ref(model);
  const std::vector<unsigned char> bytes = random_bytes(kMaxLength + 32, 1234);
  // 16-byte aligned storage, so that offset a is alignment a.
  struct alignas(16) Chunk {
    unsigned char b[16];
  };
  std::vector<Chunk> storage((bytes.size() + 15) / 16);
  auto* base = reinterpret_cast<unsigned char*>(storage.data());
  std::memcpy(base, bytes.data(), bytes.size());

  for (size_t align = 0; align < 16; ++align) {
    const unsigned char* p = base + align;
    uint64_t state = ref.start();
    for (size_t len = 0; len <= kMaxLength; ++len) {
      const uint64_t expected = ref.finish(state);
      const uint64_t got = crc(p, len);
      if (got != expected) {
        FAIL() << model.name << ": length " << len << ", alignment " << align << ": got "
               << std::hex << got << ", expected " << expected;
      }
      state = ref.step(state, p[len]);
    }
  }
}

// Buffers that end exactly where their allocation ends, so that a read past
// the end shows up under AddressSanitizer.
void expect_no_overread(const Model& model, const CrcFunction& crc) {
  const ReferenceCrc ref(model);
  const std::vector<unsigned char> bytes = random_bytes(600, 99);
  for (size_t len = 0; len <= 520; len += (len < 160 ? 1 : 7)) {
    for (size_t align = 0; align < 16; ++align) {
      std::vector<unsigned char> exact(align + len);
      std::copy_n(bytes.begin(), len, exact.begin() + static_cast<std::ptrdiff_t>(align));
      ASSERT_EQ(crc(exact.data() + align, len), ref(bytes.data(), len))
          << model.name << " length " << len << " alignment " << align;
    }
  }
}

CrcFunction exported(uint32_t type) {
  return [type](const unsigned char* p, size_t n) { return uint64_t{oruComputeCRC(type, p, n)}; };
}

uint64_t exported64(const unsigned char* p, size_t n) { return oruComputeCRC64(p, n); }

// The raw register functions, wrapped with the model's start and end.
template <typename T>
CrcFunction raw(T (*update)(T, const unsigned char*, size_t) noexcept, const Model& m) {
  return [update, m](const unsigned char* p, size_t n) {
    return (update(static_cast<T>(m.init), p, n) ^ m.xorout) & mask_of(m.width);
  };
}

TEST(Crc, CheckValues) {
  const char* check = "123456789";
  EXPECT_EQ(oruComputeCRC(ORU_CRC16_ARC, check, 9), 0xBB3Du);
  EXPECT_EQ(oruComputeCRC(ORU_CRC16_CCITT_FALSE, check, 9), 0x29B1u);
  EXPECT_EQ(oruComputeCRC(ORU_CRC16_XMODEM, check, 9), 0x31C3u);
  EXPECT_EQ(oruComputeCRC(ORU_CRC32, check, 9), 0xCBF43926u);
  EXPECT_EQ(oruComputeCRC64(check, 9), 0x995DC9BBDF1939FAull);
  // The reference agrees with the published values too.
  const auto* p = reinterpret_cast<const unsigned char*>(check);
  EXPECT_EQ(ReferenceCrc(kArc)(p, 9), 0xBB3Du);
  EXPECT_EQ(ReferenceCrc(kCcittFalse)(p, 9), 0x29B1u);
  EXPECT_EQ(ReferenceCrc(kXmodem)(p, 9), 0x31C3u);
  EXPECT_EQ(ReferenceCrc(kCrc32)(p, 9), 0xCBF43926u);
  EXPECT_EQ(ReferenceCrc(kCrc64Xz)(p, 9), 0x995DC9BBDF1939FAull);
}

TEST(Crc, EmptyInputGivesTheInitialValue) {
  const unsigned char byte = 0x5A;
  EXPECT_EQ(oruComputeCRC(ORU_CRC16_ARC, &byte, 0), 0x0000u);
  EXPECT_EQ(oruComputeCRC(ORU_CRC16_CCITT_FALSE, &byte, 0), 0xFFFFu);
  EXPECT_EQ(oruComputeCRC(ORU_CRC16_XMODEM, &byte, 0), 0x0000u);
  EXPECT_EQ(oruComputeCRC(ORU_CRC32, &byte, 0), 0u);
  EXPECT_EQ(oruComputeCRC64(&byte, 0), 0u);
  // A null buffer counts as empty whatever length comes with it.
  EXPECT_EQ(oruComputeCRC(ORU_CRC16_CCITT_FALSE, nullptr, 100), 0xFFFFu);
  EXPECT_EQ(oruComputeCRC(ORU_CRC32, nullptr, 100), 0u);
  EXPECT_EQ(oruComputeCRC64(nullptr, 100), 0u);
}

TEST(Crc, UnknownTypeGivesZero) {
  const char* check = "123456789";
  EXPECT_EQ(oruComputeCRC(4, check, 9), 0u);
  EXPECT_EQ(oruComputeCRC(0xFFFFFFFFu, check, 9), 0u);
  EXPECT_EQ(oruComputeCRC(0x80000003u, check, 9), 0u);
}

TEST(Crc, Crc64LengthPastTheAddressSpaceGivesZero) {
  // Nothing may be read: the range cannot exist.
  const auto* near_top = reinterpret_cast<const void*>(UINTPTR_MAX - 15);
  EXPECT_EQ(oruComputeCRC64(near_top, 17), 0u);
  EXPECT_EQ(oruComputeCRC64(near_top, SIZE_MAX), 0u);
  const unsigned char buf[4] = {1, 2, 3, 4};
  EXPECT_EQ(oruComputeCRC64(buf, SIZE_MAX), 0u);
}

TEST(Crc, Crc64FromManyThreadsOnFirstUse) {
  // Each test runs in a fresh process, so this is the first call of the
  // process: all threads race into it together.
  const std::vector<unsigned char> data = random_bytes(3000, 5);
  const uint64_t expected = ReferenceCrc(kCrc64Xz)(data.data(), data.size());
  constexpr int kThreads = 8;
  std::vector<uint64_t> results(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      size_t n = data.size() - static_cast<size_t>(t) * 64;
      uint64_t r = oruComputeCRC64(data.data(), n);
      for (int i = 0; i < 50; ++i) {
        if (oruComputeCRC64(data.data(), n) != r) r = 0;
      }
      results[static_cast<size_t>(t)] = r;
    });
  }
  for (auto& th : threads) th.join();
  const ReferenceCrc ref(kCrc64Xz);
  for (int t = 0; t < kThreads; ++t) {
    size_t n = data.size() - static_cast<size_t>(t) * 64;
    EXPECT_EQ(results[static_cast<size_t>(t)], ref(data.data(), n)) << "thread " << t;
  }
  EXPECT_EQ(results[0], expected);
}

// The exported functions, whatever code they run on this processor.
TEST(CrcAgainstReference, Arc) { expect_matches_reference(kArc, exported(ORU_CRC16_ARC)); }
TEST(CrcAgainstReference, CcittFalse) {
  expect_matches_reference(kCcittFalse, exported(ORU_CRC16_CCITT_FALSE));
}
TEST(CrcAgainstReference, Xmodem) { expect_matches_reference(kXmodem, exported(ORU_CRC16_XMODEM)); }
TEST(CrcAgainstReference, Crc32) { expect_matches_reference(kCrc32, exported(ORU_CRC32)); }
TEST(CrcAgainstReference, Crc64) { expect_matches_reference(kCrc64Xz, exported64); }

// The portable code, which this processor may never run otherwise.
TEST(CrcAgainstReference, PortableArc) {
  expect_matches_reference(kArc, raw(oru::hash::crc16_arc_portable, kArc));
}
TEST(CrcAgainstReference, PortableCrc32) {
  expect_matches_reference(kCrc32, raw(oru::hash::crc32_portable, kCrc32));
}
TEST(CrcAgainstReference, PortableCrc64) {
  expect_matches_reference(kCrc64Xz, raw(oru::hash::crc64_portable, kCrc64Xz));
}

TEST(CrcBufferEnd, Exported) {
  expect_no_overread(kArc, exported(ORU_CRC16_ARC));
  expect_no_overread(kCcittFalse, exported(ORU_CRC16_CCITT_FALSE));
  expect_no_overread(kCrc32, exported(ORU_CRC32));
  expect_no_overread(kCrc64Xz, exported64);
}

TEST(CrcBufferEnd, Portable) {
  expect_no_overread(kArc, raw(oru::hash::crc16_arc_portable, kArc));
  expect_no_overread(kCrc32, raw(oru::hash::crc32_portable, kCrc32));
  expect_no_overread(kCrc64Xz, raw(oru::hash::crc64_portable, kCrc64Xz));
}

TEST(CrcBufferEnd, CarrylessMultiply) {
  if (!oru::hash::crc_clmul_supported()) GTEST_SKIP() << "no carry-less multiply here";
  expect_no_overread(kArc, raw(oru::hash::crc16_arc_clmul, kArc));
  expect_no_overread(kCrc32, raw(oru::hash::crc32_clmul, kCrc32));
  expect_no_overread(kCrc64Xz, raw(oru::hash::crc64_clmul, kCrc64Xz));
}

}  // namespace
