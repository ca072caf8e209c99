// KepRDOMComment: the body of KepDOMComment.
#ifndef KEP_XML_KEPRDOMCOMMENT_H
#define KEP_XML_KEPRDOMCOMMENT_H

#include "kep/xml/KepDOMComment.h"
#include "kep/xml/KepRDOMCharacterData.h"

// A comment: type code 3, named "#comment".
//
// Thread safety: see KepDOMNode.
class KEP_API KepRDOMComment : public KepRDOMCharacterData {
  KEP_BODY_IDENTITY(DOMComment, KepRDOMCharacterData)
  KEP_BODY_CREATE_ANOTHER(DOMComment)

 public:
  KepRDOMComment() noexcept = default;

  int getNodeType() const override;

 protected:
  int defaultNodeID() const override;
};

#endif  // KEP_XML_KEPRDOMCOMMENT_H
