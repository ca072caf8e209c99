// KepDOMDocumentType: handle on a document type node.
#ifndef KEP_XML_KEPDOMDOCUMENTTYPE_H
#define KEP_XML_KEPDOMDOCUMENTTYPE_H

#include "kep/xml/KepDOMParentNode.h"

// The operations KepDOMDocumentType adds (W3C DocumentType).
//
//  getName()           the node name (the name of the document element it
//                      declares)
//  getEntities(), getNotations()
//                      the maps of the declared entities and notations (made on
//                      first use; they accept entity and notation nodes)
// clang-format off
#define KEP_METHODS_DOMDocumentType(X)                                         \
  X(DOMDocumentType, KepString, getName, (), (), const, 0)                     \
  X(DOMDocumentType, KepDOMNamedNodeMap, getEntities, (), (), const, 0)        \
  X(DOMDocumentType, KepDOMNamedNodeMap, getNotations, (), (), const, 0)
// clang-format on

// A handle on a document type (body KepRDOMDocumentType, type code 4). It holds
// no children; a document holds at most one.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMDocumentType : public KepDOMParentNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMDocumentType, KepDOMParentNode)

 public:
  KEP_METHODS_DOMDocumentType(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMDocumentType(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMDOCUMENTTYPE_H
