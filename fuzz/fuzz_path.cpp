// The pure path functions (absolute, directory and base names, join) on
// paths of random separators, dots, drive letters and names.  Checks the
// output-buffer rules: ORU_E_BUFFER_TOO_SMALL exactly when the result and
// its terminator do not fit, nothing written past the buffer, the same
// result for every buffer that fits, and the same result when the output
// buffer is one of the inputs where that is allowed.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "oru/core.h"
#include "oru/file.h"

namespace {

constexpr char kCanary = '\x5A';

// Builds a path from the input: mostly separators, dots, "X:", short
// names; sometimes raw bytes.
std::string make_path(FuzzedDataProvider& in) {
  static const char* const kPieces[] = {"/",   "\\", ".",        "..",   "a",   "bc",
                                        "C:",  "z:", "//",       "\\\\", "srv", "share",
                                        "...", " ",  "\xC3\xA9", "x.y"};
  std::string p;
  size_t n = in.ConsumeIntegralInRange<size_t>(0, 12);
  for (size_t i = 0; i < n && in.remaining_bytes() > 0; ++i) {
    uint8_t k = in.ConsumeIntegral<uint8_t>();
    if (k < 224) {
      p += kPieces[k % 16];
    } else {
      char c = static_cast<char>(in.ConsumeIntegral<uint8_t>());
      if (c != '\0') p += c;
    }
  }
  return p;
}

// Calls fn with an exactly sized heap buffer of every interesting size and
// checks the buffer rules; returns the full result (or the failure).
template <typename F>
oruResult check_sizes(F fn, std::string& result) {
  std::vector<char> big(8192, kCanary);
  oruResult rc = fn(big.data(), big.size());
  if (rc != ORU_OK) {
    FUZZ_CHECK(rc != ORU_E_BUFFER_TOO_SMALL);
    return rc;
  }
  result = big.data();
  FUZZ_CHECK(result.size() < big.size());
  const size_t need = result.size() + 1;
  for (size_t size : {size_t{1}, need - 1, need, need + 1}) {
    if (size == 0) continue;
    std::vector<char> buf(size + 1, kCanary);
    oruResult r = fn(buf.data(), size);
    FUZZ_CHECK(buf[size] == kCanary);  // nothing written past size
    if (size < need) {
      FUZZ_CHECK(r == ORU_E_BUFFER_TOO_SMALL);
    } else {
      FUZZ_CHECK(r == ORU_OK && result == buf.data());
    }
  }
  // Size 0 never succeeds and writes nothing.
  char none = kCanary;
  FUZZ_CHECK(fn(&none, 0) == ORU_E_BUFFER_TOO_SMALL || fn(&none, 0) == ORU_E_INVALID_ARG);
  FUZZ_CHECK(none == kCanary);
  return rc;
}

bool is_sep(char c) { return c == '/' || c == '\\'; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const std::string a = make_path(in);
  const std::string b = make_path(in);
  const char* pa = a.c_str();
  const char* pb = b.c_str();

  // Joining: base, a separator unless base is empty or ends in one, name.
  std::string joined;
  FUZZ_CHECK(check_sizes([&](char* o, size_t n) { return oruAppendToPath(pa, pb, o, n); },
                         joined) == ORU_OK);
  std::string expect = a;
  if (!a.empty() && !is_sep(a.back())) expect += '/';
  expect += b;
  FUZZ_CHECK(joined == expect);
  // The output may be the base buffer itself.
  {
    std::vector<char> buf(joined.size() + 1, kCanary);
    std::memcpy(buf.data(), pa, a.size() + 1);
    FUZZ_CHECK(oruAppendToPath(buf.data(), pb, buf.data(), buf.size()) == ORU_OK);
    FUZZ_CHECK(joined == buf.data());
    std::vector<char> nbuf(std::max(joined.size(), b.size()) + 1, kCanary);
    std::memcpy(nbuf.data(), pb, b.size() + 1);
    FUZZ_CHECK(oruAppendToPath(pa, nbuf.data(), nbuf.data(), nbuf.size()) == ORU_OK);
    FUZZ_CHECK(joined == nbuf.data());
  }

  // Base name: the text after the last separator.
  std::string base;
  FUZZ_CHECK(check_sizes([&](char* o, size_t n) { return oruGetBasename(pa, o, n); }, base) ==
             ORU_OK);
  size_t lastSep = a.find_last_of("/\\");
  FUZZ_CHECK(base == (lastSep == std::string::npos ? a : a.substr(lastSep + 1)));

  // Directory name: never empty, never longer than the path (or ".").
  std::string dir;
  oruResult rc = check_sizes([&](char* o, size_t n) { return oruGetDirname(pa, o, n); }, dir);
  FUZZ_CHECK(rc == ORU_OK);
  FUZZ_CHECK(dir.size() <= a.size() || dir == ".");
  FUZZ_CHECK(!dir.empty());
  // In place, for both functions.
  for (int which = 0; which < 2; ++which) {
    std::vector<char> buf(a.size() + 2, kCanary);
    std::memcpy(buf.data(), pa, a.size() + 1);
    rc = which == 0 ? oruGetBasename(buf.data(), buf.data(), buf.size())
                    : oruGetDirname(buf.data(), buf.data(), buf.size());
    FUZZ_CHECK(rc == ORU_OK && (which == 0 ? base : dir) == buf.data());
  }

  // Absolute path: absolute itself, and idempotent.
  std::string abs;
  rc = check_sizes([&](char* o, size_t n) { return oruGetAbsolutePath(pa, o, n); }, abs);
  if (rc == ORU_OK) {
    FUZZ_CHECK(oruIsAbsolutePath(abs.c_str()) == 1);
    if (oruIsAbsolutePath(pa)) FUZZ_CHECK(abs.size() <= a.size());
    std::string again;
    FUZZ_CHECK(check_sizes([&](char* o, size_t n) { return oruGetAbsolutePath(abs.c_str(), o, n); },
                           again) == ORU_OK);
    FUZZ_CHECK(again == abs);
  } else {
    FUZZ_CHECK(rc == ORU_E_INVALID_ARG);
  }
  FUZZ_CHECK(oruIsAbsolutePath(pa) == 0 || oruIsAbsolutePath(pa) == 1);

  // Null arguments.
  char out[8];
  FUZZ_CHECK(oruAppendToPath(nullptr, pb, out, sizeof out) == ORU_E_INVALID_ARG);
  FUZZ_CHECK(oruGetBasename(pa, nullptr, 8) == ORU_E_INVALID_ARG);
  FUZZ_CHECK(oruGetDirname(nullptr, out, sizeof out) == ORU_E_INVALID_ARG);
  return 0;
}
