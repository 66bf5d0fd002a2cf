// Which text the volume query sees when oruGetFileInfo asks for the
// allocation unit.

#include "file/oru_file_internal.h"

#include <new>
#include <string>

namespace oru::file {

// An absolute path is used as it is; any other path stands for the volume of
// the current directory.  A root without its closing separator (a UNC share)
// gets one; otherwise the whole text goes to the system, not just the root.
oruResult allocation_unit(const char* path, uint32_t* unit) {
  try {
    std::string text;
    if (oruIsAbsolutePath(path) != 0) {
      text = path;
    } else {
      oruResult result = current_directory(text);
      if (ORU_FAILED(result)) return result;
      if (!fits_32_bits(text.size() + 2)) return ORU_E_NAME_TOO_LONG;
    }
    ptrdiff_t root = root_end(text.data(), text.size());
    if (root <= 0) return ORU_E_INVALID_ARG;
    if (!is_separator(text[static_cast<size_t>(root) - 1])) {
      text.resize(static_cast<size_t>(root));
      text.push_back(kSeparator);
    }
    return volume_allocation_unit(text.c_str(), unit);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // namespace oru::file
