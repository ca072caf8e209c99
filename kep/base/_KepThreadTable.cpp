#include "kep/base/_KepThreadTable.h"

#include <mutex>
#include <vector>

#include "kep/base/KepClassID.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepRSharedData.h"
#include "kep/base/KepRThread.h"
#include "kep/multi/_KepThread.h"

// The bookkeeping of a thread that registered itself: the slots it claimed. Its
// destructor is the thread-exit hook (a thread_local object): it frees those
// slots and runs their words' destroy functions, also for threads the library
// did not start. `slots` is guarded by lock (2, 18).
struct _KepThreadExitRecord {
  _KepThreadExitRecord() = default;
  _KepThreadExitRecord(_KepThreadExitRecord const&) = delete;
  _KepThreadExitRecord& operator=(_KepThreadExitRecord const&) = delete;
  ~_KepThreadExitRecord();

  std::vector<int> slots;
  // The slot the thread has cached, or null.
  _KepThreadNode* cached = nullptr;
};

namespace {

constexpr int kSlots = KEP_THREAD_TABLE_SLOTS;
constexpr int kWords = KEP_THREAD_DATA_WORDS;

// The slot storage is allocated by the first start-up and kept for the life of
// the process: a thread still running at shut-down then reads a cleared table,
// never freed memory. `gTable` is the published table (the same storage), null
// before start-up and after shut-down; it mirrors process shared data 25 for the
// lock-free lookups.
std::atomic<_KepThreadNode*> gStorage{nullptr};
std::atomic<_KepThreadNode*> gTable{nullptr};

// Trivial thread-locals in the initial-exec model (plain thread-pointer-relative
// loads). `tExiting` is set when the thread-exit hook starts: an ending thread is
// not registered again.
thread_local bool tExiting __attribute__((tls_model("initial-exec"))) = false;
// The calling thread's exit record, once it registered itself.
thread_local _KepThreadExitRecord* tRecord __attribute__((tls_model("initial-exec"))) = nullptr;

_KepThreadExitRecord& currentRecord() {
  thread_local _KepThreadExitRecord record;
  tRecord = &record;
  return record;
}

// Holds shared-data lock (2, 18) for a scope, and inside it a lock of the
// table's own: the shared-data store is gone after the last shut-down, while
// threads that end later still free the slots kept for them.
std::recursive_mutex& storageMutex() {
  static auto* m = new std::recursive_mutex;  // never destroyed: threads may end late
  return *m;
}

class TableLock {
 public:
  TableLock() {
    KepRSharedData::lock(KEP_SCOPE_PROCESS, KEP_LOCK_THREAD_TABLE);
    storageMutex().lock();
  }
  ~TableLock() {
    storageMutex().unlock();
    KepRSharedData::unlock(KEP_SCOPE_PROCESS, KEP_LOCK_THREAD_TABLE);
  }
  TableLock(TableLock const&) = delete;
  TableLock& operator=(TableLock const&) = delete;
};

// Home slot of a registered id: the id widened with its sign, taken unsigned.
int homeOf(uint32_t id) {
  return static_cast<int>(static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(id))) %
                          kSlots);
}

// Probes `start`, then upwards, wrapping to 0 once; -1 at the second wrap.
template <class Match>
int probe(int start, Match match) {
  if (match(start)) return start;
  int wraps = 0;
  for (int i = start + 1;; ++i) {
    if (i >= kSlots) {
      if (++wraps == 2) return -1;
      i = 0;
    }
    if (match(i)) return i;
  }
}

// A slot may be claimed when no thread is registered there and none keeps it.
bool claimable(_KepThreadNode const& node) {
  return node.id.load(std::memory_order_acquire) == 0 && node.exitRecord == nullptr;
}

// What a freed slot hands back: its thread object and its words.
struct Released {
  KepThread thread;
  void* data[kWords];
  _KepThreadDestroyFunc destroy[kWords];
};

// Under the lock: clears the cache of the thread that has `node` cached.
void uncache(_KepThreadNode& node) {
  if (node.cachedBy == nullptr) return;
  node.cachedBy->store(nullptr, std::memory_order_relaxed);
  node.cachedBy = nullptr;
}

// Under the lock: takes a slot out of use but leaves its object and words to
// the running thread that registered itself there.
void retire(_KepThreadNode& node) {
  uncache(node);
  node.id.store(0, std::memory_order_release);
}

// Empties a slot (under the lock) into `out`.
void takeOut(_KepThreadNode& node, std::vector<Released>& out) {
  out.emplace_back();
  Released& r = out.back();
  r.thread = node.thread;
  node.thread = KepThread();
  for (int i = 0; i < kWords; ++i) {
    r.data[i] = node.data[i].exchange(nullptr, std::memory_order_acq_rel);
    r.destroy[i] = node.destroyFunctions[i].exchange(nullptr, std::memory_order_acq_rel);
  }
  node.exitRecord = nullptr;
  retire(node);
}

// Outside the lock: runs the destroy functions with their words, then releases
// the thread objects.
void finish(std::vector<Released>& released) {
  for (Released& r : released) {
    for (int i = 0; i < kWords; ++i) {
      if (r.destroy[i] != nullptr) r.destroy[i](r.data[i]);
    }
  }
  released.clear();
}

// Under the lock: caches `node`, which is in use with `id`, for the calling
// thread, unless the thread is ending (its cache must not outlive its exit
// hook, which clears it).
void cacheSlot(_KepThreadNode& node, uint32_t id) {
  if (tExiting || node.id.load(std::memory_order_acquire) != id) return;
  _KepThreadExitRecord& record = currentRecord();
  if (record.cached != nullptr && record.cached->cachedBy == &_kepThreadSlotCache) {
    record.cached->cachedBy = nullptr;
  }
  if (node.cachedBy != nullptr && node.cachedBy != &_kepThreadSlotCache) {
    // Another thread with the same low id bits: neither keeps a cache of it.
    uncache(node);
    record.cached = nullptr;
    _kepThreadSlotCache.store(nullptr, std::memory_order_relaxed);
    return;
  }
  node.cachedBy = &_kepThreadSlotCache;
  record.cached = &node;
  _kepThreadSlotCache.store(&node, std::memory_order_relaxed);
}

// The calling thread's slot in `table`, or -1. The cached slot is checked first.
// Otherwise: the lookup's home is the full pthread_self() modulo the size, and
// its slot is used when it carries that full value; else the probe from the
// registration's home (the low 32 bits) is asked. On 64-bit thread ids the two
// homes differ, so the probe is asked also when the lookup's home slot is free.
// A slot found is cached.
int findSlot(_KepThreadNode* table) {
  _KepThreadNode* cached = _KepCachedThreadNode();
  if (cached != nullptr && cached >= table && cached < table + kSlots) {
    return static_cast<int>(cached - table);
  }
  unsigned long self = _KepThrdId();
  auto low = static_cast<uint32_t>(self);
  int home = static_cast<int>(self % kSlots);
  int slot;
  if (static_cast<unsigned long>(table[home].id.load(std::memory_order_acquire)) == self) {
    slot = home;
  } else {
    int sawFree = 0;
    slot = LookThroughArray(static_cast<int>(low), table, &sawFree);
  }
  if (slot >= 0) {
    TableLock lock;
    cacheSlot(table[slot], low);
  }
  return slot;
}

bool validIndex(int index) { return index >= 0 && index < kWords; }

}  // namespace

__thread _KepThreadSlotCache _kepThreadSlotCache
    __attribute__((tls_model("initial-exec"))){nullptr};

_KepThreadNode::_KepThreadNode() : id(0), exitRecord(nullptr), cachedBy(nullptr) {
  for (int i = 0; i < kWords; ++i) {
    data[i].store(nullptr, std::memory_order_relaxed);
    destroyFunctions[i].store(nullptr, std::memory_order_relaxed);
  }
}

_KepThreadExitRecord::~_KepThreadExitRecord() {
  tExiting = true;
  std::vector<Released> released;
  {
    TableLock lock;
    _KepThreadNode* storage = gStorage.load(std::memory_order_acquire);
    if (storage != nullptr) {
      for (int slot : slots) {
        if (storage[slot].exitRecord == this) takeOut(storage[slot], released);
      }
    }
    if (cached != nullptr && cached->cachedBy == &_kepThreadSlotCache) cached->cachedBy = nullptr;
    cached = nullptr;
    _kepThreadSlotCache.store(nullptr, std::memory_order_relaxed);
    slots.clear();
    tRecord = nullptr;
  }
  finish(released);
}

void _KepProcessInitThreads() {
  TableLock lock;
  if (gTable.load(std::memory_order_acquire) != nullptr) return;
  _KepThreadNode* storage = gStorage.load(std::memory_order_acquire);
  if (storage == nullptr) {
    storage = new _KepThreadNode[kSlots];
    gStorage.store(storage, std::memory_order_release);
  }
  // Slots still kept for threads of an earlier start-up stay theirs until they end.
  gTable.store(storage, std::memory_order_release);
  KepRSharedData::setPointer(KEP_SCOPE_PROCESS, KEP_SLOT_THREAD_TABLE, storage);
}

void _KepProcessDestroyThreads() {
  std::vector<Released> released;
  {
    TableLock lock;
    _KepThreadNode* table = gTable.exchange(nullptr, std::memory_order_acq_rel);
    if (table == nullptr) return;
    if (KepRSharedData::getPointer<_KepThreadNode>(KEP_SCOPE_PROCESS, KEP_SLOT_THREAD_TABLE) ==
        table) {
      KepRSharedData::set(KEP_SCOPE_PROCESS, KEP_SLOT_THREAD_TABLE, 0);
    }
    for (int i = 0; i < kSlots; ++i) {
      _KepThreadNode& node = table[i];
      if (node.exitRecord != nullptr && node.exitRecord != tRecord) {
        // Another thread that is still running keeps its object and words.
        retire(node);
      } else if (node.id.load(std::memory_order_acquire) != 0 || node.exitRecord != nullptr) {
        takeOut(node, released);
      }
    }
    if (tRecord != nullptr) tRecord->slots.clear();
  }
  finish(released);
}

_KepThreadNode* _KepProcessThreadTable() { return gTable.load(std::memory_order_acquire); }

void _KepProcessAddThreadToArray(KepThread& thread) {
  auto id = static_cast<uint32_t>(thread.getThreadID());
  if (id == 0) return;
  _KepThreadExitRecord* owner = nullptr;
  if (id == static_cast<uint32_t>(_KepThrdId()) && !tExiting) owner = &currentRecord();
  KepThread copy(thread);
  TableLock lock;
  _KepThreadNode* table = gTable.load(std::memory_order_acquire);
  if (table == nullptr) return;
  int slot = probe(homeOf(id), [table](int i) { return claimable(table[i]); });
  if (slot < 0) return;  // full: ignored
  _KepThreadNode& node = table[slot];
  node.thread = copy;
  for (int i = 0; i < kWords; ++i) {
    node.data[i].store(nullptr, std::memory_order_relaxed);
    node.destroyFunctions[i].store(nullptr, std::memory_order_relaxed);
  }
  node.exitRecord = owner;
  if (owner != nullptr) owner->slots.push_back(slot);
  node.id.store(id, std::memory_order_release);
}

void _KepProcessRemoveThreadFromArray(KepThread& thread) {
  auto id = static_cast<uint32_t>(thread.getThreadID());
  if (id == 0) return;
  std::vector<Released> released;
  {
    TableLock lock;
    _KepThreadNode* table = gTable.load(std::memory_order_acquire);
    if (table == nullptr) return;
    int slot = probe(homeOf(id), [table, id](int i) {
      return table[i].id.load(std::memory_order_acquire) == id;
    });
    if (slot < 0) return;
    _KepThreadNode& node = table[slot];
    if (node.exitRecord != nullptr) {
      // Its thread may still be using the object and the words: they stay in the
      // slot, out of use, until that thread ends.
      retire(node);
    } else {
      takeOut(node, released);
    }
  }
  finish(released);
}

int LookThroughArray(int id, _KepThreadNode* table, int* sawFree) {
  if (table == nullptr || id == 0) return -1;
  auto key = static_cast<uint32_t>(id);
  int wraps = 0;
  for (int i = homeOf(key) + 1;; ++i) {
    if (i >= kSlots) {
      if (++wraps == 2) return -1;
      i = 0;
    }
    uint32_t found = table[i].id.load(std::memory_order_acquire);
    if (found == key) return i;
    if (found == 0 && sawFree != nullptr) *sawFree = 1;
  }
}

KepThread* _KepProcessGetCurrThread() {
  _KepThreadNode* cached = _KepCachedThreadNode();
  if (cached != nullptr) return &cached->thread;
  _KepThreadNode* table = gTable.load(std::memory_order_acquire);
  if (table == nullptr) return nullptr;
  int slot = findSlot(table);
  if (slot >= 0) return &table[slot].thread;
  if (tExiting) return nullptr;
  {
    // Is there room? Scan from the lookup's home + 1, wrapping once.
    TableLock lock;
    int start = static_cast<int>((_KepThrdId() + 1) % kSlots);
    if (probe(start, [table](int i) { return claimable(table[i]); }) < 0) return nullptr;
  }
  KepThread fresh(KepGetObject(KepClassID::Thread, 0));
  KepRThread* body = KepRThread::fromHandle(fresh);
  if (body == nullptr) return nullptr;
  body->_init(nullptr);
  slot = findSlot(table);
  return slot >= 0 ? &table[slot].thread : nullptr;
}

_KepThreadWord* _KepGetCurrThreadDataSlow() {
  _KepThreadNode* table = gTable.load(std::memory_order_acquire);
  if (table == nullptr) return nullptr;
  int slot = findSlot(table);
  if (slot < 0) {
    if (_KepProcessGetCurrThread() == nullptr) return nullptr;
    slot = findSlot(table);
    if (slot < 0) return nullptr;
  }
  return table[slot].data;
}

_KepThreadDestroyWord* _KepGetCurrThreadDataDestroyFunctions() {
  _KepThreadNode* table = gTable.load(std::memory_order_acquire);
  if (table == nullptr) return nullptr;
  int slot = findSlot(table);
  if (slot < 0) {
    KepProcess::logDebugString("index is -1 in get destory function");
    return nullptr;
  }
  return table[slot].destroyFunctions;
}

void _KepSetThreadData(int slot, int index, void* value) {
  if (slot < 0 || slot >= kSlots || !validIndex(index)) return;
  // Under the lock, so that the word is never written into a slot that is being
  // freed or claimed.
  TableLock lock;
  _KepThreadNode* table = gTable.load(std::memory_order_acquire);
  if (table == nullptr || table[slot].id.load(std::memory_order_acquire) == 0) return;
  table[slot].data[index].store(value, std::memory_order_release);
}

int _KepGetNextThreadData(int& slot, int index, void*& value) {
  _KepThreadNode* table = gTable.load(std::memory_order_acquire);
  if (table == nullptr || !validIndex(index)) return 0;
  for (int i = slot < 0 ? 0 : slot; i < kSlots; ++i) {
    if (table[i].id.load(std::memory_order_acquire) != 0) {
      value = table[i].data[index].load(std::memory_order_acquire);
      slot = i;
      return 1;
    }
  }
  return 0;
}

int _KepThreadTableCount() {
  TableLock lock;
  _KepThreadNode* storage = gStorage.load(std::memory_order_acquire);
  if (storage == nullptr) return 0;
  int used = 0;
  for (int i = 0; i < kSlots; ++i) {
    if (storage[i].id.load(std::memory_order_acquire) != 0 || storage[i].exitRecord != nullptr) {
      ++used;
    }
  }
  return used;
}
