// Stack sizes for the threads the library starts.
#ifndef ORU_SRC_THREAD_ORU_THREAD_STACK_H
#define ORU_SRC_THREAD_ORU_THREAD_STACK_H

#include <cstddef>

namespace oru::thread {

// The size to ask the system for so that a thread's routine has `usable`
// bytes of stack (raised to the system's minimum first) after whatever the
// system keeps in the stack for itself.
size_t system_stack_size(size_t usable);

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_THREAD_STACK_H
