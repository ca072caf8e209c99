// KepArray and the chain of 32-slot groups under it: sizing of the chain, the
// inline store and its one-way spill, index rules, element ownership and copies.
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "contain/ContainTestSupport.h"

using keptest::makeValue;
using keptest::valueOf;

namespace {

using Chain = _KepArrayImpl<int*>;

int* P(intptr_t v) { return reinterpret_cast<int*>(v); }

class Array : public keptest::CountedBodies {};

bool spilled(KepArray const& a) { return static_cast<KepRArray*>(a.getRealKepObj())->isSpilled(); }

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

TEST(ArrayChain, GrowsByWholeGroupsResizeKeepsTheGroupHoldingNAndMovesStopAtTheChainEnd) {
  Chain a;
  EXPECT_EQ(a[40], nullptr);
  EXPECT_EQ(a.getGroupCount(), 2u);
  a.insert(70, P(9));  // past the end: grows to the index
  a.insert(-1, P(5));  // refused
  EXPECT_EQ(a.size(), 71);
  EXPECT_EQ(a[70], P(9));
  a[-3] = P(99);  // the scratch slot, null again on the next such access
  EXPECT_EQ(a[-3], nullptr);
  EXPECT_EQ(a.size(), 71);

  for (auto [n, groups] :
       {std::pair<int, uint32_t>{32, 2}, {33, 2}, {40, 2}, {31, 1}, {64, 3}, {1, 1}, {0, 0}}) {
    Chain b;
    for (int i = 0; i < 96; ++i) b[i] = P(i + 1);
    b.resize(n);
    EXPECT_EQ(b.getGroupCount(), groups) << "resize(" << n << ") from 96";
    EXPECT_EQ(b.size(), n);
    b.resize(96);
    // Kept groups keep every pointer, even past n; freed groups come back zero-filled.
    for (int i = 0; i < 96; ++i) {
      ASSERT_EQ(b[i], uint32_t(i / 32) < groups ? P(i + 1) : nullptr) << n << ", " << i;
    }
  }

  Chain m;  // 40 values in two groups: slots 0 ... 63 exist
  for (int i = 0; i < 40; ++i) m[i] = P(i + 1);
  auto peek = [&m](int i) { return *m._getEntry(i, nullptr, 0, nullptr, nullptr); };
  m._move(10, 50, 30);  // the destination's last slot (79) lies past the chain
  EXPECT_EQ(peek(50), nullptr) << "an upward move that starts outside moves nothing";
  m._move(10, 50, 14);  // slots 10 ... 23 to 50 ... 63, all inside
  EXPECT_EQ(peek(63), P(24));
  m._move(60, 0, 30);  // the source leaves the chain after four slots
  EXPECT_EQ(peek(3), P(24));
  EXPECT_EQ(peek(64), nullptr) << "no group holds it: the scratch slot";
  EXPECT_EQ(m.size(), 40) << "reads without grow add nothing";
}

TEST_F(Array, InsertAndRemoveMatchStdVectorAndTheFifthElementSpillsForGood) {
  for (int n : {70, 4, 3}) {
    for (int at : {0, 1, 31, 32, 33, 63, 64, n}) {
      if (at > n) continue;
      KepArray a = filled(n);
      std::vector<int> oracle = values(a);
      a.insert(at, makeValue(1000));
      oracle.insert(oracle.begin() + at, 1000);
      ASSERT_EQ(values(a), oracle) << "insert at " << at << " of " << n;
      EXPECT_EQ(spilled(a), n >= 4) << "four elements stay inline";
      EXPECT_EQ(valueOf(a.remove(at)), 1000);
      oracle.erase(oracle.begin() + at);
      ASSERT_EQ(values(a), oracle) << "remove at " << at << " of " << n;
      EXPECT_EQ(spilled(a), n >= 4) << "shrinking never returns to the inline store";

      // Outside 0 ... size() nothing changes and no copy is made.
      KepObject x = makeValue(100);
      a.insert(-1, x);
      a.insert(n + 1, x);
      EXPECT_EQ(values(a), oracle);
      EXPECT_EQ(x.getRealKepObj()->getRefCount(), 1);
    }
  }
  KepArray b(KepGetObject(KepClassID::Array, 0));
  b.setSize(5);  // spills directly, with empty positions
  EXPECT_TRUE(spilled(b));
  EXPECT_TRUE(b.at(4).isNull());
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
    KepArray clone = a.clone();
    EXPECT_EQ(eb->getRefCount(), 65) << "clones share the elements";
  }
  EXPECT_EQ(eb->getRefCount(), 1) << "the array's destructor released the rest";
}

TEST_F(Array, OutOfRangeAccessEqualsAndCopy) {
  KepArray a = filled(6);
  for (int i : {-1, 6}) {
    EXPECT_TRUE(a.at(i).isNull());
    a.put(i, makeValue(5));  // never grows
    EXPECT_TRUE(a.remove(i).isNull());
  }
  EXPECT_EQ(a.indexOf(makeValue(2)), 2);
  EXPECT_EQ(a.indexOf(makeValue(7)), -1);

  KepArray other = filled(6);
  EXPECT_EQ(static_cast<KepObject&>(a).equals(other), 1u) << "elements compare by their equals";
  other.put(4, makeValue(40));
  EXPECT_EQ(a.equals(other), 0u);
  EXPECT_EQ(a.equals(KepString("x")), 0u) << "not an array";
  other.copy(a);
  EXPECT_EQ(values(other), values(a));
  a.copy(a);
  a.copy(KepArray());
  EXPECT_EQ(values(a), (std::vector<int>{0, 1, 2, 3, 4, 5})) << "self and null copies keep it";
  a.setSize(-4);
  EXPECT_EQ(a.size(), 0);
}
