// The kep tool, run as a child process; the expected answers come from the
// library in this process.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

struct Result {
  int status = -1;  // the exit status; -1 when the tool did not exit normally
  std::string out;
  std::string err;
};

std::string readAll(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// Runs `kep` with `args` (each quoted for the shell); standard output is kept in
// `out`, standard error in `err`.
Result runKep(std::vector<std::string> const& args) {
  keptest::TempDir dir;
  std::string command = std::string("'") + KEP_TOOL + "'";
  for (auto const& a : args) command += " '" + a + "'";
  command += " 2>'" + dir.file("err") + "'";
  Result r;
  FILE* child = popen(command.c_str(), "r");
  if (child == nullptr) return r;
  char buffer[4096];
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, child)) > 0) r.out.append(buffer, n);
  int raw = pclose(child);
  if (raw != -1 && WIFEXITED(raw)) r.status = WEXITSTATUS(raw);
  r.err = readAll(dir.file("err"));
  return r;
}

std::string hex(int tag) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(tag));
  return text;
}

TEST(KepTool, WithoutArgumentsPrintsUsageAndRejectsWhatItDoesNotKnow) {
  Result bare = runKep({});
  EXPECT_EQ(bare.status, 0);
  EXPECT_EQ(bare.out.rfind("usage: kep", 0), 0u) << bare.out;
  for (auto const& command : {"version", "tag"}) {
    EXPECT_NE(bare.out.find(std::string("kep ") + command), std::string::npos) << command;
  }
  for (std::vector<std::string> const& wrong : {std::vector<std::string>{"frobnicate"},
                                                {"version", "extra"},
                                                {"tag"},
                                                {"tag", ""},
                                                {"tag", "a", "b"},
                                                {"xml"}}) {
    Result r = runKep(wrong);
    EXPECT_EQ(r.status, 2) << wrong[0];
    EXPECT_TRUE(r.out.empty()) << r.out;
    EXPECT_NE(r.err.find("usage: kep"), std::string::npos) << r.err;
  }
}

TEST(KepTool, VersionIsTheLibraryVersion) {
  int major = -1;
  int minor = -1;
  KepVersion(&major, &minor);
  Result r = runKep({"version"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "libKep11 " + std::to_string(major) + "." + std::to_string(minor) + "\n");
}

TEST(KepTool, TagLooksUpBothWays) {
  // Tags of every built-in range: the vocabulary below the classes, the library's
  // classes, the words after them, and the classes outside namespace 4.
  for (int number : {1, 33000, 39800, 42000, 50000, 58000, 0x40010, 0x400d6, 0x40800, 0x1a2}) {
    std::string name = KepProcess::tagToName(number).toStdString();
    ASSERT_FALSE(name.empty()) << number;
    int tag = KepProcess::nameToTag(KepString(name.c_str()));
    ASSERT_EQ(tag, number) << name;
    std::string line = name + " " + hex(tag) + " (" + std::to_string(tag) + ")\n";
    for (std::string const& word : {name, hex(tag), std::to_string(tag)}) {
      Result r = runKep({"tag", word});
      EXPECT_EQ(r.status, 0) << word << ": " << r.err;
      EXPECT_EQ(r.out, line) << word;
    }
  }
  std::string zero = KepProcess::tagToName(0).toStdString();
  ASSERT_FALSE(zero.empty());
  EXPECT_EQ(runKep({"tag", zero}).out, zero + " 0x0 (0)\n") << "tag 0 is a tag like the others";
  EXPECT_EQ(runKep({"tag", "0X40024"}).out, runKep({"tag", "0x40024"}).out);
}

TEST(KepTool, UnknownTagsFailWithAMessage) {
  // A name nobody uses, and a tag number with no name.
  ASSERT_EQ(KepProcess::nameToTag(KepString("NoSuchTagAnywhere")), 0);
  int unnamed = 0x7ffffff0;
  ASSERT_TRUE(KepProcess::tagToName(unnamed).isNull());
  Result name = runKep({"tag", "NoSuchTagAnywhere"});
  EXPECT_EQ(name.status, 1);
  EXPECT_TRUE(name.out.empty());
  EXPECT_NE(name.err.find("NoSuchTagAnywhere"), std::string::npos) << name.err;
  for (std::string const& word : {hex(unnamed), std::to_string(unnamed), std::string("-1")}) {
    Result r = runKep({"tag", word});
    EXPECT_EQ(r.status, 1) << word;
    EXPECT_NE(r.err.find("no name"), std::string::npos) << r.err;
  }
  // Words that start like numbers but are none, or do not fit in 32 bits.
  for (char const* word : {"0x", "0x1g", "12ab", "0x100000000", "4294967296", "-2147483649"}) {
    Result r = runKep({"tag", word});
    EXPECT_EQ(r.status, 2) << word;
    EXPECT_NE(r.err.find("not a tag number"), std::string::npos) << word << ": " << r.err;
  }
}

}  // namespace
