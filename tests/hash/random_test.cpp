// oruGetRandomNumber: the Park-Miller sequences and the state handling.
#include "oru/hash.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

TEST(Random, ZeroStateStartsFromTheFixedSeed) {
  uint32_t state = 0;
  const uint32_t expected[] = {520932930u, 28925691u, 822784415u};
  for (uint32_t e : expected) {
    EXPECT_EQ(oruGetRandomNumber(&state), e);
    EXPECT_EQ(state, e);
  }
  uint32_t seeded = 123459876u;
  EXPECT_EQ(oruGetRandomNumber(&seeded), 520932930u);
}

TEST(Random, StateOneGivesPowersOfTheMultiplier) {
  uint32_t state = 1;
  EXPECT_EQ(oruGetRandomNumber(&state), 16807u);
  EXPECT_EQ(oruGetRandomNumber(&state), 282475249u);
}

TEST(Random, MinimalStandardCheckValue) {
  // Park and Miller's own check: from seed 1, the 10000th value.
  uint32_t state = 1;
  uint32_t value = 0;
  for (int i = 0; i < 10000; ++i) value = oruGetRandomNumber(&state);
  EXPECT_EQ(value, 1043618065u);
}

TEST(Random, MatchesDirectModularArithmetic) {
  // Schrage's method must equal 16807 * s mod (2^31 - 1) in wide
  // arithmetic, including at the ends of the range.
  const uint32_t starts[] = {1u, 2u, 127773u, 127774u, 2147483646u, 1000000000u, 0x7FFFFFFEu};
  for (uint32_t s : starts) {
    uint32_t state = s;
    uint64_t wide = s;
    for (int i = 0; i < 1000; ++i) {
      wide = wide * 16807u % 2147483647u;
      ASSERT_EQ(oruGetRandomNumber(&state), wide) << "from " << s << " step " << i;
      ASSERT_GE(state, 1u);
      ASSERT_LE(state, 2147483646u);
    }
  }
}

TEST(Random, SeparateStatesAreIndependent) {
  uint32_t a = 0, b = 0, c = 42;
  uint32_t first_a = oruGetRandomNumber(&a);
  oruGetRandomNumber(&c);
  oruGetRandomNumber(&c);
  EXPECT_EQ(oruGetRandomNumber(&b), first_a);
  EXPECT_EQ(oruGetRandomNumber(&a), oruGetRandomNumber(&b));
}

TEST(Random, NullStateGivesZero) { EXPECT_EQ(oruGetRandomNumber(nullptr), 0u); }

}  // namespace
