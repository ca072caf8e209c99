#include "kep/xml/KepRDOMEntity.h"

#include "kep/base/KepFactory.h"

KEP_REGISTER_LIBRARY_CLASS(DOMEntity);

int KepRDOMEntity::getNodeType() const { return KepDOMNode::ENTITY_NODE; }

KepString KepRDOMEntity::getPublicId() const { return publicId; }

KepString KepRDOMEntity::getSystemId() const { return systemId; }

KepString KepRDOMEntity::getNotationName() const { return notationName; }

void KepRDOMEntity::setDeclaration(KepString const& publicText, KepString const& systemText,
                                   KepString const& notation) {
  publicId = publicText;
  systemId = systemText;
  notationName = notation;
}

void KepRDOMEntity::copyInto(KepRDOMNode& copy) const {
  KepRDOMNode::copyInto(copy);
  if (auto* target = dynamic_cast<KepRDOMEntity*>(&copy)) {
    target->setDeclaration(publicId, systemId, notationName);
  }
}
