// KepDOMParentNode: handle on a node that can have children.
#ifndef KEP_XML_KEPDOMPARENTNODE_H
#define KEP_XML_KEPDOMPARENTNODE_H

#include "kep/xml/KepDOMChildNode.h"

// The operations KepDOMParentNode adds to KepDOMNode, by child position.
// Positions count every child node from 0.
//
//  getChildCount()         the number of children (kept, not counted)
//  getChildAt(i)           the child at i (walked from the nearer end); null when i
//                          is out of range
//  prependChild(n)         insertBefore(n, first child); refused (null) as
//                          insertBefore is
//  removeChildAt(i)        removes and answers the child at i; null when i is out
//                          of range
//  removeAllChildren()     removes every child; answers how many
// clang-format off
#define KEP_METHODS_DOMParentNode(X)                                                       \
  X(DOMParentNode, int, getChildCount, (), (), const, 0)                                   \
  X(DOMParentNode, KepDOMNode, getChildAt, (int index), (index), const, 1)                 \
  X(DOMParentNode, KepDOMNode, prependChild, (KepDOMNode const& newChild), (newChild), , 1) \
  X(DOMParentNode, KepDOMNode, removeChildAt, (int index), (index), , 1)                   \
  X(DOMParentNode, int, removeAllChildren, (), (), , 1)
// clang-format on

// A handle on a node that can have children: elements, documents, document
// fragments and document types. Adding a child costs constant time; the child
// list is doubly linked.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMParentNode : public KepDOMChildNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMParentNode, KepDOMChildNode)

 public:
  KEP_METHODS_DOMParentNode(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMParentNode(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMPARENTNODE_H
