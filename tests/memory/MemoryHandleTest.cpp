// The allocator and checked memory handles.
#include <gtest/gtest.h>

#include <cstring>

#include "kep/Kep.h"

TEST(KepMalloc, CountsBytesAndBlocks) {
  unsigned long mallocs = gKepMallocCount.load();
  unsigned long bytes = gKepTotalMallocSize.load();
  unsigned long frees = gKepFreeCount.load();
  void* p = KepMalloc(100);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(KepMallocSize(p), 100u);
  KepFree(p);
  KepFree(nullptr);
  EXPECT_EQ(gKepMallocCount.load() - mallocs, 1u);
  EXPECT_EQ(gKepTotalMallocSize.load() - bytes, 100u);
  EXPECT_EQ(gKepFreeCount.load() - frees, 1u);
  EXPECT_EQ(KepCalloc(SIZE_MAX / 2, 4), nullptr) << "overflowing sizes are refused";
}

TEST(MemoryHandle, LockDupAndFreeAndForgedStaleOrRetiredHandlesAreRefused) {
  unsigned long live = _KepMMTestLiveHandles();
  void* block = nullptr;
  EXPECT_EQ(_KepMMTestLock(reinterpret_cast<void*>(0x12345678), &block), KEP_MM_BAD_HANDLE);
  void* h = nullptr;
  ASSERT_EQ(_KepMMTestAllocLocked(32, &h, &block), 0u);
  for (int i = 0; i < 32; ++i) ASSERT_EQ(static_cast<char*>(block)[i], 0) << "blocks start zeroed";
  std::strcpy(static_cast<char*>(block), "zone");
  EXPECT_EQ(_KepMMTestUnlock(h), 0u);
  void* again = nullptr;
  void* copy = nullptr;
  ASSERT_EQ(_KepMMTestDup(h, &copy), 0u);
  void* c = nullptr;
  ASSERT_EQ(_KepMMTestLock(copy, &c), 0u);
  EXPECT_STREQ(static_cast<char*>(c), "zone");
  EXPECT_NE(c, block);

  // A row reused by a new handle does not answer to the old one.
  EXPECT_EQ(_KepMMTestFree(h), 0u);
  void* second = nullptr;
  ASSERT_EQ(_KepMMTestAlloc(8, &second), 0u);
  EXPECT_EQ(_KepMMTestLock(h, &again), KEP_MM_BAD_HANDLE) << "a freed handle never locks";
  EXPECT_EQ(_KepMMTestFree(second), 0u);
  // Freed while locked, a handle is retired: no new lock succeeds, and the locker
  // keeps the block until its unlock.
  ASSERT_EQ(_KepMMTestFree(copy), 0u);
  EXPECT_EQ(_KepMMTestLock(copy, &again), KEP_MM_BAD_HANDLE);
  std::memset(c, 1, 32);                  // still valid for the locker
  EXPECT_EQ(_KepMMTestUnlock(copy), 0u);  // releases the memory
  EXPECT_EQ(_KepMMTestUnlock(copy), KEP_MM_BAD_HANDLE);
  EXPECT_EQ(_KepMMTestLiveHandles(), live);
}
