// Tree changes: links stay consistent, W3C refusals, moves between parents and
// documents, fragments, live child lists.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "DOMTestSupport.h"

using domtest::body;
using domtest::checkTree;
using domtest::lastError;
using domtest::newDocument;
using domtest::shape;
using domtest::text;

namespace {

// The parent and next-sibling links of every node of the pool: together they
// fix every tree the pool's nodes are in.
std::vector<KepRObject*> links(std::vector<KepDOMNode> const& pool) {
  std::vector<KepRObject*> out;
  for (KepDOMNode const& n : pool) {
    out.push_back(body(n.getParentNode()));
    out.push_back(body(n.getNextSibling()));
  }
  return out;
}

}  // namespace

// Random inserts, replacements and removals among nodes of two documents, most
// of them refused by the hierarchy rules: after every step each tree passes the
// checker, every node is still reached from a root, a refused change changes
// no link, and a change made put the nodes where it was asked to.
TEST(DOMTree, RandomOperationsKeepEveryLinkConsistent) {
  std::mt19937 random(20240611);
  auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  KepDOMDocument docs[2] = {newDocument(), newDocument()};
  std::vector<KepDOMNode> pool{docs[0], docs[1]};
  char const* names[] = {"a", "b", "c", "d"};
  int refused = 0;
  int done = 0;
  for (int step = 0; step < 4000; ++step) {
    SCOPED_TRACE(step);
    std::size_t op = pick(10);
    if (op < 3 && pool.size() < 140) {
      KepDOMDocument& d = docs[pick(2)];
      std::size_t kind = pick(6);
      pool.push_back(kind == 0   ? KepDOMNode(d.createTextNode("t"))
                     : kind == 1 ? KepDOMNode(d.createComment("c"))
                     : kind == 2 ? KepDOMNode(d.createDocumentFragment())
                                 : KepDOMNode(d.createElement(names[pick(4)])));
      continue;
    }
    KepDOMNode p = pool[pick(pool.size())];
    KepDOMNode n = pool[pick(pool.size())];
    // Mostly a child of p, sometimes any node or none.
    KepDOMNode child = pick(2) == 0 ? pool[pick(pool.size())] : KepDOMNode();
    if (p.hasChildNodes() && pick(5) != 0) {
      child = p.getChildNodes().item(static_cast<int>(pick(KepDOMParentNode(p).getChildCount())));
    }
    if (op >= 6 && child.isNull()) continue;
    bool fragment = op < 8 && n.getNodeType() == KepDOMNode::DOCUMENT_FRAGMENT_NODE;
    std::vector<KepRObject*> const before = links(pool);
    KepDOMNode answer;
    if (op < 6) {
      answer = op == 5 && child.isNull() ? p.appendChild(n) : p.insertBefore(n, child);
      if (!answer.isNull()) {
        EXPECT_EQ(body(answer), body(n));
        if (!fragment && body(n) != body(child)) {
          EXPECT_EQ(body(n.getParentNode()), body(p));
          EXPECT_EQ(body(n.getNextSibling()), body(child));
        }
      }
    } else if (op < 8) {
      answer = p.replaceChild(n, child);
      if (!answer.isNull()) {
        EXPECT_EQ(body(answer), body(child));
        EXPECT_TRUE(body(n) == body(child) || child.getParentNode().isNull());
        EXPECT_TRUE(fragment || body(n.getParentNode()) == body(p));
      }
    } else {
      answer = p.removeChild(child);
      if (!answer.isNull()) {
        EXPECT_EQ(body(answer), body(child));
        EXPECT_TRUE(child.getParentNode().isNull());
      }
    }
    if (answer.isNull()) {
      ++refused;
      ASSERT_EQ(links(pool), before) << "a refused operation " << op << " changed the tree";
    } else {
      ++done;
      EXPECT_TRUE(!fragment || !n.hasChildNodes()) << "a fragment gives away its children";
    }
    // Every node is in the tree of exactly one root: none was lost in a cycle.
    int reached = 0;
    for (KepDOMNode const& node : pool) {
      if (!node.getParentNode().isNull()) continue;
      bool isDocument = node.getNodeType() == KepDOMNode::DOCUMENT_NODE;
      int count = 0;
      ASSERT_TRUE(checkTree(node, isDocument ? KepDOMDocument(node) : KepDOMDocument(), count));
      reached += count;
    }
    ASSERT_EQ(reached, static_cast<int>(pool.size())) << "after operation " << op;
  }
  // The run must have exercised both outcomes a good many times.
  EXPECT_GT(done, 500);
  EXPECT_GT(refused, 200);
}

TEST(DOMTree, RefusedChangesAnswerNullAndChangeNothing) {
  KepDOMDocument doc = newDocument();
  KepDOMElement first = doc.createElement("first");
  doc.appendChild(first);
  KepDOMElement a = first.set("a");
  KepDOMElement b = a.set("b");
  KepDOMElement c = b.set("c");
  KepDOMElement stranger = doc.createElement("s");
  KepDOMText t = doc.createTextNode("t");
  KepDOMDocumentFragment two = doc.createDocumentFragment();
  two.appendChild(doc.createElement("x"));
  two.appendChild(doc.createElement("y"));
  auto fresh = [&] { return doc.createElement("n"); };
  struct Refusal {
    char const* what;
    std::function<KepDOMNode()> change;
    int error;  // the code recorded on the thread: 8 not found, 3 hierarchy
  };
  Refusal const refusals[] = {
      {"ancestor into descendant", [&] { return c.appendChild(a); }, 3},
      {"node into itself", [&] { return b.appendChild(b); }, 3},
      {"remove a stranger", [&] { return a.removeChild(stranger); }, 8},
      {"replace a stranger", [&] { return a.replaceChild(fresh(), stranger); }, 8},
      {"before a stranger", [&] { return a.insertBefore(fresh(), stranger); }, 8},
      {"remove nothing", [&] { return a.removeChild(KepDOMNode()); }, 8},
      {"a string as child", [&] { return a.appendChild(KepDOMNode(KepString("text"))); }, 8},
      {"second document element", [&] { return doc.appendChild(fresh()); }, 3},
      {"attribute as child", [&] { return doc.appendChild(doc.createAttribute("a")); }, 3},
      {"two elements for one", [&] { return doc.replaceChild(two, first); }, 3},
      {"document in an element", [&] { return b.appendChild(newDocument()); }, 3},
      {"child of a text", [&] { return t.appendChild(fresh()); }, 3},
      {"fragment into its child", [&] { return two.getFirstChild().appendChild(two); }, 3},
  };
  auto state = [&] { return shape(doc) + " " + shape(two) + " " + shape(stranger); };
  std::string const before = state();
  EXPECT_EQ(before, "#document(first(a(b(c)))) #document-fragment(x y) s");
  for (Refusal const& r : refusals) {
    KepProcess::getCurrThread()->clearErrors();
    EXPECT_TRUE(r.change().isNull()) << r.what;
    EXPECT_EQ(state(), before) << r.what;
    int code = 0;
    EXPECT_EQ(lastError(&code), "DOMError") << r.what;
    EXPECT_EQ(code, r.error) << r.what;
  }
  KepProcess::getCurrThread()->clearErrors();
  // What a document does take: comments and instructions around its element,
  // and another element in place of it.
  EXPECT_FALSE(doc.appendChild(doc.createComment("c")).isNull());
  EXPECT_FALSE(doc.insertBefore(doc.createProcessingInstruction("pi", "x"), first).isNull());
  EXPECT_EQ(body(doc.replaceChild(stranger, first)), body(first));
  EXPECT_EQ(body(doc.getDocumentElement()), body(stranger));
  EXPECT_EQ(KepDOMChildNode(stranger).remove(), 1u);
  EXPECT_EQ(KepDOMChildNode(stranger).remove(), 0u);
  EXPECT_EQ(shape(doc), "#document(pi #comment)");
}

TEST(DOMTree, ANodeOfAnotherDocumentIsAdoptedWithItsSubtree) {
  KepDOMDocument one = newDocument();
  KepDOMDocument two = newDocument();
  KepDOMElement root = one.createElement("root");
  one.appendChild(root);
  KepDOMElement branch = two.createElement("branch");
  KepDOMElement leaf = branch.set("leaf");
  KepDOMText words = two.createTextNode("words");
  leaf.appendChild(words);
  branch.setAttribute("kind", "wood");
  root.appendChild(branch);
  EXPECT_TRUE(checkTree(one, one)) << "the subtree belongs to `one` now";
  EXPECT_EQ(body(branch.getAttributeNode("kind").getOwnerDocument()), body(one));
  // Adopting takes a node from its parent, with its subtree.
  root.removeChild(branch);
  EXPECT_EQ(body(two.adoptNode(leaf)), body(leaf));
  EXPECT_TRUE(leaf.getParentNode().isNull());
  EXPECT_EQ(body(words.getOwnerDocument()), body(two));
  EXPECT_TRUE(two.adoptNode(one).isNull());
}

TEST(DOMTree, ChildListsAreLiveAndChildrenMoveByPosition) {
  KepDOMDocument doc = newDocument();
  KepDOMElement parent = doc.createElement("p");
  KepDOMNodeList kids = parent.getChildNodes();
  for (char const* n : {"a", "b", "c", "d"}) parent.appendChild(doc.createElement(n));
  parent.removeChild(kids.item(0));
  EXPECT_EQ(text(kids.item(0).getNodeName()), "b");
  EXPECT_TRUE(kids.item(3).isNull());
  // The list's changers are the parent's.
  EXPECT_EQ(kids.insertAt(0, doc.createElement("z")), 1u);
  KepDOMNode d = kids.getLast();
  EXPECT_EQ(text(kids.set(3, doc.createElement("y")).getNodeName()), "d");
  EXPECT_TRUE(d.getParentNode().isNull());
  EXPECT_EQ(kids.insertAt(9, doc.createElement("n")), 0u);
  EXPECT_EQ(kids.append(parent), 0u) << "a node cannot go into itself";
  KepDOMParentNode p(parent);
  EXPECT_TRUE(p.getChildAt(4).isNull());
  EXPECT_EQ(text(p.removeChildAt(3).getNodeName()), "y");
  p.prependChild(p.getChildAt(2));
  EXPECT_EQ(shape(parent), "p(c z b)");
  // Transfer moves all children, except into a node below the giver.
  KepDOMElement to = doc.createElement("to");
  EXPECT_EQ(parent.transferChildren(to), 3);
  EXPECT_EQ(shape(to), "to(c z b)");
  to.appendChild(parent);
  EXPECT_EQ(to.transferChildren(parent), 3) << "the node holding `parent` cannot move into it";
  EXPECT_EQ(shape(to), "to(p(c z b))");
  kids.clear();
  EXPECT_FALSE(parent.hasChildNodes());
}

TEST(DOMTree, ALockedNodeIsSharedBetweenThreads) {
  KepDOMDocument doc = newDocument();
  KepDOMElement root = doc.createElement("root");
  doc.appendChild(root);
  auto work = [&](char const* name) {
    for (int i = 0; i < 300; ++i) {
      KepDOMElement child = doc.createElement(name);
      child.set("n", i);
      root.lock();
      root.appendChild(child);
      if (i % 3 == 0) root.removeChild(root.getFirstChild());
      root.unlock();
    }
  };
  std::thread one(work, "one");
  std::thread two(work, "two");
  one.join();
  two.join();
  int count = 0;
  EXPECT_TRUE(checkTree(doc, doc, count));
  EXPECT_EQ(KepDOMParentNode(root).getChildCount(), 400);
  EXPECT_EQ(count, 2 + 400 * 3);
}
