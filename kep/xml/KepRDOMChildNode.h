// KepRDOMChildNode: the body of KepDOMChildNode.
#ifndef KEP_XML_KEPRDOMCHILDNODE_H
#define KEP_XML_KEPRDOMCHILDNODE_H

#include "kep/xml/KepDOMChildNode.h"
#include "kep/xml/KepRDOMNode.h"

// A node that can have a parent. Its links live in KepRDOMNode; this class adds
// remove().
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMChildNode : public KepRDOMNode {
  KEP_BODY_IDENTITY(DOMChildNode, KepRDOMNode)
  KEP_BODY_CREATE_ANOTHER(DOMChildNode)

 public:
  KepRDOMChildNode() noexcept = default;

  KEP_METHODS_DOMChildNode(KEP_DECLARE_METHOD)
};

#endif  // KEP_XML_KEPRDOMCHILDNODE_H
