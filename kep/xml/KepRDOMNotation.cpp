#include "kep/xml/KepRDOMNotation.h"

#include "kep/base/KepFactory.h"

KEP_REGISTER_LIBRARY_CLASS(DOMNotation);

int KepRDOMNotation::getNodeType() const { return KepDOMNode::NOTATION_NODE; }

KepDOMExternalID KepRDOMNotation::getExternalID() const { return externalID; }

void KepRDOMNotation::setExternalID(KepDOMExternalID const& id) {
  externalID = id;
  valueChanged();
}

void KepRDOMNotation::copyInto(KepRDOMNode& copy) const {
  KepRDOMChildNode::copyInto(copy);
  if (auto* target = dynamic_cast<KepRDOMNotation*>(&copy)) target->externalID = externalID;
}
