#include "kep/memory/_KepMemoryTest.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "kep/memory/KepMemory.h"

namespace {

// One row of the handle table. A handle word is (generation << 32) | (index + 1);
// the generation changes whenever a row is reused, so an old handle never matches
// the row's next block.
struct Entry {
  void* block = nullptr;
  unsigned long size = 0;
  uint32_t generation = 1;
  uint32_t locks = 0;
  bool live = false;     // allocated and not yet freed
  bool retired = false;  // freed while locked: released by the last unlock
};

class HandleTable {
 public:
  uint32_t allocate(unsigned long size, uint32_t locks, void** handle, void** block) {
    if (handle == nullptr) return KEP_MM_BAD_HANDLE;
    *handle = nullptr;
    void* mem = KepCalloc(1, size == 0 ? 1 : size);
    if (mem == nullptr) return KEP_MM_BAD_HANDLE;
    std::lock_guard<std::mutex> guard(mutex_);
    uint32_t index;
    if (!free_.empty()) {
      index = free_.back();
      free_.pop_back();
    } else {
      index = static_cast<uint32_t>(entries_.size());
      if (index >= kMaxEntries) {
        KepFree(mem);
        return KEP_MM_BAD_HANDLE;
      }
      entries_.emplace_back();
    }
    Entry& e = entries_[index];
    e.block = mem;
    e.size = size;
    e.locks = locks;
    e.live = true;
    e.retired = false;
    ++live_;
    *handle = encode(index, e.generation);
    if (block != nullptr) *block = mem;
    return 0;
  }

  uint32_t lock(void* handle, void** block) {
    std::lock_guard<std::mutex> guard(mutex_);
    Entry* e = find(handle);
    if (e == nullptr || !e->live) return KEP_MM_BAD_HANDLE;
    ++e->locks;
    if (block != nullptr) *block = e->block;
    return 0;
  }

  uint32_t unlock(void* handle) {
    std::lock_guard<std::mutex> guard(mutex_);
    Entry* e = find(handle);
    if (e == nullptr || (!e->live && !e->retired)) return KEP_MM_BAD_HANDLE;
    if (e->locks > 0) --e->locks;
    if (e->retired && e->locks == 0) release(handle, *e);
    return 0;
  }

  uint32_t free(void* handle, bool unlockFirst) {
    std::lock_guard<std::mutex> guard(mutex_);
    Entry* e = find(handle);
    if (e == nullptr || !e->live) return KEP_MM_BAD_HANDLE;
    if (unlockFirst && e->locks > 0) --e->locks;
    e->live = false;
    if (e->locks == 0) {
      release(handle, *e);
    } else {
      e->retired = true;
    }
    return 0;
  }

  uint32_t size(void* handle, unsigned long* out) {
    std::lock_guard<std::mutex> guard(mutex_);
    Entry* e = find(handle);
    if (e == nullptr || !e->live || out == nullptr) return KEP_MM_BAD_HANDLE;
    *out = e->size;
    return 0;
  }

  unsigned long live() {
    std::lock_guard<std::mutex> guard(mutex_);
    return live_;
  }

 private:
  static constexpr uint32_t kMaxEntries = 1u << 24;

  static void* encode(uint32_t index, uint32_t generation) {
    uint64_t word = (static_cast<uint64_t>(generation) << 32) | (index + 1u);
    return reinterpret_cast<void*>(static_cast<uintptr_t>(word));
  }

  Entry* find(void* handle) {
    uint64_t word = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(handle));
    uint32_t low = static_cast<uint32_t>(word);
    if (low == 0 || low > entries_.size()) return nullptr;
    Entry& e = entries_[low - 1];
    if (e.generation != static_cast<uint32_t>(word >> 32)) return nullptr;
    return &e;
  }

  void release(void* handle, Entry& e) {
    KepFree(e.block);
    e.block = nullptr;
    e.size = 0;
    e.live = false;
    e.retired = false;
    e.locks = 0;
    if (++e.generation == 0) e.generation = 1;
    --live_;
    uint32_t index = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle)) - 1u;
    free_.push_back(index);
  }

  std::mutex mutex_;
  std::vector<Entry> entries_;
  std::vector<uint32_t> free_;
  unsigned long live_ = 0;
};

HandleTable& table() {
  // Never destroyed: handles may be released by threads that outlive static
  // destruction at process exit.
  static HandleTable* t = new HandleTable;
  return *t;
}

}  // namespace

uint32_t _KepMMTestAlloc(unsigned long size, void** handle) {
  return table().allocate(size, 0, handle, nullptr);
}

uint32_t _KepMMTestAllocLocked(unsigned long size, void** handle, void** block) {
  return table().allocate(size, 1, handle, block);
}

uint32_t _KepMMTestLock(void* handle, void** block) { return table().lock(handle, block); }

uint32_t _KepMMTestUnlock(void* handle) { return table().unlock(handle); }

uint32_t _KepMMTestFree(void* handle) { return table().free(handle, false); }

uint32_t _KepMMTestFreeLocked(void* handle) { return table().free(handle, true); }

uint32_t _KepMMTestSize(void* handle, unsigned long* size) { return table().size(handle, size); }

unsigned long _KepMMTestLiveHandles() { return table().live(); }
