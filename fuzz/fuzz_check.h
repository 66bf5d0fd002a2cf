// Shared helpers of the fuzz targets: a check that survives NDEBUG and a
// reader of the fuzzer's input.
#ifndef ORU_FUZZ_CHECK_H
#define ORU_FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>

// Aborts with the failed condition, so that libFuzzer saves the input.
#define FUZZ_CHECK(cond)                                                            \
  do {                                                                              \
    if (!(cond)) {                                                                  \
      std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
      std::abort();                                                                 \
    }                                                                               \
  } while (0)

#endif  // ORU_FUZZ_CHECK_H
