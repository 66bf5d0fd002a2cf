// Uncontended costs of the synchronisation primitives, side by side with
// the pthread (and standard library) operations they stand in for.

#include "oru/thread.h"

#include <benchmark/benchmark.h>

#include <pthread.h>
#include <chrono>
#include <mutex>
#include <thread>

// The mutex benchmarks run twice: first while the process has one thread
// (the C library then skips its atomic instructions, and so does oru), then
// with a second thread alive, as in any program that needs a mutex.
namespace {

void start_second_thread() {
  static const bool started = [] {
    std::thread([] {
      for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }).detach();
    return true;
  }();
  (void)started;
}

void BM_OruMutexLockUnlock(benchmark::State& state) {
  if (state.range(0) != 0) start_second_thread();
  oruMutex mutex = nullptr;
  oruMutexInit(&mutex);
  for (auto _ : state) {
    oruMutexLock(&mutex);
    oruMutexUnlock(&mutex);
  }
  oruMutexDestroy(&mutex);
}

void BM_PthreadRecursiveMutexLockUnlock(benchmark::State& state) {
  if (state.range(0) != 0) start_second_thread();
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_t mutex;
  pthread_mutex_init(&mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  for (auto _ : state) {
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
  }
  pthread_mutex_destroy(&mutex);
}

void BM_StdRecursiveMutexLockUnlock(benchmark::State& state) {
  if (state.range(0) != 0) start_second_thread();
  std::recursive_mutex mutex;
  for (auto _ : state) {
    mutex.lock();
    mutex.unlock();
  }
}

// Arg 0: one thread in the process; arg 1: two.  All single-threaded runs
// come first, since a process never becomes single-threaded again.
BENCHMARK(BM_OruMutexLockUnlock)->Arg(0);
BENCHMARK(BM_PthreadRecursiveMutexLockUnlock)->Arg(0);
BENCHMARK(BM_StdRecursiveMutexLockUnlock)->Arg(0);
BENCHMARK(BM_OruMutexLockUnlock)->Arg(1);
BENCHMARK(BM_PthreadRecursiveMutexLockUnlock)->Arg(1);
BENCHMARK(BM_StdRecursiveMutexLockUnlock)->Arg(1);

void BM_OruTlsGet(benchmark::State& state) {
  static int value;
  oruTlsKey key = 0;
  oruTlsKeyCreate(&key, nullptr);
  oruTlsSet(key, &value);
  for (auto _ : state) benchmark::DoNotOptimize(oruTlsGet(key));
  oruTlsKeyDelete(key);
}
BENCHMARK(BM_OruTlsGet);

void BM_PthreadGetSpecific(benchmark::State& state) {
  static int value;
  pthread_key_t key;
  pthread_key_create(&key, nullptr);
  pthread_setspecific(key, &value);
  for (auto _ : state) benchmark::DoNotOptimize(pthread_getspecific(key));
  pthread_key_delete(key);
}
BENCHMARK(BM_PthreadGetSpecific);

oruOnce g_once = ORU_ONCE_INIT;
pthread_once_t g_pthread_once = PTHREAD_ONCE_INIT;
void nothing() {}

void BM_OruInitOnceDone(benchmark::State& state) {
  oruInitOnce(&g_once, nothing);
  for (auto _ : state) benchmark::DoNotOptimize(oruInitOnce(&g_once, nothing));
}
BENCHMARK(BM_OruInitOnceDone);

void BM_PthreadOnceDone(benchmark::State& state) {
  pthread_once(&g_pthread_once, nothing);
  for (auto _ : state) benchmark::DoNotOptimize(pthread_once(&g_pthread_once, nothing));
}
BENCHMARK(BM_PthreadOnceDone);

}  // namespace
