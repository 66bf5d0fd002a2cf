// oru locale: the seven locale parameters as the library derives them now,
// and oru locale --native=NAME for Windows-style locale names.
#include <oru/l10n.h>

#include <cstdio>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_locale;

namespace {

constexpr char kUsage[] =
    "Usage: oru locale [-n NAME]\n"
    "Print the library's seven locale parameters, one a line: the parameter,\n"
    "its value, and its value derived from the user-default locale alone\n"
    "(the flag ORU_LP_FROM_SYSTEM), separated by tabs.  The tool keeps the C\n"
    "library in the C locale, so the values follow LC_ALL, LC_CTYPE and LANG.\n"
    "\n"
    "  -n, --native=NAME    convert the Windows-style locale name NAME\n"
    "                       (German_Germany.1252) into language_TERRITORY.charset\n"
    "                       (de_DE.windows-1252) instead\n"
    "  -o, --output=FILE    write to FILE instead of standard output\n"
    "      --help           show this help and exit\n"
    "\n"
    "Exit status: 0 on success, 1 if NAME cannot be converted, 2 on bad usage.\n";

const char* const kNames[] = {"language",       "fallback-language", "territory",  "app-string",
                              "system-charset", "console-charset",   "app-charset"};

std::string param(uint32_t id, uint32_t flags) {
  char buf[256];
  return oruGetLocaleParam(id, flags, buf, sizeof buf) == ORU_OK ? buf : "?";
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'n', "native", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_locale, argc, argv, kOptions, opts); status >= 0)
    return status;
  const char* cmd = oru_cmd_locale.name;
  if (!opts.operands.empty()) return oru_usage_error(cmd, "unexpected operand");
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  if (const char* native = opts.last('n')) {
    char buf[256];
    oruResult r = oruNativeToStdLocale(native, buf, sizeof buf);
    if (r != ORU_OK) {
      return oru_finish_output(cmd, out,
                               oru_fail(cmd, std::string("cannot convert '") + native + "'", r));
    }
    std::fprintf(out.stream(), "%s\n", buf);
    return oru_finish_output(cmd, out, ORU_EXIT_OK);
  }
  for (uint32_t id = 0; id < 7; ++id) {
    std::fprintf(out.stream(), "%s\t%s\t%s\n", kNames[id], param(id, 0).c_str(),
                 param(id, ORU_LP_FROM_SYSTEM).c_str());
  }
  return oru_finish_output(cmd, out, ORU_EXIT_OK);
}

}  // namespace

extern const oru_command oru_cmd_locale = {
    "locale", "show the locale parameters; convert Windows-style locale names", kUsage, run};
