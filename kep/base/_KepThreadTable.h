// The process thread table: one slot per live thread, found by the calling
// thread's id, holding the thread's KepThread object and its nine thread-data
// words with their destroy functions. The table is the storage of the
// shared-data store's thread scope (KepRSharedData scope 3).
#ifndef KEP_BASE_KEPTHREADTABLE_H
#define KEP_BASE_KEPTHREADTABLE_H

#include <atomic>
#include <cstdint>

#include "kep/base/KepDefs.h"
#include "kep/base/KepThread.h"

// Number of slots; at most this many threads are registered at once.
constexpr int KEP_THREAD_TABLE_SLOTS = 4057;
// Data words (and destroy functions) per thread.
constexpr int KEP_THREAD_DATA_WORDS = 9;

// Runs with a data word's value when its thread ends.
using _KepThreadDestroyFunc = void (*)(void*);
// A thread-data word. Atomic: other threads read and write it through
// _KepGetNextThreadData / _KepSetThreadData and the shared-data iterator.
using _KepThreadWord = std::atomic<void*>;
using _KepThreadDestroyWord = std::atomic<_KepThreadDestroyFunc>;

struct _KepThreadExitRecord;
struct _KepThreadNode;

// A thread's cached slot: the lookups' fast path, a plain thread-local read.
// Only the thread itself sets it, and only under lock (2, 18) to a slot in use;
// whoever takes that slot out of use clears it, under the same lock. So a cached
// slot is the thread's own until the thread reads null and looks again.
using _KepThreadSlotCache = std::atomic<_KepThreadNode*>;

// One slot of the table. A slot is in use while `id` is not 0. Slots are claimed
// and freed under shared-data lock (2, 18); lookups read `id` without the lock.
struct KEP_API _KepThreadNode {
  _KepThreadNode();
  _KepThreadNode(_KepThreadNode const&) = delete;
  _KepThreadNode& operator=(_KepThreadNode const&) = delete;

  // Low 32 bits of the thread's pthread_self(); 0 marks a slot not in use.
  std::atomic<uint32_t> id;
  // The thread's object.
  KepThread thread;
  _KepThreadWord data[KEP_THREAD_DATA_WORDS];
  _KepThreadDestroyWord destroyFunctions[KEP_THREAD_DATA_WORDS];
  // Bookkeeping of the thread that registered itself here (null for a slot that
  // another thread registered): while that thread lives, a removed slot keeps
  // its object and words for it, and its end frees the slot and runs the destroy
  // functions. Guarded by lock (2, 18).
  _KepThreadExitRecord* exitRecord;
  // The cache of the thread that has this slot cached, null when none has.
  // Guarded by lock (2, 18).
  _KepThreadSlotCache* cachedBy;
};

// Start-up and shut-down (Kep::init's first call, Kep::destroy's last call).
// Init publishes an empty table as process shared data 25; destroy unpublishes
// it, releases the thread objects and runs the destroy functions of the words
// still registered (those of threads other than the caller that are still
// running are kept for their end). Both are idempotent.
KEP_API void _KepProcessInitThreads();
KEP_API void _KepProcessDestroyThreads();

// The published table, or null before start-up and after shut-down.
KEP_API _KepThreadNode* _KepProcessThreadTable();

// Registers `thread` (under lock (2, 18)) at the slot found from its
// getThreadID(): home = the id widened with its sign, taken unsigned, modulo
// 4057; then the next free slots, wrapping once; a full table is ignored
// silently, as is an id of 0 or a missing table.
KEP_API void _KepProcessAddThreadToArray(KepThread& thread);
// Takes the slot of `thread`'s id out of use (same probe order, matching the id).
// When the thread that registered itself there is still running, the slot keeps
// its object and words until that thread ends; otherwise the object is released
// and the destroy functions run at once, on the caller.
KEP_API void _KepProcessRemoveThreadFromArray(KepThread& thread);

// Probes `table` for `id`, starting after its home slot ((id widened with its
// sign, unsigned) mod 4057 + 1), upwards, wrapping to 0 once; answers the slot
// index or -1. Sets `*sawFree` to 1 (when not null) if a free slot was passed.
KEP_API int LookThroughArray(int id, _KepThreadNode* table, int* sawFree);

// The caller's KepThread (the handle in its slot). A thread without a slot (one
// the library did not start, or one whose slot was removed) is given a new
// KepThread without a control block, registered and answered. Null before the
// table is set up, while the thread is ending, or when the table is full. The
// handle belongs to the caller's slot: copy it before handing it to another
// thread.
KEP_API KepThread* _KepProcessGetCurrThread();

// The calling thread's cached slot (see _KepThreadSlotCache).
KEP_API extern __thread _KepThreadSlotCache _kepThreadSlotCache
    __attribute__((tls_model("initial-exec")));

// The calling thread's slot when it is cached, else null.
inline _KepThreadNode* _KepCachedThreadNode() noexcept {
  return _kepThreadSlotCache.load(std::memory_order_relaxed);
}

// _KepGetCurrThreadData() for a caller whose slot is not cached.
KEP_API _KepThreadWord* _KepGetCurrThreadDataSlow();

// The caller's nine data words; registers the caller (KepProcess::getCurrThread)
// when it has no slot. Null before the table is set up, or when the table is full.
inline _KepThreadWord* _KepGetCurrThreadData() {
  _KepThreadNode* node = _KepCachedThreadNode();
  return node != nullptr ? node->data : _KepGetCurrThreadDataSlow();
}
// The caller's nine destroy-function words. Does not register: logs "index is -1
// in get destory function" and answers null when the caller has no slot. Null
// before the table is set up.
KEP_API _KepThreadDestroyWord* _KepGetCurrThreadDataDestroyFunctions();
// Stores `value` as data word `index` of table slot `slot` when that slot is in
// use. Out-of-range slots or indexes are ignored.
KEP_API void _KepSetThreadData(int slot, int index, void* value);
// From `slot` onward (a negative slot starts at 0), finds the first slot in use,
// puts its data word `index` in `value`, leaves `slot` on it and answers 1;
// answers 0 past the end (or for an out-of-range index, or without a table).
KEP_API int _KepGetNextThreadData(int& slot, int index, void*& value);

// Number of slots in use or kept for a running thread (for leak checks).
KEP_API int _KepThreadTableCount();

#endif  // KEP_BASE_KEPTHREADTABLE_H
