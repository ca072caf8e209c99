#include "kep/memory/KepMemory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kep/base/KepGlobals.h"

namespace {

// Every block starts with this header; the caller's bytes follow it. 16 bytes
// keep the caller's part aligned like malloc's own result.
struct alignas(16) BlockHeader {
  uint64_t size;
  uint32_t magic;
  uint32_t reserved;
};
static_assert(sizeof(BlockHeader) == 16, "header keeps 16-byte alignment");

constexpr uint32_t kLiveMagic = 0x4b65704du;   // "KepM"
constexpr uint32_t kFreedMagic = 0x46726565u;  // "Free"

std::atomic<int> gMemoryInitCount{0};

BlockHeader* headerOf(void const* p) {
  return reinterpret_cast<BlockHeader*>(const_cast<char*>(static_cast<char const*>(p)) -
                                        sizeof(BlockHeader));
}

}  // namespace

void* KepMalloc(size_t size) {
  if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
  auto* h = static_cast<BlockHeader*>(std::malloc(sizeof(BlockHeader) + size));
  if (h == nullptr) return nullptr;
  h->size = size;
  h->magic = kLiveMagic;
  h->reserved = 0;
  gKepTotalMallocSize.fetch_add(size, std::memory_order_relaxed);
  gKepMallocCount.fetch_add(1, std::memory_order_relaxed);
  return h + 1;
}

void* KepCalloc(size_t count, size_t size) {
  if (size != 0 && count > SIZE_MAX / size) return nullptr;
  void* p = KepMalloc(count * size);
  if (p != nullptr) std::memset(p, 0, count * size);
  return p;
}

void KepFree(void* p) {
  if (p == nullptr) return;
  BlockHeader* h = headerOf(p);
  if (h->magic != kLiveMagic) return;
  h->magic = kFreedMagic;
  gKepTotalFreeSize.fetch_add(h->size, std::memory_order_relaxed);
  gKepFreeCount.fetch_add(1, std::memory_order_relaxed);
  std::free(h);
}

size_t KepMallocSize(void const* p) {
  if (p == nullptr) return 0;
  BlockHeader const* h = headerOf(p);
  return h->magic == kLiveMagic ? h->size : 0;
}

void KepMemory::init() { gMemoryInitCount.fetch_add(1, std::memory_order_relaxed); }

void KepMemory::destroy() {
  int n = gMemoryInitCount.load(std::memory_order_relaxed);
  if (n > 0) gMemoryInitCount.fetch_sub(1, std::memory_order_relaxed);
}
