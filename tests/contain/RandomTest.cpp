// The seeded generator against an independent 64-bit computation.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <set>

#include "kep/Kep.h"

namespace {

// The minimal standard step computed directly with a 64-bit product.
int64_t step(int64_t seed) { return seed * 48271 % 2147483647; }

_KepRandomGenerator seeded(int seed) {
  _KepRandomGenerator g;
  _KepRandomSetSeed(&g, seed);
  return g;
}

}  // namespace

TEST(Random, SequencesMatchTheDirectProduct) {
  EXPECT_EQ(step(1), 48271);
  for (int seed : {1, 2147483646, 65535, 65536, 1 << 30, 123456789}) {
    _KepRandomGenerator g = seeded(seed);
    int64_t expected = seed;
    for (int i = 0; i < (seed == 1 ? 200000 : 5000); ++i) {
      expected = step(expected);
      ASSERT_EQ(_KepRandomLong(&g), expected) << "seed " << seed << " draw " << i;
    }
  }
}

TEST(Random, SeedsAreFoldedIntoRange) {
  struct Case {
    int seed, folded;
  };
  for (Case c : {Case{0, 2147483646}, Case{INT_MAX, 1}, Case{-5, 2147483641},
                 Case{-2147483646, 2147483646},  // folds to 0, then again
                 Case{INT_MIN, 2147483644},      // needs two folds
                 Case{1, 1}, Case{2147483646, 2147483646}}) {
    EXPECT_EQ(seeded(c.seed).seed, c.folded) << c.seed;
  }
}

TEST(Random, ChoicesTakeTheNextValueModuloSmallRangesAndMaskLargeOnes) {
  _KepRandomGenerator g = seeded(99);
  int64_t x = 99;
  std::set<int> seen;
  for (int i = 0; i < 2000; ++i) {
    x = step(x);
    int c = _KepRandomChoice(&g, -3, 3);
    ASSERT_EQ(c, -3 + x % 7);
    seen.insert(c);
  }
  EXPECT_EQ(seen.size(), 7u) << "every value of the range comes up";
  EXPECT_EQ(_KepRandomChoice(&g, 5, 5), 5);
  EXPECT_EQ(_KepRandomChoice(&g, 10, 9), 10) << "an empty range answers low instead of dividing";

  // high - low = 3,000,000 has 22 significant bits: draws under the mask until in range.
  int const low = -1000000;
  int const high = 2000000;
  g = seeded(4242);
  x = 4242;
  for (int i = 0; i < 2000; ++i) {
    int64_t draw;
    do {
      x = step(x);
      draw = x & ((1 << 22) - 1);
    } while (draw > high - low);
    ASSERT_EQ(_KepRandomChoice(&g, low, high), low + draw);
  }
  // The whole int range neither overflows nor loops.
  for (int i = 0; i < 1000; ++i) _KepRandomChoice(&g, INT_MIN, INT_MAX);
}

TEST(Random, TruthFollowsThePercentage) {
  _KepRandomGenerator g = seeded(2024);
  int heads = 0;
  for (int i = 0; i < 10000; ++i) {
    ASSERT_EQ(_KepRandomTruth(&g, 0), 0u);
    ASSERT_NE(_KepRandomTruth(&g, 100), 0u);
    heads += _KepRandomTruth(&g, 30) != 0;
  }
  EXPECT_GT(heads, 2600);
  EXPECT_LT(heads, 3400);
}
