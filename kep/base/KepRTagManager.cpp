#include "kep/base/KepRTagManager.h"

#include <climits>
#include <cstdint>

#include "kep/base/KepFactory.h"
#include "kep/base/KepRSharedData.h"
#include "kep/base/KepRString.h"
#include "kep/base/KepRTagEntry.h"
#include "kep/base/KepRTagNameSpace.h"
#include "kep/base/_KepTagLock.h"

namespace {

template <class T>
T* itemAt(_KepArrayImpl<T*>& items, int i) {
  return *items._getEntry(i, nullptr, 0, nullptr, nullptr);
}

KepString emptyName() { return KepString(""); }

}  // namespace

KepRTagManager::KepRTagManager() : current(nullptr), nextTag(kFirstFreeTag), indexing(true) {
  auto* first = new KepRTagNameSpace(emptyName(), emptyName(), this);
  appendNameSpace(first);
  first->addRef();
  current.store(first, std::memory_order_release);
}

KepRTagManager::~KepRTagManager() {
  for (int i = namespaces.size() - 1; i >= 0; --i) {
    KepTagNameSpace* h = itemAt(namespaces, i);
    if (h == nullptr) continue;
    static_cast<KepRTagNameSpace*>(h->getRealKepObj())->detach();
    h->freeBridge();
  }
  namespaces.resize(0);
  ranges.resize(0);
  if (KepRTagNameSpace* ns = current.load(std::memory_order_acquire)) ns->release();
}

void KepRTagManager::appendNameSpace(KepRTagNameSpace* ns) {
  namespaces[namespaces.size()] = new KepTagNameSpace(static_cast<KepBridgeToObject*>(ns));
}

KepRTagManager* KepRTagManager::process() noexcept {
  return KepRSharedData::getPointer<KepRTagManager>(KEP_SCOPE_PROCESS, KEP_SLOT_TAG_MANAGER);
}

KepRTagManager* KepRTagManager::createProcessManager() {
  _KepTagLock lock;
  KepRTagManager* m = process();
  if (m == nullptr && KepRSharedData::isCreated()) {
    m = new KepRTagManager();
    m->addRef();
    KepRSharedData::setPointer(KEP_SCOPE_PROCESS, KEP_SLOT_TAG_MANAGER, m);
  }
  return m;
}

void KepRTagManager::destroyProcessManager() {
  KepRTagManager* m;
  {
    _KepTagLock lock;
    m = process();
    KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_TAG_MANAGER, 0);
  }
  if (m != nullptr) m->release();
}

// The namespace adds under the tag lock when the name is new.
int KepRTagManager::add(KepString const& name) {
  KepRTagNameSpace* ns = current.load(std::memory_order_acquire);
  return ns != nullptr ? ns->add(name) : 0;
}

int KepRTagManager::add(signed char const* text) {
  KepRTagNameSpace* ns = current.load(std::memory_order_acquire);
  return ns != nullptr ? ns->add(text, 1) : 0;
}

int KepRTagManager::addRange(KepTagRange* range) {
  // A range from a caller may overlap others; see stopIndexing().
  stopIndexing();
  return listRange(range);
}

int KepRTagManager::listRange(KepTagRange* range) {
  _KepTagLock lock;
  if (KepTagRange::insert(ranges, range) == 0) return 0;
  KepRTagNameSpace* owner = range->getNameSpaceBody();
  if (owner != nullptr && owner->joinedManager() == this) range->joined(true);
  return 1;
}

void KepRTagManager::indexEntry(int tag, KepRTagEntry* entry) { directory.put(tag, entry); }

void KepRTagManager::stopIndexing() noexcept { indexing.store(false, std::memory_order_release); }

KepRTagEntry* KepRTagManager::entryOf(int tag) {
  KepTagRange* r = KepTagRange::find(ranges, tag);
  KepRTagNameSpace* ns = r != nullptr ? r->getNameSpaceBody() : nullptr;
  return ns != nullptr ? ns->entryOf(tag) : nullptr;
}

KepTagEntry KepRTagManager::getEntry(int tag) const {
  _KepTagLock lock;
  KepRTagEntry* e = const_cast<KepRTagManager*>(this)->entryOf(tag);
  return KepTagEntry(static_cast<KepBridgeToObject*>(e));
}

int KepRTagManager::getNextRange(int size) {
  _KepTagLock lock;
  if (size < 0 || int64_t(nextTag) + size > INT_MAX) return 0;
  int first = nextTag;
  nextTag += size;
  return first;
}

bool KepRTagManager::overlaps(int start, int end) {
  for (int i = 0, n = ranges.size(); i < n; ++i) {
    KepTagRange* r = itemAt(ranges, i);
    if (r->peekStart() <= end && r->peekEnd() >= start) return true;
  }
  return false;
}

int KepRTagManager::loadTagTable(int start, int end, int count, KepTagTable const* table) {
  _KepTagLock lock;
  KepRTagNameSpace* ns = current.load(std::memory_order_acquire);
  if (ns == nullptr || end < start || count < 0 || end == INT_MAX) return 0;
  if (start == 0 && end == 0) return 0;  // would read as an unplaced range
  int64_t size = int64_t(end) - start + 1;
  if (size > INT_MAX || overlaps(start, end)) return 0;
  auto* range = new KepTagRange(ns, 0, 0);
  range->set(start, static_cast<int>(size));
  if (end >= nextTag) nextTag = end + 1;
  KepTagRange* previous = ns->getRange();
  ns->setRange(range);
  if (range->load(count, table) == 0) {
    ns->setRange(previous);
    delete range;
    return 0;
  }
  listRange(range);
  ns->listRange(range);
  return 1;
}

int KepRTagManager::nameToTag(KepString const& name) {
  KepRString const* s = KepRString::of(name);
  if (s == nullptr || s->unitCount() == 0) return 0;
  KepRTagNameSpace* ns = current.load(std::memory_order_acquire);
  int tag = 0;
  if (ns != nullptr) ns->findName(s, tag);
  return tag;
}

KepRTagNameSpace* KepRTagManager::find(KepString const& name, KepString const& url, int& index) {
  _KepTagLock lock;
  index = -1;
  int lo = 0;
  int hi = namespaces.size() - 1;
  while (lo <= hi) {
    int mid = lo + (hi - lo) / 2;
    index = mid;
    auto* ns = static_cast<KepRTagNameSpace*>(itemAt(namespaces, mid)->getRealKepObj());
    int c = ns->getName().compareTo(name);
    if (c == 0) c = ns->getURL().compareTo(url);
    if (c == 0) return ns;
    if (c < 0) {
      lo = mid + 1;
    } else {
      hi = mid - 1;
    }
  }
  return nullptr;
}

KepTagNameSpace KepRTagManager::setNameSpace(KepString const& name, KepString const& url) {
  _KepTagLock lock;
  int index;
  if (find(name, url, index) == nullptr) {
    // The new namespace has no setter for its name: it stays unnamed.
    auto* ns = new KepRTagNameSpace(emptyName(), emptyName(), this);
    appendNameSpace(ns);
    ns->addRef();
    // The namespace that was current stays alive in the namespaces array.
    if (KepRTagNameSpace* old = current.exchange(ns, std::memory_order_acq_rel)) old->release();
  }
  return KepTagNameSpace(static_cast<KepBridgeToObject*>(current.load(std::memory_order_acquire)));
}

KepString KepRTagManager::tagToName(int tag) const {
  // While every listed range is the manager's own, the ranges do not overlap and
  // each is in its namespace's list too, so both searches end at the one range
  // that holds the tag: the directory has the same answer, as long as no entry
  // was renamed. Negative tags are not in the directory.
  if (tag >= 0 && indexing.load(std::memory_order_acquire) && _KepTagDirectory::trusted()) {
    KepRTagEntry* entry;
    if (KepRString* body = directory.find(tag, entry)) {
      return KepString(static_cast<KepBridgeToObject*>(body));
    }
    return entry != nullptr ? entry->KepRTagEntry::getName() : KepString();
  }
  _KepTagLock lock;
  KepRTagEntry* e = const_cast<KepRTagManager*>(this)->entryOf(tag);
  return e != nullptr ? e->KepRTagEntry::getName() : KepString();
}

void KepRTagManager::adopt(KepRTagNameSpace* ns) {
  _KepTagLock lock;
  if (ns == nullptr) return;
  appendNameSpace(ns);
  // Ranges that a caller gave the namespace before it joined were never checked
  // against this manager's.
  if (ns->hasOutsideRanges()) stopIndexing();
}

int KepRTagManager::getNextTag() const {
  _KepTagLock lock;
  return nextTag;
}

int KepRTagManager::nameSpaceCount() const {
  _KepTagLock lock;
  return namespaces.size();
}

int KepRTagManager::rangeCount() const {
  _KepTagLock lock;
  return ranges.size();
}

KEP_REGISTER_LIBRARY_CLASS(TagManager);
