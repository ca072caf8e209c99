// _KepTagLock: holds the tag lock (lock 5 of the process shared-data store) for
// a scope.
#ifndef KEP_BASE_KEPTAGLOCK_H
#define KEP_BASE_KEPTAGLOCK_H

#include "kep/base/KepDefs.h"

// The tag lock guards all tag data of the process: every tag manager, namespace,
// range and the names they hold. It is recursive, so code holding it may call
// operations that take it again.
//
// Outside Kep::init ... Kep::destroy, when the store has no locks, a lock of the
// library's own stands in (the store must not come or go while tags are in use
// on other threads). While the process has never started a second thread
// nothing can compete for the data, and no lock is taken at all. A scope that began that way stays
// unlocked to its end; it must not start a thread that uses tags while it runs
// (the tag operations never do).
class KEP_API _KepTagLock {
 public:
  _KepTagLock() noexcept;
  ~_KepTagLock();
  _KepTagLock(_KepTagLock const&) = delete;
  _KepTagLock& operator=(_KepTagLock const&) = delete;

 private:
  // 0 nothing taken, 1 the store's lock 5, 2 the stand-in lock.
  int held;
};

#endif  // KEP_BASE_KEPTAGLOCK_H
