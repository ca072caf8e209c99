#include "kep/xml/KepRDOMElement.h"

#include <cstring>

#include "kep/base/KepDate.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepRString.h"
#include "kep/base/KepStringBuffer.h"
#include "kep/base/KepStringTokenizer.h"
#include "kep/xml/KepDOMAttribute.h"
#include "kep/xml/KepDOMNamedNodeMap.h"
#include "kep/xml/KepDOMNodeList.h"
#include "kep/xml/KepDOMWriter.h"
#include "kep/xml/KepRDOMAttribute.h"
#include "kep/xml/KepRDOMAttributeList.h"
#include "kep/xml/KepRDOMNodeList.h"
#include "kep/xml/KepRDOMText.h"
#include "kep/xml/KepRDOMWriter.h"
#include "kep/xml/KepXPointer.h"

KEP_REGISTER_LIBRARY_CLASS(DOMElement);

namespace {

// Data type codes of the values.
enum : int {
  kTypeInt = 1,
  kTypeString = 2,
  kTypeDate = 3,
  kTypeObject = 4,
  kTypeBoolean = 5,
  kTypeI8 = 6,
  kTypeR4 = 7,
  kTypeFloat = 8
};

KepString const& emptyText() {
  static KepString const empty("");
  return empty;
}

KepRDOMElement* elementOf(KepObject const& handle) {
  KepRDOMNode* node = KepRDOMNode::of(handle);
  return node != nullptr ? node->asElement() : nullptr;
}

KepRDOMAttribute* attributeOf(KepObject const& handle) {
  KepRDOMNode* node = KepRDOMNode::of(handle);
  return node != nullptr && node->getNodeType() == KepDOMNode::ATTRIBUTE_NODE
             ? static_cast<KepRDOMAttribute*>(node)
             : nullptr;
}

// Whether the text starts, after white space, like a decimal number.
bool looksNumeric(KepString const& text) {
  KepRString const* body = KepRString::of(text);
  if (body == nullptr) return false;
  unsigned short const* units = body->units();
  int n = body->unitCount();
  int i = 0;
  while (i < n && (units[i] == ' ' || units[i] == '\t' || units[i] == '\r' || units[i] == '\n')) {
    ++i;
  }
  if (i < n && (units[i] == '+' || units[i] == '-')) ++i;
  return i < n && units[i] >= '0' && units[i] <= '9';
}

// Dates travel as elements whose value is their seconds, until the date body
// exists: a date handle made here is such an element, named "Date", and the
// seconds of a date handle are read back from its element value.
KepDate makeDate(uint32_t seconds) {
  auto* date = new KepRDOMElement();
  KepDate holder(static_cast<KepBridgeToObject*>(date));
  date->setNames(KepClassID::Date, 0, 0, 0);
  date->storeValue(_KepDOMValue::ofDate(seconds), kTypeDate);
  return holder;
}

_KepDOMValue dateValue(KepDate const& date) {
  KepRDOMElement* body = elementOf(date);
  uint32_t seconds = 0;
  return body != nullptr && body->dateSeconds(seconds) ? _KepDOMValue::ofDate(seconds)
                                                       : _KepDOMValue();
}

}  // namespace

KepRDOMElement::KepRDOMElement() noexcept
    : attributes(nullptr), dataType(0), preserveSpace(false), value(nullptr) {}

KepRDOMElement::~KepRDOMElement() {
  delete value;
  if (attributes != nullptr) {
    attributes->ownerGone();
    attributes->release();
  }
}

KepRDOMElement* KepRDOMElement::asElement() const noexcept {
  return const_cast<KepRDOMElement*>(this);
}

int KepRDOMElement::getNodeType() const { return KepDOMNode::ELEMENT_NODE; }

KepString KepRDOMElement::toString() const { return getString(); }

KepString KepRDOMElement::getTagName() const { return getNodeName(); }

int KepRDOMElement::getLocalNameID() const { return localID; }

void KepRDOMElement::childrenChanged() {
  delete value;
  value = nullptr;
}

void KepRDOMElement::adoptOne(_KepDOMDocAnchor* anchor) {
  KepRDOMParentNode::adoptOne(anchor);
  if (attributes == nullptr) return;
  for (int i = 0; i < attributes->size(); ++i) attributes->at(i)->adoptOne(anchor);
}

void KepRDOMElement::copyInto(KepRDOMNode& copy) const {
  KepRDOMParentNode::copyInto(copy);
  KepRDOMElement* target = copy.asElement();
  if (target == nullptr) return;
  target->dataType = dataType;
  if (value != nullptr) target->cache(*value);
  target->preserveSpace = preserveSpace;
  if (attributes == nullptr) return;
  for (int i = 0; i < attributes->size(); ++i) {
    KepObject attributeCopy = attributes->at(i)->shallowCopy();
    bool refused = false;
    target->attributeList()->put(of(attributeCopy), false, refused);
  }
}

// --- Attributes ----------------------------------------------------------------

KepRDOMAttributeList* KepRDOMElement::attributeList() {
  if (attributes == nullptr) adoptAttributeList(new KepRDOMAttributeList());
  return attributes;
}

void KepRDOMElement::adoptAttributeList(KepRDOMAttributeList* list) {
  list->addRef();
  list->setOwner(this);
  attributes = list;
}

KepRDOMAttribute* KepRDOMElement::findAttribute(int tag) const {
  if (attributes == nullptr) return nullptr;
  return static_cast<KepRDOMAttribute*>(attributes->at(attributes->find(tag)));
}

KepRDOMAttribute* KepRDOMElement::findAttributeNS(int uriTag, int localTag) const {
  if (attributes == nullptr) return nullptr;
  return static_cast<KepRDOMAttribute*>(attributes->at(attributes->findNS(uriTag, localTag)));
}

KepDOMNamedNodeMap KepRDOMElement::getAttributes() {
  return _KepDOMHandle<KepDOMNamedNodeMap>(attributeList());
}

unsigned long KepRDOMElement::hasAttributes() const {
  return attributes != nullptr && attributes->size() > 0 ? 1 : 0;
}

KepString KepRDOMElement::getAttribute(KepString const& name) const {
  KepRDOMAttribute* attribute = findAttribute(knownTagOf(name));
  return attribute != nullptr ? attribute->getValue() : emptyText();
}

KepDOMAttribute KepRDOMElement::getAttributeNode(KepString const& name) const {
  return _KepDOMHandle<KepDOMAttribute>(findAttribute(knownTagOf(name)));
}

KepString KepRDOMElement::getAttributeNS(KepString const& uri, KepString const& localName) const {
  KepDOMAttribute attribute = getAttributeNodeNS(uri, localName);
  return attribute.isNull() ? emptyText() : attribute.getValue();
}

KepDOMAttribute KepRDOMElement::getAttributeNodeNS(KepString const& uri,
                                                   KepString const& localName) const {
  if (attributes == nullptr) return KepDOMAttribute();
  return KepDOMAttribute(attributes->getNamedItemNS(uri, localName));
}

unsigned long KepRDOMElement::hasAttribute(KepString const& name) const {
  return findAttribute(knownTagOf(name)) != nullptr ? 1 : 0;
}

unsigned long KepRDOMElement::hasAttributeNS(KepString const& uri,
                                             KepString const& localName) const {
  return getAttributeNodeNS(uri, localName).isNull() ? 0 : 1;
}

void KepRDOMElement::setAttribute(KepString const& name, KepString const& text) {
  int tag = tagOf(name);
  if (tag == 0) {
    recordError(kInvalidCharacterErr, "setAttribute", "xml/KepRDOMElement", __LINE__);
    return;
  }
  if (KepRDOMAttribute* attribute = findAttribute(tag)) {
    attribute->setValue(text);
    return;
  }
  auto* attribute = new KepRDOMAttribute();
  KepDOMAttribute holder(static_cast<KepBridgeToObject*>(attribute));
  attribute->setNames(tag, 0, 0, 0);
  attribute->initValue(text);
  bool refused = false;
  attributeList()->put(attribute, false, refused);
}

void KepRDOMElement::setAttributeNS(KepString const& uri, KepString const& qualifiedName,
                                    KepString const& text) {
  int id = 0;
  int prefix = 0;
  int local = 0;
  int uriTag = 0;
  if (!qualifiedTags(uri, qualifiedName, id, prefix, local, uriTag)) {
    recordError(kNamespaceErr, "setAttributeNS", "xml/KepRDOMElement", __LINE__);
    return;
  }
  if (KepRDOMAttribute* attribute = findAttributeNS(uriTag, local)) {
    attribute->setNames(id, prefix, local, uriTag);
    attribute->setValue(text);
    return;
  }
  auto* attribute = new KepRDOMAttribute();
  KepDOMAttribute holder(static_cast<KepBridgeToObject*>(attribute));
  attribute->setNames(id, prefix, local, uriTag);
  attribute->initValue(text);
  bool refused = false;
  attributeList()->put(attribute, true, refused);
}

KepDOMAttribute KepRDOMElement::putAttributeNode(KepDOMAttribute const& newAttr, bool byNS,
                                                 char const* method) {
  KepRDOMAttribute* attribute = attributeOf(newAttr);
  if (attribute == nullptr) {
    recordError(kNotFoundErr, method, "xml/KepRDOMElement", __LINE__);
    return KepDOMAttribute();
  }
  bool refused = false;
  KepDOMAttribute replaced(attributeList()->put(attribute, byNS, refused));
  // The map refuses only an attribute that another element holds.
  if (refused) recordError(kInUseAttributeErr, method, "xml/KepRDOMElement", __LINE__);
  return replaced;
}

KepDOMAttribute KepRDOMElement::setAttributeNode(KepDOMAttribute const& newAttr) {
  return putAttributeNode(newAttr, false, "setAttributeNode");
}

KepDOMAttribute KepRDOMElement::setAttributeNodeNS(KepDOMAttribute const& newAttr) {
  return putAttributeNode(newAttr, true, "setAttributeNodeNS");
}

void KepRDOMElement::removeAttribute(KepString const& name) {
  if (attributes != nullptr) attributes->takeAt(attributes->find(knownTagOf(name)));
}

void KepRDOMElement::removeAttributeNS(KepString const& uri, KepString const& localName) {
  if (attributes != nullptr) attributes->removeNamedItemNS(uri, localName);
}

KepDOMAttribute KepRDOMElement::removeAttributeNode(KepDOMAttribute const& oldAttr) {
  KepRDOMAttribute* attribute = attributeOf(oldAttr);
  int index =
      attribute != nullptr && attributes != nullptr ? attributes->indexOfBody(attribute) : -1;
  if (index < 0) {
    recordError(kNotFoundErr, "removeAttributeNode", "xml/KepRDOMElement", __LINE__);
    return KepDOMAttribute();
  }
  return KepDOMAttribute(attributes->takeAt(index));
}

int KepRDOMElement::transferAttribs(KepDOMNode& to) {
  KepRDOMElement* target = elementOf(to);
  if (target == nullptr || target == this || attributes == nullptr) return 0;
  int moved = 0;
  while (attributes->size() > 0) {
    KepDOMNode attribute = attributes->takeAt(0);
    bool refused = false;
    target->attributeList()->put(of(attribute), false, refused);
    if (!refused) ++moved;
  }
  return moved;
}

// --- Elements below ----------------------------------------------------------------

void KepRDOMElement::buildElementsByTagName(KepRDOMNodeList& into, int tag, int depth) const {
  KepRDOMNode* node = firstBody();
  int level = 1;
  while (node != nullptr) {
    if (node->asElement() != nullptr && (tag == 0 || node->nodeTag() == tag)) into.add(node);
    KepRDOMParentNode* nodeAsParent = node->asParent();
    if (nodeAsParent != nullptr && nodeAsParent->firstBody() != nullptr &&
        (depth <= 0 || level < depth)) {
      node = nodeAsParent->firstBody();
      ++level;
      continue;
    }
    while (node != this && node->nextBody() == nullptr) {
      node = node->parentBody();
      --level;
    }
    node = node != this ? node->nextBody() : nullptr;
  }
}

void KepRDOMElement::buildElementsByID(KepRDOMNodeList& into, KepString const& id) const {
  int idTag = knownTagOf(KepString("id"));
  if (idTag == 0 || id.isNull()) return;
  for (KepRDOMNode const* node = this; node != nullptr; node = nextInSubtree(node, this)) {
    KepRDOMElement* element = node->asElement();
    KepRDOMAttribute* attribute = element != nullptr ? element->findAttribute(idTag) : nullptr;
    if (attribute != nullptr && attribute->getValue().equals(id)) into.add(element);
  }
}

KepDOMNodeList KepRDOMElement::getElementsByTagName(KepString const& name) const {
  return getElementsByTagName(name, 0);
}

KepDOMNodeList KepRDOMElement::getElementsByTagName(KepString const& name, int depth) const {
  auto* list = new KepRDOMNodeList();
  KepDOMNodeList holder(static_cast<KepBridgeToObject*>(list));
  static KepString const any("*");
  int tag = name.equals(any) ? 0 : knownTagOf(name);
  if (tag != 0 || name.equals(any)) buildElementsByTagName(*list, tag, depth);
  return holder;
}

void KepRDOMElement::normalize() {
  for (KepRDOMNode* node = this; node != nullptr; node = nextInSubtree(node, this)) {
    KepRDOMParentNode* parentNode = node->asParent();
    if (parentNode == nullptr) continue;
    KepRDOMNode* child = parentNode->firstBody();
    while (child != nullptr) {
      KepRDOMNode* following = child->nextBody();
      if (child->getNodeType() != KepDOMNode::TEXT_NODE) {
        child = following;
        continue;
      }
      auto* text = static_cast<KepRDOMCharacterData*>(child);
      if (following != nullptr && following->getNodeType() == KepDOMNode::TEXT_NODE) {
        KepStringBuffer joined(text->getData());
        while (following != nullptr && following->getNodeType() == KepDOMNode::TEXT_NODE) {
          joined.append(static_cast<KepRDOMCharacterData*>(following)->getData());
          KepRDOMNode* merged = following;
          following = following->nextBody();
          parentNode->removeNode(merged);
        }
        text->setData(joined.toString());
      }
      if (text->textLength() == 0) parentNode->removeNode(text);
      child = following;
    }
  }
}

// --- Named values ------------------------------------------------------------------

KepRDOMElement* KepRDOMElement::occurrence(int tag, int n) const {
  if (tag == 0 || n < 0) return nullptr;
  for (KepRDOMNode* child = firstBody(); child != nullptr; child = child->nextBody()) {
    KepRDOMElement* element = child->asElement();
    if (element != nullptr && element->nodeTag() == tag && n-- == 0) return element;
  }
  return nullptr;
}

KepRDOMElement* KepRDOMElement::appendNewElement(int tag) {
  if (tag == 0) return nullptr;
  auto* element = new KepRDOMElement();
  KepDOMElement holder(static_cast<KepBridgeToObject*>(element));
  element->setNames(tag, 0, 0, 0);
  element->adoptOne(childAnchor());
  return insertNode(element, nullptr) != nullptr ? element : nullptr;
}

void KepRDOMElement::cache(_KepDOMValue const& cached) {
  if (value != nullptr) {
    *value = cached;
  } else {
    value = new _KepDOMValue(cached);
  }
}

void KepRDOMElement::storeValue(_KepDOMValue const& stored, int type) {
  KepString text = stored.holdsObject() ? KepString() : stored.text();
  bool wantText = !text.isNull() && text.length() > 0;
  KepRDOMNode* only = firstBody();
  if (wantText && only != nullptr && only->nextBody() == nullptr &&
      only->getNodeType() == KepDOMNode::TEXT_NODE) {
    static_cast<KepRDOMCharacterData*>(only)->setData(text);
  } else {
    removeAll();
    if (wantText) {
      auto* node = new KepRDOMText();
      KepDOMText holder(static_cast<KepBridgeToObject*>(node));
      node->initData(text);
      node->adoptOne(childAnchor());
      insertNode(node, nullptr);
    }
  }
  // The cache goes in last: changing the children dropped the old one.
  cache(stored);
  dataType = type;
  noteChange(kValueChanged, this);
}

KepDOMElement KepRDOMElement::store(int tag, int n, _KepDOMValue const& stored, int type) {
  if (tag == 0 || n < 0) return KepDOMElement();
  KepRDOMElement* child = occurrence(tag, n);
  if (stored.holdsObject()) {
    // An object value that holds this element (or the child) would keep it alive
    // for ever.
    KepRDOMNode* object = of(stored.object());
    if (object != nullptr && (object->isAncestorOf(this) || object == child)) {
      return KepDOMElement();
    }
  }
  if (child == nullptr) {
    int present = 0;
    for (KepRDOMNode* c = firstBody(); c != nullptr; c = c->nextBody()) {
      if (c->asElement() != nullptr && c->nodeTag() == tag) ++present;
    }
    for (; present <= n; ++present) {
      child = appendNewElement(tag);
      if (child == nullptr) return KepDOMElement();
    }
  }
  child->storeValue(stored, type);
  return _KepDOMHandle<KepDOMElement>(child);
}

KepDOMElement KepRDOMElement::set(KepString const& name) { return set(tagOf(name)); }

KepDOMElement KepRDOMElement::set(int tag) {
  return _KepDOMHandle<KepDOMElement>(appendNewElement(tag));
}

KepDOMElement KepRDOMElement::set(KepDOMElement const& element) {
  KepRDOMElement* body = elementOf(element);
  if (body == nullptr) return KepDOMElement();
  KepRDOMElement* existing = occurrence(body->nodeTag(), 0);
  if (existing == body) return _KepDOMHandle<KepDOMElement>(body);
  bool done = existing != nullptr ? !replaceNode(body, existing).isNull()
                                  : insertNode(body, nullptr) != nullptr;
  return done ? _KepDOMHandle<KepDOMElement>(body) : KepDOMElement();
}

// The four forms of one setter: by name or tag, without or with an occurrence.
#define KEP_DEFINE_VALUE_SETTERS(N, T, MAKE, TYPE)                                    \
  KepDOMElement KepRDOMElement::N(KepString const& name, T v) {                       \
    return store(tagOf(name), 0, MAKE, TYPE);                                         \
  }                                                                                   \
  KepDOMElement KepRDOMElement::N(KepString const& name, T v, int n) {                \
    return store(tagOf(name), n, MAKE, TYPE);                                         \
  }                                                                                   \
  KepDOMElement KepRDOMElement::N(int tag, T v) { return store(tag, 0, MAKE, TYPE); } \
  KepDOMElement KepRDOMElement::N(int tag, T v, int n) { return store(tag, n, MAKE, TYPE); }

KEP_DEFINE_VALUE_SETTERS(set, int, _KepDOMValue::ofInt(v), kTypeInt)
KEP_DEFINE_VALUE_SETTERS(setBool, unsigned long, _KepDOMValue::ofBool(v), kTypeBoolean)
KEP_DEFINE_VALUE_SETTERS(set, long, _KepDOMValue::ofLong(v), kTypeI8)
KEP_DEFINE_VALUE_SETTERS(set, float, _KepDOMValue::ofFloat(v), kTypeR4)
KEP_DEFINE_VALUE_SETTERS(set, long double, _KepDOMValue::ofLongDouble(v), kTypeFloat)
KEP_DEFINE_VALUE_SETTERS(set, KepString const&, _KepDOMValue::ofText(v), kTypeString)
KEP_DEFINE_VALUE_SETTERS(set, KepDate const&, dateValue(v), kTypeDate)
KEP_DEFINE_VALUE_SETTERS(set, KepDOMNode const&,
                         v.isNull() ? _KepDOMValue() : _KepDOMValue::ofObject(v), kTypeObject)

#undef KEP_DEFINE_VALUE_SETTERS

KepDOMElement KepRDOMElement::get(KepString const& name) const { return get(knownTagOf(name), 0); }

KepDOMElement KepRDOMElement::get(int tag) const { return get(tag, 0); }

KepDOMElement KepRDOMElement::get(KepString const& name, int n) const {
  return get(knownTagOf(name), n);
}

KepDOMElement KepRDOMElement::get(int tag, int n) const {
  return _KepDOMHandle<KepDOMElement>(occurrence(tag, n));
}

KepDOMElement KepRDOMElement::getNext() const {
  int tag = nodeTag();
  for (KepRDOMNode* sibling = nextBody(); sibling != nullptr; sibling = sibling->nextBody()) {
    KepRDOMElement* element = sibling->asElement();
    if (element != nullptr && element->nodeTag() == tag) {
      return _KepDOMHandle<KepDOMElement>(element);
    }
  }
  return KepDOMElement();
}

KepDOMElement KepRDOMElement::find(KepXPointer const& path, unsigned long create) const {
  auto* at = const_cast<KepRDOMElement*>(this);
  if (path.isNull()) return _KepDOMHandle<KepDOMElement>(at);
  KepStringTokenizer steps(path, KepString("."));
  while (steps.hasMoreTokens()) {
    KepString step = steps.nextToken();
    KepRDOMElement* below = at->occurrence(knownTagOf(step), 0);
    if (below == nullptr && create != 0) below = at->appendNewElement(tagOf(step));
    if (below == nullptr) return KepDOMElement();
    at = below;
  }
  return _KepDOMHandle<KepDOMElement>(at);
}

// --- This element's value ----------------------------------------------------------

int KepRDOMElement::getDataType() const { return dataType; }

void KepRDOMElement::setDataType(int type) { dataType = type; }

KepString KepRDOMElement::dataTypeName(int type) {
  static char const* const names[] = {"int",     "string", "date", "object",
                                      "boolean", "i8",     "r4",   "float"};
  return type >= kTypeInt && type <= kTypeFloat ? KepString(names[type - 1]) : KepString();
}

KepString KepRDOMElement::_getDataTypeStr(int type) const { return dataTypeName(type); }

unsigned long KepRDOMElement::serializeAsXML(KepDOMWriter& writer) {
  // A plain element says its data type by name, so that a reader can restore
  // it; an element of another class is written with its class name instead.
  // The writer asks once at the transform state whether the element takes
  // part, and the type goes out just before the children, after the element's
  // own attributes. The writer's own output for each state is never replaced.
  if (dataType < kTypeInt || dataType > kTypeFloat || getClassID() != KepClassID::DOMElement) {
    return 0;
  }
  int state = writer.getState();
  if (state != KepDOMWriter::ELEMENT_TRANSFORM && state != KepDOMWriter::ELEMENT_BEFORE_CHILDREN) {
    return 0;
  }
  static KepString const dtName("dt");
  KepString type = _getDataTypeStr(dataType);
  if (type.isNull() || findAttribute(knownTagOf(dtName)) != nullptr) return 0;
  if (state == KepDOMWriter::ELEMENT_TRANSFORM) return 1;
  // Like the writer's own dt and xs, the type passes the writer's attribute
  // filter first: a view, or a derived writer, may leave it out.
  KepRObject* writerBody = writer.getRealKepObj();
  if (writerBody != nullptr && writerBody->isOfType(KepClassID::DOMWriter)) {
    KepDOMElement self = _KepDOMHandle<KepDOMElement>(this);
    KepDOMAttribute none;
    KepString name = dtName;
    if (!static_cast<KepRDOMWriter*>(writerBody)->_shouldPrintAttribute(self, none, name, type)) {
      return 0;
    }
  }
  writer.write(KepString(" dt=\""));
  writer.write(type);
  writer.write(KepString("\""));
  return 0;
}

void KepRDOMElement::registerKnownInterest() {}

void KepRDOMElement::setPreserveSpace(unsigned long preserve) { preserveSpace = preserve != 0; }

void KepRDOMElement::setString(KepString const& text) {
  storeValue(_KepDOMValue::ofText(text), kTypeString);
}

KepString KepRDOMElement::childText() const {
  KepRDOMNode* first = firstBody();
  while (first != nullptr && first->getNodeType() != KepDOMNode::TEXT_NODE) {
    first = first->nextBody();
  }
  if (first == nullptr) return emptyText();
  KepString firstText = static_cast<KepRDOMCharacterData*>(first)->getData();
  KepRDOMNode* more = first->nextBody();
  while (more != nullptr && more->getNodeType() != KepDOMNode::TEXT_NODE) more = more->nextBody();
  if (more == nullptr) return firstText;
  KepStringBuffer joined(firstText);
  for (; more != nullptr; more = more->nextBody()) {
    if (more->getNodeType() == KepDOMNode::TEXT_NODE) {
      joined.append(static_cast<KepRDOMCharacterData*>(more)->getData());
    }
  }
  return joined.toString();
}

KepString KepRDOMElement::getString() const {
  _KepDOMValue const& v = cachedValue();
  return v.empty() ? childText() : v.text();
}

KepString KepRDOMElement::getString(KepString const& name) const {
  return getString(knownTagOf(name));
}

KepString KepRDOMElement::getString(int tag) const {
  KepRDOMElement* child = occurrence(tag, 0);
  return child != nullptr ? child->getString() : KepString();
}

long KepRDOMElement::getLong() const {
  _KepDOMValue const& v = cachedValue();
  return v.empty() ? _KepDOMValue::parseLong(childText()) : v.toLong();
}

int KepRDOMElement::getInteger() const {
  return static_cast<int>(static_cast<uint32_t>(static_cast<unsigned long>(getLong())));
}

unsigned long KepRDOMElement::getBool() const {
  _KepDOMValue const& v = cachedValue();
  return v.empty() ? _KepDOMValue::parseBool(childText()) : v.toBool();
}

long double KepRDOMElement::getDouble() const {
  _KepDOMValue const& v = cachedValue();
  return v.empty() ? _KepDOMValue::parseLongDouble(childText()) : v.toLongDouble();
}

float KepRDOMElement::getFloat() const { return static_cast<float>(getDouble()); }

bool KepRDOMElement::dateSeconds(uint32_t& seconds) const {
  switch (cachedValue().kind()) {
    case _KepDOMValue::kNone:
    case _KepDOMValue::kText:
    case _KepDOMValue::kObject:
    case _KepDOMValue::kObjectText:
      if (!looksNumeric(getString())) return false;
      break;
    default:
      break;
  }
  seconds = static_cast<uint32_t>(static_cast<unsigned long>(getLong()));
  return true;
}

KepDate KepRDOMElement::getDate() const {
  uint32_t seconds = 0;
  return dateSeconds(seconds) ? makeDate(seconds) : KepDate();
}

KepObject KepRDOMElement::getKepObject() const {
  _KepDOMValue const& v = cachedValue();
  return v.holdsObject() ? v.object() : KepObject();
}

KepObject KepRDOMElement::toKepObject() {
  _KepDOMValue const& v = cachedValue();
  if (v.holdsObject()) return v.object();
  if (v.empty() && getFirstChild(KepDOMNode::TEXT_NODE).isNull()) return KepObject();
  cache(_KepDOMValue::ofObject(getString(), _KepDOMValue::kObjectText));
  return value->object();
}
