// Helpers of the calendar tests: glibc as the oracle, zone handles that free
// themselves, a temporary TZ setting and reproducible samples.
#ifndef KEP_TESTS_DATE_DATETESTUTIL_H
#define KEP_TESTS_DATE_DATETESTUTIL_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace datetest {

constexpr long kDay = 86400;

// Sanitized builds run the sampled checks on fewer samples.
inline long scaled(long normal, long sanitized) { return keptest::kSanitized ? sanitized : normal; }

struct Rng : std::mt19937_64 {
  using std::mt19937_64::mt19937_64;
  uint64_t next() { return (*this)(); }
  uint64_t below(uint64_t n) { return next() % n; }
};

// glibc's fields of a GMT value, in GMT or in the local time of TZ.
inline std::tm utc(long secs, bool inLocalTime = false) {
  std::time_t t = secs;
  std::tm tm{};
  return *(inLocalTime ? localtime_r(&t, &tm) : gmtime_r(&t, &tm));
}
inline std::tm local(long secs) { return utc(secs, true); }

// timegm of the given (possibly unnormalised) fields; month 0-11.
inline long gmtSecs(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  std::tm tm{second, minute, hour, day, month, year - 1900, 0, 0, 0, 0, nullptr};
  return static_cast<long>(timegm(&tm));
}

inline int monthLength(int year, int month) {
  return int((gmtSecs(year, month + 1, 1) - gmtSecs(year, month, 1)) / kDay);
}

// A duration record: the fields to add or subtract, no weekday.
inline _KepDateTime span(int years, int months, int days, int hours = 0, int minutes = 0,
                         int seconds = 0, int ms = 0) {
  return {uint16_t(years), uint8_t(months),  uint8_t(days),    0,
          uint8_t(hours),  uint8_t(minutes), uint8_t(seconds), uint16_t(ms)};
}

// A record of the given fields as they stand, its weekday from glibc.
inline _KepDateTime datim(int year, int month, int day, int hour = 0, int minute = 0,
                          int second = 0, int ms = 0) {
  _KepDateTime d = span(year, month, day, hour, minute, second, ms);
  d.dayOfWeek = uint8_t(utc(gmtSecs(year, month, day)).tm_wday);
  return d;
}

// The record of a broken-down time of glibc, and of a GMT value.
inline _KepDateTime fromTm(std::tm const& tm) {
  return {uint16_t(tm.tm_year + 1900), uint8_t(tm.tm_mon), uint8_t(tm.tm_mday), uint8_t(tm.tm_wday),
          uint8_t(tm.tm_hour),         uint8_t(tm.tm_min), uint8_t(tm.tm_sec),  0};
}
inline _KepDateTime dateAt(long secs) { return fromTm(utc(secs)); }

inline long secsOf(_KepDateTime const& d) {
  return gmtSecs(d.year, d.month, d.day, d.hour, d.minute, d.second);
}

// The library's conversions, expected to succeed.
inline unsigned long toSecs(_KepDateTime const& d, void* zone = nullptr) {
  unsigned long secs = 0;
  EXPECT_EQ(_KepDateDate2Secs(&d, &secs, zone), 0u);
  return secs;
}

inline _KepDateTime toDate(unsigned long secs, void* zone = nullptr) {
  _KepDateTime d;
  EXPECT_EQ(_KepDateSecs2Date(secs, &d, zone), 0u);
  return d;
}

inline std::string show(_KepDateTime const& d) {
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u wd%u", unsigned(d.year),
                unsigned(d.month) + 1, unsigned(d.day), unsigned(d.hour), unsigned(d.minute),
                unsigned(d.second), unsigned(d.milliseconds), unsigned(d.dayOfWeek));
  return text;
}

inline ::testing::AssertionResult sameRecord(_KepDateTime const& a, _KepDateTime const& b) {
  if (std::memcmp(&a, &b, sizeof a) == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << show(a) << " != " << show(b);
}

// A zone handle freed at the end of its scope.
struct Zone {
  Zone() = default;
  Zone(Zone const&) = delete;
  ~Zone() { _KepMMTestFree(handle); }
  void* handle = nullptr;
};

// Sets TZ for the scope; the suite runs without TZ otherwise.
struct ScopedTZ {
  explicit ScopedTZ(char const* tz) { setenv("TZ", tz, 1), tzset(); }
  ~ScopedTZ() { unsetenv("TZ"), tzset(); }
};

}  // namespace datetest

#endif  // KEP_TESTS_DATE_DATETESTUTIL_H
