// Private inline helpers of the POSIX thread layer, for the library's own hot
// paths. Not part of the public interface.
#ifndef KEP_MULTI_KEPTHREADUNIX_H
#define KEP_MULTI_KEPTHREADUNIX_H

#include <pthread.h>
#include <sys/single_threaded.h>

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

// Lock and unlock of a mutex semaphore that the caller made itself and keeps, so
// that its signature needs no check. Answer pthread's result.
inline int _KepMSemLockOwn(void* sem) noexcept {
  return pthread_mutex_lock(&static_cast<_KepMutexSemaphore*>(sem)->mutex);
}
inline int _KepMSemUnlockOwn(void* sem) noexcept {
  return pthread_mutex_unlock(&static_cast<_KepMutexSemaphore*>(sem)->mutex);
}

#endif  // KEP_MULTI_KEPTHREADUNIX_H
