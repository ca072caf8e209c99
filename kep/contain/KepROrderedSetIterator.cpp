#include "kep/contain/KepROrderedSetIterator.h"

#include "kep/base/KepFactory.h"

KepROrderedSetIterator::KepROrderedSetIterator() noexcept : set(nullptr), position() {}

KepROrderedSetIterator::KepROrderedSetIterator(_KepOrderedSetImpl* s, _KepOrderedSetIter p) noexcept
    : set(s), position(p) {}

KepObject KepROrderedSetIterator::nextElement() {
  if (set != nullptr && position.node != nullptr && position != set->end()) ++position;
  return get();
}

KepObject KepROrderedSetIterator::get() const {
  if (set == nullptr || position.node == nullptr || position == set->end()) return KepObject();
  return KepObject(*static_cast<KepObject*>(*position));
}

KEP_REGISTER_LIBRARY_CLASS(OrderedSetIterator);
