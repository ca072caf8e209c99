#include "kep/xml/KepRDOMNodeList.h"

#include "kep/base/KepFactory.h"
#include "kep/xml/KepRDOMParentNode.h"

KEP_REGISTER_LIBRARY_CLASS(DOMNodeList);

KepRDOMNodeList::KepRDOMNodeList() noexcept
    : live(nullptr),
      filterTag(0),
      cacheStamp(0),
      cacheIndex(0),
      cacheNode(nullptr),
      cacheLength(-1) {}

KepRDOMNodeList::~KepRDOMNodeList() { dropAll(); }

void KepRDOMNodeList::dropAll() {
  for (KepRDOMNode* node : nodes) node->release();
  nodes.clear();
  if (live != nullptr) live->release();
  live = nullptr;
  cacheNode = nullptr;
  cacheLength = -1;
}

void KepRDOMNodeList::showChildren(KepRDOMParentNode* parent, int tag) {
  if (parent != nullptr) parent->addRef();
  dropAll();
  live = parent;
  filterTag = tag;
}

void KepRDOMNodeList::add(KepRDOMNode* node) {
  node->addRef();
  nodes.push_back(node);
}

bool KepRDOMNodeList::fits(KepRDOMNode const* node) const {
  return filterTag == 0 || (node->asElement() != nullptr && node->nodeTag() == filterTag);
}

KepRDOMNode* KepRDOMNodeList::firstShown(KepRDOMNode* node) const {
  while (node != nullptr && !fits(node)) node = node->nextBody();
  return node;
}

KepRDOMNode* KepRDOMNodeList::at(int index) const {
  if (index < 0) return nullptr;
  if (live == nullptr) {
    return index < static_cast<int>(nodes.size()) ? nodes[static_cast<std::size_t>(index)]
                                                  : nullptr;
  }
  int i = 0;
  KepRDOMNode* node;
  if (cacheNode != nullptr && cacheStamp == live->changeStamp() && cacheIndex <= index) {
    i = cacheIndex;
    node = cacheNode;
  } else {
    node = firstShown(live->firstBody());
  }
  while (node != nullptr && i < index) {
    node = firstShown(node->nextBody());
    ++i;
  }
  if (node != nullptr) {
    cacheStamp = live->changeStamp();
    cacheIndex = i;
    cacheNode = node;
  }
  return node;
}

int KepRDOMNodeList::size() const {
  if (live == nullptr) return static_cast<int>(nodes.size());
  if (filterTag == 0) return live->childTotal();
  if (cacheLength < 0 || cacheStamp != live->changeStamp()) {
    int n = 0;
    for (KepRDOMNode* c = firstShown(live->firstBody()); c != nullptr;
         c = firstShown(c->nextBody())) {
      ++n;
    }
    // The position cache belongs to the same stamp; start it afresh.
    cacheStamp = live->changeStamp();
    cacheNode = nullptr;
    cacheLength = n;
  }
  return cacheLength;
}

KepRDOMNode* KepRDOMNodeList::endPlace() const {
  if (filterTag == 0) return nullptr;
  int n = size();
  KepRDOMNode* last = n > 0 ? at(n - 1) : nullptr;
  return last != nullptr ? last->nextBody() : nullptr;
}

// --- Reading -----------------------------------------------------------------------

KepDOMNode KepRDOMNodeList::item(int index) const { return _KepDOMHandle<KepDOMNode>(at(index)); }

int KepRDOMNodeList::getLength() const { return size(); }

int KepRDOMNodeList::indexOf(KepDOMNode const& node) const {
  KepRDOMNode* wanted = KepRDOMNode::of(node);
  if (wanted == nullptr) return -1;
  if (live == nullptr) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (nodes[i] == wanted) return static_cast<int>(i);
    }
    return -1;
  }
  if (wanted->parentBody() != live || !fits(wanted)) return -1;
  int i = 0;
  for (KepRDOMNode* c = firstShown(live->firstBody()); c != nullptr;
       c = firstShown(c->nextBody())) {
    if (c == wanted) return i;
    ++i;
  }
  return -1;
}

unsigned long KepRDOMNodeList::contains(KepDOMNode const& node) const {
  return indexOf(node) >= 0 ? 1 : 0;
}

KepDOMNode KepRDOMNodeList::getFirst() const { return item(0); }

KepDOMNode KepRDOMNodeList::getLast() const { return item(size() - 1); }

unsigned long KepRDOMNodeList::isEmpty() const { return size() == 0 ? 1 : 0; }

unsigned long KepRDOMNodeList::isLive() const { return live != nullptr ? 1 : 0; }

// --- Changing ----------------------------------------------------------------------

unsigned long KepRDOMNodeList::append(KepDOMNode const& node) { return insertAt(size(), node); }

unsigned long KepRDOMNodeList::insertAt(int index, KepDOMNode const& node) {
  KepRDOMNode* body = KepRDOMNode::of(node);
  int length = size();
  if (body == nullptr || index < 0 || index > length) return 0;
  if (live == nullptr) {
    body->addRef();
    nodes.insert(nodes.begin() + index, body);
    return 1;
  }
  if (!fits(body)) return 0;
  KepRDOMNode* ref = index < length ? at(index) : endPlace();
  return live->insertNode(body, ref) != nullptr ? 1 : 0;
}

KepDOMNode KepRDOMNodeList::removeAt(int index) {
  KepRDOMNode* body = at(index);
  if (body == nullptr) return KepDOMNode();
  if (live != nullptr) return live->removeNode(body);
  KepDOMNode removed = _KepDOMHandle<KepDOMNode>(body);
  nodes.erase(nodes.begin() + index);
  body->release();
  return removed;
}

unsigned long KepRDOMNodeList::remove(KepDOMNode const& node) {
  int index = indexOf(node);
  return index >= 0 && !removeAt(index).isNull() ? 1 : 0;
}

KepDOMNode KepRDOMNodeList::set(int index, KepDOMNode const& node) {
  KepRDOMNode* old = at(index);
  KepRDOMNode* body = KepRDOMNode::of(node);
  if (old == nullptr || body == nullptr) return KepDOMNode();
  if (live != nullptr) return fits(body) ? live->replaceNode(body, old) : KepDOMNode();
  KepDOMNode replaced = _KepDOMHandle<KepDOMNode>(old);
  body->addRef();
  nodes[static_cast<std::size_t>(index)] = body;
  old->release();
  return replaced;
}

void KepRDOMNodeList::clear() {
  if (live == nullptr) {
    for (KepRDOMNode* node : nodes) node->release();
    nodes.clear();
    return;
  }
  while (KepRDOMNode* first = at(0)) {
    if (live->removeNode(first).isNull()) break;
  }
}
