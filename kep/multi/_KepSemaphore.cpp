#include "kep/multi/_KepSemaphore.h"

#include "kep/multi/_KepThread.h"
#include "kep/multi/_KepThreadUnix.h"

_KepSemaphore::~_KepSemaphore() { destroy(); }

void* _KepSemaphore::ensureMutex() {
  void* m = mutex.load(std::memory_order_acquire);
  if (m != nullptr) return m;
  // Creation is serialised by the process semaphore; the re-check under it keeps
  // two racing first lockers from making two mutexes.
  bool guarded = _KepMSemWait(&KepProcessSemaphore, static_cast<unsigned long>(-1)) == 0;
  m = mutex.load(std::memory_order_acquire);
  if (m == nullptr && _KepMSemCreate(&m) == 0) {
    if (!guarded) {
      // Without the process semaphore (library not loaded yet) fall back to a
      // compare-and-swap so that a losing creator frees its mutex.
      void* expected = nullptr;
      if (!mutex.compare_exchange_strong(expected, m, std::memory_order_acq_rel)) {
        _KepMSemDestroy(&m);
        m = expected;
      }
    } else {
      mutex.store(m, std::memory_order_release);
    }
  }
  if (guarded) _KepMSemSignal(&KepProcessSemaphore);
  return m;
}

// Only the owner ever finds its own id in `owner`, so the relaxed reads below
// are exact for the calling thread. The mutex is this lock's own, so it is taken
// without the signature check of _KepMSemWait.
void _KepSemaphore::lock() {
  unsigned long self = _KepThrdSelf();
  if (owner.load(std::memory_order_relaxed) == self) {
    ++depth;
    return;
  }
  void* m = mutex.load(std::memory_order_acquire);
  if (m == nullptr) m = ensureMutex();
  if (m != nullptr) _KepMSemLockOwn(m);
  owner.store(self, std::memory_order_relaxed);
  depth = 1;
}

void _KepSemaphore::unlock() {
  if (owner.load(std::memory_order_relaxed) != _KepThrdSelf() || depth == 0) return;
  if (--depth == 0) {
    owner.store(0, std::memory_order_relaxed);
    void* m = mutex.load(std::memory_order_acquire);
    if (m != nullptr) _KepMSemUnlockOwn(m);
  }
}

void _KepSemaphore::destroy() {
  void* m = mutex.exchange(nullptr, std::memory_order_acq_rel);
  if (m != nullptr) _KepMSemDestroy(&m);
  owner.store(0, std::memory_order_relaxed);
  depth = 0;
}
