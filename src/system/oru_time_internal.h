// Conversions shared by the time functions and their platform parts.
#ifndef ORU_SRC_SYSTEM_ORU_TIME_INTERNAL_H
#define ORU_SRC_SYSTEM_ORU_TIME_INTERNAL_H

#include "oru/time.h"

#include <cstdint>

namespace oru::time {

// File time: 100-ns units since 1601-01-01 00:00:00 UTC, the common ground
// of every platform's clock.
inline constexpr int64_t kFileTimeUnitsPerSecond = 10000000;
inline constexpr int64_t kUnixEpochAsFileTime = 116444736000000000;

// sec * 10^7 + epoch + usec * 10.  Every oruTimeVal gives a positive file
// time: 32-bit seconds reach back only to 1901.
int64_t to_file_time(const oruTimeVal& value);

// sec = (fileTime - epoch) / 10^7 and usec = remainder / 10, both truncating
// toward zero (so a time before 1970 gets negative microseconds).
oruTimeVal from_file_time(int64_t fileTime);

// A file time split into whole seconds since 1970 (rounded down) and the
// milliseconds within that second, ready for the calendar functions.
struct CalendarSeconds {
  int64_t unixSeconds;
  uint32_t milliseconds;
};
CalendarSeconds to_calendar_seconds(int64_t fileTime);

}  // namespace oru::time

#endif  // ORU_SRC_SYSTEM_ORU_TIME_INTERNAL_H
