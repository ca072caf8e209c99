// KepDOMText: handle on a text node.
#ifndef KEP_XML_KEPDOMTEXT_H
#define KEP_XML_KEPDOMTEXT_H

#include "kep/xml/KepDOMCharacterData.h"

// The operation KepDOMText adds to KepDOMCharacterData.
//
//  splitText(offset)   keeps the units before `offset` and moves the rest into a
//                      new node of the same class, which is inserted as the next
//                      sibling when the node has a parent, and answered. An
//                      offset outside 0..getLength() is refused (null).
// clang-format off
#define KEP_METHODS_DOMText(X)                                              \
  X(DOMText, KepDOMText, splitText, (int offset), (offset), , 0)
// clang-format on

// A handle on a text node (body KepRDOMText, type code 12, named "#text").
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMText : public KepDOMCharacterData {
  KEP_HANDLE_CONSTRUCTORS(KepDOMText, KepDOMCharacterData)

 public:
  KEP_METHODS_DOMText(KEP_DECLARE_METHOD)
};

KEP_METHODS_DOMText(KEP_DECLARE_BRIDGE)

#endif  // KEP_XML_KEPDOMTEXT_H
