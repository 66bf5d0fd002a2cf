// The allocator every module and every caller of the library shares.
// Memory the library hands out is released with oruFree, whatever module it
// came from, so all of it must come from here.

#include "core/oru_internal.h"

#include <cstdlib>
#include <cstring>

extern "C" {

ORU_API void* oruMalloc(size_t size) { return std::malloc(size); }

ORU_API void* oruCalloc(size_t count, size_t size) { return std::calloc(count, size); }

ORU_API void* oruRealloc(void* pointer, size_t size) {
  // realloc(p, 0) is implementation-defined; here it always frees.
  if (pointer != nullptr && size == 0) {
    std::free(pointer);
    return nullptr;
  }
  return std::realloc(pointer, size);
}

ORU_API void oruFree(void* pointer) { std::free(pointer); }

ORU_API char* oruStrDup(const char* text) {
  size_t size = std::strlen(text) + 1;
  char* copy = static_cast<char*>(std::malloc(size));
  if (copy != nullptr) std::memcpy(copy, text, size);
  return copy;
}

// The names companion modules link against.  The first three are the same
// functions as above; realloc deliberately is not: it passes size 0 on to the
// C library unchanged.
ORU_API void* _oru_malloc_tagged(size_t size) ORU_ALIAS(oruMalloc);
ORU_API void* _oru_calloc_tagged(size_t count, size_t size) ORU_ALIAS(oruCalloc);
ORU_API void _oru_free_tagged(void* pointer) ORU_ALIAS(oruFree);

ORU_API void* _oru_realloc_tagged(void* pointer, size_t size) {
  return std::realloc(pointer, size);
}

}  // extern "C"
