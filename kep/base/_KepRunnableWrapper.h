// _KepRunnableWrapper: carries a runnable to the thread that runs it.
#ifndef KEP_BASE_KEPRUNNABLEWRAPPER_H
#define KEP_BASE_KEPRUNNABLEWRAPPER_H

#include "kep/base/KepRunnable.h"

// Made by KepProcess::createThread on the creating thread, run and deleted on the
// new thread. It holds a handle on the runnable (on a caller's outer object, the
// object itself), so the runnable lives at least until the wrapper is deleted.
class KEP_API _KepRunnableWrapper {
 public:
  explicit _KepRunnableWrapper(KepRunnable const& runnable) : runnable_(runnable) {}
  _KepRunnableWrapper(_KepRunnableWrapper const&) = delete;
  _KepRunnableWrapper& operator=(_KepRunnableWrapper const&) = delete;

  // Calls the runnable's run() and answers its result.
  int run() { return runnable_.run(); }

 private:
  KepRunnable runnable_;
};

#endif  // KEP_BASE_KEPRUNNABLEWRAPPER_H
