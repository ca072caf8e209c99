// Directories (recursive creation and removal, enumeration) and moving and
// copying files.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "io/IOTestUtil.h"
#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using namespace iotest;
using keptest::TempDir;
using Names = std::vector<std::string>;

namespace {

// The names an enumeration of `pattern` in `dir` gives, in order.
Names namesOf(std::string const& dir, char const* pattern) {
  Names names;
  void* handle = nullptr;
  char name[KEP_IO_PATH_MAX];
  for (uint32_t rc = _KepIOFindFirstMatch(dir.c_str(), pattern, &handle, name); rc == 0;
       rc = _KepIOFindNextMatch(handle, name)) {
    names.emplace_back(name);
  }
  EXPECT_EQ(_KepIOFindMatchClose(handle), 0u);
  return names;
}

}  // namespace

TEST(Directories, CreateMakesEveryMissingParentAndRemoveAllTakesTheTree) {
  TempDir dir;
  EXPECT_EQ(_KepIODirCreate(dir.file("one/two/three/").c_str()), 0u);
  EXPECT_TRUE(present(dir.file("one/two/three")));
  EXPECT_EQ(_KepIODirCreate(dir.file("one/two").c_str()), 0u) << "present already";
  EXPECT_EQ(__KepIODirCreate(dir.file("one").c_str()), KEP_IO_SHARING) << "the plain form refuses";
  EXPECT_EQ(__KepIODirCreate(dir.file("x/y").c_str()), KEP_IO_NOT_FOUND) << "no parent made";
  EXPECT_EQ(_KepIODirCreateForFile(dir.file("f/g/file.txt").c_str()), 0u);
  EXPECT_TRUE(present(dir.file("f/g")) && !present(dir.file("f/g/file.txt")));
  std::string blocker = writeFile(dir.file("blocker"), "a file in the way");
  EXPECT_NE(_KepIODirCreate((blocker + "/sub").c_str()), 0u);
  EXPECT_EQ(_KepIODirRemoveAll(blocker.c_str(), 0), KEP_IO_FAILED);
  EXPECT_EQ(_KepIODirRemove(dir.file("one").c_str()), KEP_IO_FAILED) << "not empty";
  EXPECT_EQ(_KepIODirRemove(dir.file("one/two/three").c_str()), 0u);

  TempDir outside;
  writeFile(outside.file("precious"), "keep me");
  std::string tree = dir.file("one");
  writeFile(tree + "/top.txt", "1");
  writeFile(tree + "/two/deep.txt", "2");
  ASSERT_EQ(symlink(outside.path().c_str(), (tree + "/two/link").c_str()), 0);
  EXPECT_EQ(_KepIODirRemoveAll(tree.c_str(), KEP_IO_KEEP_DIRECTORY), 0u);
  EXPECT_TRUE(present(tree) && !present(tree + "/two"));
  EXPECT_EQ(readFile(outside.file("precious")), "keep me") << "links are not followed";
  EXPECT_EQ(_KepIODirRemoveAll(tree.c_str(), 0), 0u);
  EXPECT_FALSE(present(tree));
  EXPECT_EQ(_KepIODirRemoveAll(tree.c_str(), 0), KEP_IO_NOT_FOUND);
}

TEST(Directories, EnumerationMatchesPatternsInNameOrder) {
  TempDir dir;
  writeFile(dir.file("b.txt"), "bb");
  writeFile(dir.file("a.txt"), "a");
  writeFile(dir.file("c.log"), "ccc");
  writeFile(dir.file(".hidden.txt"), "");
  ASSERT_EQ(__KepIODirCreate(dir.file("sub.txt").c_str()), 0u);
  EXPECT_EQ(namesOf(dir.path(), "*.txt"), (Names{".hidden.txt", "a.txt", "b.txt", "sub.txt"}));
  EXPECT_EQ(namesOf(dir.path(), "?.*"), (Names{"a.txt", "b.txt", "c.log"}));
  EXPECT_EQ(namesOf(dir.path(), "*").size(), 5u) << "no . or .. entries";

  // The other interface gives each entry's size, attribute and time.
  void* handle = reinterpret_cast<void*>(1);
  _KEP_IO_FIND_INFO info;
  EXPECT_EQ(_KepIOFileFindFirst((dir.path() + "/*.none").c_str(), &handle, &info),
            KEP_IO_NOT_FOUND);
  EXPECT_EQ(handle, nullptr);
  ASSERT_EQ(_KepIOFileFindFirst((dir.path() + "/?.*").c_str(), &handle, &info), 0u);
  ASSERT_EQ(_KepIOFileFindNext(handle, &info), 0u);
  EXPECT_STREQ(info.name, "b.txt");
  EXPECT_EQ(std::vector<unsigned long>({info.size, info.attribute}),
            std::vector<unsigned long>({2, 1}));
  ASSERT_EQ(_KepIOFileFindNext(handle, &info), 0u);
  EXPECT_STREQ(info.name, "c.log");
  EXPECT_EQ(_KepIOFileFindNext(handle, &info), KEP_IO_NOT_FOUND);
  EXPECT_EQ(_KepIOFileFindClose(handle), 0u);
  ASSERT_EQ(QbioFileFindFirstPattern(dir.path().c_str(), "sub*", &handle, &info), 0u);
  EXPECT_EQ(info.attribute, 0x20u);
  EXPECT_EQ(_KepIOFileFindClose(handle), 0u);
}

TEST(MoveAndCopy, CopyKeepsContentTimesAndModeLessWriteBitsAndNeverOntoItself) {
  TempDir dir;
  std::string content(100000, '\0');
  for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7);
  std::string source = writeFile(dir.file("source"), content);
  ASSERT_EQ(chmod(source.c_str(), 0664), 0);
  ASSERT_EQ(_KepIOSetFileGMTVAL(source.c_str(), nullptr, 1234567890), 0u);

  // Flag 2 keeps the mode, flag 1 alone drops every write bit, neither drops
  // the group's and others'.
  struct Case {
    char const* name;
    unsigned long flags;
    unsigned mode;
  };
  for (Case c : {Case{"keep", KEP_IO_READ_WRITE, 0664}, Case{"readonly", KEP_IO_WRITE, 0444},
                 Case{"owner", KEP_IO_READ, 0644}}) {
    std::string target = dir.file(c.name);
    EXPECT_EQ(_KepIOCopy(source.c_str(), KEP_IO_READ, target.c_str(), c.flags), 0u);
    EXPECT_EQ(readFile(target), content);
    EXPECT_EQ(modeOf(target), c.mode) << c.name;
    EXPECT_EQ(mtimeOf(target), 1234567890);
  }
  EXPECT_EQ(_KepIOCopy(source.c_str(), KEP_IO_READ, dir.file("keep").c_str(), 194),
            KEP_IO_COPY_DESTINATION)
      << "an exclusive destination must not exist";
  EXPECT_EQ(_KepIOCopy(dir.file("none").c_str(), KEP_IO_READ, dir.file("dest").c_str(),
                       KEP_IO_READ_WRITE),
            KEP_IO_NOT_FOUND);
  EXPECT_FALSE(present(dir.file("dest"))) << "a failed copy deletes its destination";
  EXPECT_EQ(_KepIOOpenCount(source.c_str()), 0u);

  // A copy onto the source itself, by its name or through a link, is refused
  // before anything is truncated.
  std::string link = dir.file("link");
  ASSERT_EQ(::link(source.c_str(), link.c_str()), 0);
  for (std::string const& same : {source, link, dir.path() + "/./source"}) {
    EXPECT_EQ(_KepIOCopy(source.c_str(), KEP_IO_READ, same.c_str(), KEP_IO_READ_WRITE),
              KEP_IO_COPY_DESTINATION)
        << same;
  }
  EXPECT_EQ(readFile(source), content) << "nothing of the source is lost";
}

TEST(MoveAndCopy, CopyPartialCopiesARangeBetweenPositions) {
  TempDir dir;
  _Io_File from;
  _Io_File to;
  std::string target = writeFile(dir.file("to"), "........");
  ASSERT_EQ(
      __KepIOOpen(writeFile(dir.file("from"), "0123456789abcdef").c_str(), KEP_IO_READ, &from, 1) |
          __KepIOOpen(target.c_str(), KEP_IO_READ_WRITE, &to, 1),
      0u);
  unsigned long copied = 0;
  EXPECT_EQ(_KepIOCopyPartial(&from, 3, &to, 2, 5, &copied), 0u);
  // Both files are left after the bytes copied; the rest follows from there,
  // as far as the source goes.
  EXPECT_EQ(_KepIOCopyPartial(&from, KEP_IO_CURRENT, &to, KEP_IO_CURRENT, 100, &copied),
            KEP_IO_SHORT_READ);
  EXPECT_EQ(copied, 8u);
  EXPECT_EQ(readFile(target), "..3456789abcdef");
  EXPECT_EQ(_KepIOCopyPartial(&from, 12, &to, 0, KEP_IO_ALL, &copied), 0u) << "all that is left";
  EXPECT_EQ(copied, 4u);
  EXPECT_EQ(readFile(target), "cdef56789abcdef");
  EXPECT_EQ(_KepIOClose(&to) | _KepIOClose(&from), 0u);
}

TEST(MoveAndCopy, MoveRenamesOrCopiesAcrossDevices) {
  TempDir dir;
  std::string from = writeFile(dir.file("from"), "moving");
  std::string source = dir.file("to");
  EXPECT_EQ(_KepIOMove(from.c_str(), source.c_str()), 0u);
  EXPECT_FALSE(present(from));
  EXPECT_EQ(readFile(source), "moving");
  EXPECT_EQ(_KepIOMove(from.c_str(), dir.file("other").c_str()), KEP_IO_MOVE_NOT_FOUND);

  struct stat here;
  struct stat shm;
  if (stat(dir.path().c_str(), &here) != 0 || stat("/dev/shm", &shm) != 0 ||
      here.st_dev == shm.st_dev) {
    GTEST_SKIP() << "/dev/shm is not another device here";
  }
  std::string away = "/dev/shm/kep-io-test-" + std::to_string(getpid());
  ASSERT_EQ(chmod(source.c_str(), 0640), 0);
  ASSERT_EQ(_KepIOSetFileGMTVAL(source.c_str(), nullptr, 1111111111), 0u);
  EXPECT_EQ(_KepIOMove(source.c_str(), away.c_str()), 0u);
  EXPECT_FALSE(present(source));
  EXPECT_EQ(readFile(away), "moving");
  EXPECT_EQ(modeOf(away), 0640u);
  EXPECT_EQ(mtimeOf(away), 1111111111);

  writeFile(source, "again");
  EXPECT_EQ(_KepIOMove(source.c_str(), away.c_str()), KEP_IO_MOVE_COPY_FAILED)
      << "the copy does not replace an existing destination";
  EXPECT_TRUE(present(source));
  ASSERT_EQ(__KepIODirCreate(dir.file("folder").c_str()), 0u);
  EXPECT_EQ(_KepIOMove(dir.file("folder").c_str(), (away + ".d").c_str()), KEP_IO_MOVE_DIRECTORY);
  unlink(away.c_str());
}
