#include "kep/memory/_KepMemoryDup.h"

#include <cstring>

#include "kep/memory/_KepMemoryTest.h"

uint32_t _KepMMTestDup(void* handle, void** copy) {
  if (copy == nullptr) return KEP_MM_BAD_HANDLE;
  *copy = nullptr;
  void* src = nullptr;
  unsigned long size = 0;
  if (_KepMMTestLock(handle, &src) != 0) return KEP_MM_BAD_HANDLE;
  uint32_t rc = _KepMMTestSize(handle, &size);
  void* dst = nullptr;
  if (rc == 0) rc = _KepMMTestAllocLocked(size, copy, &dst);
  if (rc == 0) {
    std::memcpy(dst, src, size);
    _KepMMTestUnlock(*copy);
  }
  _KepMMTestUnlock(handle);
  return rc;
}
