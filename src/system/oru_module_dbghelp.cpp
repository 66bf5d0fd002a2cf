// Symbols and source lines on Windows through the debug-help library
// (dbghelp.dll), bound on first use.  That library is not thread-safe: its
// initialisation and every query run under one lock.

#include "system/oru_module_internal.h"

#include <windows.h>
// After windows.h, which it needs.
#include <dbghelp.h>

#include <cstring>
#include <new>

namespace oru::module {

namespace {

using initialize_fn = BOOL(WINAPI*)(HANDLE, PCSTR, BOOL);
using options_fn = DWORD(WINAPI*)(DWORD);
using load_fn = DWORD64(WINAPI*)(HANDLE, HANDLE, PCSTR, PCSTR, DWORD64, DWORD, PMODLOAD_DATA,
                                 DWORD);
using from_addr_fn = BOOL(WINAPI*)(HANDLE, DWORD64, PDWORD64, PSYMBOL_INFO);
using line_fn = BOOL(WINAPI*)(HANDLE, DWORD64, PDWORD, PIMAGEHLP_LINE64);
using module_info_fn = BOOL(WINAPI*)(HANDLE, DWORD64, PIMAGEHLP_MODULE64);
using unload_fn = BOOL(WINAPI*)(HANDLE, DWORD64);

struct debug_help {
  options_fn setOptions = nullptr;
  initialize_fn initialize = nullptr;
  load_fn loadModule = nullptr;
  from_addr_fn fromAddress = nullptr;
  line_fn line = nullptr;
  module_info_fn moduleInfo = nullptr;
  unload_fn unloadModule = nullptr;
  bool ready = false;
};

template <typename F>
F bind(HMODULE module, const char* name) {
  FARPROC p = GetProcAddress(module, name);
  F f;
  static_assert(sizeof f == sizeof p);
  std::memcpy(&f, &p, sizeof f);
  return f;
}

SRWLOCK g_lock = SRWLOCK_INIT;
debug_help g_help;
bool g_tried = false;

// Under g_lock.
const debug_help& help() {
  if (g_tried) return g_help;
  g_tried = true;
  HMODULE module = LoadLibraryA("dbghelp.dll");  // kept for the process's life
  if (module == nullptr) return g_help;
  g_help.setOptions = bind<options_fn>(module, "SymSetOptions");
  g_help.initialize = bind<initialize_fn>(module, "SymInitialize");
  g_help.loadModule = bind<load_fn>(module, "SymLoadModuleEx");
  g_help.fromAddress = bind<from_addr_fn>(module, "SymFromAddr");
  g_help.line = bind<line_fn>(module, "SymGetLineFromAddr64");
  g_help.moduleInfo = bind<module_info_fn>(module, "SymGetModuleInfo64");
  g_help.unloadModule = bind<unload_fn>(module, "SymUnloadModule64");
  if (g_help.setOptions == nullptr || g_help.initialize == nullptr ||
      g_help.loadModule == nullptr || g_help.fromAddress == nullptr || g_help.line == nullptr ||
      g_help.moduleInfo == nullptr || g_help.unloadModule == nullptr) {
    return g_help;
  }
  // Names as the module records them (the caller demangles), lines, and
  // modules loaded on request.
  g_help.setOptions(SYMOPT_LOAD_LINES | SYMOPT_DEFERRED_LOADS | SYMOPT_FAIL_CRITICAL_ERRORS);
  g_help.ready = g_help.initialize(GetCurrentProcess(), nullptr, FALSE) != FALSE;
  return g_help;
}

}  // namespace

bool debug_lookup(const module_entry& module, uintptr_t address, debug_answer& answer) {
  AcquireSRWLockExclusive(&g_lock);
  const debug_help& h = help();
  bool any = false;
  if (h.ready) {
    HANDLE process = GetCurrentProcess();
    // A module is read once.  What the library knows at this base may be
    // a module unloaded since, with another now mapped in its place.
    IMAGEHLP_MODULE64 known{};
    known.SizeOfStruct = sizeof known;
    if (h.moduleInfo(process, module.base, &known) &&
        (known.BaseOfImage != module.base ||
         lstrcmpiA(known.ImageName, module.path.c_str()) != 0)) {
      h.unloadModule(process, known.BaseOfImage);
    }
    h.loadModule(process, nullptr, module.path.c_str(), nullptr, module.base,
                 static_cast<DWORD>(module.size), nullptr, 0);
    alignas(SYMBOL_INFO) unsigned char storage[sizeof(SYMBOL_INFO) + MAX_SYM_NAME];
    auto* symbol = reinterpret_cast<SYMBOL_INFO*>(storage);
    std::memset(storage, 0, sizeof storage);
    symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
    symbol->MaxNameLen = MAX_SYM_NAME;
    DWORD64 displacement = 0;
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD column = 0;
    try {
      if (h.fromAddress(process, address, &displacement, symbol) && symbol->NameLen > 0) {
        answer.symbol.assign(symbol->Name, strnlen(symbol->Name, symbol->MaxNameLen));
        answer.symbolStart = static_cast<uintptr_t>(symbol->Address);
        any = true;
      }
      if (h.line(process, address, &column, &line) && line.FileName != nullptr &&
          line.LineNumber != 0) {
        answer.file = line.FileName;
        answer.line = line.LineNumber;
        any = true;
      }
    } catch (const std::bad_alloc&) {
      ReleaseSRWLockExclusive(&g_lock);
      throw;
    }
  }
  ReleaseSRWLockExclusive(&g_lock);
  return any;
}

}  // namespace oru::module
