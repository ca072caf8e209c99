// Replays the committed seed corpora of the text fuzz targets through the same
// checks the fuzzers run, so every normal test run covers them.
#include <gtest/gtest.h>

#include <dirent.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/TextFuzzHarness.h"

namespace {

std::vector<std::string> corpusFiles(std::string const& target) {
  std::string dir = std::string(KEP_FUZZ_CORPUS_DIR) + "/" + target;
  std::vector<std::string> files;
  if (DIR* d = opendir(dir.c_str())) {
    while (dirent* e = readdir(d)) {
      if (e->d_name[0] != '.') files.push_back(dir + "/" + e->d_name);
    }
    closedir(d);
  }
  return files;
}

void replay(std::string const& target, bool (*check)(uint8_t const*, size_t)) {
  std::vector<std::string> files = corpusFiles(target);
  ASSERT_FALSE(files.empty()) << "no seed corpus for " << target;
  for (std::string const& file : files) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_TRUE(check(reinterpret_cast<uint8_t const*>(bytes.data()), bytes.size())) << file;
  }
}

}  // namespace

TEST(TextCorpusReplay, FromB64) { replay("fuzz_from_b64", kepfuzz::fromB64); }

TEST(TextCorpusReplay, Tokenizer) { replay("fuzz_tokenizer", kepfuzz::tokenizer); }

TEST(TextCorpusReplay, String8) { replay("fuzz_string8", kepfuzz::string8); }
