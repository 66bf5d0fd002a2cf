// oru case -l|-u|-F [-L LANG] [FILE...]: full Unicode case mapping of UTF-8
// text, streamed.  A piece is cut after a space, tab or line feed: the
// contexts of the mapping (a final sigma, a dot after I, accents above) look
// past marks and word-internal punctuation only, never across these.
#include <oru/l10n.h>
#include <oru/unicode.h>

#include <cstring>
#include <string>
#include <vector>

#include "oru_text_stream.h"
#include "oru_tool.h"

extern const oru_command oru_cmd_case;

namespace {

constexpr char kUsage[] =
    "Usage: oru case -l|-u|-F [OPTION]... [FILE]...\n"
    "Write each UTF-8 FILE (standard input when none, or for -) in lower case,\n"
    "upper case or case-folded, with the full mappings of Unicode 4.1.0 (one\n"
    "character may become several, such as German sharp s in upper case).\n"
    "\n"
    "  -l, --lower          map to lower case\n"
    "  -u, --upper          map to upper case\n"
    "  -F, --fold           case-fold (for caseless comparison)\n"
    "  -L, --language=LANG  two-letter language for the language rules (tr, az\n"
    "                       and lt have their own); default: the locale's\n"
    "  -o, --output=FILE    write to FILE instead of standard output\n"
    "      --help           show this help and exit\n"
    "\n"
    "Ill-formed input becomes U+FFFD.\n"
    "Exit status: 0 on success, 1 if a FILE cannot be read, 2 on bad usage.\n";

size_t last_space_cut(const char* s, size_t n) {
  for (size_t i = n; i-- > 0;) {
    if (s[i] == '\n' || s[i] == ' ' || s[i] == '\t') return i + 1;
  }
  return 0;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{'l', "lower", false}, {'u', "upper", false},
                                            {'F', "fold", false},  {'L', "language", true},
                                            {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_case, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_case.name;
  const int modes = opts.has('l') + opts.has('u') + opts.has('F');
  if (modes != 1) return oru_usage_error(cmd, "give exactly one of -l, -u and -F");
  char* (*map)(const char*, int32_t, uint32_t*) = opts.has('l')   ? oruUTF8ToLower
                                                  : opts.has('u') ? oruUTF8ToUpper
                                                                  : oruUTF8Casefold;
  if (const char* lang = opts.last('L')) {
    if (ORU_FAILED(oruSetLocaleParam(ORU_LP_LANGUAGE, lang))) {
      return oru_usage_error(cmd, std::string("bad language '") + lang + "' (two letters a-z)");
    }
  }
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  if (opts.operands.empty()) opts.operands.push_back("-");
  int status = ORU_EXIT_OK;
  for (const char* path : opts.operands) {
    auto transform = [map](const char* s, size_t n, std::vector<char>& o) {
      uint32_t len = 0;
      char* t = map(s, static_cast<int32_t>(n), &len);
      if (t) o.insert(o.end(), t, t + len);
      oruFree(t);
    };
    oru_text_stream<char, decltype(&last_space_cut), decltype(transform)> stream(
        out.stream(), false, &last_space_cut, transform, 4 * ORU_CHUNK_SIZE);
    oruResult r =
        oru_read_chunks(path, [&](const unsigned char* d, size_t n) { stream.consume(d, n); });
    stream.finish();
    if (ORU_FAILED(r)) {
      std::fflush(out.stream());
      status = oru_fail(cmd, std::string("cannot read '") + path + "'", r);
    }
  }
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_case = {"case", "map text to lower or upper case, or case-fold it",
                                         kUsage, run};
