// KepDOMNodeList: handle on an ordered list of nodes.
#ifndef KEP_XML_KEPDOMNODELIST_H
#define KEP_XML_KEPDOMNODELIST_H

#include "kep/xml/KepDOMNode.h"

// The operations of KepDOMNodeList. Positions count from 0.
//
// A list is either live or taken: getChildNodes() answers a live list, which
// always shows the node's current children, and whose changers change the
// children themselves (append: appendChild; insertAt: insertBefore the node at
// the position; removeAt and remove: removeChild; set: replaceChild; clear:
// removes every child), with the refusals of those operations. Every other list
// (getElementsByTagName, or one made by the factory) holds its own array of
// counted references, and its changers change only the array.
//
//  item(i)             the node at i; null when i is out of range. Walking a live
//                      list in order costs constant time per step.
//  getLength()         the number of nodes
//  indexOf(n)          the first position of n, or -1
//  contains(n)         whether n is in the list
//  getFirst(), getLast()
//                      the first and last node, or null
//  isEmpty()           whether the length is 0
//  isLive()            1 for a live list
//  append(n)           adds n at the end; answers 1, or 0 when refused (null n)
//  insertAt(i, n)      inserts n at i (0..getLength()); 0 when refused
//  removeAt(i)         removes and answers the node at i; null when out of range
//  remove(n)           removes the first occurrence of n; 1 when one was removed
//  set(i, n)           puts n at i and answers the node that was there; null when
//                      out of range or refused
//  clear()             removes everything
// clang-format off
#define KEP_METHODS_DOMNodeList(X)                                                             \
  X(DOMNodeList, KepDOMNode, item, (int index), (index), const, 0)                             \
  X(DOMNodeList, int, getLength, (), (), const, 0)                                             \
  X(DOMNodeList, int, indexOf, (KepDOMNode const& node), (node), const, 0)                     \
  X(DOMNodeList, unsigned long, contains, (KepDOMNode const& node), (node), const, 0)          \
  X(DOMNodeList, KepDOMNode, getFirst, (), (), const, 0)                                       \
  X(DOMNodeList, KepDOMNode, getLast, (), (), const, 0)                                        \
  X(DOMNodeList, unsigned long, isEmpty, (), (), const, 0)                                     \
  X(DOMNodeList, unsigned long, isLive, (), (), const, 0)                                      \
  X(DOMNodeList, unsigned long, append, (KepDOMNode const& node), (node), , 1)                 \
  X(DOMNodeList, unsigned long, insertAt, (int index, KepDOMNode const& node), (index, node), , \
    1)                                                                                         \
  X(DOMNodeList, KepDOMNode, removeAt, (int index), (index), , 1)                              \
  X(DOMNodeList, unsigned long, remove, (KepDOMNode const& node), (node), , 1)                 \
  X(DOMNodeList, KepDOMNode, set, (int index, KepDOMNode const& node), (index, node), , 1)     \
  X(DOMNodeList, void, clear, (), (), , 1)
// clang-format on

// A handle on a node list (body KepRDOMNodeList, class 0x40019).
//
// Thread safety: see KepDOMNode; a list is meant for one thread at a time.
class KEP_API KepDOMNodeList : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMNodeList, KepObject)

 public:
  KEP_METHODS_DOMNodeList(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMNodeList(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMNODELIST_H
