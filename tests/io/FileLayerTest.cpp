// The file layer's records: opening with its sharing rules, reading, writing,
// positioning, truncation, attributes, file times, record locks between
// processes and descriptor hygiene.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <utility>

#include "io/IOTestUtil.h"
#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using namespace iotest;
using keptest::TempDir;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

// Opens with the layer and expects success.
_Io_File openOk(std::string const& path, unsigned long flags) {
  _Io_File file;
  EXPECT_EQ(__KepIOOpen(path.c_str(), flags, &file, 1), 0u) << path;
  return file;
}

// The size and the position of an open record.
std::pair<unsigned long, unsigned long> sizeAndPosition(_Io_File* file) {
  unsigned long size = 0;
  unsigned long where = 0;
  EXPECT_EQ(_KepIOSize(file, &size) | _KepIOTell(file, &where), 0u);
  return {size, where};
}

}  // namespace

TEST(FileLayerOpen, PlainOpensShareAndCountAndExclusiveOnesAreRefused) {
  TempDir dir;
  std::string path = writeFile(dir.file("shared"), "x");
  _Io_File a = openOk(path, KEP_IO_READ);
  _Io_File b = openOk(path, KEP_IO_READ_WRITE);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 2u);
  _Io_File other;
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_READ | KEP_IO_EXCLUSIVE, &other, 1), KEP_IO_SHARING);
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_LOCK_EXCLUSIVE, &other, 1), KEP_IO_SHARING);
  EXPECT_EQ(__KepIOCreate(path.c_str(), KEP_IO_READ, 0644, &other), KEP_IO_SHARING);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 2u) << "refused opens leave the count alone";
  EXPECT_EQ(_KepIOClose(&a), 0u);
  EXPECT_EQ(a.fd, -1);
  EXPECT_EQ(_KepIOClose(&b), 0u);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 0u) << "the last close removes the entry";
  EXPECT_EQ(_KepIOClose(&b), KEP_IO_BAD_HANDLE) << "a closed record is refused";

  _Io_File owner = openOk(path, KEP_IO_READ | KEP_IO_EXCLUSIVE);
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_READ, &other, 1), KEP_IO_SHARING);
  EXPECT_EQ(other.path, nullptr);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 1u);
  EXPECT_EQ(_KepIOClose(&owner), 0u);
  _Io_File locked = openOk(path, KEP_IO_LOCK_EXCLUSIVE);
  EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_READ, &other, 1), 0u)
      << "only exclusive entries refuse plain opens";
  EXPECT_EQ(_KepIOClose(&other) | _KepIOClose(&locked), 0u);

  // A path needs its terminator within 1024 bytes.
  EXPECT_EQ(__KepIOOpen(std::string(KEP_IO_PATH_MAX, 'x').c_str(), KEP_IO_READ, &other, 1),
            KEP_IO_PATH_TOO_LONG);
  char byte = 0;
  uint16_t count = 7;
  EXPECT_EQ(_KepIORead(nullptr, KEP_IO_CURRENT, 1, &byte, &count), KEP_IO_BAD_HANDLE);
  EXPECT_EQ(count, 0u);
}

TEST(FileLayerOpen, CreatingOpensTruncateAndCreateOnlyOnRequest) {
  TempDir dir;
  std::string missing = dir.file("missing");
  _Io_File file;
  // The layer's own creating bit is dropped before the system call.
  EXPECT_EQ(__KepIOCreate(missing.c_str(), KEP_IO_READ, 0644, &file), KEP_IO_NOT_FOUND);
  EXPECT_EQ(__KepIOOpen(missing.c_str(), KEP_IO_CREATE, &file, 0), KEP_IO_NOT_FOUND);
  EXPECT_FALSE(present(missing));
  std::string existing = writeFile(dir.file("existing"), "old content");
  ASSERT_EQ(__KepIOCreate(existing.c_str(), KEP_IO_READ, 0644, &file), 0u);
  uint32_t wrote = 0;
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, 0, 3, "new", &wrote), 0u) << "read-write";
  EXPECT_EQ(_KepIOClose(&file), 0u);
  EXPECT_EQ(readFile(existing), "new") << "and truncated";
  EXPECT_EQ(__KepIOCreate(existing.c_str(), KEP_IO_WRITE, 0644, &file), KEP_IO_LOCK_FAILED)
      << "write-only plus read-write is access mode 3: no lock can be taken";
  EXPECT_EQ(readFile(existing), "new") << "a refused creating open truncates nothing";
  ASSERT_EQ(__KepIOCreate(existing.c_str(), KEP_IO_EXCLUSIVE, 0644, &file), 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  EXPECT_EQ(readFile(existing), "new") << "the exclusive bit drops the truncation";

  std::string deep = dir.file("a/b/file");
  unsigned long const create = KEP_IO_WRITE | KEP_IO_CREATE;
  EXPECT_EQ(__KepIOOpenCreating(deep.c_str(), create, 0600, &file), KEP_IO_NOT_FOUND);
  ASSERT_EQ(__KepIOOpenCreating(deep.c_str(), create | KEP_IO_CREATE_DIRECTORIES, 0600, &file), 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  EXPECT_EQ(modeOf(deep) & 0700u, 0600u) << "directories are made on request";
}

TEST(FileLayerReadWrite, ShortReadsGiveTheCountAndFailuresNoRetryCanChangeEndAtOnce) {
  TempDir dir;
  std::string path = writeFile(dir.file("sixty"), std::string(60, 'z'));
  _Io_File file = openOk(path, KEP_IO_READ);
  char buffer[100];
  uint16_t count = 0;
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, 100, buffer, &count), KEP_IO_SHORT_READ);
  EXPECT_EQ(count, 60u);
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, 100, buffer, &count), KEP_IO_SHORT_READ);
  EXPECT_EQ(count, 0u) << "at the end nothing more comes";
  EXPECT_EQ(_KepIORead(&file, -5, 10, buffer, &count), KEP_IO_BAD_HANDLE) << "seek failure";
  uint32_t wrote = 9;
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, 0, 3, "abc", &wrote), KEP_IO_SHARING)
      << "writing a record opened for reading";
  EXPECT_EQ(wrote, 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);

  // Reading a record opened for writing maps to a bad handle, at once (the
  // pause between tries is the default 250 ms here).
  file = openOk(path, KEP_IO_WRITE);
  auto start = Clock::now();
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, 4, buffer, &count), KEP_IO_BAD_HANDLE);
  EXPECT_LT(Clock::now() - start, milliseconds(200));
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
  unsigned long previous = _KepIOSetReadRetryPause(30);
  char buffer[16];
  uint16_t count = 9;
  auto start = Clock::now();
  EXPECT_EQ(_KepIORead(&file, KEP_IO_CURRENT, sizeof buffer, buffer, &count), KEP_IO_SHARING);
  EXPECT_GE(Clock::now() - start, milliseconds(9 * 30)) << "nine pauses between ten tries";
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(_KepIOSetReadRetryPause(previous), 30u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
  close(writer);
}

TEST(FileLayerReadWrite, SeekAndTruncateCutsOrRefuses) {
  TempDir dir;
  _Io_File file = openOk(writeFile(dir.file("ten"), "0123456789"), KEP_IO_READ_WRITE);
  unsigned long where = 0;
  EXPECT_EQ(_KepIOSeek(&file, -3, KEP_IO_SEEK_END, &where), 0u);
  EXPECT_EQ(where, 7u);
  EXPECT_EQ(_KepIOSeek(&file, -100, KEP_IO_SEEK_SET, &where), KEP_IO_FAILED);
  EXPECT_EQ(_KepIOTruncate(&file, 150), KEP_IO_TRUNCATE_BEYOND_END);
  EXPECT_EQ(sizeAndPosition(&file), std::make_pair(10ul, 150ul)) << "not grown, but positioned";
  EXPECT_EQ(_KepIOTruncate(&file, 8), 0u);
  EXPECT_EQ(sizeAndPosition(&file), std::make_pair(8ul, 8ul));
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
  EXPECT_EQ(sizeAndPosition(&file), std::make_pair(far + 5ul, far + 5ul));
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_SET, 1, 1, "!", &wrote), 0u);
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_CUR, far - 2, 2, "HE", &wrote), 0u)
      << "a long step from the current position";
  EXPECT_EQ(_KepIOWrite(&file, KEP_IO_SEEK_END, -(far + 5) + 2, 1, "?", &wrote), 0u)
      << "and a long step back from the end";
  char buffer[6] = {};
  uint16_t count = 0;
  EXPECT_EQ(_KepIORead(&file, far, 5, buffer, &count), 0u) << "a positioned read seeks first";
  EXPECT_STREQ(buffer, "HEllo");
  EXPECT_EQ(_KepIORead(&file, 0, 3, buffer, &count), 0u);
  EXPECT_EQ(std::string(buffer, 3), std::string("\0!?", 3));
  EXPECT_EQ(_KepIOFlush(&file), 0u);
  EXPECT_EQ(_KepIOClose(&file), 0u);
}

TEST(FileLayerPaths, DeleteExistAttributesAndFileTimes) {
  TempDir dir;
  std::string path = writeFile(dir.file("file"), "abc");
  unsigned long value = 99;
  unsigned long attribute = 99;
  EXPECT_EQ(_KepIOGetAttribute(dir.path().c_str(), &value) |
                _KepIOGetAttribute(path.c_str(), &attribute) | _KepIOExist(path.c_str()),
            0u);
  EXPECT_EQ(std::make_pair(value, attribute), std::make_pair(0x20ul, 1ul));
  EXPECT_EQ(_KepIODelete(dir.path().c_str()), KEP_IO_FAILED) << "directories are refused";
  EXPECT_TRUE(present(dir.path()));

  // File times go through the calendar layer: with a zone, the time read is the
  // file time taken as a local time there, and set converts the same way.
  unsigned long const stamp = 1000000000;
  ASSERT_EQ(_KepIOSetFileGMTVAL(path.c_str(), nullptr, stamp), 0u);
  EXPECT_EQ(mtimeOf(path), static_cast<long>(stamp));
  EXPECT_EQ(_KepIOGetFileGMTVAL(path.c_str(), nullptr, &value), 0u);
  EXPECT_EQ(value, stamp);
  void* zone = nullptr;
  ASSERT_EQ(_KepDateCreateTZ(0, 2, 2, 0, 1, 9, 3600, 3600, 0, &zone), 0u);
  _KepDateTime date;
  _KepDateSecs2Date(stamp, &date, nullptr);
  unsigned long zoned = 0;
  _KepDateDate2Secs(&date, &zoned, zone);
  ASSERT_NE(zoned, stamp);
  EXPECT_EQ(_KepIOSetFileGMTVAL(path.c_str(), zone, stamp), 0u);
  EXPECT_EQ(mtimeOf(path), static_cast<long>(zoned));
  _KepMMTestFree(zone);

  EXPECT_EQ(_KepIODelete(path.c_str()), 0u);
  EXPECT_EQ(_KepIOExist(path.c_str()), KEP_IO_NOT_FOUND);
  EXPECT_EQ(_KepIODelete(path.c_str()), KEP_IO_NOT_FOUND);
  EXPECT_EQ(_KepIOMapErrno(0x11), KEP_IO_SHARING);  // "already present"
}

TEST(FileLayerLocks, RecordLocksHoldAgainstAnotherProcessAndTimeOut) {
  TempDir dir;
  std::string path = writeFile(dir.file("locked"), "0123456789");
  int toParent[2];
  int toChild[2];
  ASSERT_EQ(pipe(toParent) | pipe(toChild), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // The child holds the byte-0 lock and an exclusive open's lock on byte 1
    // until the parent says go.
    _Io_File file;
    char reply = __KepIOOpen(path.c_str(), KEP_IO_LOCK_EXCLUSIVE, &file, 1) == 0 &&
                         _KepIODBLock(file.fd, 0) == 0
                     ? 'y'
                     : 'n';
    char go = 0;
    if (write(toParent[1], &reply, 1) != 1 || read(toChild[0], &go, 1) != 1) _exit(2);
    _exit(reply == 'y' ? 0 : 1);
  }
  char reply = 0;
  ASSERT_EQ(read(toParent[0], &reply, 1), 1);
  ASSERT_EQ(reply, 'y');

  _Io_File file = openOk(path, KEP_IO_READ_WRITE);
  EXPECT_EQ(_KepIODBLock(file.fd, 0), KEP_IO_LOCK_FAILED);
  auto start = Clock::now();
  EXPECT_EQ(_KepIODBLock(file.fd, 1), KEP_IO_LOCK_FAILED);
  EXPECT_GE(Clock::now() - start, milliseconds(290)) << "a timed lock waits and tries again";
  _Io_File shared;
  EXPECT_EQ(__KepIOCreate(path.c_str(), KEP_IO_READ, 0644, &shared), KEP_IO_SHARING)
      << "the shared lock on byte 1 conflicts with the child's";

  ASSERT_EQ(write(toChild[1], "g", 1), 1);
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
  // Refused opens, and a lock that cannot be taken (write-only with the lock's
  // read-write is access mode 3), close what they opened.
  TempDir dir;
  std::string path = writeFile(dir.file("cycled"), "some bytes");
  std::string missing = dir.file("missing");
  long before = openDescriptors();
  char buffer[16];
  for (int i = 0; i < 3000; ++i) {
    _Io_File file = openOk(path, KEP_IO_READ);
    uint16_t count = 0;
    _KepIORead(&file, KEP_IO_CURRENT, sizeof buffer, buffer, &count);
    _Io_File refused;
    EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_LOCK_EXCLUSIVE, &refused, 1), KEP_IO_SHARING);
    ASSERT_EQ(_KepIOClose(&file), 0u);
    EXPECT_EQ(__KepIOOpen(missing.c_str(), KEP_IO_READ, &refused, 1), KEP_IO_NOT_FOUND);
    EXPECT_EQ(__KepIOOpen(path.c_str(), KEP_IO_WRITE | KEP_IO_LOCK_EXCLUSIVE, &refused, 1),
              KEP_IO_LOCK_FAILED);
  }
  for (int i = 0; i < 300; ++i) {
    signed char bytes[4];
    ASSERT_EQ(KepFile(KepString(path.c_str())).read(bytes, 0, 4), 4);
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(_KepIOOpenCount(path.c_str()) + _KepIOOpenCount(missing.c_str()), 0u);
}
