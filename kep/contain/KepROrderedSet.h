// KepROrderedSet: the body of KepOrderedSet.
#ifndef KEP_CONTAIN_KEPRORDEREDSET_H
#define KEP_CONTAIN_KEPRORDEREDSET_H

#include <atomic>

#include "kep/base/KepRObject.h"
#include "kep/contain/KepOrderedSet.h"
#include "kep/contain/_KepOrderedSetImpl.h"

class KepROrderedSetIterator;

// The keys of the tree are heap handles (`KepObject*`) made by newBridge() of
// the objects put; the comparison function is null until setComparator(). The
// destructor frees every handle still held.
//
// find() and begin() answer a new iterator object each time. To spare an
// allocation per lookup the set keeps one iterator body in reserve and hands it
// out again whenever no handle on it is left outside the set.
//
// Thread safety: see KepOrderedSet.
class KEP_API KepROrderedSet : public KepRObject {
  KEP_BODY_IDENTITY(OrderedSet, KepRObject)

 public:
  // An empty set without a comparison function.
  KepROrderedSet() noexcept;
  // Frees the handles of the elements, in order.
  ~KepROrderedSet() override;

  // The empty string.
  KepString toString() const override;

  // The tree, for iterators and checks.
  _KepOrderedSetImpl& impl() noexcept { return set; }

 private:
  // An iterator at `position`: the spare body when nobody else holds it.
  KepOrderedSetIterator iteratorAt(_KepOrderedSetIter position) const;
  // The same for a process with several threads, where concurrent lookups take
  // the spare out of its slot while they inspect it.
  KepOrderedSetIterator sharedIteratorAt(_KepOrderedSetIter position) const;

  _KepOrderedSetImpl set;
  // The spare iterator body (one reference held by the set), or null. Taken out
  // of the slot while it is inspected, so concurrent lookups never share it.
  mutable std::atomic<KepROrderedSetIterator*> spare;

 public:
  // createAnother() and the operations of the table (see the handle class).
  KEP_BODY_CREATE_ANOTHER(OrderedSet)
  KEP_METHODS_OrderedSet(KEP_DECLARE_METHOD)
};

#endif  // KEP_CONTAIN_KEPRORDEREDSET_H
