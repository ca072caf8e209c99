// The check behind the XML parser's fuzz target: arbitrary bytes go to
// buildObjects, once for the whole document and once restricted to a path,
// and whatever comes back must be a consistent tree. The xml test suite replays
// the seed corpus through the same function.
#ifndef KEP_FUZZ_PARSERFUZZHARNESS_H
#define KEP_FUZZ_PARSERFUZZHARNESS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kep/Kep.h"

namespace kepfuzz {

// Inputs beyond this size are cut, to keep each run short.
constexpr size_t kMaxXmlInput = 1 << 17;

// Walks the subtree of `start` without recursion and checks the links: every
// child names its parent, the sibling links mirror each other and the child
// count matches. Counts the nodes into `nodes`.
inline bool consistentTree(KepDOMNode const& start, size_t& nodes) {
  std::vector<KepDOMNode> work{start};
  while (!work.empty()) {
    KepDOMNode node = work.back();
    work.pop_back();
    ++nodes;
    KepRObject* self = node.getRealKepObj();
    KepDOMNode previous;
    int children = 0;
    for (KepDOMNode c = node.getFirstChild(); !c.isNull(); c = c.getNextSibling()) {
      if (c.getParentNode().getRealKepObj() != self) return false;
      if (c.getPreviousSibling().getRealKepObj() != previous.getRealKepObj()) return false;
      if (c.getNodeType() == KepDOMNode::ELEMENT_NODE && c.getNodeID() == 0) return false;
      previous = c;
      ++children;
      work.push_back(c);
    }
    if (node.getLastChild().getRealKepObj() != previous.getRealKepObj()) return false;
    if (self->isOfType(KepClassID::DOMParentNode) &&
        KepDOMParentNode(node).getChildCount() != children) {
      return false;
    }
  }
  return true;
}

// Failed parses record their errors on the calling thread; they are cleared
// after each input so that the stack does not grow over a run.
inline bool buildObjects(uint8_t const* data, size_t size) {
  struct ClearErrors {
    ~ClearErrors() {
      if (KepThread* thread = KepProcess::getCurrThread()) thread->clearErrors();
    }
  } clearErrors;
  size = std::min(size, kMaxXmlInput);
  KepString text(reinterpret_cast<char const*>(data), 0, static_cast<int>(size));
  KepXMLParser parser(KepGetObject(KepClassID::XMLParser, 0));
  if (size > 0 && (data[0] & 1) != 0) parser.setStandardDOM();

  KepStringBufferIOStream whole(text);
  KepDOMNode doc = parser.buildObjects(whole);
  size_t nodes = 0;
  if (!doc.isNull()) {
    if (doc.getNodeType() != KepDOMNode::DOCUMENT_NODE) return false;
    if (!consistentTree(doc, nodes)) return false;
    // No more elements than start tags could have made.
    if (nodes > size + 1) return false;
  }

  // The path to the first grandchild of the document element, when there is one.
  KepDOMElement top = doc.isNull() ? KepDOMElement() : KepDOMDocument(doc).getDocumentElement();
  KepDOMElement below =
      top.isNull() ? KepDOMElement() : KepDOMElement(top.getFirstChild(KepDOMNode::ELEMENT_NODE));
  if (!below.isNull()) {
    KepXPointer path(top.getNodeName().concat(KepString(".")).concat(below.getNodeName()));
    KepStringBufferIOStream again(text);
    KepDOMNode found = parser.buildObjects(again, path);
    size_t part = 0;
    if (found.isNull() || found.getNodeType() != KepDOMNode::ELEMENT_NODE) return false;
    if (!found.getParentNode().isNull() || !consistentTree(found, part) || part > nodes) {
      return false;
    }
  }
  return true;
}

}  // namespace kepfuzz

#endif  // KEP_FUZZ_PARSERFUZZHARNESS_H
