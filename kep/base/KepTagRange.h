// KepTagRange: one block of consecutive tags owned by one tag namespace.
#ifndef KEP_BASE_KEPTAGRANGE_H
#define KEP_BASE_KEPTAGRANGE_H

#include <vector>

#include "kep/base/KepDefs.h"
#include "kep/contain/_KepArrayImpl.h"

class KepTagEntry;
class KepRTagEntry;
class KepRTagManager;
class KepTagNameSpace;
class KepRTagNameSpace;

// A table of built-in names: position i of a table loaded at tag `start` names
// tag start + i. Each name is zero-terminated 8-bit text.
using KepTagTable = char const*;

// A range hands out the tags start, start + 1, ... to the names added to it, in
// order; position i of its entries holds the entry of tag start + i. The last tag
// (end) is never handed out: a block of 2048 tags holds 2047 names. When the
// range is full, the next name goes to a new block of the same namespace.
//
// A range made with start 0 and end 0 is unplaced: the first getStart() (or
// getEnd()) takes the next free block of 2048 tags from the tag manager.
//
// Ownership: the namespace whose range list holds a range owns it and deletes it
// with itself; the range does not keep its namespace alive. A range owns heap
// handles on its entries and frees them when deleted.
//
// Thread safety: none of its own; the tag manager and its namespaces use ranges
// only under the tag lock.
class KEP_API KepTagRange {
 public:
  // The size of a block taken by an unplaced range.
  static constexpr int kBlockSize = 2048;

  // A range of `owner` from `start` to `end` (start 0 and end 0: unplaced).
  KepTagRange(KepTagNameSpace const& owner, int start, int end);
  // The same for a namespace body (not counted).
  KepTagRange(KepRTagNameSpace* owner, int start, int end);
  // Frees the entry handles (the entries live on while others hold them).
  ~KepTagRange();
  KepTagRange(KepTagRange const&) = delete;
  KepTagRange& operator=(KepTagRange const&) = delete;

  // Gives `entry` (a heap handle, taken over) the next tag (setTag) and answers
  // 1. When this range is full the entry goes to a new unplaced range of the same
  // namespace, which is placed, entered into the manager's and the namespace's
  // range lists and made the namespace's current range. 0 when no tag can be
  // given (the namespace has no tag manager, or the tags ran out); the handle is
  // freed then.
  int add(KepTagEntry* entry);
  // The first and the last tag; an unplaced range is placed first.
  int getStart();
  int getEnd();
  // The entry of `tag` (a handle the range keeps; do not free it), or null when
  // the tag lies outside the range or was not handed out.
  KepTagEntry* getEntry(int tag) const;
  // The same as a body pointer, for the manager's own lookups.
  KepRTagEntry* getEntryBody(int tag) const;
  // The owning namespace (a null handle when it is gone).
  KepTagNameSpace getNameSpace() const;
  KepRTagNameSpace* getNameSpaceBody() const noexcept { return owner; }
  // Adds the `count` names of `table`, in order, through the namespace's add.
  // Answers 1, or 0 without adding anything when count is negative or the table
  // (or one of its first `count` names) is null. Names already known keep
  // their tags and take no position, so the names after them move up by one.
  int load(int count, KepTagTable const* table);
  // Sets start and end = start + size - 1 (size 1 or more).
  void set(int start, int size);
  // Tags handed out so far.
  int getCount() const noexcept { return count; }
  // True when start and end are 0 (no block taken yet).
  bool isUnplaced() const noexcept { return start == 0 && end == 0; }
  // The first tag without placing the range (0 while unplaced).
  int peekStart() const noexcept { return start; }
  int peekEnd() const noexcept { return end; }

  // Called as the range enters the range list of its namespace (byManager false)
  // or of that namespace's tag manager (true). Once it is in both, the manager
  // finds its entries by tag without a search.
  void joined(bool byManager);

  // The range of `ranges` (placed ranges ordered by start) that holds `tag`, by
  // binary search; null when none does.
  static KepTagRange* find(_KepArrayImpl<KepTagRange*>& ranges, int tag);
  // Enters `range` (placing it first) into `ranges`, ordered by start. Answers 1,
  // or 0 when a range with the same start is already listed (nothing changes).
  static int insert(_KepArrayImpl<KepTagRange*>& ranges, KepTagRange* range);

 private:
  using Group = _KepArrayImpl<KepTagEntry*>::Group;

  void place();
  // The tag manager that indexes this range's entries, or null while the range
  // is not in both lists.
  KepRTagManager* indexer() const;

  int count;
  int end;
  int start;
  KepRTagNameSpace* owner;
  // Whether the range is in its namespace's and in the manager's range list.
  bool inOwnerList;
  bool inManagerList;
  _KepArrayImpl<KepTagEntry*> entries;
  // The group of every 32 entries, so that a lookup goes straight to its group.
  std::vector<Group*> groups;
};

#endif  // KEP_BASE_KEPTAGRANGE_H
