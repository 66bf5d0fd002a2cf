// oruConvertString from several threads at once, with more name pairs than
// the cache holds, so lookups, evictions and conversions interleave.

#include "oru/text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(ConvertStringThreads, ConcurrentConversionsAgree) {
  // Pairs whose results are known: "h\xE9llo" in latin1 under many names.
  const char* names[] = {"ISO-8859-1",  "latin1",     "l1",           "IBM819",      "CP819",
                         "csISOLatin1", "ISO_8859-1", "iso-ir-100",   "ISO-8859-15", "latin-9",
                         "ISO-8859-9",  "latin5",     "windows-1252", "ISO-8859-3",  "latin3",
                         "ISO-8859-4",  "latin4",     "ISO-8859-2",   "latin2",      "ISO-8859-13"};
  const std::string utf8 = "h\xC3\xA9llo";
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) {
        const char* name = names[(i * 7 + t * 3) % 20];
        char* out = nullptr;
        size_t len = 0;
        bool toUTF8 = (i + t) % 2 == 0;
        const std::string in = toUTF8 ? std::string("h\xE9llo") : utf8;
        oruResult r = oruConvertString(in.data(), in.size(), toUTF8 ? name : "UTF-8",
                                       toUTF8 ? "UTF-8" : name, nullptr, &len, nullptr, &out);
        const std::string expect = toUTF8 ? utf8 : std::string("h\xE9llo");
        if (r != ORU_OK || std::string(out, len) != expect) ++failures;
        oruFree(out);
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
}

}  // namespace
