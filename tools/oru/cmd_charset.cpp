// oru charset NAME-OR-MIB... and oru charset --list: the character-set
// registry as the library knows it, and whether this platform converts each
// set.
#include <oru/text.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "oru_tool.h"

extern const oru_command oru_cmd_charset;

namespace {

constexpr char kUsage[] =
    "Usage: oru charset NAME-OR-MIB...\n"
    "       oru charset -l\n"
    "Describe registered character sets, found by any name or alias (ASCII\n"
    "case ignored) or by MIBenum: the MIBenum, the primary name, the preferred\n"
    "MIME name, every alias, and whether this platform can convert the set.\n"
    "\n"
    "  -l, --list           list the registry, one set per line: MIBenum,\n"
    "                       primary name and aliases, separated by tabs\n"
    "  -o, --output=FILE    write to FILE instead of standard output\n"
    "      --help           show this help and exit\n"
    "\n"
    "Exit status: 0 on success, 1 if a set is unknown, 2 on bad usage.\n";

// Every name of every set, by MIBenum, in the registry's lookup order.
std::map<uint32_t, std::vector<const char*>> names_by_mib() {
  std::map<uint32_t, std::vector<const char*>> sets;
  uint32_t mib = 0;
  for (size_t i = 0; const char* name = _oruCSNameAt(i, &mib); ++i) sets[mib].push_back(name);
  return sets;
}

std::string aliases(const std::vector<const char*>& names, const char* primary,
                    const char* separator) {
  std::string out;
  for (const char* n : names) {
    if (std::string(n) == primary) continue;
    if (!out.empty()) out += separator;
    out += n;
  }
  return out;
}

bool convertible(const char* name) {
  oruTextCodec codec = nullptr;
  if (oruOpenTextCodec(name, "UTF-8", &codec) != ORU_OK) return false;
  oruCloseTextCodec(codec);
  if (oruOpenTextCodec("UTF-8", name, &codec) != ORU_OK) return false;
  oruCloseTextCodec(codec);
  return true;
}

// A MIBenum given as decimal digits, or -1.
int64_t as_number(const char* text) {
  if (*text == '\0' || std::string(text).size() > 9) return -1;
  for (const char* p = text; *p; ++p)
    if (*p < '0' || *p > '9') return -1;
  return std::strtol(text, nullptr, 10);
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'l', "list", false}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_charset, argc, argv, kOptions, opts); status >= 0)
    return status;
  const char* cmd = oru_cmd_charset.name;
  const bool list = opts.has('l');
  if (list && !opts.operands.empty()) return oru_usage_error(cmd, "--list takes no operands");
  if (!list && opts.operands.empty()) return oru_usage_error(cmd, "missing NAME-OR-MIB");

  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  const auto sets = names_by_mib();
  if (list) {
    for (const auto& [mib, names] : sets) {
      const char* primary = oruMIBenumToCSName(mib);
      std::fprintf(out.stream(), "%u\t%s\t%s\n", mib, primary,
                   aliases(names, primary, " ").c_str());
    }
    return oru_finish_output(cmd, out, ORU_EXIT_OK);
  }
  int status = ORU_EXIT_OK;
  bool first = true;
  for (const char* arg : opts.operands) {
    int64_t number = as_number(arg);
    int64_t mib = number >= 0 ? number : oruCSNameToMIBenum(arg);
    const char* primary = mib >= 0 ? oruMIBenumToCSName(static_cast<uint32_t>(mib)) : nullptr;
    if (primary == nullptr) {
      std::fflush(out.stream());
      status = oru_fail(cmd, std::string("unknown character set '") + arg + "'", ORU_E_INVALID_ARG);
      continue;
    }
    const auto it = sets.find(static_cast<uint32_t>(mib));
    std::fprintf(out.stream(),
                 "%sMIBenum: %u\nName: %s\nMIME name: %s\nAliases: %s\nConvertible: %s\n",
                 first ? "" : "\n", static_cast<unsigned>(mib), primary,
                 oruMIBenumToCSMIMEName(static_cast<uint32_t>(mib)),
                 it != sets.end() ? aliases(it->second, primary, ", ").c_str() : "",
                 convertible(primary) ? "yes" : "no");
    first = false;
  }
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_charset = {
    "charset", "describe registered character sets, or list the registry", kUsage, run};
