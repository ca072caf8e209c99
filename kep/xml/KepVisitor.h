// KepVisitor: handle on a visitor walked over a DOM tree by traverse().
#ifndef KEP_XML_KEPVISITOR_H
#define KEP_XML_KEPVISITOR_H

#include "kep/base/KepObject.h"

// A handle on a visitor that nodes accept in their traverse() hook. Only the
// handle's constructors exist so far; the visitor's operations are not built
// yet.
class KEP_API KepVisitor : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepVisitor, KepObject)
};

#endif  // KEP_XML_KEPVISITOR_H
