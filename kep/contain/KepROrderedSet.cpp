#include "kep/contain/KepROrderedSet.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepString.h"
#include "kep/contain/KepROrderedSetIterator.h"

KepROrderedSet::KepROrderedSet() noexcept : set(nullptr), spare(nullptr) {}

KepROrderedSet::~KepROrderedSet() {
  if (KepROrderedSetIterator* it = spare.exchange(nullptr)) it->release();
  for (_KepOrderedSetIter it = set.begin(); it != set.end(); ++it)
    static_cast<KepObject*>(*it)->freeBridge();
  set.destroy();
}

void KepROrderedSet::setComparator(KepCompareFunction compare) { set.set_comp(compare); }

KepOrderedSetIterator KepROrderedSet::iteratorAt(_KepOrderedSetIter position) const {
  auto* tree = const_cast<_KepOrderedSetImpl*>(&set);
  KepROrderedSetIterator* it = spare.exchange(nullptr, std::memory_order_acquire);
  if (it != nullptr && it->getRefCount() == 1) {
    // Only the set's own reference is left: nobody can observe the reuse.
    it->restart(tree, position);
    KepOrderedSetIterator result(it);
    spare.store(it, std::memory_order_release);
    return result;
  }
  auto* fresh = new KepROrderedSetIterator(tree, position);
  KepOrderedSetIterator result(fresh);
  if (it == nullptr) {
    fresh->addRef();  // becomes the spare
    it = fresh;
  }
  // Put the spare back; one that another lookup put meanwhile is given up.
  if (KepROrderedSetIterator* other = spare.exchange(it, std::memory_order_acq_rel))
    other->release();
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
