// KepDOMEntityReference: handle on an entity reference node.
#ifndef KEP_XML_KEPDOMENTITYREFERENCE_H
#define KEP_XML_KEPDOMENTITYREFERENCE_H

#include "kep/xml/KepDOMChildNode.h"

// A handle on an entity reference (body KepRDOMEntityReference, type code 9),
// named by the entity it refers to. It holds no children (the library does not
// expand entities) and adds no operations of its own.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMEntityReference : public KepDOMChildNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMEntityReference, KepDOMChildNode)
};

#endif  // KEP_XML_KEPDOMENTITYREFERENCE_H
