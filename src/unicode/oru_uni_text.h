// Decoding whole UTF-8 and UTF-16 strings into code points and encoding code
// points back, for the string functions that work on decoded text (case
// mapping, normalization).  An ill-formed sequence decodes to U+FFFD, one
// per offending byte or unit, and nothing is read past the given length.
#ifndef ORU_SRC_UNICODE_ORU_UNI_TEXT_H
#define ORU_SRC_UNICODE_ORU_UNI_TEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace oru::unicode {

constexpr uint32_t kReplacementChar = 0xFFFD;

// Runs fn() and gives `failed` instead when memory runs out: the working
// vectors and strings throw std::bad_alloc, which must not cross the C
// interface.
template <class T, class Fn>
T unless_out_of_memory(Fn&& fn, T failed = T{}) noexcept {
  try {
    return fn();
  } catch (const std::bad_alloc&) {
    return failed;
  }
}

// The length of the well-formed sequence at s[i] (i < n), or 0.  Unlike the
// validation functions this accepts noncharacters: they are well-formed text
// that case mapping and normalization pass through.
size_t utf8_sequence(const unsigned char* s, size_t n, size_t i) noexcept;

void decode_utf8(const char* s, size_t n, std::vector<uint32_t>& out);
void decode_utf16(const uint16_t* s, size_t n, std::vector<uint32_t>& out);
// As decode_utf16, but an unpaired surrogate stays its own value.
void decode_utf16_raw(const uint16_t* s, size_t n, std::vector<uint32_t>& out);

// A new oruMalloc array holding the text in UTF-16.  Values that are not
// scalar values (UCS-4 input above U+10FFFF) are written as U+FFFD.
// *outLen receives the length in units.
uint16_t* encode_utf16(const uint32_t* s, size_t n, uint32_t* outLen);
// Appends s[0..n) to out in UTF-8, noncharacters included.
void append_utf8(std::string& out, const uint32_t* s, size_t n);
uint32_t* copy_ucs4(const uint32_t* s, size_t n, uint32_t* outLen);

// A growable oruMalloc byte buffer whose contents are handed to the caller
// NUL-terminated.  On allocation failure the operations return false and
// the buffer is freed.
class OutBuffer {
 public:
  OutBuffer() = default;
  OutBuffer(const OutBuffer&) = delete;
  OutBuffer& operator=(const OutBuffer&) = delete;
  ~OutBuffer();
  bool reserve(size_t capacity);
  bool append(const char* s, size_t n) {
    if (n > cap_ - size_ && !reserve(size_ + n + size_ / 2 + 16)) return false;
    if (n) std::memcpy(data_ + size_, s, n);
    size_ += n;
    return true;
  }
  bool push(char c) {
    if (size_ == cap_ && !reserve(size_ + size_ / 2 + 16)) return false;
    data_[size_++] = c;
    return true;
  }
  // Terminates the text and gives it away; *outLen (if given) gets its length.
  char* release(uint32_t* outLen);

 private:
  char* data_ = nullptr;
  size_t size_ = 0, cap_ = 0;
};

}  // namespace oru::unicode

#endif  // ORU_SRC_UNICODE_ORU_UNI_TEXT_H
