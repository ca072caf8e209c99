// ToB64 / FromB64: the stated encodings, round trips over random data, and
// malformed input.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "kep/Kep.h"

namespace {

std::string encode(std::string const& bytes) {
  signed char* out = nullptr;
  int n = ToB64(reinterpret_cast<signed char const*>(bytes.data()), static_cast<int>(bytes.size()),
                out);
  std::string text(reinterpret_cast<char*>(out), static_cast<size_t>(n));
  delete[] out;
  return text;
}

// The decoded count and the bytes it covers.
std::pair<int, std::string> decode(std::string const& text) {
  signed char* out = nullptr;
  int n = FromB64(reinterpret_cast<signed char const*>(text.data()), static_cast<int>(text.size()),
                  out);
  std::string bytes(reinterpret_cast<char*>(out), static_cast<size_t>(n));
  delete[] out;
  return {n, bytes};
}

}  // namespace

TEST(Base64, StatedEncodings) {
  EXPECT_EQ(encode("Ma"), "TWE=");
  EXPECT_EQ(encode("M"), "TQ==");
  EXPECT_EQ(encode("Man"), "TWFu");
  EXPECT_EQ(encode(""), "");
  EXPECT_EQ(encode(std::string("\xfb\xff\xfe", 3)), "+//+") << "the last two alphabet digits";
  EXPECT_EQ(decode("TWE=").first, 2);
  EXPECT_EQ(decode("TWE=").second, "Ma");
  EXPECT_EQ(decode("TQ==").first, 1);
  EXPECT_EQ(decode("TWFu").second, "Man");
  EXPECT_EQ(decode("SGVsbG8sIHdvcmxkIQ==").second, "Hello, world!");
  EXPECT_EQ(decode("").first, 0);
}

TEST(Base64, RoundTripsRandomDataOfEveryRemainder) {
  std::mt19937 rng(11);
  for (int size = 0; size < 300; ++size) {
    std::string bytes(static_cast<size_t>(size), '\0');
    for (char& c : bytes) c = static_cast<char>(rng());
    std::string text = encode(bytes);
    ASSERT_EQ(text.size(), static_cast<size_t>((size + 2) / 3 * 4));
    ASSERT_EQ(
        text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="),
        std::string::npos);
    auto back = decode(text);
    ASSERT_EQ(back.first, size);
    ASSERT_EQ(back.second, bytes);
  }
}

TEST(Base64, NullAndNegativeSizesGiveEmptyArrays) {
  signed char* out = nullptr;
  EXPECT_EQ(ToB64(nullptr, 5, out), 0);
  EXPECT_NE(out, nullptr);
  delete[] out;
  EXPECT_EQ(ToB64(reinterpret_cast<signed char const*>("abc"), -1, out), 0);
  delete[] out;
  EXPECT_EQ(FromB64(nullptr, 8, out), 0);
  delete[] out;
  EXPECT_EQ(FromB64(reinterpret_cast<signed char const*>("TWFu"), -4, out), 0);
  delete[] out;
}

// Sanitizer builds turn any stray access in here into a failure.
TEST(Base64, MalformedInputStaysInsideTheArrays) {
  EXPECT_EQ(decode("T").first, 0) << "a short last group counts as padded";
  EXPECT_EQ(decode("TW").first, 1);
  EXPECT_EQ(decode("TWE").first, 2);
  EXPECT_EQ(decode("TWE").second, "Ma");
  EXPECT_EQ(decode("TWFuT").first, 3) << "the group before a short one is whole";
  EXPECT_EQ(decode("====").first, 0);
  EXPECT_EQ(decode("TQ==TQ==").first, 4) << "padding counts only in the last group";
  EXPECT_EQ(decode("!!!!").first, 3) << "characters outside the alphabet are not refused";

  std::mt19937 rng(5);
  for (int round = 0; round < 2000; ++round) {
    std::string junk(rng() % 23, '\0');
    for (char& c : junk) c = static_cast<char>(rng());
    auto result = decode(junk);
    ASSERT_GE(result.first, 0);
    ASSERT_LE(result.first, static_cast<int>(junk.size()));
  }
}
