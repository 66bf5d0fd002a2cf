// What the tool's helpers need from the operating system, one
// implementation per platform (oru_tool_posix.cpp, oru_tool_win32.cpp).  When the library offers
// files and temporary names of its own, these become calls to it.
#ifndef ORU_TOOLS_ORU_TOOL_PLATFORM_H
#define ORU_TOOLS_ORU_TOOL_PLATFORM_H

#include <oru/core.h>

#include <cstdio>
#include <string>

// Called first thing in main: makes standard input and output carry bytes
// unchanged (no line-ending translation), so outputs are the same everywhere.
void oru_prepare_standard_streams();

// Creates and opens for writing a new file with a unique name beside
// `target` (same directory); its name goes to `temporary`.
oruResult oru_create_temporary_beside(const std::string& target, std::string& temporary,
                                      FILE*& stream);

// Renames `from` to `to`, replacing `to` if it exists.
oruResult oru_replace_file(const std::string& from, const std::string& to);

#endif  // ORU_TOOLS_ORU_TOOL_PLATFORM_H
