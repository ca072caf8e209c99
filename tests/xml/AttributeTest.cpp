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
char const* const kXmlns = "http://www.w3.org/2000/xmlns/";
}  // namespace

TEST(DOMAttributes, SetGetRemoveByName) {
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElement("e");
  EXPECT_FALSE(e.hasAttributes());
  EXPECT_EQ(text(e.getAttribute("missing")), "") << "a missing attribute reads empty";
  EXPECT_TRUE(e.getAttributeNode("missing").isNull());
  e.setAttribute("color", "red");
  e.setAttribute("size", "9");
  e.setAttribute("color", "blue");
  EXPECT_TRUE(e.hasAttributes());
  EXPECT_TRUE(e.hasAttribute("color"));
  EXPECT_EQ(text(e.getAttribute("color")), "blue");
  KepDOMNamedNodeMap map = e.getAttributes();
  ASSERT_EQ(map.getLength(), 2);
  EXPECT_EQ(text(map.item(0).getNodeName()), "color") << "map order is the order of adding";
  EXPECT_EQ(text(map.item(1).getNodeValue()), "9");
  KepDOMAttribute color = e.getAttributeNode("color");
  EXPECT_EQ(body(color.getOwnerElement()), body(e));
  EXPECT_TRUE(color.getParentNode().isNull()) << "attributes are not children";
  EXPECT_EQ(color.getSpecified(), 1u);
  color.setValue("green");
  EXPECT_EQ(text(e.getAttribute("color")), "green");
  e.removeAttribute("color");
  EXPECT_FALSE(e.hasAttribute("color"));
  EXPECT_TRUE(color.getOwnerElement().isNull());
  EXPECT_EQ(text(color.getValue()), "green");
  e.removeAttribute("never-seen-name");
  e.setAttribute(KepString(), "x");
  e.setAttribute("", "x");
  EXPECT_EQ(e.getAttributes().getLength(), 1);
}

TEST(DOMAttributes, NodesBelongToOneElementAtATime) {
  KepDOMDocument doc = newDocument();
  KepDOMElement a = doc.createElement("a");
  KepDOMElement b = doc.createElement("b");
  KepDOMAttribute id = doc.createAttribute("id");
  EXPECT_EQ(text(id.getValue()), "");
  id.setValue("1");
  EXPECT_TRUE(a.setAttributeNode(id).isNull());
  EXPECT_TRUE(b.setAttributeNode(id).isNull()) << "in use by a";
  EXPECT_FALSE(b.hasAttribute("id"));
  KepDOMAttribute other = doc.createAttribute("id");
  other.setValue("2");
  EXPECT_EQ(body(a.setAttributeNode(other)), body(id)) << "the replaced node is answered";
  EXPECT_TRUE(id.getOwnerElement().isNull());
  EXPECT_EQ(text(a.getAttribute("id")), "2");
  EXPECT_TRUE(a.removeAttributeNode(id).isNull()) << "not an attribute of a";
  EXPECT_EQ(body(a.removeAttributeNode(other)), body(other));
  EXPECT_FALSE(a.hasAttributes());
  // An attribute cannot be a child, a child cannot be an attribute.
  EXPECT_TRUE(a.appendChild(id).isNull());
  EXPECT_TRUE(a.setAttributeNode(KepDOMAttribute(doc.createElement("x"))).isNull());
  EXPECT_FALSE(a.hasAttributes());
  // Removing through the attribute itself.
  b.setAttributeNode(id);
  EXPECT_EQ(KepDOMChildNode(id).remove(), 1u);
  EXPECT_FALSE(b.hasAttributes());
  EXPECT_EQ(KepDOMChildNode(id).remove(), 0u);
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
      {"empty attribute name", [&] { return doc.createAttribute(KepString()); }, 5},
      {"empty target", [&] { return doc.createProcessingInstruction("", "x"); }, 5},
      {"empty entity name", [&] { return doc.createEntityReference(""); }, 5},
      {"prefix without uri", [&] { return doc.createElementNS("", "p:e"); }, 14},
      {"xml prefix elsewhere", [&] { return doc.createAttributeNS(kUriA, "xml:x"); }, 14},
      {"two colons", [&] { return doc.createElementNS(kUriA, "p:q:e"); }, 14},
      {"attribute in use", [&] { return b.setAttributeNode(held); }, 10},
      {"attribute in use by uri", [&] { return b.setAttributeNodeNS(held); }, 10},
      {"element as attribute", [&] { return b.setAttributeNode(doc.createElement("x")); }, 8},
      {"remove a stranger", [&] { return b.removeAttributeNode(held); }, 8},
      {"adopt a document", [&] { return doc.adoptNode(newDocument()); }, 9},
      {"import a document", [&] { return doc.importNode(newDocument(), 1); }, 9},
  };
  for (Refusal const& r : refusals) {
    KepProcess::getCurrThread()->clearErrors();
    EXPECT_TRUE(r.change().getRealKepObj() == nullptr) << r.what;
    int code = 0;
    EXPECT_EQ(lastError(&code), "DOMError") << r.what;
    EXPECT_EQ(code, r.code) << r.what;
  }
  KepProcess::getCurrThread()->clearErrors();
  b.setAttributeNS("", "p:x", "v");
  int code = 0;
  EXPECT_EQ(lastError(&code), "DOMError");
  EXPECT_EQ(code, 14);
  EXPECT_FALSE(b.hasAttributes());
  EXPECT_EQ(body(held.getOwnerElement()), body(a)) << "refusals change nothing";
  KepProcess::getCurrThread()->clearErrors();
}

TEST(DOMAttributes, NamespacedAttributesAreFoundByUriAndLocalName) {
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElementNS(kUriA, "p:e");
  ASSERT_FALSE(e.isNull());
  EXPECT_EQ(text(e.getPrefix()), "p");
  EXPECT_EQ(text(e.getLocalName()), "e");
  EXPECT_EQ(text(e.getNamespaceURI()), kUriA);
  EXPECT_EQ(text(e.getTagName()), "p:e");
  EXPECT_EQ(e.getLocalNameID(), KepProcess::nameToTag("e"));
  e.setAttributeNS(kUriA, "p:k", "1");
  e.setAttributeNS(kUriB, "q:k", "2");
  e.setAttribute("k", "3");
  EXPECT_EQ(e.getAttributes().getLength(), 3);
  EXPECT_EQ(text(e.getAttributeNS(kUriA, "k")), "1");
  EXPECT_EQ(text(e.getAttributeNS(kUriB, "k")), "2");
  EXPECT_EQ(text(e.getAttributeNS(KepString(), "k")), "3") << "no namespace matches the name";
  EXPECT_EQ(text(e.getAttributeNS("urn:never:used", "k")), "");
  EXPECT_TRUE(e.hasAttributeNS(kUriB, "k"));
  // Setting again under another prefix keeps one attribute and takes the prefix.
  e.setAttributeNS(kUriA, "r:k", "4");
  EXPECT_EQ(e.getAttributes().getLength(), 3);
  KepDOMAttribute k = e.getAttributeNodeNS(kUriA, "k");
  EXPECT_EQ(text(k.getPrefix()), "r");
  EXPECT_EQ(text(k.getName()), "r:k");
  EXPECT_EQ(text(k.getValue()), "4");
  e.removeAttributeNS(kUriB, "k");
  EXPECT_FALSE(e.hasAttributeNS(kUriB, "k"));
  // Names the namespace rules refuse.
  e.setAttributeNS(KepString(), "p:x", "no uri for a prefix");
  e.setAttributeNS(kUriA, "xml:x", "wrong xml uri");
  e.setAttributeNS(kUriA, "xmlns", "wrong xmlns uri");
  e.setAttributeNS(kUriA, ":x", "empty prefix");
  e.setAttributeNS(kUriA, "a:b:c", "two colons");
  EXPECT_EQ(e.getAttributes().getLength(), 2);
  e.setAttributeNS(kXmlns, "xmlns:p", kUriA);
  EXPECT_EQ(text(e.getAttributeNS(kXmlns, "p")), kUriA);
  EXPECT_TRUE(doc.createElementNS(KepString(), "p:e").isNull());
  EXPECT_TRUE(doc.createAttributeNS(kUriA, "xmlns:z").isNull());
  KepDOMAttribute made = doc.createAttributeNS(kUriB, "q:made");
  EXPECT_TRUE(e.setAttributeNodeNS(made).isNull());
  EXPECT_EQ(text(e.getAttributeNS(kUriB, "made")), "");
}

TEST(DOMAttributes, TheAttributeListReadsAndWritesByNameAndPosition) {
  KepDOMDocument doc = newDocument();
  KepDOMElement e = doc.createElement("e");
  KepDOMAttributeList list(e.getAttributes());
  EXPECT_EQ(body(list.getOwnerElement()), body(e));
  list.setValue("a", "1");
  list.setValue(KepNameToTag("b"), "2");
  EXPECT_EQ(text(e.getAttribute("a")), "1");
  EXPECT_EQ(text(list.getValue("b")), "2");
  EXPECT_EQ(text(list.getValue(KepNameToTag("a"))), "1");
  EXPECT_EQ(text(list.getName(1)), "b");
  EXPECT_EQ(text(list.getValueAt(0)), "1");
  EXPECT_TRUE(list.getValueAt(2).isNull());
  EXPECT_TRUE(list.getValue("zzz-unknown").isNull());
  EXPECT_EQ(list.indexOf("b"), 1);
  EXPECT_EQ(list.indexOf(KepNameToTag("a")), 0);
  EXPECT_EQ(text(list.removeNamedItem("a").getNodeValue()), "1");
  EXPECT_TRUE(list.removeNamedItem("a").isNull());
  KepDOMAttribute b = KepDOMAttribute(list.getNamedItem("b"));
  list.removeAll();
  EXPECT_EQ(list.getLength(), 0);
  EXPECT_TRUE(b.getOwnerElement().isNull());
  // The map takes only attributes.
  EXPECT_TRUE(list.setNamedItem(doc.createElement("x")).isNull());
  EXPECT_EQ(list.getLength(), 0);
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
  EXPECT_EQ(text(shallow.getAttribute("b")), "2");
  EXPECT_NE(body(shallow.getAttributeNode("b")), body(e.getAttributeNode("b")));
  shallow.setAttribute("b", "changed");
  EXPECT_EQ(text(e.getAttribute("b")), "2");
  // Import makes a copy in the other document.
  KepDOMElement imported(two.importNode(e, 0));
  EXPECT_EQ(body(imported.getOwnerDocument()), body(two));
  EXPECT_EQ(body(imported.getAttributeNode("a").getOwnerDocument()), body(two));
  EXPECT_EQ(body(e.getOwnerDocument()), body(one));
  // Transfer moves them, replacing the ones of the same name.
  KepDOMElement target = two.createElement("t");
  target.setAttribute("a", "old");
  EXPECT_EQ(e.transferAttribs(target), 2);
  EXPECT_FALSE(e.hasAttributes());
  EXPECT_EQ(text(target.getAttribute("a")), "1");
  EXPECT_EQ(target.getAttributes().getLength(), 2);
  EXPECT_EQ(body(target.getAttributeNode("b").getOwnerDocument()), body(two));
  KepDOMText notElement = one.createTextNode("x");
  EXPECT_EQ(target.transferAttribs(notElement), 0);
}

TEST(DOMAttributes, DocumentTypesKeepEntitiesAndNotations) {
  KepDOMDocumentType type(KepGetObject(KepClassID::DOMDocumentType, 0));
  type.setNodeName("Root");
  KepDOMEntity entity(KepGetObject(KepClassID::DOMEntity, 0));
  entity.setNodeName("copy");
  KepDOMNamedNodeMap entities = type.getEntities();
  EXPECT_TRUE(entities.setNamedItem(entity).isNull());
  EXPECT_EQ(body(entities.getNamedItem("copy")), body(entity));
  EXPECT_EQ(body(entities.getOwnerNode()), body(type));
  KepDOMNotation notation(KepGetObject(KepClassID::DOMNotation, 0));
  KepDOMExternalID id(KepGetObject(KepClassID::DOMExternalID, 0));
  id.setSystemId("urn:sys");
  EXPECT_EQ(id.isPublic(), 0u);
  id.setPublicId("-//pub");
  EXPECT_EQ(id.isPublic(), 1u);
  notation.setExternalID(id);
  type.getNotations().setNamedItem(notation);
  EXPECT_EQ(text(KepDOMNotation(type.getNotations().item(0)).getExternalID().getSystemId()),
            "urn:sys");
  EXPECT_TRUE(type.appendChild(KepGetObject(KepClassID::DOMElement, 0)).isNull());
  KepDOMDocumentType copy(type.cloneNode(0));
  EXPECT_EQ(body(copy.getEntities().item(0)), body(entity));
  // Documents take one document type, through the implementation too.
  KepDOMDocument doc =
      KepDOMDocument(newDocument().getImplementation().createDocument(kUriA, "p:Root", type));
  ASSERT_FALSE(doc.isNull());
  EXPECT_EQ(body(doc.getDoctype()), body(type));
  EXPECT_EQ(text(doc.getDocumentElement().getNodeName()), "p:Root");
  EXPECT_TRUE(doc.appendChild(copy).isNull());
  EXPECT_TRUE(newDocument().getImplementation().createDocument(kUriA, "p:x", type).isNull())
      << "the type is in use";
  KepDOMNamespace ns(KepGetObject(KepClassID::DOMNamespace, 0));
  ns.setPrefix("p");
  EXPECT_EQ(ns.getPrefixID(), KepProcess::nameToTag("p"));
}
