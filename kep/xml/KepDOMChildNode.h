// KepDOMChildNode: handle on a node that can have a parent.
#ifndef KEP_XML_KEPDOMCHILDNODE_H
#define KEP_XML_KEPDOMCHILDNODE_H

#include "kep/xml/KepDOMNode.h"

// The operation KepDOMChildNode adds to KepDOMNode.
//
//  remove()    takes the node out of its parent (an attribute out of its
//              element); 1 when it was in one, else 0 and nothing changes
// clang-format off
#define KEP_METHODS_DOMChildNode(X)                            \
  X(DOMChildNode, unsigned long, remove, (), (), , 1)
// clang-format on

// A handle on a node that can have a parent: everything but documents' own
// body class (which still derives from it) and entities.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMChildNode : public KepDOMNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMChildNode, KepDOMNode)

 public:
  KEP_METHODS_DOMChildNode(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMChildNode(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMCHILDNODE_H
