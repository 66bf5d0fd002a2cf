// Byte-order conversions on a little-endian host.

#include "oru/text.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(ByteOrder, BigEndianReversesBytes) {
  EXPECT_EQ(oruBE2Host16(0x1122), 0x2211);
  EXPECT_EQ(oruHost2BE16(0x1122), 0x2211);
  EXPECT_EQ(oruBE2Host32(0x11223344u), 0x44332211u);
  EXPECT_EQ(oruHost2BE32(0x11223344u), 0x44332211u);
  EXPECT_EQ(oruBE2Host64(0x1122334455667788ull), 0x8877665544332211ull);
  EXPECT_EQ(oruHost2BE64(0x1122334455667788ull), 0x8877665544332211ull);
}

TEST(ByteOrder, BigEndianMatchesMemoryLayout) {
  const unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  uint64_t raw;
  std::memcpy(&raw, bytes, 8);
  EXPECT_EQ(oruBE2Host64(raw), 0x0102030405060708ull);
  uint32_t raw32;
  std::memcpy(&raw32, bytes, 4);
  EXPECT_EQ(oruBE2Host32(raw32), 0x01020304u);
  EXPECT_EQ(oruHost2BE32(oruBE2Host32(raw32)), raw32);
}

TEST(ByteOrder, LittleEndianIsIdentity) {
  EXPECT_EQ(oruLE2Host16(0xBEEF), 0xBEEF);
  EXPECT_EQ(oruHost2LE16(0xBEEF), 0xBEEF);
  EXPECT_EQ(oruLE2Host32(0xDEADBEEFu), 0xDEADBEEFu);
  EXPECT_EQ(oruHost2LE32(0xDEADBEEFu), 0xDEADBEEFu);
  EXPECT_EQ(oruLE2Host64(0x0123456789ABCDEFull), 0x0123456789ABCDEFull);
  EXPECT_EQ(oruHost2LE64(0x0123456789ABCDEFull), 0x0123456789ABCDEFull);
}

}  // namespace
