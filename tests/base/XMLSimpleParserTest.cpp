// The simple XML parser: callbacks, the reading rules and the error line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"

namespace {

// Feeds a text to the parser and records what the callbacks see as a compact
// trace: "<name a=v>" for starts, "</name>" for ends and "[text]" for each piece
// of character data.
struct Source {
  explicit Source(std::string t, bool minusOne = false) : text(t), endWithMinusOne(minusOne) {}
  std::string text;
  bool endWithMinusOne;
  size_t position = 0;
  std::vector<int> asked;  // the size of every read
  std::vector<int> given;  // what each read answered
  std::string trace;

  static int read(void* user, char* buffer, int offset, int size) {
    auto* s = static_cast<Source*>(user);
    size_t n = s->text.copy(buffer + offset, static_cast<size_t>(size), s->position);
    s->position += n;
    s->asked.push_back(size);
    s->given.push_back(n == 0 && s->endWithMinusOne ? -1 : static_cast<int>(n));
    return s->given.back();
  }
  static void start(void* user, char const* name, char const** attributes) {
    auto* s = static_cast<Source*>(user);
    s->trace += std::string("<") + name;
    for (int i = 0; attributes[i] != nullptr; i += 2) {
      s->trace += std::string(" ") + attributes[i] + "=" + attributes[i + 1];
    }
    s->trace += ">";
  }
  static void end(void* user, char const* name) {
    static_cast<Source*>(user)->trace += std::string("</") + name + ">";
  }
  static void chars(void* user, char const* text, int length) {
    static_cast<Source*>(user)->trace += "[" + std::string(text, static_cast<size_t>(length)) + "]";
  }

  bool parse() { return KepRXMLSimpleParserExecute(this, read, start, end, chars); }
};

class SimpleParser : public ::testing::Test {
 protected:
  void SetUp() override { gKepLogOptions.store(KepLogger::kGUI); }
  keptest::SavedOptionWords saved_;
  keptest::LogCapture log_;
};

TEST_F(SimpleParser, CallsBackForElementsAttributesAndText) {
  Source s{"<?xml version=\"1.0\"?><Root a=\"1\" b='two'><x:Child/>text &amp; more</Root>"};
  EXPECT_TRUE(s.parse());
  // No namespace processing: "x:Child" is an ordinary name; the entity splits
  // the text into pieces.
  EXPECT_EQ(s.trace, "<Root a=1 b=two><x:Child></x:Child>[text ][&][ more]</Root>");
  EXPECT_EQ(log_.count("XML Parser Error"), 0u);
}

TEST_F(SimpleParser, ReadsInBlocksUntilAShortRead) {
  // A document of exactly one block needs a second read, which gives 0 bytes or -1.
  std::string const open = "<a>", close = "</a>";
  for (bool minusOne : {false, true}) {
    Source exact{open + std::string(KEP_XML_SIMPLE_BLOCK - open.size() - close.size(), 'x') + close,
                 minusOne};
    EXPECT_TRUE(exact.parse());
    EXPECT_EQ(exact.asked, (std::vector<int>{KEP_XML_SIMPLE_BLOCK, KEP_XML_SIMPLE_BLOCK}));
    EXPECT_EQ(exact.given, (std::vector<int>{KEP_XML_SIMPLE_BLOCK, minusOne ? -1 : 0}));
  }
}

TEST_F(SimpleParser, MalformedOrShortInputStopsWithOneErrorLine) {
  Source s{"<a>\n <b></c>\n</a><after/>"};
  EXPECT_FALSE(s.parse());
  EXPECT_EQ(s.trace, "<a>[\n][ ]<b>") << "callbacks before the error stand, none after";
  // Expat places a mismatched end tag at its name: line 2, column 6, byte 10.
  EXPECT_EQ(log_.lines(), std::vector<std::string>{
                              "XML Parser Error: mismatched tag at line 2, column 6, byte 10."});
  EXPECT_EQ(log_.levels(), std::vector<KepLogger::Level>{KepLogger::kError});

  // A reader giving fewer bytes than asked ends the document, so an open
  // element fails.
  Source unfinished{"<a><b>"};
  EXPECT_FALSE(unfinished.parse());
  EXPECT_EQ(unfinished.asked.size(), 1u) << "no read after a short one";
  EXPECT_EQ(log_.count("XML Parser Error: no element found"), 1u);
}

}  // namespace
