// KepDOMChildNode: handle on a node that can have a parent.
#ifndef KEP_XML_KEPDOMCHILDNODE_H
#define KEP_XML_KEPDOMCHILDNODE_H

#include "kep/xml/KepDOMNode.h"

// handle on a node that can have a parent.
class KEP_API KepDOMChildNode : public KepDOMNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMChildNode, KepDOMNode)
};

#endif  // KEP_XML_KEPDOMCHILDNODE_H
