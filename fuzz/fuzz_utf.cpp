// UTF-8 and UTF-16 primitives fed the same bytes: decoding, validation,
// counting, navigation, copying, searching, comparison and encoding, with
// the invariants that tie them together checked on every input.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_check.h"
#include "oru/unicode.h"

namespace {

constexpr uint32_t kInvalid = 0xFFFFFFFFu;

// The length a forward walk gives the sequence starting with lead byte b.
size_t step8(unsigned char b) { return b < 0xC0 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : 4; }
// The bytes _oruUTF8GetChar1 reads for lead byte b (a stray continuation
// byte is read as the lead of a four-byte form).
size_t decode8(unsigned char b) { return b < 0x80 ? 1 : b < 0xC0 ? 4 : step8(b); }
bool is_cont8(unsigned char b) { return (b & 0xC0) == 0x80; }
bool is_high(uint16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool is_low(uint16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }
int sign(int32_t v) { return (v > 0) - (v < 0); }
// memcmp that accepts empty (possibly null) ranges.
int compare(const void* a, const void* b, size_t n) { return n == 0 ? 0 : std::memcmp(a, b, n); }

void check_utf8(const char* s, size_t len, uint32_t dstSize, uint32_t maxChars, uint32_t needle) {
  const auto* u = reinterpret_cast<const unsigned char*>(s);
  const int32_t n = static_cast<int32_t>(len);

  // Validation agrees with a walk of the checked decoder.
  size_t pos = 0;
  bool valid = true;
  std::vector<uint32_t> chars;
  while (pos < len) {
    size_t k = step8(u[pos]);
    if (pos + k > len) {
      valid = false;
      break;
    }
    uint32_t c = oruUTF8GetChar(s + pos);
    if (c == kInvalid) {
      valid = false;
      break;
    }
    FUZZ_CHECK(oruUniCharValidate(static_cast<int32_t>(c)) == 1);
    // A valid sequence is the shortest form: encoding it again gives the
    // same bytes, and the unchecked decoders agree.
    char buf[4];
    char* end = oruUTF8PutChar(buf, c);
    FUZZ_CHECK(static_cast<size_t>(end - buf) == k && std::memcmp(buf, s + pos, k) == 0);
    FUZZ_CHECK(oruUTF8SafePutChar(buf, buf, static_cast<int32_t>(c)) == buf + k);
    FUZZ_CHECK(_oruUTF8GetChar1(s + pos) == c);
    if (k > 1) FUZZ_CHECK(_oruUTF8GetChar2(s + pos) == c);
    if (k > 2) FUZZ_CHECK(_oruUTF8GetChar3(s + pos) == c);
    chars.push_back(c);
    pos += k;
  }
  const char* errPos = nullptr;
  FUZZ_CHECK(oruUTF8Validate(s, n, &errPos) == (valid ? 1 : 0));
  FUZZ_CHECK(errPos == s + pos);
  FUZZ_CHECK(oruUTF8Validate(s, n, nullptr) == (valid ? 1 : 0));

  // The count is the number of whole steps of the forward walk.
  std::vector<size_t> starts;
  for (pos = 0; pos < len && pos + step8(u[pos]) <= len; pos += step8(u[pos]))
    starts.push_back(pos);
  FUZZ_CHECK(oruUTF8CharCount(s, n) == starts.size());
  if (valid) FUZZ_CHECK(chars.size() == starts.size());

  // Navigation: FindNextChar skips continuation bytes, FindPrevChar and
  // PrevChar go back over them.
  const char* end = s + len;
  for (size_t i = 0; i < len; ++i) {
    size_t j = i + 1;
    while (j < len && is_cont8(u[j])) ++j;
    const char* next = oruUTF8FindNextChar(s + i, end);
    FUZZ_CHECK(next == (j < len ? s + j : nullptr));
  }
  for (size_t i = 0; i <= len; ++i) {
    const char* prev = oruUTF8FindPrevChar(s, s + i);
    if (i == 0) {
      FUZZ_CHECK(prev == nullptr);
      continue;
    }
    size_t j = i - 1;
    while (j > 0 && is_cont8(u[j])) --j;
    const char* expect = is_cont8(u[j]) ? nullptr : s + j;
    FUZZ_CHECK(prev == expect);
    if (expect != nullptr) FUZZ_CHECK(oruUTF8PrevChar(s + i) == expect);
  }

  // Copy: whole characters only, never past dstSize - 1 when truncating,
  // never more than maxChars, and the terminator behind the copy.
  std::vector<char> dst(static_cast<size_t>(dstSize) + 1, '\x5A');
  FUZZ_CHECK(oruUTF8Copy(dst.data(), dstSize, s, n, maxChars) == dst.data());
  if (dstSize == 0) {
    if (len > 0) FUZZ_CHECK(dst[0] == '\x5A');
  } else {
    size_t limit = dstSize < len ? dstSize - 1 : len;
    size_t copied = 0;
    for (size_t i = 0; i < starts.size() && i < maxChars; ++i) {
      size_t stop = starts[i] + step8(u[starts[i]]);
      if (stop > limit) break;
      copied = stop;
    }
    FUZZ_CHECK(compare(dst.data(), s, copied) == 0);
    FUZZ_CHECK(dst[copied] == '\0');
    for (size_t i = copied + 1; i < dst.size(); ++i) FUZZ_CHECK(dst[i] == '\x5A');
  }

  // Searching: the first and last character equal to needle (decoded
  // without checks) among the whole characters of the forward walk.
  const char* first = nullptr;
  for (size_t st : starts) {
    if (st + decode8(u[st]) <= len && _oruUTF8GetChar1(s + st) == needle) {
      first = s + st;
      break;
    }
  }
  FUZZ_CHECK(oruUTF8FindChar(s, n, needle) == first);
  const char* last = oruUTF8FindLastChar(s, n, needle);
  if (last != nullptr) {
    FUZZ_CHECK(last >= s && last < end);
    FUZZ_CHECK(!is_cont8(static_cast<unsigned char>(*last)));
    FUZZ_CHECK(last + decode8(static_cast<unsigned char>(*last)) <= end);
    FUZZ_CHECK(_oruUTF8GetChar1(last) == needle);
  }
  if (valid && !chars.empty()) {
    // In valid text both searches agree with the decoded characters.
    uint32_t c = chars[needle % chars.size()];
    size_t firstIndex = 0, lastIndex = 0;
    for (size_t i = 0; i < chars.size(); ++i) {
      if (chars[i] == c) lastIndex = i;
    }
    while (chars[firstIndex] != c) ++firstIndex;
    FUZZ_CHECK(oruUTF8FindChar(s, n, c) == s + starts[firstIndex]);
    FUZZ_CHECK(oruUTF8FindLastChar(s, n, c) == s + starts[lastIndex]);
  }

  // Comparison of the two halves is byte order.
  size_t half = len / 2;
  int32_t cmp = oruUTF8BinaryCompare(s, static_cast<int32_t>(half), s + half,
                                     static_cast<int32_t>(len - half));
  int expect = compare(s, s + half, half < len - half ? half : len - half);
  if (expect == 0) expect = half < len - half ? -1 : half > len - half ? 1 : 0;
  FUZZ_CHECK(sign(cmp) == sign(expect));
  FUZZ_CHECK(oruUTF8BinaryCompare(s, n, s, n) == 0);
}

void check_utf16(const uint16_t* s, uint32_t len, uint32_t dstLen, uint32_t maxChars,
                 uint32_t needle) {
  // Validation agrees with a walk of the checked decoder.
  uint32_t pos = 0;
  bool valid = true;
  std::vector<uint32_t> chars;
  while (pos < len) {
    if (is_high(s[pos]) && pos + 1 == len) {
      valid = false;
      break;
    }
    uint32_t c = oruUTF16GetChar(s + pos);
    if (c == kInvalid) {
      valid = false;
      break;
    }
    uint32_t k = c >= 0x10000 ? 2 : 1;
    uint16_t buf[2];
    FUZZ_CHECK(oruUTF16PutChar(buf, c) == buf + k && std::memcmp(buf, s + pos, 2 * k) == 0);
    FUZZ_CHECK(oruUTF16SafePutChar(buf, buf, c) == buf + k);
    char b8[4];
    FUZZ_CHECK(oruUTF8PutChar(b8, c) > b8 && oruUTF8GetChar(b8) == c);
    chars.push_back(c);
    pos += k;
  }
  const uint16_t* errPos = nullptr;
  FUZZ_CHECK(oruUTF16Validate(s, len, &errPos) == (valid ? 1 : 0));
  FUZZ_CHECK(errPos == s + pos);

  // Count: a high surrogate and the unit after it are one character.
  std::vector<uint32_t> starts;
  for (pos = 0; pos < len;) {
    uint32_t k = is_high(s[pos]) ? 2 : 1;
    if (pos + k > len) break;
    starts.push_back(pos);
    pos += k;
  }
  FUZZ_CHECK(oruUTF16CharCount(s, len) == starts.size());
  if (valid) FUZZ_CHECK(chars.size() == starts.size());

  const uint16_t* end = s + len;
  for (uint32_t i = 0; i < len; ++i) {
    uint32_t j = i + 1;
    while (j < len && is_low(s[j])) ++j;
    FUZZ_CHECK(oruUTF16FindNextChar(s + i, end) == (j < len ? s + j : nullptr));
  }
  for (uint32_t i = 0; i <= len; ++i) {
    const uint16_t* prev = oruUTF16FindPrevChar(s, s + i);
    if (i == 0) {
      FUZZ_CHECK(prev == nullptr);
      continue;
    }
    uint32_t j = i - 1;
    while (j > 0 && is_low(s[j])) --j;
    const uint16_t* expect = is_low(s[j]) ? nullptr : s + j;
    FUZZ_CHECK(prev == expect);
    if (expect != nullptr) FUZZ_CHECK(oruUTF16PrevChar(s + i) == expect);
  }

  // Copy: whole characters within min(dstLen, len) units and maxChars.
  std::vector<uint16_t> dst(dstLen + 1, 0x5A5A);
  FUZZ_CHECK(oruUTF16Copy(dst.data(), dstLen, s, len, maxChars) == dst.data());
  uint32_t limit = dstLen < len ? dstLen : len;
  uint32_t copied = 0;
  for (size_t i = 0; i < starts.size() && i < maxChars; ++i) {
    uint32_t stop = starts[i] + (is_high(s[starts[i]]) ? 2 : 1);
    if (stop > limit) break;
    copied = stop;
  }
  FUZZ_CHECK(compare(dst.data(), s, 2 * copied) == 0);
  for (uint32_t i = copied; i < dst.size(); ++i) FUZZ_CHECK(dst[i] == 0x5A5A);

  // Searching.
  const uint16_t* found = oruUTF16FindChar(s, len, needle);
  if (found != nullptr) {
    FUZZ_CHECK(found >= s && found < end);
    if (needle >= 0x10000) FUZZ_CHECK(found + 1 < end);
  }
  const uint16_t* last = oruUTF16FindLastChar(s, len, needle);
  if (last != nullptr) FUZZ_CHECK(last >= s && last < end);
  if (valid && !chars.empty()) {
    uint32_t c = chars[needle % chars.size()];
    size_t firstIndex = 0, lastIndex = 0;
    for (size_t i = 0; i < chars.size(); ++i) {
      if (chars[i] == c) lastIndex = i;
    }
    while (chars[firstIndex] != c) ++firstIndex;
    FUZZ_CHECK(oruUTF16FindChar(s, len, c) == s + starts[firstIndex]);
    FUZZ_CHECK(oruUTF16FindLastChar(s, len, c) == s + starts[lastIndex]);
  }

  // Comparison is antisymmetric and agrees with UCS-4 on valid text.
  uint32_t half = len / 2;
  int32_t ab = oruUTF16BinaryCompare(s, half, s + half, len - half);
  int32_t ba = oruUTF16BinaryCompare(s + half, len - half, s, half);
  FUZZ_CHECK(sign(ab) == -sign(ba));
  FUZZ_CHECK(oruUTF16BinaryCompare(s, len, s, len) == 0);
  if (valid) {
    size_t split = 0;
    while (split < starts.size() && starts[split] < half) ++split;
    if (split == starts.size() ? half == len : starts[split] == half) {
      int32_t u4 =
          oruUCS4BinaryCompare(chars.data(), static_cast<uint32_t>(split), chars.data() + split,
                               static_cast<uint32_t>(chars.size() - split));
      FUZZ_CHECK(sign(u4) == sign(ab));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  uint32_t dstSize = in.ConsumeIntegralInRange<uint32_t>(0, 300);
  uint32_t maxChars = in.ConsumeBool() ? 0xFFFFFFFFu : in.ConsumeIntegralInRange<uint32_t>(0, 200);
  uint32_t needle = in.ConsumeIntegral<uint32_t>();
  if (needle & 0x80000000u) needle &= 0x7F;  // often ASCII, where matches are likely
  std::vector<uint8_t> bytes = in.ConsumeRemainingBytes<uint8_t>();

  // Exact-size heap copies, so that any read past the end is caught.
  std::vector<char> text(bytes.begin(), bytes.end());
  check_utf8(text.data(), text.size(), dstSize, maxChars, needle);

  std::vector<uint16_t> units(bytes.size() / 2);
  if (!units.empty()) std::memcpy(units.data(), bytes.data(), units.size() * 2);
  check_utf16(units.data(), static_cast<uint32_t>(units.size()), dstSize, maxChars, needle);

  // The NUL-terminated forms see the text up to its first zero byte.
  std::vector<char> z(text);
  z.push_back('\0');
  size_t zlen = std::strlen(z.data());
  FUZZ_CHECK(oruUTF8CharCount(z.data(), -1) == oruUTF8CharCount(z.data(), (int32_t)zlen));
  FUZZ_CHECK(oruUTF8Validate(z.data(), -1, nullptr) ==
             oruUTF8Validate(z.data(), (int32_t)zlen, nullptr));
  return 0;
}
