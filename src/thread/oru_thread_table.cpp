// The thread table: 256 singly linked buckets of records, newest first.

#include "thread/oru_thread_internal.h"

namespace oru::thread {

void ThreadTable::insert(ThreadData* record) {
  ThreadData*& head = buckets_[bucket(record->handle)];
  record->next = head;
  head = record;
}

ThreadData* ThreadTable::find(uintptr_t handle) const {
  for (ThreadData* record = buckets_[bucket(handle)]; record != nullptr; record = record->next) {
    if (record->handle == handle) return record;
  }
  return nullptr;
}

bool ThreadTable::remove(ThreadData* record) {
  for (ThreadData** link = &buckets_[bucket(record->handle)]; *link != nullptr;
       link = &(*link)->next) {
    if (*link == record) {
      *link = record->next;
      record->next = nullptr;
      return true;
    }
  }
  return false;
}

ThreadData* ThreadTable::remove_all_except(ThreadData* keep) {
  ThreadData* removed = nullptr;
  for (ThreadData*& head : buckets_) {
    ThreadData* record = head;
    head = nullptr;
    while (record != nullptr) {
      ThreadData* following = record->next;
      if (record == keep) {
        record->next = head;
        head = record;
      } else {
        record->next = removed;
        removed = record;
      }
      record = following;
    }
  }
  return removed;
}

}  // namespace oru::thread
