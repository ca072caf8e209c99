#include "kep/xml/KepRDOMParentNode.h"

#include "kep/base/KepFactory.h"

KEP_REGISTER_LIBRARY_CLASS(DOMParentNode);

KepRDOMParentNode::KepRDOMParentNode() noexcept
    : firstChild(nullptr), lastChild(nullptr), childCount(0), stamp(0) {}

KepRDOMParentNode::~KepRDOMParentNode() {
  // The children are released without recursion. The nodes still to release
  // form one list through their sibling links; a node that its release is going
  // to free (nobody else holds it) first hands its children to the front of the
  // list, followed by itself again, now without children. So every node goes
  // after its subtree, the parent link of a node waiting in the list stays
  // valid, and the walk goes forward through the nodes in document order, the
  // order in which a parsed tree lies in memory.
  KepRDOMNode* list = firstChild;
  if (list == nullptr) return;
  firstChild = nullptr;
  lastChild = nullptr;
  childCount = 0;
  ++stamp;
  while (list != nullptr) {
    KepRDOMNode* node = list;
    list = node->next;
    KepRDOMParentNode* dying = node->getRefCount() == 1 ? node->asParent() : nullptr;
    if (dying != nullptr && dying->firstChild != nullptr) {
      dying->lastChild->next = node;
      node->previous = nullptr;
      node->next = list;
      list = dying->firstChild;
      dying->firstChild = nullptr;
      dying->lastChild = nullptr;
      dying->childCount = 0;
      ++dying->stamp;
      continue;
    }
    // The node leaves the tree; the next one no longer has it before it.
    node->parent = nullptr;
    node->previous = nullptr;
    node->next = nullptr;
    if (list != nullptr) list->previous = nullptr;
    node->release();
  }
}

KepRDOMParentNode* KepRDOMParentNode::asParent() const noexcept {
  return const_cast<KepRDOMParentNode*>(this);
}

void KepRDOMParentNode::childrenChanged() {}

// --- Linking -------------------------------------------------------------------

void KepRDOMParentNode::link(KepRDOMNode* child, KepRDOMNode* ref) noexcept {
  child->parent = this;
  child->next = ref;
  child->previous = ref != nullptr ? ref->previous : lastChild;
  if (child->previous != nullptr) {
    child->previous->next = child;
  } else {
    firstChild = child;
  }
  if (ref != nullptr) {
    ref->previous = child;
  } else {
    lastChild = child;
  }
  ++childCount;
  ++stamp;
}

void KepRDOMParentNode::unlink(KepRDOMNode* child) noexcept {
  if (child->previous != nullptr) {
    child->previous->next = child->next;
  } else {
    firstChild = child->next;
  }
  if (child->next != nullptr) {
    child->next->previous = child->previous;
  } else {
    lastChild = child->previous;
  }
  child->parent = nullptr;
  child->previous = nullptr;
  child->next = nullptr;
  --childCount;
  ++stamp;
}

void KepRDOMParentNode::appendFresh(KepRDOMNode* child) {
  child->addRef();
  link(child, nullptr);
}

// --- Checks --------------------------------------------------------------------

bool KepRDOMParentNode::acceptsChild(KepRDOMNode const& child, KepRDOMNode const*) const {
  switch (child.getNodeType()) {
    case KepDOMNode::ATTRIBUTE_NODE:
    case KepDOMNode::DOCUMENT_TYPE_NODE:
    case KepDOMNode::DOCUMENT_NODE:
    case KepDOMNode::DOCUMENT_FRAGMENT_NODE:
    case KepDOMNode::ENTITY_NODE:
    case KepDOMNode::NOTATION_NODE:
      return false;
    default:
      return true;
  }
}

bool KepRDOMParentNode::mayInsert(KepRDOMNode const& child, KepRDOMNode const* replacing) const {
  return !child.isAncestorOf(this) && acceptsChild(child, replacing);
}

bool KepRDOMParentNode::acceptsFragment(KepRDOMParentNode const& fragment,
                                        KepRDOMNode const* replacing) const {
  for (KepRDOMNode* c = fragment.firstChild; c != nullptr; c = c->next) {
    if (!mayInsert(*c, replacing)) return false;
  }
  return true;
}

// --- Changing the children ---------------------------------------------------

void KepRDOMParentNode::moveIn(KepRDOMNode* child, KepRDOMNode* ref) {
  KepRDOMParentNode* oldParent = child->parent != nullptr ? child->parent->asParent() : nullptr;
  if (oldParent != nullptr) {
    // The old parent's reference passes to this node.
    oldParent->unlink(child);
    oldParent->childrenChanged();
    oldParent->noteChange(kChildRemoved, child);
  } else {
    child->addRef();
  }
  _KepDOMDocAnchor* anchor = childAnchor();
  if (child->ownerAnchor() != anchor) child->adoptSubtree(anchor);
  link(child, ref);
  childrenChanged();
  noteChange(kChildInserted, child);
}

void KepRDOMParentNode::moveFragmentIn(KepRDOMParentNode* fragment, KepRDOMNode* ref) {
  while (fragment->firstChild != nullptr) moveIn(fragment->firstChild, ref);
}

KepRDOMNode* KepRDOMParentNode::insertNode(KepRDOMNode* child, KepRDOMNode* ref) {
  if (child == nullptr || (ref != nullptr && ref->parent != this)) return nullptr;
  if (child->getNodeType() == KepDOMNode::DOCUMENT_FRAGMENT_NODE) {
    KepRDOMParentNode* fragment = child->asParent();
    if (fragment == nullptr || fragment == this || !acceptsFragment(*fragment, nullptr)) {
      return nullptr;
    }
    moveFragmentIn(fragment, ref);
    return child;
  }
  if (!mayInsert(*child, nullptr)) return nullptr;
  if (child == ref) return child;  // already in place
  moveIn(child, ref);
  return child;
}

KepDOMNode KepRDOMParentNode::removeNode(KepRDOMNode* child) {
  if (child == nullptr || child->parent != this) return KepDOMNode();
  KepDOMNode removed = _KepDOMHandle<KepDOMNode>(child);
  unlink(child);
  childrenChanged();
  noteChange(kChildRemoved, child);
  child->release();
  return removed;
}

KepDOMNode KepRDOMParentNode::replaceNode(KepRDOMNode* child, KepRDOMNode* old) {
  if (child == nullptr || old == nullptr || old->parent != this) return KepDOMNode();
  if (child == old) return _KepDOMHandle<KepDOMNode>(old);
  if (child->getNodeType() == KepDOMNode::DOCUMENT_FRAGMENT_NODE) {
    KepRDOMParentNode* fragment = child->asParent();
    if (fragment == nullptr || fragment == this || !acceptsFragment(*fragment, old)) {
      return KepDOMNode();
    }
    moveFragmentIn(fragment, old);
  } else {
    if (!mayInsert(*child, old)) return KepDOMNode();
    moveIn(child, old);
  }
  return removeNode(old);
}

int KepRDOMParentNode::removeAll() {
  int removed = 0;
  while (firstChild != nullptr) {
    removeNode(firstChild);
    ++removed;
  }
  return removed;
}

// --- By position -----------------------------------------------------------------

int KepRDOMParentNode::getChildCount() const { return childCount; }

KepDOMNode KepRDOMParentNode::getChildAt(int index) const {
  if (index < 0 || index >= childCount) return KepDOMNode();
  // Walk from the nearer end.
  KepRDOMNode* child;
  if (index < childCount / 2) {
    child = firstChild;
    for (int i = 0; i < index; ++i) child = child->next;
  } else {
    child = lastChild;
    for (int i = childCount - 1; i > index; --i) child = child->previous;
  }
  return _KepDOMHandle<KepDOMNode>(child);
}

KepDOMNode KepRDOMParentNode::prependChild(KepDOMNode const& newChild) {
  KepRDOMNode* child = of(newChild);
  return child != nullptr ? _KepDOMHandle<KepDOMNode>(insertNode(child, firstChild)) : KepDOMNode();
}

KepDOMNode KepRDOMParentNode::removeChildAt(int index) {
  KepDOMNode child = getChildAt(index);
  return child.isNull() ? child : removeNode(of(child));
}

int KepRDOMParentNode::removeAllChildren() { return removeAll(); }
