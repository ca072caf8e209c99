#include "kep/xml/KepRDOMDocument.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/xml/KepDOMAttribute.h"
#include "kep/xml/KepDOMCDATASection.h"
#include "kep/xml/KepDOMComment.h"
#include "kep/xml/KepDOMDocumentType.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepDOMEntityReference.h"
#include "kep/xml/KepDOMImplementation.h"
#include "kep/xml/KepDOMNodeList.h"
#include "kep/xml/KepDOMProcessingInstruction.h"
#include "kep/xml/KepDOMText.h"
#include "kep/xml/KepRDOMAttribute.h"
#include "kep/xml/KepRDOMAttributeList.h"
#include "kep/xml/KepRDOMCDATASection.h"
#include "kep/xml/KepRDOMComment.h"
#include "kep/xml/KepRDOMElement.h"
#include "kep/xml/KepRDOMEntityReference.h"
#include "kep/xml/KepRDOMImplementation.h"
#include "kep/xml/KepRDOMNodeList.h"
#include "kep/xml/KepRDOMProcessingInstruction.h"
#include "kep/xml/KepRDOMText.h"
#include "kep/xml/_KepDOMDocAnchor.h"

KEP_REGISTER_LIBRARY_CLASS(DOMDocument);

KepRDOMDocument::KepRDOMDocument() : self(new _KepDOMDocAnchor(this)) {}

KepRDOMDocument::~KepRDOMDocument() {
  // Before the children go: they (and the nodes that outlive this document)
  // must not reach it any more.
  self->clear();
  self->release();
}

int KepRDOMDocument::getNodeType() const { return KepDOMNode::DOCUMENT_NODE; }

int KepRDOMDocument::defaultNodeID() const { return KepNameToTag("#document"); }

KepRDOMDocument* KepRDOMDocument::getOwnerRDocument() const { return nullptr; }

_KepDOMDocAnchor* KepRDOMDocument::childAnchor() const noexcept { return self; }

void KepRDOMDocument::adoptOne(_KepDOMDocAnchor*) {}

// --- Children --------------------------------------------------------------------

KepRDOMNode* KepRDOMDocument::childOfType(int type) const {
  KepRDOMNode* child = firstBody();
  while (child != nullptr && child->getNodeType() != type) child = child->nextBody();
  return child;
}

bool KepRDOMDocument::acceptsChild(KepRDOMNode const& child, KepRDOMNode const* replacing) const {
  int type = child.getNodeType();
  switch (type) {
    case KepDOMNode::ELEMENT_NODE:
    case KepDOMNode::DOCUMENT_TYPE_NODE: {
      // At most one of each: the one there may only be replaced, or moved.
      KepRDOMNode* present = childOfType(type);
      return present == nullptr || present == replacing || present == &child;
    }
    case KepDOMNode::COMMENT_NODE:
    case KepDOMNode::PROCESSING_INSTRUCTION_NODE:
      return true;
    default:
      return false;
  }
}

bool KepRDOMDocument::acceptsFragment(KepRDOMParentNode const& fragment,
                                      KepRDOMNode const* replacing) const {
  int elements = 0;
  int types = 0;
  for (KepRDOMNode* c = fragment.firstBody(); c != nullptr; c = c->nextBody()) {
    if (!mayInsert(*c, replacing)) return false;
    elements += c->getNodeType() == KepDOMNode::ELEMENT_NODE;
    types += c->getNodeType() == KepDOMNode::DOCUMENT_TYPE_NODE;
  }
  return elements <= 1 && types <= 1;
}

KepDOMElement KepRDOMDocument::getDocumentElement() const {
  return _KepDOMHandle<KepDOMElement>(childOfType(KepDOMNode::ELEMENT_NODE));
}

KepDOMDocumentType KepRDOMDocument::getDoctype() const {
  return _KepDOMHandle<KepDOMDocumentType>(childOfType(KepDOMNode::DOCUMENT_TYPE_NODE));
}

KepDOMImplementation KepRDOMDocument::getImplementation() const {
  return KepDOMImplementation(static_cast<KepBridgeToObject*>(new KepRDOMImplementation()));
}

// --- Making nodes ----------------------------------------------------------------

template <class H, class B>
H KepRDOMDocument::made(B* body) const {
  H holder(static_cast<KepBridgeToObject*>(body));
  body->adoptOne(self);
  return holder;
}

KepDOMElement KepRDOMDocument::createElement(KepString const& name) {
  return createElement(tagOf(name));
}

KepDOMElement KepRDOMDocument::createElement(int tag) {
  if (tag == 0) {
    recordError(kInvalidCharacterErr, "createElement", "xml/KepRDOMDocument", __LINE__);
    return KepDOMElement();
  }
  auto* element = new KepRDOMElement();
  element->setNames(tag, 0, 0, 0);
  return made<KepDOMElement>(element);
}

template <class H, class B>
H KepRDOMDocument::madeNS(KepString const& uri, KepString const& qualifiedName,
                          char const* method) const {
  int id = 0;
  int prefix = 0;
  int local = 0;
  int uriTag = 0;
  if (!qualifiedTags(uri, qualifiedName, id, prefix, local, uriTag)) {
    recordError(kNamespaceErr, method, "xml/KepRDOMDocument", __LINE__);
    return H();
  }
  auto* body = new B();
  body->setNames(id, prefix, local, uriTag);
  return made<H>(body);
}

KepDOMElement KepRDOMDocument::createElementNS(KepString const& uri,
                                               KepString const& qualifiedName) {
  return madeNS<KepDOMElement, KepRDOMElement>(uri, qualifiedName, "createElementNS");
}

KepDOMDocumentFragment KepRDOMDocument::createDocumentFragment() {
  return made<KepDOMDocumentFragment>(new KepRDOMDocumentFragment());
}

KepDOMText KepRDOMDocument::createTextNode(KepString const& data) {
  auto* text = new KepRDOMText();
  text->initData(data);
  return made<KepDOMText>(text);
}

KepDOMComment KepRDOMDocument::createComment(KepString const& data) {
  auto* comment = new KepRDOMComment();
  comment->initData(data);
  return made<KepDOMComment>(comment);
}

KepDOMCDATASection KepRDOMDocument::createCDATASection(KepString const& data) {
  auto* section = new KepRDOMCDATASection();
  section->initData(data);
  return made<KepDOMCDATASection>(section);
}

KepDOMProcessingInstruction KepRDOMDocument::createProcessingInstruction(KepString const& target,
                                                                         KepString const& data) {
  int tag = tagOf(target);
  if (tag == 0) {
    recordError(kInvalidCharacterErr, "createProcessingInstruction", "xml/KepRDOMDocument",
                __LINE__);
    return KepDOMProcessingInstruction();
  }
  auto* instruction = new KepRDOMProcessingInstruction();
  instruction->setNames(tag, 0, 0, 0);
  instruction->initData(data);
  return made<KepDOMProcessingInstruction>(instruction);
}

KepDOMAttribute KepRDOMDocument::createAttribute(KepString const& name) {
  int tag = tagOf(name);
  if (tag == 0) {
    recordError(kInvalidCharacterErr, "createAttribute", "xml/KepRDOMDocument", __LINE__);
    return KepDOMAttribute();
  }
  auto* attribute = new KepRDOMAttribute();
  attribute->setNames(tag, 0, 0, 0);
  return made<KepDOMAttribute>(attribute);
}

KepDOMAttribute KepRDOMDocument::createAttributeNS(KepString const& uri,
                                                   KepString const& qualifiedName) {
  return madeNS<KepDOMAttribute, KepRDOMAttribute>(uri, qualifiedName, "createAttributeNS");
}

KepDOMEntityReference KepRDOMDocument::createEntityReference(KepString const& name) {
  int tag = tagOf(name);
  if (tag == 0) {
    recordError(kInvalidCharacterErr, "createEntityReference", "xml/KepRDOMDocument", __LINE__);
    return KepDOMEntityReference();
  }
  auto* reference = new KepRDOMEntityReference();
  reference->setNames(tag, 0, 0, 0);
  return made<KepDOMEntityReference>(reference);
}

// --- Finding -----------------------------------------------------------------------

KepDOMNodeList KepRDOMDocument::getElementsByTagName(KepString const& name) const {
  KepRDOMNode* root = childOfType(KepDOMNode::ELEMENT_NODE);
  auto* list = new KepRDOMNodeList();
  KepDOMNodeList holder(static_cast<KepBridgeToObject*>(list));
  static KepString const any("*");
  bool all = name.equals(any) != 0;
  int tag = all ? 0 : knownTagOf(name);
  if (root == nullptr || (tag == 0 && !all)) return holder;
  if (all || root->nodeTag() == tag) list->add(root);
  root->asElement()->buildElementsByTagName(*list, tag, 0);
  return holder;
}

KepDOMNodeList KepRDOMDocument::getElementsByTagNameNS(KepString const& uri,
                                                       KepString const& localName) const {
  static KepString const any("*");
  bool anyUri = uri.equals(any) != 0;
  bool anyName = localName.equals(any) != 0;
  bool hasUri = !uri.isNull() && uri.length() > 0;
  int uriTag = anyUri || !hasUri ? 0 : knownTagOf(uri);
  int localTag = anyName ? 0 : knownTagOf(localName);
  auto* list = new KepRDOMNodeList();
  KepDOMNodeList holder(static_cast<KepBridgeToObject*>(list));
  if ((!anyUri && hasUri && uriTag == 0) || (!anyName && localTag == 0)) return holder;
  for (KepRDOMNode* node = firstBody(); node != nullptr; node = nextInSubtree(node, this)) {
    if (node->asElement() == nullptr) continue;
    if ((anyUri || node->uriTag() == uriTag) && (anyName || node->localOrNodeTag() == localTag)) {
      list->add(node);
    }
  }
  return holder;
}

KepDOMElement KepRDOMDocument::getElementById(KepString const& id) const {
  KepRDOMNode* root = childOfType(KepDOMNode::ELEMENT_NODE);
  if (root == nullptr) return KepDOMElement();
  auto* found = new KepRDOMNodeList();
  KepDOMNodeList holder(static_cast<KepBridgeToObject*>(found));
  root->asElement()->buildElementsByID(*found, id);
  return _KepDOMHandle<KepDOMElement>(found->at(0));
}

// --- Moving nodes between documents --------------------------------------------------

KepDOMNode KepRDOMDocument::importNode(KepDOMNode const& node, unsigned long deep) {
  KepRDOMNode* source = of(node);
  if (source == nullptr) return KepDOMNode();
  int type = source->getNodeType();
  if (type == KepDOMNode::DOCUMENT_NODE || type == KepDOMNode::DOCUMENT_TYPE_NODE) {
    recordError(kNotSupportedErr, "importNode", "xml/KepRDOMDocument", __LINE__);
    return KepDOMNode();
  }
  KepDOMNode copy = source->cloneNode(deep);
  KepRDOMNode* body = of(copy);
  if (body != nullptr) body->adoptSubtree(self);
  return copy;
}

KepDOMNode KepRDOMDocument::adoptNode(KepDOMNode const& node) {
  KepRDOMNode* body = of(node);
  if (body == nullptr) return KepDOMNode();
  int type = body->getNodeType();
  if (type == KepDOMNode::DOCUMENT_NODE || type == KepDOMNode::DOCUMENT_TYPE_NODE) {
    recordError(kNotSupportedErr, "adoptNode", "xml/KepRDOMDocument", __LINE__);
    return KepDOMNode();
  }
  KepDOMNode held = _KepDOMHandle<KepDOMNode>(body);
  if (type == KepDOMNode::ATTRIBUTE_NODE) {
    static_cast<KepRDOMAttribute*>(body)->remove();
  } else if (KepRDOMNode* above = body->parentBody()) {
    above->asParent()->removeNode(body);
  }
  body->adoptSubtree(self);
  return held;
}
