#include "oru/time.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <string>

namespace {

oruTimeVal tv(int32_t sec, int32_t usec) { return oruTimeVal{sec, usec}; }

void expect_time(const oruTimeVal& actual, int32_t sec, int32_t usec) {
  EXPECT_EQ(actual.sec, sec);
  EXPECT_EQ(actual.usec, usec);
}

struct Expected {
  uint32_t year, month, day, dayOfWeek, hour, minute, second, milliseconds;
};

void expect_date(const oruDateTime& d, const Expected& e) {
  EXPECT_EQ(d.year, e.year);
  EXPECT_EQ(d.month, e.month);
  EXPECT_EQ(d.day, e.day);
  EXPECT_EQ(d.dayOfWeek, e.dayOfWeek);
  EXPECT_EQ(d.hour, e.hour);
  EXPECT_EQ(d.minute, e.minute);
  EXPECT_EQ(d.second, e.second);
  EXPECT_EQ(d.milliseconds, e.milliseconds);
}

oruDateTime utc(int32_t sec, int32_t usec) {
  oruTimeVal t = tv(sec, usec);
  oruDateTime d{};
  EXPECT_EQ(oruGetUTCDateTime(&t, &d), ORU_OK);
  return d;
}

TEST(TimeArithmetic, AddCarriesOnce) {
  oruTimeVal a = tv(1, 600000), b = tv(2, 500000);
  expect_time(oruTimeValAdd(&a, &b), 4, 100000);
  oruTimeVal c = tv(0, 999999), d = tv(0, 1);
  expect_time(oruTimeValAdd(&c, &d), 1, 0);
  // Out-of-range input is carried once, not normalised.
  oruTimeVal e = tv(0, 1999999), f = tv(0, 1);
  expect_time(oruTimeValAdd(&e, &f), 1, 1000000);
  oruTimeVal g = tv(-1, 0), h = tv(0, -5);
  expect_time(oruTimeValAdd(&g, &h), -1, -5);
}

TEST(TimeArithmetic, SubBorrowsOnce) {
  oruTimeVal a = tv(3, 0), b = tv(2, 100000);
  expect_time(oruTimeValSub(&a, &b), 0, 900000);
  oruTimeVal c = tv(5, 10), d = tv(5, 10);
  expect_time(oruTimeValSub(&c, &d), 0, 0);
  oruTimeVal e = tv(0, -1500000), f = tv(0, 0);
  expect_time(oruTimeValSub(&e, &f), -1, -500000);
  oruTimeVal g = tv(0, 0), h = tv(1, 0);
  expect_time(oruTimeValSub(&g, &h), -1, 0);
}

TEST(TimeArithmetic, CompareSecondsThenMicroseconds) {
  oruTimeVal a = tv(5, 1), b = tv(5, 0), c = tv(4, 999999), d = tv(-1, 0);
  EXPECT_EQ(oruTimeValCmp(&a, &b), 1);
  EXPECT_EQ(oruTimeValCmp(&b, &a), -1);
  EXPECT_EQ(oruTimeValCmp(&a, &a), 0);
  EXPECT_EQ(oruTimeValCmp(&c, &b), -1);
  EXPECT_EQ(oruTimeValCmp(&d, &b), -1);  // seconds are signed
  oruTimeVal e = tv(0, -1), zero = tv(0, 0);
  EXPECT_EQ(oruTimeValCmp(&e, &zero), -1);  // so are microseconds
}

TEST(TimeArithmetic, NullOperandCountsAsZero) {
  oruTimeVal a = tv(2, 5);
  expect_time(oruTimeValAdd(&a, nullptr), 2, 5);
  expect_time(oruTimeValSub(nullptr, &a), -3, 999995);
  oruTimeVal zero = tv(0, 0);
  EXPECT_EQ(oruTimeValCmp(nullptr, &zero), 0);
  EXPECT_EQ(oruTimeValCmp(&a, nullptr), 1);
}

TEST(TimeArithmetic, WrapsInsteadOfOverflowing) {
  oruTimeVal a = tv(INT32_MAX, 999999), b = tv(0, 1);
  expect_time(oruTimeValAdd(&a, &b), INT32_MIN, 0);
}

TEST(TimeCalendar, UtcDates) {
  expect_date(utc(0, 0), {1970, 1, 1, 4, 0, 0, 0, 0});
  expect_date(utc(951782400, 0), {2000, 2, 29, 2, 0, 0, 0, 0});
  expect_date(utc(1700000000, 123456), {2023, 11, 14, 2, 22, 13, 20, 123});
  expect_date(utc(INT32_MAX, 999999), {2038, 1, 19, 2, 3, 14, 7, 999});
  expect_date(utc(INT32_MIN, 0), {1901, 12, 13, 5, 20, 45, 52, 0});
}

TEST(TimeCalendar, NegativeTimesFallIntoEarlierSeconds) {
  expect_date(utc(-1, 0), {1969, 12, 31, 3, 23, 59, 59, 0});
  expect_date(utc(0, -1), {1969, 12, 31, 3, 23, 59, 59, 999});
  expect_date(utc(-1, 500000), {1969, 12, 31, 3, 23, 59, 59, 500});
  expect_date(utc(1, -1000), {1970, 1, 1, 4, 0, 0, 0, 999});
  // Microseconds beyond a second are added, not rejected.
  expect_date(utc(0, 2500000), {1970, 1, 1, 4, 0, 0, 2, 500});
}

// The local time follows TZ on POSIX systems; on Windows it follows the
// system's time-zone setting, which a test cannot change.
#if !defined(_WIN32)
class TimeZoneTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* tz = std::getenv("TZ");
    had_tz_ = tz != nullptr;
    if (had_tz_) saved_ = tz;
  }
  void TearDown() override {
    if (had_tz_) {
      setenv("TZ", saved_.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  bool had_tz_ = false;
  std::string saved_;
};

TEST_F(TimeZoneTest, LocalDateFollowsTheZone) {
  oruTimeVal epoch = tv(0, 250000);
  oruDateTime d{};
  setenv("TZ", "UTC0", 1);
  ASSERT_EQ(oruGetLocalDateTime(&epoch, &d), ORU_OK);
  expect_date(d, {1970, 1, 1, 4, 0, 0, 0, 250});
  // Changing TZ takes effect without anyone calling tzset.
  setenv("TZ", "EST5", 1);
  ASSERT_EQ(oruGetLocalDateTime(&epoch, &d), ORU_OK);
  expect_date(d, {1969, 12, 31, 3, 19, 0, 0, 250});
  setenv("TZ", "JST-9", 1);
  ASSERT_EQ(oruGetLocalDateTime(&epoch, &d), ORU_OK);
  expect_date(d, {1970, 1, 1, 4, 9, 0, 0, 250});
}
#endif  // !_WIN32

TEST(TimeCalendar, NullArgumentsAreRejected) {
  oruTimeVal t = tv(0, 0);
  oruDateTime d{};
  EXPECT_EQ(oruGetUTCDateTime(nullptr, &d), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetUTCDateTime(&t, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetLocalDateTime(nullptr, &d), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetLocalDateTime(&t, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetCurrentTime(nullptr), ORU_E_INVALID_ARG);
}

TEST(TimeClock, CurrentTimeIsNormalisedAndNearTheSystemClock) {
  oruTimeVal now{};
  ASSERT_EQ(oruGetCurrentTime(&now), ORU_OK);
  EXPECT_GE(now.usec, 0);
  EXPECT_LE(now.usec, 999999);
  // Generous bound: only catches a wrong epoch or unit.
  EXPECT_LE(std::llabs(static_cast<long long>(now.sec) - static_cast<long long>(time(nullptr))),
            60);
}

TEST(TimeClock, SleepLastsAtLeastTheRequestedTime) {
  EXPECT_EQ(oruSleep(0), ORU_OK);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(oruSleep(20), ORU_OK);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

}  // namespace
