// _KepArrayImpl<T*>: an array of pointers kept in a chain of fixed-size groups.
#ifndef KEP_CONTAIN_KEPARRAYIMPL_H
#define KEP_CONTAIN_KEPARRAYIMPL_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// One link of an array's chain: `groupSize` item slots and the following link.
// The slots are allocated (zero-filled) and freed by the owning array.
template <class Item>
class _KepArrayImplEntryGroupBase {
 public:
  _KepArrayImplEntryGroupBase() noexcept : next(nullptr), entries(nullptr) {}
  virtual ~_KepArrayImplEntryGroupBase() = default;
  _KepArrayImplEntryGroupBase(_KepArrayImplEntryGroupBase const&) = delete;
  _KepArrayImplEntryGroupBase& operator=(_KepArrayImplEntryGroupBase const&) = delete;

  // The following group, null for the last one.
  _KepArrayImplEntryGroupBase* next;
  // The group's slots.
  Item* entries;
};

template <class P>
class _KepArrayImpl;

// An index-addressed array of pointers stored in a chain of groups of 32 slots.
// Growing adds whole groups and never copies what is already stored; reaching
// index i walks i / 32 links. The array never owns what its pointers point at.
//
// Sizing: resize(n) adds groups until n slots exist, and frees surplus groups
// while at least one whole group is spare, always keeping the group that would
// hold index n (so shrinking to a multiple of 32 may leave the last group with no
// used slot; size() is still exact). Slots beyond the size keep whatever pointer
// they held: clear slots before shrinking when the pointers matter.
//
// Bad input: negative indexes and sizes never reach outside the groups: reads
// and writes through an index that no group holds go to `invalidItem`, a scratch
// slot that reads as null again on the next such access.
//
// Thread safety: none; the owner guards an array shared between threads.
template <class T>
class _KepArrayImpl<T*> {
 public:
  using Item = T*;
  using Group = _KepArrayImplEntryGroupBase<T*>;

  // An empty array: no groups, 32 slots per group.
  _KepArrayImpl() noexcept
      : invalidItem(nullptr),
        firstGroup(nullptr),
        lastGroup(nullptr),
        groupCount(0),
        groupSize(32),
        lastGroupCount(0) {}
  // Frees every group (resize(0)); the pointed-at objects are untouched.
  ~_KepArrayImpl() { _destroy(); }
  _KepArrayImpl(_KepArrayImpl const&) = delete;
  _KepArrayImpl& operator=(_KepArrayImpl const&) = delete;

  // The element count.
  int size() const noexcept {
    if (groupCount == 0) return static_cast<int>(lastGroupCount);
    return static_cast<int>(int64_t(lastGroupCount) +
                            int64_t(groupSize) * (int64_t(groupCount) - 1));
  }

  // The slot of element `i`, growing the array to i + 1 elements first when `i`
  // is at or past the end. A negative `i` answers the invalidItem slot.
  Item& operator[](int i) { return *_getEntry(i, nullptr, 1, nullptr, nullptr); }

  // Sets the element count to `n` (negative counts as 0). The second argument
  // has no effect.
  void resize(int n, unsigned long = 1) {
    if (n < 0) n = 0;
    int64_t const gs = groupSize;
    while (int64_t(n) > gs * int64_t(groupCount)) {
      Group* g = new Group;
      g->entries = _allocateGroupEntries();
      if (lastGroup != nullptr) {
        lastGroup->next = g;
      } else {
        firstGroup = g;
      }
      lastGroup = g;
      ++groupCount;
    }
    if (groupCount != 0 && gs + n <= gs * int64_t(groupCount)) {
      // At least one whole group is spare: keep the group that holds index n.
      Group* keep = _findGroup(n);
      Group* g = keep->next;
      while (g != nullptr) {
        Group* after = g->next;
        _freeGroup(g);
        --groupCount;
        g = after;
      }
      keep->next = nullptr;
      lastGroup = keep;
      if (n == 0) {
        _freeGroup(keep);
        firstGroup = lastGroup = nullptr;
        groupCount = 0;
      }
    }
    lastGroupCount =
        groupCount != 0 ? static_cast<uint32_t>(int64_t(n) - (int64_t(groupCount) - 1) * gs) : 0;
  }

  // Opens a gap at `i` and stores `value` there. When `i` is at or past the end
  // the array first grows to i + 1 elements; otherwise the slots i ... size() - 2
  // move up one, so a caller inserting inside the array grows it by one first.
  // A negative `i` changes nothing.
  void insert(int i, Item const& value) {
    if (i < 0 || i == INT32_MAX) return;
    Item copy = value;
    int s = size();
    if (i >= s) resize(i + 1);
    _move(i, i + 1, s - i - 1);
    *_getEntry(i, nullptr, 0, nullptr, nullptr) = copy;
  }

  // The slot of element `i`. With `grow` set the array first grows to i + 1
  // elements when `i` is at or past the end. The group is `hint` when given (it
  // must hold index i), else found by walking the chain. `*out`, when `out` is
  // given, receives the group that holds element i + 1, so that a walk can pass
  // it back as the next hint. An index that no group holds answers the
  // invalidItem slot (and `*out` null). `dflt` is accepted and not used.
  Item* _getEntry(int i, void* dflt, unsigned long grow, Group* hint, Group** out) {
    (void)dflt;
    if (grow != 0 && i >= size() && i < INT32_MAX) resize(i + 1);
    Group* g = (i < 0) ? nullptr : (hint != nullptr ? hint : _findGroup(i));
    if (g == nullptr) {
      if (out != nullptr) *out = nullptr;
      invalidItem = nullptr;
      return &invalidItem;
    }
    int j = i % groupSize;
    if (out != nullptr) *out = (j + 1 == groupSize) ? g->next : g;
    return _getGroupEntry(j, g);
  }

  // The group holding index `i`: null when the chain is empty, `i` is negative or
  // i >= groupSize * groupCount.
  Group* _findGroup(int i) const noexcept {
    if (firstGroup == nullptr || i < 0 || int64_t(i) >= int64_t(groupSize) * groupCount)
      return nullptr;
    Group* g = firstGroup;
    for (int k = i / groupSize; k > 0 && g != nullptr; --k) g = g->next;
    return g;
  }

  // The address of slot `j` of group `g`.
  Item* _getGroupEntry(int j, Group* g) const noexcept { return &g->entries[j]; }

  // Moves `count` slots from index `from` to index `to` (overlap allowed). Stops
  // early where either range leaves the chain.
  void _move(int from, int to, int count) {
    if (count <= 0 || from == to || from < 0 || to < 0) return;
    int const gs = groupSize;
    if (from > to) {
      // Down: walk forwards, stepping to the next group at each boundary.
      Group* src = _findGroup(from);
      Group* dst = _findGroup(to);
      int si = from % gs;
      int di = to % gs;
      for (int k = 0; k < count && src != nullptr && dst != nullptr; ++k) {
        _moveEntry(&dst->entries[di], &src->entries[si]);
        if (++si == gs) {
          si = 0;
          src = src->next;
        }
        if (++di == gs) {
          di = 0;
          dst = dst->next;
        }
      }
      return;
    }
    // Up: walk backwards from the last slot of each range; the chain only links
    // forwards, so a group is found again whenever an index crosses a boundary.
    int64_t s = int64_t(from) + count - 1;
    int64_t d = int64_t(to) + count - 1;
    if (d > INT32_MAX) return;
    Group* src = _findGroup(static_cast<int>(s));
    Group* dst = _findGroup(static_cast<int>(d));
    for (int k = 0; k < count && src != nullptr && dst != nullptr; ++k) {
      _moveEntry(&dst->entries[d % gs], &src->entries[s % gs]);
      if (s % gs == 0) src = _findGroup(static_cast<int>(s - 1));
      if (d % gs == 0) dst = _findGroup(static_cast<int>(d - 1));
      --s;
      --d;
    }
  }

  // Copies one pointer.
  static void _moveEntry(Item* to, Item const* from) noexcept { *to = *from; }
  static void _copyItem(Item* to, Item const& from) noexcept { *to = from; }

  // A zero-filled block of groupSize slots, and its release.
  Item* _allocateGroupEntries() const { return new Item[static_cast<size_t>(groupSize)](); }
  static void _freeGroupEntries(Item* entries) noexcept { delete[] entries; }

  // Empties the array (resize(0)).
  void _destroy() { resize(0); }

  // Observers of the chain.
  uint32_t getGroupCount() const noexcept { return groupCount; }
  int getGroupSize() const noexcept { return groupSize; }
  uint32_t getLastGroupCount() const noexcept { return lastGroupCount; }

 private:
  void _freeGroup(Group* g) noexcept {
    _freeGroupEntries(g->entries);
    g->entries = nullptr;
    delete g;
  }

  // The slot handed out for an index that no group holds; always reset to null.
  Item invalidItem;
  Group* firstGroup;
  Group* lastGroup;
  uint32_t groupCount;
  int32_t groupSize;
  uint32_t lastGroupCount;
};

#endif  // KEP_CONTAIN_KEPARRAYIMPL_H
