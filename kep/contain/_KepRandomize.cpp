#include "kep/contain/_KepRandom.h"
#include "kep/date/_KepDate.h"

void _KepRandomize(_KepRandomGenerator* g) {
  unsigned long now = 0;
  _KepDateGetGMT(&now, nullptr);
  g->seed = static_cast<int>(now % 2147483646UL + 1);
}
