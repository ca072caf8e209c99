// KepDate: handle on a date, a point in time that is also a DOM element.
#ifndef KEP_BASE_KEPDATE_H
#define KEP_BASE_KEPDATE_H

#include "kep/xml/KepDOMElement.h"

// A handle on a date (body KepRDate, class id 0x4e, derived from the element
// body). Only the handle's constructors exist so far; the date body and its
// operations are not built yet. Until then the element value API carries a
// date as an element whose cached value is its GMT seconds since 1970
// (KepDOMElement::getDate() answers such an element, and the date setters read
// the seconds back from one).
class KEP_API KepDate : public KepDOMElement {
  KEP_HANDLE_CONSTRUCTORS(KepDate, KepDOMElement)
};

#endif  // KEP_BASE_KEPDATE_H
