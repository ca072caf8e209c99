// libFuzzer target: see kepfuzz::buildObjects in ParserFuzzHarness.h.
#include "fuzz/ParserFuzzHarness.h"

// The parser needs the tag manager and the factory: the library is brought up
// once for the whole run.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Kep::init(0);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  if (!kepfuzz::buildObjects(data, size)) __builtin_trap();
  return 0;
}
