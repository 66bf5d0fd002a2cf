#include "oru/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "thread_test_support.h"

namespace {

using oru_test::eventually;

// A value that records what happened to it.
struct Tracked {
  std::atomic<int> destroyed{0};
  std::atomic<bool> owner_done{false};
  std::atomic<bool> destroyed_after_owner{true};
  std::thread::id owner;
  std::thread::id destroyer;
};

void destroy_tracked(void* value) {
  auto* tracked = static_cast<Tracked*>(value);
  if (!tracked->owner_done) tracked->destroyed_after_owner = false;
  tracked->destroyer = std::this_thread::get_id();
  ++tracked->destroyed;
}

bool released(oruThread thread) {
  return eventually([&] { return oruThreadDetach(thread) == ORU_E_NO_SUCH_PROCESS; });
}

class TlsTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(oruTlsKeyCreate(&key_, destroy_tracked), ORU_OK); }
  void TearDown() override { oruTlsKeyDelete(key_); }
  oruTlsKey key_ = 0;
};

// Key numbers are only predictable in a process that has made no keys yet,
// so this runs in a fresh one.
bool fresh_process_numbering() {
  oruTlsKey key = 99;
  for (oruTlsKey expected = 0; expected < 16; ++expected) {
    if (oruTlsKeyCreate(&key, nullptr) != ORU_OK || key != expected) return false;
  }
  if (oruTlsKeyCreate(&key, nullptr) != ORU_OK || key != 16) return false;  // table doubled
  if (oruTlsKeyDelete(3) != ORU_OK || oruTlsKeyCreate(&key, nullptr) != ORU_OK || key != 3)
    return false;
  // Deleted keys come back last in, first out, before the fresh ones.
  if (oruTlsKeyDelete(5) != ORU_OK || oruTlsKeyDelete(9) != ORU_OK) return false;
  const oruTlsKey order[] = {9, 5, 17, 18};
  for (oruTlsKey expected : order) {
    if (oruTlsKeyCreate(&key, nullptr) != ORU_OK || key != expected) return false;
  }
  // The grown table holds 32 keys; the 33rd doubles it again.
  for (oruTlsKey expected = 19; expected < 33; ++expected) {
    if (oruTlsKeyCreate(&key, nullptr) != ORU_OK || key != expected) return false;
  }
  return oruTlsSet(32, &key) == ORU_OK && oruTlsGet(32) == &key;
}

TEST(TlsKeys, NumberingInAFreshProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(fresh_process_numbering() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST(TlsKeys, BadKeysAreRejected) {
  EXPECT_EQ(oruTlsKeyCreate(nullptr, nullptr), ORU_E_INVALID_ARG);
  oruTlsKey key = 0;
  ASSERT_EQ(oruTlsKeyCreate(&key, nullptr), ORU_OK);
  EXPECT_EQ(oruTlsKeyDelete(key), ORU_OK);
  EXPECT_EQ(oruTlsKeyDelete(key), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruTlsSet(key, &key), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruTlsKeyDelete(0xFFFFFFFFu), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruTlsSet(0xFFFFFFFFu, &key), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruTlsGet(0xFFFFFFFFu), nullptr);
}

TEST_F(TlsTest, ValuesArePerThreadAndNullUntilSet) {
  int mine = 0;
  EXPECT_EQ(oruTlsGet(key_), nullptr);
  ASSERT_EQ(oruTlsSet(key_, nullptr), ORU_OK);
  EXPECT_EQ(oruTlsGet(key_), nullptr);
  void* seen = &mine;
  std::thread([&] { seen = oruTlsGet(key_); }).join();
  EXPECT_EQ(seen, nullptr);
  Tracked theirs;
  oruThread thread = nullptr;
  std::thread([&] {
    oruTlsSet(key_, &theirs);
    seen = oruTlsGet(key_);
    thread = oruThreadSelf();
  }).join();
  EXPECT_EQ(seen, &theirs);
  EXPECT_EQ(oruTlsGet(key_), nullptr);
  // Its value is destroyed on the reaper: wait for that before it goes.
  ASSERT_TRUE(released(thread));
  EXPECT_EQ(theirs.destroyed, 1);
}

TEST_F(TlsTest, ReplacingDestroysTheOldValueEvenIfItIsTheSame) {
  Tracked first, second;
  ASSERT_EQ(oruTlsSet(key_, &first), ORU_OK);
  ASSERT_EQ(oruTlsSet(key_, &second), ORU_OK);
  EXPECT_EQ(first.destroyed, 1);
  EXPECT_EQ(second.destroyed, 0);
  EXPECT_EQ(first.destroyer, std::this_thread::get_id());
  ASSERT_EQ(oruTlsSet(key_, &second), ORU_OK);
  EXPECT_EQ(second.destroyed, 1);
  EXPECT_EQ(oruTlsGet(key_), &second);
  ASSERT_EQ(oruTlsSet(key_, nullptr), ORU_OK);
  ASSERT_EQ(oruTlsSet(key_, nullptr), ORU_OK);  // nothing left to destroy
  EXPECT_EQ(second.destroyed, 2);
  EXPECT_EQ(first.destroyed, 1);
}

TEST_F(TlsTest, ADeletedKeyLeavesValuesForItsSuccessor) {
  Tracked old_value;
  ASSERT_EQ(oruTlsSet(key_, &old_value), ORU_OK);
  ASSERT_EQ(oruTlsKeyDelete(key_), ORU_OK);
  EXPECT_EQ(oruTlsSet(key_, nullptr), ORU_E_INVALID_ARG);  // stores nothing
  EXPECT_EQ(old_value.destroyed, 0);
  oruTlsKey successor = 0;
  ASSERT_EQ(oruTlsKeyCreate(&successor, destroy_tracked), ORU_OK);
  ASSERT_EQ(successor, key_);
  EXPECT_EQ(oruTlsGet(successor), &old_value);
  ASSERT_EQ(oruTlsSet(successor, nullptr), ORU_OK);
  EXPECT_EQ(old_value.destroyed, 1);
}

TEST_F(TlsTest, ManyKeysKeepTheirValues) {
  std::vector<oruTlsKey> keys(40);
  for (auto& key : keys) ASSERT_EQ(oruTlsKeyCreate(&key, destroy_tracked), ORU_OK);
  std::vector<Tracked> values(keys.size());
  bool all_seen = false;
  oruThread thread = nullptr;
  std::thread([&] {
    thread = oruThreadSelf();
    for (size_t i = 0; i < keys.size(); ++i) oruTlsSet(keys[i], &values[i]);
    all_seen = true;
    for (size_t i = 0; i < keys.size(); ++i) all_seen &= oruTlsGet(keys[i]) == &values[i];
    for (auto& value : values) value.owner_done = true;
  }).join();
  EXPECT_TRUE(all_seen);
  ASSERT_TRUE(released(thread));
  for (auto& value : values) EXPECT_EQ(value.destroyed, 1);
  for (auto key : keys) EXPECT_EQ(oruTlsKeyDelete(key), ORU_OK);
}

struct EndCase {
  oruTlsKey counted, plain, deleted;
  Tracked counted_value, plain_value, deleted_value;
  bool exit_early = false;
};

unsigned set_values_and_end(void* arg) {
  auto* c = static_cast<EndCase*>(arg);
  for (Tracked* t : {&c->counted_value, &c->plain_value, &c->deleted_value}) {
    t->owner = std::this_thread::get_id();
  }
  oruTlsSet(c->counted, &c->counted_value);
  oruTlsSet(c->plain, &c->plain_value);
  oruTlsSet(c->deleted, &c->deleted_value);
  for (Tracked* t : {&c->counted_value, &c->plain_value, &c->deleted_value}) t->owner_done = true;
  if (c->exit_early) oruThreadExit(9);
  return 3;
}

class TlsEndTest : public ::testing::TestWithParam<bool> {};

// Values left at the end are destroyed once, on another thread, after the
// owner has finished; a key without destructor or a deleted key drops its
// value without a call.
TEST_P(TlsEndTest, DestructorsRunOnceAfterTheThreadEnds) {
  EndCase c;
  c.exit_early = GetParam();
  ASSERT_EQ(oruTlsKeyCreate(&c.counted, destroy_tracked), ORU_OK);
  ASSERT_EQ(oruTlsKeyCreate(&c.plain, nullptr), ORU_OK);
  ASSERT_EQ(oruTlsKeyCreate(&c.deleted, destroy_tracked), ORU_OK);
  oruThread thread = nullptr;
  ASSERT_EQ(oruThreadCreate(&thread, 0, 0, set_values_and_end, &c), ORU_OK);
  // Not joined yet: the values stay (nothing may have run before the join).
  unsigned status = 0;
  ASSERT_TRUE(eventually([&] { return c.deleted_value.owner_done.load(); }));
  EXPECT_EQ(c.counted_value.destroyed, 0);
  ASSERT_EQ(oruTlsKeyDelete(c.deleted), ORU_OK);
  ASSERT_EQ(oruThreadJoin(thread, &status), ORU_OK);
  EXPECT_EQ(status, c.exit_early ? 9u : 3u);
  ASSERT_TRUE(released(thread));

  EXPECT_EQ(c.counted_value.destroyed, 1);
  EXPECT_TRUE(c.counted_value.destroyed_after_owner);
  EXPECT_NE(c.counted_value.destroyer, c.counted_value.owner);
  EXPECT_NE(c.counted_value.destroyer, std::this_thread::get_id());
  EXPECT_EQ(c.plain_value.destroyed, 0);
  EXPECT_EQ(c.deleted_value.destroyed, 0);
  oruTlsKeyDelete(c.counted);
  oruTlsKeyDelete(c.plain);
}

INSTANTIATE_TEST_SUITE_P(ReturnOrExit, TlsEndTest, ::testing::Bool());

TEST_F(TlsTest, AnAdoptedThreadsValuesGoWhenItEnds) {
  Tracked value;
  oruThread thread = nullptr;
  std::thread([&] {
    value.owner = std::this_thread::get_id();
    oruTlsSet(key_, &value);
    thread = oruThreadSelf();
    value.owner_done = true;
  }).join();
  ASSERT_TRUE(released(thread));
  EXPECT_EQ(value.destroyed, 1);
  EXPECT_NE(value.destroyer, value.owner);
}

}  // namespace
