#include "kep/base/KepObject.h"

#include "kep/base/KepDebugger.h"
#include "kep/base/KepEvent.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepGlobals.h"
#include "kep/base/KepRObject.h"
#include "kep/base/KepString.h"
#include "kep/base/_KepBodyCount.h"
#include "kep/io/KepIOStream.h"
#include "kep/xml/KepDOMElement.h"

KEP_METHODS_Object(KEP_DEFINE_BRIDGE) KEP_METHODS_Object(KEP_DEFINE_HANDLE_METHOD)

    namespace {
  bool diagnosticsOn() { return (gDiagKep.load(std::memory_order_relaxed) & 1u) != 0; }

  // Adds a reference to a target: the body's count, or an outer object's own.
  void addRefTarget(KepBridgeToObject * t) {
    if (t == nullptr) return;
    if (KEP_IS_REAL_OBJ(t)) {
      _KepBodyCount::addRef(static_cast<KepRObject*>(t));
    } else {
      static_cast<KepObject*>(t)->addRef();
    }
  }

  void releaseTarget(KepBridgeToObject * t) {
    if (t == nullptr) return;
    if (KEP_IS_REAL_OBJ(t)) {
      _KepBodyCount::release(static_cast<KepRObject*>(t));
    } else {
      static_cast<KepObject*>(t)->release();
    }
  }

  // The sharing rule of copies: a library handle's target is shared; an outer
  // object is targeted itself.
  KepBridgeToObject* shareFrom(KepObject const& src) {
    if (src.isBridge()) {
      KepBridgeToObject* t = src.getTarget();
      addRefTarget(t);
      return t;
    }
    src.addRef();
    return const_cast<KepObject*>(&src);
  }

}  // namespace

// --- Handle routines -------------------------------------------------------

void KepBridgeBaseCtor(KepObject* self) {
  self->count.store(0, std::memory_order_relaxed);
  self->target = nullptr;
  if (diagnosticsOn()) KepDebugger::notifyBridgeCreate(self);
}

void KepBridgeBaseCtor(KepObject* self, KepBridgeToObject* p) {
  self->count.store(0, std::memory_order_relaxed);
  if (p == nullptr) {
    self->target = nullptr;
  } else if (KEP_IS_REAL_OBJ(p)) {
    _KepBodyCount::addRef(static_cast<KepRObject*>(p));
    self->target = p;
  } else {
    self->target = shareFrom(*static_cast<KepObject*>(p));
  }
  if (diagnosticsOn()) KepDebugger::notifyBridgeCreate(self);
}

void KepBridgeBaseCopyCtor(KepObject* self, KepObject const& src) {
  self->count.store(0, std::memory_order_relaxed);
  self->target = shareFrom(src);
  if (diagnosticsOn()) KepDebugger::notifyBridgeCreate(self);
}

void KepBridgeCopyCtor(KepObject* self, KepObject const& src) { self->target = shareFrom(src); }

void KepBridgeMoveCtor(KepObject* self, KepObject& src) noexcept {
  if (src.isBridge()) {
    self->target = src.target;
    src.target = nullptr;
  } else {
    self->target = shareFrom(src);
  }
}

void KepBridgeBaseCtor2(KepObject* self, KepDummy*, KepDummy* classId) {
  self->kepWord = 0;
  self->count.store(1, std::memory_order_relaxed);  // guards the object while it is wired
  self->target = nullptr;
  if (classId != nullptr) {
    int id = static_cast<int>(reinterpret_cast<intptr_t>(classId));
    {
      KepObject temporary = KepGetObject(id, 0);
      KepBridgeOperatorAssign(self, temporary);
    }
    KepRObject* body = self->getRealKepObj();
    if (body != nullptr) body->setRealOuterObj(self);
  }
  self->count.store(0, std::memory_order_relaxed);
  if (diagnosticsOn()) KepDebugger::notifyBridgeCreate(self);
}

KepObject* KepBridgeOperatorAssign(KepObject* self, KepObject const& src) {
  if (&src == self) return self;
  KepBridgeToObject* old = self->target;
  // Share the new target before releasing the old one, so that assigning a handle
  // whose body only lives through the old target keeps it alive.
  KepBridgeToObject* shared = shareFrom(src);
  if (old != nullptr) {
    KepRObject* body = self->getRealKepObj();
    // An outer object never gives up its own reference on its body here.
    if (body == nullptr || body->getRealOuterObj() != self) releaseTarget(old);
  }
  self->target = shared;
  return self;
}

void KepBridgeBaseDtor(KepObject* self) {
  KepBridgeToObject* t = self->target;
  self->target = nullptr;
  releaseTarget(t);
  if (diagnosticsOn()) KepDebugger::notifyBridgeDestroy(self);
}

// --- KepObject ---------------------------------------------------------------

KepObject::KepObject() noexcept : KepBridgeToObject(0), target(nullptr), count(0) {
  KepBridgeBaseCtor(this);
}

KepObject::KepObject(KepBridgeToObject* p) : KepBridgeToObject(0), target(nullptr), count(0) {
  KepBridgeBaseCtor(this, p);
}

KepObject::KepObject(KepObject const& src) : KepBridgeToObject(0), target(nullptr), count(0) {
  KepBridgeBaseCopyCtor(this, src);
}

KepObject::KepObject(KepObject&& src) noexcept : KepBridgeToObject(0), target(nullptr), count(0) {
  KepBridgeMoveCtor(this, src);
  if (diagnosticsOn()) KepDebugger::notifyBridgeCreate(this);
}

KepObject::KepObject(KepDummy* dummy, KepDummy* classId)
    : KepBridgeToObject(0), target(nullptr), count(0) {
  KepBridgeBaseCtor2(this, dummy, classId);
}

KepObject& KepObject::operator=(KepObject const& src) {
  KepBridgeOperatorAssign(this, src);
  return *this;
}

KepObject::~KepObject() { KepBridgeBaseDtor(this); }

KepRObject* KepObject::getRealKepObj() const {
  if (target == nullptr) return nullptr;
  if (KEP_IS_REAL_OBJ(target)) return static_cast<KepRObject*>(target);
  return static_cast<KepObject*>(target)->getRealKepObj();
}

void KepObject::_destroy() {}

KepObject* KepObject::newBridge() {
  auto* h = new KepObject();
  KepBridgeOperatorAssign(h, *this);
  return h;
}

void KepObject::freeBridge() { delete this; }

unsigned long KepObject::isBridge() const { return 1; }

int KepObject::getActualClassID() const { return KepClassID::Object; }

void KepObject::addRef() const { count.fetch_add(1, std::memory_order_relaxed); }

void KepObject::release() const {
  auto* self = const_cast<KepObject*>(this);
  if (count.load(std::memory_order_acquire) == 1) {
    KepRObject* body = getRealKepObj();
    if (body != nullptr && body->getRealOuterObj() == self) {
      if (body->getRefCount() != 1) {
        // The body is still shared: the outer object lives on with it.
        count.store(0, std::memory_order_release);
        return;
      }
      body->setRealOuterObj(nullptr);
    }
    self->_destroy();
    delete self;
    return;
  }
  count.fetch_sub(1, std::memory_order_acq_rel);
}

KepObject* KepObject::newObject() { return new KepObject(); }
