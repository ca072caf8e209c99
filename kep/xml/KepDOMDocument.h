// KepDOMDocument: handle on a DOM document.
#ifndef KEP_XML_KEPDOMDOCUMENT_H
#define KEP_XML_KEPDOMDOCUMENT_H

#include "kep/xml/KepDOMDocumentFragment.h"

class KepDOMAttribute;
class KepDOMCDATASection;
class KepDOMComment;
class KepDOMDocumentType;
class KepDOMElement;
class KepDOMEntityReference;
class KepDOMImplementation;
class KepDOMProcessingInstruction;
class KepDOMText;

// The operations KepDOMDocument adds (W3C Document). Every node a document
// makes belongs to it (getOwnerDocument) and has no parent yet. A name the
// tag manager does not know yet is added to it. A refusal records the error
// "DOMError" on the calling thread (see KepThread) with the values "Code" (the
// W3C exception code) and "Method".
//
//  createElement(name), createElement(tag)
//                          a plain element ("DomElement" class) of that name; a
//                          null or empty name (tag 0) is refused (null, code 5)
//  createElementNS(uri, qualifiedName)
//                          an element with node ID, prefix, local-name and URI
//                          tags taken from the arguments; refused (null, code
//                          14) as KepDOMElement::setAttributeNS refuses its names
//  createDocumentFragment(), createTextNode(data), createComment(data),
//  createCDATASection(data), createProcessingInstruction(target, data),
//  createEntityReference(name)
//                          the new node; a null or empty target or name is
//                          refused (code 5)
//  createAttribute(name), createAttributeNS(uri, qualifiedName)
//                          a new attribute with the empty value; names refused
//                          as by createElement and createElementNS
//  getElementsByTagName(name), getElementsByTagNameNS(uri, localName)
//                          the elements of the document with that name (local
//                          name and URI; "*" matches any), in document order, as a
//                          list taken now
//  importNode(node, deep)  a copy of a node of any document (cloneNode(deep)) that
//                          belongs to this one; documents and document types are
//                          refused (null, code 9)
//  adoptNode(node)         takes the node itself, with its subtree, out of its
//                          parent (an attribute out of its element) into this
//                          document and answers it; documents and document types
//                          are refused (null, code 9)
//  getElementById(id)      the first element, in document order, whose attribute
//                          "id" has that value (there is no DTD to declare other ID
//                          attributes); null when none
//  getDoctype(), getDocumentElement()
//                          the document-type child and the element child, or null
//  getImplementation()     the DOM implementation object
// clang-format off
#define KEP_METHODS_DOMDocument(X)                                                             \
  X(DOMDocument, KepDOMElement, createElement, (KepString const& name), (name), , 0)           \
  X(DOMDocument, KepDOMElement, createElement, (int tag), (tag), , 0)                          \
  X(DOMDocument, KepDOMElement, createElementNS,                                               \
    (KepString const& uri, KepString const& qualifiedName), (uri, qualifiedName), , 0)         \
  X(DOMDocument, KepDOMDocumentFragment, createDocumentFragment, (), (), , 0)                  \
  X(DOMDocument, KepDOMText, createTextNode, (KepString const& data), (data), , 0)             \
  X(DOMDocument, KepDOMComment, createComment, (KepString const& data), (data), , 0)           \
  X(DOMDocument, KepDOMCDATASection, createCDATASection, (KepString const& data), (data), , 0) \
  X(DOMDocument, KepDOMProcessingInstruction, createProcessingInstruction,                     \
    (KepString const& target, KepString const& data), (target, data), , 0)                     \
  X(DOMDocument, KepDOMAttribute, createAttribute, (KepString const& name), (name), , 0)       \
  X(DOMDocument, KepDOMAttribute, createAttributeNS,                                           \
    (KepString const& uri, KepString const& qualifiedName), (uri, qualifiedName), , 0)         \
  X(DOMDocument, KepDOMEntityReference, createEntityReference, (KepString const& name),        \
    (name), , 0)                                                                               \
  X(DOMDocument, KepDOMNodeList, getElementsByTagName, (KepString const& name), (name), const, \
    0)                                                                                         \
  X(DOMDocument, KepDOMNodeList, getElementsByTagNameNS,                                       \
    (KepString const& uri, KepString const& localName), (uri, localName), const, 0)            \
  X(DOMDocument, KepDOMNode, importNode, (KepDOMNode const& node, unsigned long deep),         \
    (node, deep), , 0)                                                                         \
  X(DOMDocument, KepDOMNode, adoptNode, (KepDOMNode const& node), (node), , 1)                 \
  X(DOMDocument, KepDOMElement, getElementById, (KepString const& id), (id), const, 0)         \
  X(DOMDocument, KepDOMDocumentType, getDoctype, (), (), const, 0)                             \
  X(DOMDocument, KepDOMImplementation, getImplementation, (), (), const, 0)                    \
  X(DOMDocument, KepDOMElement, getDocumentElement, (), (), const, 0)
// clang-format on

// A handle on a document (body KepRDOMDocument, class "DomDocument" 0x4000d,
// type code 5, named "#document"). A new document is made by the factory:
// KepDOMDocument doc(KepGetObject(KepClassID::DOMDocument, 0)). The process
// keeps one default document (KepFactory::getDefaultDoc()).
//
// A document holds its children like any parent; the nodes it made refer to it
// without a counted reference, so dropping the last handle on a document frees
// its tree, and nodes that outlive it answer a null owner document.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMDocument : public KepDOMDocumentFragment {
  KEP_HANDLE_CONSTRUCTORS(KepDOMDocument, KepDOMDocumentFragment)

 public:
  KEP_METHODS_DOMDocument(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMDocument(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMDOCUMENT_H
