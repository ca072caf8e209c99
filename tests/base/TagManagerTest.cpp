// Tag managers, namespaces, ranges and entries on their own: blocks of 2048
// tags, table loading, range lists, the namespace switch and the name order.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using keptest::ScopedKepInit;

namespace {

// A new, empty tag manager (next tag 0x40000, one namespace).
KepTagManager newManager() { return KepTagManager(new KepRTagManager()); }

KepRTagManager* bodyOf(KepTagManager const& m) {
  return static_cast<KepRTagManager*>(m.getRealKepObj());
}

KepString name(char const* stem, int i) { return KepString((stem + std::to_string(i)).c_str()); }

signed char const* bytes(char const* text) { return reinterpret_cast<signed char const*>(text); }

TEST(TagManager, AFullBlockMovesTheNextNameToANewBlock) {
  KepTagManager m = newManager();
  // The first name of a namespace without a range opens a block at the next tag.
  ASSERT_EQ(m.add(name("n", 0)), 0x40000);
  for (int i = 1; i < 2047; ++i) ASSERT_EQ(m.add(name("n", i)), 0x40000 + i);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40800);
  EXPECT_EQ(bodyOf(m)->rangeCount(), 1);
  // 2047 names fill the block; its last tag is never handed out.
  EXPECT_EQ(m.add(name("n", 2047)), 0x40800);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x41000);
  EXPECT_EQ(bodyOf(m)->rangeCount(), 2);
  EXPECT_TRUE(m.tagToName(0x407FF).isNull());
  EXPECT_EQ(m.tagToName(0x407FE).toStdString(), "n2046");
  EXPECT_EQ(m.tagToName(0x40800).toStdString(), "n2047");
  EXPECT_EQ(m.nameToTag(name("n", 2046)), 0x407FE);
  EXPECT_EQ(m.add(name("n", 5)), 0x40005) << "a known name keeps its tag";
  EXPECT_EQ(bodyOf(m)->getNameSpace()->nameCount(), 2048);
}

TEST(TagManager, NextRangeHandsOutBlocks) {
  KepTagManager m = newManager();
  EXPECT_EQ(m.getNextRange(16), 0x40000);
  EXPECT_EQ(m.getNextRange(2048), 0x40010);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40810);
  EXPECT_EQ(m.add(KepString("x")), 0x40810) << "blocks continue from the next tag";
  EXPECT_EQ(m.getNextRange(0x7FFFFFFF), 0) << "no block past the largest tag";
}

TEST(TagManager, LoadedTablesGiveTagsByPosition) {
  KepTagManager m = newManager();
  KepTagTable const table[] = {"zero", "one", "two", "three"};
  ASSERT_EQ(m.loadTagTable(100, 199, 4, table), 1);
  EXPECT_EQ(m.nameToTag("zero"), 100);
  EXPECT_EQ(m.nameToTag("three"), 103);
  EXPECT_TRUE(m.tagToName(104).isNull());
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40000) << "a table below the next tag leaves it";
  // The loaded range stays current: new names continue in it.
  EXPECT_EQ(m.add(KepString("four")), 104);
  EXPECT_EQ(m.add(bytes("five")), 105);
  KepTagTable const high[] = {"high"};
  ASSERT_EQ(m.loadTagTable(0x50000, 0x500FF, 1, high), 1);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x50100) << "a table past the next tag moves it on";
  // The last table's range is current now; its 0x100 tags hold 0xFF names.
  for (int i = 1; i < 0xFF; ++i) ASSERT_EQ(m.add(name("h", i)), 0x50000 + i);
  EXPECT_EQ(m.add(KepString("overflow")), 0x50100);
}

TEST(TagManager, ARepeatedNameInATableShiftsTheNamesAfterIt) {
  KepTagManager m = newManager();
  KepTagTable const table[] = {"a", "b", "a", "c"};
  ASSERT_EQ(m.loadTagTable(10, 20, 4, table), 1);
  EXPECT_EQ(m.nameToTag("a"), 10);
  EXPECT_EQ(m.nameToTag("b"), 11);
  EXPECT_EQ(m.nameToTag("c"), 12);
  EXPECT_TRUE(m.tagToName(13).isNull());
}

TEST(TagManager, TablesThatCannotLoadLeaveNothingBehind) {
  KepTagManager m = newManager();
  KepTagTable const good[] = {"g0", "g1"};
  ASSERT_EQ(m.loadTagTable(1000, 1999, 2, good), 1);
  KepTagTable const withNull[] = {"n0", nullptr};
  KepTagTable const withEmpty[] = {"e0", ""};
  KepTagTable const other[] = {"o0"};
  EXPECT_EQ(m.loadTagTable(3000, 3999, 2, withNull), 0);
  EXPECT_EQ(m.loadTagTable(3000, 3999, 2, withEmpty), 0);
  EXPECT_EQ(m.loadTagTable(3000, 3999, 1, nullptr), 0);
  EXPECT_EQ(m.loadTagTable(3000, 3999, -1, other), 0);
  EXPECT_EQ(m.loadTagTable(3999, 3000, 1, other), 0) << "end before start";
  EXPECT_EQ(m.loadTagTable(1000, 1999, 1, other), 0) << "the same start again";
  EXPECT_EQ(m.loadTagTable(1500, 2500, 1, other), 0) << "overlapping a loaded range";
  EXPECT_EQ(m.loadTagTable(500, 1000, 1, other), 0) << "touching its first tag";
  EXPECT_EQ(m.nameToTag("n0"), 0);
  EXPECT_EQ(m.nameToTag("e0"), 0);
  EXPECT_EQ(m.nameToTag("o0"), 0);
  EXPECT_EQ(bodyOf(m)->rangeCount(), 1);
  EXPECT_EQ(m.add(KepString("after")), 1002) << "the good table's range is still current";
}

TEST(TagManager, TagsAreFoundAcrossTheRangeList) {
  KepTagManager m = newManager();
  KepTagTable const t1[] = {"t1"};
  KepTagTable const t2[] = {"t2"};
  KepTagTable const t3[] = {"t3"};
  // Loaded out of order: the list is kept ordered by start.
  ASSERT_EQ(m.loadTagTable(300, 399, 1, t3), 1);
  ASSERT_EQ(m.loadTagTable(100, 199, 1, t1), 1);
  ASSERT_EQ(m.loadTagTable(200, 299, 1, t2), 1);
  EXPECT_EQ(m.tagToName(100).toStdString(), "t1");
  EXPECT_EQ(m.tagToName(200).toStdString(), "t2");
  EXPECT_EQ(m.tagToName(300).toStdString(), "t3");
  for (int tag : {99, 101, 199, 201, 399, 400, 0, -100}) {
    EXPECT_TRUE(m.tagToName(tag).isNull()) << tag;
    EXPECT_TRUE(m.getEntry(tag).isNull()) << tag;
  }
  KepTagEntry e = m.getEntry(200);
  EXPECT_EQ(e.getTag(), 200);
  EXPECT_EQ(e.getName().toStdString(), "t2");
}

TEST(TagManager, SetNameSpaceStartsAFreshUnnamedNamespaceWhenNoneMatches) {
  KepTagManager m = newManager();
  KepRTagNameSpace* first = bodyOf(m)->getNameSpace();
  EXPECT_EQ(m.add(KepString("shared")), 0x40000);
  // The first namespace has an empty name and URL: it matches, nothing changes.
  KepTagNameSpace same = m.setNameSpace(KepString(""), KepString(""));
  EXPECT_EQ(same.getRealKepObj(), static_cast<KepRObject*>(first));
  EXPECT_EQ(bodyOf(m)->nameSpaceCount(), 1);
  // Any other name starts a new namespace, which keeps no name of its own.
  KepTagNameSpace fresh = m.setNameSpace(KepString("urn:x"), KepString("http://x"));
  EXPECT_NE(fresh.getRealKepObj(), static_cast<KepRObject*>(first));
  EXPECT_EQ(fresh.getName().toStdString(), "");
  EXPECT_EQ(fresh.getURL().toStdString(), "");
  EXPECT_EQ(bodyOf(m)->nameSpaceCount(), 2);
  // Names start afresh in it, in a block of its own; old tags still resolve.
  EXPECT_EQ(m.nameToTag("shared"), 0);
  int again = m.add(KepString("shared"));
  EXPECT_EQ(again, 0x40800);
  EXPECT_EQ(m.tagToName(again).toStdString(), "shared");
  EXPECT_EQ(m.tagToName(0x40000).toStdString(), "shared");
  EXPECT_EQ(fresh.tagToName(again).toStdString(), "shared");
  EXPECT_TRUE(fresh.tagToName(0x40000).isNull()) << "the old tag is the first namespace's";
  // Asking for the same name again does not find the unnamed namespace.
  KepTagNameSpace third = m.setNameSpace(KepString("urn:x"), KepString("http://x"));
  EXPECT_NE(third.getRealKepObj(), fresh.getRealKepObj());
  EXPECT_EQ(bodyOf(m)->nameSpaceCount(), 3);
  int index = -2;
  EXPECT_NE(bodyOf(m)->find(KepString(""), KepString(""), index), nullptr);
  EXPECT_GE(index, 0);
}

TEST(TagManager, NamesOrderByUnitsAndBytesAlike) {
  KepRString* lowA = KepRString::create(reinterpret_cast<unsigned short const*>(u"a"), 1);
  KepString keepA(static_cast<KepBridgeToObject*>(lowA));
  auto entry = [](KepString const& s) {
    auto* e = new KepRTagEntry();
    e->set(s, 0);
    return KepTagEntry(static_cast<KepBridgeToObject*>(e));
  };
  auto probe = [](char const* text) {
    auto* e = new KepRTagEntry();
    e->set(bytes(text));
    return KepTagEntry(static_cast<KepBridgeToObject*>(e));
  };
  auto before = [](KepTagEntry const& a, KepTagEntry const& b) {
    return _KepTagEntryComparator(a.getRealKepObj(), b.getRealKepObj());
  };
  unsigned short wide[] = {0x100, 0};
  std::vector<KepTagEntry> ordered = {entry(KepString("B")), entry(KepString("a")),
                                      entry(KepString("ab")), entry(KepString("\xff")),
                                      entry(KepString(wide))};
  std::vector<KepTagEntry> probes = {probe("B"), probe("a"), probe("ab"), probe("\xff"),
                                     KepTagEntry()};
  for (size_t i = 0; i < ordered.size(); ++i) {
    EXPECT_FALSE(before(ordered[i], ordered[i])) << i;
    for (size_t j = i + 1; j < ordered.size(); ++j) {
      EXPECT_TRUE(before(ordered[i], ordered[j])) << i << " " << j;
      EXPECT_FALSE(before(ordered[j], ordered[i])) << i << " " << j;
      if (!probes[i].isNull()) {
        EXPECT_TRUE(before(probes[i], ordered[j])) << "text " << i << " " << j;
        EXPECT_FALSE(before(ordered[j], probes[i])) << "text " << i << " " << j;
      }
      if (!probes[j].isNull()) {
        EXPECT_TRUE(before(probes[i], probes[j])) << "texts " << i << " " << j;
        EXPECT_TRUE(before(ordered[i], probes[j])) << "text " << j << " " << i;
      }
    }
    if (!probes[i].isNull()) {
      EXPECT_FALSE(before(probes[i], ordered[i])) << "text and string are equal " << i;
      EXPECT_FALSE(before(ordered[i], probes[i])) << "text and string are equal " << i;
    }
  }
}

TEST(TagEntry, StringAndProbeForms) {
  KepTagEntry e(KepGetObject(KepClassID::TagEntry, 0));
  {
    ScopedKepInit kep;
    e = KepTagEntry(KepGetObject(KepClassID::TagEntry, 0));
  }
  ASSERT_FALSE(e.isNull());
  EXPECT_TRUE(e.getName().isNull());
  EXPECT_EQ(e.getTag(), 0);
  e.set(KepString("Name"), 0);
  e.setTag(42);
  EXPECT_EQ(e.getName().toStdString(), "Name");
  EXPECT_EQ(e.getTag(), 42);
  auto* body = static_cast<KepRTagEntry*>(e.getRealKepObj());
  EXPECT_EQ(body->getKind(), 0);
  char text[] = "probe\xe9";
  body->set(bytes(text));
  EXPECT_EQ(body->getKind(), 99);
  EXPECT_EQ(body->nameBody(), nullptr) << "the string name was released";
  KepString widened = e.getName();
  EXPECT_EQ(widened.length(), 6);
  EXPECT_EQ(widened.charAt(5), 0xE9);
  text[0] = 'P';  // the probe does not copy its text
  EXPECT_EQ(e.getName().charAt(0), 'P');
  e.set(KepString("Back"), 99);
  EXPECT_EQ(body->getKind(), 0) << "the 8-bit kind needs 8-bit text";
  EXPECT_EQ(e.getName().toStdString(), "Back");
  KepTagEntry none;
  EXPECT_TRUE(none.getName().isNull());
  EXPECT_EQ(none.getTag(), 0);
}

TEST(TagRange, UnplacedRangesTakeABlockWhenFirstAsked) {
  KepTagManager m = newManager();
  KepTagNameSpace ns(static_cast<KepBridgeToObject*>(bodyOf(m)->getNameSpace()));
  m.getNextRange(0x100);
  auto* r = new KepTagRange(ns, 0, 0);
  EXPECT_TRUE(r->isUnplaced());
  EXPECT_EQ(r->getEnd(), 0x40100 + 2047);
  EXPECT_EQ(r->getStart(), 0x40100);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40900);
  EXPECT_EQ(r->getNameSpace().getRealKepObj(), ns.getRealKepObj());
  ASSERT_EQ(ns.addRange(r), 1) << "the namespace owns the range now";
  EXPECT_EQ(ns.addRange(r), 0) << "the same start is listed once";
  EXPECT_EQ(m.addRange(r), 1);
  ns.setRange(r);
  EXPECT_EQ(ns.add(KepString("in range")), 0x40100);
  EXPECT_EQ(r->getCount(), 1);
  EXPECT_NE(r->getEntry(0x40100), nullptr);
  EXPECT_EQ(r->getEntry(0x40101), nullptr) << "not handed out";
  EXPECT_EQ(r->getEntry(0x400FF), nullptr);
  EXPECT_EQ(ns.getEntry(0x40100).getName().toStdString(), "in range");
  EXPECT_EQ(ns.nameToTag(KepString("in range")), 0x40100);
  EXPECT_EQ(ns.add(bytes("unknown"), 0), 0) << "8-bit lookup without adding";
  EXPECT_EQ(ns.add(bytes("in range"), 0), 0x40100);
}

TEST(TagNameSpace, AFactoryNamespaceJoinsTheProcessManager) {
  ScopedKepInit kep;
  KepTagNameSpace ns(KepGetObject(KepClassID::TagNameSpace, 0));
  ASSERT_FALSE(ns.isNull());
  int before = KepRTagManager::process()->nameSpaceCount();
  int tag = ns.add(KepString("String"));
  EXPECT_EQ(tag, 0x40A00) << "its own namespace, its own block";
  EXPECT_EQ(KepRTagManager::process()->nameSpaceCount(), before + 1);
  EXPECT_EQ(KepProcess::tagToName(tag).toStdString(), "String");
  EXPECT_EQ(KepProcess::nameToTag("String"), 0x4002C) << "the current namespace is unchanged";
  EXPECT_EQ(ns.add(KepString()), 0);
  EXPECT_EQ(ns.add(static_cast<signed char const*>(nullptr), 1), 0);
}

TEST(TagNameSpace, ANamespaceOutlivingItsManagerKeepsItsNames) {
  KepTagNameSpace ns;
  {
    KepTagManager m = newManager();
    m.add(KepString("kept"));
    ns = m.setNameSpace(KepString(""), KepString(""));
  }
  EXPECT_EQ(ns.nameToTag(KepString("kept")), 0x40000);
  EXPECT_EQ(ns.tagToName(0x40000).toStdString(), "kept");
  EXPECT_EQ(ns.add(KepString("new")), 0) << "no manager to place a block";
}

TEST(TagManager, NullHandlesAnswerNeutrally) {
  KepTagManager m;
  EXPECT_EQ(m.add(KepString("x")), 0);
  EXPECT_EQ(m.nameToTag(KepString("x")), 0);
  EXPECT_TRUE(m.tagToName(0x4002C).isNull());
  EXPECT_TRUE(m.getEntry(1).isNull());
  EXPECT_TRUE(m.setNameSpace(KepString(""), KepString("")).isNull());
  KepTagNameSpace ns;
  EXPECT_EQ(ns.add(KepString("x")), 0);
  EXPECT_TRUE(ns.getName().isNull());
}

}  // namespace
