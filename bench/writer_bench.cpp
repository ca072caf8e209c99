// Serialising the same trees with the DOM writer, pugixml (save to a memory
// writer, raw format) and libxml2 (xmlDocDumpMemory), in one run. Three tree
// sizes give about 12 KiB, 1 MiB and 10 MiB of output; throughput is reported as
// output bytes per second.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <map>
#include <memory>
#include <pugixml.hpp>
#include <random>
#include <string>
#include <vector>

#include "kep/Kep.h"

namespace {

// A plain description of a tree, built into each library's document.
struct Node {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::string text;  // text before the children
  std::vector<Node> children;
};

class TreeMaker {
 public:
  explicit TreeMaker(unsigned seed) : rng(seed) {}

  // Adds children under `root` until about `bytes` of markup are described.
  Node make(size_t bytes) {
    Node root;
    root.name = "Document";
    size_t produced = 0;
    while (produced < bytes) root.children.push_back(record(3, produced));
    return root;
  }

 private:
  Node record(int depth, size_t& produced) {
    static char const* const kNames[] = {"Record", "Field",   "Value",   "Item",
                                         "Name",   "Address", "Entry",   "Owner",
                                         "Status", "Amount",  "Comment", "When"};
    static char const* const kAttributes[] = {"id", "type", "ref", "lang", "state"};
    Node n;
    n.name = kNames[pick(0, 11)];
    produced += 2 * n.name.size() + 5;
    int attributes = pick(0, 2);
    for (int i = 0; i < attributes; ++i) {
      std::string value = word() + std::to_string(pick(0, 9999));
      produced += 4 + std::string(kAttributes[i]).size() + value.size();
      n.attributes.emplace_back(kAttributes[i], value);
    }
    if (depth == 0 || pick(0, 2) == 0) {
      int words = pick(1, 8);
      for (int i = 0; i < words; ++i) {
        if (i > 0) n.text += ' ';
        n.text += word();
      }
      if (pick(0, 7) == 0) n.text += " & <more>";
      produced += n.text.size();
    }
    if (depth > 0) {
      int children = pick(0, 4);
      for (int i = 0; i < children; ++i) n.children.push_back(record(depth - 1, produced));
    }
    return n;
  }

  std::string word() {
    static char const* const kWords[] = {"alpha",   "bravo", "charlie", "delta", "echo",
                                         "foxtrot", "golf",  "hotel",   "india", "juliet"};
    return kWords[pick(0, 9)];
  }

  int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(rng); }
  std::mt19937 rng;
};

// --- Building the three documents -----------------------------------------------

void buildKep(KepDOMDocument& doc, KepDOMNode parent, Node const& n) {
  KepDOMElement e = doc.createElement(KepString(n.name.c_str()));
  for (auto const& a : n.attributes) {
    e.setAttribute(KepString(a.first.c_str()), KepString(a.second.c_str()));
  }
  if (!n.text.empty()) e.appendChild(doc.createTextNode(KepString(n.text.c_str())));
  for (Node const& c : n.children) buildKep(doc, e, c);
  parent.appendChild(e);
}

void buildPugi(pugi::xml_node parent, Node const& n) {
  pugi::xml_node e = parent.append_child(n.name.c_str());
  for (auto const& a : n.attributes) e.append_attribute(a.first.c_str()) = a.second.c_str();
  if (!n.text.empty()) e.append_child(pugi::node_pcdata).set_value(n.text.c_str());
  for (Node const& c : n.children) buildPugi(e, c);
}

xmlNodePtr buildLibxml(xmlDocPtr doc, Node const& n) {
  xmlNodePtr e =
      xmlNewDocNode(doc, nullptr, reinterpret_cast<xmlChar const*>(n.name.c_str()), nullptr);
  for (auto const& a : n.attributes) {
    xmlNewProp(e, reinterpret_cast<xmlChar const*>(a.first.c_str()),
               reinterpret_cast<xmlChar const*>(a.second.c_str()));
  }
  if (!n.text.empty()) {
    xmlAddChild(e, xmlNewDocText(doc, reinterpret_cast<xmlChar const*>(n.text.c_str())));
  }
  for (Node const& c : n.children) xmlAddChild(e, buildLibxml(doc, c));
  return e;
}

struct Trees {
  Node model;
  KepDOMDocument kep;
  pugi::xml_document pugi;
  xmlDocPtr libxml = nullptr;
  ~Trees() {
    if (libxml != nullptr) xmlFreeDoc(libxml);
  }
};

// One set of trees per size, built on first use and kept for the run.
Trees& trees(size_t bytes) {
  static std::map<size_t, std::unique_ptr<Trees>> made;
  auto& slot = made[bytes];
  if (!slot) {
    static bool started = (Kep::init(0), true);
    (void)started;
    slot = std::make_unique<Trees>();
    slot->model = TreeMaker(static_cast<unsigned>(bytes)).make(bytes);
    slot->kep = KepDOMDocument(KepGetObject(KepClassID::DOMDocument, 0));
    buildKep(slot->kep, slot->kep, slot->model);
    buildPugi(slot->pugi, slot->model);
    slot->libxml = xmlNewDoc(reinterpret_cast<xmlChar const*>("1.0"));
    xmlDocSetRootElement(slot->libxml, buildLibxml(slot->libxml, slot->model));
  }
  return *slot;
}

struct StringWriter : pugi::xml_writer {
  std::string out;
  void write(void const* data, size_t size) override {
    out.append(static_cast<char const*>(data), size);
  }
};

// A caller's stream collecting into a string, the counterpart of the pugixml
// memory writer above.
class StringStream : public KepIOStream {
 public:
  StringStream() : KepIOStream(nullptr, KepClassIdArg(KepClassID::IOStream)) {}
  unsigned long isBridge() const override { return 0; }
  using KepIOStream::write;
  int write(signed char* buffer, int offset, int length) override {
    out.append(reinterpret_cast<char const*>(buffer) + offset, static_cast<size_t>(length));
    return length;
  }
  std::string out;
};

void BM_Write_Kep(benchmark::State& state) {
  Trees& t = trees(static_cast<size_t>(state.range(0)));
  KepDOMWriter writer(KepGetObject(KepClassID::DOMWriter, 0));
  auto* sink = new StringStream();
  KepIOStream stream(*sink);
  for (auto _ : state) {
    sink->out.clear();
    writer.serializeAsXML(t.kep, stream);
    benchmark::DoNotOptimize(sink->out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(sink->out.size()) * state.iterations());
  state.counters["out_bytes"] = static_cast<double>(sink->out.size());
}

// The same into the library's own memory stream, emptied before each run.
void BM_Write_KepMemoryStream(benchmark::State& state) {
  Trees& t = trees(static_cast<size_t>(state.range(0)));
  KepDOMWriter writer(KepGetObject(KepClassID::DOMWriter, 0));
  KepStringBufferIOStream memory;
  size_t bytes = 0;
  for (auto _ : state) {
    memory.clear();
    writer.serializeAsXML(t.kep, memory);
    bytes = static_cast<size_t>(memory.size());
  }
  state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
  state.counters["out_bytes"] = static_cast<double>(bytes);
}

void BM_Write_Pugixml(benchmark::State& state) {
  Trees& t = trees(static_cast<size_t>(state.range(0)));
  StringWriter sink;
  for (auto _ : state) {
    sink.out.clear();
    t.pugi.save(sink, "", pugi::format_raw);
    benchmark::DoNotOptimize(sink.out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(sink.out.size()) * state.iterations());
  state.counters["out_bytes"] = static_cast<double>(sink.out.size());
}

void BM_Write_Libxml2(benchmark::State& state) {
  Trees& t = trees(static_cast<size_t>(state.range(0)));
  int size = 0;
  for (auto _ : state) {
    xmlChar* memory = nullptr;
    xmlDocDumpMemory(t.libxml, &memory, &size);
    benchmark::DoNotOptimize(memory);
    xmlFree(memory);
  }
  state.SetBytesProcessed(static_cast<int64_t>(size) * state.iterations());
  state.counters["out_bytes"] = static_cast<double>(size);
}

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(12 << 10)->Arg(1 << 20)->Arg(10 << 20)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(BM_Write_Kep)->Apply(sizes);
BENCHMARK(BM_Write_KepMemoryStream)->Apply(sizes);
BENCHMARK(BM_Write_Pugixml)->Apply(sizes);
BENCHMARK(BM_Write_Libxml2)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
