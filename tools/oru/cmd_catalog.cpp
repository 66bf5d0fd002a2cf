// oru catalog compile|dump|lookup: the message catalog compiler from GNU
// gettext .po files, a checker and lister of compiled catalogs, and lookups
// through the library.  The compiler and the format checks are the
// library's own writer and validator sources, compiled into the tool.
#include <oru/l10n.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "../../src/l10n/oru_catalog_format.h"
#include "../../src/l10n/oru_catalog_writer.h"
#include "oru_tool.h"

extern const oru_command oru_cmd_catalog;

namespace {

constexpr char kUsage[] =
    "Usage: oru catalog compile [-c CHARSET] [-f] -o OUT.mo IN.po\n"
    "       oru catalog dump FILE.mo\n"
    "       oru catalog lookup -b DIR -d DOMAIN [-l LOCALE] [-C CATEGORY] MSGID...\n"
    "\n"
    "compile  Compile a GNU gettext .po file into a message catalog.\n"
    "         Translations are converted from the charset of the header's\n"
    "         Content-Type to CHARSET; fuzzy and untranslated entries are left\n"
    "         out; a message with a context is stored under CONTEXT \\004 MSGID;\n"
    "         a plural message under its msgid with msgstr[0].  Errors are\n"
    "         reported as FILE:LINE: message and leave no output file.\n"
    "  -c, --charset=CHARSET  the catalog's character set (default UTF-8)\n"
    "  -f, --use-fuzzy        keep fuzzy entries\n"
    "  -o, --output=FILE      the catalog to write (required)\n"
    "\n"
    "dump     Check a catalog as the library's loader does; say why it would\n"
    "         be rejected, or list each entry as KEY<TAB>TRANSLATION with C\n"
    "         escapes, in slot order.\n"
    "\n"
    "lookup   Bind DOMAIN to DIR and print the lookup of each MSGID, one line\n"
    "         each.  LOCALE names the locale directory without its character\n"
    "         set (default: chosen by the locale parameters); CATEGORY is a\n"
    "         number 1-6 or a name such as LC_MESSAGES (the default).\n"
    "  -b, --bind=DIR  -d, --domain=DOMAIN  -l, --locale=LOCALE\n"
    "  -C, --category=CATEGORY\n"
    "      --help   show this help and exit\n"
    "\n"
    "Exit status: 0 on success, 1 on an error in the input or a rejected\n"
    "catalog, 2 on bad usage.\n";

const char* const kCmd = "catalog";

int error_line(const std::string& message) {
  std::fprintf(stderr, "oru: %s: %s\n", kCmd, message.c_str());
  return ORU_EXIT_FAILURE;
}

bool read_all(const char* path, std::string& data, oruResult& r) {
  r = oru_read_chunks(path, [&](const unsigned char* bytes, size_t length) {
    data.append(reinterpret_cast<const char*>(bytes), length);
  });
  return ORU_SUCCEEDED(r);
}

int compile(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{'c', "charset", true},
                                            {'f', "use-fuzzy", false},
                                            {'o', "output", true},
                                            {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_catalog, argc, argv, kOptions, opts); status >= 0)
    return status;
  if (opts.last('o') == nullptr) return oru_usage_error(kCmd, "compile needs -o OUT.mo");
  if (opts.operands.size() != 1) return oru_usage_error(kCmd, "compile takes one .po file");
  const char* in = opts.operands[0];
  std::string text;
  oruResult r;
  if (!read_all(in, text, r)) return oru_fail(kCmd, std::string("cannot read '") + in + "'", r);
  oru_catalog_compile_options options;
  if (const char* cs = opts.last('c')) options.charset = cs;
  options.useFuzzy = opts.has('f');
  std::string catalog, error;
  if (!oru_catalog_compile(text.data(), text.size(), std::string(in) == "-" ? "<stdin>" : in,
                           options, catalog, error)) {
    return error_line(error);
  }
  oru_output out;
  if (!oru_open_output(kCmd, opts, out)) return ORU_EXIT_FAILURE;
  bool written = std::fwrite(catalog.data(), 1, catalog.size(), out.stream()) == catalog.size();
  return oru_finish_output(kCmd, out, written ? ORU_EXIT_OK : ORU_EXIT_FAILURE);
}

void print_escaped(const char* s) {
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(s); *p != 0; ++p) {
    switch (*p) {
      case '\n':
        std::fputs("\\n", stdout);
        break;
      case '\t':
        std::fputs("\\t", stdout);
        break;
      case '\r':
        std::fputs("\\r", stdout);
        break;
      case '\\':
        std::fputs("\\\\", stdout);
        break;
      default:
        if (*p < 0x20 || *p == 0x7F) {
          std::printf("\\%03o", *p);
        } else {
          std::putchar(*p);
        }
    }
  }
}

int dump(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_catalog, argc, argv, kOptions, opts); status >= 0)
    return status;
  if (opts.operands.size() != 1) return oru_usage_error(kCmd, "dump takes one catalog file");
  const char* path = opts.operands[0];
  std::string data;
  oruResult r;
  if (!read_all(path, data, r)) return oru_fail(kCmd, std::string("cannot read '") + path + "'", r);
  // The validator works in place on 4-byte aligned memory, as the loader's.
  auto* image = static_cast<unsigned char*>(std::malloc(data.size() + 4));
  if (image == nullptr) return oru_fail(kCmd, "cannot load the catalog", ORU_E_OUT_OF_MEMORY);
  std::memcpy(image, data.data(), data.size());
  if (const char* why = oru_catalog_validate(image, data.size())) {
    std::free(image);
    return error_line(std::string(path) + ": rejected: " + why);
  }
  uint32_t count = oru_catalog_slot_count(image);
  const uint32_t* slots = oru_catalog_slots(image);
  for (uint32_t i = 0; i < count; ++i) {
    if (slots[i] == 0) continue;
    const char* key = reinterpret_cast<const char*>(image) + slots[i];
    print_escaped(key);
    std::putchar('\t');
    print_escaped(key + std::strlen(key) + 1);
    std::putchar('\n');
  }
  std::free(image);
  return std::fflush(stdout) == 0 ? ORU_EXIT_OK : ORU_EXIT_FAILURE;
}

int parse_category(const char* text) {
  static const char* const kNames[] = {"LC_COLLATE", "LC_CTYPE", "LC_MONETARY",
                                       "LC_NUMERIC", "LC_TIME",  "LC_MESSAGES"};
  for (int i = 0; i < 6; ++i) {
    if (std::strcmp(text, kNames[i]) == 0) return i + 1;
  }
  char* end = nullptr;
  long n = std::strtol(text, &end, 10);
  if (end == text || *end != '\0' || n < -1000000 || n > 1000000) return -1000001;
  return static_cast<int>(n);
}

int lookup(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{'b', "bind", true},
                                            {'d', "domain", true},
                                            {'l', "locale", true},
                                            {'C', "category", true},
                                            {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_catalog, argc, argv, kOptions, opts); status >= 0)
    return status;
  const char* dir = opts.last('b');
  const char* domain = opts.last('d');
  if (dir == nullptr || domain == nullptr)
    return oru_usage_error(kCmd, "lookup needs -b DIR and -d DOMAIN");
  int category = ORU_LC_MESSAGES;
  if (const char* c = opts.last('C')) {
    category = parse_category(c);
    if (category == -1000001) return oru_usage_error(kCmd, std::string("bad category '") + c + "'");
  }
  if (oruBindTextDomain(domain, dir) == nullptr)
    return oru_fail(kCmd, "cannot bind the domain", ORU_E_OUT_OF_MEMORY);
  for (const char* msgid : opts.operands) {
    std::puts(oruDCGetTextLC(domain, opts.last('l'), msgid, category));
  }
  return std::fflush(stdout) == 0 ? ORU_EXIT_OK : ORU_EXIT_FAILURE;
}

int run(int argc, char** argv) {
  if (argc < 2) return oru_usage_error(kCmd, "missing subcommand (compile, dump or lookup)");
  const char* sub = argv[1];
  if (std::strcmp(sub, "--help") == 0 || std::strcmp(sub, "-h") == 0) {
    std::fputs(kUsage, stdout);
    return ORU_EXIT_OK;
  }
  if (std::strcmp(sub, "compile") == 0) return compile(argc - 1, argv + 1);
  if (std::strcmp(sub, "dump") == 0) return dump(argc - 1, argv + 1);
  if (std::strcmp(sub, "lookup") == 0) return lookup(argc - 1, argv + 1);
  return oru_usage_error(kCmd, std::string("unknown subcommand '") + sub + "'");
}

}  // namespace

extern const oru_command oru_cmd_catalog = {
    "catalog", "compile .po files to message catalogs, check them, look messages up", kUsage, run};
