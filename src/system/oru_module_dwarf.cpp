// Symbol names from the full symbol table and source lines from DWARF
// through elfutils' libdwfl.  Each lookup reads the module afresh in a
// session of its own: nothing is shared between threads, and objects
// unloaded meanwhile leave nothing stale behind.

#include "system/oru_module_internal.h"

#include <elfutils/libdwfl.h>

namespace oru::module {

namespace {

char* g_debuginfo_path = nullptr;  // libdwfl's default search path

const Dwfl_Callbacks kCallbacks = {
    dwfl_build_id_find_elf,
    dwfl_standard_find_debuginfo,
    dwfl_offline_section_address,
    &g_debuginfo_path,
};

struct session {
  Dwfl* dwfl = dwfl_begin(&kCallbacks);
  session() = default;
  session(const session&) = delete;
  session& operator=(const session&) = delete;
  ~session() {
    if (dwfl != nullptr) dwfl_end(dwfl);
  }
};

}  // namespace

bool debug_lookup(const module_entry& module, uintptr_t address, debug_answer& answer) {
  if (module.path.empty() || module.path[0] != '/') return false;  // the vDSO and the like
  session s;
  if (s.dwfl == nullptr) return false;
  dwfl_report_begin(s.dwfl);
  Dwfl_Module* mod =
      dwfl_report_elf(s.dwfl, module.path.c_str(), module.path.c_str(), -1, module.bias, true);
  dwfl_report_end(s.dwfl, nullptr, nullptr);
  if (mod == nullptr) return false;

  GElf_Off offset = 0;
  GElf_Sym symbol{};
  const char* name =
      dwfl_module_addrinfo(mod, address, &offset, &symbol, nullptr, nullptr, nullptr);
  if (name != nullptr && name[0] != '\0') {
    answer.symbol = name;
    // The full symbol table names versioned definitions "name@@VERSION";
    // the version is no part of the function's name.
    size_t at = answer.symbol.find('@');
    if (at != std::string::npos && at > 0) answer.symbol.resize(at);
    answer.symbolStart = address - offset;
  }
  if (Dwfl_Line* line = dwfl_module_getsrc(mod, address)) {
    int number = 0;
    const char* file = dwfl_lineinfo(line, nullptr, &number, nullptr, nullptr, nullptr);
    if (file != nullptr && number > 0) {
      answer.file = file;
      answer.line = static_cast<unsigned>(number);
    }
  }
  return !answer.symbol.empty() || !answer.file.empty();
}

}  // namespace oru::module
