// oruConvertString between UTF-8 and a rotating set of character sets, in
// both directions, against the streaming codec fed the same bytes in
// random chunks through random small output buffers: where both convert the
// whole input they must give the same bytes.  Also checks the terminator,
// the consumed count, that failures leave nothing allocated, and that the
// Unicode encodings round-trip valid UTF-8.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "oru/core.h"
#include "oru/text.h"
#include "oru/unicode.h"

namespace {

const char* const kSets[] = {"UTF-16LE",  "UTF-16BE",     "UTF-16",      "UTF-32",      "UTF-32LE",
                             "UTF-7",     "UCS-2",        "ISO-8859-1",  "ISO-8859-15", "US-ASCII",
                             "Shift_JIS", "EUC-JP",       "ISO-2022-JP", "GB18030",     "Big5",
                             "KOI8-R",    "windows-1252", "IBM037",      "UTF-8"};
constexpr size_t kSetCount = sizeof kSets / sizeof kSets[0];

// A reallocFn that counts live blocks, so that leaks on any path show.
long g_live = 0;
void* counting_realloc(void* p, size_t n) {
  if (n == 0) {
    if (p != nullptr) --g_live;
    std::free(p);
    return nullptr;
  }
  void* q = std::realloc(p, n);
  if (p == nullptr && q != nullptr) ++g_live;
  return q;
}

struct StringResult {
  oruResult rc;
  size_t consumed;
  std::string out;
};

StringResult convert_string(const std::string& in, const char* from, const char* to,
                            bool counting) {
  StringResult r{0, 0, {}};
  char* out = reinterpret_cast<char*>(1);
  size_t outLen = 0xDEAD;
  r.consumed = 0xDEAD;
  r.rc = oruConvertString(in.data(), in.size(), from, to, &r.consumed, &outLen,
                          counting ? counting_realloc : nullptr, &out);
  if (ORU_FAILED(r.rc)) {
    FUZZ_CHECK(out == nullptr);
    FUZZ_CHECK(g_live == 0);
    return r;
  }
  FUZZ_CHECK(out != nullptr && r.consumed <= in.size());
  FUZZ_CHECK(out[outLen] == '\0' && out[outLen + 1] == '\0');
  r.out.assign(out, outLen);
  if (counting) {
    counting_realloc(out, 0);
    FUZZ_CHECK(g_live == 0);
  } else {
    oruFree(out);
  }
  return r;
}

struct StreamResult {
  bool complete;  // every byte converted, shift state flushed
  std::string out;
};

// The codec path: chunks of the given sizes (an incomplete sequence at the
// end of a chunk stays for the next), output through buffers of outSize.
StreamResult convert_stream(const std::string& in, const char* from, const char* to,
                            const std::vector<size_t>& cuts, size_t outSize) {
  StreamResult r{false, {}};
  oruTextCodec codec = nullptr;
  oruResult rc = oruOpenTextCodec(from, to, &codec);
  FUZZ_CHECK(rc == ORU_OK && codec != nullptr);
  std::string pending;
  size_t at = 0, cut = 0;
  std::vector<char> buf(outSize);
  bool failed = false;
  while (!failed) {
    size_t take = cut < cuts.size() ? cuts[cut++] : in.size() - at;
    if (take > in.size() - at) take = in.size() - at;
    pending.append(in, at, take);
    at += take;
    const bool last = at == in.size();
    const char* ip = pending.data();
    size_t left = pending.size();
    for (;;) {
      char* op = buf.data();
      size_t room = buf.size();
      rc = oruConvertText2(codec, &ip, &left, &op, &room, last ? ORU_CONVERT_FLUSH : 0);
      FUZZ_CHECK(room <= buf.size() && left <= pending.size());
      r.out.append(buf.data(), op);
      if (rc == ORU_S_OUTPUT_FULL) {
        // A buffer too small for even one character grows.
        if (op == buf.data()) buf.resize(2 * buf.size());
        continue;
      }
      if (rc != ORU_OK) {
        FUZZ_CHECK(rc == ORU_E_ILLEGAL_SEQUENCE);
        failed = true;
      }
      break;
    }
    if (failed) break;
    pending.erase(0, pending.size() - left);
    if (last) {
      r.complete = pending.empty();
      break;
    }
  }
  FUZZ_CHECK(oruCloseTextCodec(codec) == ORU_OK);
  return r;
}

bool is_unicode_set(const char* name) {
  return std::strncmp(name, "UTF-", 4) == 0 || std::strcmp(name, "UCS-2") == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const char* set = kSets[in.ConsumeIntegralInRange<size_t>(0, kSetCount - 1)];
  const bool fromUTF8 = in.ConsumeBool();
  const bool counting = in.ConsumeBool();
  const size_t outSize = in.ConsumeIntegralInRange<size_t>(1, 64);
  std::vector<size_t> cuts(in.ConsumeIntegralInRange<size_t>(0, 8));
  for (size_t& c : cuts) c = in.ConsumeIntegralInRange<size_t>(0, 16);
  const std::string text = in.ConsumeRemainingBytesAsString();

  const char* from = fromUTF8 ? "UTF-8" : set;
  const char* to = fromUTF8 ? set : "UTF-8";
  StringResult whole = convert_string(text, from, to, counting);
  StreamResult stream = convert_stream(text, from, to, cuts, outSize);

  if (fromUTF8) {
    // Malformed and unconvertible input is repaired: UTF-8 always converts.
    FUZZ_CHECK(whole.rc == ORU_OK && whole.consumed == text.size());
  } else {
    FUZZ_CHECK(whole.rc == ORU_OK || whole.rc == ORU_E_ILLEGAL_SEQUENCE);
  }
  // Equal names copy up to an embedded NUL instead of converting.
  const bool copies = std::strcmp(from, to) == 0 && text.find('\0') != std::string::npos;
  if (copies) {
    FUZZ_CHECK(whole.rc == ORU_OK);
  } else if (stream.complete) {
    FUZZ_CHECK(whole.rc == ORU_OK && whole.consumed == text.size());
    FUZZ_CHECK(whole.out == stream.out);
  } else if (whole.rc == ORU_OK && whole.consumed == text.size() && !fromUTF8 &&
             std::strcmp(set, "UTF-8") != 0) {
    // From another set, the string path converts exactly what the codec does.
    FUZZ_CHECK(false);
  }

  // Valid UTF-8 goes through the Unicode encodings and back unchanged.
  if (fromUTF8 && is_unicode_set(set) && std::strcmp(set, "UCS-2") != 0 &&
      oruUTF8Validate(text.data(), static_cast<int32_t>(text.size()), nullptr) == 1 &&
      text.find('\0') == std::string::npos) {
    FUZZ_CHECK(stream.complete);
    StringResult back = convert_string(whole.out, set, "UTF-8", counting);
    FUZZ_CHECK(back.rc == ORU_OK && back.out == text);
  }
  return 0;
}
