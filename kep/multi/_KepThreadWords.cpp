#include "kep/multi/_KepThreadWords.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

#include "kep/base/KepRSharedData.h"

namespace {

// One thread's words. Registered in the process list while the thread lives so
// that iterators can reach every thread's words.
struct ThreadWords {
  std::atomic<uint64_t> data[KEP_SHARED_THREAD_WORDS];
  std::atomic<void (*)(void*)> destroy[KEP_SHARED_THREAD_WORDS];
  ThreadWords();
  ~ThreadWords();
};

std::mutex& registryMutex() {
  static std::mutex* m = new std::mutex;
  return *m;
}

std::vector<ThreadWords*>& registry() {
  static std::vector<ThreadWords*>* r = new std::vector<ThreadWords*>;
  return *r;
}

ThreadWords::ThreadWords() {
  for (int i = 0; i < KEP_SHARED_THREAD_WORDS; ++i) {
    data[i].store(0, std::memory_order_relaxed);
    destroy[i].store(nullptr, std::memory_order_relaxed);
  }
  std::lock_guard<std::mutex> guard(registryMutex());
  registry().push_back(this);
}

ThreadWords::~ThreadWords() {
  {
    std::lock_guard<std::mutex> guard(registryMutex());
    auto& r = registry();
    r.erase(std::remove(r.begin(), r.end(), this), r.end());
  }
  // Run the destroy functions of the words that have one, with their values.
  for (int i = 0; i < KEP_SHARED_THREAD_WORDS; ++i) {
    void (*fn)(void*) = destroy[i].exchange(nullptr, std::memory_order_acq_rel);
    uint64_t value = data[i].exchange(0, std::memory_order_acq_rel);
    if (fn != nullptr) fn(reinterpret_cast<void*>(static_cast<uintptr_t>(value)));
  }
}

ThreadWords& current() {
  thread_local ThreadWords words;
  return words;
}

bool validIndex(int index) { return index >= 0 && index < KEP_SHARED_THREAD_WORDS; }

class WordIterator final : public KepSharedDataIterator {
 public:
  explicit WordIterator(int index) : index_(index) {}

  // The iterator re-checks that the thread it stands on is still registered, so
  // a thread that ended in between is skipped instead of read.
  bool next() override {
    std::lock_guard<std::mutex> guard(registryMutex());
    auto& r = registry();
    size_t start = 0;
    if (current_ != nullptr) {
      auto it = std::find(r.begin(), r.end(), current_);
      start = (it == r.end()) ? position_ : static_cast<size_t>(it - r.begin()) + 1;
    }
    if (start >= r.size()) {
      current_ = nullptr;
      position_ = r.size();
      return false;
    }
    current_ = r[start];
    position_ = start;
    return true;
  }

  uint64_t get() const override {
    std::lock_guard<std::mutex> guard(registryMutex());
    return alive() ? current_->data[index_].load(std::memory_order_acquire) : 0;
  }

  void set(uint64_t value) override {
    std::lock_guard<std::mutex> guard(registryMutex());
    if (alive()) current_->data[index_].store(value, std::memory_order_release);
  }

 private:
  bool alive() const {
    auto& r = registry();
    return current_ != nullptr && std::find(r.begin(), r.end(), current_) != r.end();
  }

  int index_;
  ThreadWords* current_ = nullptr;
  size_t position_ = 0;
};

}  // namespace

uint64_t _KepThreadWordGet(int index) {
  return validIndex(index) ? current().data[index].load(std::memory_order_acquire) : 0;
}

void _KepThreadWordSet(int index, uint64_t value, void (*destroyFunc)(void*)) {
  if (!validIndex(index)) return;
  ThreadWords& w = current();
  w.data[index].store(value, std::memory_order_release);
  w.destroy[index].store(destroyFunc, std::memory_order_release);
}

void (*_KepThreadWordDestroyFunc(int index))(void*) {
  return validIndex(index) ? current().destroy[index].load(std::memory_order_acquire) : nullptr;
}

KepSharedDataIterator* _KepThreadWordIterator(int index) {
  return validIndex(index) ? new WordIterator(index) : nullptr;
}
