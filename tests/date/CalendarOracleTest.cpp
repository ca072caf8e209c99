// The calendar layer against glibc: gmtime_r/timegm for GMT conversions,
// strftime for weekdays and week numbers, localtime_r/mktime under POSIX TZ rules
// for zones, period bounds and the clock.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "DateTestUtil.h"
#include "kep/contain/_KepRandom.h"

using namespace datetest;

namespace {

// 2106-02-06 11:00:00, the latest date that converts.
long clampSecs() { return gmtSecs(2106, 1, 6, 11); }

// Central European time: the last Sundays of March and October.
char const kCetRule[] = "CET-1CEST,M3.5.0/2,M10.5.0/3";
uint32_t createCet(void** h) { return _KepDateCreateTZ(0, 5, 2, 0, 5, 9, 3600, 3600, 0, h); }

}  // namespace

TEST(CalendarVsGlibc, RandomInstantsConvertLikeGmtimeAndTimegm) {
  Rng rng(1);
  const long clamp = clampSecs();
  for (long i = 0; i < scaled(1000000, 100000); ++i) {
    long secs = static_cast<long>(rng.below(1ull << 32));
    ASSERT_TRUE(sameFields(toDate(static_cast<unsigned long>(secs)), utc(secs))) << secs;

    // Independent fields for the way back: any valid date and time of the range.
    int year = 1970 + static_cast<int>(rng.below(137));
    int month = static_cast<int>(rng.below(12));
    long days = (gmtSecs(year, month + 1, 1) - gmtSecs(year, month, 1)) / kDay;
    int day = 1 + static_cast<int>(rng.below(static_cast<uint64_t>(days)));
    int hour = static_cast<int>(rng.below(24));
    int minute = static_cast<int>(rng.below(60));
    int second = static_cast<int>(rng.below(60));
    long expected = std::min(gmtSecs(year, month, day, hour, minute, second), clamp);
    ASSERT_EQ(toSecs(datim(year, month, day, hour, minute, second, 999)),
              static_cast<unsigned long>(expected))
        << year << "-" << month + 1 << "-" << day;
  }
}

TEST(CalendarVsGlibc, EveryDayBoundaryOfTheFirstAndLastYear) {
  const long clamp = clampSecs();
  for (int year : {1970, 2106}) {
    for (long start = gmtSecs(year, 0, 1); start < gmtSecs(year + 1, 0, 1); start += kDay) {
      for (long secs : {start, start - 1, start + kDay - 1}) {
        if (secs < 0) continue;
        _KepDateTime d = toDate(static_cast<unsigned long>(secs));
        ASSERT_TRUE(sameFields(d, utc(secs))) << secs;
        EXPECT_EQ(toSecs(d), static_cast<unsigned long>(std::min(secs, clamp))) << show(d);
      }
    }
  }
}

TEST(CalendarVsGlibc, BeyondTheThirtyTwoBitRange) {
  // GMT values are 64 bits wide: dates agree with glibc as long as the 16-bit
  // leap-day count holds for the first estimate of the year (days / 365 + 1970,
  // which runs ahead of the true year by the leap days), up to about 34300.
  // Past that the fields are whatever the arithmetic gives, but always in range.
  Rng rng(2);
  const uint64_t limit = static_cast<uint64_t>(gmtSecs(34300, 0, 1));
  for (long i = 0; i < scaled(200000, 20000); ++i) {
    unsigned long secs = rng.below(limit);
    ASSERT_TRUE(sameFields(toDate(secs), utc(long(secs)))) << secs;
    _KepDateTime d = toDate(rng.next());
    ASSERT_TRUE(d.dayOfWeek < 7 && d.dayOfWeek == _KepDateWeekDay(&d) && d.month <= 12) << show(d);
    toSecs(d);  // converts back without error
    _KepDateResolveDay(&d, 3, 0, nullptr);
    ASSERT_LE(d.month, 11);
  }
}

TEST(CalendarVsGlibc, WeekdayDayOfYearIsoWeekAndMonthOfEveryDay) {
  for (long secs = gmtSecs(1971, 0, 1); secs < gmtSecs(2106, 0, 1); secs += kDay) {
    std::tm tm = utc(secs);
    char text[32];
    std::strftime(text, sizeof text, "%w %j %V", &tm);
    int weekday = 0;
    int yday = 0;
    int isoWeek = 0;
    ASSERT_EQ(std::sscanf(text, "%d %d %d", &weekday, &yday, &isoWeek), 3);
    _KepDateTime d = datim(tm.tm_year + 1900, tm.tm_mon, tm.tm_mday);
    d.dayOfWeek = 0;  // computed, not read
    ASSERT_EQ(_KepDateWeekDay(&d), weekday) << text;
    ASSERT_EQ(_KepDateDayOfYear(&d), yday) << text;
    ASSERT_EQ(_KepDateWeekNum(&d), isoWeek) << show(d);
    ASSERT_EQ(_KepDateFirstOfMonth(&d), utc(secs - (tm.tm_mday - 1) * kDay).tm_wday);
    long monthStart = gmtSecs(tm.tm_year + 1900, tm.tm_mon, 1);
    ASSERT_EQ(_KepDateLastDayofMonth(&d),
              (gmtSecs(tm.tm_year + 1900, tm.tm_mon + 1, 1) - monthStart) / kDay);
  }
  // The century rules outside the converting range.
  for (int year : {1900, 2000, 2100, 2400}) {
    _KepDateTime feb = datim(year, 1, 1);
    _KepDateTime dec31 = datim(year, 11, 31);
    EXPECT_EQ(_KepDateLastDayofMonth(&feb), (gmtSecs(year, 2, 1) - gmtSecs(year, 1, 1)) / kDay);
    EXPECT_EQ(_KepDateDayOfYear(&dec31), (gmtSecs(year + 1, 0, 1) - gmtSecs(year, 0, 1)) / kDay);
  }
}

TEST(CalendarVsGlibc, NthWeekdayOfMonthMatchesAWalkOverTheDays) {
  for (int year = 1971; year <= 2105; ++year) {
    for (int month = 0; month < 12; ++month) {
      std::vector<int> byWeekday[7];
      for (long s = gmtSecs(year, month, 1); s < gmtSecs(year, month + 1, 1); s += kDay)
        byWeekday[utc(s).tm_wday].push_back(utc(s).tm_mday);
      for (int weekday = 0; weekday < 7; ++weekday) {
        std::vector<int> const& days = byWeekday[weekday];
        for (int week = 0; week <= 6; ++week) {  // 0 counts as 1, past the last as the last
          size_t index = week <= 1 ? 0 : std::min<size_t>(size_t(week) - 1, days.size() - 1);
          ASSERT_EQ(__KepDateDoFormula(month + 1, year, weekday, week), days[index])
              << year << "-" << month + 1 << " weekday " << weekday << " week " << week;
        }
      }
    }
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
    long standard;  // seconds east of GMT
    long adjust;
    bool southern;
    uint32_t (*create)(void**);
  };
  ZoneCase const cases[] = {
      {kCetRule, 3600, 3600, false, createCet},
      {"EST5EDT,M3.2.0/2,M11.1.0/2", -18000, 3600, false,
       [](void** h) { return _KepDateCreateTZ(0, 2, 2, 0, 1, 10, 3600, -18000, 0, h); }},
      {"AEST-10AEDT,M10.1.0/2,M4.1.0/3", 36000, 3600, true,
       [](void** h) { return _KepDateCreateTZ(0, 1, 9, 0, 1, 3, 3600, 36000, 1, h); }},
      {"NZST-12NZDT,M9.5.0/2,M4.1.0/3", 43200, 3600, true,
       [](void** h) { return _KepDateCreateTZ(0, 5, 8, 0, 1, 3, 3600, 43200, 1, h); }},
      // A fixed-date zone: J91 is 1 April and J304 is 31 October (leap days not counted).
      {"XST-2XDT,J91/2,J304/2", 7200, 3600, false,
       [](void** h) { return _KepDateCreateTZOld(1, 3, 31, 9, 3600, 7200, 0, h); }},
  };
  using Date3 = std::tuple<int, int, int>;
  auto dateOf = [](std::tm const& tm) { return Date3{tm.tm_year, tm.tm_mon, tm.tm_mday}; };
  for (ZoneCase const& zc : cases) {
    Zone zone;
    ASSERT_EQ(zc.create(zone.out()), 0u);
    ScopedTZ tz(zc.posix);
    const long baseOffset = zc.southern ? zc.standard + zc.adjust : zc.standard;
    const long baseAdjust = zc.southern ? -zc.adjust : zc.adjust;
    auto localOf = [](long s) {
      std::time_t t = s;
      std::tm tm{};
      localtime_r(&t, &tm);
      return tm;
    };
    // In the zone's base terms: is the base daylight adjustment in force?
    auto baseDaylight = [&](long s) { return (localOf(s).tm_isdst > 0) != zc.southern; };

    // Transitions: glibc's state sampled every 6 hours, the changing hour found by bisection.
    const long first = gmtSecs(1971, 0, 1);
    const long last = gmtSecs(2106, 0, 1);
    std::vector<long> transitions;
    bool state = baseDaylight(first);
    for (long s = first + 6 * 3600; s < last; s += 6 * 3600) {
      if (baseDaylight(s) == state) continue;
      long lo = s - 6 * 3600;
      long hi = s;
      while (hi - lo > 3600) {
        long mid = lo + (hi - lo) / 7200 * 3600;
        (baseDaylight(mid) == state ? lo : hi) = mid;
      }
      transitions.push_back(hi);
      state = !state;
    }
    ASSERT_GT(transitions.size(), 2u * 130) << zc.posix;

    size_t next = 0;
    for (long s = first; s < last; s += 3600 * scaled(1, 7)) {
      while (next < transitions.size() && transitions[next] + kDay <= s) ++next;
      bool nearby = next < transitions.size() && transitions[next] - kDay < s;
      _KepDateTime d = toDate(static_cast<unsigned long>(s), zone.get());
      if (!nearby) {
        ASSERT_TRUE(sameFields(d, localOf(s))) << zc.posix << " at " << s;
        ASSERT_EQ(toSecs(d, zone.get()), static_cast<unsigned long>(s)) << show(d);
        continue;
      }
      // Near a transition: its day in base time and whether daylight begins there.
      bool begins = baseDaylight(transitions[next]);
      Date3 transitionDay = dateOf(utc(transitions[next] + baseOffset));
      auto decide = [&](std::tm const& t) {
        if (dateOf(t) != transitionDay) return (dateOf(t) > transitionDay) == begins;
        return begins ? t.tm_hour >= 2 : t.tm_hour <= 1;
      };
      std::tm base = utc(s + baseOffset);
      std::tm expected = utc(s + baseOffset + (decide(base) ? baseAdjust : 0));
      ASSERT_TRUE(sameFields(d, expected)) << zc.posix << " near transition at " << s;
      // The way back decides on the local date it is given.
      long back = timegm(&expected) - baseOffset - (decide(expected) ? baseAdjust : 0);
      ASSERT_EQ(toSecs(d, zone.get()), static_cast<unsigned long>(back)) << show(d);
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
      {"EndYesterday", _KepDateEndYesterday, [](std::tm&) {}, 0},
      {"BeginToday", _KepDateBeginToday, [](std::tm&) {}, 1},
      {"EndToday", _KepDateEndToday, [](std::tm& t) { t.tm_mday += 1; }, 0},
      {"BeginTomorrow", _KepDateBeginTomorrow, [](std::tm& t) { t.tm_mday += 1; }, 1},
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
  ASSERT_EQ(createCet(cet.out()), 0u);
  ScopedTZ tz(kCetRule);
  Rng rng(7);
  for (long i = 0; i < scaled(20000, 2000); ++i) {
    std::time_t secs = gmtSecs(1971, 0, 1) + static_cast<long>(rng.below(4000000000ull));
    for (bool zoned : {false, true}) {
      std::tm local{};
      zoned ? localtime_r(&secs, &local) : gmtime_r(&secs, &local);
      for (Bound const& b : bounds) {
        std::tm want = local;
        b.move(want);
        want.tm_hour = 0;
        want.tm_min = 0;
        want.tm_sec = b.second;
        want.tm_isdst = -1;
        long expected = zoned ? long(mktime(&want)) : long(timegm(&want));
        unsigned long value = static_cast<unsigned long>(secs);
        ASSERT_EQ(b.fn(zoned ? cet.get() : nullptr, &value), 0u);
        ASSERT_EQ(value, static_cast<unsigned long>(expected))
            << b.name << (zoned ? " CET" : " GMT") << " of " << show(local);
      }
    }
  }
}

TEST(CalendarVsGlibc, AddGmtIsCalendarAdditionOfTheSpanFields) {
  Rng rng(11);
  for (long i = 0; i < scaled(200000, 20000); ++i) {
    unsigned long secs = gmtSecs(1971, 0, 1) + rng.below(3000000000ull);
    unsigned long delta = rng.below(i % 2 ? 40 * kDay : 20 * 365 * kDay);
    std::tm want = utc(long(secs));
    std::tm span = utc(long(delta));
    want.tm_year += span.tm_year - 70;
    want.tm_mon += span.tm_mon;
    want.tm_mday += span.tm_mday - 1;
    want.tm_hour += span.tm_hour;
    want.tm_min += span.tm_min;
    want.tm_sec += span.tm_sec;
    unsigned long out = 0;
    ASSERT_EQ(_KepDateAddGMT(secs, delta, nullptr, &out), 0u);
    ASSERT_EQ(out, static_cast<unsigned long>(timegm(&want))) << secs << " + " << delta;
    if (delta < 28 * kDay) {  // spans shorter than any month subtract exactly
      ASSERT_EQ(_KepDateSubGMT(secs, delta, nullptr, &out), 0u);
      ASSERT_EQ(out, secs - delta) << secs << " - " << delta;
    }
  }
}

TEST(CalendarVsGlibc, ClockReadsAndTheRandomSeedFollowTheSystemClock) {
  ScopedTZ tz(kCetRule);
  Zone cet;
  ASSERT_EQ(createCet(cet.out()), 0u);
  for (int attempt = 0; attempt < 5; ++attempt) {
    std::time_t before = std::time(nullptr);
    _KepDateTime now;
    _KepDateGetLocalTime(&now);
    unsigned long wall = 0;
    unsigned long gmt = 0;
    ASSERT_EQ(_KepDateGetGMT(&wall, nullptr), 0u);
    ASSERT_EQ(_KepDateGetGMT(&gmt, cet.get()), 0u);
    _KepRandomGenerator g;
    _KepRandomize(&g);
    if (before != std::time(nullptr)) continue;  // the clock ticked: read again
    std::tm local{};
    localtime_r(&before, &local);
    EXPECT_TRUE(sameFields(now, local));
    // Without a zone the wall clock reads as GMT; through the matching zone it is
    // the true GMT value. The generator is seeded from the wall clock's value.
    EXPECT_EQ(wall, static_cast<unsigned long>(timegm(&local)));
    EXPECT_EQ(gmt, static_cast<unsigned long>(before));
    EXPECT_EQ(static_cast<unsigned long>(g.seed), wall % 2147483646 + 1);
    return;
  }
  FAIL() << "the clock never held still for one second";
}
