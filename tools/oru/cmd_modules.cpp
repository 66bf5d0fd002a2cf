// oru modules: the modules loaded in the tool's own process.
#include <oru/module.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include "oru_tool.h"

extern const oru_command oru_cmd_modules;

namespace {

constexpr char kUsage[] =
    "Usage: oru modules\n"
    "List the modules loaded in this process of the tool, the program first,\n"
    "one line each:\n"
    "  BASE SIZE PATH\n"
    "with BASE the lowest address the module is mapped at (hexadecimal) and\n"
    "SIZE the bytes it spans (decimal).\n"
    "\n"
    "      --help   show this help and exit\n";

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_modules, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_modules.name;
  if (!opts.operands.empty()) return oru_usage_error(cmd, "no operands expected");
  oruModuleInfo* modules = nullptr;
  size_t count = 0;
  oruResult r = oruGetModuleList(&modules, &count);
  if (ORU_FAILED(r)) return oru_fail(cmd, "cannot list the modules", r);
  for (size_t i = 0; i < count; ++i) {
    std::printf("%#018" PRIxPTR " %zu %s\n", reinterpret_cast<uintptr_t>(modules[i].base),
                modules[i].size, modules[i].path);
  }
  oruFree(modules);
  if (std::fflush(stdout) != 0) return oru_fail(cmd, "standard output", ORU_E_IO);
  return ORU_EXIT_OK;
}

}  // namespace

extern const oru_command oru_cmd_modules = {"modules", "list the modules loaded in the tool",
                                            kUsage, run};
