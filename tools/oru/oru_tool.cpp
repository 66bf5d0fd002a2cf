// The helpers shared by every command of the `oru` tool.
#include "oru_tool.h"
#include "oru_tool_platform.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int oru_fail(const char* command, const std::string& what, oruResult code) {
  const char* text = oruStrError(code);
  std::string message = text != nullptr ? text : "unknown error";
  // System texts may end in a line break; the report is one line.
  while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) message.pop_back();
  std::fprintf(stderr, "oru: %s: %s: %s\n", command, what.c_str(), message.c_str());
  return ORU_EXIT_FAILURE;
}

int oru_usage_error(const char* command, const std::string& message) {
  std::fprintf(stderr, "oru: %s: %s\nTry 'oru %s --help' for more information.\n", command,
               message.c_str(), command);
  return ORU_EXIT_USAGE;
}

const char* oru_parsed_options::last(char name) const {
  const char* value = nullptr;
  for (const entry& e : options) {
    if (e.name == name) value = e.value;
  }
  return value;
}

bool oru_parsed_options::has(char name) const {
  for (const entry& e : options) {
    if (e.name == name) return true;
  }
  return false;
}

namespace {

// --help is accepted by every command; it is reported through this name.
constexpr char kHelp = '\x01';

// Finds a long option by its full name or an unambiguous prefix.
const oru_option* find_long(const oru_option* options, const std::string& name, bool& ambiguous) {
  static const oru_option help{kHelp, "help", false};
  ambiguous = false;
  const oru_option* found = nullptr;
  int matches = 0;
  auto consider = [&](const oru_option* o) {
    const std::string full = o->long_name;
    if (full == name) {
      found = o;
      matches = -1000;  // an exact match always wins
    } else if (matches >= 0 && full.compare(0, name.size(), name) == 0) {
      found = o;
      ++matches;
    }
  };
  for (const oru_option* o = options; o->short_name != 0; ++o) consider(o);
  consider(&help);
  if (matches > 1) {
    ambiguous = true;
    return nullptr;
  }
  return found;
}

}  // namespace

int oru_parse_options(const oru_command& command, int argc, char** argv, const oru_option* options,
                      oru_parsed_options& parsed) {
  const char* cmd = command.name;
  bool help = false;
  bool only_operands = false;
  for (int i = 1; i < argc; ++i) {
    const char* arg = argv[i];
    if (only_operands || arg[0] != '-' || arg[1] == '\0') {
      parsed.add_operand(arg);  // "-" is an operand: standard input
      continue;
    }
    if (arg[1] == '-') {
      if (arg[2] == '\0') {
        only_operands = true;
        continue;
      }
      std::string name = arg + 2;
      const char* value = nullptr;
      const size_t eq = name.find('=');
      if (eq != std::string::npos) {
        value = arg + 2 + eq + 1;
        name.resize(eq);
      }
      bool ambiguous = false;
      const oru_option* o = find_long(options, name, ambiguous);
      if (ambiguous) return oru_usage_error(cmd, "option '--" + name + "' is ambiguous");
      if (o == nullptr) return oru_usage_error(cmd, "unrecognized option '--" + name + "'");
      if (o->has_value) {
        if (value == nullptr) {
          if (i + 1 >= argc) {
            return oru_usage_error(
                cmd, std::string("option '--") + o->long_name + "' requires an argument");
          }
          value = argv[++i];
        }
      } else if (value != nullptr) {
        return oru_usage_error(
            cmd, std::string("option '--") + o->long_name + "' doesn't allow an argument");
      }
      if (o->short_name == kHelp) {
        help = true;
      } else {
        parsed.add_option(o->short_name, value);
      }
      continue;
    }
    // A negative number is an operand unless a digit is an option.
    if (arg[1] >= '0' && arg[1] <= '9') {
      const oru_option* o = options;
      while (o->short_name != 0 && o->short_name != arg[1]) ++o;
      if (o->short_name == 0) {
        parsed.add_operand(arg);
        continue;
      }
    }
    // One or more bundled short options.
    for (const char* p = arg + 1; *p != '\0'; ++p) {
      const oru_option* o = options;
      while (o->short_name != 0 && o->short_name != *p) ++o;
      if (o->short_name == 0) {
        return oru_usage_error(cmd, std::string("invalid option -- '") + *p + "'");
      }
      if (!o->has_value) {
        parsed.add_option(o->short_name, nullptr);
        continue;
      }
      const char* value = p + 1;
      if (*value == '\0') {
        if (i + 1 >= argc) {
          return oru_usage_error(cmd, std::string("option requires an argument -- '") + *p + "'");
        }
        value = argv[++i];
      }
      parsed.add_option(o->short_name, value);
      break;
    }
  }
  if (help) {
    std::fputs(command.usage, stdout);
    return std::fflush(stdout) == 0 ? ORU_EXIT_OK : ORU_EXIT_FAILURE;
  }
  return -1;
}

oru_output::~oru_output() { discard(); }

void oru_output::abandon() {
  if (stream_ == stdout) {
    std::fflush(stdout);
    stream_ = nullptr;
  }
  discard();
}

void oru_output::discard() {
  if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
  stream_ = nullptr;
  if (!temporary_.empty()) {
    std::remove(temporary_.c_str());
    temporary_.clear();
  }
}

oruResult oru_output::open(const char* path) {
  discard();
  if (path == nullptr || std::strcmp(path, "-") == 0) {
    stream_ = stdout;
    return ORU_OK;
  }
  target_ = path;
  return oru_create_temporary_beside(target_, temporary_, stream_);
}

oruResult oru_output::commit() {
  if (stream_ == nullptr) return ORU_E_INVALID_STATE;
  if (stream_ == stdout) {
    stream_ = nullptr;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) return _oru_map_posix_error(errno);
    return ORU_OK;
  }
  const bool write_failed = std::ferror(stream_) != 0;
  const int close_result = std::fclose(stream_);
  stream_ = nullptr;
  if (write_failed || close_result != 0) {
    const int err = errno;
    discard();
    return err != 0 ? _oru_map_posix_error(err) : ORU_E_IO;
  }
  if (const oruResult r = oru_replace_file(temporary_, target_); ORU_FAILED(r)) {
    discard();
    return r;
  }
  temporary_.clear();
  return ORU_OK;
}

bool oru_open_output(const char* command, const oru_parsed_options& parsed, oru_output& out) {
  const char* path = parsed.last('o');
  if (path != nullptr && *path == '\0') {
    oru_fail(command, "cannot create output ''", ORU_E_NOT_FOUND);
    return false;
  }
  const oruResult r = out.open(path);
  if (ORU_FAILED(r)) {
    oru_fail(command, std::string("cannot create output '") + path + "'", r);
    return false;
  }
  return true;
}

int oru_finish_output(const char* command, oru_output& out, int status, bool complete) {
  if (!complete) {
    out.abandon();
    return status;
  }
  const oruResult r = out.commit();
  if (ORU_FAILED(r)) return oru_fail(command, "cannot write output", r);
  return status;
}
