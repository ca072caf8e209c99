// KepRSharedData: the one place where the library keeps process-wide and
// thread-wide words. Process-wide tables (factory, tags, dispatch table, work
// queue, thread table) each live in a numbered slot and are guarded by one of 29
// numbered recursive locks.
#ifndef KEP_BASE_KEPRSHAREDDATA_H
#define KEP_BASE_KEPRSHAREDDATA_H

#include <cstddef>
#include <cstdint>

#include "kep/base/KepDefs.h"

// Scopes, the first argument of every operation.
constexpr int KEP_SCOPE_NONE = 1;     // no storage: every operation answers 0
constexpr int KEP_SCOPE_PROCESS = 2;  // one record per process
constexpr int KEP_SCOPE_THREAD = 3;   // the calling thread's data words

constexpr int KEP_SHARED_LOCKS = 29;
constexpr int KEP_SHARED_SLOTS = 70;
constexpr int KEP_SHARED_THREAD_WORDS = 9;
constexpr int KEP_SHARED_USER_ENTRIES = 101;
constexpr uint32_t KEP_SHARED_INIT_MARK = 0x5f98ab38u;

// Slots of the process scope used by the library.
constexpr int KEP_SLOT_CHAR_TABLE_X = 3;
constexpr int KEP_SLOT_CHAR_TABLE_Y = 4;
constexpr int KEP_SLOT_CHAR_TABLE_A = 5;
constexpr int KEP_SLOT_FACTORY_MARK = 7;
constexpr int KEP_SLOT_FACTORY_COUNT = 8;
constexpr int KEP_SLOT_FACTORY_TABLE = 9;
constexpr int KEP_SLOT_DISPATCH_TABLE = 14;
constexpr int KEP_SLOT_INIT_LAST = 18;
constexpr int KEP_SLOT_TAG_MANAGER = 21;
// The process thread table (_KepThreadTable.h). Slot 25 is also named for the
// work queue of the worker threads; the thread table holds it, so the work queue
// keeps its vector elsewhere (its own slots 46 and 47).
constexpr int KEP_SLOT_THREAD_TABLE = 25;
constexpr int KEP_SLOT_INIT_MARK = 30;
constexpr int KEP_SLOT_INIT_COUNT = 31;
constexpr int KEP_SLOT_STORE_MARK = 44;
constexpr int KEP_SLOT_STORE_COUNT = 45;

// Locks of the process scope used by the library.
constexpr int KEP_LOCK_STARTUP = 0;
constexpr int KEP_LOCK_FACTORY = 2;
constexpr int KEP_LOCK_TAGS = 5;
constexpr int KEP_LOCK_WORKER_POSITION = 10;
constexpr int KEP_LOCK_THREAD_TABLE = 18;
constexpr int KEP_LOCK_STORE = 19;
constexpr int KEP_LOCK_WORK_QUEUE = 20;

class KepSharedDataIterator;

// All operations are static. Values are 64-bit words; callers store pointers and
// counters in them. Scope 1 stores nothing and answers 0; scope 2 is the process
// record (created by the first init(), freed by the last destroy()); scope 3 is
// the calling thread's nine data words in the process thread table, each with an
// optional destroy function that runs when the thread ends. Before the thread
// table exists (Kep::init) scope-3 reads answer 0 and writes are ignored; the
// first scope-3 use by a thread the library did not start registers it.
//
// Out-of-range slot, lock or word numbers are refused: reads answer 0 and writes
// change nothing.
//
// Thread safety: get() and set() take no lock of their own; a caller that reads
// and changes a shared slot takes that slot's lock first. The locks are recursive.
// The user-data table is guarded internally.
class KEP_API KepRSharedData {
 public:
  // Creates the process record on the first call in the process (waiting, in 100 ms
  // steps, until the library's loader hook has run) and counts invocations in slot
  // 45 under lock 19.
  static void init();
  // Counts down; the call that brings the count to 0 frees the record.
  static void destroy();

  // Scope 2: KepMalloc(size). Other scopes: null.
  static void* alloc(int scope, size_t size);
  // Scope 2: KepFree(p). Other scopes: nothing.
  static void free(int scope, void* p);

  // Scope 2: takes lock n when the record exists and answers 1. Scope 3: answers
  // 1 and locks nothing. Other scopes: 0.
  static int lock(int scope, int n);
  // Scope 2: releases lock n. Other scopes: nothing.
  static void unlock(int scope, int n);

  // Scope 2: the slot word (0 before init()). Scope 3: the thread's word.
  static uint64_t get(int scope, int slot);
  // Scope 2: stores the slot word. Scope 3: stores the thread's word and clears
  // its destroy function.
  static void set(int scope, int slot, uint64_t value);
  // As above; in scope 3 `destroyFunc` runs with the word when the thread ends.
  static void set(int scope, int slot, uint64_t value, void (*destroyFunc)(void*));
  // Scope 3: the thread's destroy function for the word; otherwise null.
  static void (*getDestroyFunc(int scope, int slot))(void*);

  // Scope 2: value 1 or 2 (`which`) of the user-data entry of `key`, else 0.
  static uint64_t getUserData(int scope, int key, int which);
  // Scope 2: stores value 1 or 2 of the entry of `key`; an entry whose two values
  // are then 0 is freed.
  static void setUserData(int scope, int key, int which, uint64_t value);

  // An iterator over word `slot` of every registered thread, walking the thread
  // table in slot order. Scope 2 and scope 3 answer the same walk; other scopes
  // and word numbers outside 0 ... 8 answer null.
  static KepSharedDataIterator* getIterator(int scope, int slot);
  static void freeIterator(KepSharedDataIterator* it);

  // Typed helpers for slots that hold pointers.
  template <class T>
  static T* getPointer(int scope, int slot) {
    return reinterpret_cast<T*>(static_cast<uintptr_t>(get(scope, slot)));
  }
  static void setPointer(int scope, int slot, void const* p) {
    set(scope, slot, static_cast<uint64_t>(reinterpret_cast<uintptr_t>(p)));
  }

  // True while the process record exists.
  static bool isCreated();
};

// Walks one thread-data word of every live thread.
class KEP_API KepSharedDataIterator {
 public:
  virtual ~KepSharedDataIterator() = default;
  // Moves to the next thread; false past the last one. The first call moves to
  // the first thread.
  virtual bool next() = 0;
  // The current thread's word.
  virtual uint64_t get() const = 0;
  // Replaces the current thread's word.
  virtual void set(uint64_t value) = 0;
};

#endif  // KEP_BASE_KEPRSHAREDDATA_H
