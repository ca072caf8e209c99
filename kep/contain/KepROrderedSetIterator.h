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
  void restart(_KepOrderedSetImpl* set, _KepOrderedSetIter position) noexcept;

 private:
  _KepOrderedSetImpl* set;
  _KepOrderedSetIter position;

 public:
  // createAnother() and the operations of the table (see the handle class).
  KEP_BODY_CREATE_ANOTHER(OrderedSetIterator)
  KEP_METHODS_OrderedSetIterator(KEP_DECLARE_METHOD)
};

#endif  // KEP_CONTAIN_KEPRORDEREDSETITERATOR_H
