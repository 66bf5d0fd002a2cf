// oru random [-s SEED] [-n COUNT]: numbers from the library's repeatable
// generator, one per line.
#include <oru/hash.h>
#include <oru/time.h>

#include <cinttypes>
#include <cstdio>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_random;

namespace {

constexpr char kUsage[] =
    "Usage: oru random [OPTION]...\n"
    "Print numbers from the library's generator (Park-Miller minimal standard,\n"
    "1 to 2147483646), one per line.  Not for cryptography.\n"
    "\n"
    "  -n, --count=COUNT  print COUNT numbers (default 1)\n"
    "  -s, --seed=SEED    start from SEED (0 to 4294967295); the same seed gives\n"
    "                     the same numbers.  0 selects the generator's fixed\n"
    "                     seed.  Without it the seed comes from the current time.\n"
    "  -o, --output=FILE  write to FILE instead of standard output\n"
    "      --help         show this help and exit\n";

// A whole decimal operand no larger than max.
bool parse_unsigned(const char* text, uint64_t max, uint64_t& out) {
  if (*text == '\0') return false;
  uint64_t v = 0;
  for (const char* p = text; *p != '\0'; ++p) {
    if (*p < '0' || *p > '9') return false;
    const auto digit = static_cast<uint64_t>(*p - '0');
    if (v > (max - digit) / 10) return false;
    v = v * 10 + digit;
  }
  out = v;
  return true;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'n', "count", true}, {'s', "seed", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_random, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_random.name;
  if (!opts.operands.empty()) {
    return oru_usage_error(cmd, std::string("extra operand '") + opts.operands[0] + "'");
  }
  uint64_t count = 1;
  if (const char* n = opts.last('n'); n != nullptr && !parse_unsigned(n, INT64_MAX, count)) {
    return oru_usage_error(cmd, std::string("invalid count '") + n + "'");
  }
  uint32_t state = 0;
  if (const char* s = opts.last('s'); s != nullptr) {
    uint64_t seed = 0;
    if (!parse_unsigned(s, UINT32_MAX, seed)) {
      return oru_usage_error(cmd, std::string("invalid seed '") + s + "'");
    }
    state = static_cast<uint32_t>(seed);
  } else {
    oruTimeVal now{};
    oruGetCurrentTime(&now);
    state = static_cast<uint32_t>(now.sec) * 1000003u ^ static_cast<uint32_t>(now.usec);
  }

  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  for (uint64_t i = 0; i < count; ++i) {
    if (std::fprintf(out.stream(), "%" PRIu32 "\n", oruGetRandomNumber(&state)) < 0) break;
  }
  return oru_finish_output(cmd, out, ORU_EXIT_OK);
}

}  // namespace

extern const oru_command oru_cmd_random = {
    "random", "print numbers from the library's repeatable generator", kUsage, run};
