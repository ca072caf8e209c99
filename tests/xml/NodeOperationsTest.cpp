// Copies, normalising, searches, character data, change capture and repeating
// node lists.
#include <gtest/gtest.h>

#include <string>

#include "DOMTestSupport.h"

using domtest::body;
using domtest::checkTree;
using domtest::newDocument;
using domtest::shape;
using domtest::text;

namespace {

// Builds <root><a k="1">x<b/>y</a><c><a/></c></root>.
KepDOMElement sample(KepDOMDocument& doc) {
  KepDOMElement root = doc.createElement("root");
  KepDOMElement a = root.set("a");
  a.setAttribute("k", "1");
  a.appendChild(doc.createTextNode("x"));
  a.appendChild(doc.createElement("b"));
  a.appendChild(doc.createTextNode("y"));
  root.set("c").set("a");
  return root;
}

}  // namespace

TEST(DOMOperations, DeepAndShallowCopies) {
  KepDOMDocument doc = newDocument();
  KepDOMElement root = sample(doc);
  KepDOMElement shallow(root.cloneNode(0));
  EXPECT_EQ(shape(shallow), "root");
  doc.appendChild(root);
  KepDOMElement n = root.set("n", 5);
  KepDOMElement deep(root.cloneNode(1));
  ASSERT_TRUE(checkTree(deep, doc));
  EXPECT_EQ(shape(deep), "root(a('x' b 'y') c(a) n('5'))");
  // Copies are independent, cached values included.
  KepDOMElement nCopy = deep.get("n");
  nCopy.setString("6");
  EXPECT_EQ(n.getInteger(), 5);
  // A whole document.
  KepDOMDocument docCopy(doc.cloneNode(1));
  EXPECT_TRUE(checkTree(docCopy, docCopy)) << "the copy's nodes belong to the copy";
  EXPECT_EQ(shape(docCopy), shape(doc));
}

TEST(DOMOperations, NormalizeMergesAdjacentTextAndDropsEmptyText) {
  KepDOMDocument doc = newDocument();
  KepDOMElement root = doc.createElement("root");
  for (char const* s : {"a", "", "b", "c"}) root.appendChild(doc.createTextNode(s));
  root.appendChild(doc.createCDATASection("cd"));
  root.appendChild(doc.createTextNode(""));
  KepDOMElement inner = root.set("inner");
  inner.appendChild(doc.createTextNode("1"));
  inner.appendChild(doc.createTextNode("2"));
  root.appendChild(doc.createTextNode("z"));
  root.normalize();
  EXPECT_EQ(shape(root), "root('abc' #cdata-section inner('12') 'z')");
  EXPECT_TRUE(checkTree(root, doc));
}

TEST(DOMOperations, ElementsAreFoundByNameInDocumentOrder) {
  KepDOMDocument doc = newDocument();
  KepDOMElement root = sample(doc);
  doc.appendChild(root);
  KepDOMNodeList as = root.getElementsByTagName("a");
  ASSERT_EQ(as.getLength(), 2);
  EXPECT_EQ(body(as.item(1)), body(root.get("c").get("a")));
  EXPECT_EQ(root.getElementsByTagName("a", 1).getLength(), 1) << "children only";
  EXPECT_EQ(doc.getElementsByTagName("*").getLength(), 5);
  // A taken list does not follow later changes.
  root.set("a");
  EXPECT_EQ(as.getLength(), 2);
  // By namespace.
  KepDOMElement ns = doc.createElementNS("urn:x", "x:a");
  root.appendChild(ns);
  EXPECT_EQ(doc.getElementsByTagNameNS("urn:x", "a").getLength(), 1);
  EXPECT_EQ(doc.getElementsByTagNameNS("*", "a").getLength(), 4);
  EXPECT_EQ(doc.getElementsByTagNameNS(KepString(), "a").getLength(), 3);
  // By id.
  root.get("c").get("a").setAttribute("id", "target");
  EXPECT_EQ(body(doc.getElementById("target")), body(root.get("c").get("a")));
}

TEST(DOMOperations, CharacterDataIsEditedByUnits) {
  KepDOMDocument doc = newDocument();
  KepDOMElement parent = doc.createElement("p");
  KepDOMText t = doc.createTextNode("Hello world");
  parent.appendChild(t);
  EXPECT_EQ(text(t.substringData(11, 1)), "");
  EXPECT_TRUE(t.substringData(12, 1).isNull());
  t.insertData(5, ",");
  t.appendData("!");
  EXPECT_EQ(text(t.getData()), "Hello, world!");
  t.deleteData(5, 1000);
  EXPECT_EQ(text(t.getData()), "Hello");
  t.deleteData(9, 1);
  t.insertData(-1, "x");
  t.replaceData(2, -1, "x");
  EXPECT_EQ(text(t.getData()), "Hello");
  // Splitting puts the tail right after the node.
  parent.appendChild(doc.createElement("after"));
  EXPECT_EQ(text(t.splitText(2).getData()), "llo");
  EXPECT_EQ(shape(parent), "p('He' 'llo' after)");
  EXPECT_TRUE(t.splitText(3).isNull());
  KepDOMCDATASection cdata = doc.createCDATASection("abcd");
  KepDOMText cdataTail = cdata.splitText(4);
  EXPECT_EQ(cdataTail.getNodeType(), KepDOMNode::CDATA_SECTION_NODE);
}

TEST(DOMOperations, ChangesAreCapturedBelowTheCapturingNode) {
  KepDOMDocument doc = newDocument();
  KepDOMElement root = doc.createElement("root");
  KepDOMElement a = root.set("a");
  root.captureChangesON();
  KepDOMElement b = a.set("b");
  a.setAttribute("k", "v");
  b.setNodeName("renamed");
  root.removeChild(a);
  a.set("c");  // a is no longer below root
  root.captureChangesOFF();
  root.set("d");
  KepDOMElement log = root.getChanges();
  ASSERT_FALSE(log.isNull());
  std::string seen;
  for (KepDOMNode r = log.getFirstChild(); !r.isNull(); r = r.getNextSibling()) {
    KepDOMElement record(r);
    seen += text(record.getNodeName()) + "(" + text(record.getString("Path")) + "," +
            text(record.getString("Node")) + ") ";
  }
  EXPECT_EQ(seen,
            "ChildInserted(a,b) AttributeChanged(a,k) NameChanged(a.renamed,renamed) "
            "ChildRemoved(,a) ");
  // A fresh start clears the log; the log itself is a plain element.
  root.captureChangesON();
  EXPECT_FALSE(root.getChanges().hasChildNodes());
}

TEST(DOMOperations, RepeatingListsShowTheOccurrencesOfOneValue) {
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElement("e");
  int item = KepNameToTag("Item");
  e.set(item, 0);
  e.set("Other", 9);
  e.set(item, 1, 1);
  KepDOMRepeatingNodeList items(KepGetObject(KepClassID::DOMRepeatingNodeList, 0));
  EXPECT_TRUE(items.addOccurrence().isNull()) << "not attached yet";
  items.attach(e, item);
  // Added occurrences follow the last one, not the other value.
  KepDOMElement added = items.addOccurrence();
  added.setString("2");
  EXPECT_EQ(shape(e), "e(Item('0') Other('9') Item('1') Item('2'))");
  EXPECT_EQ(items.append(doc.createElement("Other")), 0u) << "only occurrences fit";
  EXPECT_EQ(KepDOMElement(items.removeOccurrence(0)).getInteger(), 0);
  // Renaming a child takes it out of the list.
  e.get(item, 0).setNodeName("Gone");
  EXPECT_EQ(items.clearOccurrences(), 1);
  EXPECT_EQ(shape(e), "e(Other('9') Gone('1'))");
}
