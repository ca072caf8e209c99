// The file layer's records: opening with its sharing rules, reading, writing,
// positioning, truncation, attributes, file times, record locks between
// processes and descriptor hygiene.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "io/IOTestUtil.h"
#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using iotest::readFile;
using iotest::writeFile;
using keptest::TempDir;

namespace {

// A file of the temporary directory, written with `content`.
std::string fileWith(TempDir const& dir, char const* name, std::string const& content) {
  std::string path = dir.file(name);
  writeFile(path, content);
  return path;
}

// Opens with the layer and expects success.
_Io_File openOk(std::string const& path, unsigned long flags) {
  _Io_File file;
  EXPECT_EQ(__KepIOOpen(path.c_str(), flags, &file, 1), 0u) << path;
  return file;
}

unsigned long sizeOf(_Io_File* file) {
  unsigned long size = 0;
  EXPECT_EQ(_KepIOSize(file, &size), 0u);
  return size;
}

unsigned long positionOf(_Io_File* file) {
  unsigned long where = 0;
  EXPECT_EQ(_KepIOTell(file, &where), 0u);
  return where;
}

}  // namespace

TEST(FileLayerOpen, PlainOpensShareAndCountAndExclusiveOnesAreRefused) {
  TempDir dir;
  std::string path = fileWith(dir, "shared", "x");
  _Io_File a = openOk(path, KEP_IO_READ);
  _Io_File b = openOk(path, KEP_IO_READ_WRITE);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 2u);
  EXPECT_STREQ(a.path, path.c_str());
  EXPECT_EQ(a.pathLength, path.size() + 1);
  _Io_File other;
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_READ | KEP_IO_EXCLUSIVE, &other, 1), KEP_IO_SHARING);
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_LOCK_EXCLUSIVE, &other, 1), KEP_IO_SHARING);
  EXPECT_EQ(__KepIOCreate(path.c_str(), KEP_IO_READ, 0644, &other), KEP_IO_SHARING);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 2u) << "refused opens leave the count alone";
  EXPECT_EQ(_KepIOClose(&a), 0u);
  EXPECT_EQ(a.fd, -1);
  EXPECT_EQ(a.path, nullptr);
  EXPECT_EQ(_KepIOClose(&b), 0u);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 0u) << "the last close removes the entry";
  EXPECT_EQ(_KepIOClose(&b), KEP_IO_BAD_HANDLE) << "a closed record is refused";

  _Io_File owner = openOk(path, KEP_IO_READ | KEP_IO_EXCLUSIVE);
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_READ, &other, 1), KEP_IO_SHARING);
  EXPECT_EQ(other.fd, -1);
  EXPECT_EQ(other.path, nullptr);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 1u);
  EXPECT_EQ(_KepIOClose(&owner), 0u);

  _Io_File locked = openOk(path, KEP_IO_LOCK_EXCLUSIVE);
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_READ, &other, 1), 0u)
      << "only exclusive entries refuse plain opens";
  EXPECT_EQ(_KepIOClose(&other), 0u);
  EXPECT_EQ(_KepIOClose(&locked), 0u);
}

TEST(FileLayerOpen, CreatingOpensTruncateAndCreateOnlyOnRequest) {
  TempDir dir;
  std::string missing = dir.file("missing");
  _Io_File file;
  EXPECT_EQ(__KepIOCreate(missing.c_str(), KEP_IO_READ, 0644, &file), KEP_IO_NOT_FOUND);
  EXPECT_EQ(__KepIOOpen(missing.c_str(), KEP_IO_CREATE, &file, 0), KEP_IO_NOT_FOUND);
  EXPECT_FALSE(iotest::present(missing));
  EXPECT_EQ(_KepIOOpenCount(missing.c_str()), 0u);

  std::string existing = fileWith(dir, "existing", "old content");
  ASSERT_EQ(__KepIOCreate(existing.c_str(), KEP_IO_READ, 0644, &file), 0u);
  EXPECT_EQ(sizeOf(&file), 0u) << "a creating open truncates";
  uint32_t wrote = 0;
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, 0, 3, "new", &wrote), 0u) << "and is read-write";
  EXPECT_EQ(_KepIOClose(&file), 0u);
  EXPECT_EQ(readFile(existing), "new");

  EXPECT_EQ(__KepIOCreate(existing.c_str(), KEP_IO_WRITE, 0644, &file), KEP_IO_LOCK_FAILED)
      << "write-only plus read-write is access mode 3: no lock can be taken";
  EXPECT_EQ(file.fd, -1);
  EXPECT_EQ(_KepIOOpenCount(existing.c_str()), 0u);
  EXPECT_EQ(readFile(existing), "new") << "a refused creating open truncates nothing";
  writeFile(existing, "kept");
  ASSERT_EQ(__KepIOCreate(existing.c_str(), KEP_IO_EXCLUSIVE, 0644, &file), 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  EXPECT_EQ(readFile(existing), "kept") << "the exclusive bit drops the truncation";

  ASSERT_EQ(__KepIOOpenCreating(missing.c_str(), KEP_IO_WRITE | KEP_IO_CREATE, 0600, &file), 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  EXPECT_EQ(iotest::modeOf(missing) & 0700u, 0600u);
  std::string deep = dir.file("a/b/c/file");
  unsigned long const create = KEP_IO_WRITE | KEP_IO_CREATE;
  EXPECT_EQ(__KepIOOpenCreating(deep.c_str(), create, 0644, &file), KEP_IO_NOT_FOUND);
  ASSERT_EQ(__KepIOOpenCreating(deep.c_str(), create | KEP_IO_CREATE_DIRECTORIES, 0644, &file), 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  EXPECT_TRUE(iotest::present(deep)) << "directories are made on request";
}

TEST(FileLayerOpen, BadArgumentsAndOverlongPaths) {
  _Io_File file;
  EXPECT_EQ(__KepIOOpen(nullptr, KEP_IO_READ, &file, 1), KEP_IO_NOT_FOUND);
  EXPECT_EQ(__KepIOOpen("/tmp", KEP_IO_READ, nullptr, 1), KEP_IO_FAILED);
  std::string longPath(KEP_IO_PATH_MAX, 'x');  // no room for the terminator in 1024 bytes
  EXPECT_EQ(__KepIOOpen(longPath.c_str(), KEP_IO_READ, &file, 1), KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(file.fd, -1);
  char byte = 0;
  uint16_t count = 7;
  EXPECT_EQ(_KepIORead(nullptr, KEP_IO_CURRENT, 1, &byte, &count), KEP_IO_BAD_HANDLE);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, 0, 1, &byte, nullptr), KEP_IO_BAD_HANDLE);
  EXPECT_EQ(_KepIOClose(nullptr), KEP_IO_BAD_HANDLE);
}

TEST(FileLayerReadWrite, ShortReadsGiveTheCountAndTheShortReadCode) {
  TempDir dir;
  _Io_File file = openOk(fileWith(dir, "sixty", std::string(60, 'z')), KEP_IO_READ);
  char buffer[100];
  uint16_t count = 0;
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, 100, buffer, &count), KEP_IO_SHORT_READ);
  EXPECT_EQ(count, 60u);
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, 100, buffer, &count), KEP_IO_SHORT_READ);
  EXPECT_EQ(count, 0u) << "at the end nothing more comes";
  EXPECT_EQ(_KepIORead(&file, 50, 10, buffer, &count), 0u) << "a positioned read seeks first";
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(_KepIORead(&file, -5, 10, buffer, &count), KEP_IO_BAD_HANDLE);
  uint32_t wrote = 9;
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, 0, 3, "abc", &wrote), KEP_IO_SHARING)
      << "writing a record opened for reading";
  EXPECT_EQ(wrote, 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);

  // Reading a record opened for writing maps to a bad handle, at once: no retry
  // can change that (the pause between tries is the default 250 ms here).
  file = openOk(dir.file("sixty"), KEP_IO_WRITE);
  count = 3;
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, 4, buffer, &count), KEP_IO_BAD_HANDLE);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
}

TEST(FileLayerReadWrite, FailingReadsAreTriedTenTimesWithAPause) {
  // An empty non-blocking pipe fails reads with EAGAIN until someone writes.
  TempDir dir;
  std::string fifo = dir.file("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  _Io_File file = openOk(fifo, KEP_IO_READ | O_NONBLOCK);
  int writer = open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
  ASSERT_GE(writer, 0);
  unsigned long const pause = 30;
  unsigned long previous = _KepIOSetReadRetryPause(pause);
  char buffer[16];
  uint16_t count = 9;
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, sizeof buffer, buffer, &count), KEP_IO_SHARING);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(9 * pause))
      << "nine pauses between ten tries";
  EXPECT_EQ(count, 0u);

  // Bytes that come while the read is still trying are read (longer pauses
  // leave a busy machine time to run the writer).
  _KepIOSetReadRetryPause(100);
  std::thread late([writer] {
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    EXPECT_EQ(write(writer, "late", 4), 4);
  });
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, sizeof buffer, buffer, &count), KEP_IO_SHORT_READ);
  EXPECT_EQ(std::string(buffer, count), "late");
  late.join();
  EXPECT_EQ(_KepIOSetReadRetryPause(previous), 100u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  close(writer);
}

TEST(FileLayerReadWrite, WritesSeekByWhenceAndTruncateCutsOrRefuses) {
  TempDir dir;
  std::string path = fileWith(dir, "whence", "0123456789");
  _Io_File file = openOk(path, KEP_IO_READ_WRITE);
  uint32_t wrote = 0;
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_SET, 2, 2, "ab", &wrote), 0u);
  EXPECT_EQ(wrote, 2u);
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, 1, 1, "c", &wrote), 0u);
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_END, -1, 2, "de", &wrote), 0u);
  EXPECT_EQ(positionOf(&file), 11u);
  unsigned long where = 0;
  EXPECT_EQ(_KepIOSeek(&file, 3, KEP_IO_SEEK_SET, &where), 0u);
  EXPECT_EQ(where, 3u);
  EXPECT_EQ(_KepIOSeek(&file, -100, KEP_IO_SEEK_SET, &where), KEP_IO_FAILED);
  EXPECT_EQ(_KepIOFlush(&file), 0u);
  EXPECT_EQ(readFile(path), "01ab4c678de");

  EXPECT_EQ(_KepIOTruncate(&file, 150), KEP_IO_TRUNCATE_BEYOND_END);
  EXPECT_EQ(sizeOf(&file), 11u) << "the file is not grown";
  EXPECT_EQ(positionOf(&file), 150u) << "but the position is at the length";
  EXPECT_EQ(_KepIOTruncate(&file, 8), 0u);
  EXPECT_EQ(sizeOf(&file), 8u);
  EXPECT_EQ(positionOf(&file), 8u);
  EXPECT_EQ(unix_filelength(file.fd), 8);
  EXPECT_EQ(unix_chsize(file.fd, 4), 0);
  EXPECT_EQ(unix_filelength(file.fd), 4);
  EXPECT_EQ(unix_filelength(-1), -1);
  EXPECT_EQ(_KepIOClose(&file), 0u);
}

TEST(FileLayerReadWrite, PositionsBeyondFourGigabytesInASparseFile) {
  TempDir dir;
  std::string path = dir.file("sparse");
  _Io_File file;
  ASSERT_EQ(__KepIOOpenCreating(path.c_str(), KEP_IO_READ_WRITE | KEP_IO_CREATE, 0644, &file), 0u);
  long const far = (5L << 30) + 123;  // needs stepped positioning
  uint32_t wrote = 0;
  ASSERT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_SET, far, 5, "hello", &wrote), 0u);
  EXPECT_EQ(wrote, 5u);
  EXPECT_EQ(sizeOf(&file), static_cast<unsigned long>(far) + 5);
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_SET, 1, 1, "!", &wrote), 0u);
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, far - 2, 2, "HE", &wrote), 0u)
      << "a long step from the current position";
  char buffer[6] = {};
  uint16_t count = 0;
  EXPECT_EQ(_KepIORead(&file, far, 5, buffer, &count), 0u);
  EXPECT_STREQ(buffer, "HEllo");
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_END, -(far + 5) + 2, 1, "?", &wrote), 0u)
      << "and a long step back from the end";
  EXPECT_EQ(_KepIORead(&file, 0, 3, buffer, &count), 0u);
  EXPECT_EQ(std::string(buffer, 3), std::string("\0!?", 3));
  EXPECT_EQ(_KepIOClose(&file), 0u);
}

TEST(FileLayerPaths, DeleteExistAttributesAndFileTimes) {
  TempDir dir;
  std::string path = fileWith(dir, "file", "abc");
  unsigned long value = 99;
  EXPECT_EQ(_KepIOExist(path.c_str()), 0u);
  EXPECT_EQ(_KepIOGetAttribute(path.c_str(), &value), 0u);
  EXPECT_EQ(value, 1u);
  EXPECT_EQ(_KepIOGetAttribute(dir.path().c_str(), &value), 0u);
  EXPECT_EQ(value, 0x20u);
  EXPECT_EQ(_KepIODelete(dir.path().c_str()), KEP_IO_FAILED) << "directories are refused";
  EXPECT_TRUE(iotest::present(dir.path()));

  // File times go through the calendar layer: with a zone, the time read is the
  // file time taken as a local time there.
  unsigned long const stamp = 1000000000;
  ASSERT_EQ(_KepIOSetFileGMTVAL(path.c_str(), nullptr, stamp), 0u);
  EXPECT_EQ(iotest::mtimeOf(path), static_cast<long>(stamp));
  EXPECT_EQ(_KepIOGetFileGMTVAL(path.c_str(), nullptr, &value), 0u);
  EXPECT_EQ(value, stamp);
  void* zone = nullptr;
  ASSERT_EQ(_KepDateCreateTZ(0, 2, 2, 0, 1, 9, 3600, 3600, 0, &zone), 0u);
  _KepDateTime date;
  _KepDateSecs2Date(stamp, &date, nullptr);
  unsigned long expected = 0;
  _KepDateDate2Secs(&date, &expected, zone);
  EXPECT_NE(expected, stamp);
  EXPECT_EQ(_KepIOGetFileGMTVAL(path.c_str(), zone, &value), 0u);
  EXPECT_EQ(value, expected);
  EXPECT_EQ(_KepIOSetFileGMTVAL(path.c_str(), zone, stamp), 0u);
  EXPECT_EQ(iotest::mtimeOf(path), static_cast<long>(expected)) << "set converts the same way";
  _KepMMTestFree(zone);

  EXPECT_EQ(_KepIODelete(path.c_str()), 0u);
  EXPECT_EQ(_KepIOExist(path.c_str()), KEP_IO_NOT_FOUND);
  EXPECT_EQ(_KepIODelete(path.c_str()), KEP_IO_NOT_FOUND);
  EXPECT_EQ(_KepIOGetAttribute(path.c_str(), &value), KEP_IO_NOT_FOUND);
  EXPECT_EQ(_KepIOGetFileGMTVAL(path.c_str(), nullptr, &value), KEP_IO_NOT_FOUND);
  EXPECT_EQ(_KepIOMapErrno(0x11), KEP_IO_SHARING);  // "already present"
}

TEST(FileLayerLocks, RecordLocksHoldAgainstAnotherProcessAndTimeOut) {
  TempDir dir;
  std::string path = fileWith(dir, "locked", "0123456789");
  int toParent[2];
  int toChild[2];
  ASSERT_EQ(pipe(toParent), 0);
  ASSERT_EQ(pipe(toChild), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // The child holds the byte-0 lock and an exclusive open's lock on byte 1.
    _Io_File file;
    char reply = 'n';
    if (__KepIOOpen(path.c_str(), KEP_IO_LOCK_EXCLUSIVE, &file, 1) == 0 &&
        _KepIODBLock(file.fd, 0) == 0) {
      reply = 'y';
    }
    char go = 0;
    if (write(toParent[1], &reply, 1) != 1 || read(toChild[0], &go, 1) != 1) _exit(2);
    _exit(reply == 'y' ? 0 : 1);
  }
  char reply = 0;
  ASSERT_EQ(read(toParent[0], &reply, 1), 1);
  ASSERT_EQ(reply, 'y');

  _Io_File file = openOk(path, KEP_IO_READ_WRITE);
  EXPECT_EQ(_KepIODBLock(file.fd, 0), KEP_IO_LOCK_FAILED);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(_KepIODBLock(file.fd, 1), KEP_IO_LOCK_FAILED);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(290))
      << "a timed lock waits and tries again";
  _Io_File shared;
  EXPECT_EQ(__KepIOCreate(path.c_str(), KEP_IO_READ, 0644, &shared), KEP_IO_SHARING)
      << "the shared lock on byte 1 conflicts with the child's";

  char go = 'g';
  ASSERT_EQ(write(toChild[1], &go, 1), 1);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(_KepIODBLock(file.fd, 1), 0u) << "free once the child is gone";
  EXPECT_EQ(_KepIODBUnlock(file.fd), 0u);
  EXPECT_EQ(_KepIODBUnlock(-1), KEP_IO_UNLOCK_FAILED);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  for (int fd : {toParent[0], toParent[1], toChild[0], toChild[1]}) close(fd);
}

TEST(FileLayerHygiene, ThousandsOfOpenCloseCyclesLeakNoDescriptor) {
  TempDir dir;
  std::string path = fileWith(dir, "cycled", "some bytes");
  std::string missing = dir.file("missing");
  int before = iotest::openDescriptors();
  char buffer[16];
  for (int i = 0; i < 3000; ++i) {
    _Io_File file = openOk(path, KEP_IO_READ);
    uint16_t count = 0;
    _KepIORead(&file, KEP_IO_CURRENT, sizeof buffer, buffer, &count);
    _Io_File refused;
    if (i % 3 == 0) {
      EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_LOCK_EXCLUSIVE, &refused, 1), KEP_IO_SHARING);
    }
    ASSERT_EQ(_KepIOClose(&file), 0u);
    EXPECT_EQ(__KepIOOpen(missing.c_str(), KEP_IO_READ, &refused, 1), KEP_IO_NOT_FOUND);
    // A lock that cannot be taken closes what it opened.
    if (i % 3 == 1) {
      EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_WRITE | KEP_IO_LOCK_EXCLUSIVE, &refused, 1),
                KEP_IO_LOCK_FAILED);
    }
  }
  for (int i = 0; i < 300; ++i) {
    KepFile file{KepString(path.c_str())};
    signed char bytes[4];
    ASSERT_EQ(file.read(bytes, 0, 4), 4);
  }
  EXPECT_EQ(iotest::openDescriptors(), before);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 0u);
}
