// File and path objects over the file layer.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/IOTestUtil.h"
#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using namespace iotest;
using keptest::TempDir;

namespace {

KepString text(std::string const& s) { return KepString(s.c_str()); }
bool failedWith(KepFile const& f, uint32_t code) { return f.getError() == static_cast<int>(code); }

// isFile, isDirectory, canRead, canWrite of a file object.
std::vector<unsigned long> kinds(KepFile const& f) {
  return {f.isFile(), f.isDirectory(), f.canRead(), f.canWrite()};
}

}  // namespace

TEST(FileStream, OpensOnFirstUseForReadingOrWritingAndClosesWithTheLastHandle) {
  TempDir dir;
  std::string path = dir.file("out.txt");
  KepFile missing(text(dir.file("missing")));
  EXPECT_EQ(missing.read(), -1);
  EXPECT_TRUE(failedWith(missing, KEP_IO_NOT_FOUND));
  {
    KepFile out(text(path));
    EXPECT_EQ(out.exists(), 0u);
    EXPECT_EQ(out.writeLine(KepString("hello")), 6);
    EXPECT_EQ(out.exists(), 1u) << "the first write created the file";
    signed char buffer[4];
    EXPECT_EQ(out.read(buffer, 0, 4), -1) << "opened for writing only";
  }
  EXPECT_EQ(readFile(path), "hello\n");
  EXPECT_EQ(_KepIOOpenCount(path.c_str()), 0u);
  KepFile in(text(path));
  EXPECT_EQ(in.readLine().toStdString(), "hello");
  EXPECT_EQ(in.write("x"), 0) << "opened for reading only";
  EXPECT_TRUE(failedWith(in, KEP_IO_SHARING));
  in.close();
  EXPECT_EQ(in.read(), -1) << "closed until opened again";
  KepFile again(text(path));
  EXPECT_EQ(again.write("new"), 3);
  again.close();
  EXPECT_EQ(readFile(path), "new") << "writing truncates an existing file";

  KepFile file(text(dir.file("modes")));
  ASSERT_EQ(file.open(KepFile::kReadWrite), 1u);
  EXPECT_EQ(file.write("0123456789"), 10);
  EXPECT_EQ(file.seek(2, KEP_IO_SEEK_SET), 2);
  file.mark(0);
  EXPECT_EQ(file.skip(100), 8) << "up to the end";
  EXPECT_EQ(file.reset(), 1u);
  EXPECT_EQ(file.read(), '2');
  EXPECT_EQ(file.setLength(4), 1u);
  EXPECT_EQ(file.setLength(40), 0u);
  EXPECT_TRUE(failedWith(file, KEP_IO_TRUNCATE_BEYOND_END));
  ASSERT_EQ(file.open(KepFile::kAppend), 1u);
  EXPECT_EQ(file.write("ab"), 2);
  ASSERT_EQ(file.open(KepFile::kRead), 1u);
  EXPECT_EQ(file.readText(-1).toStdString(), "0123ab");
  EXPECT_EQ(file.open(99), 0u);
  EXPECT_EQ(file.isOpen(), 0u) << "a failed open leaves the file closed";
  EXPECT_EQ(KepFile(text(dir.path())).open(KepFile::kRead), 1u) << "directories open for reading";

  // Copies between files and memory streams, in several pieces.
  std::string content(70000, '\0');
  for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i % 251);
  KepFile source(text(writeFile(dir.file("source"), content)));
  KepStringBufferIOStream memory;
  EXPECT_EQ(source.into(memory, -1, 1), 70000);
  KepFile target(text(dir.file("target")));
  EXPECT_EQ(memory.into(target, -1, 0), 70000);
  target.close();
  EXPECT_EQ(readFile(dir.file("target")), content);
}

TEST(FileOperations, KindsTimesCreationRemovalRenamingCopyingAndLocks) {
  TempDir dir;
  KepFile file(text(dir.file("a.txt")));
  EXPECT_EQ(file.createNewFile(), 1u);
  EXPECT_EQ(file.createNewFile(), 0u);
  EXPECT_EQ(kinds(file), (std::vector<unsigned long>{1, 0, 1, 1}));
  EXPECT_EQ(file.setLastModified(1500000000), 1u);
  EXPECT_EQ(file.lastModified(), 1500000000u);
  EXPECT_EQ(file.copyTo(text(dir.file("b.txt"))), 1u);
  ASSERT_EQ(file.open(KepFile::kRead), 1u);
  EXPECT_EQ(file.renameTo(text(dir.file("c.txt"))), 1u);
  EXPECT_EQ(file.isOpen(), 0u) << "renaming closes the file";
  EXPECT_EQ(kinds(file), (std::vector<unsigned long>{0, 0, 0, 0})) << "the object keeps its path";

  KepFile folder(text(dir.path()));
  KepStringBuffer names(KepString(""));
  EXPECT_EQ(folder.list(KepString("?.txt"), names), 2);
  EXPECT_EQ(names.toString().toStdString(), "b.txt\nc.txt\n");
  EXPECT_EQ(folder.list(KepString(), names), 2) << "no pattern lists everything";
  KepFile temp = folder.createTempFile(KepString("tmp-"), KepString(".part"));
  ASSERT_FALSE(temp.isNull());
  EXPECT_EQ(temp.getName().toStdString().rfind("tmp-", 0), 0u);
  EXPECT_EQ(temp.remove(), 1u);

  KepFile nested(text(dir.file("x/y/z")));
  EXPECT_EQ(nested.mkdir(), 0u) << "the plain form makes no parent";
  EXPECT_EQ(nested.mkdirs(), 1u);
  EXPECT_EQ(kinds(nested), (std::vector<unsigned long>{0, 1, 1, 1}));
  writeFile(dir.file("x/y/z/leaf"), "l");
  KepFile top(text(dir.file("x")));
  EXPECT_EQ(top.remove(), 0u);
  EXPECT_EQ(top.removeAll(), 1u);
  EXPECT_EQ(top.exists(), 0u);

  KepFile db(text(dir.file("db")));
  EXPECT_EQ(db.lockRecord(0), 1u) << "opens the file read-write";
  EXPECT_EQ(db.isOpen(), 1u);
  EXPECT_EQ(db.unlockRecord(), 1u);
}

TEST(FilePath, PathPartsOfFilesAndPaths) {
  KepFile file(KepString("/srv/data/report.tar.gz"));
  EXPECT_EQ(file.getParent().toStdString(), "/srv/data");
  EXPECT_EQ(file.toPath().getExtension().toStdString(), "gz");
  EXPECT_TRUE(KepFile(KepString("bare")).getParentFile().isNull());
  EXPECT_EQ(KepFile(KepString("/a/./b/../c")).getAbsolutePath().toStdString(), "/a/c");

  KepPath path(KepString("/usr/lib/"));
  EXPECT_EQ(path.getName().toStdString(), "lib") << "a trailing separator is not a name";
  KepPath child = path.append(KepString("libkep.so"));
  EXPECT_EQ(child.toString().toStdString(), "/usr/lib/libkep.so");
  EXPECT_EQ(child.equals(KepPath(KepString("/usr/lib/libkep.so"))), 1u);
  EXPECT_EQ(child.equals(path), 0u);
  EXPECT_EQ(KepPath(KepString("rel")).isAbsolute(), 0u);
  EXPECT_EQ(KepPath(KepString("/x/../y")).toAbsolute().toString().toStdString(), "/y");
  EXPECT_TRUE(KepPath(KepString("")).getName().isNull());
  KepPath factoryMade(KepGetObject(KepClassID::Path, 0));
  ASSERT_FALSE(factoryMade.isNull());
  EXPECT_EQ(factoryMade.toString().length(), 0);
}
