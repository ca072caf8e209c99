#include "kep/base/KepRObject.h"

#include "kep/base/KepDebugger.h"
#include "kep/base/KepEvent.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepGlobals.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepString.h"
#include "kep/base/_KepBodyArena.h"
#include "kep/base/_KepBodyCount.h"
#include "kep/io/KepIOStream.h"
#include "kep/multi/_KepSemaphore.h"
#include "kep/multi/_KepThread.h"
#include "kep/multi/_KepThreadUnix.h"
#include "kep/xml/KepDOMElement.h"

#include <new>

// The placement byte lives in the padding behind the marker word.
static_assert(sizeof(KepRObject) == 48, "KepRObject has no room to spare");

namespace {

bool diagnosticsOn() { return (gDiagKep.load(std::memory_order_relaxed) & 1u) != 0; }

// --- Body storage ------------------------------------------------------------
// Bodies are small and many are short-lived (iterators, strings, events), so
// each thread keeps up to kCacheDepth freed blocks of every body size up to
// kCacheMaxSize, one list per size. A block is only ever handed out again for
// a body of exactly its own size. Under the address and thread sanitizers every
// body gets a block of its own, so that a use after the last release is caught.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KEP_BODY_CACHE 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KEP_BODY_CACHE 0
#endif
#endif
#ifndef KEP_BODY_CACHE
#define KEP_BODY_CACHE 1
#endif

constexpr size_t kCacheGranule = alignof(void*);
constexpr size_t kCacheMaxSize = 256;
constexpr size_t kCacheLists = kCacheMaxSize / kCacheGranule + 1;
constexpr uint8_t kCacheDepth = 16;

struct CachedBlock {
  CachedBlock* next;
};

// Gives a block of `size` bytes back to the heap.
inline void heapFree(void* block, size_t size) noexcept {
#if defined(__cpp_sized_deallocation)
  ::operator delete(block, size);
#else
  (void)size;
  ::operator delete(block);
#endif
}

// One thread's lists. Zero-filled at thread start; `state` is 0 until the
// thread first keeps a block (which registers the drain below), 1 while it
// keeps blocks, and 2 once the thread is ending: from then on blocks go
// straight back to the heap.
struct BodyCache {
  CachedBlock* head[kCacheLists];
  uint8_t count[kCacheLists];
  uint8_t state;
};

thread_local BodyCache tBodyCache __attribute__((tls_model("initial-exec")));

// Gives a thread's kept blocks back to the heap when the thread ends.
struct BodyCacheDrain {
  BodyCacheDrain() = default;
  BodyCacheDrain(BodyCacheDrain const&) = delete;
  BodyCacheDrain& operator=(BodyCacheDrain const&) = delete;
  ~BodyCacheDrain() {
    BodyCache& cache = tBodyCache;
    cache.state = 2;
    for (size_t list = 0; list < kCacheLists; ++list) {
      while (CachedBlock* block = cache.head[list]) {
        cache.head[list] = block->next;
        heapFree(block, list * kCacheGranule);
      }
      cache.count[list] = 0;
    }
  }
};

// The list for blocks of `size` bytes, or kCacheLists when such blocks are not
// kept.
inline size_t cacheList(size_t size) {
  if (!KEP_BODY_CACHE || size > kCacheMaxSize || size % kCacheGranule != 0) return kCacheLists;
  return size / kCacheGranule;
}

// Keeps `block` for a later body of its size; false when it must go back to
// the heap (the list is full or the thread is ending).
bool keepBlock(void* block, size_t list) {
  BodyCache& cache = tBodyCache;
  if (cache.count[list] >= kCacheDepth || cache.state == 2) return false;
  if (cache.state == 0) {
    thread_local BodyCacheDrain drain;
    (void)drain;
    cache.state = 1;
  }
  auto* kept = static_cast<CachedBlock*>(block);
  kept->next = cache.head[list];
  cache.head[list] = kept;
  ++cache.count[list];
  return true;
}

_KepSemaphore* asSemaphore(uint64_t word) {
  return reinterpret_cast<_KepSemaphore*>(static_cast<uintptr_t>(word));
}

}  // namespace

void* KepRObject::operator new(std::size_t size) {
  size_t list = cacheList(size);
  if (list < kCacheLists) {
    BodyCache& cache = tBodyCache;
    if (CachedBlock* block = cache.head[list]) {
      cache.head[list] = block->next;
      --cache.count[list];
      return block;
    }
  }
  return ::operator new(size);
}

void KepRObject::operator delete(void* p, std::size_t size) noexcept {
  if (p == nullptr) return;
  size_t list = cacheList(size);
  if (list < kCacheLists && keepBlock(p, list)) return;
  heapFree(p, size);
}

KepRObject::KepRObject()
    : KepBridgeToObject(kKepBodyMagic),
      placement(0),
      refCount(0),
      ownerOrLock(_KepThrdSelf()),
      flags(kFlagPublish),
      creatorCounted(0),
      service(0),
      realOuterObj(nullptr) {
  if (diagnosticsOn()) KepDebugger::notifyObjectCreate(this);
}

KepRObject::~KepRObject() {
  if (diagnosticsOn()) KepDebugger::notifyObjectDestroy(this);
  if (flags.load(std::memory_order_acquire) & kFlagOwnsSemaphore) {
    delete asSemaphore(ownerOrLock.load(std::memory_order_acquire));
  }
}

int KepRObject::getStaticClassID() { return KepClassID::Object; }

// --- Reference counting --------------------------------------------------

void KepRObject::addRef() const { _KepBodyCount::addRef(this); }

void KepRObject::release() const { _KepBodyCount::release(this); }

void KepRObject::releaseWithOuter() const {
  auto* self = const_cast<KepRObject*>(this);
  KepObject* outer = realOuterObj.load(std::memory_order_acquire);
  if (outer != nullptr && refCount.load(std::memory_order_acquire) == 2 && outer->getCount() == 0) {
    // Only the outer object's own reference and the caller's remain: free the
    // outer object, whose destructor releases the last reference.
    self->realOuterObj.store(nullptr, std::memory_order_release);
    refCount.store(1, std::memory_order_release);
    outer->freeBridge();
    return;
  }
  if (refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy(self);
}

void KepRObject::destroy(KepRObject const* body) noexcept {
  auto* self = const_cast<KepRObject*>(body);
  if (self->placement == kPlacedInArena) {
    _KepBodyArena::destroy(self);
  } else {
    delete self;
  }
}

KepObject* KepRObject::newBridge() { return new KepObject(this); }

unsigned long KepRObject::isBridge() const { return 0; }

KepObject* KepRObject::getRealOuterObj() { return realOuterObj.load(std::memory_order_acquire); }

void KepRObject::setRealOuterObj(KepObject* outer) {
  realOuterObj.store(outer, std::memory_order_release);
}

KepRObject::operator KepObject() const { return KepObject(const_cast<KepRObject*>(this)); }

// --- Locks ---------------------------------------------------------------

_KepSemaphore* KepRObject::ensureSemaphore() {
  if (flags.load(std::memory_order_acquire) & kFlagOwnsSemaphore) {
    return asSemaphore(ownerOrLock.load(std::memory_order_acquire));
  }
  // Made under the process semaphore so that two first lockers make one.
  bool guarded = _KepMSemWait(&KepProcessSemaphore, static_cast<unsigned long>(-1)) == 0;
  _KepSemaphore* sem;
  if (flags.load(std::memory_order_acquire) & kFlagOwnsSemaphore) {
    sem = asSemaphore(ownerOrLock.load(std::memory_order_acquire));
  } else {
    sem = new _KepSemaphore;
    ownerOrLock.store(static_cast<uint64_t>(reinterpret_cast<uintptr_t>(sem)),
                      std::memory_order_release);
    flags.fetch_or(kFlagOwnsSemaphore, std::memory_order_acq_rel);
  }
  if (guarded) _KepMSemSignal(&KepProcessSemaphore);
  return sem;
}

int KepRObject::lock() { return lock(-1); }

int KepRObject::lock(int /*timeout*/) {
  ensureSemaphore()->lock();
  return 1;
}

void KepRObject::unlock() {
  if (flags.load(std::memory_order_acquire) & kFlagOwnsSemaphore) {
    asSemaphore(ownerOrLock.load(std::memory_order_acquire))->unlock();
  }
}

int KepRObject::lockSoft() { return lockSoft(-1); }

int KepRObject::lockSoft(int /*timeout*/) {
  threadSafeMethodBegin();
  return 1;
}

void KepRObject::unlockSoft() { threadSafeMethodEnd(); }

void KepRObject::threadSafeMethodBegin() {
  if (flags.load(std::memory_order_acquire) & kFlagOwnsSemaphore) {
    asSemaphore(ownerOrLock.load(std::memory_order_acquire))->lock();
    return;
  }
  uint64_t word = ownerOrLock.load(std::memory_order_acquire);
  // Other threads pass unlocked until the creating thread has counted or called
  // the body; the creator's own call makes the semaphore.
  if (word == 0) return;
  if (word != _KepThrdSelf() && creatorCounted.load(std::memory_order_acquire) == 0) return;
  ensureSemaphore()->lock();
}

void KepRObject::threadSafeMethodEnd() {
  if (flags.load(std::memory_order_acquire) & kFlagOwnsSemaphore) {
    asSemaphore(ownerOrLock.load(std::memory_order_acquire))->unlock();
  }
}

// --- Flags ---------------------------------------------------------------

unsigned long KepRObject::shouldPublish() {
  return (flags.load(std::memory_order_acquire) & kFlagPublish) ? 1 : 0;
}

unsigned long KepRObject::enablePublish() {
  return (flags.fetch_or(kFlagPublish, std::memory_order_acq_rel) & kFlagPublish) ? 1 : 0;
}

unsigned long KepRObject::disablePublish() {
  return (flags.fetch_and(static_cast<uint8_t>(~kFlagPublish), std::memory_order_acq_rel) &
          kFlagPublish)
             ? 1
             : 0;
}

unsigned long KepRObject::hasAsyncronousInterest() {
  return flags.load(std::memory_order_acquire) & kFlagAsync;
}

unsigned long KepRObject::enableAsyncronous() {
  return flags.fetch_or(kFlagAsync, std::memory_order_acq_rel) & kFlagAsync;
}

unsigned long KepRObject::disableAsyncronous() {
  return flags.fetch_and(static_cast<uint8_t>(~kFlagAsync), std::memory_order_acq_rel) & kFlagAsync;
}

void KepRObject::setService(int id) { service.store(id, std::memory_order_relaxed); }

int KepRObject::getService() const { return service.load(std::memory_order_relaxed); }

// --- Root behaviour ------------------------------------------------------

KepObject KepRObject::createAnother() const { return KepObject(new KepRObject()); }

KepObject KepRObject::getObject(int classId) const {
  return KepGetObject(classId, 0, getService());
}

KepObject KepRObject::getObject(int classId, int sub) const {
  return KepGetObject(classId, sub, getService());
}

KepObject KepRObject::getObject(KepString const& name) const {
  return KepGetObject(KepProcess::nameToTag(name), 0, getService());
}

KepObject KepRObject::getObject(KepString const& name, int sub) const {
  return KepGetObject(KepProcess::nameToTag(name), sub, getService());
}

unsigned long KepRObject::equals(KepObject const&) const { return 0; }

KepString KepRObject::toString() const { return KepString("KepRObject"); }

int KepRObject::getClassID() const { return KepClassID::Object; }

int KepRObject::getKepClassID() const { return KepClassID::Object; }

int KepRObject::getActualClassID() const { return KepClassID::Object; }

unsigned long KepRObject::isOfType(int classId) const { return classId == KepClassID::Object; }

void KepRObject::setOuterClassID(int) {}

int KepRObject::getOuterClassID() const { return getClassID(); }

void KepRObject::eventHandler(KepEvent&) {}

void KepRObject::validate(KepEvent&) {}

KepIOStream KepRObject::getContent() {
  KepDOMElement element;
  KepDOMElement content = getContent(element);
  KepRObject* body = content.getRealKepObj();
  if (body != nullptr && body->isOfType(KepClassID::IOStream)) return KepIOStream(content);
  return KepIOStream();
}

KepDOMElement KepRObject::getContent(KepDOMElement&) { return KepDOMElement(); }

KepString KepRObject::getObjectId() const { return KepProcess::tagToName(getService()); }

KEP_REGISTER_LIBRARY_CLASS(Object);
