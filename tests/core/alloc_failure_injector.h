// Makes the Nth allocation of the calling thread fail, for the
// allocation-failure tests.  The test executable replaces malloc, calloc,
// realloc and the global operator new with counting versions that pass on
// to the allocator underneath (the C library's, or a sanitizer's, so that
// LeakSanitizer still sees every block).  Only the thread that armed the
// injector counts, so the library's own threads and the test framework do
// not disturb the numbering.
#pragma once

#include <cstddef>

namespace oru_test {

struct AllocationFault {
  // The allocation to fail, counting from 1; 0 never fails.
  size_t target = 0;
  // Fail every allocation from the target on, not only the target.
  bool persistent = false;
  // Allocations made directly by code of a module whose file name contains
  // this text are neither counted nor failed (null: none spared).
  const char* spared = nullptr;
  // Out: allocations seen while armed, and whether one was failed.
  size_t seen = 0;
  bool injected = false;

  // Runs fn() with the injector armed (counting on from earlier runs).
  template <class Fn>
  auto run(Fn&& fn) -> decltype(fn()) {
    arm();
    struct Disarm {
      AllocationFault* self;
      ~Disarm() { self->disarm(); }
    } disarm{this};
    return fn();
  }

 private:
  void arm();
  void disarm();
};

}  // namespace oru_test
