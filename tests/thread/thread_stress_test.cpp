// Thousands of threads created, detached and joined from several threads at
// once, each with thread-local values whose destructors are counted exactly.

#include "oru/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "thread_test_support.h"

namespace {

constexpr int kCreators = 4;
constexpr int kThreadsPerCreator = 750;
constexpr int kThreads = kCreators * kThreadsPerCreator;
constexpr int kJoiners = 3;

std::atomic<int> g_ran{0};
std::atomic<int> g_first_destroyed{0};
std::atomic<int> g_second_destroyed{0};
oruTlsKey g_first_key, g_second_key;

void count_first(void*) { ++g_first_destroyed; }
void count_second(void*) { ++g_second_destroyed; }

// Each thread replaces one value (one destructor call at once) and leaves
// one value under each key (one call each after it ends).
unsigned worker(void* arg) {
  static int values[2];
  oruTlsSet(g_first_key, &values[0]);
  oruTlsSet(g_first_key, &values[1]);
  oruTlsSet(g_second_key, &values[0]);
  ++g_ran;
  return static_cast<unsigned>(reinterpret_cast<uintptr_t>(arg));
}

class JoinQueue {
 public:
  void push(oruThread thread, unsigned expected) {
    std::lock_guard<std::mutex> lock(mutex_);
    items_.push_back({thread, expected});
    ready_.notify_one();
  }
  // False when every joinable thread has been handed out.
  bool pop(oruThread* thread, unsigned* expected) {
    std::unique_lock<std::mutex> lock(mutex_);
    ready_.wait(lock, [this] { return !items_.empty() || handed_out_ == kThreads / 2; });
    if (items_.empty()) return false;
    *thread = items_.front().thread;
    *expected = items_.front().expected;
    items_.pop_front();
    if (++handed_out_ == kThreads / 2) ready_.notify_all();
    return true;
  }

 private:
  struct Item {
    oruThread thread;
    unsigned expected;
  };
  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<Item> items_;
  int handed_out_ = 0;
};

JoinQueue* g_queue;
std::atomic<int> g_create_failures{0};
std::mutex g_all_mutex;
std::vector<oruThread> g_all;  // every handle, to see each one released

void create_all(int creator) {
  for (int i = 0; i < kThreadsPerCreator; ++i) {
    unsigned id = static_cast<unsigned>(creator * kThreadsPerCreator + i);
    bool detached = i % 2 == 0;
    oruThread thread = nullptr;
    if (oruThreadCreate(&thread, detached ? ORU_THREAD_DETACHED : 0, 0, worker,
                        reinterpret_cast<void*>(uintptr_t{id})) != ORU_OK) {
      ++g_create_failures;
      continue;
    }
    if (!detached) g_queue->push(thread, id);
    std::lock_guard<std::mutex> lock(g_all_mutex);
    g_all.push_back(thread);
  }
}

unsigned oru_creator(void* arg) {
  create_all(static_cast<int>(reinterpret_cast<uintptr_t>(arg)));
  return 0;
}

TEST(ThreadStress, ManyThreadsEndWithExactlyCountedDestructors) {
  g_ran = g_first_destroyed = g_second_destroyed = g_create_failures = 0;  // repeatable
  g_all.clear();
  ASSERT_EQ(oruTlsKeyCreate(&g_first_key, count_first), ORU_OK);
  ASSERT_EQ(oruTlsKeyCreate(&g_second_key, count_second), ORU_OK);
  JoinQueue queue;
  g_queue = &queue;

  std::atomic<int> joined{0}, bad_joins{0};
  std::vector<std::thread> joiners;
  for (int j = 0; j < kJoiners; ++j) {
    joiners.emplace_back([&] {
      oruThread thread;
      unsigned expected;
      while (queue.pop(&thread, &expected)) {
        unsigned status = ~0u;
        if (oruThreadJoin(thread, &status) == ORU_OK && status == expected) {
          ++joined;
        } else {
          ++bad_joins;
        }
      }
    });
  }
  // Half the creators are library threads, half adopted ones.
  std::vector<oruThread> oru_creators;
  std::vector<std::thread> std_creators;
  for (int c = 0; c < kCreators; ++c) {
    if (c % 2 == 0) {
      oruThread creator = nullptr;
      ASSERT_EQ(oruThreadCreate(&creator, 0, 0, oru_creator, reinterpret_cast<void*>(uintptr_t(c))),
                ORU_OK);
      oru_creators.push_back(creator);
    } else {
      std_creators.emplace_back(create_all, c);
    }
  }
  for (auto& creator : std_creators) creator.join();
  for (oruThread creator : oru_creators) EXPECT_EQ(oruThreadJoin(creator, nullptr), ORU_OK);
  for (auto& joiner : joiners) joiner.join();

  EXPECT_EQ(g_create_failures, 0);
  EXPECT_EQ(bad_joins, 0);
  EXPECT_EQ(joined, kThreads / 2);
  // Once every record is released, every destructor has run: count them.
  for (oruThread thread : g_all) {
    ASSERT_TRUE(
        oru_test::eventually([&] { return oruThreadDetach(thread) == ORU_E_NO_SUCH_PROCESS; }));
  }
  EXPECT_EQ(g_ran, kThreads);  // detached ones too
  EXPECT_EQ(g_first_destroyed, 2 * kThreads);
  EXPECT_EQ(g_second_destroyed, kThreads);
  oruTlsKeyDelete(g_first_key);
  oruTlsKeyDelete(g_second_key);
}

}  // namespace
