#include "kep/xml/KepRDOMNamedNodeMap.h"

#include <algorithm>

#include "kep/base/KepFactory.h"
#include "kep/xml/KepRDOMNode.h"

KEP_REGISTER_LIBRARY_CLASS(DOMNamedNodeMap);

KepRDOMNamedNodeMap::KepRDOMNamedNodeMap() noexcept : owner(nullptr) {}

KepRDOMNamedNodeMap::KepRDOMNamedNodeMap(KepRDOMNode** room, int roomSize) noexcept
    : nodes(room, roomSize), owner(nullptr) {}

KepRDOMNamedNodeMap::Nodes::~Nodes() {
  if (owned) delete[] data;
}

void KepRDOMNamedNodeMap::Nodes::erase(std::size_t index) noexcept {
  std::copy(data + index + 1, data + count, data + index);
  --count;
}

void KepRDOMNamedNodeMap::Nodes::grow(std::size_t total) {
  std::size_t more = std::max<std::size_t>(total, std::size_t{capacity} * 2);
  if (more < 4) more = 4;
  auto* bigger = new KepRDOMNode*[more];
  std::copy(data, data + count, bigger);
  if (owned) delete[] data;
  data = bigger;
  capacity = static_cast<uint32_t>(more);
  owned = true;
}

KepRDOMNamedNodeMap::~KepRDOMNamedNodeMap() {
  for (KepRDOMNode* node : nodes) node->release();
}

void KepRDOMNamedNodeMap::ownerGone() {
  for (KepRDOMNode* node : nodes) detached(*node);
  owner = nullptr;
}

bool KepRDOMNamedNodeMap::accepts(KepRDOMNode const& node) const {
  int type = node.getNodeType();
  return type != KepDOMNode::DOCUMENT_NODE && type != KepDOMNode::DOCUMENT_FRAGMENT_NODE &&
         type != KepDOMNode::ATTRIBUTE_NODE;
}

void KepRDOMNamedNodeMap::attached(KepRDOMNode&) {}

void KepRDOMNamedNodeMap::detached(KepRDOMNode&) {}

KepRDOMNode* KepRDOMNamedNodeMap::at(int index) const noexcept {
  return index >= 0 && index < size() ? nodes[static_cast<std::size_t>(index)] : nullptr;
}

int KepRDOMNamedNodeMap::find(int tag) const {
  if (tag == 0) return -1;
  for (int i = 0; i < size(); ++i) {
    if (nodes[static_cast<std::size_t>(i)]->nodeTag() == tag) return i;
  }
  return -1;
}

int KepRDOMNamedNodeMap::findNS(int uriTag, int localTag) const {
  if (localTag == 0) return -1;
  for (int i = 0; i < size(); ++i) {
    KepRDOMNode const* node = nodes[static_cast<std::size_t>(i)];
    if (node->uriTag() == uriTag && node->localOrNodeTag() == localTag) return i;
  }
  return -1;
}

int KepRDOMNamedNodeMap::indexOfBody(KepRDOMNode const* node) const noexcept {
  for (int i = 0; i < size(); ++i) {
    if (nodes[static_cast<std::size_t>(i)] == node) return i;
  }
  return -1;
}

bool KepRDOMNamedNodeMap::namespaceTags(KepString const& uri, KepString const& localName,
                                        int& uriTag, int& localTag) {
  // An empty URI is no namespace, like a null one.
  bool hasUri = !uri.isNull() && uri.length() > 0;
  uriTag = hasUri ? KepRDOMNode::knownTagOf(uri) : 0;
  localTag = KepRDOMNode::knownTagOf(localName);
  return localTag != 0 && (!hasUri || uriTag != 0);
}

KepDOMNode KepRDOMNamedNodeMap::put(KepRDOMNode* node, bool byNS, bool& refused) {
  refused = node == nullptr || !accepts(*node);
  if (refused) return KepDOMNode();
  int present = indexOfBody(node);
  // Another node of the same name (the node itself may have been renamed since
  // it came in).
  int same = -1;
  int tag = node->nodeTag();
  int uri = node->uriTag();
  int local = node->localOrNodeTag();
  for (int i = 0; i < size() && same < 0; ++i) {
    KepRDOMNode const* other = nodes[static_cast<std::size_t>(i)];
    if (other == node) continue;
    if (byNS ? other->uriTag() == uri && other->localOrNodeTag() == local
             : other->nodeTag() == tag) {
      same = i;
    }
  }
  if (present >= 0 && same < 0) return KepDOMNode();  // already there
  KepDOMNode replaced;
  node->addRef();
  if (present >= 0) {
    nodes.erase(static_cast<std::size_t>(present));
    node->release();
    if (same > present) --same;
  }
  if (same >= 0) {
    KepRDOMNode* old = nodes[static_cast<std::size_t>(same)];
    replaced = _KepDOMHandle<KepDOMNode>(old);
    nodes[static_cast<std::size_t>(same)] = node;
    detached(*old);
    old->release();
  } else {
    nodes.push_back(node);
  }
  if (present < 0) attached(*node);
  return replaced;
}

void KepRDOMNamedNodeMap::appendChecked(KepRDOMNode* node) {
  nodes.push_back(node);
  node->addRef();
  attached(*node);
}

KepDOMNode KepRDOMNamedNodeMap::takeAt(int index) {
  KepRDOMNode* node = at(index);
  if (node == nullptr) return KepDOMNode();
  KepDOMNode taken = _KepDOMHandle<KepDOMNode>(node);
  nodes.erase(static_cast<std::size_t>(index));
  detached(*node);
  node->release();
  return taken;
}

// --- The map operations ----------------------------------------------------------

KepDOMNode KepRDOMNamedNodeMap::getNamedItem(KepString const& name) const {
  return getNamedItem(KepRDOMNode::knownTagOf(name));
}

KepDOMNode KepRDOMNamedNodeMap::getNamedItem(int tag) const {
  return _KepDOMHandle<KepDOMNode>(at(find(tag)));
}

KepDOMNode KepRDOMNamedNodeMap::setNamedItem(KepDOMNode const& node) {
  bool refused = false;
  return put(KepRDOMNode::of(node), false, refused);
}

KepDOMNode KepRDOMNamedNodeMap::removeNamedItem(KepString const& name) {
  return removeNamedItem(KepRDOMNode::knownTagOf(name));
}

KepDOMNode KepRDOMNamedNodeMap::removeNamedItem(int tag) { return takeAt(find(tag)); }

KepDOMNode KepRDOMNamedNodeMap::item(int index) const {
  return _KepDOMHandle<KepDOMNode>(at(index));
}

int KepRDOMNamedNodeMap::getLength() const { return size(); }

KepDOMNode KepRDOMNamedNodeMap::getNamedItemNS(KepString const& uri,
                                               KepString const& localName) const {
  int uriTag = 0;
  int localTag = 0;
  if (!namespaceTags(uri, localName, uriTag, localTag)) return KepDOMNode();
  return _KepDOMHandle<KepDOMNode>(at(findNS(uriTag, localTag)));
}

KepDOMNode KepRDOMNamedNodeMap::setNamedItemNS(KepDOMNode const& node) {
  bool refused = false;
  return put(KepRDOMNode::of(node), true, refused);
}

KepDOMNode KepRDOMNamedNodeMap::removeNamedItemNS(KepString const& uri,
                                                  KepString const& localName) {
  int uriTag = 0;
  int localTag = 0;
  if (!namespaceTags(uri, localName, uriTag, localTag)) return KepDOMNode();
  return takeAt(findNS(uriTag, localTag));
}

KepDOMNode KepRDOMNamedNodeMap::getOwnerNode() const { return _KepDOMHandle<KepDOMNode>(owner); }
