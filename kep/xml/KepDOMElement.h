// KepDOMElement: handle on a DOM element, the typed data container of the library.
#ifndef KEP_XML_KEPDOMELEMENT_H
#define KEP_XML_KEPDOMELEMENT_H

#include "kep/xml/KepDOMParentNode.h"

// handle on a DOM element, the typed data container of the library.
class KEP_API KepDOMElement : public KepDOMParentNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMElement, KepDOMParentNode)
};

#endif  // KEP_XML_KEPDOMELEMENT_H
