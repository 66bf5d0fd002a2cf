// The counting allocator of the allocation-failure tests.  Each entry point
// passes on to the next definition in the lookup order (dlsym RTLD_NEXT):
// the C library's allocator, or the sanitizer runtime's, which then still
// tracks every block for leaks.
#include "alloc_failure_injector.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

using MallocFn = void* (*)(size_t);
using CallocFn = void* (*)(size_t, size_t);
using ReallocFn = void* (*)(void*, size_t);
using FreeFn = void (*)(void*);

MallocFn g_malloc = nullptr;
CallocFn g_calloc = nullptr;
ReallocFn g_realloc = nullptr;
FreeFn g_free = nullptr;

// dlsym may allocate while the real functions are being looked up; those
// few blocks come from here and are never freed.
alignas(16) unsigned char g_bootstrap[8192];
size_t g_bootstrapUsed = 0;
bool g_resolving = false;

bool from_bootstrap(const void* p) {
  auto* b = static_cast<const unsigned char*>(p);
  return b >= g_bootstrap && b < g_bootstrap + sizeof g_bootstrap;
}

void* bootstrap_allocate(size_t size) {
  size = (size + 15) & ~size_t{15};
  if (size > sizeof g_bootstrap - g_bootstrapUsed) return nullptr;
  void* p = g_bootstrap + g_bootstrapUsed;
  g_bootstrapUsed += size;
  return p;  // static storage: already zero
}

bool resolve() {
  if (g_free != nullptr) return true;
  if (g_resolving) return false;
  g_resolving = true;
  g_malloc = reinterpret_cast<MallocFn>(dlsym(RTLD_NEXT, "malloc"));
  g_calloc = reinterpret_cast<CallocFn>(dlsym(RTLD_NEXT, "calloc"));
  g_realloc = reinterpret_cast<ReallocFn>(dlsym(RTLD_NEXT, "realloc"));
  g_free = reinterpret_cast<FreeFn>(dlsym(RTLD_NEXT, "free"));
  g_resolving = false;
  if (g_malloc == nullptr || g_calloc == nullptr || g_realloc == nullptr || g_free == nullptr)
    std::abort();
  return true;
}

// The calling thread's state.  Plain thread-locals of the executable live in
// its static TLS block, which exists before any allocation of the thread.
thread_local bool t_armed = false;
thread_local oru_test::AllocationFault* t_fault = nullptr;

// Whether the code at `caller` belongs to a module the fault spares.
bool spared(const oru_test::AllocationFault& f, const void* caller) {
  if (f.spared == nullptr) return false;
  t_armed = false;  // dladdr must not count
  Dl_info info{};
  bool result = dladdr(caller, &info) != 0 && info.dli_fname != nullptr &&
                std::strstr(info.dli_fname, f.spared) != nullptr;
  t_armed = true;
  return result;
}

bool should_fail(const void* caller) {
  if (!t_armed) return false;
  oru_test::AllocationFault& f = *t_fault;
  if (spared(f, caller)) return false;
  ++f.seen;
  if (f.target == 0 || f.seen < f.target) return false;
  if (f.seen > f.target && !f.persistent) return false;
  f.injected = true;
  errno = ENOMEM;
  return true;
}

void* allocate(size_t size, const void* caller) {
  if (!resolve()) return bootstrap_allocate(size);
  return should_fail(caller) ? nullptr : g_malloc(size);
}

void* allocate_or_throw(size_t size, const void* caller) {
  void* p = allocate(size == 0 ? 1 : size, caller);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void* allocate_aligned(size_t size, std::align_val_t alignment) {
  if (should_fail(nullptr)) return nullptr;
  auto a = static_cast<size_t>(alignment);
  if (a < sizeof(void*)) a = sizeof(void*);
  void* p = nullptr;
  return posix_memalign(&p, a, size == 0 ? 1 : size) == 0 ? p : nullptr;
}

}  // namespace

namespace oru_test {

void AllocationFault::arm() {
  t_fault = this;
  t_armed = true;
}

void AllocationFault::disarm() {
  t_armed = false;
  t_fault = nullptr;
}

}  // namespace oru_test

extern "C" {

void* malloc(size_t size) { return allocate(size, __builtin_return_address(0)); }

void* calloc(size_t count, size_t size) {
  if (!resolve()) return bootstrap_allocate(count * size);
  return should_fail(__builtin_return_address(0)) ? nullptr : g_calloc(count, size);
}

void* realloc(void* pointer, size_t size) {
  if (from_bootstrap(pointer)) {
    void* fresh = allocate(size, nullptr);
    size_t left = sizeof g_bootstrap -
                  static_cast<size_t>(static_cast<unsigned char*>(pointer) - g_bootstrap);
    if (fresh != nullptr) std::memcpy(fresh, pointer, size < left ? size : left);
    return fresh;
  }
  if (!resolve()) return bootstrap_allocate(size);
  // A shrink to nothing frees and is no allocation.
  if (pointer != nullptr && size == 0) return g_realloc(pointer, size);
  return should_fail(__builtin_return_address(0)) ? nullptr : g_realloc(pointer, size);
}

void free(void* pointer) {
  if (pointer == nullptr || from_bootstrap(pointer)) return;
  if (resolve()) g_free(pointer);
}

}  // extern "C"

void* operator new(size_t size) { return allocate_or_throw(size, nullptr); }
void* operator new[](size_t size) { return allocate_or_throw(size, nullptr); }
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return allocate(size ? size : 1, nullptr);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return allocate(size ? size : 1, nullptr);
}
void* operator new(size_t size, std::align_val_t alignment) {
  void* p = allocate_aligned(size, alignment);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* operator new[](size_t size, std::align_val_t alignment) {
  return operator new(size, alignment);
}
void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate_aligned(size, alignment);
}
void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate_aligned(size, alignment);
}
void operator delete(void* p) noexcept { free(p); }
void operator delete[](void* p) noexcept { free(p); }
void operator delete(void* p, size_t) noexcept { free(p); }
void operator delete[](void* p, size_t) noexcept { free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { free(p); }
void operator delete(void* p, std::align_val_t) noexcept { free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { free(p); }
void operator delete(void* p, size_t, std::align_val_t) noexcept { free(p); }
void operator delete[](void* p, size_t, std::align_val_t) noexcept { free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { free(p); }
