#include "kep/base/_KepBodyArena.h"

#include <atomic>
#include <cstdlib>

#include "kep/multi/_KepThreadUnix.h"

namespace {

// Every chunk starts at a multiple of this, and no chunk is larger.
constexpr std::size_t kChunkAlign = 32768;
// The largest chunk stays a little below the alignment: the allocator keeps a
// header in front of each block, and this leaves it room to place the next
// chunk right at the following boundary instead of one boundary further.
constexpr std::size_t kLargestChunk = kChunkAlign - 128;
constexpr std::size_t kSmallestChunk = 4096;
// Bytes of bodies made on the heap before the first chunk is opened.
constexpr std::size_t kHeapBytes = 4096;
// The count of an open chunk: far above any number of bodies it can hold, so
// that bodies dying while the arena still places others there never bring it
// to zero. Closing the chunk takes off what was not placed.
constexpr int64_t kOpenCount = int64_t{1} << 62;

}  // namespace

struct _KepBodyArena::Chunk {
  std::atomic<int64_t> live{kOpenCount};

  // Takes `n` off the count; the chunk is freed when nothing is left.
  void drop(int64_t n) noexcept {
    int64_t left;
    // A process that never started a second thread needs no locked instruction.
    if (_KepThrdSingleThreaded()) {
      left = live.load(std::memory_order_relaxed) - n;
      live.store(left, std::memory_order_relaxed);
    } else {
      left = live.fetch_sub(n, std::memory_order_acq_rel) - n;
    }
    if (left != 0) return;
    this->~Chunk();
    std::free(this);
  }
};

_KepBodyArena::~_KepBodyArena() { close(); }

void* _KepBodyArena::allocate(std::size_t size) {
  size = (size + kAlign - 1) & ~(kAlign - 1);
  if (size > kLargestPlaced) return nullptr;
  madeBytes += size;
  if (static_cast<std::size_t>(end - next) < size) {
    if (madeBytes <= kHeapBytes || !open(size)) return nullptr;
  }
  void* memory = next;
  next += size;
  ++placedInChunk;
  return memory;
}

bool _KepBodyArena::open(std::size_t size) {
  close();
  // The chunks grow with the document, up to the largest size.
  std::size_t bytes = kSmallestChunk;
  while (bytes < madeBytes && bytes < kLargestChunk) bytes *= 2;
  if (bytes > kLargestChunk) bytes = kLargestChunk;
  // Any size is fine for the C library's aligned_alloc; the sizes here are not
  // multiples of the alignment, on purpose (see kLargestChunk).
  void* block = std::aligned_alloc(kChunkAlign, bytes);
  if (block == nullptr) return false;
  chunk = ::new (block) Chunk();
  next = static_cast<char*>(block) + ((sizeof(Chunk) + kAlign - 1) & ~(kAlign - 1));
  end = static_cast<char*>(block) + bytes;
  placedInChunk = 0;
  return static_cast<std::size_t>(end - next) >= size;
}

void _KepBodyArena::close() noexcept {
  if (chunk == nullptr) return;
  Chunk* closing = chunk;
  chunk = nullptr;
  next = nullptr;
  end = nullptr;
  closing->drop(kOpenCount - placedInChunk);
}

void _KepBodyArena::destroy(KepRObject* body) noexcept {
  auto* home =
      reinterpret_cast<Chunk*>(reinterpret_cast<std::uintptr_t>(body) & ~(kChunkAlign - 1));
  body->~KepRObject();
  home->drop(1);
}
