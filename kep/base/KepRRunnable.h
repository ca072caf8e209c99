// KepRRunnable: the body of KepRunnable.
#ifndef KEP_BASE_KEPRRUNNABLE_H
#define KEP_BASE_KEPRRUNNABLE_H

#include "kep/base/KepRObject.h"
#include "kep/base/KepRunnable.h"

// The base runnable: run() does nothing and answers 0. Derived bodies (worker
// threads) and callers' outer objects supply the work.
class KEP_API KepRRunnable : public KepRObject {
  KEP_BODY_IDENTITY(Runnable, KepRObject)

 public:
  KEP_BODY_CREATE_ANOTHER(Runnable)

  KEP_METHODS_Runnable(KEP_DECLARE_METHOD)
};

#endif  // KEP_BASE_KEPRRUNNABLE_H
