// Duplication of memory-handle blocks.
#ifndef KEP_MEMORY_KEPMEMORYDUP_H
#define KEP_MEMORY_KEPMEMORYDUP_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// Makes a new unlocked block with a copy of the bytes of `handle`'s block and
// stores its handle in `*copy`. KEP_MM_BAD_HANDLE when `handle` does not lock.
KEP_API uint32_t _KepMMTestDup(void* handle, void** copy);

#endif  // KEP_MEMORY_KEPMEMORYDUP_H
