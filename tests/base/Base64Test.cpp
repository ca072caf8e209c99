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
  struct Case {
    std::string bytes;
    char const* text;
  };
  for (Case const& c : {Case{"", ""}, Case{"M", "TQ=="}, Case{"Ma", "TWE="}, Case{"Man", "TWFu"},
                        Case{"Hello, world!", "SGVsbG8sIHdvcmxkIQ=="},
                        Case{std::string("\xfb\xff\xfe", 3), "+//+"}}) {
    EXPECT_EQ(encode(c.bytes), c.text);
    EXPECT_EQ(decode(c.text), std::make_pair(static_cast<int>(c.bytes.size()), c.bytes));
  }
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
    ASSERT_EQ(decode(text), std::make_pair(size, bytes));
  }
}

// Sanitizer builds turn any stray access in here into a failure.
TEST(Base64, MalformedInputStaysInsideTheArrays) {
  signed char* out = nullptr;
  EXPECT_EQ(ToB64(nullptr, 5, out), 0);
  EXPECT_NE(out, nullptr) << "an empty array, still to be deleted";
  delete[] out;
  EXPECT_EQ(FromB64(reinterpret_cast<signed char const*>("TWFu"), -4, out), 0);
  delete[] out;

  // A short last group counts as padded, the group before it is whole; padding
  // counts only in the last group; characters outside the alphabet are not refused.
  EXPECT_EQ(decode("TWE"), std::make_pair(2, std::string("Ma")));
  EXPECT_EQ((std::vector<int>{decode("T").first, decode("TWFuT").first, decode("====").first,
                              decode("TQ==TQ==").first, decode("!!!!").first}),
            (std::vector<int>{0, 3, 0, 4, 3}));
}
