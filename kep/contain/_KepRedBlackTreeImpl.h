// _KepRedBlackTreeImpl: a red-black tree of untyped keys without duplicates.
#ifndef KEP_CONTAIN_KEPREDBLACKTREEIMPL_H
#define KEP_CONTAIN_KEPREDBLACKTREEIMPL_H

#include <cstdint>
#include <utility>

#include "kep/base/KepDefs.h"
#include "kep/contain/KepCompareFunction.h"
#include "kep/contain/_KepOrderedSetIter.h"
#include "kep/contain/_KepRedBlackTreeNode.h"

// Keys are ordered by the comparison function (non-zero when the first key is
// before the second); two keys are equal when neither is before the other, and
// the tree holds at most one key of each value. The tree stores keys, it never
// owns, copies or frees what they point at. Operations are logarithmic; the
// smallest and largest keys are reached in constant time.
//
// Without a comparison function nothing can be inserted or found: insert answers
// (end, false), find and the bounds answer end.
//
// Memory: nodes come from malloc; when it fails, inserting and copying throw
// std::bad_alloc and leave the tree as it was.
//
// Thread safety: none; the owner guards a tree shared between threads.
class KEP_API _KepRedBlackTreeImpl {
 public:
  using iterator = _KepOrderedSetIter;

  // An empty tree ordered by `compare` (which may be installed later).
  explicit _KepRedBlackTreeImpl(KepCompareFunction compare = nullptr) noexcept;
  // A structural copy sharing the keys and the comparison function.
  _KepRedBlackTreeImpl(_KepRedBlackTreeImpl const& other);
  // Replaces the contents by a structural copy of `other`.
  _KepRedBlackTreeImpl& operator=(_KepRedBlackTreeImpl const& other);
  // Frees every node; the keys are untouched.
  ~_KepRedBlackTreeImpl();

  iterator begin() const noexcept { return iterator(header.left); }
  iterator end() const noexcept { return iterator(const_cast<_KepRedBlackTreeNode*>(&header)); }
  bool empty() const noexcept { return nodeCount == 0; }
  uint64_t size() const noexcept { return nodeCount; }
  KepCompareFunction key_comp() const noexcept { return compare; }
  // Installs the comparison function. The present keys are not reordered.
  void set_comp(KepCompareFunction fn) noexcept { compare = fn; }

  // Inserts `key` unless an equal key is present. Answers the position of the
  // new key and true, or the position of the equal key and false.
  std::pair<iterator, bool> insert_unique(void* key);
  // The position of the key equal to `key`, or end().
  iterator find(void* key) const {
    iterator j = lower_bound(key);
    if (j == end() || compare(key, *j) != 0) return end();
    return j;
  }
  // The first position whose key is not before `key`, and the first whose key
  // is after `key`. (Inline, so that lookups cost no call into the library.)
  iterator lower_bound(void* key) const {
    KepCompareFunction less = compare;  // a local copy is not reloaded after each call
    _KepRedBlackTreeNode* y = end().node;
    if (less == nullptr) return iterator(y);
    for (_KepRedBlackTreeNode* x = header.parent; x != nullptr;) {
      if (less(x->key, key) == 0) {
        y = x;
        x = x->left;
      } else {
        x = x->right;
      }
    }
    return iterator(y);
  }
  iterator upper_bound(void* key) const {
    KepCompareFunction less = compare;
    _KepRedBlackTreeNode* y = end().node;
    if (less == nullptr) return iterator(y);
    for (_KepRedBlackTreeNode* x = header.parent; x != nullptr;) {
      if (less(key, x->key) != 0) {
        y = x;
        x = x->left;
      } else {
        x = x->right;
      }
    }
    return iterator(y);
  }
  // Removes the node at `pos` (end() is ignored); the key is not touched.
  void erase(iterator pos);
  // Removes [first, last); the whole tree in one step when that is everything.
  void erase(iterator first, iterator last);
  // Removes every node.
  void clear() noexcept;
  // Exchanges the contents and comparison functions of two trees.
  void swap(_KepRedBlackTreeImpl& other) noexcept;

  // Checks the tree's invariants (colours, order, equal black heights, the
  // header's smallest and largest links); false on the first violation.
  bool __rb_verify() const;
  // The black nodes from `node` up to and including `root`; 0 for null.
  static int __black_count(_KepRedBlackTreeNode* node, _KepRedBlackTreeNode* root) noexcept;

 private:
  _KepRedBlackTreeNode*& root() noexcept { return header.parent; }
  _KepRedBlackTreeNode* root() const noexcept { return header.parent; }
  _KepRedBlackTreeNode*& leftmost() noexcept { return header.left; }
  _KepRedBlackTreeNode*& rightmost() noexcept { return header.right; }
  void resetHeader() noexcept;

  // Links a new node for `key` under `parent` (x is the empty link found).
  iterator _M_insert(_KepRedBlackTreeNode* x, _KepRedBlackTreeNode* parent, void* key);
  // Copies the subtree at `x` under `parent`.
  static _KepRedBlackTreeNode* _M_copy(_KepRedBlackTreeNode* x, _KepRedBlackTreeNode* parent);
  // Frees the subtree at `x` without rebalancing.
  static void _M_erase(_KepRedBlackTreeNode* x) noexcept;

  uint64_t nodeCount;
  KepCompareFunction compare;
  _KepRedBlackTreeNode header;
};

#endif  // KEP_CONTAIN_KEPREDBLACKTREEIMPL_H
