// KepRThread: the body of KepThread.
#ifndef KEP_BASE_KEPRTHREAD_H
#define KEP_BASE_KEPRTHREAD_H

#include <atomic>
#include <cstdint>
#include <mutex>

#include "kep/base/KepRObject.h"
#include "kep/base/KepThread.h"
#include "kep/xml/KepDOMElement.h"

// A thread's object: its name, its id and its control block (the memory handle
// of the thread layer), or no block for a thread the library did not start.
// Operations are those of KepThread, whose error stack lives here.
//
// Lifecycle: _init(tcb) runs on the thread it describes and registers the object
// in the process thread table; _deInit() takes it out again. The object frees its
// control block, if it still holds one, when it is destroyed; a thread that is
// still running then loses its steering words (its calls on them are refused).
//
// Thread safety: every operation may be called from any thread.
class KEP_API KepRThread : public KepRObject {
  KEP_BODY_IDENTITY(Thread, KepRObject)

 public:
  KepRThread();
  ~KepRThread() override;
  KEP_BODY_CREATE_ANOTHER(Thread)

  KEP_METHODS_Thread(KEP_DECLARE_METHOD)

      // Binds the object to the calling thread and to `tcb` (null for a thread the
      // library did not start): the id becomes the low 32 bits of pthread_self(),
      // the name is taken from the block unless one was set, and a handle on the
      // object is added to the thread table.
      void _init(void* tcb);
  // Removes the object from the thread table; id and control block become 0.
  void _deInit();

  // Gives the object its name (at most 23 characters are kept by the caller).
  void setThreadName(KepString const& name);
  // Records the control block of a thread that has been started but may not
  // have run _init yet; a block already recorded is kept.
  void adoptControlBlock(void* tcb);
  // The control-block handle, or null.
  void* getControlBlock() const { return tcb.load(std::memory_order_acquire); }

  // The thread object behind `handle`, or null when it is not a KepRThread.
  static KepRThread* fromHandle(KepObject const& handle);

 private:
  mutable std::mutex nameMutex;
  KepString threadName;
  std::atomic<uint32_t> threadID;
  std::atomic<void*> tcb;
  // A new element of class "DomElement" named `name`, made through this object.
  KepDOMElement newNamedElement(char const* name) const;
  // The new element of an error named by `tag` (a mark for 0).
  KepDOMElement newErrorElement(int tag) const;

  // The error stack ("ErrorStack", null until the first error) and the error
  // data ("ErrorData", null until asked for). Only the thread the object
  // describes changes them.
  KepDOMElement errors;
  KepDOMElement errorData;
};

#endif  // KEP_BASE_KEPRTHREAD_H
