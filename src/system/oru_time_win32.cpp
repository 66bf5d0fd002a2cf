// The clock, the calendar and sleeping on Windows: the system's file-time
// services.

#include "core/oru_internal.h"
#include "system/oru_time_internal.h"

#include <windows.h>

namespace {

FILETIME as_file_time(int64_t value) {
  ULARGE_INTEGER split;
  split.QuadPart = static_cast<uint64_t>(value);
  FILETIME result;
  result.dwLowDateTime = split.LowPart;
  result.dwHighDateTime = split.HighPart;
  return result;
}

oruResult to_date_time(const oruTimeVal* time, oruDateTime* dateTime, bool local) {
  if (time == nullptr || dateTime == nullptr) return ORU_E_INVALID_ARG;
  FILETIME universal = as_file_time(oru::time::to_file_time(*time));
  FILETIME converted = universal;
  if (local && !FileTimeToLocalFileTime(&universal, &converted)) {
    return oru_map_last_win32_error();
  }
  SYSTEMTIME fields;
  if (!FileTimeToSystemTime(&converted, &fields)) return oru_map_last_win32_error();
  dateTime->year = fields.wYear;
  dateTime->month = fields.wMonth;
  dateTime->day = fields.wDay;
  dateTime->dayOfWeek = fields.wDayOfWeek;
  dateTime->hour = fields.wHour;
  dateTime->minute = fields.wMinute;
  dateTime->second = fields.wSecond;
  dateTime->milliseconds = fields.wMilliseconds;
  return ORU_OK;
}

}  // namespace

extern "C" {

ORU_API oruResult oruGetCurrentTime(oruTimeVal* now) {
  if (now == nullptr) return ORU_E_INVALID_ARG;
  FILETIME clock;
  GetSystemTimeAsFileTime(&clock);
  ULARGE_INTEGER value;
  value.LowPart = clock.dwLowDateTime;
  value.HighPart = clock.dwHighDateTime;
  *now = oru::time::from_file_time(static_cast<int64_t>(value.QuadPart));
  return ORU_OK;
}

ORU_API oruResult oruGetLocalDateTime(const oruTimeVal* time, oruDateTime* dateTime) {
  return to_date_time(time, dateTime, true);
}

ORU_API oruResult oruGetUTCDateTime(const oruTimeVal* time, oruDateTime* dateTime) {
  return to_date_time(time, dateTime, false);
}

ORU_API oruResult oruSleep(uint32_t milliseconds) {
  // 0xFFFFFFFF is INFINITE to Sleep: a wait of 49.7 days elsewhere, never
  // ending here, which no caller can tell apart.
  Sleep(milliseconds);
  return ORU_OK;
}

}  // extern "C"
