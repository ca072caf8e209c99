// _KepRedBlackTreeNode: one node of the red-black tree under the ordered sets.
#ifndef KEP_CONTAIN_KEPREDBLACKTREENODE_H
#define KEP_CONTAIN_KEPREDBLACKTREENODE_H

#include "kep/base/KepDefs.h"

// A tree node: colour, links and an untyped key that the tree does not own.
// Nodes come from malloc and go back with free. The tree's header node has the
// same shape: its parent is the root, its left the smallest node and its right
// the largest; it is red, which tells it apart from the (black) root.
struct KEP_API _KepRedBlackTreeNode {
  static constexpr int kRed = 0;
  static constexpr int kBlack = 1;

  int color;
  _KepRedBlackTreeNode* parent;
  _KepRedBlackTreeNode* left;
  _KepRedBlackTreeNode* right;
  void* key;

  // The leftmost and rightmost node of the subtree at `x` (which is not null).
  static _KepRedBlackTreeNode* minimum(_KepRedBlackTreeNode* x) noexcept {
    while (x->left != nullptr) x = x->left;
    return x;
  }
  static _KepRedBlackTreeNode* maximum(_KepRedBlackTreeNode* x) noexcept {
    while (x->right != nullptr) x = x->right;
    return x;
  }
};

#endif  // KEP_CONTAIN_KEPREDBLACKTREENODE_H
