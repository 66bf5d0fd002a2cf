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

// Holds off pthread_cancel for a scope.  The library's own waits (join, a
// condition variable's destruction) must not be cut short: the thread would
// leave holding the library's lock or a half-done claim.  A cancellation
// requested meanwhile is acted on at the caller's next cancellation point.
class CancellationOff {
 public:
  CancellationOff() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous_); }
  ~CancellationOff() { pthread_setcancelstate(previous_, nullptr); }
  CancellationOff(const CancellationOff&) = delete;
  CancellationOff& operator=(const CancellationOff&) = delete;

 private:
  int previous_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace oru::thread

#endif  // ORU_SRC_THREAD_ORU_PTHREAD_UTIL_H
