// Attributes, namespaced attributes and attribute maps.
#include <gtest/gtest.h>

#include <functional>

#include "DOMTestSupport.h"

using domtest::body;
using domtest::lastError;
using domtest::newDocument;
using domtest::text;

namespace {
char const* const kUriA = "urn:test:a";
char const* const kUriB = "urn:test:b";
}  // namespace

TEST(DOMAttributes, SetGetRemoveByNameAndNodesBelongToOneElementAtATime) {
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElement("e");
  EXPECT_EQ(text(e.getAttribute("missing")), "") << "a missing attribute reads empty";
  e.setAttribute("color", "red");
  e.setAttribute("size", "9");
  e.setAttribute("color", "blue");
  KepDOMNamedNodeMap map = e.getAttributes();
  ASSERT_EQ(map.getLength(), 2);
  EXPECT_EQ(text(map.item(0).getNodeValue()), "blue") << "map order is the order of adding";
  KepDOMAttribute color = e.getAttributeNode("color");
  EXPECT_EQ(body(color.getOwnerElement()), body(e));
  EXPECT_TRUE(color.getParentNode().isNull()) << "attributes are not children";
  e.removeAttribute("color");
  EXPECT_TRUE(color.getOwnerElement().isNull());

  KepDOMElement b = doc.createElement("b");
  EXPECT_TRUE(e.setAttributeNode(color).isNull());
  KepDOMAttribute other = doc.createAttribute("color");
  EXPECT_EQ(body(e.setAttributeNode(other)), body(color)) << "the replaced node is answered";
  EXPECT_TRUE(color.getOwnerElement().isNull());
  // Removing through the attribute itself.
  b.setAttributeNode(color);
  EXPECT_EQ(KepDOMChildNode(color).remove(), 1u);
  EXPECT_FALSE(b.hasAttributes());
  EXPECT_EQ(KepDOMChildNode(color).remove(), 0u);
}

TEST(DOMAttributes, RefusedNamesAndNodesRecordTheirW3CCodes) {
  KepDOMDocument doc = newDocument();
  KepDOMElement a = doc.createElement("a");
  KepDOMElement b = doc.createElement("b");
  KepDOMAttribute held = doc.createAttribute("held");
  a.setAttributeNode(held);
  struct Refusal {
    char const* what;
    std::function<KepObject()> change;
    int code;  // 5 invalid name, 8 not found, 9 not supported, 10 in use, 14 namespace
  };
  Refusal const refusals[] = {
      {"empty element name", [&] { return doc.createElement(""); }, 5},
      {"prefix without uri", [&] { return doc.createElementNS("", "p:e"); }, 14},
      {"xml prefix elsewhere", [&] { return doc.createAttributeNS(kUriA, "xml:x"); }, 14},
      {"two colons", [&] { return doc.createElementNS(kUriA, "p:q:e"); }, 14},
      {"attribute in use", [&] { return b.setAttributeNode(held); }, 10},
      {"element as attribute", [&] { return b.setAttributeNode(doc.createElement("x")); }, 8},
      {"remove a stranger", [&] { return b.removeAttributeNode(held); }, 8},
      {"adopt a document", [&] { return doc.adoptNode(newDocument()); }, 9},
      {"attribute without uri", [&] { return b.setAttributeNS("", "p:x", "v"), KepObject(); }, 14},
  };
  for (Refusal const& r : refusals) {
    KepProcess::getCurrThread()->clearErrors();
    EXPECT_TRUE(r.change().getRealKepObj() == nullptr) << r.what;
    int code = 0;
    EXPECT_EQ(lastError(&code), "DOMError") << r.what;
    EXPECT_EQ(code, r.code) << r.what;
  }
  KepProcess::getCurrThread()->clearErrors();
  EXPECT_FALSE(b.hasAttributes());
  EXPECT_EQ(body(held.getOwnerElement()), body(a)) << "refusals change nothing";
}

TEST(DOMAttributes, NamespacedAttributesAreFoundByUriAndLocalName) {
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElementNS(kUriA, "p:e");
  EXPECT_EQ(text(e.getPrefix()) + "|" + text(e.getLocalName()) + "|" + text(e.getNamespaceURI()),
            std::string("p|e|") + kUriA);
  e.setAttributeNS(kUriA, "p:k", "1");
  e.setAttributeNS(kUriB, "q:k", "2");
  e.setAttribute("k", "3");
  EXPECT_EQ(text(e.getAttributeNS(kUriA, "k")), "1");
  EXPECT_EQ(text(e.getAttributeNS(KepString(), "k")), "3") << "no namespace matches the name";
  // Setting again under another prefix keeps one attribute and takes the prefix.
  e.setAttributeNS(kUriA, "r:k", "4");
  EXPECT_EQ(e.getAttributes().getLength(), 3);
  KepDOMAttribute k = e.getAttributeNodeNS(kUriA, "k");
  EXPECT_EQ(text(k.getName()), "r:k");
}

TEST(DOMAttributes, TheAttributeListReadsAndWritesByNameAndPosition) {
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElement("e");
  KepDOMAttributeList list(e.getAttributes());
  list.setValue("a", "1");
  list.setValue(KepNameToTag("b"), "2");
  EXPECT_EQ(text(e.getAttribute("a")), "1");
  EXPECT_TRUE(list.getValueAt(2).isNull());
  EXPECT_EQ(text(list.removeNamedItem("a").getNodeValue()), "1");
  EXPECT_TRUE(list.removeNamedItem("a").isNull());
  KepDOMAttribute b = KepDOMAttribute(list.getNamedItem("b"));
  list.removeAll();
  EXPECT_TRUE(b.getOwnerElement().isNull());
  EXPECT_TRUE(list.setNamedItem(b).isNull());
  EXPECT_EQ(body(b.getOwnerElement()), body(e));
  // A renamed attribute still replaces by its new name.
  KepDOMAttribute c = doc.createAttribute("c");
  list.setNamedItem(c);
  b.setNodeName("c");
  EXPECT_EQ(body(list.setNamedItem(b)), body(c));
  EXPECT_EQ(list.getLength(), 1);
}

TEST(DOMAttributes, MovingClonesAndTransfersCarryAttributes) {
  KepDOMDocument one = newDocument();
  KepDOMDocument two = newDocument();
  KepDOMElement e = one.createElement("e");
  e.setAttribute("a", "1");
  e.setAttribute("b", "2");
  KepDOMElement shallow(e.cloneNode(0));
  shallow.setAttribute("b", "changed");
  EXPECT_EQ(text(e.getAttribute("b")), "2") << "a copy has attributes of its own";
  KepDOMElement imported(two.importNode(e, 0));
  EXPECT_EQ(body(imported.getAttributeNode("a").getOwnerDocument()), body(two));
  // Transfer moves them, replacing the ones of the same name.
  KepDOMElement target = two.createElement("t");
  target.setAttribute("a", "old");
  EXPECT_EQ(e.transferAttribs(target), 2);
  EXPECT_FALSE(e.hasAttributes());
  EXPECT_EQ(text(target.getAttribute("a")), "1");
  EXPECT_EQ(body(target.getAttributeNode("b").getOwnerDocument()), body(two));
  KepDOMText notElement = one.createTextNode("x");
  EXPECT_EQ(target.transferAttribs(notElement), 0);
}

TEST(DOMAttributes, DocumentTypesKeepEntitiesAndBelongToOneDocument) {
  KepDOMDocumentType type(KepGetObject(KepClassID::DOMDocumentType, 0));
  type.setNodeName("Root");
  KepDOMEntity entity(KepGetObject(KepClassID::DOMEntity, 0));
  entity.setNodeName("copy");
  type.getEntities().setNamedItem(entity);
  KepDOMDocumentType copy(type.cloneNode(0));
  EXPECT_EQ(body(copy.getEntities().item(0)), body(entity));
  // Documents take one document type, through the implementation too.
  KepDOMDocument doc =
      KepDOMDocument(newDocument().getImplementation().createDocument(kUriA, "p:Root", type));
  ASSERT_FALSE(doc.isNull());
  EXPECT_EQ(body(doc.getDoctype()), body(type));
  EXPECT_TRUE(doc.appendChild(copy).isNull());
  EXPECT_TRUE(newDocument().getImplementation().createDocument(kUriA, "p:x", type).isNull())
      << "the type is in use";
}
