#include "kep/xml/KepRDOMNode.h"

#include <atomic>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepStringBuffer.h"
#include "kep/base/KepThreadError.h"
#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepDOMNamedNodeMap.h"
#include "kep/xml/KepDOMNodeList.h"
#include "kep/xml/KepRDOMAttributeList.h"
#include "kep/xml/KepRDOMDocument.h"
#include "kep/xml/KepRDOMElement.h"
#include "kep/xml/KepRDOMNodeList.h"
#include "kep/xml/KepRDOMParentNode.h"
#include "kep/xml/KepXPointer.h"
#include "kep/xml/_KepDOMDocAnchor.h"

KEP_REGISTER_LIBRARY_CLASS(DOMNode);

namespace {

// The change log of a node that captures (or captured) changes.
struct Capture {
  bool on = false;
  KepDOMElement log;
};

// The change logs, by node: few nodes ever capture, so the nodes keep only a
// flag (kHasCapture) instead of a pointer each. Logs are never released while
// the lock is held: releasing a log frees its nodes, which may look here
// themselves.
struct CaptureTable {
  std::mutex guard;
  std::unordered_map<KepRDOMNode const*, Capture> logs;
};

CaptureTable& captures() {
  static CaptureTable* const table = new CaptureTable();
  return *table;
}

// Nodes of the process that capture changes right now; while 0 no change is
// looked at.
std::atomic<int> gCapturing{0};
// Set while a change record is being written, so that writing it (which changes
// the log) records nothing.
thread_local bool tRecording = false;

char const* changeName(KepRDOMNode::ChangeKind kind) {
  switch (kind) {
    case KepRDOMNode::kChildInserted:
      return "ChildInserted";
    case KepRDOMNode::kChildRemoved:
      return "ChildRemoved";
    case KepRDOMNode::kValueChanged:
      return "ValueChanged";
    case KepRDOMNode::kNameChanged:
      return "NameChanged";
    case KepRDOMNode::kAttributeChanged:
      break;
  }
  return "AttributeChanged";
}

// Copies the children of `from` below `to` (a new copy of `from`), the whole
// subtree, without recursion.
void copyChildren(KepRDOMNode const& from, KepRDOMNode& to) {
  std::vector<std::pair<KepRDOMNode const*, KepRDOMParentNode*>> work;
  work.emplace_back(&from, to.asParent());
  while (!work.empty()) {
    auto [source, target] = work.back();
    work.pop_back();
    KepRDOMParentNode const* sourceParent = source->asParent();
    if (sourceParent == nullptr || target == nullptr) continue;
    for (KepRDOMNode* child = sourceParent->firstBody(); child != nullptr;
         child = child->nextBody()) {
      KepObject holder = child->shallowCopy();
      KepRDOMNode* copy = KepRDOMNode::of(holder);
      if (copy == nullptr) continue;
      copy->adoptOne(target->childAnchor());
      target->appendFresh(copy);
      KepRDOMParentNode const* childParent = child->asParent();
      if (childParent != nullptr && childParent->firstBody() != nullptr) {
        work.emplace_back(child, copy->asParent());
      }
    }
  }
}

KepRDOMNode* firstOfType(KepRDOMNode* node, int type) {
  while (node != nullptr && node->getNodeType() != type) node = node->nextBody();
  return node;
}

}  // namespace

KepRDOMNode::KepRDOMNode() noexcept
    : parent(nullptr),
      previous(nullptr),
      next(nullptr),
      owner(nullptr),
      nodeID(0),
      prefixID(0),
      localID(0),
      uriID(0),
      nodeFlags(0) {}

KepRDOMNode::~KepRDOMNode() {
  if ((nodeFlags & kHasCapture) != 0) {
    Capture gone;
    {
      CaptureTable& table = captures();
      std::lock_guard<std::mutex> hold(table.guard);
      auto it = table.logs.find(this);
      if (it != table.logs.end()) {
        gone = std::move(it->second);
        table.logs.erase(it);
      }
    }
    if (gone.on) gCapturing.fetch_sub(1, std::memory_order_relaxed);
  }
  if (owner != nullptr) owner->release();
}

// --- Identity and names --------------------------------------------------------

KepRDOMNode* KepRDOMNode::of(KepObject const& handle) {
  KepRObject* body = handle.getRealKepObj();
  return body != nullptr ? dynamic_cast<KepRDOMNode*>(body) : nullptr;
}

KepRDOMParentNode* KepRDOMNode::asParent() const noexcept { return nullptr; }

KepRDOMElement* KepRDOMNode::asElement() const noexcept { return nullptr; }

int KepRDOMNode::defaultNodeID() const { return getClassID(); }

int KepRDOMNode::nodeTag() const { return nodeID != 0 ? nodeID : defaultNodeID(); }

void KepRDOMNode::setNames(int id, int prefix, int local, int uri) noexcept {
  nodeID = id;
  prefixID = prefix;
  localID = local;
  uriID = uri;
}

int KepRDOMNode::tagOf(KepString const& name) { return name.isNull() ? 0 : KepNameToTag(name); }

void KepRDOMNode::recordError(int code, char const* method, char const* source, int line) {
  KepDOMElement error = KepSetThreadError(KepString("DOMError"), source, line);
  error.set(KepString("Code"), code);
  error.set(KepString("Method"), KepString(method));
}

int KepRDOMNode::knownTagOf(KepString const& name) {
  return name.isNull() ? 0 : KepProcess::nameToTag(name);
}

KepString KepRDOMNode::nameOf(int tag) {
  return tag != 0 ? KepProcess::tagToName(tag) : KepString();
}

bool KepRDOMNode::qualifiedTags(KepString const& uri, KepString const& qualifiedName, int& id,
                                int& prefix, int& local, int& uriTag) {
  static KepString const xmlPrefix("xml");
  static KepString const xmlnsName("xmlns");
  static KepString const xmlUri("http://www.w3.org/XML/1998/namespace");
  static KepString const xmlnsUri("http://www.w3.org/2000/xmlns/");
  if (qualifiedName.isNull() || qualifiedName.length() == 0) return false;
  bool hasUri = !uri.isNull() && uri.length() > 0;
  int colon = qualifiedName.indexOf(static_cast<unsigned short>(':'));
  KepString prefixName;
  KepString localName = qualifiedName;
  if (colon >= 0) {
    if (colon == 0 || colon == qualifiedName.length() - 1 || !hasUri) return false;
    prefixName = qualifiedName.substring(0, colon);
    localName = qualifiedName.substring(colon + 1);
    if (localName.indexOf(static_cast<unsigned short>(':')) >= 0) return false;
    if (prefixName.equals(xmlPrefix) && !uri.equals(xmlUri)) return false;
    if (prefixName.equals(xmlnsName) && !uri.equals(xmlnsUri)) return false;
  } else if (qualifiedName.equals(xmlnsName) && !(hasUri && uri.equals(xmlnsUri))) {
    return false;
  }
  int idTag = tagOf(qualifiedName);
  int localTag = tagOf(localName);
  int namespaceTag = hasUri ? tagOf(uri) : 0;
  if (idTag == 0 || localTag == 0 || (hasUri && namespaceTag == 0)) return false;
  id = idTag;
  prefix = colon >= 0 ? tagOf(prefixName) : 0;
  local = localTag;
  uriTag = namespaceTag;
  return true;
}

unsigned long KepRDOMNode::equals(KepObject const& other) const {
  return other.getRealKepObj() == this ? 1 : 0;
}

KepString KepRDOMNode::toString() const {
  KepString value = getNodeValue();
  return value.isNull() ? getNodeName() : value;
}

KepString KepRDOMNode::getNodeName() const { return nameOf(nodeTag()); }

KepString KepRDOMNode::getLocalName() const { return nameOf(localID); }

KepString KepRDOMNode::getNamespaceURI() const { return nameOf(uriID); }

int KepRDOMNode::getNamespaceURIID() const { return uriID; }

KepString KepRDOMNode::getPrefix() const { return nameOf(prefixID); }

int KepRDOMNode::getPrefixID() const { return prefixID; }

int KepRDOMNode::getNodeID() const { return nodeTag(); }

void KepRDOMNode::nameChanged() {
  // A renamed child may enter or leave a live list filtered by name.
  if (parent != nullptr) parent->asParent()->bumpStamp();
  noteChange(kNameChanged, this);
}

void KepRDOMNode::setNodeName(KepString const& name) { setNodeID(tagOf(name)); }

void KepRDOMNode::setLocalName(KepString const& name) { setNodeLocalID(tagOf(name)); }

void KepRDOMNode::setNamespaceURI(KepString const& uri) { setNodeNamespaceURI(tagOf(uri)); }

void KepRDOMNode::setPrefix(KepString const& prefix) { setNodePrefix(tagOf(prefix)); }

void KepRDOMNode::setNodeID(int tag) {
  nodeID = tag;
  nameChanged();
}

void KepRDOMNode::setNodePrefix(int tag) {
  prefixID = tag;
  nameChanged();
}

void KepRDOMNode::setNodeLocalID(int tag) {
  localID = tag;
  nameChanged();
}

void KepRDOMNode::setNodeNamespaceURI(int tag) {
  uriID = tag;
  nameChanged();
}

// --- Content ---------------------------------------------------------------------

int KepRDOMNode::getNodeType() const { return 0; }

KepString KepRDOMNode::getNodeValue() const { return KepString(); }

void KepRDOMNode::setNodeValue(KepString const&) {}

void KepRDOMNode::valueChanged() {
  if (parent != nullptr) parent->asParent()->childrenChanged();
  noteChange(kValueChanged, this);
}

KepDOMNamedNodeMap KepRDOMNode::getAttributes() { return KepDOMNamedNodeMap(); }

unsigned long KepRDOMNode::hasAttributes() const { return 0; }

int KepRDOMNode::transferAttribs(KepDOMNode&) { return 0; }

void KepRDOMNode::setNodePersistence(unsigned long persistent) {
  if (persistent != 0) {
    nodeFlags |= kPersistent;
  } else {
    nodeFlags &= ~kPersistent;
  }
}

// --- Tree --------------------------------------------------------------------------

KepDOMNode KepRDOMNode::getParentNode() const { return _KepDOMHandle<KepDOMNode>(parent); }

KepDOMNode KepRDOMNode::getPreviousSibling() const { return _KepDOMHandle<KepDOMNode>(previous); }

KepDOMNode KepRDOMNode::getNextSibling() const { return _KepDOMHandle<KepDOMNode>(next); }

KepDOMNode KepRDOMNode::getNextSibling(int nodeType) const {
  return _KepDOMHandle<KepDOMNode>(firstOfType(next, nodeType));
}

KepDOMNode KepRDOMNode::getFirstChild() const {
  KepRDOMParentNode* self = asParent();
  return _KepDOMHandle<KepDOMNode>(self != nullptr ? self->firstBody() : nullptr);
}

KepDOMNode KepRDOMNode::getFirstChild(int nodeType) const {
  KepRDOMParentNode* self = asParent();
  return _KepDOMHandle<KepDOMNode>(self != nullptr ? firstOfType(self->firstBody(), nodeType)
                                                   : nullptr);
}

KepDOMNode KepRDOMNode::getLastChild() const {
  KepRDOMParentNode* self = asParent();
  return _KepDOMHandle<KepDOMNode>(self != nullptr ? self->lastBody() : nullptr);
}

unsigned long KepRDOMNode::hasChildNodes() const {
  KepRDOMParentNode* self = asParent();
  return self != nullptr && self->firstBody() != nullptr ? 1 : 0;
}

KepDOMNodeList KepRDOMNode::getChildNodes() const {
  auto* list = new KepRDOMNodeList();
  list->showChildren(asParent(), 0);
  return KepDOMNodeList(static_cast<KepBridgeToObject*>(list));
}

// The tree changers refuse bad arguments with a null answer and record the W3C
// exception code on the calling thread.
KepDOMNode KepRDOMNode::appendChild(KepDOMNode const& newChild) {
  return insertBefore(newChild, KepDOMNode());
}

KepDOMNode KepRDOMNode::insertBefore(KepDOMNode const& newChild, KepDOMNode const& refChild) {
  KepRDOMParentNode* self = asParent();
  KepRDOMNode* child = of(newChild);
  KepRDOMNode* ref = of(refChild);
  // A non-null handle on something that is not a node is no node at all.
  if (self == nullptr || child == nullptr || (ref == nullptr && !refChild.isNull())) {
    recordError(self == nullptr ? kHierarchyRequestErr : kNotFoundErr, "insertBefore",
                "xml/KepRDOMNode", __LINE__);
    return KepDOMNode();
  }
  KepRDOMNode* inserted = self->insertNode(child, ref);
  if (inserted == nullptr) {
    recordError(ref != nullptr && ref->parent != self ? kNotFoundErr : kHierarchyRequestErr,
                "insertBefore", "xml/KepRDOMNode", __LINE__);
  }
  return _KepDOMHandle<KepDOMNode>(inserted);
}

KepDOMNode KepRDOMNode::removeChild(KepDOMNode const& oldChild) {
  KepRDOMParentNode* self = asParent();
  KepRDOMNode* child = of(oldChild);
  if (self == nullptr || child == nullptr || child->parent != self) {
    recordError(kNotFoundErr, "removeChild", "xml/KepRDOMNode", __LINE__);
    return KepDOMNode();
  }
  return self->removeNode(child);
}

KepDOMNode KepRDOMNode::replaceChild(KepDOMNode const& newChild, KepDOMNode const& oldChild) {
  KepRDOMParentNode* self = asParent();
  KepRDOMNode* child = of(newChild);
  KepRDOMNode* old = of(oldChild);
  if (self == nullptr || child == nullptr || old == nullptr) {
    recordError(self == nullptr ? kHierarchyRequestErr : kNotFoundErr, "replaceChild",
                "xml/KepRDOMNode", __LINE__);
    return KepDOMNode();
  }
  KepDOMNode replaced = self->replaceNode(child, old);
  if (replaced.isNull()) {
    recordError(old->parent != self ? kNotFoundErr : kHierarchyRequestErr, "replaceChild",
                "xml/KepRDOMNode", __LINE__);
  }
  return replaced;
}

int KepRDOMNode::transferChildren(KepDOMNode& to) {
  KepRDOMParentNode* self = asParent();
  KepRDOMNode* target = of(to);
  KepRDOMParentNode* targetParent = target != nullptr ? target->asParent() : nullptr;
  if (self == nullptr || targetParent == nullptr || targetParent == self) return 0;
  int moved = 0;
  KepRDOMNode* child = self->firstBody();
  while (child != nullptr) {
    KepRDOMNode* following = child->nextBody();
    if (targetParent->insertNode(child, nullptr) != nullptr) ++moved;
    child = following;
  }
  return moved;
}

bool KepRDOMNode::isAncestorOf(KepRDOMNode const* node) const noexcept {
  // A node without children is nobody's ancestor but its own.
  KepRDOMParentNode const* self = asParent();
  if (self == nullptr || self->firstBody() == nullptr) return node == this;
  for (KepRDOMNode const* n = node; n != nullptr; n = n->parent) {
    if (n == this) return true;
  }
  return false;
}

KepRDOMNode* KepRDOMNode::nextInSubtree(KepRDOMNode const* node, KepRDOMNode const* root) {
  KepRDOMParentNode const* asParentNode = node->asParent();
  if (asParentNode != nullptr && asParentNode->firstBody() != nullptr) {
    return asParentNode->firstBody();
  }
  while (node != root && node != nullptr) {
    if (node->next != nullptr) return node->next;
    node = node->parent;
  }
  return nullptr;
}

// --- Documents ---------------------------------------------------------------------

_KepDOMDocAnchor* KepRDOMNode::childAnchor() const noexcept { return owner; }

void KepRDOMNode::adoptOne(_KepDOMDocAnchor* anchor) {
  if (anchor == owner) return;
  if (anchor != nullptr) anchor->addRef();
  if (owner != nullptr) owner->release();
  owner = anchor;
}

void KepRDOMNode::adoptSubtree(_KepDOMDocAnchor* anchor) {
  for (KepRDOMNode* n = this; n != nullptr; n = nextInSubtree(n, this)) n->adoptOne(anchor);
}

KepRDOMDocument* KepRDOMNode::getOwnerRDocument() const {
  if (owner != nullptr) return owner->get();
  // A node no document made belongs to the process's default document, which
  // the factory keeps alive.
  KepDOMDocument fallback = KepFactory::getDefaultDoc();
  KepRObject* body = fallback.getRealKepObj();
  return body != nullptr ? dynamic_cast<KepRDOMDocument*>(body) : nullptr;
}

KepDOMDocument KepRDOMNode::getOwnerDocument() const {
  return _KepDOMHandle<KepDOMDocument>(getOwnerRDocument());
}

// --- Copies ------------------------------------------------------------------------

KepObject KepRDOMNode::shallowCopy() const {
  KepObject copy = createAnother();
  KepRDOMNode* body = of(copy);
  if (body == nullptr) return KepObject();
  copyInto(*body);
  return copy;
}

void KepRDOMNode::copyInto(KepRDOMNode& copy) const {
  copy.setNames(nodeID, prefixID, localID, uriID);
  copy.nodeFlags = nodeFlags & kPersistent;
  copy.setService(getService());
  copy.adoptOne(owner);
}

KepDOMNode KepRDOMNode::cloneNode(unsigned long deep) const {
  KepObject holder = shallowCopy();
  KepRDOMNode* copy = of(holder);
  if (copy == nullptr) return KepDOMNode();
  if (deep != 0) copyChildren(*this, *copy);
  return _KepDOMHandle<KepDOMNode>(copy);
}

// --- Hooks ---------------------------------------------------------------------------

unsigned long KepRDOMNode::serializeAsXML(KepDOMWriter&) { return 0; }

unsigned long KepRDOMNode::traverse(KepVisitor&) { return 0; }

void KepRDOMNode::beginFromXML() {}

void KepRDOMNode::endFromXML(int) {}

void KepRDOMNode::_beginFromXML(KepXMLParser&) { beginFromXML(); }

void KepRDOMNode::_endFromXML(int mode, KepXMLParser&) { endFromXML(mode); }

// --- Paths -------------------------------------------------------------------------

KepString KepRDOMNode::pathFrom(KepRDOMNode const* from, bool& found) const {
  std::vector<int> tags;
  found = from == nullptr;
  for (KepRDOMNode const* n = this; n != nullptr; n = n->parent) {
    if (n == from) {
      found = true;
      break;
    }
    if (n->asElement() != nullptr) tags.push_back(n->nodeTag());
  }
  if (!found) return KepString();
  KepStringBuffer path("");
  for (auto it = tags.rbegin(); it != tags.rend(); ++it) {
    if (it != tags.rbegin()) path.append(static_cast<unsigned short>('.'));
    path.append(nameOf(*it));
  }
  return path.toString();
}

KepXPointer KepRDOMNode::getXPointer(KepDOMElement const& from) const {
  KepRDOMNode const* start = of(from);
  if (start == nullptr && !from.isNull()) return KepXPointer();
  bool found = false;
  KepString path = pathFrom(start, found);
  if (!found || path.length() == 0) return KepXPointer();
  return KepXPointer(path);
}

// --- Change capture ------------------------------------------------------------------

void KepRDOMNode::captureChangesON() {
  auto* fresh = new KepRDOMElement();
  fresh->setNames(KepNameToTag("Changes"), 0, 0, 0);
  KepDOMElement log(static_cast<KepBridgeToObject*>(fresh));
  CaptureTable& table = captures();
  // The old log (if any) is released after the lock.
  KepDOMElement old;
  {
    std::lock_guard<std::mutex> hold(table.guard);
    Capture& c = table.logs[this];
    if (!c.on) gCapturing.fetch_add(1, std::memory_order_relaxed);
    c.on = true;
    old = c.log;
    c.log = log;
  }
  nodeFlags |= kHasCapture;
}

namespace {

// The log of `node` (a null element when it has none), and whether it is on.
KepDOMElement captureOf(KepRDOMNode const* node, bool& on) {
  CaptureTable& table = captures();
  std::lock_guard<std::mutex> hold(table.guard);
  auto it = table.logs.find(node);
  on = it != table.logs.end() && it->second.on;
  return it != table.logs.end() ? it->second.log : KepDOMElement();
}

}  // namespace

void KepRDOMNode::captureChangesOFF() {
  if ((nodeFlags & kHasCapture) == 0) return;
  CaptureTable& table = captures();
  std::lock_guard<std::mutex> hold(table.guard);
  auto it = table.logs.find(this);
  if (it == table.logs.end() || !it->second.on) return;
  it->second.on = false;
  gCapturing.fetch_sub(1, std::memory_order_relaxed);
}

KepDOMElement KepRDOMNode::getChanges() const {
  if ((nodeFlags & kHasCapture) == 0) return KepDOMElement();
  bool on = false;
  return captureOf(this, on);
}

unsigned long KepRDOMNode::capturingChanges() const {
  if ((nodeFlags & kHasCapture) == 0) return 0;
  bool on = false;
  captureOf(this, on);
  return on ? 1 : 0;
}

void KepRDOMNode::noteChange(ChangeKind kind, KepRDOMNode const* involved) const {
  if (gCapturing.load(std::memory_order_relaxed) == 0 || tRecording) return;
  tRecording = true;
  for (KepRDOMNode const* n = this; n != nullptr; n = n->parent) {
    if ((n->nodeFlags & kHasCapture) == 0) continue;
    bool on = false;
    KepDOMElement log = captureOf(n, on);
    if (!on) continue;
    bool found = false;
    KepString path = pathFrom(n, found);
    KepDOMElement record = log.set(KepString(changeName(kind)));
    record.set(KepString("Path"), path);
    record.set(KepString("Node"), involved != nullptr ? involved->getNodeName() : KepString());
  }
  tRecording = false;
}
