// Thread-data lookup against a plain thread_local read, and the recursive object
// lock against std::recursive_mutex, in one run.
#include <benchmark/benchmark.h>

#include <mutex>
#include <thread>

#include "kep/Kep.h"

namespace {

// Makes the compiler produce `value` in a register on every iteration, and
// forget what it read before. benchmark::DoNotOptimize accepts a memory operand,
// and for a copy of a thread_local word GCC hands it the thread_local itself, so
// the peer's loop would contain no read at all.
template <class T>
inline __attribute__((always_inline)) void useInRegister(T value) {
  asm volatile("" : : "r"(value) : "memory");
}

thread_local void* tWords[KEP_THREAD_DATA_WORDS];

// The peer: reading one word of a thread_local array.
void BM_ThreadLocalRead(benchmark::State& state) {
  tWords[3] = &state;
  for (auto _ : state) useInRegister(tWords[3]);
}
BENCHMARK(BM_ThreadLocalRead);

// The calling thread's data words, read one.
void BM_GetCurrThreadData(benchmark::State& state) {
  _KepGetCurrThreadData()[3].store(&state);
  for (auto _ : state) useInRegister(_KepGetCurrThreadData()[3].load(std::memory_order_relaxed));
}
BENCHMARK(BM_GetCurrThreadData);

// The calling thread's object.
void BM_GetCurrThread(benchmark::State& state) {
  for (auto _ : state) useInRegister(KepProcess::getCurrThread());
}
BENCHMARK(BM_GetCurrThread);

// The same word through the shared-data store's thread scope.
void BM_SharedDataThreadGet(benchmark::State& state) {
  KepRSharedData::set(KEP_SCOPE_THREAD, 3, 42);
  for (auto _ : state) useInRegister(KepRSharedData::get(KEP_SCOPE_THREAD, 3));
}
BENCHMARK(BM_SharedDataThreadGet);

// Uncontended lock and unlock, once and nested twice.
void BM_KepSemaphoreLockUnlock(benchmark::State& state) {
  _KepSemaphore lock;
  lock.lock();  // the mutex exists from here on
  lock.unlock();
  for (auto _ : state) {
    lock.lock();
    lock.unlock();
  }
}
BENCHMARK(BM_KepSemaphoreLockUnlock);

void BM_StdRecursiveMutexLockUnlock(benchmark::State& state) {
  std::recursive_mutex lock;
  for (auto _ : state) {
    lock.lock();
    lock.unlock();
  }
}
BENCHMARK(BM_StdRecursiveMutexLockUnlock);

void BM_KepSemaphoreNested(benchmark::State& state) {
  _KepSemaphore lock;
  for (auto _ : state) {
    lock.lock();
    lock.lock();
    lock.unlock();
    lock.unlock();
  }
}
BENCHMARK(BM_KepSemaphoreNested);

void BM_StdRecursiveMutexNested(benchmark::State& state) {
  std::recursive_mutex lock;
  for (auto _ : state) {
    lock.lock();
    lock.lock();
    lock.unlock();
    lock.unlock();
  }
}
BENCHMARK(BM_StdRecursiveMutexNested);

// Two threads taking turns on one lock.
void BM_KepSemaphoreContended(benchmark::State& state) {
  static _KepSemaphore* lock = nullptr;
  if (state.thread_index() == 0) lock = new _KepSemaphore;
  for (auto _ : state) {
    lock->lock();
    benchmark::ClobberMemory();
    lock->unlock();
  }
  if (state.thread_index() == 0) {
    delete lock;
    lock = nullptr;
  }
}
BENCHMARK(BM_KepSemaphoreContended)->Threads(2);

void BM_StdRecursiveMutexContended(benchmark::State& state) {
  static std::recursive_mutex lock;
  for (auto _ : state) {
    lock.lock();
    benchmark::ClobberMemory();
    lock.unlock();
  }
}
BENCHMARK(BM_StdRecursiveMutexContended)->Threads(2);

}  // namespace

int main(int argc, char** argv) {
  // Locks taken while a process has only ever had one thread skip their lock
  // word; a server has many threads, so both locks are measured on that path.
  std::thread([] {}).join();
  Kep::init(0);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  Kep::destroy();
  return 0;
}
