#include "kep/io/KepRFile.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "kep/base/KepFactory.h"
#include "kep/io/KepRPath.h"

namespace {

constexpr int kReadBit = 1;
constexpr int kWriteBits = 2 | 4;
// Reads go to the layer in pieces its 16-bit length can carry.
constexpr int kReadPiece = 0x8000;

}  // namespace

KepRFile::KepRFile() : KepRFile(std::string()) {}

KepRFile::KepRFile(std::string bytes)
    : path(std::move(bytes)), pathText(widen(path.data(), path.size())), mode(0), markPosition(0) {
  record.fd = -1;
  record.path = nullptr;
  record.pathLength = 0;
}

KepRFile::~KepRFile() { closeRecord(); }

bool KepRFile::ok(uint32_t code) const { return fail(code) == 0; }

void KepRFile::closeRecord() {
  if (mode.load(std::memory_order_relaxed) == 0) return;
  ok(_KepIOClose(&record));
  mode.store(0, std::memory_order_release);
}

bool KepRFile::ensureOpen(bool forWrite) {
  if (closed.load(std::memory_order_acquire)) return false;
  if (mode.load(std::memory_order_relaxed) != 0) return true;
  return open(forWrite ? KepFile::kWrite : KepFile::kRead) != 0;
}

long KepRFile::attribute() const {
  unsigned long value = 0;
  return _KepIOGetAttribute(path.c_str(), &value) == 0 ? static_cast<long>(value) : -1;
}

KepString KepRFile::toString() const { return pathText; }

// --- The open file ----------------------------------------------------------------------

unsigned long KepRFile::open(int newMode) {
  closeRecord();
  uint32_t rc;
  switch (newMode) {
    case KepFile::kRead:
      rc = __KepIOOpen(path.c_str(), KEP_IO_READ, &record, 1);
      break;
    case KepFile::kWrite:
      rc = __KepIOOpenCreating(path.c_str(), KEP_IO_WRITE | KEP_IO_CREATE | KEP_IO_TRUNCATE, 0666,
                               &record);
      break;
    case KepFile::kReadWrite:
      rc = __KepIOOpenCreating(path.c_str(), KEP_IO_READ_WRITE | KEP_IO_CREATE, 0666, &record);
      break;
    case KepFile::kAppend:
      rc = __KepIOOpenCreating(path.c_str(), KEP_IO_WRITE | KEP_IO_CREATE | KEP_IO_APPEND, 0666,
                               &record);
      break;
    default:
      rc = KEP_IO_FAILED;
      break;
  }
  if (!ok(rc)) return 0;
  mode.store(newMode, std::memory_order_release);
  markPosition = 0;
  closed.store(false, std::memory_order_release);
  return 1;
}

unsigned long KepRFile::isOpen() const { return mode.load(std::memory_order_acquire) != 0 ? 1 : 0; }

long KepRFile::seek(long offset, int whence) {
  if (mode.load(std::memory_order_relaxed) == 0) {
    fail(KEP_IO_BAD_HANDLE);
    return -1;
  }
  unsigned long now = 0;
  return ok(_KepIOSeek(&record, offset, whence, &now)) ? static_cast<long>(now) : -1;
}

long KepRFile::tell() const {
  if (mode.load(std::memory_order_relaxed) == 0) return -1;
  unsigned long now = 0;
  // The record is not changed by asking for its position.
  return ok(_KepIOTell(const_cast<_Io_File*>(&record), &now)) ? static_cast<long>(now) : -1;
}

unsigned long KepRFile::setLength(long length) {
  if (length < 0) {
    fail(KEP_IO_FAILED);
    return 0;
  }
  if (mode.load(std::memory_order_relaxed) == 0 && open(KepFile::kReadWrite) == 0) return 0;
  return ok(_KepIOTruncate(&record, static_cast<unsigned long>(length))) ? 1 : 0;
}

long KepRFile::length() const {
  unsigned long size = 0;
  if (mode.load(std::memory_order_relaxed) != 0) {
    return ok(_KepIOSize(const_cast<_Io_File*>(&record), &size)) ? static_cast<long>(size) : -1;
  }
  _KEP_IO_FIND_INFO info;
  return ok(__KepIOStatInfo(path.c_str(), &info)) ? static_cast<long>(info.size) : -1;
}

// --- Stream device ---------------------------------------------------------------------

int KepRFile::read(signed char* buffer, int offset, int length) {
  if (!validRange(buffer, offset, length)) {
    fail(KEP_IO_FAILED);
    return -1;
  }
  if (length == 0) return 0;
  if (!ensureOpen(false)) return -1;
  if ((mode.load(std::memory_order_relaxed) & kReadBit) == 0) {
    fail(KEP_IO_BAD_HANDLE);
    return -1;
  }
  int done = 0;
  while (done < length) {
    uint16_t want = static_cast<uint16_t>(std::min(length - done, kReadPiece));
    uint16_t got = 0;
    uint32_t rc = _KepIORead(&record, KEP_IO_CURRENT, want, buffer + offset + done, &got);
    done += got;
    if (rc == KEP_IO_SHORT_READ) break;
    if (!ok(rc)) break;
  }
  return done > 0 ? done : -1;
}

int KepRFile::write(signed char* buffer, int offset, int length) {
  if (!validRange(buffer, offset, length)) {
    fail(KEP_IO_FAILED);
    return 0;
  }
  if (length == 0 || !ensureOpen(true)) return 0;
  if ((mode.load(std::memory_order_relaxed) & kWriteBits) == 0) {
    fail(KEP_IO_SHARING);
    return 0;
  }
  uint32_t wrote = 0;
  ok(_KepIOWrite(&record, KEP_IO_SEEK_CUR, 0, static_cast<uint32_t>(length), buffer + offset,
                 &wrote));
  return static_cast<int>(wrote);
}

long KepRFile::skip(long count) {
  if (count <= 0 || !ensureOpen(false)) return 0;
  long here = tell();
  long size = length();
  if (here < 0 || size < 0) return 0;
  long step = std::min(count, std::max(size - here, 0L));
  return seek(step, KEP_IO_SEEK_CUR) >= 0 ? step : 0;
}

int KepRFile::available() {
  if (closed.load(std::memory_order_acquire)) return 0;
  long size = length();
  long here = mode.load(std::memory_order_relaxed) != 0 ? tell() : 0;
  if (size < 0 || here < 0 || size <= here) return 0;
  return static_cast<int>(std::min<long>(size - here, INT_MAX));
}

unsigned long KepRFile::markSupported() const { return 1; }

void KepRFile::mark(int /*readLimit*/) {
  long here = tell();
  markPosition = here > 0 ? here : 0;
}

unsigned long KepRFile::reset() {
  if (!ensureOpen(false)) return 0;
  return seek(markPosition, KEP_IO_SEEK_SET) >= 0 ? 1 : 0;
}

void KepRFile::flush() {
  if (mode.load(std::memory_order_relaxed) != 0) ok(_KepIOFlush(&record));
}

void KepRFile::close() {
  closeRecord();
  KepRIOStream::close();
}

unsigned long KepRFile::isReadable() const {
  int now = mode.load(std::memory_order_acquire);
  return isClosed() == 0 && (now == 0 || (now & kReadBit) != 0) ? 1 : 0;
}

unsigned long KepRFile::isWritable() const {
  int now = mode.load(std::memory_order_acquire);
  return isClosed() == 0 && (now == 0 || (now & kWriteBits) != 0) ? 1 : 0;
}

// --- The file on disk ----------------------------------------------------------------------

unsigned long KepRFile::exists() const { return attribute() >= 0 ? 1 : 0; }

unsigned long KepRFile::isFile() const {
  long value = attribute();
  return value >= 0 && value != 0x20 ? 1 : 0;
}

unsigned long KepRFile::isDirectory() const { return attribute() == 0x20 ? 1 : 0; }

unsigned long KepRFile::canRead() const {
  long value = attribute();
  return value == 1 || value == 2 || value == 0x20 ? 1 : 0;
}

unsigned long KepRFile::canWrite() const {
  long value = attribute();
  return value == 1 || value == 0x20 ? 1 : 0;
}

unsigned long KepRFile::lastModified() const {
  unsigned long value = 0;
  return ok(_KepIOGetFileGMTVAL(path.c_str(), nullptr, &value)) ? value : 0;
}

unsigned long KepRFile::setLastModified(unsigned long time) {
  return ok(_KepIOSetFileGMTVAL(path.c_str(), nullptr, time)) ? 1 : 0;
}

unsigned long KepRFile::createNewFile() { return ok(__KepIOCreateExclusive(path.c_str())) ? 1 : 0; }

unsigned long KepRFile::remove() {
  closeRecord();
  uint32_t rc = attribute() == 0x20 ? _KepIODirRemove(path.c_str()) : _KepIODelete(path.c_str());
  return ok(rc) ? 1 : 0;
}

unsigned long KepRFile::renameTo(KepString const& target) {
  closeRecord();
  return ok(_KepIOMove(path.c_str(), narrow(target).c_str())) ? 1 : 0;
}

unsigned long KepRFile::copyTo(KepString const& target) {
  return ok(_KepIOCopy(path.c_str(), KEP_IO_READ, narrow(target).c_str(), KEP_IO_READ_WRITE)) ? 1
                                                                                              : 0;
}

unsigned long KepRFile::mkdir() { return ok(__KepIODirCreate(path.c_str())) ? 1 : 0; }

unsigned long KepRFile::mkdirs() {
  // The absolute form, so that a relative name has a parent to start from.
  char absolute[KEP_IO_PATH_MAX];
  if (!ok(_KepIOPathToStorageString(path.c_str(), absolute))) return 0;
  return ok(_KepIODirCreate(absolute)) ? 1 : 0;
}

unsigned long KepRFile::removeAll() {
  closeRecord();
  return ok(_KepIODirRemoveAll(path.c_str(), 0)) ? 1 : 0;
}

int KepRFile::list(KepString const& pattern, KepStringBuffer& names) const {
  if (attribute() != 0x20) {
    fail(KEP_IO_NOT_FOUND);
    return -1;
  }
  std::string bytes = pattern.isNull() ? std::string("*") : narrow(pattern);
  void* handle = nullptr;
  char name[KEP_IO_PATH_MAX];
  int count = 0;
  uint32_t rc = _KepIOFindFirstMatch(path.c_str(), bytes.c_str(), &handle, name);
  while (rc == 0) {
    names.append(widen(name, std::strlen(name)));
    names.append(static_cast<unsigned short>('\n'));
    ++count;
    rc = _KepIOFindNextMatch(handle, name);
  }
  _KepIOFindMatchClose(handle);
  if (rc != KEP_IO_NOT_FOUND) {
    fail(rc);
    return -1;
  }
  return count;
}

KepFile KepRFile::createTempFile(KepString const& prefix, KepString const& suffix) const {
  char out[KEP_IO_PATH_MAX];
  std::string before = narrow(prefix);
  std::string after = narrow(suffix);
  if (!ok(_KepIOCreateUniqueName(path.c_str(), before.c_str(), after.c_str(), out))) {
    return KepFile();
  }
  return KepFile(new KepRFile(out));
}

unsigned long KepRFile::lockRecord(int seconds) {
  if (mode.load(std::memory_order_relaxed) == 0 && open(KepFile::kReadWrite) == 0) return 0;
  if ((mode.load(std::memory_order_relaxed) & kWriteBits) == 0) {
    fail(KEP_IO_LOCK_FAILED);
    return 0;
  }
  return ok(_KepIODBLock(record.fd, static_cast<unsigned long>(std::max(seconds, 0)))) ? 1 : 0;
}

unsigned long KepRFile::unlockRecord() {
  if (mode.load(std::memory_order_relaxed) == 0) {
    fail(KEP_IO_UNLOCK_FAILED);
    return 0;
  }
  return ok(_KepIODBUnlock(record.fd)) ? 1 : 0;
}

// --- The path ----------------------------------------------------------------------------

KepString KepRFile::getName() const { return toPath().getName(); }

KepString KepRFile::getPath() const { return pathText; }

KepString KepRFile::getParent() const {
  KepString parent = toPath().getDirectory();
  return parent.length() > 0 ? parent : KepString();
}

KepString KepRFile::getAbsolutePath() const { return toPath().toAbsolute().toString(); }

KepPath KepRFile::toPath() const { return KepPath(new KepRPath(path)); }

KepFile KepRFile::getParentFile() const {
  KepString parent = getParent();
  return parent.isNull() ? KepFile() : KepFile(new KepRFile(narrow(parent)));
}

KEP_REGISTER_LIBRARY_CLASS(File);
