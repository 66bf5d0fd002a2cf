// Sleeping on a lock word: a futex on Linux, through the C++ library.

#include "thread/oru_word_wait.h"

namespace oru::thread {

void wait_while_equal(std::atomic<uint32_t>& word, uint32_t value) {
  word.wait(value, std::memory_order_relaxed);
}

void wake_one_waiter(std::atomic<uint32_t>& word) { word.notify_one(); }

}  // namespace oru::thread
