// KepRunnable: an object with a run() operation that a thread executes.
#ifndef KEP_BASE_KEPRUNNABLE_H
#define KEP_BASE_KEPRUNNABLE_H

#include "kep/base/KepObject.h"

// The operations of KepRunnable, in the order of the body's virtual operations.
// clang-format off
#define KEP_METHODS_Runnable(X)                                             \
  X(Runnable, int, run, (), (), , 0)
// clang-format on

// A runnable (class 0x40038). The library's own run() does nothing and answers
// 0. A caller supplies the work by deriving an outer object and overriding run():
//
//   class Job : public KepRunnable {
//    public:
//     Job() : KepRunnable(nullptr, KepClassIdArg(KepClassID::Runnable)) {}
//     unsigned long isBridge() const override { return 0; }
//     int run() override { ...; return 1; }
//   };
//   KepProcess::createThread(0, KepString("job"), *new Job, 0);
//
// The outer object is made with new; the thread holds a handle on it while it
// runs, and it deletes itself with its last handle (the library's class must be
// registered, that is the library brought up with Kep::init).
//
// Thread safety: run() is called on the thread that runs the object; what else
// it shares is the deriving class's business.
class KEP_API KepRunnable : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepRunnable, KepObject)

 public:
  KEP_METHODS_Runnable(KEP_DECLARE_METHOD)
};

KEP_METHODS_Runnable(KEP_DECLARE_BRIDGE)

#endif  // KEP_BASE_KEPRUNNABLE_H
