// oru names [-k KIND] CODE LOCALE | oru names [-k KIND] -a LOCALE: display
// names from the library's CLDR data.
#include <oru/l10n.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_names;

namespace {

constexpr char kUsage[] =
    "Usage: oru names [-k KIND] CODE LOCALE\n"
    "  or:  oru names [-k KIND] -a LOCALE\n"
    "Print the name of a language, territory or currency, or a currency's\n"
    "symbol, in the language of LOCALE (\"de\" or \"de_CH\"), falling back from\n"
    "the locale to its language and then to the root locale.\n"
    "\n"
    "  -k, --kind=KIND  language (default), territory, currency or symbol\n"
    "  -a, --all        list every code with a name in LOCALE: code, tab, name\n"
    "      --help       show this help and exit\n"
    "\n"
    "Exit status 1 when there is no name.\n";

using Lookup = const char* (*)(const char*, const char*);

struct Kind {
  const char* name;
  Lookup lookup;
};
constexpr Kind kKinds[] = {{"language", oruCLDRGetLanguageDisplayName},
                           {"territory", oruCLDRGetTerritoryDisplayName},
                           {"currency", oruCLDRGetCurrencyDisplayName},
                           {"symbol", oruCLDRGetCurrencySymbol}};

// Codes are one to three ASCII letters or digits; trying them all in
// byte order lists exactly what resolves, with no access to the tables.
constexpr char kCodeChars[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

size_t list_codes(FILE* out, Lookup lookup, const char* locale, char* code, size_t length) {
  size_t found = 0;
  for (const char* c = kCodeChars; *c != '\0'; ++c) {
    code[length] = *c;
    code[length + 1] = '\0';
    if (const char* name = lookup(code, locale)) {
      std::fprintf(out, "%s\t%s\n", code, name);
      ++found;
    }
    if (length + 1 < 3) found += list_codes(out, lookup, locale, code, length + 1);
  }
  code[length] = '\0';
  return found;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'k', "kind", true}, {'a', "all", false}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_names, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_names.name;
  const Kind* kind = &kKinds[0];
  if (const char* k = opts.last('k'); k != nullptr) {
    kind = nullptr;
    for (const Kind& candidate : kKinds) {
      if (std::strcmp(candidate.name, k) == 0) kind = &candidate;
    }
    if (kind == nullptr) return oru_usage_error(cmd, std::string("unknown kind '") + k + "'");
  }
  const bool all = opts.has('a');
  const size_t wanted = all ? 1 : 2;
  if (opts.operands.size() != wanted) {
    return oru_usage_error(cmd, all ? "expected LOCALE" : "expected CODE and LOCALE");
  }
  const char* locale = opts.operands[wanted - 1];
  if (all) {
    char code[4] = {};
    if (list_codes(stdout, kind->lookup, locale, code, 0) == 0) {
      std::fprintf(stderr, "oru: %s: no %s names for locale '%s'\n", cmd, kind->name, locale);
      return ORU_EXIT_FAILURE;
    }
    return std::fflush(stdout) == 0 ? ORU_EXIT_OK : ORU_EXIT_FAILURE;
  }
  const char* code = opts.operands[0];
  const char* name = kind->lookup(code, locale);
  if (name == nullptr) {
    std::fprintf(stderr, "oru: %s: no %s name for '%s' in locale '%s'\n", cmd, kind->name, code,
                 locale);
    return ORU_EXIT_FAILURE;
  }
  std::printf("%s\n", name);
  return ORU_EXIT_OK;
}

}  // namespace

extern const oru_command oru_cmd_names = {
    "names", "print language, territory and currency names of a locale", kUsage, run};
