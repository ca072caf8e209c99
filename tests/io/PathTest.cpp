// Path builders over 1024-byte buffers, the character helpers, wildcard matching
// and the extended path forms.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "io/IOTestUtil.h"
#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using keptest::TempDir;

namespace {

// A 1024-byte buffer pre-filled with a marker to see what a call changed.
struct PathBuffer {
  PathBuffer() { std::memset(bytes, '#', sizeof bytes); }
  char bytes[KEP_IO_PATH_MAX + 16];
  // True when nothing beyond the 1024 bytes was touched.
  bool guardIntact() const {
    for (size_t i = KEP_IO_PATH_MAX; i < sizeof bytes; ++i) {
      if (bytes[i] != '#') return false;
    }
    return true;
  }
};

}  // namespace

TEST(PathBuild, ComponentsAreJoinedWithOneSeparator) {
  char out[KEP_IO_PATH_MAX];
  EXPECT_EQ(_KepIOPathBuild("/usr", "lib/", "kep", nullptr, out), 0u);
  EXPECT_STREQ(out, "/usr/lib/kep");
  EXPECT_EQ(_KepIOPathBuild(nullptr, "a", nullptr, "b", out), 0u);
  EXPECT_STREQ(out, "a/b");
  EXPECT_EQ(_KepIOPathBuild("/", "etc", nullptr, nullptr, out), 0u);
  EXPECT_STREQ(out, "/etc");
  EXPECT_EQ(_KepIOPathBuild("", "x", nullptr, nullptr, out), 0u);
  EXPECT_STREQ(out, "x") << "no separator after an empty text";
  EXPECT_EQ(_KepIOPathBuild(nullptr, nullptr, nullptr, nullptr, out), 0u);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(_KepIOPathBuild("a", nullptr, nullptr, nullptr, nullptr), KEP_IO_NOT_FOUND);

  std::strcpy(out, "/base");
  EXPECT_EQ(_KepIOPathModify(out, "dir", "file.txt", out), 0u) << "in place";
  EXPECT_STREQ(out, "/base/dir/file.txt");
  EXPECT_EQ(_KepIOPathModify(nullptr, "b", "c", out), 0u);
  EXPECT_STREQ(out, "b/c");
}

TEST(PathBuild, ResultsOfMoreThan1024BytesAreRefusedWithoutOverrun) {
  std::string base(1020, 'p');
  PathBuffer out;
  std::strcpy(out.bytes, "untouched");
  EXPECT_EQ(_KepIOPathBuild(base.c_str(), "abcd", nullptr, nullptr, out.bytes),
            KEP_IO_PATH_TOO_LONG);
  EXPECT_STREQ(out.bytes, "untouched");
  EXPECT_EQ(_KepIOPathModify(base.c_str(), "x", "y", out.bytes), KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(_KepIOPathModify(base.c_str(), "ab", nullptr, out.bytes), 0u) << "1023 bytes fit";
  EXPECT_EQ(std::strlen(out.bytes), 1023u);
  EXPECT_EQ(_KepIOPathModify(out.bytes, "", nullptr, out.bytes), KEP_IO_PATH_TOO_LONG)
      << "even a bare separator no longer fits";
  EXPECT_TRUE(out.guardIntact());

  // An input without a terminator within 1024 bytes is too long, not read on.
  std::string unterminated(2000, 'u');
  EXPECT_EQ(_KepIOPathBuild(unterminated.c_str(), nullptr, nullptr, nullptr, out.bytes),
            KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(_KepIOPathCopy(unterminated.c_str(), out.bytes), KEP_IO_PATH_TOO_LONG);
  EXPECT_STREQ(out.bytes, "");
  EXPECT_TRUE(out.guardIntact());
}

TEST(PathReduce, SplitsAtTheFileName) {
  char dir[KEP_IO_PATH_MAX];
  char name[KEP_IO_PATH_MAX];
  EXPECT_EQ(_KepIOPathReduce("/var/log/syslog", dir, name), 0u);
  EXPECT_STREQ(dir, "/var/log");
  EXPECT_STREQ(name, "syslog");
  EXPECT_EQ(_KepIOPathReduce("plain", dir, name), 0u);
  EXPECT_STREQ(dir, "");
  EXPECT_STREQ(name, "plain");
  EXPECT_EQ(_KepIOPathReduce("/top", dir, nullptr), 0u);
  EXPECT_STREQ(dir, "");
  EXPECT_EQ(_KepIOPathReduce("a/b/", dir, name), 0u);
  EXPECT_STREQ(dir, "a/b");
  EXPECT_STREQ(name, "");
  EXPECT_EQ(_KepIOPathReduce("", dir, name), KEP_IO_REDUCE_EMPTY);
  EXPECT_EQ(_KepIOPathReduce("a", nullptr, name), KEP_IO_NOT_FOUND);
  std::strcpy(dir, "x/y/z");
  EXPECT_EQ(_KepIOPathReduce(dir, dir, name), 0u) << "in place";
  EXPECT_STREQ(dir, "x/y");
  EXPECT_STREQ(name, "z");

  _Io_File record{-1, const_cast<char*>("/from/record.dat"), 17};
  EXPECT_EQ(_KepIOExtractName(&record, "/ignored/path", name), 0u);
  EXPECT_STREQ(name, "record.dat");
  EXPECT_EQ(_KepIOExtractName(nullptr, "/some/path", name), 0u);
  EXPECT_STREQ(name, "path");
  EXPECT_EQ(_KepIOExtractName(nullptr, nullptr, name), KEP_IO_BAD_HANDLE);
}

TEST(PathReduce, ExtendedFormIgnoresTrailingSeparatorsAndKeepsTheRoot) {
  char dir[KEP_IO_PATH_MAX];
  char name[8];
  EXPECT_EQ(_KepIOPathReduceExt("/a/b//", dir, sizeof dir, name, sizeof name), 0u);
  EXPECT_STREQ(dir, "/a");
  EXPECT_STREQ(name, "b");
  EXPECT_EQ(_KepIOPathReduceExt("/a", dir, sizeof dir, name, sizeof name), 0u);
  EXPECT_STREQ(dir, "/");
  EXPECT_EQ(_KepIOPathReduceExt("//", dir, sizeof dir, name, sizeof name), 0u);
  EXPECT_STREQ(dir, "/");
  EXPECT_STREQ(name, "");
  EXPECT_EQ(_KepIOPathReduceExt("a//b", dir, sizeof dir, name, sizeof name), 0u);
  EXPECT_STREQ(dir, "a");
  EXPECT_EQ(_KepIOPathReduceExt("/d/longname", dir, sizeof dir, name, sizeof name),
            KEP_IO_PATH_TOO_LONG)
      << "the name does not fit 8 bytes";
  char small[3];
  EXPECT_EQ(_KepIOPathBuildExt("ab", "c", nullptr, nullptr, small, sizeof small),
            KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(_KepIOPathBuildExt("a", "", nullptr, nullptr, small, sizeof small), 0u);
  EXPECT_STREQ(small, "a/");
  EXPECT_EQ(_KepIOPathModifyExt("a", "b", nullptr, small, sizeof small), KEP_IO_PATH_TOO_LONG);
}

TEST(PathCharacters, SingleByteLanguageAndDoubleByteScanning) {
  char const* text = "a\x82\xA0/b";
  EXPECT_EQ(__KepIOIsDBCSLead(KEP_IO_LANGUAGE, 0x82), 0u);
  EXPECT_EQ(__KepIOIsDBCSLead(KEP_IO_LANGUAGE_SHIFT_JIS, 0x82), 1u);
  EXPECT_EQ(__KepIOIsDBCSLead(KEP_IO_LANGUAGE_SHIFT_JIS, 0xA0), 0u);
  EXPECT_EQ(__KepIOIsDBCSLead(18, 0xA0), 1u);
  EXPECT_EQ(__KepIOCharCount(KEP_IO_LANGUAGE, text), 5);
  EXPECT_EQ(__KepIOCharCount(KEP_IO_LANGUAGE_SHIFT_JIS, text), 4);
  EXPECT_EQ(__KepIOGetNextChar(KEP_IO_LANGUAGE_SHIFT_JIS, text + 1), text + 3);
  EXPECT_EQ(__KepIOGetPrevChar(KEP_IO_LANGUAGE_SHIFT_JIS, text, text + 3), text + 1);
  EXPECT_EQ(__KepIOGetPrevChar(KEP_IO_LANGUAGE, text, text + 3), text + 2);
  EXPECT_EQ(__KepIOGetPrevChar(KEP_IO_LANGUAGE, text, text), text);
  char const* dangling = "x\x82";  // a lead byte right before the terminator
  EXPECT_EQ(__KepIOGetNextChar(KEP_IO_LANGUAGE_SHIFT_JIS, dangling + 1), dangling + 2);
  EXPECT_EQ(__KepIOCharCount(KEP_IO_LANGUAGE_SHIFT_JIS, dangling), 2);
  EXPECT_STREQ(__KepIOFindFileNameStart(KEP_IO_LANGUAGE, "/a/b.c"), "b.c");
  EXPECT_STREQ(__KepIOFindExtensionStart(KEP_IO_LANGUAGE, "/a.d/b.tar.gz"), ".gz");
  EXPECT_STREQ(__KepIOFindExtensionStart(KEP_IO_LANGUAGE, "/a.d/.profile"), "");
}

TEST(PathMatch, StarsAndQuestionMarksMatchWholeNames) {
  auto match = [](char const* pattern, char const* name) {
    return __KepIODBCSStrMatch(KEP_IO_LANGUAGE, pattern, name) != 0;
  };
  EXPECT_TRUE(match("*", ""));
  EXPECT_TRUE(match("*", "anything"));
  EXPECT_TRUE(match("", ""));
  EXPECT_FALSE(match("", "a"));
  EXPECT_TRUE(match("*.txt", "notes.txt"));
  EXPECT_FALSE(match("*.txt", "notes.txt.bak"));
  EXPECT_TRUE(match("a*b*c", "aXXbYYbZc"));
  EXPECT_FALSE(match("a*b*c", "aXXbYYbZ"));
  EXPECT_TRUE(match("??.log", "ab.log"));
  EXPECT_FALSE(match("??.log", "abc.log"));
  EXPECT_TRUE(match("**a**", "bab"));
  EXPECT_FALSE(match("Notes", "notes")) << "case matters";
  EXPECT_FALSE(match(nullptr, "x"));
  // Long runs of stars against a non-matching name finish quickly.
  std::string name(4000, 'a');
  EXPECT_FALSE(match("*a*a*a*a*a*a*a*a*b", name.c_str()));
  // "?" takes a whole double-byte character in a double-byte language.
  EXPECT_TRUE(__KepIODBCSStrMatch(KEP_IO_LANGUAGE_SHIFT_JIS, "x?y", "x\x82\xA0y") != 0);
  EXPECT_FALSE(__KepIODBCSStrMatch(KEP_IO_LANGUAGE, "x?y", "x\x82\xA0y") != 0);
}

TEST(PathExtended, StorageStringResolvesDotsAgainstTheCurrentDirectory) {
  char out[KEP_IO_PATH_MAX];
  EXPECT_EQ(_KepIOPathToStorageString("/a/./b//c/../d/", out), 0u);
  EXPECT_STREQ(out, "/a/b/d");
  EXPECT_EQ(_KepIOPathToStorageString("/../..", out), 0u);
  EXPECT_STREQ(out, "/");
  std::string current = std::filesystem::current_path().string();
  EXPECT_EQ(_KepIOPathToStorageString("sub/../x", out), 0u);
  EXPECT_EQ(std::string(out), (std::filesystem::path(current) / "x").lexically_normal().string());
  EXPECT_EQ(_KepIOPathToStorageString(nullptr, out), KEP_IO_NOT_FOUND);
}

TEST(PathExtended, UniqueNamesAreCreatedAndDistinct) {
  TempDir dir;
  std::set<std::string> names;
  for (int i = 0; i < 50; ++i) {
    char out[KEP_IO_PATH_MAX];
    ASSERT_EQ(_KepIOCreateUniqueName(dir.path().c_str(), "tmp", ".dat", out), 0u);
    std::string path(out);
    EXPECT_EQ(path.rfind(dir.path() + "/tmp", 0), 0u) << path;
    EXPECT_EQ(path.size(), dir.path().size() + 1 + 3 + 8 + 4);
    EXPECT_TRUE(iotest::present(path));
    names.insert(path);
  }
  EXPECT_EQ(names.size(), 50u);
  char out[KEP_IO_PATH_MAX];
  EXPECT_EQ(_KepIOCreateUniqueName(dir.file("missing").c_str(), "t", nullptr, out),
            KEP_IO_NOT_FOUND);
}

TEST(PathExtended, NamesAreCutTo31BytesKeepingTheExtension) {
  char out[KEP_IO_PATH_MAX];
  EXPECT_EQ(_KepIOPath31CreatePrim("/d", "short.txt", out), 0u);
  EXPECT_STREQ(out, "/d/short.txt");
  EXPECT_EQ(_KepIOPath31CreatePrim("/d", "a-very-long-file-name-for-testing.document", out), 0u);
  EXPECT_STREQ(out, "/d/a-very-long-file-name-.document");
  EXPECT_EQ(std::strlen(out) - 3, 31u);
  EXPECT_EQ(_KepIOPath31CreatePrim(nullptr, "x-0123456789012345678901234567890123456789", out), 0u);
  EXPECT_EQ(std::strlen(out), 31u);

  TempDir dir;
  std::string longName = "report-of-the-year-two-thousand-and-four.txt";
  std::string first = dir.file(longName);
  iotest::writeFile(first, "1");
  ASSERT_EQ(__KepIORename31Unique(first.c_str(), out), 0u);
  std::string cut = dir.file("report-of-the-year-two-thou.txt");
  EXPECT_EQ(std::string(out), cut);
  EXPECT_FALSE(iotest::present(first));
  iotest::writeFile(first, "2");
  ASSERT_EQ(__KepIORename31Unique(first.c_str(), out), 0u);
  EXPECT_EQ(std::string(out), dir.file("report-of-the-year-two-th~1.txt"));
  EXPECT_EQ(iotest::readFile(cut), "1") << "the first file was not replaced";
  EXPECT_EQ(iotest::readFile(out), "2");
  EXPECT_EQ(__KepIORename31Unique(cut.c_str(), out), 0u) << "short names stay";
  EXPECT_EQ(std::string(out), cut);
  EXPECT_EQ(__KepIORename31Unique(dir.file("gone").c_str(), out), KEP_IO_NOT_FOUND);
}
