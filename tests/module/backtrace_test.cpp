// Capturing and symbolizing backtraces: the sample object's chain of three
// calls and a C++ function of this program, against addr2line(1).
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "module_test_support.h"

namespace probe {

// Exported and kept out of line, so that it has a frame and a name of its
// own in the loader's table; the result is used so the call is no jump.
__attribute__((noinline, visibility("default"))) size_t capture_here(std::vector<void*>& out,
                                                                     unsigned skip) {
  size_t count = 0;
  oruResult r = oruCaptureBacktrace(skip, out.data(), out.size(), &count);
  EXPECT_TRUE(r == ORU_OK || r == ORU_S_OUTPUT_FULL);
  out.resize(count);
  return count;
}

}  // namespace probe

namespace {

struct symbolized {
  std::unique_ptr<oruSymbolInfo, void (*)(void*)> info{nullptr, oruFree};
  explicit symbolized(const void* address) {
    oruSymbolInfo* raw = nullptr;
    EXPECT_EQ(oruSymbolizeAddress(address, &raw), ORU_OK) << address;
    info.reset(raw);
  }
  const oruSymbolInfo* operator->() const { return info.get(); }
};

// The library's answer against addr2line's for the same address.
void expect_like_addr2line(const void* address, const char* function) {
  symbolized s(address);
  ASSERT_NE(s.info, nullptr);
  ASSERT_NE(s->symbolName, nullptr) << function;
  EXPECT_EQ(std::string(s->symbolName), function);
  const size_t offset =
      reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(s->moduleBase);
  line_answer oracle = addr2line(real_path(s->modulePath), offset);
  EXPECT_EQ(oracle.function, function);
#if ORU_HAVE_LIBDW
  ASSERT_NE(s->sourceFile, nullptr) << function;
  EXPECT_EQ(base_name(s->sourceFile), base_name(oracle.file));
  EXPECT_EQ(s->line, oracle.line) << function;
  EXPECT_GT(s->line, 0u);
#else
  EXPECT_EQ(s->sourceFile, nullptr);
  EXPECT_EQ(s->line, 0u);
#endif
}

TEST(Backtrace, ThreeNamedFramesInOrder) {
  loaded_sample sample;
  ASSERT_NE(sample.outer, nullptr);
  void* frames[64];
  size_t count = sample.outer(frames, 64);
  ASSERT_GE(count, 4u);
  const char* names[] = {"sample_inner", "sample_middle", "sample_outer"};
  const std::string file = real_path(ORU_SAMPLE_FILE);
  oruModuleInfo module{};
  ASSERT_TRUE(find_module(file, module));
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(names[i]);
    symbolized s(frames[i]);
    ASSERT_NE(s.info, nullptr);
    EXPECT_EQ(s->address, frames[i]);
    EXPECT_EQ(real_path(s->modulePath), file);
    EXPECT_EQ(s->moduleBase, module.base);
    // The offset is from the exported address of the function.
    const auto start = reinterpret_cast<uintptr_t>(sample.symbol(names[i]));
    EXPECT_EQ(s->symbolOffset, reinterpret_cast<uintptr_t>(frames[i]) - start);
    expect_like_addr2line(frames[i], names[i]);
  }
  // Then this test's own body.
  symbolized caller(frames[3]);
  EXPECT_EQ(real_path(caller->modulePath), real_path("/proc/self/exe"));
}

TEST(Backtrace, DemangledNamesSkipAndCapacity) {
  std::vector<void*> frames(64);
  ASSERT_GE(probe::capture_here(frames, 0), 2u);
  expect_like_addr2line(
      frames[0], "probe::capture_here(std::vector<void*, std::allocator<void*> >&, unsigned int)");

  std::vector<void*> skipped(64);
  probe::capture_here(skipped, 1);
  // Skipping one leaves out the probe: the rest is the same stack, from the
  // caller on (only the call site in this function differs).
  ASSERT_EQ(skipped.size() + 1, frames.size());
  for (size_t i = 2; i < frames.size(); ++i) EXPECT_EQ(skipped[i - 1], frames[i]) << i;

  std::vector<void*> two(2);
  size_t count = 9;
  EXPECT_EQ(oruCaptureBacktrace(0, two.data(), 2, &count), ORU_S_OUTPUT_FULL);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(oruCaptureBacktrace(0, nullptr, 0, &count), ORU_S_OUTPUT_FULL);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(oruCaptureBacktrace(1000, two.data(), 2, &count), ORU_OK);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(oruCaptureBacktrace(0, nullptr, 2, &count), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruCaptureBacktrace(0, two.data(), 2, nullptr), ORU_E_INVALID_ARG);
}

TEST(Backtrace, AddressesOutsideEveryModule) {
  oruSymbolInfo* info = reinterpret_cast<oruSymbolInfo*>(1);
  auto heap = std::make_unique<int>(1);
  EXPECT_EQ(oruSymbolizeAddress(nullptr, &info), ORU_E_NOT_FOUND);
  EXPECT_EQ(info, nullptr);
  EXPECT_EQ(oruSymbolizeAddress(heap.get(), &info), ORU_E_NOT_FOUND);
  EXPECT_EQ(oruSymbolizeAddress(reinterpret_cast<void*>(&expect_like_addr2line), nullptr),
            ORU_E_INVALID_ARG);
  // A function this program does not export still gets its module.
  symbolized s(reinterpret_cast<void*>(&expect_like_addr2line));
  EXPECT_EQ(real_path(s->modulePath), real_path("/proc/self/exe"));
}

}  // namespace
