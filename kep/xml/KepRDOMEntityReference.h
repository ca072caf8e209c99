// KepRDOMEntityReference: the body of KepDOMEntityReference.
#ifndef KEP_XML_KEPRDOMENTITYREFERENCE_H
#define KEP_XML_KEPRDOMENTITYREFERENCE_H

#include "kep/xml/KepDOMEntityReference.h"
#include "kep/xml/KepRDOMChildNode.h"

// An entity reference: type code 9, named by the entity.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMEntityReference : public KepRDOMChildNode {
  KEP_BODY_IDENTITY(DOMEntityReference, KepRDOMChildNode)
  KEP_BODY_CREATE_ANOTHER(DOMEntityReference)

 public:
  KepRDOMEntityReference() noexcept = default;

  int getNodeType() const override;
};

#endif  // KEP_XML_KEPRDOMENTITYREFERENCE_H
