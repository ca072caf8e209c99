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

KepRTagManager::KepRTagManager() : current(nullptr), nextTag(kFirstFreeTag) {
  auto* first = new KepRTagNameSpace(emptyName(), emptyName(), this);
  appendNameSpace(first);
  first->addRef();
  current = first;
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
  if (current != nullptr) current->release();
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

int KepRTagManager::add(KepString const& name) {
  _KepTagLock lock;
  return current != nullptr ? current->add(name) : 0;
}

int KepRTagManager::add(signed char const* text) {
  _KepTagLock lock;
  return current != nullptr ? current->add(text, 1) : 0;
}

int KepRTagManager::addRange(KepTagRange* range) {
  _KepTagLock lock;
  return KepTagRange::insert(ranges, range);
}

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
  if (current == nullptr || end < start || count < 0 || end == INT_MAX) return 0;
  if (start == 0 && end == 0) return 0;  // would read as an unplaced range
  int64_t size = int64_t(end) - start + 1;
  if (size > INT_MAX || overlaps(start, end)) return 0;
  auto* range = new KepTagRange(current, 0, 0);
  range->set(start, static_cast<int>(size));
  if (end >= nextTag) nextTag = end + 1;
  KepTagRange* previous = current->getRange();
  current->setRange(range);
  if (range->load(count, table) == 0) {
    current->setRange(previous);
    delete range;
    return 0;
  }
  KepTagRange::insert(ranges, range);
  current->addRange(range);
  return 1;
}

int KepRTagManager::nameToTag(KepString const& name) {
  KepRString const* s = KepRString::of(name);
  if (s == nullptr || s->unitCount() == 0) return 0;
  _KepTagLock lock;
  int tag = 0;
  if (current != nullptr) current->findName(s, tag);
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
    if (current != nullptr) current->release();
    current = ns;
  }
  return KepTagNameSpace(static_cast<KepBridgeToObject*>(current));
}

KepString KepRTagManager::tagToName(int tag) const {
  _KepTagLock lock;
  KepRTagEntry* e = const_cast<KepRTagManager*>(this)->entryOf(tag);
  return e != nullptr ? e->KepRTagEntry::getName() : KepString();
}

void KepRTagManager::adopt(KepRTagNameSpace* ns) {
  _KepTagLock lock;
  if (ns != nullptr) appendNameSpace(ns);
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
