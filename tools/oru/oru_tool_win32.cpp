// The system calls of the tool's helpers, for Windows.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "oru_tool.h"
#include "oru_tool_platform.h"

void oru_prepare_standard_streams() {
  // The C runtime turns "\n" into "\r\n" on text streams (and back on input,
  // where it also stops at ^Z); the tool's outputs are bytes, the same as on
  // every other system.
  (void)_setmode(_fileno(stdin), _O_BINARY);
  (void)_setmode(_fileno(stdout), _O_BINARY);
  (void)_setmode(_fileno(stderr), _O_BINARY);
}

oruResult oru_read_chunks(const char* path, oru_chunk_sink& sink) {
  const bool is_stdin = std::strcmp(path, "-") == 0;
  HANDLE file = is_stdin ? GetStdHandle(STD_INPUT_HANDLE)
                         : CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (file == INVALID_HANDLE_VALUE || file == nullptr) return _oru_map_last_win32_error();
  std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[ORU_CHUNK_SIZE]);
  if (!buffer) {
    if (!is_stdin) CloseHandle(file);
    return ORU_E_OUT_OF_MEMORY;
  }
  oruResult result = ORU_OK;
  for (;;) {
    DWORD n = 0;
    if (!ReadFile(file, buffer.get(), static_cast<DWORD>(ORU_CHUNK_SIZE), &n, nullptr)) {
      // A pipe whose writer has gone is the end of the input.
      if (GetLastError() != ERROR_BROKEN_PIPE) result = _oru_map_last_win32_error();
      break;
    }
    if (n == 0) break;
    sink.consume(buffer.get(), n);
  }
  if (!is_stdin) CloseHandle(file);
  return result;
}

oruResult oru_create_temporary_beside(const std::string& target, std::string& temporary,
                                      FILE*& stream) {
  // The temporary file lives in the target's directory so that the final
  // rename stays on one volume and replaces the target in one step.  The
  // name takes the process id and a counter; CREATE_NEW refuses a name that
  // exists, and the next number is tried.
  static unsigned counter = 0;
  for (int attempt = 0; attempt < 100; ++attempt) {
    char suffix[40];
    std::snprintf(suffix, sizeof suffix, ".oru-%lx-%x", GetCurrentProcessId(), ++counter);
    std::string name = target + suffix;
    HANDLE file = CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
      if (GetLastError() == ERROR_FILE_EXISTS) continue;
      return _oru_map_last_win32_error();
    }
    int fd = _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_WRONLY | _O_BINARY);
    if (fd < 0) {
      CloseHandle(file);
      DeleteFileA(name.c_str());
      return ORU_E_TOO_MANY_FILES;
    }
    stream = _fdopen(fd, "wb");
    if (stream == nullptr) {
      _close(fd);
      DeleteFileA(name.c_str());
      return ORU_E_OUT_OF_MEMORY;
    }
    temporary = name;
    return ORU_OK;
  }
  return _oru_map_win32_error(ERROR_FILE_EXISTS);
}

oruResult oru_replace_file(const std::string& from, const std::string& to) {
  if (!MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    return _oru_map_last_win32_error();
  return ORU_OK;
}
