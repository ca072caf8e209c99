// Tag managers on their own: blocks of 2048 tags, refused tables and the
// namespace switch.
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

}  // namespace
