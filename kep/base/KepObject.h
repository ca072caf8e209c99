// KepObject: the root handle class, and the free routines that construct, copy,
// assign and destroy every handle of the library.
#ifndef KEP_BASE_KEPOBJECT_H
#define KEP_BASE_KEPOBJECT_H

#include <atomic>
#include <cstdint>

#include "kep/base/KepBridge.h"
#include "kep/base/KepDefs.h"

// The public operations of every object, in the order of the body's virtual
// operations. Each is reached through its bridge `bridgeKepRObject_<name>`.
// clang-format off
#define KEP_METHODS_Object(X)                                                                  \
  X(Object, KepObject, createAnother, (), (), const, 0)                                        \
  X(Object, KepObject, getObject, (int classId), (classId), const, 0)                          \
  X(Object, KepObject, getObject, (int classId, int sub), (classId, sub), const, 0)            \
  X(Object, KepObject, getObject, (KepString const& name), (name), const, 0)                   \
  X(Object, KepObject, getObject, (KepString const& name, int sub), (name, sub), const, 0)     \
  X(Object, unsigned long, equals, (KepObject const& other), (other), const, 0)                \
  X(Object, KepString, toString, (), (), const, 0)                                             \
  X(Object, int, getClassID, (), (), const, 0)                                                 \
  X(Object, int, getKepClassID, (), (), const, 0)                                              \
  X(Object, unsigned long, isOfType, (int classId), (classId), const, 0)                       \
  X(Object, void, setOuterClassID, (int classId), (classId), , 0)                              \
  X(Object, int, getOuterClassID, (), (), const, 0)                                            \
  X(Object, void, eventHandler, (KepEvent& event), (event), , 0)                               \
  X(Object, void, validate, (KepEvent& event), (event), , 0)                                   \
  X(Object, unsigned long, shouldPublish, (), (), , 0)                                         \
  X(Object, unsigned long, enablePublish, (), (), , 0)                                         \
  X(Object, unsigned long, disablePublish, (), (), , 0)                                        \
  X(Object, unsigned long, hasAsyncronousInterest, (), (), , 0)                                \
  X(Object, unsigned long, enableAsyncronous, (), (), , 0)                                     \
  X(Object, unsigned long, disableAsyncronous, (), (), , 0)                                    \
  X(Object, void, setService, (int service), (service), , 0)                                   \
  X(Object, int, getService, (), (), const, 0)                                                 \
  X(Object, int, lock, (), (), , 0)                                                            \
  X(Object, int, lock, (int timeout), (timeout), , 0)                                          \
  X(Object, void, unlock, (), (), , 0)                                                         \
  X(Object, int, lockSoft, (), (), , 0)                                                        \
  X(Object, int, lockSoft, (int timeout), (timeout), , 0)                                      \
  X(Object, void, unlockSoft, (), (), , 0)                                                     \
  X(Object, void, threadSafeMethodBegin, (), (), , 0)                                          \
  X(Object, void, threadSafeMethodEnd, (), (), , 0)                                            \
  X(Object, KepIOStream, getContent, (), (), , 0)                                              \
  X(Object, KepDOMElement, getContent, (KepDOMElement& element), (element), , 0)               \
  X(Object, KepString, getObjectId, (), (), const, 0)
// clang-format on

// The handle routines. Every handle class's constructors call them; they carry
// the sharing, counting and outer-object rules.

// Default construction: count 0, target null.
KEP_API void KepBridgeBaseCtor(KepObject* self);
// Construction on a given target; see KepObject(KepBridgeToObject*).
KEP_API void KepBridgeBaseCtor(KepObject* self, KepBridgeToObject* p);
// Copy construction of KepObject: shares the source's target.
KEP_API void KepBridgeBaseCopyCtor(KepObject* self, KepObject const& src);
// The same sharing rule for derived handle classes, whose base part was built as
// a null handle first. Does not notify the debugger.
KEP_API void KepBridgeCopyCtor(KepObject* self, KepObject const& src);
// Move construction: takes the source's target when the source is a library
// handle (the source becomes null), else shares like KepBridgeCopyCtor.
KEP_API void KepBridgeMoveCtor(KepObject* self, KepObject& src) noexcept;
// Outer-object construction; see KepObject(KepDummy*, KepDummy*).
KEP_API void KepBridgeBaseCtor2(KepObject* self, KepDummy* dummy, KepDummy* classId);
// Assignment; answers `self`.
KEP_API KepObject* KepBridgeOperatorAssign(KepObject* self, KepObject const& src);
// Destruction: releases the target.
KEP_API void KepBridgeBaseDtor(KepObject* self);

// KepObject is a small value that refers to a body (`KepRObject`) shared under a
// reference count, or to an outer object. Copying a handle shares the body and
// adds one reference; destroying it releases that reference, and the last release
// deletes the body. A default-constructed handle is null: getRealKepObj() answers
// null and every method answers its neutral result (0, false, a null handle).
//
// Outer objects: a caller extends a library class by deriving from its handle
// class, constructing the base with (KepDummy*, KepClassIdArg(classId)) and
// overriding isBridge() to answer false. Handles copied from such an object target
// the outer object itself, so calls made through them reach the caller's
// overrides; the outer object is heap-allocated and deletes itself when neither
// its own count nor its body's other references remain.
//
// Thread safety: a handle may be copied and destroyed on any thread while other
// threads use other handles on the same body; reference counts are atomic. One
// handle object must not be assigned on one thread while another reads it.
class KEP_API KepObject : public KepBridgeToObject {
 public:
  // A null handle (KepBridgeBaseCtor).
  KepObject() noexcept;
  // A handle on `p`: a body gains a reference; a library handle's target is
  // shared; an outer object is targeted itself and its count raised. Null `p`
  // gives a null handle.
  KepObject(KepBridgeToObject* p);
  // Shares `src`'s target (KepBridgeBaseCopyCtor).
  KepObject(KepObject const& src);
  // Takes over `src`'s target; `src` becomes null. An outer-object source is
  // shared instead, exactly as by the copy constructor.
  KepObject(KepObject&& src) noexcept;
  // Outer-object constructor (KepBridgeBaseCtor2): with a non-null class id a body
  // of that class is made through the factory, this object targets it and the body
  // records this object as its outer object. With a null class id, a null handle.
  KepObject(KepDummy* dummy, KepDummy* classId);
  // Releases the old target (unless this is the registered outer object of it)
  // and shares `src`'s. Self-assignment changes nothing.
  KepObject& operator=(KepObject const& src);
  // Releases the target (KepBridgeBaseDtor).
  ~KepObject() override;

  // The body behind this handle: null for a null handle, the target when it is a
  // body, the outer object's own body otherwise.
  virtual KepRObject* getRealKepObj() const;
  // Called just before an outer object deletes itself; does nothing here.
  virtual void _destroy();
  // A new heap handle sharing this handle's target; free it with freeBridge().
  virtual KepObject* newBridge();
  // Deletes this heap handle through its virtual destructor.
  virtual void freeBridge();
  // True for every library handle; a caller's outer class answers false.
  virtual unsigned long isBridge() const;
  // The root class id 0x40024.
  virtual int getActualClassID() const;
  // Counts a reference to this handle; meaningful only for outer objects.
  virtual void addRef() const;
  // Drops a reference to this handle; an outer object deletes itself with its
  // last one unless its body is still shared elsewhere.
  virtual void release() const;

  KEP_METHODS_Object(KEP_DECLARE_METHOD)

      // Allocates a null KepObject on the heap.
      static KepObject* newObject();

  // The target pointer (a body, an outer object, or null).
  KepBridgeToObject* getTarget() const noexcept { return target; }
  // This handle's own reference count; non-zero only while it serves as an
  // outer object that other handles target.
  int64_t getCount() const noexcept { return count.load(std::memory_order_relaxed); }

  // True when the handle is null.
  bool isNull() const noexcept { return target == nullptr; }

 protected:
  friend void KepBridgeBaseCtor(KepObject* self);
  friend void KepBridgeBaseCtor(KepObject* self, KepBridgeToObject* p);
  friend void KepBridgeBaseCopyCtor(KepObject* self, KepObject const& src);
  friend void KepBridgeCopyCtor(KepObject* self, KepObject const& src);
  friend void KepBridgeMoveCtor(KepObject* self, KepObject& src) noexcept;
  friend void KepBridgeBaseCtor2(KepObject* self, KepDummy* dummy, KepDummy* classId);
  friend KepObject* KepBridgeOperatorAssign(KepObject* self, KepObject const& src);
  friend void KepBridgeBaseDtor(KepObject* self);
  friend class KepRObject;

  // The body or outer object this handle refers to; null for a null handle.
  KepBridgeToObject* target;
  // Count of references to this handle itself (outer objects only).
  mutable std::atomic<int64_t> count;
};

KEP_METHODS_Object(KEP_DECLARE_BRIDGE)

#endif  // KEP_BASE_KEPOBJECT_H
