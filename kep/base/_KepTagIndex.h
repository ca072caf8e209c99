// _KepTagIndex: the read side of the tag data, searched without the tag lock.
#ifndef KEP_BASE_KEPTAGINDEX_H
#define KEP_BASE_KEPTAGINDEX_H

#include <atomic>
#include <cstdint>
#include <cstring>

#include "kep/base/KepDefs.h"

class KepRString;
class KepRTagEntry;

// Both indexes only grow, and nothing they have published is freed before the
// index goes. Writers hold the tag lock; readers take no lock and see each entry
// fully made (release stores, acquire loads). Entries are not counted: their
// namespace keeps them alive longer than any index that lists them.

// The names by tag, for the tags 0 and up: a three-level table of 2048, 1024 and
// 1024 slots, whose lower levels are made as tags arrive. A slot holds the string
// body of its entry's name, on which the directory holds a reference, so that a
// lookup hands out the body without reading the entry; an entry whose name is not
// a plain string body is held itself, to be asked for its name.
class KEP_API _KepTagDirectory {
 public:
  _KepTagDirectory() noexcept;
  // Releases the bodies.
  ~_KepTagDirectory();
  _KepTagDirectory(_KepTagDirectory const&) = delete;
  _KepTagDirectory& operator=(_KepTagDirectory const&) = delete;

  // The name body of `tag`; null when the tag has none (always below 0) or when
  // the name must be asked of `entry`, which is set then (else null).
  KepRString* find(int tag, KepRTagEntry*& entry) const noexcept {
    uintptr_t word = wordAt(tag);
    if ((word & kEntryMark) != 0) {
      entry = reinterpret_cast<KepRTagEntry*>(word - kEntryMark);
      return nullptr;
    }
    entry = nullptr;
    return reinterpret_cast<KepRString*>(word);
  }
  // Lists the name of `entry` under `tag` (0 or more).
  void put(int tag, KepRTagEntry* entry);

  // False once an entry that holds a tag has been renamed, in any manager: the
  // bodies listed may then be stale, and lookups must ask the entries.
  static bool trusted() noexcept { return !renamed.load(std::memory_order_acquire); }
  static void entryRenamed() noexcept { renamed.store(true, std::memory_order_release); }

 private:
  static constexpr int kLeafBits = 10;
  static constexpr int kMiddleBits = 10;
  static constexpr int kLeafSize = 1 << kLeafBits;
  static constexpr int kMiddleSize = 1 << kMiddleBits;
  static constexpr int kTopSize = 1 << (31 - kMiddleBits - kLeafBits);
  static constexpr uintptr_t kEntryMark = 1;

  struct Leaf {
    std::atomic<uintptr_t> slots[kLeafSize];
  };
  struct Middle {
    std::atomic<Leaf*> leaves[kMiddleSize];
  };

  uintptr_t wordAt(int tag) const noexcept {
    if (tag < 0) return 0;
    Middle* middle = top[tag >> (kMiddleBits + kLeafBits)].load(std::memory_order_acquire);
    if (middle == nullptr) return 0;
    Leaf* leaf =
        middle->leaves[(tag >> kLeafBits) & (kMiddleSize - 1)].load(std::memory_order_acquire);
    if (leaf == nullptr) return 0;
    return leaf->slots[tag & (kLeafSize - 1)].load(std::memory_order_acquire);
  }
  static void drop(uintptr_t word) noexcept;

  std::atomic<Middle*> top[kTopSize];
  // Words replaced in their slots, kept (with their references) until the
  // directory goes, since a lookup may still be handing them out.
  struct Replaced;
  Replaced* replaced;

  static std::atomic<bool> renamed;
};

// The entries by name: open addressing over a power-of-two table kept at most
// half full; a full table is replaced by one of twice the size, and the old one
// stays readable until the index goes.
class KEP_API _KepTagNameIndex {
 public:
  _KepTagNameIndex() noexcept;
  ~_KepTagNameIndex();
  _KepTagNameIndex(_KepTagNameIndex const&) = delete;
  _KepTagNameIndex& operator=(_KepTagNameIndex const&) = delete;

  // The entry named by `count` units, or null.
  KepRTagEntry* find(unsigned short const* units, int count) const noexcept;
  // The entry named by `count` bytes, each standing for the unit of its value.
  KepRTagEntry* find(unsigned char const* text, int count) const noexcept;
  // Lists `entry` under its name, which the index does not hold yet.
  void insert(KepRTagEntry* entry);

  // The hash of a name given as units, and the same hash of a name given as
  // bytes: a byte hashes as the unit of its value.
  static uint64_t hash(unsigned short const* units, int count) noexcept;
  static uint64_t hash(unsigned char const* text, int count) noexcept;
  // Four units as one word, the first in the low bits; and four bytes as the
  // word of the four units of their values.
  static uint64_t wordOf(unsigned short const* units) noexcept {
    uint64_t word;
    std::memcpy(&word, units, sizeof word);
    return word;
  }
  static uint64_t wordOf(unsigned char const* text) noexcept {
    uint32_t bytes;
    std::memcpy(&bytes, text, sizeof bytes);
    return (bytes & 0xFFu) | (uint64_t(bytes & 0xFF00u) << 8) |
           (uint64_t(bytes & 0xFF0000u) << 16) | (uint64_t(bytes & 0xFF000000u) << 24);
  }

 private:
  struct Table;

  template <class Unit>
  KepRTagEntry* findAs(Unit const* name, int count) const noexcept;
  static void place(Table* table, KepRTagEntry* entry, uint64_t h) noexcept;

  std::atomic<Table*> table;
  // Tables replaced by larger ones, newest first, freed with the index.
  Table* retired;
  int used;
};

#endif  // KEP_BASE_KEPTAGINDEX_H
