// The system calls of the tool's helpers, for POSIX systems.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "oru_tool.h"
#include "oru_tool_platform.h"

// Standard streams carry bytes unchanged here already.
void oru_prepare_standard_streams() {}

oruResult oru_read_chunks(const char* path, oru_chunk_sink& sink) {
  const bool is_stdin = std::strcmp(path, "-") == 0;
  int fd = is_stdin ? STDIN_FILENO : ::open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return _oru_map_posix_error(errno);
#if defined(POSIX_FADV_SEQUENTIAL)
  (void)::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
#endif
  // One heap buffer per call: large enough to keep system calls rare, small
  // enough that memory stays bounded.  Page-aligned: the kernel copies into
  // a misaligned buffer several times more slowly.
  struct page_free {
    void operator()(unsigned char* p) const { std::free(p); }
  };
  void* raw = nullptr;
  if (::posix_memalign(&raw, 4096, ORU_CHUNK_SIZE) != 0) {
    if (!is_stdin) ::close(fd);
    return ORU_E_OUT_OF_MEMORY;
  }
  std::unique_ptr<unsigned char, page_free> buffer(static_cast<unsigned char*>(raw));
  oruResult result = ORU_OK;
  for (;;) {
    const ssize_t n = ::read(fd, buffer.get(), ORU_CHUNK_SIZE);
    if (n > 0) {
      sink.consume(buffer.get(), static_cast<size_t>(n));
    } else if (n == 0) {
      break;
    } else if (errno != EINTR) {
      result = _oru_map_posix_error(errno);
      break;
    }
  }
  if (!is_stdin) ::close(fd);
  return result;
}

oruResult oru_create_temporary_beside(const std::string& target, std::string& temporary,
                                      FILE*& stream) {
  // The temporary file lives in the target's directory so that the final
  // rename stays on one file system and replaces the target in one step.
  std::string pattern = target + ".oru-XXXXXX";
  const int fd = ::mkstemp(pattern.data());
  if (fd < 0) return _oru_map_posix_error(errno);
  // mkstemp creates the file readable by its owner only; give it the
  // permissions an ordinary new file would get.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  (void)::fchmod(fd, 0666 & ~mask);
  stream = ::fdopen(fd, "wb");
  if (stream == nullptr) {
    const int err = errno;
    ::close(fd);
    ::unlink(pattern.c_str());
    return _oru_map_posix_error(err);
  }
  temporary = pattern;
  return ORU_OK;
}

oruResult oru_replace_file(const std::string& from, const std::string& to) {
  // rename(2) replaces an existing target atomically.
  if (std::rename(from.c_str(), to.c_str()) != 0) return _oru_map_posix_error(errno);
  return ORU_OK;
}
