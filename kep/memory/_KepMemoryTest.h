// Memory handles: blocks that the portable layers share between threads (thread
// control blocks, time-zone rule blocks, TCP kernel and queue blocks). A handle is
// an opaque word; the block behind it is reached only by locking the handle.
//
// Handles are checked: a handle that was never allocated, or whose block was
// freed, fails to lock with KEP_MM_BAD_HANDLE (0x8101) instead of reaching freed
// memory. Freeing a block that another thread still has locked retires the handle
// at once (no new lock succeeds) and releases the memory with the last unlock.
//
// Thread safety: every function may be called from any thread.
#ifndef KEP_MEMORY_KEPMEMORYTEST_H
#define KEP_MEMORY_KEPMEMORYTEST_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// A handle could not be allocated, or does not lock.
constexpr uint32_t KEP_MM_BAD_HANDLE = 0x8101;

// Allocates a zeroed block of `size` bytes, unlocked, and stores its handle.
KEP_API uint32_t _KepMMTestAlloc(unsigned long size, void** handle);
// Allocates a zeroed block locked once; stores its handle and its address.
KEP_API uint32_t _KepMMTestAllocLocked(unsigned long size, void** handle, void** block);
// Locks the block (locks nest) and stores its address.
KEP_API uint32_t _KepMMTestLock(void* handle, void** block);
// Releases one lock. Also accepted on a handle freed while locked.
KEP_API uint32_t _KepMMTestUnlock(void* handle);
// Frees the block; the handle is retired at once.
KEP_API uint32_t _KepMMTestFree(void* handle);
// Releases one lock, then frees the block.
KEP_API uint32_t _KepMMTestFreeLocked(void* handle);
// The block's size in bytes.
KEP_API uint32_t _KepMMTestSize(void* handle, unsigned long* size);
// Number of live handles (for leak checks).
KEP_API unsigned long _KepMMTestLiveHandles();

#endif  // KEP_MEMORY_KEPMEMORYTEST_H
