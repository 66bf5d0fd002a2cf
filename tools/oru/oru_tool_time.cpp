// Formatting of the library's time values.
#include "oru_tool_time.h"

#include <cstdio>

std::string oru_format_date(const oruDateTime& d) {
  static const char* const kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  char text[80];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u %s", d.year, d.month, d.day,
                d.hour, d.minute, d.second, d.milliseconds,
                d.dayOfWeek < 7 ? kDays[d.dayOfWeek] : "???");
  return text;
}
