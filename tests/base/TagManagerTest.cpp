// Tag managers on their own: blocks of 2048 tags, loaded and refused tables, the
// namespace switch, and tag-to-name following the range lists and the entries.
#include <gtest/gtest.h>

#include <string>

#include "kep/Kep.h"
namespace {

// A new, empty tag manager (next tag 0x40000, one namespace).
KepTagManager newManager() { return KepTagManager(new KepRTagManager()); }

KepRTagManager* bodyOf(KepTagManager const& m) {
  return static_cast<KepRTagManager*>(m.getRealKepObj());
}

KepString name(char const* stem, int i) { return KepString((stem + std::to_string(i)).c_str()); }

std::string nameOf(KepTagManager& m, int tag) { return m.tagToName(tag).toStdString(); }

TEST(TagManager, AFullBlockMovesTheNextNameToANewBlock) {
  KepTagManager m = newManager();
  // The first name of a namespace without a range opens a block at the next tag.
  ASSERT_EQ(m.add(name("n", 0)), 0x40000);
  for (int i = 1; i < 2047; ++i) ASSERT_EQ(m.add(name("n", i)), 0x40000 + i);
  // 2047 names fill the block; its last tag is never handed out.
  EXPECT_EQ(m.add(name("n", 2047)), 0x40800);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x41000);
  EXPECT_TRUE(m.tagToName(0x407FF).isNull());
  EXPECT_EQ(m.tagToName(0x407FE).toStdString(), "n2046");
  EXPECT_EQ(m.tagToName(0x40800).toStdString(), "n2047");
  EXPECT_EQ(m.nameToTag(name("n", 2046)), 0x407FE);
  EXPECT_EQ(m.add(name("n", 5)), 0x40005) << "a known name keeps its tag";
  EXPECT_EQ(bodyOf(m)->getNameSpace()->nameCount(), 2048);

  KepTagManager null;
  EXPECT_EQ(null.add(KepString("x")), 0);
  EXPECT_TRUE(null.tagToName(0x4002C).isNull());
}

TEST(TagManager, TablesLoadByPositionStayCurrentAndLeaveNothingWhenRefused) {
  KepTagManager m = newManager();
  KepTagTable const table[] = {"zero", "one", "zero", "three"};  // a repeat shifts the rest
  ASSERT_EQ(m.loadTagTable(100, 199, 4, table), 1);
  EXPECT_EQ(m.nameToTag("three"), 102);
  EXPECT_EQ(nameOf(m, 102), "three");
  EXPECT_TRUE(m.tagToName(103).isNull());
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x40000) << "a table below the next tag leaves it";
  EXPECT_EQ(m.add(KepString("four")), 103) << "new names continue in the loaded range";
  KepTagTable const high[] = {"high"};
  ASSERT_EQ(m.loadTagTable(0x50000, 0x500FF, 1, high), 1);
  EXPECT_EQ(bodyOf(m)->getNextTag(), 0x50100) << "a table past the next tag moves it on";
  EXPECT_EQ(m.add(KepString("after high")), 0x50001);

  KepTagTable const withEmpty[] = {"bad", ""};
  KepTagTable const bad[] = {"bad"};
  struct Case {
    int start, end, count;
    KepTagTable const* table;
  };
  for (Case c : {Case{3000, 3999, 2, withEmpty}, Case{3000, 3999, 1, nullptr},
                 Case{3999, 3000, 1, bad},   // end before start
                 Case{100, 150, 1, bad},     // the same start again
                 Case{150, 250, 1, bad}}) {  // overlapping a loaded range
    EXPECT_EQ(m.loadTagTable(c.start, c.end, c.count, c.table), 0) << c.start << " " << c.end;
  }
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
  EXPECT_NE(fresh.getRealKepObj(), first);
  EXPECT_EQ(fresh.getName().toStdString(), "") << "a namespace keeps no name";
  // Names start afresh in a block of its own; tags of the old namespace resolve.
  EXPECT_EQ(m.nameToTag("shared"), 0);
  EXPECT_EQ(m.add(KepString("shared")), 0x40800);
  EXPECT_EQ(nameOf(m, 0x40000), "shared");
  EXPECT_EQ(nameOf(m, 0x40800), "shared");
  // Asking for the same name again does not find the unnamed namespace.
  EXPECT_NE(m.setNameSpace(KepString("urn:x"), KepString("http://x")).getRealKepObj(),
            fresh.getRealKepObj());
}

// Tag-to-name is the search of the manager's range list, then of the namespace's,
// then the entry's current name: a range that a caller enters, and an entry that a
// caller renames, change its answers.
TEST(TagManager, TagToNameFollowsTheRangeListsAndTheEntries) {
  KepTagManager m = newManager();
  ASSERT_EQ(m.add(KepString("a")), 0x40000);
  // A caller's range that starts before the manager's block and overlaps it: both
  // searches now stop at it, where 0x40000 was never handed out.
  KepTagNameSpace ns = m.setNameSpace(KepString(""), KepString(""));
  auto* caller = new KepTagRange(ns, 0x3FF00, 0x400FF);
  ASSERT_EQ(ns.addRange(caller), 1) << "the namespace owns the range now";
  ASSERT_EQ(m.addRange(caller), 1);
  EXPECT_TRUE(m.tagToName(0x40000).isNull());
  EXPECT_EQ(m.nameToTag("a"), 0x40000) << "the name itself is still known";
  ns.setRange(caller);
  EXPECT_EQ(m.add(KepString("c")), 0x3FF00);
  EXPECT_EQ(nameOf(m, 0x3FF00), "c");

  KepTagManager other = newManager();
  ASSERT_EQ(other.add(KepString("b")), 0x40000);
  other.getEntry(0x40000).set(KepString("renamed"), 0);
  EXPECT_EQ(nameOf(other, 0x40000), "renamed");
}

}  // namespace
