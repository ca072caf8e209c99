// Replays the committed seed corpora of the text fuzz targets through the same
// checks the fuzzers run, so every normal test run covers them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/TextFuzzHarness.h"

namespace {

void replay(std::string const& target, bool (*check)(uint8_t const*, size_t)) {
  int files = 0;
  std::error_code error;
  for (auto const& entry : std::filesystem::directory_iterator(
           std::string(KEP_FUZZ_CORPUS_DIR) + "/" + target, error)) {
    std::ifstream in(entry.path(), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_TRUE(check(reinterpret_cast<uint8_t const*>(bytes.data()), bytes.size()))
        << entry.path();
    ++files;
  }
  EXPECT_GT(files, 0) << "no seed corpus for " << target;
}

}  // namespace

TEST(TextCorpusReplay, FromB64) { replay("fuzz_from_b64", kepfuzz::fromB64); }

TEST(TextCorpusReplay, Tokenizer) { replay("fuzz_tokenizer", kepfuzz::tokenizer); }

TEST(TextCorpusReplay, String8) { replay("fuzz_string8", kepfuzz::string8); }
