// _KepVectorImpl: growth, positional insert and erase, the inert sort.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "kep/Kep.h"

namespace {

void* P(intptr_t v) { return reinterpret_cast<void*>(v); }

std::vector<void*> contents(_KepVectorImpl const& v) {
  return std::vector<void*>(v.begin(), v.end());
}

}  // namespace

TEST(Vector, GrowsTo32ThenDoublesAndInsertsMatchStdVector) {
  _KepVectorImpl v;
  EXPECT_EQ(v.begin(), nullptr);
  std::vector<size_t> capacities;
  std::vector<void*> oracle;
  // Front, middle and end inserts, some landing exactly when the storage is full.
  for (intptr_t i = 1; i <= 200; ++i) {
    size_t at = static_cast<size_t>(i * 7) % (oracle.size() + 1);
    void** pos = v.insert(v.begin() + at, P(i));
    EXPECT_EQ(pos, v.begin() + at) << "the answer is recomputed against the moved storage";
    oracle.insert(oracle.begin() + static_cast<ptrdiff_t>(at), P(i));
    if (capacities.empty() || capacities.back() != v.capacity()) capacities.push_back(v.capacity());
  }
  EXPECT_EQ(contents(v), oracle);
  EXPECT_EQ(capacities, (std::vector<size_t>{32, 64, 128, 256}));

  // A value read from the vector itself survives the move of the storage.
  _KepVectorImpl w;
  for (intptr_t i = 1; i <= 32; ++i) w.push_back(P(i));
  w.insert(w.begin(), w.begin()[31]);
  w.insert(w.begin() + 1, w.begin()[0]);  // with room left this time
  EXPECT_EQ(w[0], P(32));
  EXPECT_EQ(w[1], P(32));
  EXPECT_EQ(w.size(), 34u);
}

TEST(Vector, EraseShiftsDownKeepsTheStorageIgnoresOutsidePositionsAndSortDoesNothing) {
  _KepVectorImpl v;
  for (intptr_t i = 1; i <= 40; ++i) v.push_back(P(i));
  size_t capacity = v.capacity();
  void** pos = v.erase(v.begin() + 3);
  EXPECT_EQ(pos, v.begin() + 3);
  EXPECT_EQ(*pos, P(5));
  void* outside[4] = {};
  EXPECT_EQ(v.erase(outside), outside);
  EXPECT_EQ(v.size(), 39u);
  while (v.size() != 0) v.erase(v.begin());
  EXPECT_EQ(v.capacity(), capacity);
  // An empty vector with room still inserts at its end; outside positions count as end().
  v.insert(outside + 2, P(9));
  v._M_insert_aux(v.end(), P(10));
  EXPECT_EQ(contents(v), (std::vector<void*>{P(9), P(10)}));

  _KepVectorImpl::stable_sort(v.begin(), v.end(), [](void* a, void* b) -> unsigned long {
    return reinterpret_cast<intptr_t>(a) > reinterpret_cast<intptr_t>(b);
  });
  EXPECT_EQ(contents(v), (std::vector<void*>{P(9), P(10)})) << "the sort leaves the range";
}
