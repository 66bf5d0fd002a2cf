// Decomposition of one code point, canonical ordering in place, and the four
// normalization forms in UCS-4, UTF-16 and UTF-8.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "oru/core.h"
#include "oru/unicode.h"
#include "unicode/oru_casenorm_tables.h"
#include "unicode/oru_uni_ordering.h"
#include "unicode/oru_uni_text.h"
#include "unicode/oru_utf_internal.h"

using namespace oru::unicode;

namespace {

constexpr uint32_t kSBase = 0xAC00, kLBase = 0x1100, kVBase = 0x1161, kTBase = 0x11A7;
constexpr uint32_t kLCount = 19, kVCount = 21, kTCount = 28, kNCount = kVCount * kTCount;
constexpr uint32_t kSCount = kLCount * kNCount;

constexpr uint32_t kComposeBit = 2, kCompatBit = 1;

// Appends the full decomposition of c to out (a vector, or the fixed buffer
// below).
template <class Out>
void decompose(uint32_t c, bool canonical_only, Out& out) {
  if (c - kSBase < kSCount) {
    const uint32_t s = c - kSBase;
    out.push_back(kLBase + s / kNCount);
    out.push_back(kVBase + (s % kNCount) / kTCount);
    if (s % kTCount) out.push_back(kTBase + s % kTCount);
    return;
  }
  const uint16_t* r = decomposition(c);
  if (!r || (canonical_only && (*r >> 8) != 1)) {
    out.push_back(c);
    return;
  }
  const uint16_t* p = r + 1;
  const uint16_t* end = p + (*r & 0xFF);
  while (p < end) {
    uint32_t d = *p++;
    if (is_high_surrogate(static_cast<uint16_t>(d)) && p < end) d = combine_surrogates(d, *p++);
    decompose(d, canonical_only, out);
  }
}

// The decomposition of one character, without allocating: no full
// decomposition is longer than 18 code points (U+FDFA), and none may grow.
struct OneDecomposition {
  uint32_t items[32];
  size_t count = 0;
  void push_back(uint32_t c) {
    if (count < std::size(items)) items[count++] = c;
  }
  size_t size() const { return count; }
  const uint32_t* data() const { return items; }
  const uint32_t* begin() const { return items; }
  const uint32_t* end() const { return items + count; }
};

// Canonical composition in place; returns the new length.
size_t compose(uint32_t* s, size_t n) {
  size_t i = 0;
  while (i < n && combining_class(s[i]) != 0) ++i;
  if (i == n) return n;
  size_t starter = i, w = i + 1;  // s[w..] is unread, s[..w) kept
  uint32_t last_class = 0;
  bool kept_since_starter = false;
  for (size_t r = i + 1; r < n; ++r) {
    const uint32_t c = s[r];
    const uint32_t cc = combining_class(c);
    if (cc != 0) {
      if (last_class < cc) {
        const uint32_t comp = compose_pair(s[starter], c);
        if (comp) {
          s[starter] = comp;
          continue;
        }
        last_class = cc;
      }
      s[w++] = c;
      kept_since_starter = true;
      continue;
    }
    if (!kept_since_starter) {
      const uint32_t first = s[starter];
      if (first - kLBase < kLCount && c - kVBase < kVCount) {
        uint32_t syllable = kSBase + ((first - kLBase) * kVCount + (c - kVBase)) * kTCount;
        // TBase itself is accepted and adds nothing to the syllable.
        if (r + 1 < n && s[r + 1] - kTBase < kTCount) syllable += s[++r] - kTBase;
        s[starter] = syllable;
        continue;
      }
      const uint32_t comp = compose_pair(first, c);
      if (comp) {
        s[starter] = comp;
        continue;
      }
    }
    starter = w;
    s[w++] = c;
    last_class = 0;
    kept_since_starter = false;
  }
  return w;
}

void normalize_into(const uint32_t* s, size_t n, uint32_t form, std::vector<uint32_t>& out) {
  const size_t base = out.size();
  const bool canonical_only = (form & kCompatBit) == 0;
  for (size_t i = 0; i < n; ++i) decompose(s[i], canonical_only, out);
  canonical_order(out.data() + base, out.size() - base);
  if (form & kComposeBit) {
    out.resize(base + compose(out.data() + base, out.size() - base));
  }
}

// The highest code point below which every character is its own
// normalization and never takes part in a composition with what precedes or
// follows it other than as a starter: text made of these can be cut before
// any of them.
uint32_t stable_limit(uint32_t form) noexcept {
  if (form & kCompatBit) return 0xA0;  // U+00A0 has a compatibility mapping
  return (form & kComposeBit) ? 0x300 : 0xC0;
}

// Whether the three-byte sequence at s (complete, checked by the caller)
// is a stable character of form: CJK ideographs everywhere; for NFC also
// CJK punctuation, kana and Hangul syllables.  None of these has a class,
// changes in its form, or is the second character of a composition (a
// syllable followed by a trailing jamo is handled by the cut rule: the last
// stable character before unstable text joins that text).
bool stable_three_byte(const unsigned char* s, uint32_t form) noexcept {
  const uint32_t c = (s[0] & 0x0Fu) << 12 | (s[1] & 0x3Fu) << 6 | (s[2] & 0x3Fu);
  if (c - 0x4E00 <= 0x9FBB - 0x4E00) return true;
  if (form != ORU_NFC && !(form == ORU_NFKC && c - kSBase < kSCount)) return false;
  if (form == ORU_NFKC) return true;
  return c - kSBase < kSCount || c - 0x3001 <= 0x3029 - 0x3001 || c - 0x3041 <= 0x3096 - 0x3041 ||
         c - 0x30A1 <= 0x30FA - 0x30A1;
}

// The length of the run of stable characters at s[i..n), and the start of
// its last character in *last.
size_t stable_run_utf8(const unsigned char* s, size_t n, size_t i, uint32_t limit, uint32_t form,
                       size_t* last) {
  const unsigned lead_limit = 0xC0 | (limit >> 6);  // first two-byte lead at or past limit
  size_t j = i;
  while (j < n) {
    const unsigned b = s[j];
    if (b < 0x80) {
      *last = j++;
      continue;
    }
    if (b >= 0xC2 && b < lead_limit && j + 1 < n && is_continuation(s[j + 1])) {
      const uint32_t c = (b & 0x1Fu) << 6 | (s[j + 1] & 0x3Fu);
      if (c < limit) {
        *last = j;
        j += 2;
        continue;
      }
    }
    if ((b & 0xF0) == 0xE0 && n - j >= 3 && utf8_sequence(s, n, j) == 3 &&
        stable_three_byte(s + j, form)) {
      *last = j;
      j += 3;
      continue;
    }
    break;
  }
  return j - i;
}

char* normalize_utf8(const char* src, size_t n, uint32_t form, uint32_t* outLen) {
  const unsigned char* s = bytes(src);
  const uint32_t limit = stable_limit(form);
  OutBuffer out;
  if (!out.reserve(n + 1 + n / 8)) return nullptr;
  std::vector<uint32_t> seg, norm;
  std::string enc;
  size_t i = 0;
  while (i < n) {
    size_t last = i;
    const size_t run = stable_run_utf8(s, n, i, limit, form, &last);
    if (i + run == n) {
      if (!out.append(src + i, run)) return nullptr;
      break;
    }
    // The last stable character may compose with what follows: it starts the
    // segment that is normalized the slow way, up to the next stable one.
    const size_t seg_start = run ? last : i;
    if (!out.append(src + i, seg_start - i)) return nullptr;
    size_t m = i + run, unused = 0;
    while (m < n && stable_run_utf8(s, n, m, limit, form, &unused) == 0) {
      const size_t len = utf8_sequence(s, n, m);
      m += len ? len : 1;
    }
    decode_utf8(src + seg_start, m - seg_start, seg);
    norm.clear();
    normalize_into(seg.data(), seg.size(), form, norm);
    enc.clear();
    append_utf8(enc, norm.data(), norm.size());
    if (!out.append(enc.data(), enc.size())) return nullptr;
    i = m;
  }
  return out.release(outLen);
}

}  // namespace

extern "C" {

ORU_API uint32_t oruUCS4Decompose(uint32_t c, int canonicalOnly, uint32_t* out, uint32_t capacity) {
  OneDecomposition d;
  decompose(c, canonicalOnly != 0, d);
  // A Hangul syllable is written whole or not at all; a table decomposition
  // as far as it fits.
  const bool hangul = c - kSBase < kSCount;
  if (out && !(hangul && d.size() > capacity)) {
    std::memcpy(out, d.data(), std::min<size_t>(d.size(), capacity) * sizeof(uint32_t));
  }
  return static_cast<uint32_t>(d.size());
}

ORU_API uint32_t oruUTF16Decompose(uint32_t c, int canonicalOnly, uint16_t* out,
                                   uint32_t capacity) {
  OneDecomposition d;
  decompose(c, canonicalOnly != 0, d);
  uint16_t* p = out;
  size_t total = 0;
  for (uint32_t cp : d) {
    const size_t len = cp < 0x10000 ? 1 : 2;
    if (out && total + len <= capacity) {
      if (len == 1) {
        p[0] = static_cast<uint16_t>(cp);
      } else {
        p[0] = static_cast<uint16_t>(0xD800 | ((cp - 0x10000) >> 10));
        p[1] = static_cast<uint16_t>(0xDC00 | (cp & 0x3FF));
      }
      p += len;
    }
    total += len;
  }
  return static_cast<uint32_t>(total);
}

ORU_API uint32_t oruUTF8Decompose(uint32_t c, int canonicalOnly, char* out, uint32_t capacity) {
  OneDecomposition d;
  decompose(c, canonicalOnly != 0, d);
  // Character by character: one encoded character fits in a std::string's
  // inline storage, so nothing is allocated.  Whole characters only: a
  // sequence that does not fit is not started, nor is any after it.
  size_t total = 0;
  size_t written = 0;
  bool room = out != nullptr;
  for (uint32_t cp : d) {
    std::string enc;
    append_utf8(enc, &cp, 1);
    if (room && written + enc.size() <= capacity) {
      std::memcpy(out + written, enc.data(), enc.size());
      written += enc.size();
    } else {
      room = false;
    }
    total += enc.size();
  }
  return static_cast<uint32_t>(total);
}

ORU_API void oruUCS4CanonicalOrdering(uint32_t* s, uint32_t n) {
  if (s) canonical_order(s, n);
}

ORU_API void oruUTF16CanonicalOrdering(uint16_t* s, uint32_t n) {
  if (!s || n < 2) return;
  // Unpaired surrogates keep their value (class 0, so they never move), and
  // reordering moves whole characters: the units fit back in place.  When
  // memory for the decoded copy runs out the text is left as it is.
  std::vector<uint32_t> d;
  try {
    decode_utf16_raw(s, n, d);
  } catch (const std::bad_alloc&) {
    return;
  }
  canonical_order(d.data(), d.size());
  uint16_t* p = s;
  for (uint32_t cp : d) {
    if (cp < 0x10000) {
      *p++ = static_cast<uint16_t>(cp);
    } else {
      *p++ = static_cast<uint16_t>(0xD800 | ((cp - 0x10000) >> 10));
      *p++ = static_cast<uint16_t>(0xDC00 | (cp & 0x3FF));
    }
  }
}

ORU_API void oruUTF8CanonicalOrdering(char* s, int32_t len) {
  if (!s) return;
  const unsigned char* b = bytes(s);
  const size_t n = utf8_length(s, len);
  // Each well-formed stretch is sorted on its own: an ill-formed byte stays
  // where it is and, like a starter, nothing moves across it.
  std::vector<uint32_t> d;
  std::string enc;
  size_t i = 0;
  // When memory for the work runs out, the stretches not yet reached are
  // left as they are (each stretch is written back whole or not at all).
  unless_out_of_memory<bool>([&] {
    while (i < n) {
      size_t j = i;
      while (j < n) {
        const size_t step = utf8_sequence(b, n, j);
        if (step == 0) break;
        j += step;
      }
      if (j - i > 2) {
        decode_utf8(s + i, j - i, d);
        canonical_order(d.data(), d.size());
        enc.clear();
        append_utf8(enc, d.data(), d.size());
        std::memcpy(s + i, enc.data(), j - i);
      }
      i = j + 1;
    }
    return true;
  });
}

ORU_API uint32_t* oruUCS4Normalize(const uint32_t* s, uint32_t len, uint32_t form,
                                   uint32_t* outLen) {
  if (outLen) *outLen = 0;
  if (!s || len == 0) return nullptr;
  return unless_out_of_memory<uint32_t*>([&] {
    std::vector<uint32_t> out;
    out.reserve(len + 4 + len / 4);
    normalize_into(s, len, form & 3, out);
    return copy_ucs4(out.data(), out.size(), outLen);
  });
}

ORU_API uint16_t* oruUTF16Normalize(const uint16_t* s, uint32_t len, uint32_t form,
                                    uint32_t* outLen) {
  if (outLen) *outLen = 0;
  if (!s || len == 0) return nullptr;
  return unless_out_of_memory<uint16_t*>([&] {
    std::vector<uint32_t> in, out;
    decode_utf16(s, len, in);
    out.reserve(in.size() + 4 + in.size() / 4);
    normalize_into(in.data(), in.size(), form & 3, out);
    return encode_utf16(out.data(), out.size(), outLen);
  });
}

ORU_API char* oruUTF8Normalize(const char* s, int32_t len, uint32_t form, uint32_t* outLen) {
  if (outLen) *outLen = 0;
  if (!s) return nullptr;
  return unless_out_of_memory<char*>(
      [&] { return normalize_utf8(s, utf8_length(s, len), form & 3, outLen); });
}

}  // extern "C"
