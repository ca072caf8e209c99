#include "kep/base/KepInit.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "kep/base/KepCharacter.h"
#include "kep/base/KepConfiguration.h"
#include "kep/base/KepDebugger.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepGlobals.h"
#include "kep/base/KepLogger.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepRObject.h"
#include "kep/base/KepRSharedData.h"
#include "kep/base/KepRTagManager.h"
#include "kep/base/_KepErrorRegistry.h"
#include "kep/base/_KepStartupOptions.h"
#include "kep/base/_KepTagTables.h"
#include "kep/memory/KepMemory.h"
#include "kep/multi/_KepThread.h"
#include "kep/xml/KepDOMDocument.h"

std::atomic<int> InitComplete{0};

namespace {

constexpr uint64_t kInitMark = 0xf59cd439u;

// The start-up counter lives in the process store under lock 0: slot 30 holds
// the marker once counting has started, slot 31 the number of live
// initialisations. Slot 18 mirrors the live count (it is written by every init
// and every destroy), and a later initialisation takes slot 18 plus one as its
// count; so two inits and one destroy leave 1 in both slots, and the next init
// counts 2 again. When lock 0 cannot be taken nothing is counted: init answers
// 0 (not the first) and destroy false (not the last).
int countInit() {
  if (KepRSharedData::lock(KEP_SCOPE_PROCESS, KEP_LOCK_STARTUP) == 0) return 0;
  int count;
  if (KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_MARK) != kInitMark) {
    KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_MARK, kInitMark);
    count = 1;
  } else {
    count = static_cast<int>(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_LAST)) + 1;
  }
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_COUNT, static_cast<uint64_t>(count));
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_LAST, static_cast<uint64_t>(count));
  KepRSharedData::unlock(KEP_SCOPE_PROCESS, KEP_LOCK_STARTUP);
  return count;
}

// Counts one initialisation down; answers true for the last one.
bool countDestroy() {
  if (KepRSharedData::lock(KEP_SCOPE_PROCESS, KEP_LOCK_STARTUP) == 0) return false;
  uint64_t count = KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_COUNT);
  uint64_t left = count > 0 ? count - 1 : 0;
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_COUNT, left);
  KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_LAST, left);
  KepRSharedData::unlock(KEP_SCOPE_PROCESS, KEP_LOCK_STARTUP);
  return count == 1;
}

// The classes registered before the built-in tag tables are loaded, in this
// order; every other library class is registered after the tables.
constexpr int kCoreClasses[] = {KepClassID::Object,
                                KepClassID::Array,
                                KepClassID::Thread,
                                KepClassID::OrderedSet,
                                KepClassID::OrderedSetIterator,
                                KepClassID::String,
                                KepClassID::StringBuffer,
                                KepClassID::DOMDocument,
                                KepClassID::StringBufferIOStream,
                                KepClassID::StringTokenizer,
                                KepClassID::TagNameSpace,
                                KepClassID::TagManager,
                                KepClassID::TagEntry};

bool isCoreClass(int classId) {
  return std::find(std::begin(kCoreClasses), std::end(kCoreClasses), classId) !=
         std::end(kCoreClasses);
}

// Registers one library class with a new body; the process's tag manager is
// itself the registered body of its class.
void registerLibraryClass(KepLibraryClass const* c) {
  KepRObject* body = c->classId == KepClassID::TagManager ? KepRTagManager::process() : nullptr;
  if (body == nullptr) body = c->make();
  // The registered document is also the process's default document.
  KepDOMDocument document(c->classId == KepClassID::DOMDocument ? body : nullptr);
  KepFactory::registerInternalClass(c->classId, KepObject::newObject(), body);
  if (!document.isNull()) KepFactory::setDefaultDoc(document);
}

void registerCoreClasses() {
  for (int classId : kCoreClasses) {
    for (KepLibraryClass* c = KepFirstLibraryClass(); c != nullptr; c = c->next) {
      if (c->classId == classId) registerLibraryClass(c);
    }
  }
}

void loadBuiltInTagTables() {
  int n;
  _KepBuiltInTagTable const* tables = _KepGetBuiltInTagTables(n);
  for (int i = 0; i < n; ++i) {
    KepProcess::loadTagTable(tables[i].start, tables[i].end, tables[i].count, tables[i].names);
  }
}

void registerRemainingClasses() {
  for (KepLibraryClass* c = KepFirstLibraryClass(); c != nullptr; c = c->next) {
    if (!isCoreClass(c->classId)) registerLibraryClass(c);
  }
}

// Classes taken down after all others, in this order; the rest go in the
// reverse of their registration.
constexpr int kLastUnregistered[] = {KepClassID::String,     KepClassID::OrderedSetIterator,
                                     KepClassID::OrderedSet, KepClassID::Array,
                                     KepClassID::Object,     KepClassID::Date,
                                     KepClassID::DateFields, KepClassID::DateFormat,
                                     KepClassID::TimeZone,   KepClassID::ConnectionEntry};

bool isUnregisteredLast(int classId) {
  return std::find(std::begin(kLastUnregistered), std::end(kLastUnregistered), classId) !=
         std::end(kLastUnregistered);
}

// Unregisters every class that start-up registered.
void unregisterLibraryClasses() {
  std::vector<int> registered;
  for (int classId : kCoreClasses) {
    for (KepLibraryClass* c = KepFirstLibraryClass(); c != nullptr; c = c->next) {
      if (c->classId == classId) registered.push_back(classId);
    }
  }
  for (KepLibraryClass* c = KepFirstLibraryClass(); c != nullptr; c = c->next) {
    if (!isCoreClass(c->classId)) registered.push_back(c->classId);
  }
  for (auto it = registered.rbegin(); it != registered.rend(); ++it) {
    if (!isUnregisteredLast(*it)) KepFactory::unregisterClass(*it);
  }
  for (int classId : kLastUnregistered) {
    if (std::find(registered.begin(), registered.end(), classId) != registered.end()) {
      KepFactory::unregisterClass(classId);
    }
  }
}

// The steps of start-up and shut-down that belong to subsystems the library does
// not have yet: each is called where its subsystem takes part.

// The process dispatcher is entered on every init and left on every destroy.
void initDispatcher() {}
void destroyDispatcher() {}

// The first init reads the error registry named by KEP_ERROR_REGISTRY into
// the process's error table; without one the table stays empty.
void readErrorRegistry() { _KepReadErrorRegistry(); }

// The first init loads the configuration named by Kep::init's third argument
// into the process configuration; without a name it stays empty.
void loadConfiguration(char const* configName) {
  KepProcess::getConfiguration().load(KepString(configName));
}

// The last destroy unloads the services and replaces the process configuration
// with a null one.
void unloadServices() {}
void dropConfiguration() { KepProcess::setConfiguration(KepConfiguration()); }

}  // namespace

void Kep::init(int a) { init(a, 1, nullptr); }

void Kep::init(int a, int b) { init(a, b, nullptr); }

void Kep::init(int a, int b, char* configName) {
  KepRSharedData::init();
  int count = countInit();
  bool first = count == 1;
  if (first) {
    // Nothing in the library consumes the processes value yet.
    int processes = 0;
    _KepGetStartupOptions(a, b, processes, configName);
  }
  KepLogger::init();
  KepDebugger::init();
  KepProcess::logDebugString("Initializating KEP, invocation #%d, for current process", count);
  KepMemory::init();
  KepCharacter::init();
  KepProcess::init();
  KepFactory::init();
  initDispatcher();
  if (first) {
    registerCoreClasses();
    loadBuiltInTagTables();
    registerRemainingClasses();
    readErrorRegistry();
    loadConfiguration(configName);
    KepLogger::notifyKepInit();
    KepMemoryLeakSanityCheck();
  }
}

void Kep::destroy() {
  bool last = countDestroy();
  if (last) {
    KepProcess::notifyKepDestroy();
    KepLogger::notifyKepDestroy();
  }
  destroyDispatcher();
  if (last) {
    unloadServices();
    dropConfiguration();
  }
  KepProcess::destroy();
  if (last) {
    KepProcess::logDebugString("Unregistering classes\n");
    unregisterLibraryClasses();
  }
  KepFactory::destroy();
  KepCharacter::destroy();
  KepMemory::destroy();
  KepDebugger::destroy();
  KepLogger::destroy();
  if (last) {
    gDiagKep.store(0);
    gDiagCPPAlloc.store(0);
    gDiagKepAlloc.store(0);
    _gKepDiagQBAlloc.store(0);
  }
  KepRSharedData::destroy();
}

void Kep::version(int& major, int& minor) {
  major = 1;
  minor = 0;
}

int Kep::initCount() {
  return static_cast<int>(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_INIT_COUNT));
}

void KepInit(int a, int b, char* configName) { Kep::init(a, b, configName); }

void KepDestroy() { Kep::destroy(); }

void KepVersion(int* major, int* minor) {
  if (major != nullptr) *major = 1;
  if (minor != nullptr) *minor = 0;
}

__attribute__((constructor)) void kep_init() {
  if (_KepMSemCreate(&KepProcessSemaphore) == 0) InitComplete.store(1, std::memory_order_release);
}

__attribute__((destructor)) void kep_fini() {
  InitComplete.store(0, std::memory_order_release);
  if (KepProcessSemaphore != nullptr) _KepMSemDestroy(&KepProcessSemaphore);
}
