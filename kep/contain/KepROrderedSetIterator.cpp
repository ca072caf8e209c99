#include "kep/contain/KepROrderedSetIterator.h"

#include "kep/base/KepFactory.h"

KepROrderedSetIterator::KepROrderedSetIterator() noexcept : set(nullptr), position() {}

KepROrderedSetIterator::KepROrderedSetIterator(_KepOrderedSetImpl* s, _KepOrderedSetIter p) noexcept
    : set(s), position(p) {}

void KepROrderedSetIterator::restart(_KepOrderedSetImpl* s, _KepOrderedSetIter p) noexcept {
  set = s;
  position = p;
  // Written only when a caller changed them: the usual reuse costs no store.
  if (service.load(std::memory_order_relaxed) != 0) service.store(0, std::memory_order_relaxed);
  uint8_t f = flags.load(std::memory_order_relaxed);
  auto fresh = static_cast<uint8_t>((f & kFlagOwnsSemaphore) | kFlagPublish);
  if (f != fresh) flags.store(fresh, std::memory_order_relaxed);
}

KepObject KepROrderedSetIterator::nextElement() {
  if (set != nullptr && position.node != nullptr && position != set->end()) ++position;
  return get();
}

KepObject KepROrderedSetIterator::get() const {
  if (set == nullptr || position.node == nullptr || position == set->end()) return KepObject();
  return KepObject(*static_cast<KepObject*>(*position));
}

KEP_REGISTER_LIBRARY_CLASS(OrderedSetIterator);
