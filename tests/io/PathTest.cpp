// Path builders over 1024-byte buffers, the character helpers, wildcard matching
// and the extended path forms.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "io/IOTestUtil.h"
#include "kep/Kep.h"
#include "support/KepTestSupport.h"

using namespace iotest;
using keptest::TempDir;

TEST(PathBuild, ComponentsAreJoinedWithOneSeparator) {
  struct Case {
    char const *a, *b, *c, *d, *want;
  };
  char out[KEP_IO_PATH_MAX];
  for (Case k :
       {Case{"/usr", "lib/", nullptr, "kep", "/usr/lib/kep"},
        Case{nullptr, "a", nullptr, "b", "a/b"}, Case{"/", "etc", nullptr, nullptr, "/etc"},
        Case{"", "x", nullptr, nullptr, "x"},  // no separator after an empty text
        Case{nullptr, nullptr, nullptr, nullptr, ""}}) {
    EXPECT_EQ(written(_KepIOPathBuild(k.a, k.b, k.c, k.d, out), out), k.want);
  }
  EXPECT_EQ(_KepIOPathBuild("a", nullptr, nullptr, nullptr, nullptr), KEP_IO_NOT_FOUND);
  std::strcpy(out, "/base");
  EXPECT_EQ(written(_KepIOPathModify(out, "dir", "file.txt", out), out), "/base/dir/file.txt")
      << "in place";
  EXPECT_EQ(written(_KepIOPathModify(nullptr, "b", "c", out), out), "b/c");
}

TEST(PathBuild, ResultsOfMoreThan1024BytesAreRefusedWithoutOverrun) {
  std::string base(1020, 'p');
  char out[KEP_IO_PATH_MAX + 16];  // with a guard past the 1024 bytes
  std::memset(out, '#', sizeof out);
  std::strcpy(out, "untouched");
  EXPECT_EQ(_KepIOPathBuild(base.c_str(), "abcd", nullptr, nullptr, out), KEP_IO_PATH_TOO_LONG);
  EXPECT_STREQ(out, "untouched");
  EXPECT_EQ(_KepIOPathModify(base.c_str(), "x", "y", out), KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(written(_KepIOPathModify(base.c_str(), "ab", nullptr, out), out).size(), 1023u)
      << "1023 bytes fit";
  EXPECT_EQ(_KepIOPathModify(out, "", nullptr, out), KEP_IO_PATH_TOO_LONG)
      << "even a bare separator no longer fits";

  // An input without a terminator within 1024 bytes is too long, not read on.
  std::string unterminated(2000, 'u');
  EXPECT_EQ(_KepIOPathBuild(unterminated.c_str(), nullptr, nullptr, nullptr, out),
            KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(_KepIOPathCopy(unterminated.c_str(), out), KEP_IO_PATH_TOO_LONG);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(std::string(out + KEP_IO_PATH_MAX, 16), std::string(16, '#'));
  EXPECT_TRUE(KepPath(KepString(base.c_str())).append(KepString("abcd")).isNull());
}

TEST(PathReduce, SplitsAtTheFileNameAndExtractsNames) {
  // The plain form splits at the last separator; the extended one ignores
  // trailing separators, keeps the root and checks the sizes of its buffers.
  struct Case {
    char const *path, *dir, *name;
  };
  char dir[KEP_IO_PATH_MAX];
  char name[KEP_IO_PATH_MAX];
  for (Case c : {Case{"/var/log/syslog", "/var/log", "syslog"}, Case{"plain", "", "plain"},
                 Case{"/top", "", "top"}, Case{"a/b/", "a/b", ""}}) {
    EXPECT_EQ(written(_KepIOPathReduce(c.path, dir, name), dir) + "|" + name,
              std::string(c.dir) + "|" + c.name)
        << c.path;
  }
  for (Case c : {Case{"/a/b//", "/a", "b"}, Case{"/a", "/", "a"}, Case{"//", "/", ""},
                 Case{"a//b", "a", "b"}}) {
    EXPECT_EQ(written(_KepIOPathReduceExt(c.path, dir, sizeof dir, name, 8), dir) + "|" + name,
              std::string(c.dir) + "|" + c.name)
        << c.path;
  }
  EXPECT_EQ(_KepIOPathReduce("", dir, name), KEP_IO_REDUCE_EMPTY);
  std::strcpy(dir, "x/y/z");
  EXPECT_EQ(written(_KepIOPathReduce(dir, dir, name), dir) + "|" + name, "x/y|z") << "in place";
  EXPECT_EQ(_KepIOPathReduceExt("/d/longname", dir, sizeof dir, name, 8), KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(_KepIOPathBuildExt("ab", "c", nullptr, nullptr, name, 3), KEP_IO_PATH_TOO_LONG);
  EXPECT_EQ(written(_KepIOPathBuildExt("a", "", nullptr, nullptr, name, 3), name), "a/");

  // A record's own path wins over the path given.
  _Io_File record{-1, const_cast<char*>("/from/record.dat"), 17};
  EXPECT_EQ(written(_KepIOExtractName(&record, "/ignored/path", name), name), "record.dat");
  EXPECT_EQ(written(_KepIOExtractName(nullptr, "/some/path", name), name), "path");
}

TEST(PathCharacters, SingleByteLanguageAndDoubleByteScanning) {
  char const* text = "a\x82\xA0/b";
  unsigned short const sjis = KEP_IO_LANGUAGE_SHIFT_JIS;
  // Shift-JIS leaves a gap at 0xA0 ... 0xDF that other double-byte languages lead with.
  EXPECT_EQ(__KepIOIsDBCSLead(sjis, 0xA0) * 2 + __KepIOIsDBCSLead(18, 0xA0), 1u);
  EXPECT_EQ(__KepIOCharCount(KEP_IO_LANGUAGE, text), 5);
  EXPECT_EQ(__KepIOCharCount(sjis, text), 4);
  EXPECT_EQ(__KepIOGetNextChar(sjis, text + 1), text + 3);
  EXPECT_EQ(__KepIOGetPrevChar(sjis, text, text + 3), text + 1);
  EXPECT_EQ(__KepIOGetPrevChar(KEP_IO_LANGUAGE, text, text), text);
  char const* dangling = "x\x82";  // a lead byte right before the terminator
  EXPECT_EQ(__KepIOGetNextChar(sjis, dangling + 1), dangling + 2);
  EXPECT_EQ(__KepIOCharCount(sjis, dangling), 2);
  EXPECT_STREQ(__KepIOFindExtensionStart(KEP_IO_LANGUAGE, "/a.d/b.tar.gz"), ".gz");
  EXPECT_STREQ(__KepIOFindExtensionStart(KEP_IO_LANGUAGE, "/a.d/.profile"), "");
}

TEST(PathMatch, StarsAndQuestionMarksMatchWholeNames) {
  std::string longName(4000, 'a');
  struct Case {
    char const *pattern, *name;
    bool match;
    unsigned short language = KEP_IO_LANGUAGE;
  };
  Case const cases[] = {{"*", "", true},
                        {"", "", true},
                        {"", "a", false},
                        {"*.txt", "notes.txt.bak", false},
                        {"a*b*c", "aXXbYYbZc", true},
                        {"a*b*c", "aXXbYYbZ", false},
                        {"??.log", "ab.log", true},
                        {"??.log", "abc.log", false},
                        {"**a**", "bab", true},
                        {"Notes", "notes", false},  // case matters
                        {nullptr, "x", false},
                        // Long runs of stars against a non-matching name finish quickly.
                        {"*a*a*a*a*a*a*a*a*b", longName.c_str(), false},
                        // "?" takes a whole double-byte character in a double-byte language.
                        {"x?y", "x\x82\xA0y", true, KEP_IO_LANGUAGE_SHIFT_JIS},
                        {"x?y", "x\x82\xA0y", false}};
  for (Case const& c : cases) {
    EXPECT_EQ(__KepIODBCSStrMatch(c.language, c.pattern, c.name) != 0, c.match)
        << (c.pattern ? c.pattern : "null") << " against " << std::string(c.name).substr(0, 20);
  }
}

TEST(PathExtended, StorageStringsUniqueNamesAndNamesCutTo31Bytes) {
  char out[KEP_IO_PATH_MAX];
  EXPECT_EQ(written(_KepIOPathToStorageString("/../../a/./b//c/../d/", out), out), "/a/b/d");
  EXPECT_EQ(written(_KepIOPathToStorageString("/../..", out), out), "/");
  EXPECT_EQ(written(_KepIOPathToStorageString("sub/../x", out), out),
            (std::filesystem::current_path() / "x").lexically_normal().string());

  TempDir dir;
  std::set<std::string> names;
  for (int i = 0; i < 50; ++i) {
    ASSERT_EQ(_KepIOCreateUniqueName(dir.path().c_str(), "tmp", ".dat", out), 0u);
    EXPECT_TRUE(present(out));
    names.insert(out);
  }
  EXPECT_EQ(names.size(), 50u);
  EXPECT_EQ(std::string(out).rfind(dir.path() + "/tmp", 0), 0u) << out;
  EXPECT_EQ(std::strlen(out), dir.path().size() + 1 + 3 + 8 + 4);
  EXPECT_EQ(_KepIOCreateUniqueName(dir.file("missing").c_str(), "t", nullptr, out),
            KEP_IO_NOT_FOUND);

  // Names are cut to 31 bytes keeping the extension; a renaming that would
  // replace a file takes a "~n" name instead.
  EXPECT_EQ(written(_KepIOPath31CreatePrim("/d", "short.txt", out), out), "/d/short.txt");
  EXPECT_EQ(
      written(_KepIOPath31CreatePrim("/d", "a-very-long-file-name-for-testing.document", out), out),
      "/d/a-very-long-file-name-.document");
  std::string first = dir.file("report-of-the-year-two-thousand-and-four.txt");
  std::string cut = dir.file("report-of-the-year-two-thou.txt");
  EXPECT_EQ(written(__KepIORename31Unique(writeFile(first, "1").c_str(), out), out), cut);
  EXPECT_EQ(written(__KepIORename31Unique(writeFile(first, "2").c_str(), out), out),
            dir.file("report-of-the-year-two-th~1.txt"));
  EXPECT_EQ(readFile(cut) + readFile(out), "12") << "nothing was replaced";
  EXPECT_FALSE(present(first));
  EXPECT_EQ(written(__KepIORename31Unique(cut.c_str(), out), out), cut) << "short names stay";
}
