// KepDOMElement: handle on a DOM element, the typed data container of the library.
#ifndef KEP_XML_KEPDOMELEMENT_H
#define KEP_XML_KEPDOMELEMENT_H

#include "kep/xml/KepDOMParentNode.h"

class KepDOMAttribute;
class KepDate;

// The four setter forms of one value type: (name or tag) x (without or with an
// occurrence). `N` is the method name, `T` the value type.
// clang-format off
#define KEP_DOM_ELEMENT_VALUE_SETTERS(X, N, T)                                              \
  X(DOMElement, KepDOMElement, N, (KepString const& name, T value), (name, value), , 0)     \
  X(DOMElement, KepDOMElement, N, (KepString const& name, T value, int occurrence),         \
    (name, value, occurrence), , 0)                                                         \
  X(DOMElement, KepDOMElement, N, (int tag, T value), (tag, value), , 0)                    \
  X(DOMElement, KepDOMElement, N, (int tag, T value, int occurrence),                       \
    (tag, value, occurrence), , 0)
// clang-format on

// The operations KepDOMElement adds to KepDOMParentNode, in the order of the
// body's virtual operations.
//
// Attributes (W3C DOM Level 2 Core; names compare as tags)
//  getAttribute(name), getAttributeNS(uri, localName)
//                          the value; the empty string when there is no such
//                          attribute
//  getAttributeNode(name), getAttributeNodeNS(uri, localName)
//                          the attribute node, or null
//  hasAttribute(name), hasAttributeNS(uri, localName)
//  setAttribute(name, value)
//                          sets the value, adding the attribute when missing; a
//                          null or empty name is refused and records the error
//                          "DOMError" with "Code" 5 and "Method" on the calling
//                          thread (see KepThread)
//  setAttributeNS(uri, qualifiedName, value)
//                          the same by namespace URI and local name; an existing
//                          attribute takes the new prefix. Refused, recording
//                          "DOMError" with "Code" 14: a prefix without URI,
//                          the prefix "xml" with another URI than the XML
//                          namespace, "xmlns" (as prefix or name) with another
//                          URI than the xmlns namespace.
//  setAttributeNode(a), setAttributeNodeNS(a)
//                          adds the attribute node (adopting it from another
//                          document), replacing the one of the same name (of the
//                          same URI and local name); answers the replaced node or
//                          null. An attribute of another element is refused
//                          (null, nothing changes; "DOMError" with "Code" 10),
//                          as is a handle that is no attribute ("Code" 8).
//  removeAttribute(name), removeAttributeNS(uri, localName)
//                          removes it when present
//  removeAttributeNode(a)  removes and answers it; null when `a` is not an
//                          attribute of this element ("DOMError" with "Code" 8)
//  In namespace lookups an attribute set without namespace (setAttribute)
//  matches a null URI and its whole name.
//
// Elements
//  getTagName()            the node name
//  getElementsByTagName(name)
//                          the elements below this one (not itself) named `name`
//                          ("*": all), in document order, as a list taken now
//                          (later changes of the tree do not show in it)
//  getElementsByTagName(name, depth)
//                          the same down to `depth` levels (1: children only); a
//                          depth of 0 or less means no limit
//  normalize()             in the whole subtree, merges adjacent text nodes and
//                          drops empty ones (CDATA sections are left alone)
//
// Named values. A named value is a child element addressed by its tag and its
// occurrence n (0 for the first): the n-th child element with that node ID.
//  set(name), set(tag)     appends a new empty child element of that name and
//                          answers it; a null or empty name (tag 0) is refused
//  set(element)            makes `element` the value named by its node ID:
//                          replaces the first child element of that ID, or is
//                          appended (moved from its old parent); answers it
//  set(.., value[, n]), setBool(.., value[, n])
//                          stores `value` in occurrence n (0 when not given),
//                          creating the child, and the missing occurrences before
//                          it as empty elements, at the end; answers the child.
//                          The child's content becomes the value's text (one text
//                          node; none for objects) and the value is cached in
//                          native form; its data type becomes the value's code:
//                          int 1, KepString 2, KepDate 3, KepDOMNode 4 (the node
//                          is held by reference, not inserted; this element and
//                          its ancestors are refused), setBool 5 ("1"/"0"), long 6,
//                          float 7, long double 8. Refused (null): a negative
//                          occurrence, a null or empty name.
//  get(name[, n]), get(tag[, n])
//                          occurrence n (0 when not given); null when there are
//                          not that many: get(tag, 1) with one child of that tag is
//                          null
//  getNext()               the next following sibling element of the same node
//                          ID; null at the end of the run
//  find(path, create)      the element reached by following the element names of
//                          the XPointer `path` ("a.b.c", empty steps skipped) from
//                          this element, each step the first child of that name;
//                          with `create` a missing step is made with set(name),
//                          without it the answer is null. A null path answers this
//                          element.
//
// This element's own value
//  getDataType(), setDataType(code)
//                          the data type code (names: 1 "int", 2 "string", 3
//                          "date", 4 "object", 5 "boolean", 6 "i8", 7 "r4",
//                          8 "float"; other codes have none)
//  getString()             the cached value's text (an object's toString()), or,
//                          without a cached value, the data of the text children
//                          (type 12) joined; the empty string when there are none
//  getInteger(), getLong(), getBool(), getFloat(), getDouble()
//                          the cached value converted, or the text parsed (decimal
//                          numbers; "true"/"false" also for getBool; text that is
//                          not a number gives 0). A floating value converts to a
//                          64-bit integer by truncation; from 2^63 up it wraps as
//                          an unsigned value. getInteger keeps the low 32 bits.
//  getDate()               the value as a date (seconds since 1970); a null date
//                          when there is no numeric value
//  getKepObject()          the cached object (values set from a node, or made by
//                          toKepObject); a null object otherwise
//  toKepObject()           getKepObject(), or else a KepString object of
//                          getString(), then cached as the value; null when the
//                          element has no value
//  setString(text)         the element's content becomes the text (data type 2)
//  getString(name), getString(tag)
//                          get(name).getString(); a null string when the child is
//                          missing
//  setPreserveSpace(b)     records whether white space in the element's text is
//                          significant (for the XML parser's white-space rule)
//  getLocalNameID()        the local-name tag
// Changing the element's children, or the data of one of its text children,
// drops the cached value (the text then is the value).
//
// The table comes in three parts: the body declares operations without a bridge
// between them (see KepRDOMElement), so that every operation keeps its slot.
// clang-format off
#define KEP_METHODS_DOMElement(X)                                                               \
  KEP_METHODS_DOMElementValues(X) KEP_METHODS_DOMElementPaths(X) KEP_METHODS_DOMElementNames(X)

#define KEP_METHODS_DOMElementValues(X)                                                         \
  X(DOMElement, KepString, getAttribute, (KepString const& name), (name), const, 0)             \
  X(DOMElement, KepDOMAttribute, getAttributeNode, (KepString const& name), (name), const, 0)   \
  X(DOMElement, KepString, getAttributeNS, (KepString const& uri, KepString const& localName),  \
    (uri, localName), const, 0)                                                                 \
  X(DOMElement, KepDOMAttribute, getAttributeNodeNS,                                            \
    (KepString const& uri, KepString const& localName), (uri, localName), const, 0)             \
  X(DOMElement, KepDOMNodeList, getElementsByTagName, (KepString const& name), (name), const, 0) \
  X(DOMElement, KepString, getTagName, (), (), const, 0)                                        \
  X(DOMElement, void, normalize, (), (), , 1)                                                   \
  X(DOMElement, void, removeAttribute, (KepString const& name), (name), , 1)                    \
  X(DOMElement, void, removeAttributeNS, (KepString const& uri, KepString const& localName),    \
    (uri, localName), , 1)                                                                      \
  X(DOMElement, KepDOMAttribute, removeAttributeNode, (KepDOMAttribute const& oldAttr),         \
    (oldAttr), , 1)                                                                             \
  X(DOMElement, void, setAttribute, (KepString const& name, KepString const& value),            \
    (name, value), , 1)                                                                         \
  X(DOMElement, void, setAttributeNS,                                                           \
    (KepString const& uri, KepString const& qualifiedName, KepString const& value),             \
    (uri, qualifiedName, value), , 1)                                                           \
  X(DOMElement, KepDOMAttribute, setAttributeNode, (KepDOMAttribute const& newAttr), (newAttr), \
    , 1)                                                                                        \
  X(DOMElement, KepDOMAttribute, setAttributeNodeNS, (KepDOMAttribute const& newAttr),          \
    (newAttr), , 1)                                                                             \
  X(DOMElement, unsigned long, hasAttribute, (KepString const& name), (name), const, 0)         \
  X(DOMElement, unsigned long, hasAttributeNS, (KepString const& uri, KepString const& localName), \
    (uri, localName), const, 0)                                                                 \
  X(DOMElement, KepDOMNodeList, getElementsByTagName, (KepString const& name, int depth),       \
    (name, depth), const, 0)                                                                    \
  X(DOMElement, KepDOMElement, set, (KepString const& name), (name), , 1)                       \
  X(DOMElement, KepDOMElement, set, (int tag), (tag), , 1)                                      \
  X(DOMElement, KepDOMElement, set, (KepDOMElement const& element), (element), , 1)             \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, set, int)                                                    \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, setBool, unsigned long)                                      \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, set, long)                                                   \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, set, float)                                                  \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, set, long double)                                            \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, set, KepString const&)                                       \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, set, KepDate const&)                                         \
  KEP_DOM_ELEMENT_VALUE_SETTERS(X, set, KepDOMNode const&)                                      \
  X(DOMElement, int, getDataType, (), (), const, 0)                                             \
  X(DOMElement, void, setDataType, (int type), (type), , 1)                                     \
  X(DOMElement, KepDOMElement, get, (KepString const& name), (name), const, 0)                  \
  X(DOMElement, KepDOMElement, get, (int tag), (tag), const, 0)                                 \
  X(DOMElement, KepDOMElement, get, (KepString const& name, int occurrence), (name, occurrence), \
    const, 0)                                                                                   \
  X(DOMElement, KepDOMElement, get, (int tag, int occurrence), (tag, occurrence), const, 0)     \
  X(DOMElement, KepDOMElement, getNext, (), (), const, 0)                                       \
  X(DOMElement, KepString, getString, (), (), const, 0)                                         \
  X(DOMElement, KepDate, getDate, (), (), const, 0)                                             \
  X(DOMElement, int, getInteger, (), (), const, 0)                                              \
  X(DOMElement, unsigned long, getBool, (), (), const, 0)                                       \
  X(DOMElement, long, getLong, (), (), const, 0)                                                \
  X(DOMElement, float, getFloat, (), (), const, 0)                                              \
  X(DOMElement, long double, getDouble, (), (), const, 0)                                       \
  X(DOMElement, KepObject, getKepObject, (), (), const, 0)                                      \
  X(DOMElement, KepObject, toKepObject, (), (), , 1)

#define KEP_METHODS_DOMElementPaths(X)                                                          \
  X(DOMElement, KepDOMElement, find, (KepXPointer const& path, unsigned long create),           \
    (path, create), const, 1)                                                                   \
  X(DOMElement, void, setString, (KepString const& text), (text), , 1)                          \
  X(DOMElement, KepString, getString, (KepString const& name), (name), const, 0)                \
  X(DOMElement, KepString, getString, (int tag), (tag), const, 0)                               \
  X(DOMElement, void, setPreserveSpace, (unsigned long preserve), (preserve), , 1)

#define KEP_METHODS_DOMElementNames(X)                                                          \
  X(DOMElement, int, getLocalNameID, (), (), const, 0)
// clang-format on

// A handle on an element (body KepRDOMElement, class "DomElement" 0x40010, the
// base of most of the library's bodies). Besides the W3C element operations it
// is a typed data container: its named values are child elements addressed by
// tag and occurrence, and its own value may be cached in native form.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMElement : public KepDOMParentNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMElement, KepDOMParentNode)

 public:
  KEP_METHODS_DOMElement(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMElement(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMELEMENT_H
