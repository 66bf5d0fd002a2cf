// oru time: the current time as the library reports it, and as calendar
// time in UTC and in the local time zone.
#include <oru/time.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "oru_tool.h"
#include "oru_tool_time.h"

extern const oru_command oru_cmd_time;

namespace {

constexpr char kUsage[] =
    "Usage: oru time [OPTION]...\n"
    "Print the current time as the library reports it (seconds since\n"
    "1970-01-01 00:00:00 UTC and microseconds) and as calendar time in UTC and\n"
    "in the local time zone.\n"
    "\n"
    "  -t, --at=SECONDS[.MICROSECONDS]  show this time instead of the current\n"
    "                                   one (seconds: a signed 32-bit number)\n"
    "  -o, --output=FILE                write to FILE instead of standard output\n"
    "      --help                       show this help and exit\n";

bool parse_time(const char* text, oruTimeVal& t) {
  const char* p = text;
  bool negative = false;
  if (*p == '-') {
    negative = true;
    ++p;
  }
  if (*p < '0' || *p > '9') return false;
  int64_t sec = 0;
  for (; *p >= '0' && *p <= '9'; ++p) {
    sec = sec * 10 + (*p - '0');
    if (sec > INT64_C(1) << 32) return false;
  }
  int64_t usec = 0;
  if (*p == '.') {
    ++p;
    int digits = 0;
    for (; *p >= '0' && *p <= '9'; ++p, ++digits) {
      if (digits >= 6) return false;
      usec = usec * 10 + (*p - '0');
    }
    if (digits == 0) return false;
    for (; digits < 6; ++digits) usec *= 10;
  }
  if (*p != '\0') return false;
  if (negative) sec = -sec;
  if (sec < INT32_MIN || sec > INT32_MAX || (negative && usec != 0)) return false;
  t.sec = static_cast<int32_t>(sec);
  t.usec = static_cast<int32_t>(usec);
  return true;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'t', "at", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_time, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_time.name;
  if (!opts.operands.empty()) {
    return oru_usage_error(cmd, std::string("extra operand '") + opts.operands[0] + "'");
  }
  oruTimeVal t{};
  if (const char* at = opts.last('t'); at != nullptr) {
    if (!parse_time(at, t)) return oru_usage_error(cmd, std::string("invalid time '") + at + "'");
  } else if (oruResult r = oruGetCurrentTime(&t); ORU_FAILED(r)) {
    return oru_fail(cmd, "cannot read the clock", r);
  }
  oruDateTime utc{}, local{};
  if (oruResult r = oruGetUTCDateTime(&t, &utc); ORU_FAILED(r)) {
    return oru_fail(cmd, "cannot convert to UTC", r);
  }
  if (oruResult r = oruGetLocalDateTime(&t, &local); ORU_FAILED(r)) {
    return oru_fail(cmd, "cannot convert to local time", r);
  }
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  std::fprintf(out.stream(), "seconds: %" PRId32 "\nmicroseconds: %06" PRId32 "\n", t.sec, t.usec);
  std::fprintf(out.stream(), "utc: %s\nlocal: %s\n", oru_format_date(utc).c_str(),
               oru_format_date(local).c_str());
  return oru_finish_output(cmd, out, ORU_EXIT_OK);
}

}  // namespace

extern const oru_command oru_cmd_time = {
    "time", "show the current time, or a given one, as the library sees it", kUsage, run};
