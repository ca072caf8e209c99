// KepArray and the chain of 32-slot groups under it: sizing of the chain, the
// inline store and its one-way spill, index rules, element ownership and copies.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "contain/ContainTestSupport.h"

using keptest::makeValue;
using keptest::valueOf;

namespace {

using Chain = _KepArrayImpl<int*>;

int* P(intptr_t v) { return reinterpret_cast<int*>(v); }

// Fills 0 ... n-1 with the values 1 ... n.
void fill(Chain& a, int n) {
  a.resize(n);
  for (int i = 0; i < n; ++i) a[i] = P(i + 1);
}

// A slot read without growing.
int* peek(Chain& a, int i) { return *a._getEntry(i, nullptr, 0, nullptr, nullptr); }

class Array : public keptest::CountedBodies {};

KepRArray* body(KepArray const& a) { return static_cast<KepRArray*>(a.getRealKepObj()); }

std::vector<int> values(KepArray const& a) {
  std::vector<int> out;
  for (int i = 0; i < a.size(); ++i) out.push_back(valueOf(a.at(i)));
  return out;
}

// An array of n fresh elements with values 0 ... n-1.
KepArray filled(int n) {
  KepArray a(new KepRArray);
  for (int i = 0; i < n; ++i) a.addElement(makeValue(i));
  return a;
}

}  // namespace

TEST(ArrayChain, IndexingGrowsByWholeZeroFilledGroupsAndHintsWalkInOrder) {
  Chain a;
  EXPECT_EQ(a[40], nullptr);
  EXPECT_EQ(a.getGroupCount(), 2u);
  EXPECT_EQ(a.size(), 41);
  EXPECT_EQ(a.getLastGroupCount(), 9u);
  a.insert(70, P(9));  // past the end: grows to the index
  EXPECT_EQ(a.size(), 71);
  EXPECT_EQ(a[70], P(9));
  a.insert(-1, P(5));  // refused
  EXPECT_EQ(a.size(), 71);

  fill(a, 100);
  Chain::Group* hint = nullptr;
  for (int i = 0; i < 100; ++i) ASSERT_EQ(*a._getEntry(i, nullptr, 0, hint, &hint), P(i + 1)) << i;
  EXPECT_NE(hint, nullptr) << "index 100 lies in the last group";
}

TEST(ArrayChain, ResizeKeepsTheGroupThatHoldsIndexNAndItsStaleSlots) {
  struct Case {
    int n;
    uint32_t groups;
  };
  for (Case c :
       {Case{32, 2}, Case{33, 2}, Case{40, 2}, Case{31, 1}, Case{64, 3}, Case{1, 1}, Case{0, 0}}) {
    Chain a;
    fill(a, 96);
    a.resize(c.n);
    EXPECT_EQ(a.getGroupCount(), c.groups) << "resize(" << c.n << ") from 96";
    EXPECT_EQ(a.size(), c.n);
    a.resize(96);
    // Kept groups keep every pointer, even past n; freed groups come back zero-filled.
    for (int i = 0; i < 96; ++i) {
      ASSERT_EQ(a[i], uint32_t(i / 32) < c.groups ? P(i + 1) : nullptr)
          << "resize(" << c.n << "), index " << i;
    }
  }
}

TEST(ArrayChain, MovesStopWhereTheChainEndsAndBadIndexesUseTheInvalidItem) {
  Chain a;
  fill(a, 40);          // two groups: slots 0 ... 63 exist
  a._move(10, 50, 30);  // the destination's last slot (79) lies past the chain
  EXPECT_EQ(peek(a, 50), nullptr) << "an upward move that starts outside moves nothing";
  a._move(10, 50, 14);  // slots 10 ... 23 to 50 ... 63, all inside
  EXPECT_EQ(peek(a, 50), P(11));
  EXPECT_EQ(peek(a, 63), P(24));
  a._move(60, 0, 30);  // the source leaves the chain after four slots
  EXPECT_EQ(peek(a, 0), P(21));
  EXPECT_EQ(peek(a, 3), P(24));
  EXPECT_EQ(peek(a, 4), P(5));

  a[-3] = P(99);  // harmless to the array
  EXPECT_EQ(a[-3], nullptr) << "the invalid item reads null again";
  Chain::Group* out = reinterpret_cast<Chain::Group*>(&a);
  EXPECT_EQ(*a._getEntry(64, nullptr, 0, nullptr, &out), nullptr);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(a.size(), 40) << "without grow nothing is added";
}

TEST_F(Array, FourElementsStayInlineAndTheFifthSpillsForGood) {
  KepArray a = filled(4);
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

  KepArray b(KepGetObject(KepClassID::Array, 0));
  b.setSize(5);  // spills directly, with empty positions
  EXPECT_TRUE(body(b)->isSpilled());
  EXPECT_TRUE(b.at(4).isNull());
}

TEST_F(Array, InsertAndRemoveAcrossGroupBoundariesMatchStdVector) {
  struct Case {
    int n, at;
  };
  for (Case c : {Case{70, 0}, Case{70, 2}, Case{70, 31}, Case{70, 32}, Case{70, 33}, Case{70, 63},
                 Case{70, 64}, Case{70, 70}, Case{3, 0}, Case{3, 1}, Case{3, 3}}) {
    KepArray a = filled(c.n);
    std::vector<int> oracle = values(a);
    a.insert(c.at, makeValue(1000 + c.at));
    oracle.insert(oracle.begin() + c.at, 1000 + c.at);
    ASSERT_EQ(values(a), oracle) << "insert at " << c.at << " of " << c.n;
    EXPECT_EQ(body(a)->isSpilled(), c.n > 4) << "four elements stay inline";
    EXPECT_EQ(valueOf(a.remove(c.at)), 1000 + c.at);
    oracle.erase(oracle.begin() + c.at);
    ASSERT_EQ(values(a), oracle) << "remove at " << c.at << " of " << c.n;

    // Outside 0 ... size() nothing changes and no copy is made.
    KepObject x = makeValue(100);
    a.insert(-1, x);
    a.insert(c.n + 1, x);
    EXPECT_EQ(values(a), oracle);
    EXPECT_EQ(x.getRealKepObj()->getRefCount(), 1);
  }
  EXPECT_EQ(live(), 0);
}

TEST_F(Array, EveryPositionOwnsExactlyOneReference) {
  KepObject e = makeValue(1);
  KepRObject* eb = e.getRealKepObj();
  {
    KepArray a = filled(0);
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
    EXPECT_EQ(eb->getRefCount(), 32);
    KepArray clone = a.clone();
    EXPECT_EQ(eb->getRefCount(), 63) << "clones share the elements";
    clone.clear();
    EXPECT_EQ(eb->getRefCount(), 32);
    EXPECT_EQ(live(), 2);
  }
  EXPECT_EQ(eb->getRefCount(), 1) << "the array's destructor released the rest";
}

TEST_F(Array, NullHandlesAndOutOfRangeAccessAnswerNeutrally) {
  KepArray null;
  EXPECT_EQ(null.size(), 0);
  null.addElement(makeValue(1));  // nothing to call
  KepArray a = filled(3);
  for (int i : {-1, 3}) {
    EXPECT_TRUE(a.at(i).isNull());
    a.put(i, makeValue(5));  // never grows
    EXPECT_TRUE(a.remove(i).isNull());
  }
  EXPECT_EQ(a.size(), 3);
  EXPECT_EQ(a.indexOf(KepObject()), -1);
  EXPECT_EQ(a.indexOf(makeValue(2)), 2);
  EXPECT_EQ(a.indexOf(makeValue(7)), -1);
  a.setSize(-4);
  EXPECT_EQ(a.size(), 0);
  EXPECT_EQ(live(), 0);
}

TEST_F(Array, EqualsComparesElementsAndCopyReplacesThem) {
  KepArray a = filled(6);
  KepArray other = filled(6);
  EXPECT_EQ(a.equals(a.clone()), 1u);
  EXPECT_EQ(static_cast<KepObject&>(a).equals(other), 1u) << "elements compare by their equals";
  other.put(4, makeValue(40));
  EXPECT_EQ(a.equals(other), 0u);
  other.setSize(5);
  EXPECT_EQ(a.equals(other), 0u);
  EXPECT_EQ(a.equals(KepArray()), 0u);
  EXPECT_EQ(a.equals(KepString("x")), 0u) << "not an array";

  other.copy(a);
  EXPECT_EQ(values(other), values(a));
  a.copy(a);
  a.copy(KepArray());
  EXPECT_EQ(values(a), (std::vector<int>{0, 1, 2, 3, 4, 5})) << "self and null copies keep it";
  EXPECT_EQ(a.hashCode(), 0);
  EXPECT_EQ(a.toString().length(), 0);
}
