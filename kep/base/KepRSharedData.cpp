#include "kep/base/KepRSharedData.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "kep/base/KepInit.h"
#include "kep/base/_KepThreadTable.h"
#include "kep/memory/KepMemory.h"
#include "kep/multi/_KepSemaphore.h"
#include "kep/multi/_KepThread.h"

namespace {

struct UserEntry {
  int32_t key;
  uint64_t value1;
  uint64_t value2;
};

// The process record. The three arrays are published through atomics because
// other threads read them without a lock.
struct ProcessRecord {
  std::atomic<int32_t> pid{0};
  std::atomic<_KepSemaphore*> locks{nullptr};
  std::atomic<std::atomic<uint64_t>*> slots{nullptr};
  std::atomic<UserEntry*> userData{nullptr};
};

ProcessRecord gProcess;
std::atomic<uint32_t> _KepProcInit{0};
// Guards the probing user-data table against concurrent writers.
std::mutex gUserDataMutex;

bool validSlot(int slot) { return slot >= 0 && slot < KEP_SHARED_SLOTS; }
bool validWord(int slot) { return slot >= 0 && slot < KEP_SHARED_THREAD_WORDS; }
bool validLock(int n) { return n >= 0 && n < KEP_SHARED_LOCKS; }

std::atomic<uint64_t>* slotWord(int slot) {
  std::atomic<uint64_t>* slots = gProcess.slots.load(std::memory_order_acquire);
  return (slots != nullptr && validSlot(slot)) ? &slots[slot] : nullptr;
}

// Home index of a key: the key widened with its sign, taken as unsigned, modulo
// the table size.
size_t userHome(int key) {
  return static_cast<size_t>(static_cast<uint64_t>(static_cast<int64_t>(key)) %
                             KEP_SHARED_USER_ENTRIES);
}

UserEntry* findUserData(UserEntry* table, int key, bool create) {
  size_t home = userHome(key);
  if (table[home].key == key || table[home].key == 0) return &table[home];
  UserEntry* firstFree = nullptr;
  for (size_t i = (home + 1) % KEP_SHARED_USER_ENTRIES; i != home;
       i = (i + 1) % KEP_SHARED_USER_ENTRIES) {
    if (table[i].key == key) return &table[i];
    if (create && firstFree == nullptr && table[i].key == 0) firstFree = &table[i];
  }
  return create ? firstFree : nullptr;
}

// Thread scope: the calling thread's words in the process thread table. Before
// the table exists (or for a bad word number) reads answer 0 and writes do
// nothing.
void setThreadWord(int slot, uint64_t value, void (*destroyFunc)(void*)) {
  if (!validWord(slot)) return;
  _KepThreadWord* words = _KepGetCurrThreadData();
  if (words == nullptr) return;
  _KepThreadDestroyWord* functions = _KepGetCurrThreadDataDestroyFunctions();
  words[slot].store(reinterpret_cast<void*>(static_cast<uintptr_t>(value)),
                    std::memory_order_release);
  if (functions != nullptr) functions[slot].store(destroyFunc, std::memory_order_release);
}

// Walks one word of every registered thread through the table's own walk and
// write operations.
class ThreadWordIterator final : public KepSharedDataIterator {
 public:
  explicit ThreadWordIterator(int index) : index_(index) {}

  bool next() override {
    int from = slot_ + 1;
    void* value = nullptr;
    if (_KepGetNextThreadData(from, index_, value) == 0) {
      slot_ = KEP_THREAD_TABLE_SLOTS;
      value_ = 0;
      return false;
    }
    slot_ = from;
    value_ = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(value));
    return true;
  }

  uint64_t get() const override { return value_; }

  void set(uint64_t value) override {
    if (slot_ < 0 || slot_ >= KEP_THREAD_TABLE_SLOTS) return;
    _KepSetThreadData(slot_, index_, reinterpret_cast<void*>(static_cast<uintptr_t>(value)));
    value_ = value;
  }

 private:
  int index_;
  int slot_ = -1;
  uint64_t value_ = 0;
};

}  // namespace

bool KepRSharedData::isCreated() {
  return _KepProcInit.load(std::memory_order_acquire) == KEP_SHARED_INIT_MARK;
}

void KepRSharedData::init() {
  while (InitComplete.load(std::memory_order_acquire) == 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  bool guarded = _KepMSemWait(&KepProcessSemaphore, static_cast<unsigned long>(-1)) == 0;
  if (_KepProcInit.load(std::memory_order_acquire) != KEP_SHARED_INIT_MARK) {
    gProcess.pid.store(static_cast<int32_t>(_KepProcessId()), std::memory_order_relaxed);
    auto* slots = new std::atomic<uint64_t>[KEP_SHARED_SLOTS];
    for (int i = 0; i < KEP_SHARED_SLOTS; ++i) slots[i].store(0, std::memory_order_relaxed);
    gProcess.locks.store(new _KepSemaphore[KEP_SHARED_LOCKS], std::memory_order_release);
    gProcess.slots.store(slots, std::memory_order_release);
    gProcess.userData.store(new UserEntry[KEP_SHARED_USER_ENTRIES](), std::memory_order_release);
    _KepProcInit.store(KEP_SHARED_INIT_MARK, std::memory_order_release);
  }
  if (guarded) _KepMSemSignal(&KepProcessSemaphore);

  lock(KEP_SCOPE_PROCESS, KEP_LOCK_STORE);
  if (get(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_MARK) != KEP_SHARED_INIT_MARK) {
    set(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_MARK, KEP_SHARED_INIT_MARK);
    set(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_COUNT, 1);
  } else {
    set(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_COUNT, get(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_COUNT) + 1);
  }
  unlock(KEP_SCOPE_PROCESS, KEP_LOCK_STORE);
}

void KepRSharedData::destroy() {
  if (!isCreated()) return;
  lock(KEP_SCOPE_PROCESS, KEP_LOCK_STORE);
  uint64_t count = get(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_COUNT);
  if (count > 0) set(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_COUNT, count - 1);
  if (count != 1) {
    unlock(KEP_SCOPE_PROCESS, KEP_LOCK_STORE);
    return;
  }
  // The last user: unpublish the record, then free it.
  gProcess.pid.store(0, std::memory_order_relaxed);
  _KepSemaphore* locks = gProcess.locks.exchange(nullptr, std::memory_order_acq_rel);
  std::atomic<uint64_t>* slots = gProcess.slots.exchange(nullptr, std::memory_order_acq_rel);
  UserEntry* userData = gProcess.userData.exchange(nullptr, std::memory_order_acq_rel);
  locks[KEP_LOCK_STORE].unlock();
  _KepProcInit.store(0, std::memory_order_release);
  delete[] locks;
  delete[] slots;
  delete[] userData;
}

void* KepRSharedData::alloc(int scope, size_t size) {
  return scope == KEP_SCOPE_PROCESS ? KepMalloc(size) : nullptr;
}

void KepRSharedData::free(int scope, void* p) {
  if (scope == KEP_SCOPE_PROCESS) KepFree(p);
}

int KepRSharedData::lock(int scope, int n) {
  if (scope == KEP_SCOPE_THREAD) return 1;
  if (scope != KEP_SCOPE_PROCESS) return 0;
  _KepSemaphore* locks = gProcess.locks.load(std::memory_order_acquire);
  if (locks != nullptr && validLock(n)) locks[n].lock();
  return 1;
}

void KepRSharedData::unlock(int scope, int n) {
  if (scope != KEP_SCOPE_PROCESS) return;
  _KepSemaphore* locks = gProcess.locks.load(std::memory_order_acquire);
  if (locks != nullptr && validLock(n)) locks[n].unlock();
}

uint64_t KepRSharedData::get(int scope, int slot) {
  if (scope == KEP_SCOPE_PROCESS) {
    std::atomic<uint64_t>* word = slotWord(slot);
    return word != nullptr ? word->load(std::memory_order_acquire) : 0;
  }
  if (scope == KEP_SCOPE_THREAD && validWord(slot)) {
    _KepThreadWord* words = _KepGetCurrThreadData();
    if (words != nullptr) {
      return static_cast<uint64_t>(
          reinterpret_cast<uintptr_t>(words[slot].load(std::memory_order_acquire)));
    }
  }
  return 0;
}

void KepRSharedData::set(int scope, int slot, uint64_t value) {
  if (scope == KEP_SCOPE_PROCESS) {
    std::atomic<uint64_t>* word = slotWord(slot);
    if (word != nullptr) word->store(value, std::memory_order_release);
  } else if (scope == KEP_SCOPE_THREAD) {
    setThreadWord(slot, value, nullptr);
  }
}

void KepRSharedData::set(int scope, int slot, uint64_t value, void (*destroyFunc)(void*)) {
  if (scope == KEP_SCOPE_PROCESS) {
    set(scope, slot, value);
  } else if (scope == KEP_SCOPE_THREAD) {
    setThreadWord(slot, value, destroyFunc);
  }
}

void (*KepRSharedData::getDestroyFunc(int scope, int slot))(void*) {
  if (scope != KEP_SCOPE_THREAD || !validWord(slot)) return nullptr;
  if (_KepProcessThreadTable() == nullptr) return nullptr;
  _KepThreadDestroyWord* functions = _KepGetCurrThreadDataDestroyFunctions();
  return functions != nullptr ? functions[slot].load(std::memory_order_acquire) : nullptr;
}

uint64_t KepRSharedData::getUserData(int scope, int key, int which) {
  if (scope != KEP_SCOPE_PROCESS || (which != 1 && which != 2)) return 0;
  std::lock_guard<std::mutex> guard(gUserDataMutex);
  UserEntry* table = gProcess.userData.load(std::memory_order_acquire);
  if (table == nullptr) return 0;
  UserEntry* e = findUserData(table, key, false);
  if (e == nullptr || e->key != key) return 0;
  return which == 1 ? e->value1 : e->value2;
}

void KepRSharedData::setUserData(int scope, int key, int which, uint64_t value) {
  if (scope != KEP_SCOPE_PROCESS || (which != 1 && which != 2)) return;
  std::lock_guard<std::mutex> guard(gUserDataMutex);
  UserEntry* table = gProcess.userData.load(std::memory_order_acquire);
  if (table == nullptr) return;
  UserEntry* e = findUserData(table, key, true);
  if (e == nullptr) return;  // table full
  if (e->key != key) {
    // A free entry: start it clean.
    e->value1 = 0;
    e->value2 = 0;
  }
  (which == 1 ? e->value1 : e->value2) = value;
  if (e->value1 == 0 && e->value2 == 0) {
    e->key = 0;
  } else {
    e->key = key;
  }
}

KepSharedDataIterator* KepRSharedData::getIterator(int scope, int slot) {
  if ((scope != KEP_SCOPE_PROCESS && scope != KEP_SCOPE_THREAD) || !validWord(slot)) return nullptr;
  return new ThreadWordIterator(slot);
}

void KepRSharedData::freeIterator(KepSharedDataIterator* it) { delete it; }
