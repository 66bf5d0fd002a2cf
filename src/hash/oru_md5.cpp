// MD5 (RFC 1321) with the caller-owned oruMD5Context.
#include "hash/oru_hash_bytes.h"
#include "oru/hash.h"

#include <cstring>

namespace {

constexpr uint32_t rotl(uint32_t v, int s) { return (v << s) | (v >> (32 - s)); }

// The round functions are written so that the operand that was computed
// last (b) enters as late as possible: that shortens the chain of
// dependent instructions, which is what bounds MD5's speed.
//   F = (b & c) | (~b & d)  ==  d ^ (b & (c ^ d))
//   G = (b & d) | (c & ~d): the two halves share no bits, so they may be
//       added to a one after the other
//   H = b ^ c ^ d
//   I = c ^ (b | ~d)
#define ORU_MD5_F(a, b, c, d, x, t, s) \
  a += (x) + (t);                      \
  a += (d) ^ ((b) & ((c) ^ (d)));      \
  a = rotl(a, s) + (b)
#define ORU_MD5_G(a, b, c, d, x, t, s) \
  a += (x) + (t) + ((c) & ~(d));       \
  a += (b) & (d);                      \
  a = rotl(a, s) + (b)
#define ORU_MD5_H(a, b, c, d, x, t, s) \
  a += (x) + (t);                      \
  a += (b) ^ (c) ^ (d);                \
  a = rotl(a, s) + (b)
#define ORU_MD5_I(a, b, c, d, x, t, s) \
  a += (x) + (t);                      \
  a += (c) ^ ((b) | ~(d));             \
  a = rotl(a, s) + (b)

// One 64-byte block.
void md5_transform(uint32_t state[4], const unsigned char block[64]) noexcept {
  using oru::hash::load_le32;
  uint32_t x[16];
  for (int i = 0; i < 16; ++i) x[i] = load_le32(block + 4 * i);

  uint32_t a = state[0], b = state[1], c = state[2], d = state[3];

  ORU_MD5_F(a, b, c, d, x[0], 0xd76aa478u, 7);
  ORU_MD5_F(d, a, b, c, x[1], 0xe8c7b756u, 12);
  ORU_MD5_F(c, d, a, b, x[2], 0x242070dbu, 17);
  ORU_MD5_F(b, c, d, a, x[3], 0xc1bdceeeu, 22);
  ORU_MD5_F(a, b, c, d, x[4], 0xf57c0fafu, 7);
  ORU_MD5_F(d, a, b, c, x[5], 0x4787c62au, 12);
  ORU_MD5_F(c, d, a, b, x[6], 0xa8304613u, 17);
  ORU_MD5_F(b, c, d, a, x[7], 0xfd469501u, 22);
  ORU_MD5_F(a, b, c, d, x[8], 0x698098d8u, 7);
  ORU_MD5_F(d, a, b, c, x[9], 0x8b44f7afu, 12);
  ORU_MD5_F(c, d, a, b, x[10], 0xffff5bb1u, 17);
  ORU_MD5_F(b, c, d, a, x[11], 0x895cd7beu, 22);
  ORU_MD5_F(a, b, c, d, x[12], 0x6b901122u, 7);
  ORU_MD5_F(d, a, b, c, x[13], 0xfd987193u, 12);
  ORU_MD5_F(c, d, a, b, x[14], 0xa679438eu, 17);
  ORU_MD5_F(b, c, d, a, x[15], 0x49b40821u, 22);

  ORU_MD5_G(a, b, c, d, x[1], 0xf61e2562u, 5);
  ORU_MD5_G(d, a, b, c, x[6], 0xc040b340u, 9);
  ORU_MD5_G(c, d, a, b, x[11], 0x265e5a51u, 14);
  ORU_MD5_G(b, c, d, a, x[0], 0xe9b6c7aau, 20);
  ORU_MD5_G(a, b, c, d, x[5], 0xd62f105du, 5);
  ORU_MD5_G(d, a, b, c, x[10], 0x02441453u, 9);
  ORU_MD5_G(c, d, a, b, x[15], 0xd8a1e681u, 14);
  ORU_MD5_G(b, c, d, a, x[4], 0xe7d3fbc8u, 20);
  ORU_MD5_G(a, b, c, d, x[9], 0x21e1cde6u, 5);
  ORU_MD5_G(d, a, b, c, x[14], 0xc33707d6u, 9);
  ORU_MD5_G(c, d, a, b, x[3], 0xf4d50d87u, 14);
  ORU_MD5_G(b, c, d, a, x[8], 0x455a14edu, 20);
  ORU_MD5_G(a, b, c, d, x[13], 0xa9e3e905u, 5);
  ORU_MD5_G(d, a, b, c, x[2], 0xfcefa3f8u, 9);
  ORU_MD5_G(c, d, a, b, x[7], 0x676f02d9u, 14);
  ORU_MD5_G(b, c, d, a, x[12], 0x8d2a4c8au, 20);

  ORU_MD5_H(a, b, c, d, x[5], 0xfffa3942u, 4);
  ORU_MD5_H(d, a, b, c, x[8], 0x8771f681u, 11);
  ORU_MD5_H(c, d, a, b, x[11], 0x6d9d6122u, 16);
  ORU_MD5_H(b, c, d, a, x[14], 0xfde5380cu, 23);
  ORU_MD5_H(a, b, c, d, x[1], 0xa4beea44u, 4);
  ORU_MD5_H(d, a, b, c, x[4], 0x4bdecfa9u, 11);
  ORU_MD5_H(c, d, a, b, x[7], 0xf6bb4b60u, 16);
  ORU_MD5_H(b, c, d, a, x[10], 0xbebfbc70u, 23);
  ORU_MD5_H(a, b, c, d, x[13], 0x289b7ec6u, 4);
  ORU_MD5_H(d, a, b, c, x[0], 0xeaa127fau, 11);
  ORU_MD5_H(c, d, a, b, x[3], 0xd4ef3085u, 16);
  ORU_MD5_H(b, c, d, a, x[6], 0x04881d05u, 23);
  ORU_MD5_H(a, b, c, d, x[9], 0xd9d4d039u, 4);
  ORU_MD5_H(d, a, b, c, x[12], 0xe6db99e5u, 11);
  ORU_MD5_H(c, d, a, b, x[15], 0x1fa27cf8u, 16);
  ORU_MD5_H(b, c, d, a, x[2], 0xc4ac5665u, 23);

  ORU_MD5_I(a, b, c, d, x[0], 0xf4292244u, 6);
  ORU_MD5_I(d, a, b, c, x[7], 0x432aff97u, 10);
  ORU_MD5_I(c, d, a, b, x[14], 0xab9423a7u, 15);
  ORU_MD5_I(b, c, d, a, x[5], 0xfc93a039u, 21);
  ORU_MD5_I(a, b, c, d, x[12], 0x655b59c3u, 6);
  ORU_MD5_I(d, a, b, c, x[3], 0x8f0ccc92u, 10);
  ORU_MD5_I(c, d, a, b, x[10], 0xffeff47du, 15);
  ORU_MD5_I(b, c, d, a, x[1], 0x85845dd1u, 21);
  ORU_MD5_I(a, b, c, d, x[8], 0x6fa87e4fu, 6);
  ORU_MD5_I(d, a, b, c, x[15], 0xfe2ce6e0u, 10);
  ORU_MD5_I(c, d, a, b, x[6], 0xa3014314u, 15);
  ORU_MD5_I(b, c, d, a, x[13], 0x4e0811a1u, 21);
  ORU_MD5_I(a, b, c, d, x[4], 0xf7537e82u, 6);
  ORU_MD5_I(d, a, b, c, x[11], 0xbd3af235u, 10);
  ORU_MD5_I(c, d, a, b, x[2], 0x2ad7d2bbu, 15);
  ORU_MD5_I(b, c, d, a, x[9], 0xeb86d391u, 21);

  state[0] += a;
  state[1] += b;
  state[2] += c;
  state[3] += d;
}

#undef ORU_MD5_F
#undef ORU_MD5_G
#undef ORU_MD5_H
#undef ORU_MD5_I

}  // namespace

extern "C" ORU_API oruResult oruMD5Init(oruMD5Context* context) {
  if (context == nullptr) return ORU_E_INVALID_ARG;
  context->state[0] = 0x67452301u;
  context->state[1] = 0xEFCDAB89u;
  context->state[2] = 0x98BADCFEu;
  context->state[3] = 0x10325476u;
  context->count[0] = 0;
  context->count[1] = 0;
  return ORU_OK;
}

extern "C" ORU_API void oruMD5Update(oruMD5Context* context, const void* data, uint64_t length) {
  if (context == nullptr || data == nullptr) return;
  const auto* input = static_cast<const unsigned char*>(data);

  size_t index = (context->count[0] >> 3) & 63u;
  // The bit count is 64 bits kept in two words; length * 8 may itself
  // need more than 32 bits, whose upper part is length >> 29.
  uint32_t low_bits = static_cast<uint32_t>(length << 3);
  context->count[0] += low_bits;
  if (context->count[0] < low_bits) ++context->count[1];
  context->count[1] += static_cast<uint32_t>(length >> 29);

  size_t room = 64 - index;
  if (length < room) {
    std::memcpy(context->buffer + index, input, static_cast<size_t>(length));
    return;
  }
  std::memcpy(context->buffer + index, input, room);
  md5_transform(context->state, context->buffer);
  input += room;
  length -= room;
  for (; length >= 64; input += 64, length -= 64) {
    std::memcpy(context->buffer, input, 64);
    md5_transform(context->state, context->buffer);
  }
  std::memcpy(context->buffer, input, static_cast<size_t>(length));
}

extern "C" ORU_API void oruMD5Final(unsigned char digest[16], oruMD5Context* context) {
  if (digest == nullptr || context == nullptr) return;

  unsigned char bits[8];
  oru::hash::store_le32(bits, context->count[0]);
  oru::hash::store_le32(bits + 4, context->count[1]);

  // 0x80, then zeros up to 56 mod 64, then the bit count.
  static const unsigned char padding[64] = {0x80};
  size_t index = (context->count[0] >> 3) & 63u;
  size_t pad = index < 56 ? 56 - index : 120 - index;
  oruMD5Update(context, padding, pad);
  oruMD5Update(context, bits, sizeof bits);

  for (int i = 0; i < 4; ++i) oru::hash::store_le32(digest + 4 * i, context->state[i]);
  std::memset(context, 0, sizeof *context);
}
