#include "kep/xml/KepRDOMCDATASection.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"

KEP_REGISTER_LIBRARY_CLASS(DOMCDATASection);

int KepRDOMCDATASection::getNodeType() const { return KepDOMNode::CDATA_SECTION_NODE; }

int KepRDOMCDATASection::defaultNodeID() const { return KepNameToTag("#cdata-section"); }
