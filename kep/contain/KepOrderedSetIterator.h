// KepOrderedSetIterator: handle on a position in an ordered set.
#ifndef KEP_CONTAIN_KEPORDEREDSETITERATOR_H
#define KEP_CONTAIN_KEPORDEREDSETITERATOR_H

#include "kep/base/KepObject.h"

// The operations of KepOrderedSetIterator, in the order of the body's virtual
// operations.
// clang-format off
#define KEP_METHODS_OrderedSetIterator(X)                                  \
  X(OrderedSetIterator, KepObject, nextElement, (), (), , 0)               \
  X(OrderedSetIterator, KepObject, get, (), (), const, 0)
// clang-format on

// A position in a KepOrderedSet, made by the set's begin() or find().
// - get(): the element at the position, or a null object at the end.
// - nextElement(): moves one element on (staying at the end once there) and
//   answers get().
// A walk over a set:
//   KepOrderedSetIterator it = set.begin();
//   for (KepObject e = it.get(); !e.isNull(); e = it.nextElement()) { ... }
//
// The iterator does not keep its set alive: it must not be used after the set's
// body is gone, nor after the element it stands on was removed.
//
// Thread safety: none; an iterator and its set belong to one thread at a time.
class KEP_API KepOrderedSetIterator : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepOrderedSetIterator, KepObject)

 public:
  KEP_METHODS_OrderedSetIterator(KEP_DECLARE_METHOD)
};

KEP_METHODS_OrderedSetIterator(KEP_DECLARE_BRIDGE)

#endif  // KEP_CONTAIN_KEPORDEREDSETITERATOR_H
