// KepXPointer: handle on an XPointer, a path of element names joined by ".".
#ifndef KEP_XML_KEPXPOINTER_H
#define KEP_XML_KEPXPOINTER_H

#include "kep/base/KepString.h"

// A handle on an XPointer (body KepRXPointer, class 0x400dc, a string under
// its own class): the path of element names that leads from a starting element
// to another, for example "Settings.Mail.Limit". A null XPointer stands for the
// starting element itself. Made from a KepString (the constructor from any
// handle shares the string) and read with the string operations. Only the
// handle's constructors exist so far; the XPointer body is not built yet, so
// an XPointer made from a string is a string body.
class KEP_API KepXPointer : public KepString {
  KEP_HANDLE_CONSTRUCTORS(KepXPointer, KepString)
};

#endif  // KEP_XML_KEPXPOINTER_H
