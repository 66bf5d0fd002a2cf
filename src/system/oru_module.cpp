// Loading shared objects through checked handles, symbolizing addresses and
// listing modules: the parts common to every platform.

#include "core/oru_internal.h"
#include "oru/thread.h"
#include "system/oru_module_internal.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>

namespace {

using namespace oru::module;

// The calling thread's last failure text, in a buffer of its own allocated
// at the thread's first failure and freed at its end by a key's destructor.
// Not a thread_local object with a destructor: glibc ends the process when
// it cannot allocate the registration of such a destructor, and the static
// thread-local space of a library loaded later is small anyway.
constexpr size_t kErrorTextSize = 1024;

std::mutex g_errorKeyLock;
std::atomic<bool> g_haveErrorKey{false};
oruTlsKey g_errorKey;

// The key, made on first use; false while it cannot be made.
bool error_key() {
  if (g_haveErrorKey.load(std::memory_order_acquire)) return true;
  std::lock_guard<std::mutex> guard(g_errorKeyLock);
  if (!g_haveErrorKey.load(std::memory_order_relaxed) &&
      oruTlsKeyCreate(&g_errorKey, oruFree) == ORU_OK) {
    g_haveErrorKey.store(true, std::memory_order_release);
  }
  return g_haveErrorKey.load(std::memory_order_relaxed);
}

void set_error(const char* text) {
  // Out of memory the reason is lost, not the result.
  if (!error_key()) return;
  auto* buffer = static_cast<char*>(oruTlsGet(g_errorKey));
  if (buffer == nullptr) {
    buffer = static_cast<char*>(oruMalloc(kErrorTextSize));
    if (buffer == nullptr) return;
    if (oruTlsSet(g_errorKey, buffer) != ORU_OK) {
      oruFree(buffer);
      return;
    }
  }
  const size_t length = strnlen(text, kErrorTextSize - 1);
  std::memcpy(buffer, text, length);
  buffer[length] = '\0';
}

const char* error_text() {
  if (!g_haveErrorKey.load(std::memory_order_acquire)) return "";
  const auto* buffer = static_cast<const char*>(oruTlsGet(g_errorKey));
  return buffer != nullptr ? buffer : "";
}

// Live handles.  A handle is a number that is never reused, so a stale or
// made-up handle is recognised instead of being dereferenced.
struct registry {
  std::mutex lock;
  std::unordered_map<uintptr_t, void*> objects;
  uintptr_t next = 1;
};

registry& handles() {
  // Never destroyed: handles may still be used by other threads or by
  // destructors of other static objects at exit.  Built in static storage,
  // not with new: a std::bad_alloc here would escape through the C
  // interface, which has no try around this call.
  alignas(registry) static unsigned char storage[sizeof(registry)];
  static registry* r = new (storage) registry;
  return *r;
}

uintptr_t key_of(oruDso dso) { return reinterpret_cast<uintptr_t>(dso); }

const char* const kBadHandle = "not a loaded object handle";

// Copies text to the block at *cursor and advances it.
const char* place(char*& cursor, const std::string& text) {
  char* start = cursor;
  std::memcpy(cursor, text.c_str(), text.size() + 1);
  cursor += text.size() + 1;
  return start;
}

}  // namespace

extern "C" {

ORU_API oruResult oruDsoLoad(const char* path, oruDso* dso) {
  if (dso != nullptr) *dso = nullptr;
  if (path == nullptr || dso == nullptr) {
    set_error("null argument");
    return ORU_E_INVALID_ARG;
  }
  char why[kErrorTextSize];
  // Not under the registry lock: the object's initialisers run here and may
  // load objects of their own.
  void* native = platform_open(path, why, sizeof why);
  if (native == nullptr) {
    set_error(why);
    return ORU_E_DSO_LOAD;
  }
  registry& r = handles();
  try {
    std::lock_guard<std::mutex> guard(r.lock);
    uintptr_t key = r.next++;
    r.objects.emplace(key, native);
    *dso = reinterpret_cast<oruDso>(key);
  } catch (const std::bad_alloc&) {
    platform_close(native, why, sizeof why);
    set_error("out of memory");
    return ORU_E_OUT_OF_MEMORY;
  }
  return ORU_OK;
}

ORU_API oruResult oruDsoGetSymbol(oruDso dso, const char* name, void** address) {
  if (address != nullptr) *address = nullptr;
  if (name == nullptr || address == nullptr) {
    set_error("null argument");
    return ORU_E_INVALID_ARG;
  }
  registry& r = handles();
  char why[kErrorTextSize];
  bool found = false;
  void* value = nullptr;
  {
    // Held across the lookup so that another thread cannot unload the
    // object meanwhile.
    std::lock_guard<std::mutex> guard(r.lock);
    auto it = r.objects.find(key_of(dso));
    if (it == r.objects.end()) {
      set_error(kBadHandle);
      return ORU_E_INVALID_ARG;
    }
    value = platform_symbol(it->second, name, &found, why, sizeof why);
  }
  if (!found) {
    set_error(why);
    return ORU_E_SYMBOL;
  }
  *address = value;
  return ORU_OK;
}

ORU_API oruResult oruDsoUnload(oruDso dso) {
  registry& r = handles();
  void* native = nullptr;
  {
    std::lock_guard<std::mutex> guard(r.lock);
    auto it = r.objects.find(key_of(dso));
    if (it == r.objects.end()) {
      set_error(kBadHandle);
      return ORU_E_INVALID_ARG;
    }
    native = it->second;
    r.objects.erase(it);
  }
  // Outside the lock: the object's finalisers run here.
  char why[kErrorTextSize];
  if (!platform_close(native, why, sizeof why)) {
    set_error(why);
    return ORU_E_DSO_UNLOAD;
  }
  return ORU_OK;
}

ORU_API oruResult oruDsoGetPath(oruDso dso, char* buffer, size_t size) {
  if (buffer == nullptr || size == 0) return ORU_E_INVALID_ARG;
  buffer[0] = '\0';
  registry& r = handles();
  try {
    std::string path;
    {
      std::lock_guard<std::mutex> guard(r.lock);
      auto it = r.objects.find(key_of(dso));
      if (it == r.objects.end()) return ORU_E_INVALID_ARG;
      path = platform_path(it->second);
    }
    if (path.size() >= size) return ORU_E_BUFFER_TOO_SMALL;
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return ORU_OK;
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

ORU_API const char* oruDsoGetErrorText(void) { return error_text(); }

ORU_API oruResult oruSymbolizeAddress(const void* address, oruSymbolInfo** info) {
  if (info == nullptr) return ORU_E_INVALID_ARG;
  *info = nullptr;
  try {
    const uintptr_t where = reinterpret_cast<uintptr_t>(address);
    module_entry module;
    if (where == 0 || !platform_find_module(where, module)) return ORU_E_NOT_FOUND;

    std::string symbol;
    uintptr_t start = 0;
    debug_answer debug;
    bool has_debug = debug_lookup(module, where, debug);
    // The full symbol table also knows functions the module does not
    // export; the loader's table is the fallback.
    if (has_debug && !debug.symbol.empty()) {
      symbol = debug.symbol;
      start = debug.symbolStart;
    } else if (!platform_exported_symbol(where, symbol, start)) {
      symbol.clear();
    }
    if (!symbol.empty()) symbol = demangle(symbol);
    const bool has_line = has_debug && !debug.file.empty() && debug.line != 0;

    size_t bytes = sizeof(oruSymbolInfo) + module.path.size() + 1;
    if (!symbol.empty()) bytes += symbol.size() + 1;
    if (has_line) bytes += debug.file.size() + 1;
    auto* block = static_cast<oruSymbolInfo*>(oruMalloc(bytes));
    if (block == nullptr) return ORU_E_OUT_OF_MEMORY;
    char* cursor = reinterpret_cast<char*>(block + 1);
    block->address = address;
    block->modulePath = place(cursor, module.path);
    block->moduleBase = reinterpret_cast<const void*>(module.base);
    block->symbolName = symbol.empty() ? nullptr : place(cursor, symbol);
    block->symbolOffset = symbol.empty() ? 0 : where - start;
    block->sourceFile = has_line ? place(cursor, debug.file) : nullptr;
    block->line = has_line ? debug.line : 0;
    *info = block;
    return ORU_OK;
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

ORU_API oruResult oruGetModuleList(oruModuleInfo** modules, size_t* count) {
  if (modules != nullptr) *modules = nullptr;
  if (count != nullptr) *count = 0;
  if (modules == nullptr || count == nullptr) return ORU_E_INVALID_ARG;
  try {
    std::vector<module_entry> list = platform_modules();
    size_t bytes = list.size() * sizeof(oruModuleInfo);
    for (const module_entry& m : list) bytes += m.path.size() + 1;
    // One byte at least, so an empty list is still a block to free.
    auto* block = static_cast<oruModuleInfo*>(oruMalloc(bytes == 0 ? 1 : bytes));
    if (block == nullptr) return ORU_E_OUT_OF_MEMORY;
    char* cursor = reinterpret_cast<char*>(block + list.size());
    for (size_t i = 0; i < list.size(); ++i) {
      block[i].path = place(cursor, list[i].path);
      block[i].base = reinterpret_cast<const void*>(list[i].base);
      block[i].size = list[i].size;
    }
    *modules = block;
    *count = list.size();
    return ORU_OK;
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // extern "C"
