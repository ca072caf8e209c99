#include "kep/contain/_KepRandom.h"

#include <cstdint>

namespace {

constexpr int64_t kModulus = 2147483647;  // 2^31 - 1
constexpr uint64_t kMultiplier = 48271;
// Ranges up to this size take the next value modulo the range.
constexpr int64_t kModuloRangeLimit = 0xFFFFF;

}  // namespace

void _KepRandomSetSeed(_KepRandomGenerator* g, int seed) {
  int64_t s = seed;
  for (;;) {
    if (s > 0 && s < kModulus) break;
    if (s == kModulus) {
      s = 1;
    } else {
      s += kModulus - 1;  // a value <= 0 moves up by 2147483646 until positive
    }
  }
  g->seed = static_cast<int>(s);
}

int _KepRandomLong(_KepRandomGenerator* g) {
  // seed * 48271 mod 2^31 - 1 from 16-bit halves, without a 64-bit product.
  uint32_t seed = static_cast<uint32_t>(g->seed);
  uint32_t lo = (seed & 0xFFFFu) * static_cast<uint32_t>(kMultiplier);
  uint32_t hi = (seed >> 16) * static_cast<uint32_t>(kMultiplier) + (lo >> 16);
  uint32_t x = ((lo & 0xFFFFu) | ((hi << 16) & 0x7FFF0000u)) + (hi >> 15);
  if ((x & 0x80000000u) != 0) x = (x & 0x7FFFFFFFu) + 1;
  g->seed = static_cast<int>(x);
  return g->seed;
}

int _KepRandomChoice(_KepRandomGenerator* g, int low, int high) {
  int64_t span = int64_t(high) - low;  // range - 1
  if (span < 0) return low;            // not defined; answer low rather than divide by 0
  if (span + 1 > kModuloRangeLimit) {
    uint64_t mask = 0;
    while (mask < static_cast<uint64_t>(span)) mask = (mask << 1) | 1;
    uint64_t draw;
    do {
      draw = static_cast<uint64_t>(_KepRandomLong(g)) & mask;
    } while (draw > static_cast<uint64_t>(span));
    return static_cast<int>(low + static_cast<int64_t>(draw));
  }
  return static_cast<int>(low + _KepRandomLong(g) % (span + 1));
}

unsigned long _KepRandomTruth(_KepRandomGenerator* g, int percent) {
  return percent >= _KepRandomChoice(g, 1, 100) ? 1 : 0;
}
