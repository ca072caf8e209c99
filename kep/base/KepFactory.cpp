#include "kep/base/KepFactory.h"

#include <atomic>
#include <new>

#include "kep/base/KepDebugger.h"
#include "kep/base/KepGlobals.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepRObject.h"
#include "kep/base/KepRSharedData.h"
#include "kep/base/KepString.h"
#include "kep/contain/_KepOrderedSetImpl.h"
#include "kep/xml/KepDOMDocument.h"

namespace {

constexpr uint64_t kFactoryMark = 0xea67c11fu;

using Entry = _KepRFactoryClassEntry;

_KepOrderedSetImpl* table() {
  return KepRSharedData::getPointer<_KepOrderedSetImpl>(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_TABLE);
}

// The row of `classId`, or null. Runs under the factory lock.
Entry* findEntry(_KepOrderedSetImpl* t, int classId) {
  Entry probe{classId, 0, nullptr};
  _KepOrderedSetIter it = t->find(&probe);
  return it == t->end() ? nullptr : static_cast<Entry*>(*it);
}

// True when `holder` is some row's prototype holder. Registration is rare and
// the table small, so a walk is cheap enough to keep a registered holder from
// being retargeted or freed by a second registration.
bool isHolderInTable(_KepOrderedSetImpl* t, KepObject const* holder) {
  for (_KepOrderedSetIter it = t->begin(); it != t->end(); ++it) {
    if (static_cast<Entry*>(*it)->defaultObj == holder) return true;
  }
  return false;
}

std::atomic<KepFactory::ServiceStarter> gServiceStarter{nullptr};

// The default document's heap handle, or null; guarded by the factory lock.
KepObject* gDefaultDoc = nullptr;

// Holds the factory lock for a scope.
class FactoryLock {
 public:
  FactoryLock() : held_(KepRSharedData::lock(KEP_SCOPE_PROCESS, KEP_LOCK_FACTORY) != 0) {}
  ~FactoryLock() {
    if (held_) KepRSharedData::unlock(KEP_SCOPE_PROCESS, KEP_LOCK_FACTORY);
  }
  FactoryLock(FactoryLock const&) = delete;
  FactoryLock& operator=(FactoryLock const&) = delete;
  bool held() const { return held_; }

 private:
  bool held_;
};

// Inserts or completes the row of `classId` with `holder`, made to target
// `prototype`, as its prototype holder; the first prototype wins. A holder the
// table does not keep is freed. Runs under the factory lock.
void enterPrototype(int classId, KepObject* holder, KepObject const& prototype) {
  if (gKepDebuggerOptions.load(std::memory_order_relaxed) & 1) {
    KepDebugger::debugRegisterClass(classId);
  }
  _KepOrderedSetImpl* t = table();
  if (t != nullptr && isHolderInTable(t, holder)) return;  // already a class's holder
  Entry* e = t != nullptr ? findEntry(t, classId) : nullptr;
  if (holder->getTarget() != prototype.getTarget()) KepBridgeOperatorAssign(holder, prototype);
  if (t != nullptr && e == nullptr) {
    t->insert(new Entry{classId, 0, holder});
  } else if (e != nullptr && e->defaultObj == nullptr) {
    e->serviceID = 0;
    e->defaultObj = holder;
  } else {
    holder->freeBridge();
  }
}

}  // namespace

unsigned long _KepClassEntryComparator(void* a, void* b) {
  if (a == nullptr || b == nullptr) return 0;
  return static_cast<Entry*>(a)->entryClassID < static_cast<Entry*>(b)->entryClassID ? 1 : 0;
}

void KepFactory::init() {
  int count;
  {
    FactoryLock lock;
    if (KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_MARK) != kFactoryMark) {
      KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_MARK, kFactoryMark);
      count = 1;
    } else {
      count = static_cast<int>(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_COUNT)) + 1;
    }
    KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_COUNT, static_cast<uint64_t>(count));
    if (count == 1) {
      void* block = KepRSharedData::alloc(KEP_SCOPE_PROCESS, sizeof(_KepOrderedSetImpl));
      _KepOrderedSetImpl* t =
          block != nullptr ? new (block) _KepOrderedSetImpl(_KepClassEntryComparator) : nullptr;
      KepRSharedData::setPointer(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_TABLE, t);
    }
  }
  KepProcess::logDebugString("Initializating KepFactory, invocation #%d, for current process",
                             count);
}

void KepFactory::destroy() {
  FactoryLock lock;
  uint64_t count = KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_COUNT);
  if (count == 0) return;
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_COUNT, count - 1);
  if (count != 1) return;
  // The last user: whatever is still registered goes with the table.
  if (gDefaultDoc != nullptr) {
    gDefaultDoc->freeBridge();
    gDefaultDoc = nullptr;
  }
  _KepOrderedSetImpl* t = table();
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_TABLE, 0);
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_MARK, 0);
  if (t == nullptr) return;
  for (_KepOrderedSetIter it = t->begin(); it != t->end(); ++it) {
    auto* e = static_cast<Entry*>(*it);
    if (e->defaultObj != nullptr) e->defaultObj->freeBridge();
    delete e;
  }
  t->~_KepOrderedSetImpl();
  KepRSharedData::free(KEP_SCOPE_PROCESS, t);
}

void KepFactory::registerClass(KepObject* holder, KepObject* prototype) {
  if (holder == nullptr) return;
  if (prototype == nullptr) {
    holder->freeBridge();
    return;
  }
  FactoryLock lock;
  enterPrototype(prototype->getClassID(), holder, *prototype);
}

void KepFactory::registerInternalClass(int classId, KepObject* holder, void* body) {
  if (holder == nullptr) return;
  if (body == nullptr) {
    holder->freeBridge();
    return;
  }
  FactoryLock lock;
  KepObject onBody(static_cast<KepRObject*>(body));
  enterPrototype(classId, holder, onBody);
}

void KepFactory::registerInternalClass(KepObject* holder, void* body) {
  if (body == nullptr) {
    if (holder != nullptr) holder->freeBridge();
    return;
  }
  registerInternalClass(static_cast<KepRObject*>(body)->getClassID(), holder, body);
}

int KepFactory::registerClass(int classId, int serviceId) {
  FactoryLock lock;
  if (!lock.held()) return 0;
  _KepOrderedSetImpl* t = table();
  if (t != nullptr && findEntry(t, classId) == nullptr)
    t->insert(new Entry{classId, serviceId, nullptr});
  return 0;
}

void KepFactory::unregisterClass(int classId) {
  FactoryLock lock;
  _KepOrderedSetImpl* t = table();
  if (t == nullptr) return;
  Entry probe{classId, 0, nullptr};
  _KepOrderedSetIter it = t->find(&probe);
  if (it == t->end()) return;
  auto* e = static_cast<Entry*>(*it);
  // Out of the table first: releasing the prototype may run arbitrary code.
  t->erase(it);
  if (e->defaultObj != nullptr) e->defaultObj->freeBridge();
  delete e;
}

KepObject KepFactory::getObjectStatic(int classId, int /*sub*/, int service) {
  KepObject result;
  FactoryLock lock;
  if (!lock.held()) return result;
  _KepOrderedSetImpl* t = table();
  Entry* e = t != nullptr ? findEntry(t, classId) : nullptr;
  if (e != nullptr) {
    ServiceStarter starter = gServiceStarter.load(std::memory_order_acquire);
    if (e->defaultObj == nullptr && starter != nullptr) {
      starter(e->serviceID);
      // The service's init() registers the class; look the row up again, as
      // the service may also have replaced it.
      e = findEntry(t, classId);
    }
    if (e != nullptr && e->defaultObj != nullptr) result = e->defaultObj->createAnother();
  } else if (classId == KepClassID::Object) {
    result = KepObject(new KepRObject());
  }
  if (!result.isNull()) result.setService(service);
  return result;
}

KepObject KepFactory::getObjectStatic(int classId, int service) {
  return getObjectStatic(classId, 0, service);
}

KepObject KepFactory::getObjectStatic(int classId, int sub, KepObject& owner) {
  return getObjectStatic(classId, sub, owner.isNull() ? 0 : owner.getService());
}

KepObject KepFactory::getObjectStatic(int classId, KepObject& owner) {
  return getObjectStatic(classId, 0, owner);
}

KepObject KepFactory::getObjectStatic(KepString const& name, int service) {
  return getObjectStatic(KepProcess::nameToTag(name), 0, service);
}

KepObject KepFactory::getObjectStatic(KepString const& name, int sub, int service) {
  return getObjectStatic(KepProcess::nameToTag(name), sub, service);
}

KepObject KepFactory::getObjectStatic(KepDOMNode& node) { return getObjectStatic(node, 0); }

KepObject KepFactory::getObjectStatic(KepDOMNode& node, int sub) {
  return getObjectStatic(node.isNull() ? 0 : node.getNodeID(), sub, 0);
}

KepDOMDocument KepFactory::getDefaultDoc() {
  FactoryLock lock;
  return gDefaultDoc != nullptr ? KepDOMDocument(*gDefaultDoc) : KepDOMDocument();
}

void KepFactory::setDefaultDoc(KepDOMDocument const& document) {
  KepObject* old;
  {
    FactoryLock lock;
    old = gDefaultDoc;
    gDefaultDoc = document.isNull() ? nullptr : KepObject(document).newBridge();
  }
  // Outside the lock: the old document's tree may be freed with it.
  if (old != nullptr) old->freeBridge();
}

unsigned long KepFactory::haveDefaultDoc() {
  FactoryLock lock;
  return gDefaultDoc != nullptr ? 1 : 0;
}

KepObject* KepFactory::newBridge(KepObject const& object) {
  return const_cast<KepObject&>(object).newBridge();
}

KepObject* KepFactory::newBridge(KepRObject const& object) {
  return const_cast<KepRObject&>(object).newBridge();
}

void KepFactory::freeBridge(KepObject const*& p) {
  if (p != nullptr) const_cast<KepObject*>(p)->freeBridge();
  p = nullptr;
}

void KepFactory::setServiceStarter(ServiceStarter starter) {
  FactoryLock lock;
  gServiceStarter.store(starter, std::memory_order_release);
}

int KepFactory::classCount() {
  FactoryLock lock;
  _KepOrderedSetImpl* t = table();
  return t == nullptr ? 0 : static_cast<int>(t->size());
}

KepObject KepGetObject(int classId, int sub, int service) {
  return KepFactory::getObjectStatic(classId, sub, service);
}

KepObject KepGetObject(int classId, int service) {
  return KepFactory::getObjectStatic(classId, 0, service);
}

KepObject KepGetObject(KepString const& name, int service) {
  return KepFactory::getObjectStatic(name, service);
}

KepObject KepGetObject(KepString const& name, int sub, int service) {
  return KepFactory::getObjectStatic(name, sub, service);
}

namespace {
KepLibraryClass* gLibraryClasses = nullptr;
KepLibraryClass** gLibraryClassesTail = &gLibraryClasses;
}  // namespace

void KepAddLibraryClass(KepLibraryClass* entry) {
  entry->next = nullptr;
  *gLibraryClassesTail = entry;
  gLibraryClassesTail = &entry->next;
}

KepLibraryClass* KepFirstLibraryClass() { return gLibraryClasses; }
