#include "kep/base/_KepTagLock.h"

#include "kep/base/KepRSharedData.h"
#include "kep/multi/_KepSemaphore.h"
#include "kep/multi/_KepThreadUnix.h"

namespace {

// Guards tag objects used outside Kep::init ... Kep::destroy, when the process
// store and its locks do not exist.
_KepSemaphore gOutsideLock;

}  // namespace

_KepTagLock::_KepTagLock() noexcept : held(0) {
  if (_KepThrdSingleThreaded()) return;
  if (KepRSharedData::isCreated()) {
    KepRSharedData::lock(KEP_SCOPE_PROCESS, KEP_LOCK_TAGS);
    held = 1;
  } else {
    gOutsideLock.lock();
    held = 2;
  }
}

_KepTagLock::~_KepTagLock() {
  if (held == 1) {
    KepRSharedData::unlock(KEP_SCOPE_PROCESS, KEP_LOCK_TAGS);
  } else if (held == 2) {
    gOutsideLock.unlock();
  }
}
