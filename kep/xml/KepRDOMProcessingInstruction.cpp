#include "kep/xml/KepRDOMProcessingInstruction.h"

#include "kep/base/KepFactory.h"

KEP_REGISTER_LIBRARY_CLASS(DOMProcessingInstruction);

int KepRDOMProcessingInstruction::getNodeType() const {
  return KepDOMNode::PROCESSING_INSTRUCTION_NODE;
}

KepString KepRDOMProcessingInstruction::getTarget() const { return getNodeName(); }

KepString KepRDOMProcessingInstruction::getData() const {
  static KepString const empty("");
  return data.isNull() ? empty : data;
}

KepString KepRDOMProcessingInstruction::getNodeValue() const { return getData(); }

void KepRDOMProcessingInstruction::setData(KepString const& text) {
  data = text;
  valueChanged();
}

void KepRDOMProcessingInstruction::setNodeValue(KepString const& value) { setData(value); }

void KepRDOMProcessingInstruction::copyInto(KepRDOMNode& copy) const {
  KepRDOMChildNode::copyInto(copy);
  if (auto* target = dynamic_cast<KepRDOMProcessingInstruction*>(&copy)) target->data = data;
}
