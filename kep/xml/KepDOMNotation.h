// KepDOMNotation: handle on a notation declaration node.
#ifndef KEP_XML_KEPDOMNOTATION_H
#define KEP_XML_KEPDOMNOTATION_H

#include "kep/xml/KepDOMChildNode.h"

class KepDOMExternalID;

// The operations KepDOMNotation adds to KepDOMChildNode: the notation's public
// and system identifiers, as one external-ID object.
//
//  getExternalID()     the identifiers, or a null object when none were set
//  setExternalID(id)   replaces them (the object is shared, not copied)
// clang-format off
#define KEP_METHODS_DOMNotation(X)                                                            \
  X(DOMNotation, KepDOMExternalID, getExternalID, (), (), const, 0)                           \
  X(DOMNotation, void, setExternalID, (KepDOMExternalID const& externalID), (externalID), , 1)
// clang-format on

// A handle on a notation (body KepRDOMNotation, type code 10), named by the
// notation. Notations live in a document type's notation map, never in a tree.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMNotation : public KepDOMChildNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMNotation, KepDOMChildNode)

 public:
  KEP_METHODS_DOMNotation(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMNotation(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMNOTATION_H
