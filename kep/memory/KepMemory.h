// The library's allocator. Every block carries a small header with its size, so
// that the statistics counters can account for frees, and so that a bad pointer
// handed to KepFree is refused instead of corrupting the heap.
#ifndef KEP_MEMORY_KEPMEMORY_H
#define KEP_MEMORY_KEPMEMORY_H

#include <cstddef>

#include "kep/base/KepDefs.h"

// Allocates `size` bytes (a zero size gives a valid, unique block). Null when the
// system has no memory. Blocks are aligned for any fundamental type.
// Thread-safe.
KEP_API void* KepMalloc(size_t size);
// Allocates `count * size` zeroed bytes; null on overflow or exhaustion.
KEP_API void* KepCalloc(size_t count, size_t size);
// Frees a block of KepMalloc/KepCalloc; null is ignored. A pointer that KepMalloc
// did not hand out (or one freed already) is detected by its header and left
// alone in most cases; do not rely on that.
KEP_API void KepFree(void* p);
// The usable size of a block of KepMalloc, 0 for null.
KEP_API size_t KepMallocSize(void const* p);

// The memory manager's start-up and shut-down counters, called by Kep::init and
// Kep::destroy.
class KEP_API KepMemory {
 public:
  static void init();
  static void destroy();
};

#endif  // KEP_MEMORY_KEPMEMORY_H
