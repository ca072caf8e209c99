#include "kep/multi/_KepSemaphore.h"

#include "kep/multi/_KepThreadUnix.h"

namespace {

constexpr uint32_t kFree = 0;
constexpr uint32_t kHeld = 1;
constexpr uint32_t kContended = 2;

}  // namespace

_KepSemaphore::~_KepSemaphore() { destroy(); }

// Only the owner ever finds its own id in `owner`, so the relaxed reads below
// are exact for the calling thread. The lock word carries the ordering: taking
// it acquires, freeing it releases.
void _KepSemaphore::lock() {
  unsigned long self = _KepThrdSelf();
  if (owner.load(std::memory_order_relaxed) == self) {
    ++depth;
    return;
  }
  uint32_t seen = kFree;
  if (!word.compare_exchange_strong(seen, kHeld, std::memory_order_acquire,
                                    std::memory_order_relaxed)) {
    waitContended(seen);
  }
  owner.store(self, std::memory_order_relaxed);
  depth = 1;
}

// The lock was seen taken: mark it contended, so that its release wakes a
// waiter, and sleep until an exchange finds it free. A thread that takes the
// lock this way leaves it marked contended, which costs at most one needless
// wake-up at its release.
void _KepSemaphore::waitContended(uint32_t seen) {
  if (seen != kContended) seen = word.exchange(kContended, std::memory_order_acquire);
  while (seen != kFree) {
    _KepFutexWait(&word, kContended);
    seen = word.exchange(kContended, std::memory_order_acquire);
  }
}

void _KepSemaphore::unlock() {
  if (owner.load(std::memory_order_relaxed) != _KepThrdSelf() || depth == 0) return;
  if (--depth != 0) return;
  owner.store(0, std::memory_order_relaxed);
  if (word.exchange(kFree, std::memory_order_release) == kContended) _KepFutexWake(&word, 1);
}

void _KepSemaphore::destroy() {
  owner.store(0, std::memory_order_relaxed);
  depth = 0;
  word.store(kFree, std::memory_order_release);
}
