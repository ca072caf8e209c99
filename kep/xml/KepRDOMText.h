// KepRDOMText: the body of KepDOMText.
#ifndef KEP_XML_KEPRDOMTEXT_H
#define KEP_XML_KEPRDOMTEXT_H

#include "kep/xml/KepDOMText.h"
#include "kep/xml/KepRDOMCharacterData.h"

// A text node: type code 12, named "#text".
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMText : public KepRDOMCharacterData {
  KEP_BODY_IDENTITY(DOMText, KepRDOMCharacterData)
  KEP_BODY_CREATE_ANOTHER(DOMText)

 public:
  KepRDOMText() noexcept = default;

  KEP_METHODS_DOMText(KEP_DECLARE_METHOD)

      int getNodeType() const override;

 protected:
  int defaultNodeID() const override;
};

#endif  // KEP_XML_KEPRDOMTEXT_H
