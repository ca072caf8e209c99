// libFuzzer target: see kepfuzz::string8 in TextFuzzHarness.h.
#include "fuzz/TextFuzzHarness.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  if (!kepfuzz::string8(data, size)) __builtin_trap();
  return 0;
}
