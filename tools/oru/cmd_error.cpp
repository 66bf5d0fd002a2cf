// oru error CODE...: what a result code means.
#include <oru/core.h>

#include <cerrno>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_error;

namespace {

constexpr char kUsage[] =
    "Usage: oru error [OPTION]... [CODE]...\n"
    "Print result codes with their symbolic names, their facilities and their\n"
    "texts, one line each, in the order given.\n"
    "\n"
    "A CODE is hexadecimal (0x80070057) or decimal (2147942487 or -2147024809).\n"
    "\n"
    "  -e, --errno=ERRNO    the result for an errno name (ENOENT) or number, as\n"
    "                       the library translates it\n"
    "  -w, --win32=NUMBER   the result for a Win32 error number, as the library\n"
    "                       translates it\n"
    "  -o, --output=FILE    write to FILE instead of standard output\n"
    "      --help           show this help and exit\n"
    "\n"
    "Output: CODE NAME FACILITY TEXT, separated by tabs; NAME is '-' where the\n"
    "library has no name for the code.  -e and -w may be repeated.\n"
    "Exit status: 0 on success, 1 if an argument was malformed, 2 on bad usage.\n";

// The names of the public header, for codes the library defines.
struct named_code {
  oruResult code;
  const char* name;
};
#define ORU_NAMED(c) \
  { c, #c }
constexpr named_code kNames[] = {
    ORU_NAMED(ORU_OK),
    ORU_NAMED(ORU_S_OUTPUT_FULL),
    ORU_NAMED(ORU_E_INVALID_STATE),
    ORU_NAMED(ORU_E_NOT_SUPPORTED),
    ORU_NAMED(ORU_E_READ_ONLY),
    ORU_NAMED(ORU_E_NULL_POINTER),
    ORU_NAMED(ORU_E_NOT_IMPLEMENTED),
    ORU_NAMED(ORU_E_NO_INTERFACE),
    ORU_NAMED(ORU_E_POINTER),
    ORU_NAMED(ORU_E_ABORT),
    ORU_NAMED(ORU_E_FAIL),
    ORU_NAMED(ORU_E_UNEXPECTED),
    ORU_NAMED(ORU_E_ACCESS_DENIED),
    ORU_NAMED(ORU_E_HANDLE),
    ORU_NAMED(ORU_E_OUT_OF_MEMORY),
    ORU_NAMED(ORU_E_INVALID_ARG),
    ORU_NAMED(ORU_E_BUSY),
    ORU_NAMED(ORU_E_NAME_TOO_LONG),
    ORU_NAMED(ORU_E_NOT_FOUND),
    ORU_NAMED(ORU_E_PATH_NOT_FOUND),
    ORU_NAMED(ORU_E_IS_DIRECTORY),
    ORU_NAMED(ORU_E_READ_ONLY_FS),
    ORU_NAMED(ORU_E_NO_SUCH_PROCESS),
    ORU_NAMED(ORU_E_AGAIN),
    ORU_NAMED(ORU_E_NO_SPACE),
    ORU_NAMED(ORU_E_QUOTA),
    ORU_NAMED(ORU_E_EXISTS),
    ORU_NAMED(ORU_E_NAME_EXISTS),
    ORU_NAMED(ORU_E_NAME_NOT_FOUND),
    ORU_NAMED(ORU_E_CORRUPTED),
    ORU_NAMED(ORU_E_BUFFER_TOO_SMALL),
    ORU_NAMED(ORU_E_NOT_EMPTY),
    ORU_NAMED(ORU_E_UNKNOWN_USER),
    ORU_NAMED(ORU_E_HOSTNAME),
    ORU_NAMED(ORU_E_DOMAINNAME),
    ORU_NAMED(ORU_E_ARCHITECTURE),
    ORU_NAMED(ORU_E_SYSTEM_NAME),
    ORU_NAMED(ORU_E_DSO_LOAD),
    ORU_NAMED(ORU_E_DSO_UNLOAD),
    ORU_NAMED(ORU_E_SYMBOL),
    ORU_NAMED(ORU_E_TOO_MANY_FILES),
    ORU_NAMED(ORU_E_EXEC_FORMAT),
    ORU_NAMED(ORU_E_CROSS_DEVICE),
    ORU_NAMED(ORU_E_NO_DEVICE),
    ORU_NAMED(ORU_E_BROKEN_PIPE),
    ORU_NAMED(ORU_E_NO_CHILD),
    ORU_NAMED(ORU_E_LOCK_FAILED),
    ORU_NAMED(ORU_E_NO_LOCKS),
    ORU_NAMED(ORU_E_IO),
    ORU_NAMED(ORU_E_NOT_READY),
    ORU_NAMED(ORU_E_DIR_NOT_EMPTY),
    ORU_NAMED(ORU_E_BAD_ADDRESS),
    ORU_NAMED(ORU_E_TIMEDOUT),
    ORU_NAMED(ORU_E_ILLEGAL_SEQUENCE),
    ORU_NAMED(ORU_E_NOT_REGULAR_FILE),
    ORU_NAMED(ORU_E_RANGE),
    ORU_NAMED(ORU_E_NOT_DIRECTORY),
    ORU_NAMED(ORU_E_ARG_OUT_OF_RANGE),
};
#undef ORU_NAMED

// The errno names this system defines, for -e.
struct named_errno {
  const char* name;
  int value;
};
#define ORU_ERRNO(e) \
  { #e, e }
constexpr named_errno kErrnos[] = {
    ORU_ERRNO(EPERM),       ORU_ERRNO(ENOENT),       ORU_ERRNO(ESRCH),        ORU_ERRNO(EINTR),
    ORU_ERRNO(EIO),         ORU_ERRNO(ENXIO),        ORU_ERRNO(E2BIG),        ORU_ERRNO(ENOEXEC),
    ORU_ERRNO(EBADF),       ORU_ERRNO(ECHILD),       ORU_ERRNO(EAGAIN),       ORU_ERRNO(ENOMEM),
    ORU_ERRNO(EACCES),      ORU_ERRNO(EFAULT),       ORU_ERRNO(EBUSY),        ORU_ERRNO(EEXIST),
    ORU_ERRNO(EXDEV),       ORU_ERRNO(ENODEV),       ORU_ERRNO(ENOTDIR),      ORU_ERRNO(EISDIR),
    ORU_ERRNO(EINVAL),      ORU_ERRNO(ENFILE),       ORU_ERRNO(EMFILE),       ORU_ERRNO(ENOTTY),
    ORU_ERRNO(ETXTBSY),     ORU_ERRNO(EFBIG),        ORU_ERRNO(ENOSPC),       ORU_ERRNO(ESPIPE),
    ORU_ERRNO(EROFS),       ORU_ERRNO(EMLINK),       ORU_ERRNO(EPIPE),        ORU_ERRNO(EDOM),
    ORU_ERRNO(ERANGE),      ORU_ERRNO(EDEADLK),      ORU_ERRNO(ENAMETOOLONG), ORU_ERRNO(ENOLCK),
    ORU_ERRNO(ENOSYS),      ORU_ERRNO(ENOTEMPTY),    ORU_ERRNO(ELOOP),        ORU_ERRNO(EILSEQ),
    ORU_ERRNO(ETIMEDOUT),   ORU_ERRNO(EOVERFLOW),    ORU_ERRNO(ENOTSUP),      ORU_ERRNO(ECANCELED),
    ORU_ERRNO(EWOULDBLOCK), ORU_ERRNO(ECONNREFUSED), ORU_ERRNO(ECONNRESET),   ORU_ERRNO(EADDRINUSE),
#if defined(EDQUOT)  // not in the Microsoft runtime
    ORU_ERRNO(EDQUOT),
#endif
};
#undef ORU_ERRNO

const char* code_name(oruResult code) {
  for (const named_code& n : kNames) {
    if (n.code == code) return n.name;
  }
  return "-";
}

std::string facility_name(oruResult code) {
  const uint32_t f = ORU_RESULT_FACILITY(code);
  switch (f) {
    case 0:
      return "generic";
    case ORU_FACILITY_WIN32:
      return "win32";
    case ORU_FACILITY_POSIX:
      return "errno";
    case ORU_FACILITY_ORU:
      return "oru";
    default: {
      char buf[32];
      std::snprintf(buf, sizeof buf, "facility-0x%" PRIX32, f);
      return buf;
    }
  }
}

// A whole operand as an unsigned number: 0x hexadecimal or decimal.  A
// leading minus sign is allowed when `allow_negative` (a code written as a
// signed 32-bit number).
bool parse_number(const char* text, int64_t min, int64_t max, int64_t& out) {
  const char* p = text;
  bool negative = false;
  if (*p == '-') {
    negative = true;
    ++p;
  }
  int base = 10;
  if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
    base = 16;
    p += 2;
  }
  if (*p == '\0') return false;
  uint64_t value = 0;
  for (; *p != '\0'; ++p) {
    int digit;
    if (*p >= '0' && *p <= '9') {
      digit = *p - '0';
    } else if (base == 16 && *p >= 'a' && *p <= 'f') {
      digit = *p - 'a' + 10;
    } else if (base == 16 && *p >= 'A' && *p <= 'F') {
      digit = *p - 'A' + 10;
    } else {
      return false;
    }
    value = value * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
    if (value > (uint64_t{1} << 33)) return false;  // far out of any range
  }
  const int64_t v = negative ? -static_cast<int64_t>(value) : static_cast<int64_t>(value);
  if (v < min || v > max) return false;
  out = v;
  return true;
}

bool parse_operand(char mode, const char* text, oruResult& code) {
  int64_t v = 0;
  if (mode == 'e') {
    for (const named_errno& e : kErrnos) {
      if (std::strcmp(e.name, text) == 0) {
        code = _oru_map_posix_error(e.value);
        return true;
      }
    }
    if (!parse_number(text, 0, 0xFFFF, v)) return false;
    code = _oru_map_posix_error(static_cast<int>(v));
    return true;
  }
  if (mode == 'w') {
    if (!parse_number(text, 0, UINT32_MAX, v)) return false;
    code = _oru_map_win32_error(static_cast<uint32_t>(v));
    return true;
  }
  if (!parse_number(text, INT32_MIN, UINT32_MAX, v)) return false;
  code = static_cast<oruResult>(static_cast<uint32_t>(v));
  return true;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'e', "errno", true}, {'w', "win32", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_error, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_error.name;
  if (!opts.has('e') && !opts.has('w') && opts.operands.empty()) {
    return oru_usage_error(cmd, "missing operand");
  }

  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  int status = ORU_EXIT_OK;
  for (const oru_parsed_options::entry& e : opts.in_order) {
    const char mode = e.name == '\0' ? 'c' : e.name;
    if (mode != 'c' && mode != 'e' && mode != 'w') continue;
    oruResult code = ORU_OK;
    if (!parse_operand(mode, e.value, code)) {
      const char* what = mode == 'e'   ? "unknown errno"
                         : mode == 'w' ? "malformed Win32 error number"
                                       : "malformed result code";
      std::fflush(out.stream());
      status = oru_fail(cmd, std::string(what) + " '" + e.value + "'", ORU_E_INVALID_ARG);
      continue;
    }
    const char* text = oruStrError(code);
    std::string line = text != nullptr ? text : "";
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    std::fprintf(out.stream(), "0x%08" PRIX32 "\t%s\t%s\t%s\n", static_cast<uint32_t>(code),
                 code_name(code), facility_name(code).c_str(), line.c_str());
  }
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_error = {
    "error", "explain result codes, errno values and Win32 error numbers", kUsage, run};
