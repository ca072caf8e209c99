#include "kep/memory/KepMemory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "kep/base/KepGlobals.h"
#include "kep/base/KepLogger.h"

namespace {

// Every block starts with this header; the caller's bytes follow it. 16 bytes
// keep the caller's part aligned like malloc's own result.
struct alignas(16) BlockHeader {
  uint64_t size;
  uint32_t magic;
  uint32_t flags;
};
static_assert(sizeof(BlockHeader) == 16, "header keeps 16-byte alignment");

// A tracked block has this link in front of its header and a guard word behind
// its last byte.
struct alignas(16) TrackLink {
  TrackLink* prev;
  TrackLink* next;
  uint64_t sequence;
  uint64_t reserved;
};
static_assert(sizeof(TrackLink) == 32, "link keeps 16-byte alignment");

constexpr uint32_t kLiveMagic = 0x4b65704du;   // "KepM"
constexpr uint32_t kFreedMagic = 0x46726565u;  // "Free"
constexpr uint32_t kFlagTracked = 1;
constexpr uint64_t kGuard = 0x4b65704775617264ull;  // "KepGuard"
constexpr unsigned long kTrackBits = 0x1 | 0x2 | 0x100;
constexpr unsigned long kMaxListed = 1000;

std::atomic<int> gMemoryInitCount{0};
std::atomic<unsigned long> gDamaged{0};

// The live tracked blocks, a ring through a sentinel link.
struct Registry {
  std::mutex mutex;
  TrackLink head{&head, &head, 0, 0};
  unsigned long blocks = 0;
  unsigned long bytes = 0;
  uint64_t sequence = 0;
  bool everTracked = false;
};

Registry& registry() {
  // Never destroyed: blocks may be freed during static destruction at exit.
  static Registry* r = new Registry;
  return *r;
}

BlockHeader* headerOf(void const* p) {
  return reinterpret_cast<BlockHeader*>(const_cast<char*>(static_cast<char const*>(p)) -
                                        sizeof(BlockHeader));
}

BlockHeader* headerOf(TrackLink* link) { return reinterpret_cast<BlockHeader*>(link + 1); }

TrackLink* linkOf(BlockHeader* h) { return reinterpret_cast<TrackLink*>(h) - 1; }

bool guardIntact(BlockHeader const* h) {
  uint64_t word;
  std::memcpy(&word, reinterpret_cast<char const*>(h + 1) + h->size, sizeof word);
  return word == kGuard;
}

void reportDamaged(uint64_t sequence, uint64_t size, void const* address) {
  gDamaged.fetch_add(1, std::memory_order_relaxed);
  KepLogger::log(
      KepLogger::kError, "KepMemory: block #%llu of %llu bytes at %p was written past its end",
      static_cast<unsigned long long>(sequence), static_cast<unsigned long long>(size), address);
}

// Allocates a block with a link and a guard and enters it in the registry.
BlockHeader* allocateTracked(size_t size) {
  constexpr size_t kExtra = sizeof(TrackLink) + sizeof(BlockHeader) + sizeof(kGuard);
  if (size > SIZE_MAX - kExtra) return nullptr;
  auto* link = static_cast<TrackLink*>(std::malloc(kExtra + size));
  if (link == nullptr) return nullptr;
  BlockHeader* h = headerOf(link);
  std::memcpy(reinterpret_cast<char*>(h + 1) + size, &kGuard, sizeof kGuard);
  Registry& r = registry();
  std::lock_guard<std::mutex> guard(r.mutex);
  link->sequence = ++r.sequence;
  link->reserved = 0;
  link->prev = r.head.prev;
  link->next = &r.head;
  r.head.prev->next = link;
  r.head.prev = link;
  ++r.blocks;
  r.bytes += size;
  r.everTracked = true;
  return h;
}

void freeTracked(BlockHeader* h) {
  TrackLink* link = linkOf(h);
  if (!guardIntact(h)) reportDamaged(link->sequence, h->size, h + 1);
  {
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.mutex);
    link->prev->next = link->next;
    link->next->prev = link->prev;
    --r.blocks;
    r.bytes -= h->size;
  }
  std::free(link);
}

}  // namespace

void* KepMalloc(size_t size) {
  BlockHeader* h;
  if ((gDiagKepAlloc.load(std::memory_order_relaxed) & kTrackBits) != 0) {
    h = allocateTracked(size);
    if (h == nullptr) return nullptr;
    h->flags = kFlagTracked;
  } else {
    if (size > SIZE_MAX - sizeof(BlockHeader)) return nullptr;
    h = static_cast<BlockHeader*>(std::malloc(sizeof(BlockHeader) + size));
    if (h == nullptr) return nullptr;
    h->flags = 0;
  }
  h->size = size;
  h->magic = kLiveMagic;
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
  if (h->flags & kFlagTracked) {
    freeTracked(h);
  } else {
    std::free(h);
  }
}

size_t KepMallocSize(void const* p) {
  if (p == nullptr) return 0;
  BlockHeader const* h = headerOf(p);
  return h->magic == kLiveMagic ? h->size : 0;
}

unsigned long KepMemoryLeakSanityCheck() {
  struct Listed {
    uint64_t sequence;
    uint64_t size;
    void const* address;
  };
  std::vector<Listed> listed;
  std::vector<Listed> damaged;
  unsigned long blocks;
  unsigned long bytes;
  {
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.mutex);
    if (!r.everTracked) return 0;
    blocks = r.blocks;
    bytes = r.bytes;
    listed.reserve(blocks < kMaxListed ? blocks : kMaxListed);
    for (TrackLink* link = r.head.next; link != &r.head; link = link->next) {
      BlockHeader const* h = headerOf(link);
      Listed item{link->sequence, h->size, h + 1};
      if (!guardIntact(h)) damaged.push_back(item);
      if (listed.size() < kMaxListed) listed.push_back(item);
    }
  }
  for (Listed const& d : damaged) reportDamaged(d.sequence, d.size, d.address);
  for (Listed const& b : listed) {
    KepLogger::log(KepLogger::kWarning, "KepMemory: live block #%llu of %llu bytes at %p",
                   static_cast<unsigned long long>(b.sequence),
                   static_cast<unsigned long long>(b.size), b.address);
  }
  if (blocks > listed.size()) {
    KepLogger::log(KepLogger::kWarning, "KepMemory: %lu more live blocks not listed",
                   blocks - static_cast<unsigned long>(listed.size()));
  }
  KepLogger::log(blocks == 0 ? KepLogger::kInfo : KepLogger::kWarning,
                 "KepMemory: %lu live blocks, %lu bytes", blocks, bytes);
  return blocks;
}

void KepMemory::init() { gMemoryInitCount.fetch_add(1, std::memory_order_relaxed); }

void KepMemory::destroy() {
  int n = gMemoryInitCount.load(std::memory_order_relaxed);
  while (n > 0 && !gMemoryInitCount.compare_exchange_weak(n, n - 1, std::memory_order_relaxed)) {
  }
  if (n == 1) KepMemoryLeakSanityCheck();
}

int KepMemory::initCount() { return gMemoryInitCount.load(std::memory_order_relaxed); }

bool KepMemory::isTracking() {
  return (gDiagKepAlloc.load(std::memory_order_relaxed) & kTrackBits) != 0;
}

unsigned long KepMemory::trackedBlocks() {
  Registry& r = registry();
  std::lock_guard<std::mutex> guard(r.mutex);
  return r.blocks;
}

unsigned long KepMemory::trackedBytes() {
  Registry& r = registry();
  std::lock_guard<std::mutex> guard(r.mutex);
  return r.bytes;
}

uint64_t KepMemory::sequenceOf(void const* p) {
  if (p == nullptr) return 0;
  BlockHeader* h = headerOf(p);
  if (h->magic != kLiveMagic || (h->flags & kFlagTracked) == 0) return 0;
  return linkOf(h)->sequence;
}

unsigned long KepMemory::damagedBlocks() { return gDamaged.load(std::memory_order_relaxed); }
