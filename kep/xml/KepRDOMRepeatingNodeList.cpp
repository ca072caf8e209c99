#include "kep/xml/KepRDOMRepeatingNodeList.h"

#include "kep/base/KepFactory.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepRDOMElement.h"

KEP_REGISTER_LIBRARY_CLASS(DOMRepeatingNodeList);

void KepRDOMRepeatingNodeList::attach(KepDOMElement const& element, int tag) {
  KepRDOMNode* node = KepRDOMNode::of(element);
  KepRDOMElement* parent = node != nullptr ? node->asElement() : nullptr;
  showChildren(parent != nullptr && tag != 0 ? parent : nullptr, tag);
}

KepDOMElement KepRDOMRepeatingNodeList::getParentElement() const {
  KepRDOMParentNode* parent = liveParent();
  return _KepDOMHandle<KepDOMElement>(parent != nullptr ? parent->asElement() : nullptr);
}

int KepRDOMRepeatingNodeList::getTag() const { return liveTag(); }

void KepRDOMRepeatingNodeList::setTag(int tag) {
  KepRDOMParentNode* parent = liveParent();
  if (parent != nullptr && tag != 0) showChildren(parent, tag);
}

KepDOMElement KepRDOMRepeatingNodeList::addOccurrence() {
  KepRDOMParentNode* parent = liveParent();
  if (parent == nullptr) return KepDOMElement();
  auto* fresh = new KepRDOMElement();
  KepDOMElement holder(static_cast<KepBridgeToObject*>(fresh));
  fresh->setNames(liveTag(), 0, 0, 0);
  fresh->adoptOne(parent->childAnchor());
  return parent->insertNode(fresh, endPlace()) != nullptr ? holder : KepDOMElement();
}

KepDOMElement KepRDOMRepeatingNodeList::removeOccurrence(int occurrence) {
  return KepDOMElement(removeAt(occurrence));
}

int KepRDOMRepeatingNodeList::clearOccurrences() {
  int before = size();
  clear();
  return before - size();
}
