// Record arithmetic, day stepping, and zone blocks and their handles.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "DateTestUtil.h"

using namespace datetest;

namespace {

// A random date of 1971 ... 2081.
_KepDateTime randomDate(Rng& rng) {
  return dateAt(gmtSecs(1971, 0, 1) + long(rng.below(3500000000ull)));
}

}  // namespace

TEST(CalendarRecords, CompareAndCopyByMode) {
  // Mode 0 compares date and time, 1 the date only, 2 the time only; the weekday never counts.
  struct Case {
    _KepDateTime x, y;
    uint32_t want[3];
  };
  _KepDateTime a = datim(2024, 4, 1, 10);
  for (Case k :
       {Case{a, datim(2024, 4, 1, 9), {1, 0, 1}}, Case{a, datim(2024, 4, 2, 8), {~0u, ~0u, 1}},
        Case{datim(2024, 4, 1, 10, 0, 0, 1), a, {1, 0, 1}},
        Case{span(2024, 4, 1, 10), a, {0, 0, 0}}}) {
    for (uint8_t mode = 0; mode < 3; ++mode)
      EXPECT_EQ(_KepDateCmpDate(&k.x, &k.y, mode), k.want[mode]) << show(k.x) << " mode " << +mode;
  }
  // Copy mode 1 takes the date, 2 the time (milliseconds stay), 0 everything, others nothing.
  const _KepDateTime old = datim(1999, 11, 31, 23, 58, 57, 555);
  const _KepDateTime src = datim(2024, 4, 2, 8);
  _KepDateTime const wants[] = {src, datim(2024, 4, 2, 23, 58, 57, 555),
                                datim(1999, 11, 31, 8, 0, 0, 555), old};
  for (uint8_t mode : {0, 1, 2, 7}) {
    _KepDateTime dst = old;
    _KepDateCopyDatim(&src, &dst, mode);
    EXPECT_TRUE(sameRecord(dst, wants[std::min(mode, uint8_t(3))])) << "mode " << +mode;
  }
}

TEST(CalendarRecords, AddCarriesAndSubtractBorrowsAndSwaps) {
  // Subtraction swaps the operands when the first is the earlier and says so;
  // milliseconds are never subtracted (the later's stay).
  struct Case {
    _KepDateTime a, b;
    char op;
    uint8_t mode;
    _KepDateTime want;
    uint32_t swapped;
  };
  _KepDateTime dayZero = span(1, 11, 31);  // day 0 is the last day of the month before
  dayZero.dayOfWeek = static_cast<uint8_t>(_KepDateWeekDay(&dayZero));
  Case const cases[] = {
      // Every field carries, also from span fields past their range.
      {datim(2024, 0, 31, 23, 59, 59, 999), span(1, 13, 40, 47, 119, 119, 1999), '+', 0,
       datim(2026, 3, 15, 1, 1, 0, 998), 0},
      // Time mode clamps at the end of the day and leaves the date.
      {datim(2024, 5, 10, 22, 30, 0, 250), span(0, 0, 3, 2), '+', 2,
       datim(2024, 5, 10, 23, 59, 59, 250), 0},
      {datim(2024, 0, 31, 10), span(0, 1, 0, 5), '+', 1, datim(2024, 2, 2, 10), 0},  // 31 Feb
      {datim(2024, 2, 1), span(0, 0, 0, 0, 0, 1), '-', 0, datim(2024, 1, 29, 23, 59, 59), 0},
      {span(0, 0, 0, 0, 0, 1), datim(2024, 2, 1), '-', 0, datim(2024, 1, 29, 23, 59, 59), 1},
      // In time mode an hour borrow takes a day: 24:00 less 23:30 is 00:30 of the day.
      {datim(2024, 0, 10, 24), datim(2024, 0, 10, 23, 30), '-', 2, datim(2024, 0, 10, 0, 30), 0},
      {datim(2024, 6, 4, 10, 0, 0, 500), span(0, 0, 0, 0, 0, 0, 700), '-', 0,
       datim(2024, 6, 4, 10, 0, 0, 500), 0},
      // Days borrow whole months of the later date, then months borrow a year.
      {datim(2023, 2, 5), span(0, 1, 10), '-', 1, datim(2023, 0, 23), 0},
      {datim(2025, 2, 5), datim(2023, 2, 5), '-', 1, dayZero, 0},
  };
  _KepDateTime out;
  for (Case const& c : cases) {
    if (c.op == '+')
      _KepDateAddDatim(&c.a, &c.b, &out, c.mode);
    else
      EXPECT_EQ(_KepDateSubDatim(&c.a, &c.b, &out, c.mode), c.swapped);
    EXPECT_TRUE(sameRecord(out, c.want)) << show(c.a) << c.op << show(c.b);
  }

  // Within a year the difference of two dates added back gives the later date,
  // and time mode gives the exact difference of the times of day.
  Rng rng(3);
  for (int i = 0; i < 20000; ++i) {
    _KepDateTime a = randomDate(rng);
    long start = gmtSecs(a.year, 0, 1);
    _KepDateTime b = dateAt(start + long(rng.below(uint64_t(gmtSecs(a.year + 1, 0, 1) - start))));
    bool aEarlier = secsOf(a) < secsOf(b);
    ASSERT_EQ(_KepDateSubDatim(&a, &b, &out, 0), aEarlier ? 1u : 0u);
    _KepDateTime back;
    _KepDateAddDatim(aEarlier ? &a : &b, &out, &back, 0);
    ASSERT_TRUE(sameRecord(back, aEarlier ? b : a)) << show(a) << " - " << show(b);
    _KepDateSubDatim(&a, &b, &out, 2);
    long dayA = secsOf(a) % kDay;
    long dayB = secsOf(b) % kDay;
    ASSERT_EQ(secsOf(out) % kDay, std::abs(dayA - dayB));
    ASSERT_EQ(_KepDateCmpDate(&out, dayA < dayB ? &b : &a, 1), 0u) << "time mode keeps the date";
  }
}

TEST(CalendarRecords, MonthStepsSpansAndDivision) {
  // Year 0 in a record is a span: to seconds it takes the day count found in
  // the output, from seconds it counts days in the day field.
  _KepDateTime time = span(0, 0, 0, 1, 2, 3);
  unsigned long secs = 3;
  ASSERT_EQ(_KepDateDate2Secs(&time, &secs, nullptr), 0u);
  EXPECT_EQ(secs, 3u * kDay + 3723);
  _KepDateSecs2Time(2 * kDay + 3723, &time);
  EXPECT_TRUE(sameRecord(time, span(0, 0, 2, 1, 2, 3)));

  _KepDateTime d = datim(2024, 0, 31);
  _KepDateAddDatimMonth(&d, 13);
  EXPECT_EQ(std::vector<int>({d.year, d.month, d.day}), std::vector<int>({2025, 1, 31}))
      << "the day is not adjusted";
  _KepDateSubDatimMonth(&d, 26);
  EXPECT_EQ(std::vector<int>({d.year, d.month, d.day}), std::vector<int>({2022, 11, 31}));

  // Minute counts run from 1599-12-31 00:00; spans count their own minutes.
  auto minutes = [](_KepDateTime const& x) {
    return (secsOf(x) - gmtSecs(1600, 0, 1)) / 60 + 1440;
  };
  Rng rng(9);
  for (int i = 0; i < 5000; ++i) {
    _KepDateTime a = dateAt(gmtSecs(1601, 0, 1) + long(rng.below(25000000000ull)));
    _KepDateTime b = dateAt(gmtSecs(1601, 0, 1) + long(rng.below(25000000000ull)));
    ASSERT_EQ(_KepDateDivTime(&a, &b), minutes(a) / minutes(b)) << show(a) << " / " << show(b);
  }
  _KepDateTime day = span(0, 0, 1), hour = span(0, 0, 0, 1), none = span(0, 0, 0, 0, 0, 59);
  EXPECT_EQ(_KepDateDivTime(&day, &hour), 24);
  EXPECT_EQ(_KepDateDivTime(&d, &none), 0) << "a zero count gives 0";
}

TEST(CalendarRecords, ResolveDayStepsAndClamps) {
  Rng rng(13);
  for (int i = 0; i < 20000; ++i) {
    _KepDateTime base = randomDate(rng);
    long secs = secsOf(base);
    for (int16_t step : {1, -1, 2, -2, 3, -3, 4, -4}) {  // days, weeks, months, years
      _KepDateTime d = base;
      ASSERT_EQ(_KepDateResolveDay(&d, step, 0, nullptr), 0u);
      int unit = std::abs(step);
      int dir = step < 0 ? -1 : 1;
      long want = secs + dir * (unit == 1 ? 1 : 7) * kDay;
      if (unit > 2) {
        int year = base.year + (unit == 4 ? dir : 0);
        int month = base.month + (unit == 3 ? dir : 0);
        want =
            gmtSecs(year, month, std::min<int>(base.day, monthLength(year, month))) + secs % kDay;
      }
      ASSERT_TRUE(sameRecord(d, dateAt(want))) << show(base) << " step " << step;
    }
  }
  // Steps other than +-1 ... 4 change nothing; with flag 1 a step past a limit
  // stops there and says so.
  _KepDateTime d = datim(2024, 1, 29);
  for (int16_t step : {0, 5, -5, 300}) {
    EXPECT_EQ(_KepDateResolveDay(&d, step, 1, nullptr), 0u);
    EXPECT_TRUE(sameRecord(d, datim(2024, 1, 29))) << "step " << step;
  }
  _KepTime limits = {datim(2024, 1, 27), datim(2024, 2, 3)};
  EXPECT_EQ(_KepDateResolveDay(&d, 2, 1, &limits), 1u);
  EXPECT_TRUE(sameRecord(d, limits.upper));
  d = datim(2024, 1, 29);
  EXPECT_EQ(_KepDateResolveDay(&d, 2, 0, &limits), 0u) << "flag 0 ignores the limits";
  EXPECT_TRUE(sameRecord(d, datim(2024, 2, 7)));
}

TEST(CalendarRecords, DayOfWeekWalksEveryMode) {
  for (long s = gmtSecs(2024, 0, 1); s < gmtSecs(2025, 0, 1); s += kDay) {
    std::tm tm = utc(s);
    long monthStart = gmtSecs(2024, tm.tm_mon, 1);
    long nextMonth = gmtSecs(2024, tm.tm_mon + 1, 1);
    std::tm yesterday = utc(s - kDay);
    long prevMonthStart = gmtSecs(yesterday.tm_year + 1900, yesterday.tm_mon, 1);
    for (int w = 0; w < 7; ++w) {
      auto ahead = [&](int from) { return ((w - (tm.tm_wday + from) % 7 + 7) % 7) + from; };
      auto behind = [&](int from) { return ((tm.tm_wday - from - w + 14) % 7) + from; };
      long want[7];
      want[0] = want[6] = s;
      want[1] = tm.tm_wday > w ? s - std::min(tm.tm_wday - w, tm.tm_mday - 1) * kDay : s;
      want[2] = std::min(s + ahead(1) * kDay, nextMonth);
      want[3] = std::max(s - behind(1) * kDay, s == monthStart ? prevMonthStart : monthStart);
      want[4] = std::min(s + ahead(0) * kDay, nextMonth - kDay);
      want[5] = s == nextMonth - kDay ? s : std::max(s - behind(0) * kDay, monthStart - kDay);
      for (uint8_t mode = 0; mode <= 6; ++mode) {
        _KepDateTime src = dateAt(s);
        _KepDateTime out;
        _KepDateDayOfWeek(&src, &out, uint8_t(w), mode, nullptr);
        ASSERT_TRUE(sameRecord(out, dateAt(want[mode])))
            << show(src) << " to weekday " << w << " mode " << int(mode);
      }
    }
  }
  // A walk that runs into a limit ends there.
  _KepDateTime start = datim(2024, 4, 1);  // a Wednesday
  _KepTime limits = {datim(2024, 3, 30), datim(2024, 4, 2)};
  _KepDateTime out;
  _KepDateDayOfWeek(&start, &out, 0, 2, &limits);
  EXPECT_TRUE(sameRecord(out, limits.upper));
}

TEST(CalendarZones, BlocksReadBackUnsetAdjustmentsReadAsZeroAndBadHandlesAreRefused) {
  unsigned long live = _KepMMTestLiveHandles();
  {
    Zone rule, fixed, unset, southernUnset, tooSmall;
    constexpr int32_t kUnset = KEP_DATE_TZ_NOT_SET;
    void* freed = nullptr;
    ASSERT_EQ(_KepDateCreateTZ(0, 5, 2, 1, 2, 9, 3600, -7200, 0xABCDEF, &rule.handle) |
                  _KepDateCreateTZOld(6, 3, 25, 8, kUnset, 3600, 7, &fixed.handle) |
                  _KepDateCreateTZ(0, 5, 2, 0, 5, 9, kUnset, kUnset, 0, &unset.handle) |
                  _KepDateCreateTZ(0, 1, 9, 0, 1, 3, kUnset, 0, 1, &southernUnset.handle) |
                  _KepMMTestAlloc(8, &tooSmall.handle) |
                  _KepDateCreateTZ(0, 5, 2, 0, 5, 9, 3600, 3600, 0, &freed) | _KepMMTestFree(freed),
              0u);

    // The rule form reads back with the days of this year's transitions: the
    // last Sunday of March, the second Monday of October; the fixed form reads
    // 0x8080 as not set and gives its days in the rule form's day fields.
    uint8_t f[8];
    int32_t adjust = 0, offset = 0;
    unsigned long value = 0, form = 9;
    ASSERT_EQ(_KepDateReadTZ(rule.handle, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6], &f[7],
                             &adjust, &offset, &value, &form),
              0u);
    int year = local(std::time(nullptr)).tm_year + 1900;
    std::vector<long> got(f, f + 8);
    got.insert(got.end(), {adjust, offset, long(value), long(form)});
    EXPECT_EQ(got, (std::vector<long>{0, 5, 2, 1, 2, 9, 31 - utc(gmtSecs(year, 2, 31)).tm_wday,
                                      8 + (8 - utc(gmtSecs(year, 9, 1)).tm_wday) % 7, 3600, -7200,
                                      0xABCDEF, 1}));
    ASSERT_EQ(
        _KepDateReadTZOld(fixed.handle, &f[0], &f[1], &f[2], &f[3], &adjust, &offset, &value) |
            _KepDateReadTZ(fixed.handle, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           &f[6], &f[7], nullptr, nullptr, nullptr, &form),
        0u)
        << "every out pointer may be null";
    got = {f[0], f[1], f[2], f[3], adjust, offset, long(value), f[6], f[7], long(form)};
    EXPECT_EQ(got, (std::vector<long>{6, 3, 25, 8, 0, 3600, 7, 6, 25, 0}));

    // Northern and southern summer and winter instants.
    for (unsigned long secs : {0ul, 1000000000ul, 1200000000ul, 4000000000ul}) {
      _KepDateTime plain = toDate(secs);
      for (void* zone : {unset.handle, southernUnset.handle})
        ASSERT_TRUE(sameRecord(toDate(secs, zone), plain)) << "unset adjustments read as 0";
      for (void* zone : {freed, tooSmall.handle, reinterpret_cast<void*>(0x5eed00000001ull)}) {
        _KepDateTime d;
        unsigned long back = 0;
        ASSERT_EQ(_KepDateSecs2Date(secs, &d, zone), KEP_MM_BAD_HANDLE);
        ASSERT_TRUE(sameRecord(d, plain)) << "filled without the zone";
        ASSERT_EQ(_KepDateDate2Secs(&d, &back, zone), KEP_MM_BAD_HANDLE);
        ASSERT_EQ(back, secs);
      }
    }
    EXPECT_EQ(_KepDateCreateTZ(0, 0, 0, 0, 0, 0, 0, 0, 0, nullptr), KEP_MM_BAD_HANDLE);
  }
  EXPECT_EQ(_KepMMTestLiveHandles(), live) << "no zone block leaked";
}
