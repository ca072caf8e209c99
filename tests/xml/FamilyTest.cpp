// Class identity, factory creation, node names, null handles and the default
// document.
#include <gtest/gtest.h>

#include "DOMTestSupport.h"

using domtest::body;
using domtest::text;

TEST(DOMFamilies, EveryNodeClassComesFromTheFactoryWithItsIdentity) {
  namespace C = KepClassID;
  using N = KepDOMNode;
  struct Expect {
    int classId;
    int nodeType;  // -1: not a node
    int base;      // a base body class it must also be
  };
  Expect const classes[] = {
      {C::DOMNode, 0, C::Object},
      {C::DOMChildNode, 0, C::DOMNode},
      {C::DOMParentNode, 0, C::DOMChildNode},
      {C::DOMElement, N::ELEMENT_NODE, C::DOMParentNode},
      {C::DOMDocumentFragment, N::DOCUMENT_FRAGMENT_NODE, C::DOMParentNode},
      {C::DOMDocument, N::DOCUMENT_NODE, C::DOMDocumentFragment},
      {C::DOMDocumentType, N::DOCUMENT_TYPE_NODE, C::DOMParentNode},
      {C::DOMCharacterData, 0, C::DOMChildNode},
      {C::DOMText, N::TEXT_NODE, C::DOMCharacterData},
      {C::DOMCDATASection, N::CDATA_SECTION_NODE, C::DOMText},
      {C::DOMComment, N::COMMENT_NODE, C::DOMCharacterData},
      {C::DOMAttribute, N::ATTRIBUTE_NODE, C::DOMChildNode},
      {C::DOMProcessingInstruction, N::PROCESSING_INSTRUCTION_NODE, C::DOMChildNode},
      {C::DOMEntityReference, N::ENTITY_REFERENCE_NODE, C::DOMChildNode},
      {C::DOMNotation, N::NOTATION_NODE, C::DOMChildNode},
      {C::DOMEntity, N::ENTITY_NODE, C::DOMNode},
      {C::DOMNodeList, -1, C::Object},
      {C::DOMNamedNodeMap, -1, C::Object},
      {C::DOMAttributeList, -1, C::DOMNamedNodeMap},
      {C::DOMNamespace, -1, C::Object},
      {C::DOMExternalID, -1, C::Object},
      {C::DOMImplementation, -1, C::Object},
      {C::DOMRepeatingNodeList, -1, C::DOMNodeList},
  };
  for (Expect const& c : classes) {
    SCOPED_TRACE(c.classId);
    KepObject o = KepGetObject(c.classId, 0);
    ASSERT_FALSE(o.isNull());
    EXPECT_EQ(o.getClassID(), c.classId);
    EXPECT_TRUE(o.isOfType(c.base));
    EXPECT_NE(o.getRealKepObj(), KepGetObject(c.classId, 0).getRealKepObj());
    EXPECT_EQ(o.isOfType(C::DOMNode) != 0, c.nodeType >= 0);
    if (c.nodeType >= 0) {
      EXPECT_EQ(KepDOMNode(o).getNodeType(), c.nodeType);
    }
  }
}

TEST(DOMFamilies, NodesWithoutNameAreNamedByTheirKind) {
  // The other kinds' names show in the shapes the tree tests compare.
  KepDOMDocument doc = domtest::newDocument();
  EXPECT_EQ(text(doc.createTextNode("x").getNodeName()), "#text");
  // A factory element is named by its class, and its node ID is the class id.
  KepDOMElement plain(KepGetObject(KepClassID::DOMElement, 0));
  EXPECT_EQ(text(plain.getNodeName()), "DomElement");
  EXPECT_EQ(plain.getNodeID(), KepClassID::DOMElement);
  plain.setNodeName("ErrorStack");
  EXPECT_EQ(plain.getNodeID(), KepProcess::nameToTag("ErrorStack"));
  // The factory makes an object of the class a node names.
  KepDOMElement byName = doc.createElement("DomText");
  EXPECT_EQ(KepFactory::getObjectStatic(byName).getClassID(), KepClassID::DOMText);
  byName.setNodeName("NoSuchClassName");
  EXPECT_TRUE(KepFactory::getObjectStatic(byName).isNull());
}

TEST(DOMFamilies, NullHandlesAnswerNeutrally) {
  KepDOMElement none;
  EXPECT_TRUE(none.getFirstChild().isNull());
  KepDOMWriter writer;
  EXPECT_EQ(writer.serializeAsXML(none), 0u);
  KepStringBufferIOStream stream(KepString("<a/>"));
  EXPECT_TRUE(KepXMLParser().buildObjects(stream).isNull());
  KepIOStream noStream;
  EXPECT_TRUE(KepXMLParser(KepGetObject(KepClassID::XMLParser, 0)).buildObjects(noStream).isNull());
}

TEST(DOMFamilies, StartUpMakesTheRegisteredDocumentTheDefault) {
  ASSERT_EQ(KepFactory::haveDefaultDoc(), 1u);
  KepDOMDocument def = KepFactory::getDefaultDoc();
  // A node no document made belongs to the default document until adopted.
  KepDOMElement loose(KepGetObject(KepClassID::DOMElement, 0));
  EXPECT_EQ(body(loose.getOwnerDocument()), body(def));
  KepDOMDocument doc = domtest::newDocument();
  KepDOMElement root = doc.createElement("Root");
  doc.appendChild(root);
  root.appendChild(loose);
  EXPECT_EQ(body(loose.getOwnerDocument()), body(doc));
  // Without a default a loose node belongs to no document.
  KepFactory::setDefaultDoc(KepDOMDocument());
  EXPECT_TRUE(KepDOMElement(KepGetObject(KepClassID::DOMElement, 0)).getOwnerDocument().isNull());
  KepFactory::setDefaultDoc(def);
}
