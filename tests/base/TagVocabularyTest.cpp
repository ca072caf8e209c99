// The process's tag manager after start-up: the built-in vocabulary at its fixed
// numbers, the table boundaries, the first dynamic tags and the process facade.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using keptest::ScopedKepInit;

namespace {

struct NamedTag {
  int tag;
  char const* name;
};

// Every tag whose name the library documents, with that name.
NamedTag const kNamedTags[] = {
    {0, "NullTerminator"},
    {0x4e, "Date"},
    {0x1a2, "Thread"},
    {0x40000, "Array"},
    {0x40001, "Binary"},
    {0x40002, "Collection"},
    {0x40003, "CompoundList"},
    {0x40004, "Credential"},
    {0x40005, "URL"},
    {0x40006, "Dispatcher"},
    {0x40007, "DomAttribute"},
    {0x40008, "DomAttributeList"},
    {0x40009, "DomCDataSection"},
    {0x4000A, "DomCharacterData"},
    {0x4000B, "DomChildNode"},
    {0x4000C, "DomComment"},
    {0x4000D, "DomDocument"},
    {0x4000E, "DomDocumentFragment"},
    {0x4000F, "DomDocumentType"},
    {0x40010, "DomElement"},
    {0x40011, "DomEntity"},
    {0x40012, "DomEntityReference"},
    {0x40013, "DomExternalID"},
    {0x40014, "DomGeneralReference"},
    {0x40015, "DomImplementation"},
    {0x40016, "DomNamedNodeMap"},
    {0x40017, "DomNameSpace"},
    {0x40018, "DomNode"},
    {0x40019, "DomNodeList"},
    {0x4001A, "DomNodeName"},
    {0x4001B, "DomNotation"},
    {0x4001C, "DomParentNode"},
    {0x4001D, "DomPI"},
    {0x4001E, "DomProcessingInstruction"},
    {0x4001F, "DomText"},
    {0x40020, "Factory"},
    {0x40021, "Filter"},
    {0x40022, "InputStream"},
    {0x40023, "List"},
    {0x40024, "Object"},
    {0x40025, "Parameters"},
    {0x40026, "OutputStream"},
    {0x40027, "Process"},
    {0x40028, "Service"},
    {0x40029, "Services"},
    {0x4002A, "Sort"},
    {0x4002B, "StringBase"},
    {0x4002C, "String"},
    {0x4002D, "StringBuffer"},
    {0x4002E, "StringTokenizer"},
    {0x4002F, "TagEntry"},
    {0x40030, "TagManager"},
    {0x40031, "TagNameSpace"},
    {0x40032, "TagRange"},
    {0x40033, "Unarchive"},
    {0x40034, "View"},
    {0x40035, "XMLParser"},
    {0x40036, "File"},
    {0x40037, "Path"},
    {0x40038, "Runnable"},
    {0x40039, "IOStream"},
    {0x4003A, "FactoryClassEntry"},
    {0x4003B, "Or"},
    {0x4003C, "And"},
    {0x4003D, "Gt"},
    {0x4003E, "Gte"},
    {0x4003F, "Lt"},
    {0x40048, "Listener"},
    {0x40049, "OrderedSet"},
    {0x4004D, "Ipc"},
    {0x4004E, "Long"},
    {0x4004F, "Preload"},
    {0x40050, "RegisterClass"},
    {0x40051, "ReturnCode"},
    {0x40052, "ClassId"},
    {0x40053, "ElementId"},
    {0x40055, "KepWorkerThread"},
    {0x40063, "NumID"},
    {0x400E1, "KepAnyEvent"},
    {0x400E4, "Event"},
    {0x4011F, "DomWriter"},
    {0x40120, "KepEventResponse"},
    {0x40122, "PublishingEvent"},
    {0x40123, "PublishingToSubscriber"},
    {0x40124, "EventSubscribers"},
    {0x40125, "EventSubscriber"},
    {0x40126, "EventSubscriberStack"},
};

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

std::string numbered(char const* stem, int i) { return stem + std::to_string(i); }

class TagVocabulary : public ::testing::Test {
 protected:
  ScopedKepInit kep;
};

TEST(TagFamilies, BridgeFamiliesHaveTheirSizes) {
  EXPECT_EQ(0 KEP_METHODS_TagEntry(KEP_COUNT_METHOD), 4);
  EXPECT_EQ(0 KEP_METHODS_TagEntry(KEP_COUNT_BRACKETED), 3);
  EXPECT_EQ(0 KEP_METHODS_TagManager(KEP_COUNT_METHOD), 9);
  EXPECT_EQ(0 KEP_METHODS_TagManager(KEP_COUNT_BRACKETED), 7);
  EXPECT_EQ(0 KEP_METHODS_TagNameSpace(KEP_COUNT_METHOD), 9);
  EXPECT_EQ(0 KEP_METHODS_TagNameSpace(KEP_COUNT_BRACKETED), 6);
}

TEST_F(TagVocabulary, EveryDocumentedNameSitsAtItsTagBothWays) {
  for (NamedTag const& t : kNamedTags) {
    EXPECT_EQ(KepProcess::nameToTag(KepString(t.name)), t.tag) << t.name;
    EXPECT_EQ(nameOf(t.tag), t.name) << std::hex << t.tag;
    EXPECT_EQ(KepNameToTag(t.name), t.tag) << "a known name is found, not added: " << t.name;
  }
  EXPECT_EQ(KepRTagManager::process()->getNextTag(), 0x40A00) << "no name was added";
}

TEST_F(TagVocabulary, ClassIdsAreTheTagsOfTheClassNames) {
  EXPECT_EQ(KepProcess::nameToTag("Object"), KepRObject::getStaticClassID());
  EXPECT_EQ(KepProcess::nameToTag("String"), KepRString::getStaticClassID());
  EXPECT_EQ(KepProcess::nameToTag("TagManager"), KepRTagManager::getStaticClassID());
  EXPECT_EQ(KepProcess::nameToTag("TagNameSpace"), KepRTagNameSpace::getStaticClassID());
  EXPECT_EQ(KepProcess::nameToTag("TagEntry"), KepRTagEntry::getStaticClassID());
  EXPECT_EQ(KepProcess::nameToTag("OrderedSet"), KepROrderedSet::getStaticClassID());
  EXPECT_EQ(KepProcess::nameToTag("Date"), KepClassID::Date);
  EXPECT_EQ(KepProcess::nameToTag("Thread"), KepRThread::getStaticClassID());
  // Every class id names a built-in tag, and the factory reaches a class by name.
#define KEP_TEST_CLASS_NAMED(S, id) EXPECT_FALSE(KepProcess::tagToName(id).isNull()) << #S;
  KEP_CLASS_IDS(KEP_TEST_CLASS_NAMED)
#undef KEP_TEST_CLASS_NAMED
  KepObject list = KepGetObject(KepString("StringBuffer"), 0);
  EXPECT_EQ(list.getClassID(), KepClassID::StringBuffer);
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
    EXPECT_FALSE(KepProcess::tagToName(b.start).isNull()) << t.name;
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
}

// The generated tables agree with their source: every name the vocabulary file
// places is loaded at its tag, and no placeholder took a documented name.
TEST_F(TagVocabulary, LoadedTablesMatchTheVocabularySource) {
  std::ifstream in(KEP_TAG_VOCABULARY);
  ASSERT_TRUE(in) << KEP_TAG_VOCABULARY;
  int placed = 0;
  for (std::string line; std::getline(in, line);) {
    line = line.substr(0, line.find('#'));
    std::istringstream fields(line);
    std::string first, second;
    if (!(fields >> first >> second) || first == "table") continue;
    int tag = static_cast<int>(std::stol(first, nullptr, 0));
    EXPECT_EQ(KepProcess::nameToTag(KepString(second.c_str())), tag) << second;
    EXPECT_EQ(nameOf(tag), second);
    ++placed;
  }
  EXPECT_GE(placed, static_cast<int>(sizeof kNamedTags / sizeof kNamedTags[0]));
}

TEST_F(TagVocabulary, TagsOutsideEveryTableHaveNoName) {
  for (int tag :
       {-1, 1422, 32999, 40000, 41999, 43000, 55000, 57999, 59000, 0x3FFFF, 0x40A00, 0x7FFFFFFF}) {
    EXPECT_TRUE(KepProcess::tagToName(tag).isNull()) << std::hex << tag;
    EXPECT_TRUE(KepRTagManager::process()->getEntry(tag).isNull()) << std::hex << tag;
  }
}

TEST_F(TagVocabulary, DynamicNamesFillTheLastTableThenTakeANewBlock) {
  EXPECT_EQ(KepProcess::nameToTag("NeverAdded"), 0);
  EXPECT_EQ(KepNameToTag("First dynamic"), kFirstDynamicTag);
  EXPECT_EQ(KepNameToTag(KepString("First dynamic")), kFirstDynamicTag) << "same name, same tag";
  EXPECT_EQ(KepProcess::nameToTag("First dynamic"), kFirstDynamicTag);
  std::vector<int> tags{kFirstDynamicTag};
  for (int i = 2; i <= 23; ++i)
    tags.push_back(KepNameToTag(KepString(numbered("name", i).c_str())));
  EXPECT_EQ(tags[21], 0x409FE) << "the 22nd name fills the last built-in block";
  EXPECT_EQ(tags[22], 0x40A00) << "the 23rd takes the first new block";
  EXPECT_TRUE(KepProcess::tagToName(0x409FF).isNull()) << "a block's last tag is never handed out";
  EXPECT_EQ(KepRTagManager::process()->getNextTag(), 0x41200);
  for (size_t i = 1; i < tags.size(); ++i) {
    EXPECT_EQ(tags[i], tags[i - 1] + (i == 22 ? 2 : 1));
    EXPECT_EQ(nameOf(tags[i]), numbered("name", static_cast<int>(i) + 1));
  }
  EXPECT_EQ(KepProcess::nameToTag("NeverAdded"), 0) << "lookups never add";
}

TEST_F(TagVocabulary, TheCharacterClassGetsADynamicTagOnFirstUse) {
  EXPECT_EQ(KepProcess::nameToTag("KepCharacter"), 0);
  int id = KepRCharacter::getStaticClassID();
  EXPECT_EQ(id, kFirstDynamicTag);
  EXPECT_EQ(KepRCharacter::getStaticClassID(), id);
  EXPECT_EQ(nameOf(id), "KepCharacter");
  KepRCharacter c('x');
  EXPECT_EQ(c.getClassID(), id);
  EXPECT_TRUE(c.isOfType(id));
}

TEST_F(TagVocabulary, NamesAreCaseSensitive) {
  EXPECT_EQ(KepNameToTag("String"), 0x4002C);
  int lower = KepNameToTag("string");
  int upper = KepNameToTag("STRING");
  EXPECT_NE(lower, 0x4002C);
  EXPECT_NE(upper, 0x4002C);
  EXPECT_NE(lower, upper);
  EXPECT_EQ(nameOf(lower), "string");
  EXPECT_EQ(nameOf(upper), "STRING");
}

TEST_F(TagVocabulary, EightBitTextFindsTheSameNamesAsStrings) {
  EXPECT_EQ(KepNameToTag("DomElement"), 0x40010);
  EXPECT_EQ(KepRTagManager::process()->add(reinterpret_cast<signed char const*>("Event")), 0x400E4);
  // Bytes are widened one to one: byte 0xE9 is unit U+00E9.
  int bytes = KepNameToTag("caf\xe9");
  unsigned short units[] = {'c', 'a', 'f', 0xE9, 0};
  EXPECT_EQ(KepNameToTag(KepString(units)), bytes);
  EXPECT_EQ(KepProcess::nameToTag(KepString(units)), bytes);
  // A unit above 0xFF never matches a byte.
  unsigned short wide[] = {'c', 'a', 'f', 0x1E9, 0};
  EXPECT_NE(KepNameToTag(KepString(wide)), bytes);
  // A prefix and a longer continuation are different names.
  EXPECT_NE(KepNameToTag("DomElem"), 0x40010);
  EXPECT_NE(KepNameToTag("DomElementX"), 0x40010);
}

TEST_F(TagVocabulary, NullAndEmptyNamesHaveNoTag) {
  EXPECT_EQ(KepNameToTag(KepString()), 0);
  EXPECT_EQ(KepNameToTag(static_cast<char const*>(nullptr)), 0);
  EXPECT_EQ(KepNameToTag(""), 0);
  EXPECT_EQ(KepProcess::nameToTag(KepString()), 0);
  EXPECT_EQ(KepRTagManager::process()->getNextTag(), 0x40A00) << "nothing was added";
}

TEST(TagProcess, WithoutTheLibraryThereAreNoTags) {
  EXPECT_EQ(KepProcess::nameToTag("String"), 0);
  EXPECT_TRUE(KepProcess::tagToName(0x4002C).isNull());
  EXPECT_EQ(KepNameToTag("String"), 0);
  {
    ScopedKepInit kep;
    EXPECT_EQ(KepNameToTag("String"), 0x4002C);
    KepNameToTag("Gone with the manager");
  }
  EXPECT_EQ(KepProcess::nameToTag("String"), 0);
  ScopedKepInit again;
  EXPECT_EQ(KepProcess::nameToTag("Gone with the manager"), 0) << "a new process vocabulary";
  EXPECT_EQ(KepNameToTag("Gone with the manager"), kFirstDynamicTag);
}

TEST(TagProcess, NestedInitialisationsShareOneManager) {
  ScopedKepInit outer;
  KepRTagManager* m = KepRTagManager::process();
  int tag = KepNameToTag("Shared name");
  {
    ScopedKepInit inner;
    EXPECT_EQ(KepRTagManager::process(), m);
    EXPECT_EQ(KepProcess::nameToTag("Shared name"), tag);
  }
  EXPECT_EQ(KepRTagManager::process(), m);
  EXPECT_EQ(KepProcess::nameToTag("Shared name"), tag);
  // The manager is the factory's prototype of its class.
  KepTagManager other(KepGetObject(KepClassID::TagManager, 0));
  ASSERT_FALSE(other.isNull());
  EXPECT_NE(other.getRealKepObj(), static_cast<KepRObject*>(m));
  EXPECT_EQ(other.nameToTag("String"), 0) << "a new manager starts empty";
}

TEST(TagProcess, StartUpAndShutDownLeaveNoObjectBehind) {
  // The thread table's storage is made once per process and kept: make it first.
  { ScopedKepInit once; }
  KepDebugger::resetCounts();
  gDiagKep.store(1);
  gKepDebuggerOptions.store(1);
  Kep::init(0);
  EXPECT_EQ(KepDebugger::registeredTagNames(), 3795) << "every built-in name is reported";
  EXPECT_EQ(KepDebugger::registeredClasses(), KepFactory::classCount());
  EXPECT_GT(KepDebugger::liveObjects(), 3795 * 2) << "an entry and a string per name";
  int64_t names = KepDebugger::registeredTagNames();
  KepNameToTag("Reported");
  KepNameToTag("Reported");
  KepNameToTag("String");
  EXPECT_EQ(KepDebugger::registeredTagNames(), names + 1) << "only a new name is reported";
  Kep::destroy();
  EXPECT_EQ(KepDebugger::liveObjects(), 0);
  EXPECT_EQ(KepDebugger::liveBridges(), 0);
  gKepDebuggerOptions.store(0);
  gDiagKep.store(0);
}

}  // namespace
