#include "kep/io/_KepIO.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>

#include "kep/memory/KepMemory.h"
#include "kep/multi/_KepThread.h"

// --- Open-path table ------------------------------------------------------------

namespace {

struct OpenEntry {
  uint16_t exclusive;
  uint16_t lockMode;
  uint64_t count;
};

// The table and its semaphore live for the whole process (never freed, so that
// closes running during exit still find them).
struct OpenTable {
  void* semaphore = nullptr;
  std::unordered_map<std::string, OpenEntry>* entries = nullptr;
};

std::mutex gTableInitMutex;
OpenTable gTable;
std::atomic<bool> gTableReady{false};

class TableLock {
 public:
  TableLock() : held_(_KepMSemWait(&gTable.semaphore, static_cast<unsigned long>(-1)) == 0) {}
  ~TableLock() {
    if (held_) _KepMSemSignal(&gTable.semaphore);
  }
  bool held() const { return held_; }
  TableLock(TableLock const&) = delete;
  TableLock& operator=(TableLock const&) = delete;

 private:
  bool held_;
};

}  // namespace

uint32_t __KepIOTableInit() {
  if (gTableReady.load(std::memory_order_acquire)) return 0;
  std::lock_guard<std::mutex> guard(gTableInitMutex);
  if (gTableReady.load(std::memory_order_relaxed)) return 0;
  if (gTable.entries == nullptr) {
    gTable.entries = new (std::nothrow) std::unordered_map<std::string, OpenEntry>();
    if (gTable.entries == nullptr) return KEP_IO_FAILED;
    gTable.entries->reserve(256);
  }
  if (_KepMSemCreate(&gTable.semaphore) != 0) return KEP_IO_FAILED;
  gTableReady.store(true, std::memory_order_release);
  return 0;
}

uint32_t __KepIOTableAcquire(char const* path, unsigned exclusive, unsigned lockMode) {
  if (path == nullptr || !gTableReady.load(std::memory_order_acquire)) return KEP_IO_FAILED;
  TableLock lock;
  if (!lock.held()) return KEP_IO_FAILED;
  try {
    auto found = gTable.entries->find(path);
    if (found == gTable.entries->end()) {
      gTable.entries->emplace(path, OpenEntry{static_cast<uint16_t>(exclusive != 0),
                                              static_cast<uint16_t>(lockMode), 1});
      return 0;
    }
    if (exclusive != 0 || lockMode != 0 || found->second.exclusive != 0) return KEP_IO_SHARING;
    ++found->second.count;
    return 0;
  } catch (std::bad_alloc const&) {
    return KEP_IO_FAILED;
  }
}

void __KepIOTableRelease(char const* path) {
  if (path == nullptr || !gTableReady.load(std::memory_order_acquire)) return;
  TableLock lock;
  if (!lock.held()) return;
  try {
    auto found = gTable.entries->find(path);
    if (found == gTable.entries->end()) return;
    if (--found->second.count == 0) gTable.entries->erase(found);
  } catch (std::bad_alloc const&) {
    // The key could not be made: the entry stays counted.
  }
}

uint64_t _KepIOOpenCount(char const* path) {
  if (path == nullptr || !gTableReady.load(std::memory_order_acquire)) return 0;
  TableLock lock;
  if (!lock.held()) return 0;
  try {
    auto found = gTable.entries->find(path);
    return found == gTable.entries->end() ? 0 : found->second.count;
  } catch (std::bad_alloc const&) {
    return 0;
  }
}

// --- Character helpers ---------------------------------------------------------------

unsigned long __KepIOIsDBCSLead(unsigned short language, unsigned char byte) {
  if (language == KEP_IO_LANGUAGE) return 0;
  if (language == KEP_IO_LANGUAGE_SHIFT_JIS)
    return ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC)) ? 1 : 0;
  return (byte >= 0x81 && byte <= 0xFE) ? 1 : 0;
}

char const* __KepIOGetNextChar(unsigned short language, char const* p) {
  if (p == nullptr || *p == 0) return p;
  if (__KepIOIsDBCSLead(language, static_cast<unsigned char>(*p)) != 0 && p[1] != 0) return p + 2;
  return p + 1;
}

char const* __KepIOGetPrevChar(unsigned short language, char const* start, char const* p) {
  if (start == nullptr || p == nullptr || p <= start) return start;
  if (language == KEP_IO_LANGUAGE) return p - 1;
  // Lead and trail bytes overlap, so character starts are only known from the
  // beginning of the text.
  char const* previous = start;
  for (char const* q = start; q < p && *q != 0;) {
    previous = q;
    q = __KepIOGetNextChar(language, q);
  }
  return previous;
}

char const* __KepIOFindFileNameStart(unsigned short language, char const* path) {
  if (path == nullptr) return nullptr;
  char const* nameStart = path;
  char const* end = path + KEP_IO_PATH_MAX;
  for (char const* q = path; q < end && *q != 0; q = __KepIOGetNextChar(language, q)) {
    if (*q == '/') nameStart = q + 1;
  }
  return nameStart;
}

char const* __KepIOFindExtensionStart(unsigned short language, char const* path) {
  char const* name = __KepIOFindFileNameStart(language, path);
  if (name == nullptr) return nullptr;
  char const* dot = nullptr;
  char const* q = name;
  for (; q < path + KEP_IO_PATH_MAX && *q != 0; q = __KepIOGetNextChar(language, q)) {
    if (*q == '.' && q != name) dot = q;
  }
  return dot != nullptr ? dot : q;
}

int __KepIOCharCount(unsigned short language, char const* text) {
  if (text == nullptr) return 0;
  int n = 0;
  for (char const* q = text; *q != 0; q = __KepIOGetNextChar(language, q)) ++n;
  return n;
}

// --- Path builders ---------------------------------------------------------------------

uint32_t _KepIOPathBuild(char const* a, char const* b, char const* c, char const* d, char* out) {
  return _KepIOPathBuildExt(a, b, c, d, out, KEP_IO_PATH_MAX);
}

uint32_t _KepIOPathModify(char const* path, char const* b, char const* c, char* out) {
  return _KepIOPathModifyExt(path, b, c, out, KEP_IO_PATH_MAX);
}

uint32_t _KepIOPathReduce(char const* path, char* dir, char* name) {
  if (path == nullptr || dir == nullptr) return KEP_IO_NOT_FOUND;
  size_t length = strnlen(path, KEP_IO_PATH_MAX);
  if (length == 0) return KEP_IO_REDUCE_EMPTY;
  if (length >= static_cast<size_t>(KEP_IO_PATH_MAX)) return KEP_IO_PATH_TOO_LONG;
  char const* nameStart = __KepIOFindFileNameStart(KEP_IO_LANGUAGE, path);
  size_t dirLength = nameStart > path ? static_cast<size_t>(nameStart - path) - 1 : 0;
  size_t nameLength = length - static_cast<size_t>(nameStart - path);
  // Both parts are copied out of a scratch copy, as dir or name may be path.
  char scratch[KEP_IO_PATH_MAX];
  std::memcpy(scratch, path, length + 1);
  if (name != nullptr) {
    std::memmove(name, scratch + (nameStart - path), nameLength);
    name[nameLength] = 0;
  }
  std::memcpy(dir, scratch, dirLength);
  dir[dirLength] = 0;
  return 0;
}

uint32_t _KepIOPathCopy(char const* src, char* dst) {
  if (src == nullptr || dst == nullptr) return KEP_IO_NOT_FOUND;
  size_t length = strnlen(src, KEP_IO_PATH_MAX);
  if (length >= static_cast<size_t>(KEP_IO_PATH_MAX)) {
    dst[0] = 0;
    return KEP_IO_PATH_TOO_LONG;
  }
  std::memmove(dst, src, length + 1);
  return 0;
}

uint32_t _KepIOExtractName(_Io_File const* file, char const* path, char* name) {
  char const* source = (file != nullptr && file->path != nullptr) ? file->path : path;
  if (source == nullptr) return KEP_IO_BAD_HANDLE;
  if (name == nullptr) return KEP_IO_NOT_FOUND;
  return _KepIOPathCopy(__KepIOFindFileNameStart(KEP_IO_LANGUAGE, source), name);
}

uint32_t QbioErrorHandler(uint32_t /*code*/, QbioErrorHandlerProc /*handler*/) { return 0; }

// --- Copying -------------------------------------------------------------------------

uint32_t _KepIOCopyPartial(_Io_File* from, long fromPosition, _Io_File* to, long toPosition,
                           unsigned long length, unsigned long* copied) {
  constexpr uint16_t kPiece = 0x8000;
  if (copied != nullptr) *copied = 0;
  if (from == nullptr || to == nullptr || from->fd < 0 || to->fd < 0) return KEP_IO_BAD_HANDLE;
  auto* buffer = static_cast<char*>(KepMalloc(kPiece));
  if (buffer == nullptr) return KEP_IO_FAILED;
  unsigned long done = 0;
  uint32_t rc = 0;
  long readAt = fromPosition;
  int whence = toPosition == KEP_IO_CURRENT ? KEP_IO_SEEK_CUR : KEP_IO_SEEK_SET;
  long writeAt = toPosition == KEP_IO_CURRENT ? 0 : toPosition;
  while (done < length) {
    unsigned long left = length - done;
    uint16_t want = left < kPiece ? static_cast<uint16_t>(left) : kPiece;
    uint16_t got = 0;
    uint32_t readRc = _KepIORead(from, readAt, want, buffer, &got);
    readAt = KEP_IO_CURRENT;
    if (readRc != 0 && readRc != KEP_IO_SHORT_READ) {
      rc = readRc;
      break;
    }
    if (got > 0) {
      uint32_t wrote = 0;
      rc = _KepIOWrite(to, whence, writeAt, got, buffer, &wrote);
      done += wrote;
      whence = KEP_IO_SEEK_CUR;
      writeAt = 0;
      if (rc != 0) break;
    }
    if (readRc == KEP_IO_SHORT_READ) {
      if (length != KEP_IO_ALL && done < length) rc = KEP_IO_SHORT_READ;
      break;
    }
  }
  KepFree(buffer);
  if (copied != nullptr) *copied = done;
  return rc;
}
