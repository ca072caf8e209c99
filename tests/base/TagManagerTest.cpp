// Tags: stand-alone managers (blocks of 2048 tags, loaded and refused tables, the
// namespace switch, tag-to-name through the range lists), and the process's
// manager after start-up with its built-in vocabulary and dynamic names.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace {

KepTagManager newManager() { return KepTagManager(new KepRTagManager()); }
KepRTagManager* bodyOf(KepTagManager const& m) {
  return static_cast<KepRTagManager*>(m.getRealKepObj());
}
KepString name(char const* stem, int i) { return KepString((stem + std::to_string(i)).c_str()); }
std::string nameOf(KepTagManager& m, int tag) { return m.tagToName(tag).toStdString(); }
std::string nameOf(int tag) { return KepProcess::tagToName(tag).toStdString(); }
int processNextTag() { return KepRTagManager::process()->getNextTag(); }

TEST(TagManager, AFullBlockMovesTheNextNameToANewBlock) {
  KepTagManager m = newManager();
  for (int i = 0; i < 2047; ++i) ASSERT_EQ(m.add(name("n", i)), 0x40000 + i);
  // 2047 names fill the block; its last tag is never handed out.
  EXPECT_EQ(m.add(name("n", 2047)), 0x40800);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x41000);
  EXPECT_TRUE(m.tagToName(0x407FF).isNull());
  EXPECT_EQ(nameOf(m, 0x407FE), "n2046");
  EXPECT_EQ(nameOf(m, 0x40800), "n2047");
  EXPECT_EQ(m.nameToTag(name("n", 2046)), 0x407FE);
  EXPECT_EQ(m.add(name("n", 5)), 0x40005) << "a known name keeps its tag";
  EXPECT_EQ(bodyOf(m)->getNameSpace()->nameCount(), 2048);
}

TEST(TagManager, TablesLoadByPositionStayCurrentAndLeaveNothingWhenRefused) {
  KepTagManager m = newManager();
  KepTagTable const table[] = {"zero", "one", "zero", "three"};  // a repeat shifts the rest
  ASSERT_EQ(m.loadTagTable(100, 199, 4, table), 1);
  EXPECT_EQ(m.nameToTag("three"), 102);
  EXPECT_TRUE(m.tagToName(103).isNull());
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40000) << "a table below the next tag leaves it";
  EXPECT_EQ(m.add(KepString("four")), 103) << "new names continue in the loaded range";
  KepTagTable const high[] = {"high"};
  ASSERT_EQ(m.loadTagTable(0x50000, 0x500FF, 1, high), 1);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x50100) << "a table past the next tag moves it on";
  EXPECT_EQ(m.add(KepString("after high")), 0x50001);

  // Refused: an empty name, no table, the end before the start, the same start
  // again, a range overlapping a loaded one.
  KepTagTable const bad[] = {"bad", ""};
  EXPECT_EQ(
      (std::vector<int>{m.loadTagTable(3000, 3999, 2, bad), m.loadTagTable(3000, 3999, 1, nullptr),
                        m.loadTagTable(3999, 3000, 1, bad), m.loadTagTable(100, 150, 1, bad),
                        m.loadTagTable(150, 250, 1, bad)}),
      std::vector<int>(5, 0));
  EXPECT_EQ(m.nameToTag("bad"), 0);
  EXPECT_EQ(m.add(KepString("still high")), 0x50002) << "the last good table stays current";
}

TEST(TagManager, SetNameSpaceStartsAFreshUnnamedNamespaceWhenNoneMatches) {
  KepTagManager m = newManager();
  KepRTagNameSpace* first = bodyOf(m)->getNameSpace();
  EXPECT_EQ(m.add(KepString("shared")), 0x40000);
  // The first namespace has an empty name and URL: it matches, nothing changes.
  EXPECT_EQ(m.setNameSpace(KepString(""), KepString("")).getRealKepObj(), first);
  KepTagNameSpace fresh = m.setNameSpace(KepString("urn:x"), KepString("http://x"));
  EXPECT_EQ(fresh.getName().toStdString(), "") << "a namespace keeps no name";
  // Names start afresh in a block of its own; tags of the old namespace resolve.
  EXPECT_EQ(m.add(KepString("shared")), 0x40800);
  EXPECT_EQ(nameOf(m, 0x40000), "shared");
}

class TagVocabulary : public ::testing::Test {
 protected:
  keptest::ScopedKepInit kep_;
};

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

// The documented names, then every name the vocabulary source places (the
// generated tables must agree with their source), each at its tag both ways.
TEST_F(TagVocabulary, EveryDocumentedAndEverySourceNameSitsAtItsTagBothWays) {
  std::vector<std::pair<int, std::string>> named;
  std::istringstream api(kApiTableNames);
  for (std::string name; api >> name;) named.emplace_back(0x40000 + named.size(), name);
  std::istringstream other(kOtherNamedTags);
  for (std::string tag, name; other >> tag >> name;)
    named.emplace_back(std::stoi(tag, nullptr, 0), name);
  ASSERT_EQ(named.size(), 87u);
  std::ifstream source(KEP_TAG_VOCABULARY);
  for (std::string line; std::getline(source, line);) {
    std::istringstream fields(line.substr(0, line.find('#')));
    std::string tag, name;
    if (fields >> tag >> name && tag != "table")
      named.emplace_back(std::stoi(tag, nullptr, 0), name);
  }
  EXPECT_GE(named.size(), 2 * 87u) << "the source places at least the documented names";
  for (auto const& [tag, name] : named) {
    EXPECT_EQ(KepProcess::nameToTag(KepString(name.c_str())), tag) << name;
    EXPECT_EQ(nameOf(tag), name) << std::hex << tag;
    EXPECT_EQ(KepNameToTag(name.c_str()), tag) << "a known name is found, not added";
  }
  EXPECT_EQ(processNextTag(), 0x40A00) << "no name was added";
  // Class ids are the tags of the class names.
#define KEP_TEST_CLASS_NAMED(S, id) EXPECT_FALSE(KepProcess::tagToName(id).isNull()) << #S;
  KEP_CLASS_IDS(KEP_TEST_CLASS_NAMED)
#undef KEP_TEST_CLASS_NAMED
}

TEST_F(TagVocabulary, TablesHoldTheirNamesAndNothingPastThem) {
  std::tuple<int, int, int> const bounds[] = {
      {0, 32999, 1422},    {33000, 39799, 493}, {39800, 39999, 80},      {42000, 42999, 612},
      {50000, 54999, 379}, {58000, 58999, 23},  {0x40000, 0x407FF, 297}, {0x40800, 0x409FF, 489},
  };
  int n = 0;
  _KepBuiltInTagTable const* tables = _KepGetBuiltInTagTables(n);
  ASSERT_EQ(n, 8);
  int total = 0;
  for (int i = 0; i < n; ++i) {
    _KepBuiltInTagTable const& t = tables[i];
    ASSERT_EQ(std::make_tuple(t.start, t.end, t.count), bounds[i]) << t.name;
    for (int k = 0; k < t.count; ++k) {  // placeholders too: every position is fixed
      ASSERT_EQ(KepProcess::nameToTag(KepString(t.names[k])), t.start + k) << t.names[k];
    }
    EXPECT_FALSE(KepProcess::tagToName(t.start + t.count - 1).isNull()) << t.name;
    if (i + 1 < n) {  // the API table's free positions take dynamic names
      EXPECT_TRUE(KepProcess::tagToName(t.start + t.count).isNull()) << t.name;
      EXPECT_TRUE(KepProcess::tagToName(t.end).isNull()) << t.name;
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

TEST_F(TagVocabulary, DynamicNamesFillTheLastTableThenTakeANewBlock) {
  // The character class has no built-in name: its class id is the first dynamic tag.
  EXPECT_EQ(KepProcess::nameToTag("KepCharacter"), 0);
  std::vector<int> tags{KepRCharacter::getStaticClassID()};
  EXPECT_EQ(tags[0], 0x409E9);
  EXPECT_EQ(nameOf(tags[0]), "KepCharacter");
  EXPECT_EQ(KepCharacter(static_cast<unsigned short>('x')).getClassID(), tags[0]);
  EXPECT_EQ(KepNameToTag(KepString("KepCharacter")), tags[0]) << "same name, same tag";
  for (int i = 2; i <= 23; ++i) tags.push_back(KepNameToTag(name("name", i)));
  EXPECT_EQ(tags[21], 0x409FE) << "the 22nd name fills the last built-in block";
  EXPECT_EQ(tags[22], 0x40A00) << "the 23rd takes the first new block";
  EXPECT_TRUE(KepProcess::tagToName(0x409FF).isNull()) << "a block's last tag is never handed out";
  EXPECT_EQ(processNextTag(), 0x41200);
  for (size_t i = 1; i < tags.size(); ++i) {
    EXPECT_EQ(tags[i], tags[i - 1] + (i == 22 ? 2 : 1));
    EXPECT_EQ(nameOf(tags[i]), "name" + std::to_string(i + 1));
  }
}

TEST_F(TagVocabulary, NamesAreCaseSensitiveAndUnknownNamesGiveZero) {
  int lower = KepNameToTag("string");
  EXPECT_EQ((std::set<int>{lower, KepNameToTag("STRING"), 0x4002C}).size(), 3u);
  EXPECT_EQ(nameOf(lower), "string");
  // Bytes are widened one to one: byte 0xE9 is unit U+00E9, which U+01E9 is not.
  int bytes = KepNameToTag("caf\xe9");
  unsigned short units[] = {'c', 'a', 'f', 0xE9, 0};
  EXPECT_EQ(KepProcess::nameToTag(KepString(units)), bytes);
  units[3] = 0x1E9;
  EXPECT_NE(KepNameToTag(KepString(units)), bytes);
  int next = processNextTag();
  EXPECT_EQ(KepProcess::nameToTag("NeverAdded"), 0) << "lookups never add";
  EXPECT_EQ(KepNameToTag(KepString()), 0);
  EXPECT_EQ(KepNameToTag(""), 0);
  EXPECT_EQ(processNextTag(), next);
}

// Threads add and look up the same names at once, each from its own starting
// point and in both forms: every name gets one tag, whoever adds it first.
TEST_F(TagVocabulary, ConcurrentAddsOfTheSameNamesGiveOneTagEach) {
  constexpr int kThreads = 8, kNames = 2600;  // past the last built-in block and a new one
  std::vector<std::vector<int>> seen(kThreads, std::vector<int>(kNames, 0));
  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &seen, &mismatches] {
      for (int k = 0; k < kNames; ++k) {
        int i = (k + t * (kNames / kThreads)) % kNames;
        KepString n = name("shared-", i);
        int tag = k % 2 == 0 ? KepNameToTag(n.toStdString().c_str()) : KepNameToTag(n);
        seen[t][i] = tag;
        mismatches += nameOf(tag) != n.toStdString() || KepProcess::nameToTag(n) != tag ||
                      KepProcess::nameToTag("String") != 0x4002C;
      }
    });
  }
  for (std::thread& th : threads) th.join();
  EXPECT_EQ(mismatches.load(), 0);
  for (int t = 1; t < kThreads; ++t) ASSERT_EQ(seen[t], seen[0]) << "thread " << t;
  std::set<int> const distinct(seen[0].begin(), seen[0].end());
  // Distinct tags, the dense run of dynamic tags whatever the interleaving.
  EXPECT_EQ(static_cast<int>(distinct.size()), kNames);
  EXPECT_EQ(*distinct.begin(), 0x409E9);
  EXPECT_EQ(*distinct.rbegin(), 0x40A00 + (kNames - 22) + (kNames - 22) / 2047 - 1);
}

}  // namespace
