#include "kep/multi/_KepSemaphore.h"

#include "kep/multi/_KepThread.h"
#include "kep/multi/_KepThreadUnix.h"

namespace {

constexpr uint32_t kFree = 0;
constexpr uint32_t kHeld = 1;
constexpr uint32_t kContended = 2;

// An owner that entered while it was the process's only thread holds the lock
// without the word: the thread that took the word waits for its last unlock.
[[gnu::noinline]] void waitForOwnerToLeave(std::atomic<unsigned long>& owner) {
  for (unsigned long nap = 1; owner.load(std::memory_order_acquire) != 0;
       nap = nap < 8 ? nap * 2 : 8) {
    _KepThrdDelay(nap);
  }
}

}  // namespace

_KepSemaphore::~_KepSemaphore() { destroy(); }

// Only the owner ever finds its own id in `owner`, so the relaxed reads below
// are exact for the calling thread. The lock word carries the ordering between
// owners: taking it acquires, freeing it releases.
void _KepSemaphore::lock() {
  unsigned long self = _KepThrdSelf();
  if (owner.load(std::memory_order_relaxed) == self) {
    ++depth;
    return;
  }
  if (_KepThrdSingleThreaded()) {
    // The only thread of the process: nobody else holds the lock or waits.
    owner.store(self, std::memory_order_relaxed);
    depth = 1;
    holdsWord = false;
    return;
  }
  uint32_t seen = kFree;
  if (!word.compare_exchange_strong(seen, kHeld, std::memory_order_acquire,
                                    std::memory_order_relaxed)) {
    waitContended(seen);
  }
  if (owner.load(std::memory_order_acquire) != 0) waitForOwnerToLeave(owner);
  owner.store(self, std::memory_order_relaxed);
  depth = 1;
  holdsWord = true;
}

// The lock was seen taken: mark it contended, so that its release wakes a
// waiter, and sleep until an exchange finds it free. A thread that takes the
// lock this way leaves it marked contended, which costs at most one needless
// wake-up at its release.
[[gnu::noinline]] void _KepSemaphore::waitContended(uint32_t seen) {
  if (seen != kContended) seen = word.exchange(kContended, std::memory_order_acquire);
  while (seen != kFree) {
    _KepFutexWait(&word, kContended);
    seen = word.exchange(kContended, std::memory_order_acquire);
  }
}

void _KepSemaphore::unlock() {
  if (owner.load(std::memory_order_relaxed) != _KepThrdSelf() || depth == 0) return;
  if (--depth != 0) return;
  bool release = holdsWord;
  holdsWord = false;
  owner.store(0, std::memory_order_release);
  if (release && word.exchange(kFree, std::memory_order_release) == kContended) {
    _KepFutexWake(&word, 1);
  }
}

void _KepSemaphore::destroy() {
  owner.store(0, std::memory_order_relaxed);
  depth = 0;
  holdsWord = false;
  word.store(kFree, std::memory_order_release);
}
