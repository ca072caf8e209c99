// KepRDOMNotation: the body of KepDOMNotation.
#ifndef KEP_XML_KEPRDOMNOTATION_H
#define KEP_XML_KEPRDOMNOTATION_H

#include "kep/xml/KepDOMExternalID.h"
#include "kep/xml/KepDOMNotation.h"
#include "kep/xml/KepRDOMChildNode.h"

// A notation: type code 10, named by the notation, with its identifiers.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMNotation : public KepRDOMChildNode {
  KEP_BODY_IDENTITY(DOMNotation, KepRDOMChildNode)
  KEP_BODY_CREATE_ANOTHER(DOMNotation)

 public:
  KepRDOMNotation() noexcept = default;

  KEP_METHODS_DOMNotation(KEP_DECLARE_METHOD)

      int getNodeType() const override;
  void copyInto(KepRDOMNode& copy) const override;

 private:
  KepDOMExternalID externalID;
};

#endif  // KEP_XML_KEPRDOMNOTATION_H
