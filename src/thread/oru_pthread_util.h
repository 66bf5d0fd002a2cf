// Small pthread helpers shared by the POSIX parts of the thread module.
#ifndef ORU_SRC_THREAD_ORU_PTHREAD_UTIL_H
#define ORU_SRC_THREAD_ORU_PTHREAD_UTIL_H

#include <pthread.h>

namespace oru::thread {

// Every lock of the library behaves like a Win32 critical section:
// recursive, so that the owner may enter again.  Returns 0 or an errno value.
inline int init_recursive_mutex(pthread_mutex_t* mutex) {
  pthread_mutexattr_t attributes;
  int error = pthread_mutexattr_init(&attributes);
  if (error != 0) return error;
  error = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  if (error == 0) error = pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  return error;
}

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_PTHREAD_UTIL_H
