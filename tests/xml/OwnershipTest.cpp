// Ownership: a dropped tree is freed exactly once, back links keep nothing
// alive, nodes that outlive their document lose it.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "DOMTestSupport.h"

using domtest::body;
using domtest::checkTree;
using domtest::countedElement;
using domtest::countedText;
using domtest::LiveBodies;
using domtest::newDocument;

namespace {

class DOMOwnership : public ::testing::Test {
 protected:
  void SetUp() override {
    LiveBodies::freedTwice = 0;
    ASSERT_EQ(LiveBodies::count(), 0);
  }
  void TearDown() override {
    EXPECT_EQ(LiveBodies::count(), 0) << "counted bodies leaked";
    EXPECT_EQ(LiveBodies::freedTwice, 0) << "a body was freed twice";
  }
};

// A counted element named `name`, appended to `doc` as its document element.
KepDOMElement documentElement(KepDOMDocument& doc, char const* name) {
  KepDOMElement e = countedElement(doc, name);
  doc.appendChild(e);
  return e;
}

// Grows a random tree of `n` counted elements and texts below `root`, with an
// attribute here and there; answers the nodes made.
std::vector<KepDOMNode> growRandomTree(KepDOMDocument& doc, KepDOMElement root, int n,
                                       unsigned seed) {
  std::mt19937 random(seed);
  std::vector<KepDOMElement> parents{root};
  std::vector<KepDOMNode> made;
  for (int i = 0; i < n; ++i) {
    KepDOMElement parent = parents[random() % parents.size()];
    bool leaf = random() % 4 == 0;
    made.push_back(leaf ? KepDOMNode(countedText(doc, "leaf")) : countedElement(doc, "node"));
    parent.appendChild(made.back());
    if (leaf) continue;
    parents.emplace_back(made.back());
    if (random() % 3 == 0) parents.back().setAttribute("n", KepString::valueOf(i));
  }
  return made;
}

}  // namespace

TEST_F(DOMOwnership, ANodeHeldElsewhereOutlivesItsDocumentDetached) {
  KepDOMElement kept;
  KepDOMText keptLeaf;
  {
    KepDOMDocument doc = newDocument();
    KepDOMElement root = documentElement(doc, "root");
    KepDOMElement middle = countedElement(doc, "middle");
    root.appendChild(middle);
    middle.appendChild(countedElement(doc, "before"));
    kept = countedElement(doc, "kept");
    middle.appendChild(kept);
    middle.appendChild(countedText(doc, "after"));
    keptLeaf = countedText(doc, "leaf");
    kept.appendChild(keptLeaf);
    kept.appendChild(countedElement(doc, "below"));
  }
  // Only the subtree of `kept` is left; the parent it had is gone and its
  // link with it.
  EXPECT_EQ(LiveBodies::count(), 3);
  EXPECT_TRUE(kept.getParentNode().isNull());
  EXPECT_TRUE(kept.getPreviousSibling().isNull());
  EXPECT_TRUE(kept.getNextSibling().isNull());
  EXPECT_TRUE(kept.getOwnerDocument().isNull());
  EXPECT_TRUE(keptLeaf.getOwnerDocument().isNull());
  EXPECT_TRUE(checkTree(kept, KepDOMDocument()));
}

TEST_F(DOMOwnership, CopiedRemovedAndMovedNodesAreFreedWithTheirLastHolder) {
  KepDOMDocument one = newDocument();
  KepDOMDocument two = newDocument();
  KepDOMElement r1 = documentElement(one, "r1");
  std::vector<KepDOMNode> nodes = growRandomTree(one, r1, 300, 11);
  // A deep copy held by a fragment goes with the fragment.
  KepDOMDocumentFragment fragment = one.createDocumentFragment();
  fragment.appendChild(r1.cloneNode(1));
  EXPECT_EQ(LiveBodies::count(), 2 * 301);
  fragment = KepDOMDocumentFragment();
  KepDOMElement r2 = documentElement(two, "r2");
  int total = LiveBodies::count();
  EXPECT_EQ(total, 302);
  // Move a few subtrees into the other document, drop a few others.
  for (std::size_t i = 0; i < nodes.size(); i += 37) {
    KepDOMNode n = nodes[i];
    if (!n.getParentNode().isNull() && body(n.getOwnerDocument()) == body(one)) r2.appendChild(n);
  }
  for (std::size_t i = 5; i < nodes.size(); i += 41) {
    KepDOMNode parent = nodes[i].getParentNode();
    if (!parent.isNull()) parent.removeChild(nodes[i]);
  }
  nodes.clear();
  r1 = KepDOMElement();
  r2 = KepDOMElement();
  int inTwo = 0;
  ASSERT_TRUE(checkTree(two, two, inTwo));
  int inOne = 0;
  ASSERT_TRUE(checkTree(one, one, inOne));
  // Removed subtrees had only the pool as holder: they are gone now.
  EXPECT_EQ(LiveBodies::count(), (inOne - 1) + (inTwo - 1));
  EXPECT_LT(LiveBodies::count(), total);
  one = KepDOMDocument();
  EXPECT_EQ(LiveBodies::count(), inTwo - 1);
}

TEST_F(DOMOwnership, AVeryDeepTreeIsFreedWithoutRecursion) {
  {
    KepDOMDocument doc = newDocument();
    KepDOMElement top = documentElement(doc, "top");
    KepDOMElement at = top;
    for (int i = 0; i < 200000; ++i) {
      KepDOMElement next = countedElement(doc, "deep");
      at.appendChild(next);
      at = next;
    }
    at.appendChild(countedText(doc, "bottom"));
    EXPECT_EQ(LiveBodies::count(), 200002);
    // Deep copies and searches do not recurse either.
    KepDOMNode copy = top.cloneNode(1);
    EXPECT_EQ(LiveBodies::count(), 400004);
    EXPECT_EQ(top.getElementsByTagName("deep").getLength(), 200000);
  }
}

TEST_F(DOMOwnership, ListsAndMapsHoldTheirNodes) {
  KepDOMNodeList found;
  KepDOMNodeList live;
  KepDOMNamedNodeMap attributes;
  {
    KepDOMDocument doc = newDocument();
    KepDOMElement root = documentElement(doc, "root");
    for (int i = 0; i < 5; ++i) root.appendChild(countedElement(doc, "item"));
    KepDOMAttribute a(static_cast<KepBridgeToObject*>(new domtest::CountedAttribute()));
    a.setNodeName("counted");
    root.setAttributeNode(a);
    found = doc.getElementsByTagName("item");
    live = root.getChildNodes();
    attributes = root.getAttributes();
  }
  EXPECT_EQ(found.getLength(), 5);
  EXPECT_EQ(live.getLength(), 5) << "the live list holds its parent";
  live = KepDOMNodeList();
  // The taken list still holds the items, the map its attribute, whose element
  // is gone.
  EXPECT_EQ(LiveBodies::count(), 6);
  EXPECT_TRUE(KepDOMAttribute(attributes.item(0)).getOwnerElement().isNull());
}

TEST_F(DOMOwnership, ValuesThatWouldHoldTheirOwnTreeAreRefused) {
  {
    KepDOMDocument doc = newDocument();
    KepDOMElement root = documentElement(doc, "root");
    KepDOMElement child = countedElement(doc, "child");
    root.appendChild(child);
    EXPECT_TRUE(child.set("Self", KepDOMNode(child)).isNull());
    EXPECT_TRUE(child.set("Up", KepDOMNode(root)).isNull());
    EXPECT_TRUE(child.set("Doc", KepDOMNode(doc)).isNull());
    // A node from elsewhere is fine, and held by reference.
    KepDOMElement other = countedElement(doc, "other");
    KepDOMElement holder = child.set("Other", KepDOMNode(other));
    EXPECT_EQ(holder.getKepObject().getRealKepObj(), body(other));
    EXPECT_TRUE(other.getParentNode().isNull());
  }
}
