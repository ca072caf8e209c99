// The process's tag manager after start-up: the built-in vocabulary at its fixed
// numbers, the table boundaries, the first dynamic tags and the process facade.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using keptest::ScopedKepInit;

namespace {

// The documented names of the API table's first tags, 0x40000 on, one after another.
constexpr char kApiTableNames[] =
    "Array Binary Collection CompoundList Credential URL Dispatcher DomAttribute "
    "DomAttributeList DomCDataSection DomCharacterData DomChildNode DomComment DomDocument "
    "DomDocumentFragment DomDocumentType DomElement DomEntity DomEntityReference DomExternalID "
    "DomGeneralReference DomImplementation DomNamedNodeMap DomNameSpace DomNode DomNodeList "
    "DomNodeName DomNotation DomParentNode DomPI DomProcessingInstruction DomText Factory "
    "Filter InputStream List Object Parameters OutputStream Process Service Services Sort "
    "StringBase String StringBuffer StringTokenizer TagEntry TagManager TagNameSpace TagRange "
    "Unarchive View XMLParser File Path Runnable IOStream FactoryClassEntry Or And Gt Gte Lt";

// The other documented names, each after its tag.
constexpr char kOtherNamedTags[] =
    "0 NullTerminator  0x4e Date  0x1a2 Thread  0x40048 Listener  0x40049 OrderedSet  "
    "0x4004d Ipc  0x4004e Long  0x4004f Preload  0x40050 RegisterClass  0x40051 ReturnCode  "
    "0x40052 ClassId  0x40053 ElementId  0x40055 KepWorkerThread  0x40063 NumID  "
    "0x400e1 KepAnyEvent  0x400e4 Event  0x4011f DomWriter  0x40120 KepEventResponse  "
    "0x40122 PublishingEvent  0x40123 PublishingToSubscriber  0x40124 EventSubscribers  "
    "0x40125 EventSubscriber  0x40126 EventSubscriberStack";

struct NamedTag {
  int tag;
  std::string name;
};

// Both lists as (tag, name) pairs.
std::vector<NamedTag> documentedNames() {
  std::vector<NamedTag> named;
  std::istringstream api(kApiTableNames);
  for (std::string name; api >> name;) {
    named.push_back({0x40000 + static_cast<int>(named.size()), name});
  }
  std::istringstream other(kOtherNamedTags);
  for (std::string tag, name; other >> tag >> name;) {
    named.push_back({static_cast<int>(std::stol(tag, nullptr, 0)), name});
  }
  return named;
}

struct TableBounds {
  int start;
  int end;
  int count;
};

// The built-in tables in loading order.
TableBounds const kTables[] = {
    {0, 32999, 1422},    {33000, 39799, 493}, {39800, 39999, 80},      {42000, 42999, 612},
    {50000, 54999, 379}, {58000, 58999, 23},  {0x40000, 0x407FF, 297}, {0x40800, 0x409FF, 489},
};

constexpr int kFirstDynamicTag = 0x409E9;

std::string nameOf(int tag) { return KepProcess::tagToName(tag).toStdString(); }

class TagVocabulary : public ::testing::Test {
 protected:
  ScopedKepInit kep;
};

TEST_F(TagVocabulary, EveryDocumentedNameSitsAtItsTagBothWays) {
  std::vector<NamedTag> const named = documentedNames();
  ASSERT_EQ(named.size(), 87u);
  for (NamedTag const& t : named) {
    EXPECT_EQ(KepProcess::nameToTag(KepString(t.name.c_str())), t.tag) << t.name;
    EXPECT_EQ(nameOf(t.tag), t.name) << std::hex << t.tag;
    EXPECT_EQ(KepNameToTag(t.name.c_str()), t.tag) << "a known name is found, not added";
  }
  EXPECT_EQ(KepRTagManager::process()->getNextTag(), 0x40A00) << "no name was added";
  // Class ids are the tags of the class names.
#define KEP_TEST_CLASS_NAMED(S, id) EXPECT_FALSE(KepProcess::tagToName(id).isNull()) << #S;
  KEP_CLASS_IDS(KEP_TEST_CLASS_NAMED)
#undef KEP_TEST_CLASS_NAMED
}

TEST_F(TagVocabulary, TablesHoldTheirNamesAndNothingPastThem) {
  int n = 0;
  _KepBuiltInTagTable const* tables = _KepGetBuiltInTagTables(n);
  ASSERT_EQ(n, 8);
  int total = 0;
  for (int i = 0; i < n; ++i) {
    TableBounds const& b = kTables[i];
    _KepBuiltInTagTable const& t = tables[i];
    EXPECT_EQ(t.start, b.start) << t.name;
    EXPECT_EQ(t.end, b.end) << t.name;
    EXPECT_EQ(t.count, b.count) << t.name;
    for (int k = 0; k < t.count; ++k) {
      ASSERT_EQ(KepProcess::nameToTag(KepString(t.names[k])), t.start + k) << t.names[k];
    }
    EXPECT_FALSE(KepProcess::tagToName(b.start + b.count - 1).isNull()) << t.name;
    if (i + 1 < n) {
      // The API table's free positions fill with dynamic names; all others stay empty.
      EXPECT_TRUE(KepProcess::tagToName(b.start + b.count).isNull()) << t.name;
      EXPECT_TRUE(KepProcess::tagToName(b.end).isNull()) << t.name;
    }
    total += t.count;
  }
  EXPECT_EQ(total, 3795);
  // The positions of the partly loaded table that are never loaded have no tag.
  EXPECT_EQ(KepProcess::nameToTag(KepString(tables[5].names[-1])), 0);
  for (int tag : {-1, 40000, 41999, 55000, 57999, 59000, 0x3FFFF, 0x40A00, 0x7FFFFFFF}) {
    EXPECT_TRUE(KepProcess::tagToName(tag).isNull()) << std::hex << tag;
  }
}

// The generated tables agree with their source: every name the vocabulary file
// places is loaded at its tag.
TEST_F(TagVocabulary, LoadedTablesMatchTheVocabularySource) {
  std::ifstream in(KEP_TAG_VOCABULARY);
  ASSERT_TRUE(in) << KEP_TAG_VOCABULARY;
  int placed = 0;
  for (std::string line; std::getline(in, line);) {
    std::istringstream fields(line.substr(0, line.find('#')));
    std::string first, second;
    if (!(fields >> first >> second) || first == "table") continue;
    int tag = static_cast<int>(std::stol(first, nullptr, 0));
    EXPECT_EQ(KepProcess::nameToTag(KepString(second.c_str())), tag) << second;
    EXPECT_EQ(nameOf(tag), second);
    ++placed;
  }
  EXPECT_GE(placed, static_cast<int>(documentedNames().size()));
}

TEST_F(TagVocabulary, DynamicNamesFillTheLastTableThenTakeANewBlock) {
  // The character class has no built-in name: it takes the first dynamic tag.
  EXPECT_EQ(KepProcess::nameToTag("KepCharacter"), 0);
  std::vector<int> tags{KepRCharacter::getStaticClassID()};
  EXPECT_EQ(tags[0], kFirstDynamicTag);
  EXPECT_EQ(nameOf(tags[0]), "KepCharacter");
  EXPECT_EQ(KepCharacter(static_cast<unsigned short>('x')).getClassID(), tags[0]);
  EXPECT_EQ(KepNameToTag(KepString("KepCharacter")), kFirstDynamicTag) << "same name, same tag";
  for (int i = 2; i <= 23; ++i) {
    tags.push_back(KepNameToTag(KepString(("name" + std::to_string(i)).c_str())));
  }
  EXPECT_EQ(tags[21], 0x409FE) << "the 22nd name fills the last built-in block";
  EXPECT_EQ(tags[22], 0x40A00) << "the 23rd takes the first new block";
  EXPECT_TRUE(KepProcess::tagToName(0x409FF).isNull()) << "a block's last tag is never handed out";
  EXPECT_EQ(KepRTagManager::process()->getNextTag(), 0x41200);
  for (size_t i = 1; i < tags.size(); ++i) {
    EXPECT_EQ(tags[i], tags[i - 1] + (i == 22 ? 2 : 1));
    EXPECT_EQ(nameOf(tags[i]), "name" + std::to_string(i + 1));
  }
}

TEST_F(TagVocabulary, NamesAreCaseSensitiveAndUnknownNamesGiveZero) {
  int lower = KepNameToTag("string");
  int upper = KepNameToTag("STRING");
  EXPECT_NE(lower, 0x4002C);
  EXPECT_NE(upper, 0x4002C);
  EXPECT_NE(lower, upper);
  EXPECT_EQ(nameOf(lower), "string");
  // Bytes are widened one to one: byte 0xE9 is unit U+00E9, which U+01E9 is not.
  int bytes = KepNameToTag("caf\xe9");
  unsigned short units[] = {'c', 'a', 'f', 0xE9, 0};
  EXPECT_EQ(KepProcess::nameToTag(KepString(units)), bytes);
  units[3] = 0x1E9;
  EXPECT_NE(KepNameToTag(KepString(units)), bytes);
  EXPECT_NE(KepNameToTag("DomElem"), 0x40010) << "a prefix is another name";
  // Names of every length around the four-unit words that names are hashed by:
  // added in one form, the other form finds the same tag; prefixes are other names.
  std::string const longest = "abcdefghi\xe9";
  std::set<int> distinct;
  for (size_t n = 1; n <= longest.size(); ++n) {
    std::string text = longest.substr(0, n);
    KepString wide(text.c_str());
    int tag = n % 2 != 0 ? KepNameToTag(text.c_str()) : KepNameToTag(wide);
    EXPECT_EQ(n % 2 != 0 ? KepNameToTag(wide) : KepNameToTag(text.c_str()), tag) << text;
    distinct.insert(tag);
  }
  EXPECT_EQ(distinct.size(), longest.size());

  int next = KepRTagManager::process()->getNextTag();
  EXPECT_EQ(KepProcess::nameToTag("NeverAdded"), 0) << "lookups never add";
  EXPECT_EQ(KepNameToTag(KepString()), 0);
  EXPECT_EQ(KepNameToTag(static_cast<char const*>(nullptr)), 0);
  EXPECT_EQ(KepNameToTag(""), 0);
  EXPECT_EQ(KepRTagManager::process()->getNextTag(), next) << "nothing was added";
}

}  // namespace
