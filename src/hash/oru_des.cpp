// DES and triple DES on single blocks, with the caller-owned key schedule
// of one 6-bit subkey group per byte.
#include "hash/oru_des_tables.h"
#include "hash/oru_hash_bytes.h"
#include "oru/hash.h"

#include <cstring>

namespace {

using namespace oru::hash::des;

constexpr uint32_t rotr32(uint32_t v, int s) { return (v >> s) | (v << (32 - s)); }

constexpr uint64_t delta_swap(uint64_t x, uint64_t mask, int shift) {
  uint64_t t = ((x >> shift) ^ x) & mask;
  return x ^ t ^ (t << shift);
}

// The initial permutation is a transpose of the block as an 8x8 bit matrix
// followed by a reordering of the rows.  Input: the block loaded
// little-endian.  Output: the permuted block in the standard's bit order,
// L in the high half and R in the low half.
constexpr uint64_t initial_permutation(uint64_t y) {
  y = delta_swap(y, 0x00AA00AA00AA00AAull, 7);
  y = delta_swap(y, 0x0000CCCC0000CCCCull, 14);
  y = delta_swap(y, 0x00000000F0F0F0F0ull, 28);
  // Even bytes to the low half, odd ones to the high half.
  y = delta_swap(y, 0x0000FF000000FF00ull, 8);
  y = delta_swap(y, 0x00000000FFFF0000ull, 16);
  return (y << 32) | (y >> 32);
}

// The inverse: the same swaps in reverse order.  Output: the block to be
// stored little-endian.
constexpr uint64_t final_permutation(uint64_t z) {
  uint64_t y = (z << 32) | (z >> 32);
  y = delta_swap(y, 0x00000000FFFF0000ull, 16);
  y = delta_swap(y, 0x0000FF000000FF00ull, 8);
  y = delta_swap(y, 0x00000000F0F0F0F0ull, 28);
  y = delta_swap(y, 0x0000CCCC0000CCCCull, 14);
  y = delta_swap(y, 0x00AA00AA00AA00AAull, 7);
  return y;
}

// The expansion puts every group of six bits four bits further along R, so
// groups two apart are eight bits apart: two rotations of R hold all eight
// groups, one per byte.  Which group sits in which byte:
//   rotr(R, 19): bytes 0..3 hold groups 2, 0, 6, 4
//   rotr(R, 23): bytes 0..3 hold groups 1, 7, 5, 3
// The subkey byte is XORed in before masking, so a corrupted schedule can
// never index outside a table.
inline uint32_t feistel(uint32_t r, const unsigned char* k) noexcept {
  const uint32_t v = rotr32(r, 19);
  const uint32_t w = rotr32(r, 23);
  return kSP.t[0][((v >> 8) ^ k[0]) & 63] ^ kSP.t[1][(w ^ k[1]) & 63] ^ kSP.t[2][(v ^ k[2]) & 63] ^
         kSP.t[3][((w >> 24) ^ k[3]) & 63] ^ kSP.t[4][((v >> 24) ^ k[4]) & 63] ^
         kSP.t[5][((w >> 16) ^ k[5]) & 63] ^ kSP.t[6][((v >> 16) ^ k[6]) & 63] ^
         kSP.t[7][((w >> 8) ^ k[7]) & 63];
}

// The same choice of bytes, checked against the expansion table.
constexpr bool expansion_matches_table() {
  for (int bit = 0; bit < 32; ++bit) {
    const uint32_t r = 1u << bit;
    const uint64_t e = permute_bits(r, 32, kE, 48);
    const uint32_t v = rotr32(r, 19), w = rotr32(r, 23);
    const uint32_t groups[8] = {(v >> 8) & 63,  w & 63,         v & 63,         (w >> 24) & 63,
                                (v >> 24) & 63, (w >> 16) & 63, (v >> 16) & 63, (w >> 8) & 63};
    for (int g = 0; g < 8; ++g) {
      if (groups[g] != ((e >> (42 - 6 * g)) & 63)) return false;
    }
  }
  return true;
}
static_assert(expansion_matches_table());

// Both permutations move single bits; checking every single bit proves the
// swaps equal the table.
constexpr bool permutations_match_table() {
  for (int bit = 0; bit < 64; ++bit) {
    const uint64_t block = 1ull << bit;  // in the standard's bit order
    const uint64_t loaded = __builtin_bswap64(block);
    if (initial_permutation(loaded) != permute_bits(block, 64, kIP, 64)) return false;
    if (final_permutation(initial_permutation(loaded)) != loaded) return false;
  }
  return true;
}
static_assert(permutations_match_table());

// Sixteen rounds on the halves; the subkeys are taken from first to last
// (encryption) or from last to first (decryption).  Leaves L16 in l and R16
// in r: the caller swaps them.
inline void sixteen_rounds(uint32_t& l, uint32_t& r, const unsigned char* subkeys,
                           bool decrypt) noexcept {
  if (!decrypt) {
    for (int i = 0; i < 16; i += 2) {
      l ^= feistel(r, subkeys + 8 * i);
      r ^= feistel(l, subkeys + 8 * (i + 1));
    }
  } else {
    for (int i = 15; i > 0; i -= 2) {
      l ^= feistel(r, subkeys + 8 * i);
      r ^= feistel(l, subkeys + 8 * (i - 1));
    }
  }
}

void key_setup(const unsigned char key[8], oruDESKeySchedule* schedule) noexcept {
  std::memset(schedule->subkeys, 0, sizeof schedule->subkeys);
  const uint64_t k = oru::hash::load_be64(key);
  const uint64_t cd = permute_bits(k, 64, kPC1, 56);
  uint32_t c = static_cast<uint32_t>(cd >> 28);
  uint32_t d = static_cast<uint32_t>(cd & 0x0FFFFFFFu);
  for (int round = 0; round < 16; ++round) {
    for (int s = 0; s < kKeyShifts[round]; ++s) {
      c = ((c << 1) | (c >> 27)) & 0x0FFFFFFFu;
      d = ((d << 1) | (d >> 27)) & 0x0FFFFFFFu;
    }
    const uint64_t subkey = permute_bits((static_cast<uint64_t>(c) << 28) | d, 56, kPC2, 48);
    for (int group = 0; group < 8; ++group) {
      schedule->subkeys[8 * round + group] =
          static_cast<unsigned char>((subkey >> (42 - 6 * group)) & 63);
    }
  }
}

}  // namespace

extern "C" ORU_API void oruDESKeySetup(const unsigned char key[8], oruDESKeySchedule* schedule) {
  if (key == nullptr || schedule == nullptr) return;
  key_setup(key, schedule);
}

extern "C" ORU_API void oruDESKeySetup3(const unsigned char keys[24], oruDESKeySchedule* schedule1,
                                        oruDESKeySchedule* schedule2,
                                        oruDESKeySchedule* schedule3) {
  if (keys == nullptr || schedule1 == nullptr || schedule2 == nullptr || schedule3 == nullptr) {
    return;
  }
  key_setup(keys, schedule1);
  key_setup(keys + 8, schedule2);
  key_setup(keys + 16, schedule3);
}

extern "C" ORU_API void oruDESBlockCipherECB(const oruDESKeySchedule* schedule,
                                             unsigned char block[8], int decrypt) {
  if (schedule == nullptr || block == nullptr) return;
  const uint64_t lr = initial_permutation(oru::hash::load_le64(block));
  uint32_t l = static_cast<uint32_t>(lr >> 32);
  uint32_t r = static_cast<uint32_t>(lr);
  sixteen_rounds(l, r, schedule->subkeys, decrypt != 0);
  // The output is R16 L16.
  oru::hash::store_le64(block, final_permutation((static_cast<uint64_t>(r) << 32) | l));
}

extern "C" ORU_API void oruDESBlockCipherECB3(const oruDESKeySchedule* schedule1,
                                              const oruDESKeySchedule* schedule2,
                                              const oruDESKeySchedule* schedule3,
                                              unsigned char block[8], int decrypt) {
  if (schedule1 == nullptr || schedule2 == nullptr || schedule3 == nullptr || block == nullptr) {
    return;
  }
  // Between two DES operations the final permutation of the first and the
  // initial permutation of the second cancel out, leaving only the swap
  // of the halves.
  const uint64_t lr = initial_permutation(oru::hash::load_le64(block));
  uint32_t l = static_cast<uint32_t>(lr >> 32);
  uint32_t r = static_cast<uint32_t>(lr);
  const bool dec = decrypt != 0;
  const oruDESKeySchedule* first = dec ? schedule3 : schedule1;
  const oruDESKeySchedule* last = dec ? schedule1 : schedule3;
  sixteen_rounds(l, r, first->subkeys, dec);
  sixteen_rounds(r, l, schedule2->subkeys, !dec);
  sixteen_rounds(l, r, last->subkeys, dec);
  oru::hash::store_le64(block, final_permutation((static_cast<uint64_t>(r) << 32) | l));
}
