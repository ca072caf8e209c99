// KepRDOMDocumentFragment: the body of KepDOMDocumentFragment.
#ifndef KEP_XML_KEPRDOMDOCUMENTFRAGMENT_H
#define KEP_XML_KEPRDOMDOCUMENTFRAGMENT_H

#include "kep/xml/KepDOMDocumentFragment.h"
#include "kep/xml/KepRDOMParentNode.h"

// A document fragment: type code 6, named "#document-fragment".
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMDocumentFragment : public KepRDOMParentNode {
  KEP_BODY_IDENTITY(DOMDocumentFragment, KepRDOMParentNode)
  KEP_BODY_CREATE_ANOTHER(DOMDocumentFragment)

 public:
  KepRDOMDocumentFragment() noexcept = default;

  int getNodeType() const override;

 protected:
  int defaultNodeID() const override;
};

#endif  // KEP_XML_KEPRDOMDOCUMENTFRAGMENT_H
