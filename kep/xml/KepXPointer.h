// KepXPointer: handle on an XPointer, a path of element names joined by ".".
#ifndef KEP_XML_KEPXPOINTER_H
#define KEP_XML_KEPXPOINTER_H

#include "kep/base/KepString.h"

// A handle on an XPointer (body KepRXPointer, class 0x400dc): a string under its
// own class that names an element by the path of element names leading to it
// from a starting element, for example "Settings.Mail.Limit". Every string
// operation works on it. Empty steps (two dots in a row, a leading or trailing
// dot) are skipped by the lookups that follow a path.
//
// A default-constructed XPointer is a null handle; lookups take it for the
// starting element itself. An XPointer adds no operations of its own, so it has
// no bridge family besides the string's.
//
// Thread safety: like strings, XPointers never change after construction.
class KEP_API KepXPointer : public KepString {
  KEP_HANDLE_CONSTRUCTORS(KepXPointer, KepString)

 public:
  // A new XPointer holding the units of `path`; a null string gives a null
  // XPointer. (The constructor from any other handle shares that handle's body
  // instead, whatever its class.)
  KepXPointer(KepString const& path);
  // A new XPointer holding the zero-terminated 8-bit text widened to units;
  // null text gives a null XPointer.
  KepXPointer(char const* path);
};

#endif  // KEP_XML_KEPXPOINTER_H
