// What the directory listings of both platforms share.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"

#include <cstring>

namespace oru::file {

bool is_dot_or_dot_dot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool hand_out_first_name(char** pending, char* name, size_t size, oruResult* result) {
  size_t length = std::strlen(*pending);
  bool copied = length < size;
  if (copied) std::memcpy(name, *pending, length + 1);
  oruFree(*pending);
  *pending = nullptr;
  // The dot test looks at the buffer even when the name did not fit (it
  // then holds the caller's text): that is the defined behaviour.
  if (size != 0 && is_dot_or_dot_dot(name)) return false;
  *result = copied ? ORU_OK : ORU_E_BUFFER_TOO_SMALL;
  return true;
}

}  // namespace oru::file
