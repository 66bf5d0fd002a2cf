// oruConvertString: results against iconv and an independent model of the
// UTF-8 repair, allocation discipline, and the codec cache's replacement
// order (observed by counting iconv_open calls).

#include "oru/text.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <iconv.h>

#include <cstdlib>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace {
int iconvOpens = 0;
}

// Counts the library's descriptor openings, then opens as the C library does.
extern "C" __attribute__((visibility("default"))) iconv_t iconv_open(const char* to,
                                                                     const char* from) {
  using Fn = iconv_t (*)(const char*, const char*);
  static Fn real = reinterpret_cast<Fn>(dlsym(RTLD_NEXT, "iconv_open"));
  ++iconvOpens;
  return real(to, from);
}

namespace {

std::string raw_convert(const char* to, const char* from, const std::string& in) {
  iconv_t cd = iconv_open(to, from);
  EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1));
  std::string out(in.size() * 4 + 16, '\0');
  char* src = const_cast<char*>(in.data());
  char* dst = out.data();
  size_t srcLeft = in.size(), dstLeft = out.size();
  EXPECT_NE(iconv(cd, &src, &srcLeft, &dst, &dstLeft), static_cast<size_t>(-1));
  EXPECT_NE(iconv(cd, nullptr, nullptr, &dst, &dstLeft), static_cast<size_t>(-1));
  iconv_close(cd);
  out.resize(out.size() - dstLeft);
  return out;
}

// An allocator that counts its live blocks.
int liveBlocks = 0;
void* counting_realloc(void* p, size_t n) {
  if (n == 0) {
    if (p) --liveBlocks;
    std::free(p);
    return nullptr;
  }
  if (!p) ++liveBlocks;
  return std::realloc(p, n);
}

struct Result {
  oruResult code;
  std::string text;
  size_t consumed = 0;
  bool terminated = false;
};

Result convert(const std::string& in, const char* from, const char* to) {
  Result r;
  char* out = reinterpret_cast<char*>(&r);  // must be replaced
  size_t outLen = 99;
  r.code = oruConvertString(in.data(), in.size(), from, to, &r.consumed, &outLen, counting_realloc,
                            &out);
  if (r.code == ORU_OK) {
    r.text.assign(out, outLen);
    // Two terminating zero bytes after a conversion, one after a copy.
    bool copied = oruASCIIStrCaseCmp(from, to, -1) == 0;
    r.terminated = out[outLen] == 0 && (copied || out[outLen + 1] == 0);
    counting_realloc(out, 0);
  } else {
    EXPECT_EQ(out, nullptr);
  }
  EXPECT_EQ(liveBlocks, 0);
  return r;
}

TEST(ConvertString, Examples) {
  const struct {
    std::string in;
    const char* from;
    const char* to;
    oruResult code;
    std::string out;
  } cases[] = {
      {"abc", "UTF-8", "utf-8", ORU_OK, "abc"},
      {std::string("a\0b", 3), "latin1", "LATIN1", ORU_OK, std::string("a\0\0", 3)},
      {"\x41\xFF\x42", "UTF-8", "ISO-8859-1", ORU_OK, "\x41\x3F\x42"},
      {"\x41\xE2\x82", "UTF-8", "ISO-8859-1", ORU_OK, "\x41\x3F"},
      {"\xE2\x82\x41", "UTF-8", "ISO-8859-1", ORU_OK, "?A"},
      {"\x80\x80\x41\xC0\xAF", "UTF-8", "ISO-8859-1", ORU_OK, "?A?"},
      {"\xED\xA0\x80z", "UTF-8", "ISO-8859-1", ORU_OK, "?z"},
      // Not encodable in the target: one "?" as well.
      {"1\xE2\x82\xAC", "UTF-8", "ISO-8859-1", ORU_OK, "1?"},
      {"\xC3\xA4", "UTF-8", "IBM037", ORU_OK, "\x43"},
      {"\xFF", "UTF-8", "IBM037", ORU_OK, "\x6F"},  // "?" in EBCDIC
      {"A\xFF", "UTF-8", "UTF-16LE", ORU_OK, std::string("A\0?\0", 4)},
      {"\xE4", "latin1", "UTF-8", ORU_OK, "\xC3\xA4"},
      {"\xFF", "ISO-2022-JP", "UTF-8", ORU_E_ILLEGAL_SEQUENCE, ""},
      {"\x1B$B\x30", "ISO-2022-JP", "UTF-8", ORU_E_ILLEGAL_SEQUENCE, ""},
      {"\x80", "US-ASCII", "UTF-8", ORU_E_ILLEGAL_SEQUENCE, ""},
      {"\xE2\x82\xAC", "windows-1252", "latin1", ORU_E_ILLEGAL_SEQUENCE, ""},
      {"abc", "no-such-set", "UTF-8", ORU_E_INVALID_ARG, ""},
      {"abc", "SCSU", "UTF-8", ORU_E_NOT_SUPPORTED, ""},
      {"abc", "UTF-8", "ASMO_449", ORU_E_NOT_SUPPORTED, ""},
  };
  for (const auto& c : cases) {
    Result r = convert(c.in, c.from, c.to);
    EXPECT_EQ(r.code, c.code) << c.from << " -> " << c.to;
    EXPECT_EQ(r.text, c.out) << c.from << " -> " << c.to;
    if (r.code == ORU_OK) {
      EXPECT_TRUE(r.terminated);
      EXPECT_EQ(r.consumed, c.in.size());
    }
  }
}

TEST(ConvertString, ArgumentsAndDefaultAllocator) {
  char* out = nullptr;
  size_t consumed = 0, outLen = 0;
  // NUL-terminated input measured, oruRealloc/oruFree when no allocator.
  ASSERT_EQ(oruConvertString("h\xC3\xA9!", SIZE_MAX, "UTF-8", "UTF-16BE", &consumed, &outLen,
                             nullptr, &out),
            ORU_OK);
  EXPECT_EQ(consumed, 4u);
  EXPECT_EQ(std::string(out, outLen), std::string("\0h\0\xE9\0!", 6));
  oruFree(out);
  ASSERT_EQ(oruConvertString("", 0, "UTF-8", "UTF-16BE", nullptr, nullptr, nullptr, &out), ORU_OK);
  EXPECT_EQ(out[0], 0);
  oruFree(out);
  EXPECT_EQ(oruConvertString("x", 1, "UTF-8", "latin1", nullptr, nullptr, nullptr, nullptr),
            ORU_E_INVALID_ARG);
  EXPECT_EQ(oruConvertString("x", 1, nullptr, "latin1", nullptr, nullptr, nullptr, &out),
            ORU_E_INVALID_ARG);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(oruConvertString(nullptr, 1, "UTF-8", "latin1", nullptr, nullptr, nullptr, &out),
            ORU_E_INVALID_ARG);
}

// Equal names copy the input; the copy ends in two zero bytes like every
// converted result (a UTF-16 caller reads a 16-bit terminator).
TEST(ConvertString, CopyEndsInTwoZeroBytes) {
  static size_t asked;
  oruReallocFn recording = [](void* p, size_t n) -> void* {
    if (n == 0) {
      std::free(p);
      return nullptr;
    }
    asked = n;
    return std::realloc(p, n);
  };
  for (const std::string& text : {std::string(), std::string("ab"), std::string("a\0b", 3)}) {
    char* out = nullptr;
    size_t outLen = 0;
    asked = 0;
    ASSERT_EQ(oruConvertString(text.data(), text.size(), "UTF-16LE", "utf-16le", nullptr, &outLen,
                               recording, &out),
              ORU_OK);
    EXPECT_EQ(outLen, text.size());
    EXPECT_GE(asked, text.size() + 2) << text.size();
    // Up to an embedded NUL, then zero-filled to the end of the block.
    std::string expect = text.substr(0, text.find('\0'));
    expect.resize(asked, '\0');
    EXPECT_EQ(std::string(out, asked), expect);
    recording(out, 0);
  }
}

// The cached codecs start every conversion afresh: a byte-order mark read
// or written by one conversion does not change the next one.
TEST(ConvertString, ByteOrderMarksDoNotCarryOver) {
  auto convert = [](const std::string& in, const char* from, const char* to) {
    char* out = nullptr;
    size_t outLen = 0;
    EXPECT_EQ(oruConvertString(in.data(), in.size(), from, to, nullptr, &outLen, nullptr, &out),
              ORU_OK)
        << from << " " << to;
    std::string result = out != nullptr ? std::string(out, outLen) : std::string("(failed)");
    oruFree(out);
    return result;
  };
  for (const char* set : {"UTF-16", "UTF-32"}) {
    const bool wide = std::string(set) == "UTF-32";
    const std::string plain = wide ? std::string("A\0\0\0", 4) : std::string("A\0", 2);
    const std::string bigEndian =
        wide ? std::string("\0\0\xFE\xFF\0\0\0B", 8) : std::string("\xFE\xFF\0B", 4);
    const std::string first = convert(plain, set, "UTF-8");
    EXPECT_EQ(convert(bigEndian, set, "UTF-8"), "B") << set;
    EXPECT_EQ(convert(plain, set, "UTF-8"), first) << set;
    // Every output of the same input is the same, mark included.
    const std::string encoded = convert("xy", "UTF-8", set);
    EXPECT_EQ(convert("xy", "UTF-8", set), encoded) << set;
  }
}

// Outputs several times the input's size grow the buffer as needed.
TEST(ConvertString, GrowsToAnySize) {
  std::string latin(5000, '\xE9'), mixed;
  for (int i = 0; i < 700; ++i) mixed += "a\xE2\x82\xAC\xF0\x9F\x98\x80\xC3\xA9";
  const struct {
    std::string in;
    const char* from;
    const char* to;
  } cases[] = {
      {latin, "ISO-8859-1", "UTF-8"}, {latin, "ISO-8859-1", "UTF-32BE"}, {mixed, "UTF-8", "UTF-16"},
      {mixed, "UTF-8", "UCS-4LE"},    {mixed, "UTF-8", "GB18030"},       {mixed, "UTF-8", "UTF-7"},
  };
  for (const auto& c : cases) {
    Result r = convert(c.in, c.from, c.to);
    ASSERT_EQ(r.code, ORU_OK) << c.to;
    EXPECT_EQ(r.text, raw_convert(c.to, c.from, c.in)) << c.to;
    EXPECT_TRUE(r.terminated);
  }
}

// The repair rule, independently: a strict UTF-8 decoder that turns each bad
// lead byte and the continuation bytes after it into "?".
std::string repaired(const std::string& s) {
  std::string out;
  size_t i = 0;
  auto cont = [&](size_t j, unsigned lo, unsigned hi) {
    return j < s.size() && static_cast<unsigned char>(s[j]) >= lo &&
           static_cast<unsigned char>(s[j]) <= hi;
  };
  while (i < s.size()) {
    unsigned b = static_cast<unsigned char>(s[i]);
    size_t n = 0;
    if (b < 0x80)
      n = 1;
    else if (b >= 0xC2 && b <= 0xDF)
      n = cont(i + 1, 0x80, 0xBF) ? 2 : 0;
    else if (b >= 0xE0 && b <= 0xEF) {
      unsigned lo = b == 0xE0 ? 0xA0 : 0x80, hi = b == 0xED ? 0x9F : 0xBF;
      n = cont(i + 1, lo, hi) && cont(i + 2, 0x80, 0xBF) ? 3 : 0;
    } else if (b >= 0xF0 && b <= 0xF4) {
      unsigned lo = b == 0xF0 ? 0x90 : 0x80, hi = b == 0xF4 ? 0x8F : 0xBF;
      n = cont(i + 1, lo, hi) && cont(i + 2, 0x80, 0xBF) && cont(i + 3, 0x80, 0xBF) ? 4 : 0;
    }
    if (n > 0) {
      out += s.substr(i, n);
      i += n;
      continue;
    }
    out += '?';
    for (++i; i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80;) ++i;
  }
  return out;
}

TEST(ConvertString, RepairsMalformedUTF8LikeTheModel) {
  const unsigned char alphabet[] = {0x41, 0x80, 0xBF, 0xC2, 0xC3, 0xE0, 0xE2, 0xED, 0xEF,
                                    0xF0, 0xF4, 0xF5, 0xFF, 0xA0, 0x82, 0x9F, 0x90, 0x8F};
  unsigned seed = 12345;
  auto next = [&] { return (seed = seed * 1103515245u + 12345u) >> 16; };
  for (int round = 0; round < 400; ++round) {
    std::string in;
    for (unsigned n = next() % 10; n > 0; --n) in += static_cast<char>(alphabet[next() % 18]);
    Result r = convert(in, "UTF-8", "UTF-16LE");
    ASSERT_EQ(r.code, ORU_OK);
    EXPECT_EQ(r.text, raw_convert("UTF-16LE", "UTF-8", repaired(in))) << testing::PrintToString(in);
    EXPECT_EQ(r.consumed, in.size());
  }
}

// Seventeen and more pairs: the cache keeps the 16 most recently used, so a
// pair opens a descriptor exactly when a least-recently-used model says it
// is not cached.  An open that fails leaves the cache as it was.
TEST(ConvertString, CacheEvictsTheLeastRecentlyUsedPair) {
  const char* targets[] = {"ISO-8859-1",  "latin1",     "l1",         "IBM819",       "CP819",
                           "csISOLatin1", "ISO_8859-1", "iso-ir-100", "ISO-8859-2",   "latin2",
                           "l2",          "ISO-8859-3", "latin3",     "ISO-8859-4",   "latin4",
                           "ISO-8859-5",  "cyrillic",   "KOI8-R",     "windows-1252", "greek"};
  const int pairs = 20;
  std::list<int> model;  // most recent first
  bool known = false;    // once 16 of our pairs fill the cache, it is the model
  auto use = [&](int t) {
    int before = iconvOpens;
    Result r = convert("abc", "UTF-8", targets[t]);
    ASSERT_EQ(r.code, ORU_OK) << targets[t];
    ASSERT_EQ(r.text, "abc");
    bool cached = false;
    for (auto it = model.begin(); it != model.end(); ++it) {
      if (*it == t) {
        model.erase(it);
        cached = true;
        break;
      }
    }
    model.push_front(t);
    if (model.size() > 16) model.pop_back();
    if (known) {
      EXPECT_EQ(iconvOpens - before, cached ? 0 : 1) << "pair " << targets[t];
    }
  };
  for (int t = 0; t < 16; ++t) use(t);
  known = true;
  use(16);  // the seventeenth evicts the first
  int before = iconvOpens;
  use(0);
  EXPECT_EQ(iconvOpens - before, 1);
  before = iconvOpens;
  EXPECT_EQ(convert("abc", "UTF-8", "no-such-set").code, ORU_E_INVALID_ARG);
  EXPECT_EQ(convert("abc", "UTF-8", "ASMO_449").code, ORU_E_NOT_SUPPORTED);
  unsigned seed = 7;
  for (int i = 0; i < 300; ++i) {
    seed = seed * 1103515245u + 12345u;
    use(static_cast<int>((seed >> 16) % pairs));
  }
}

}  // namespace
