// KepDOMAttribute: handle on an attribute node.
#ifndef KEP_XML_KEPDOMATTRIBUTE_H
#define KEP_XML_KEPDOMATTRIBUTE_H

#include "kep/xml/KepDOMChildNode.h"

// The operations KepDOMAttribute adds to KepDOMChildNode (W3C Attr).
//
//  getName()           the node name
//  getSpecified()      1: every attribute of the library was given a value
//  getValue(), setValue(s)
//                      the value (getNodeValue/setNodeValue); a new attribute's
//                      value is the empty string
//  getOwnerElement()   the element the attribute is set on, or null
// clang-format off
#define KEP_METHODS_DOMAttribute(X)                                                \
  X(DOMAttribute, KepString, getName, (), (), const, 0)                            \
  X(DOMAttribute, unsigned long, getSpecified, (), (), const, 0)                   \
  X(DOMAttribute, KepString, getValue, (), (), const, 1)                           \
  X(DOMAttribute, void, setValue, (KepString const& value), (value), , 1)          \
  X(DOMAttribute, KepDOMElement, getOwnerElement, (), (), const, 1)
// clang-format on

// A handle on an attribute (body KepRDOMAttribute, type code 1). An attribute
// is not a child of its element: it has no parent and no siblings, and it
// cannot be inserted into a tree; it lives in its element's attribute map. Its
// value is held as one string (it has no child nodes).
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMAttribute : public KepDOMChildNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMAttribute, KepDOMChildNode)

 public:
  KEP_METHODS_DOMAttribute(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMAttribute(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMATTRIBUTE_H
