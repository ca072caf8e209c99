// KepStringBuffer and KepByteArray: growth, appends, inserts, the kept quirks of
// capacity(), ensureCapacity() and setLength(), and the byte views.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kep/Kep.h"

namespace {

std::string textOf(KepStringBuffer const& b) { return b.toString().toStdString(); }

}  // namespace

TEST(StringBuffer, AppendsChainOnTheSameBodyAndWidenBytesUnsigned) {
  KepStringBuffer b("n=");
  EXPECT_EQ(b.append(-42).append(4000000000UL).getRealKepObj(), b.getRealKepObj());
  EXPECT_EQ(textOf(b), "n=-424000000000");
  signed char bytes[] = {'x', 'y', static_cast<signed char>(0xE9), 0};
  unsigned short units[] = {0x263A, 'u', 0};
  b.append(bytes, 2, -1).append(units, 1, 1);
  b.append(KepString()).append(static_cast<signed char const*>(nullptr));  // nothing
  KepString all = b.toString();
  // -1 counts the text from its start: 0xE9 and two zero units.
  ASSERT_EQ(all.length(), 19);
  EXPECT_EQ((std::vector<int>{all.charAt(15), all.charAt(16), all.charAt(17), all.charAt(18)}),
            (std::vector<int>{0xE9, 0, 0, 'u'}));
}

TEST(StringBuffer, GrowthKeepsEveryUnitAndTheZeroBehindThem) {
  KepStringBuffer b(static_cast<char const*>(nullptr));
  EXPECT_FALSE(b.toString().isNull());
  auto const* body = static_cast<KepRStringBuffer const*>(b.getRealKepObj());
  // The array moves exactly when length + k + 1 exceeds the capacity, which then
  // becomes 2 * (length + k): a few moves, not one per append.
  std::string expected;
  int capacity = 0, moves = 0;
  for (int i = 0; i < 2000; ++i) {
    unsigned short unit = static_cast<unsigned short>('a' + i % 26), pair[] = {unit, unit, 0};
    int k = i % 3 == 0 ? 2 : 1;  // a unit, or two as text
    bool grows = b.length() + k + 1 > capacity;
    if (grows) capacity = 2 * (b.length() + k);
    unsigned short const* before = body->units();
    expected.append(static_cast<size_t>(k), static_cast<char>(unit));
    k == 2 ? b.append(pair) : b.append(unit);
    ASSERT_EQ(body->units() != before, grows) << "append " << i;
    moves += grows;
  }
  EXPECT_EQ(textOf(b), expected);
  EXPECT_LE(moves, 12);
  EXPECT_EQ(body->units()[b.length()], 0) << "the zero unit follows the units";
}

TEST(StringBuffer, CapacityAnswersTheLengthAndEnsureCapacityAndSetLengthPad) {
  KepStringBuffer b("abc");
  EXPECT_EQ(b.capacity(), 3);
  b.ensureCapacity(4);
  EXPECT_EQ(b.length(), 8) << "(3 + 1) * 2";
  EXPECT_EQ(b.charAt(5), 0) << "new units are zero";
  b.ensureCapacity(5);
  EXPECT_EQ(b.length(), 8) << "nothing happens unless min exceeds the length";
  b.ensureCapacity(100);
  EXPECT_EQ(b.length(), 100) << "a larger minimum wins over the doubling";

  b.setLength(2);
  EXPECT_EQ(textOf(b), "ab");
  b.setLength(5);
  EXPECT_EQ(b.charAt(3), 0);
  b.setLength(-4);
  EXPECT_EQ(b.length(), 0);
}

TEST(StringBuffer, AppendsAfterRebuildsRespectTheRealArraySize) {
  // Growth makes room for 2 * 40 units; setLength, insert and reverse rebuild
  // smaller arrays while the growth rule's capacity stays at 80. Appends must
  // still grow.
  KepStringBuffer b("0123456789012345678901234567890123456789");
  b.setLength(2);
  b.append(KepString("this append must not land past the three-unit array"));
  EXPECT_EQ(textOf(b), "01this append must not land past the three-unit array");
  b.insert(0, KepString(">"));
  b.reverse();
  b.append(KepString("<tail>"));
  EXPECT_EQ(b.length(), 1 + 2 + 51 + 6);
  EXPECT_EQ(b.charAt(0), 'y');
  EXPECT_EQ(b.toString().substring(b.length() - 7).toStdString(), "><tail>");
}

TEST(StringBuffer, InsertReverseAndSetCharAtIgnoreOutOfRangePositions) {
  KepStringBuffer b("ace");
  EXPECT_EQ(b.insert(1, static_cast<unsigned short>('b')).getRealKepObj(), b.getRealKepObj());
  b.insert(3, KepString("d"));
  b.insert(-5, KepString("["));
  b.insert(b.length(), KepString("]"));
  b.insert(99, KepString("ignored"));
  EXPECT_EQ(textOf(b), "[abcde]");
  b.insert(1, 1UL).insert(1, 2UL).insert(1, -7);
  EXPECT_EQ(textOf(b), "[-701abcde]") << "unsigned long inserts 1 only for exactly 1";

  KepStringBuffer word("stressed");
  word.reverse();
  word.setCharAt(0, 'D');
  word.setCharAt(8, 'x');
  EXPECT_EQ(textOf(word), "Desserts");
}

TEST(ByteArray, ViewsShareOneZeroTerminatedArray) {
  KepByteArray bytes("ab\0cd", 5);
  signed char* s = bytes;
  EXPECT_EQ(std::string(reinterpret_cast<char*>(s), 6), std::string("ab\0cd\0", 6));
  EXPECT_STREQ(static_cast<char*>(KepByteArray(nullptr, 3)), "");
  EXPECT_EQ(static_cast<char*>(KepByteArray()), nullptr);
}
