#include "kep/contain/_KepRedBlackTreeImpl.h"

#include <cstdlib>
#include <initializer_list>
#include <new>

namespace {

using Node = _KepRedBlackTreeNode;
constexpr int kRed = Node::kRed;
constexpr int kBlack = Node::kBlack;

Node* newNode(void* key, int color) {
  auto* n = static_cast<Node*>(std::malloc(sizeof(Node)));
  if (n == nullptr) throw std::bad_alloc();
  n->color = color;
  n->parent = n->left = n->right = nullptr;
  n->key = key;
  return n;
}

bool isBlack(Node const* n) { return n == nullptr || n->color == kBlack; }

// Every rebalancing step comes in two mirror images. `Near` is the side a step
// works on and `Far` the other; the steps are instantiated with (left, right)
// and (right, left).
template <Node* Node::*Near, Node* Node::*Far>
struct Side {
  // Rotates `x` down towards Near: its Far child takes its place.
  static void rotate(Node* x, Node*& root) {
    Node* y = x->*Far;
    x->*Far = y->*Near;
    if (y->*Near != nullptr) (y->*Near)->parent = x;
    y->parent = x->parent;
    if (x == root) {
      root = y;
    } else if (x == x->parent->*Near) {
      x->parent->*Near = y;
    } else {
      x->parent->*Far = y;
    }
    y->*Near = x;
    x->parent = y;
  }

  // One insert step for a red `x` whose red parent is its grandparent's Near
  // child. Answers the node to look at next.
  static Node* fixInsert(Node* x, Node*& root) {
    Node* grand = x->parent->parent;
    Node* uncle = grand->*Far;
    if (uncle != nullptr && uncle->color == kRed) {
      x->parent->color = kBlack;
      uncle->color = kBlack;
      grand->color = kRed;
      return grand;
    }
    if (x == x->parent->*Far) {
      x = x->parent;
      Side<Near, Far>::rotate(x, root);
    }
    x->parent->color = kBlack;
    x->parent->parent->color = kRed;
    Side<Far, Near>::rotate(x->parent->parent, root);
    return x;
  }

  // One erase step for a doubly black `x` that is xParent's Near child.
  // Answers true when the tree is balanced again.
  static bool fixErase(Node*& x, Node*& xParent, Node*& root) {
    Node* w = xParent->*Far;
    if (w->color == kRed) {
      w->color = kBlack;
      xParent->color = kRed;
      Side<Near, Far>::rotate(xParent, root);
      w = xParent->*Far;
    }
    if (isBlack(w->*Near) && isBlack(w->*Far)) {
      w->color = kRed;
      x = xParent;
      xParent = xParent->parent;
      return false;
    }
    if (isBlack(w->*Far)) {
      if (w->*Near != nullptr) (w->*Near)->color = kBlack;
      w->color = kRed;
      Side<Far, Near>::rotate(w, root);
      w = xParent->*Far;
    }
    w->color = xParent->color;
    xParent->color = kBlack;
    if (w->*Far != nullptr) (w->*Far)->color = kBlack;
    Side<Near, Far>::rotate(xParent, root);
    return true;
  }
};

using LeftSide = Side<&Node::left, &Node::right>;
using RightSide = Side<&Node::right, &Node::left>;

// Restores the colour rules after linking the red node `x`.
void rebalanceAfterInsert(Node* x, Node*& root) {
  x->color = kRed;
  while (x != root && x->parent->color == kRed) {
    x = x->parent == x->parent->parent->left ? LeftSide::fixInsert(x, root)
                                             : RightSide::fixInsert(x, root);
  }
  root->color = kBlack;
}

// Unlinks `z`, keeping root, leftmost and rightmost right, and restores the
// colour rules. Answers the node to free (always `z`).
Node* rebalanceForErase(Node* z, Node*& root, Node*& leftmost, Node*& rightmost) {
  Node* y = z;
  Node* x = nullptr;
  Node* xParent = nullptr;
  if (y->left == nullptr) {
    x = y->right;  // may be null
  } else if (y->right == nullptr) {
    x = y->left;
  } else {
    y = Node::minimum(y->right);  // z's successor takes z's place
    x = y->right;
  }
  if (y != z) {
    z->left->parent = y;
    y->left = z->left;
    if (y != z->right) {
      xParent = y->parent;
      if (x != nullptr) x->parent = y->parent;
      y->parent->left = x;
      y->right = z->right;
      z->right->parent = y;
    } else {
      xParent = y;
    }
    if (root == z) {
      root = y;
    } else if (z->parent->left == z) {
      z->parent->left = y;
    } else {
      z->parent->right = y;
    }
    y->parent = z->parent;
    int c = y->color;
    y->color = z->color;
    z->color = c;
    y = z;  // y now names the node actually removed
  } else {
    xParent = y->parent;
    if (x != nullptr) x->parent = y->parent;
    if (root == z) {
      root = x;
    } else if (z->parent->left == z) {
      z->parent->left = x;
    } else {
      z->parent->right = x;
    }
    if (leftmost == z) leftmost = z->right == nullptr ? z->parent : Node::minimum(x);
    if (rightmost == z) rightmost = z->left == nullptr ? z->parent : Node::maximum(x);
  }
  if (y->color != kRed) {
    while (x != root && isBlack(x)) {
      bool done = x == xParent->left ? LeftSide::fixErase(x, xParent, root)
                                     : RightSide::fixErase(x, xParent, root);
      if (done) break;
    }
    if (x != nullptr) x->color = kBlack;
  }
  return y;
}

}  // namespace

_KepRedBlackTreeImpl::_KepRedBlackTreeImpl(KepCompareFunction fn) noexcept
    : nodeCount(0), compare(fn), header() {
  resetHeader();
}

_KepRedBlackTreeImpl::_KepRedBlackTreeImpl(_KepRedBlackTreeImpl const& other)
    : _KepRedBlackTreeImpl(other.compare) {
  *this = other;
}

_KepRedBlackTreeImpl& _KepRedBlackTreeImpl::operator=(_KepRedBlackTreeImpl const& other) {
  if (this == &other) return *this;
  Node* copy = other.root() != nullptr ? _M_copy(other.root(), &header) : nullptr;
  clear();
  compare = other.compare;
  if (copy != nullptr) {
    root() = copy;
    leftmost() = Node::minimum(copy);
    rightmost() = Node::maximum(copy);
    nodeCount = other.nodeCount;
  }
  return *this;
}

_KepRedBlackTreeImpl::~_KepRedBlackTreeImpl() { _M_erase(root()); }

void _KepRedBlackTreeImpl::resetHeader() noexcept {
  header.color = kRed;
  header.parent = nullptr;
  header.left = &header;
  header.right = &header;
  header.key = nullptr;
}

std::pair<_KepRedBlackTreeImpl::iterator, bool> _KepRedBlackTreeImpl::insert_unique(void* key) {
  KepCompareFunction less = compare;
  if (less == nullptr) return {end(), false};
  Node* y = &header;
  Node* x = root();
  bool left = true;
  while (x != nullptr) {
    y = x;
    left = less(key, x->key) != 0;
    x = left ? x->left : x->right;
  }
  iterator j(y);
  if (left) {
    if (j == begin()) return {_M_insert(x, y, key), true};
    --j;
  }
  if (less(j.node->key, key) != 0) return {_M_insert(x, y, key), true};
  return {j, false};
}

_KepRedBlackTreeImpl::iterator _KepRedBlackTreeImpl::_M_insert(Node* x, Node* parent, void* key) {
  Node* z = newNode(key, kRed);
  if (parent == &header || x != nullptr || compare(key, parent->key) != 0) {
    parent->left = z;  // also makes leftmost() == z when parent is the header
    if (parent == &header) {
      root() = z;
      rightmost() = z;
    } else if (parent == leftmost()) {
      leftmost() = z;
    }
  } else {
    parent->right = z;
    if (parent == rightmost()) rightmost() = z;
  }
  z->parent = parent;
  rebalanceAfterInsert(z, root());
  ++nodeCount;
  return iterator(z);
}

void _KepRedBlackTreeImpl::erase(iterator pos) {
  if (pos.node == nullptr || pos == end()) return;
  Node* y = rebalanceForErase(pos.node, root(), leftmost(), rightmost());
  std::free(y);
  --nodeCount;
}

void _KepRedBlackTreeImpl::erase(iterator first, iterator last) {
  if (first == begin() && last == end()) {
    clear();
    return;
  }
  while (first != last) erase(first++);
}

void _KepRedBlackTreeImpl::clear() noexcept {
  _M_erase(root());
  resetHeader();
  nodeCount = 0;
}

void _KepRedBlackTreeImpl::swap(_KepRedBlackTreeImpl& other) noexcept {
  if (this == &other) return;
  std::swap(nodeCount, other.nodeCount);
  std::swap(compare, other.compare);
  std::swap(header.parent, other.header.parent);
  std::swap(header.left, other.header.left);
  std::swap(header.right, other.header.right);
  // The headers stay where they are: re-point the roots at them, and the
  // smallest/largest links of an empty tree at its own header.
  for (_KepRedBlackTreeImpl* t : {this, &other}) {
    if (t->root() != nullptr) {
      t->root()->parent = &t->header;
    } else {
      t->header.left = t->header.right = &t->header;
    }
  }
}

Node* _KepRedBlackTreeImpl::_M_copy(Node* x, Node* parent) {
  Node* top = newNode(x->key, x->color);
  top->parent = parent;
  try {
    if (x->right != nullptr) top->right = _M_copy(x->right, top);
    Node* p = top;
    x = x->left;
    while (x != nullptr) {
      Node* y = newNode(x->key, x->color);
      p->left = y;
      y->parent = p;
      if (x->right != nullptr) y->right = _M_copy(x->right, y);
      p = y;
      x = x->left;
    }
  } catch (...) {
    _M_erase(top);
    throw;
  }
  return top;
}

void _KepRedBlackTreeImpl::_M_erase(Node* x) noexcept {
  // Recurse on the right, loop on the left: the depth stays within the height.
  while (x != nullptr) {
    _M_erase(x->right);
    Node* y = x->left;
    std::free(x);
    x = y;
  }
}

int _KepRedBlackTreeImpl::__black_count(Node* node, Node* root) noexcept {
  if (node == nullptr) return 0;
  int sum = 0;
  for (;;) {
    if (node->color == kBlack) ++sum;
    if (node == root || node->parent == nullptr) break;
    node = node->parent;
  }
  return sum;
}

bool _KepRedBlackTreeImpl::__rb_verify() const {
  if (nodeCount == 0 || begin() == end()) {
    return nodeCount == 0 && begin() == end() && header.left == &header && header.right == &header;
  }
  Node* r = root();
  int len = __black_count(header.left, r);
  for (iterator it = begin(); it != end(); ++it) {
    Node* x = it.node;
    Node* l = x->left;
    Node* rt = x->right;
    if (x->color == kRed &&
        ((l != nullptr && l->color == kRed) || (rt != nullptr && rt->color == kRed)))
      return false;
    if (compare != nullptr) {
      if (l != nullptr && compare(x->key, l->key) != 0) return false;
      if (rt != nullptr && compare(rt->key, x->key) != 0) return false;
    }
    if (l == nullptr && rt == nullptr && __black_count(x, r) != len) return false;
  }
  if (header.left != Node::minimum(r)) return false;
  if (header.right != Node::maximum(r)) return false;
  return true;
}
