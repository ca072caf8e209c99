#include "kep/contain/KepIntMap.h"

#include "kep/contain/_KepOrderedSetImpl.h"

unsigned long KepIntMapComparator(void* a, void* b) {
  if (a == nullptr || b == nullptr) return 0;
  return static_cast<KepIntMapEntry*>(a)->key < static_cast<KepIntMapEntry*>(b)->key ? 1 : 0;
}

KepIntMap::KepIntMap() : set(new _KepOrderedSetImpl(KepIntMapComparator)) {}

KepIntMap::~KepIntMap() {
  for (_KepOrderedSetIter it = set->begin(); it != set->end(); ++it)
    delete static_cast<KepIntMapEntry*>(*it);
  delete set;
}

void KepIntMap::setComparator(KepCompareFunction compare) { set->set_comp(compare); }

int KepIntMap::size() { return static_cast<int>(set->size()); }

unsigned long KepIntMap::remove(int key) {
  KepIntMapEntry probe{key, 0};
  _KepOrderedSetIter it = set->find(&probe);
  if (it == set->end()) return 0;
  auto* entry = static_cast<KepIntMapEntry*>(*it);
  set->erase(it);
  delete entry;
  return 1;
}

KepIntMapEntry* KepIntMap::find(int key) {
  KepIntMapEntry probe{key, 0};
  _KepOrderedSetIter it = set->find(&probe);
  return it == set->end() ? nullptr : static_cast<KepIntMapEntry*>(*it);
}

KepIntMapEntry* KepIntMap::put(int key, int value) {
  KepIntMapEntry* entry = find(key);
  if (entry != nullptr) {
    entry->value = value;
    return entry;
  }
  entry = new KepIntMapEntry{key, value};
  auto placed = set->insert(entry);
  if (!placed.second) {
    // An equal entry that find() did not report (a derived find), or no order
    // at all: the new entry is not kept.
    delete entry;
    if (placed.first == set->end()) return nullptr;
    entry = static_cast<KepIntMapEntry*>(*placed.first);
    entry->value = value;
  }
  return entry;
}
