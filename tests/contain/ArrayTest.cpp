// KepArray: the inline store and its one-way spill, index rules, element
// ownership, comparison and copies.
#include <gtest/gtest.h>

#include <vector>

#include "contain/ContainTestSupport.h"

using keptest::makeValue;
using keptest::valueOf;

namespace {

class Array : public keptest::CountedBodies {};

KepArray newArray() { return KepArray(new KepRArray); }

KepRArray* body(KepArray const& a) { return static_cast<KepRArray*>(a.getRealKepObj()); }

std::vector<int> values(KepArray const& a) {
  std::vector<int> out;
  for (int i = 0; i < a.size(); ++i) out.push_back(valueOf(a.at(i)));
  return out;
}

// An array of n fresh elements with values 0 ... n-1.
KepArray filled(int n) {
  KepArray a = newArray();
  for (int i = 0; i < n; ++i) a.addElement(makeValue(i));
  return a;
}

}  // namespace

TEST_F(Array, FamilyHasFifteenUnbracketedBridges) {
  EXPECT_EQ(0 KEP_METHODS_Array(KEP_COUNT_METHOD), 15);
  EXPECT_EQ(0 KEP_METHODS_Array(KEP_COUNT_BRACKETED), 0);
}

TEST_F(Array, FactoryMakesArraysAndNullHandlesAnswerNeutrally) {
  KepArray a(KepGetObject(KepClassID::Array, 0));
  ASSERT_FALSE(a.isNull());
  EXPECT_TRUE(a.isOfType(KepClassID::Array));
  EXPECT_EQ(a.isEmpty(), 1u);
  KepArray null;
  EXPECT_EQ(null.size(), 0);
  EXPECT_TRUE(null.at(0).isNull());
  null.addElement(makeValue(1));  // nothing to call
  EXPECT_EQ(live(), 0);
}

TEST_F(Array, FourElementsStayInlineAndTheFifthSpillsForGood) {
  KepArray a = filled(4);
  EXPECT_FALSE(body(a)->isSpilled());
  a.setSize(4);
  EXPECT_FALSE(body(a)->isSpilled());
  a.addElement(makeValue(4));
  EXPECT_TRUE(body(a)->isSpilled());
  EXPECT_EQ(values(a), (std::vector<int>{0, 1, 2, 3, 4})) << "the elements moved over";
  a.setSize(2);
  EXPECT_TRUE(body(a)->isSpilled()) << "shrinking never returns to the inline store";
  EXPECT_EQ(live(), 2) << "the dropped elements were released";
  a.insert(0, makeValue(9));
  EXPECT_EQ(values(a), (std::vector<int>{9, 0, 1}));

  KepArray b = newArray();
  b.setSize(5);  // spills directly, with empty positions
  EXPECT_TRUE(body(b)->isSpilled());
  EXPECT_EQ(b.size(), 5);
  EXPECT_TRUE(b.at(4).isNull());
}

TEST_F(Array, InsertOutsideZeroToSizeChangesNothing) {
  for (int n : {2, 40}) {
    KepArray a = filled(n);
    KepObject x = makeValue(100);
    std::vector<int> before = values(a);
    a.insert(-1, x);
    a.insert(n + 1, x);
    EXPECT_EQ(values(a), before);
    EXPECT_EQ(x.getRealKepObj()->getRefCount(), 1) << "no copy was made";
    a.insert(n, x);  // size() appends
    EXPECT_EQ(a.size(), n + 1);
    EXPECT_EQ(valueOf(a.at(n)), 100);
  }
}

TEST_F(Array, InsertAndRemoveAcrossGroupBoundariesMatchStdVector) {
  for (int at : {0, 2, 31, 32, 33, 63, 64, 70}) {
    KepArray a = filled(70);
    std::vector<int> oracle = values(a);
    a.insert(at, makeValue(1000 + at));
    oracle.insert(oracle.begin() + at, 1000 + at);
    ASSERT_EQ(values(a), oracle) << "insert at " << at;
    KepObject removed = a.remove(at);
    EXPECT_EQ(valueOf(removed), 1000 + at);
    oracle.erase(oracle.begin() + at);
    ASSERT_EQ(values(a), oracle) << "remove at " << at;
  }
  for (int at : {0, 1, 3}) {  // inside the inline store
    KepArray a = filled(3);
    std::vector<int> oracle = values(a);
    a.insert(at, makeValue(50));
    oracle.insert(oracle.begin() + at, 50);
    EXPECT_EQ(values(a), oracle);
    EXPECT_FALSE(body(a)->isSpilled());
    a.remove(at);
    oracle.erase(oracle.begin() + at);
    EXPECT_EQ(values(a), oracle);
  }
  EXPECT_EQ(live(), 0);
}

TEST_F(Array, EveryPositionOwnsExactlyOneReference) {
  KepObject e = makeValue(1);
  KepRObject* eb = e.getRealKepObj();
  {
    KepArray a = newArray();
    for (int i = 0; i < 40; ++i) a.addElement(e);
    EXPECT_EQ(eb->getRefCount(), 41);
    a.put(3, makeValue(2));  // the old position's reference goes
    EXPECT_EQ(eb->getRefCount(), 40);
    KepObject removed = a.remove(0);
    EXPECT_EQ(eb->getRefCount(), 40) << "the position's reference went, the answer holds one";
    removed = KepObject();
    a.setSize(33);  // 32 of the 33 positions left hold `e`
    EXPECT_EQ(eb->getRefCount(), 33);
    a.setSize(40);  // regrown positions are empty, not the released handles
    for (int i = 33; i < 40; ++i) EXPECT_TRUE(a.at(i).isNull()) << i;
    a.put(0, KepObject());  // a null object empties the position
    EXPECT_TRUE(a.at(0).isNull());
    EXPECT_EQ(eb->getRefCount(), 32);
    KepArray clone = a.clone();
    EXPECT_EQ(eb->getRefCount(), 63);
    EXPECT_TRUE(clone.at(0).isNull());
    clone.clear();
    EXPECT_EQ(eb->getRefCount(), 32);
    EXPECT_EQ(live(), 2);
  }
  EXPECT_EQ(eb->getRefCount(), 1) << "the array's destructor released the rest";
}

TEST_F(Array, OutOfRangeAccessIsSilent) {
  KepArray a = filled(3);
  EXPECT_TRUE(a.at(-1).isNull());
  EXPECT_TRUE(a.at(3).isNull());
  a.put(3, makeValue(5));  // never grows
  a.put(-1, makeValue(5));
  EXPECT_EQ(a.size(), 3);
  EXPECT_TRUE(a.remove(3).isNull());
  EXPECT_TRUE(newArray().remove(0).isNull());
  EXPECT_EQ(a.indexOf(KepObject()), -1);
  EXPECT_EQ(a.indexOf(makeValue(2)), 2);
  EXPECT_EQ(a.indexOf(makeValue(7)), -1);
  a.setSize(-4);
  EXPECT_EQ(a.size(), 0);
  EXPECT_EQ(live(), 0);
}

TEST_F(Array, EqualsCopyAndClone) {
  KepArray a = filled(6);
  KepArray c = a.clone();
  EXPECT_NE(body(c), body(a));
  EXPECT_EQ(c.at(5).getRealKepObj(), a.at(5).getRealKepObj()) << "clones share the elements";
  EXPECT_EQ(a.equals(c), 1u);
  EXPECT_EQ(a.equals(static_cast<KepObject const&>(c)), 1u);
  EXPECT_EQ(static_cast<KepObject&>(a).equals(c), 1u) << "through the root's bridge too";
  KepArray other = filled(6);
  EXPECT_EQ(a.equals(other), 1u) << "elements compare by their own equals";
  other.put(4, makeValue(40));
  EXPECT_EQ(a.equals(other), 0u);
  other.setSize(5);
  EXPECT_EQ(a.equals(other), 0u);
  EXPECT_EQ(a.equals(KepArray()), 0u);
  EXPECT_EQ(a.equals(KepString("x")), 0u) << "not an array";

  other.copy(a);
  EXPECT_EQ(values(other), values(a));
  a.copy(a);
  EXPECT_EQ(a.size(), 6) << "copying an array onto itself keeps it";
  a.copy(KepArray());
  EXPECT_EQ(a.size(), 6);

  EXPECT_EQ(a.hashCode(), 0);
  KepString text = a.toString();
  EXPECT_FALSE(text.isNull());
  EXPECT_EQ(text.length(), 0);
}
