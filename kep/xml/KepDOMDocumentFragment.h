// KepDOMDocumentFragment: handle on a document fragment.
#ifndef KEP_XML_KEPDOMDOCUMENTFRAGMENT_H
#define KEP_XML_KEPDOMDOCUMENTFRAGMENT_H

#include "kep/xml/KepDOMParentNode.h"

// A handle on a document fragment (body KepRDOMDocumentFragment, type code 6,
// named "#document-fragment"): a parent without a place in a tree. Inserting a
// fragment into a node moves the fragment's children there, in order, and
// leaves the fragment empty. It adds no operations of its own.
//
// Thread safety: see KepDOMNode.
class KEP_API KepDOMDocumentFragment : public KepDOMParentNode {
  KEP_HANDLE_CONSTRUCTORS(KepDOMDocumentFragment, KepDOMParentNode)
};

#endif  // KEP_XML_KEPDOMDOCUMENTFRAGMENT_H
