// _KepOrderedSetImpl: an ordered set of untyped keys over a red-black tree.
#ifndef KEP_CONTAIN_KEPORDEREDSETIMPL_H
#define KEP_CONTAIN_KEPORDEREDSETIMPL_H

#include <cstdint>
#include <utility>

#include "kep/contain/_KepRedBlackTreeImpl.h"

// A thin owner of one _KepRedBlackTreeImpl: the keys are ordered by the
// comparison function and kept once each. The set never owns what the keys
// point at; freeing them is the caller's business (walk the set before
// destroy()). See _KepRedBlackTreeImpl for the rules on the comparison function
// and on running out of memory.
//
// Thread safety: none; the owner guards a set shared between threads.
class KEP_API _KepOrderedSetImpl {
 public:
  using iterator = _KepOrderedSetIter;

  // An empty set ordered by `compare` (may be installed later with set_comp).
  explicit _KepOrderedSetImpl(KepCompareFunction compare = nullptr) noexcept : tree(compare) {}
  _KepOrderedSetImpl(_KepOrderedSetImpl const&) = delete;
  _KepOrderedSetImpl& operator=(_KepOrderedSetImpl const&) = delete;
  ~_KepOrderedSetImpl() = default;

  iterator begin() const noexcept { return tree.begin(); }
  iterator end() const noexcept { return tree.end(); }
  bool empty() const noexcept { return tree.empty(); }
  uint64_t size() const noexcept { return tree.size(); }
  void set_comp(KepCompareFunction compare) noexcept { tree.set_comp(compare); }
  KepCompareFunction key_comp() const noexcept { return tree.key_comp(); }

  // Inserts `key` unless an equal key is present: answers the position of the
  // new key and true, or that of the equal key and false (the set unchanged).
  std::pair<iterator, bool> insert(void* key) { return tree.insert_unique(key); }
  // Removes the key at `pos` (end() is ignored); the key itself is untouched.
  void erase(iterator pos) { tree.erase(pos); }
  // The position of the key equal to `key`, or end().
  iterator find(void* key) const { return tree.find(key); }
  // Removes every key.
  void destroy() noexcept { tree.clear(); }

  // The tree, for checks and bulk operations.
  _KepRedBlackTreeImpl& impl() noexcept { return tree; }
  _KepRedBlackTreeImpl const& impl() const noexcept { return tree; }

 private:
  _KepRedBlackTreeImpl tree;
};

#endif  // KEP_CONTAIN_KEPORDEREDSETIMPL_H
