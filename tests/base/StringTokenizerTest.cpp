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

TEST(StringTokenizer, FamilySizes) {
  EXPECT_EQ(0 KEP_METHODS_StringTokenizer(KEP_COUNT_METHOD), 6);
  EXPECT_EQ(0 KEP_METHODS_StringTokenizer(KEP_COUNT_BRACKETED), 3);
}

TEST(StringTokenizer, EmptyFieldsVanishUnlessDelimitersAreReturned) {
  KepStringTokenizer plain(KepString("a,,b"), KepString(","));
  EXPECT_EQ(plain.countTokens(), 2);
  EXPECT_EQ(tokensOf(plain), (Tokens{"a", "b"}));

  KepStringTokenizer returning(KepString("a,,b"), KepString(","), 1);
  EXPECT_EQ(returning.countTokens(), 4);
  EXPECT_EQ(tokensOf(returning), (Tokens{"a", ",", ",", "b"}));
}

TEST(StringTokenizer, DefaultDelimitersAreSpaceTabNewlineReturn) {
  KepStringTokenizer t(KepString("  one\ttwo\r\nthree \f four "));
  EXPECT_EQ(tokensOf(t), (Tokens{"one", "two", "three", "\f", "four"}));
  KepStringTokenizer nullDelims(KepString("x y"), KepString());
  EXPECT_EQ(tokensOf(nullDelims), (Tokens{"x", "y"}));
  KepStringTokenizer noDelims(KepString("x y"), KepString(""));
  EXPECT_EQ(tokensOf(noDelims), (Tokens{"x y"}));
}

TEST(StringTokenizer, OnlyDelimitersGiveNothing) {
  KepStringTokenizer t(KepString(",;,;"), KepString(";,"));
  EXPECT_EQ(t.countTokens(), 0);
  EXPECT_FALSE(t.hasMoreElements());
  EXPECT_TRUE(t.nextToken().isNull());
  EXPECT_TRUE(t.nextElement().isNull());

  KepStringTokenizer nothing{KepString()};
  EXPECT_EQ(nothing.countTokens(), 0);
  EXPECT_TRUE(nothing.nextToken().isNull());
}

TEST(StringTokenizer, CountingDoesNotMoveAndFollowsTheWalk) {
  KepStringTokenizer t(KepString("a b  c"));
  EXPECT_EQ(t.countTokens(), 3);
  EXPECT_EQ(t.countTokens(), 3);
  EXPECT_EQ(t.nextToken().toStdString(), "a");
  EXPECT_EQ(t.countTokens(), 2);
  KepObject element = t.nextElement();
  EXPECT_EQ(element.getClassID(), KepClassID::String);
  EXPECT_EQ(KepString(element).toStdString(), "b");
  EXPECT_TRUE(t.hasMoreTokens());
  EXPECT_EQ(t.nextToken().toStdString(), "c");
  EXPECT_EQ(t.countTokens(), 0);
}

TEST(StringTokenizer, DelimitersCanChangeBetweenTokens) {
  KepStringTokenizer t(KepString("key=value; next=2"), KepString("="));
  EXPECT_EQ(t.nextToken().toStdString(), "key");
  EXPECT_EQ(t.nextToken(KepString(";")).toStdString(), "=value")
      << "the position stays on the old delimiter";
  EXPECT_EQ(t.nextToken(KepString(" =")).toStdString(), ";");
  EXPECT_EQ(t.nextToken().toStdString(), "next");
}

TEST(StringTokenizer, DelimitersBeyondAsciiAndWholeTextToken) {
  unsigned short text[] = {'a', 0x2028, 'b', 0x00A0, 'c', 0};
  unsigned short delims[] = {0x2028, 0x00A0, 0};
  KepStringTokenizer t{KepString(text), KepString(delims)};
  EXPECT_EQ(tokensOf(t), (Tokens{"a", "b", "c"}));

  KepString whole("whole");
  KepStringTokenizer single(whole, KepString(","));
  EXPECT_EQ(single.nextToken().getRealKepObj(), whole.getRealKepObj())
      << "a token that is the whole text is the same body";
}

TEST(StringTokenizer, NullHandleAnswersNeutrally) {
  KepStringTokenizer null;
  EXPECT_EQ(null.countTokens(), 0);
  EXPECT_FALSE(null.hasMoreTokens());
  EXPECT_TRUE(null.nextToken().isNull());
  KepStringTokenizer made(new KepRStringTokenizer);
  EXPECT_EQ(made.getClassID(), KepClassID::StringTokenizer);
  EXPECT_FALSE(made.hasMoreTokens());
}
