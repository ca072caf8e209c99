// A small seeded pseudo-random generator: the Park-Miller minimal standard
// generator with multiplier 48271 and modulus 2^31 - 1.
#ifndef KEP_CONTAIN_KEPRANDOM_H
#define KEP_CONTAIN_KEPRANDOM_H

#include "kep/base/KepDefs.h"

// The generator's state: one seed, always in 1 ... 2147483646 once set. Seed it
// (_KepRandomize or _KepRandomSetSeed) before the first draw.
//
// Thread safety: plain state; use one generator per thread or guard it.
struct KEP_API _KepRandomGenerator {
  int seed = 1;
};

// Seeds from the current time in seconds of the calendar layer.
KEP_API void _KepRandomize(_KepRandomGenerator* g);
// Seeds with `seed` folded into 1 ... 2147483646: 2147483647 becomes 1, values
// <= 0 have 2147483646 added until positive.
KEP_API void _KepRandomSetSeed(_KepRandomGenerator* g, int seed);
// The next value, 1 ... 2147483646. From seed 1 the first value is 48271.
KEP_API int _KepRandomLong(_KepRandomGenerator* g);
// A value in low ... high (both included). high < low is not defined.
KEP_API int _KepRandomChoice(_KepRandomGenerator* g, int low, int high);
// True with `percent` percent probability: 0 never, 100 always.
KEP_API unsigned long _KepRandomTruth(_KepRandomGenerator* g, int percent);

#endif  // KEP_CONTAIN_KEPRANDOM_H
