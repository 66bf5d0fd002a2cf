/*
 * oru/thread.h - threads, mutexes, condition variables, once-initialisation, atomics and thread-local storage.
 */
#ifndef ORU_THREAD_H
#define ORU_THREAD_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ORU_THREAD_H */
