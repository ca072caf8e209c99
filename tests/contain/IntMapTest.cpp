// KepIntMap: put, overwrite, find and remove over the tree, owned entries.
#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <random>

#include "kep/Kep.h"

TEST(IntMap, PutOverwritesTheValueOfAPresentKey) {
  KepIntMap m;
  KepIntMapEntry* e = m.put(3, 7);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(m.put(3, 9), e) << "the same entry, overwritten";
  EXPECT_EQ(m.size(), 1);
  EXPECT_EQ(m.find(3)->value, 9);
  EXPECT_EQ(m.find(4), nullptr);
}

TEST(IntMap, RemoveAnswersWhetherTheKeyWasThere) {
  KepIntMap m;
  m.put(-5, 1);
  m.put(INT_MIN, 2);
  m.put(INT_MAX, 3);
  EXPECT_EQ(m.remove(8), 0u);
  EXPECT_EQ(m.remove(-5), 1u);
  EXPECT_EQ(m.remove(-5), 0u);
  EXPECT_EQ(m.size(), 2);
  EXPECT_EQ(m.find(INT_MIN)->value, 2) << "keys order as signed integers";
  EXPECT_EQ(m.find(INT_MAX)->value, 3);
}

TEST(IntMap, RandomOperationsMatchStdMap) {
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> key(-300, 300);
  KepIntMap m;
  std::map<int, int> oracle;
  for (int step = 0; step < 6000; ++step) {
    int k = key(rng);
    if (rng() % 3 != 0) {
      int v = static_cast<int>(rng() % 1000);
      KepIntMapEntry* e = m.put(k, v);
      oracle[k] = v;
      ASSERT_EQ(e->key, k);
      ASSERT_EQ(e->value, v);
    } else {
      ASSERT_EQ(m.remove(k), oracle.erase(k));
    }
  }
  ASSERT_EQ(static_cast<size_t>(m.size()), oracle.size());
  for (auto const& kv : oracle) {
    KepIntMapEntry* e = m.find(kv.first);
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->value, kv.second);
  }
}

TEST(IntMap, ComparatorNeedsBothEntries) {
  KepIntMapEntry a{1, 0};
  KepIntMapEntry b{2, 0};
  EXPECT_EQ(KepIntMapComparator(&a, &b), 1u);
  EXPECT_EQ(KepIntMapComparator(&b, &a), 0u);
  EXPECT_EQ(KepIntMapComparator(&a, &a), 0u);
  EXPECT_EQ(KepIntMapComparator(nullptr, &b), 0u);
  EXPECT_EQ(KepIntMapComparator(&a, nullptr), 0u);
}

namespace {
// Orders entries by descending key.
unsigned long descending(void* a, void* b) {
  return static_cast<KepIntMapEntry*>(a)->key > static_cast<KepIntMapEntry*>(b)->key;
}
}  // namespace

TEST(IntMap, AReplacedOrderIsUsedForLaterOperations) {
  KepIntMap m;
  m.setComparator(descending);
  for (int k : {1, 5, 3}) m.put(k, k * 10);
  EXPECT_EQ(m.size(), 3);
  EXPECT_EQ(m.find(5)->value, 50);
  EXPECT_EQ(m.remove(1), 1u);
  EXPECT_EQ(m.find(1), nullptr);
}
