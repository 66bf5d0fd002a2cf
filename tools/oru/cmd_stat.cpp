// oru stat: what oruGetFileInfo reports for files, one line a file.
#include <oru/file.h>
#include <oru/time.h>

#include <cinttypes>
#include <cstdio>
#include <string>

#include "oru_tool.h"
#include "oru_tool_time.h"

extern const oru_command oru_cmd_stat;

namespace {

constexpr char kUsage[] =
    "Usage: oru stat FILE...\n"
    "Print, for each FILE, a line\n"
    "  FILE: TYPE, SIZE bytes, accessed TIME, modified TIME, allocation unit N\n"
    "with TYPE 'directory' or 'file' and times in UTC.  The allocation unit is\n"
    "that of the volume holding FILE when FILE is absolute, else that of the\n"
    "current directory.\n"
    "\n"
    "      --help   show this help and exit\n"
    "\n"
    "A failure is reported with the library's text for it; the other files are\n"
    "still done, and the exit status is 1.\n";

// The time as a UTC date, or "?" when the system cannot convert it.
std::string utc_text(const oruTimeVal& t) {
  oruDateTime d{};
  if (ORU_FAILED(oruGetUTCDateTime(&t, &d))) return std::string(1, '?');
  return oru_format_date(d);
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_stat, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_stat.name;
  if (opts.operands.empty()) return oru_usage_error(cmd, "missing FILE");
  int status = ORU_EXIT_OK;
  for (const char* path : opts.operands) {
    oruFileInfo info{};
    info.mask = ORU_FINFO_BASIC | ORU_FINFO_BLKSIZE;
    oruResult r = oruGetFileInfo(path, &info);
    if (ORU_FAILED(r)) {
      status = oru_fail(cmd, std::string("cannot stat '") + path + "'", r);
      continue;
    }
    const std::string accessed = utc_text(info.atime);
    const std::string modified = utc_text(info.mtime);
    std::printf("%s: %s, %" PRIu64 " bytes, accessed %s, modified %s, allocation unit %" PRIu32
                "\n",
                path, info.type == ORU_FILETYPE_DIRECTORY ? "directory" : "file", info.size,
                accessed.c_str(), modified.c_str(), info.blksize);
  }
  if (std::fflush(stdout) != 0) return oru_fail(cmd, "standard output", ORU_E_IO);
  return status;
}

}  // namespace

extern const oru_command oru_cmd_stat = {"stat", "type, size, times and allocation unit of files",
                                         kUsage, run};
