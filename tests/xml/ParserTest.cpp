// The XML parser: the tree it builds, names and namespaces, typed objects,
// modes, the event-handler hook, XPointer-restricted builds and paths.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <thread>
#include <vector>

#include "ParserTestSupport.h"

using domtest::body;
using domtest::shape;
using domtest::text;
using parsetest::newParser;
using parsetest::parse;
using parsetest::root;

namespace {

// The names of the attributes of `e` in map order.
std::string order(KepDOMElement e) {
  std::string names;
  KepDOMNamedNodeMap map = e.getAttributes();
  for (int i = 0; i < map.getLength(); ++i) names += text(map.item(i).getNodeName()) + " ";
  return names;
}

}  // namespace

TEST(XMLParserTree, ElementsAttributesAndTextInDocumentOrder) {
  KepDOMNode doc = parse(
      "<?xml version=\"1.0\"?><!-- c --><Root a=\"1\" b='x&amp;y'>"
      "head<Item>one</Item><Item n=\"2\"/>tail</Root>");
  EXPECT_TRUE(domtest::checkTree(doc, KepDOMDocument(doc)));
  // The comment in the prolog adds no node.
  EXPECT_EQ(shape(doc), "#document(Root('head' Item('one') Item 'tail'))");
  KepDOMElement r(doc.getFirstChild());
  EXPECT_EQ(text(r.getAttribute("b")), "x&y");
  // The map was made with room for exactly the parsed attributes; it grows
  // and shrinks like any other.
  for (char const* name : {"c", "d", "e"}) r.setAttribute(name, name);
  r.removeAttribute("a");
  EXPECT_EQ(order(r), "b c d e ");
}

TEST(XMLParserTree, LongTextPassesThePendingBufferWhole) {
  for (int size : {1023, 1024, 1025, 5000, 70000}) {
    std::string body;
    for (int i = 0; i < size; ++i) body.push_back(static_cast<char>('a' + i % 23));
    // Entity references and line breaks make the tokenizer deliver the text
    // in many pieces.
    KepDOMElement r = root("<r>" + body + "&lt;\n&amp;" + body + "</r>");
    EXPECT_EQ(r.getChildCount(), 1) << size;
    EXPECT_EQ(text(r.getString()), body + "<\n&" + body) << size;
    // A text that starts with a line break delivered alone, then a piece too
    // long for the buffer, is not taken for a lone line break and dropped.
    KepDOMElement broken = root("<r>\n" + body + "</r>");
    EXPECT_EQ(text(broken.getString()), "\n" + body) << size;
  }
}

TEST(XMLParserTree, MarkupSplitsTextCDataStaysApartAndLoneLineBreaksAreLayout) {
  KepDOMElement r = root(
      "<r>a<!--c-->b<?pi x?>c\n<e/>\n<e>\t</e><e>\n\n</e>\t <f/>"
      "x<![CDATA[a<b>&amp;\n]]>y<![CDATA[]]></r>");
  // Bytes are widened one by one: "é" and "€" in UTF-8, and a character
  // reference, which the tokenizer hands over as UTF-8 too.
  std::string const accented = "caf\xc3\xa9 \xe2\x82\xac";
  KepDOMElement wide = root("<r v=\"" + accented + "\">" + accented + "&#233;</r>");
  EXPECT_EQ(KepRIOStream::narrow(wide.getAttribute("v")), accented);
  EXPECT_EQ(KepRIOStream::narrow(wide.getString()), accented + "\xc3\xa9");
  // The lone line feed after the first e and the lone tab inside the second
  // are dropped; longer white space stays.
  EXPECT_EQ(shape(r),
            "r('a' 'b' 'c\n' e e e('\n\n') '\t ' f 'x' #cdata-section 'y' #cdata-section)");
  EXPECT_EQ(text(r.getChildAt(9).getNodeValue()), "a<b>&amp;\n");
  EXPECT_EQ(text(r.getChildAt(11).getNodeValue()), "");
}

TEST(XMLParserTree, EqualTextsStayIndependentNodes) {
  KepDOMElement r = root("<r><i v=\"same\">same</i><i v=\"same\">same</i></r>");
  KepDOMElement first = r.get("i");
  KepDOMText(first.getFirstChild()).appendData("!");
  first.setAttribute("v", "other");
  EXPECT_EQ(text(first.getString()), "same!");
  EXPECT_EQ(text(r.get("i", 1).getString()), "same");
  EXPECT_EQ(text(r.get("i", 1).getAttribute("v")), "same");
}

// Short texts and values with the same bytes share one string: texts that
// differ in a single byte, at any place and length, must each keep their own.
// There are many more of them than shared strings are kept, so that texts that
// differ in one byte meet in the same place of that cache.
TEST(XMLParserTree, ShortTextsDifferingInOneByteKeepTheirOwnBytes) {
  std::vector<std::string> texts;
  for (size_t n = 1; n <= 26; ++n) {
    texts.push_back(std::string(n, 'a'));
    for (size_t at = 0; at < n; ++at) {
      for (char c = 'b'; c <= 'z'; ++c) {
        texts.push_back(std::string(n, 'a'));
        texts.back()[at] = c;
      }
    }
  }
  std::string xml = "<r>";
  for (std::string const& t : texts) xml += "<i v=\"" + t + "\">" + t + "</i>";
  KepDOMElement r = root(xml + "</r>");
  ASSERT_FALSE(r.isNull());
  int k = 0;
  for (KepDOMNode n = r.getFirstChild(); !n.isNull(); n = n.getNextSibling(), ++k) {
    ASSERT_LT(static_cast<size_t>(k), texts.size());
    KepDOMElement i(n);
    EXPECT_EQ(text(i.getString()), texts[static_cast<size_t>(k)]);
    EXPECT_EQ(text(i.getAttribute("v")), texts[static_cast<size_t>(k)]);
  }
  EXPECT_EQ(static_cast<size_t>(k), texts.size());
}

TEST(XMLParserTree, NodesKeptFromALargeDocumentOutliveItOnAnyThread) {
  // Enough nodes to fill many of the blocks the parser places its nodes in, and
  // enough bytes for names, attributes and text to straddle three read blocks.
  std::string xml = "<r>";
  for (int i = 0; i < 4500; ++i) {
    xml += "<e n=\"" + std::to_string(i) + "\">text " + std::to_string(i) + "</e>";
  }
  xml += "</r>";
  std::vector<KepDOMElement> kept;
  {
    KepDOMElement r = root(xml);
    for (KepDOMElement e(r.getFirstChild()); !e.isNull(); e = e.getNextSibling()) {
      kept.push_back(e);
    }
  }
  ASSERT_GT(xml.size(), 3u * KepRXMLParser::kReadBlock);
  ASSERT_EQ(kept.size(), 4500u);
  // The last holders go on several threads at once, neighbours on different
  // threads.
  std::vector<std::thread> threads;
  for (size_t t = 0; t < 4; ++t) {
    threads.emplace_back([&kept, t] {
      for (size_t i = t; i < kept.size(); i += 4) {
        EXPECT_EQ(text(kept[i].getString()), "text " + std::to_string(i));
        EXPECT_EQ(text(kept[i].getAttribute("n")), std::to_string(i));
        kept[i] = KepDOMElement();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(XMLParserNames, PrefixedNamesKeepPrefixLocalNameAndAUriWithColons) {
  KepDOMElement r = root(
      "<p:root xmlns:p=\"urn:x:y\" xmlns=\"http://example.org/d:1\" p:at=\"v\" plain=\"w\">"
      "<child/><p:child/></p:root>");
  EXPECT_EQ(r.getNodeID(), KepNameToTag("p:root"));
  EXPECT_EQ(text(r.getPrefix()) + " " + text(r.getLocalName()) + " " + text(r.getNamespaceURI()),
            "p root urn:x:y");
  // Attributes: the prefixed one by namespace, the plain one without.
  EXPECT_EQ(text(r.getAttributeNS("urn:x:y", "at")), "v");
  EXPECT_EQ(text(r.getAttribute("plain")), "w");
  // The declarations are attributes in the namespace of declarations.
  EXPECT_EQ(text(r.getAttributeNS("http://www.w3.org/2000/xmlns/", "p")), "urn:x:y");
  EXPECT_EQ(text(r.getAttribute("xmlns")), "http://example.org/d:1");
  // A child in the default namespace is named by its local name alone.
  KepDOMElement child(r.getFirstChild());
  EXPECT_EQ(text(child.getNodeName()), "child");
  EXPECT_EQ(text(child.getNamespaceURI()), "http://example.org/d:1");
  EXPECT_EQ(text(KepDOMElement(r.getLastChild()).getNamespaceURI()), "urn:x:y");
}

TEST(XMLParserNames, DeclarationsTakeTheWritersPlacesAndUriEndsAreNoPrefixes) {
  // The writer declares the element's own prefix after the name and an
  // attribute's prefix right after the attribute.
  KepDOMElement r = root(
      "<rt:top a=\"1\" xmlns:z=\"u:3\" o:mark=\"m\" xmlns:o=\"u:2\" plain=\"p\" "
      "xmlns:rt=\"u:1\"><in xmlns=\"u:4\" b=\"2\"/></rt:top>");
  EXPECT_EQ(order(r), "xmlns:rt a o:mark xmlns:o plain xmlns:z ");
  EXPECT_EQ(order(KepDOMElement(r.getFirstChild())), "xmlns b ");
  // The default namespace "urn:a:b" ends in what could be a local name "a"
  // and a prefix "b"; "b" is bound elsewhere, to another URI.
  r = root("<b:r xmlns:b=\"urn:z\"><x xmlns=\"urn:a:b\"/><b:y/></b:r>");
  KepDOMElement x(r.getFirstChild());
  EXPECT_EQ(text(x.getNodeName()), "x");
  EXPECT_EQ(text(x.getNamespaceURI()), "urn:a:b");
  EXPECT_TRUE(x.getPrefix().isNull());
  KepDOMElement y(x.getNextSibling());
  EXPECT_EQ(text(y.getNamespaceURI()), "urn:z");
  // A prefix re-bound inside takes the inner URI and goes back outside.
  KepDOMElement inner = root("<p:a xmlns:p=\"u:1\"><p:b xmlns:p=\"u:2\"/><p:c/></p:a>");
  EXPECT_EQ(text(KepDOMElement(inner.getFirstChild()).getNamespaceURI()), "u:2");
  EXPECT_EQ(text(KepDOMElement(inner.getLastChild()).getNamespaceURI()), "u:1");
}

TEST(XMLParserObjects, DtElementIdAndXsNameClassesValueTypesAndServices) {
  parsetest::Widget::registerOnce();
  int const service = KepNameToTag("ParserTestService");  // a known name; the other is not
  KepDOMElement r = root(
      "<r xs=\"ParserTestService\" a=\"1\"><w dt=\"ParserWidget\" a=\"1\"><in/></w>"
      "<e ElementId=\"ParserWidget\"/><n dt=\"NoSuchClassAnywhere\"/><s dt=\"String\"/>"
      "<i dt=\"int\">42</i><b dt=\"boolean\">1</b><f dt=\"float\">2.5</f><u dt=\"unknown\">x</u>"
      "<v xs=\"NeverSeenServiceName\"/></r>");
  KepDOMElement w = r.get("w");
  EXPECT_EQ(w.getClassID(), parsetest::Widget::classId());
  // The attribute stays, so that writing the element does not add a second.
  EXPECT_EQ(text(w.getAttribute("dt")), "ParserWidget");
  auto* widget = static_cast<parsetest::Widget*>(body(w));
  EXPECT_EQ(widget->childrenAtEnd, 1);  // its content was complete
  EXPECT_EQ(r.get("e").getClassID(), parsetest::Widget::classId());
  // No class, or a class that is not an element: a plain element; a value type
  // name: a plain element of that type.
  struct Case {
    char const* name;
    int dataType;
  } const plain[] = {{"n", 0}, {"s", 0}, {"i", 1}, {"b", 5}, {"f", 8}, {"u", 0}};
  for (Case const& c : plain) {
    EXPECT_EQ(r.get(c.name).getClassID(), KepClassID::DOMElement) << c.name;
    EXPECT_EQ(r.get(c.name).getDataType(), c.dataType) << c.name;
  }
  // xs names the service and is not kept as an attribute.
  EXPECT_EQ(r.getService(), service);
  EXPECT_EQ(r.hasAttribute("xs"), 0u);
  EXPECT_EQ(r.get("v").getService(), 0);
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
  parser.setKepDOM();
  EXPECT_EQ(root("<w dt=\"ParserWidget\"/>", parser).getClassID(), parsetest::Widget::classId());
}

namespace {

// Keeps elements named "keep" for itself, drops elements named "drop" and
// fails like an allocation would on the element named "boom".
struct Placer : KepXMLParserEventHandler {
  KepDOMElement kept;
  int offered = 0;
  unsigned long createElement(KepDOMElement* element, KepRDOMParentNode* parent) override {
    ++offered;
    EXPECT_NE(parent, nullptr);
    std::string name = text(element->getNodeName());
    if (name == "boom") throw std::bad_alloc();
    if (name == "keep") kept = *element;
    return name == "keep" || name == "drop" ? 1 : 0;
  }
};

}  // namespace

TEST(XMLParserObjects, TheEventHandlerMayPlaceElementsItselfOrStopTheParse) {
  Placer placer;
  KepXMLParser parser = newParser();
  static_cast<KepRXMLParser*>(body(parser))->setEventHandler(&placer);
  KepDOMElement r = root("<r><keep><a/>t</keep><drop><b/></drop><c/></r>", parser);
  EXPECT_EQ(placer.offered, 6);
  // Only c is left under r; what was inside keep went into keep.
  EXPECT_EQ(shape(r), "r(c)");
  EXPECT_TRUE(placer.kept.getParentNode().isNull());
  EXPECT_EQ(shape(placer.kept), "keep(a 't')");

  // A failure inside the callback stops the parse cleanly. The empty element
  // makes the tokenizer deliver its end right after the start.
  KepThread* thread = KepProcess::getCurrThread();
  thread->clearErrors();
  EXPECT_TRUE(parse("<r xmlns:p=\"u\"><a>t</a><p:x><boom/>tail</p:x><c/></r>", parser).isNull());
  EXPECT_EQ(domtest::lastError(), "XMLParserError");
  thread->clearErrors();
  EXPECT_FALSE(parse("<r><a/></r>", parser).isNull());
}

TEST(XMLParserXPointer, OnlyTheFirstElementAtThePathIsBuilt) {
  std::string const xml =
      "<a><x><b>wrong</b></x><b id=\"1\"><c>deep</c></b><b id=\"2\"/><q:b xmlns:q=\"u\"/></a>";
  KepXMLParser parser = newParser();
  auto build = [&](char const* path) {
    KepStringBufferIOStream stream = parsetest::streamOf(xml);
    return parser.buildObjects(stream, KepXPointer(path));
  };
  KepDOMElement b(build("a.b"));
  EXPECT_EQ(text(b.getAttribute("id")), "1");
  EXPECT_EQ(shape(b), "b(c('deep'))");
  // Nothing around it was built, and only the element is kept.
  EXPECT_TRUE(b.getParentNode().isNull());

  struct Case {
    char const* path;
    char const* wantName;  // null: no element there
  };
  Case const cases[] = {{"a", "a"},       {"a.x.b", "b"}, {"a.b.c", "c"},      {"a.q:b", "q:b"},
                        {"a.c", nullptr}, {"b", nullptr}, {"a.b.c.d", nullptr}};
  for (Case const& c : cases) {
    KepDOMNode found = build(c.path);
    EXPECT_EQ(found.isNull() ? "<none>" : text(found.getNodeName()),
              c.wantName == nullptr ? "<none>" : c.wantName)
        << c.path;
  }
  // An empty XPointer builds the whole document.
  EXPECT_EQ(build("").getNodeType(), KepDOMNode::DOCUMENT_NODE);
}

TEST(XMLParserXPointer, FindFollowsAndMakesPathsAndGetXPointerWalksBack) {
  KepDOMElement s = root("<Settings><Mail><Limit>5</Limit></Mail><Mail/></Settings>");
  KepDOMElement limit = s.find(KepXPointer("Mail.Limit"), 0);
  EXPECT_EQ(limit.getInteger(), 5);
  EXPECT_EQ(body(s.find(KepXPointer(), 0)), body(s));
  EXPECT_EQ(body(s.find(KepXPointer("..Mail..Limit."), 0)), body(limit));
  EXPECT_TRUE(s.find(KepXPointer("Mail.Size"), 0).isNull());
  s.find(KepXPointer("Mail.Size"), 1);
  // Made under the first Mail, not the second.
  EXPECT_EQ(shape(s), "Settings(Mail(Limit('5') Size) Mail)");
  KepDOMElement deep = s.find(KepXPointer("New.Deep.Path"), 1);

  // The path of a node below another, as an XPointer.
  KepXPointer path = deep.getXPointer(s);
  EXPECT_EQ(text(path), "New.Deep.Path");
  EXPECT_EQ(text(deep.getXPointer(KepDOMElement())), "Settings.New.Deep.Path");
  EXPECT_TRUE(s.getXPointer(s).isNull());
  EXPECT_TRUE(s.getXPointer(deep).isNull()) << "deep is not above s";
  EXPECT_EQ(text(limit.getFirstChild().getXPointer(s)), "Mail.Limit");
}
