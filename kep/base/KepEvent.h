// KepEvent: handle on an event: an element naming an action.
#ifndef KEP_BASE_KEPEVENT_H
#define KEP_BASE_KEPEVENT_H

#include "kep/xml/KepDOMElement.h"

// handle on an event: an element naming an action.
class KEP_API KepEvent : public KepDOMElement {
  KEP_HANDLE_CONSTRUCTORS(KepEvent, KepDOMElement)
};

#endif  // KEP_BASE_KEPEVENT_H
