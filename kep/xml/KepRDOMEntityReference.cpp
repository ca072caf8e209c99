#include "kep/xml/KepRDOMEntityReference.h"

#include "kep/base/KepFactory.h"

KEP_REGISTER_LIBRARY_CLASS(DOMEntityReference);

int KepRDOMEntityReference::getNodeType() const { return KepDOMNode::ENTITY_REFERENCE_NODE; }
