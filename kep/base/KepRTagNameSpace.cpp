#include "kep/base/KepRTagNameSpace.h"

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
      probe(new KepRTagEntry()),
      current(nullptr),
      manager(owner),
      detached(false) {
  probe->addRef();
}

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
  probe->release();
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

KepRTagEntry* KepRTagNameSpace::findProbe(int& tag) {
  _KepOrderedSetIter it = entries.find(probe);
  if (it == entries.end()) {
    tag = 0;
    return nullptr;
  }
  auto* e = static_cast<KepRTagEntry*>(*it);
  tag = e->getTag();
  return e;
}

KepRTagEntry* KepRTagNameSpace::find(signed char const* text, int& tag) {
  _KepTagLock lock;
  probe->set(text);
  KepRTagEntry* e = findProbe(tag);
  probe->set(static_cast<signed char const*>(nullptr));
  return e;
}

KepRTagEntry* KepRTagNameSpace::find(KepString const& key, int& tag) {
  _KepTagLock lock;
  return findName(KepRString::of(key), tag);
}

KepRTagEntry* KepRTagNameSpace::findName(KepRString const* key, int& tag) {
  probe->borrow(key);
  KepRTagEntry* e = findProbe(tag);
  probe->borrow(nullptr);
  return e;
}

bool KepRTagNameSpace::addNew(KepString const& newName, int& tag) {
  tag = 0;
  KepRTagManager* m = getManager();
  if (m == nullptr) return false;
  if (current == nullptr) {
    // The first name: a block of its own, listed with the manager and here.
    auto* r = new KepTagRange(this, 0, 0);
    if (addRange(r) == 0) {
      delete r;
      return false;
    }
    current = r;
    m->addRange(r);
  }
  auto* body = new KepRTagEntry();
  body->set(newName, KepRTagEntry::kKindString);
  // The range takes the new handle over and frees it when it fails; `keep`
  // holds the entry until it is in the set.
  KepObject keep(static_cast<KepBridgeToObject*>(body));
  if (current->add(new KepTagEntry(static_cast<KepBridgeToObject*>(body))) == 0) return false;
  tag = body->getTag();
  if (entries.insert(body).second) body->addRef();
  if (gKepDebuggerOptions.load(std::memory_order_relaxed) & 1) {
    KepDebugger::debugRegisterTagName(newName, tag);
  }
  return true;
}

int KepRTagNameSpace::add(KepString const& key) {
  if (isEmptyName(key)) return 0;
  _KepTagLock lock;
  int tag;
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
  _KepTagLock lock;
  if (find(text, tag) != nullptr) return true;
  return addNew(KepString(reinterpret_cast<char const*>(text)), tag);
}

int KepRTagNameSpace::addRange(KepTagRange* range) {
  _KepTagLock lock;
  return KepTagRange::insert(ranges, range);
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
