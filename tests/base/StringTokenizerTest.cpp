// KepStringTokenizer: delimiters, returned delimiters, counting and the end.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kep/Kep.h"

namespace {

std::vector<std::string> tokensOf(KepStringTokenizer& t) {
  std::vector<std::string> out;
  while (t.hasMoreTokens()) out.push_back(t.nextToken().toStdString());
  return out;
}

using Tokens = std::vector<std::string>;

}  // namespace

TEST(StringTokenizer, SplitsAtAnyDelimiterAndReturnsThemOnlyWhenAsked) {
  unsigned short wideText[] = {'a', 0x2028, 'b', 0x00A0, 'c', 0};
  unsigned short wideDelims[] = {0x2028, 0x00A0, 0};
  struct Case {
    KepString text;
    KepString delimiters;
    int returnDelimiters;
    Tokens tokens;
  };
  Case const cases[] = {
      {KepString("a,,b"), KepString(","), 0, {"a", "b"}},
      {KepString("a,,b"), KepString(","), 1, {"a", ",", ",", "b"}},
      {KepString(",;,;"), KepString(";,"), 0, {}},
      {KepString("x y"), KepString(""), 0, {"x y"}},
      {KepString(wideText), KepString(wideDelims), 0, {"a", "b", "c"}},
  };
  for (Case const& c : cases) {
    KepStringTokenizer t(c.text, c.delimiters, c.returnDelimiters);
    EXPECT_EQ(t.countTokens(), static_cast<int>(c.tokens.size())) << c.text.toStdString();
    EXPECT_EQ(tokensOf(t), c.tokens) << c.text.toStdString();
    EXPECT_TRUE(t.nextToken().isNull()) << "past the end";
  }
  // The default delimiters, also for a null delimiter string, are space, tab,
  // newline and return.
  KepStringTokenizer t(KepString("  one\ttwo\r\nthree \f four "));
  EXPECT_EQ(tokensOf(t), (Tokens{"one", "two", "three", "\f", "four"}));
  KepStringTokenizer nullDelims(KepString("x y"), KepString());
  EXPECT_EQ(tokensOf(nullDelims), (Tokens{"x", "y"}));
}

TEST(StringTokenizer, CountingDoesNotMoveAndDelimitersCanChangeBetweenTokens) {
  KepStringTokenizer t(KepString("key=value; next=2"), KepString("="));
  EXPECT_EQ(t.countTokens(), 3);
  EXPECT_EQ(t.nextToken().toStdString(), "key");
  EXPECT_EQ(t.countTokens(), 2);
  EXPECT_EQ(t.nextToken(KepString(";")).toStdString(), "=value")
      << "the position stays on the old delimiter";
  EXPECT_EQ(t.nextToken(KepString(" =")).toStdString(), ";");
  EXPECT_EQ(KepString(t.nextElement()).toStdString(), "next");
  EXPECT_EQ(t.countTokens(), 1);
}
