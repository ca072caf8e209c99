#include "kep/xml/KepRDOMDocumentType.h"

#include "kep/base/KepFactory.h"
#include "kep/xml/KepDOMNamedNodeMap.h"
#include "kep/xml/KepRDOMNamedNodeMap.h"

KEP_REGISTER_LIBRARY_CLASS(DOMDocumentType);

KepRDOMDocumentType::KepRDOMDocumentType() noexcept : entities(nullptr), notations(nullptr) {}

KepRDOMDocumentType::~KepRDOMDocumentType() {
  for (KepRDOMNamedNodeMap* m : {entities, notations}) {
    if (m == nullptr) continue;
    m->ownerGone();
    m->release();
  }
}

int KepRDOMDocumentType::getNodeType() const { return KepDOMNode::DOCUMENT_TYPE_NODE; }

bool KepRDOMDocumentType::acceptsChild(KepRDOMNode const&, KepRDOMNode const*) const {
  return false;
}

KepRDOMNamedNodeMap* KepRDOMDocumentType::map(KepRDOMNamedNodeMap*& slot) const {
  if (slot == nullptr) {
    slot = new KepRDOMNamedNodeMap();
    slot->addRef();
    slot->setOwner(const_cast<KepRDOMDocumentType*>(this));
  }
  return slot;
}

KepString KepRDOMDocumentType::getName() const { return getNodeName(); }

KepDOMNamedNodeMap KepRDOMDocumentType::getEntities() const {
  return _KepDOMHandle<KepDOMNamedNodeMap>(map(entities));
}

KepDOMNamedNodeMap KepRDOMDocumentType::getNotations() const {
  return _KepDOMHandle<KepDOMNamedNodeMap>(map(notations));
}

void KepRDOMDocumentType::copyInto(KepRDOMNode& copy) const {
  KepRDOMParentNode::copyInto(copy);
  auto* target = dynamic_cast<KepRDOMDocumentType*>(&copy);
  if (target == nullptr) return;
  KepRDOMNamedNodeMap* const sources[] = {entities, notations};
  KepRDOMNamedNodeMap** const targets[] = {&target->entities, &target->notations};
  for (int m = 0; m < 2; ++m) {
    if (sources[m] == nullptr) continue;
    for (int i = 0; i < sources[m]->size(); ++i) {
      bool refused = false;
      target->map(*targets[m])->put(sources[m]->at(i), false, refused);
    }
  }
}
