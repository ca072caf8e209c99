#include "kep/xml/_KepXMLParserData.h"

#include <expat.h>

#include <cstring>
#include <new>

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepRString.h"
#include "kep/xml/KepRDOMAttribute.h"
#include "kep/xml/KepRDOMAttributeList.h"
#include "kep/xml/KepRDOMCDATASection.h"
#include "kep/xml/KepRDOMDocument.h"
#include "kep/xml/KepRDOMElement.h"
#include "kep/xml/KepRDOMText.h"
#include "kep/xml/KepRXMLParser.h"

namespace {

char const kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
char const kXmlnsNamespace[] = "http://www.w3.org/2000/xmlns/";

KepString widened(char const* bytes, size_t n) {
  return KepString(static_cast<KepBridgeToObject*>(KepRString::createFromBytes(
      reinterpret_cast<unsigned char const*>(bytes), static_cast<int>(n))));
}

KepString widened(char const* text) { return widened(text, std::strlen(text)); }

// A hash of `n` bytes, eight at a time.
uint64_t hashBytes(char const* p, size_t n) {
  uint64_t h = 0x9e3779b97f4a7c15ull ^ n;
  for (; n >= 8; p += 8, n -= 8) {
    uint64_t word;
    std::memcpy(&word, p, sizeof word);
    h = (h ^ word) * 0xff51afd7ed558ccdull;
    h ^= h >> 32;
  }
  uint64_t tail = 0;
  std::memcpy(&tail, p, n);
  h = (h ^ tail) * 0xc4ceb9fe1a85ec53ull;
  return h ^ (h >> 29);
}

int tagOfBytes(std::string const& name) { return name.empty() ? 0 : KepNameToTag(name.c_str()); }

// The data type code named by `name` ("int" 1 ... "float" 8), or 0.
int dataTypeNamed(char const* name) {
  static char const* const names[] = {"int",     "string", "date", "object",
                                      "boolean", "i8",     "r4",   "float"};
  for (int i = 0; i < 8; ++i) {
    if (std::strcmp(name, names[i]) == 0) return i + 1;
  }
  return 0;
}

_KepXMLParserData* dataOf(void* user) { return static_cast<_KepXMLParserData*>(user); }

// The tokenizer is C code: nothing may unwind through it. A callback that runs
// out of memory stops the parse instead, and the callbacks the tokenizer may
// still deliver after that find the state half-updated and do nothing.
template <class F>
void guarded(void* user, F work) {
  _KepXMLParserData* data = dataOf(user);
  if (data->failed()) return;
  try {
    work(data);
  } catch (...) {
    data->stop();
  }
}

void XMLCALL onStartElement(void* user, XML_Char const* name, XML_Char const** attributes) {
  guarded(user, [&](_KepXMLParserData* d) { d->startElement(name, attributes); });
}

void XMLCALL onEndElement(void* user, XML_Char const*) {
  guarded(user, [](_KepXMLParserData* d) { d->endElement(); });
}

void XMLCALL onCharacters(void* user, XML_Char const* text, int length) {
  guarded(user, [&](_KepXMLParserData* d) { d->characters(text, length); });
}

void XMLCALL onStartNamespace(void* user, XML_Char const* prefix, XML_Char const* uri) {
  guarded(user, [&](_KepXMLParserData* d) { d->startNamespace(prefix, uri); });
}

// Declarations leave scope with the element that made them (endElement).
void XMLCALL onEndNamespace(void*, XML_Char const*) {}

void XMLCALL onProcessingInstruction(void* user, XML_Char const*, XML_Char const*) {
  guarded(user, [](_KepXMLParserData* d) { d->flushOnly(); });
}

void XMLCALL onComment(void* user, XML_Char const*) {
  guarded(user, [](_KepXMLParserData* d) { d->flushOnly(); });
}

void XMLCALL onNotation(void* user, XML_Char const*, XML_Char const*, XML_Char const*,
                        XML_Char const*) {
  guarded(user, [](_KepXMLParserData* d) { d->flushOnly(); });
}

// Markup nobody else takes (and references to entities declared in the
// document, which are therefore not expanded) goes here and builds nothing.
void XMLCALL onDefault(void*, XML_Char const*, int) {}

// External entities are never loaded: the reference is accepted and skipped.
int XMLCALL onExternalEntity(XML_Parser, XML_Char const*, XML_Char const*, XML_Char const*,
                             XML_Char const*) {
  return XML_STATUS_OK;
}

void XMLCALL onStartCData(void* user) {
  guarded(user, [](_KepXMLParserData* d) { d->startCData(); });
}

void XMLCALL onEndCData(void* user) {
  guarded(user, [](_KepXMLParserData* d) { d->endCData(); });
}

}  // namespace

_KepXMLParserData::_KepXMLParserData(KepRDOMDocument* doc, KepXPointer const& xpointer,
                                     int parserMode, KepXMLParserEventHandler* eventHandler,
                                     KepXMLParser const& parser)
    : anchor(doc->anchor()), parserHandle(parser), mode(parserMode), handler(eventHandler) {
  doc->addRef();
  parents.push_back(doc);
  if (KepRString const* s = KepRString::of(xpointer)) {
    target.assign(s->units(), s->units() + s->unitCount());
  }
  // The prefix "xml" is bound without a declaration.
  bindings.push_back(Binding{"xml", kXmlNamespace});
  slots.resize(256);
}

_KepXMLParserData::~_KepXMLParserData() {
  for (KepRDOMParentNode* parent : parents) parent->release();
  for (ShortSlot& slot : shortTexts) {
    if (slot.text != nullptr) slot.text->release();
  }
}

void _KepXMLParserData::install(void* p) {
  auto parser = static_cast<XML_Parser>(p);
  tokenizer = p;
  XML_SetUserData(parser, this);
  XML_SetReturnNSTriplet(parser, 1);
  XML_SetStartNamespaceDeclHandler(parser, onStartNamespace);
  XML_SetEndNamespaceDeclHandler(parser, onEndNamespace);
  XML_SetElementHandler(parser, onStartElement, onEndElement);
  XML_SetCharacterDataHandler(parser, onCharacters);
  XML_SetProcessingInstructionHandler(parser, onProcessingInstruction);
  XML_SetDefaultHandler(parser, onDefault);
  XML_SetNotationDeclHandler(parser, onNotation);
  XML_SetExternalEntityRefHandler(parser, onExternalEntity);
  XML_SetCdataSectionHandler(parser, onStartCData, onEndCData);
  XML_SetCommentHandler(parser, onComment);
}

void _KepXMLParserData::stop() {
  failure = true;
  if (tokenizer != nullptr) XML_StopParser(static_cast<XML_Parser>(tokenizer), XML_FALSE);
}

// --- Names -----------------------------------------------------------------------

std::string const* _KepXMLParserData::lookupPrefix(char const* prefix, size_t length) const {
  for (auto it = bindings.rbegin(); it != bindings.rend(); ++it) {
    if (it->prefix.size() == length && std::memcmp(it->prefix.data(), prefix, length) == 0) {
      return &it->uri;
    }
  }
  return nullptr;
}

_KepXMLParserData::Names _KepXMLParserData::makeNames(std::string const& prefix,
                                                      std::string const& local,
                                                      std::string const& uri) {
  Names n;
  if (uri.empty()) {
    n.id = tagOfBytes(local);
    return n;
  }
  n.local = tagOfBytes(local);
  n.uri = tagOfBytes(uri);
  if (prefix.empty()) {
    n.id = n.local;
  } else {
    n.prefix = tagOfBytes(prefix);
    n.id = tagOfBytes(prefix + ":" + local);
  }
  return n;
}

_KepXMLParserData::Names const& _KepXMLParserData::resolve(char const* raw) {
  size_t length = std::strlen(raw);
  char const* colon = nullptr;
  for (size_t i = length; i > 0 && colon == nullptr; --i) {
    if (raw[i - 1] == ':') colon = raw + i - 1;
  }
  // With a URI part the name is "uri:local" or "uri:local:prefix". The last
  // part is a prefix when that prefix is bound to a URI that the name starts
  // with, followed by a local name without colons.
  size_t uriLength = 0;
  bool prefixed = false;
  if (colon != nullptr) {
    size_t restLength = static_cast<size_t>(colon - raw);
    std::string const* uri = lookupPrefix(colon + 1, length - restLength - 1);
    if (uri != nullptr && !uri->empty() && restLength > uri->size() + 1 &&
        std::memcmp(raw, uri->data(), uri->size()) == 0 && raw[uri->size()] == ':' &&
        std::memchr(raw + uri->size() + 1, ':', restLength - uri->size() - 1) == nullptr) {
      prefixed = true;
      uriLength = uri->size();
    } else {
      uriLength = restLength;
    }
  }
  // The key is the name's bytes and one byte for the decision taken.
  char const decision = prefixed ? '\1' : '\0';
  uint64_t h = hashBytes(raw, length) + static_cast<uint64_t>(decision);
  size_t mask = slots.size() - 1;
  size_t i = static_cast<size_t>(h) & mask;
  for (; slots[i].used; i = (i + 1) & mask) {
    Slot const& s = slots[i];
    if (s.hash == h && s.length == length + 1 &&
        std::memcmp(nameBytes.data() + s.offset, raw, length) == 0 &&
        nameBytes[s.offset + length] == decision) {
      return s.names;
    }
  }
  Names names;
  if (colon == nullptr) {
    names = makeNames(std::string(), std::string(raw, length), std::string());
  } else if (prefixed) {
    size_t restLength = static_cast<size_t>(colon - raw);
    names = makeNames(std::string(colon + 1),
                      std::string(raw + uriLength + 1, restLength - uriLength - 1),
                      std::string(raw, uriLength));
  } else {
    names = makeNames(std::string(), std::string(colon + 1), std::string(raw, uriLength));
  }
  if ((slotsUsed + 1) * 2 > slots.size()) {
    // Grow and rehash, then place the new name.
    std::vector<Slot> old(slots.size() * 2);
    old.swap(slots);
    mask = slots.size() - 1;
    for (Slot const& s : old) {
      if (!s.used) continue;
      size_t j = static_cast<size_t>(s.hash) & mask;
      while (slots[j].used) j = (j + 1) & mask;
      slots[j] = s;
    }
    i = static_cast<size_t>(h) & mask;
    while (slots[i].used) i = (i + 1) & mask;
  }
  Slot& s = slots[i];
  s.used = true;
  s.hash = h;
  s.offset = static_cast<uint32_t>(nameBytes.size());
  s.length = static_cast<uint32_t>(length + 1);
  s.names = names;
  nameBytes.append(raw, length);
  nameBytes.push_back(decision);
  ++slotsUsed;
  return s.names;
}

KepRObject* _KepXMLParserData::textBody(char const* bytes, size_t length) {
  auto make = [&]() -> KepRObject* {
    return KepRString::createFromBytes(reinterpret_cast<unsigned char const*>(bytes),
                                       static_cast<int>(length));
  };
  if (length > kShortText) {
    KepRObject* body = make();
    if (body != nullptr) body->addRef();
    return body;
  }
  if (shortTexts.empty()) shortTexts.resize(kShortSlots);
  ShortSlot& slot = shortTexts[hashBytes(bytes, length) & (kShortSlots - 1)];
  if (slot.text == nullptr || slot.length != length ||
      std::memcmp(slot.bytes, bytes, length) != 0) {
    KepRObject* body = make();
    if (body == nullptr) return nullptr;
    body->addRef();
    if (slot.text != nullptr) slot.text->release();
    slot.text = body;
    slot.length = static_cast<uint8_t>(length);
    std::memcpy(slot.bytes, bytes, length);
  }
  slot.text->addRef();
  return slot.text;
}

// --- Elements ----------------------------------------------------------------------

void _KepXMLParserData::startNamespace(char const* prefix, char const* uri) {
  bindings.push_back(Binding{prefix != nullptr ? prefix : "", uri != nullptr ? uri : ""});
  ++pendingDeclarations;
}

void _KepXMLParserData::enterPath(char const* name) {
  pathLengths.push_back(path.size());
  if (!path.empty()) path.push_back('.');
  Names const& names = resolve(name);
  // The path is made of the names the elements get, prefixes included.
  KepString qualified = KepRDOMNode::nameOf(names.id);
  if (KepRString const* s = KepRString::of(qualified)) {
    path.insert(path.end(), s->units(), s->units() + s->unitCount());
  }
  if (path == target) {
    reached = true;
    matchDepth = depth;
  }
}

KepRDOMElement* _KepXMLParserData::makeElement(char const** attributes, KepObject& holder,
                                               Hold& hold) {
  int dataType = 0;
  if ((mode & KepRXMLParser::kStandardDOM) == 0) {
    for (char const** a = attributes; a[0] != nullptr; a += 2) {
      bool dt = std::strcmp(a[0], "dt") == 0;
      if (!dt && std::strcmp(a[0], "ElementId") != 0) continue;
      holder = KepGetObject(widened(a[1]), 0);
      KepRObject* body = holder.getRealKepObj();
      KepRDOMElement* element = nullptr;
      if (body != nullptr && body->isOfType(KepClassID::DOMElement)) {
        element = static_cast<KepRDOMNode*>(body)->asElement();
      }
      if (element != nullptr) return element;
      holder = KepObject();
      if (dt && dataType == 0) dataType = dataTypeNamed(a[1]);
    }
  }
  auto* element = new KepRDOMElement();
  hold.reset(element);
  // A plain element written with its value's type ("int", "string" ...) gets
  // that type back; a string value keeps even a lone line break or tab.
  if (dataType != 0) element->setDataType(dataType);
  constexpr int kStringType = 2;
  if (dataType == kStringType) element->setPreserveSpace(1);
  return element;
}

namespace {

// The prefix part of a name as the tokenizer delivers it, when the name was
// taken for a prefixed one: the part after the last colon.
char const* prefixOf(char const* raw, bool prefixed) {
  if (!prefixed) return "";
  char const* colon = std::strrchr(raw, ':');
  return colon != nullptr ? colon + 1 : "";
}

}  // namespace

void _KepXMLParserData::setAttributes(KepRDOMElement* element, char const* name,
                                      char const** attributes) {
  // The declarations go where the DOM writer puts them, so that what it wrote
  // reads back into the same attribute order: the one binding the element's
  // own prefix first, each one binding an attribute's prefix right after that
  // attribute, the others last.
  size_t firstDeclaration = bindings.size() - static_cast<size_t>(declarationsPerLevel.back());
  size_t declarations = bindings.size() - firstDeclaration;
  // The tokenizer lets no two attributes of one element have the same name, or
  // the same URI and local name, and reports no declarations among them: while
  // the element had no attributes of its own before, they are appended without
  // the map's checks.
  KepRDOMAttributeList* before = element->existingAttributes();
  bool fresh = before == nullptr || before->size() == 0;
  if (declarations > 0) {
    placed.assign(declarations, false);
    Names const& own = resolve(name);
    addDeclaration(element, firstDeclaration, prefixOf(name, own.prefix != 0));
  }
  KepRDOMAttributeList* list = nullptr;
  for (char const** a = attributes; a[0] != nullptr; a += 2) {
    if (std::strcmp(a[0], "xs") == 0) {
      int service = KepProcess::nameToTag(widened(a[1]));
      if (service != 0) element->setService(service);
      continue;
    }
    Names const names = resolve(a[0]);
    if (names.id == 0) continue;
    if (list == nullptr) {
      list = element->attributeList();
      int left = 0;
      for (char const** b = a; b[0] != nullptr; b += 2) ++left;
      list->reserve(left);
    }
    auto* attribute = new KepRDOMAttribute();
    Hold holder(attribute);
    attribute->setNames(names.id, names.prefix, names.local, names.uri);
    attribute->adoptValue(textBody(a[1], std::strlen(a[1])));
    if (fresh) {
      list->appendChecked(attribute);
    } else {
      bool refused = false;
      list->put(attribute, names.uri != 0, refused);
    }
    if (declarations > 0 && names.prefix != 0) {
      addDeclaration(element, firstDeclaration, prefixOf(a[0], true));
    }
  }
  for (size_t i = 0; i < declarations; ++i) {
    if (!placed[i])
      addDeclaration(element, firstDeclaration, bindings[firstDeclaration + i].prefix.c_str());
  }
}

void _KepXMLParserData::addDeclaration(KepRDOMElement* element, size_t first, char const* prefix) {
  static KepString const xmlnsUri(kXmlnsNamespace);
  for (size_t i = 0; i + first < bindings.size(); ++i) {
    Binding const& b = bindings[first + i];
    if (placed[i] || b.prefix != prefix) continue;
    placed[i] = true;
    std::string attributeName = b.prefix.empty() ? std::string("xmlns") : "xmlns:" + b.prefix;
    element->setAttributeNS(xmlnsUri, widened(attributeName.data(), attributeName.size()),
                            widened(b.uri.data(), b.uri.size()));
    return;
  }
}

void _KepXMLParserData::startElement(char const* name, char const** attributes) {
  flushText();
  ++depth;
  if (!target.empty() && !reached) enterPath(name);
  declarationsPerLevel.push_back(pendingDeclarations);
  pendingDeclarations = 0;
  if (!building()) return;

  Names const names = resolve(name);
  // A factory-made element comes with its handle; a plain one is only held by
  // a reference until its parent takes it.
  KepObject holder;
  Hold hold;
  KepRDOMElement* element = makeElement(attributes, holder, hold);
  if (element->getClassID() == KepClassID::DOMElement) {
    element->setNames(names.id, names.prefix, names.local, names.uri);
  } else {
    element->setNodeID(names.id);
    if (names.uri != 0) {
      element->setNodePrefix(names.prefix);
      element->setNodeLocalID(names.local);
      element->setNodeNamespaceURI(names.uri);
    }
  }
  element->adoptOne(anchor);
  setAttributes(element, name, attributes);

  KepRDOMParentNode* parent = parents.back();
  bool placed = false;
  if (handler != nullptr) {
    KepDOMElement offered(holder.isNull() ? KepObject(static_cast<KepBridgeToObject*>(element))
                                          : holder);
    placed = handler->createElement(&offered, parent) != 0;
  }
  if (!placed) {
    parent->appendFresh(element);
    parent->childrenChanged();
  }
  parents.push_back(element);
  // The reference taken for `parents`.
  element->addRef();
  if (matchDepth == depth) found = element;
  element->_beginFromXML(parserHandle);
}

void _KepXMLParserData::endElement() {
  bool inside = building();
  if (!target.empty() && !reached) {
    path.resize(pathLengths.back());
    pathLengths.pop_back();
  }
  if (inside) {
    flushText();
    KepRDOMParentNode* parent = parents.back();
    parents.pop_back();
    if (KepRDOMElement* element = parent->asElement()) element->_endFromXML(mode, parserHandle);
    parent->release();
  }
  int count = declarationsPerLevel.back();
  declarationsPerLevel.pop_back();
  bindings.resize(bindings.size() - static_cast<size_t>(count));
  if (matchDepth == depth) matchDepth = 0;
  --depth;
}

// --- Character data ------------------------------------------------------------------

void _KepXMLParserData::characters(char const* text, int length) {
  if (length <= 0 || !building()) return;
  textPending = true;
  if (!overflowing && pendingLength + length <= kPendingSize) {
    std::memcpy(pending + pendingLength, text, static_cast<size_t>(length));
    pendingLength += length;
    return;
  }
  if (!overflowing) {
    overflowing = true;
    overflow = KepStringBuffer(pending, 0, pendingLength);
  }
  overflow.append(reinterpret_cast<signed char const*>(text), 0, length);
}

void _KepXMLParserData::flushText(bool force) {
  if (!textPending && !force) return;
  bool cdata = inCData;
  bool overflowed = overflowing;
  int length = overflowed ? -1 : pendingLength;
  textPending = false;
  pendingLength = 0;
  overflowing = false;
  if (!building() || parents.size() < 2) {
    if (overflowed) overflow = KepStringBuffer();
    return;
  }
  KepRDOMParentNode* parent = parents.back();
  // A lone tab or line feed between elements is layout, not content, unless
  // the element keeps its white space.
  if (!cdata && length == 1 && (pending[0] == '\t' || pending[0] == '\n')) {
    KepRDOMElement* element = parent->asElement();
    if (element == nullptr || !element->preservesSpace()) return;
  }
  // The node goes into the tree first, which then owns it: nothing that may
  // throw comes between its creation and its link. Nobody sees it before its
  // text is set.
  KepRDOMText* node = cdata ? new KepRDOMCDATASection() : new KepRDOMText();
  node->adoptOne(anchor);
  parent->appendFresh(node);
  if (overflowed) {
    node->initData(overflow.toString());
    overflow = KepStringBuffer();
  } else if (length > 0 || cdata) {
    node->adoptData(textBody(pending, static_cast<size_t>(length)));
  }
  parent->childrenChanged();
}

void _KepXMLParserData::flushOnly() { flushText(); }

void _KepXMLParserData::startCData() {
  flushText();
  inCData = true;
}

void _KepXMLParserData::endCData() {
  flushText(true);
  inCData = false;
}
