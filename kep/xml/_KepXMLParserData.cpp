#include "kep/xml/_KepXMLParserData.h"

#include <expat.h>

#include <chrono>
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
#include "kep/xml/_KepDOMDocAnchor.h"

namespace {

char const kXmlNamespace[] = "http://www.w3.org/XML/1998/namespace";
char const kXmlnsNamespace[] = "http://www.w3.org/2000/xmlns/";

KepString widened(char const* bytes, size_t n) {
  return KepString(static_cast<KepBridgeToObject*>(KepRString::createFromBytes(
      reinterpret_cast<unsigned char const*>(bytes), static_cast<int>(n))));
}

KepString widened(char const* text) { return widened(text, std::strlen(text)); }

uint64_t load64(char const* p) {
  uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

uint32_t load32(char const* p) {
  uint32_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// The first and the last bytes of `n` bytes as one word each (overlapping, or
// the same bytes, for short runs): every byte is in one of them.
void edges(char const* p, size_t n, uint64_t& head, uint64_t& tail) {
  if (n >= 8) {
    head = load64(p);
    tail = load64(p + n - 8);
  } else if (n >= 4) {
    head = load32(p);
    tail = load32(p + n - 4);
  } else if (n > 0) {
    head = static_cast<unsigned char>(p[0]) |
           static_cast<uint64_t>(static_cast<unsigned char>(p[n / 2])) << 8;
    tail = static_cast<unsigned char>(p[n - 1]);
  } else {
    head = 0;
    tail = 0;
  }
}

// A hash of `n` bytes, eight at a time, from `seed`.
uint64_t hashBytes(char const* p, size_t n, uint64_t seed) {
  uint64_t h = seed ^ n;
  uint64_t head;
  uint64_t tail;
  edges(p, n, head, tail);
  if (n <= 8) {
    h = (h ^ head) * 0xff51afd7ed558ccdull;
    h ^= h >> 32;
  }
  // The words before the last eight bytes; those are the tail.
  for (; n > 8; p += 8, n -= 8) {
    h = (h ^ load64(p)) * 0xff51afd7ed558ccdull;
    h ^= h >> 32;
  }
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

// A string body in the parse's arena: a plain string whose units follow the
// body in the same block, as in the heap's.
class PlacedString final : public KepRString {
 public:
  explicit PlacedString(int n) noexcept : KepRString(n) {}
};
static_assert(sizeof(PlacedString) == sizeof(KepRString), "the units follow the body");

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
  parents.push_back(Open{doc, false});
  if (KepRString const* s = KepRString::of(xpointer)) {
    target.assign(s->units(), s->units() + s->unitCount());
  }
  // The hashes of the name table and the text cache are keyed for each parse,
  // so that a document cannot be made to collide its names on purpose.
  uint64_t where = reinterpret_cast<uintptr_t>(this);
  uint64_t when =
      static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  seed = hashBytes(reinterpret_cast<char const*>(&where), sizeof where, when);
  // The prefix "xml" is bound without a declaration.
  pushBinding("xml", kXmlNamespace);
  slots.resize(256);
}

_KepXMLParserData::~_KepXMLParserData() {
  if (anchorRefs > 0) anchor->release(anchorRefs);
  for (Open const& open : parents) open.node->release();
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

namespace {

// The bit of `prefixBits` for a prefix of `length` bytes starting with `first`.
uint64_t prefixBit(size_t length, char first) {
  return uint64_t{1} << ((length * 7 + static_cast<unsigned char>(first)) & 63);
}

}  // namespace

void _KepXMLParserData::pushBinding(char const* prefix, char const* uri) {
  int index = static_cast<int>(bindings.size());
  bindings.push_back(Binding{prefix != nullptr ? prefix : "", uri != nullptr ? uri : "", -1});
  Binding& b = bindings.back();
  auto placed = innermost.emplace(b.prefix, index);
  if (!placed.second) {
    b.shadowed = placed.first->second;
    placed.first->second = index;
  }
  if (!b.prefix.empty()) prefixBits |= prefixBit(b.prefix.size(), b.prefix[0]);
  ++epoch;
}

void _KepXMLParserData::popBindings(size_t count) {
  for (; count > 0; --count) {
    Binding const& b = bindings.back();
    if (b.shadowed >= 0) {
      innermost[b.prefix] = b.shadowed;
    } else {
      innermost.erase(b.prefix);
    }
    bindings.pop_back();
    ++epoch;
  }
}

_KepXMLParserData::Binding const* _KepXMLParserData::lookupPrefix(char const* prefix,
                                                                  size_t length) const {
  if (length == 0 || (prefixBits & prefixBit(length, prefix[0])) == 0) return nullptr;
  auto it = innermost.find(std::string(prefix, length));
  return it != innermost.end() ? &bindings[static_cast<size_t>(it->second)] : nullptr;
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

_KepXMLParserData::Names _KepXMLParserData::resolve(char const* raw) {
  size_t length = std::strlen(raw);
  uint64_t head;
  uint64_t tail;
  edges(raw, length, head, tail);
  uint64_t key = (head * 0x9e3779b97f4a7c15ull) ^ (tail * 0xc2b2ae3d27d4eb4full) ^ length;
  Recent& r = recent[(key >> 32) & (kRecentSlots - 1)];
  if (r.epoch == epoch && r.length == length &&
      std::memcmp(nameBytes.data() + r.offset, raw, length) == 0) {
    return r.names;
  }
  Slot const& slot = resolveSlot(raw, length);
  r.epoch = epoch;
  r.length = static_cast<uint32_t>(length);
  r.offset = slot.offset;
  r.names = slot.names;
  return slot.names;
}

_KepXMLParserData::Slot const& _KepXMLParserData::resolveSlot(char const* raw, size_t length) {
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
    Binding const* binding = lookupPrefix(colon + 1, length - restLength - 1);
    std::string const* uri = binding != nullptr ? &binding->uri : nullptr;
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
  uint64_t h = hashBytes(raw, length, seed) + static_cast<uint64_t>(decision);
  size_t mask = slots.size() - 1;
  size_t i = static_cast<size_t>(h) & mask;
  for (; slots[i].used; i = (i + 1) & mask) {
    Slot const& s = slots[i];
    if (s.hash == h && s.length == length + 1 &&
        std::memcmp(nameBytes.data() + s.offset, raw, length) == 0 &&
        nameBytes[s.offset + length] == decision) {
      return s;
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
  return s;
}

KepRObject* _KepXMLParserData::makeString(char const* bytes, size_t length) {
  void* memory = nullptr;
  if (length < kPlacedText) memory = arena.allocate(sizeof(KepRString) + (length + 1) * 2);
  if (memory == nullptr) {
    return KepRString::createFromBytes(reinterpret_cast<unsigned char const*>(bytes),
                                       static_cast<int>(length));
  }
  auto* body = ::new (memory) PlacedString(static_cast<int>(length));
  _KepBodyArena::placed(body);
  unsigned short* units = body->mutableUnits();
  // Whole blocks of a fixed size, which the compiler turns into vector code.
  size_t i = 0;
  for (; i + 16 <= length; i += 16) {
    for (size_t j = 0; j < 16; ++j) units[i + j] = static_cast<unsigned char>(bytes[i + j]);
  }
  for (; i < length; ++i) units[i] = static_cast<unsigned char>(bytes[i]);
  return body;
}

KepRObject* _KepXMLParserData::textBody(char const* bytes, size_t length, bool attributeValue) {
  auto make = [&]() {
    KepRObject* body = makeString(bytes, length);
    if (body == nullptr) throw std::bad_alloc();
    return body;
  };
  if (length > kShortText) {
    KepRObject* body = make();
    body->addRef();
    return body;
  }
  if (shortTexts.empty()) shortTexts.resize(2 * kShortSlots);
  // Attribute values and character data have a half of the slots each: the
  // values repeat most, and the texts of a document do not push them out.
  size_t at = hashBytes(bytes, length, seed) & (kShortSlots - 1);
  ShortSlot& slot = shortTexts[attributeValue ? at + kShortSlots : at];
  if (slot.text == nullptr || slot.length != length ||
      std::memcmp(slot.bytes, bytes, length) != 0) {
    KepRObject* body = make();
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
  pushBinding(prefix, uri);
  ++pendingDeclarations;
}

void _KepXMLParserData::enterPath(char const* name) {
  pathLengths.push_back(path.size());
  if (!path.empty()) path.push_back('.');
  Names const names = resolve(name);
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

void _KepXMLParserData::own(KepRDOMNode* node) {
  if (anchorRefs == 0) {
    anchor->addRef(kAnchorBatch);
    anchorRefs = kAnchorBatch;
  }
  --anchorRefs;
  node->takeOwner(anchor);
}

namespace {

// 1 for "dt", 2 for "ElementId" (the attributes that name an element's class),
// else 0.
int classAttribute(char const* name) {
  if (name[0] == 'd') return name[1] == 't' && name[2] == 0 ? 1 : 0;
  if (name[0] == 'E') return std::strcmp(name, "ElementId") == 0 ? 2 : 0;
  return 0;
}

}  // namespace

bool _KepXMLParserData::namesClass(char const** attributes) const {
  if ((mode & KepRXMLParser::kStandardDOM) != 0) return false;
  for (char const** a = attributes; a[0] != nullptr; a += 2) {
    if (classAttribute(a[0]) != 0) return true;
  }
  return false;
}

KepRDOMElement* _KepXMLParserData::makeElement(char const** attributes, KepObject& holder,
                                               Hold& hold) {
  int dataType = 0;
  if ((mode & KepRXMLParser::kStandardDOM) == 0) {
    for (char const** a = attributes; a[0] != nullptr; a += 2) {
      int kind = classAttribute(a[0]);
      if (kind == 0) continue;
      bool dt = kind == 1;
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
  auto* element = arena.make<KepRDOMElement>();
  hold.reset(element);
  // A plain element written with its value's type ("int", "string" ...) gets
  // that type back; a string value keeps even a lone line break or tab.
  if (dataType != 0) element->setDataType(dataType);
  constexpr int kStringType = 2;
  if (dataType == kStringType) element->setPreserveSpace(1);
  return element;
}

void _KepXMLParserData::setAttributes(KepRDOMElement* element, char const* name,
                                      char const** attributes) {
  // The declarations go where the DOM writer puts them, so that what it wrote
  // reads back into the same attribute order: the one binding the element's
  // own prefix first, each one binding an attribute's prefix right after that
  // attribute, the others last.
  size_t first = bindings.size() - static_cast<size_t>(declarationsPerLevel.back());
  int count = static_cast<int>(bindings.size() - first);
  for (char const** a = attributes; a[0] != nullptr; a += 2) ++count;
  if (count == 0) return;
  attributeOwner = element;
  map = nullptr;
  mapRoom = count;
  if (first < bindings.size()) addDeclaration(first, ownPrefix(name));
  for (char const** a = attributes; a[0] != nullptr; a += 2) {
    if (a[0][0] == 'x' && a[0][1] == 's' && a[0][2] == 0) {
      int service = KepProcess::nameToTag(widened(a[1]));
      if (service != 0) element->setService(service);
      continue;
    }
    Names const names = resolve(a[0]);
    if (names.id == 0) continue;
    addAttribute(names, a[1], std::strlen(a[1]), names.uri != 0);
    if (names.prefix != 0 && first < bindings.size()) addDeclaration(first, ownPrefix(a[0]));
  }
  for (size_t i = first; i < bindings.size(); ++i) addDeclaration(first, bindings[i].prefix);
  attributeOwner = nullptr;
  map = nullptr;
}

std::string _KepXMLParserData::ownPrefix(char const* raw) {
  Names const names = resolve(raw);
  if (names.prefix == 0) return std::string();
  char const* colon = std::strrchr(raw, ':');
  return colon != nullptr ? std::string(colon + 1) : std::string();
}

void _KepXMLParserData::addDeclaration(size_t first, std::string const& prefix) {
  auto it = innermost.find(prefix);
  if (it == innermost.end() || static_cast<size_t>(it->second) < first) return;
  Binding& b = bindings[static_cast<size_t>(it->second)];
  if (b.added) return;
  b.added = true;
  // "xmlns" or "xmlns:" and the prefix, in the namespace of declarations.
  if (xmlnsTag == 0) {
    xmlnsTag = tagOfBytes("xmlns");
    xmlnsUriTag = tagOfBytes(kXmlnsNamespace);
  }
  Names names;
  names.uri = xmlnsUriTag;
  if (b.prefix.empty()) {
    names.id = xmlnsTag;
    names.local = xmlnsTag;
  } else {
    names.id = tagOfBytes("xmlns:" + b.prefix);
    names.prefix = xmlnsTag;
    names.local = tagOfBytes(b.prefix);
  }
  addAttribute(names, b.uri.data(), b.uri.size(), true);
}

KepRDOMAttributeList* _KepXMLParserData::attributeMap() {
  if (KepRDOMAttributeList* existing = attributeOwner->existingAttributes()) {
    preset = existing->size();
    existing->reserve(mapRoom);
    return existing;
  }
  preset = 0;
  // A new map is placed in the arena with room for the attributes behind it.
  size_t const room = static_cast<size_t>(mapRoom) * sizeof(KepRDOMNode*);
  if (void* memory = arena.allocate(sizeof(KepRDOMAttributeList) + room)) {
    auto* slots =
        reinterpret_cast<KepRDOMNode**>(static_cast<char*>(memory) + sizeof(KepRDOMAttributeList));
    auto* list = ::new (memory) KepRDOMAttributeList(slots, mapRoom);
    _KepBodyArena::placed(list);
    attributeOwner->adoptAttributeList(list);
    return list;
  }
  KepRDOMAttributeList* list = attributeOwner->attributeList();
  list->reserve(mapRoom);
  return list;
}

bool _KepXMLParserData::clashesWithPreset(Names const& names, bool byNS) const {
  for (int i = 0; i < preset; ++i) {
    KepRDOMNode const* other = map->at(i);
    if (byNS ? other->uriTag() == names.uri && other->localOrNodeTag() == names.local
             : other->nodeTag() == names.id) {
      return true;
    }
  }
  return false;
}

void _KepXMLParserData::addAttribute(Names const& names, char const* bytes, size_t length,
                                     bool byNS) {
  if (map == nullptr) map = attributeMap();
  auto* attribute = arena.make<KepRDOMAttribute>();
  own(attribute);
  attribute->setNames(names.id, names.prefix, names.local, names.uri);
  // The map takes the attribute before anything that may fail: it has room
  // for it already. The tokenizer lets no two attributes of one element have
  // the same name, or the same URI and local name, and reports no declaration
  // twice: only the attributes the element had before the parser came can
  // have the same name.
  if (preset == 0 || !clashesWithPreset(names, byNS)) {
    map->appendChecked(attribute);
  } else {
    Hold holder(attribute);
    bool refused = false;
    map->put(attribute, byNS, refused);
    if (refused) return;
  }
  attribute->adoptValue(textBody(bytes, length, true));
}

void _KepXMLParserData::startElement(char const* name, char const** attributes) {
  flushText();
  ++depth;
  if (!target.empty() && !reached) enterPath(name);
  declarationsPerLevel.push_back(pendingDeclarations);
  pendingDeclarations = 0;
  if (!building()) return;

  Names const names = resolve(name);
  Open const& open = parents.back();
  KepRDOMParentNode* parent = open.node;
  if (handler == nullptr && !namesClass(attributes)) {
    // The common case: a plain element that goes straight into the tree, which
    // holds it from then on.
    auto* element = arena.make<KepRDOMElement>();
    element->setNames(names.id, names.prefix, names.local, names.uri);
    own(element);
    parent->appendFresh(element);
    if (!open.plain) parent->childrenChanged();
    setAttributes(element, name, attributes);
    enter(element, true);
    return;
  }
  // A factory-made element comes with its handle; a plain one is only held by
  // a reference until its parent or the handler takes it.
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
  enter(element, false);
}

void _KepXMLParserData::enter(KepRDOMElement* element, bool plain) {
  parents.push_back(Open{element, plain});
  // The reference taken for `parents`.
  element->addRef();
  if (matchDepth == depth) found = element;
  // The hooks of a plain element do nothing.
  if (!plain) element->_beginFromXML(parserHandle);
}

void _KepXMLParserData::endElement() {
  bool inside = building();
  if (!target.empty() && !reached) {
    path.resize(pathLengths.back());
    pathLengths.pop_back();
  }
  if (inside) {
    flushText();
    Open const open = parents.back();
    parents.pop_back();
    if (!open.plain) {
      if (KepRDOMElement* element = open.node->asElement()) {
        element->_endFromXML(mode, parserHandle);
      }
    }
    open.node->release();
  }
  int count = declarationsPerLevel.back();
  declarationsPerLevel.pop_back();
  popBindings(static_cast<size_t>(count));
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
  Open const& open = parents.back();
  KepRDOMParentNode* parent = open.node;
  // A lone tab or line feed between elements is layout, not content, unless
  // the element keeps its white space.
  if (!cdata && length == 1 && (pending[0] == '\t' || pending[0] == '\n')) {
    if (open.plain) return;
    KepRDOMElement* element = parent->asElement();
    if (element == nullptr || !element->preservesSpace()) return;
  }
  // The node goes into the tree first, which then owns it: nothing that may
  // throw comes between its creation and its link. Nobody sees it before its
  // text is set.
  KepRDOMText* node = cdata ? static_cast<KepRDOMText*>(arena.make<KepRDOMCDATASection>())
                            : arena.make<KepRDOMText>();
  own(node);
  parent->appendFresh(node);
  if (overflowed) {
    node->initData(overflow.toString());
    overflow = KepStringBuffer();
  } else if (length > 0 || cdata) {
    node->adoptData(textBody(pending, static_cast<size_t>(length), false));
  }
  if (!open.plain) parent->childrenChanged();
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
