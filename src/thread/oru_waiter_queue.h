// The queue of threads sleeping on a condition variable, oldest first.
#ifndef ORU_SRC_THREAD_ORU_WAITER_QUEUE_H
#define ORU_SRC_THREAD_ORU_WAITER_QUEUE_H

#include <cstdint>

namespace oru::thread {

// An intrusive doubly linked list of the waiters' own records (which live on
// their stacks); Waiter has `next` and `previous` pointers.  The variable's
// guard protects it.  All zero is the empty queue, so it may sit in a
// zero-filled allocation.
template <class Waiter>
struct WaiterQueue {
  Waiter* first;
  Waiter* last;
  uint32_t count;  // the records queued, which is the number of waiters

  bool empty() const { return count == 0; }

  void push_back(Waiter* waiter) {
    waiter->next = nullptr;
    waiter->previous = last;
    if (last != nullptr) {
      last->next = waiter;
    } else {
      first = waiter;
    }
    last = waiter;
    ++count;
  }

  void remove(Waiter* waiter) {
    if (waiter->previous != nullptr) {
      waiter->previous->next = waiter->next;
    } else {
      first = waiter->next;
    }
    if (waiter->next != nullptr) {
      waiter->next->previous = waiter->previous;
    } else {
      last = waiter->previous;
    }
    --count;
  }
};

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_WAITER_QUEUE_H
