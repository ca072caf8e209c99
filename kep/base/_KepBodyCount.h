// _KepBodyCount: the reference counting of bodies, shared by the bodies' own
// addRef()/release() and the handle routines, so that handle copies and
// destructions count without a call. Internal to the library.
#ifndef KEP_BASE_KEPBODYCOUNT_H
#define KEP_BASE_KEPBODYCOUNT_H

#include <atomic>
#include <cstdint>

#include "kep/base/KepRObject.h"
#include "kep/multi/_KepThreadUnix.h"

struct _KepBodyCount {
  // Adds one reference. A process that never started a second thread needs no
  // locked instruction.
  static void addRef(KepRObject const* body) noexcept {
    // The creating thread's first reference entitles the body to its lock. Once
    // the semaphore exists `ownerOrLock` holds its address, never a thread's.
    if (body->creatorCounted.load(std::memory_order_relaxed) == 0 &&
        body->ownerOrLock.load(std::memory_order_relaxed) == _KepThrdSelf()) {
      const_cast<KepRObject*>(body)->creatorCounted.store(1, std::memory_order_release);
    }
    std::atomic<int64_t>& count = body->refCount;
    if (_KepThrdSingleThreaded()) {
      count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    } else {
      count.fetch_add(1, std::memory_order_relaxed);
    }
  }

  // Drops one reference and frees the body with the last one (see
  // KepRObject::destroy). A body with a registered outer object takes the outer
  // object's rules (out of line).
  static void release(KepRObject const* body) {
    if (body->realOuterObj.load(std::memory_order_acquire) != nullptr) {
      body->releaseWithOuter();
      return;
    }
    std::atomic<int64_t>& count = body->refCount;
    // The holder of the only reference needs no locked instruction either: no
    // other thread can be counting on this body.
    int64_t before = count.load(std::memory_order_acquire);
    if (before != 1) {
      if (_KepThrdSingleThreaded()) {
        count.store(before - 1, std::memory_order_relaxed);
      } else {
        before = count.fetch_sub(1, std::memory_order_acq_rel);
      }
    }
    if (before == 1) KepRObject::destroy(body);
  }
};

#endif  // KEP_BASE_KEPBODYCOUNT_H
