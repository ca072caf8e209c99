#include "kep/base/_KepTagIndex.h"

#include <cstring>

#include "kep/base/KepRString.h"
#include "kep/base/KepRTagEntry.h"

// --- Names by tag -------------------------------------------------------------

std::atomic<bool> _KepTagDirectory::renamed(false);

struct _KepTagDirectory::Replaced {
  uintptr_t word;
  Replaced* next;
};

_KepTagDirectory::_KepTagDirectory() noexcept : top(), replaced(nullptr) {}

_KepTagDirectory::~_KepTagDirectory() {
  for (std::atomic<Middle*>& m : top) {
    Middle* middle = m.load(std::memory_order_relaxed);
    if (middle == nullptr) continue;
    for (std::atomic<Leaf*>& l : middle->leaves) {
      Leaf* leaf = l.load(std::memory_order_relaxed);
      if (leaf == nullptr) continue;
      for (std::atomic<uintptr_t>& slot : leaf->slots) drop(slot.load(std::memory_order_relaxed));
      delete leaf;
    }
    delete middle;
  }
  while (replaced != nullptr) {
    Replaced* r = replaced;
    replaced = r->next;
    drop(r->word);
    delete r;
  }
}

void _KepTagDirectory::drop(uintptr_t word) noexcept {
  if (word != 0 && (word & kEntryMark) == 0) reinterpret_cast<KepRString*>(word)->release();
}

void _KepTagDirectory::put(int tag, KepRTagEntry* entry) {
  if (tag < 0 || entry == nullptr) return;
  std::atomic<Middle*>& m = top[tag >> (kMiddleBits + kLeafBits)];
  Middle* middle = m.load(std::memory_order_relaxed);
  if (middle == nullptr) {
    middle = new Middle();
    m.store(middle, std::memory_order_release);
  }
  std::atomic<Leaf*>& l = middle->leaves[(tag >> kLeafBits) & (kMiddleSize - 1)];
  Leaf* leaf = l.load(std::memory_order_relaxed);
  if (leaf == nullptr) {
    leaf = new Leaf();
    l.store(leaf, std::memory_order_release);
  }
  uintptr_t word;
  if (KepRString* body = entry->plainName()) {
    body->addRef();
    word = reinterpret_cast<uintptr_t>(body);
  } else {
    word = reinterpret_cast<uintptr_t>(entry) | kEntryMark;
  }
  std::atomic<uintptr_t>& slot = leaf->slots[tag & (kLeafSize - 1)];
  uintptr_t old = slot.exchange(word, std::memory_order_acq_rel);
  if (old != 0) replaced = new Replaced{old, replaced};
}

// --- Entries by name ----------------------------------------------------------

namespace {

constexpr uint32_t kFirstTableSize = 64;

uint64_t mix(uint64_t h, uint64_t word) noexcept {
  h = (h ^ word) * 0x9E3779B97F4A7C15ull;
  return h ^ (h >> 29);
}

uint64_t finish(uint64_t h, int count) noexcept {
  h = (h ^ static_cast<uint64_t>(count)) * 0xBF58476D1CE4E5B9ull;
  return h ^ (h >> 31);
}

// Four units at a time; a name of four units or more ends with its last four,
// which may overlap the word before.
template <class Unit>
uint64_t hashOf(Unit const* name, int count) noexcept {
  uint64_t h = 0;
  if (count < 4) {
    uint64_t word = 0;
    for (int i = 0; i < count; ++i) word |= uint64_t(name[i]) << (16 * i);
    return finish(mix(h, word), count);
  }
  int i = 0;
  for (; i + 4 < count; i += 4) h = mix(h, _KepTagNameIndex::wordOf(name + i));
  return finish(mix(h, _KepTagNameIndex::wordOf(name + count - 4)), count);
}

// The part of a hash kept in a slot, to pass over other names without reading
// their entries.
uint32_t check(uint64_t h) noexcept { return static_cast<uint32_t>(h >> 32); }

}  // namespace

struct _KepTagNameIndex::Table {
  struct Slot {
    std::atomic<KepRTagEntry*> entry;
    std::atomic<uint32_t> check;
  };

  explicit Table(uint32_t size) : mask(size - 1), slots(new Slot[size]()), next(nullptr) {}
  ~Table() { delete[] slots; }
  Table(Table const&) = delete;
  Table& operator=(Table const&) = delete;

  uint32_t mask;
  Slot* slots;
  Table* next;
};

uint64_t _KepTagNameIndex::hash(unsigned short const* units, int count) noexcept {
  return hashOf(units, count);
}

uint64_t _KepTagNameIndex::hash(unsigned char const* text, int count) noexcept {
  return hashOf(text, count);
}

_KepTagNameIndex::_KepTagNameIndex() noexcept : table(nullptr), retired(nullptr), used(0) {}

_KepTagNameIndex::~_KepTagNameIndex() {
  delete table.load(std::memory_order_relaxed);
  while (retired != nullptr) {
    Table* t = retired;
    retired = t->next;
    delete t;
  }
}

template <class Unit>
KepRTagEntry* _KepTagNameIndex::findAs(Unit const* name, int count) const noexcept {
  Table const* t = table.load(std::memory_order_acquire);
  if (t == nullptr) return nullptr;
  uint64_t h = hashOf(name, count);
  for (uint32_t i = static_cast<uint32_t>(h) & t->mask;; i = (i + 1) & t->mask) {
    KepRTagEntry* e = t->slots[i].entry.load(std::memory_order_acquire);
    if (e == nullptr) return nullptr;
    if (t->slots[i].check.load(std::memory_order_relaxed) == check(h) && e->isNamed(name, count)) {
      return e;
    }
  }
}

KepRTagEntry* _KepTagNameIndex::find(unsigned short const* units, int count) const noexcept {
  return findAs(units, count);
}

KepRTagEntry* _KepTagNameIndex::find(unsigned char const* text, int count) const noexcept {
  return findAs(text, count);
}

void _KepTagNameIndex::place(Table* t, KepRTagEntry* entry, uint64_t h) noexcept {
  uint32_t i = static_cast<uint32_t>(h) & t->mask;
  while (t->slots[i].entry.load(std::memory_order_relaxed) != nullptr) i = (i + 1) & t->mask;
  // The check first: a reader that sees the entry sees its check too.
  t->slots[i].check.store(check(h), std::memory_order_relaxed);
  t->slots[i].entry.store(entry, std::memory_order_release);
}

void _KepTagNameIndex::insert(KepRTagEntry* entry) {
  Table* t = table.load(std::memory_order_relaxed);
  if (t == nullptr || uint64_t(used + 1) * 2 > uint64_t(t->mask) + 1) {
    // Half full: the names move to a table twice the size, which readers see
    // complete; the old table stays readable.
    auto* larger = new Table(t == nullptr ? kFirstTableSize : (t->mask + 1) * 2);
    if (t != nullptr) {
      for (uint32_t i = 0; i <= t->mask; ++i) {
        KepRTagEntry* e = t->slots[i].entry.load(std::memory_order_relaxed);
        if (e != nullptr) place(larger, e, e->nameHash());
      }
      t->next = retired;
      retired = t;
    }
    table.store(larger, std::memory_order_release);
    t = larger;
  }
  place(t, entry, entry->nameHash());
  ++used;
}
