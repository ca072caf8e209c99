// KepDOMEntity: handle on an entity declaration node.
#ifndef KEP_XML_KEPDOMENTITY_H
#define KEP_XML_KEPDOMENTITY_H

#include "kep/xml/KepDOMNode.h"

// The operations KepDOMEntity adds to KepDOMNode (W3C Entity): the public and
// system identifiers and the notation name of an unparsed entity, each a null
// string when not declared.
// clang-format off
#define KEP_METHODS_DOMEntity(X)                                   \
  X(DOMEntity, KepString, getPublicId, (), (), const, 0)           \
  X(DOMEntity, KepString, getSystemId, (), (), const, 0)           \
  X(DOMEntity, KepString, getNotationName, (), (), const, 0)
// clang-format on

// A handle on an entity (body KepRDOMEntity, type code 8), named by the entity.
// Entities live in a document type's entity map, never in a tree.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMEntity : public KepDOMNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMEntity, KepDOMNode)

 public:
  KEP_METHODS_DOMEntity(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMEntity(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMENTITY_H
