// oruGetAbsolutePath: the path joined to the current directory unless it is
// absolute, then cleaned up lexically after its root.

#include "file/oru_file_internal.h"

#include <cstring>
#include <new>
#include <string>

using namespace oru::file;

namespace {

oruResult absolute_path(const char* path, char* out, size_t size) {
  std::string text;
  if (oruIsAbsolutePath(path) != 0) {
    text = path;
  } else {
    std::string directory;
    oruResult result = current_directory(directory);
    if (ORU_FAILED(result)) return result;
    // Drive-relative ("C:x") and rooted ("\x") paths are joined as they are.
    size_t room = directory.size() + std::strlen(path) + 2;
    text.resize(room);
    while ((result = oruAppendToPath(directory.c_str(), path, text.data(), text.size())) ==
           ORU_E_BUFFER_TOO_SMALL) {
      text.resize(text.size() * 2);
    }
    if (ORU_FAILED(result)) return result;
    text.resize(std::strlen(text.c_str()));
  }
  ptrdiff_t root = root_end(text.data(), text.size());
  if (root < 0) return ORU_E_INVALID_ARG;
  size_t length = normalize_after_root(text.data(), text.size(), static_cast<size_t>(root));
  if (length >= size) return ORU_E_BUFFER_TOO_SMALL;
  std::memcpy(out, text.data(), length + 1);
  return ORU_OK;
}

}  // namespace

extern "C" ORU_API oruResult oruGetAbsolutePath(const char* path, char* out, size_t size) {
  if (path == nullptr || out == nullptr) return ORU_E_INVALID_ARG;
  try {
    return absolute_path(path, out, size);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}
