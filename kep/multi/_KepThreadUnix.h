// Private inline helpers of the POSIX thread layer, for the library's own hot
// paths. Not part of the public interface.
#ifndef KEP_MULTI_KEPTHREADUNIX_H
#define KEP_MULTI_KEPTHREADUNIX_H

#include <pthread.h>
#include <sys/single_threaded.h>

#include <atomic>
#include <cstdint>

// True while the process has never started a second thread. The C library
// clears it before the first pthread_create() returns, so counts updated without
// atomic instructions up to then are visible to every later thread.
inline bool _KepThrdSingleThreaded() noexcept { return __libc_single_threaded != 0; }

// The calling thread's pthread_self(), without a call: on x86-64 the C library's
// thread id is the thread pointer itself.
inline unsigned long _KepThrdSelf() noexcept {
#if defined(__x86_64__) && defined(__GLIBC__)
  return reinterpret_cast<unsigned long>(__builtin_thread_pointer());
#else
  return static_cast<unsigned long>(pthread_self());
#endif
}

// Layout of a mutex semaphore block (_KepMSemCreate): an 8-byte signature, then
// the mutex.
struct _KepMutexSemaphore {
  char signature[8];
  pthread_mutex_t mutex;
};

// Sleeps the calling thread while `*word` holds `expected` (until a wake-up, a
// signal, or at once when the word has changed); the caller checks the word
// again.
void _KepFutexWait(std::atomic<uint32_t>* word, uint32_t expected) noexcept;
// Wakes up to `count` threads sleeping on `word`.
void _KepFutexWake(std::atomic<uint32_t>* word, int count) noexcept;

#endif  // KEP_MULTI_KEPTHREADUNIX_H
