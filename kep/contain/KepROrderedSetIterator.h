// KepROrderedSetIterator: the body of KepOrderedSetIterator.
#ifndef KEP_CONTAIN_KEPRORDEREDSETITERATOR_H
#define KEP_CONTAIN_KEPRORDEREDSETITERATOR_H

#include "kep/base/KepRObject.h"
#include "kep/contain/KepOrderedSetIterator.h"
#include "kep/contain/_KepOrderedSetImpl.h"

// A raw pointer to a set's tree and one position in it. It does not keep the set
// alive. A default-made iterator belongs to no set and answers null objects.
//
// Thread safety: see KepOrderedSetIterator.
class KEP_API KepROrderedSetIterator : public KepRObject {
  KEP_BODY_IDENTITY(OrderedSetIterator, KepRObject)

 public:
  // An iterator on no set.
  KepROrderedSetIterator() noexcept;
  // An iterator at `position` of `set`.
  KepROrderedSetIterator(_KepOrderedSetImpl* set, _KepOrderedSetIter position) noexcept;

  // Makes an iterator that nobody else references again as new: at `position`
  // of `set`, service 0, publishing on, no asynchronous interest.
  void restart(_KepOrderedSetImpl* s, _KepOrderedSetIter p) noexcept {
    set = s;
    position = p;
    // Written only when a caller changed them: the usual reuse costs no store.
    if (service.load(std::memory_order_relaxed) != 0) service.store(0, std::memory_order_relaxed);
    uint8_t f = flags.load(std::memory_order_relaxed);
    auto fresh = static_cast<uint8_t>((f & kFlagOwnsSemaphore) | kFlagPublish);
    if (f != fresh) flags.store(fresh, std::memory_order_relaxed);
  }

 private:
  _KepOrderedSetImpl* set;
  _KepOrderedSetIter position;

 public:
  // createAnother() and the operations of the table (see the handle class).
  KEP_BODY_CREATE_ANOTHER(OrderedSetIterator)
  KEP_METHODS_OrderedSetIterator(KEP_DECLARE_METHOD)
};

#endif  // KEP_CONTAIN_KEPRORDEREDSETITERATOR_H
