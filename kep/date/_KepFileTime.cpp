#include "kep/date/_KepFileTime.h"

const _KepFileTime Magic10000 = {0xE219652CUL, 0xD1B71758UL};
const _KepFileTime Magic10000000 = {0xE57A42BDUL, 0xD6BF94D5UL};
const _KepFileTime Magic86400000 = {0xFA67B90EUL, 0xC6D750EBUL};

namespace {

// 1970-01-01 lies 11644473600 (0x2B6109100) seconds after 1601-01-01.
constexpr _KepFileTime kEpochDifference = {0xB6109100UL, 2UL};
constexpr unsigned long kTicksPerSecond = 10000000UL;

}  // namespace

_KepFileTime FtAddFt(_KepFileTime a, _KepFileTime b) {
  _KepFileTime r;
  r.low = a.low + b.low;
  r.high = a.high + b.high + (r.low < a.low ? 1 : 0);
  return r;
}

_KepFileTime FtAdcFt(_KepFileTime a, _KepFileTime b, unsigned long* carry) {
  _KepFileTime r;
  r.low = a.low + b.low + (carry != nullptr ? *carry : 0);
  r.high = a.high + b.high + (r.low < a.low || r.low < b.low ? 1 : 0);
  if (carry != nullptr) *carry = (r.high < a.high || r.high < b.high) ? 1 : 0;
  return r;
}

_KepFileTime FtNegFt(_KepFileTime a) {
  _KepFileTime r;
  r.low = 0UL - a.low;
  r.high = ~a.high + (a.low == 0 ? 1 : 0);
  return r;
}

_KepFileTime FtSubFt(_KepFileTime a, _KepFileTime b) { return FtAddFt(a, FtNegFt(b)); }

_KepFileTime FtMulDw(unsigned long n, _KepFileTime a) {
  _KepFileTime sum = {0, 0};
  for (; n != 0; n >>= 1) {
    if (n & 1) sum = FtAddFt(sum, a);
    // Doubling as the 32-bit halves did: bit 31 of the low word moves into the
    // high word, while the low word itself keeps all 64 bits.
    a.high = (a.high << 1) | ((a.low & 0x80000000UL) != 0 ? 1 : 0);
    a.low <<= 1;
  }
  return sum;
}

_KepFileTime FtMulDwDw(unsigned long n, unsigned long m) { return FtMulDw(n, {m, 0}); }

uint32_t FtCompareFt(_KepFileTime a, _KepFileTime b) {
  if (a.high != b.high) return a.high > b.high ? 1 : 0xFFFF;
  if (a.low != b.low) return a.low > b.low ? 1 : 0xFFFF;
  return 0;
}

_KepFileTime FtDivFtBogus(_KepFileTime a, _KepFileTime m, unsigned int shift) {
  // Column by column: each partial product's high word moves down into the low
  // position of the next column.
  _KepFileTime t = {FtMulDwDw(m.low, a.low).high, 0};
  unsigned long c1 = 0;
  unsigned long c2 = 0;
  t = FtAdcFt(t, FtMulDwDw(m.high, a.low), &c1);
  t = FtAdcFt(t, FtMulDwDw(m.low, a.high), &c2);
  t = FtAddFt({t.high, c1 + c2}, FtMulDwDw(m.high, a.high));
  // Shift counts are taken modulo 64, as the machine's shift instructions do.
  unsigned int s = shift & 63;
  unsigned int back = (32 - shift) & 63;
  _KepFileTime r;
  r.low = (t.low >> s) | (t.high << back);
  r.high = t.high >> s;
  return r;
}

void _KepDateGmtVal2FileTime(unsigned long gmt, _KepFileTime* ft) {
  *ft = FtMulDw(kTicksPerSecond, FtAddFt({gmt, 0}, kEpochDifference));
}

void _KepDateFileTime2GmtVal(unsigned long* gmt, _KepFileTime const* ft) {
  _KepFileTime q = FtDivFtBogus(*ft, Magic10000000, 23);
  *gmt = FtSubFt(q, kEpochDifference).low;
}
