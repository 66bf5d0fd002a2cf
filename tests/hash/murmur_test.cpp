// oruMurmurHash64: the published example values, which also tell this
// variant apart from MurmurHash64A, and how input and seed reach the hash.
#include "oru/hash.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace {

uint64_t murmur(const std::string& s, uint64_t seed) {
  return oruMurmurHash64(s.data(), s.size(), seed);
}

TEST(Murmur, ExampleValues) {
  EXPECT_EQ(murmur("", 0), 0u);
  EXPECT_EQ(murmur("", 1), 0x5825F5F3BD962979ull);
  EXPECT_EQ(murmur("a", 0), 0xE2758033E4B942C2ull);
  EXPECT_EQ(murmur("123456789", 0), 0x7072F374C5BD9E6Bull);
  EXPECT_EQ(murmur("12345678", 0), 0xB69C27064D6B347Cull);
  EXPECT_EQ(murmur("hello world", 42), 0x77F5C22C6A50D924ull);
}

TEST(Murmur, NullDataHashesAsEmpty) {
  EXPECT_EQ(oruMurmurHash64(nullptr, 0, 1), 0x5825F5F3BD962979ull);
  EXPECT_EQ(oruMurmurHash64(nullptr, 50, 1), 0x5825F5F3BD962979ull);
}

TEST(Murmur, LengthIsMixedIn) {
  // Trailing zero bytes leave the tail word unchanged; only the length
  // tells these inputs apart.
  const char zeros[16] = {};
  std::set<uint64_t> seen;
  for (size_t n = 0; n <= 16; ++n) seen.insert(oruMurmurHash64(zeros, n, 0));
  EXPECT_EQ(seen.size(), 17u);
}

TEST(Murmur, EveryByteAndTheSeedMatter) {
  const std::string base = "The quick brown fox jumps over the lazy dog";
  const uint64_t h = murmur(base, 7);
  EXPECT_NE(murmur(base, 8), h);
  for (size_t i = 0; i < base.size(); ++i) {
    std::string changed = base;
    changed[i] ^= 1;
    EXPECT_NE(murmur(changed, 7), h) << "byte " << i;
  }
}

TEST(Murmur, IndependentOfAlignment) {
  const std::string msg = "alignment must not change the hash value!";
  const uint64_t expected = murmur(msg, 3);
  std::vector<char> storage(msg.size() + 16);
  for (size_t align = 0; align < 16; ++align) {
    std::memcpy(storage.data() + align, msg.data(), msg.size());
    EXPECT_EQ(oruMurmurHash64(storage.data() + align, msg.size(), 3), expected) << align;
  }
}

}  // namespace
