// The ISO 3166 listings when memory runs out: null, and nothing leaked.
// This executable replaces malloc (glibc's own stays reachable as
// __libc_malloc) so that the library's next allocation fails on request;
// the sanitizer builds, which own malloc themselves, leave it out.
#include "oru/l10n.h"

#include <gtest/gtest.h>

#include <cstddef>

extern "C" void* __libc_malloc(size_t size);

namespace {
bool fail_next = false;
}

extern "C" void* malloc(size_t size) {
  if (fail_next) {
    fail_next = false;
    return nullptr;
  }
  return __libc_malloc(size);
}

namespace {

TEST(Iso3166AllocationFailure, ListingsGiveNull) {
  fail_next = true;
  EXPECT_EQ(oruGetISO3166Countries(), nullptr);
  fail_next = true;
  EXPECT_EQ(oruGetISO3166Subdivisions("DE"), nullptr);
  fail_next = true;
  EXPECT_EQ(oruGetISO3166Subdivisions("KY"), nullptr);  // even the bare terminator
  EXPECT_FALSE(fail_next);
  // And with memory again, the same calls succeed.
  const char** list = oruGetISO3166Subdivisions("DE");
  ASSERT_NE(list, nullptr);
  EXPECT_STREQ(list[0], "DE-BB");
  oruFree(list);
}

}  // namespace
