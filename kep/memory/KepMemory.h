// The library's allocator. Every block carries a small header with its size, so
// that the statistics counters can account for frees, and so that a bad pointer
// handed to KepFree is refused instead of corrupting the heap.
//
// Leak checking: while gDiagKepAlloc has any of the bits 1 ("Count"), 2
// ("Sizes") or 0x100 ("Check") set, every new block is also linked into a
// registry of live blocks with its allocation sequence number (1, 2, ... over
// the process's tracked blocks) and a guard word behind its last byte. Freeing a
// tracked block unlinks it (whether or not tracking is still on) and reports a
// damaged guard; blocks made while tracking was off are never in the registry
// and free as usual. KepMemoryLeakSanityCheck() and the last Kep::destroy report
// every tracked block still live on the log.
#ifndef KEP_MEMORY_KEPMEMORY_H
#define KEP_MEMORY_KEPMEMORY_H

#include <cstddef>
#include <cstdint>

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

// Checks the guard word of every tracked block and writes one log line per live
// tracked block ("KepMemory: live block #<sequence> of <size> bytes at <address>",
// at most 1000 of them, then a line with the number left out) and a closing line
// "KepMemory: <n> live blocks, <bytes> bytes". Answers the number of live
// tracked blocks; 0 and no output when no block was ever tracked.
// Thread-safe; blocks freed by other threads meanwhile may or may not be listed.
KEP_API unsigned long KepMemoryLeakSanityCheck();

// The memory manager's start-up and shut-down counters and the registry of
// tracked blocks.
class KEP_API KepMemory {
 public:
  // Called by every Kep::init / Kep::destroy. The last destroy reports the
  // tracked blocks still live (KepMemoryLeakSanityCheck) when tracking is on or
  // some block was tracked.
  static void init();
  static void destroy();
  // Live initialisations.
  static int initCount();

  // True while gDiagKepAlloc selects leak checking.
  static bool isTracking();
  // Tracked blocks still live, and their bytes.
  static unsigned long trackedBlocks();
  static unsigned long trackedBytes();
  // The sequence number of a tracked block; 0 for null or a block made while
  // tracking was off. `p` must be null or a live block of KepMalloc.
  static uint64_t sequenceOf(void const* p);
  // Tracked blocks whose guard word was found damaged (by KepFree or the sanity
  // check) since the process started.
  static unsigned long damagedBlocks();
};

#endif  // KEP_MEMORY_KEPMEMORY_H
