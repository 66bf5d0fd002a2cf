// Formatting of the library's time values, shared by `time` and `info`.
#ifndef ORU_TOOLS_ORU_TOOL_TIME_H
#define ORU_TOOLS_ORU_TOOL_TIME_H

#include <oru/time.h>

#include <string>

// "YYYY-MM-DD hh:mm:ss.mmm Www", for example "1970-01-01 00:00:00.000 Thu".
std::string oru_format_date(const oruDateTime& d);

#endif  // ORU_TOOLS_ORU_TOOL_TIME_H
