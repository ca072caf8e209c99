// KepDOMCDATASection: handle on a CDATA section node.
#ifndef KEP_XML_KEPDOMCDATASECTION_H
#define KEP_XML_KEPDOMCDATASECTION_H

#include "kep/xml/KepDOMText.h"

// A handle on a CDATA section (body KepRDOMCDATASection, type code 2, named
// "#cdata-section"): text that the writer puts out unescaped. normalize() leaves
// CDATA sections alone, and the element value getters read only plain text
// children. It adds no operations of its own.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMCDATASection : public KepDOMText {
  KEP_HANDLE_CONSTRUCTORS(KepDOMCDATASection, KepDOMText)
};

#endif  // KEP_XML_KEPDOMCDATASECTION_H
