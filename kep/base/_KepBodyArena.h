// _KepBodyArena: chunked memory for the bodies that one thread makes in bulk.
#ifndef KEP_BASE_KEPBODYARENA_H
#define KEP_BASE_KEPBODYARENA_H

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "kep/base/KepRObject.h"

// The parser makes the nodes and strings of a document by the hundred
// thousand. An arena places them one after the other in chunks of up to
// 32 KiB instead of one heap block each: no allocator call and no block header
// per body, and a tree that lies in document order in a few chunks, which its
// readers and its teardown walk in that order.
//
// A placed body is an ordinary counted body: any thread may hold it, release
// it or keep it after its document died. Its last release runs its destructor
// and gives its memory back to its chunk (KepRObject::release). A chunk counts
// its live bodies and is freed with the last of them; the memory of a dead body
// is not reused before that, so one node kept from a parsed document keeps its
// chunk alive. Chunks are aligned to their largest size, which lets a body find
// its chunk from its own address.
//
// The first few KiB of bodies go to the heap as usual, so that small documents
// (the common case of messages) cost no chunk at all.
//
// Chunks of freed documents are kept for the next ones, up to the number of
// chunks that the arenas closed lately used (see ChunkPool in the source):
// parsing document after document then reuses the same memory instead of
// having the system hand out, and clear, fresh pages for each.
//
// Thread safety: an arena serves the thread that makes the bodies; releasing
// placed bodies is thread-safe (the chunks count atomically).
class KEP_API _KepBodyArena {
 public:
  _KepBodyArena() noexcept = default;
  // Closes the current chunk; the bodies placed in it keep it alive.
  ~_KepBodyArena();
  _KepBodyArena(_KepBodyArena const&) = delete;
  _KepBodyArena& operator=(_KepBodyArena const&) = delete;

  // A new body of class T made with `args`, placed in a chunk, or on the heap
  // (with new) while the arena is young, for bodies too large for a chunk and
  // when no chunk can be had. T's constructor must not throw.
  template <class T, class... Args>
  T* make(Args&&... args) {
    static_assert(alignof(T) <= kAlign, "bodies are placed at 8-byte boundaries");
    void* memory = allocate(sizeof(T));
    if (memory == nullptr) return new T(std::forward<Args>(args)...);
    T* body = ::new (memory) T(std::forward<Args>(args)...);
    placed(body);
    return body;
  }
  // `size` bytes in a chunk for a body about to be constructed there (marked
  // with placed() afterwards), or null: the caller makes it on the heap. The
  // common case, room in the current chunk, takes no call.
  void* allocate(std::size_t size) {
    size = (size + kAlign - 1) & ~(kAlign - 1);
    if (size > kLargestPlaced || size > static_cast<std::size_t>(end - next)) {
      return allocateElsewhere(size);
    }
    madeBytes += size;
    return take(size);
  }
  // Marks a body constructed in memory that allocate() gave.
  static void placed(KepRObject* body) noexcept { body->placement = KepRObject::kPlacedInArena; }

  // Destroys a placed body whose last reference is gone and gives its memory
  // back to its chunk. Called by KepRObject::release.
  static void destroy(KepRObject* body) noexcept;

  // The bytes of free chunks kept for the next documents.
  static std::size_t keptChunkBytes();

  // The largest body placed in a chunk; larger ones go to the heap.
  static constexpr std::size_t kLargestPlaced = 2048;

 private:
  struct Chunk;
  static constexpr std::size_t kAlign = 8;

  // allocate() for a `size` (rounded) that is too large for a chunk or does
  // not fit in the current one.
  void* allocateElsewhere(std::size_t size);
  // The next `size` bytes of the current chunk, which has room for them.
  void* take(std::size_t size) noexcept {
    void* memory = next;
    next += size;
    ++placedInChunk;
    return memory;
  }
  // Gives up the current chunk: its count no longer includes the arena's hold.
  void close() noexcept;
  // Opens a new chunk of at least `size` free bytes; false when none was had.
  bool open(std::size_t size);

  Chunk* chunk = nullptr;
  char* next = nullptr;
  char* end = nullptr;
  // Bodies placed in the current chunk.
  int64_t placedInChunk = 0;
  // Bytes handed out so far (heap and chunks), to grow the chunks with the
  // document.
  std::size_t madeBytes = 0;
  // Chunks of the largest size opened, for the pool of free chunks.
  std::size_t largestOpened = 0;
};

#endif  // KEP_BASE_KEPBODYARENA_H
