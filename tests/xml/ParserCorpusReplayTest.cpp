// Replays the committed seed corpus of the parser's fuzz target through the
// check the fuzzer runs, so every normal test run covers it.
#include <gtest/gtest.h>

#include <dirent.h>

#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/ParserFuzzHarness.h"

TEST(ParserCorpusReplay, EverySeedParsesToAConsistentTreeOrNothing) {
  std::string dir = std::string(KEP_FUZZ_CORPUS_DIR) + "/fuzz_parser";
  int seeds = 0;
  if (DIR* d = opendir(dir.c_str())) {
    while (dirent* e = readdir(d)) {
      if (e->d_name[0] == '.') continue;
      std::ifstream in(dir + "/" + e->d_name, std::ios::binary);
      std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      EXPECT_TRUE(
          kepfuzz::buildObjects(reinterpret_cast<uint8_t const*>(bytes.data()), bytes.size()))
          << e->d_name;
      ++seeds;
    }
    closedir(d);
  }
  EXPECT_GE(seeds, 10);
}
