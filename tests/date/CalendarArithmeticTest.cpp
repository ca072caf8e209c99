// Record arithmetic, day stepping, and zone blocks and their handles.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "DateTestUtil.h"

using namespace datetest;

namespace {

// A duration record: the fields to add or subtract, no weekday.
_KepDateTime span(int years, int months, int days, int hours = 0, int minutes = 0, int seconds = 0,
                  int ms = 0) {
  _KepDateTime d = datim(years, months, days, hours, minutes, seconds, ms);
  d.dayOfWeek = 0;
  return d;
}

long secsOf(_KepDateTime const& d) {
  return gmtSecs(d.year, d.month, d.day, d.hour, d.minute, d.second);
}

// A random date of 1971 ... 2081.
_KepDateTime randomDate(Rng& rng) {
  return dateAt(gmtSecs(1971, 0, 1) + long(rng.below(3500000000ull)));
}

}  // namespace

TEST(CalendarRecords, TheUpperClampAndYearZeroDayCounts) {
  const unsigned long last = toSecs(lastdatim);
  EXPECT_EQ(last, static_cast<unsigned long>(gmtSecs(2106, 1, 6, 11)));
  EXPECT_EQ(toSecs(datim(2106, 1, 6, 11, 0, 0, 1)), last) << "milliseconds past it clamp too";
  EXPECT_EQ(toSecs(datim(2200, 0, 1)), last);

  // Year 0: the output holds a day count on entry.
  _KepDateTime time = span(0, 0, 0, 1, 2, 3);
  unsigned long secs = 3;
  ASSERT_EQ(_KepDateDate2Secs(&time, &secs, nullptr), 0u);
  EXPECT_EQ(secs, 3u * kDay + 3723);
  _KepDateSecs2Time(2 * kDay + 3723, &time);
  EXPECT_TRUE(sameRecord(time, span(0, 0, 2, 1, 2, 3)));
}

TEST(CalendarRecords, CompareAndCopyByMode) {
  // Mode 0 compares date and time, 1 the date only, 2 the time only.
  _KepDateTime a = datim(2024, 4, 1, 10);
  _KepDateTime b = datim(2024, 4, 1, 9);
  _KepDateTime c = datim(2024, 4, 2, 8);
  _KepDateTime ms = datim(2024, 4, 1, 10, 0, 0, 1);
  _KepDateTime noWeekday = a;
  noWeekday.dayOfWeek = 0;  // the weekday never counts
  struct Case {
    _KepDateTime const *x, *y;
    uint32_t want[3];
  };
  for (Case k : {Case{&a, &b, {1, 0, 1}}, Case{&a, &c, {0xFFFFFFFF, 0xFFFFFFFF, 1}},
                 Case{&ms, &a, {1, 0, 1}}, Case{&noWeekday, &a, {0, 0, 0}}}) {
    for (uint8_t mode = 0; mode < 3; ++mode)
      EXPECT_EQ(_KepDateCmpDate(k.x, k.y, mode), k.want[mode]) << show(*k.x) << " mode " << +mode;
  }
  // Copy mode 1 takes the date, 2 the time (milliseconds stay), 0 everything, others nothing.
  const _KepDateTime old = datim(1999, 11, 31, 23, 58, 57, 555);
  for (uint8_t mode : {0, 1, 2, 7}) {
    _KepDateTime dst = old;
    _KepDateCopyDatim(&c, &dst, mode);
    _KepDateTime want = mode == 0   ? c
                        : mode == 1 ? datim(2024, 4, 2, 23, 58, 57, 555)
                        : mode == 2 ? datim(1999, 11, 31, 8, 0, 0, 555)
                                    : old;
    EXPECT_TRUE(sameRecord(dst, want)) << "mode " << +mode;
  }
}

TEST(CalendarRecords, AddCarriesThroughEveryField) {
  _KepDateTime out;
  _KepDateTime eve = datim(2023, 11, 31, 23, 59, 59, 999);
  _KepDateTime oneMs = span(0, 0, 0, 0, 0, 0, 1);
  _KepDateAddDatim(&eve, &oneMs, &out, 0);
  EXPECT_TRUE(sameRecord(out, datim(2024, 0, 1)));

  _KepDateTime late = datim(2024, 5, 10, 22, 30, 0, 250);
  _KepDateTime twoHours = span(0, 0, 3, 2, 0, 0);
  _KepDateAddDatim(&late, &twoHours, &out, 2);
  EXPECT_TRUE(sameRecord(out, datim(2024, 5, 10, 23, 59, 59, 250)))
      << "time mode clamps at the end of the day and leaves the date";

  _KepDateTime jan31 = datim(2024, 0, 31, 10, 0, 0);
  _KepDateTime monthAndHours = span(0, 1, 0, 5, 0, 0);
  _KepDateAddDatim(&jan31, &monthAndHours, &out, 1);
  EXPECT_TRUE(sameRecord(out, datim(2024, 2, 2, 10, 0, 0))) << "31 February is 2 March";

  // Date and time mode is calendar addition of the fields, as timegm normalises.
  Rng rng(3);
  for (int i = 0; i < 20000; ++i) {
    _KepDateTime a = randomDate(rng);
    a.milliseconds = static_cast<uint16_t>(rng.below(1000));
    _KepDateTime b =
        span(int(rng.below(20)), int(rng.below(24)), int(rng.below(70)), int(rng.below(48)),
             int(rng.below(120)), int(rng.below(120)), int(rng.below(2000)));
    _KepDateAddDatim(&a, &b, &out, 0);
    long ms = a.milliseconds + b.milliseconds;
    _KepDateTime want =
        dateAt(gmtSecs(a.year + b.year, a.month + b.month, a.day + b.day, a.hour + b.hour,
                       a.minute + b.minute, a.second + b.second + int(ms / 1000)));
    want.milliseconds = static_cast<uint16_t>(ms % 1000);
    ASSERT_TRUE(sameRecord(out, want)) << show(a) << " + " << show(b);
  }
}

TEST(CalendarRecords, SubtractBorrowsAndSwaps) {
  // {later, earlier, mode, result, swapped}: the operands are swapped when the
  // first is the earlier; milliseconds are never subtracted (the later's stay).
  struct Case {
    _KepDateTime a, b;
    uint8_t mode;
    _KepDateTime want;
    uint32_t swapped;
  };
  _KepDateTime dayZero = span(1, 11, 31);  // day 0 is the last day of the month before
  dayZero.dayOfWeek = static_cast<uint8_t>(_KepDateWeekDay(&dayZero));
  Case const cases[] = {
      {datim(2024, 2, 1), span(0, 0, 0, 0, 0, 1), 0, datim(2024, 1, 29, 23, 59, 59), 0},
      {span(0, 0, 0, 0, 0, 1), datim(2024, 2, 1), 0, datim(2024, 1, 29, 23, 59, 59), 1},
      {datim(2025, 0, 1), span(0, 0, 0, 0, 90), 0, datim(2024, 11, 31, 22, 30), 0},
      // In time mode an hour borrow takes a day: 24:00 less 23:30 is 00:30 of the day.
      {datim(2024, 0, 10, 24), datim(2024, 0, 10, 23, 30), 2, datim(2024, 0, 10, 0, 30), 0},
      {datim(2024, 6, 4, 10, 0, 0, 500), span(0, 0, 0, 0, 0, 0, 700), 0,
       datim(2024, 6, 4, 10, 0, 0, 500), 0},
      // Days borrow whole months of the later date, then months borrow a year.
      {datim(2023, 2, 5), span(0, 1, 10), 1, datim(2023, 0, 23), 0},
      {datim(2025, 2, 5), datim(2023, 2, 5), 1, dayZero, 0},
  };
  for (Case const& c : cases) {
    _KepDateTime out;
    EXPECT_EQ(_KepDateSubDatim(&c.a, &c.b, &out, c.mode), c.swapped);
    EXPECT_TRUE(sameRecord(out, c.want)) << show(c.a) << " - " << show(c.b);
  }

  // Within a year the difference of two dates added back gives the later date,
  // and time mode gives the exact difference of the times of day.
  Rng rng(5);
  for (int i = 0; i < 20000; ++i) {
    int year = 1971 + int(rng.below(130));
    long start = gmtSecs(year, 0, 1);
    long length = gmtSecs(year + 1, 0, 1) - start;
    _KepDateTime a = dateAt(start + long(rng.below(uint64_t(length))));
    _KepDateTime b = dateAt(start + long(rng.below(uint64_t(length))));
    _KepDateTime diff;
    bool aEarlier = secsOf(a) < secsOf(b);
    ASSERT_EQ(_KepDateSubDatim(&a, &b, &diff, 0), aEarlier ? 1u : 0u);
    _KepDateTime back;
    _KepDateAddDatim(aEarlier ? &a : &b, &diff, &back, 0);
    ASSERT_TRUE(sameRecord(back, aEarlier ? b : a)) << show(a) << " - " << show(b);

    _KepDateSubDatim(&a, &b, &diff, 2);
    long dayA = a.hour * 3600 + a.minute * 60 + a.second;
    long dayB = b.hour * 3600 + b.minute * 60 + b.second;
    ASSERT_EQ(diff.hour * 3600 + diff.minute * 60 + diff.second, std::abs(dayA - dayB));
    ASSERT_EQ(_KepDateCmpDate(&diff, dayA < dayB ? &b : &a, 1), 0u) << "time mode keeps the date";
  }
}

TEST(CalendarRecords, MonthStepsAndDivision) {
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
    _KepDateTime a = datim(1601 + int(rng.below(800)), int(rng.below(12)), 1 + int(rng.below(28)),
                           int(rng.below(24)), int(rng.below(60)), int(rng.below(60)));
    _KepDateTime b = datim(1601 + int(rng.below(800)), int(rng.below(12)), 1 + int(rng.below(28)),
                           int(rng.below(24)), int(rng.below(60)));
    ASSERT_EQ(_KepDateDivTime(&a, &b), minutes(a) / minutes(b)) << show(a) << " / " << show(b);
  }
  _KepDateTime day = span(0, 0, 1);
  _KepDateTime hour = span(0, 0, 0, 1);
  _KepDateTime none = span(0, 0, 0, 0, 0, 59);
  EXPECT_EQ(_KepDateDivTime(&day, &hour), 24);
  EXPECT_EQ(_KepDateDivTime(&d, &none), 0) << "a zero count gives 0";
  EXPECT_EQ(_KepDateDivTime(&none, &d), 0);
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
      _KepDateTime want;
      if (unit <= 2) {
        want = dateAt(secs + dir * (unit == 1 ? 1 : 7) * kDay);
      } else {
        int year = base.year + (unit == 4 ? dir : 0);
        int month = base.month + (unit == 3 ? dir : 0);
        long first = gmtSecs(year, month, 1);
        int length = int((gmtSecs(year, month + 1, 1) - first) / kDay);
        want = dateAt(first + (std::min<int>(base.day, length) - 1) * kDay + secs % kDay);
      }
      ASSERT_TRUE(sameRecord(d, want)) << show(base) << " step " << step;
    }
  }
  _KepDateTime d = datim(2024, 1, 29);
  for (int16_t step : {0, 5, -5, 300}) {
    EXPECT_EQ(_KepDateResolveDay(&d, step, 1, nullptr), 0u);
    EXPECT_TRUE(sameRecord(d, datim(2024, 1, 29))) << "step " << step << " changes nothing";
  }
  _KepTime limits = {datim(2024, 1, 27), datim(2024, 2, 3)};
  _KepDateTime low = datim(2024, 1, 27, 12);
  EXPECT_EQ(_KepDateResolveDay(&low, -1, 1, &limits), 1u);
  EXPECT_TRUE(sameRecord(low, limits.lower));
  _KepDateTime high = d;
  EXPECT_EQ(_KepDateResolveDay(&high, 2, 1, &limits), 1u);
  EXPECT_TRUE(sameRecord(high, limits.upper));
  EXPECT_EQ(_KepDateResolveDay(&d, 2, 0, &limits), 0u) << "flag 0 ignores the limits";
  EXPECT_TRUE(sameRecord(d, datim(2024, 2, 7)));
}

TEST(CalendarRecords, DayOfWeekWalksEveryMode) {
  for (long s = gmtSecs(2024, 0, 1); s < gmtSecs(2025, 0, 1); s += kDay) {
    _KepDateTime src = dateAt(s);
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
  _KepDateDayOfWeek(&start, &out, 0, 3, &limits);
  EXPECT_TRUE(sameRecord(out, limits.lower));
}

TEST(CalendarZones, BlocksReadBackInBothForms) {
  unsigned long live = _KepMMTestLiveHandles();
  {
    Zone rule;
    ASSERT_EQ(_KepDateCreateTZ(0, 5, 2, 1, 2, 9, 3600, -7200, 0xABCDEF, rule.out()), 0u);
    uint8_t f[8];
    int32_t adjust = 0;
    int32_t offset = 0;
    unsigned long value = 0;
    unsigned long form = 9;
    ASSERT_EQ(_KepDateReadTZ(rule.get(), &f[0], &f[1], &f[2], &f[3], &f[4], &f[5], &f[6], &f[7],
                             &adjust, &offset, &value, &form),
              0u);
    // The days of this year's transitions: the last Sunday of March, the second
    // Monday of October.
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    int year = local.tm_year + 1900;
    int lastSunday = 0;
    int secondMonday = 0;
    for (int day = 1; day <= 31; ++day) {
      if (utc(gmtSecs(year, 2, day)).tm_wday == 0) lastSunday = day;
      if (utc(gmtSecs(year, 9, day)).tm_wday == 1 && secondMonday == 0 && day > 7)
        secondMonday = day;
    }
    EXPECT_EQ(std::vector<int>(f, f + 8),
              (std::vector<int>{0, 5, 2, 1, 2, 9, lastSunday, secondMonday}));
    EXPECT_EQ(std::vector<long>({adjust, offset, long(value), long(form)}),
              std::vector<long>({3600, -7200, 0xABCDEF, 1}));
    EXPECT_EQ(_KepDateReadTZ(rule.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              0u)
        << "every out pointer may be null";

    Zone fixed;
    ASSERT_EQ(_KepDateCreateTZOld(6, 3, 25, 8, KEP_DATE_TZ_NOT_SET, 3600, 7, fixed.out()), 0u);
    ASSERT_EQ(_KepDateReadTZOld(fixed.get(), &f[0], &f[1], &f[2], &f[3], &adjust, &offset, &value),
              0u);
    EXPECT_EQ(std::vector<int>(f, f + 4), (std::vector<int>{6, 3, 25, 8}));
    EXPECT_EQ(std::vector<long>({adjust, offset, long(value)}), std::vector<long>({0, 3600, 7}))
        << "0x8080 reads as not set";
    ASSERT_EQ(_KepDateReadTZ(fixed.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             &f[6], &f[7], nullptr, nullptr, nullptr, &form),
              0u);
    EXPECT_EQ(std::vector<long>({f[6], f[7], long(form)}), std::vector<long>({6, 25, 0}));
  }
  EXPECT_EQ(_KepMMTestLiveHandles(), live) << "no zone block leaked";
}

TEST(CalendarZones, UnsetAdjustmentsReadAsZeroAndBadHandlesAreRefused) {
  Zone unset;
  ASSERT_EQ(
      _KepDateCreateTZ(0, 5, 2, 0, 5, 9, KEP_DATE_TZ_NOT_SET, KEP_DATE_TZ_NOT_SET, 0, unset.out()),
      0u);
  Zone southernUnset;
  ASSERT_EQ(_KepDateCreateTZ(0, 1, 9, 0, 1, 3, KEP_DATE_TZ_NOT_SET, 0, 1, southernUnset.out()), 0u);
  void* freed = nullptr;
  ASSERT_EQ(_KepDateCreateTZ(0, 5, 2, 0, 5, 9, 3600, 3600, 0, &freed), 0u);
  ASSERT_EQ(_KepMMTestFree(freed), 0u);
  Zone tooSmall;
  ASSERT_EQ(_KepMMTestAlloc(8, tooSmall.out()), 0u);
  void* forged = reinterpret_cast<void*>(0x5eed00000001ull);

  Rng rng(17);
  for (int i = 0; i < 2000; ++i) {
    unsigned long secs = rng.below(1ull << 32);
    _KepDateTime plain = toDate(secs);
    unsigned long plainBack = toSecs(plain);
    _KepDateTime d;
    for (void* zone : {unset.get(), southernUnset.get()})
      ASSERT_TRUE(sameRecord(toDate(secs, zone), plain)) << "unset adjustments read as 0";
    for (void* zone : {freed, tooSmall.get(), forged}) {
      ASSERT_EQ(_KepDateSecs2Date(secs, &d, zone), KEP_MM_BAD_HANDLE);
      ASSERT_TRUE(sameRecord(d, plain)) << "filled without the zone";
      unsigned long back = 0;
      ASSERT_EQ(_KepDateDate2Secs(&plain, &back, zone), KEP_MM_BAD_HANDLE);
      ASSERT_EQ(back, plainBack);
    }
  }
  unsigned long value = 1000000000;
  EXPECT_EQ(_KepDateBeginMonth(freed, &value), KEP_MM_BAD_HANDLE);
  EXPECT_EQ(_KepDateAddGMT(value, 60, freed, &value), KEP_MM_BAD_HANDLE);
  int32_t adjust = 0;
  EXPECT_EQ(_KepDateReadTZ(freed, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, &adjust, nullptr, nullptr, nullptr),
            KEP_MM_BAD_HANDLE);
  EXPECT_EQ(_KepDateReadTZOld(tooSmall.get(), nullptr, nullptr, nullptr, nullptr, &adjust, nullptr,
                              nullptr),
            KEP_MM_BAD_HANDLE);
  EXPECT_EQ(_KepDateCreateTZ(0, 0, 0, 0, 0, 0, 0, 0, 0, nullptr), KEP_MM_BAD_HANDLE);
}

TEST(CalendarZones, OneZoneSharedByThreads) {
  Zone sydney;
  ASSERT_EQ(_KepDateCreateTZ(0, 1, 9, 0, 1, 3, 3600, 36000, 1, sydney.out()), 0u);
  Rng rng(19);
  std::vector<unsigned long> instants(static_cast<size_t>(scaled(20000, 4000)));
  std::vector<_KepDateTime> single;
  for (auto& s : instants) {
    s = rng.below(1ull << 32);
    single.push_back(toDate(s, sydney.get()));
  }
  std::vector<int> mismatches(4, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (size_t i = 0; i < instants.size(); ++i) {
        _KepDateTime d;
        unsigned long back = 0;
        if (_KepDateSecs2Date(instants[i], &d, sydney.get()) != 0 ||
            std::memcmp(&d, &single[i], sizeof d) != 0 ||
            _KepDateDate2Secs(&d, &back, sydney.get()) != 0)
          ++mismatches[size_t(t)];
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}
