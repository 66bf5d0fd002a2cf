// MD5: the RFC 1321 test suite whole and in pieces, the context's layout
// and bit count, and the clearing after Final.
#include "oru/hash.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

struct Case {
  const char* message;
  const char* digest;
};

// The test suite of RFC 1321, appendix A.5.
const Case kRfc1321[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"1234567890123456789012345678901234567890123456789012345678901234567890123456789"
     "0",
     "57edf4a22be3c955ac49da2e2107b67a"},
};

std::string hex(const unsigned char* d, size_t n) {
  static const char digits[] = "0123456789abcdef";
  std::string s;
  for (size_t i = 0; i < n; ++i) {
    s += digits[d[i] >> 4];
    s += digits[d[i] & 15];
  }
  return s;
}

// The digest of `message` fed in pieces of `piece` bytes (0: all at once).
std::string md5(const std::string& message, size_t piece = 0) {
  oruMD5Context ctx;
  EXPECT_EQ(oruMD5Init(&ctx), ORU_OK);
  if (piece == 0) piece = message.size() + 1;
  for (size_t pos = 0; pos < message.size(); pos += piece) {
    oruMD5Update(&ctx, message.data() + pos, std::min(piece, message.size() - pos));
  }
  unsigned char digest[16];
  oruMD5Final(digest, &ctx);
  return hex(digest, 16);
}

TEST(Md5, Rfc1321Suite) {
  for (const Case& c : kRfc1321) EXPECT_EQ(md5(c.message), c.digest) << '"' << c.message << '"';
}

TEST(Md5, Rfc1321SuiteInPieces) {
  for (const Case& c : kRfc1321) {
    for (size_t piece = 1; piece <= 130; ++piece) {
      ASSERT_EQ(md5(c.message, piece), c.digest) << '"' << c.message << "\" in pieces of " << piece;
    }
  }
}

TEST(Md5, LongMessagesInPieces) {
  // Lengths around the block and padding boundaries, split at every
  // piece size: all must agree with the one-shot digest.
  std::mt19937 rng(3);
  std::string data(1000, '\0');
  for (auto& ch : data) ch = static_cast<char>(rng());
  for (size_t len : {55u, 56u, 57u, 63u, 64u, 65u, 119u, 120u, 127u, 128u, 129u, 1000u}) {
    const std::string msg = data.substr(0, len);
    const std::string whole = md5(msg);
    for (size_t piece = 1; piece <= 130; ++piece) {
      ASSERT_EQ(md5(msg, piece), whole) << "length " << len << " pieces " << piece;
    }
  }
  // A million 'a's: a well-known digest that crosses many blocks.
  EXPECT_EQ(md5(std::string(1000000, 'a'), 4093), "7707d6ae4e027c70eea2a935c2296f21");
}

TEST(Md5, ContextLayout) {
  static_assert(sizeof(oruMD5Context) == 88);
  static_assert(offsetof(oruMD5Context, state) == 0);
  static_assert(offsetof(oruMD5Context, count) == 16);
  static_assert(offsetof(oruMD5Context, buffer) == 24);
  oruMD5Context ctx;
  std::memset(&ctx, 0xCC, sizeof ctx);
  ASSERT_EQ(oruMD5Init(&ctx), ORU_OK);
  EXPECT_EQ(ctx.state[0], 0x67452301u);
  EXPECT_EQ(ctx.state[1], 0xEFCDAB89u);
  EXPECT_EQ(ctx.state[2], 0x98BADCFEu);
  EXPECT_EQ(ctx.state[3], 0x10325476u);
  EXPECT_EQ(ctx.count[0], 0u);
  EXPECT_EQ(ctx.count[1], 0u);
  // Pending input waits in the buffer; the count is in bits.
  oruMD5Update(&ctx, "abc", 3);
  EXPECT_EQ(ctx.count[0], 24u);
  EXPECT_EQ(std::memcmp(ctx.buffer, "abc", 3), 0);
}

TEST(Md5, BitCountCarriesIntoHighWord) {
  oruMD5Context ctx;
  oruMD5Init(&ctx);
  // As if 2^29 - 1 bytes had gone before: 8 more bytes overflow the low
  // word of the bit count.
  ctx.count[0] = 0xFFFFFFF8u;
  oruMD5Update(&ctx, "12345678", 8);
  EXPECT_EQ(ctx.count[0], 0x00000038u);
  EXPECT_EQ(ctx.count[1], 1u);
}

TEST(Md5, FinalWritesCountLittleEndian) {
  // Two contexts that differ only in the high word of the count must
  // give different digests: the whole 64-bit count is hashed.
  oruMD5Context a, b;
  oruMD5Init(&a);
  oruMD5Init(&b);
  b.count[1] = 1;
  unsigned char da[16], db[16];
  oruMD5Final(da, &a);
  oruMD5Final(db, &b);
  EXPECT_EQ(hex(da, 16), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_NE(hex(db, 16), hex(da, 16));
}

TEST(Md5, FinalClearsTheContext) {
  oruMD5Context ctx;
  oruMD5Init(&ctx);
  oruMD5Update(&ctx, "message digest", 14);
  unsigned char digest[16];
  oruMD5Final(digest, &ctx);
  EXPECT_EQ(hex(digest, 16), "f96b697d7cb7938d525a2f31aaf161d0");
  const oruMD5Context zero{};
  EXPECT_EQ(std::memcmp(&ctx, &zero, sizeof ctx), 0);
  // Initialised again, the context is as good as new.
  oruMD5Init(&ctx);
  oruMD5Update(&ctx, "abc", 3);
  oruMD5Final(digest, &ctx);
  EXPECT_EQ(hex(digest, 16), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Md5, NullArguments) {
  EXPECT_EQ(oruMD5Init(nullptr), ORU_E_INVALID_ARG);
  oruMD5Update(nullptr, "abc", 3);
  oruMD5Context ctx;
  oruMD5Init(&ctx);
  oruMD5Update(&ctx, nullptr, 100);
  EXPECT_EQ(ctx.count[0], 0u);
  oruMD5Update(&ctx, "abc", 3);
  oruMD5Final(nullptr, &ctx);  // nothing happens, the context stays
  EXPECT_EQ(ctx.count[0], 24u);
  unsigned char digest[16] = {};
  oruMD5Final(digest, nullptr);
  oruMD5Final(digest, &ctx);
  EXPECT_EQ(hex(digest, 16), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Md5, UnalignedInput) {
  // Blocks taken straight from the input at every alignment.
  std::vector<char> storage(200 + 16);
  const std::string msg(200, 'x');
  const std::string expected = md5(msg);
  for (size_t align = 0; align < 16; ++align) {
    std::memcpy(storage.data() + align, msg.data(), msg.size());
    oruMD5Context ctx;
    oruMD5Init(&ctx);
    oruMD5Update(&ctx, storage.data() + align, msg.size());
    unsigned char digest[16];
    oruMD5Final(digest, &ctx);
    EXPECT_EQ(hex(digest, 16), expected) << "alignment " << align;
  }
}

}  // namespace
