// Shared by the file, path and directory sources; not installed.
#ifndef ORU_SRC_FILE_ORU_FILE_INTERNAL_H
#define ORU_SRC_FILE_ORU_FILE_INTERNAL_H

#include "oru/file.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace oru::file {

// The separator the library writes.
#if defined(_WIN32)
inline constexpr char kSeparator = '\\';
#else
inline constexpr char kSeparator = '/';
#endif

// Both kinds are read everywhere.
inline bool is_separator(char c) { return c == '\\' || c == '/'; }
inline bool is_ascii_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Sizes handed to the 32-bit system interfaces.
inline bool fits_32_bits(size_t size) { return size <= UINT32_MAX; }

// The position just after the root of path[0, length), or -1 when it has
// none: "X:" and a separator; two equal separators, a server name, a
// separator and a share name up to and including the separator after it; on
// POSIX systems also a single leading '/'.
ptrdiff_t root_end(const char* path, size_t length);

// Rewrites text[rootEnd, length) in place by the dot and separator rules of
// oruGetAbsolutePath and returns the new length.
size_t normalize_after_root(char* text, size_t length, size_t rootEnd);

// The allocation unit oruGetFileInfo reports for a path.
oruResult allocation_unit(const char* path, uint32_t* unit);

// Platform parts.

// The current directory into a string (grown until it fits).
oruResult current_directory(std::string& out);

// The system's temporary directory when TMPDIR is not set.
oruResult system_temp_directory(std::string& out);

// Creates name new; a name that exists gives ORU_E_EXISTS (the caller then
// draws another).
oruResult create_new_directory(const char* name);
oruResult create_new_file(const char* name);

// The process id, for the temporary-name counters.
uint32_t process_id();

// Volume allocation unit for a path text already cut to what the volume
// query should see.
oruResult volume_allocation_unit(const char* path, uint32_t* unit);

// Directory listings: the names every listing skips.
bool is_dot_or_dot_dot(const char* name);
// A listing reads its first name when it is opened; oruReadDir hands it out
// first.  Frees *pending (and nulls it).  True with *result set when the
// read ends there; false when the name was "." or ".." and the read goes on.
bool hand_out_first_name(char** pending, char* name, size_t size, oruResult* result);

}  // namespace oru::file

#endif  // ORU_SRC_FILE_ORU_FILE_INTERNAL_H
