#include "kep/xml/KepRDOMAttribute.h"

#include "kep/base/KepFactory.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepRDOMAttributeList.h"
#include "kep/xml/KepRDOMElement.h"

KEP_REGISTER_LIBRARY_CLASS(DOMAttribute);

KepRDOMAttribute::~KepRDOMAttribute() {
  if (value != nullptr) value->release();
}

void KepRDOMAttribute::assign(KepString const& text) { _KepDOMHoldBody(value, text); }

KepString KepRDOMAttribute::valueRef() const { return _KepDOMHandle<KepString>(value); }

int KepRDOMAttribute::getNodeType() const { return KepDOMNode::ATTRIBUTE_NODE; }

KepString KepRDOMAttribute::getName() const { return getNodeName(); }

unsigned long KepRDOMAttribute::getSpecified() const { return 1; }

KepString KepRDOMAttribute::getValue() const {
  static KepString const empty("");
  return value == nullptr ? empty : valueRef();
}

KepString KepRDOMAttribute::getNodeValue() const { return getValue(); }

void KepRDOMAttribute::setValue(KepString const& text) {
  assign(text);
  if (element != nullptr) {
    element->noteChange(kAttributeChanged, this);
  } else {
    noteChange(kValueChanged, this);
  }
}

void KepRDOMAttribute::setNodeValue(KepString const& text) { setValue(text); }

KepDOMElement KepRDOMAttribute::getOwnerElement() const {
  return _KepDOMHandle<KepDOMElement>(element);
}

unsigned long KepRDOMAttribute::remove() {
  if (element == nullptr) return 0;
  KepRDOMAttributeList* map = element->existingAttributes();
  int index = map != nullptr ? map->indexOfBody(this) : -1;
  return index >= 0 && !map->takeAt(index).isNull() ? 1 : 0;
}

void KepRDOMAttribute::copyInto(KepRDOMNode& copy) const {
  KepRDOMChildNode::copyInto(copy);
  if (auto* target = dynamic_cast<KepRDOMAttribute*>(&copy)) target->assign(valueRef());
}
