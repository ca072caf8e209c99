#include "kep/base/KepTagRange.h"

#include <cstdint>

#include "kep/base/KepRTagEntry.h"
#include "kep/base/KepRTagManager.h"
#include "kep/base/KepRTagNameSpace.h"
#include "kep/base/KepTagNameSpace.h"
#include "kep/base/_KepTagLock.h"

namespace {

constexpr int kGroupSize = 32;

KepTagRange* rangeAt(_KepArrayImpl<KepTagRange*>& ranges, int i) {
  return *ranges._getEntry(i, nullptr, 0, nullptr, nullptr);
}

}  // namespace

KepTagRange::KepTagRange(KepTagNameSpace const& ns, int first, int last)
    : KepTagRange(static_cast<KepRTagNameSpace*>(ns.getRealKepObj()), first, last) {}

KepTagRange::KepTagRange(KepRTagNameSpace* ns, int first, int last)
    : count(0), end(last), start(first), owner(ns), inOwnerList(false), inManagerList(false) {}

KepTagRange::~KepTagRange() {
  for (int i = 0; i < count; ++i) {
    KepTagEntry* h = *entries._getEntry(i, nullptr, 0, groups[i / kGroupSize], nullptr);
    if (h != nullptr) h->freeBridge();
  }
}

void KepTagRange::place() {
  KepRTagManager* manager = owner != nullptr ? owner->getManager() : nullptr;
  if (manager == nullptr) return;
  _KepTagLock lock;
  if (!isUnplaced()) return;
  int first = manager->getNextRange(kBlockSize);
  if (first == 0) return;  // no tags left
  start = first;
  end = first + (kBlockSize - 1);
}

int KepTagRange::getStart() {
  if (isUnplaced()) place();
  return start;
}

int KepTagRange::getEnd() {
  if (isUnplaced()) place();
  return end;
}

int KepTagRange::add(KepTagEntry* entry) {
  if (entry == nullptr) return 0;
  if (count > 0 && int64_t(getStart()) + count >= int64_t(getEnd())) {
    // Full: the entry opens the namespace's next block.
    KepRTagManager* manager = owner != nullptr ? owner->getManager() : nullptr;
    if (manager == nullptr) {
      entry->freeBridge();
      return 0;
    }
    auto* next = new KepTagRange(owner, 0, 0);
    if (next->add(entry) == 0 || owner->listRange(next) == 0) {
      delete next;
      return 0;
    }
    manager->listRange(next);
    owner->setRange(next);
    return 1;
  }
  int first = getStart();
  if (isUnplaced()) {
    entry->freeBridge();
    return 0;
  }
  int tag = first + count;
  auto* body = static_cast<KepRTagEntry*>(entry->getRealKepObj());
  body->setTag(tag);
  body->placed();
  entries.resize(count + 1);
  if (count % kGroupSize == 0) groups.push_back(entries._findGroup(count));
  *entries._getEntry(count, nullptr, 0, groups.back(), nullptr) = entry;
  ++count;
  if (KepRTagManager* manager = indexer()) manager->indexEntry(tag, body);
  return 1;
}

KepRTagManager* KepTagRange::indexer() const {
  if (!inOwnerList || !inManagerList || owner == nullptr) return nullptr;
  return owner->joinedManager();
}

void KepTagRange::joined(bool byManager) {
  (byManager ? inManagerList : inOwnerList) = true;
  KepRTagManager* manager = indexer();
  if (manager == nullptr) return;
  for (int i = 0; i < count; ++i) manager->indexEntry(start + i, getEntryBody(start + i));
}

KepTagEntry* KepTagRange::getEntry(int tag) const {
  int64_t i = int64_t(tag) - start;
  if (i < 0 || i >= count) return nullptr;
  auto& items = const_cast<_KepArrayImpl<KepTagEntry*>&>(entries);
  return *items._getEntry(static_cast<int>(i), nullptr, 0,
                          groups[static_cast<size_t>(i / kGroupSize)], nullptr);
}

KepRTagEntry* KepTagRange::getEntryBody(int tag) const {
  KepTagEntry* h = getEntry(tag);
  // The range's handles are made on the entry bodies themselves.
  return h != nullptr ? static_cast<KepRTagEntry*>(h->getTarget()) : nullptr;
}

KepTagNameSpace KepTagRange::getNameSpace() const {
  return KepTagNameSpace(static_cast<KepBridgeToObject*>(owner));
}

int KepTagRange::load(int n, KepTagTable const* table) {
  if (n < 0 || owner == nullptr || (n > 0 && table == nullptr)) return 0;
  for (int i = 0; i < n; ++i) {
    if (table[i] == nullptr || table[i][0] == 0) return 0;
  }
  for (int i = 0; i < n; ++i) {
    int tag;
    if (!owner->addName(reinterpret_cast<signed char const*>(table[i]), tag)) return 0;
  }
  return 1;
}

void KepTagRange::set(int first, int size) {
  // Moving a listed range reorders the lists under their searches: the manager
  // stops trusting its index and searches from then on.
  if ((inOwnerList || inManagerList) && owner != nullptr) {
    if (KepRTagManager* manager = owner->joinedManager()) manager->stopIndexing();
  }
  start = first;
  end = static_cast<int>(int64_t(first) + size - 1);
}

KepTagRange* KepTagRange::find(_KepArrayImpl<KepTagRange*>& ranges, int tag) {
  int lo = 0;
  int hi = ranges.size() - 1;
  while (lo <= hi) {
    int mid = lo + (hi - lo) / 2;
    KepTagRange* r = rangeAt(ranges, mid);
    if (tag < r->start) {
      hi = mid - 1;
    } else if (tag > r->end) {
      lo = mid + 1;
    } else {
      return r;
    }
  }
  return nullptr;
}

int KepTagRange::insert(_KepArrayImpl<KepTagRange*>& ranges, KepTagRange* range) {
  if (range == nullptr) return 0;
  int first = range->getStart();
  if (range->isUnplaced()) return 0;
  int n = ranges.size();
  int lo = 0;
  int hi = n;
  while (lo < hi) {
    int mid = lo + (hi - lo) / 2;
    if (rangeAt(ranges, mid)->start < first) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  if (lo < n && rangeAt(ranges, lo)->start == first) return 0;
  ranges.resize(n + 1);
  ranges.insert(lo, range);
  return 1;
}
