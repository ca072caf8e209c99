// KepString: construction, comparison, search, hashing, case mapping, slicing and
// number formatting.
#include <gtest/gtest.h>

#include <charconv>
#include <climits>
#include <cstdio>
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

KepRObject* bodyOf(KepObject const& h) { return h.getRealKepObj(); }

}  // namespace

TEST(String, FamilyHasThirtyFiveUnbracketedBridges) {
  EXPECT_EQ(0 KEP_METHODS_String(KEP_COUNT_METHOD), 35);
  EXPECT_EQ(0 KEP_METHODS_String(KEP_COUNT_BRACKETED), 0);
}

TEST(String, EightBitConstructionWidensAndStopsAtTheTerminator) {
  KepString latin("caf\xe9\xff");
  ASSERT_EQ(latin.length(), 5);
  EXPECT_EQ(latin.charAt(3), 0xE9) << "bytes are taken unsigned";
  EXPECT_EQ(latin.charAt(4), 0xFF);

  EXPECT_EQ(KepString("abc", 1, -1).toStdString(), "bc")
      << "-1 measures from the start of the text, but the copy ends at the zero byte";
  EXPECT_EQ(KepString("abc", 1, 10).toStdString(), "bc");
  EXPECT_EQ(KepString("abc", 7, -1).length(), 0);
  EXPECT_EQ(KepString("abcdef", -3, 2).toStdString(), "ab") << "a negative offset is 0";
  EXPECT_EQ(KepString("abc", 1, 1).toStdString(), "b");
  EXPECT_EQ(KepString("abc", 0, 0).length(), 0);
  EXPECT_EQ(KepString("abc", 0, -2).length(), 0);

  KepString empty(static_cast<char const*>(nullptr));
  EXPECT_FALSE(empty.isNull()) << "null text gives the empty string, not a null handle";
  EXPECT_EQ(empty.length(), 0);
  signed char raw[] = {'x', 'y', 0};
  EXPECT_EQ(KepString(raw).toStdString(), "xy");
}

TEST(String, SixteenBitConstructionKeepsZeroUnitsInsideACount) {
  unsigned short units[] = {'a', 0, 'b', 0x263A, 0};
  EXPECT_EQ(KepString(units).length(), 1) << "zero-terminated text";
  KepString counted(units, 1, 3);
  ASSERT_EQ(counted.length(), 3);
  EXPECT_EQ(counted.charAt(0), 0);
  EXPECT_EQ(counted.charAt(2), 0x263A);
  EXPECT_EQ(KepString(units + 2, 1, -1).length(), 1);
  EXPECT_EQ(KepString(static_cast<unsigned short const*>(nullptr), 0, 5).length(), 0);
}

TEST(String, CharAtAnswersFFFFOutsideTheString) {
  KepString s("ab");
  EXPECT_EQ(s.charAt(-1), 0xFFFF);
  EXPECT_EQ(s.charAt(2), 0xFFFF);
  EXPECT_EQ(s.charAt(1), 'b');
}

TEST(String, NullHandleAnswersNeutralResultsAndNullArgumentsAreAbsent) {
  KepString null;
  KepString s("abc");
  EXPECT_EQ(null.length(), 0);
  EXPECT_EQ(null.hashCode(), 0);
  EXPECT_TRUE(null.substring(0).isNull());
  EXPECT_EQ(null.toCharArray(), nullptr);

  EXPECT_EQ(s.compareTo(null), -1);
  EXPECT_EQ(s.equals(null), 0u);
  EXPECT_EQ(s.equalsIgnoreCase(null), 0u);
  EXPECT_EQ(s.startsWith(null), 0u);
  EXPECT_EQ(s.endsWith(null), 0u);
  EXPECT_EQ(s.regionMatches(0, null, 0, 1), 0u);
  EXPECT_EQ(s.indexOf(null), -1);
  EXPECT_EQ(s.lastIndexOf(null), -1);
  EXPECT_EQ(bodyOf(s.concat(null)), bodyOf(s)) << "concat of a null string is this string";

  KepObject plain(new KepRObject);
  EXPECT_EQ(s.indexOf(KepString(plain)), -1) << "a handle on another class counts as absent";
  EXPECT_EQ(s.equals(plain), 0u);
}

TEST(String, CompareToWalksToTheFirstDifferentUnit) {
  EXPECT_EQ(KepString("abc").compareTo(KepString("abc")), 0);
  EXPECT_EQ(KepString("abd").compareTo(KepString("abc")), 1);
  EXPECT_EQ(KepString("ab").compareTo(KepString("abc")), -'c') << "the terminator meets 'c'";
  EXPECT_EQ(KepString("abc").compareTo(KepString("ab")), 'c');
  EXPECT_EQ(KepString("").compareTo(KepString("")), 0);
  std::u16string high = u"a\xFFFF";
  EXPECT_EQ(fromUnits(high).compareTo(KepString("a")), 0xFFFF) << "units compare unsigned";

  // Differences far into long strings, on both sides of the 4-unit steps.
  std::string base(4099, 'q');
  for (size_t at : {0u, 3u, 4u, 4095u, 4098u}) {
    std::string other = base;
    other[at] = 'r';
    EXPECT_EQ(KepString(base.c_str()).compareTo(KepString(other.c_str())), 'q' - 'r') << at;
  }
}

TEST(String, BodyAndByteComparisonsHandleEmptyStringsFirst) {
  KepString emptyString("");
  auto const* empty = static_cast<KepRString const*>(bodyOf(emptyString));
  KepString abc("abc");
  auto const* abcBody = static_cast<KepRString const*>(bodyOf(abc));
  EXPECT_EQ(abc.compareTo(*empty), 1);
  EXPECT_EQ(KepString("").compareTo(*abcBody), -1);
  EXPECT_EQ(KepString("").compareTo(*empty), 0);
  EXPECT_EQ(KepString("abd").compareTo(*abcBody), 1);

  signed char text[] = {'a', 'b', static_cast<signed char>(0xE9), 0};
  EXPECT_EQ(KepString("").compareTo(static_cast<signed char const*>(nullptr)), 0);
  EXPECT_EQ(KepString("x").compareTo(static_cast<signed char const*>(nullptr)), 1);
  EXPECT_EQ(KepString("x").compareTo(reinterpret_cast<signed char const*>("")), 1);
  EXPECT_EQ(KepString("ab\xe9").compareTo(text), 0) << "bytes compare unsigned";
  EXPECT_EQ(KepString("ab").compareTo(text), -0xE9);
  EXPECT_EQ(KepString("ab\xe9z").compareTo(text), 'z');
}

TEST(String, EqualityNeedsAStringOfTheSameUnits) {
  KepString a("same");
  EXPECT_TRUE(a.equals(KepString("same")));
  EXPECT_TRUE(a.equals(a));
  EXPECT_FALSE(a.equals(KepString("Same")));
  EXPECT_FALSE(a.equals(KepString("sam")));
  KepObject asObject(a);
  EXPECT_TRUE(KepString("same").equals(asObject));
  EXPECT_EQ(a.getClassID(), 0x4002C);
  EXPECT_TRUE(a.equalsIgnoreCase(KepString("SAME")));
  EXPECT_FALSE(KepString("").equalsIgnoreCase(KepString("")))
      << "a region of length 0 never matches";
}

TEST(String, RegionMatchesEdges) {
  KepString s("Hello World");
  KepString w("WORLD");
  EXPECT_TRUE(s.regionMatches(1, 6, w, 0, 5));
  EXPECT_FALSE(s.regionMatches(0, 6, w, 0, 5));
  EXPECT_FALSE(s.regionMatches(1, 6, w, 0, 0)) << "len 0 is false";
  EXPECT_FALSE(s.regionMatches(1, 0, s, 0, 0));
  EXPECT_FALSE(s.regionMatches(1, -1, w, 0, 1));
  EXPECT_FALSE(s.regionMatches(1, 0, w, -1, 1));
  EXPECT_FALSE(s.regionMatches(1, 7, w, 0, 5)) << "runs past this string";
  EXPECT_FALSE(s.regionMatches(1, 6, w, 1, 5)) << "runs past the other string";
  EXPECT_TRUE(s.regionMatches(1, 10, w, 4, 1)) << "last unit of both";
  EXPECT_FALSE(s.regionMatches(1, 0, w, 0, INT_MAX));

  // Case-insensitive matching goes through upper case, then lower case of that.
  EXPECT_TRUE(fromUnits(u"\x01C5").regionMatches(1, 0, fromUnits(u"\x01C4"), 0, 1))
      << "title-case Dz matches upper-case DZ";
  EXPECT_TRUE(fromUnits(u"\x03C2").regionMatches(1, 0, fromUnits(u"\x03A3"), 0, 1))
      << "final sigma matches capital sigma";
  EXPECT_TRUE(fromUnits(u"K").regionMatches(1, 0, fromUnits(u"\x212A"), 0, 1))
      << "Kelvin sign lower-cases to k";
}

TEST(String, IndexOfEdges) {
  KepString s("abcabc");
  EXPECT_EQ(s.indexOf(u'c'), 2);
  EXPECT_EQ(s.indexOf(u'c', 3), 5);
  EXPECT_EQ(s.indexOf(u'c', -7), 2);
  EXPECT_EQ(s.indexOf(u'c', 6), -1);
  EXPECT_EQ(s.indexOf(u'z'), -1);
  EXPECT_EQ(s.indexOf(KepString("bc")), 1);
  EXPECT_EQ(s.indexOf(KepString("bc"), 2), 4);
  EXPECT_EQ(s.indexOf(KepString("abc"), 3), 3);
  EXPECT_EQ(s.indexOf(KepString("abc"), 4), -1);
  EXPECT_EQ(s.indexOf(KepString("abcabcx")), -1);
  EXPECT_EQ(s.indexOf(KepString("")), -1) << "an empty argument is never found";
  EXPECT_EQ(s.indexOf(KepString("a"), 6), -1);
  EXPECT_EQ(KepString("").indexOf(KepString("a")), -1);

  // Every position of a long text, found by the fast scan and checked by a plain one.
  std::mt19937 rng(7);
  std::u16string text;
  for (int i = 0; i < 300; ++i) text.push_back(static_cast<char16_t>(u'a' + rng() % 3));
  KepString k = fromUnits(text);
  for (size_t len : {1u, 2u, 5u}) {
    for (size_t from = 0; from < text.size(); from += 7) {
      std::u16string needle = text.substr((from * 31) % (text.size() - len), len);
      size_t want = text.find(needle, from);
      EXPECT_EQ(k.indexOf(fromUnits(needle), static_cast<int>(from)),
                want == std::u16string::npos ? -1 : static_cast<int>(want));
      EXPECT_EQ(k.indexOf(static_cast<unsigned short>(needle[0]), static_cast<int>(from)),
                static_cast<int>(text.find(needle[0], from) == std::u16string::npos
                                     ? -1
                                     : text.find(needle[0], from)));
    }
  }
}

TEST(String, LastIndexOfEdges) {
  KepString s("abcabc");
  EXPECT_EQ(s.lastIndexOf(u'a'), 3);
  EXPECT_EQ(s.lastIndexOf(u'a', 2), 0);
  EXPECT_EQ(s.lastIndexOf(u'a', 99), 3) << "from past the end is the last unit";
  EXPECT_EQ(s.lastIndexOf(u'a', -1), -1);
  EXPECT_EQ(s.lastIndexOf(KepString("abc")), 3);
  EXPECT_EQ(s.lastIndexOf(KepString("abc"), 2), 0);
  EXPECT_EQ(s.lastIndexOf(KepString("abc"), 99), 3);
  EXPECT_EQ(s.lastIndexOf(KepString("abc"), -1), -1);
  EXPECT_EQ(s.lastIndexOf(KepString("")), 6) << "an empty argument answers from, lowered";
  EXPECT_EQ(s.lastIndexOf(KepString(""), 2), 2);
  EXPECT_EQ(s.lastIndexOf(KepString("abcabcabc")), -1);
  EXPECT_EQ(KepString("").lastIndexOf(u'a'), -1);
}

TEST(String, StartsWithAndEndsWith) {
  KepString s("prefix.suffix");
  EXPECT_TRUE(s.startsWith(KepString("pre")));
  EXPECT_TRUE(s.startsWith(KepString("suffix"), 7));
  EXPECT_FALSE(s.startsWith(KepString("suffix"), 8));
  EXPECT_FALSE(s.startsWith(KepString("pre"), -1));
  EXPECT_FALSE(s.startsWith(KepString("")));
  EXPECT_TRUE(s.startsWith(s));
  EXPECT_TRUE(s.endsWith(KepString("fix")));
  EXPECT_TRUE(s.endsWith(s));
  EXPECT_FALSE(s.endsWith(KepString("")));
  EXPECT_FALSE(KepString("x").endsWith(KepString("xx")));
}

TEST(String, HashOfShortStringsIsThePolynomialWithWrapAround) {
  EXPECT_EQ(KepString("").hashCode(), 0);
  // The largest short strings overflow 32 bits many times over.
  for (std::u16string u :
       {std::u16string(u"a"), std::u16string(15, u'\xFFFF'), std::u16string(u"fifteen units!!")}) {
    unsigned __int128 exact = 0;
    for (char16_t c : u) exact = exact * 37 + c;
    EXPECT_EQ(static_cast<uint32_t>(fromUnits(u).hashCode()), static_cast<uint32_t>(exact));
  }
}

TEST(String, HashOfLongStringsSamplesAboutEightUnits) {
  std::u16string text(4096, u'x');
  for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char16_t>(u'a' + i % 26);
  int h = fromUnits(text).hashCode();
  // Units between the samples (every 512th unit here) do not count...
  std::u16string between = text;
  between[1] = u'#';
  between[4095] = u'#';
  EXPECT_EQ(fromUnits(between).hashCode(), h);
  // ...the sampled ones do.
  std::u16string sampled = text;
  sampled[512] = u'#';
  EXPECT_NE(fromUnits(sampled).hashCode(), h);

  // 17 units: step 2, nine samples, the last at index 16.
  std::u16string odd(17, u'\xFFFF');
  unsigned __int128 exact = 0;
  for (size_t i = 0; i < odd.size(); i += 2) exact = exact * 39 + odd[i];
  EXPECT_EQ(static_cast<uint32_t>(fromUnits(odd).hashCode()), static_cast<uint32_t>(exact));
}

TEST(String, SlicingAnswersTheSameBodyWhenNothingChanges) {
  KepString abc("abc");
  EXPECT_EQ(abc.substring(1, -1).toStdString(), "bc");
  EXPECT_TRUE(abc.substring(2, 1).isNull());
  EXPECT_TRUE(abc.substring(-1, 2).isNull());
  EXPECT_TRUE(abc.substring(0, 4).isNull());
  EXPECT_EQ(abc.substring(3).length(), 0);
  EXPECT_FALSE(abc.substring(3).isNull());
  EXPECT_EQ(bodyOf(abc.substring(0)), bodyOf(abc));
  EXPECT_EQ(bodyOf(abc.substring(0, 3)), bodyOf(abc));

  EXPECT_EQ(KepString(" \t\r\n\x01 ").trim().length(), 0);
  KepString x("x");
  EXPECT_EQ(bodyOf(x.trim()), bodyOf(x));
  EXPECT_EQ(KepString("\x20 in  side\x1f").trim().toStdString(), "in  side");
  EXPECT_EQ(fromUnits(u"\x00A0x\x00A0").trim().length(), 3) << "only units <= 0x20 are trimmed";

  EXPECT_EQ(bodyOf(abc.replace(u'z', u'y')), bodyOf(abc));
  EXPECT_EQ(bodyOf(abc.replace(u'a', u'a')), bodyOf(abc));
  EXPECT_EQ(KepString("banana").replace(u'a', u'o').toStdString(), "bonono");

  EXPECT_EQ(bodyOf(abc.concat(KepString(""))), bodyOf(abc));
  EXPECT_EQ((abc + KepString("def")).toStdString(), "abcdef");
  EXPECT_EQ((KepString("") + abc).toStdString(), "abc");
}

TEST(String, CaseMappingUsesSimpleMappingsAndExpandsSharpS) {
  KepString word = fromUnits(
      u"Stra\x00DF"
      u"e");
  KepString upper = word.toUpperCase();
  EXPECT_EQ(word.length(), 6);
  EXPECT_EQ(unitsOf(upper), u"STRASSE");
  EXPECT_EQ(upper.length(), 7);
  EXPECT_EQ(unitsOf(word.toLowerCase()),
            u"stra\x00DF"
            u"e");
  EXPECT_EQ(unitsOf(fromUnits(u"\x00DF\x00DF").toUpperCase()), u"SSSS");
  EXPECT_EQ(unitsOf(fromUnits(u"\x0130\x03A3\x1E9E").toLowerCase()), u"i\x03C3\x00DF");
  EXPECT_EQ(unitsOf(fromUnits(u"\x0251\x00FF\x01C6").toUpperCase()), u"\x2C6D\x0178\x01C4");
  EXPECT_EQ(unitsOf(KepString("MiXeD").toUpperCase(KepString("tr"))), u"MIXED")
      << "the locale is ignored";
  EXPECT_EQ(unitsOf(KepString("MiXeD").toLowerCase(KepString("tr"))), u"mixed");
}

TEST(String, BytesAndCharsCopyOut) {
  KepString s = fromUnits(u"A\x00E9\x263A");
  KepByteArray bytes = s.getBytes();
  unsigned char const* b = bytes;
  EXPECT_EQ(b[0], 'A');
  EXPECT_EQ(b[1], 0xE9);
  EXPECT_EQ(b[2], 0x3A) << "narrowing keeps the low byte";
  EXPECT_EQ(b[3], 0);
  EXPECT_STREQ(static_cast<char*>(KepString("").getBytes()), "");
  EXPECT_STREQ(static_cast<char*>(KepString("ab").getBytes(KepString("UTF-8"))), "ab");

  signed char out[8];
  std::memset(out, 'z', sizeof out);
  EXPECT_EQ(KepString("hello").getBytes(1, 4, out, 2), 5);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 6), std::string("zzell\0", 6));
  EXPECT_EQ(KepString("hi").getBytes(0, 99, out, 0), 2) << "the end is kept inside the string";

  unsigned short chars[4] = {9, 9, 9, 9};
  KepString("abc").getChars(1, 3, chars, 1);
  EXPECT_EQ(chars[1], 'b');
  EXPECT_EQ(chars[2], 'c');
  EXPECT_EQ(chars[3], 9) << "no terminator";
  KepString("abc").getChars(-1, 2, chars, 0);
  KepString("abc").getChars(2, 2, chars, 0);
  EXPECT_EQ(chars[0], 9);

  unsigned short* array = KepString("xyz").toCharArray();
  EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(array), 3), u"xyz");
  delete[] array;
}

TEST(String, ValueOfFormats) {
  EXPECT_EQ(KepString::valueOf(255, 16).toStdString(), "0xFF");
  EXPECT_EQ(KepString::valueOf(8, 8).toStdString(), "010");
  EXPECT_EQ(KepString::valueOf(-5, 10).toStdString(), "-5");
  EXPECT_EQ(KepString::valueOf(0, 16).toStdString(), "0x0");
  EXPECT_EQ(KepString::valueOf(INT_MIN).toStdString(), std::to_string(INT_MIN));
  EXPECT_EQ(KepString::valueOf(LONG_MIN).toStdString(), std::to_string(LONG_MIN));
  EXPECT_EQ(KepString::valueOf(static_cast<unsigned short>(0x263A)).charAt(0), 0x263A);
  EXPECT_EQ(KepString::valueOf(7UL).toStdString(), "1");
  EXPECT_EQ(KepString::valueOf(0UL).toStdString(), "0");
  EXPECT_EQ(KepString::valueOf(1.5f).toStdString(), "1.5000000e+00");
  EXPECT_EQ(KepString::valueOf(0.1L).toStdString(), "1.00000000000000006e-01");
  EXPECT_EQ(KepString::valueOf(42, 99).toStdString(), "42") << "an unusable radix is 10";

  // Non-negative values in every radix against std::to_chars (upper-cased digits).
  std::mt19937_64 rng(3);
  for (int radix = 2; radix <= 36; ++radix) {
    for (int round = 0; round < 20; ++round) {
      long value = static_cast<long>(rng() >> (round * 3 % 63 + 1));
      char text[80];
      auto end = std::to_chars(text, text + sizeof text, value, radix).ptr;
      std::string digits(text, end);
      for (char& c : digits) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      std::string prefix = radix == 16 ? "0x" : radix == 8 ? "0" : "";
      EXPECT_EQ(KepString::valueOf(value, radix).toStdString(), prefix + digits) << radix;
    }
  }

  // Negative values in radix 16 keep the signed remainders and pad with F.
  std::string minusOne = KepString::valueOf(-1, 16).toStdString();
  EXPECT_EQ(minusOne, "0xFFFFFFFFFFFFFFF/") << "the remainder -1 is written as '0' - 1";
  std::string minus255 = KepString::valueOf(-255L, 16).toStdString();
  EXPECT_EQ(minus255, "0xFFFFFFFFFFFFFF!!");
}

TEST(String, HandlesShareTheOneAllocationBody) {
  KepString a("shared");
  KepString b(a);
  EXPECT_EQ(bodyOf(a), bodyOf(b));
  EXPECT_EQ(bodyOf(a)->getRefCount(), 2);
  auto const* body = static_cast<KepRString const*>(bodyOf(a));
  EXPECT_EQ(reinterpret_cast<char const*>(body->units()),
            reinterpret_cast<char const*>(body) + sizeof(KepRString))
      << "the units live right behind the body";
  EXPECT_EQ(body->units()[body->unitCount()], 0);
  EXPECT_EQ(a.toString().getRealKepObj(), bodyOf(a));
}
