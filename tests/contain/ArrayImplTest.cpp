// _KepArrayImpl: the chain of 32-slot groups, its sizing, insert and move rules.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "kep/Kep.h"

namespace {

using Chain = _KepArrayImpl<int*>;

int* P(intptr_t v) { return reinterpret_cast<int*>(v); }

// Fills 0 ... n-1 with the values 1 ... n.
void fill(Chain& a, int n) {
  a.resize(n);
  for (int i = 0; i < n; ++i) a[i] = P(i + 1);
}

// The elements, read without growing.
std::vector<int*> contents(Chain& a) {
  std::vector<int*> out;
  for (int i = 0; i < a.size(); ++i) out.push_back(*a._getEntry(i, nullptr, 0, nullptr, nullptr));
  return out;
}

}  // namespace

TEST(ArrayImpl, IndexingPastTheEndGrowsByWholeGroups) {
  Chain a;
  EXPECT_EQ(a.size(), 0);
  EXPECT_EQ(a.getGroupSize(), 32);
  EXPECT_EQ(a[40], nullptr) << "new groups are zero-filled";
  EXPECT_EQ(a.getGroupCount(), 2u);
  EXPECT_EQ(a.size(), 41);
  EXPECT_EQ(a.getLastGroupCount(), 9u);
  a[40] = P(7);
  EXPECT_EQ(a[40], P(7));
  a[10] = P(3);  // inside: no growth
  EXPECT_EQ(a.size(), 41);
}

TEST(ArrayImpl, ResizeKeepsTheGroupThatHoldsIndexN) {
  struct Case {
    int n;
    uint32_t groups;
  };
  for (Case c :
       {Case{32, 2}, Case{33, 2}, Case{40, 2}, Case{31, 1}, Case{64, 3}, Case{1, 1}, Case{0, 0}}) {
    Chain a;
    fill(a, 96);
    ASSERT_EQ(a.getGroupCount(), 3u);
    a.resize(c.n);
    EXPECT_EQ(a.getGroupCount(), c.groups) << "resize(" << c.n << ") from 96";
    EXPECT_EQ(a.size(), c.n);
    for (int i = 0; i < c.n; ++i) ASSERT_EQ(a[i], P(i + 1)) << "kept element " << i;
  }
}

TEST(ArrayImpl, ShrinkingKeepsStaleSlotsInKeptGroupsOnly) {
  Chain a;
  fill(a, 96);
  a.resize(40);  // groups 0 and 1 stay
  a.resize(96);
  EXPECT_EQ(a[50], P(51)) << "a kept group's slots keep their pointers";
  EXPECT_EQ(a[70], nullptr) << "a freed group comes back zero-filled";
}

TEST(ArrayImpl, InsertAcrossGroupBoundariesMatchesStdVector) {
  for (int at : {0, 31, 32, 33, 63, 64, 70}) {
    Chain a;
    fill(a, 70);
    std::vector<int*> oracle = contents(a);
    // As the object array does: grow by one first, then open the gap.
    a.resize(a.size() + 1);
    a.insert(at, P(1000));
    oracle.insert(oracle.begin() + at, P(1000));
    EXPECT_EQ(contents(a), oracle) << "insert at " << at;
  }
}

TEST(ArrayImpl, InsertPastTheEndGrowsToTheIndex) {
  Chain a;
  fill(a, 3);
  a.insert(40, P(9));
  EXPECT_EQ(a.size(), 41);
  EXPECT_EQ(a[40], P(9));
  EXPECT_EQ(a[2], P(3));
  EXPECT_EQ(a[20], nullptr);
  a.insert(-1, P(5));  // refused
  EXPECT_EQ(a.size(), 41);
}

TEST(ArrayImpl, MoveDownAcrossBoundariesMatchesStdVectorErase) {
  for (int at : {0, 31, 32, 33, 63, 64, 69}) {
    Chain a;
    fill(a, 70);
    std::vector<int*> oracle = contents(a);
    int n = a.size();
    a._move(at + 1, at, n - at - 1);
    a.resize(n - 1);
    oracle.erase(oracle.begin() + at);
    EXPECT_EQ(contents(a), oracle) << "remove at " << at;
  }
}

TEST(ArrayImpl, MoveStopsWhereTheChainEnds) {
  Chain a;
  fill(a, 40);  // two groups: slots 0 ... 63 exist
  auto at = [&a](int i) { return *a._getEntry(i, nullptr, 0, nullptr, nullptr); };
  a._move(10, 50, 30);  // the destination's last slot (79) lies past the chain
  EXPECT_EQ(at(50), nullptr) << "an upward move that starts outside moves nothing";
  a._move(10, 50, 14);  // slots 10 ... 23 to 50 ... 63, all inside
  EXPECT_EQ(at(50), P(11));
  EXPECT_EQ(at(63), P(24));
  a._move(60, 0, 30);  // the source leaves the chain after four slots
  EXPECT_EQ(at(0), P(21));
  EXPECT_EQ(at(3), P(24));
  EXPECT_EQ(at(4), P(5));
  EXPECT_EQ(a.size(), 40);
}

TEST(ArrayImpl, IndexesNoGroupHoldsUseTheInvalidItem) {
  Chain a;
  fill(a, 5);
  int*& bad = a[-3];
  bad = P(99);  // harmless to the array
  EXPECT_EQ(a.size(), 5);
  EXPECT_EQ(a[-3], nullptr) << "the invalid item reads null again";
  Chain::Group* out = reinterpret_cast<Chain::Group*>(&a);
  EXPECT_EQ(*a._getEntry(32, nullptr, 0, nullptr, &out), nullptr);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(a.size(), 5) << "without grow nothing is added";
}

TEST(ArrayImpl, GroupHintsWalkTheChainInOrder) {
  Chain a;
  fill(a, 100);
  Chain::Group* hint = nullptr;
  for (int i = 0; i < 100; ++i) {
    int** slot = a._getEntry(i, nullptr, 0, hint, &hint);
    ASSERT_EQ(*slot, P(i + 1)) << i;
  }
  EXPECT_NE(hint, nullptr) << "index 100 lies in the last group";
  a.resize(0);
  EXPECT_EQ(a.getGroupCount(), 0u);
  EXPECT_EQ(a._findGroup(0), nullptr);
}
