// _KepSemaphore: the recursive lock of the object layer.
#ifndef KEP_MULTI_KEPSEMAPHORE_H
#define KEP_MULTI_KEPSEMAPHORE_H

#include <atomic>
#include <cstdint>

#include "kep/base/KepDefs.h"

// A recursive lock. A zero-filled (default-constructed) _KepSemaphore is a free
// lock, and a lock holds no system resource: it is one lock word that threads
// wait on in the kernel only while it is contended, an owner word and a
// recursion depth.
//
// While the process has only ever had one thread, nobody can hold or wait for
// the lock but the caller, and lock() only records the owner. A thread started
// while the lock is held that way takes the lock word and then waits for that
// owner's last unlock() before it enters.
//
// lock() by the owning thread only deepens the recursion; every lock() needs one
// unlock() before another thread gets in. unlock() by a thread that does not own
// the lock, or on a free lock, changes nothing. An uncontended lock() and the
// unlock() that frees the lock each make at most one atomic read-modify-write.
//
// Thread safety: lock() and unlock() may be called from any thread. destroy() and
// the destructor must not run while another thread holds or waits for the lock.
class KEP_API _KepSemaphore {
 public:
  _KepSemaphore() noexcept = default;
  ~_KepSemaphore();
  _KepSemaphore(_KepSemaphore const&) = delete;
  _KepSemaphore& operator=(_KepSemaphore const&) = delete;

  // Takes the lock, waiting without limit.
  void lock();
  // Releases one level of the lock held by the calling thread.
  void unlock();
  // Makes the lock free and unused, whoever held it.
  void destroy();

  // The owning thread's id, 0 when free.
  unsigned long getOwner() const noexcept { return owner.load(std::memory_order_relaxed); }
  // The recursion depth; exact for the owning thread.
  uint32_t getDepth() const noexcept { return depth; }

 private:
  void waitContended(uint32_t seen);

  // Free, held, or contended: held, and a thread may be waiting for it.
  std::atomic<uint32_t> word{0};
  // Recursion depth; only the owner touches it.
  uint32_t depth = 0;
  // Owner thread id; read without the lock to detect re-entry.
  std::atomic<unsigned long> owner{0};
  // Whether the owner took the lock word (false when it entered while the
  // process had one thread); only the owner touches it.
  bool holdsWord = false;
};

#endif  // KEP_MULTI_KEPSEMAPHORE_H
