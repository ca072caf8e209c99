// The DOM writer: exact bytes for every node kind, escaping, namespaces, the dt
// and xs attributes, hooks and states, views, raw output, the streams and
// several threads printing one tree.
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <thread>
#include <utility>

#include "WriterTestSupport.h"

using domtest::newDocument;
using writertest::CaptureStream;
using writertest::newWriter;
using writertest::units;
using writertest::xml;

namespace {

using Attributes = std::initializer_list<std::pair<char const*, char const*>>;

class DOMWriter : public ::testing::Test {
 protected:
  KepDOMDocument doc = newDocument();

  // An element with `children` appended and `list` set as attributes.
  KepDOMElement el(char const* name, std::initializer_list<KepDOMNode> children = {},
                   Attributes list = {}) {
    return fill(attrs(doc.createElement(name), list), children);
  }
  KepDOMElement elNS(char const* uri, char const* name,
                     std::initializer_list<KepDOMNode> children = {}) {
    return fill(doc.createElementNS(uri, name), children);
  }
  static KepDOMElement fill(KepDOMElement e, std::initializer_list<KepDOMNode> children) {
    for (KepDOMNode const& c : children) e.appendChild(c);
    return e;
  }
  static KepDOMElement attrs(KepDOMElement e, Attributes list, char const* uri = nullptr) {
    for (auto const& a : list) {
      if (uri == nullptr) e.setAttribute(a.first, a.second);
      if (uri != nullptr) e.setAttributeNS(uri, a.first, a.second);
    }
    return e;
  }
  static KepDOMElement typed(KepDOMElement e, int dataType) {
    e.setDataType(dataType);
    return e;
  }
  static KepDOMElement served(KepDOMElement e, char const* service) {
    e.setService(KepNameToTag(service));
    return e;
  }
  // An element whose body is `body`, named `name`, in this document.
  KepDOMElement adopt(KepRDOMElement* body, char const* name) {
    KepDOMElement e(static_cast<KepBridgeToObject*>(body));
    e.setNodeName(KepString(name));
    doc.adoptNode(e);
    return e;
  }
  KepDOMText textNode(char const* data) { return doc.createTextNode(data); }
  // An element holding an int, a boolean, a string and a float value.
  KepDOMElement values() {
    KepDOMElement v = el("Values");
    v.set(KepNameToTag("n"), 5);
    v.setBool(KepString("b"), 1);
    v.set(KepString("s"), KepString("x<y"));
    v.set(KepString("f"), 1.5f);
    return v;
  }
};

// An element of a class of its own, as a typed object is.
class ThingBody : public KepRDOMElement {
 public:
  int getClassID() const override { return KepNameToTag("Thing"); }
  KepObject createAnother() const override { return KepObject(new ThingBody()); }
};

// A derived writer that changes nothing: the writer then calls every per-node
// operation through its virtual, with handles.
class DerivedWriter : public KepRDOMWriter {
 public:
  KepObject createAnother() const override { return KepObject(new DerivedWriter()); }
};

KepDOMDocument parsed(char const* text) {
  KepStringBufferIOStream stream{KepString(text)};
  return KepDOMDocument(KepXMLParser(KepGetObject(KepClassID::XMLParser, 0)).buildObjects(stream));
}

// The view the document in `text` describes.
void* compiledView(char const* text) {
  KepDOMDocument view = parsed(text);
  return KepDOMWriter::compileView(view);
}

}  // namespace

TEST_F(DOMWriter, EveryKindOfNodeHasItsExactForm) {
  KepDOMDocument full = newDocument();
  full.appendChild(full.createElement("Item"));
  struct Case {
    char const* what;
    KepDOMNode node;
    std::string bytes;
  };
  Case const cases[] = {
      {"document", full, "<?xml version=\"1.0\"?><Item/>"},
      {"empty document", newDocument(), "<?xml version=\"1.0\"?>"},
      {"each child kind",
       el("Root", {textNode("t"), doc.createCDATASection("a<b&c]"), doc.createComment("x"),
                   doc.createProcessingInstruction("pi", ""),
                   doc.createProcessingInstruction("go", "now later"), el("Inner", {el("Leaf")})}),
       "<Root>t<![CDATA[a<b&c]]]><!--x--><?pi?><?go now later?><Inner><Leaf/></Inner></Root>"},
      {"fragment", doc.createDocumentFragment(), ""},
      {"attribute", doc.createAttribute("a"), ""},
      {"null", KepDOMNode(), ""},
      // Text escapes only <, > and &; attribute values go out as they stand.
      {"text", el("Item", {textNode("a<b&c>\"d'")}), "<Item>a&lt;b&amp;c&gt;\"d'</Item>"},
      {"attributes", el("Q", {}, {{"v", "say \"hi\" & <go>"}, {"w", "2"}}),
       "<Q v=\"say \"hi\" & <go>\" w=\"2\"/>"},
      // Units above 0xFF keep their low byte: 0x13c becomes '<', then escaped.
      {"wide units", el("E", {doc.createTextNode(units(u"\u20ac\u013c\u00e9"))}),
       "<E>\xac&lt;\xe9</E>"},
      {"typed object", attrs(adopt(new ThingBody(), "Item"), {{"a", "1"}}),
       "<Item a=\"1\" dt=\"Thing\"/>"},
      {"own dt wins", attrs(adopt(new ThingBody(), "Item"), {{"a", "1"}, {"dt", "Own"}}),
       "<Item a=\"1\" dt=\"Own\"/>"},
      {"typed values", values(),
       "<Values><n dt=\"int\">5</n><b dt=\"boolean\">1</b><s dt=\"string\">x&lt;y</s>"
       "<f dt=\"r4\">1.5</f></Values>"},
      {"type 9 has no name", typed(el("P", {}, {{"k", "v"}}), 9), "<P k=\"v\"/>"},
      {"own dt of a value", typed(el("P", {}, {{"k", "v"}, {"dt", "mine"}}), 2),
       "<P k=\"v\" dt=\"mine\"/>"},
      {"service after class", served(adopt(new ThingBody(), "Item"), "Mailer"),
       "<Item dt=\"Thing\" xs=\"Mailer\"/>"},
      {"own xs wins", served(el("Own", {}, {{"xs", "Other"}}), "Mailer"), "<Own xs=\"Other\"/>"},
      {"service before value type", typed(served(el("T"), "Mailer"), 1),
       "<T xs=\"Mailer\" dt=\"int\"/>"},
      // Namespaces: declared where first needed, once for the scope below.
      {"prefix scope",
       elNS("urn:a", "p:Root",
            {elNS("urn:a", "p:Same", {elNS("urn:a", "p:Deep")}), elNS("urn:b", "p:Other"),
             el("Plain")}),
       "<p:Root xmlns:p=\"urn:a\"><p:Same><p:Deep/></p:Same>"
       "<p:Other xmlns:p=\"urn:b\"/><Plain/></p:Root>"},
      {"siblings", el("List", {elNS("urn:a", "q:One"), elNS("urn:a", "q:Two")}),
       "<List><q:One xmlns:q=\"urn:a\"/><q:Two xmlns:q=\"urn:a\"/></List>"},
      {"attribute prefix", attrs(el("E"), {{"q:attr", "v"}, {"q:more", "w"}}, "urn:b"),
       "<E q:attr=\"v\" xmlns:q=\"urn:b\" q:more=\"w\"/>"},
      // A declaration carried as an attribute (as a parser leaves it) is not repeated.
      {"carried declaration",
       attrs(elNS("urn:a", "p:C", {elNS("urn:a", "p:Child")}), {{"xmlns:p", "urn:a"}},
             "http://www.w3.org/2000/xmlns/"),
       "<p:C xmlns:p=\"urn:a\"><p:Child/></p:C>"},
      {"declaration by name", attrs(elNS("urn:a", "p:D"), {{"xmlns:p", "urn:a"}}),
       "<p:D xmlns:p=\"urn:a\"/>"},
      {"default namespace", elNS("urn:d", "Root", {elNS("urn:d", "In"), el("Out")}),
       "<Root xmlns=\"urn:d\"><In/><Out xmlns=\"\"/></Root>"},
  };
  // One writer of each kind for every case: nothing may carry over from one
  // print to the next.
  KepDOMWriter writer = newWriter();
  KepDOMWriter derived(static_cast<KepBridgeToObject*>(new DerivedWriter()));
  for (Case const& c : cases) {
    EXPECT_EQ(xml(c.node, writer), c.bytes) << c.what;
    if (c.node.getNodeType() == KepDOMNode::DOCUMENT_NODE) {
      EXPECT_EQ(writer.getState(), KepDOMWriter::DOCUMENT_END) << c.what;
    }
    EXPECT_EQ(xml(c.node, derived), c.bytes) << "derived writer, " << c.what;
  }
}

TEST_F(DOMWriter, WritesOutsideAPrintStayInBoundsAndLeaveNoNamespaces) {
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  EXPECT_EQ(KepDOMWriter::normalizedWrite(stream, units(u"<&>\u20acz")), 4 + 5 + 4 + 2);
  EXPECT_EQ(capture->bytes, "&lt;&amp;&gt;\xacz");
  KepDOMWriter writer = newWriter();
  writer.serializeAsXML(doc, stream);
  capture->bytes.clear();
  signed char raw[] = {'x', 'y', 'z'};
  EXPECT_EQ(writer.write(raw, 1, 2), 2);
  EXPECT_EQ(writer.write(nullptr, 0, 2), 0);
  EXPECT_EQ(writer.write(raw, -1, 2), 0);
  EXPECT_EQ(capture->bytes, "yz");
  // A declaration left on the stack before a print neither hides the one the
  // print needs nor survives it; popping an empty stack does nothing.
  auto* body = static_cast<KepRDOMWriter*>(writer.getRealKepObj());
  body->nsStackPop();
  body->nsStackPush();
  body->registerNS("p", "urn:a");
  EXPECT_EQ(xml(elNS("urn:a", "p:X"), writer), "<p:X xmlns:p=\"urn:a\"/>");
  EXPECT_TRUE(body->lookupNS("p").isNull());
}

namespace {

// A body of class `Base` that records every state the writer asks it at and
// answers with `hook` (nothing claimed while it is empty).
template <class Base>
class Hooked : public Base {
 public:
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    seen.push_back(writer.getState());
    return hook ? hook(writer) : 0;
  }
  KepObject createAnother() const override { return KepObject(new Hooked()); }
  std::function<unsigned long(KepDOMWriter&)> hook;
  std::vector<int> seen;
};

// A caller's element class (an outer object) whose hook writes another name.
class OuterElement : public KepDOMElement {
 public:
  OuterElement() : KepDOMElement(nullptr, KepClassIdArg(KepClassID::DOMElement)) {}
  unsigned long isBridge() const override { return 0; }
  unsigned long serializeAsXML(KepDOMWriter& writer) override {
    int state = writer.getState();
    if (state == KepDOMWriter::ELEMENT_TRANSFORM) return 1;
    if (state != KepDOMWriter::ELEMENT_BEFORE_NAME) return 0;
    writer.write(KepString("Outer"));
    return 1;
  }
};

}  // namespace

TEST_F(DOMWriter, ElementHooksSeeEveryStateAndMayReplaceItsOutput) {
  bool takesHooks = true;
  int replaceState = 0;
  char const* replacement = "";
  auto hook = [&](KepDOMWriter& writer) -> unsigned long {
    int state = writer.getState();
    if (state == KepDOMWriter::ELEMENT_TRANSFORM) return takesHooks ? 1 : 0;
    if (state != replaceState) return 0;
    writer.write(KepString(replacement));
    return 1;
  };
  auto* body = new Hooked<KepRDOMElement>();
  body->hook = hook;
  KepDOMElement e = attrs(fill(adopt(body, "H"), {el("Child")}), {{"a", "1"}});
  EXPECT_EQ(xml(e), "<H a=\"1\"><Child/></H>");
  EXPECT_EQ(body->seen, (std::vector<int>{22, 5, 6, 8, 9, 10, 11, 12, 21}));
  // An element that declines at the transform check is not asked again.
  body->seen.clear();
  takesHooks = false;
  EXPECT_EQ(xml(e), "<H a=\"1\"><Child/></H>");
  EXPECT_EQ(body->seen, std::vector<int>{22});
  takesHooks = true;

  struct Case {
    int state;
    char const* replacement;
    char const* bytes;
  };
  Case const cases[] = {
      {KepDOMWriter::ELEMENT_BEFORE_NAME, "Renamed", "<Renamed a=\"1\"><Child/></H>"},
      {KepDOMWriter::ATTRIBUTE_BEFORE, " b=\"2\"", "<H b=\"2\"><Child/></H>"},
      {KepDOMWriter::ELEMENT_BEFORE_ATTRIBUTES, "", "<H><Child/></H>"},
      {KepDOMWriter::ELEMENT_BEFORE_END_TAG, "</End>", "<H a=\"1\"><Child/></End>"},
      // Claiming the children leaves out the children and, with them, the end tag.
      {KepDOMWriter::ELEMENT_BEFORE_CHILDREN, "/>", "<H a=\"1\"/>"},
  };
  for (Case const& c : cases) {
    replaceState = c.state;
    replacement = c.replacement;
    EXPECT_EQ(xml(e), c.bytes) << c.state;
  }
}

TEST_F(DOMWriter, HooksMayPrintOtherNodesInPlaceAndOuterObjectsHaveHooks) {
  // In place of the children, with a nested print into the same writer.
  KepDOMNode other = elNS("urn:x", "x:Other", {textNode("1&2")});
  auto* nesting = new Hooked<KepRDOMElement>();
  nesting->hook = [&](KepDOMWriter& writer) -> unsigned long {
    if (writer.getState() != KepDOMWriter::ELEMENT_BEFORE_CHILDREN) {
      return writer.getState() == KepDOMWriter::ELEMENT_TRANSFORM;
    }
    writer.notifyElementBegin(1);
    writer.serializeAsXML(other);
    writer.notifyElementEnd(1);
    return 1;
  };
  EXPECT_EQ(xml(fill(adopt(nesting, "N"), {el("Hidden")})),
            "<N><x:Other xmlns:x=\"urn:x\">1&amp;2</x:Other></N>");

  // Outer objects in the tree receive the hook too.
  KepDOMElement outer(*new OuterElement());
  ASSERT_FALSE(outer.isNull());
  outer.appendChild(textNode("x"));
  EXPECT_EQ(xml(el("Root", {outer})), "<Root><Outer>x</DomElement></Root>");
}

TEST_F(DOMWriter, DocumentAndTextHooks) {
  auto* body = new Hooked<KepRDOMDocument>();
  body->hook = [](KepDOMWriter& writer) -> unsigned long {
    if (writer.getState() != KepDOMWriter::DOCUMENT_BEGIN) return 0;
    writer.write(KepString("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"));
    return 1;
  };
  KepDOMDocument own(static_cast<KepBridgeToObject*>(body));
  KepDOMElement root = own.createElement("R");
  own.appendChild(root);
  auto* marked = new Hooked<KepRDOMText>();
  marked->hook = [](KepDOMWriter& writer) -> unsigned long {
    if (writer.getState() == KepDOMWriter::TEXT_BEFORE) writer.write(KepString("["));
    if (writer.getState() == KepDOMWriter::TEXT_AFTER) writer.write(KepString("]"));
    return 0;
  };
  KepDOMText text(static_cast<KepBridgeToObject*>(marked));
  text.setData("a<b");
  own.adoptNode(text);
  root.appendChild(text);
  EXPECT_EQ(xml(own), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><R>[a&lt;b]</R>");
  EXPECT_EQ(body->seen, (std::vector<int>{1, 3, 4, 2}));
  EXPECT_EQ(marked->seen, (std::vector<int>{15, 16}));
}

TEST_F(DOMWriter, ViewsFilterElementsAndAttributes) {
  void* view = compiledView(
      ("<View><Include><Root/><Keep/></Include>"
       "<IncludeAttribute><a/><b notvalue=\"secret,hidden\"/></IncludeAttribute></View>"));
  ASSERT_NE(view, nullptr);
  KepDOMElement root = parsed(
                           "<Root><Keep a=\"1\" b=\"hidden\" c=\"3\"/><Drop><Keep/></Drop>"
                           "<Keep b=\"open\"/>t</Root>")
                           .getDocumentElement();
  KepDOMWriter writer = newWriter();
  writer.setView(view);
  EXPECT_EQ(xml(root, writer), "<Root><Keep a=\"1\"/><Keep b=\"open\"/>t</Root>");
  // The type of a value is a dt attribute to the view like any other: left out
  // unless named.
  KepDOMElement typedKeep = el("Root");
  typedKeep.set(KepString("Keep"), 5);
  EXPECT_EQ(xml(typedKeep, writer), "<Root><Keep>5</Keep></Root>");

  // The same view by name; a name taken back prints all.
  KepDOMElement drop = root.get("Drop");
  KepDOMWriter::registerView("Svc", "Short", view);
  KepDOMWriter named = newWriter();
  named.setView("Svc", "Short", 0);
  EXPECT_EQ(xml(drop, named), "");
  KepDOMWriter::registerView("Svc", "Short", nullptr);
  named.setView("Svc", "Short", 0);
  EXPECT_EQ(xml(drop, named), "<Drop><Keep/></Drop>");
  KepDOMWriter::freeView(view);
  KepDOMDocument empty = newDocument();
  EXPECT_EQ(KepDOMWriter::compileView(empty), nullptr) << "no root element";
}

TEST_F(DOMWriter, LargeOutputReachesTheStreamInBigBlocks) {
  KepDOMElement root = el("Root");
  std::string expected = "<Root>";
  for (int i = 0; i < 3000; ++i) {
    std::string n = std::to_string(i);
    root.appendChild(el("Row", {textNode("value & more <text> for the row")}, {{"n", n.c_str()}}));
    expected += "<Row n=\"" + n + "\">value &amp; more &lt;text&gt; for the row</Row>";
  }
  // One text far larger than the buffer, all of it escaped.
  root.appendChild(textNode(std::string(100000, '&').c_str()));
  for (int i = 0; i < 100000; ++i) expected += "&amp;";
  expected += "</Root>";

  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  newWriter().serializeAsXML(root, stream);
  EXPECT_EQ(capture->bytes, expected);
  ASSERT_GE(capture->calls.size(), 2u);
  for (size_t i = 0; i + 1 < capture->calls.size(); ++i) {
    EXPECT_GE(capture->calls[i], 32 * 1024) << "write " << i << " is small";
  }
}

TEST_F(DOMWriter, ConcurrentWritersOnASharedTreeAgree) {
  KepDOMElement root = values();
  for (int i = 0; i < 50; ++i) {
    root.appendChild(elNS("urn:a", "p:Row", {textNode("a&b"), el("In", {}, {{"k", "v"}})}));
  }
  doc.appendChild(root);
  std::string const once = xml(doc);
  // Each thread prints the tree several times, each print with its own writer.
  std::vector<std::string> results(4);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < results.size(); ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 5; ++i) results[t] += xml(doc);
    });
  }
  for (auto& thread : threads) thread.join();
  for (std::string const& r : results) EXPECT_EQ(r, once + once + once + once + once);
}

namespace {

// A derived writer that drops one attribute, skips one element name and
// upper-cases text.
class FilteringWriter : public KepRDOMWriter {
 public:
  unsigned long _shouldPrintElement(KepDOMElement& element, int tag) override {
    if (tag == KepNameToTag("Skip")) return 0;
    return KepRDOMWriter::_shouldPrintElement(element, tag);
  }
  unsigned long _shouldPrintAttribute(KepDOMElement& element, KepDOMAttribute& attribute,
                                      KepString& name, KepString& value) override {
    if (name.toStdString() == "secret") return 0;
    return KepRDOMWriter::_shouldPrintAttribute(element, attribute, name, value);
  }
  void _printText(KepDOMText& text, KepString& value) override {
    KepString upper = value.toUpperCase();
    KepRDOMWriter::_printText(text, upper);
  }
  KepObject createAnother() const override { return KepObject(new FilteringWriter()); }
};

}  // namespace

TEST_F(DOMWriter, DerivedWritersReceiveEveryNodeOperation) {
  KepDOMElement root =
      served(attrs(adopt(new ThingBody(), "Root"), {{"secret", "s"}, {"open", "o"}}), "Mailer");
  fill(root, {el("Skip", {el("Inside")}), textNode("low<er"), elNS("urn:a", "p:Kept")});
  root.set(KepString("n"), 1);
  KepDOMWriter writer(static_cast<KepBridgeToObject*>(new FilteringWriter()));
  EXPECT_EQ(xml(root, writer),
            "<Root open=\"o\" dt=\"Thing\" xs=\"Mailer\">LOW&lt;ER"
            "<p:Kept xmlns:p=\"urn:a\"/><n dt=\"int\">1</n></Root>");
}
