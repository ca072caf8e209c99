// File times: 100-nanosecond intervals since 1601-01-01 00:00:00 held as a pair of
// words, and the double-word arithmetic over such pairs.
//
// The arithmetic was designed for 32-bit halves and is carried unchanged on the
// 64-bit `unsigned long` words of this platform, because stored file times depend
// on the exact bit patterns it produces:
//   - a low word is never reduced to 32 bits: sums and doublings keep the full
//     64-bit word, and a carry into the high word happens only when the 64-bit low
//     word wraps;
//   - FtMulDw still moves bit 31 of the low word into the high word at each
//     doubling, as the 32-bit design did.
// So a pair is exact (value = low + high * 2^32) only while the low words stay
// below 2^31 during a multiplication; see each function for what holds otherwise.
//
// Thread safety: every function is pure and may be called from any thread.
#ifndef KEP_DATE_KEPFILETIME_H
#define KEP_DATE_KEPFILETIME_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// A file time: a 100-nanosecond count since 1601-01-01 split into a low and a high
// half, each in its own machine word.
struct _KepFileTime {
  unsigned long low;
  unsigned long high;
};

// Scaled reciprocals for FtDivFtBogus: {low, high} pairs whose 64-bit values are
// about 2^77 / 10,000 (use shift 13), 2^87 / 10,000,000 (shift 23) and
// 2^90 / 86,400,000 (shift 26).
KEP_API extern const _KepFileTime Magic10000;
KEP_API extern const _KepFileTime Magic10000000;
KEP_API extern const _KepFileTime Magic86400000;

// a + b: low = a.low + b.low (64-bit); high = a.high + b.high, plus 1 when the low
// sum wrapped its 64-bit word.
KEP_API _KepFileTime FtAddFt(_KepFileTime a, _KepFileTime b);
// a + b + *carry (carry-in 0 when `carry` is null). The high word gets 1 more when
// the low sum came out below a.low or b.low. When `carry` is given it receives 1
// if the high sum came out below a.high or b.high, else 0.
KEP_API _KepFileTime FtAdcFt(_KepFileTime a, _KepFileTime b, unsigned long* carry);
// The two's complement of the pair: low = -a.low; high = ~a.high, plus 1 when
// a.low is 0.
KEP_API _KepFileTime FtNegFt(_KepFileTime a);
// a - b, as FtAddFt(a, FtNegFt(b)).
KEP_API _KepFileTime FtSubFt(_KepFileTime a, _KepFileTime b);
// n * a by shift and add. The low word of the result is always n * a.low modulo
// 2^64 and the high word n * a.high plus the bit-31 carries of the doublings;
// the result's value low + high * 2^32 is the exact product only when no bit of
// a.low at positions 33 - bitlength(n) ... 31 is set (and nothing wraps 64 bits).
// Otherwise the high word also holds about (n * (a.low mod 2^32)) >> 32, short by
// at most popcount(n) - 1, that the low word already contains.
KEP_API _KepFileTime FtMulDw(unsigned long n, _KepFileTime a);
// FtMulDw(n, {m, 0}).
KEP_API _KepFileTime FtMulDwDw(unsigned long n, unsigned long m);
// Compares the high words, then the low words: 0 when equal, 1 when a is greater,
// 0xFFFF when a is smaller.
KEP_API uint32_t FtCompareFt(_KepFileTime a, _KepFileTime b);
// Approximate division by multiplication with a scaled reciprocal `m` (one of the
// Magic constants with its shift): the upper half of the 128-bit product a * m
// built from four partial products, shifted right by `shift` (taken modulo 64).
// With a.high = 0 the result is floor(a * m / 2^(64 + shift)) or one less. With
// a.high != 0 the duplicated carries of the 64-bit words make the result
// meaningless as a quotient.
KEP_API _KepFileTime FtDivFtBogus(_KepFileTime a, _KepFileTime m, unsigned int shift);

// Converts a GMT value (seconds since 1970) to a file time: ({gmt, 0} + the epoch
// difference {0xB6109100, 2}) * 10,000,000 with the pair arithmetic above. The low
// word is exactly (gmt + 0xB6109100) * 10,000,000, so the true 100-nanosecond count
// is low + 20,000,000 * 2^32; the high word follows the 32-bit design.
KEP_API void _KepDateGmtVal2FileTime(unsigned long gmt, _KepFileTime* ft);
// Converts a file time back: FtDivFtBogus(*ft, Magic10000000, 23) minus the epoch
// difference, in the pair arithmetic; the low word is stored in *gmt. Because of
// the 64-bit words this is not the inverse of _KepDateGmtVal2FileTime: the
// quotient is right (to one unit) only for file times with a zero high word, the
// first 429 seconds after 1601, and meaningless for file times of real dates.
KEP_API void _KepDateFileTime2GmtVal(unsigned long* gmt, _KepFileTime const* ft);

#endif  // KEP_DATE_KEPFILETIME_H
