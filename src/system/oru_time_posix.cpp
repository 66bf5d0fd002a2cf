// The clock, the calendar and sleeping on POSIX systems.

#include "core/oru_internal.h"
#include "system/oru_time_internal.h"

#include <cerrno>
#include <ctime>

namespace {

using oru::time::CalendarSeconds;

// gmtime_r or localtime_r over a time value, through the same file-time
// arithmetic the Windows build uses, so that both agree on how negative
// microseconds and times before 1970 fall into seconds.
oruResult to_date_time(const oruTimeVal* time, oruDateTime* dateTime, bool local) {
  if (time == nullptr || dateTime == nullptr) return ORU_E_INVALID_ARG;

  CalendarSeconds split = oru::time::to_calendar_seconds(oru::time::to_file_time(*time));
  time_t seconds = static_cast<time_t>(split.unixSeconds);
  struct tm fields = {};
  errno = 0;
  struct tm* converted;
  if (local) {
    // Pick up a changed TZ the way the system's own local-time call does.
    tzset();
    converted = localtime_r(&seconds, &fields);
  } else {
    converted = gmtime_r(&seconds, &fields);
  }
  if (converted == nullptr) return oru_map_posix_error(errno != 0 ? errno : EOVERFLOW);

  dateTime->year = static_cast<uint32_t>(fields.tm_year + 1900);
  dateTime->month = static_cast<uint32_t>(fields.tm_mon + 1);
  dateTime->day = static_cast<uint32_t>(fields.tm_mday);
  dateTime->dayOfWeek = static_cast<uint32_t>(fields.tm_wday);
  dateTime->hour = static_cast<uint32_t>(fields.tm_hour);
  dateTime->minute = static_cast<uint32_t>(fields.tm_min);
  dateTime->second = static_cast<uint32_t>(fields.tm_sec);
  dateTime->milliseconds = split.milliseconds;
  return ORU_OK;
}

}  // namespace

extern "C" {

ORU_API oruResult oruGetCurrentTime(oruTimeVal* now) {
  if (now == nullptr) return ORU_E_INVALID_ARG;
  struct timespec clock = {};
  // CLOCK_REALTIME cannot fail; should it, the epoch is as good as any.
  clock_gettime(CLOCK_REALTIME, &clock);
  int64_t fileTime = static_cast<int64_t>(clock.tv_sec) * oru::time::kFileTimeUnitsPerSecond +
                     oru::time::kUnixEpochAsFileTime + clock.tv_nsec / 100;
  *now = oru::time::from_file_time(fileTime);
  return ORU_OK;
}

ORU_API oruResult oruGetLocalDateTime(const oruTimeVal* time, oruDateTime* dateTime) {
  return to_date_time(time, dateTime, true);
}

ORU_API oruResult oruGetUTCDateTime(const oruTimeVal* time, oruDateTime* dateTime) {
  return to_date_time(time, dateTime, false);
}

ORU_API oruResult oruSleep(uint32_t milliseconds) {
  struct timespec remaining;
  remaining.tv_sec = static_cast<time_t>(milliseconds / 1000);
  remaining.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
  // A signal cuts nanosleep short; sleep out the rest.
  while (nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
  }
  return ORU_OK;
}

}  // extern "C"
