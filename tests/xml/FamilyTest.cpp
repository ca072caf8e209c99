// Class identity, factory creation, node names, null handles and the default
// document.
#include <gtest/gtest.h>

#include <utility>

#include "DOMTestSupport.h"

using domtest::text;

TEST(DOMFamilies, EveryNodeClassComesFromTheFactoryWithItsIdentity) {
  struct Expect {
    int classId;
    int nodeType;  // -1: not a node
    int base;      // a base body class it must also be
  };
  Expect const classes[] = {
      {KepClassID::DOMNode, 0, KepClassID::Object},
      {KepClassID::DOMChildNode, 0, KepClassID::DOMNode},
      {KepClassID::DOMParentNode, 0, KepClassID::DOMChildNode},
      {KepClassID::DOMElement, KepDOMNode::ELEMENT_NODE, KepClassID::DOMParentNode},
      {KepClassID::DOMDocumentFragment, KepDOMNode::DOCUMENT_FRAGMENT_NODE,
       KepClassID::DOMParentNode},
      {KepClassID::DOMDocument, KepDOMNode::DOCUMENT_NODE, KepClassID::DOMDocumentFragment},
      {KepClassID::DOMDocumentType, KepDOMNode::DOCUMENT_TYPE_NODE, KepClassID::DOMParentNode},
      {KepClassID::DOMCharacterData, 0, KepClassID::DOMChildNode},
      {KepClassID::DOMText, KepDOMNode::TEXT_NODE, KepClassID::DOMCharacterData},
      {KepClassID::DOMCDATASection, KepDOMNode::CDATA_SECTION_NODE, KepClassID::DOMText},
      {KepClassID::DOMComment, KepDOMNode::COMMENT_NODE, KepClassID::DOMCharacterData},
      {KepClassID::DOMAttribute, KepDOMNode::ATTRIBUTE_NODE, KepClassID::DOMChildNode},
      {KepClassID::DOMProcessingInstruction, KepDOMNode::PROCESSING_INSTRUCTION_NODE,
       KepClassID::DOMChildNode},
      {KepClassID::DOMEntityReference, KepDOMNode::ENTITY_REFERENCE_NODE, KepClassID::DOMChildNode},
      {KepClassID::DOMNotation, KepDOMNode::NOTATION_NODE, KepClassID::DOMChildNode},
      {KepClassID::DOMEntity, KepDOMNode::ENTITY_NODE, KepClassID::DOMNode},
      {KepClassID::DOMNodeList, -1, KepClassID::Object},
      {KepClassID::DOMNamedNodeMap, -1, KepClassID::Object},
      {KepClassID::DOMAttributeList, -1, KepClassID::DOMNamedNodeMap},
      {KepClassID::DOMNamespace, -1, KepClassID::Object},
      {KepClassID::DOMExternalID, -1, KepClassID::Object},
      {KepClassID::DOMImplementation, -1, KepClassID::Object},
      {KepClassID::DOMRepeatingNodeList, -1, KepClassID::DOMNodeList},
  };
  for (Expect const& c : classes) {
    KepObject o = KepGetObject(c.classId, 0);
    ASSERT_FALSE(o.isNull()) << std::hex << c.classId;
    EXPECT_EQ(o.getClassID(), c.classId);
    EXPECT_TRUE(o.isOfType(c.base)) << std::hex << c.classId;
    EXPECT_TRUE(o.isOfType(KepClassID::Object));
    EXPECT_NE(o.getRealKepObj(), KepGetObject(c.classId, 0).getRealKepObj());
    if (c.nodeType >= 0) {
      KepDOMNode node(o);
      EXPECT_EQ(node.getNodeType(), c.nodeType) << std::hex << c.classId;
      EXPECT_TRUE(node.getParentNode().isNull());
    } else {
      EXPECT_FALSE(o.isOfType(KepClassID::DOMNode)) << std::hex << c.classId;
    }
  }
}

TEST(DOMFamilies, NodesWithoutNameAreNamedByTheirKind) {
  KepDOMDocument doc = domtest::newDocument();
  std::pair<KepDOMNode, char const*> const named[] = {
      {doc, "#document"},
      {doc.createTextNode("x"), "#text"},
      {doc.createComment("x"), "#comment"},
      {doc.createCDATASection("x"), "#cdata-section"},
      {doc.createDocumentFragment(), "#document-fragment"},
      {doc.createProcessingInstruction("pi", "d"), "pi"},
  };
  for (auto const& n : named) EXPECT_EQ(text(n.first.getNodeName()), n.second);
  // A factory element is named by its class, and its node ID is the class id.
  KepDOMElement plain(KepGetObject(KepClassID::DOMElement, 0));
  EXPECT_EQ(text(plain.getNodeName()), "DomElement");
  EXPECT_EQ(plain.getNodeID(), KepClassID::DOMElement);
  plain.setNodeName("ErrorStack");
  EXPECT_EQ(text(plain.getTagName()), "ErrorStack");
  EXPECT_EQ(plain.getNodeID(), KepProcess::nameToTag("ErrorStack"));
}

TEST(DOMFamilies, NullHandlesAnswerNeutrally) {
  KepDOMElement none;
  EXPECT_TRUE(none.getFirstChild().isNull());
  EXPECT_TRUE(none.appendChild(KepDOMNode()).isNull());
  EXPECT_EQ(none.getNodeType(), 0);
  EXPECT_TRUE(none.getNodeName().isNull());
  EXPECT_TRUE(none.get(5).isNull());
  EXPECT_EQ(none.getInteger(), 0);
  EXPECT_EQ(none.getDouble(), 0.0L);
  EXPECT_TRUE(none.getOwnerRDocument() == nullptr);
  KepDOMNodeList list;
  EXPECT_EQ(list.getLength(), 0);
  KepDOMDocument doc;
  EXPECT_TRUE(doc.createElement("x").isNull());
  KepDOMWriter writer;
  EXPECT_EQ(writer.serializeAsXML(none), 0u);
  EXPECT_EQ(writer.getState(), 0);
  KepXMLParser parser;
  KepStringBufferIOStream stream(KepString("<a/>"));
  EXPECT_TRUE(parser.buildObjects(stream).isNull());
  KepIOStream noStream;
  EXPECT_TRUE(KepXMLParser(KepGetObject(KepClassID::XMLParser, 0)).buildObjects(noStream).isNull());
}

TEST(DOMFamilies, FactoryMakesAnObjectOfTheClassANodeNames) {
  KepDOMDocument doc = domtest::newDocument();
  KepDOMElement named = doc.createElement("DomText");
  KepObject made = KepFactory::getObjectStatic(named);
  ASSERT_FALSE(made.isNull());
  EXPECT_EQ(made.getClassID(), KepClassID::DOMText);
  named.setNodeName("Object");
  EXPECT_EQ(KepFactory::getObjectStatic(named, 3).getClassID(), KepClassID::Object);
  named.setNodeName("NoSuchClassName");
  EXPECT_TRUE(KepFactory::getObjectStatic(named).isNull());
  KepDOMNode nothing;
  EXPECT_TRUE(KepFactory::getObjectStatic(nothing).isNull());
}

TEST(DOMFamilies, StartUpMakesTheRegisteredDocumentTheDefault) {
  ASSERT_EQ(KepFactory::haveDefaultDoc(), 1u);
  KepDOMDocument def = KepFactory::getDefaultDoc();
  ASSERT_FALSE(def.isNull());
  EXPECT_EQ(def.getNodeType(), KepDOMNode::DOCUMENT_NODE);
  // A node no document made belongs to the default document until adopted.
  KepDOMElement loose(KepGetObject(KepClassID::DOMElement, 0));
  EXPECT_EQ(loose.getOwnerDocument().getRealKepObj(), def.getRealKepObj());
  EXPECT_EQ(static_cast<KepRObject*>(loose.getOwnerRDocument()), def.getRealKepObj());
  KepDOMDocument doc = domtest::newDocument();
  KepDOMElement root = doc.createElement("Root");
  doc.appendChild(root);
  root.appendChild(loose);
  EXPECT_EQ(loose.getOwnerDocument().getRealKepObj(), doc.getRealKepObj());
  EXPECT_TRUE(doc.getOwnerDocument().isNull());

  // Replacing the default and clearing it.
  KepDOMDocument other = domtest::newDocument();
  KepFactory::setDefaultDoc(other);
  EXPECT_EQ(KepFactory::getDefaultDoc().getRealKepObj(), other.getRealKepObj());
  KepFactory::setDefaultDoc(KepDOMDocument());
  EXPECT_EQ(KepFactory::haveDefaultDoc(), 0u);
  EXPECT_TRUE(KepDOMElement(KepGetObject(KepClassID::DOMElement, 0)).getOwnerDocument().isNull());
  KepFactory::setDefaultDoc(def);
}
