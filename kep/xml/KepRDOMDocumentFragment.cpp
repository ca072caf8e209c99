#include "kep/xml/KepRDOMDocumentFragment.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"

KEP_REGISTER_LIBRARY_CLASS(DOMDocumentFragment);

int KepRDOMDocumentFragment::getNodeType() const { return KepDOMNode::DOCUMENT_FRAGMENT_NODE; }

int KepRDOMDocumentFragment::defaultNodeID() const { return KepNameToTag("#document-fragment"); }
