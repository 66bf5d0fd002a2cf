// The library starts a thread and registers a pthread key destructor, so it
// must stay mapped after dlclose.  This program does not link the library:
// it loads it by path (ORU_LIBRARY_PATH), like a plug-in host would.

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <thread>

#include "fresh_process.h"

namespace {

using StrError = const char* (*)(uint32_t);

// A code without a constant text: its text is kept per thread, which
// registers the calling thread with the library.
constexpr uint32_t kUnexpected = 0x8000FFFFu;

bool survives_dlclose() {
  void* library = dlopen(ORU_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "dlopen: %s\n", dlerror());
    return false;
  }
  auto text = reinterpret_cast<StrError>(dlsym(library, "oruStrError"));
  if (text == nullptr) return false;
  std::atomic<int> stage{0};
  std::thread foreign([&] {
    bool got = text(kUnexpected) != nullptr;
    stage = got ? 1 : 3;
    while (stage != 2) std::this_thread::yield();
    // Leaving now runs the library's pthread key destructor.
  });
  while (stage == 0) std::this_thread::yield();
  if (stage == 3) {
    stage = 2;
    foreign.join();
    return false;
  }
  dlclose(library);
  bool still_loaded = dlopen(ORU_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD) != nullptr;
  stage = 2;
  foreign.join();
  std::fprintf(stderr, "still loaded after dlclose: %d\n", still_loaded);
  return still_loaded;
}

TEST(Unload, TheLibraryStaysLoadedAfterDlclose) {
  oru_test::expect_in_fresh_process(survives_dlclose);
}

}  // namespace
