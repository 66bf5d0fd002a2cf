// The system-assisted path operations on Windows: current directory, long
// names, canonical path, the temporary directory and create-new.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"
#include "file/oru_file_win32.h"

#include <cstring>
#include <new>
#include <string>

namespace oru::file {

namespace {

bool begins_with(const char* text, const char* prefix) {
  return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

// The canonical path from the final-path query of an open handle; false when
// the handle cannot be had or the answer does not fit (the caller then goes
// the long way).
bool final_path(GetFinalPathNameByHandleFunction query, const char* path, DWORD attributes,
                char* out, size_t size) {
  DWORD flags = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FILE_FLAG_BACKUP_SEMANTICS : 0;
  HANDLE handle = CreateFileA(path, 0, 0, nullptr, OPEN_EXISTING, flags, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  DWORD length = query(handle, out, static_cast<DWORD>(size), 0);
  CloseHandle(handle);
  if (length == 0 || length >= size) return false;
  if (out[length - 1] == '\0') --length;  // some versions count the terminator
  out[length] = '\0';
  if (begins_with(out, "\\\\?\\UNC\\")) {
    // "\\?\UNC\server\share" is "\\server\share".
    std::memmove(out + 2, out + 8, length - 8 + 1);
  } else if (begins_with(out, "\\\\?\\")) {
    std::memmove(out, out + 4, length - 4 + 1);
  }
  return true;
}

oruResult canonical_path(const char* path, char* out, size_t size) {
  DWORD attributes = GetFileAttributesA(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return oru_map_last_win32_error();
  if (GetFinalPathNameByHandleFunction query = get_final_path_name_by_handle()) {
    if (final_path(query, path, attributes, out, size)) return ORU_OK;
  }
  // The scratch buffer needs no more than the full path (the output's size
  // could be far larger than the memory behind it).
  DWORD needed = GetFullPathNameA(path, 0, nullptr, nullptr);
  if (needed == 0) return oru_map_last_win32_error();
  if (needed - 1 >= size) return ORU_E_BUFFER_TOO_SMALL;
  std::string full(needed, '\0');
  DWORD length = GetFullPathNameA(path, needed, full.data(), nullptr);
  if (length == 0) return oru_map_last_win32_error();
  if (length >= size || length >= needed) return ORU_E_BUFFER_TOO_SMALL;
  full.resize(length);
  for (char& c : full) {
    if (c == '/') c = '\\';
  }
  if (full.size() >= 3 && is_ascii_letter(full[0]) && full[1] == ':' && full[2] == '\\') {
    return true_case_path(full.c_str(), out, size);
  }
  // A UNC path: lexically, as far as the system is not asked.
  return oruGetAbsolutePath(path, out, size);
}

}  // namespace

oruResult expand_long_name(char* buffer, size_t size) {
  if (!fits_32_bits(size)) return ORU_E_INVALID_ARG;
  if (std::strchr(buffer, '~') == nullptr) return ORU_OK;
  try {
    std::string copy = buffer;
    if (GetLongPathNameFunction longName = get_long_path_name()) {
      DWORD length = longName(copy.c_str(), buffer, static_cast<DWORD>(size));
      if (length == 0) return oru_map_last_win32_error();
      if (length >= size) return ORU_E_BUFFER_TOO_SMALL;
      return ORU_OK;
    }
    return long_name_by_search(copy.c_str(), buffer, size);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

oruResult current_directory(std::string& out) {
  out.resize(256);
  for (;;) {
    DWORD length = GetCurrentDirectoryA(static_cast<DWORD>(out.size()), out.data());
    if (length == 0) return oru_map_last_win32_error();
    // Too small: the answer is the size needed, terminator included.
    if (length < out.size()) {
      out.resize(length);
      return ORU_OK;
    }
    out.resize(length);
  }
}

oruResult system_temp_directory(std::string& out) {
  char buffer[1024];
  DWORD length = GetTempPathA(sizeof buffer, buffer);
  if (length == 0) return oru_map_last_win32_error();
  if (length >= sizeof buffer) return ORU_E_UNEXPECTED;
  oruResult result = expand_long_name(buffer, sizeof buffer);
  if (result == ORU_E_BUFFER_TOO_SMALL) return ORU_E_UNEXPECTED;
  if (ORU_FAILED(result)) return result;
  out = buffer;
  return ORU_OK;
}

oruResult create_new_directory(const char* name) {
  if (CreateDirectoryA(name, nullptr)) return ORU_OK;
  DWORD err = GetLastError();
  return err == ERROR_ALREADY_EXISTS ? ORU_E_EXISTS : oru_map_win32_error(err);
}

// A name that exists gives ERROR_FILE_EXISTS; one held by a directory or by
// a file waiting to be deleted gives ERROR_ACCESS_DENIED.  So does every name
// of a directory the caller may not write to: that denial is reported rather
// than retried forever, told apart by the name being absent.
oruResult create_new_file(const char* name) {
  HANDLE handle = CreateFileA(name, GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle != INVALID_HANDLE_VALUE) {
    CloseHandle(handle);
    return ORU_OK;
  }
  DWORD err = GetLastError();
  if (err == ERROR_FILE_EXISTS) return ORU_E_EXISTS;
  if (err == ERROR_ACCESS_DENIED) {
    if (GetFileAttributesA(name) != INVALID_FILE_ATTRIBUTES) return ORU_E_EXISTS;
    DWORD why = GetLastError();
    if (why != ERROR_FILE_NOT_FOUND && why != ERROR_PATH_NOT_FOUND) return ORU_E_EXISTS;
  }
  return oru_map_win32_error(err);
}

uint32_t process_id() { return static_cast<uint32_t>(GetCurrentProcessId()); }

}  // namespace oru::file

using namespace oru::file;

extern "C" {

ORU_API oruResult oruGetCurrentDirectory(char* out, size_t size) {
  if (!fits_32_bits(size)) return ORU_E_INVALID_ARG;
  if (out == nullptr) return ORU_E_INVALID_ARG;
  DWORD length = GetCurrentDirectoryA(static_cast<DWORD>(size), out);
  if (length == 0) return oru_map_last_win32_error();
  if (length >= size) return ORU_E_BUFFER_TOO_SMALL;
  return expand_long_name(out, size);
}

ORU_API oruResult oruGetCanonicalPath(const char* path, char* out, size_t size) {
  if (!fits_32_bits(size)) return ORU_E_INVALID_ARG;
  if (path == nullptr || out == nullptr) return ORU_E_INVALID_ARG;
  try {
    return canonical_path(path, out, size);
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // extern "C"
