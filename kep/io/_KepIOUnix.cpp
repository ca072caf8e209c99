// POSIX implementation of the file layer's system calls.
#include "kep/io/_KepIOUnix.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>
#include <utime.h>

#include <atomic>
#include <cstring>

#include "kep/date/_KepDate.h"
#include "kep/io/_KepIO.h"
#include "kep/io/_KepIODirectory.h"
#include "kep/memory/KepMemory.h"

static_assert(O_WRONLY == KEP_IO_WRITE && O_RDWR == KEP_IO_READ_WRITE, "access modes");
static_assert(O_CREAT == KEP_IO_CREATE && O_EXCL == KEP_IO_EXCLUSIVE, "create bits");
static_assert(O_TRUNC == KEP_IO_TRUNCATE && O_APPEND == KEP_IO_APPEND, "truncate and append");
static_assert(SEEK_SET == KEP_IO_SEEK_SET && SEEK_CUR == KEP_IO_SEEK_CUR &&
                  SEEK_END == KEP_IO_SEEK_END,
              "whence values");
static_assert(sizeof(long) == sizeof(off_t), "file offsets are machine words");

namespace {

constexpr int kReadTries = 10;
constexpr unsigned long kLockRetryMs = 300;
constexpr long kSeekStep = 0x7FFFFFFF;

std::atomic<unsigned long> gReadRetryPauseMs{250};

inline bool closedRecord(_Io_File const* file) { return file == nullptr || file->fd < 0; }

inline uint32_t lastError() { return _KepIOMapErrno(errno); }

// Moves `fd` to `offset` from `whence`. Offsets of less than 2^31 either way are
// sought at once (KEP_IO_BAD_HANDLE on failure); longer ones from the base of
// `whence` in steps of 0x7FFFFFFF bytes and a remainder (KEP_IO_FAILED).
uint32_t position(int fd, long offset, int whence) {
  if (offset > -kSeekStep - 1 && offset <= kSeekStep) {
    return lseek(fd, offset, whence) < 0 ? KEP_IO_BAD_HANDLE : 0;
  }
  if (whence != SEEK_CUR && lseek(fd, 0, whence) < 0) return KEP_IO_FAILED;
  long step = offset > 0 ? kSeekStep : -kSeekStep;
  while (offset > kSeekStep || offset < -kSeekStep) {
    if (lseek(fd, step, SEEK_CUR) < 0) return KEP_IO_FAILED;
    offset -= step;
  }
  return offset != 0 && lseek(fd, offset, SEEK_CUR) < 0 ? KEP_IO_FAILED : 0;
}

// Whether a read that failed with `error` may succeed when tried again. A bad
// or write-only descriptor, a directory, a bad buffer or an unsuitable request
// fail the same way every time, so they are not tried again.
bool readMayRecover(int error) {
  return error != EBADF && error != EISDIR && error != EFAULT && error != EINVAL;
}

// The tries of a read after its first failed: up to kReadTries - 1 more, each
// after the retry pause, while the failure is one that may pass. Answers the
// last result of read(); errno holds its error when that is negative. Kept out
// of _KepIORead so that the common path of a read is a single call.
__attribute__((noinline, cold)) ssize_t readAgain(int fd, void* buffer, size_t length) {
  ssize_t got = -1;
  for (int attempt = 1; attempt < kReadTries && readMayRecover(errno); ++attempt) {
    _KepIOTimeDelay(gReadRetryPauseMs.load(std::memory_order_relaxed));
    got = read(fd, buffer, length);
    if (got >= 0) break;
  }
  return got;
}

// A record lock of type `type` on one byte at `start`.
int recordLock(int fd, short type, long start) {
  struct flock lock;
  std::memset(&lock, 0, sizeof lock);
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = start;
  lock.l_len = 1;
  return fcntl(fd, F_SETLK, &lock);
}

// Frees the record's path copy and leaves it closed.
void resetRecord(_Io_File* file) {
  KepFree(file->path);
  file->path = nullptr;
  file->pathLength = 0;
  file->fd = -1;
}

// The open of __KepIOOpen; with `honourCreate` KEP_IO_CREATE reaches the system
// instead of asking for a lock.
uint32_t openRecord(char const* path, unsigned long flags, _Io_File* file, unsigned long mode,
                    bool honourCreate) {
  if (file == nullptr) return KEP_IO_FAILED;
  file->fd = -1;
  file->path = nullptr;
  file->pathLength = 0;
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  if (__KepIOTableInit() != 0) return KEP_IO_FAILED;
  size_t length = strnlen(path, KEP_IO_PATH_MAX);
  if (length >= static_cast<size_t>(KEP_IO_PATH_MAX)) return KEP_IO_PATH_TOO_LONG;
  auto* copy = static_cast<char*>(KepMalloc(length + 1));
  if (copy == nullptr) return KEP_IO_FAILED;
  std::memcpy(copy, path, length + 1);
  file->path = copy;
  file->pathLength = static_cast<uint32_t>(length + 1);

  if (flags & KEP_IO_EXCLUSIVE) flags &= ~KEP_IO_TRUNCATE;
  unsigned lockMode = 0;
  if (!honourCreate && (flags & KEP_IO_CREATE)) {
    flags |= 0x42;
    lockMode = 1;
    flags &= ~KEP_IO_CREATE;
  }
  if (flags & KEP_IO_LOCK_EXCLUSIVE) {
    lockMode = 2;
    flags = (flags & ~KEP_IO_LOCK_EXCLUSIVE) | O_RDWR;
  }
  bool makeDirectories = (flags & KEP_IO_CREATE_DIRECTORIES) != 0;
  flags &= ~KEP_IO_CREATE_DIRECTORIES;
  unsigned exclusive = (flags & KEP_IO_EXCLUSIVE) != 0 ? 1 : 0;
  // A locking open truncates only once its record lock is held, so an open that
  // is refused the lock leaves another holder's contents alone.
  bool truncateWhenLocked = lockMode != 0 && (flags & KEP_IO_TRUNCATE) != 0;
  if (truncateWhenLocked) flags &= ~KEP_IO_TRUNCATE;

  uint32_t rc = 0;
  int fd = -1;
  for (bool retried = false;;) {
    rc = __KepIOTableAcquire(copy, exclusive, lockMode);
    if (rc != 0) break;
    do {
      fd = open(copy, static_cast<int>(flags) | O_CLOEXEC, static_cast<mode_t>(mode));
    } while (fd < 0 && errno == EINTR);
    if (fd >= 0) break;
    rc = lastError();
    __KepIOTableRelease(copy);
    if (rc != KEP_IO_NOT_FOUND || !makeDirectories || retried) break;
    retried = true;
    _KepIODirCreateForFile(copy);
  }
  if (fd >= 0 && lockMode != 0 && recordLock(fd, lockMode == 1 ? F_RDLCK : F_WRLCK, 1) != 0) {
    rc = errno == EBADF ? KEP_IO_LOCK_FAILED : lastError();
    close(fd);
    __KepIOTableRelease(copy);
    fd = -1;
  }
  if (fd >= 0 && truncateWhenLocked && ftruncate(fd, 0) != 0) {
    rc = lastError();
    close(fd);
    __KepIOTableRelease(copy);
    fd = -1;
  }
  if (fd < 0) {
    resetRecord(file);
    return rc;
  }
  file->fd = fd;
  return 0;
}

// Reads the file's status; the mapped error on failure.
uint32_t statPath(char const* path, struct stat* info) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  return stat(path, info) == 0 ? 0 : lastError();
}

unsigned long attributeOf(char const* path, struct stat const& info) {
  if (S_ISDIR(info.st_mode)) return 0x20;
  if (access(path, R_OK | W_OK) == 0) return 1;
  if (access(path, R_OK) == 0) return 2;
  return 0;
}

// The conversion of file times: broken down without a zone, back under `zone`.
uint32_t convertFileTime(unsigned long secs, void* zone, unsigned long* out) {
  _KepDateTime date;
  _KepDateSecs2Date(secs, &date, nullptr);
  return _KepDateDate2Secs(&date, out, zone);
}

}  // namespace

uint32_t _KepIOMapErrno(int error) {
  switch (error) {
    case ENOENT:
      return KEP_IO_NOT_FOUND;
    case EBADF:
      return KEP_IO_BAD_HANDLE;
    case EAGAIN:
    case EACCES:
    case EEXIST:
      return KEP_IO_SHARING;
    case EMFILE:
      return KEP_IO_TOO_MANY_FILES;
    case ENOSPC:
      return KEP_IO_DISK_FULL;
    default:
      return KEP_IO_FAILED;
  }
}

// --- Records ------------------------------------------------------------------------

uint32_t __KepIOOpen(char const* path, unsigned long flags, _Io_File* file,
                     unsigned long /*mustBePresent*/) {
  return openRecord(path, flags, file, 0666, false);
}

uint32_t __KepIOCreate(char const* path, unsigned long flags, unsigned long /*mode*/,
                       _Io_File* file) {
  return __KepIOOpen(path, flags | 0x240, file, 0);
}

uint32_t __KepIOOpenCreating(char const* path, unsigned long flags, unsigned long mode,
                             _Io_File* file) {
  return openRecord(path, flags, file, mode, true);
}

uint32_t _KepIOClose(_Io_File* file) {
  if (closedRecord(file)) return KEP_IO_BAD_HANDLE;
  int rc = close(file->fd);
  int error = errno;
  file->fd = -1;
  if (file->path == nullptr) return KEP_IO_FAILED;
  __KepIOTableRelease(file->path);
  resetRecord(file);
  // The descriptor is gone even when close() reports an error (Linux frees it
  // first), so the record stays closed either way.
  return rc == 0 ? 0 : _KepIOMapErrno(error);
}

uint32_t _KepIORead(_Io_File* file, long where, uint16_t length, void* buffer, uint16_t* count) {
  if (count != nullptr) *count = 0;
  if (closedRecord(file)) return KEP_IO_BAD_HANDLE;
  if (buffer == nullptr && length > 0) return KEP_IO_FAILED;
  if (where != KEP_IO_CURRENT) {
    uint32_t rc = position(file->fd, where, SEEK_SET);
    if (rc != 0) return rc;
  }
  ssize_t got = read(file->fd, buffer, length);
  if (got < 0) got = readAgain(file->fd, buffer, length);
  if (got < 0) return lastError();
  if (count != nullptr) *count = static_cast<uint16_t>(got);
  return got == length ? 0 : KEP_IO_SHORT_READ;
}

uint32_t _KepIOWrite(_Io_File* file, int whence, long where, uint32_t length, void const* buffer,
                     uint32_t* count) {
  if (count != nullptr) *count = 0;
  if (closedRecord(file)) return KEP_IO_BAD_HANDLE;
  if (buffer == nullptr && length > 0) return KEP_IO_FAILED;
  if (!(whence == SEEK_CUR && where == 0)) {
    uint32_t rc = position(file->fd, where, whence);
    if (rc != 0) return rc;
  }
  auto const* bytes = static_cast<char const*>(buffer);
  uint32_t done = 0;
  uint32_t rc = 0;
  while (done < length) {
    ssize_t wrote = write(file->fd, bytes + done, length - done);
    if (wrote > 0) {
      done += static_cast<uint32_t>(wrote);
      continue;
    }
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote < 0) rc = errno == EBADF ? KEP_IO_SHARING : lastError();
    break;
  }
  if (count != nullptr) *count = done;
  if (rc == 0 && done < length) rc = KEP_IO_DISK_FULL;
  return rc;
}

uint32_t _KepIOSeek(_Io_File* file, long offset, int whence, unsigned long* where) {
  if (closedRecord(file)) return KEP_IO_BAD_HANDLE;
  off_t now = lseek(file->fd, offset, whence);
  if (now < 0) return lastError();
  if (where != nullptr) *where = static_cast<unsigned long>(now);
  return 0;
}

uint32_t _KepIOTell(_Io_File* file, unsigned long* where) {
  return _KepIOSeek(file, 0, SEEK_CUR, where);
}

uint32_t _KepIOSize(_Io_File* file, unsigned long* size) {
  if (closedRecord(file)) return KEP_IO_BAD_HANDLE;
  long length = unix_filelength(file->fd);
  if (length < 0) return lastError();
  if (size != nullptr) *size = static_cast<unsigned long>(length);
  return 0;
}

uint32_t _KepIOTruncate(_Io_File* file, unsigned long length) {
  if (closedRecord(file)) return KEP_IO_BAD_HANDLE;
  long size = unix_filelength(file->fd);
  if (size < 0) return lastError();
  uint32_t rc = 0;
  if (length > static_cast<unsigned long>(size)) {
    rc = KEP_IO_TRUNCATE_BEYOND_END;
  } else if (unix_chsize(file->fd, static_cast<long>(length)) != 0) {
    rc = lastError();
  }
  if (lseek(file->fd, static_cast<off_t>(length), SEEK_SET) < 0 && rc == 0) rc = lastError();
  return rc;
}

uint32_t _KepIOFlush(_Io_File* /*file*/) { return 0; }

unsigned long _KepIOSetReadRetryPause(unsigned long milliseconds) {
  return gReadRetryPauseMs.exchange(milliseconds);
}

// --- Paths ----------------------------------------------------------------------------

uint32_t _KepIODelete(char const* path) {
  struct stat info;
  uint32_t rc = statPath(path, &info);
  if (rc != 0) return rc;
  if (S_ISDIR(info.st_mode)) return KEP_IO_FAILED;
  return unlink(path) == 0 ? 0 : lastError();
}

uint32_t _KepIOExist(char const* path) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  return access(path, F_OK) == 0 ? 0 : lastError();
}

uint32_t _KepIOGetAttribute(char const* path, unsigned long* attribute) {
  struct stat info;
  uint32_t rc = statPath(path, &info);
  if (rc != 0) return rc;
  if (attribute != nullptr) *attribute = attributeOf(path, info);
  return 0;
}

uint32_t _KepIOGetFileGMTVAL(char const* path, void* zone, unsigned long* value) {
  struct stat info;
  uint32_t rc = statPath(path, &info);
  if (rc != 0) return rc;
  unsigned long converted = 0;
  rc = convertFileTime(static_cast<unsigned long>(info.st_mtime), zone, &converted);
  if (value != nullptr) *value = converted;
  return rc;
}

uint32_t _KepIOSetFileGMTVAL(char const* path, void* zone, unsigned long value) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  unsigned long converted = 0;
  uint32_t rc = convertFileTime(value, zone, &converted);
  struct utimbuf times;
  times.actime = static_cast<time_t>(converted);
  times.modtime = static_cast<time_t>(converted);
  if (utime(path, &times) != 0) return lastError();
  return rc;
}

uint32_t _KepIOMove(char const* from, char const* to) {
  if (from == nullptr || to == nullptr) return KEP_IO_MOVE_NOT_FOUND;
  if (rename(from, to) == 0) return 0;
  int error = errno;
  if (error == ENOENT) return KEP_IO_MOVE_NOT_FOUND;
  if (error != EXDEV) return _KepIOMapErrno(error);
  struct stat info;
  uint32_t rc = statPath(from, &info);
  if (rc != 0) return rc == KEP_IO_NOT_FOUND ? KEP_IO_MOVE_NOT_FOUND : rc;
  if (S_ISDIR(info.st_mode)) return KEP_IO_MOVE_DIRECTORY;
  if (_KepIOCopy(from, O_RDONLY, to, 194) != 0) return KEP_IO_MOVE_COPY_FAILED;
  return _KepIODelete(from);
}

uint32_t _KepIOCopy(char const* from, unsigned long fromFlags, char const* to,
                    unsigned long flags) {
  // The destination is written whatever access the flags name; the access bits
  // only decide the permissions below.
  unsigned long openFlags = flags | 0x240;
  if ((openFlags & O_ACCMODE) == O_RDONLY) openFlags |= O_RDWR;
  // Opening the destination truncates it, so a destination that is the source
  // itself (by another name or a link, too) would lose the source's bytes.
  struct stat fromInfo;
  struct stat toInfo;
  if (from != nullptr && to != nullptr && stat(from, &fromInfo) == 0 && stat(to, &toInfo) == 0 &&
      fromInfo.st_dev == toInfo.st_dev && fromInfo.st_ino == toInfo.st_ino) {
    return KEP_IO_COPY_DESTINATION;
  }
  _Io_File destination;
  if (__KepIOOpenCreating(to, openFlags, 0666, &destination) != 0) {
    return KEP_IO_COPY_DESTINATION;
  }
  _Io_File source;
  uint32_t rc = __KepIOOpen(from, fromFlags, &source, 1);
  if (rc == 0) {
    rc = _KepIOCopyPartial(&source, 0, &destination, 0, KEP_IO_ALL, nullptr);
    if (rc != 0) _KepIOClose(&source);
  }
  if (rc != 0) {
    _KepIOClose(&destination);
    unlink(to);
    return rc;
  }
  struct stat info;
  if (fstat(source.fd, &info) != 0) rc = lastError();
  if (rc == 0) {
    mode_t mode = info.st_mode & 07777;
    if ((flags & 2) == 0) mode &= (flags & 1) ? ~mode_t{0222} : ~mode_t{0022};
    if (fchmod(destination.fd, mode) != 0) rc = lastError();
  }
  _KepIOClose(&source);
  _KepIOClose(&destination);
  if (rc == 0) {
    struct utimbuf times;
    times.actime = info.st_atime;
    times.modtime = info.st_mtime;
    if (utime(to, &times) != 0) rc = lastError();
  }
  return rc;
}

uint32_t _KepIODBLock(int fd, unsigned long seconds) {
  time_t first = time(nullptr);
  for (;;) {
    if (recordLock(fd, F_WRLCK, 0) == 0) return 0;
    if (static_cast<unsigned long>(time(nullptr) - first) >= seconds) return KEP_IO_LOCK_FAILED;
    _KepIOTimeDelay(kLockRetryMs);
  }
}

uint32_t _KepIODBUnlock(int fd) {
  return recordLock(fd, F_UNLCK, 0) == 0 ? 0 : KEP_IO_UNLOCK_FAILED;
}

// --- Directories ------------------------------------------------------------------------

uint32_t __KepIODirCreate(char const* path) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  return mkdir(path, 0777) == 0 ? 0 : lastError();
}

uint32_t _KepIODirRemove(char const* path) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  return rmdir(path) == 0 ? 0 : lastError();
}

uint32_t __KepIODirOpen(char const* path, void** stream) {
  if (stream == nullptr) return KEP_IO_FAILED;
  *stream = nullptr;
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  DIR* dir = opendir(path);
  if (dir == nullptr) return lastError();
  *stream = dir;
  return 0;
}

uint32_t __KepIODirRead(void* stream, char* name, unsigned long* isDirectory) {
  if (stream == nullptr || name == nullptr) return KEP_IO_BAD_HANDLE;
  errno = 0;
  struct dirent* entry = readdir(static_cast<DIR*>(stream));
  if (entry == nullptr) return errno == 0 ? KEP_IO_NOT_FOUND : lastError();
  size_t length = strnlen(entry->d_name, 255);
  std::memcpy(name, entry->d_name, length);
  name[length] = 0;
  if (isDirectory != nullptr) {
    if (entry->d_type == DT_UNKNOWN) {
      struct stat info;
      *isDirectory =
          fstatat(dirfd(static_cast<DIR*>(stream)), name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
                  S_ISDIR(info.st_mode)
              ? 1
              : 0;
    } else {
      *isDirectory = entry->d_type == DT_DIR ? 1 : 0;
    }
  }
  return 0;
}

uint32_t __KepIODirClose(void* stream) {
  if (stream == nullptr) return KEP_IO_BAD_HANDLE;
  return closedir(static_cast<DIR*>(stream)) == 0 ? 0 : lastError();
}

uint32_t __KepIOStatInfo(char const* path, _KEP_IO_FIND_INFO* info) {
  struct stat status;
  uint32_t rc = statPath(path, &status);
  if (rc != 0) return rc;
  if (info != nullptr) {
    info->attribute = attributeOf(path, status);
    info->size = static_cast<unsigned long>(status.st_size);
    info->modified = static_cast<unsigned long>(status.st_mtime);
  }
  return 0;
}

uint32_t __KepIOIsRealDirectory(char const* path, unsigned long* isDirectory) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  struct stat info;
  if (lstat(path, &info) != 0) return lastError();
  if (isDirectory != nullptr) *isDirectory = S_ISDIR(info.st_mode) ? 1 : 0;
  return 0;
}

uint32_t __KepIOUnlink(char const* path) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  return unlink(path) == 0 ? 0 : lastError();
}

uint32_t __KepIOCreateExclusive(char const* path) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  int fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) return lastError();
  close(fd);
  return 0;
}

uint32_t __KepIORenameNoReplace(char const* from, char const* to) {
  if (from == nullptr || to == nullptr) return KEP_IO_NOT_FOUND;
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return lastError();
  // File systems without the no-replace rename: a hard link fails on an
  // existing target just the same.
  if (link(from, to) != 0) return lastError();
  return unlink(from) == 0 ? 0 : lastError();
}

uint32_t __KepIOCurrentDirectory(char* out) {
  if (out == nullptr) return KEP_IO_NOT_FOUND;
  if (getcwd(out, KEP_IO_PATH_MAX) != nullptr) return 0;
  return errno == ERANGE ? KEP_IO_PATH_TOO_LONG : lastError();
}

// --- Odds and ends ------------------------------------------------------------------------

void _KepIOTimeDelay(unsigned long milliseconds) {
  struct timespec left;
  left.tv_sec = static_cast<time_t>(milliseconds / 1000);
  left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

int unix_chsize(int fd, long length) { return ftruncate(fd, static_cast<off_t>(length)); }

long unix_filelength(int fd) {
  off_t saved = lseek(fd, 0, SEEK_CUR);
  if (saved < 0 || lseek(fd, 0, SEEK_END) < 0) return -1;
  if (lseek(fd, saved, SEEK_SET) < 0) return -1;
  struct stat info;
  if (fstat(fd, &info) != 0) return -1;
  return static_cast<long>(info.st_size);
}
