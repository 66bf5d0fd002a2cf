// Every public operation that allocates, run with its 1st, 2nd, 3rd, ...
// allocation failing until it gets through without a failure.  Each failure
// must give the documented answer (ORU_E_OUT_OF_MEMORY, null, the msgid of
// a lookup), and must leave nothing behind: the same call with memory
// available then gives what it gives on a fresh state, and (under
// LeakSanitizer, the asan preset) nothing leaks.  Each operation runs twice:
// with only the Nth allocation failing, and with every allocation from the
// Nth on failing.  Every operation is its own test, so under CTest each one
// starts in a fresh process and its first call meets the library's one-time
// initialisation too.
#include "alloc_failure_injector.h"
#include "l10n/oru_catalog_writer.h"
#include "oru/oru.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using oru_test::AllocationFault;

// What one call gave: a result code (null and the like mapped to
// ORU_E_OUT_OF_MEMORY by the operation's own adapter) and, on success, its
// output written out as text, to compare the calls with.
struct Outcome {
  oruResult code = ORU_OK;
  std::string value;
};

struct Operation {
  const char* name;
  std::function<Outcome(AllocationFault&)> call;
  // A module whose own allocations are not failed: elfutils' libdw ends
  // the process ("libdw: Cannot allocate memory") or crashes when some of
  // them fail, which no caller can prevent.
  const char* spared = nullptr;
};

Outcome ok(std::string value) { return {ORU_OK, std::move(value)}; }
Outcome failed(oruResult code) { return {code, {}}; }
const Outcome kOutOfMemory{ORU_E_OUT_OF_MEMORY, {}};

// glibc's iconv_open reports a converter module it could not load, for
// lack of memory too, as "no such conversion" (EINVAL): the library can only
// pass that on as ORU_E_NOT_SUPPORTED.  Accepted only with a failure injected.
Outcome codec_failure(oruResult r, const AllocationFault& f) {
  return r == ORU_E_NOT_SUPPORTED && f.injected ? kOutOfMemory : failed(r);
}

std::string hex(const void* data, size_t size) {
  static const char digits[] = "0123456789abcdef";
  std::string out;
  for (size_t i = 0; i < size; ++i) {
    unsigned char b = static_cast<const unsigned char*>(data)[i];
    out += digits[b >> 4];
    out += digits[b & 15];
  }
  return out;
}

std::filesystem::path scratch() {
  static std::filesystem::path dir = [] {
    auto d = std::filesystem::temp_directory_path() /
             ("oru_alloc_" + std::to_string(static_cast<long>(::getpid())));
    std::filesystem::create_directories(d / "tree");
    for (const char* name : {"a", "bb", "ccc"}) std::ofstream(d / "tree" / name) << name;
    return d;
  }();
  return dir;
}

// A catalog <dir>/de.UTF-8/LC_MESSAGES/<domain>.mo with one translation.
void write_catalog(const std::filesystem::path& dir, const std::string& domain) {
  auto sub = dir / "de.UTF-8" / "LC_MESSAGES";
  std::filesystem::create_directories(sub);
  std::string image = oru_catalog_build({{"", "Content-Type: text/plain; charset=UTF-8\n"},
                                         {"Open",
                                          "\xC3\x96"
                                          "ffnen"}});
  std::ofstream(sub / (domain + ".mo"), std::ios::binary) << image;
}

// One call of op with allocation `target` failing (0: none), and then, if
// one failed, the same call again with memory available, checked against
// `reference` (the answer of a call that met no failure; empty while that
// is being found).  Runs in a child process, so that every call meets the
// state a first call meets: the library's one-time set-up included, which
// a failure must not leave half done either.  The child's exit status says
// what happened; its output goes to *value.
enum ChildResult { kGotThrough = 40, kFailedAndRecovered = 41, kCheckFailed = 42 };

ChildResult run_in_child(const Operation& op, size_t target, bool persistent,
                         const std::string& reference, std::string* value) {
  int channel[2];
  if (::pipe(channel) != 0) return kCheckFailed;
  std::fflush(nullptr);
  // ORU_ALLOC_FAILURE_AT=N runs the call with allocation N failing in this
  // process, for a debugger.
  const char* only = std::getenv("ORU_ALLOC_FAILURE_AT");
  if (only != nullptr) target = std::strtoul(only, nullptr, 10);
  pid_t child = only != nullptr ? 0 : ::fork();
  if (child == 0) {
    ::close(channel[0]);
    AllocationFault fault{target, persistent, op.spared};
    Outcome first;
    try {
      first = op.call(fault);
    } catch (...) {
      // An exception out of the C interface; the child must not go on
      // running the parent's remaining tests.
      std::fprintf(stderr, "%s: allocation %zu failing: an exception escaped\n", op.name, target);
      std::fflush(nullptr);
      std::_Exit(kCheckFailed);
    }
    std::string answer = first.value;
    ChildResult result = kGotThrough;
    const std::string when = std::string(op.name) + ": allocation " + std::to_string(target) +
                             (persistent ? " and on" : "") + " failing";
    if (!fault.injected) {
      EXPECT_EQ(first.code, ORU_OK) << op.name << ": with memory to spare";
    } else {
      result = kFailedAndRecovered;
      if (first.code == ORU_OK) {
        // Got through without the allocation: must be the same answer.
        EXPECT_EQ(first.value, reference) << when << ": a fallback answers differently";
      } else {
        EXPECT_EQ(first.code, ORU_E_OUT_OF_MEMORY) << when;
      }
      // The same call again with memory available: a failure must not
      // have left half a change behind.
      AllocationFault none{};
      Outcome again = op.call(none);
      EXPECT_EQ(again.code, ORU_OK) << when << ", then a retry";
      EXPECT_EQ(again.value, reference) << when << ", then a retry";
      answer = again.value;
    }
    if (::testing::Test::HasFailure()) result = kCheckFailed;
    if (::write(channel[1], answer.data(), answer.size()) < 0) result = kCheckFailed;
    ::close(channel[1]);
    std::fflush(nullptr);
    // exit, not _exit: LeakSanitizer checks the child at its exit.
    std::exit(result);
  }
  ::close(channel[1]);
  value->clear();
  char buffer[4096];
  ssize_t got;
  while ((got = ::read(channel[0], buffer, sizeof buffer)) > 0)
    value->append(buffer, static_cast<size_t>(got));
  ::close(channel[0]);
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) return kCheckFailed;
  if (!WIFEXITED(status)) {
    ADD_FAILURE() << op.name << ": the child died of signal " << WTERMSIG(status);
    return kCheckFailed;
  }
  int code = WEXITSTATUS(status);
  return code == kGotThrough || code == kFailedAndRecovered ? static_cast<ChildResult>(code)
                                                            : kCheckFailed;
}

// Runs op with allocation N failing for N = 1, 2, ... until a call sees no
// failure; returns how many allocations that call made.
size_t exhaust(const Operation& op, bool persistent) {
  std::string reference;
  if (run_in_child(op, 0, false, "", &reference) != kGotThrough) {
    ADD_FAILURE() << op.name << ": fails with memory to spare";
    return 0;
  }
  for (size_t n = 1; n < 10000; ++n) {
    std::string value;
    ChildResult r = run_in_child(op, n, persistent, reference, &value);
    if (r == kCheckFailed) {
      ADD_FAILURE() << op.name << ": allocation " << n << (persistent ? " and on" : "")
                    << " failing: see above";
      return 0;
    }
    if (r == kGotThrough) return n - 1;
  }
  ADD_FAILURE() << op.name << ": never got through";
  return 0;
}

// ---- Adapters: one call of the interface, its output as text ----

template <class T>
Outcome owned_array(T* data, size_t bytes) {
  if (data == nullptr) return kOutOfMemory;
  Outcome out = ok(hex(data, bytes));
  oruFree(data);
  return out;
}

template <class Fn>
Operation case_or_norm_ucs4(const char* name, Fn fn) {
  return {name, [fn](AllocationFault& f) {
            static const uint32_t text[] = {'A', 0xC5, 0x1E9E, 0x130, 0x301, 'b', 0x10400};
            uint32_t len = 0;
            uint32_t* r = f.run([&] { return fn(text, 7, &len); });
            return owned_array(r, len * sizeof(uint32_t));
          }};
}

template <class Fn>
Operation case_or_norm_utf16(const char* name, Fn fn) {
  return {name, [fn](AllocationFault& f) {
            static const uint16_t text[] = {'A', 0xC5, 0x1E9E, 0x130, 0x301, 'b', 0xD801, 0xDC00};
            uint32_t len = 0;
            uint16_t* r = f.run([&] { return fn(text, 8, &len); });
            return owned_array(r, len * sizeof(uint16_t));
          }};
}

template <class Fn>
Operation case_or_norm_utf8(const char* name, Fn fn) {
  return {name, [fn](AllocationFault& f) {
            const char* text =
                "A\xC3\x85\xE1\xBA\x9E\xC4\xB0\xCC\x81"
                "b\xF0\x90\x90\x80\xFF";
            uint32_t len = 0;
            char* r = f.run([&] { return fn(text, -1, &len); });
            return owned_array(r, len + 1);
          }};
}

Operation convert_to(const char* name, const char* to) {
  return {name, [to](AllocationFault& f) {
            const char* text = "caf\xC3\xA9 \xE2\x82\xAC";
            char* out = nullptr;
            size_t consumed = 0, length = 0;
            oruResult r = f.run([&] {
              return oruConvertString(text, SIZE_MAX, "UTF-8", to, &consumed, &length, nullptr,
                                      &out);
            });
            if (r != ORU_OK) {
              EXPECT_EQ(out, nullptr);
              return codec_failure(r, f);
            }
            // One terminator: a copy between equal names has only one.
            Outcome o = ok(std::to_string(consumed) + ":" + hex(out, length + 1));
            oruFree(out);
            return o;
          }};
}

using AppConversion = oruResult (*)(const void*, size_t, size_t*, size_t*, oruReallocFn, char**);

Operation app_conversion(const char* name, AppConversion fn) {
  return {name, [fn](AllocationFault& f) {
            char* out = nullptr;
            size_t consumed = 0, length = 0;
            oruResult r =
                f.run([&] { return fn("plain text", 10, &consumed, &length, nullptr, &out); });
            if (r != ORU_OK) return failed(r);
            Outcome o = ok(std::to_string(consumed) + ":" + std::string(out, length));
            oruFree(out);
            return o;
          }};
}

Operation system_name(const char* name, oruResult (*fn)(char*, size_t)) {
  return {name, [fn](AllocationFault& f) {
            char buffer[256];
            oruResult r = f.run([&] { return fn(buffer, sizeof buffer); });
            return r == ORU_OK ? ok(buffer) : failed(r);
          }};
}

// The system loader reports a lack of memory only in its text (glibc:
// "out of memory", "cannot allocate memory", "cannot create shared object
// descriptor"): the library passes it on as a
// loader failure, with the text, or "" when it had no memory to keep it.
Outcome loader_failure(oruResult r, const AllocationFault& f) {
  std::string text = oruDsoGetErrorText();
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const bool saysSo = text.empty() || text.find("out of memory") != std::string::npos ||
                      text.find("cannot allocate memory") != std::string::npos ||
                      text.find("cannot create shared object descriptor") != std::string::npos;
  return r == ORU_E_DSO_LOAD && f.injected && saysSo ? kOutOfMemory : failed(r);
}

// The file of the library itself, found with memory to spare.
std::string path_of_library() {
  oruSymbolInfo* info = nullptr;
  if (oruSymbolizeAddress(reinterpret_cast<const void*>(&oruStrDup), &info) != ORU_OK) return "";
  std::string path = info->modulePath;
  oruFree(info);
  return path;
}

unsigned thread_routine(void* arg) {
  return static_cast<unsigned>(reinterpret_cast<uintptr_t>(arg));
}

std::atomic<int> g_onceCalls{0};
void count_once() { ++g_onceCalls; }

int g_sample_function_marker = 0;
void sample_function() { ++g_sample_function_marker; }

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = {
      // ---- core ----
      {"StrDup",
       [](AllocationFault& f) {
         char* copy = f.run([] { return oruStrDup("a copy"); });
         if (copy == nullptr) return kOutOfMemory;
         Outcome o = ok(copy);
         oruFree(copy);
         return o;
       }},
      {"StrError",
       [](AllocationFault& f) {
         // A code with no fixed text: formatted into per-thread storage.
         const char* text = f.run([] { return oruStrError(static_cast<oruResult>(0x12345)); });
         return text != nullptr ? ok(text) : kOutOfMemory;
       }},

      // ---- text ----
      {"OpenTextCodec",
       [](AllocationFault& f) {
         oruTextCodec codec = nullptr;
         oruResult r = f.run([&] { return oruOpenTextCodec("UTF-8", "UTF-16BE", &codec); });
         if (r != ORU_OK) {
           EXPECT_EQ(codec, nullptr);
           return codec_failure(r, f);
         }
         const char* in = "\xC3\xA9";
         size_t inLeft = 2;
         char buffer[8];
         char* outp = buffer;
         size_t room = sizeof buffer;
         r = oruConvertText(codec, &in, &inLeft, &outp, &room);
         oruCloseTextCodec(codec);
         if (r != ORU_OK) return failed(r);
         return ok(hex(buffer, static_cast<size_t>(outp - buffer)));
       }},
      convert_to("ConvertString(UTF-8 to UTF-16LE)", "UTF-16LE"),
      convert_to("ConvertString(UTF-8 to windows-1252)", "windows-1252"),
      convert_to("ConvertString(same names)", "utf-8"),
      app_conversion("AppToSystemCS", oruAppToSystemCS),
      app_conversion("SystemToAppCS", oruSystemToAppCS),
      app_conversion("AppCSToUTF8", oruAppCSToUTF8),
      app_conversion("LocaleToUTF8", oruLocaleToUTF8),
      app_conversion("UTF8ToAppCS", oruUTF8ToAppCS),
      app_conversion("UTF8ToLocale", oruUTF8ToLocale),

      // ---- Unicode case mapping and normalization ----
      case_or_norm_ucs4("UCS4ToLower", oruUCS4ToLower),
      case_or_norm_ucs4("UCS4ToUpper", oruUCS4ToUpper),
      case_or_norm_ucs4("UCS4Casefold", oruUCS4Casefold),
      case_or_norm_utf16("UTF16ToLower", oruUTF16ToLower),
      case_or_norm_utf16("UTF16ToUpper", oruUTF16ToUpper),
      case_or_norm_utf16("UTF16Casefold", oruUTF16Casefold),
      case_or_norm_utf8("UTF8ToLower", oruUTF8ToLower),
      case_or_norm_utf8("UTF8ToUpper", oruUTF8ToUpper),
      case_or_norm_utf8("UTF8Casefold", oruUTF8Casefold),
      case_or_norm_ucs4("UCS4Normalize(NFKC)",
                        [](const uint32_t* s, uint32_t n, uint32_t* len) {
                          return oruUCS4Normalize(s, n, ORU_NFKC, len);
                        }),
      case_or_norm_utf16("UTF16Normalize(NFD)",
                         [](const uint16_t* s, uint32_t n, uint32_t* len) {
                           return oruUTF16Normalize(s, n, ORU_NFD, len);
                         }),
      case_or_norm_utf8("UTF8Normalize(NFC)",
                        [](const char* s, int32_t n, uint32_t* len) {
                          return oruUTF8Normalize(s, n, ORU_NFC, len);
                        }),
      {"Decompose (three encodings)",
       [](AllocationFault& f) {
         uint32_t u32[20];
         uint16_t u16[40];
         char u8[80];
         uint32_t n32 = f.run([&] { return oruUCS4Decompose(0xFDFA, 0, u32, 20); });
         uint32_t n16 = f.run([&] { return oruUTF16Decompose(0x1E0A, 1, u16, 40); });
         uint32_t n8 = f.run([&] { return oruUTF8Decompose(0xAC01, 1, u8, 80); });
         return ok(hex(u32, n32 * 4) + hex(u16, n16 * 2) + hex(u8, n8));
       }},
      {"CanonicalOrdering (three encodings)",
       [](AllocationFault& f) {
         // No result to fail with: out of memory, the text stays as it was.
         const uint32_t marks[] = {'a', 0x301, 0x316, 0x300, 0x323};
         uint32_t u32[5];
         uint16_t u16[5];
         std::copy(marks, marks + 5, u32);
         std::copy(marks, marks + 5, u16);
         char u8[] = "a\xCC\x81\xCC\x96\xCC\x80\xCC\xA3";
         const std::string before = hex(u16, sizeof u16) + hex(u8, sizeof u8);
         f.run([&] { oruUCS4CanonicalOrdering(u32, 5); });
         const bool injectedBefore = f.injected;
         f.run([&] { oruUTF16CanonicalOrdering(u16, 5); });
         std::string after16 = hex(u16, sizeof u16);
         const bool injected16 = f.injected && !injectedBefore;
         f.run([&] { oruUTF8CanonicalOrdering(u8, -1); });
         const bool injected8 = f.injected && !injected16 && !injectedBefore;
         if (injected16) {
           EXPECT_EQ(after16, before.substr(0, after16.size()));
         }
         if (injected8) {
           EXPECT_EQ(hex(u8, sizeof u8), before.substr(after16.size()));
         }
         if (f.injected) return kOutOfMemory;
         return ok(hex(u32, sizeof u32) + after16 + hex(u8, sizeof u8));
       }},
      // ---- files ----
      {"OpenDir/ReadDir",
       [](AllocationFault& f) {
         std::string path = (scratch() / "tree").string();
         oruDir dir = nullptr;
         oruResult r = f.run([&] { return oruOpenDir(path.c_str(), &dir); });
         if (r != ORU_OK) return failed(r);
         std::vector<std::string> names;
         char name[256];
         while ((r = f.run([&] { return oruReadDir(dir, name, sizeof name); })) == ORU_OK)
           names.emplace_back(name);
         oruCloseDir(dir);
         if (r != 1) return failed(r);
         std::sort(names.begin(), names.end());
         std::string all;
         for (const std::string& n : names) all += n + "/";
         return ok(all);
       }},
      {"GetAbsolutePath",
       [](AllocationFault& f) {
         char out[4096];
         oruResult r = f.run([&] { return oruGetAbsolutePath("x/../y", out, sizeof out); });
         return r == ORU_OK ? ok(out) : failed(r);
       }},
      {"GetCanonicalPath",
       [](AllocationFault& f) {
         std::string path = (scratch() / "tree" / "." / "bb").string();
         char out[4096];
         oruResult r = f.run([&] { return oruGetCanonicalPath(path.c_str(), out, sizeof out); });
         return r == ORU_OK ? ok(out) : failed(r);
       }},
      {"AppendToPath and GetDirname, output inside the input",
       [](AllocationFault& f) {
         // An output that starts inside the input makes them copy it aside.
         char join[64] = "xxbase";
         oruResult r = f.run([&] { return oruAppendToPath(join + 2, "name", join, sizeof join); });
         if (r != ORU_OK) return failed(r);
         char dir[64] = "/one/two/three";
         r = f.run([&] { return oruGetDirname(dir + 1, dir + 2, sizeof dir - 2); });
         if (r != ORU_OK) return failed(r);
         return ok(std::string(join) + "|" + (dir + 2));
       }},
      {"GetCurrentDirectory",
       [](AllocationFault& f) {
         char out[4096];
         oruResult r = f.run([&] { return oruGetCurrentDirectory(out, sizeof out); });
         return r == ORU_OK ? ok(out) : failed(r);
       }},
      {"GetFileInfo",
       [](AllocationFault& f) {
         oruFileInfo info{};
         info.mask = ORU_FINFO_BASIC | ORU_FINFO_BLKSIZE;
         std::string path = (scratch() / "tree" / "ccc").string();
         oruResult r = f.run([&] { return oruGetFileInfo(path.c_str(), &info); });
         return r == ORU_OK ? ok(std::to_string(info.size)) : failed(r);
       }},
      {"GetTempFileName and GetTempDirName",
       [](AllocationFault& f) {
         std::string dir = scratch().string();
         char file[4096], sub[4096];
         oruResult r =
             f.run([&] { return oruGetTempFileName(dir.c_str(), "f", ".t", file, sizeof file); });
         if (r != ORU_OK) return failed(r);
         std::filesystem::remove(file);
         r = f.run([&] { return oruGetTempDirName(nullptr, "d", "", sub, sizeof sub); });
         if (r != ORU_OK) return failed(r);
         std::filesystem::remove(sub);
         return ok("made");
       }},

      // ---- locale parameters and names ----
      {"GetLocaleParam (every parameter)",
       [](AllocationFault& f) {
         std::string all;
         for (uint32_t id = 0; id <= 6; ++id) {
           for (uint32_t flags : {0u, static_cast<uint32_t>(ORU_LP_FROM_SYSTEM)}) {
             char buffer[128];
             oruResult r =
                 f.run([&] { return oruGetLocaleParam(id, flags, buffer, sizeof buffer); });
             if (r != ORU_OK) return failed(r);
             all += std::string(buffer) + ";";
           }
         }
         return ok(all);
       }},
      {"SetLocaleParam",
       [](AllocationFault& f) {
         // A copy that cannot be made leaves the parameter unset (ORU_OK).
         oruSetLocaleParam(ORU_LP_FALLBACK_LANGUAGE, "fr");
         oruResult r = f.run([] { return oruSetLocaleParam(ORU_LP_FALLBACK_LANGUAGE, "de"); });
         char buffer[16] = "?";
         EXPECT_EQ(oruGetLocaleParam(ORU_LP_FALLBACK_LANGUAGE, 0, buffer, sizeof buffer), ORU_OK);
         if (r != ORU_OK) return failed(r);
         if (f.injected) {
           EXPECT_STREQ(buffer, "");
           return kOutOfMemory;
         }
         return ok(buffer);
       }},
      {"NativeToStdLocale",
       [](AllocationFault& f) {
         char out[64];
         oruResult r = f.run(
             [&] { return oruNativeToStdLocale("German_Switzerland.1252", out, sizeof out); });
         return r == ORU_OK ? ok(out) : failed(r);
       }},
      {"GetISO3166Countries",
       [](AllocationFault& f) {
         const char** list = f.run([] { return oruGetISO3166Countries(); });
         if (list == nullptr) return kOutOfMemory;
         size_t n = 0;
         while (list[n] != nullptr) ++n;
         Outcome o = ok(std::to_string(n) + list[0]);
         oruFree(list);
         return o;
       }},
      {"GetISO3166Subdivisions",
       [](AllocationFault& f) {
         const char** list = f.run([] { return oruGetISO3166Subdivisions("CH"); });
         if (list == nullptr) return kOutOfMemory;
         size_t n = 0;
         while (list[n] != nullptr) ++n;
         Outcome o = ok(std::to_string(n) + list[0]);
         oruFree(list);
         return o;
       }},
      {"CLDR display names",
       [](AllocationFault& f) {
         std::string all;
         for (auto fn : {oruCLDRGetLanguageDisplayName, oruCLDRGetTerritoryDisplayName,
                         oruCLDRGetCurrencyDisplayName, oruCLDRGetCurrencySymbol}) {
           const char* s = f.run([&] { return fn("de", "fr_CH"); });
           all += s != nullptr ? s : "(null)";
         }
         return ok(all);
       }},

      // ---- message catalogs ----
      {"BindTextDomain",
       [](AllocationFault& f) {
         static int serial = 0;
         std::string domain = "bind" + std::to_string(++serial);
         const char* bound = f.run([&] { return oruBindTextDomain(domain.c_str(), "/some/dir"); });
         const char* now = oruBindTextDomain(domain.c_str(), nullptr);
         if (bound == nullptr) {
           EXPECT_EQ(now, nullptr) << "a failed binding is bound";
           return kOutOfMemory;
         }
         EXPECT_EQ(now, bound);
         // Rebinding replaces the directory.
         const char* again = f.run([&] { return oruBindTextDomain(domain.c_str(), "/other"); });
         if (again == nullptr) {
           EXPECT_STREQ(oruBindTextDomain(domain.c_str(), nullptr), "/some/dir");
           return kOutOfMemory;
         }
         return ok(std::string(bound == now ? "same" : "differs") + again);
       }},
      {"TextDomain",
       [](AllocationFault& f) {
         oruTextDomain("");
         const char* current = f.run([] { return oruTextDomain("mine"); });
         std::string value = current;
         oruTextDomain("");
         // Out of memory leaves the current domain as it was.
         return value == "mine" ? ok(value) : value == "messages" ? kOutOfMemory : ok("?" + value);
       }},
      {"DGetTextLC (loads a catalog)",
       [](AllocationFault& f) {
         // A new domain every time: the first lookup of a catalog loads it.
         static int serial = 0;
         std::string domain = "look" + std::to_string(++serial);
         auto dir = scratch() / "catalogs";
         write_catalog(dir, domain);
         oruSetLocaleParam(ORU_LP_APP_CHARSET, "UTF-8");
         if (oruBindTextDomain(domain.c_str(), dir.string().c_str()) == nullptr)
           return kOutOfMemory;
         const char* msgid = "Open";
         const char* text = f.run([&] { return oruDGetTextLC(domain.c_str(), "de", msgid); });
         if (text == msgid) {
           // The msgid, and the next lookup (memory available) finds the catalog.
           const char* later = oruDGetTextLC(domain.c_str(), "de", msgid);
           EXPECT_NE(later, msgid) << "a failed load was remembered as no catalog";
           return kOutOfMemory;
         }
         return ok(text);
       }},

      // ---- system ----
      system_name("GetHostname", oruGetHostname),
      system_name("GetDomainname", oruGetDomainname),
      system_name("GetArchitecture", oruGetArchitecture),
      system_name("GetSystemName", oruGetSystemName),
      {"GetProgramName and GetProgramPath",
       [](AllocationFault& f) {
         const char* name = f.run([] { return oruGetProgramName(); });
         const char* path = f.run([] { return oruGetProgramPath(); });
         // Out of memory: "<unknown>" (not kept) and null.
         if (name == nullptr || path == nullptr || std::strcmp(name, "<unknown>") == 0)
           return kOutOfMemory;
         return ok(std::string(name) + "|" + path);
       }},
      {"GetModuleList",
       [](AllocationFault& f) {
         oruModuleInfo* modules = nullptr;
         size_t count = 0;
         oruResult r = f.run([&] { return oruGetModuleList(&modules, &count); });
         if (r != ORU_OK) return failed(r);
         Outcome o = ok(std::string(modules[0].path) + ":" + std::to_string(count));
         oruFree(modules);
         return o;
       }},
      {"SymbolizeAddress",
       [](AllocationFault& f) {
         oruSymbolInfo* info = nullptr;
         const void* address = reinterpret_cast<const void*>(&sample_function);
         oruResult r = f.run([&] { return oruSymbolizeAddress(address, &info); });
         if (r != ORU_OK) return failed(r);
         if (f.injected && info->symbolName == nullptr) {
           // libdwfl tells a lack of memory from an unreadable module no
           // better than "cannot read": the answer lacks the symbol, and
           // the next call reads the module again.
           oruFree(info);
           return kOutOfMemory;
         }
         Outcome o = ok(std::string(info->modulePath) + ":" +
                        (info->symbolName != nullptr ? info->symbolName : "(none)"));
         oruFree(info);
         return o;
       },
       "/libdw"},
      {"GetFileVersionString and GetFileVersionNumbers",
       [](AllocationFault& f) {
         const std::string library = path_of_library();
         std::string all;
         for (int attribute = ORU_VERSION_FILE_VERSION; attribute <= ORU_VERSION_ORIGINAL_FILENAME;
              ++attribute) {
           char buffer[512];
           oruResult r = f.run([&] {
             return oruGetFileVersionString(library.c_str(), attribute, buffer, sizeof buffer);
           });
           if (r == ORU_OK) {
             all += std::string(buffer) + ";";
           } else if (r == ORU_E_OUT_OF_MEMORY) {
             return failed(r);
           } else {
             all += std::to_string(r) + ";";
           }
         }
         oruVersionNumbers numbers{};
         oruResult r = f.run([&] { return oruGetFileVersionNumbers(library.c_str(), &numbers); });
         if (r == ORU_E_OUT_OF_MEMORY) return failed(r);
         return ok(all + std::to_string(r));
       }},
      {"CaptureBacktrace",
       [](AllocationFault& f) {
         void* frames[64];
         size_t count = 0;
         oruResult r = f.run([&] { return oruCaptureBacktrace(0, frames, 64, &count); });
         if (r != ORU_OK) return failed(r);
         return ok(count > 2 ? "frames" : "few");
       }},
      // An object the process has not loaded yet: unloading it gives back
      // all the loader took for it.
      {"DsoLoad/GetSymbol/GetPath",
       [](AllocationFault& f) {
         oruDso dso = nullptr;
         oruResult r = f.run([&] { return oruDsoLoad("libcrypt.so.1", &dso); });
         if (r != ORU_OK) return loader_failure(r, f);
         void* address = nullptr;
         char path[4096];
         r = f.run([&] { return oruDsoGetSymbol(dso, "crypt", &address); });
         if (r == ORU_OK) r = f.run([&] { return oruDsoGetPath(dso, path, sizeof path); });
         EXPECT_EQ(oruDsoUnload(dso), ORU_OK);
         if (r != ORU_OK) return failed(r);
         return ok(std::filesystem::path(path).filename().string());
       }},
      {"DsoGetErrorText",
       [](AllocationFault& f) {
         oruDso dso = nullptr;
         oruResult r = f.run([&] { return oruDsoLoad("/no/such/library.so", &dso); });
         const char* text = f.run([] { return oruDsoGetErrorText(); });
         // Out of memory the loader's text may be its own shorter one, or
         // "" when the library could not keep it; the result stays.
         if (f.injected && r == ORU_E_DSO_LOAD) return kOutOfMemory;
         if (text == nullptr) return kOutOfMemory;
         return ok(std::to_string(r) +
                   (std::strstr(text, "library.so") != nullptr ? "named" : text));
       }},

      // ---- threads ----
      {"MutexInit",
       [](AllocationFault& f) {
         oruMutex m = nullptr;
         oruResult r = f.run([&] { return oruMutexInit(&m); });
         if (r != ORU_OK) return failed(r);
         EXPECT_EQ(oruMutexLock(&m), ORU_OK);
         EXPECT_EQ(oruMutexUnlock(&m), ORU_OK);
         oruMutexDestroy(&m);
         return ok("");
       }},
      {"CondVarInit",
       [](AllocationFault& f) {
         oruCondVar c = nullptr;
         oruResult r = f.run([&] { return oruCondVarInit(&c); });
         if (r != ORU_OK) return failed(r);
         EXPECT_EQ(oruCondVarSignal(&c), ORU_OK);
         oruCondVarDestroy(&c);
         return ok("");
       }},
      {"InitOnce",
       [](AllocationFault& f) {
         oruOnce once = ORU_ONCE_INIT;
         int before = g_onceCalls;
         oruResult r = f.run([&] { return oruInitOnce(&once, count_once); });
         int calls = g_onceCalls - before;
         if (r != ORU_OK) {
           EXPECT_EQ(calls, 0);
           return failed(r);
         }
         // The slot's control block stays with it for good; this test lets it go.
         oruFree(once);
         return ok(std::to_string(calls));
       }},
      {"ThreadCreate/Join",
       [](AllocationFault& f) {
         oruThread t = nullptr;
         oruResult r = f.run(
             [&] { return oruThreadCreate(&t, 0, 0, thread_routine, reinterpret_cast<void*>(7)); });
         // pthread_create's answer for too little memory is EAGAIN.
         if (r == ORU_E_AGAIN) return kOutOfMemory;
         if (r != ORU_OK) return failed(r);
         unsigned status = 0;
         EXPECT_EQ(oruThreadJoin(t, &status), ORU_OK);
         return ok(std::to_string(status));
       }},
      {"ThreadSelf on a thread the library did not start",
       [](AllocationFault& f) {
         Outcome out;
         std::thread([&] {
           AllocationFault inner{f.target, f.persistent};
           oruThread self = inner.run([] { return oruThreadSelf(); });
           out = self != nullptr ? ok("known") : kOutOfMemory;
           f.injected = inner.injected;
           f.seen = inner.seen;
         }).join();
         return out;
       }},
      {"TlsKeyCreate/TlsSet",
       [](AllocationFault& f) {
         // Enough keys to make the key table and the thread's value array grow.
         std::vector<oruTlsKey> keys;
         oruResult r = ORU_OK;
         for (int i = 0; i < 40 && r == ORU_OK; ++i) {
           oruTlsKey key{};
           r = f.run([&] { return oruTlsKeyCreate(&key, nullptr); });
           if (r == ORU_OK) {
             keys.push_back(key);
             r = f.run([&] { return oruTlsSet(key, &keys); });
             if (r == ORU_OK && oruTlsGet(key) != &keys) r = ORU_E_UNEXPECTED;
           }
         }
         for (oruTlsKey key : keys) {
           oruTlsSet(key, nullptr);
           oruTlsKeyDelete(key);
         }
         return r == ORU_OK ? ok(std::to_string(keys.size())) : failed(r);
       }},
  };
  return table;
}

class AllocationFailure : public ::testing::TestWithParam<size_t> {};

// What the children inherit instead of meeting it under a failing
// allocation: set-up that is no part of the operations under test.
void prepare_parent() {
  scratch();
  // The thread module sets itself up on first use and ends the process
  // with a fatal error if it cannot; the same for its reaper thread.
  oruThread t = nullptr;
  ASSERT_EQ(oruThreadCreate(&t, 0, 0, thread_routine, nullptr), ORU_OK);
  ASSERT_EQ(oruThreadJoin(t, nullptr), ORU_OK);
  // glibc's account lookup crashes when its own first set-up cannot allocate.
  char buffer[4096];
  struct passwd entry;
  struct passwd* found = nullptr;
  ::getpwuid_r(::geteuid(), &entry, buffer, sizeof buffer, &found);
}

TEST_P(AllocationFailure, EveryFailureIsReportedAndUndone) {
  prepare_parent();
  const Operation& op = operations()[GetParam()];
  size_t allocations = exhaust(op, false);
  if (HasFailure()) return;
  EXPECT_EQ(exhaust(op, true), allocations);
  RecordProperty("allocations", static_cast<int>(allocations));
}

INSTANTIATE_TEST_SUITE_P(Operations, AllocationFailure,
                         ::testing::Range<size_t>(0, operations().size()),
                         [](const ::testing::TestParamInfo<size_t>& param) {
                           std::string name;
                           for (char c : std::string(operations()[param.param].name)) {
                             if (std::isalnum(static_cast<unsigned char>(c))) name += c;
                           }
                           return name;
                         });

}  // namespace
