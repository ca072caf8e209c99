// libFuzzer target: see kepfuzz::fromB64 in TextFuzzHarness.h.
#include "fuzz/TextFuzzHarness.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  if (!kepfuzz::fromB64(data, size)) __builtin_trap();
  return 0;
}
