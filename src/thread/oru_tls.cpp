// Thread-local keys with destructors.
//
// Keys index a process-wide table (guarded by the key lock); the values live
// in each thread's record, so that the reaper can destroy them after the
// thread has ended.  Free entries form a last-in first-out list threaded
// through the table, so a deleted key is the next one handed out.

#include "core/oru_internal.h"
#include "thread/oru_thread_internal.h"

namespace oru::thread {

namespace {

constexpr uint32_t kEndOfList = 0xFFFFFFFFu;
constexpr uint32_t kInitialCapacity = 16;

struct KeyEntry {
  void (*destructor)(void*);  // while in use (may be null)
  uint32_t next_free;         // while free
  uint32_t in_use;
};

// Guarded by the key lock.
KeyEntry* g_keys = nullptr;
uint32_t g_capacity = 0;
uint32_t g_free_head = kEndOfList;

// Chains entries [from, to) into the free list in ascending order, ending it.
void chain_free(uint32_t from, uint32_t to) {
  for (uint32_t index = from; index < to; ++index) {
    g_keys[index].destructor = nullptr;
    g_keys[index].in_use = 0;
    g_keys[index].next_free = index + 1 < to ? index + 1 : kEndOfList;
  }
  g_free_head = from;
}

}  // namespace

bool tls_initialize_keys() {
  g_keys = static_cast<KeyEntry*>(oruCalloc(kInitialCapacity, sizeof(KeyEntry)));
  if (g_keys == nullptr) return false;
  g_capacity = kInitialCapacity;
  chain_free(0, kInitialCapacity);
  return true;
}

uint32_t tls_key_capacity() { return g_capacity; }

void tls_run_destructors(ThreadData* record) {
  // Rounds until one calls nothing.  Every slot is cleared before its
  // destructor runs, so a second round normally finds nothing.
  bool called;
  do {
    called = false;
    for (uint32_t index = 0; index < record->tls_count; ++index) {
      void* value = record->tls_values[index];
      if (value == nullptr) continue;
      record->tls_values[index] = nullptr;
      const KeyEntry& entry = g_keys[index];
      // A value under a deleted key, or a key without destructor, is dropped.
      if (entry.in_use && entry.destructor != nullptr) {
        called = true;
        entry.destructor(value);
      }
    }
  } while (called);
}

}  // namespace oru::thread

using namespace oru::thread;

extern "C" {

ORU_API oruResult oruTlsKeyCreate(oruTlsKey* key, void (*destructor)(void* value)) {
  ensure_initialized();
  if (key == nullptr) return ORU_E_INVALID_ARG;
  lock_keys();
  if (g_free_head == kEndOfList) {
    uint32_t capacity = g_capacity * 2;
    auto* grown = static_cast<KeyEntry*>(oruRealloc(g_keys, capacity * sizeof(KeyEntry)));
    if (grown == nullptr) {
      // The table and its capacity stay as they were.
      unlock_keys();
      return ORU_E_OUT_OF_MEMORY;
    }
    g_keys = grown;
    chain_free(g_capacity, capacity);
    g_capacity = capacity;
  }
  uint32_t index = g_free_head;
  KeyEntry& entry = g_keys[index];
  g_free_head = entry.next_free;
  entry.destructor = destructor;
  entry.in_use = 1;
  unlock_keys();
  *key = index;
  return ORU_OK;
}

ORU_API oruResult oruTlsKeyDelete(oruTlsKey key) {
  ensure_initialized();
  oruResult result = ORU_E_INVALID_ARG;
  lock_keys();
  if (key < g_capacity && g_keys[key].in_use) {
    // Values threads still hold under the key are left alone.
    KeyEntry& entry = g_keys[key];
    entry.destructor = nullptr;
    entry.in_use = 0;
    entry.next_free = g_free_head;
    g_free_head = key;
    result = ORU_OK;
  }
  unlock_keys();
  return result;
}

ORU_API oruResult oruTlsSet(oruTlsKey key, void* value) {
  ThreadData* self = get_self();
  if (self == nullptr) return ORU_E_OUT_OF_MEMORY;
  lock_keys();
  if (key >= g_capacity || !g_keys[key].in_use) {
    unlock_keys();
    return ORU_E_INVALID_ARG;
  }
  if (key >= self->tls_count) {
    auto* grown = static_cast<void**>(oruRealloc(self->tls_values, g_capacity * sizeof(void*)));
    if (grown == nullptr) {
      unlock_keys();
      return ORU_E_OUT_OF_MEMORY;
    }
    for (uint32_t index = self->tls_count; index < g_capacity; ++index) grown[index] = nullptr;
    self->tls_values = grown;
    self->tls_count = g_capacity;
  } else {
    // Even when value is the same pointer: the old value is destroyed.
    void* old = self->tls_values[key];
    void (*destructor)(void*) = g_keys[key].destructor;
    if (old != nullptr && destructor != nullptr) destructor(old);
  }
  self->tls_values[key] = value;
  unlock_keys();
  return ORU_OK;
}

ORU_API void* oruTlsGet(oruTlsKey key) {
  ThreadData* self = current_record();
  if (self == nullptr) {
    // No record, so no values; just make sure the module is up.
    ensure_initialized();
    return nullptr;
  }
  return key < self->tls_count ? self->tls_values[key] : nullptr;
}

}  // extern "C"
