// KepRDOMCDATASection: the body of KepDOMCDATASection.
#ifndef KEP_XML_KEPRDOMCDATASECTION_H
#define KEP_XML_KEPRDOMCDATASECTION_H

#include "kep/xml/KepDOMCDATASection.h"
#include "kep/xml/KepRDOMText.h"

// A CDATA section: type code 2, named "#cdata-section".
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMCDATASection : public KepRDOMText {
  KEP_BODY_IDENTITY(DOMCDATASection, KepRDOMText)
  KEP_BODY_CREATE_ANOTHER(DOMCDATASection)

 public:
  KepRDOMCDATASection() noexcept = default;

  int getNodeType() const override;

 protected:
  int defaultNodeID() const override;
};

#endif  // KEP_XML_KEPRDOMCDATASECTION_H
