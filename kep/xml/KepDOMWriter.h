// KepDOMWriter: handle on the DOM writer, which turns a DOM tree into XML text.
#ifndef KEP_XML_KEPDOMWRITER_H
#define KEP_XML_KEPDOMWRITER_H

#include "kep/base/KepObject.h"

// A handle on a DOM writer (body KepRDOMWriter, class 0x4011f). Nodes receive
// it in their serializeAsXML() hook. Only the handle's constructors exist so
// far; the writer's operations are not built yet.
class KEP_API KepDOMWriter : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepDOMWriter, KepObject)
};

#endif  // KEP_XML_KEPDOMWRITER_H
