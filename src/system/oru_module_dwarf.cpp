// Symbol names from the full symbol table and source lines from DWARF
// through elfutils' libdwfl.  Reading a module's tables costs milliseconds,
// so each module read stays open for later lookups, keyed by the file's
// identity (device, inode, modification time) and the load bias, so that a
// different object loaded at the same place is read afresh.  libdwfl is not
// thread-safe: one lock serialises the lookups.

#include "system/oru_module_internal.h"

#include <elfutils/libdwfl.h>
#include <sys/stat.h>

#include <map>
#include <mutex>
#include <tuple>

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
  Dwfl* dwfl = nullptr;
  Dwfl_Module* module = nullptr;
  session() = default;
  session(const session&) = delete;
  session& operator=(const session&) = delete;
  ~session() {
    if (dwfl != nullptr) dwfl_end(dwfl);
  }
};

using file_key = std::tuple<dev_t, ino_t, int64_t, int64_t, uintptr_t>;

// The modules read so far.  Bounded: when full it is emptied, which only
// costs re-reading.
constexpr size_t kMaxSessions = 64;

struct session_cache {
  std::mutex lock;
  std::map<file_key, session> sessions;
};

session_cache& cache() {
  static session_cache* c = new session_cache;  // never destroyed: used until exit
  return *c;
}

// The open session of a module, or null when libdwfl cannot read it.
Dwfl_Module* module_of(session_cache& c, const module_entry& module) {
  struct stat status {};
  if (stat(module.path.c_str(), &status) != 0) return nullptr;
  const file_key key{status.st_dev, status.st_ino, static_cast<int64_t>(status.st_mtim.tv_sec),
                     static_cast<int64_t>(status.st_mtim.tv_nsec), module.bias};
  auto it = c.sessions.find(key);
  if (it != c.sessions.end()) return it->second.module;
  if (c.sessions.size() >= kMaxSessions) c.sessions.clear();
  session& s = c.sessions[key];
  s.dwfl = dwfl_begin(&kCallbacks);
  if (s.dwfl != nullptr) {
    dwfl_report_begin(s.dwfl);
    s.module =
        dwfl_report_elf(s.dwfl, module.path.c_str(), module.path.c_str(), -1, module.bias, true);
    dwfl_report_end(s.dwfl, nullptr, nullptr);
  }
  // A module that could not be read (memory may have run out) is not
  // remembered: the next lookup tries again.
  Dwfl_Module* read = s.module;
  if (read == nullptr) c.sessions.erase(key);
  return read;
}

}  // namespace

bool debug_lookup(const module_entry& module, uintptr_t address, debug_answer& answer) {
  if (module.path.empty() || module.path[0] != '/') return false;  // the vDSO and the like
  session_cache& c = cache();
  std::lock_guard<std::mutex> guard(c.lock);
  Dwfl_Module* mod = module_of(c, module);
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
