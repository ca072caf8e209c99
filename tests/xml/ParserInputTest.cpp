// The XML parser's input: block reads, malformed and hostile documents, deep
// nesting, the fuzz target's seed corpus and parsing on several threads.
#include <gtest/gtest.h>

#include <dirent.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "ParserTestSupport.h"
#include "fuzz/ParserFuzzHarness.h"
#include "support/KepTestSupport.h"

using domtest::text;
using parsetest::newParser;
using parsetest::parse;
using parsetest::root;

namespace {

// A document of exactly `size` bytes: one element whose text fills it up.
std::string documentOfSize(int size) {
  std::string xml = "<doc>";
  std::string const tail = "</doc>";
  while (static_cast<int>(xml.size() + tail.size()) < size) xml.push_back('x');
  return xml + tail;
}

}  // namespace

TEST(XMLParserInput, ReadsBlocksOf32767BytesUntilAShortRead) {
  struct Case {
    int size;
    std::vector<int> reads;
  };
  Case const cases[] = {{100, {100}},
                        {32766, {32766}},
                        {32767, {32767, -1}},
                        {32768, {32767, 1}},
                        {65534, {32767, 32767, -1}}};
  for (Case const& c : cases) {
    auto* recording = new parsetest::RecordingStream();
    KepStringBufferIOStream stream(static_cast<KepBridgeToObject*>(recording));
    stream.setText(KepString(documentOfSize(c.size).c_str()));
    KepDOMNode doc = newParser().buildObjects(stream);
    EXPECT_EQ(recording->reads, c.reads) << c.size;
    EXPECT_EQ(KepDOMDocument(doc).getDocumentElement().getString().length(), c.size - 11) << c.size;
  }
}

TEST(XMLParserInput, MalformedInputFailsWithTheTokenizersPositionOnTheThread) {
  KepThread* thread = KepProcess::getCurrThread();
  struct Case {
    char const* xml;
    int line, column, byte;  // the position the failure names
    char const* text;        // a part of the tokenizer's message
  };
  Case const cases[] = {
      {"<a>\n  <b></c>\n</a>", 2, 7, 11, "mismatched tag"},
      {"<a>&undefined;</a>", 1, 3, 3, "undefined entity"},
      // At the invalid character.
      {"\n\n   <1/>", 3, 4, 6, "not well-formed"},
  };
  for (Case const& c : cases) {
    thread->clearErrors();
    EXPECT_TRUE(parse(c.xml).isNull()) << c.xml;
    ASSERT_EQ(text(thread->getErrorName()), "XMLParserError") << c.xml;
    KepDOMElement error = thread->getErrorObject();
    EXPECT_EQ(error.get(KepString("Line")).getInteger(), c.line) << c.xml;
    EXPECT_EQ(error.get(KepString("Column")).getInteger(), c.column) << c.xml;
    EXPECT_EQ(error.get(KepString("Byte")).getInteger(), c.byte) << c.xml;
    EXPECT_NE(text(error.getString(KepString("String"))).find(c.text), std::string::npos) << c.xml;
    thread->popError();
  }
  // A well-formed document leaves the stack alone, also when an older error is
  // still on it; so does a document that ends early (the tool's tests show it
  // built as far as it goes) or at once, as an empty document.
  thread->setError(KepString("SomeOlderError"), nullptr, 0);
  EXPECT_FALSE(parse("<ok/>").isNull());
  EXPECT_FALSE(parse("<a><b>done</b><c>unfinished").isNull());
  KepDOMNode empty = parse("");
  EXPECT_EQ(empty.getNodeType(), KepDOMNode::DOCUMENT_NODE);
  EXPECT_FALSE(empty.hasChildNodes());
  EXPECT_EQ(text(thread->getErrorName()), "SomeOlderError");
  thread->clearErrors();
}

namespace {

// A stream that records an error on the reading thread at its second read, as
// a failing device would.
class FailingStream : public KepRStringBufferIOStream {
 public:
  int reads = 0;
  int read(signed char* buffer, int offset, int length) override {
    if (++reads == 2) {
      KepSetThreadError(KepString("StreamReadError"), nullptr, 0);
      return -1;
    }
    return KepRStringBufferIOStream::read(buffer, offset, length);
  }
  using KepRStringBufferIOStream::read;
};

}  // namespace

TEST(XMLParserInput, AnErrorRecordedWhileReadingStopsTheParse) {
  KepThread* thread = KepProcess::getCurrThread();
  thread->clearErrors();
  auto* failing = new FailingStream();
  KepStringBufferIOStream stream(static_cast<KepBridgeToObject*>(failing));
  stream.setText(KepString(documentOfSize(40000).c_str()));
  EXPECT_TRUE(newParser().buildObjects(stream).isNull());
  EXPECT_EQ(failing->reads, 2);
  EXPECT_EQ(text(thread->getErrorName()), "StreamReadError");
  thread->clearErrors();
}

TEST(XMLParserInput, DeepNestingIsBuiltWithoutRecursion) {
  int const depth = 100000;
  std::string xml;
  xml.reserve(static_cast<size_t>(depth) * 8);
  for (int i = 0; i < depth; ++i) xml += "<d>";
  xml += "bottom";
  for (int i = 0; i < depth; ++i) xml += "</d>";
  KepDOMElement e = root(xml);
  int levels = 1;
  for (; e.getFirstChild().getNodeType() == KepDOMNode::ELEMENT_NODE; ++levels) {
    e = KepDOMElement(e.getFirstChild());
  }
  EXPECT_EQ(levels, depth);
  EXPECT_EQ(text(e.getString()), "bottom");
}

TEST(XMLParserInput, EntitiesAreNeitherExpandedNorLoaded) {
  // Exponential expansion, in content and in an attribute.
  std::string laughs = "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\">";
  char prev = 'a';
  for (char c = 'b'; c <= 'j'; ++c) {
    laughs += std::string("<!ENTITY ") + c + " \"";
    for (int i = 0; i < 10; ++i) laughs += std::string("&") + prev + ";";
    laughs += "\">";
    prev = c;
  }
  laughs += "]>";
  KepDOMElement content = root(laughs + "<r>&j;</r>");
  EXPECT_EQ(content.getNodeType(), KepDOMNode::ELEMENT_NODE);
  EXPECT_LT(content.getString().length(), 100);
  // In an attribute the tokenizer's amplification limit stops it.
  KepThread* thread = KepProcess::getCurrThread();
  thread->clearErrors();
  EXPECT_TRUE(parse(laughs + "<r a=\"&j;\"/>").isNull());
  EXPECT_EQ(text(thread->getErrorName()), "XMLParserError");
  thread->clearErrors();

  // An external entity is not read.
  keptest::TempDir dir;
  std::string secret = dir.file("secret.txt");
  std::ofstream(secret) << "SECRET";
  KepDOMElement external =
      root("<!DOCTYPE r [<!ENTITY e SYSTEM \"file://" + secret + "\">]><r>&e;</r>");
  EXPECT_EQ(external.getNodeType(), KepDOMNode::ELEMENT_NODE);
  EXPECT_EQ(external.getString().indexOf(KepString("SECRET")), -1);
}

TEST(XMLParserInput, DeclarationsThatPileUpDoNotSlowEachNameDown) {
  // Every level declares the same prefix again, and every name uses the outer
  // one: finding "p" must not walk the 100,000 declarations of "q" above it
  // (which took minutes, a hang for a hostile sender).
  int const depth = 100000;
  std::string xml = "<p:r xmlns:p=\"urn:p\">";
  for (int i = 0; i < depth; ++i) xml += "<p:e xmlns:q=\"v\">";
  xml += "<q:in/>";
  for (int i = 0; i < depth; ++i) xml += "</p:e>";
  xml += "</p:r>";
  auto start = std::chrono::steady_clock::now();
  KepDOMElement e = root(xml);
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(seconds, 30.0);
  for (int level = 0; level < depth; ++level) e = KepDOMElement(e.getFirstChild());
  EXPECT_EQ(text(e.getNamespaceURI()), "urn:p");
  EXPECT_EQ(text(KepDOMElement(e.getFirstChild()).getNamespaceURI()), "v");
}

TEST(XMLParserInput, OneParserServesSeveralThreads) {
  KepXMLParser parser = newParser();
  std::string xml = "<r>";
  for (int i = 0; i < 300; ++i) xml += "<i n=\"" + std::to_string(i) + "\">v</i>";
  xml += "</r>";
  std::vector<int> counts(4, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 10; ++round) {
        KepStringBufferIOStream stream = parsetest::streamOf(xml);
        KepDOMDocument doc(parser.buildObjects(stream));
        counts[static_cast<size_t>(t)] += doc.getDocumentElement().getChildCount();
      }
    });
  }
  for (std::thread& t : threads) t.join();
  for (int c : counts) EXPECT_EQ(c, 3000);
}

// The committed seed corpus of the parser's fuzz target, through the check the
// fuzzer runs, so that every normal test run covers it.
TEST(XMLParserInput, EveryFuzzSeedParsesToAConsistentTreeOrNothing) {
  std::string dir = std::string(KEP_FUZZ_CORPUS_DIR) + "/fuzz_parser";
  int seeds = 0;
  if (DIR* d = opendir(dir.c_str())) {
    while (dirent* e = readdir(d)) {
      if (e->d_name[0] == '.') continue;
      std::ifstream in(dir + "/" + e->d_name, std::ios::binary);
      std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      EXPECT_TRUE(
          kepfuzz::buildObjects(reinterpret_cast<uint8_t const*>(bytes.data()), bytes.size()))
          << e->d_name;
      ++seeds;
    }
    closedir(d);
  }
  EXPECT_GE(seeds, 10);
}
