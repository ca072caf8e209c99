// The bridge functions are the library's binary interface: other processes'
// code calls them by name. Every family must export exactly its methods, and
// the methods that run under the body's lock must be exactly the bracketed ones.
#include <dlfcn.h>

#include <cstdio>
#include <map>
#include <string>

#include "gtest/gtest.h"
#include "kep/Kep.h"

namespace {

// A family's body class, its bracketed count as its method table declares it,
// and the counts of methods and bracketed methods it must have.
struct Family {
  char const* body;
  int bracketed, wantMethods, wantBracketed;
};

#define KEP_FAMILY(Stem, methods, bracketed) \
  Family { "KepR" #Stem, 0 KEP_METHODS_##Stem(KEP_COUNT_BRACKETED), methods, bracketed }

// clang-format off
Family const kFamilies[] = {
    KEP_FAMILY(Object, 33, 0),              KEP_FAMILY(Array, 15, 0),
    KEP_FAMILY(OrderedSet, 6, 3),           KEP_FAMILY(OrderedSetIterator, 2, 0),
    KEP_FAMILY(String, 35, 0),              KEP_FAMILY(StringBuffer, 21, 7),
    KEP_FAMILY(ByteArray, 3, 3),            KEP_FAMILY(StringTokenizer, 6, 3),
    KEP_FAMILY(TagEntry, 4, 3),             KEP_FAMILY(TagManager, 9, 7),
    KEP_FAMILY(TagNameSpace, 9, 6),         KEP_FAMILY(Thread, 19, 0),
    KEP_FAMILY(Runnable, 1, 0),             KEP_FAMILY(Configuration, 8, 8),
    KEP_FAMILY(IOStream, 24, 20),           KEP_FAMILY(StringBufferIOStream, 11, 10),
    KEP_FAMILY(File, 30, 24),               KEP_FAMILY(Path, 6, 4),
    KEP_FAMILY(DOMNode, 48, 26),            KEP_FAMILY(DOMChildNode, 1, 1),
    KEP_FAMILY(DOMParentNode, 5, 4),        KEP_FAMILY(DOMCharacterData, 9, 7),
    KEP_FAMILY(DOMText, 1, 0),              KEP_FAMILY(DOMAttribute, 5, 3),
    KEP_FAMILY(DOMAttributeList, 11, 3),    KEP_FAMILY(DOMElement, 74, 16),
    KEP_FAMILY(DOMDocument, 19, 1),         KEP_FAMILY(DOMDocumentType, 3, 0),
    KEP_FAMILY(DOMEntity, 3, 0),            KEP_FAMILY(DOMExternalID, 5, 2),
    KEP_FAMILY(DOMImplementation, 1, 1),    KEP_FAMILY(DOMNamedNodeMap, 11, 5),
    KEP_FAMILY(DOMNamespace, 6, 2),         KEP_FAMILY(DOMNodeList, 14, 6),
    KEP_FAMILY(DOMNotation, 2, 1),          KEP_FAMILY(DOMProcessingInstruction, 3, 1),
    KEP_FAMILY(DOMRepeatingNodeList, 7, 5), KEP_FAMILY(DOMWriter, 11, 11),
    KEP_FAMILY(XMLParser, 6, 4),
};
// clang-format on

// The exported bridge functions of the loaded library per body class ("KepR<Class>"),
// read from its dynamic symbol table with nm.
std::map<std::string, int> exportedFamilies() {
  Dl_info library{};
  std::map<std::string, int> counts;
  if (dladdr(reinterpret_cast<void*>(&bridgeKepRObject_getClassID), &library) == 0) return counts;
  FILE* nm = popen(("nm -D --defined-only '" + std::string(library.dli_fname) + "'").c_str(), "r");
  if (nm == nullptr) return counts;
  for (char line[512]; std::fgets(line, sizeof line, nm) != nullptr;) {
    std::string symbol(line);
    auto at = symbol.find("bridgeKepR");
    auto end = symbol.find('_', at);
    if (at != std::string::npos && end != std::string::npos) {
      ++counts[symbol.substr(at + 6, end - at - 6)];
    }
  }
  pclose(nm);
  return counts;
}

}  // namespace

// Each family exports one bridge per method of its table, and brackets its own.
TEST(BridgeFamilies, TheLibraryExportsEachFamilyWholeWithItsBrackets) {
  std::map<std::string, int> exported = exportedFamilies();
  ASSERT_FALSE(exported.empty()) << "could not read the library's dynamic symbols with nm";
  for (Family const& f : kFamilies) {
    EXPECT_EQ(exported[f.body], f.wantMethods) << f.body;
    EXPECT_EQ(f.bracketed, f.wantBracketed) << f.body;
    exported.erase(f.body);
  }
  // No family exports bridges the list above does not know of.
  for (auto const& [body, count] : exported) ADD_FAILURE() << body << " exports " << count;
}
