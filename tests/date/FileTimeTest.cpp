// File-time pairs against exact 128-bit arithmetic: additions, negation and
// comparison are exact; multiplication keeps the bit-31 carry of the 32-bit design
// (bounded below) and the approximate division holds for single-word values.
#include <gtest/gtest.h>

#include "DateTestUtil.h"

using namespace datetest;

namespace {

using u128 = unsigned __int128;

u128 wide(_KepFileTime f) { return (u128(f.high) << 64) | f.low; }

}  // namespace

TEST(FileTime, AdditionNegationAndComparisonAreExact128Bit) {
  Rng rng(21);
  for (long i = 0; i < scaled(200000, 40000); ++i) {
    _KepFileTime a = {rng.next(), rng.next()};
    _KepFileTime b = {i % 5 ? rng.next() : ~0ul - (i % 2), i % 3 ? rng.next() : a.high};
    u128 x = wide(a);
    u128 y = wide(b);
    ASSERT_EQ(wide(FtAddFt(a, b)), x + y);
    ASSERT_EQ(wide(FtSubFt(a, b)), x - y);
    ASSERT_EQ(wide(FtNegFt(a)), u128(0) - x);
    ASSERT_EQ(FtCompareFt(a, b), x == y ? 0u : (x > y ? 1u : 0xFFFFu));
    unsigned long carry = 0;
    ASSERT_EQ(wide(FtAdcFt(a, b, &carry)), x + y);
    ASSERT_EQ(carry, x + y < x ? 1u : 0u);
  }
  // The carry test compares the low sum with the addends, which misses the one
  // carry where both low words are all ones and a carry comes in.
  unsigned long carry = 1;
  EXPECT_EQ(wide(FtAdcFt({5, 1}, {~0ul, 2}, &carry)), (u128(4) << 64) | 5);
  carry = 1;
  EXPECT_EQ(wide(FtAdcFt({~0ul, 0}, {~0ul, 0}, &carry)), u128(~0ul));
  EXPECT_EQ(carry, 0u);
}

TEST(FileTime, MultiplicationKeepsTheBit31CarryAndGmtValuesTheEpochOffset) {
  Rng rng(23);
  for (long i = 0; i < scaled(300000, 30000); ++i) {
    unsigned long n = rng.next() >> (32 + rng.below(32));
    _KepFileTime a = {rng.next() >> 32, rng.next() >> 32};
    // Exact while no bit of the low word reaches bit 31 during the doublings.
    int len = n == 0 ? 0 : 64 - __builtin_clzl(n);
    unsigned long low = a.low >> std::min(63, std::max(0, len - 1));
    ASSERT_TRUE(wide(FtMulDwDw(n, low)) == u128(n) * low) << n << " * " << low;
    // Otherwise the low word is still the whole product of the low words, and the
    // high word adds what the doublings pushed past bit 31: the product's upper
    // half, less up to one lost carry per further set bit of n.
    _KepFileTime r = FtMulDw(n, a);
    ASSERT_EQ(r.low, n * a.low);
    unsigned long upper = static_cast<unsigned long>((u128(n) * a.low) >> 32);
    ASSERT_LE(r.high - n * a.high, upper);
    ASSERT_LE(upper - (r.high - n * a.high), unsigned(std::max(0, __builtin_popcountl(n) - 1)));

    // GMT values are the same product of 10^7 and the value plus the epoch
    // offset {0xB6109100, 2}: the low word is the exact count less the offset's
    // 2 * 10^7 * 2^32, and up to seven carries (10^7 has eight set bits) are lost.
    unsigned long const edges[] = {0, 1, 0x7FFFFFFF, 0xFFFFFFFF};
    unsigned long gmt = i < 4 ? edges[i] : rng.below(1ull << 32);
    _KepDateGmtVal2FileTime(gmt, &r);
    const unsigned long e7 = 10000000;
    ASSERT_EQ(u128(r.low) + (u128(2 * e7) << 32), (u128(gmt) + 11644473600ull) * e7) << gmt;
    upper = static_cast<unsigned long>((u128(e7) * ((gmt + 0xB6109100ul) & 0xFFFFFFFFul)) >> 32);
    ASSERT_LE(r.high - 2 * e7, upper);
    ASSERT_LE(upper - (r.high - 2 * e7), 7u) << gmt;
  }
}

TEST(FileTime, DivisionAgreesForSingleWordValues) {
  struct Case {
    _KepFileTime magic;
    unsigned shift;
    unsigned long divisor;
  };
  Rng rng(27);
  for (Case c : {Case{Magic10000, 13, 10000}, Case{Magic10000000, 23, 10000000},
                 Case{Magic86400000, 26, 86400000}}) {
    for (long i = 0; i < scaled(100000, 10000); ++i) {
      _KepFileTime a = {rng.next() >> 32, 0};
      _KepFileTime q = FtDivFtBogus(a, c.magic, c.shift);
      unsigned long quotient = a.low / c.divisor;
      ASSERT_EQ(q.high, 0u);
      ASSERT_TRUE(q.low + 1 >= quotient && q.low <= quotient + 1) << a.low << " / " << c.divisor;
    }
  }
  // Converting back subtracts the epoch from the quotient in the same pair
  // arithmetic: for single-word file times (the first 429 seconds after 1601)
  // the low word is the quotient less 0xB6109100, modulo 2^64.
  for (long i = 0; i < scaled(10000, 2000); ++i) {
    _KepFileTime ft = {rng.next() >> 32, 0};
    unsigned long gmt = 0;
    _KepDateFileTime2GmtVal(&gmt, &ft);
    unsigned long quotient = ft.low / 10000000;
    unsigned long got = gmt + 0xB6109100ul;
    ASSERT_TRUE(got + 2 >= quotient && got <= quotient + 1) << ft.low;
  }
}
