// KepXMLParser: handle on the XML parser that builds DOM documents and objects.
#ifndef KEP_XML_KEPXMLPARSER_H
#define KEP_XML_KEPXMLPARSER_H

#include "kep/base/KepObject.h"

// A handle on an XML parser (body KepRXMLParser, class 0x40035). Nodes receive
// it in their _beginFromXML()/_endFromXML() hooks. Only the handle's
// constructors exist so far; the parser's operations are not built yet.
class KEP_API KepXMLParser : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepXMLParser, KepObject)
};

#endif  // KEP_XML_KEPXMLPARSER_H
