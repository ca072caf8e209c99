#include "kep/contain/KepROrderedSet.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepString.h"
#include "kep/contain/KepROrderedSetIterator.h"
#include "kep/multi/_KepThreadUnix.h"

KepROrderedSet::KepROrderedSet() noexcept : set(nullptr), spare(nullptr) {}

KepROrderedSet::~KepROrderedSet() {
  if (KepROrderedSetIterator* it = spare.exchange(nullptr)) it->release();
  for (_KepOrderedSetIter it = set.begin(); it != set.end(); ++it)
    static_cast<KepObject*>(*it)->freeBridge();
  set.destroy();
}

void KepROrderedSet::setComparator(KepCompareFunction compare) { set.set_comp(compare); }

namespace {

// Takes the spare out of its slot, or puts one in and answers the one that was
// there. A process that never started a second thread needs no locked
// instruction for either.
KepROrderedSetIterator* swapSpare(std::atomic<KepROrderedSetIterator*>& slot,
                                  KepROrderedSetIterator* with) {
  if (_KepThrdSingleThreaded()) {
    KepROrderedSetIterator* old = slot.load(std::memory_order_relaxed);
    slot.store(with, std::memory_order_relaxed);
    return old;
  }
  return slot.exchange(with, std::memory_order_acq_rel);
}

}  // namespace

KepOrderedSetIterator KepROrderedSet::iteratorAt(_KepOrderedSetIter position) const {
  if (_KepThrdSingleThreaded()) {
    // No other lookup can run meanwhile: the spare may stay in its slot.
    KepROrderedSetIterator* it = spare.load(std::memory_order_relaxed);
    if (it != nullptr && it->getRefCount() == 1) {
      // Only the set's own reference is left: nobody can observe the reuse.
      it->restart(const_cast<_KepOrderedSetImpl*>(&set), position);
      return KepOrderedSetIterator(it);
    }
  }
  return sharedIteratorAt(position);
}

KepOrderedSetIterator KepROrderedSet::sharedIteratorAt(_KepOrderedSetIter position) const {
  auto* tree = const_cast<_KepOrderedSetImpl*>(&set);
  KepROrderedSetIterator* it = swapSpare(spare, nullptr);
  KepROrderedSetIterator* given;
  if (it != nullptr && it->getRefCount() == 1) {
    it->restart(tree, position);
    given = it;
  } else {
    given = new KepROrderedSetIterator(tree, position);
    if (it == nullptr) {
      given->addRef();  // becomes the spare
      it = given;
    }
  }
  // The caller's reference exists before the spare is back in its slot, so no
  // other lookup can take it for unused.
  KepOrderedSetIterator result(given);
  // Put the spare back; one that another lookup put meanwhile is given up.
  if (KepROrderedSetIterator* other = swapSpare(spare, it)) other->release();
  return result;
}

KepOrderedSetIterator KepROrderedSet::begin() const {
  if (set.empty()) return KepOrderedSetIterator();
  return iteratorAt(set.begin());
}

int KepROrderedSet::size() const { return static_cast<int>(set.size()); }

unsigned long KepROrderedSet::remove(KepObject& object) {
  _KepOrderedSetIter it = set.find(static_cast<void*>(&object));
  if (it == set.end()) return 0;
  // The set's handle on the element stays unreleased; see KepOrderedSet.
  set.erase(it);
  return 1;
}

KepOrderedSetIterator KepROrderedSet::find(KepObject& object) const {
  _KepOrderedSetIter it = set.find(static_cast<void*>(&object));
  if (it == set.end()) return KepOrderedSetIterator();
  return iteratorAt(it);
}

KepObject KepROrderedSet::put(KepObject& object) {
  if (set.key_comp() == nullptr) return KepObject();
  // A rejected duplicate's handle stays unreleased; see KepOrderedSet.
  set.insert(KepFactory::newBridge(object));
  return KepObject();
}

KepString KepROrderedSet::toString() const { return KepString(""); }

KEP_REGISTER_LIBRARY_CLASS(OrderedSet);
