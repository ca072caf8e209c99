// _KepOrderedSetIter: an in-order position in a red-black tree.
#ifndef KEP_CONTAIN_KEPORDEREDSETITER_H
#define KEP_CONTAIN_KEPORDEREDSETITER_H

#include "kep/contain/_KepRedBlackTreeNode.h"

// Holds one node pointer; the end position is the tree's header. Stepping
// forwards from the end, or backwards from the first position, is not defined;
// stepping backwards from the end yields the largest key. A position stays valid
// until its node is erased or its tree is destroyed.
class KEP_API _KepOrderedSetIter {
 public:
  _KepOrderedSetIter() noexcept : node(nullptr) {}
  explicit _KepOrderedSetIter(_KepRedBlackTreeNode* n) noexcept : node(n) {}

  // The key at this position (not valid at the end).
  void* operator*() const noexcept { return node->key; }

  // The next position in key order.
  void increment() noexcept {
    if (node->right != nullptr) {
      node = _KepRedBlackTreeNode::minimum(node->right);
      return;
    }
    _KepRedBlackTreeNode* y = node->parent;
    while (node == y->right) {
      node = y;
      y = y->parent;
    }
    // Climbing from the largest node can pass the root into the header and
    // look back down at the root; the header is then the answer.
    if (node->right != y) node = y;
  }

  // The previous position in key order; from the end, the largest key.
  void decrement() noexcept {
    if (node->color == _KepRedBlackTreeNode::kRed && node->parent->parent == node) {
      node = node->right;  // the header: its right is the largest node
    } else if (node->left != nullptr) {
      node = _KepRedBlackTreeNode::maximum(node->left);
    } else {
      _KepRedBlackTreeNode* y = node->parent;
      while (node == y->left) {
        node = y;
        y = y->parent;
      }
      node = y;
    }
  }

  _KepOrderedSetIter& operator++() noexcept {
    increment();
    return *this;
  }
  _KepOrderedSetIter operator++(int) noexcept {
    _KepOrderedSetIter before = *this;
    increment();
    return before;
  }
  _KepOrderedSetIter& operator--() noexcept {
    decrement();
    return *this;
  }
  _KepOrderedSetIter operator--(int) noexcept {
    _KepOrderedSetIter before = *this;
    decrement();
    return before;
  }
  bool operator==(_KepOrderedSetIter const& other) const noexcept { return node == other.node; }
  bool operator!=(_KepOrderedSetIter const& other) const noexcept { return node != other.node; }

  _KepRedBlackTreeNode* node;
};

#endif  // KEP_CONTAIN_KEPORDEREDSETITER_H
