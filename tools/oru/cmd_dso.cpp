// oru dso: load a shared object, print its version attributes and the
// addresses of symbols in it.
#include <oru/module.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_dso;

namespace {

constexpr char kUsage[] =
    "Usage: oru dso PATH [SYMBOL]...\n"
    "Load the shared object PATH, print the file the loader mapped and its\n"
    "version attributes as\n"
    "'Name: value' lines ('-' for an attribute the file does not carry), then\n"
    "for each SYMBOL a line\n"
    "  SYMBOL: ADDRESS (offset OFFSET in the object)\n"
    "and unload it.  A PATH without a '/' is searched for as the system's\n"
    "loader searches; use ./NAME for the current directory.\n"
    "\n"
    "      --help   show this help and exit\n"
    "\n"
    "When loading or a lookup fails the loader's message is printed and the\n"
    "exit status is 1 (the other symbols are still looked up).\n";

struct attribute_row {
  const char* name;
  int attribute;
};

constexpr attribute_row kAttributes[] = {
    {"FileVersion", ORU_VERSION_FILE_VERSION},
    {"ProductVersion", ORU_VERSION_PRODUCT_VERSION},
    {"CompanyName", ORU_VERSION_COMPANY_NAME},
    {"FileDescription", ORU_VERSION_FILE_DESCRIPTION},
    {"ProductName", ORU_VERSION_PRODUCT_NAME},
    {"InternalName", ORU_VERSION_INTERNAL_NAME},
    {"OriginalFilename", ORU_VERSION_ORIGINAL_FILENAME},
};

std::string dotted(const uint16_t (&n)[4]) {
  char text[32];
  std::snprintf(text, sizeof text, "%u.%u.%u.%u", n[0], n[1], n[2], n[3]);
  return text;
}

// One attribute's value, '-' when absent, or the text of another failure.
std::string attribute_value(const char* path, int attribute) {
  char buffer[1024];
  oruResult r = oruGetFileVersionString(path, attribute, buffer, sizeof buffer);
  if (r == ORU_OK) return buffer;
  if (r == ORU_E_NOT_FOUND) return "-";
  const char* text = oruStrError(r);
  return std::string("(") + (text != nullptr ? text : "error") + ")";
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {{0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_dso, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_dso.name;
  if (opts.operands.empty()) return oru_usage_error(cmd, "missing PATH");
  const char* path = opts.operands[0];

  oruDso dso = nullptr;
  oruResult r = oruDsoLoad(path, &dso);
  if (ORU_FAILED(r)) return oru_fail(cmd, oruDsoGetErrorText(), r);

  // The attributes are read from the file the loader found, which for a
  // bare name is not PATH itself.
  char file[4096];
  if (ORU_FAILED(oruDsoGetPath(dso, file, sizeof file)))
    std::snprintf(file, sizeof file, "%s", path);
  int status = ORU_EXIT_OK;
  std::printf("Path: %s\n", file);
  for (const attribute_row& row : kAttributes) {
    std::printf("%s: %s\n", row.name, attribute_value(file, row.attribute).c_str());
  }
  oruVersionNumbers numbers{};
  if (ORU_SUCCEEDED(oruGetFileVersionNumbers(file, &numbers))) {
    std::printf("FileVersionNumbers: %s\nProductVersionNumbers: %s\n",
                dotted(numbers.fileVersion).c_str(), dotted(numbers.productVersion).c_str());
  } else {
    std::printf("FileVersionNumbers: -\nProductVersionNumbers: -\n");
  }
  for (size_t i = 1; i < opts.operands.size(); ++i) {
    const char* name = opts.operands[i];
    void* address = nullptr;
    r = oruDsoGetSymbol(dso, name, &address);
    if (ORU_FAILED(r)) {
      status = oru_fail(cmd, oruDsoGetErrorText(), r);
      continue;
    }
    oruSymbolInfo* info = nullptr;
    if (address != nullptr && ORU_SUCCEEDED(oruSymbolizeAddress(address, &info))) {
      std::printf(
          "%s: %p (offset %#" PRIxPTR " in the object)\n", name, address,
          reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(info->moduleBase));
    } else {
      std::printf("%s: %p\n", name, address);
    }
    oruFree(info);
  }

  r = oruDsoUnload(dso);
  if (ORU_FAILED(r)) status = oru_fail(cmd, oruDsoGetErrorText(), r);
  if (std::fflush(stdout) != 0) return oru_fail(cmd, "standard output", ORU_E_IO);
  return status;
}

}  // namespace

extern const oru_command oru_cmd_dso = {
    "dso", "load a shared object: version attributes, symbol addresses", kUsage, run};
