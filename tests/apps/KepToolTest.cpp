// The kep tool, run as a child process; the expected answers come from the
// library in this process.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

struct Result {
  int status = -1;  // the exit status; -1 when the tool did not exit normally
  std::string out;
  std::string err;
};

std::string readAll(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Runs `kep` with the shell words `args`; standard output is kept in `out`,
// standard error in `err`.
Result runKep(std::string const& args) {
  keptest::TempDir dir;
  std::string command = std::string("'") + KEP_TOOL + "' " + args;
  int raw =
      std::system((command + " >'" + dir.file("out") + "' 2>'" + dir.file("err") + "'").c_str());
  Result r;
  if (raw != -1 && WIFEXITED(raw)) r.status = WEXITSTATUS(raw);
  r.out = readAll(dir.file("out"));
  r.err = readAll(dir.file("err"));
  return r;
}

// Runs `kep` with `args` and checks that it exits with `status`, writes nothing to
// standard output and names `message` on standard error.
void expectFailure(std::string const& args, int status, std::string const& message) {
  Result r = runKep(args);
  EXPECT_EQ(r.status, status) << args;
  EXPECT_TRUE(r.out.empty()) << args << ": " << r.out;
  EXPECT_NE(r.err.find(message), std::string::npos) << args << ": " << r.err;
}

std::string hex(int tag) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(tag));
  return text;
}

TEST(KepTool, PrintsUsageWithoutArgumentsAndTheLibraryVersionAndRejectsWhatItDoesNotKnow) {
  Result bare = runKep("");
  EXPECT_EQ(bare.status, 0);
  EXPECT_EQ(bare.out.rfind("usage: kep", 0), 0u) << bare.out;
  int major = -1;
  int minor = -1;
  KepVersion(&major, &minor);
  Result version = runKep("version");
  EXPECT_EQ(version.status, 0) << version.err;
  EXPECT_EQ(version.out, "libKep11 " + std::to_string(major) + "." + std::to_string(minor) + "\n");
  for (char const* wrong : {"frobnicate", "version extra", "tag", "tag ''", "tag a b", "xml"}) {
    expectFailure(wrong, 2, "usage: kep");
  }
}

TEST(KepTool, TagLooksUpBothWaysAndUnknownTagsFailWithAMessage) {
  // Tags of every built-in range: the vocabulary below the classes, the library's
  // classes, the words after them, and the classes outside namespace 4; tag 0 is
  // a tag like the others.
  for (int number : {0, 1, 33000, 39800, 42000, 50000, 58000, 0x40010, 0x400d6, 0x40800, 0x1a2}) {
    std::string name = KepProcess::tagToName(number).toStdString();
    ASSERT_FALSE(name.empty()) << number;
    int tag = KepProcess::nameToTag(KepString(name.c_str()));
    ASSERT_EQ(tag, number) << name;
    std::string line = name + " " + hex(tag) + " (" + std::to_string(tag) + ")\n";
    for (std::string const& word : {name, hex(tag), std::to_string(tag)}) {
      Result r = runKep("tag '" + word + "'");
      EXPECT_EQ(r.status, 0) << word << ": " << r.err;
      EXPECT_EQ(r.out, line) << word;
    }
  }
  EXPECT_EQ(runKep("tag 0X40024").out, runKep("tag 0x40024").out);

  // A name nobody uses, a tag number with no name, and words that start like
  // numbers but are none or do not fit in 32 bits.
  int unnamed = 0x7ffffff0;
  ASSERT_EQ(KepProcess::nameToTag(KepString("NoSuchTagAnywhere")), 0);
  ASSERT_TRUE(KepProcess::tagToName(unnamed).isNull());
  expectFailure("tag NoSuchTagAnywhere", 1, "NoSuchTagAnywhere");
  for (std::string const& word : {hex(unnamed), std::to_string(unnamed), std::string("-1")}) {
    expectFailure("tag '" + std::string(word) + "'", 1, "no name");
  }
  for (char const* word : {"0x", "0x1g", "12ab", "0x100000000", "4294967296", "-2147483649"}) {
    expectFailure("tag '" + std::string(word) + "'", 2, "not a tag number");
  }
}

// The document the library itself builds from `path` and writes back, as the
// tool is to print it; empty when it does not parse.
std::string parsedAndWritten(std::string const& path) {
  KepFile file{KepString(path.c_str())};
  KepXMLParser parser(KepGetObject(KepClassID::XMLParser, 0));
  KepDOMNode document = parser.buildObjects(file);
  file.close();
  if (document.isNull()) return std::string();
  KepDOMWriter writer(KepGetObject(KepClassID::DOMWriter, 0));
  KepStringBufferIOStream output;
  writer.serializeAsXML(document, output);
  return KepRIOStream::narrow(output.toString());
}

// The line and column that the parser records for the malformed file `path`.
std::string parseErrorPlace(std::string const& path) {
  KepThread* thread = KepProcess::getCurrThread();
  if (thread == nullptr) return std::string();
  thread->clearErrors();
  if (!parsedAndWritten(path).empty()) return std::string();
  KepDOMElement error = thread->getErrorObject();
  std::string place = "line " + std::to_string(error.get(KepString("Line")).getInteger()) +
                      ", column " + std::to_string(error.get(KepString("Column")).getInteger());
  thread->clearErrors();
  return place;
}

TEST(KepTool, XmlWritesTheSampleCompactlyAndItsOutputReadsBackTheSame) {
  Result first = runKep(std::string("xml '") + KEP_SAMPLE_XML + "'");
  ASSERT_EQ(first.status, 0) << first.err;
  EXPECT_TRUE(first.err.empty()) << first.err;
  EXPECT_EQ(first.out, parsedAndWritten(KEP_SAMPLE_XML) + "\n");
  EXPECT_EQ(first.out.rfind("<?xml version=\"1.0\"?>", 0), 0u) << first.out;
  EXPECT_EQ(first.out.find('\n'), first.out.size() - 1) << "one line: " << first.out;
  // The sample's escapes and CDATA come through (the comparison alone would pass
  // if both sides lost them).
  EXPECT_NE(first.out.find("R&amp;D's relay &lt;relay-01&gt;"), std::string::npos) << first.out;
  EXPECT_NE(first.out.find("<![CDATA[<p>Sent through relay-01 & friends</p>]]>"),
            std::string::npos);

  keptest::TempDir dir;
  std::string again = dir.file("again.xml");
  keptest::writeFile(again, first.out);
  Result second = runKep("xml '" + again + "'");
  EXPECT_EQ(second.status, 0) << second.err;
  EXPECT_EQ(second.out, first.out) << "the written document reads back to the same bytes";
}

TEST(KepTool, XmlFailsOnMalformedOrMissingFilesNamingLineAndColumn) {
  keptest::TempDir dir;
  for (auto [text, line] : {std::pair<char const*, int>{"<a>\n  <b></c>\n</a>\n", 2},
                            {"<r>\n\n<x a=\"1\" a=\"2\"/></r>", 3},
                            {"<a/>\n<b/>\n", 2},
                            {"<?xml version=\"1.0\"?>\n<a>\n<1/>", 3}}) {
    std::string path = dir.file("bad.xml");
    keptest::writeFile(path, text);
    std::string place = parseErrorPlace(path);
    ASSERT_EQ(place.rfind("line " + std::to_string(line) + ", column ", 0), 0u) << place;
    expectFailure("xml '" + path + "'", 1, path + ": " + place + ": ");
  }
  // A document that ends early is written as far as it goes; one without any
  // element is refused, and so is a path that cannot be read.
  std::string open = dir.file("open.xml");
  keptest::writeFile(open, "<a><b/><c>");
  Result early = runKep("xml '" + open + "'");
  EXPECT_EQ(early.status, 0) << early.err;
  EXPECT_EQ(early.out, parsedAndWritten(open) + "\n");
  EXPECT_NE(early.out.find("<a><b/><c"), std::string::npos) << early.out;
  keptest::writeFile(dir.file("comment.xml"), "<?xml version=\"1.0\"?>\n<!-- nothing -->\n");
  expectFailure("xml '" + dir.file("comment.xml") + "'", 1,
                dir.file("comment.xml") + ": no element");
  for (std::string const& path : {dir.file("missing.xml"), dir.path()}) {
    expectFailure("xml '" + path + "'", 1, path + ": cannot be read");
  }
}

}  // namespace
