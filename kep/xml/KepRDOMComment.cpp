#include "kep/xml/KepRDOMComment.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"

KEP_REGISTER_LIBRARY_CLASS(DOMComment);

int KepRDOMComment::getNodeType() const { return KepDOMNode::COMMENT_NODE; }

int KepRDOMComment::defaultNodeID() const { return KepNameToTag("#comment"); }
