// The DOM writer: exact bytes for every node kind, escaping, namespaces, the dt
// and xs attributes, hooks and states, views, raw output and the streams.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "WriterTestSupport.h"
#include "support/KepTestSupport.h"

using domtest::newDocument;
using writertest::CaptureStream;
using writertest::newWriter;
using writertest::units;
using writertest::xml;

namespace {

class DOMWriter : public ::testing::Test {
 protected:
  KepDOMDocument doc = newDocument();
  KepDOMElement element(char const* name) { return doc.createElement(name); }
};

// An element of a class of its own, as a typed object is.
class ThingBody : public KepRDOMElement {
 public:
  int getClassID() const override { return KepNameToTag("Thing"); }
  KepObject createAnother() const override { return KepObject(new ThingBody()); }
};

// An element whose hook records the states it is asked at and answers from a
// table of states it claims.
class HookedBody : public KepRDOMElement {
 public:
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    int state = writer.getState();
    seen.push_back(state);
    if (state == KepDOMWriter::ELEMENT_TRANSFORM) return takesHooks ? 1 : 0;
    if (state == replaceState) {
      writer.write(KepString(replacement.c_str()));
      return 1;
    }
    return 0;
  }
  KepObject createAnother() const override { return KepObject(new HookedBody()); }
  bool takesHooks = true;
  int replaceState = 0;
  std::string replacement;
  std::vector<int> seen;
};

template <class Body>
KepDOMElement adopt(KepDOMDocument& doc, Body* body, char const* name) {
  KepDOMElement e(static_cast<KepBridgeToObject*>(body));
  e.setNodeName(KepString(name));
  doc.adoptNode(e);
  return e;
}

}  // namespace

TEST(DOMWriterFamily, ElevenBracketedBridges) {
  EXPECT_EQ(0 KEP_METHODS_DOMWriter(KEP_COUNT_METHOD), 11);
  EXPECT_EQ(0 KEP_METHODS_DOMWriter(KEP_COUNT_BRACKETED), 11);
  KepDOMWriter writer = newWriter();
  ASSERT_FALSE(writer.isNull());
  EXPECT_EQ(writer.getClassID(), 0x4011f);
  EXPECT_EQ(writer.getState(), 0);
  KepDOMWriter none;
  KepDOMNode node;
  EXPECT_EQ(none.serializeAsXML(node), 0u);
  EXPECT_EQ(none.getState(), 0);
}

TEST_F(DOMWriter, DocumentDeclarationIsFollowedDirectlyByTheRoot) {
  doc.appendChild(element("Item"));
  EXPECT_EQ(xml(doc), "<?xml version=\"1.0\"?><Item/>");
  KepDOMDocument empty = newDocument();
  EXPECT_EQ(xml(empty), "<?xml version=\"1.0\"?>");
}

TEST_F(DOMWriter, EveryNodeKindHasItsExactForm) {
  KepDOMElement root = element("Root");
  root.appendChild(doc.createTextNode("t"));
  root.appendChild(doc.createCDATASection("a<b&c]"));
  root.appendChild(doc.createComment("x"));
  root.appendChild(doc.createProcessingInstruction("pi", ""));
  root.appendChild(doc.createProcessingInstruction("go", "now later"));
  KepDOMElement inner = element("Inner");
  inner.appendChild(element("Leaf"));
  root.appendChild(inner);
  EXPECT_EQ(xml(root),
            "<Root>t<![CDATA[a<b&c]]]><!--x--><?pi?><?go now later?><Inner><Leaf/></Inner></Root>");
  // Nodes the writer does not print.
  EXPECT_EQ(xml(doc.createDocumentFragment()), "");
  EXPECT_EQ(xml(doc.createAttribute("a")), "");
  EXPECT_EQ(xml(doc.createEntityReference("amp")), "");
  EXPECT_EQ(xml(KepDOMNode()), "");
}

TEST_F(DOMWriter, TextIsEscapedAndNarrowedAttributesAreNot) {
  KepDOMElement item = element("Item");
  item.appendChild(doc.createTextNode("a<b&c>\"d'"));
  EXPECT_EQ(xml(item), "<Item>a&lt;b&amp;c&gt;\"d'</Item>");

  KepDOMElement quoted = element("Q");
  quoted.setAttribute("v", "say \"hi\" & <go>");
  quoted.setAttribute("w", "2");
  EXPECT_EQ(xml(quoted), "<Q v=\"say \"hi\" & <go>\" w=\"2\"/>");

  // Units above 0xFF keep their low byte; nothing becomes a character reference.
  KepDOMElement euro = element("E");
  euro.appendChild(doc.createTextNode(units(u"\u20ac\u013c\u00e9")));
  EXPECT_EQ(xml(euro), "<E>\xac&lt;\xe9</E>") << "0x13c narrows to '<', which is then escaped";
}

TEST_F(DOMWriter, NormalizedWriteEscapesOnlyTheThreeMarkupBytes) {
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  EXPECT_EQ(KepDOMWriter::normalizedWrite(stream, units(u"<&>\"'\u20acz")), 4 + 5 + 4 + 4);
  EXPECT_EQ(capture->bytes, "&lt;&amp;&gt;\"'\xacz");
  EXPECT_EQ(KepDOMWriter::normalizedWrite(stream, KepString()), 0);

  // The member form reaches the writer's stream at once outside a print.
  capture->bytes.clear();
  KepDOMWriter writer = newWriter();
  writer.serializeAsXML(doc, stream);
  capture->bytes.clear();
  EXPECT_EQ(writer.normalizedWrite("1<2"), 6);
  EXPECT_EQ(capture->bytes, "1&lt;2");
}

TEST_F(DOMWriter, RawWritesAndCopiesGoOutUnchanged) {
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  KepDOMWriter writer = newWriter();
  writer.serializeAsXML(doc, stream);
  capture->bytes.clear();
  EXPECT_EQ(writer.write(KepString("<a>&")), 4);
  signed char raw[] = {'x', 'y', 'z'};
  EXPECT_EQ(writer.write(raw, 1, 2), 2);
  EXPECT_EQ(writer.write(nullptr, 0, 2), 0);
  EXPECT_EQ(writer.write(raw, -1, 2), 0);
  KepStringBufferIOStream source(KepString("copied"));
  EXPECT_EQ(writer.into(source, 4, 0), 4);
  EXPECT_EQ(capture->bytes, "<a>&yzcopi");
  writer.notifyElementBegin(0);
  writer.notifyElementBegin(1);
  EXPECT_EQ(capture->bytes, "<a>&yzcopi/>>");
}

TEST_F(DOMWriter, TypedObjectsAndTypedValuesCarryDt) {
  KepDOMElement thing = adopt(doc, new ThingBody(), "Item");
  thing.setAttribute("a", "1");
  EXPECT_EQ(xml(thing), "<Item a=\"1\" dt=\"Thing\"/>");
  thing.setAttribute("dt", "Own");
  EXPECT_EQ(xml(thing), "<Item a=\"1\" dt=\"Own\"/>") << "an own dt attribute wins";

  KepDOMElement values = element("Values");
  values.set(KepNameToTag("n"), 5);
  values.setBool(KepString("b"), 1);
  values.set(KepString("s"), KepString("x<y"));
  values.set(KepString("f"), 1.5f);
  EXPECT_EQ(values.get(KepNameToTag("n")).getDataType(), 1);
  EXPECT_EQ(xml(values),
            "<Values><n dt=\"int\">5</n><b dt=\"boolean\">1</b><s dt=\"string\">x&lt;y</s>"
            "<f dt=\"r4\">1.5</f></Values>");

  KepDOMElement plain = element("P");
  plain.setAttribute("k", "v");
  plain.setDataType(8);
  EXPECT_EQ(xml(plain), "<P k=\"v\" dt=\"float\"/>");
  plain.setDataType(9);
  EXPECT_EQ(xml(plain), "<P k=\"v\"/>") << "type 9 has no name";
  plain.setDataType(2);
  plain.setAttribute("dt", "mine");
  EXPECT_EQ(xml(plain), "<P k=\"v\" dt=\"mine\"/>");
}

TEST_F(DOMWriter, ServiceTagWritesXsAfterTheClassDt) {
  KepDOMElement thing = adopt(doc, new ThingBody(), "Item");
  thing.setService(KepNameToTag("Mailer"));
  EXPECT_EQ(xml(thing), "<Item dt=\"Thing\" xs=\"Mailer\"/>");
  KepDOMElement own = element("Own");
  own.setService(KepNameToTag("Mailer"));
  own.setAttribute("xs", "Other");
  EXPECT_EQ(xml(own), "<Own xs=\"Other\"/>");
  KepDOMElement typed = element("T");
  typed.setService(KepNameToTag("Mailer"));
  typed.setDataType(1);
  EXPECT_EQ(xml(typed), "<T xs=\"Mailer\" dt=\"int\"/>");
}

TEST_F(DOMWriter, NamespacesAreDeclaredOncePerScope) {
  KepDOMElement root = doc.createElementNS("urn:a", "p:Root");
  KepDOMElement same = doc.createElementNS("urn:a", "p:Same");
  KepDOMElement other = doc.createElementNS("urn:b", "p:Other");
  KepDOMElement plain = element("Plain");
  root.appendChild(same);
  root.appendChild(other);
  root.appendChild(plain);
  same.appendChild(doc.createElementNS("urn:a", "p:Deep"));
  EXPECT_EQ(xml(root),
            "<p:Root xmlns:p=\"urn:a\"><p:Same><p:Deep/></p:Same>"
            "<p:Other xmlns:p=\"urn:b\"/><Plain/></p:Root>");

  // Siblings do not see each other's declarations.
  KepDOMElement list = element("List");
  list.appendChild(doc.createElementNS("urn:a", "q:One"));
  list.appendChild(doc.createElementNS("urn:a", "q:Two"));
  EXPECT_EQ(xml(list), "<List><q:One xmlns:q=\"urn:a\"/><q:Two xmlns:q=\"urn:a\"/></List>");
}

TEST_F(DOMWriter, AttributeNamespacesAndDeclarationsAlreadyPresent) {
  KepDOMElement e = element("E");
  e.setAttributeNS("urn:b", "q:attr", "v");
  e.setAttributeNS("urn:b", "q:more", "w");
  EXPECT_EQ(xml(e), "<E q:attr=\"v\" xmlns:q=\"urn:b\" q:more=\"w\"/>");

  // A declaration carried as an attribute (as a parser leaves it) is not repeated.
  KepDOMElement carried = doc.createElementNS("urn:a", "p:C");
  carried.setAttributeNS("http://www.w3.org/2000/xmlns/", "xmlns:p", "urn:a");
  carried.appendChild(doc.createElementNS("urn:a", "p:Child"));
  EXPECT_EQ(xml(carried), "<p:C xmlns:p=\"urn:a\"><p:Child/></p:C>");
  KepDOMElement byName = doc.createElementNS("urn:a", "p:D");
  byName.setAttribute("xmlns:p", "urn:a");
  EXPECT_EQ(xml(byName), "<p:D xmlns:p=\"urn:a\"/>");
}

TEST_F(DOMWriter, DefaultNamespaceIsDeclaredAndTakenAway) {
  KepDOMElement root = doc.createElementNS("urn:d", "Root");
  root.appendChild(doc.createElementNS("urn:d", "In"));
  root.appendChild(element("Out"));
  EXPECT_EQ(xml(root), "<Root xmlns=\"urn:d\"><In/><Out xmlns=\"\"/></Root>");
}

TEST_F(DOMWriter, NamespaceStackOperations) {
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  KepDOMWriter handle = newWriter();
  auto* writer = static_cast<KepRDOMWriter*>(handle.getRealKepObj());
  EXPECT_TRUE(writer->lookupNS("p").isNull());
  writer->nsStackPush();
  writer->registerNS("p", "urn:1");
  writer->nsStackPush();
  writer->registerNS("p", "urn:2");
  EXPECT_EQ(writer->lookupNS("p").toStdString(), "urn:2");
  writer->nsStackPop();
  EXPECT_EQ(writer->lookupNS("p").toStdString(), "urn:1");
  writer->nsStackPop();
  writer->nsStackPop();  // one pop too many does nothing
  EXPECT_TRUE(writer->lookupNS("p").isNull());
  // A print starts with an empty stack.
  writer->nsStackPush();
  writer->registerNS("p", "urn:a");
  KepDOMElement x = doc.createElementNS("urn:a", "p:X");
  handle.serializeAsXML(x, stream);
  EXPECT_EQ(capture->bytes, "<p:X xmlns:p=\"urn:a\"/>");
  EXPECT_TRUE(writer->lookupNS("p").isNull()) << "the stack is empty after a print";
}

TEST_F(DOMWriter, ElementHooksSeeEveryStateInOrder) {
  auto* body = new HookedBody();
  KepDOMElement e = adopt(doc, body, "H");
  e.setAttribute("a", "1");
  e.appendChild(doc.createTextNode("t"));
  EXPECT_EQ(xml(e), "<H a=\"1\">t</H>");
  std::vector<int> expected{22, 5, 6, 8, 9, 10, 11, 12, 21};
  EXPECT_EQ(body->seen, expected);

  // An element that declines at the transform check is not asked again.
  body->seen.clear();
  body->takesHooks = false;
  EXPECT_EQ(xml(e), "<H a=\"1\">t</H>");
  EXPECT_EQ(body->seen, std::vector<int>{22});

  // Without children there is no end tag and no state 21.
  body->takesHooks = true;
  KepDOMElement leaf = adopt(doc, new HookedBody(), "L");
  xml(leaf);
  auto* leafBody = static_cast<HookedBody*>(leaf.getRealKepObj());
  EXPECT_EQ(leafBody->seen, (std::vector<int>{22, 5, 6, 8, 11}));
}

TEST_F(DOMWriter, AHookReplacesTheOutputOfItsState) {
  auto* body = new HookedBody();
  KepDOMElement e = adopt(doc, body, "H");
  e.setAttribute("a", "1");
  e.appendChild(element("Child"));
  body->replaceState = KepDOMWriter::ELEMENT_BEFORE_NAME;
  body->replacement = "Renamed";
  EXPECT_EQ(xml(e), "<Renamed a=\"1\"><Child/></H>");
  body->replaceState = KepDOMWriter::ATTRIBUTE_BEFORE;
  body->replacement = " b=\"2\"";
  EXPECT_EQ(xml(e), "<H b=\"2\"><Child/></H>");
  body->replaceState = KepDOMWriter::ELEMENT_BEFORE_ATTRIBUTES;
  body->replacement = "";
  EXPECT_EQ(xml(e), "<H><Child/></H>");
  body->replaceState = KepDOMWriter::ELEMENT_BEFORE_END_TAG;
  body->replacement = "</End>";
  EXPECT_EQ(xml(e), "<H a=\"1\"><Child/></End>");
  // Claiming the children leaves out the children and, with them, the end tag.
  body->replaceState = KepDOMWriter::ELEMENT_BEFORE_CHILDREN;
  body->replacement = "/>";
  EXPECT_EQ(xml(e), "<H a=\"1\"/>");
}

namespace {

// A hook that claims its children and prints another tree in their place with
// a nested print, telling the writer that an end tag follows.
class NestingBody : public KepRDOMElement {
 public:
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    int state = writer.getState();
    if (state == KepDOMWriter::ELEMENT_TRANSFORM) return 1;
    if (state != KepDOMWriter::ELEMENT_BEFORE_CHILDREN) return 0;
    writer.notifyElementBegin(1);
    writer.serializeAsXML(other);
    writer.notifyElementEnd(1);
    return 1;
  }
  KepObject createAnother() const override { return KepObject(new NestingBody()); }
  KepDOMNode other;
};

// A caller's element class (an outer object) whose hook writes another name.
class OuterElement : public KepDOMElement {
 public:
  OuterElement() : KepDOMElement(nullptr, KepClassIdArg(KepClassID::DOMElement)) {}
  unsigned long isBridge() const override { return 0; }
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    int state = writer.getState();
    if (state == KepDOMWriter::ELEMENT_TRANSFORM) return 1;
    if (state == KepDOMWriter::ELEMENT_BEFORE_NAME) {
      writer.write(KepString("Outer"));
      return 1;
    }
    return 0;
  }
};

}  // namespace

TEST_F(DOMWriter, HooksMayPrintOtherNodesInPlace) {
  auto* body = new NestingBody();
  KepDOMElement e = adopt(doc, body, "N");
  KepDOMElement other = doc.createElementNS("urn:x", "x:Other");
  other.appendChild(doc.createTextNode("1&2"));
  body->other = other;
  e.appendChild(element("Hidden"));
  EXPECT_EQ(xml(e), "<N><x:Other xmlns:x=\"urn:x\">1&amp;2</x:Other></N>");
  body->other = KepDOMNode();
}

TEST_F(DOMWriter, OuterObjectsReceiveTheHook) {
  KepDOMElement outer(*new OuterElement());
  ASSERT_FALSE(outer.isNull());
  outer.appendChild(doc.createTextNode("x"));
  KepDOMElement root = element("Root");
  root.appendChild(outer);
  EXPECT_EQ(xml(root), "<Root><Outer>x</DomElement></Root>");
}

namespace {

// A document whose hook writes its own declaration and records its states.
class DeclaringDocument : public KepRDOMDocument {
 public:
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    int state = writer.getState();
    seen.push_back(state);
    if (state == KepDOMWriter::DOCUMENT_BEGIN) {
      writer.write(KepString("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"));
      return 1;
    }
    return 0;
  }
  KepObject createAnother() const override { return KepObject(new DeclaringDocument()); }
  std::vector<int> seen;
};

// A text node whose hook wraps its text.
class MarkedText : public KepRDOMText {
 public:
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    int state = writer.getState();
    if (state == KepDOMWriter::TEXT_BEFORE) writer.write(KepString("["));
    if (state == KepDOMWriter::TEXT_AFTER) writer.write(KepString("]"));
    return 0;
  }
  KepObject createAnother() const override { return KepObject(new MarkedText()); }
};

}  // namespace

TEST_F(DOMWriter, DocumentAndTextHooks) {
  auto* body = new DeclaringDocument();
  KepDOMDocument own(static_cast<KepBridgeToObject*>(body));
  KepDOMElement root = own.createElement("R");
  own.appendChild(root);
  KepDOMText marked(static_cast<KepBridgeToObject*>(new MarkedText()));
  marked.setData("a<b");
  own.adoptNode(marked);
  root.appendChild(marked);
  EXPECT_EQ(xml(own), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><R>[a&lt;b]</R>");
  EXPECT_EQ(body->seen, (std::vector<int>{1, 3, 4, 2}));
}

TEST_F(DOMWriter, ViewsFilterElementsAndAttributes) {
  KepDOMDocument viewDoc = newDocument();
  KepDOMElement viewRoot = viewDoc.createElement("View");
  viewDoc.appendChild(viewRoot);
  KepDOMElement include = viewDoc.createElement("Include");
  include.appendChild(viewDoc.createElement("Root"));
  include.appendChild(viewDoc.createElement("Keep"));
  viewRoot.appendChild(include);
  KepDOMElement attributes = viewDoc.createElement("IncludeAttribute");
  attributes.appendChild(viewDoc.createElement("a"));
  KepDOMElement b = viewDoc.createElement("b");
  b.setAttribute("notvalue", "secret,hidden");
  attributes.appendChild(b);
  viewRoot.appendChild(attributes);
  void* view = KepDOMWriter::compileView(viewDoc);
  ASSERT_NE(view, nullptr);

  KepDOMElement root = element("Root");
  KepDOMElement keep = element("Keep");
  keep.setAttribute("a", "1");
  keep.setAttribute("b", "hidden");
  keep.setAttribute("c", "3");
  KepDOMElement drop = element("Drop");
  drop.appendChild(element("Keep"));
  root.appendChild(keep);
  root.appendChild(drop);
  KepDOMElement shown = element("Keep");
  shown.setAttribute("b", "open");
  root.appendChild(shown);
  root.appendChild(doc.createTextNode("t"));

  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  KepDOMWriter writer = newWriter();
  writer.setView(view);
  writer.serializeAsXML(root, stream);
  EXPECT_EQ(capture->bytes, "<Root><Keep a=\"1\"/><Keep b=\"open\"/>t</Root>");

  // The same view by name, and no view again.
  KepDOMWriter::registerView("Svc", "Short", view);
  KepDOMWriter named = newWriter();
  named.setView("Svc", "Short", 0);
  capture->bytes.clear();
  named.serializeAsXML(drop, stream);
  EXPECT_EQ(capture->bytes, "");
  named.setView("Svc", "Unknown", 0);
  capture->bytes.clear();
  named.serializeAsXML(drop, stream);
  EXPECT_EQ(capture->bytes, "<Drop><Keep/></Drop>");
  KepDOMWriter::registerView("Svc", "Short", nullptr);
  named.setView("Svc", "Short", 0);
  capture->bytes.clear();
  named.serializeAsXML(drop, stream);
  EXPECT_EQ(capture->bytes, "<Drop><Keep/></Drop>");
  KepDOMWriter::freeView(view);

  KepDOMDocument noRoot = newDocument();
  EXPECT_EQ(KepDOMWriter::compileView(noRoot), nullptr);
}

TEST_F(DOMWriter, ViewWithoutIncludeKeepsEveryElement) {
  KepDOMDocument viewDoc = newDocument();
  KepDOMElement viewRoot = viewDoc.createElement("View");
  viewDoc.appendChild(viewRoot);
  KepDOMElement publish = viewDoc.createElement("Publish");
  publish.appendChild(viewDoc.createElement("Item"));
  viewRoot.appendChild(publish);
  void* view = KepDOMWriter::compileView(viewDoc);
  KepDOMElement item = element("Item");
  item.setAttribute("x", "1");
  item.set(KepString("v"), 2);
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  KepDOMWriter writer = newWriter();
  writer.setView(view);
  writer.serializeAsXML(item, stream);
  EXPECT_EQ(capture->bytes, "<Item x=\"1\"><v dt=\"int\">2</v></Item>");
  writer.setView(nullptr);
  KepDOMWriter::freeView(view);
}

TEST_F(DOMWriter, LargeOutputReachesTheStreamInBigBlocks) {
  KepDOMElement root = element("Root");
  std::string expected = "<Root>";
  for (int i = 0; i < 3000; ++i) {
    KepDOMElement row = element("Row");
    std::string n = std::to_string(i);
    row.setAttribute("n", KepString(n.c_str()));
    row.appendChild(doc.createTextNode("value & more <text> for the row"));
    root.appendChild(row);
    expected += "<Row n=\"" + n + "\">value &amp; more &lt;text&gt; for the row</Row>";
  }
  // One text far larger than the buffer, all of it escaped.
  std::string big(100000, '&');
  root.appendChild(doc.createTextNode(KepString(big.c_str())));
  for (int i = 0; i < 100000; ++i) expected += "&amp;";
  expected += "</Root>";

  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  KepDOMWriter writer = newWriter();
  writer.serializeAsXML(root, stream);
  ASSERT_EQ(capture->bytes.size(), expected.size());
  EXPECT_EQ(capture->bytes, expected);
  ASSERT_GE(capture->calls.size(), 2u);
  for (size_t i = 0; i + 1 < capture->calls.size(); ++i) {
    EXPECT_GE(capture->calls[i], 32 * 1024) << "write " << i << " is small";
  }
}

TEST_F(DOMWriter, WritesIntoMemoryAndFileStreams) {
  doc.appendChild(element("Doc"));
  doc.getDocumentElement().setAttribute("k", "v");
  doc.getDocumentElement().appendChild(doc.createTextNode(units(u"\u00e9<")));
  std::string expected = "<?xml version=\"1.0\"?><Doc k=\"v\">\xe9&lt;</Doc>";

  KepStringBufferIOStream memory;
  KepDOMWriter writer = newWriter();
  EXPECT_EQ(writer.serializeAsXML(doc, memory), 1u);
  KepString text = memory.toString(0, -1);
  ASSERT_EQ(text.length(), static_cast<int>(expected.size()));
  for (int i = 0; i < text.length(); ++i) {
    EXPECT_EQ(text.charAt(i), static_cast<unsigned char>(expected[static_cast<size_t>(i)]));
  }

  keptest::TempDir dir;
  std::string path = dir.file("out.xml");
  KepFile file{KepString(path.c_str())};
  writer.serializeAsXML(doc, file);
  file.close();
  std::ifstream in(path, std::ios::binary);
  std::stringstream read;
  read << in.rdbuf();
  EXPECT_EQ(read.str(), expected);
}

namespace {

// A derived writer that drops one attribute, skips one element name, upper-cases
// text and counts what it was offered.
class FilteringWriter : public KepRDOMWriter {
 public:
  unsigned long _shouldPrintElement(KepDOMElement& element, int tag) override {
    ++elements;
    if (tag == KepNameToTag("Skip")) return 0;
    return KepRDOMWriter::_shouldPrintElement(element, tag);
  }
  unsigned long _shouldPrintAttribute(KepDOMElement& element, KepDOMAttribute& attribute,
                                      KepString& name, KepString& value) override {
    ++attributes;
    if (attribute.isNull()) ++pseudo;
    if (name.toStdString() == "secret") return 0;
    return KepRDOMWriter::_shouldPrintAttribute(element, attribute, name, value);
  }
  void _printText(KepDOMText& text, KepString& value) override {
    KepString upper = value.toUpperCase();
    KepRDOMWriter::_printText(text, upper);
  }
  KepObject createAnother() const override { return KepObject(new FilteringWriter()); }
  int elements = 0;
  int attributes = 0;
  int pseudo = 0;
};

}  // namespace

TEST_F(DOMWriter, DerivedWritersReceiveEveryNodeOperation) {
  KepDOMElement root = adopt(doc, new ThingBody(), "Root");
  root.setAttribute("secret", "s");
  root.setAttribute("open", "o");
  root.setService(KepNameToTag("Mailer"));
  KepDOMElement skip = element("Skip");
  skip.appendChild(element("Inside"));
  root.appendChild(skip);
  root.appendChild(doc.createTextNode("low<er"));
  root.appendChild(doc.createElementNS("urn:a", "p:Kept"));
  auto* body = new FilteringWriter();
  KepDOMWriter writer(static_cast<KepBridgeToObject*>(body));
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  writer.serializeAsXML(root, stream);
  EXPECT_EQ(capture->bytes,
            "<Root open=\"o\" dt=\"Thing\" xs=\"Mailer\">LOW&lt;ER"
            "<p:Kept xmlns:p=\"urn:a\"/></Root>");
  EXPECT_EQ(body->elements, 3) << "Root, Skip and p:Kept; nothing below Skip";
  EXPECT_EQ(body->attributes, 4) << "two attributes, dt and xs";
  EXPECT_EQ(body->pseudo, 2);
}

namespace {

// A hook that copies its element's first child to a second stream as well.
class TeeBody : public KepRDOMElement {
 public:
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    int state = writer.getState();
    if (state == KepDOMWriter::ELEMENT_TRANSFORM) return 1;
    if (state == KepDOMWriter::ELEMENT_BEFORE_CHILDREN) {
      KepDOMNode first = getFirstChild();
      writer.serializeAsXML(first, side);
    }
    return 0;
  }
  KepObject createAnother() const override { return KepObject(new TeeBody()); }
  KepIOStream side;
};

}  // namespace

TEST_F(DOMWriter, NestedPrintToAnotherStreamLeavesTheOuterStreamInPlace) {
  auto* body = new TeeBody();
  auto* sideCapture = new CaptureStream();
  body->side = KepIOStream(*sideCapture);
  KepDOMElement tee = adopt(doc, body, "Tee");
  KepDOMElement inner = doc.createElementNS("urn:a", "p:In");
  tee.appendChild(inner);
  KepDOMElement root = doc.createElementNS("urn:a", "p:Root");
  root.appendChild(tee);
  EXPECT_EQ(xml(root), "<p:Root xmlns:p=\"urn:a\"><Tee><p:In/></Tee></p:Root>");
  EXPECT_EQ(sideCapture->bytes, "<p:In xmlns:p=\"urn:a\"/>") << "a text of its own";
  body->side = KepIOStream();
}
