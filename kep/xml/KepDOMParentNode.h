// KepDOMParentNode: handle on a node that can have children.
#ifndef KEP_XML_KEPDOMPARENTNODE_H
#define KEP_XML_KEPDOMPARENTNODE_H

#include "kep/xml/KepDOMChildNode.h"

// handle on a node that can have children.
class KEP_API KepDOMParentNode : public KepDOMChildNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMParentNode, KepDOMChildNode)
};

#endif  // KEP_XML_KEPDOMPARENTNODE_H
