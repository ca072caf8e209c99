// KepDOMNamedNodeMap: handle on a map of nodes by name.
#ifndef KEP_XML_KEPDOMNAMEDNODEMAP_H
#define KEP_XML_KEPDOMNAMEDNODEMAP_H

#include "kep/xml/KepDOMNode.h"

// The operations of KepDOMNamedNodeMap (W3C NamedNodeMap). A map holds nodes
// in the order they were added (item(i) by that position) and finds them by
// node ID, or by namespace URI and local name; names compare as tags, and a name
// the tag manager does not know finds nothing.
//
//  getNamedItem(name), getNamedItem(tag)
//                          the node of that node ID, or null
//  getNamedItemNS(uri, localName)
//                          the node of that URI and local name (a node without a
//                          local name matches a null URI and its whole name)
//  setNamedItem(n), setNamedItemNS(n)
//                          adds n, replacing the node of the same node ID (URI and
//                          local name), and answers the replaced node or null. A
//                          node the map does not take is refused: null, nothing
//                          changes (an element's attribute map takes only
//                          attributes that no other element holds).
//  removeNamedItem(name), removeNamedItem(tag), removeNamedItemNS(uri, localName)
//                          removes and answers the node; null when there is none
//  item(i), getLength()    by position; null when i is out of range
//  getOwnerNode()          the node the map belongs to (an element, a document
//                          type), or null
// clang-format off
#define KEP_METHODS_DOMNamedNodeMap(X)                                                         \
  X(DOMNamedNodeMap, KepDOMNode, getNamedItem, (KepString const& name), (name), const, 0)      \
  X(DOMNamedNodeMap, KepDOMNode, getNamedItem, (int tag), (tag), const, 0)                     \
  X(DOMNamedNodeMap, KepDOMNode, setNamedItem, (KepDOMNode const& node), (node), , 1)          \
  X(DOMNamedNodeMap, KepDOMNode, removeNamedItem, (KepString const& name), (name), , 1)        \
  X(DOMNamedNodeMap, KepDOMNode, removeNamedItem, (int tag), (tag), , 1)                       \
  X(DOMNamedNodeMap, KepDOMNode, item, (int index), (index), const, 0)                         \
  X(DOMNamedNodeMap, int, getLength, (), (), const, 0)                                         \
  X(DOMNamedNodeMap, KepDOMNode, getNamedItemNS,                                               \
    (KepString const& uri, KepString const& localName), (uri, localName), const, 0)            \
  X(DOMNamedNodeMap, KepDOMNode, setNamedItemNS, (KepDOMNode const& node), (node), , 1)        \
  X(DOMNamedNodeMap, KepDOMNode, removeNamedItemNS,                                            \
    (KepString const& uri, KepString const& localName), (uri, localName), , 1)                 \
  X(DOMNamedNodeMap, KepDOMNode, getOwnerNode, (), (), const, 0)
// clang-format on

// A handle on a named node map (body KepRDOMNamedNodeMap, class 0x40016). The
// map holds a counted reference to each node; its owner is not counted.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMNamedNodeMap : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMNamedNodeMap, KepObject)

 public:
  KEP_METHODS_DOMNamedNodeMap(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMNamedNodeMap(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMNAMEDNODEMAP_H
