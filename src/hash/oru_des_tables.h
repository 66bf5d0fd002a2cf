// The fixed tables of DES (FIPS 46-3) and the lookup tables derived from
// them by the compiler.
//
// Bit numbers in the standard's tables count from 1 at the most significant
// bit of the first byte; permute_bits() follows that convention.
#ifndef ORU_SRC_HASH_ORU_DES_TABLES_H
#define ORU_SRC_HASH_ORU_DES_TABLES_H

#include <cstdint>

// The tables keep the row layout of the published standard.
// clang-format off
namespace oru::hash::des {

// Initial permutation: output bit i is input bit kIP[i].
inline constexpr uint8_t kIP[64] = {
    58, 50, 42, 34, 26, 18, 10, 2, 60, 52, 44, 36, 28, 20, 12, 4,
    62, 54, 46, 38, 30, 22, 14, 6, 64, 56, 48, 40, 32, 24, 16, 8,
    57, 49, 41, 33, 25, 17, 9,  1, 59, 51, 43, 35, 27, 19, 11, 3,
    61, 53, 45, 37, 29, 21, 13, 5, 63, 55, 47, 39, 31, 23, 15, 7};

// Expansion of the 32-bit half block to the 48 bits that meet the subkey.
inline constexpr uint8_t kE[48] = {
    32, 1,  2,  3,  4,  5,  4,  5,  6,  7,  8,  9,  8,  9,  10, 11,
    12, 13, 12, 13, 14, 15, 16, 17, 16, 17, 18, 19, 20, 21, 20, 21,
    22, 23, 24, 25, 24, 25, 26, 27, 28, 29, 28, 29, 30, 31, 32, 1};

// Permutation of the S-box outputs.
inline constexpr uint8_t kP[32] = {16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23, 26, 5,  18, 31, 10,
                                   2,  8, 24, 14, 32, 27, 3,  9,  19, 13, 30, 6,  22, 11, 4,  25};

// Permuted choice 1: the 56 key bits that matter (parity bits 8, 16, ...
// are left out), as the halves C and D.
inline constexpr uint8_t kPC1[56] = {
    57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18, 10, 2,  59, 51, 43,
    35, 27, 19, 11, 3,  60, 52, 44, 36, 63, 55, 47, 39, 31, 23, 15, 7,  62, 54,
    46, 38, 30, 22, 14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};

// Permuted choice 2: the 48 subkey bits taken from C and D.
inline constexpr uint8_t kPC2[48] = {
    14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
    26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
    51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};

// Left rotations of C and D before each round.
inline constexpr uint8_t kKeyShifts[16] = {1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};

// The eight S-boxes, each four rows of sixteen.
inline constexpr uint8_t kSBox[8][64] = {
    {14, 4,  13, 1, 2,  15, 11, 8,  3,  10, 6,  12, 5,  9,  0, 7,
     0,  15, 7,  4, 14, 2,  13, 1,  10, 6,  12, 11, 9,  5,  3, 8,
     4,  1,  14, 8, 13, 6,  2,  11, 15, 12, 9,  7,  3,  10, 5, 0,
     15, 12, 8,  2, 4,  9,  1,  7,  5,  11, 3,  14, 10, 0,  6, 13},
    {15, 1,  8,  14, 6,  11, 3,  4,  9,  7, 2,  13, 12, 0, 5,  10,
     3,  13, 4,  7,  15, 2,  8,  14, 12, 0, 1,  10, 6,  9, 11, 5,
     0,  14, 7,  11, 10, 4,  13, 1,  5,  8, 12, 6,  9,  3, 2,  15,
     13, 8,  10, 1,  3,  15, 4,  2,  11, 6, 7,  12, 0,  5, 14, 9},
    {10, 0,  9,  14, 6, 3,  15, 5,  1,  13, 12, 7,  11, 4,  2,  8,
     13, 7,  0,  9,  3, 4,  6,  10, 2,  8,  5,  14, 12, 11, 15, 1,
     13, 6,  4,  9,  8, 15, 3,  0,  11, 1,  2,  12, 5,  10, 14, 7,
     1,  10, 13, 0,  6, 9,  8,  7,  4,  15, 14, 3,  11, 5,  2,  12},
    {7,  13, 14, 3, 0,  6,  9,  10, 1,  2, 8, 5,  11, 12, 4,  15,
     13, 8,  11, 5, 6,  15, 0,  3,  4,  7, 2, 12, 1,  10, 14, 9,
     10, 6,  9,  0, 12, 11, 7,  13, 15, 1, 3, 14, 5,  2,  8,  4,
     3,  15, 0,  6, 10, 1,  13, 8,  9,  4, 5, 11, 12, 7,  2,  14},
    {2,  12, 4,  1,  7,  10, 11, 6,  8,  5,  3,  15, 13, 0, 14, 9,
     14, 11, 2,  12, 4,  7,  13, 1,  5,  0,  15, 10, 3,  9, 8,  6,
     4,  2,  1,  11, 10, 13, 7,  8,  15, 9,  12, 5,  6,  3, 0,  14,
     11, 8,  12, 7,  1,  14, 2,  13, 6,  15, 0,  9,  10, 4, 5,  3},
    {12, 1,  10, 15, 9, 2,  6,  8,  0,  13, 3,  4,  14, 7,  5,  11,
     10, 15, 4,  2,  7, 12, 9,  5,  6,  1,  13, 14, 0,  11, 3,  8,
     9,  14, 15, 5,  2, 8,  12, 3,  7,  0,  4,  10, 1,  13, 11, 6,
     4,  3,  2,  12, 9, 5,  15, 10, 11, 14, 1,  7,  6,  0,  8,  13},
    {4,  11, 2,  14, 15, 0, 8,  13, 3,  12, 9, 7,  5,  10, 6, 1,
     13, 0,  11, 7,  4,  9, 1,  10, 14, 3,  5, 12, 2,  15, 8, 6,
     1,  4,  11, 13, 12, 3, 7,  14, 10, 15, 6, 8,  0,  5,  9, 2,
     6,  11, 13, 8,  1,  4, 10, 7,  9,  5,  0, 15, 14, 2,  3, 12},
    {13, 2,  8,  4, 6,  15, 11, 1,  10, 9,  3,  14, 5,  0,  12, 7,
     1,  15, 13, 8, 10, 3,  7,  4,  12, 5,  6,  11, 0,  14, 9,  2,
     7,  11, 4,  1, 9,  12, 14, 2,  0,  6,  10, 13, 15, 3,  5,  8,
     2,  1,  14, 7, 4,  10, 8,  13, 15, 12, 9,  0,  3,  5,  6,  11}};

// Applies a table of the standard to the low in_bits bits of in, giving a
// value of `count` bits.
constexpr uint64_t permute_bits(uint64_t in, int in_bits, const uint8_t* table, int count) {
    uint64_t out = 0;
    for (int i = 0; i < count; ++i) out = (out << 1) | ((in >> (in_bits - table[i])) & 1u);
    return out;
}

// Each S-box row must be a permutation of 0..15: a cheap guard against a
// mistyped entry.
constexpr bool sbox_rows_are_permutations() {
    for (const auto& box : kSBox) {
        for (int row = 0; row < 4; ++row) {
            unsigned seen = 0;
            for (int col = 0; col < 16; ++col) seen |= 1u << box[row * 16 + col];
            if (seen != 0xFFFFu) return false;
        }
    }
    return true;
}
static_assert(sbox_rows_are_permutations());

// S-box j combined with the P permutation: indexed by the six bits that
// enter the box (the first of them the most significant), it gives the
// box's four output bits already in their places after P.
struct SPTables {
    uint32_t t[8][64];
};

constexpr SPTables make_sp_tables() {
    SPTables sp{};
    for (int box = 0; box < 8; ++box) {
        for (unsigned x = 0; x < 64; ++x) {
            unsigned row = ((x >> 4) & 2u) | (x & 1u);
            unsigned col = (x >> 1) & 15u;
            uint32_t out = static_cast<uint32_t>(kSBox[box][row * 16 + col]) << (28 - 4 * box);
            sp.t[box][x] = static_cast<uint32_t>(permute_bits(out, 32, kP, 32));
        }
    }
    return sp;
}

inline constexpr SPTables kSP = make_sp_tables();

// clang-format on
}  // namespace oru::hash::des

#endif  // ORU_SRC_HASH_ORU_DES_TABLES_H
