// oru path: the library's path operations, one result a line.
#include <oru/file.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "oru_tool.h"

extern const oru_command oru_cmd_path;

namespace {

constexpr char kUsage[] =
    "Usage: oru path abs|canon|dir|base PATH...\n"
    "  or:  oru path join BASE NAME\n"
    "  or:  oru path temp [-d] [-p PREFIX] [-s SUFFIX] [DIR]\n"
    "Print what the library makes of paths, one result a line.\n"
    "\n"
    "  abs     the absolute path, cleaned up lexically (no file needs to exist)\n"
    "  canon   the canonical path of an existing file, links resolved\n"
    "  dir     the directory name\n"
    "  base    the base name\n"
    "  join    BASE and NAME joined with the platform separator\n"
    "  temp    create a new empty temporary file (with -d a directory) in DIR,\n"
    "          else in $TMPDIR or the system's temporary directory, and print\n"
    "          its name\n"
    "\n"
    "  -d, --directory        temp: create a directory instead of a file\n"
    "  -p, --prefix=PREFIX    temp: begin the name with PREFIX\n"
    "  -s, --suffix=SUFFIX    temp: end the name with SUFFIX\n"
    "      --help             show this help and exit\n"
    "\n"
    "Both '/' and '\\' separate names.  A failure is reported with the library's\n"
    "text for it; the other paths are still done, and the exit status is 1.\n";

// Calls fill(buffer, size) with a growing buffer until the result fits.
template <typename Fill>
oruResult with_buffer(std::string& result, Fill fill) {
  std::vector<char> buffer(4096);
  for (;;) {
    oruResult r = fill(buffer.data(), buffer.size());
    if (r != ORU_E_BUFFER_TOO_SMALL || buffer.size() >= (size_t{1} << 24)) {
      if (ORU_SUCCEEDED(r)) result = buffer.data();
      return r;
    }
    buffer.resize(buffer.size() * 2);
  }
}

using PathFunction = oruResult (*)(const char*, char*, size_t);

int each_path(const char* cmd, const char* what, PathFunction fn,
              const std::vector<const char*>& paths) {
  int status = ORU_EXIT_OK;
  for (const char* path : paths) {
    std::string result;
    oruResult r = with_buffer(result, [&](char* out, size_t size) { return fn(path, out, size); });
    if (ORU_FAILED(r)) {
      status = oru_fail(cmd, std::string(what) + " of '" + path + "'", r);
    } else {
      std::printf("%s\n", result.c_str());
    }
  }
  return status;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'d', "directory", false}, {'p', "prefix", true}, {'s', "suffix", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_path, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_path.name;
  if (opts.operands.empty()) return oru_usage_error(cmd, "missing operation");
  std::string operation = opts.operands[0];
  std::vector<const char*> args(opts.operands.begin() + 1, opts.operands.end());
  if (operation != "temp" && !opts.options.empty()) {
    return oru_usage_error(cmd, "options belong to 'temp' only");
  }
  int status;
  if (operation == "abs" || operation == "canon" || operation == "dir" || operation == "base") {
    if (args.empty()) return oru_usage_error(cmd, "missing PATH");
    if (operation == "abs") {
      status = each_path(cmd, "absolute path", oruGetAbsolutePath, args);
    } else if (operation == "canon") {
      status = each_path(cmd, "canonical path", oruGetCanonicalPath, args);
    } else if (operation == "dir") {
      status = each_path(cmd, "directory name", oruGetDirname, args);
    } else {
      status = each_path(cmd, "base name", oruGetBasename, args);
    }
  } else if (operation == "join") {
    if (args.size() != 2) return oru_usage_error(cmd, "join takes BASE and NAME");
    std::string result;
    oruResult r = with_buffer(result, [&](char* out, size_t size) {
      return oruAppendToPath(args[0], args[1], out, size);
    });
    if (ORU_FAILED(r)) return oru_fail(cmd, "join", r);
    std::printf("%s\n", result.c_str());
    status = ORU_EXIT_OK;
  } else if (operation == "temp") {
    if (args.size() > 1) return oru_usage_error(cmd, "temp takes at most one DIR");
    const char* directory = args.empty() ? nullptr : args[0];
    bool makeDirectory = opts.has('d');
    std::string result;
    oruResult r = with_buffer(result, [&](char* out, size_t size) {
      return makeDirectory
                 ? oruGetTempDirName(directory, opts.last('p'), opts.last('s'), out, size)
                 : oruGetTempFileName(directory, opts.last('p'), opts.last('s'), out, size);
    });
    if (ORU_FAILED(r)) {
      return oru_fail(cmd, makeDirectory ? "temporary directory" : "temporary file", r);
    }
    std::printf("%s\n", result.c_str());
    status = ORU_EXIT_OK;
  } else {
    return oru_usage_error(cmd, "unknown operation '" + operation + "'");
  }
  if (std::fflush(stdout) != 0) return oru_fail(cmd, "standard output", ORU_E_IO);
  return status;
}

}  // namespace

extern const oru_command oru_cmd_path = {
    "path", "absolute, canonical, directory and base names; join; temporary names", kUsage, run};
