#include "kep/xml/KepRDOMWriter.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <typeinfo>
#include <unordered_set>

#include "kep/base/KepFactory.h"
#include "kep/base/KepRString.h"
#include "kep/io/KepRIOStream.h"
#include "kep/xml/KepDOM.h"
#include "kep/xml/KepRDOMAttribute.h"
#include "kep/xml/KepRDOMAttributeList.h"
#include "kep/xml/KepRDOMCharacterData.h"
#include "kep/xml/KepRDOMElement.h"
#include "kep/xml/KepRDOMParentNode.h"

// A compiled view: the element and attribute names of the view document's
// "Include", "IncludeAttribute" and "Publish" children, as tags.
struct _KepDOMWriterView {
  bool hasInclude = false;
  std::unordered_set<int> include;
  bool hasIncludeAttribute = false;
  // Attribute name tag -> the "notvalue" text (a null string when there is none).
  std::unordered_map<int, KepString> includeAttribute;
  bool hasPublish = false;
  std::unordered_set<int> publish;
};

namespace {

constexpr size_t kBufferSize = 64 * 1024;
// The longest replacement an escaped byte gets ("&amp;").
constexpr size_t kMaxEscape = 5;

// The replacement of each byte in text, or none (length 0) for the byte itself.
struct EscapeTable {
  char const* text[256];
  unsigned char length[256];
  EscapeTable() : text(), length() {
    set('<', "&lt;");
    set('>', "&gt;");
    set('&', "&amp;");
  }
  void set(unsigned char byte, char const* replacement) {
    text[byte] = replacement;
    length[byte] = static_cast<unsigned char>(std::strlen(replacement));
  }
};
EscapeTable const kEscape;

// The node body behind a handle, or null. Bodies tell their class family by
// id, which is far cheaper than a dynamic cast across the library boundary.
KepRDOMNode* nodeBody(KepObject const& handle) {
  KepRObject* body = handle.getRealKepObj();
  return body != nullptr && body->isOfType(KepClassID::DOMNode) ? static_cast<KepRDOMNode*>(body)
                                                                : nullptr;
}

KepRDOMElement* elementBody(KepObject const& handle) {
  KepRDOMNode* node = nodeBody(handle);
  return node != nullptr ? node->asElement() : nullptr;
}

KepRString const* stringBody(KepString const& text) { return KepRString::of(text); }

// A held text body as a string body, or null.
KepRString const* stringBody(KepRObject const* body) {
  if (body == nullptr || !body->isOfType(KepClassID::String)) return nullptr;
  return static_cast<KepRString const*>(body);
}

// Process-wide table of named views for setView(service, name, reserved).
struct ViewRegistry {
  std::mutex lock;
  std::map<std::u16string, void*> views;

  static ViewRegistry& get() {
    static ViewRegistry* registry = new ViewRegistry();  // lives until the process ends
    return *registry;
  }
  static std::u16string key(KepString const& service, KepString const& name) {
    std::u16string k;
    for (KepString const* part : {&service, &name}) {
      if (KepRString const* body = stringBody(*part)) {
        k.append(reinterpret_cast<char16_t const*>(body->units()),
                 static_cast<size_t>(body->unitCount()));
      }
      k.push_back(u'\0');
    }
    return k;
  }
};

}  // namespace

// --- Output buffer ----------------------------------------------------------------

KepRDOMWriter::Output::Output(size_t size)
    : data(new char[std::max<size_t>(size, kMaxEscape)]),
      used(0),
      capacity(std::max<size_t>(size, kMaxEscape)) {}

void KepRDOMWriter::Output::flush() {
  if (used == 0) return;
  // Failing writes are the stream's concern: the bytes are given once.
  stream.write(reinterpret_cast<signed char*>(data.get()), 0, static_cast<int>(used));
  used = 0;
}

void KepRDOMWriter::Output::putLarge(char const* bytes, size_t count) {
  if (count > capacity - used) {
    flush();
    if (count >= capacity) {
      while (count > 0) {
        int piece = static_cast<int>(std::min<size_t>(count, 0x40000000));
        stream.write(reinterpret_cast<signed char*>(const_cast<char*>(bytes)), 0, piece);
        bytes += piece;
        count -= static_cast<size_t>(piece);
      }
      return;
    }
  }
  std::memcpy(data.get() + used, bytes, count);
  used += count;
}

void KepRDOMWriter::Output::putNarrowLarge(unsigned short const* units, size_t count) {
  while (count > 0) {
    if (used == capacity) flush();
    size_t n = std::min(count, capacity - used);
    char* to = data.get() + used;
    for (size_t i = 0; i < n; ++i) to[i] = static_cast<char>(units[i]);
    used += n;
    units += n;
    count -= n;
  }
}

size_t KepRDOMWriter::Output::putEscaped(unsigned short const* units, size_t count) {
  size_t produced = 0;
  while (count > 0) {
    // Room for the worst case of every unit of this piece.
    size_t n = std::min(count, (capacity - used) / kMaxEscape);
    if (n == 0) {
      flush();
      continue;
    }
    char* start = data.get() + used;
    char* to = start;
    for (size_t i = 0; i < n; ++i) {
      unsigned char byte = static_cast<unsigned char>(units[i]);
      if (kEscape.length[byte] == 0) {
        *to++ = static_cast<char>(byte);
      } else {
        std::memcpy(to, kEscape.text[byte], kEscape.length[byte]);
        to += kEscape.length[byte];
      }
    }
    size_t wrote = static_cast<size_t>(to - start);
    used += wrote;
    produced += wrote;
    units += n;
    count -= n;
  }
  return produced;
}

// --- Print scope --------------------------------------------------------------------

class KepRDOMWriter::PrintScope {
 public:
  explicit PrintScope(KepRDOMWriter& writer) : w(writer), outermost(writer.depth == 0) {
    if (outermost) {
      handle = _KepDOMHandle<KepDOMWriter>(&w);
      w.self = &handle;
      w.bindings.clear();
      w.frameDepth = 0;
      if (w.tagDt == 0) {
        // Tags keep their names while the library is up, as the name cache does.
        w.tagDt = KepRDOMNode::tagOf(KepString("dt"));
        w.tagXs = KepRDOMNode::tagOf(KepString("xs"));
      }
      w.direct = typeid(w) == typeid(KepRDOMWriter);
    }
    ++w.depth;
  }
  ~PrintScope() {
    --w.depth;
    if (outermost) {
      w.out.flush();
      w.bindings.clear();
      w.frameDepth = 0;
      w.hookElement = nullptr;
      w.self = nullptr;
    }
  }
  PrintScope(PrintScope const&) = delete;
  PrintScope& operator=(PrintScope const&) = delete;

 private:
  KepRDOMWriter& w;
  bool outermost;
  KepDOMWriter handle;
};

// --- Life ---------------------------------------------------------------------------

KepRDOMWriter::KepRDOMWriter()
    : out(kBufferSize),
      state(0),
      hasChildren(0),
      view(nullptr),
      frameDepth(0),
      self(nullptr),
      depth(0),
      hookElement(nullptr),
      hookOn(false),
      tagDt(0),
      tagXs(0),
      direct(false),
      recentNames() {}

KepRDOMWriter::~KepRDOMWriter() = default;

KepRDOMWriter::TagName const& KepRDOMWriter::lookupTagName(int tag) {
  // tagName() keeps a direct-mapped front for the few names a document uses
  // over and over; the map keeps every entry at a fixed address.
  RecentName& recent = recentNames[static_cast<unsigned>(tag) % kRecentNames];
  auto found = names.find(tag);
  if (found == names.end()) {
    TagName entry;
    entry.name = KepRDOMNode::nameOf(tag);
    entry.bytes = KepRIOStream::narrow(entry.name);
    entry.declaration = entry.bytes.compare(0, 5, "xmlns") == 0 &&
                        (entry.bytes.size() == 5 || entry.bytes[5] == ':');
    found = names.emplace(tag, std::move(entry)).first;
  }
  recent.tag = tag;
  recent.entry = &found->second;
  return found->second;
}

void KepRDOMWriter::putString(KepString const& text) {
  if (KepRString const* body = stringBody(text)) {
    out.putNarrow(body->units(), static_cast<size_t>(body->unitCount()));
  }
}

unsigned long KepRDOMWriter::askHook(KepRDOMNode* node, int s) {
  state = s;
  if (self == nullptr) return 0;
  if (KepObject* outer = node->getRealOuterObj()) {
    if (auto* outerNode = dynamic_cast<KepDOMNode*>(outer)) return outerNode->serializeAsXML(*self);
  }
  return node->serializeAsXML(*self);
}

unsigned long KepRDOMWriter::elementStep(int s) {
  if (!hookOn || hookElement == nullptr) {
    state = s;
    return 0;
  }
  return askHook(hookElement, s);
}

// --- Bridged operations -----------------------------------------------------------

unsigned long KepRDOMWriter::serializeAsXML(KepDOMNode& node, KepIOStream& stream) {
  // What was buffered so far belongs to the stream it was written for.
  out.flush();
  if (depth == 0) {
    out.setStream(stream);
    return serializeAsXML(node);
  }
  // A hook printing elsewhere: that text stands alone, with namespace bindings
  // of its own, and the enclosing print goes on on its own stream afterwards.
  KepIOStream enclosing = out.target();
  std::vector<Binding> enclosingBindings;
  enclosingBindings.swap(bindings);
  int enclosingDepth = frameDepth;
  frameDepth = 0;
  out.setStream(stream);
  unsigned long printed = serializeAsXML(node);
  out.flush();
  out.setStream(enclosing);
  bindings.swap(enclosingBindings);
  frameDepth = enclosingDepth;
  return printed;
}

unsigned long KepRDOMWriter::serializeAsXML(KepDOMNode& node) {
  if (nodeBody(node) == nullptr) return 0;
  PrintScope scope(*this);
  print(node);
  return 1;
}

int KepRDOMWriter::write(KepString const& text) {
  KepRString const* body = stringBody(text);
  if (body == nullptr) return 0;
  out.putNarrow(body->units(), static_cast<size_t>(body->unitCount()));
  if (depth == 0) out.flush();
  return body->unitCount();
}

int KepRDOMWriter::write(signed char* buffer, int offset, int length) {
  if (!KepRIOStream::validRange(buffer, offset, length)) return 0;
  out.put(reinterpret_cast<char const*>(buffer + offset), static_cast<size_t>(length));
  if (depth == 0) out.flush();
  return length;
}

int KepRDOMWriter::into(KepIOStream& source, int length, unsigned long close) {
  out.flush();
  return source.into(out.target(), length, close);
}

int KepRDOMWriter::getState() const { return state; }

void KepRDOMWriter::notifyElementBegin(unsigned long children) {
  if (children != 0) {
    out.put('>');
  } else {
    out.put("/>", 2);
  }
  hasChildren = children;
  if (depth == 0) out.flush();
}

void KepRDOMWriter::notifyElementEnd(unsigned long children) { hasChildren = children; }

int KepRDOMWriter::normalizedWrite(KepString const& text) {
  KepRString const* body = stringBody(text);
  if (body == nullptr) return 0;
  size_t produced = out.putEscaped(body->units(), static_cast<size_t>(body->unitCount()));
  if (depth == 0) out.flush();
  return static_cast<int>(produced);
}

void KepRDOMWriter::setView(KepString const& service, KepString const& name, int /*reserved*/) {
  ViewRegistry& registry = ViewRegistry::get();
  std::lock_guard<std::mutex> guard(registry.lock);
  auto found = registry.views.find(ViewRegistry::key(service, name));
  view = found != registry.views.end() ? static_cast<_KepDOMWriterView*>(found->second) : nullptr;
}

void KepRDOMWriter::setView(void* compiled) { view = static_cast<_KepDOMWriterView*>(compiled); }

// --- Printing ---------------------------------------------------------------------
//
// The work is done on the node bodies. When the writer is a KepRDOMWriter itself
// (`direct`), nothing can have overridden the per-node operations, so the bodies
// are printed without making handles for them; a derived writer gets every
// operation called through its virtual, with handles, as it expects.

void KepRDOMWriter::printChildren(KepRDOMNode* node) {
  KepRDOMParentNode* parentNode = node->asParent();
  if (parentNode == nullptr) return;
  KepRDOMNode* child = parentNode->firstBody();
  while (child != nullptr) {
    // The reference keeps the child alive while it prints.
    child->addRef();
    if (direct) {
      printBody(child);
    } else {
      KepDOMNode handle = _KepDOMHandle<KepDOMNode>(child);
      print(handle);
    }
    KepRDOMNode* next = child->nextBody();
    child->release();
    child = next;
  }
}

void KepRDOMWriter::print(KepDOMNode& node) {
  KepRDOMNode* body = nodeBody(node);
  if (body == nullptr) return;
  PrintScope scope(*this);
  printBody(body);
}

void KepRDOMWriter::printBody(KepRDOMNode* body) {
  switch (body->getNodeType()) {
    case KepDOMNode::DOCUMENT_NODE:
      if (!askHook(body, KepDOMWriter::DOCUMENT_BEGIN)) out.put("<?xml version=\"1.0\"?>", 21);
      if (!askHook(body, KepDOMWriter::DOCUMENT_BEFORE_CHILDREN)) printChildren(body);
      askHook(body, KepDOMWriter::DOCUMENT_AFTER_CHILDREN);
      askHook(body, KepDOMWriter::DOCUMENT_END);
      break;
    case KepDOMNode::ELEMENT_NODE: {
      KepRDOMElement* element = body->asElement();
      if (element == nullptr) break;
      int tag = element->nodeTag();
      nsStackPush();
      if (direct) {
        // _transformNode() replaces nothing, so _printElement() comes down to
        // printing the element itself.
        if (elementAllowed(tag)) emitElement(element, element->nodeTag(), nullptr);
      } else {
        KepDOMElement handle = _KepDOMHandle<KepDOMElement>(element);
        if (_shouldPrintElement(handle, tag)) _printElement(handle, tag);
      }
      nsStackPop();
      break;
    }
    case KepDOMNode::TEXT_NODE:
      if (direct && body->isOfType(KepClassID::DOMCharacterData)) {
        emitText(body, stringBody(static_cast<KepRDOMCharacterData*>(body)->textBody()));
      } else {
        KepDOMText handle = _KepDOMHandle<KepDOMText>(body);
        KepString value = body->getNodeValue();
        if (_shouldPrintText(handle, value)) _printText(handle, value);
      }
      break;
    case KepDOMNode::CDATA_SECTION_NODE:
      emitDelimited(body, KepDOMWriter::CDATA_BEFORE, "<![CDATA[", "]]>");
      break;
    case KepDOMNode::COMMENT_NODE:
      emitDelimited(body, KepDOMWriter::COMMENT_BEFORE, "<!--", "-->");
      break;
    case KepDOMNode::PROCESSING_INSTRUCTION_NODE:
      if (!askHook(body, KepDOMWriter::PI_BEFORE)) {
        out.put("<?", 2);
        std::string const& target = tagName(body->nodeTag()).bytes;
        out.put(target.data(), target.size());
        KepString value = body->getNodeValue();
        if (!value.isNull() && value.length() > 0) {
          out.put(' ');
          putString(value);
        }
        out.put("?>", 2);
      }
      askHook(body, KepDOMWriter::PI_AFTER);
      break;
    default:
      break;  // attributes, fragments, document types, entities, notations
  }
}

void KepRDOMWriter::emitDelimited(KepRDOMNode* node, int before, char const* open,
                                  char const* close) {
  if (!askHook(node, before)) {
    out.put(open, std::strlen(open));
    putString(node->getNodeValue());  // as it stands, unescaped
    out.put(close, std::strlen(close));
  }
  askHook(node, before + 1);
}

void KepRDOMWriter::_printElement(KepDOMElement& element, int tag) {
  if (_transformNode(element, tag)) return;
  KepRDOMNode* body = nodeBody(element);
  _doPrintElement(element, body != nullptr ? body->nodeTag() : tag);
}

void KepRDOMWriter::_doPrintElement(KepDOMElement& element, int tag) {
  KepRDOMElement* body = elementBody(element);
  if (body != nullptr) emitElement(body, tag, &element);
}

void KepRDOMWriter::offerAttribute(KepRDOMElement* body, KepDOMElement* handle,
                                   KepRDOMNode* attribute, int nameTag, KepString const& value) {
  TagName const& name = tagName(nameTag);
  if (handle == nullptr) {
    if (attributeAllowed(nameTag, value)) emitAttribute(body, attribute, name.name, value);
    return;
  }
  KepDOMAttribute attributeHandle = _KepDOMHandle<KepDOMAttribute>(attribute);
  KepString nameCopy = name.name;
  KepString valueCopy = value;
  if (_shouldPrintAttribute(*handle, attributeHandle, nameCopy, valueCopy)) {
    _printAttribute(*handle, attributeHandle, nameCopy, valueCopy);
  }
}

void KepRDOMWriter::emitElement(KepRDOMElement* body, int tag, KepDOMElement* handle) {
  KepRDOMElement* outerElement = hookElement;
  bool outerHookOn = hookOn;
  hookElement = body;
  hookOn = false;
  bool hooks = askHook(body, KepDOMWriter::ELEMENT_TRANSFORM) != 0;
  hookOn = hooks;

  if (!elementStep(KepDOMWriter::ELEMENT_BEFORE_OPEN)) out.put('<');
  std::string const& elementName = tagName(tag).bytes;
  if (!elementStep(KepDOMWriter::ELEMENT_BEFORE_NAME)) {
    out.put(elementName.data(), elementName.size());
  }

  KepRDOMAttributeList* attributes = body->existingAttributes();
  if (attributes != nullptr && attributes->size() > 0) registerDeclaredNamespaces(body);
  if (needsDeclaration(body->prefixTag(), body->uriTag()) &&
      !elementStep(KepDOMWriter::ELEMENT_BEFORE_NAMESPACE)) {
    if (handle != nullptr) {
      printNamespaceDecl(*handle);
    } else {
      writeDeclaration(body->prefixTag(), body->uriTag());
    }
  }

  if (!elementStep(KepDOMWriter::ELEMENT_BEFORE_ATTRIBUTES)) {
    for (int i = 0; attributes != nullptr && i < attributes->size(); ++i) {
      auto* item = static_cast<KepRDOMAttribute*>(attributes->at(i));
      if (handle == nullptr && view == nullptr) {
        // Nothing to ask and nothing to filter: the value's body is written as it is.
        emitAttribute(body, item, tagName(item->nodeTag()).name, stringBody(item->valueBody()));
      } else {
        offerAttribute(body, handle, item, item->nodeTag(), item->valueRef());
      }
    }
  }

  int classId = body->getClassID();
  if (classId != KepClassID::DOMElement && body->findAttribute(tagDt) == nullptr) {
    offerAttribute(body, handle, nullptr, tagDt, tagName(classId).name);
  }

  int service = body->getService();
  if (service != 0 && body->findAttribute(tagXs) == nullptr) {
    KepString value = tagName(service).name;
    bool allowed;
    if (handle == nullptr) {
      allowed = attributeAllowed(tagXs, value);
    } else {
      KepDOMAttribute none;
      KepString name = tagName(tagXs).name;
      allowed = _shouldPrintAttribute(*handle, none, name, value) != 0;
    }
    if (allowed) {
      out.put(" xs=\"", 5);
      putString(value);
      out.put('"');
    }
  }

  hasChildren = 0;
  if (!elementStep(KepDOMWriter::ELEMENT_BEFORE_CHILDREN)) {
    if (body->firstBody() != nullptr) {
      notifyElementBegin(1);
      printChildren(body);
      hookElement = body;
      hookOn = hooks;
      notifyElementEnd(1);
      elementStep(KepDOMWriter::ELEMENT_AFTER_CHILDREN);
    } else {
      notifyElementBegin(0);
    }
  }
  if (hasChildren != 0 && !elementStep(KepDOMWriter::ELEMENT_BEFORE_END_TAG)) {
    out.put("</", 2);
    out.put(elementName.data(), elementName.size());
    out.put('>');
  }
  hookElement = outerElement;
  hookOn = outerHookOn;
}

void KepRDOMWriter::_printAttribute(KepDOMElement& element, KepDOMAttribute& attribute,
                                    KepString& name, KepString& value) {
  emitAttribute(elementBody(element), nodeBody(attribute), name, value);
}

void KepRDOMWriter::emitAttribute(KepRDOMElement* element, KepRDOMNode* attribute,
                                  KepString const& name, KepString const& value) {
  emitAttribute(element, attribute, name, stringBody(value));
}

void KepRDOMWriter::emitAttribute(KepRDOMElement* element, KepRDOMNode* attribute,
                                  KepString const& name, KepRString const* value) {
  if (!elementStep(KepDOMWriter::ATTRIBUTE_BEFORE)) {
    out.put(' ');
    putString(name);
    out.put("=\"", 2);
    // Attribute values are written as they stand.
    if (value != nullptr) out.putNarrow(value->units(), static_cast<size_t>(value->unitCount()));
    out.put('"');
  }
  if (!elementStep(KepDOMWriter::ATTRIBUTE_AFTER) && attribute != nullptr &&
      attribute->prefixTag() != 0 && attribute->uriTag() != 0 &&
      needsDeclaration(attribute->prefixTag(), attribute->uriTag())) {
    if (direct) {
      writeDeclaration(attribute->prefixTag(), attribute->uriTag());
    } else {
      KepDOMNode attributeHandle = _KepDOMHandle<KepDOMNode>(attribute);
      if (element != nullptr) {
        KepDOMElement owner = _KepDOMHandle<KepDOMElement>(element);
        printNamespaceDecl(owner, attributeHandle);
      } else {
        printNamespaceDecl(attributeHandle);
      }
    }
  }
}

unsigned long KepRDOMWriter::_shouldPrintText(KepDOMText& /*text*/, KepString& /*value*/) {
  return 1;
}

void KepRDOMWriter::_printText(KepDOMText& text, KepString& value) {
  KepRDOMNode* node = nodeBody(text);
  if (node != nullptr) emitText(node, value);
}

void KepRDOMWriter::emitText(KepRDOMNode* node, KepString const& value) {
  emitText(node, stringBody(value));
}

void KepRDOMWriter::emitText(KepRDOMNode* node, KepRString const* value) {
  if (!askHook(node, KepDOMWriter::TEXT_BEFORE) && value != nullptr) {
    out.putEscaped(value->units(), static_cast<size_t>(value->unitCount()));
  }
  askHook(node, KepDOMWriter::TEXT_AFTER);
}

// --- Views --------------------------------------------------------------------------

bool KepRDOMWriter::elementAllowed(int tag) const {
  return view == nullptr || !view->hasInclude || view->include.count(tag) != 0;
}

bool KepRDOMWriter::attributeAllowed(int nameTag, KepString const& value) const {
  if (view == nullptr || !view->hasIncludeAttribute) return true;
  auto found = view->includeAttribute.find(nameTag);
  if (found == view->includeAttribute.end()) return false;
  KepString const& notValue = found->second;
  if (notValue.isNull()) return true;
  return notValue.indexOf(value.isNull() ? KepString("") : value) < 0;
}

unsigned long KepRDOMWriter::_shouldPrintElement(KepDOMElement& /*element*/, int tag) {
  return elementAllowed(tag) ? 1 : 0;
}

unsigned long KepRDOMWriter::_shouldPrintAttribute(KepDOMElement& /*element*/,
                                                   KepDOMAttribute& /*attribute*/, KepString& name,
                                                   KepString& value) {
  return attributeAllowed(KepRDOMNode::knownTagOf(name), value) ? 1 : 0;
}

unsigned long KepRDOMWriter::_transformNode(KepDOMElement& /*element*/, int /*tag*/) {
  // Elements named under the view's "Publish" are to be offered to subscribers
  // as a "PreSerializeNode" event, whose "NodeOut" or "NewNodes" parameters
  // would be printed in their place. Events are not part of the library yet,
  // so every element is printed as it is.
  return 0;
}

void* KepRDOMWriter::compileView(KepDOMDocument& document) {
  KepRDOMElement* root = elementBody(document.getDocumentElement());
  if (root == nullptr) return nullptr;
  auto* compiled = new _KepDOMWriterView();
  int includeTag = KepRDOMNode::tagOf(KepString("Include"));
  int includeAttributeTag = KepRDOMNode::tagOf(KepString("IncludeAttribute"));
  int publishTag = KepRDOMNode::tagOf(KepString("Publish"));
  int notValueTag = KepRDOMNode::tagOf(KepString("notvalue"));
  for (KepRDOMNode* part = root->firstBody(); part != nullptr; part = part->nextBody()) {
    KepRDOMElement* section = part->asElement();
    if (section == nullptr) continue;
    int sectionTag = section->nodeTag();
    for (KepRDOMNode* item = section->firstBody(); item != nullptr; item = item->nextBody()) {
      KepRDOMElement* entry = item->asElement();
      if (entry == nullptr) continue;
      if (sectionTag == includeTag) {
        compiled->include.insert(entry->nodeTag());
      } else if (sectionTag == includeAttributeTag) {
        KepRDOMAttribute* notValue = entry->findAttribute(notValueTag);
        compiled->includeAttribute[entry->nodeTag()] =
            notValue != nullptr ? notValue->getNodeValue() : KepString();
      } else if (sectionTag == publishTag) {
        compiled->publish.insert(entry->nodeTag());
      }
    }
    if (sectionTag == includeTag) compiled->hasInclude = true;
    if (sectionTag == includeAttributeTag) compiled->hasIncludeAttribute = true;
    if (sectionTag == publishTag) compiled->hasPublish = true;
  }
  return compiled;
}

void KepRDOMWriter::freeView(void* compiled) { delete static_cast<_KepDOMWriterView*>(compiled); }

void KepRDOMWriter::registerView(KepString const& service, KepString const& name, void* compiled) {
  ViewRegistry& registry = ViewRegistry::get();
  std::lock_guard<std::mutex> guard(registry.lock);
  std::u16string key = ViewRegistry::key(service, name);
  if (compiled == nullptr) {
    registry.views.erase(key);
  } else {
    registry.views[key] = compiled;
  }
}

// --- Namespaces ---------------------------------------------------------------------

void KepRDOMWriter::nsStackPush() { ++frameDepth; }

void KepRDOMWriter::nsStackPop() {
  if (frameDepth == 0) return;
  while (!bindings.empty() && bindings.back().frame >= frameDepth) bindings.pop_back();
  --frameDepth;
}

void KepRDOMWriter::registerNS(KepString const& prefix, KepString const& uri) {
  if (frameDepth == 0) nsStackPush();
  bindings.push_back(
      {prefix.isNull() ? KepString("") : prefix, uri.isNull() ? KepString("") : uri, frameDepth});
}

KepString KepRDOMWriter::lookupNS(KepString const& prefix) const {
  KepString wanted = prefix.isNull() ? KepString("") : prefix;
  for (auto binding = bindings.rbegin(); binding != bindings.rend(); ++binding) {
    if (binding->prefix.equals(wanted)) return binding->uri;
  }
  return KepString();
}

void KepRDOMWriter::registerDeclaredNamespaces(KepRDOMElement* element) {
  KepRDOMAttributeList* attributes = element->existingAttributes();
  for (int i = 0; i < attributes->size(); ++i) {
    auto* item = static_cast<KepRDOMAttribute*>(attributes->at(i));
    TagName const& name = tagName(item->nodeTag());
    if (!name.declaration) continue;
    registerNS(name.bytes.size() == 5 ? KepString("") : name.name.substring(6), item->valueRef());
  }
}

bool KepRDOMWriter::needsDeclaration(int prefixTag, int uriTag) {
  if (uriTag == 0) {
    // No namespace: only an element inside a default namespace needs one
    // (xmlns="" takes the default away).
    if (prefixTag != 0 || bindings.empty()) return false;
    KepString current = lookupNS(KepString(""));
    return !current.isNull() && current.length() > 0;
  }
  std::string const& prefix = tagName(prefixTag).bytes;
  if (prefix == "xml" || prefix == "xmlns") return false;  // bound by XML itself
  KepString current = lookupNS(tagName(prefixTag).name);
  return current.isNull() || !current.equals(tagName(uriTag).name);
}

void KepRDOMWriter::writeDeclaration(int prefixTag, int uriTag) {
  TagName const& prefix = tagName(prefixTag);
  TagName const& uri = tagName(uriTag);
  out.put(" xmlns", 6);
  if (!prefix.bytes.empty()) {
    out.put(':');
    out.put(prefix.bytes.data(), prefix.bytes.size());
  }
  out.put("=\"", 2);
  out.put(uri.bytes.data(), uri.bytes.size());
  out.put('"');
  registerNS(prefixTag != 0 ? prefix.name : KepString(""), uriTag != 0 ? uri.name : KepString(""));
}

void KepRDOMWriter::printNamespaceDecl(KepDOMNode& node) {
  KepRDOMNode* body = nodeBody(node);
  if (body != nullptr) writeDeclaration(body->prefixTag(), body->uriTag());
}

void KepRDOMWriter::printNamespaceDecl(KepDOMElement& /*element*/, KepDOMNode& node) {
  printNamespaceDecl(node);
}

// --- Static forms -------------------------------------------------------------------

int KepRDOMWriter::normalizedWrite(KepIOStream& stream, KepString const& text) {
  KepRString const* body = stringBody(text);
  if (body == nullptr || body->unitCount() == 0) return 0;
  size_t count = static_cast<size_t>(body->unitCount());
  Output local(std::min(kBufferSize, count * kMaxEscape));
  local.setStream(stream);
  size_t produced = local.putEscaped(body->units(), count);
  local.flush();
  return static_cast<int>(produced);
}

KEP_REGISTER_LIBRARY_CLASS(DOMWriter);
