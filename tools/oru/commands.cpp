// The table of the tool's commands, in the order `oru help` lists them.
// Adding a command: write cmd_NAME.cpp defining oru_cmd_NAME, then add its
// declaration and its row here.
#include <cstring>

#include "oru_tool.h"

extern const oru_command oru_cmd_backtrace;
extern const oru_command oru_cmd_case;
extern const oru_command oru_cmd_catalog;
extern const oru_command oru_cmd_charset;
extern const oru_command oru_cmd_convert;
extern const oru_command oru_cmd_dec;
extern const oru_command oru_cmd_dso;
extern const oru_command oru_cmd_error;
extern const oru_command oru_cmd_hash;
extern const oru_command oru_cmd_info;
extern const oru_command oru_cmd_iso3166;
extern const oru_command oru_cmd_locale;
extern const oru_command oru_cmd_modules;
extern const oru_command oru_cmd_names;
extern const oru_command oru_cmd_normalize;
extern const oru_command oru_cmd_path;
extern const oru_command oru_cmd_random;
extern const oru_command oru_cmd_stat;
extern const oru_command oru_cmd_time;
extern const oru_command oru_cmd_uni;
extern const oru_command oru_cmd_validate;

// One row a command, alphabetical, so that adding one is a one-line change.
// clang-format off
const oru_command* const oru_commands[] = {
    &oru_cmd_backtrace,
    &oru_cmd_case,
    &oru_cmd_catalog,
    &oru_cmd_charset,
    &oru_cmd_convert,
    &oru_cmd_dec,
    &oru_cmd_dso,
    &oru_cmd_error,
    &oru_cmd_hash,
    &oru_cmd_info,
    &oru_cmd_iso3166,
    &oru_cmd_locale,
    &oru_cmd_modules,
    &oru_cmd_names,
    &oru_cmd_normalize,
    &oru_cmd_path,
    &oru_cmd_random,
    &oru_cmd_stat,
    &oru_cmd_time,
    &oru_cmd_uni,
    &oru_cmd_validate,
    nullptr,
};
// clang-format on

const oru_command* oru_find_command(const char* name) {
  for (const oru_command* const* c = oru_commands; *c != nullptr; ++c) {
    if (std::strcmp((*c)->name, name) == 0) return *c;
  }
  return nullptr;
}
