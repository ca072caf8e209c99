#include "kep/base/_KepBodyArena.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

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

// Free chunks of the largest size, kept for the documents to come instead of
// going back to the C library, which would return their pages to the system
// and have the next document fault them in (and the system clear them) again.
// It keeps at most `limit` chunks: the most that one arena opened lately. Each
// arena that closes sets the limit to its own number of chunks, or half the
// old limit when that is more, and gives back the chunks above it; so the
// memory kept follows the documents being parsed, and what a single large
// document left behind goes back within a few parses of smaller ones.
struct ChunkPool {
  std::mutex guard;
  void* top = nullptr;  // the free chunks, linked through their first word
  std::size_t count = 0;
  std::size_t limit = 0;
  // `limit` as read without the lock.
  std::atomic<std::size_t> shownLimit{0};

  void* take() {
    std::lock_guard<std::mutex> hold(guard);
    if (top == nullptr) return nullptr;
    void* chunk = top;
    std::memcpy(&top, chunk, sizeof top);
    --count;
    return chunk;
  }
  // Keeps `chunk` when there is room; false when the caller is to free it.
  bool keep(void* chunk) {
    std::lock_guard<std::mutex> hold(guard);
    if (count >= limit) return false;
    std::memcpy(chunk, &top, sizeof top);
    top = chunk;
    ++count;
    return true;
  }
  void adjust(std::size_t used) {
    if (used == 0 && shownLimit.load(std::memory_order_relaxed) == 0) return;
    void* excess = nullptr;
    {
      std::lock_guard<std::mutex> hold(guard);
      limit = used > limit / 2 ? used : limit / 2;
      shownLimit.store(limit, std::memory_order_relaxed);
      while (count > limit) {
        void* chunk = top;
        std::memcpy(&top, chunk, sizeof top);
        std::memcpy(chunk, &excess, sizeof excess);
        excess = chunk;
        --count;
      }
    }
    while (excess != nullptr) {
      void* chunk = excess;
      std::memcpy(&excess, chunk, sizeof excess);
      std::free(chunk);
    }
  }
};

// Made once and never destroyed: bodies may die during the process's exit.
ChunkPool& pool() {
  static ChunkPool* const instance = new ChunkPool();
  return *instance;
}

}  // namespace

struct _KepBodyArena::Chunk {
  std::atomic<int64_t> live{kOpenCount};
  std::size_t bytes;

  explicit Chunk(std::size_t size) noexcept : bytes(size) {}

  // Takes `n` off the count; the chunk goes when nothing is left.
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
    bool largest = bytes == kLargestChunk;
    this->~Chunk();
    if (largest && pool().keep(this)) return;
    std::free(this);
  }
};

_KepBodyArena::~_KepBodyArena() {
  close();
  pool().adjust(largestOpened);
}

void* _KepBodyArena::allocateElsewhere(std::size_t size) {
  if (size > kLargestPlaced) return nullptr;
  madeBytes += size;
  if (madeBytes <= kHeapBytes || !open(size)) return nullptr;
  return take(size);
}

bool _KepBodyArena::open(std::size_t size) {
  close();
  // The chunks grow with the document, up to the largest size.
  std::size_t bytes = kSmallestChunk;
  while (bytes < madeBytes && bytes < kLargestChunk) bytes *= 2;
  if (bytes > kLargestChunk) bytes = kLargestChunk;
  void* block = nullptr;
  if (bytes == kLargestChunk) {
    ++largestOpened;
    block = pool().take();
  }
  // posix_memalign, unlike aligned_alloc, takes sizes that are no multiple of
  // the alignment, as these are on purpose (see kLargestChunk).
  if (block == nullptr && posix_memalign(&block, kChunkAlign, bytes) != 0) block = nullptr;
  if (block == nullptr) return false;
  chunk = ::new (block) Chunk(bytes);
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

std::size_t _KepBodyArena::keptChunkBytes() {
  ChunkPool& p = pool();
  std::lock_guard<std::mutex> hold(p.guard);
  return p.count * kLargestChunk;
}
