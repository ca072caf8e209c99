// KepRObject: the root body class. Every body of the library derives from it.
#ifndef KEP_BASE_KEPROBJECT_H
#define KEP_BASE_KEPROBJECT_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "kep/base/KepClassID.h"
#include "kep/base/KepObject.h"

class _KepSemaphore;

// A body holds an object's state and behaviour. It lives on the heap, is shared by
// every handle that targets it and is deleted with its last reference. A new body
// has reference count 0 until the first handle wraps it.
//
// Flags: bit 0 (1) publishing enabled, bit 1 (2) asynchronous interest, bit 2 (4)
// the body owns a semaphore. A new body has flags 1.
//
// Locks: `lock()`/`unlock()` is a recursive critical section over several calls,
// shared with the soft lock that brackets the thread-safe bridge calls. The
// semaphore is made lazily: by `lock()` from any thread, or by the creating
// thread's first bracketed call. Wrapping the body in a handle on its creating
// thread counts as such a call: from then on every thread's bracketed calls
// lock (the semaphore itself is made by the first of them). A body that its
// creator has neither wrapped nor called passes other threads' bracketed calls
// unlocked.
//
// Thread safety: reference counting is atomic; the lock and flag operations may be
// called from any thread. Other state belongs to the derived classes' rules.
class KEP_API KepRObject : public KepBridgeToObject {
 public:
  // A body with reference count 0, flags 1, service 0, no outer object, owned by
  // the calling thread.
  KepRObject();
  // Frees the body's semaphore when one was made.
  ~KepRObject() override;

  // Body storage. Each thread keeps the blocks of the small bodies it deleted,
  // by size, and gives them to its next bodies of the same size without a lock
  // or a trip through the heap; what a thread keeps goes back to the heap when
  // it ends. The blocks are ordinary ::operator new blocks either way.
  static void* operator new(std::size_t size);
  static void operator delete(void* p, std::size_t size) noexcept;
  static void* operator new(std::size_t, void* where) noexcept { return where; }
  static void operator delete(void*, void*) noexcept {}

  KEP_METHODS_Object(KEP_DECLARE_METHOD)

      // The root class id 0x40024 ("Object").
      static int getStaticClassID();
  // The class id of the object's actual class.
  virtual int getActualClassID() const;
  // Always false: a body is not a handle.
  virtual unsigned long isBridge() const;
  // A new heap handle on this body (adds a reference); free it with freeBridge().
  virtual KepObject* newBridge();
  // Adds one reference. Counting is not an override point: every body counts
  // the same way, which lets handle copies update the count directly.
  virtual void addRef() const final;
  // Drops one reference; the last reference deletes the body. When only the
  // registered outer object's reference and the caller's remain and the outer
  // object is not itself referenced, the outer object is freed, and with it the
  // body.
  virtual void release() const final;
  // The registered outer object, or null.
  virtual KepObject* getRealOuterObj();
  // Registers (or, with null, clears) the outer object.
  virtual void setRealOuterObj(KepObject* outer);

  // A handle on this body.
  operator KepObject() const;

  // Observers for diagnostics and tests: the reference count, the flag byte and
  // whether the body has made its semaphore.
  int64_t getRefCount() const noexcept { return refCount.load(std::memory_order_acquire); }
  unsigned getFlags() const noexcept { return flags.load(std::memory_order_acquire); }
  bool hasSemaphore() const noexcept { return (getFlags() & kFlagOwnsSemaphore) != 0; }

  static constexpr uint8_t kFlagPublish = 1;
  static constexpr uint8_t kFlagAsync = 2;
  static constexpr uint8_t kFlagOwnsSemaphore = 4;

 protected:
  // The body's semaphore, made under the process semaphore when it is missing.
  _KepSemaphore* ensureSemaphore();

 private:
  friend class _KepBodyArena;
  static constexpr uint8_t kPlacedInArena = 1;
  // Frees a body whose last reference went: every path that frees a body
  // comes here. A body placed by a _KepBodyArena gives its memory back to its
  // chunk; any other is deleted.
  static void destroy(KepRObject const* body) noexcept;
  // kPlacedInArena for a body that a _KepBodyArena placed in one of its chunks.
  // It fills the padding behind the marker word.
  uint8_t placement;

 protected:
  // References held on the body.
  mutable std::atomic<int64_t> refCount;
  // The creating thread's id until the semaphore exists, then the semaphore.
  std::atomic<uint64_t> ownerOrLock;
  // Publish, asynchronous and owns-semaphore bits.
  std::atomic<uint8_t> flags;
  // 1 once the creating thread has added a reference: the bracketed calls of
  // every thread then lock. Written only by the creating thread.
  std::atomic<uint8_t> creatorCounted;
  // The owning service's id (a tag), 0 when none.
  std::atomic<int32_t> service;
  // The caller's object registered for this body, or null.
  std::atomic<KepObject*> realOuterObj;

 private:
  friend struct _KepBodyCount;
  // release() of a body that has a registered outer object.
  void releaseWithOuter() const;

  KepRObject(KepRObject const&) = delete;
  KepRObject& operator=(KepRObject const&) = delete;
};

// Soft-lock bracket used by the bridges of thread-safe methods.
template <>
struct KepBridgeBracket<0> {
  explicit KepBridgeBracket(KepRObject*) noexcept {}
};
template <>
struct KepBridgeBracket<1> {
  explicit KepBridgeBracket(KepRObject* body) : body_(body) { body_->threadSafeMethodBegin(); }
  ~KepBridgeBracket() { body_->threadSafeMethodEnd(); }
  KepBridgeBracket(KepBridgeBracket const&) = delete;
  KepBridgeBracket& operator=(KepBridgeBracket const&) = delete;

 private:
  KepRObject* body_;
};

// The class identity operations of a body class `KepR<S>` whose id is the
// constant KepClassID::S and whose base body class is `Base`.
#define KEP_BODY_IDENTITY(S, Base)                                \
 public:                                                          \
  static int getStaticClassID() { return KepClassID::S; }         \
  int getClassID() const override { return KepClassID::S; }       \
  int getKepClassID() const override { return KepClassID::S; }    \
  int getActualClassID() const override { return KepClassID::S; } \
  unsigned long isOfType(int classId) const override {            \
    return classId == KepClassID::S || Base::isOfType(classId);   \
  }

// createAnother() for a default-constructible body class `KepR<S>`.
#define KEP_BODY_CREATE_ANOTHER(S) \
  KepObject createAnother() const override { return KepObject(new KepR##S()); }

#endif  // KEP_BASE_KEPROBJECT_H
