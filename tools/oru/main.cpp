// oru COMMAND [OPTIONS] [ARGS]: dispatch to the command table, plus the
// tool's own `help` and `--version`.
#include <oru/core.h>

#include <cstdio>
#include <cstring>

#include "oru_tool.h"
#include "oru_tool_platform.h"

namespace {

void list_commands(FILE* to) {
  std::fputs(
      "Usage: oru COMMAND [OPTIONS] [ARGS]\n"
      "       oru help [COMMAND]\n"
      "       oru --version\n"
      "\n"
      "Commands:\n",
      to);
  for (const oru_command* const* c = oru_commands; *c != nullptr; ++c) {
    std::fprintf(to, "  %-10s %s\n", (*c)->name, (*c)->summary);
  }
  std::fputs("\nRun 'oru COMMAND --help' for the options of a command.\n", to);
}

int finish_stdout() { return std::fflush(stdout) == 0 ? ORU_EXIT_OK : ORU_EXIT_FAILURE; }

int print_version() {
  std::printf("oru %s (library %s)\n", ORU_TOOL_VERSION, oruGetVersion());
#if defined(__clang__)
  std::printf("built with clang %s", __clang_version__);
#elif defined(__GNUC__)
  std::printf("built with GCC %s", __VERSION__);
#else
  std::printf("built with an unknown compiler");
#endif
#if defined(NDEBUG)
  std::printf(", optimised\n");
#else
  std::printf(", with assertions\n");
#endif
  return finish_stdout();
}

int help(int argc, char** argv) {
  if (argc <= 2) {
    list_commands(stdout);
    return finish_stdout();
  }
  if (argc > 3) {
    std::fputs("oru: help: too many arguments\nTry 'oru help' for more information.\n", stderr);
    return ORU_EXIT_USAGE;
  }
  const oru_command* c = oru_find_command(argv[2]);
  if (c == nullptr) {
    std::fprintf(stderr, "oru: help: unknown command '%s'\nTry 'oru help' for more information.\n",
                 argv[2]);
    return ORU_EXIT_USAGE;
  }
  std::fputs(c->usage, stdout);
  return finish_stdout();
}

}  // namespace

int main(int argc, char** argv) {
  oru_prepare_standard_streams();
  if (argc < 2) {
    list_commands(stderr);
    return ORU_EXIT_USAGE;
  }
  const char* name = argv[1];
  if (std::strcmp(name, "help") == 0 || std::strcmp(name, "--help") == 0 ||
      std::strcmp(name, "-h") == 0) {
    return help(argc, argv);
  }
  if (std::strcmp(name, "--version") == 0 || std::strcmp(name, "-V") == 0) {
    return print_version();
  }
  const oru_command* c = oru_find_command(name);
  if (c == nullptr) {
    std::fprintf(stderr, "oru: unknown command '%s'\nTry 'oru help' for more information.\n", name);
    return ORU_EXIT_USAGE;
  }
  // The command sees itself as argv[0].
  return c->run(argc - 1, argv + 1);
}
