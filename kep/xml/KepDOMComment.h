// KepDOMComment: handle on a comment node.
#ifndef KEP_XML_KEPDOMCOMMENT_H
#define KEP_XML_KEPDOMCOMMENT_H

#include "kep/xml/KepDOMCharacterData.h"

// A handle on a comment (body KepRDOMComment, type code 3, named "#comment");
// its data is the comment text. It adds no operations of its own.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMComment : public KepDOMCharacterData {
  KEP_HANDLE_CONSTRUCTORS(KepDOMComment, KepDOMCharacterData)
};

#endif  // KEP_XML_KEPDOMCOMMENT_H
