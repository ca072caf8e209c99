// Helpers of the DOM tests: documents, counted node bodies and a checker that
// walks every link of a tree.
#ifndef KEP_TESTS_XML_DOMTESTSUPPORT_H
#define KEP_TESTS_XML_DOMTESTSUPPORT_H

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "kep/Kep.h"

namespace domtest {

inline KepDOMDocument newDocument() {
  return KepDOMDocument(KepGetObject(KepClassID::DOMDocument, 0));
}

inline std::string text(KepString const& s) { return s.isNull() ? "<null>" : s.toStdString(); }

inline KepRObject* body(KepObject const& h) { return h.getRealKepObj(); }

// Every live counted body, so that a second destruction of one is caught even
// where no sanitizer runs.
struct LiveBodies {
  static std::set<void const*>& set() {
    static std::set<void const*> live;
    return live;
  }
  static int freedTwice;
  static void born(void const* p) { set().insert(p); }
  static void died(void const* p) {
    if (set().erase(p) != 1) ++freedTwice;
  }
  static int count() { return static_cast<int>(set().size()); }
};
inline int LiveBodies::freedTwice = 0;

// A body of class `Base` that registers itself in LiveBodies.
template <class Base>
class Counted : public Base {
 public:
  Counted() { LiveBodies::born(this); }
  ~Counted() override { LiveBodies::died(this); }
  KepObject createAnother() const override { return KepObject(new Counted()); }
};
using CountedElement = Counted<KepRDOMElement>;
using CountedText = Counted<KepRDOMText>;
using CountedAttribute = Counted<KepRDOMAttribute>;

// A counted element named `name`, made by (and belonging to) `doc`.
inline KepDOMElement countedElement(KepDOMDocument& doc, char const* name) {
  KepDOMElement e(static_cast<KepBridgeToObject*>(new CountedElement()));
  e.setNodeName(KepString(name));
  doc.adoptNode(e);
  return e;
}

inline KepDOMText countedText(KepDOMDocument& doc, char const* data) {
  KepDOMText t(static_cast<KepBridgeToObject*>(new CountedText()));
  t.setData(KepString(data));
  doc.adoptNode(t);
  return t;
}

// Walks every node of the subtree of `root` through the public links and
// checks that they agree with each other: each child names the node as its
// parent, the previous and next links mirror each other, the walk ends on the
// last child, the child count matches the walk, every node but a document
// belongs to `doc` (when `doc` is not null), and no node is met twice. `count`
// receives the number of nodes.
inline ::testing::AssertionResult checkTree(KepDOMNode const& root, KepDOMDocument const& doc,
                                            int& count) {
  auto fail = [](std::string const& what) { return ::testing::AssertionFailure() << what; };
  count = 0;
  std::set<KepRObject*> seen;
  std::vector<KepDOMNode> work{root};
  while (!work.empty()) {
    KepDOMNode node = work.back();
    work.pop_back();
    ++count;
    if (!seen.insert(body(node)).second) return fail("node met twice");
    if (!doc.isNull() && node.getNodeType() != KepDOMNode::DOCUMENT_NODE &&
        body(node.getOwnerDocument()) != body(doc)) {
      return fail("owner document of " + text(node.getNodeName()) + " is wrong");
    }
    KepDOMNode previous;
    int children = 0;
    for (KepDOMNode child = node.getFirstChild(); !child.isNull(); child = child.getNextSibling()) {
      if (body(child.getParentNode()) != body(node)) return fail("child's parent link is wrong");
      if (body(child.getPreviousSibling()) != body(previous)) return fail("previous link is wrong");
      if (++children > 1000000) return fail("sibling cycle");
      previous = child;
      work.push_back(child);
    }
    if (body(node.getLastChild()) != body(previous)) return fail("last child is wrong");
    if ((node.hasChildNodes() != 0) != (children > 0)) return fail("hasChildNodes is wrong");
    KepDOMParentNode asParent(node);
    if (body(node)->isOfType(KepClassID::DOMParentNode) && asParent.getChildCount() != children) {
      return fail("child count " + std::to_string(asParent.getChildCount()) + " but " +
                  std::to_string(children) + " children");
    }
    if (children > 0 && node.getChildNodes().getLength() != children) {
      return fail("child list length is wrong");
    }
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult checkTree(KepDOMNode const& root, KepDOMDocument const& doc) {
  int count = 0;
  return checkTree(root, doc, count);
}

// The shape of a subtree on one line: "name(child child)", text as 'data'.
inline std::string shape(KepDOMNode const& node) {
  if (node.getNodeType() == KepDOMNode::TEXT_NODE) return "'" + text(node.getNodeValue()) + "'";
  std::string out = text(node.getNodeName());
  if (!node.hasChildNodes()) return out;
  char separator = '(';
  for (KepDOMNode c = node.getFirstChild(); !c.isNull(); c = c.getNextSibling()) {
    out += separator + shape(c);
    separator = ' ';
  }
  return out + ")";
}

// The error the calling thread recorded last ("" when none) and its code.
inline std::string lastError(int* code = nullptr) {
  KepThread* thread = KepProcess::getCurrThread();
  if (code != nullptr) *code = thread->getErrorObject().get(KepString("Code")).getInteger();
  return thread->getErrorName().isNull() ? "" : thread->getErrorName().toStdString();
}

}  // namespace domtest

#endif  // KEP_TESTS_XML_DOMTESTSUPPORT_H
