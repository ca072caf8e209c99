// KepRDOMEntity: the body of KepDOMEntity.
#ifndef KEP_XML_KEPRDOMENTITY_H
#define KEP_XML_KEPRDOMENTITY_H

#include "kep/xml/KepDOMEntity.h"
#include "kep/xml/KepRDOMNode.h"

// An entity declaration: type code 8, named by the entity.
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMEntity : public KepRDOMNode {
  KEP_BODY_IDENTITY(DOMEntity, KepRDOMNode)
  KEP_BODY_CREATE_ANOTHER(DOMEntity)

 public:
  KepRDOMEntity() noexcept = default;

  KEP_METHODS_DOMEntity(KEP_DECLARE_METHOD)

      int getNodeType() const override;
  void copyInto(KepRDOMNode& copy) const override;
  // Sets what the declaration says (for the reader of declarations); null
  // strings for the parts it does not give.
  void setDeclaration(KepString const& publicId, KepString const& systemId,
                      KepString const& notationName);

 private:
  KepString publicId;
  KepString systemId;
  KepString notationName;
};

#endif  // KEP_XML_KEPRDOMENTITY_H
