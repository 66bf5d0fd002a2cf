// oru info: the library's version and the facts about this system that the
// library exposes, one "name: value" line each.  Areas of the library add
// their facts as rows of kFacts.
#include <oru/core.h>
#include <oru/l10n.h>
#include <oru/system.h>
#include <oru/text.h>
#include <oru/time.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "oru_tool.h"
#include "oru_tool_time.h"

extern const oru_command oru_cmd_info;

namespace {

constexpr char kUsage[] =
    "Usage: oru info [OPTION]...\n"
    "Print the library's version and what it reports about this system, one\n"
    "'name: value' line each.\n"
    "\n"
    "  -o, --output=FILE  write to FILE instead of standard output\n"
    "      --help         show this help and exit\n";

// A fact computes its value; a failure gives the result code instead.
struct fact {
  const char* name;
  oruResult (*value)(std::string& out);
};

oruResult library_version(std::string& out) {
  out = oruGetVersion();
  return ORU_OK;
}

oruResult byte_order(std::string& out) {
  out = oruHost2LE32(1) == 1 ? "little-endian" : "big-endian";
  return ORU_OK;
}

oruResult current_time(std::string& out) {
  oruTimeVal now{};
  oruDateTime utc{};
  oruResult r = oruGetCurrentTime(&now);
  if (ORU_SUCCEEDED(r)) r = oruGetUTCDateTime(&now, &utc);
  if (ORU_FAILED(r)) return r;
  char text[40];
  std::snprintf(text, sizeof text, "%" PRId32 ".%06" PRId32 " (", now.sec, now.usec);
  out = text + oru_format_date(utc) + " UTC)";
  return ORU_OK;
}

// Minutes from 1970-01-01 00:00 to a calendar time (proleptic Gregorian
// day count of H. Hinnant's days_from_civil).
int64_t minutes_since_epoch(const oruDateTime& d) {
  const int64_t y = static_cast<int64_t>(d.year) - (d.month <= 2 ? 1 : 0);
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t m = d.month;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d.day - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  const int64_t days = era * 146097 + doe - 719468;
  return days * 1440 + d.hour * 60 + d.minute;
}

// The difference between local and UTC calendar time at this moment.
oruResult utc_offset(std::string& out) {
  oruTimeVal now{};
  oruDateTime utc{}, local{};
  oruResult r = oruGetCurrentTime(&now);
  if (ORU_SUCCEEDED(r)) r = oruGetUTCDateTime(&now, &utc);
  if (ORU_SUCCEEDED(r)) r = oruGetLocalDateTime(&now, &local);
  if (ORU_FAILED(r)) return r;
  const int64_t diff = (minutes_since_epoch(local) - minutes_since_epoch(utc));
  char text[48];
  const int64_t a = diff < 0 ? -diff : diff;
  std::snprintf(text, sizeof text, "%c%02" PRId64 ":%02" PRId64, diff < 0 ? '-' : '+', a / 60,
                a % 60);
  out = text;
  return ORU_OK;
}

// A buffer-filling query of the library as a fact.
template <oruResult (*query)(char*, size_t)>
oruResult text_of(std::string& out) {
  char buf[1024];
  const oruResult r = query(buf, sizeof buf);
  if (ORU_SUCCEEDED(r)) out = buf;
  return r;
}

// The account's domain is a question some systems have no answer to (an
// account unknown to the account database, a directory account without a
// domain): that is a fact about the system, not a failure of the tool.
oruResult account_domain(std::string& out) {
  char buf[1024];
  const oruResult r = oruGetDomainname(buf, sizeof buf);
  if (r == ORU_E_DOMAINNAME || r == ORU_E_UNKNOWN_USER) {
    out = std::string("(none: ") + oruStrError(r) + ")";
    return ORU_OK;
  }
  if (ORU_SUCCEEDED(r)) out = buf;
  return r;
}

oruResult system_type(std::string& out) {
  const int type = oruGetSystemType();
  out = std::to_string(type) + (type == ORU_SYSTEM_TYPE_WINDOWS ? " (Windows)"
                                : type == ORU_SYSTEM_TYPE_POSIX ? " (POSIX)"
                                                                : "");
  return ORU_OK;
}

oruResult program_name(std::string& out) {
  out = oruGetProgramName();
  return ORU_OK;
}

oruResult program_path(std::string& out) {
  const char* path = oruGetProgramPath();
  out = path != nullptr ? path : "(unknown)";
  return ORU_OK;
}

template <uint32_t id>
oruResult locale_param(std::string& out) {
  char buf[256];
  const oruResult r = oruGetLocaleParam(id, 0, buf, sizeof buf);
  if (ORU_SUCCEEDED(r)) out = buf;
  return r;
}

template <oruResult (*query)(int*)>
oruResult yes_no(std::string& out) {
  int answer = 0;
  const oruResult r = query(&answer);
  if (ORU_SUCCEEDED(r)) out = answer != 0 ? "yes" : "no";
  return r;
}

constexpr fact kFacts[] = {
    {"library version", library_version},
    {"byte order", byte_order},
    {"current time", current_time},
    {"utc offset", utc_offset},
    {"host name", text_of<oruGetHostname>},
    {"account domain", account_domain},
    {"architecture", text_of<oruGetArchitecture>},
    {"system name", text_of<oruGetSystemName>},
    {"system type", system_type},
    {"program name", program_name},
    {"program path", program_path},
    {"remote session", yes_no<oruIsWTSRemoteSession>},
    {"terminal server", yes_no<oruIsWindowsTerminalServer>},
    {"language", locale_param<ORU_LP_LANGUAGE>},
    {"territory", locale_param<ORU_LP_TERRITORY>},
    {"system charset", locale_param<ORU_LP_SYSTEM_CHARSET>},
    {"console charset", locale_param<ORU_LP_CONSOLE_CHARSET>},
    {"application charset", locale_param<ORU_LP_APP_CHARSET>},
};

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_info, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_info.name;
  if (!opts.operands.empty()) {
    return oru_usage_error(cmd, std::string("extra operand '") + opts.operands[0] + "'");
  }
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  int status = ORU_EXIT_OK;
  for (const fact& f : kFacts) {
    std::string value;
    const oruResult r = f.value(value);
    if (ORU_FAILED(r)) {
      status = oru_fail(cmd, std::string("cannot get the ") + f.name, r);
      continue;
    }
    std::fprintf(out.stream(), "%s: %s\n", f.name, value.c_str());
  }
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_info = {
    "info", "show the library version and what it reports about this system", kUsage, run};
