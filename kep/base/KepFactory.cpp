#include "kep/base/KepFactory.h"

#include <map>

#include "kep/base/KepProcess.h"
#include "kep/base/KepRObject.h"
#include "kep/base/KepRSharedData.h"
#include "kep/base/KepString.h"

namespace {

constexpr uint64_t kFactoryMark = 0xea67c11fu;

// One row of the factory table.
struct ClassEntry {
  int entryClassID;
  int serviceID;
  KepObject* defaultObj;
};

// The table: class id -> entry, ordered by signed class id.
using FactoryTable = std::map<int, ClassEntry*>;

FactoryTable* table() {
  return KepRSharedData::getPointer<FactoryTable>(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_TABLE);
}

KepFactory::ServiceStarter gServiceStarter = nullptr;

// Holds the factory lock for a scope.
class FactoryLock {
 public:
  FactoryLock() : held_(KepRSharedData::lock(KEP_SCOPE_PROCESS, KEP_LOCK_FACTORY) != 0) {}
  ~FactoryLock() {
    if (held_) KepRSharedData::unlock(KEP_SCOPE_PROCESS, KEP_LOCK_FACTORY);
  }
  bool held() const { return held_; }

 private:
  bool held_;
};

// Inserts or completes the entry of `classId` with `holder` as its prototype
// holder; the first prototype wins. Runs under the factory lock.
void enterPrototype(int classId, KepObject* holder) {
  FactoryTable* t = table();
  if (t == nullptr) return;
  auto it = t->find(classId);
  if (it == t->end()) {
    (*t)[classId] = new ClassEntry{classId, 0, holder};
  } else if (it->second->defaultObj == nullptr) {
    it->second->serviceID = 0;
    it->second->defaultObj = holder;
  }
}

}  // namespace

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
    if (count == 1)
      KepRSharedData::setPointer(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_TABLE, new FactoryTable);
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
  FactoryTable* t = table();
  if (t != nullptr) {
    for (auto& row : *t) {
      if (row.second->defaultObj != nullptr) row.second->defaultObj->freeBridge();
      delete row.second;
    }
    delete t;
  }
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_TABLE, 0);
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_FACTORY_MARK, 0);
}

void KepFactory::registerClass(KepObject* holder, KepObject* prototype) {
  if (holder == nullptr || prototype == nullptr) return;
  FactoryLock lock;
  int classId = prototype->getClassID();
  if (holder->getTarget() != prototype->getTarget()) KepBridgeOperatorAssign(holder, *prototype);
  enterPrototype(classId, holder);
}

void KepFactory::registerInternalClass(int classId, KepObject* holder, void* body) {
  if (holder == nullptr || body == nullptr) return;
  FactoryLock lock;
  auto* b = static_cast<KepRObject*>(body);
  if (holder->getTarget() != b) {
    KepObject onBody(b);
    KepBridgeOperatorAssign(holder, onBody);
  }
  enterPrototype(classId, holder);
}

void KepFactory::registerInternalClass(KepObject* holder, void* body) {
  if (body == nullptr) return;
  registerInternalClass(static_cast<KepRObject*>(body)->getClassID(), holder, body);
}

int KepFactory::registerClass(int classId, int serviceId) {
  FactoryLock lock;
  if (!lock.held()) return 0;
  FactoryTable* t = table();
  if (t != nullptr && t->find(classId) == t->end()) {
    (*t)[classId] = new ClassEntry{classId, serviceId, nullptr};
  }
  return 0;
}

void KepFactory::unregisterClass(int classId) {
  FactoryLock lock;
  FactoryTable* t = table();
  if (t == nullptr) return;
  auto it = t->find(classId);
  if (it == t->end()) return;
  ClassEntry* e = it->second;
  t->erase(it);
  if (e->defaultObj != nullptr) e->defaultObj->freeBridge();
  delete e;
}

KepObject KepFactory::getObjectStatic(int classId, int /*sub*/, int service) {
  KepObject result;
  FactoryLock lock;
  if (!lock.held()) return result;
  FactoryTable* t = table();
  if (t != nullptr) {
    auto it = t->find(classId);
    if (it != t->end()) {
      ClassEntry* e = it->second;
      if (e->defaultObj == nullptr && gServiceStarter != nullptr) gServiceStarter(e->serviceID);
      // The service's init() may have completed the entry.
      if (e->defaultObj != nullptr) result = e->defaultObj->createAnother();
    } else if (classId == KepClassID::Object) {
      result = KepObject(new KepRObject());
    }
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
  gServiceStarter = starter;
}

int KepFactory::classCount() {
  FactoryLock lock;
  FactoryTable* t = table();
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
