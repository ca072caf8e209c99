// The seeded generator against an independent 64-bit computation.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

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

TEST(Random, SeedsAreFoldedIntoRangeAndSequencesMatchTheDirectProduct) {
  struct Case {
    int seed, folded;
  };
  for (Case c : {Case{0, 2147483646}, Case{INT_MAX, 1}, Case{-5, 2147483641},
                 Case{-2147483646, 2147483646},  // folds to 0, then again
                 Case{INT_MIN, 2147483644},      // needs two folds
                 Case{1, 1}, Case{123456789, 123456789}}) {
    _KepRandomGenerator g = seeded(c.seed);
    EXPECT_EQ(g.seed, c.folded) << c.seed;
    int64_t expected = c.folded;
    for (int i = 0; i < (c.seed == 1 ? 200000 : 5000); ++i) {
      expected = step(expected);
      ASSERT_EQ(_KepRandomLong(&g), expected) << "seed " << c.seed << " draw " << i;
    }
  }
  EXPECT_EQ(step(1), 48271);
}

TEST(Random, ChoicesTakeTheNextValueModuloSmallRangesAndMaskLargeOnes) {
  _KepRandomGenerator g = seeded(99);
  int64_t x = 99;
  for (int i = 0; i < 3000; ++i) {
    x = step(x);
    ASSERT_EQ(_KepRandomChoice(&g, -3, 3), -3 + x % 7);
    // A truth is a choice of 1 ... 100 at most the percentage (0, 50 or 100 here).
    x = step(x);
    ASSERT_EQ(_KepRandomTruth(&g, i % 3 * 50), x % 100 < i % 3 * 50 ? 1u : 0u) << i;
  }
  EXPECT_EQ(_KepRandomChoice(&g, 5, 5), 5);
  EXPECT_EQ(_KepRandomChoice(&g, 10, 9), 10) << "an empty range answers low instead of dividing";

  // high - low = 3,000,000 has 22 significant bits: draws under the mask until in range.
  g = seeded(4242);
  x = 4242;
  for (int i = 0; i < 2000; ++i) {
    int64_t draw;
    do {
      x = step(x);
      draw = x & ((1 << 22) - 1);
    } while (draw > 3000000);
    ASSERT_EQ(_KepRandomChoice(&g, -1000000, 2000000), -1000000 + draw);
  }
  for (int i = 0; i < 1000; ++i) _KepRandomChoice(&g, INT_MIN, INT_MAX);  // neither traps nor loops
}
