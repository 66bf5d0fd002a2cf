// oru backtrace: a symbolized backtrace of the tool itself, captured a few
// calls deep - a demonstration of capture, symbols, demangling and lines.
#include <oru/module.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include "oru_tool.h"

extern const oru_command oru_cmd_backtrace;

namespace {

constexpr char kUsage[] =
    "Usage: oru backtrace\n"
    "Print a backtrace of the tool, innermost call first, one line a frame:\n"
    "  #N ADDRESS SYMBOL+OFFSET (MODULE) FILE:LINE\n"
    "Without a known symbol the frame reads '? (MODULE+OFFSET)'.  FILE:LINE\n"
    "appears when the module has debug information and the library reads it.\n"
    "\n"
    "      --help   show this help and exit\n";

constexpr size_t kMaxFrames = 128;

void print_frame(size_t index, void* address) {
  oruSymbolInfo* info = nullptr;
  if (ORU_FAILED(oruSymbolizeAddress(address, &info))) {
    std::printf("#%zu %p ? (?)\n", index, address);
    return;
  }
  if (info->symbolName != nullptr) {
    std::printf("#%zu %p %s+%#zx (%s)", index, address, info->symbolName, info->symbolOffset,
                info->modulePath);
  } else {
    // No symbol: the offset into the module still locates the code.
    std::printf("#%zu %p ? (%s+%#zx)", index, address, info->modulePath,
                static_cast<size_t>(static_cast<const char*>(address) -
                                    static_cast<const char*>(info->moduleBase)));
  }
  if (info->sourceFile != nullptr) std::printf(" %s:%u", info->sourceFile, info->line);
  std::printf("\n");
  oruFree(info);
}

// Three named levels, kept out of line so the backtrace shows them.
__attribute__((noinline)) size_t capture_innermost(void** frames) {
  size_t count = 0;
  oruResult r = oruCaptureBacktrace(0, frames, kMaxFrames, &count);
  return ORU_FAILED(r) ? 0 : count;
}

__attribute__((noinline)) size_t capture_middle(void** frames) {
  size_t count = capture_innermost(frames);
  asm volatile("" ::: "memory");  // keeps the call a call, not a jump
  return count;
}

__attribute__((noinline)) size_t capture_outer(void** frames) {
  size_t count = capture_middle(frames);
  asm volatile("" ::: "memory");
  return count;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_backtrace, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_backtrace.name;
  if (!opts.operands.empty()) return oru_usage_error(cmd, "no operands expected");
  void* frames[kMaxFrames];
  size_t count = capture_outer(frames);
  for (size_t i = 0; i < count; ++i) print_frame(i, frames[i]);
  if (std::fflush(stdout) != 0) return oru_fail(cmd, "standard output", ORU_E_IO);
  return ORU_EXIT_OK;
}

}  // namespace

extern const oru_command oru_cmd_backtrace = {"backtrace", "print a backtrace of the tool itself",
                                              kUsage, run};
