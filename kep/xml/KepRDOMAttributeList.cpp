#include "kep/xml/KepRDOMAttributeList.h"

#include "kep/base/KepFactory.h"
#include "kep/base/_KepBodyCount.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepRDOMAttribute.h"
#include "kep/xml/KepRDOMElement.h"

KEP_REGISTER_LIBRARY_CLASS(DOMAttributeList);

KepRDOMElement* KepRDOMAttributeList::element() const noexcept {
  return owner != nullptr ? owner->asElement() : nullptr;
}

void KepRDOMAttributeList::ownerGone() {
  for (KepRDOMNode* node : nodes) static_cast<KepRDOMAttribute*>(node)->setOwnerElement(nullptr);
  owner = nullptr;
}

bool KepRDOMAttributeList::accepts(KepRDOMNode const& node) const {
  if (node.getNodeType() != KepDOMNode::ATTRIBUTE_NODE) return false;
  KepRDOMElement* holder = static_cast<KepRDOMAttribute const&>(node).ownerElementBody();
  return holder == nullptr || holder == element();
}

void KepRDOMAttributeList::attached(KepRDOMNode& node) {
  KepRDOMElement* target = element();
  if (target != nullptr) join(node, target);
}

void KepRDOMAttributeList::appendParsed(KepRDOMAttribute* attribute, KepRDOMElement* target) {
  nodes.push_back(attribute);
  _KepBodyCount::addRef(attribute);
  join(*attribute, target);
}

void KepRDOMAttributeList::join(KepRDOMNode& node, KepRDOMElement* target) {
  static_cast<KepRDOMAttribute&>(node).setOwnerElement(target);
  // Nodes made for the element's document are in it already.
  if (node.ownerAnchor() != target->ownerAnchor()) node.adoptOne(target->ownerAnchor());
  target->noteChange(KepRDOMNode::kAttributeChanged, &node);
}

void KepRDOMAttributeList::detached(KepRDOMNode& node) {
  auto& attribute = static_cast<KepRDOMAttribute&>(node);
  KepRDOMElement* target = element();
  if (attribute.ownerElementBody() == target) attribute.setOwnerElement(nullptr);
  if (target != nullptr) target->noteChange(KepRDOMNode::kAttributeChanged, &node);
}

KepDOMElement KepRDOMAttributeList::getOwnerElement() const {
  return _KepDOMHandle<KepDOMElement>(element());
}

KepString KepRDOMAttributeList::getValue(KepString const& name) const {
  return getValue(KepRDOMNode::knownTagOf(name));
}

KepString KepRDOMAttributeList::getValue(int tag) const { return getValueAt(find(tag)); }

KepString KepRDOMAttributeList::getValueNS(KepString const& uri, KepString const& localName) const {
  int uriTag = 0;
  int localTag = 0;
  if (!namespaceTags(uri, localName, uriTag, localTag)) return KepString();
  return getValueAt(findNS(uriTag, localTag));
}

KepString KepRDOMAttributeList::getName(int index) const {
  KepRDOMNode* node = at(index);
  return node != nullptr ? node->getNodeName() : KepString();
}

KepString KepRDOMAttributeList::getValueAt(int index) const {
  KepRDOMNode* node = at(index);
  return node != nullptr ? node->getNodeValue() : KepString();
}

int KepRDOMAttributeList::indexOf(KepString const& name) const {
  return find(KepRDOMNode::knownTagOf(name));
}

int KepRDOMAttributeList::indexOf(int tag) const { return find(tag); }

void KepRDOMAttributeList::setValue(KepString const& name, KepString const& value) {
  KepRDOMElement* target = element();
  if (target != nullptr) target->setAttribute(name, value);
}

void KepRDOMAttributeList::setValue(int tag, KepString const& value) {
  KepRDOMElement* target = element();
  if (target != nullptr && tag != 0) target->setAttribute(KepRDOMNode::nameOf(tag), value);
}

void KepRDOMAttributeList::removeAll() {
  while (size() > 0) takeAt(size() - 1);
}
