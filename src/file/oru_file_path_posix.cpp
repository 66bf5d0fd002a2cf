// The system-assisted path operations on POSIX systems: current directory,
// canonical path, the temporary directory and create-new.

#include "core/oru_internal.h"
#include "file/oru_file_internal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace oru::file {

oruResult current_directory(std::string& out) {
  out.resize(256);
  for (;;) {
    if (::getcwd(out.data(), out.size()) != nullptr) {
      out.resize(std::strlen(out.c_str()));
      return ORU_OK;
    }
    if (errno != ERANGE) return oru_map_posix_error(errno);
    out.resize(out.size() * 2);
  }
}

oruResult system_temp_directory(std::string& out) {
  out = P_tmpdir;
  return ORU_OK;
}

oruResult create_new_directory(const char* name) {
  if (::mkdir(name, 0700) == 0) return ORU_OK;
  return oru_map_posix_error(errno);
}

// Only EEXIST means the name is taken here; an unwritable directory gives
// EACCES on every name and must not be retried.
oruResult create_new_file(const char* name) {
  int fd;
  do {
    fd = ::open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) return oru_map_posix_error(errno);
  ::close(fd);
  return ORU_OK;
}

uint32_t process_id() { return static_cast<uint32_t>(::getpid()); }

}  // namespace oru::file

using namespace oru::file;

extern "C" {

// There are no short names to expand on POSIX systems: the directory is
// returned as the system reports it.
ORU_API oruResult oruGetCurrentDirectory(char* out, size_t size) {
  if (!fits_32_bits(size)) return ORU_E_INVALID_ARG;
  if (out == nullptr) return ORU_E_INVALID_ARG;
  if (size == 0) return ORU_E_BUFFER_TOO_SMALL;  // getcwd would allocate
  if (::getcwd(out, size) != nullptr) return ORU_OK;
  return errno == ERANGE ? ORU_E_BUFFER_TOO_SMALL : oru_map_posix_error(errno);
}

ORU_API oruResult oruGetCanonicalPath(const char* path, char* out, size_t size) {
  if (!fits_32_bits(size)) return ORU_E_INVALID_ARG;
  if (path == nullptr || out == nullptr) return ORU_E_INVALID_ARG;
  struct stat status;
  if (::stat(path, &status) != 0) return oru_map_posix_error(errno);
  char* resolved = ::realpath(path, nullptr);
  if (resolved == nullptr) return oru_map_posix_error(errno);
  size_t length = std::strlen(resolved);
  oruResult result = ORU_E_BUFFER_TOO_SMALL;
  if (length < size) {
    std::memcpy(out, resolved, length + 1);
    result = ORU_OK;
  }
  std::free(resolved);
  return result;
}

}  // extern "C"
