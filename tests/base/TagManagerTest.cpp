// Tag managers, namespaces, ranges and entries on their own: blocks of 2048
// tags, table loading, range lists, entries and the namespace switch.
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

TEST(TagManager, LoadedTablesGiveTagsByPositionAndStayCurrent) {
  KepTagManager m = newManager();
  KepTagTable const table[] = {"zero", "one", "zero", "three"};  // a repeat shifts the rest
  ASSERT_EQ(m.loadTagTable(100, 199, 4, table), 1);
  EXPECT_EQ(m.nameToTag("zero"), 100);
  EXPECT_EQ(m.nameToTag("three"), 102);
  EXPECT_TRUE(m.tagToName(103).isNull());
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40000) << "a table below the next tag leaves it";
  EXPECT_EQ(m.add(KepString("four")), 103) << "new names continue in the loaded range";
  EXPECT_EQ(m.add(bytes("five")), 104);
  // Loaded out of order, the range list is kept ordered by start.
  KepTagTable const t3[] = {"t3"};
  KepTagTable const t2[] = {"t2"};
  ASSERT_EQ(m.loadTagTable(300, 399, 1, t3), 1);
  ASSERT_EQ(m.loadTagTable(200, 299, 1, t2), 1);
  EXPECT_EQ(m.tagToName(200).toStdString(), "t2");
  EXPECT_EQ(m.getEntry(300).getName().toStdString(), "t3");
  for (int tag : {99, 199, 201, 399, 400, 0, -100}) {
    EXPECT_TRUE(m.tagToName(tag).isNull()) << tag;
    EXPECT_TRUE(m.getEntry(tag).isNull()) << tag;
  }
  KepTagTable const high[] = {"high"};
  ASSERT_EQ(m.loadTagTable(0x50000, 0x500FF, 1, high), 1);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x50100) << "a table past the next tag moves it on";
  // The last table's range is current now; its 0x100 tags hold 0xFF names.
  for (int i = 1; i < 0xFF; ++i) ASSERT_EQ(m.add(name("h", i)), 0x50000 + i);
  EXPECT_EQ(m.add(KepString("overflow")), 0x50100);
  EXPECT_EQ(m.getNextRange(16), 0x50900);
  EXPECT_EQ(m.getNextRange(0x7FFFFFFF), 0) << "no block past the largest tag";
}

TEST(TagManager, TablesThatCannotLoadLeaveNothingBehind) {
  KepTagManager m = newManager();
  KepTagTable const good[] = {"g0", "g1"};
  ASSERT_EQ(m.loadTagTable(1000, 1999, 2, good), 1);
  KepTagTable const withNull[] = {"bad", nullptr};
  KepTagTable const withEmpty[] = {"bad", ""};
  KepTagTable const other[] = {"bad"};
  struct Case {
    int start, end, count;
    KepTagTable const* table;
  };
  for (Case c :
       {Case{3000, 3999, 2, withNull}, Case{3000, 3999, 2, withEmpty}, Case{3000, 3999, 1, nullptr},
        Case{3000, 3999, -1, other}, Case{3999, 3000, 1, other},  // end before start
        Case{1000, 1999, 1, other},                               // the same start again
        Case{1500, 2500, 1, other},                               // overlapping a loaded range
        Case{500, 1000, 1, other}}) {                             // touching its first tag
    EXPECT_EQ(m.loadTagTable(c.start, c.end, c.count, c.table), 0) << c.start << " " << c.end;
  }
  EXPECT_EQ(m.nameToTag("bad"), 0);
  EXPECT_EQ(bodyOf(m)->rangeCount(), 1);
  EXPECT_EQ(m.add(KepString("after")), 1002) << "the good table's range is still current";
}

TEST(TagManager, SetNameSpaceStartsAFreshUnnamedNamespaceWhenNoneMatches) {
  KepTagManager m = newManager();
  KepRTagNameSpace* first = bodyOf(m)->getNameSpace();
  EXPECT_EQ(m.add(KepString("shared")), 0x40000);
  // The first namespace has an empty name and URL: it matches, nothing changes.
  KepTagNameSpace same = m.setNameSpace(KepString(""), KepString(""));
  EXPECT_EQ(same.getRealKepObj(), static_cast<KepRObject*>(first));
  // Any other name starts a new namespace, which keeps no name of its own.
  KepTagNameSpace fresh = m.setNameSpace(KepString("urn:x"), KepString("http://x"));
  EXPECT_NE(fresh.getRealKepObj(), static_cast<KepRObject*>(first));
  EXPECT_EQ(fresh.getName().toStdString(), "");
  // Names start afresh in it, in a block of its own; old tags still resolve.
  EXPECT_EQ(m.nameToTag("shared"), 0);
  EXPECT_EQ(m.add(KepString("shared")), 0x40800);
  EXPECT_EQ(m.tagToName(0x40000).toStdString(), "shared");
  EXPECT_TRUE(fresh.tagToName(0x40000).isNull()) << "the old tag is the first namespace's";
  // Asking for the same name again does not find the unnamed namespace.
  KepTagNameSpace third = m.setNameSpace(KepString("urn:x"), KepString("http://x"));
  EXPECT_NE(third.getRealKepObj(), fresh.getRealKepObj());
  EXPECT_EQ(bodyOf(m)->nameSpaceCount(), 3);

  KepTagManager null;
  EXPECT_EQ(null.add(KepString("x")), 0);
  EXPECT_TRUE(null.tagToName(0x4002C).isNull());
  EXPECT_TRUE(null.setNameSpace(KepString(""), KepString("")).isNull());
}

TEST(TagEntry, AProbeUsesItsTextInPlaceAndAStringNameReplacesIt) {
  KepTagEntry e;
  {
    ScopedKepInit kep;  // the entry outlives the library
    e = KepTagEntry(KepGetObject(KepClassID::TagEntry, 0));
  }
  ASSERT_FALSE(e.isNull());
  auto* body = static_cast<KepRTagEntry*>(e.getRealKepObj());
  char text[] = "probe\xe9";
  body->set(bytes(text));
  EXPECT_EQ(e.getName().charAt(5), 0xE9) << "widened unsigned";
  text[0] = 'P';  // the probe does not copy its text
  EXPECT_EQ(e.getName().charAt(0), 'P');
  e.set(KepString("Back"), 99);
  EXPECT_EQ(body->getKind(), 0) << "the 8-bit kind needs 8-bit text";
  EXPECT_EQ(e.getName().toStdString(), "Back");
}

TEST(TagRange, UnplacedRangesTakeABlockAtTheNextTagWhenFirstAsked) {
  KepTagManager m = newManager();
  KepTagNameSpace ns(static_cast<KepBridgeToObject*>(bodyOf(m)->getNameSpace()));
  EXPECT_EQ(m.getNextRange(0x100), 0x40000);
  auto* r = new KepTagRange(ns, 0, 0);
  EXPECT_TRUE(r->isUnplaced());
  EXPECT_EQ(r->getEnd(), 0x40100 + 2047);
  EXPECT_EQ(r->getStart(), 0x40100);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40900);
  ASSERT_EQ(ns.addRange(r), 1) << "the namespace owns the range now";
  EXPECT_EQ(ns.addRange(r), 0) << "the same start is listed once";
  EXPECT_EQ(m.addRange(r), 1);
  ns.setRange(r);
  EXPECT_EQ(ns.add(KepString("in range")), 0x40100);
  EXPECT_EQ(r->getCount(), 1);
  EXPECT_EQ(r->getEntry(0x40101), nullptr) << "not handed out";
  EXPECT_EQ(ns.getEntry(0x40100).getName().toStdString(), "in range");
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

}  // namespace
