// KepDOMNode: handle on a node of a DOM tree.
#ifndef KEP_XML_KEPDOMNODE_H
#define KEP_XML_KEPDOMNODE_H

#include "kep/base/KepObject.h"

// handle on a node of a DOM tree.
class KEP_API KepDOMNode : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMNode, KepObject)
};

#endif  // KEP_XML_KEPDOMNODE_H
