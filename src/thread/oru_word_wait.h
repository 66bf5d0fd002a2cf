// Sleeping until a lock word changes, for the mutex's contended path.
#ifndef ORU_SRC_THREAD_ORU_WORD_WAIT_H
#define ORU_SRC_THREAD_ORU_WORD_WAIT_H

#include <atomic>
#include <cstdint>

namespace oru::thread {

// Sleeps while `word` holds `value`.  It may also return without a change;
// callers re-read the word and loop.
void wait_while_equal(std::atomic<uint32_t>& word, uint32_t value);

// Wakes at least one thread sleeping on `word`, after the caller changed it.
void wake_one_waiter(std::atomic<uint32_t>& word);

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_WORD_WAIT_H
