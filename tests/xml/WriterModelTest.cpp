// Random trees written by the DOM writer, compared byte for byte with a small
// serializer of a plain model of the same tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "WriterTestSupport.h"
#include "support/KepTestSupport.h"

using writertest::CaptureStream;
using writertest::units;

namespace {

struct Model {
  int type = KepDOMNode::ELEMENT_NODE;
  std::string name;
  std::u16string value;
  std::vector<std::pair<std::string, std::u16string>> attributes;
  int dataType = 0;
  std::vector<Model> children;
};

std::string narrow(std::u16string const& text) {
  std::string bytes;
  for (char16_t unit : text) bytes.push_back(static_cast<char>(unit & 0xFF));
  return bytes;
}

std::string escaped(std::u16string const& text) {
  std::string bytes;
  for (char c : narrow(text)) {
    bytes += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string(1, c);
  }
  return bytes;
}

void serialize(Model const& m, std::string& out) {
  static char const* const kTypes[] = {"int",     "string", "date", "object",
                                       "boolean", "i8",     "r4",   "float"};
  switch (m.type) {
    case KepDOMNode::TEXT_NODE:
      out += escaped(m.value);
      return;
    case KepDOMNode::CDATA_SECTION_NODE:
      out.append("<![CDATA[").append(narrow(m.value)).append("]]>");
      return;
    case KepDOMNode::COMMENT_NODE:
      out.append("<!--").append(narrow(m.value)).append("-->");
      return;
    case KepDOMNode::PROCESSING_INSTRUCTION_NODE:
      out.append("<?").append(m.name);
      if (!m.value.empty()) out.append(" ").append(narrow(m.value));
      out.append("?>");
      return;
    default:
      break;
  }
  out.append("<").append(m.name);
  for (auto const& a : m.attributes) {
    out.append(" ").append(a.first).append("=\"").append(narrow(a.second)).append("\"");
  }
  if (m.dataType >= 1 && m.dataType <= 8) {
    out.append(" dt=\"").append(kTypes[m.dataType - 1]).append("\"");
  }
  if (m.children.empty()) {
    out.append("/>");
    return;
  }
  out.append(">");
  for (Model const& c : m.children) serialize(c, out);
  out.append("</").append(m.name).append(">");
}

class Generator {
 public:
  explicit Generator(unsigned seed) : rng(seed) {}

  std::u16string text(int maxLength) {
    static char16_t const kUnits[] = {u'a', u'b',  u' ', u'<',   u'>',  u'&',  u'"', u'\'',
                                      u'=', u'\n', 0xE9, 0x20AC, 0x13C, 0x100, 0x7F, 0xFF};
    std::u16string t;
    int length = pick(0, maxLength);
    for (int i = 0; i < length; ++i) t.push_back(kUnits[pick(0, sizeof kUnits / 2 - 1)]);
    return t;
  }

  Model element(int depth) {
    static char const* const kNames[] = {"Item", "Row", "a", "Value", "x-y", "Deep_1"};
    Model m;
    m.name = kNames[pick(0, 5)];
    std::vector<std::string> names{"a0", "a1", "a2", "a3", "a4"};
    std::shuffle(names.begin(), names.end(), rng);
    int attributes = pick(0, 3);
    for (int i = 0; i < attributes; ++i) m.attributes.emplace_back(names[size_t(i)], text(6));
    if (pick(0, 4) == 0) m.dataType = pick(1, 9);
    int children = depth > 0 ? pick(0, 5) : 0;
    for (int i = 0; i < children; ++i) {
      int kind = pick(0, 9);
      if (kind < 5) {
        m.children.push_back(element(depth - 1));
        continue;
      }
      Model c;
      if (kind < 7) {
        c.type = KepDOMNode::TEXT_NODE;
      } else if (kind == 7) {
        c.type = KepDOMNode::CDATA_SECTION_NODE;
      } else if (kind == 8) {
        c.type = KepDOMNode::COMMENT_NODE;
      } else {
        c.type = KepDOMNode::PROCESSING_INSTRUCTION_NODE;
        c.name = pick(0, 1) ? "pi" : "go";
      }
      c.value = text(12);
      if (c.type == KepDOMNode::TEXT_NODE && c.value.empty()) c.value.push_back(u'z');
      m.children.push_back(std::move(c));
    }
    return m;
  }

 private:
  int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng); }
  std::mt19937 rng;
};

KepDOMNode build(KepDOMDocument& doc, Model const& m) {
  switch (m.type) {
    case KepDOMNode::TEXT_NODE:
      return doc.createTextNode(units(m.value));
    case KepDOMNode::CDATA_SECTION_NODE:
      return doc.createCDATASection(units(m.value));
    case KepDOMNode::COMMENT_NODE:
      return doc.createComment(units(m.value));
    case KepDOMNode::PROCESSING_INSTRUCTION_NODE:
      return doc.createProcessingInstruction(KepString(m.name.c_str()), units(m.value));
    default:
      break;
  }
  KepDOMElement e = doc.createElement(KepString(m.name.c_str()));
  for (auto const& a : m.attributes) e.setAttribute(KepString(a.first.c_str()), units(a.second));
  if (m.dataType != 0) e.setDataType(m.dataType);
  for (Model const& c : m.children) e.appendChild(build(doc, c));
  return e;
}

// A derived writer that changes nothing: the writer then takes the path that
// calls every per-node operation through its virtual, with handles.
class DerivedWriter : public KepRDOMWriter {
 public:
  KepObject createAnother() const override { return KepObject(new DerivedWriter()); }
};

}  // namespace

TEST(DOMWriterModel, RandomTreesMatchTheModelSerializer) {
  int const trees = keptest::kSanitized ? 60 : 400;
  auto* capture = new CaptureStream();
  KepIOStream stream(*capture);
  // One writer for every tree: nothing may carry over from one print to the next.
  KepDOMWriter writer(KepGetObject(KepClassID::DOMWriter, 0));
  KepDOMWriter derived(static_cast<KepBridgeToObject*>(new DerivedWriter()));
  for (int seed = 1; seed <= trees; ++seed) {
    Generator generator(static_cast<unsigned>(seed));
    Model root = generator.element(4);
    KepDOMDocument doc = domtest::newDocument();
    doc.appendChild(build(doc, root));
    std::string expected = "<?xml version=\"1.0\"?>";
    serialize(root, expected);
    capture->bytes.clear();
    ASSERT_EQ(writer.serializeAsXML(doc, stream), 1u);
    ASSERT_EQ(capture->bytes, expected) << "seed " << seed;
    EXPECT_EQ(writer.getState(), KepDOMWriter::DOCUMENT_END);
    capture->bytes.clear();
    derived.serializeAsXML(doc, stream);
    ASSERT_EQ(capture->bytes, expected) << "derived writer, seed " << seed;
  }
}

TEST(DOMWriterModel, ConcurrentWritersOnSharedTreeAgree) {
  Model root = Generator(77).element(5);
  KepDOMDocument doc = domtest::newDocument();
  doc.appendChild(build(doc, root));
  std::string expected = "<?xml version=\"1.0\"?>";
  serialize(root, expected);
  // Reading one tree from several threads, each print with its own writer.
  std::vector<std::string> results(4);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < results.size(); ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 5; ++i) results[t] += writertest::xml(doc);
    });
  }
  for (auto& thread : threads) thread.join();
  for (std::string const& r : results)
    EXPECT_EQ(r, expected + expected + expected + expected + expected);
}
