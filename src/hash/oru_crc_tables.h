// Lookup tables of the CRC models, built by the compiler.
//
// Every table set holds eight tables of 256 entries: tables[0] is the classic
// byte-at-a-time table, tables[k] gives the register after one byte followed
// by k zero bytes, which lets the portable code consume eight bytes per step
// ("slicing by eight").
#ifndef ORU_SRC_HASH_ORU_CRC_TABLES_H
#define ORU_SRC_HASH_ORU_CRC_TABLES_H

#include <cstddef>
#include <cstdint>

namespace oru::hash {

template <typename T>
struct CrcTables {
  T t[8][256];
};

// Reflected models: bits enter least significant first, so the register
// shifts right and the polynomial is given bit-reversed.
template <typename T>
constexpr CrcTables<T> make_reflected_tables(T reflected_poly) {
  CrcTables<T> tables{};
  for (unsigned b = 0; b < 256; ++b) {
    T crc = static_cast<T>(b);
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 1u) ? static_cast<T>((crc >> 1) ^ reflected_poly) : static_cast<T>(crc >> 1);
    }
    tables.t[0][b] = crc;
  }
  for (int k = 1; k < 8; ++k) {
    for (unsigned b = 0; b < 256; ++b) {
      T prev = tables.t[k - 1][b];
      tables.t[k][b] = static_cast<T>((prev >> 8) ^ tables.t[0][prev & 0xFFu]);
    }
  }
  return tables;
}

// 16-bit models that are not reflected: bits enter most significant first.
constexpr CrcTables<uint16_t> make_forward16_tables(uint16_t poly) {
  CrcTables<uint16_t> tables{};
  for (unsigned b = 0; b < 256; ++b) {
    uint16_t crc = static_cast<uint16_t>(b << 8);
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 0x8000u) ? static_cast<uint16_t>((crc << 1) ^ poly)
                            : static_cast<uint16_t>(crc << 1);
    }
    tables.t[0][b] = crc;
  }
  for (int k = 1; k < 8; ++k) {
    for (unsigned b = 0; b < 256; ++b) {
      uint16_t prev = tables.t[k - 1][b];
      tables.t[k][b] = static_cast<uint16_t>((prev << 8) ^ tables.t[0][(prev >> 8) & 0xFFu]);
    }
  }
  return tables;
}

// Bit-reversed polynomials of the reflected models.
inline constexpr uint16_t kCrc16ArcPoly = 0xA001u;             // 0x8005 reversed
inline constexpr uint32_t kCrc32Poly = 0xEDB88320u;            // 0x04C11DB7 reversed
inline constexpr uint64_t kCrc64Poly = 0xC96C5795D7870F42ull;  // ECMA-182 reversed
// The polynomial of both forward 16-bit models (CCITT-FALSE and XMODEM).
inline constexpr uint16_t kCrc16CcittPoly = 0x1021u;

inline constexpr CrcTables<uint16_t> kCrc16ArcTables = make_reflected_tables(kCrc16ArcPoly);
inline constexpr CrcTables<uint16_t> kCrc16CcittTables = make_forward16_tables(kCrc16CcittPoly);
inline constexpr CrcTables<uint32_t> kCrc32Tables = make_reflected_tables(kCrc32Poly);
inline constexpr CrcTables<uint64_t> kCrc64Tables = make_reflected_tables(kCrc64Poly);

static_assert(kCrc32Tables.t[0][1] == 0x77073096u, "CRC-32 table");
static_assert(kCrc32Tables.t[0][255] == 0x2D02EF8Du, "CRC-32 table");
static_assert(kCrc64Tables.t[0][1] == 0xB32E4CBE03A75F6Full, "CRC-64 table");
static_assert(kCrc16ArcTables.t[0][1] == 0xC0C1u, "CRC-16/ARC table");
static_assert(kCrc16CcittTables.t[0][1] == 0x1021u, "CRC-16/CCITT table");

}  // namespace oru::hash

#endif  // ORU_SRC_HASH_ORU_CRC_TABLES_H
