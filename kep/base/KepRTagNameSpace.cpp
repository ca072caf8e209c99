#include "kep/base/KepRTagNameSpace.h"

#include <cstring>

#include "kep/base/KepDebugger.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepGlobals.h"
#include "kep/base/KepRString.h"
#include "kep/base/KepRTagEntry.h"
#include "kep/base/KepRTagManager.h"
#include "kep/base/_KepTagLock.h"

namespace {

bool isEmptyName(KepString const& name) {
  KepRString const* s = KepRString::of(name);
  return s == nullptr || s->unitCount() == 0;
}

}  // namespace

KepRTagNameSpace::KepRTagNameSpace() : KepRTagNameSpace(KepString(""), KepString(""), nullptr) {}

KepRTagNameSpace::KepRTagNameSpace(KepString const& nsName, KepString const& nsUrl,
                                   KepRTagManager* owner)
    : name(nsName),
      url(nsUrl),
      entries(_KepTagEntryComparator),
      current(nullptr),
      manager(owner),
      detached(false),
      outside(false) {}

KepRTagNameSpace::~KepRTagNameSpace() {
  // The ranges free their entry handles; the set's own references go after.
  for (int i = 0, n = ranges.size(); i < n; ++i) {
    delete *ranges._getEntry(i, nullptr, 0, nullptr, nullptr);
  }
  ranges.resize(0);
  for (_KepOrderedSetIter it = entries.begin(); it != entries.end(); ++it) {
    static_cast<KepRTagEntry*>(*it)->release();
  }
  entries.destroy();
}

KepRTagManager* KepRTagNameSpace::getManager() {
  _KepTagLock lock;
  if (detached) return nullptr;
  if (manager == nullptr) {
    manager = KepRTagManager::process();
    if (manager != nullptr) manager->adopt(this);
  }
  return manager;
}

void KepRTagNameSpace::detach() noexcept {
  _KepTagLock lock;
  manager = nullptr;
  detached = true;
}

namespace {

KepRTagEntry* found(KepRTagEntry* e, int& tag) {
  tag = e != nullptr ? e->getTag() : 0;
  return e;
}

}  // namespace

KepRTagEntry* KepRTagNameSpace::find(signed char const* text, int& tag) const {
  if (text == nullptr) return found(nullptr, tag);
  auto const* bytes = reinterpret_cast<unsigned char const*>(text);
  int n = static_cast<int>(std::strlen(reinterpret_cast<char const*>(text)));
  return found(index.find(bytes, n), tag);
}

KepRTagEntry* KepRTagNameSpace::find(KepString const& key, int& tag) const {
  return findName(KepRString::of(key), tag);
}

KepRTagEntry* KepRTagNameSpace::findName(KepRString const* key, int& tag) const {
  if (key == nullptr) return found(nullptr, tag);
  return found(index.find(key->units(), key->unitCount()), tag);
}

bool KepRTagNameSpace::addNew(KepString const& newName, int& tag) {
  tag = 0;
  KepRTagManager* m = getManager();
  if (m == nullptr) return false;
  if (current == nullptr) {
    // The first name: a block of its own, listed with the manager and here.
    auto* r = new KepTagRange(this, 0, 0);
    if (listRange(r) == 0) {
      delete r;
      return false;
    }
    current = r;
    m->listRange(r);
  }
  auto* body = new KepRTagEntry();
  body->set(newName, KepRTagEntry::kKindString);
  // The range takes the new handle over and frees it when it fails; `keep`
  // holds the entry until it is in the set.
  KepObject keep(static_cast<KepBridgeToObject*>(body));
  if (current->add(new KepTagEntry(static_cast<KepBridgeToObject*>(body))) == 0) return false;
  tag = body->getTag();
  if (entries.insert(body).second) {
    body->addRef();
    index.insert(body);
  }
  if (gKepDebuggerOptions.load(std::memory_order_relaxed) & 1) {
    KepDebugger::debugRegisterTagName(newName, tag);
  }
  return true;
}

int KepRTagNameSpace::add(KepString const& key) {
  if (isEmptyName(key)) return 0;
  int tag;
  // A known name needs no lock: names are only ever added.
  if (find(key, tag) != nullptr) return tag;
  _KepTagLock lock;
  if (find(key, tag) == nullptr) addNew(key, tag);
  return tag;
}

int KepRTagNameSpace::add(signed char const* text, unsigned long create) {
  int tag = 0;
  if (create != 0) {
    addName(text, tag);
  } else if (text != nullptr && text[0] != 0) {
    find(text, tag);
  }
  return tag;
}

bool KepRTagNameSpace::addName(signed char const* text, int& tag) {
  tag = 0;
  if (text == nullptr || text[0] == 0) return false;
  if (find(text, tag) != nullptr) return true;
  _KepTagLock lock;
  if (find(text, tag) != nullptr) return true;
  return addNew(KepString(reinterpret_cast<char const*>(text)), tag);
}

int KepRTagNameSpace::addRange(KepTagRange* range) {
  _KepTagLock lock;
  // A range from a caller may overlap others: the manager then searches its
  // lists instead of trusting its index.
  if (manager != nullptr) {
    manager->stopIndexing();
  } else {
    outside = true;
  }
  return listRange(range);
}

int KepRTagNameSpace::listRange(KepTagRange* range) {
  _KepTagLock lock;
  if (KepTagRange::insert(ranges, range) == 0) return 0;
  if (range->getNameSpaceBody() == this) range->joined(false);
  return 1;
}

KepRTagEntry* KepRTagNameSpace::entryOf(int tag) {
  KepTagRange* r = KepTagRange::find(ranges, tag);
  return r != nullptr ? r->getEntryBody(tag) : nullptr;
}

KepTagEntry KepRTagNameSpace::getEntry(int tag) const {
  _KepTagLock lock;
  KepRTagEntry* e = const_cast<KepRTagNameSpace*>(this)->entryOf(tag);
  return KepTagEntry(static_cast<KepBridgeToObject*>(e));
}

KepString KepRTagNameSpace::getName() const { return name; }

KepString KepRTagNameSpace::getURL() const { return url; }

int KepRTagNameSpace::nameToTag(KepString const& key) {
  if (isEmptyName(key)) return 0;
  int tag;
  find(key, tag);
  return tag;
}

void KepRTagNameSpace::setRange(KepTagRange* range) {
  _KepTagLock lock;
  current = range;
}

KepString KepRTagNameSpace::tagToName(int tag) const {
  _KepTagLock lock;
  KepRTagEntry* e = const_cast<KepRTagNameSpace*>(this)->entryOf(tag);
  return e != nullptr ? e->getName() : KepString();
}

int KepRTagNameSpace::nameCount() const {
  _KepTagLock lock;
  return static_cast<int>(entries.size());
}

KEP_REGISTER_LIBRARY_CLASS(TagNameSpace);
