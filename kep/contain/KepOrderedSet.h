// KepOrderedSet: handle on a sorted set of objects.
#ifndef KEP_CONTAIN_KEPORDEREDSET_H
#define KEP_CONTAIN_KEPORDEREDSET_H

#include "kep/base/KepObject.h"
#include "kep/contain/KepCompareFunction.h"
#include "kep/contain/KepOrderedSetIterator.h"

// The operations of KepOrderedSet, in the order of the body's virtual operations.
// clang-format off
#define KEP_METHODS_OrderedSet(X)                                                         \
  X(OrderedSet, void, setComparator, (KepCompareFunction compare), (compare), , 1)        \
  X(OrderedSet, KepOrderedSetIterator, begin, (), (), const, 0)                           \
  X(OrderedSet, int, size, (), (), const, 0)                                              \
  X(OrderedSet, unsigned long, remove, (KepObject& object), (object), , 1)                \
  X(OrderedSet, KepOrderedSetIterator, find, (KepObject& object), (object), const, 0)     \
  X(OrderedSet, KepObject, put, (KepObject& object), (object), , 1)
// clang-format on

// A set of objects kept in the order of a comparison function, each value at
// most once. The function receives two `KepObject*` (the set's own handles on
// its elements, or the caller's argument) and answers non-zero when the first is
// ordered before the second; install it with setComparator() before the first
// put(), find() or remove(). Without one, put() adds nothing, find() answers a
// null iterator and remove() false.
//
// - put(object): adds a handle on `object` unless an equal element is present;
//   always answers a null object. A put that finds an equal element leaves the
//   set unchanged but does not give back the handle it made for the rejected
//   object: that object keeps one reference for good. Avoid putting duplicates
//   of objects whose release matters.
// - find(object): an iterator on the equal element, or a null iterator.
// - begin(): an iterator on the smallest element, or a null iterator when the
//   set is empty.
// - remove(object): takes the equal element out and answers true, or false when
//   there is none. The set's handle on the removed element is not released
//   either: the element keeps one reference for good.
// - size(): the number of elements. toString(): the empty string.
// The set's body releases its handles on the elements it holds when it goes.
//
// Thread safety: setComparator, remove and put run under the set's lock; the
// other operations and the iterators do not lock, so share a set between
// threads only under the owner's lock.
class KEP_API KepOrderedSet : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepOrderedSet, KepObject)

 public:
  KEP_METHODS_OrderedSet(KEP_DECLARE_METHOD)
};

KEP_METHODS_OrderedSet(KEP_DECLARE_BRIDGE)

#endif  // KEP_CONTAIN_KEPORDEREDSET_H
