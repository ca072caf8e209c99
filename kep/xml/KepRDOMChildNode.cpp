#include "kep/xml/KepRDOMChildNode.h"

#include "kep/base/KepFactory.h"
#include "kep/xml/KepRDOMParentNode.h"

KEP_REGISTER_LIBRARY_CLASS(DOMChildNode);

unsigned long KepRDOMChildNode::remove() {
  KepRDOMNode* from = parentBody();
  if (from == nullptr) return 0;
  return from->asParent()->removeNode(this).isNull() ? 0 : 1;
}
