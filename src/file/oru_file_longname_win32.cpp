// Long and true-case names through the directory search, component by
// component: the fallback for a kernel32 without GetLongPathNameA, and the
// last step of the canonical path when the final-path query is missing.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"
#include "file/oru_file_win32.h"

#include <cstring>
#include <new>
#include <string>

namespace oru::file {

namespace {

enum class WhenNotFound { kFail, kKeepAsWritten };

// The length of the prefix that is copied as it stands: "X:", or
// "\\server\share" without the separator after it (all of a shorter UNC
// text).  Separators are backslashes by now.
size_t kept_prefix(const std::string& path) {
  if (path.size() >= 2 && is_ascii_letter(path[0]) && path[1] == ':') return 2;
  if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
    size_t server = path.find('\\', 2);
    if (server == std::string::npos || server == 2) return path.size();
    size_t share = path.find('\\', server + 1);
    return share == std::string::npos ? path.size() : share;
  }
  return 0;
}

// The name the directory search reports for the last component of `path`,
// or false with the system's error.  Names with wildcards are no names.
bool search_name(const std::string& path, std::string& name, DWORD* err) {
  if (path.find_first_of("*?", path.find_last_of('\\') + 1) != std::string::npos) {
    *err = ERROR_INVALID_NAME;
    return false;
  }
  WIN32_FIND_DATAA found;
  HANDLE search = FindFirstFileA(path.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) {
    *err = GetLastError();
    return false;
  }
  FindClose(search);
  name = found.cFileName;
  return true;
}

oruResult walk(const char* source, bool upperDrive, WhenNotFound whenNotFound, char* out,
               size_t size) {
  std::string path = source;
  for (char& c : path) {
    if (c == '/') c = '\\';
  }
  std::string result = path.substr(0, kept_prefix(path));
  if (upperDrive && result.size() == 2 && result[0] >= 'a' && result[0] <= 'z') {
    result[0] = static_cast<char>(result[0] - 'a' + 'A');
  }
  size_t at = result.size();
  while (at < path.size()) {
    if (path[at] == '\\') {
      result += '\\';  // one for the whole run
      while (at < path.size() && path[at] == '\\') ++at;
      continue;
    }
    size_t end = path.find('\\', at);
    if (end == std::string::npos) end = path.size();
    std::string component = path.substr(at, end - at);
    std::string name;
    DWORD err = NO_ERROR;
    // "." and ".." name no entry of their own.
    if (component == "." || component == "..") {
      name = component;
    } else if (!search_name(path.substr(0, end), name, &err)) {
      if (whenNotFound == WhenNotFound::kFail) return oru_map_win32_error(err);
      name = component;
    }
    result += name;
    at = end;
  }
  if (result.size() >= size) return ORU_E_BUFFER_TOO_SMALL;
  std::memcpy(out, result.c_str(), result.size() + 1);
  return ORU_OK;
}

}  // namespace

oruResult long_name_by_search(const char* path, char* out, size_t size) {
  try {
    return walk(path, false, WhenNotFound::kFail, out, size);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

oruResult true_case_path(const char* fullPath, char* out, size_t size) {
  try {
    return walk(fullPath, true, WhenNotFound::kKeepAsWritten, out, size);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // namespace oru::file
