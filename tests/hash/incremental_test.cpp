// The incremental CRC and Murmur forms: however the input is split, the
// pieces give exactly the one-shot result.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "oru/hash.h"

namespace {

std::vector<unsigned char> random_bytes(size_t n, uint32_t seed) {
  std::mt19937 gen(seed);
  std::vector<unsigned char> v(n);
  for (auto& b : v) b = static_cast<unsigned char>(gen());
  return v;
}

// Random cut points (sorted, with repeats, so empty pieces occur too).
std::vector<size_t> random_cuts(size_t n, int pieces, std::mt19937& gen) {
  std::vector<size_t> cuts{0, n};
  for (int i = 1; i < pieces; ++i) cuts.push_back(gen() % (n + 1));
  std::sort(cuts.begin(), cuts.end());
  return cuts;
}

constexpr uint32_t kTypes[] = {ORU_CRC16_ARC, ORU_CRC16_CCITT_FALSE, ORU_CRC16_XMODEM, ORU_CRC32};

TEST(IncrementalCrc, EverySplitOfAMessageGivesTheOneShotResult) {
  // Long enough for the folding code paths on both sides of every cut.
  const auto data = random_bytes(700, 1);
  for (uint32_t type : kTypes) {
    const uint32_t whole = oruComputeCRC(type, data.data(), data.size());
    for (size_t cut = 0; cut <= data.size(); ++cut) {
      uint32_t crc = oruComputeCRC(type, data.data(), cut);
      crc = oruUpdateCRC(type, crc, data.data() + cut, data.size() - cut);
      ASSERT_EQ(crc, whole) << "type " << type << " cut " << cut;
    }
  }
  const uint64_t whole64 = oruComputeCRC64(data.data(), data.size());
  for (size_t cut = 0; cut <= data.size(); ++cut) {
    uint64_t crc = oruComputeCRC64(data.data(), cut);
    ASSERT_EQ(oruUpdateCRC64(crc, data.data() + cut, data.size() - cut), whole64) << cut;
  }
}

TEST(IncrementalCrc, ManyPiecesFromTheStartValue) {
  std::mt19937 gen(7);
  const auto data = random_bytes(5000, 2);
  for (int round = 0; round < 50; ++round) {
    const auto cuts = random_cuts(data.size(), 1 + round % 9, gen);
    for (uint32_t type : kTypes) {
      uint32_t crc = oruComputeCRC(type, nullptr, 0);
      for (size_t i = 1; i < cuts.size(); ++i) {
        crc = oruUpdateCRC(type, crc, data.data() + cuts[i - 1], cuts[i] - cuts[i - 1]);
      }
      ASSERT_EQ(crc, oruComputeCRC(type, data.data(), data.size())) << type;
    }
    uint64_t crc64 = oruComputeCRC64(nullptr, 0);
    for (size_t i = 1; i < cuts.size(); ++i) {
      crc64 = oruUpdateCRC64(crc64, data.data() + cuts[i - 1], cuts[i] - cuts[i - 1]);
    }
    ASSERT_EQ(crc64, oruComputeCRC64(data.data(), data.size()));
  }
}

TEST(IncrementalCrc, PublishedCheckValuesByteAtATime) {
  const char* text = "123456789";
  struct {
    uint32_t type;
    uint32_t check;
  } const cases[] = {{ORU_CRC16_ARC, 0xBB3D},
                     {ORU_CRC16_CCITT_FALSE, 0x29B1},
                     {ORU_CRC16_XMODEM, 0x31C3},
                     {ORU_CRC32, 0xCBF43926}};
  for (const auto& c : cases) {
    uint32_t crc = oruComputeCRC(c.type, nullptr, 0);
    for (int i = 0; i < 9; ++i) crc = oruUpdateCRC(c.type, crc, text + i, 1);
    EXPECT_EQ(crc, c.check) << c.type;
  }
  uint64_t crc64 = 0;
  for (int i = 0; i < 9; ++i) crc64 = oruUpdateCRC64(crc64, text + i, 1);
  EXPECT_EQ(crc64, 0x995DC9BBDF1939FAull);
}

TEST(IncrementalCrc, EmptyNullUnknownAndHighBits) {
  const unsigned char byte = 'a';
  EXPECT_EQ(oruUpdateCRC(ORU_CRC32, 0x12345678u, nullptr, 5), 0x12345678u);
  EXPECT_EQ(oruUpdateCRC(ORU_CRC32, 0x12345678u, &byte, 0), 0x12345678u);
  EXPECT_EQ(oruUpdateCRC(ORU_CRC16_ARC, 0xABCD1234u, nullptr, 0), 0x1234u);
  EXPECT_EQ(oruUpdateCRC(4, 0x1234u, &byte, 1), 0u);
  // Only the low half of a 16-bit CRC counts.
  EXPECT_EQ(oruUpdateCRC(ORU_CRC16_XMODEM, 0xFFFF0000u, &byte, 1),
            oruComputeCRC(ORU_CRC16_XMODEM, &byte, 1));
  EXPECT_EQ(oruUpdateCRC64(42, nullptr, 3), 42u);
  // A buffer that would wrap around the address space is treated as empty.
  EXPECT_EQ(oruUpdateCRC64(42, &byte, SIZE_MAX), 42u);
}

TEST(IncrementalMurmur, EverySplitGivesTheOneShotHash) {
  const auto data = random_bytes(64, 3);
  for (size_t n = 0; n <= data.size(); ++n) {
    const uint64_t whole = oruMurmurHash64(data.data(), n, 0x5EEDu);
    for (size_t cut = 0; cut <= n; ++cut) {
      for (size_t cut2 = cut; cut2 <= n; cut2 += 3) {
        oruMurmurHash64Context ctx;
        ASSERT_EQ(oruMurmurHash64Init(&ctx, 0x5EEDu), ORU_OK);
        oruMurmurHash64Update(&ctx, data.data(), cut);
        oruMurmurHash64Update(&ctx, data.data() + cut, cut2 - cut);
        oruMurmurHash64Update(&ctx, data.data() + cut2, n - cut2);
        ASSERT_EQ(oruMurmurHash64Final(&ctx), whole) << n << " " << cut << " " << cut2;
      }
    }
  }
}

TEST(IncrementalMurmur, KnownValuesAndBadArguments) {
  oruMurmurHash64Context ctx;
  ASSERT_EQ(oruMurmurHash64Init(&ctx, 42), ORU_OK);
  oruMurmurHash64Update(&ctx, "hello", 5);
  oruMurmurHash64Update(&ctx, nullptr, 5);  // ignored
  oruMurmurHash64Update(&ctx, " world", 6);
  EXPECT_EQ(oruMurmurHash64Final(&ctx), 0x77F5C22C6A50D924ull);
  // Final leaves the context usable.
  EXPECT_EQ(oruMurmurHash64Final(&ctx), 0x77F5C22C6A50D924ull);
  ASSERT_EQ(oruMurmurHash64Init(&ctx, 1), ORU_OK);
  EXPECT_EQ(oruMurmurHash64Final(&ctx), 0x5825F5F3BD962979ull);
  EXPECT_EQ(oruMurmurHash64Init(nullptr, 0), ORU_E_INVALID_ARG);
  oruMurmurHash64Update(nullptr, "x", 1);
  EXPECT_EQ(oruMurmurHash64Final(nullptr), 0u);
}

}  // namespace
