// Walking UTF-8 text: stepping back and forth, counting, copying, validating.
#include <cstring>

#include "oru/unicode.h"
#include "unicode/oru_utf8_scan.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

extern "C" {

ORU_API const char* oruUTF8PrevChar(const char* p) {
  do {
    --p;
  } while (is_continuation(static_cast<unsigned char>(*p)));
  return p;
}

ORU_API const char* oruUTF8FindNextChar(const char* p, const char* end) {
  if (p >= end) return nullptr;
  ++p;
  while (p < end && is_continuation(static_cast<unsigned char>(*p))) ++p;
  return p < end ? p : nullptr;
}

ORU_API const char* oruUTF8FindPrevChar(const char* start, const char* p) {
  if (p <= start) return nullptr;
  --p;
  while (is_continuation(static_cast<unsigned char>(*p))) {
    if (p == start) return nullptr;
    --p;
  }
  return p;
}

ORU_API uint32_t oruUTF8CharCount(const char* s, int32_t len) {
  return utf8_count_span(bytes(s), utf8_length(s, len));
}

ORU_API char* oruUTF8Copy(char* dst, uint32_t dstSize, const char* src, int32_t srcLen,
                          uint32_t maxChars) {
  size_t limit = src ? utf8_length(src, srcLen) : 0;  // a null source is empty
  if (dstSize < limit) {
    // dstSize 0 would leave no room even for the terminator: write nothing.
    if (dstSize == 0) return dst;
    limit = dstSize - 1;
  }
  const unsigned char* s = bytes(src);
  size_t i = 0;
  for (uint32_t chars = 0; i < limit && chars < maxChars; ++chars) {
    const size_t k = utf8_seq_len(s[i]);
    if (k > limit - i) break;
    i += k;
  }
  if (i != 0) std::memcpy(dst, src, i);
  dst[i] = '\0';
  return dst;
}

ORU_API int oruUTF8Validate(const char* s, int32_t len, const char** errPos) {
  const size_t n = utf8_length(s, len);
  const size_t good = utf8_validate_span(bytes(s), n);
  if (errPos) *errPos = s + good;
  return good == n ? 1 : 0;
}

}  // extern "C"
