// KepDOMImplementation: handle on the DOM implementation object.
#ifndef KEP_XML_KEPDOMIMPLEMENTATION_H
#define KEP_XML_KEPDOMIMPLEMENTATION_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

class KepDOMDocument;
class KepDOMDocumentType;

// The operation of KepDOMImplementation (W3C DOMImplementation).
//
//  createDocument(uri, qualifiedName, doctype)
//                      a new document holding `doctype` (when not null) and a
//                      document element made by createElementNS(uri,
//                      qualifiedName) (when the name is not null or empty). Refused
//                      (null): a doctype that already has a parent, or a name that
//                      createElementNS refuses.
// clang-format off
#define KEP_METHODS_DOMImplementation(X)                                                     \
  X(DOMImplementation, KepDOMDocument, createDocument,                                       \
    (KepString const& uri, KepString const& qualifiedName, KepDOMDocumentType const& doctype), \
    (uri, qualifiedName, doctype), , 1)
// clang-format on

// A handle on the DOM implementation (body KepRDOMImplementation, class
// 0x40015); it holds no state.
//
// Thread safety: any thread.
class KEP_API KepDOMImplementation : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMImplementation, KepObject)

 public:
  KEP_METHODS_DOMImplementation(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMImplementation(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMIMPLEMENTATION_H
