// KepString: construction, comparison, search, hashing, case mapping, slicing and
// number formatting; KepStringTokenizer.
#include <gtest/gtest.h>

#include <charconv>
#include <climits>
#include <cstring>
#include <random>
#include <string>

#include "kep/Kep.h"

namespace {

std::u16string unitsOf(KepString const& s) {
  std::u16string out;
  for (int i = 0; i < s.length(); ++i) out.push_back(static_cast<char16_t>(s.charAt(i)));
  return out;
}

KepString fromUnits(std::u16string const& u) {
  return KepString(reinterpret_cast<unsigned short const*>(u.data()), 0,
                   static_cast<int>(u.size()));
}

KepString k(char const* text) { return KepString(text); }

KepRObject* bodyOf(KepObject const& h) { return h.getRealKepObj(); }

// The exact polynomial hash of the units at 0, step, 2 * step ..., taken mod 2^32.
uint32_t polynomial(std::u16string const& u, unsigned factor, size_t step) {
  unsigned __int128 exact = 0;
  for (size_t i = 0; i < u.size(); i += step) exact = exact * factor + u[i];
  return static_cast<uint32_t>(exact);
}

// The tokens left in a tokenizer.
std::vector<std::string> tokensOf(KepStringTokenizer& t) {
  std::vector<std::string> out;
  while (t.hasMoreTokens()) out.push_back(t.nextToken().toStdString());
  return out;
}

using Tokens = std::vector<std::string>;

}  // namespace

TEST(String, ConstructionWidensBytesUnsignedAndKeepsZeroUnitsInsideACount) {
  KepString latin("caf\xe9\xff");
  ASSERT_EQ(latin.length(), 5);
  EXPECT_EQ(latin.charAt(3), 0xE9) << "bytes are taken unsigned";
  EXPECT_EQ(latin.charAt(5), 0xFFFF) << "outside the string";
  // Count -1 is the length of the whole text from its start; what would lie past
  // the zero byte is zero units, never read.
  EXPECT_EQ(unitsOf(KepString("abc", 1, -1)), std::u16string(u"bc\0", 3));
  EXPECT_EQ(unitsOf(KepString("abc", 7, -1)), std::u16string(3, u'\0'));
  EXPECT_EQ(KepString("abc", 1, 10).toStdString(), "bc") << "a count stops at the zero byte";
  EXPECT_FALSE(KepString(static_cast<char const*>(nullptr)).isNull()) << "null text is empty";

  unsigned short units[] = {'a', 0, 'b', 0x263A, 0};
  EXPECT_EQ(unitsOf(KepString(units + 2, 1, -1)), std::u16string(u"\x263A\0", 2));
  EXPECT_EQ(unitsOf(KepString(units, 1, 3)), std::u16string(u"\0b\x263A", 3));
  EXPECT_EQ(KepString(static_cast<unsigned short const*>(nullptr), 0, 5).length(), 0);
}

TEST(String, NullArgumentsAreAbsent) {
  KepString null, s("abc");
  EXPECT_EQ(s.compareTo(null), -1);
  EXPECT_EQ(s.regionMatches(0, null, 0, 1), 0u);
  EXPECT_EQ(s.indexOf(null), -1);
  EXPECT_EQ(bodyOf(s.concat(null)), bodyOf(s)) << "concat of a null string is this string";
  KepObject plain(new KepRObject);
  EXPECT_EQ(s.indexOf(KepString(plain)), -1) << "a handle on another class counts as absent";
  EXPECT_EQ(s.equals(plain), 0u);
}

TEST(String, ComparisonsWalkToTheFirstDifferentUnit) {
  // A shorter string's terminator meets the other's unit; units compare unsigned.
  EXPECT_EQ((std::vector<int>{k("abc").compareTo(k("abc")), k("abd").compareTo(k("abc")),
                              k("ab").compareTo(k("abc")), k("abc").compareTo(k("ab")),
                              fromUnits(u"a\xFFFF").compareTo(k("a"))}),
            (std::vector<int>{0, 1, -'c', 'c', 0xFFFF}));
  // Differences far into long strings, on both sides of the 4-unit steps.
  std::string base(4099, 'q');
  for (size_t at : {0u, 3u, 4u, 4095u, 4098u}) {
    std::string other = base;
    other[at] = 'r';
    EXPECT_EQ(k(base.c_str()).compareTo(k(other.c_str())), 'q' - 'r') << at;
  }
  // Against bytes, which compare unsigned.
  signed char text[] = {'a', 'b', static_cast<signed char>(0xE9), 0};
  EXPECT_EQ(k("x").compareTo(static_cast<signed char const*>(nullptr)), 1);
  EXPECT_EQ(k("ab\xe9").compareTo(text), 0);
  EXPECT_EQ(k("ab").compareTo(text), -0xE9);

  EXPECT_TRUE(k("same").equals(KepObject(k("same"))));
  EXPECT_FALSE(k("").equalsIgnoreCase(k(""))) << "a region of length 0 never matches";
}

TEST(String, RegionMatchesEdges) {
  KepString s("Hello World"), w("WORLD");
  // Ignoring case: a match, a mismatch, length 0 (false), negative offsets,
  // regions running past this string or the other, the last unit of both, and a
  // huge length.
  EXPECT_EQ((std::vector<unsigned long>{
                s.regionMatches(1, 6, w, 0, 5), s.regionMatches(0, 6, w, 0, 5),
                s.regionMatches(1, 6, w, 0, 0), s.regionMatches(1, 0, s, 0, 0),
                s.regionMatches(1, -1, w, 0, 1), s.regionMatches(1, 0, w, -1, 1),
                s.regionMatches(1, 7, w, 0, 5), s.regionMatches(1, 6, w, 1, 5),
                s.regionMatches(1, 10, w, 4, 1), s.regionMatches(1, 0, w, 0, INT_MAX)}),
            (std::vector<unsigned long>{1, 0, 0, 0, 0, 0, 0, 0, 1, 0}));
  // Case-insensitive matching goes through upper case, then lower case of that.
  EXPECT_TRUE(fromUnits(u"\x01C5").regionMatches(1, 0, fromUnits(u"\x01C4"), 0, 1)) << "Dz, DZ";
  EXPECT_TRUE(k("K").regionMatches(1, 0, fromUnits(u"\x212A"), 0, 1)) << "Kelvin sign";
}

TEST(String, SearchEdges) {
  KepString s("abcabc"), p("prefix.suffix");
  // Starting positions before, inside and past the string; an empty argument is
  // never found forwards, and found at `from`, lowered to the length, backwards.
  EXPECT_EQ((std::vector<int>{s.indexOf(u'c', 3), s.indexOf(u'c', -7), s.indexOf(u'c', 6),
                              s.indexOf(k("abc"), 3), s.indexOf(k("abc"), 4),
                              s.indexOf(k("abcabcx")), s.indexOf(k(""))}),
            (std::vector<int>{5, 2, -1, 3, -1, -1, -1}));
  EXPECT_EQ((std::vector<int>{s.lastIndexOf(u'a', 2), s.lastIndexOf(u'a', 99),
                              s.lastIndexOf(u'a', -1), s.lastIndexOf(k("abc"), 2),
                              s.lastIndexOf(k("abc"), 99), s.lastIndexOf(k("abc"), -1),
                              s.lastIndexOf(k("")), s.lastIndexOf(k(""), 2)}),
            (std::vector<int>{0, 3, -1, 0, 3, -1, 6, 2}));
  EXPECT_EQ(
      (std::vector<unsigned long>{p.startsWith(k("suffix"), 7), p.startsWith(k("suffix"), 8),
                                  p.startsWith(k("pre"), -1), p.startsWith(k("")), p.endsWith(p),
                                  p.endsWith(k("")), k("x").endsWith(k("xx"))}),
      (std::vector<unsigned long>{1, 0, 0, 0, 1, 0, 0}));

  // Every position of a long text, found by the fast scan and checked by a plain one.
  std::mt19937 rng(7);
  std::u16string text;
  for (int i = 0; i < 300; ++i) text.push_back(static_cast<char16_t>(u'a' + rng() % 3));
  KepString t = fromUnits(text);
  auto found = [](size_t at) { return at == std::u16string::npos ? -1 : static_cast<int>(at); };
  for (size_t len : {1u, 2u, 5u}) {
    for (size_t from = 0; from < text.size(); from += 7) {
      std::u16string needle = text.substr((from * 31) % (text.size() - len), len);
      int at = static_cast<int>(from);
      EXPECT_EQ(t.indexOf(fromUnits(needle), at), found(text.find(needle, from)));
      EXPECT_EQ(t.lastIndexOf(fromUnits(needle), at), found(text.rfind(needle, from)));
      EXPECT_EQ(t.indexOf(static_cast<unsigned short>(needle[0]), at),
                found(text.find(needle[0], from)));
    }
  }
}

TEST(String, HashIsThePolynomialOfShortStringsAndOfAboutEightSamplesOfLongOnes) {
  EXPECT_EQ(k("").hashCode(), 0);
  // The largest short strings overflow 32 bits many times over.
  for (std::u16string u :
       {std::u16string(u"a"), std::u16string(15, u'\xFFFF'), std::u16string(u"fifteen units!!")}) {
    EXPECT_EQ(static_cast<uint32_t>(fromUnits(u).hashCode()), polynomial(u, 37, 1));
  }
  // 17 units: step 2, nine samples, the last at index 16.
  std::u16string odd(17, u'\xFFFF');
  EXPECT_EQ(static_cast<uint32_t>(fromUnits(odd).hashCode()), polynomial(odd, 39, 2));

  std::u16string text(4096, u'x');
  for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char16_t>(u'a' + i % 26);
  auto hashWithHashAt = [&text](size_t at) {
    std::u16string changed = text;
    changed[at] = u'#';
    return fromUnits(changed).hashCode();
  };
  int h = fromUnits(text).hashCode();
  // Units between the samples (every 512th) do not count.
  EXPECT_EQ((std::vector<int>{hashWithHashAt(1), hashWithHashAt(4095)}), std::vector<int>(2, h));
  EXPECT_NE(hashWithHashAt(512), h);
}

TEST(String, SlicingAnswersTheSameBodyWhenNothingChanges) {
  KepString abc("abc");
  EXPECT_EQ(abc.substring(3).length(), 0);
  // Ends out of order or outside the string give a null string.
  EXPECT_EQ((std::vector<KepRObject*>{bodyOf(abc.substring(2, 1)), bodyOf(abc.substring(-1, 2)),
                                      bodyOf(abc.substring(0, 4))}),
            std::vector<KepRObject*>(3, nullptr));
  EXPECT_EQ((std::vector<KepRObject*>{bodyOf(abc.substring(0, 3)), bodyOf(abc.trim()),
                                      bodyOf(abc.replace(u'z', u'y')), bodyOf(abc.concat(k("")))}),
            std::vector<KepRObject*>(4, bodyOf(abc)));
  EXPECT_EQ(k("\x20 in  side\x1f").trim().toStdString(), "in  side");
  EXPECT_EQ(fromUnits(u"\x00A0x\x00A0").trim().length(), 3) << "only units <= 0x20 are trimmed";
  EXPECT_EQ(k("banana").replace(u'a', u'o').toStdString(), "bonono");
}

TEST(String, CaseMappingUsesSimpleMappingsAndExpandsSharpS) {
  KepString word = fromUnits(u"Stra\u00DFe");
  EXPECT_EQ(unitsOf(word.toUpperCase()), u"STRASSE");
  EXPECT_EQ(unitsOf(fromUnits(u"\x0130\x03A3\x1E9E").toLowerCase()), u"i\x03C3\x00DF");
  EXPECT_EQ(unitsOf(k("MiXeD").toUpperCase(k("tr"))), u"MIXED") << "the locale is ignored";
}

TEST(String, BytesAndCharsCopyOut) {
  KepByteArray bytes = fromUnits(u"A\x00E9\x263A").getBytes();
  EXPECT_EQ(std::string(static_cast<char*>(bytes), 4), std::string("A\xE9\x3A\0", 4))
      << "narrowing keeps the low byte; a zero byte ends the copy";
  signed char out[8];
  std::memset(out, 'z', sizeof out);
  EXPECT_EQ(k("hello").getBytes(1, 4, out, 2), 5);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 6), std::string("zzell\0", 6));
}

TEST(String, ValueOfWritesEveryRadixWithItsPrefix) {
  EXPECT_EQ(KepString::valueOf(0, 16).toStdString(), "0x0");
  EXPECT_EQ(KepString::valueOf(LONG_MIN).toStdString(), std::to_string(LONG_MIN));
  EXPECT_EQ(KepString::valueOf(7UL).toStdString(), "1");
  EXPECT_EQ(KepString::valueOf(1.5f).toStdString(), "1.5000000e+00");
  EXPECT_EQ(KepString::valueOf(0.1L).toStdString(), "1.00000000000000006e-01");
  EXPECT_EQ(KepString::valueOf(42, 99).toStdString(), "42") << "an unusable radix is 10";

  // Non-negative values in every radix against std::to_chars (upper-cased digits).
  std::mt19937_64 rng(3);
  for (int radix = 2; radix <= 36; ++radix) {
    for (int round = 0; round < 20; ++round) {
      long value = static_cast<long>(rng() >> (round * 3 % 63 + 1));
      char text[80];
      std::string digits(text, std::to_chars(text, text + sizeof text, value, radix).ptr);
      for (char& c : digits) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      std::string prefix = radix == 16 ? "0x" : radix == 8 ? "0" : "";
      EXPECT_EQ(KepString::valueOf(value, radix).toStdString(), prefix + digits) << radix;
    }
  }
  // Negative values in radix 16 keep the signed remainders and pad with F.
  EXPECT_EQ(KepString::valueOf(-1, 16).toStdString(), "0xFFFFFFFFFFFFFFF/") << "'0' - 1";
  EXPECT_EQ(KepString::valueOf(-255L, 16).toStdString(), "0xFFFFFFFFFFFFFF!!");
}

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
      {KepString("x y"), KepString(), 0, {"x", "y"}},  // the default delimiters
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
}

TEST(StringTokenizer, CountingDoesNotMoveAndDelimitersCanChangeBetweenTokens) {
  KepStringTokenizer t(KepString("key=value; next=2"), KepString("="));
  EXPECT_EQ(t.nextToken().toStdString(), "key");
  EXPECT_EQ(t.countTokens(), 2);
  EXPECT_EQ(t.nextToken(KepString(";")).toStdString(), "=value")
      << "the position stays on the old delimiter";
  EXPECT_EQ(t.nextToken(KepString(" =")).toStdString(), ";");
  EXPECT_EQ(KepString(t.nextElement()).toStdString(), "next");
}
