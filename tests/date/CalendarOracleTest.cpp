// The calendar layer against glibc: gmtime_r/timegm for GMT conversions,
// strftime for weekdays and week numbers, localtime_r/mktime under POSIX TZ rules
// for zones, period bounds and the clock.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "DateTestUtil.h"
#include "kep/contain/_KepRandom.h"

using namespace datetest;

namespace {

// 2106-02-06 11:00:00, the latest date that converts.
const unsigned long kClamp = static_cast<unsigned long>(gmtSecs(2106, 1, 6, 11));

// Central European time: the last Sundays of March and October.
char const kCetRule[] = "CET-1CEST,M3.5.0/2,M10.5.0/3";
uint32_t createCet(void** h) { return _KepDateCreateTZ(0, 5, 2, 0, 5, 9, 3600, 3600, 0, h); }

}  // namespace

TEST(CalendarVsGlibc, InstantsConvertLikeGmtimeAndBackWithTheUpperClamp) {
  // Every day boundary of the first and the last year, a million 32-bit values,
  // and 64-bit values up to the year 34300: so far the 16-bit leap-day count holds
  // for the first estimate of the year (days / 365 + 1970, which runs ahead of the
  // true year by the leap days).
  std::vector<unsigned long> instants;
  for (int year : {1970, 2106}) {
    for (long start = gmtSecs(year, 0, 1); start < gmtSecs(year + 1, 0, 1); start += kDay)
      for (long secs : {start - 1, start, start + kDay - 1})
        if (secs >= 0) instants.push_back(static_cast<unsigned long>(secs));
  }
  Rng rng(1);
  const uint64_t far = static_cast<uint64_t>(gmtSecs(34300, 0, 1));
  for (long i = 0; i < scaled(1200000, 120000); ++i)
    instants.push_back(rng.below(i % 6 ? 1ull << 32 : far));
  for (unsigned long secs : instants) {
    _KepDateTime d = toDate(secs);
    ASSERT_TRUE(sameRecord(d, dateAt(long(secs)))) << secs;
    d.milliseconds = 999;  // ignored
    ASSERT_EQ(toSecs(d), std::min(secs, kClamp)) << show(d);
  }
  // Past the year 34300 the fields are whatever the arithmetic gives, but in range.
  for (long i = 0; i < scaled(200000, 20000); ++i) {
    _KepDateTime d = toDate(rng.next());
    ASSERT_TRUE(d.dayOfWeek < 7 && d.dayOfWeek == _KepDateWeekDay(&d) && d.month <= 12) << show(d);
    toSecs(d);
    _KepDateResolveDay(&d, 3, 0, nullptr);
    ASSERT_LE(d.month, 11);
  }
}

TEST(CalendarVsGlibc, WeekdayDayOfYearIsoWeekMonthAndNthWeekdayOfEveryDay) {
  for (long secs = gmtSecs(1971, 0, 1); secs < gmtSecs(2106, 0, 1); secs += kDay) {
    std::tm tm = utc(secs);
    _KepDateTime d = fromTm(tm);
    d.dayOfWeek = 0;  // computed, not read
    char want[32];
    char got[32];
    std::strftime(want, sizeof want, "%w %j %V", &tm);
    std::snprintf(got, sizeof got, "%d %03d %02d", _KepDateWeekDay(&d), _KepDateDayOfYear(&d),
                  _KepDateWeekNum(&d));
    ASSERT_STREQ(got, want) << show(d);
    ASSERT_EQ(_KepDateFirstOfMonth(&d), utc(secs - (tm.tm_mday - 1) * kDay).tm_wday);
    int length = monthLength(d.year, d.month);
    ASSERT_EQ(_KepDateLastDayofMonth(&d), length);
    // The day is the nth of its weekday in the month: week 0 counts as 1, and a
    // week past the last means the last.
    int nth = (d.day - 1) / 7 + 1;
    for (int week = nth == 1 ? 0 : nth; week <= (d.day + 7 > length ? 6 : nth); ++week)
      ASSERT_EQ(__KepDateDoFormula(d.month + 1, d.year, tm.tm_wday, week), d.day) << week;
  }
}

TEST(CalendarVsGlibc, ZonesConvertLikeLocaltimeAwayFromTransitions) {
  // Each zone and the POSIX TZ rule that means the same. Every sampled hour of
  // 1971-2105 converts like localtime_r, except within a day of a daylight
  // transition. There the zone follows its own rule, reckoned on the date in the
  // zone's base time (standard time; for a southern zone summer time, with winter
  // as a negative adjustment): on the day daylight time begins it is in force
  // from 02:00, on the day it ends up to 01:59.
  struct ZoneCase {
    char const* posix;
    long standard;  // seconds east of GMT; the adjustment is an hour
    bool southern;
    uint32_t (*create)(void**);
  };
  ZoneCase const cases[] = {
      {kCetRule, 3600, false, createCet},
      {"EST5EDT,M3.2.0/2,M11.1.0/2", -18000, false,
       [](void** h) { return _KepDateCreateTZ(0, 2, 2, 0, 1, 10, 3600, -18000, 0, h); }},
      {"AEST-10AEDT,M10.1.0/2,M4.1.0/3", 36000, true,
       [](void** h) { return _KepDateCreateTZ(0, 1, 9, 0, 1, 3, 3600, 36000, 1, h); }},
      // A fixed-date zone: J91 is 1 April and J304 is 31 October (leap days not counted).
      {"XST-2XDT,J91/2,J304/2", 7200, false,
       [](void** h) { return _KepDateCreateTZOld(1, 3, 31, 9, 3600, 7200, 0, h); }},
  };
  auto dateOf = [](std::tm const& tm) { return tm.tm_year * 400 + tm.tm_yday; };
  for (ZoneCase const& zc : cases) {
    Zone zone;
    ASSERT_EQ(zc.create(&zone.handle), 0u);
    ScopedTZ tz(zc.posix);
    const long baseOffset = zc.southern ? zc.standard + 3600 : zc.standard;
    const long baseAdjust = zc.southern ? -3600 : 3600;
    // In the zone's base terms: is the base daylight adjustment in force?
    auto baseDaylight = [&](long s) { return (local(s).tm_isdst > 0) != zc.southern; };

    // Transitions: the hours at which glibc's state changes.
    const long first = gmtSecs(1971, 0, 1);
    const long last = gmtSecs(2106, 0, 1);
    std::vector<long> transitions;
    for (long s = first + 3600; s < last; s += 3600)
      if (baseDaylight(s) != baseDaylight(s - 3600)) transitions.push_back(s);
    ASSERT_GT(transitions.size(), 2u * 130) << zc.posix;

    size_t next = 0;
    for (long s = first; s < last; s += 3600 * scaled(1, 7)) {
      while (next < transitions.size() && transitions[next] + kDay <= s) ++next;
      bool nearby = next < transitions.size() && transitions[next] - kDay < s;
      _KepDateTime d = toDate(static_cast<unsigned long>(s), zone.handle);
      if (!nearby) {
        ASSERT_TRUE(sameRecord(d, fromTm(local(s)))) << zc.posix << " at " << s;
        ASSERT_EQ(toSecs(d, zone.handle), static_cast<unsigned long>(s)) << show(d);
        continue;
      }
      // Near a transition: its day in base time and whether daylight begins there.
      bool begins = baseDaylight(transitions[next]);
      int transitionDay = dateOf(utc(transitions[next] + baseOffset));
      auto decide = [&](std::tm const& t) {
        if (dateOf(t) != transitionDay) return (dateOf(t) > transitionDay) == begins;
        return begins ? t.tm_hour >= 2 : t.tm_hour <= 1;
      };
      std::tm expected = utc(s + baseOffset + (decide(utc(s + baseOffset)) ? baseAdjust : 0));
      ASSERT_TRUE(sameRecord(d, fromTm(expected))) << zc.posix << " near transition at " << s;
      // The way back decides on the local date it is given.
      long back = timegm(&expected) - baseOffset - (decide(expected) ? baseAdjust : 0);
      ASSERT_EQ(toSecs(d, zone.handle), static_cast<unsigned long>(back)) << show(d);
    }
  }
}

TEST(CalendarVsGlibc, PeriodBoundsWithoutAndWithZone) {
  // Each bound as glibc fields: days from today (or a reset of the month or year)
  // and the second of the bound (1 for begin, 0 for end, which is the next midnight).
  struct Bound {
    char const* name;
    uint32_t (*fn)(void*, unsigned long*);
    void (*move)(std::tm&);
    int second;
  };
  Bound const bounds[] = {
      {"BeginYesterday", _KepDateBeginYesterday, [](std::tm& t) { t.tm_mday -= 1; }, 1},
      {"BeginToday", _KepDateBeginToday, [](std::tm&) {}, 1},
      {"EndToday", _KepDateEndToday, [](std::tm& t) { t.tm_mday += 1; }, 0},
      {"EndTomorrow", _KepDateEndTomorrow, [](std::tm& t) { t.tm_mday += 2; }, 0},
      {"BeginWeek", _KepDateBeginWeek, [](std::tm& t) { t.tm_mday -= t.tm_wday; }, 1},
      {"EndWeek", _KepDateEndWeek, [](std::tm& t) { t.tm_mday += 7 - t.tm_wday; }, 0},
      {"BeginMonth", _KepDateBeginMonth, [](std::tm& t) { t.tm_mday = 1; }, 1},
      {"EndMonth", _KepDateEndMonth, [](std::tm& t) { t.tm_mon += 1, t.tm_mday = 1; }, 0},
      {"BeginYear", _KepDateBeginYear, [](std::tm& t) { t.tm_mon = 0, t.tm_mday = 1; }, 1},
      {"EndYear", _KepDateEndYear, [](std::tm& t) { t.tm_year += 1, t.tm_mon = 0, t.tm_mday = 1; },
       0},
  };
  Zone cet;
  ASSERT_EQ(createCet(&cet.handle), 0u);
  ScopedTZ tz(kCetRule);
  Rng rng(7);
  for (long i = 0; i < scaled(20000, 2000); ++i) {
    long secs = gmtSecs(1971, 0, 1) + static_cast<long>(rng.below(4000000000ull));
    for (bool zoned : {false, true}) {
      for (Bound const& b : bounds) {
        std::tm want = zoned ? local(secs) : utc(secs);
        b.move(want);
        want.tm_hour = want.tm_min = 0;
        want.tm_sec = b.second;
        want.tm_isdst = -1;
        long expected = zoned ? long(mktime(&want)) : long(timegm(&want));
        unsigned long value = static_cast<unsigned long>(secs);
        ASSERT_EQ(b.fn(zoned ? cet.handle : nullptr, &value), 0u);
        ASSERT_EQ(value, static_cast<unsigned long>(expected))
            << b.name << (zoned ? " CET" : " GMT") << " of " << secs;
      }
    }
  }
}

TEST(CalendarVsGlibc, AddGmtIsCalendarAdditionOfTheSpanFields) {
  Rng rng(11);
  for (long i = 0; i < scaled(200000, 20000); ++i) {
    unsigned long secs = gmtSecs(1971, 0, 1) + rng.below(3000000000ull);
    unsigned long delta = rng.below(i % 2 ? 40 * kDay : 20 * 365 * kDay);
    std::tm t = utc(long(secs));
    std::tm d = utc(long(delta));
    long want =
        gmtSecs(t.tm_year + 1900 + d.tm_year - 70, t.tm_mon + d.tm_mon, t.tm_mday + d.tm_mday - 1,
                t.tm_hour + d.tm_hour, t.tm_min + d.tm_min, t.tm_sec + d.tm_sec);
    unsigned long out = 0;
    ASSERT_EQ(_KepDateAddGMT(secs, delta, nullptr, &out), 0u);
    ASSERT_EQ(out, static_cast<unsigned long>(want)) << secs << " + " << delta;
    if (delta < 28 * kDay) {  // spans shorter than any month subtract exactly
      ASSERT_EQ(_KepDateSubGMT(secs, delta, nullptr, &out), 0u);
      ASSERT_EQ(out, secs - delta) << secs << " - " << delta;
    }
  }
}

TEST(CalendarVsGlibc, ClockReadsAndTheRandomSeedFollowTheSystemClock) {
  ScopedTZ tz(kCetRule);
  Zone cet;
  ASSERT_EQ(createCet(&cet.handle), 0u);
  for (int attempt = 0; attempt < 5; ++attempt) {
    std::time_t before = std::time(nullptr);
    unsigned long wall = 0, gmt = 0;
    ASSERT_EQ(_KepDateGetGMT(&wall, nullptr) | _KepDateGetGMT(&gmt, cet.handle), 0u);
    _KepRandomGenerator g;
    _KepRandomize(&g);
    if (before != std::time(nullptr)) continue;  // the clock ticked: read again
    std::tm wallFields = local(before);
    // Without a zone the wall clock reads as GMT; through the matching zone it is
    // the true GMT value. The generator is seeded from the wall clock's value.
    EXPECT_EQ(wall, static_cast<unsigned long>(timegm(&wallFields)));
    EXPECT_EQ(gmt, static_cast<unsigned long>(before));
    EXPECT_EQ(static_cast<unsigned long>(g.seed), wall % 2147483646 + 1);
    return;
  }
  FAIL() << "the clock never held still for one second";
}
