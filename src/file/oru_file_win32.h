// Shared by the Windows sources of the file area; not installed.
#ifndef ORU_SRC_FILE_ORU_FILE_WIN32_H
#define ORU_SRC_FILE_ORU_FILE_WIN32_H

#include "oru/core.h"

#include <windows.h>

#include <cstddef>

namespace oru::file {

// Entry points that older kernel32 versions lack, looked up by name on
// first need.  Either may be null; the callers then take their fallbacks.
using GetLongPathNameFunction = DWORD(WINAPI*)(LPCSTR, LPSTR, DWORD);
using GetFinalPathNameByHandleFunction = DWORD(WINAPI*)(HANDLE, LPSTR, DWORD, DWORD);
GetLongPathNameFunction get_long_path_name();
GetFinalPathNameByHandleFunction get_final_path_name_by_handle();

// Expands the short (8.3) names in buffer[size] in place.  A path without
// '~' has none and stays as it is.  A size beyond 32 bits gives
// ORU_E_INVALID_ARG, a result that does not fit ORU_E_BUFFER_TOO_SMALL.
oruResult expand_long_name(char* buffer, size_t size);

// The expansion without GetLongPathNameA: path with '/' read as '\', its
// drive or \\server\share prefix kept, then each component as the directory
// search reports it, runs of separators written as one '\'.  A component
// the search does not find gives its translated error.
oruResult long_name_by_search(const char* path, char* out, size_t size);

// The true-case form of a full path that begins with a drive root: the
// drive letter in upper case, each component as the directory search
// reports it, or as written when the search does not find it.
oruResult true_case_path(const char* fullPath, char* out, size_t size);

}  // namespace oru::file

#endif  // ORU_SRC_FILE_ORU_FILE_WIN32_H
