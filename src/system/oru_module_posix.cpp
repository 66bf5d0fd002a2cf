// The system loader, the unwinder and the module list on ELF systems with a
// dynamic loader: dlopen/dlsym/dlclose, dl_iterate_phdr, dladdr and
// _Unwind_Backtrace.

#include "core/oru_internal.h"
#include "system/oru_module_internal.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <unistd.h>
#include <unwind.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace oru::module {

namespace {

void copy_text(const char* text, char* why, size_t size) {
  if (text == nullptr) text = "unknown loader failure";
  const size_t length = strnlen(text, size - 1);
  std::memcpy(why, text, length);
  why[length] = '\0';
}

// The main program has no name in the loader's tables.
std::string executable_path() {
  char buffer[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (n <= 0) return std::string();
  return std::string(buffer, static_cast<size_t>(n));
}

// The extent of an object's loadable segments.
module_entry describe(const dl_phdr_info& info, bool first) {
  module_entry m;
  uintptr_t low = UINTPTR_MAX, high = 0;
  for (ElfW(Half) i = 0; i < info.dlpi_phnum; ++i) {
    const ElfW(Phdr)& ph = info.dlpi_phdr[i];
    if (ph.p_type != PT_LOAD) continue;
    low = std::min<uintptr_t>(low, ph.p_vaddr);
    high = std::max<uintptr_t>(high, ph.p_vaddr + ph.p_memsz);
  }
  if (low > high) low = high = 0;
  m.bias = info.dlpi_addr;
  m.base = info.dlpi_addr + low;
  m.size = high - low;
  const char* name = info.dlpi_name;
  m.path = (first && (name == nullptr || name[0] == '\0')) ? executable_path()
                                                           : std::string(name ? name : "");
  return m;
}

struct list_state {
  std::vector<module_entry>* out = nullptr;
  bool first = true;
  bool failed = false;
};

int collect(dl_phdr_info* info, size_t, void* data) {
  auto* state = static_cast<list_state*>(data);
  // The loader's lock is held here: no exception may cross it.
  try {
    state->out->push_back(describe(*info, state->first));
  } catch (const std::bad_alloc&) {
    state->failed = true;
    return 1;
  }
  state->first = false;
  return 0;
}

struct find_state {
  uintptr_t address = 0;
  bool first = true;
  bool found = false;
  module_entry* out = nullptr;
  bool failed = false;
};

int find(dl_phdr_info* info, size_t, void* data) {
  auto* state = static_cast<find_state*>(data);
  bool first = state->first;
  state->first = false;
  for (ElfW(Half) i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& ph = info->dlpi_phdr[i];
    if (ph.p_type != PT_LOAD) continue;
    uintptr_t start = info->dlpi_addr + ph.p_vaddr;
    if (state->address >= start && state->address - start < ph.p_memsz) {
      try {
        *state->out = describe(*info, first);
      } catch (const std::bad_alloc&) {
        state->failed = true;
      }
      state->found = true;
      return 1;
    }
  }
  return 0;
}

struct unwind_state {
  void** out = nullptr;
  size_t capacity = 0;
  size_t count = 0;
  unsigned skip = 0;
  bool full = false;
};

_Unwind_Reason_Code record(_Unwind_Context* context, void* data) {
  auto* state = static_cast<unwind_state*>(data);
  int before = 0;
  uintptr_t ip = _Unwind_GetIPInfo(context, &before);
  if (ip == 0) return _URC_END_OF_STACK;
  if (state->skip > 0) {
    --state->skip;
    return _URC_NO_REASON;
  }
  if (state->count == state->capacity) {
    state->full = true;
    return _URC_END_OF_STACK;
  }
  // A return address points after the call; the call itself is one byte
  // earlier, unless the frame was interrupted (a signal) rather than calling.
  state->out[state->count++] = reinterpret_cast<void*>(before ? ip : ip - 1);
  return _URC_NO_REASON;
}

}  // namespace

void* platform_open(const char* path, char* why, size_t size) {
  // RTLD_LOCAL: an object loaded on request does not lend its symbols to
  // objects loaded later, as on Windows.
  void* native = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (native == nullptr) copy_text(dlerror(), why, size);
  return native;
}

void* platform_symbol(void* native, const char* name, bool* found, char* why, size_t size) {
  dlerror();
  void* value = dlsym(native, name);
  const char* failure = value == nullptr ? dlerror() : nullptr;
  *found = failure == nullptr;
  if (failure != nullptr) copy_text(failure, why, size);
  return value;
}

bool platform_close(void* native, char* why, size_t size) {
  if (dlclose(native) == 0) return true;
  copy_text(dlerror(), why, size);
  return false;
}

std::string platform_path(void* native) {
  link_map* map = nullptr;
  if (dlinfo(native, RTLD_DI_LINKMAP, &map) != 0 || map == nullptr) return std::string();
  if (map->l_name == nullptr || map->l_name[0] == '\0') return executable_path();
  return map->l_name;
}

std::vector<module_entry> platform_modules() {
  std::vector<module_entry> list;
  list_state state;
  state.out = &list;
  dl_iterate_phdr(collect, &state);
  if (state.failed) throw std::bad_alloc();
  return list;
}

bool platform_find_module(uintptr_t address, module_entry& module) {
  find_state state;
  state.address = address;
  state.out = &module;
  dl_iterate_phdr(find, &state);
  if (state.failed) throw std::bad_alloc();
  return state.found;
}

bool platform_exported_symbol(uintptr_t address, std::string& name, uintptr_t& start) {
  Dl_info info{};
  void* entry = nullptr;
  if (dladdr1(reinterpret_cast<void*>(address), &info, &entry, RTLD_DL_SYMENT) == 0 ||
      info.dli_sname == nullptr || info.dli_saddr == nullptr) {
    return false;
  }
  start = reinterpret_cast<uintptr_t>(info.dli_saddr);
  const auto* symbol = static_cast<const ElfW(Sym)*>(entry);
  // dladdr names the nearest exported symbol below the address even when
  // the address lies beyond its end (in a function it does not export).
  if (symbol != nullptr && symbol->st_size != 0 && address - start >= symbol->st_size) {
    return false;
  }
  name = info.dli_sname;
  return true;
}

}  // namespace oru::module

extern "C" {

// Defined here rather than in a helper so that the frame to leave out is
// always exactly this function's own.
ORU_API oruResult oruCaptureBacktrace(unsigned skip, void** addresses, size_t capacity,
                                      size_t* count) {
  if (count == nullptr || (addresses == nullptr && capacity != 0)) return ORU_E_INVALID_ARG;
  oru::module::unwind_state state;
  state.out = addresses;
  state.capacity = capacity;
  // One more than asked: the first frame the unwinder reports is this one.
  state.skip = skip + 1u < skip ? skip : skip + 1u;
  _Unwind_Backtrace(oru::module::record, &state);
  *count = state.count;
  return state.full ? ORU_S_OUTPUT_FULL : ORU_OK;
}

}  // extern "C"
