// Parsing XML into a tree: KepXMLParser::buildObjects against Expat alone with
// empty callbacks (the tokenizer under ours, so the ceiling), POCO's DOM parser
// (also over Expat), libxml2 and pugixml, on the same bytes in one run. Expat is
// measured three times: plain, with namespace processing as our parser needs it,
// and driven exactly as our parser drives it (every handler, blocks of 32767
// bytes, the final flag never set).
//
// Parsing is timed up to the finished tree; freeing the tree is left out for
// every parser, and timed for ours in the extra case "kep+free".
//
// Inputs: the system's MIME database (a real document with a default
// namespace) repeated to about 24 MiB, and generated record documents of
// 64 KiB, 1 MiB and 16 MiB (elements with attributes and text). Each case
// reports MB/s; after the run a table gives our speed against each peer and
// the heap bytes a parsed tree holds per input byte.
#include <Poco/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/Document.h>
#include <benchmark/benchmark.h>
#include <expat.h>
#include <libxml/parser.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "kep/Kep.h"
#include "kep/base/_KepBodyArena.h"

namespace {

struct Input {
  std::string name;
  std::string bytes;
};

std::vector<Input>& inputs() {
  static std::vector<Input> all;
  return all;
}

std::string records(size_t size) {
  std::string xml = "<?xml version=\"1.0\"?>\n<records>\n";
  for (int i = 0; xml.size() < size; ++i) {
    xml += "  <record id=\"" + std::to_string(i) + "\" kind=\"k" + std::to_string(i % 7) +
           "\">\n    <name>Record number " + std::to_string(i) + "</name>\n    <value>" +
           std::to_string(i * 37 % 1000) +
           "</value>\n    <note>text &amp; more text for the record</note>\n  </record>\n";
  }
  return xml + "</records>\n";
}

// The MIME database's elements repeated under one root until `size` bytes.
std::string repeatedFile(char const* path, size_t size) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::string();
  std::string file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  size_t start = file.find("<mime-info");
  if (start == std::string::npos) return std::string();
  std::string body = file.substr(start);
  std::string xml = "<?xml version=\"1.0\"?>\n<all>";
  while (xml.size() < size) xml += body;
  return xml + "</all>\n";
}

void makeInputs() {
  std::string mime = repeatedFile("/usr/share/mime/packages/freedesktop.org.xml", 24u << 20);
  if (!mime.empty()) inputs().push_back({"mime_24MiB", mime});
  inputs().push_back({"records_64KiB", records(64u << 10)});
  inputs().push_back({"records_1MiB", records(1u << 20)});
  inputs().push_back({"records_16MiB", records(16u << 20)});
}

// --- The parsers ---------------------------------------------------------------------

void XMLCALL noStart(void*, XML_Char const*, XML_Char const**) {}
void XMLCALL noEnd(void*, XML_Char const*) {}
void XMLCALL noText(void*, XML_Char const*, int) {}

void XMLCALL noDeclaration(void*, XML_Char const*, XML_Char const*) {}
void XMLCALL noEndDeclaration(void*, XML_Char const*) {}
void XMLCALL noNotation(void*, XML_Char const*, XML_Char const*, XML_Char const*, XML_Char const*) {
}
int XMLCALL noEntity(XML_Parser, XML_Char const*, XML_Char const*, XML_Char const*,
                     XML_Char const*) {
  return XML_STATUS_OK;
}
void XMLCALL noCData(void*) {}
void XMLCALL noComment(void*, XML_Char const*) {}

// Expat with empty callbacks; `namespaces` as our parser drives it (":" as
// separator, triplets on).
bool expatAlone(std::string const& xml, bool namespaces) {
  XML_Parser p = namespaces ? XML_ParserCreateNS(nullptr, ':') : XML_ParserCreate(nullptr);
  if (namespaces) XML_SetReturnNSTriplet(p, 1);
  XML_SetElementHandler(p, noStart, noEnd);
  XML_SetCharacterDataHandler(p, noText);
  bool ok = XML_Parse(p, xml.data(), static_cast<int>(xml.size()), 1) == XML_STATUS_OK;
  XML_ParserFree(p);
  return ok;
}

// Expat with empty callbacks driven exactly as our parser drives it: namespaces
// with triplets, every handler installed, blocks of 32767 bytes, the final flag
// never set (so that Expat keeps line and column positions up to date after
// every block). What our parser does beyond this is building the tree.
bool expatAsOurs(std::string const& xml) {
  XML_Parser p = XML_ParserCreateNS(nullptr, ':');
  XML_SetReturnNSTriplet(p, 1);
  XML_SetStartNamespaceDeclHandler(p, noDeclaration);
  XML_SetEndNamespaceDeclHandler(p, noEndDeclaration);
  XML_SetElementHandler(p, noStart, noEnd);
  XML_SetCharacterDataHandler(p, noText);
  XML_SetProcessingInstructionHandler(p, noDeclaration);
  XML_SetDefaultHandler(p, noText);
  XML_SetNotationDeclHandler(p, noNotation);
  XML_SetExternalEntityRefHandler(p, noEntity);
  XML_SetCdataSectionHandler(p, noCData, noCData);
  XML_SetCommentHandler(p, noComment);
  bool ok = true;
  for (size_t at = 0; ok;) {
    int count = static_cast<int>(std::min<size_t>(32767, xml.size() - at));
    void* block = XML_GetBuffer(p, 32767);
    std::memcpy(block, xml.data() + at, static_cast<size_t>(count));
    at += static_cast<size_t>(count);
    ok = XML_ParseBuffer(p, count, 0) == XML_STATUS_OK;
    if (count < 32767) break;
  }
  XML_ParserFree(p);
  return ok;
}

// Each tree parser answers an owner of its tree, so that the tree's memory can
// be measured while it is alive.
using Tree = std::shared_ptr<void>;

Tree kepTree(KepStringBufferIOStream& stream) {
  stream.rewind();
  KepXMLParser parser(KepGetObject(KepClassID::XMLParser, 0));
  auto doc = std::make_shared<KepDOMNode>(parser.buildObjects(stream));
  return doc->isNull() ? Tree() : doc;
}

Tree pocoTree(std::string const& xml) {
  Poco::XML::DOMParser parser;
  Poco::AutoPtr<Poco::XML::Document> doc = parser.parseMemory(xml.data(), xml.size());
  return std::make_shared<Poco::AutoPtr<Poco::XML::Document>>(doc);
}

Tree libxml2Tree(std::string const& xml) {
  xmlDocPtr doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                                XML_PARSE_NONET | XML_PARSE_HUGE);
  return doc == nullptr ? Tree()
                        : Tree(doc, [](void* d) { xmlFreeDoc(static_cast<xmlDocPtr>(d)); });
}

Tree pugixmlTree(std::string const& xml) {
  auto doc = std::make_shared<pugi::xml_document>();
  if (!doc->load_buffer(xml.data(), xml.size())) return Tree();
  return doc;
}

// Heap bytes in use, mapped blocks included, less the free chunks that our
// parser keeps for its next documents (in use for the C library, but no part
// of any tree).
size_t heapInUse() {
  struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd - _KepBodyArena::keptChunkBytes();
}

// Heap bytes per input byte held by the tree `make` builds.
std::map<std::string, double>& treeBytes() {
  static std::map<std::string, double> bytes;
  return bytes;
}

void measureTree(std::string const& key, size_t inputSize, std::function<Tree()> const& make) {
  if (treeBytes().count(key) != 0) return;
  size_t before = heapInUse();
  Tree tree = make();
  size_t after = heapInUse();
  treeBytes()[key] = tree ? (static_cast<double>(after) - static_cast<double>(before)) /
                                static_cast<double>(inputSize)
                          : -1;
}

void run(benchmark::State& state, Input const& input, std::string const& peer) {
  std::string const& xml = input.bytes;
  std::string key = peer + "/" + input.name;
  KepStringBufferIOStream stream{KepString(xml.data(), 0, static_cast<int>(xml.size()))};
  std::function<Tree()> make;
  if (peer == "kep") make = [&] { return kepTree(stream); };
  if (peer == "poco") make = [&] { return pocoTree(xml); };
  if (peer == "libxml2") make = [&] { return libxml2Tree(xml); };
  if (peer == "pugixml") make = [&] { return pugixmlTree(xml); };
  if (make) measureTree(key, xml.size(), make);
  bool withFree = peer == "kep+free";
  if (withFree) make = [&] { return kepTree(stream); };
  for (auto _ : state) {
    if (peer == "expat" || peer == "expat-ns") {
      if (!expatAlone(xml, peer == "expat-ns")) state.SkipWithError("expat failed");
      continue;
    }
    if (peer == "expat-ours") {
      if (!expatAsOurs(xml)) state.SkipWithError("expat failed");
      continue;
    }
    Tree tree = make();
    if (!tree) state.SkipWithError("parse failed");
    if (withFree) continue;
    // Freeing the tree is not part of parsing it.
    state.PauseTiming();
    tree.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(xml.size()));
  if (make && !withFree) state.counters["tree_bytes_per_input_byte"] = treeBytes()[key];
}

// Collects each case's bytes per second for the summary.
class Collector : public benchmark::ConsoleReporter {
 public:
  std::map<std::string, double> speed;  // "peer/input" -> bytes per second
  void ReportRuns(std::vector<Run> const& runs) override {
    for (Run const& r : runs) {
      auto it = r.counters.find("bytes_per_second");
      if (it == r.counters.end() || r.error_occurred) continue;
      std::string name = r.benchmark_name();
      name = name.substr(0, name.find("/min_time"));
      speed[name] = it->second;
    }
    ConsoleReporter::ReportRuns(runs);
  }
};

void summary(Collector const& c) {
  std::printf(
      "\n%-16s %9s %9s %9s %9s %10s %9s %9s %9s | %7s %7s %7s %7s %7s | tree bytes per input "
      "byte: %s\n",
      "input", "kep MB/s", "kep+free", "expat", "expat-ns", "expat-ours", "poco", "libxml2",
      "pugixml", "/expat", "/ours", "/poco", "/libxml2", "/pugi", "kep poco libxml2 pugixml");
  for (Input const& in : inputs()) {
    auto at = [&](char const* peer) {
      auto it = c.speed.find(std::string(peer) + "/" + in.name);
      return it == c.speed.end() ? 0.0 : it->second / 1e6;
    };
    auto tree = [&](char const* peer) {
      auto it = treeBytes().find(std::string(peer) + "/" + in.name);
      return it == treeBytes().end() ? 0.0 : it->second;
    };
    double kep = at("kep");
    auto ratio = [&](char const* peer) { return at(peer) > 0 ? kep / at(peer) : 0.0; };
    std::printf(
        "%-16s %9.1f %9.1f %9.1f %9.1f %10.1f %9.1f %9.1f %9.1f | %7.2f %7.2f %7.2f %7.2f %7.2f | "
        "%.1f %.1f %.1f %.1f\n",
        in.name.c_str(), kep, at("kep+free"), at("expat"), at("expat-ns"), at("expat-ours"),
        at("poco"), at("libxml2"), at("pugixml"), ratio("expat"), ratio("expat-ours"),
        ratio("poco"), ratio("libxml2"), ratio("pugixml"), tree("kep"), tree("poco"),
        tree("libxml2"), tree("pugixml"));
  }
}

}  // namespace

int main(int argc, char** argv) {
  Kep::init(0);
  xmlInitParser();
  makeInputs();
  for (Input const& in : inputs()) {
    for (char const* peer :
         {"kep", "kep+free", "expat", "expat-ns", "expat-ours", "poco", "libxml2", "pugixml"}) {
      benchmark::RegisterBenchmark((std::string(peer) + "/" + in.name).c_str(),
                                   [&in, peer](benchmark::State& s) { run(s, in, peer); })
          ->Unit(benchmark::kMillisecond)
          ->MinTime(in.bytes.size() > (4u << 20) ? 2.0 : 0.5);
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  summary(collector);
  benchmark::Shutdown();
  xmlCleanupParser();
  Kep::destroy();
  return 0;
}
