// Stand-in for the iconv binding on Windows until its backend lands: no
// conversion opens (EINVAL, as iconv_open reports an unknown pair).

#include "text/oru_iconv.h"

#include <cerrno>

namespace oru_charset {

int oru_iconv_open(const char*, const char*, oru_iconv_t* cd) {
  if (cd != nullptr) *cd = nullptr;
  return EINVAL;
}
int oru_iconv(oru_iconv_t, const char**, size_t*, char**, size_t*) { return EBADF; }
void oru_iconv_close(oru_iconv_t) {}

}  // namespace oru_charset
