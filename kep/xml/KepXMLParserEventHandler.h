// KepXMLParserEventHandler: lets a caller place the elements the XML parser builds.
#ifndef KEP_XML_KEPXMLPARSEREVENTHANDLER_H
#define KEP_XML_KEPXMLPARSEREVENTHANDLER_H

#include "kep/base/KepDefs.h"

class KepDOMElement;
class KepRDOMParentNode;

// Installed on a parser body with KepRXMLParser::setEventHandler. For every
// element it builds, the parser first offers the new element and the node that
// would become its parent (the document for the document element). The handler
// answers non-zero when it has placed the element itself (anywhere, or nowhere:
// an element it does not keep is freed with the parse's last reference to it);
// zero lets the parser append the element to `parent`. Either way the new element
// becomes the parent of what follows inside it.
//
// The handler is called on the thread that runs buildObjects; it must not
// remove `parent` or the elements above it from the tree during the parse.
class KEP_API KepXMLParserEventHandler {
 public:
  virtual ~KepXMLParserEventHandler() = default;
  virtual unsigned long createElement(KepDOMElement* element, KepRDOMParentNode* parent) = 0;
};

#endif  // KEP_XML_KEPXMLPARSEREVENTHANDLER_H
