// The XML parser: the tree it builds, names and namespaces, typed objects,
// modes, the event-handler hook and XPointer-restricted builds.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "ParserTestSupport.h"

using domtest::body;
using domtest::text;
using parsetest::newParser;
using parsetest::parse;
using parsetest::root;

TEST(XMLParserFamily, RowAndBracketCountsMatchTheBridgeTable) {
  EXPECT_EQ(0 KEP_METHODS_XMLParser(KEP_COUNT_METHOD), 6);
  EXPECT_EQ(0 KEP_METHODS_XMLParser(KEP_COUNT_BRACKETED), 4);
  KepXMLParser none;
  KepStringBufferIOStream stream(KepString("<a/>"));
  EXPECT_TRUE(none.buildObjects(stream).isNull());
  KepXMLParser parser = newParser();
  ASSERT_FALSE(parser.isNull());
  EXPECT_EQ(parser.getClassID(), 0x40035);
  KepIOStream noStream;
  EXPECT_TRUE(parser.buildObjects(noStream).isNull());
}

TEST(XMLParserTree, ElementsAttributesAndTextInDocumentOrder) {
  KepDOMNode doc = parse(
      "<?xml version=\"1.0\"?><!-- c --><Root a=\"1\" b='x&amp;y'>"
      "head<Item>one</Item><Item n=\"2\"/>tail</Root>");
  ASSERT_FALSE(doc.isNull());
  EXPECT_EQ(doc.getNodeType(), KepDOMNode::DOCUMENT_NODE);
  int count = 0;
  EXPECT_TRUE(domtest::checkTree(doc, KepDOMDocument(doc), count));
  EXPECT_EQ(count, 7);  // document, Root, head, Item, one, Item, tail
  // The comment in the prolog adds no node.
  KepDOMElement r(doc.getFirstChild());
  EXPECT_EQ(r.getNextSibling().isNull(), true);
  EXPECT_EQ(text(r.getTagName()), "Root");
  EXPECT_EQ(text(r.getAttribute(KepString("a"))), "1");
  EXPECT_EQ(text(r.getAttribute(KepString("b"))), "x&y");
  EXPECT_EQ(r.getAttributes().getLength(), 2);
  KepDOMNode head = r.getFirstChild();
  EXPECT_EQ(head.getNodeType(), KepDOMNode::TEXT_NODE);
  EXPECT_EQ(text(head.getNodeValue()), "head");
  EXPECT_EQ(text(r.get(KepString("Item")).getString()), "one");
  EXPECT_EQ(text(r.get(KepString("Item"), 1).getAttribute(KepString("n"))), "2");
  EXPECT_EQ(text(r.getLastChild().getNodeValue()), "tail");
  EXPECT_EQ(r.getNodeID(), KepNameToTag("Root"));
}

TEST(XMLParserTree, TextAndAttributesAreWidenedByteByByte) {
  // "é" and "€" in UTF-8 stay as their bytes, one unit each.
  std::string const accented = "caf\xc3\xa9 \xe2\x82\xac";
  KepDOMElement r = root("<r v=\"" + accented + "\">" + accented + "&#233;</r>");
  ASSERT_FALSE(r.isNull());
  EXPECT_EQ(parsetest::units(r.getAttribute(KepString("v"))), parsetest::widenedBytes(accented));
  // A character reference comes through the tokenizer as UTF-8 bytes as well.
  EXPECT_EQ(parsetest::units(r.getString()), parsetest::widenedBytes(accented + "\xc3\xa9"));
}

TEST(XMLParserTree, LongTextPassesThePendingBufferWhole) {
  for (int size : {1023, 1024, 1025, 5000, 70000}) {
    std::string body;
    for (int i = 0; i < size; ++i) body.push_back(static_cast<char>('a' + i % 23));
    // Entity references and line breaks make the tokenizer deliver the text
    // in many pieces.
    std::string xml = "<r>" + body + "&lt;\n&amp;" + body + "</r>";
    KepDOMElement r = root(xml);
    ASSERT_FALSE(r.isNull()) << size;
    EXPECT_EQ(r.getChildCount(), 1) << size;
    EXPECT_EQ(text(r.getString()), body + "<\n&" + body) << size;
  }
}

TEST(XMLParserTree, MarkupBetweenTextSplitsItAndLoneLineBreaksAreLayout) {
  KepDOMElement r = root("<r>a<!--c-->b<?pi x?>c\n<e/>\n<e>\t</e><e>\n\n</e>\t <f/></r>");
  ASSERT_FALSE(r.isNull());
  std::vector<std::string> children;
  for (KepDOMNode n = r.getFirstChild(); !n.isNull(); n = n.getNextSibling()) {
    children.push_back(n.getNodeType() == KepDOMNode::TEXT_NODE ? "t:" + text(n.getNodeValue())
                                                                : text(n.getNodeName()));
  }
  // The lone line feed after the first e and the lone tab inside the second
  // are dropped; longer white space stays.
  EXPECT_EQ(children,
            (std::vector<std::string>{"t:a", "t:b", "t:c\n", "e", "e", "e", "t:\t ", "f"}));
  EXPECT_EQ(r.get(KepString("e"), 1).getChildCount(), 0);
  EXPECT_EQ(text(r.get(KepString("e"), 2).getString()), "\n\n");
}

TEST(XMLParserTree, EqualTextsStayIndependentNodes) {
  KepDOMElement r = root("<r><i v=\"same\">same</i><i v=\"same\">same</i></r>");
  ASSERT_FALSE(r.isNull());
  KepDOMElement first = r.get(KepString("i"));
  KepDOMElement second = r.get(KepString("i"), 1);
  KepDOMText text1(first.getFirstChild());
  text1.appendData(KepString("!"));
  first.setAttribute(KepString("v"), KepString("other"));
  EXPECT_EQ(text(first.getString()), "same!");
  EXPECT_EQ(text(second.getString()), "same");
  EXPECT_EQ(text(second.getAttribute(KepString("v"))), "same");
}

TEST(XMLParserTree, CDataSectionsBecomeTheirOwnNodes) {
  KepDOMElement r = root("<r>x<![CDATA[a<b>&amp;\n]]>y<![CDATA[]]></r>");
  ASSERT_FALSE(r.isNull());
  ASSERT_EQ(r.getChildCount(), 4);
  EXPECT_EQ(r.getChildAt(0).getNodeType(), KepDOMNode::TEXT_NODE);
  KepDOMNode section = r.getChildAt(1);
  EXPECT_EQ(section.getNodeType(), KepDOMNode::CDATA_SECTION_NODE);
  EXPECT_EQ(text(section.getNodeValue()), "a<b>&amp;\n");
  EXPECT_EQ(text(r.getChildAt(2).getNodeValue()), "y");
  EXPECT_EQ(r.getChildAt(3).getNodeType(), KepDOMNode::CDATA_SECTION_NODE);
  EXPECT_EQ(text(r.getChildAt(3).getNodeValue()), "");
}

TEST(XMLParserNames, PrefixedNamesKeepPrefixLocalNameAndAUriWithColons) {
  KepDOMElement r = root(
      "<p:root xmlns:p=\"urn:x:y\" xmlns=\"http://example.org/d:1\" p:at=\"v\" plain=\"w\" "
      "xml:lang=\"en\"><child/><p:child/></p:root>");
  ASSERT_FALSE(r.isNull());
  EXPECT_EQ(text(r.getNodeName()), "p:root");
  EXPECT_EQ(r.getNodeID(), KepNameToTag("p:root"));
  EXPECT_EQ(text(r.getPrefix()), "p");
  EXPECT_EQ(text(r.getLocalName()), "root");
  EXPECT_EQ(text(r.getNamespaceURI()), "urn:x:y");
  // Attributes: the prefixed one by namespace, the plain one without.
  EXPECT_EQ(text(r.getAttributeNS(KepString("urn:x:y"), KepString("at"))), "v");
  EXPECT_EQ(text(r.getAttribute(KepString("p:at"))), "v");
  EXPECT_EQ(text(r.getAttribute(KepString("plain"))), "w");
  EXPECT_EQ(
      text(r.getAttributeNS(KepString("http://www.w3.org/XML/1998/namespace"), KepString("lang"))),
      "en");
  // The declarations are attributes in the namespace of declarations.
  KepString xmlns("http://www.w3.org/2000/xmlns/");
  EXPECT_EQ(text(r.getAttributeNS(xmlns, KepString("p"))), "urn:x:y");
  EXPECT_EQ(text(r.getAttribute(KepString("xmlns:p"))), "urn:x:y");
  EXPECT_EQ(text(r.getAttribute(KepString("xmlns"))), "http://example.org/d:1");
  // A child in the default namespace is named by its local name alone.
  KepDOMElement child(r.getFirstChild());
  EXPECT_EQ(text(child.getNodeName()), "child");
  EXPECT_TRUE(child.getPrefix().isNull());
  EXPECT_EQ(text(child.getNamespaceURI()), "http://example.org/d:1");
  EXPECT_EQ(child.getAttributes().getLength(), 0);
  KepDOMElement prefixed(child.getNextSibling());
  EXPECT_EQ(text(prefixed.getNodeName()), "p:child");
  EXPECT_EQ(text(prefixed.getNamespaceURI()), "urn:x:y");
}

TEST(XMLParserNames, DeclarationsTakeThePlacesTheWriterGivesThem) {
  // The writer declares the element's own prefix after the name and an
  // attribute's prefix right after the attribute.
  KepDOMElement r = root(
      "<rt:top a=\"1\" xmlns:z=\"u:3\" o:mark=\"m\" xmlns:o=\"u:2\" plain=\"p\" "
      "xmlns:rt=\"u:1\"><in xmlns=\"u:4\" b=\"2\"/></rt:top>");
  ASSERT_FALSE(r.isNull());
  auto order = [](KepDOMElement e) {
    std::vector<std::string> names;
    KepDOMNamedNodeMap map = e.getAttributes();
    for (int i = 0; i < map.getLength(); ++i) names.push_back(text(map.item(i).getNodeName()));
    return names;
  };
  EXPECT_EQ(order(r),
            (std::vector<std::string>{"xmlns:rt", "a", "o:mark", "xmlns:o", "plain", "xmlns:z"}));
  EXPECT_EQ(order(KepDOMElement(r.getFirstChild())), (std::vector<std::string>{"xmlns", "b"}));
}

TEST(XMLParserNames, ALastUriPartThatLooksLikeAPrefixIsNotTakenForOne) {
  // The default namespace "urn:a:b" ends in what could be a local name "a"
  // and a prefix "b"; "b" is bound elsewhere, to another URI.
  KepDOMElement r = root("<b:r xmlns:b=\"urn:z\"><x xmlns=\"urn:a:b\"/><b:y/></b:r>");
  ASSERT_FALSE(r.isNull());
  KepDOMElement x(r.getFirstChild());
  EXPECT_EQ(text(x.getNodeName()), "x");
  EXPECT_EQ(text(x.getNamespaceURI()), "urn:a:b");
  EXPECT_TRUE(x.getPrefix().isNull());
  KepDOMElement y(x.getNextSibling());
  EXPECT_EQ(text(y.getNodeName()), "b:y");
  EXPECT_EQ(text(y.getNamespaceURI()), "urn:z");
  // A prefix re-bound inside takes the inner URI and goes back outside.
  KepDOMElement inner = root("<p:a xmlns:p=\"u:1\"><p:b xmlns:p=\"u:2\"/><p:c/></p:a>");
  EXPECT_EQ(text(KepDOMElement(inner.getFirstChild()).getNamespaceURI()), "u:2");
  EXPECT_EQ(text(KepDOMElement(inner.getLastChild()).getNamespaceURI()), "u:1");
}

TEST(XMLParserObjects, DtAndElementIdMakeObjectsOfTheNamedClass) {
  parsetest::Widget::registerOnce();
  KepDOMElement r = root(
      "<r><w dt=\"ParserWidget\" a=\"1\"><in/></w><e ElementId=\"ParserWidget\"/>"
      "<n dt=\"NoSuchClassAnywhere\"/><s dt=\"String\"/></r>");
  ASSERT_FALSE(r.isNull());
  KepDOMElement w = r.get(KepString("w"));
  EXPECT_EQ(w.getClassID(), parsetest::Widget::classId());
  EXPECT_EQ(text(w.getNodeName()), "w");
  EXPECT_EQ(text(w.getAttribute(KepString("a"))), "1");
  // The attribute stays, so that writing the element does not add a second.
  EXPECT_EQ(text(w.getAttribute(KepString("dt"))), "ParserWidget");
  auto* widget = static_cast<parsetest::Widget*>(body(w));
  EXPECT_EQ(widget->childrenAtEnd, 1);  // its content was complete
  EXPECT_EQ(widget->endMode, 0);
  EXPECT_EQ(r.get(KepString("e")).getClassID(), parsetest::Widget::classId());
  // No class, or a class that is not an element: a plain element.
  EXPECT_EQ(r.get(KepString("n")).getClassID(), KepClassID::DOMElement);
  EXPECT_EQ(r.get(KepString("s")).getClassID(), KepClassID::DOMElement);
  EXPECT_TRUE(body(r.get(KepString("n")).getOwnerDocument()) == body(r.getOwnerDocument()));
  EXPECT_TRUE(body(w.getOwnerDocument()) == body(r.getOwnerDocument()));
}

TEST(XMLParserObjects, ADtNamingAValueTypeGivesAPlainElementOfThatType) {
  KepDOMElement r = root(
      "<r><a dt=\"int\">42</a><b dt=\"boolean\">1</b><c dt=\"float\">2.5</c>"
      "<d dt=\"unknown\">x</d></r>");
  ASSERT_FALSE(r.isNull());
  KepDOMElement a = r.get(KepString("a"));
  EXPECT_EQ(a.getClassID(), KepClassID::DOMElement);
  EXPECT_EQ(a.getDataType(), 1);
  EXPECT_EQ(a.getInteger(), 42);
  EXPECT_EQ(r.get(KepString("b")).getDataType(), 5);
  EXPECT_EQ(r.get(KepString("c")).getDataType(), 8);
  EXPECT_EQ(r.get(KepString("d")).getDataType(), 0);
  EXPECT_EQ(text(a.getAttribute(KepString("dt"))), "int");
}

TEST(XMLParserObjects, ModesReachTheObjectsAndStandardDomBuildsNone) {
  parsetest::Widget::registerOnce();
  KepXMLParser parser = newParser();
  parser.setSubscribe();
  parser.setKepActions();
  KepDOMElement w = root("<w dt=\"ParserWidget\"/>", parser);
  auto* widget = static_cast<parsetest::Widget*>(body(w));
  ASSERT_EQ(w.getClassID(), parsetest::Widget::classId());
  EXPECT_EQ(widget->endMode, KepRXMLParser::kSubscribe | KepRXMLParser::kKepActions);
  EXPECT_EQ(widget->parserAtEnd, body(parser));

  parser.setStandardDOM();
  KepDOMElement plain = root("<w dt=\"ParserWidget\"/>", parser);
  EXPECT_EQ(plain.getClassID(), KepClassID::DOMElement);
  EXPECT_EQ(text(plain.getAttribute(KepString("dt"))), "ParserWidget");
  parser.setKepDOM();
  auto* mode = static_cast<KepRXMLParser*>(body(parser));
  EXPECT_EQ(mode->getMode() & KepRXMLParser::kStandardDOM, 0);
  EXPECT_EQ(root("<w dt=\"ParserWidget\"/>", parser).getClassID(), parsetest::Widget::classId());
}

TEST(XMLParserObjects, XsNamesTheServiceAndIsNotKeptAsAnAttribute) {
  int service = KepNameToTag("ParserTestService");
  KepDOMElement r =
      root("<r xs=\"ParserTestService\" a=\"1\"><u xs=\"NeverSeenServiceName\"/></r>");
  ASSERT_FALSE(r.isNull());
  EXPECT_EQ(r.getService(), service);
  EXPECT_EQ(r.hasAttribute(KepString("xs")), 0u);
  EXPECT_EQ(r.getAttributes().getLength(), 1);
  EXPECT_EQ(r.get(KepString("u")).getService(), 0);
}

namespace {

// Keeps elements named "keep" for itself and drops elements named "drop".
struct Placer : KepXMLParserEventHandler {
  KepDOMElement kept;
  int offered = 0;
  unsigned long createElement(KepDOMElement* element, KepRDOMParentNode* parent) override {
    ++offered;
    EXPECT_NE(parent, nullptr);
    std::string name = text(element->getNodeName());
    if (name == "keep") kept = *element;
    return name == "keep" || name == "drop" ? 1 : 0;
  }
};

}  // namespace

TEST(XMLParserObjects, TheEventHandlerMayPlaceElementsItself) {
  Placer placer;
  KepXMLParser parser = newParser();
  static_cast<KepRXMLParser*>(body(parser))->setEventHandler(&placer);
  KepDOMElement r = root("<r><keep><a/>t</keep><drop><b/></drop><c/></r>", parser);
  ASSERT_FALSE(r.isNull());
  EXPECT_EQ(placer.offered, 6);
  // Only c is left under r; what was inside keep went into keep.
  ASSERT_EQ(r.getChildCount(), 1);
  EXPECT_EQ(text(r.getFirstChild().getNodeName()), "c");
  ASSERT_FALSE(placer.kept.isNull());
  EXPECT_TRUE(placer.kept.getParentNode().isNull());
  EXPECT_EQ(placer.kept.getChildCount(), 2);
  EXPECT_EQ(text(placer.kept.getString()), "t");
}

namespace {

// Fails like an allocation would, on the element named "boom".
struct Thrower : KepXMLParserEventHandler {
  unsigned long createElement(KepDOMElement* element, KepRDOMParentNode*) override {
    if (text(element->getNodeName()) == "boom") throw std::bad_alloc();
    return 0;
  }
};

}  // namespace

TEST(XMLParserObjects, AFailureInsideACallbackStopsTheParseCleanly) {
  Thrower thrower;
  KepXMLParser parser = newParser();
  static_cast<KepRXMLParser*>(body(parser))->setEventHandler(&thrower);
  KepThread* thread = KepProcess::getCurrThread();
  thread->clearErrors();
  // The empty element makes the tokenizer deliver its end right after the start.
  EXPECT_TRUE(parse("<r xmlns:p=\"u\"><a>t</a><p:x><boom/>tail</p:x><c/></r>", parser).isNull());
  EXPECT_EQ(text(thread->getErrorName()), "XMLParserError");
  thread->clearErrors();
  EXPECT_FALSE(parse("<r><a/></r>", parser).isNull());
}

TEST(XMLParserXPointer, OnlyTheFirstElementAtThePathIsBuilt) {
  std::string const xml =
      "<a><x><b>wrong</b></x><b id=\"1\"><c>deep</c></b><b id=\"2\"/><q:b xmlns:q=\"u\"/></a>";
  KepXMLParser parser = newParser();
  KepStringBufferIOStream stream = parsetest::streamOf(xml);
  KepDOMElement b(parser.buildObjects(stream, KepXPointer("a.b")));
  ASSERT_FALSE(b.isNull());
  EXPECT_EQ(text(b.getAttribute(KepString("id"))), "1");
  EXPECT_EQ(text(b.find(KepXPointer("c"), 0).getString()), "deep");
  // Nothing around it was built, and only the element is kept.
  EXPECT_TRUE(b.getParentNode().isNull());
  EXPECT_TRUE(b.getOwnerDocument().isNull());

  struct Case {
    char const* path;
    char const* wantName;  // null: no element there
  };
  Case const cases[] = {{"a", "a"},       {"a.x.b", "b"}, {"a.b.c", "c"},      {"a.q:b", "q:b"},
                        {"a.c", nullptr}, {"b", nullptr}, {"a.b.c.d", nullptr}};
  for (Case const& c : cases) {
    KepStringBufferIOStream again = parsetest::streamOf(xml);
    KepDOMNode found = parser.buildObjects(again, KepXPointer(c.path));
    if (c.wantName == nullptr) {
      EXPECT_TRUE(found.isNull()) << c.path;
    } else {
      ASSERT_FALSE(found.isNull()) << c.path;
      EXPECT_EQ(text(found.getNodeName()), c.wantName) << c.path;
    }
  }
  // An empty XPointer builds the whole document.
  KepStringBufferIOStream whole = parsetest::streamOf(xml);
  EXPECT_EQ(parser.buildObjects(whole, KepXPointer("")).getNodeType(), KepDOMNode::DOCUMENT_NODE);
}

TEST(XMLParserXPointer, FindOnAParsedTreeWithAndWithoutCreate) {
  KepDOMElement s = root("<Settings><Mail><Limit>5</Limit></Mail><Mail/></Settings>");
  ASSERT_FALSE(s.isNull());
  EXPECT_EQ(s.find(KepXPointer("Mail.Limit"), 0).getInteger(), 5);
  EXPECT_EQ(body(s.find(KepXPointer(), 0)), body(s));
  EXPECT_EQ(body(s.find(KepXPointer("..Mail..Limit."), 0)),
            body(s.find(KepXPointer("Mail.Limit"), 0)));
  EXPECT_TRUE(s.find(KepXPointer("Mail.Size"), 0).isNull());
  int before = s.get(KepString("Mail")).getChildCount();
  KepDOMElement size = s.find(KepXPointer("Mail.Size"), 1);
  ASSERT_FALSE(size.isNull());
  EXPECT_EQ(size.getChildCount(), 0);
  // Made under the first Mail, not the second.
  EXPECT_EQ(body(size.getParentNode()), body(s.get(KepString("Mail"))));
  EXPECT_EQ(s.get(KepString("Mail")).getChildCount(), before + 1);
  EXPECT_EQ(body(s.find(KepXPointer("Mail.Size"), 0)), body(size));
}

TEST(XPointerClass, IsAStringUnderItsOwnClass) {
  KepXPointer p(KepString("Settings.Mail"));
  ASSERT_FALSE(p.isNull());
  EXPECT_EQ(p.getClassID(), KepClassID::XPointer);
  EXPECT_TRUE(p.isOfType(KepClassID::String));
  EXPECT_EQ(p.length(), 13);
  EXPECT_EQ(p.lastIndexOf(static_cast<unsigned short>('.')), 8);
  EXPECT_EQ(text(p.substring(9)), "Mail");
  EXPECT_TRUE(p.equals(KepString("Settings.Mail")));
  EXPECT_TRUE(KepString("Settings.Mail").equals(p));
  EXPECT_TRUE(KepXPointer(KepString()).isNull());
  EXPECT_TRUE(KepXPointer(static_cast<char const*>(nullptr)).isNull());
  EXPECT_EQ(KepXPointer("").length(), 0);
  KepXPointer copy(p);
  EXPECT_EQ(body(copy), body(p));
  EXPECT_EQ(KepXPointer(KepGetObject(KepClassID::XPointer, 0)).length(), 0);
  EXPECT_EQ(p.createAnother().getClassID(), KepClassID::XPointer);
  // A path taken from a tree is an XPointer too.
  KepDOMElement s = root("<a><b><c/></b></a>");
  KepXPointer path = s.find(KepXPointer("b.c"), 0).getXPointer(s);
  EXPECT_EQ(path.getClassID(), KepClassID::XPointer);
  EXPECT_EQ(text(path), "b.c");
}
