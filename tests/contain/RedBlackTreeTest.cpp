// _KepRedBlackTreeImpl and _KepOrderedSetImpl against std::set as the oracle.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include "kep/Kep.h"

namespace {

void* K(intptr_t v) { return reinterpret_cast<void*>(v); }
intptr_t V(void* k) { return reinterpret_cast<intptr_t>(k); }

unsigned long less(void* a, void* b) { return V(a) < V(b); }

std::vector<intptr_t> keys(_KepRedBlackTreeImpl const& t) {
  std::vector<intptr_t> out;
  for (auto it = t.begin(); it != t.end(); ++it) out.push_back(V(*it));
  return out;
}

std::vector<intptr_t> keys(std::set<intptr_t> const& s) { return {s.begin(), s.end()}; }

}  // namespace

TEST(RedBlackTree, EmptyTreeIsConsistent) {
  _KepRedBlackTreeImpl t(less);
  EXPECT_TRUE(t.__rb_verify());
  EXPECT_EQ(t.begin(), t.end());
  EXPECT_EQ(t.find(K(1)), t.end());
  EXPECT_EQ(t.size(), 0u);
  t.erase(t.end());  // ignored
  EXPECT_TRUE(t.__rb_verify());
}

TEST(RedBlackTree, RandomInsertsAndErasesKeepTheInvariants) {
  std::mt19937 rng(12345);
  std::uniform_int_distribution<intptr_t> key(-500, 500);
  _KepOrderedSetImpl set(less);
  std::set<intptr_t> oracle;
  for (int step = 0; step < 20000; ++step) {
    intptr_t k = key(rng);
    switch (rng() % 3) {
      case 0:
      case 1: {
        auto placed = set.insert(K(k));
        bool fresh = oracle.insert(k).second;
        ASSERT_EQ(placed.second, fresh) << "unique insert of " << k;
        ASSERT_EQ(V(*placed.first), k) << "the position of the key either way";
        break;
      }
      default: {
        auto it = set.find(K(k));
        ASSERT_EQ(it != set.end(), oracle.count(k) == 1) << "find " << k;
        if (it != set.end()) set.erase(it);
        oracle.erase(k);
      }
    }
    ASSERT_EQ(set.size(), oracle.size());
    if (step % 499 == 0) {
      ASSERT_TRUE(set.impl().__rb_verify()) << "after step " << step;
      ASSERT_EQ(keys(set.impl()), keys(oracle));
    }
  }
  EXPECT_TRUE(set.impl().__rb_verify());
  EXPECT_EQ(keys(set.impl()), keys(oracle));
  set.destroy();
  EXPECT_TRUE(set.empty());
  EXPECT_TRUE(set.impl().__rb_verify());
}

TEST(RedBlackTree, SortedInsertsStayBalanced) {
  _KepRedBlackTreeImpl up(less);
  _KepRedBlackTreeImpl down(less);
  for (intptr_t i = 0; i < 4096; ++i) {
    up.insert_unique(K(i));
    down.insert_unique(K(4096 - i));
  }
  EXPECT_TRUE(up.__rb_verify());
  EXPECT_TRUE(down.__rb_verify());
  // A red-black tree of n nodes has a black height of at most log2(n + 1).
  _KepRedBlackTreeNode* root = up.begin().node;
  while (root->parent->parent != root) root = root->parent;
  EXPECT_LE(_KepRedBlackTreeImpl::__black_count(up.begin().node, root), 13);
  EXPECT_EQ(_KepRedBlackTreeImpl::__black_count(nullptr, root), 0);
}

TEST(RedBlackTree, BoundsMatchStdSet) {
  _KepRedBlackTreeImpl t(less);
  std::set<intptr_t> oracle;
  for (intptr_t k = 0; k < 200; k += 3) {
    t.insert_unique(K(k));
    oracle.insert(k);
  }
  for (intptr_t probe = -2; probe < 205; ++probe) {
    auto lo = t.lower_bound(K(probe));
    auto hi = t.upper_bound(K(probe));
    auto olo = oracle.lower_bound(probe);
    auto ohi = oracle.upper_bound(probe);
    ASSERT_EQ(lo == t.end(), olo == oracle.end()) << probe;
    ASSERT_EQ(hi == t.end(), ohi == oracle.end()) << probe;
    if (lo != t.end()) {
      EXPECT_EQ(V(*lo), *olo);
    }
    if (hi != t.end()) {
      EXPECT_EQ(V(*hi), *ohi);
    }
  }
}

TEST(RedBlackTree, WalksBothWays) {
  _KepRedBlackTreeImpl t(less);
  for (intptr_t k : {50, 20, 80, 10, 30, 70, 90, 60}) t.insert_unique(K(k));
  std::vector<intptr_t> backwards;
  auto it = t.end();
  do {
    --it;  // from the end: the largest key first
    backwards.push_back(V(*it));
  } while (it != t.begin());
  EXPECT_EQ(backwards, (std::vector<intptr_t>{90, 80, 70, 60, 50, 30, 20, 10}));
}

TEST(RedBlackTree, RangeEraseCopyAndSwap) {
  _KepRedBlackTreeImpl t(less);
  for (intptr_t k = 0; k < 100; ++k) t.insert_unique(K(k));
  t.erase(t.lower_bound(K(10)), t.lower_bound(K(90)));
  EXPECT_EQ(t.size(), 20u);
  EXPECT_TRUE(t.__rb_verify());
  EXPECT_EQ(keys(t).front(), 0);
  EXPECT_EQ(keys(t)[10], 90);

  _KepRedBlackTreeImpl copy(t);
  EXPECT_TRUE(copy.__rb_verify());
  EXPECT_EQ(keys(copy), keys(t));
  copy.insert_unique(K(50));
  EXPECT_EQ(t.find(K(50)), t.end()) << "the copy's structure is its own";

  _KepRedBlackTreeImpl other(less);
  other.insert_unique(K(-1));
  other = copy;
  EXPECT_EQ(keys(other), keys(copy));
  EXPECT_TRUE(other.__rb_verify());

  _KepRedBlackTreeImpl empty(less);
  empty.swap(t);
  EXPECT_EQ(t.size(), 0u);
  EXPECT_TRUE(t.__rb_verify()) << "the emptied tree points at its own header";
  EXPECT_EQ(empty.size(), 20u);
  EXPECT_TRUE(empty.__rb_verify());
  t.insert_unique(K(3));
  EXPECT_EQ(keys(t), (std::vector<intptr_t>{3}));

  empty.erase(empty.begin(), empty.end());  // everything in one step
  EXPECT_TRUE(empty.empty());
  EXPECT_TRUE(empty.__rb_verify());
}

TEST(RedBlackTree, VerifyCatchesBrokenTrees) {
  _KepRedBlackTreeImpl t(less);
  for (intptr_t k = 1; k <= 15; ++k) t.insert_unique(K(k));
  ASSERT_TRUE(t.__rb_verify());
  // Out of order keys.
  _KepRedBlackTreeNode* first = t.begin().node;
  _KepRedBlackTreeNode* last = (--t.end()).node;
  std::swap(first->key, last->key);
  EXPECT_FALSE(t.__rb_verify());
  std::swap(first->key, last->key);
  ASSERT_TRUE(t.__rb_verify());
  // A changed black height on one leaf's path.
  int saved = first->color;
  first->color = first->color == 0 ? 1 : 0;
  EXPECT_FALSE(t.__rb_verify());
  first->color = saved;
  EXPECT_TRUE(t.__rb_verify());
}

TEST(RedBlackTree, WithoutAComparisonNothingGoesIn) {
  _KepOrderedSetImpl set;
  EXPECT_FALSE(set.insert(K(1)).second);
  EXPECT_TRUE(set.empty());
  EXPECT_EQ(set.find(K(1)), set.end());
  set.set_comp(less);
  EXPECT_TRUE(set.insert(K(1)).second);
  EXPECT_FALSE(set.insert(K(1)).second);
  EXPECT_EQ(set.size(), 1u);
}
