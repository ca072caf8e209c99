// KepRDOMParentNode: the body of KepDOMParentNode; holds a node's children.
#ifndef KEP_XML_KEPRDOMPARENTNODE_H
#define KEP_XML_KEPRDOMPARENTNODE_H

#include <cstdint>

#include "kep/xml/KepDOMParentNode.h"
#include "kep/xml/KepRDOMChildNode.h"

// The children form a doubly linked list through the nodes' sibling links; the
// parent keeps the first and last child, their number, and holds one counted
// reference on each child. Adding or removing a child costs constant time (the
// cycle check walks up from this node only when the new child has children of
// its own). A change stamp grows with every change of the child list (and with
// every renaming of a child), which lets live node lists keep their place.
//
// Destroying a parent frees its subtree without recursion, in document order:
// the children of a child that is about to be freed are taken over first.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMParentNode : public KepRDOMChildNode {
  KEP_BODY_IDENTITY(DOMParentNode, KepRDOMChildNode)
  KEP_BODY_CREATE_ANOTHER(DOMParentNode)

 public:
  KepRDOMParentNode() noexcept;
  // Releases the children (see above).
  ~KepRDOMParentNode() override;

  KEP_METHODS_DOMParentNode(KEP_DECLARE_METHOD)

      KepRDOMParentNode* asParent() const noexcept override;

  // --- The tree machinery behind the node operations (not bridged) ----------

  KepRDOMNode* firstBody() const noexcept { return firstChild; }
  KepRDOMNode* lastBody() const noexcept { return lastChild; }
  int childTotal() const noexcept { return childCount; }
  uint32_t changeStamp() const noexcept { return stamp; }
  void bumpStamp() noexcept { ++stamp; }

  // Moves `child` in front of `ref` (a child of this node, or null for the end)
  // with every check of insertBefore; a fragment gives up its children. Answers
  // `child`, or null when refused.
  KepRDOMNode* insertNode(KepRDOMNode* child, KepRDOMNode* ref);
  // Takes the child out; a handle on it (null when it is not a child).
  KepDOMNode removeNode(KepRDOMNode* child);
  // Puts `child` where `old` is and takes `old` out; a handle on `old`, null
  // when refused.
  KepDOMNode replaceNode(KepRDOMNode* child, KepRDOMNode* old);
  // Appends a new node (no parent, already in this node's document) without
  // checks or change notes; takes a reference.
  void appendFresh(KepRDOMNode* child);
  // Removes every child; answers how many.
  int removeAll();
  // Called after the child list, or the data of a child, changed. An element
  // drops its cached value.
  virtual void childrenChanged();

 protected:
  // Whether `child` (not a fragment) may be a child here, taking the place of
  // `replacing` (a child, or null). Elements and fragments take elements, text,
  // CDATA sections, comments, processing instructions and entity references.
  virtual bool acceptsChild(KepRDOMNode const& child, KepRDOMNode const* replacing) const;
  // Whether all the children of `fragment` may come here together.
  virtual bool acceptsFragment(KepRDOMParentNode const& fragment,
                               KepRDOMNode const* replacing) const;
  // acceptsChild, and `child` is not this node or one of its ancestors.
  bool mayInsert(KepRDOMNode const& child, KepRDOMNode const* replacing) const;

 private:
  // Links a node without parent before `ref`; the caller hands over one
  // reference.
  void link(KepRDOMNode* child, KepRDOMNode* ref) noexcept;
  // Unlinks a child; its reference passes to the caller.
  void unlink(KepRDOMNode* child) noexcept;
  // Moves a checked node in front of `ref`.
  void moveIn(KepRDOMNode* child, KepRDOMNode* ref);
  // Moves the children of a checked fragment in front of `ref`.
  void moveFragmentIn(KepRDOMParentNode* fragment, KepRDOMNode* ref);

  KepRDOMNode* firstChild;
  KepRDOMNode* lastChild;
  int childCount;
  // Wraps after 2^32 changes; a live list would then only miss its cached place
  // if it read exactly that many changes later.
  uint32_t stamp;
};

#endif  // KEP_XML_KEPRDOMPARENTNODE_H
