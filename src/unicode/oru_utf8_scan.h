// The hot loops behind oruUTF8Validate and oruUTF8CharCount.
//
// Each engine works on a resolved length.  The portable engines run on any
// processor and skip ASCII eight bytes at a time; the SSE2 engines (x86-64,
// where SSE2 is always present) skip it 16 to 64 bytes at a time.  Both
// fall back to the same byte-wise loop for multi-byte text and must give
// identical results.
#ifndef ORU_SRC_UNICODE_ORU_UTF8_SCAN_H
#define ORU_SRC_UNICODE_ORU_UTF8_SCAN_H

#include <cstddef>
#include <cstdint>

namespace oru::unicode {

// The offset just past the last wholly valid character: n when valid.
size_t utf8_validate_portable(const unsigned char* s, size_t n) noexcept;
// The number of whole characters stepped by lead byte.
uint32_t utf8_count_portable(const unsigned char* s, size_t n) noexcept;

#if defined(__SSE2__) || defined(_M_X64)
#define ORU_UTF8_SCAN_SSE2 1
size_t utf8_validate_sse2(const unsigned char* s, size_t n) noexcept;
uint32_t utf8_count_sse2(const unsigned char* s, size_t n) noexcept;
#endif

// The engine of this build.
inline size_t utf8_validate_span(const unsigned char* s, size_t n) noexcept {
#ifdef ORU_UTF8_SCAN_SSE2
  return utf8_validate_sse2(s, n);
#else
  return utf8_validate_portable(s, n);
#endif
}

inline uint32_t utf8_count_span(const unsigned char* s, size_t n) noexcept {
#ifdef ORU_UTF8_SCAN_SSE2
  return utf8_count_sse2(s, n);
#else
  return utf8_count_portable(s, n);
#endif
}

}  // namespace oru::unicode

#endif  // ORU_SRC_UNICODE_ORU_UTF8_SCAN_H
