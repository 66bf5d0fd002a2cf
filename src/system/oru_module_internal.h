// What the loader, backtrace and module-list functions need from the
// platform (oru_module_posix.cpp), from the optional DWARF reader
// (oru_module_dwarf.cpp, or oru_module_nodwarf.cpp without one).
#ifndef ORU_SRC_SYSTEM_ORU_MODULE_INTERNAL_H
#define ORU_SRC_SYSTEM_ORU_MODULE_INTERNAL_H

#include "oru/module.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace oru::module {

// The system loader.  Each writes the loader's reason for a failure into
// why (size bytes, always terminated) and returns null / false.
void* platform_open(const char* path, char* why, size_t size);
// Null with *found false when the symbol is missing; a symbol may be
// exported with the value null, then *found is true.
void* platform_symbol(void* native, const char* name, bool* found, char* why, size_t size);
bool platform_close(void* native, char* why, size_t size);
// The file of a loaded object as the loader names it.  May throw
// std::bad_alloc.
std::string platform_path(void* native);

// One mapped module: its file, the lowest address of its segments, their
// extent and the load bias (what is added to the addresses in the file).
struct module_entry {
  std::string path;
  uintptr_t base = 0;
  size_t size = 0;
  uintptr_t bias = 0;
};

// Every module of the process, main program first.  May throw
// std::bad_alloc.
std::vector<module_entry> platform_modules();

// The module holding address; false when there is none.  May throw
// std::bad_alloc.
bool platform_find_module(uintptr_t address, module_entry& module);

// The exported symbol covering address in the loader's own tables: its
// (mangled) name and start.  False when the loader knows none.
bool platform_exported_symbol(uintptr_t address, std::string& name, uintptr_t& start);

// What the DWARF reader found for an address; empty strings when it had no
// answer.
struct debug_answer {
  std::string symbol;  // mangled, from the full symbol table
  uintptr_t symbolStart = 0;
  std::string file;
  unsigned line = 0;
};

// Reads the module's symbol table and line table for address.  Returns
// false when there is no DWARF reader or it knows nothing of the address.
bool debug_lookup(const module_entry& module, uintptr_t address, debug_answer& answer);

// A C++ name in source form, or the name unchanged when it is not mangled.
std::string demangle(const std::string& name);

}  // namespace oru::module

#endif  // ORU_SRC_SYSTEM_ORU_MODULE_INTERNAL_H
