#include "kep/xml/KepRDOMText.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/xml/KepRDOMParentNode.h"

KEP_REGISTER_LIBRARY_CLASS(DOMText);

int KepRDOMText::getNodeType() const { return KepDOMNode::TEXT_NODE; }

int KepRDOMText::defaultNodeID() const { return KepNameToTag("#text"); }

KepDOMText KepRDOMText::splitText(int offset) {
  int length = textLength();
  if (offset < 0 || offset > length) return KepDOMText();
  KepObject holder = shallowCopy();
  auto* tail = dynamic_cast<KepRDOMText*>(of(holder));
  if (tail == nullptr) return KepDOMText();
  KepString whole = text();
  tail->initData(whole.isNull() ? whole : whole.substring(offset));
  splice(offset, length, KepString());
  if (KepRDOMNode* above = parentBody()) above->asParent()->insertNode(tail, nextBody());
  return _KepDOMHandle<KepDOMText>(tail);
}
