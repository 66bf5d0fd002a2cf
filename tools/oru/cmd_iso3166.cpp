// oru iso3166 [CC | CC-SUB]: the library's ISO 3166 countries and
// subdivisions with their English names.
#include <oru/l10n.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_iso3166;

namespace {

constexpr char kUsage[] =
    "Usage: oru iso3166 [CODE]\n"
    "Without CODE, list the ISO 3166-1 countries: code, tab, English name.\n"
    "With a country code (\"DE\"), list its ISO 3166-2 subdivisions the same\n"
    "way; with a subdivision code (\"DE-BY\"), print its name.  Codes are\n"
    "case-sensitive.\n"
    "\n"
    "      --help  show this help and exit\n"
    "\n"
    "Exit status 1 when the code is unknown.\n";

// Prints each code of a null-terminated array with its name, and frees it.
void print_list(const char** codes, const char* (*name_of)(const char*)) {
  for (const char** c = codes; *c != nullptr; ++c) std::printf("%s\t%s\n", *c, name_of(*c));
  oruFree(codes);
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_iso3166, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_iso3166.name;
  if (opts.operands.size() > 1) {
    return oru_usage_error(cmd, std::string("extra operand '") + opts.operands[1] + "'");
  }
  if (opts.operands.empty()) {
    const char** countries = oruGetISO3166Countries();
    if (countries == nullptr) return oru_fail(cmd, "listing the countries", ORU_E_OUT_OF_MEMORY);
    print_list(countries, oruGetISO3166CountryName);
  } else if (const char* code = opts.operands[0]; std::strchr(code, '-') != nullptr) {
    const char* name = oruGetISO3166SubdivisionName(code);
    if (name == nullptr) {
      std::fprintf(stderr, "oru: %s: unknown subdivision '%s'\n", cmd, code);
      return ORU_EXIT_FAILURE;
    }
    std::printf("%s\n", name);
  } else {
    if (oruGetISO3166CountryName(code) == nullptr) {
      std::fprintf(stderr, "oru: %s: unknown country '%s'\n", cmd, code);
      return ORU_EXIT_FAILURE;
    }
    const char** subdivisions = oruGetISO3166Subdivisions(code);
    if (subdivisions == nullptr)
      return oru_fail(cmd, "listing the subdivisions", ORU_E_OUT_OF_MEMORY);
    print_list(subdivisions, oruGetISO3166SubdivisionName);
  }
  return std::fflush(stdout) == 0 ? ORU_EXIT_OK : ORU_EXIT_FAILURE;
}

}  // namespace

extern const oru_command oru_cmd_iso3166 = {
    "iso3166", "list ISO 3166 countries and subdivisions with their names", kUsage, run};
