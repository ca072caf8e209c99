// libFuzzer target: see kepfuzz::tokenizer in TextFuzzHarness.h.
#include "fuzz/TextFuzzHarness.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  if (!kepfuzz::tokenizer(data, size)) __builtin_trap();
  return 0;
}
