// Helpers of the calendar tests: glibc as the oracle, zone handles that free
// themselves, a temporary TZ setting and a deterministic sample generator.
#ifndef KEP_TESTS_DATE_DATETESTUTIL_H
#define KEP_TESTS_DATE_DATETESTUTIL_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace datetest {

constexpr long kDay = 86400;

// Sanitized builds run the sampled checks on fewer samples.
inline long scaled(long normal, long sanitized) { return keptest::kSanitized ? sanitized : normal; }

// splitmix64: reproducible samples.
class Rng {
 public:
  explicit Rng(uint64_t seed) : state_(seed) {}
  uint64_t next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  uint64_t below(uint64_t n) { return next() % n; }

 private:
  uint64_t state_;
};

inline std::tm utc(long secs) {
  std::time_t t = secs;
  std::tm tm{};
  gmtime_r(&t, &tm);
  return tm;
}

// timegm of the given (possibly unnormalised) fields; month 0-11.
inline long gmtSecs(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  std::tm tm{};
  tm.tm_year = year - 1900;
  tm.tm_mon = month;
  tm.tm_mday = day;
  tm.tm_hour = hour;
  tm.tm_min = minute;
  tm.tm_sec = second;
  return static_cast<long>(timegm(&tm));
}

// A record of the given fields, its weekday from glibc.
inline _KepDateTime datim(int year, int month, int day, int hour = 0, int minute = 0,
                          int second = 0, int ms = 0) {
  _KepDateTime d = {};
  d.year = static_cast<uint16_t>(year);
  d.month = static_cast<uint8_t>(month);
  d.day = static_cast<uint8_t>(day);
  d.hour = static_cast<uint8_t>(hour);
  d.minute = static_cast<uint8_t>(minute);
  d.second = static_cast<uint8_t>(second);
  d.milliseconds = static_cast<uint16_t>(ms);
  d.dayOfWeek = static_cast<uint8_t>(utc(gmtSecs(year, month, day)).tm_wday);
  return d;
}

// The record glibc gives for a GMT value.
inline _KepDateTime dateAt(long secs) {
  std::tm tm = utc(secs);
  return datim(tm.tm_year + 1900, tm.tm_mon, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
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

inline std::string show(std::tm const& tm) {
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S wd%w", &tm);
  return text;
}

// Fields of a record against a broken-down time of glibc.
inline ::testing::AssertionResult sameFields(_KepDateTime const& d, std::tm const& tm) {
  if (d.year == tm.tm_year + 1900 && d.month == tm.tm_mon && d.day == tm.tm_mday &&
      d.dayOfWeek == tm.tm_wday && d.hour == tm.tm_hour && d.minute == tm.tm_min &&
      d.second == tm.tm_sec && d.milliseconds == 0)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << show(d) << " != " << show(tm);
}

inline ::testing::AssertionResult sameRecord(_KepDateTime const& a, _KepDateTime const& b) {
  if (std::memcmp(&a, &b, sizeof a) == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << show(a) << " != " << show(b);
}

// A zone handle freed at the end of its scope.
class Zone {
 public:
  Zone() = default;
  ~Zone() {
    if (handle_ != nullptr) _KepMMTestFree(handle_);
  }
  Zone(Zone const&) = delete;
  Zone& operator=(Zone const&) = delete;
  void** out() { return &handle_; }
  void* get() const { return handle_; }

 private:
  void* handle_ = nullptr;
};

// Sets TZ for the scope and restores the previous setting.
class ScopedTZ {
 public:
  explicit ScopedTZ(char const* tz) {
    char const* old = std::getenv("TZ");
    had_ = old != nullptr;
    if (had_) old_ = old;
    setenv("TZ", tz, 1);
    tzset();
  }
  ~ScopedTZ() {
    if (had_)
      setenv("TZ", old_.c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }
  ScopedTZ(ScopedTZ const&) = delete;
  ScopedTZ& operator=(ScopedTZ const&) = delete;

 private:
  bool had_ = false;
  std::string old_;
};

}  // namespace datetest

#endif  // KEP_TESTS_DATE_DATETESTUTIL_H
