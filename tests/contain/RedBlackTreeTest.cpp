// _KepRedBlackTreeImpl, _KepOrderedSetImpl and KepIntMap against std::set and
// std::map as the oracles.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <map>
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

}  // namespace

TEST(RedBlackTree, RandomInsertsFindsAndErasesMatchStdSetAndKeepTheInvariants) {
  std::mt19937 rng(12345);
  std::uniform_int_distribution<intptr_t> key(-500, 500);
  _KepOrderedSetImpl set;
  EXPECT_FALSE(set.insert(K(1)).second) << "without a comparison nothing goes in";
  EXPECT_EQ(set.find(K(1)), set.end());
  EXPECT_TRUE(set.empty());
  set.set_comp(less);
  set.erase(set.end());  // ignored
  std::set<intptr_t> oracle;
  for (int step = 0; step < 20000; ++step) {
    intptr_t k = key(rng);
    if (rng() % 3 != 0) {
      auto placed = set.insert(K(k));
      ASSERT_EQ(placed.second, oracle.insert(k).second) << "unique insert of " << k;
      ASSERT_EQ(V(*placed.first), k) << "the position of the key either way";
    } else {
      auto it = set.find(K(k));
      ASSERT_EQ(it != set.end(), oracle.count(k) == 1) << "find " << k;
      if (it != set.end()) set.erase(it);
      oracle.erase(k);
    }
    ASSERT_EQ(set.size(), oracle.size());
    if (step % 499 != 0) continue;
    _KepRedBlackTreeImpl const& t = set.impl();
    ASSERT_TRUE(t.__rb_verify()) << "after step " << step;
    ASSERT_EQ(keys(t), std::vector<intptr_t>(oracle.begin(), oracle.end()));
    std::vector<intptr_t> backwards;
    for (auto it = t.end(); it != t.begin();) backwards.push_back(V(*--it));
    ASSERT_EQ(backwards, std::vector<intptr_t>(oracle.rbegin(), oracle.rend()));
    auto at = [&](auto it) { return it == t.end() ? INTPTR_MAX : V(*it); };
    auto oracleAt = [&](auto it) { return it == oracle.end() ? INTPTR_MAX : *it; };
    for (intptr_t probe = -502; probe <= 502; probe += 7) {
      ASSERT_EQ(at(t.lower_bound(K(probe))), oracleAt(oracle.lower_bound(probe))) << probe;
      ASSERT_EQ(at(t.upper_bound(K(probe))), oracleAt(oracle.upper_bound(probe))) << probe;
    }
  }
  set.destroy();
  EXPECT_TRUE(set.empty());
  EXPECT_TRUE(set.impl().__rb_verify());
}

TEST(RedBlackTree, RangeEraseCopyAndSwapKeepEachTreeConsistent) {
  _KepRedBlackTreeImpl t(less);
  for (intptr_t k = 0; k < 100; ++k) t.insert_unique(K(k));
  t.erase(t.lower_bound(K(10)), t.lower_bound(K(90)));
  EXPECT_EQ(t.size(), 20u);
  EXPECT_EQ(keys(t)[10], 90);

  _KepRedBlackTreeImpl copy(t);
  copy.insert_unique(K(50));
  EXPECT_EQ(t.find(K(50)), t.end()) << "the copy's structure is its own";
  _KepRedBlackTreeImpl empty(less);
  empty.swap(t);
  EXPECT_EQ(empty.size(), 20u);
  t.insert_unique(K(3));
  EXPECT_EQ(keys(t), (std::vector<intptr_t>{3})) << "the emptied tree points at its own header";
  for (auto* tree : {&t, &copy, &empty}) EXPECT_TRUE(tree->__rb_verify());
  empty.erase(empty.begin(), empty.end());
  EXPECT_TRUE(empty.empty());
  EXPECT_TRUE(empty.__rb_verify());
}

TEST(RedBlackTree, SortedInsertsStayBalancedAndVerifyCatchesBrokenTrees) {
  _KepRedBlackTreeImpl up(less);
  _KepRedBlackTreeImpl down(less);
  for (intptr_t i = 0; i < 4096; ++i) {
    up.insert_unique(K(i));
    down.insert_unique(K(4096 - i));
  }
  EXPECT_TRUE(up.__rb_verify());
  EXPECT_TRUE(down.__rb_verify());
  // A red-black tree of n nodes has a black height of at most log2(n + 1).
  _KepRedBlackTreeNode* first = up.begin().node;
  _KepRedBlackTreeNode* root = first;
  while (root->parent->parent != root) root = root->parent;
  EXPECT_LE(_KepRedBlackTreeImpl::__black_count(first, root), 13);

  _KepRedBlackTreeNode* last = (--up.end()).node;
  std::swap(first->key, last->key);
  EXPECT_FALSE(up.__rb_verify()) << "keys out of order";
  std::swap(first->key, last->key);
  first->color = first->color == 0 ? 1 : 0;
  EXPECT_FALSE(up.__rb_verify()) << "a changed black height on one leaf's path";
  first->color = first->color == 0 ? 1 : 0;
  EXPECT_TRUE(up.__rb_verify());
}

TEST(IntMap, RandomPutsAndRemovesMatchStdMapAndAReplacedOrderIsUsed) {
  KepIntMapEntry a{1, 0};
  KepIntMapEntry b{2, 0};
  EXPECT_EQ(KepIntMapComparator(nullptr, &b) + KepIntMapComparator(&a, nullptr), 0u)
      << "null entries never compare less";

  KepIntMap m;
  KepIntMapEntry* e = m.put(INT_MIN, 7);
  EXPECT_EQ(m.put(INT_MIN, 9), e) << "the same entry, overwritten";
  m.put(INT_MAX, 3);  // extreme keys order as signed integers
  std::map<int, int> oracle{{INT_MIN, 9}, {INT_MAX, 3}};
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> key(-300, 300);
  for (int step = 0; step < 6000; ++step) {
    int k = key(rng);
    if (rng() % 3 != 0) {
      int v = static_cast<int>(rng() % 1000);
      e = m.put(k, v);
      oracle[k] = v;
      ASSERT_TRUE(e->key == k && e->value == v);
    } else {
      ASSERT_EQ(m.remove(k), oracle.erase(k)) << "remove answers whether " << k << " was there";
    }
  }
  ASSERT_EQ(static_cast<size_t>(m.size()), oracle.size());
  for (int k = -301; k <= 301; ++k) {
    auto o = oracle.find(k);
    EXPECT_EQ((e = m.find(k)) == nullptr ? -1 : e->value, o == oracle.end() ? -1 : o->second) << k;
  }
  EXPECT_EQ(m.find(INT_MIN)->value, 9);
  EXPECT_EQ(m.find(INT_MAX)->value, 3);

  KepIntMap tens;  // keys of the same ten are one key under this order
  tens.setComparator([](void* x, void* y) -> unsigned long {
    return static_cast<KepIntMapEntry*>(x)->key / 10 < static_cast<KepIntMapEntry*>(y)->key / 10;
  });
  for (int k : {11, 19, 25}) tens.put(k, k);
  EXPECT_EQ(tens.size(), 2);
  EXPECT_EQ(tens.find(15)->value, 19);
  EXPECT_EQ(tens.remove(13), 1u);
  EXPECT_EQ(tens.find(11), nullptr);
}
