// Time-value arithmetic and the file-time conversions; no system calls.

#include "system/oru_time_internal.h"

namespace oru::time {

int64_t to_file_time(const oruTimeVal& value) {
  return static_cast<int64_t>(value.sec) * kFileTimeUnitsPerSecond + kUnixEpochAsFileTime +
         static_cast<int64_t>(value.usec) * 10;
}

oruTimeVal from_file_time(int64_t fileTime) {
  int64_t sinceEpoch = fileTime - kUnixEpochAsFileTime;
  oruTimeVal value;
  value.sec = static_cast<int32_t>(sinceEpoch / kFileTimeUnitsPerSecond);
  value.usec = static_cast<int32_t>((sinceEpoch % kFileTimeUnitsPerSecond) / 10);
  return value;
}

CalendarSeconds to_calendar_seconds(int64_t fileTime) {
  // fileTime is never negative here, so plain division rounds down.
  int64_t wholeSeconds = fileTime / kFileTimeUnitsPerSecond;
  int64_t units = fileTime % kFileTimeUnitsPerSecond;
  return {wholeSeconds - kUnixEpochAsFileTime / kFileTimeUnitsPerSecond,
          static_cast<uint32_t>(units / 10000)};
}

}  // namespace oru::time

namespace {

const oruTimeVal kZero = {0, 0};

const oruTimeVal& operand(const oruTimeVal* value) { return value != nullptr ? *value : kZero; }

}  // namespace

extern "C" {

// Sums and differences wrap like the 32-bit fields they live in, hence the
// unsigned arithmetic.
ORU_API oruTimeVal oruTimeValAdd(const oruTimeVal* a, const oruTimeVal* b) {
  const oruTimeVal& x = operand(a);
  const oruTimeVal& y = operand(b);
  oruTimeVal sum;
  sum.sec = static_cast<int32_t>(static_cast<uint32_t>(x.sec) + static_cast<uint32_t>(y.sec));
  sum.usec = static_cast<int32_t>(static_cast<uint32_t>(x.usec) + static_cast<uint32_t>(y.usec));
  // One carry only: out-of-range inputs stay out of range.
  if (sum.usec >= 1000000) {
    sum.usec -= 1000000;
    sum.sec = static_cast<int32_t>(static_cast<uint32_t>(sum.sec) + 1u);
  }
  return sum;
}

ORU_API oruTimeVal oruTimeValSub(const oruTimeVal* a, const oruTimeVal* b) {
  const oruTimeVal& x = operand(a);
  const oruTimeVal& y = operand(b);
  oruTimeVal difference;
  difference.sec =
      static_cast<int32_t>(static_cast<uint32_t>(x.sec) - static_cast<uint32_t>(y.sec));
  difference.usec =
      static_cast<int32_t>(static_cast<uint32_t>(x.usec) - static_cast<uint32_t>(y.usec));
  // One borrow only.
  if (difference.usec < 0) {
    difference.usec += 1000000;
    difference.sec = static_cast<int32_t>(static_cast<uint32_t>(difference.sec) - 1u);
  }
  return difference;
}

ORU_API int oruTimeValCmp(const oruTimeVal* a, const oruTimeVal* b) {
  const oruTimeVal& x = operand(a);
  const oruTimeVal& y = operand(b);
  if (x.sec != y.sec) return x.sec < y.sec ? -1 : 1;
  if (x.usec != y.usec) return x.usec < y.usec ? -1 : 1;
  return 0;
}

}  // extern "C"
