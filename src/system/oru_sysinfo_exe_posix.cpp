// The path of the running executable on POSIX systems: the process file
// system's link to it, or the loader's record of how it was started.

#include "system/oru_sysinfo_internal.h"

#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/auxv.h>
#endif

namespace oru::sysinfo {

namespace {

// Copies a path to buf in the manner of executable_path.
uint32_t deliver(const char* path, char* buf, uint32_t size) {
  size_t length = std::strlen(path);
  if (length == 0) return 0;
  if (length >= size) {
    std::memcpy(buf, path, size);
    return size;
  }
  std::memcpy(buf, path, length + 1);
  return static_cast<uint32_t>(length);
}

}  // namespace

uint32_t executable_path(char* buf, uint32_t size) {
#if defined(__linux__)
  ssize_t length = readlink("/proc/self/exe", buf, size);
  if (length < 0) {
    // Without /proc (early boot, some containers) the loader's record is
    // the next best thing.
    return errno == ENOENT ? executable_path_from_loader(buf, size) : 0;
  }
  if (static_cast<size_t>(length) >= size) return size;
  buf[length] = '\0';
  return static_cast<uint32_t>(length);
#else
  return executable_path_from_loader(buf, size);
#endif
}

// The system's record is already the full path: there are no short names to
// expand.
char* long_form(char* path) { return path; }

uint32_t executable_path_from_loader(char* buf, uint32_t size) {
#if defined(__linux__)
  const char* started = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  if (started == nullptr || started[0] == '\0') return 0;
  // The path as given to exec: resolve it against the current directory and
  // links, as /proc/self/exe would have done.  That is right unless the
  // program changed its directory first, when an absolute start path is the
  // best there is.
  char* resolved = realpath(started, nullptr);
  if (resolved == nullptr) return started[0] == '/' ? deliver(started, buf, size) : 0;
  uint32_t length = deliver(resolved, buf, size);
  std::free(resolved);
  return length;
#else
  (void)buf;
  (void)size;
  return 0;
#endif
}

}  // namespace oru::sysinfo
