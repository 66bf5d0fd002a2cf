// iconv from the C library (glibc's on Linux): nothing to load at run time.

#include "text/oru_iconv.h"

#include <iconv.h>

#include <cerrno>

namespace oru_charset {

int oru_iconv_open(const char* toName, const char* fromName, oru_iconv_t* cd) {
  iconv_t handle = iconv_open(toName, fromName);
  if (handle == reinterpret_cast<iconv_t>(-1)) return errno != 0 ? errno : EINVAL;
  *cd = handle;
  return 0;
}

int oru_iconv(oru_iconv_t cd, const char** in, size_t* inLeft, char** out, size_t* outLeft) {
  // POSIX declares the input as char**; iconv never writes through it.
  size_t r = iconv(static_cast<iconv_t>(cd), const_cast<char**>(in), inLeft, out, outLeft);
  if (r == static_cast<size_t>(-1)) return errno;
  return 0;
}

void oru_iconv_close(oru_iconv_t cd) { iconv_close(static_cast<iconv_t>(cd)); }

}  // namespace oru_charset
