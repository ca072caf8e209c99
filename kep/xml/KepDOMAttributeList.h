// KepDOMAttributeList: handle on an element's attribute map.
#ifndef KEP_XML_KEPDOMATTRIBUTELIST_H
#define KEP_XML_KEPDOMATTRIBUTELIST_H

#include "kep/xml/KepDOMNamedNodeMap.h"

class KepDOMElement;

// The operations KepDOMAttributeList adds to KepDOMNamedNodeMap: the attribute
// map of an element read and written by name and value.
//
//  getOwnerElement()               the element, or null (a map made by the
//                                  factory, or one whose element is gone)
//  getValue(name), getValue(tag), getValueNS(uri, localName)
//                                  the attribute's value; a null string when
//                                  there is no such attribute
//  getName(i), getValueAt(i)       name and value at position i; null strings
//                                  when i is out of range
//  indexOf(name), indexOf(tag)     the position of the attribute, or -1
//  setValue(name, value), setValue(tag, value)
//                                  setAttribute on the element; a map without an
//                                  element, a null or empty name and tag 0 are
//                                  refused (nothing changes)
//  removeAll()                     removes every attribute
// clang-format off
#define KEP_METHODS_DOMAttributeList(X)                                                        \
  X(DOMAttributeList, KepDOMElement, getOwnerElement, (), (), const, 0)                        \
  X(DOMAttributeList, KepString, getValue, (KepString const& name), (name), const, 0)          \
  X(DOMAttributeList, KepString, getValue, (int tag), (tag), const, 0)                         \
  X(DOMAttributeList, KepString, getValueNS, (KepString const& uri, KepString const& localName), \
    (uri, localName), const, 0)                                                                \
  X(DOMAttributeList, KepString, getName, (int index), (index), const, 0)                      \
  X(DOMAttributeList, KepString, getValueAt, (int index), (index), const, 0)                   \
  X(DOMAttributeList, int, indexOf, (KepString const& name), (name), const, 0)                 \
  X(DOMAttributeList, int, indexOf, (int tag), (tag), const, 0)                                \
  X(DOMAttributeList, void, setValue, (KepString const& name, KepString const& value),         \
    (name, value), , 1)                                                                        \
  X(DOMAttributeList, void, setValue, (int tag, KepString const& value), (tag, value), , 1)    \
  X(DOMAttributeList, void, removeAll, (), (), , 1)
// clang-format on

// A handle on an attribute map (body KepRDOMAttributeList, class 0x40008); an
// element's getAttributes() answers one.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMAttributeList : public KepDOMNamedNodeMap {
  KEP_HANDLE_CONSTRUCTORS(KepDOMAttributeList, KepDOMNamedNodeMap)

 public:
  KEP_METHODS_DOMAttributeList(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMAttributeList(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMATTRIBUTELIST_H
