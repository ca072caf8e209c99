#include "kep/date/_KepDate.h"

#include <cstring>
#include <ctime>
#include <utility>

#include "kep/memory/_KepMemoryTest.h"

const uint8_t mdays[2][12] = {{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
                              {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31}};
const uint16_t ydays[2][12] = {{0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334},
                               {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335}};
const uint8_t weekoffsets[7] = {5, 6, 7, 8, 9, 3, 4};
const _KepDateTime lastdatim = {2106, 1, 6, 6, 11, 0, 0, 0};

namespace {

constexpr unsigned long kSecsPerDay = 86400;
constexpr unsigned long kTrueGregorianDays = (34000UL - 1970) * 365;

inline int isLeap(long year) {
  return ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0) ? 1 : 0;
}

// Months past December (and negative ones) read the December row of the tables.
inline unsigned monthRow(long month) { return month >= 0 && month < 12 ? unsigned(month) : 11; }

inline int monthDays(long year, long month) { return mdays[isLeap(year)][monthRow(month)]; }

// Leap days in the years 1970 ... year - 1 (0 for 1970, negative before), in
// 16-bit arithmetic as the record's year is 16 bits wide.
inline int16_t leapDays(uint16_t year) {
  auto z = static_cast<int16_t>(year - 1601);
  return static_cast<int16_t>(z / 400 + z / 4 - z / 100 - 89);
}

inline int nonNegativeMod7(long v) {
  long w = v % 7;
  return static_cast<int>(w < 0 ? w + 7 : w);
}

// Day of week of 1 January (1600-01-01 was a Saturday). Years before 1600 are
// folded into 0 ... 6 as well, so that the result always indexes weekoffsets.
inline int jan1Weekday(long year) {
  long y = year - 1600;
  return nonNegativeMod7(y + y / 4 + y / 400 - y / 100 - isLeap(year) + 7);
}

inline int weekDayOf(long year, long month, long day) {
  return nonNegativeMod7(day - 1 + ydays[isLeap(year)][monthRow(month)] + jan1Weekday(year));
}

inline void setWeekDay(_KepDateTime* d) {
  d->dayOfWeek = static_cast<uint8_t>(weekDayOf(d->year, d->month, d->day));
}

// GMT value to date fields, no zone.
void splitSecs(unsigned long secs, _KepDateTime* out) {
  unsigned long days = secs / kSecsPerDay;
  unsigned long rest = secs % kSecsPerDay;
  auto year = static_cast<uint16_t>(days / 365 + 1970);
  auto r = static_cast<long>(days % 365);
  while (r < leapDays(year)) {
    --year;
    r += 365;
  }
  r -= leapDays(year);
  // Walk the months. r / 32 never passes the month that holds day r, so the walk
  // starts there; past the year's end the month is 12, as a walk over all twelve
  // months would leave it.
  int leap = isLeap(year);
  unsigned month;
  if (r >= 365 + leap) {
    month = 12;
    r -= 365 + leap;
  } else {
    month = static_cast<unsigned>(r >> 5);
    while (month < 11 && r >= ydays[leap][month + 1]) ++month;
    r -= ydays[leap][month];
  }
  out->year = year;
  out->month = static_cast<uint8_t>(month);
  out->day = static_cast<uint8_t>(r + 1);
  out->hour = static_cast<uint8_t>(rest / 3600);
  out->minute = static_cast<uint8_t>(rest / 60 % 60);
  out->second = static_cast<uint8_t>(rest % 60);
  out->milliseconds = 0;
  // Up to the year 34000 the date is a true Gregorian one, whose weekday follows
  // from the day count (1970-01-01 was a Thursday); beyond, the 16-bit leap-day
  // count wraps and the weekday is reckoned from the fields as everywhere else.
  if (days < kTrueGregorianDays)
    out->dayOfWeek = static_cast<uint8_t>((days + 4) % 7);
  else
    setWeekDay(out);
}

// Date fields to a GMT value, no zone. Year 0: *secs holds the day count.
unsigned long joinDate(_KepDateTime const& d, unsigned long* secs) {
  if (d.year != 0) {
    auto days = static_cast<int32_t>((long(d.year) - 1970) * 365 + leapDays(d.year) +
                                     ydays[isLeap(d.year)][monthRow(d.month)] + d.day - 1);
    *secs = static_cast<unsigned long>(static_cast<long>(days));
  }
  unsigned long days = *secs;
  return ((days * 24 + d.hour) * 60 + d.minute) * 60 + d.second;
}

inline long readAdjustment(int32_t v) { return v == KEP_DATE_TZ_NOT_SET ? 0 : v; }

// Copies the zone block behind `handle`. Handles whose block is smaller than a
// zone block are refused like handles that do not lock.
uint32_t readBlock(void* handle, _KEP_DATE_TZ* block) {
  void* p = nullptr;
  if (handle == nullptr || _KepMMTestLock(handle, &p) != 0) return KEP_MM_BAD_HANDLE;
  unsigned long size = 0;
  bool whole = _KepMMTestSize(handle, &size) == 0 && size >= sizeof(_KEP_DATE_TZ);
  if (whole) std::memcpy(block, p, sizeof(_KEP_DATE_TZ));
  _KepMMTestUnlock(handle);
  return whole ? 0 : KEP_MM_BAD_HANDLE;
}

// A zone as the conversions apply it: a southern zone (start month after end
// month) is turned around, so that its summer offset becomes the standard one and
// its winter is a negative daylight adjustment between the swapped dates.
class Zone {
 public:
  uint32_t open(void* handle) {
    uint32_t rc = readBlock(handle, &block_);
    if (rc != 0) return rc;
    adjust_ = readAdjustment(block_.daylightAdjust);
    offset_ = readAdjustment(block_.standardOffset);
    startMonth_ = block_.rule[3];
    endMonth_ = block_.rule[7];
    southern_ = startMonth_ > endMonth_;
    if (southern_) {
      std::swap(startMonth_, endMonth_);
      offset_ += adjust_;
      adjust_ = -adjust_;
    }
    return 0;
  }

  long offset() const { return offset_; }
  long adjust() const { return adjust_; }

  // Daylight time on this local date: from 02:00 on the start day, up to 01:59 on
  // the end day, between the two otherwise.
  bool daylight(long year, long month, long day, long hour) const {
    int startDay = block_.form != 0 ? __KepDateDoFormula(block_.rule[3] + 1, int(year),
                                                         block_.rule[1], block_.rule[2])
                                    : block_.rule[0];
    int endDay = block_.form != 0 ? __KepDateDoFormula(block_.rule[7] + 1, int(year),
                                                       block_.rule[5], block_.rule[6])
                                  : block_.rule[4];
    if (southern_) std::swap(startDay, endDay);
    if (month == startMonth_ && day == startDay) return hour >= 2;
    if (month == endMonth_ && day == endDay) return hour <= 1;
    if (month < startMonth_ || (month == startMonth_ && day <= startDay) || month > endMonth_ ||
        (month == endMonth_ && day >= endDay))
      return false;
    return true;
  }

 private:
  _KEP_DATE_TZ block_;
  long adjust_ = 0;
  long offset_ = 0;
  int startMonth_ = 0;
  int endMonth_ = 0;
  bool southern_ = false;
};

// Field-wise view of a record for the add and subtract arithmetic.
struct Parts {
  long year, month, day, hour, minute, second, ms;

  explicit Parts(_KepDateTime const& d)
      : year(d.year),
        month(d.month),
        day(d.day),
        hour(d.hour),
        minute(d.minute),
        second(d.second),
        ms(d.milliseconds) {}

  void store(_KepDateTime* d) const {
    d->year = static_cast<uint16_t>(year);
    d->month = static_cast<uint8_t>(month);
    d->day = static_cast<uint8_t>(day);
    d->hour = static_cast<uint8_t>(hour);
    d->minute = static_cast<uint8_t>(minute);
    d->second = static_cast<uint8_t>(second);
    d->milliseconds = static_cast<uint16_t>(ms);
    setWeekDay(d);
  }

  // Minutes past 59 into hours, hours past 23 into days.
  void normaliseTime() {
    hour += minute / 60;
    minute %= 60;
    day += hour / 24;
    hour %= 24;
  }

  // Borrows of one unit, cascading upwards when the field is itself 0: the empty
  // field borrows from the next one up and is refilled (12 months, the days of the
  // month borrowed, 24 hours, 60 minutes). Day 0 is the last day of the previous
  // month, so a day borrowed from day 1 leaves 0.
  void takeYear() { --year; }
  void takeMonth() {
    take(month, [this] { return takeYear(), 12L; });
  }
  void takeDay() {
    take(day, [this] { return takeMonth(), long(monthDays(year, month)); });
  }
  void takeHour() {
    take(hour, [this] { return takeDay(), 24L; });
  }
  void takeMinute() {
    take(minute, [this] { return takeHour(), 60L; });
  }

  template <typename BorrowUp>
  static void take(long& field, BorrowUp borrowUp) {
    if (field == 0) field = borrowUp();
    --field;
  }
};

int compareField(long a, long b) { return a < b ? -1 : (a > b ? 1 : 0); }

int compareDates(_KepDateTime const& a, _KepDateTime const& b, uint8_t mode) {
  int c = 0;
  if (mode != 2) {
    if ((c = compareField(a.year, b.year)) != 0) return c;
    if ((c = compareField(a.month, b.month)) != 0) return c;
    if ((c = compareField(a.day, b.day)) != 0) return c;
    if (mode == 1) return 0;
  }
  if ((c = compareField(a.hour, b.hour)) != 0) return c;
  if ((c = compareField(a.minute, b.minute)) != 0) return c;
  if ((c = compareField(a.second, b.second)) != 0) return c;
  return compareField(a.milliseconds, b.milliseconds);
}

// Minutes since 1599-12-31 00:00 for a date; a span's own minutes for year 0.
long minuteCount(_KepDateTime const& d) {
  long y = d.year == 0 ? 0 : long(d.year) - 1600;
  long leap = isLeap(d.year);
  return y * 525600 +
         (ydays[leap][monthRow(d.month)] + ((y >> 2) - y / 100 + y / 400 - leap + 1) + d.day) *
             1440 +
         d.hour * 60 + d.minute;
}

// Moves the date by whole days in date mode.
void stepDays(_KepDateTime* d, long count) {
  _KepDateTime span = {};
  span.day = static_cast<uint8_t>(count < 0 ? -count : count);
  if (count < 0)
    _KepDateSubDatim(d, &span, d, 1);
  else
    _KepDateAddDatim(d, &span, d, 1);
}

void setBeginOfDay(_KepDateTime* d) {
  d->hour = 0;
  d->minute = 0;
  d->second = 1;
  d->milliseconds = 0;
}

void setEndOfDay(_KepDateTime* d) {
  d->hour = 24;
  d->minute = 0;
  d->second = 0;
  d->milliseconds = 0;
}

// Converts *secs to a local date, lets `change` move it, converts it back.
template <typename Change>
uint32_t periodBound(void* zone, unsigned long* secs, Change change) {
  _KepDateTime d;
  uint32_t first = _KepDateSecs2Date(*secs, &d, zone);
  change(&d);
  uint32_t second = _KepDateDate2Secs(&d, secs, zone);
  return first != 0 ? first : second;
}

// Local date of `secs` combined with the span of `delta` by `combine`.
template <typename Combine>
uint32_t shiftGMT(unsigned long secs, unsigned long delta, void* zone, unsigned long* out,
                  Combine combine) {
  _KepDateTime base;
  _KepDateTime span;
  _KepDateTime result;
  uint32_t first = _KepDateSecs2Date(secs, &base, zone);
  splitSecs(delta, &span);
  span.year = static_cast<uint16_t>(span.year - 1970);
  span.day = static_cast<uint8_t>(span.day - 1);
  combine(&base, &span, &result);
  unsigned long value = 0;
  uint32_t second = _KepDateDate2Secs(&result, &value, zone);
  *out = value;
  return first != 0 ? first : second;
}

uint32_t createBlock(_KEP_DATE_TZ const& rules, void** handle) {
  if (handle == nullptr) return KEP_MM_BAD_HANDLE;
  void* block = nullptr;
  if (_KepMMTestAllocLocked(sizeof rules, handle, &block) != 0) {
    *handle = nullptr;
    return KEP_MM_BAD_HANDLE;
  }
  std::memcpy(block, &rules, sizeof rules);
  _KepMMTestUnlock(*handle);
  return 0;
}

template <typename T>
inline void put(T* out, T value) {
  if (out != nullptr) *out = value;
}

// The adjustments (unset ones as 0) and the creator's value of a block.
void putValues(_KEP_DATE_TZ const& b, int32_t* daylightAdjust, int32_t* standardOffset,
               unsigned long* value) {
  put(daylightAdjust, static_cast<int32_t>(readAdjustment(b.daylightAdjust)));
  put(standardOffset, static_cast<int32_t>(readAdjustment(b.standardOffset)));
  put(value, b.value);
}

}  // namespace

// --- Records -----------------------------------------------------------------

void _KepDateGetLocalTime(_KepDateTime* out) {
  std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  out->year = static_cast<uint16_t>(tm.tm_year + 1900);
  out->month = static_cast<uint8_t>(tm.tm_mon);
  out->day = static_cast<uint8_t>(tm.tm_mday);
  out->dayOfWeek = static_cast<uint8_t>(tm.tm_wday);
  out->hour = static_cast<uint8_t>(tm.tm_hour);
  out->minute = static_cast<uint8_t>(tm.tm_min);
  out->second = static_cast<uint8_t>(tm.tm_sec);
  out->milliseconds = 0;
}

void _KepDateCopyDatim(_KepDateTime const* src, _KepDateTime* dst, uint8_t mode) {
  switch (mode) {
    case 0:
      *dst = *src;
      break;
    case 1:
      dst->year = src->year;
      dst->month = src->month;
      dst->day = src->day;
      dst->dayOfWeek = src->dayOfWeek;
      break;
    case 2:
      dst->hour = src->hour;
      dst->minute = src->minute;
      dst->second = src->second;
      break;
    default:
      break;
  }
}

void _KepDateAddDatim(_KepDateTime const* a, _KepDateTime const* b, _KepDateTime* out,
                      uint8_t mode) {
  Parts r(*a);
  Parts d(*b);
  long dayCarry = 0;
  if (mode == 0 || mode == 2) {
    r.ms += d.ms;
    r.second += d.second + r.ms / 1000;
    r.ms %= 1000;
    r.minute += d.minute + r.second / 60;
    r.second %= 60;
    r.hour += d.hour + r.minute / 60;
    r.minute %= 60;
    if (mode == 0) {
      dayCarry = r.hour / 24;
      r.hour %= 24;
    } else if (r.hour > 23) {
      r.hour = 23;
      r.minute = 59;
      r.second = 59;
    }
  }
  if (mode == 0 || mode == 1) {
    r.month += d.month;
    r.year += d.year;
    r.day += d.day + dayCarry;
    for (;;) {
      if (r.month < 12 && r.day <= monthDays(r.year, r.month)) break;
      if (r.month > 11) {
        r.year += 1;
        r.month -= 12;
      } else {
        r.day -= monthDays(r.year, r.month);
        r.month += 1;
      }
    }
  }
  r.store(out);
}

unsigned long _KepDateSubDatim(_KepDateTime const* a, _KepDateTime const* b, _KepDateTime* out,
                               uint8_t mode) {
  unsigned long swapped = compareDates(*a, *b, mode) < 0 ? 1 : 0;
  Parts later(swapped ? *b : *a);
  Parts earlier(swapped ? *a : *b);
  later.normaliseTime();
  earlier.normaliseTime();
  // The result is built in `later`; its milliseconds are never touched.
  if (mode == 0) {
    if (later.second < earlier.second) {
      later.second += 60;
      later.takeMinute();
    }
    later.second -= earlier.second;
    if (later.minute < earlier.minute) {
      later.minute += 60;
      later.takeHour();
    }
    later.minute -= earlier.minute;
    if (later.hour < earlier.hour) {
      later.hour += 24;
      later.takeDay();
    }
    later.hour -= earlier.hour;
  } else if (mode == 2) {
    if (later.second < earlier.second) {
      later.second += 60;
      earlier.minute += 1;
    }
    later.second -= earlier.second;
    if (later.minute < earlier.minute) {
      later.minute += 60;
      earlier.hour += 1;
    }
    later.minute -= earlier.minute;
    if (later.hour < earlier.hour) {
      later.hour += 24;
      later.day -= 1;
    }
    later.hour -= earlier.hour;
  }
  if (mode == 0 || mode == 1) {
    long day = later.day - earlier.day;
    while (day < 0) {
      later.takeMonth();
      day += monthDays(later.year, later.month);
    }
    long month = later.month - earlier.month;
    if (month < 0) {
      month += 12;
      later.takeYear();
    }
    long year = later.year - earlier.year;
    if (day == 0 && year != 0) {
      if (--month < 0) {
        month += 12;
        --year;
      }
      day = monthDays(year, month);
    }
    later.year = year;
    later.month = month;
    later.day = day;
  }
  later.store(out);
  return swapped;
}

void _KepDateAddDatimMonth(_KepDateTime* date, uint16_t count) {
  for (unsigned i = 0; i < count; ++i) {
    if (date->month >= 11) {
      date->month = 0;
      ++date->year;
    } else {
      ++date->month;
    }
  }
}

void _KepDateSubDatimMonth(_KepDateTime* date, uint16_t count) {
  for (unsigned i = 0; i < count; ++i) {
    if (date->month == 0) {
      date->month = 11;
      --date->year;
    } else {
      --date->month;
    }
  }
}

uint32_t _KepDateCmpDate(_KepDateTime const* a, _KepDateTime const* b, uint8_t mode) {
  int c = compareDates(*a, *b, mode);
  return c < 0 ? 0xFFFFFFFFu : static_cast<uint32_t>(c);
}

long _KepDateDivTime(_KepDateTime const* a, _KepDateTime const* b) {
  long ca = minuteCount(*a);
  long cb = minuteCount(*b);
  if (ca == 0 || cb == 0) return 0;
  return ca / cb;
}

int _KepDateWeekDay(_KepDateTime const* date) {
  return weekDayOf(date->year, date->month, date->day);
}

int _KepDateFirstOfMonth(_KepDateTime const* date) {
  return nonNegativeMod7(ydays[isLeap(date->year)][monthRow(date->month)] +
                         jan1Weekday(date->year));
}

int _KepDateDayOfYear(_KepDateTime const* date) {
  return ydays[isLeap(date->year)][monthRow(date->month)] + date->day;
}

int _KepDateLastDayofMonth(_KepDateTime const* date) { return monthDays(date->year, date->month); }

int _KepDateWeekNum(_KepDateTime const* date) {
  int week = (_KepDateDayOfYear(date) + weekoffsets[jan1Weekday(date->year)]) / 7;
  if (week == 0) {
    _KepDateTime lastOfPrevious = {};
    lastOfPrevious.year = static_cast<uint16_t>(date->year - 1);
    lastOfPrevious.month = 11;
    lastOfPrevious.day = 31;
    return _KepDateWeekNum(&lastOfPrevious);
  }
  if (week == 53) {
    // Week 1 of the next year when that year begins Monday to Thursday.
    int next = weekoffsets[jan1Weekday(long(date->year) + 1)];
    return (next + 1) / 7 != 0 ? 1 : 53;
  }
  return week;
}

int __KepDateDoFormula(int month, int year, int weekday, int week) {
  // Weekday of the 1st with March as month 1 and February as month 12 of the
  // previous year.
  int mm = ((month + 9) % 12) + 1;
  int yy = month < 3 ? year - 1 : year;
  int c = yy / 100;
  int r = yy % 100;
  int w = ((26 * mm - 2) / 10 + r + r / 4 + c / 4 - 2 * c + 1) % 7;
  if (w < 0) w += 7;
  int d = weekday - w;
  if (d < 0) d += 7;
  if (week > 1) {
    d += (week - 1) * 7;
    int length = monthDays(year, month - 1);
    while (d >= length) d -= 7;
  }
  return d + 1;
}

void _KepDateDayOfWeek(_KepDateTime const* src, _KepDateTime* out, uint8_t weekday, uint8_t mode,
                       _KepTime const* limits) {
  _KepDateTime d = *src;
  // One day step; false when the step was clamped to the limits, which ends the
  // walk (a clamped date would be stepped to the same place again).
  auto step = [&](int16_t by) { return _KepDateResolveDay(&d, by, 1, limits) == 0; };
  auto matches = [&] { return _KepDateWeekDay(&d) == weekday; };
  auto lastOfMonth = [&] { return d.day == monthDays(d.year, d.month); };
  switch (mode) {
    case 1:
      while (_KepDateWeekDay(&d) > weekday && d.day >= 2)
        if (!step(-1)) break;
      break;
    case 2:
      do {
        if (!step(1)) break;
      } while (!matches() && d.day != 1);
      break;
    case 3:
      do {
        if (!step(-1)) break;
      } while (!matches() && d.day != 1);
      break;
    case 4:
    case 5:
      while (!matches() && !lastOfMonth() && d.day != 0)
        if (!step(mode == 4 ? 1 : -1)) break;
      break;
    default:
      break;
  }
  *out = d;
}

unsigned long _KepDateResolveDay(_KepDateTime* date, int16_t step, uint8_t flag,
                                 _KepTime const* limits) {
  int unit = step < 0 ? -step : step;
  int dir = step < 0 ? -1 : 1;
  if (unit < 1 || unit > 4) return 0;
  long year = date->year;
  long month = date->month;
  long day = date->day;
  switch (unit) {
    case 1:
      day += dir;
      break;
    case 2:
      day += 7 * dir;
      break;
    case 3:
      month += dir;
      break;
    default:
      year += dir;
      break;
  }
  while (month < 0) {
    month += 12;
    --year;
  }
  while (month > 11) {
    month -= 12;
    ++year;
  }
  if (unit >= 3) {
    if (day > monthDays(year, month)) day = monthDays(year, month);
  } else {
    while (day > monthDays(year, month)) {
      day -= monthDays(year, month);
      if (++month > 11) {
        month = 0;
        ++year;
      }
    }
  }
  while (day < 1) {
    if (--month < 0) {
      month = 11;
      --year;
    }
    day += monthDays(year, month);
  }
  date->year = static_cast<uint16_t>(year);
  date->month = static_cast<uint8_t>(month);
  date->day = static_cast<uint8_t>(day);
  setWeekDay(date);
  if (flag != 0 && limits != nullptr) {
    if (dir < 0 && compareDates(*date, limits->lower, 0) < 0) {
      *date = limits->lower;
      return 1;
    }
    if (dir > 0 && compareDates(*date, limits->upper, 0) > 0) {
      *date = limits->upper;
      return 1;
    }
  }
  return 0;
}

// --- Conversions ---------------------------------------------------------------

uint32_t _KepDateSecs2Date(unsigned long secs, _KepDateTime* out, void* zone) {
  if (zone == nullptr) {
    splitSecs(secs, out);
    return 0;
  }
  Zone z;
  uint32_t rc = z.open(zone);
  if (rc != 0) {
    splitSecs(secs, out);
    return rc;
  }
  secs += static_cast<unsigned long>(z.offset());
  splitSecs(secs, out);
  // Decided once, on the standard-time date; the shifted date is not tested again.
  if (z.daylight(out->year, out->month, out->day, out->hour)) {
    secs += static_cast<unsigned long>(z.adjust());
    splitSecs(secs, out);
  }
  return 0;
}

uint32_t _KepDateDate2Secs(_KepDateTime const* date, unsigned long* secs, void* zone) {
  Zone z;
  uint32_t rc = zone != nullptr ? z.open(zone) : 0;
  _KepDateTime d = compareDates(*date, lastdatim, 0) > 0 ? lastdatim : *date;
  unsigned long value = joinDate(d, secs);
  if (zone != nullptr && rc == 0) {
    value -= static_cast<unsigned long>(z.offset());
    if (z.daylight(d.year, d.month, d.day, d.hour)) value -= static_cast<unsigned long>(z.adjust());
  }
  *secs = value;
  return rc;
}

void _KepDateSecs2Time(unsigned long secs, _KepDateTime* out) {
  unsigned long rest = secs % kSecsPerDay;
  *out = _KepDateTime{};
  out->day = static_cast<uint8_t>(secs / kSecsPerDay);
  out->hour = static_cast<uint8_t>(rest / 3600);
  out->minute = static_cast<uint8_t>(rest / 60 % 60);
  out->second = static_cast<uint8_t>(rest % 60);
}

uint32_t _KepDateBeginYesterday(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    stepDays(d, -1);
    setBeginOfDay(d);
  });
}

uint32_t _KepDateEndYesterday(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    stepDays(d, -1);
    setEndOfDay(d);
  });
}

uint32_t _KepDateBeginToday(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, setBeginOfDay);
}

uint32_t _KepDateEndToday(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, setEndOfDay);
}

uint32_t _KepDateBeginTomorrow(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    stepDays(d, 1);
    setBeginOfDay(d);
  });
}

uint32_t _KepDateEndTomorrow(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    stepDays(d, 1);
    setEndOfDay(d);
  });
}

uint32_t _KepDateBeginWeek(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    stepDays(d, -long(d->dayOfWeek));
    setBeginOfDay(d);
  });
}

uint32_t _KepDateEndWeek(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    stepDays(d, 6 - long(d->dayOfWeek));
    setEndOfDay(d);
  });
}

uint32_t _KepDateBeginMonth(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    d->day = 1;
    setBeginOfDay(d);
  });
}

uint32_t _KepDateEndMonth(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    d->day = static_cast<uint8_t>(monthDays(d->year, d->month));
    setEndOfDay(d);
  });
}

uint32_t _KepDateBeginYear(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    d->month = 0;
    d->day = 1;
    setBeginOfDay(d);
  });
}

uint32_t _KepDateEndYear(void* zone, unsigned long* secs) {
  return periodBound(zone, secs, [](_KepDateTime* d) {
    d->month = 11;
    d->day = 31;
    setEndOfDay(d);
  });
}

uint32_t _KepDateAddGMT(unsigned long secs, unsigned long delta, void* zone, unsigned long* out) {
  return shiftGMT(secs, delta, zone, out,
                  [](_KepDateTime* base, _KepDateTime* span, _KepDateTime* result) {
                    _KepDateAddDatim(base, span, result, 0);
                  });
}

uint32_t _KepDateSubGMT(unsigned long secs, unsigned long delta, void* zone, unsigned long* out) {
  return shiftGMT(secs, delta, zone, out,
                  [](_KepDateTime* base, _KepDateTime* span, _KepDateTime* result) {
                    _KepDateSubDatim(base, span, result, 0);
                  });
}

uint32_t _KepDateGetGMT(unsigned long* secs, void* zone) {
  _KepDateTime now;
  _KepDateGetLocalTime(&now);
  return _KepDateDate2Secs(&now, secs, zone);
}

// --- Zone blocks ---------------------------------------------------------------

uint32_t _KepDateCreateTZ(uint8_t startWeekday, uint8_t startWeek, uint8_t startMonth,
                          uint8_t endWeekday, uint8_t endWeek, uint8_t endMonth,
                          int32_t daylightAdjust, int32_t standardOffset, unsigned long value,
                          void** handle) {
  _KEP_DATE_TZ rules = {{0, startWeekday, startWeek, startMonth, 0, endWeekday, endWeek, endMonth},
                        daylightAdjust,
                        standardOffset,
                        value,
                        1};
  return createBlock(rules, handle);
}

uint32_t _KepDateCreateTZOld(uint8_t startDay, uint8_t startMonth, uint8_t endDay, uint8_t endMonth,
                             int32_t daylightAdjust, int32_t standardOffset, unsigned long value,
                             void** handle) {
  _KEP_DATE_TZ rules = {{startDay, 0, 0, startMonth, endDay, 0, 0, endMonth},
                        daylightAdjust,
                        standardOffset,
                        value,
                        0};
  return createBlock(rules, handle);
}

uint32_t _KepDateReadTZ(void* handle, uint8_t* startWeekday, uint8_t* startWeek,
                        uint8_t* startMonth, uint8_t* endWeekday, uint8_t* endWeek,
                        uint8_t* endMonth, uint8_t* startDay, uint8_t* endDay,
                        int32_t* daylightAdjust, int32_t* standardOffset, unsigned long* value,
                        unsigned long* form) {
  _KEP_DATE_TZ b;
  uint32_t rc = readBlock(handle, &b);
  if (rc != 0) return rc;
  put(startWeekday, b.rule[1]);
  put(startWeek, b.rule[2]);
  put(startMonth, b.rule[3]);
  put(endWeekday, b.rule[5]);
  put(endWeek, b.rule[6]);
  put(endMonth, b.rule[7]);
  if (b.form != 0) {
    _KepDateTime now;
    _KepDateGetLocalTime(&now);
    put(startDay,
        static_cast<uint8_t>(__KepDateDoFormula(b.rule[3] + 1, now.year, b.rule[1], b.rule[2])));
    put(endDay,
        static_cast<uint8_t>(__KepDateDoFormula(b.rule[7] + 1, now.year, b.rule[5], b.rule[6])));
  } else {
    put(startDay, b.rule[0]);
    put(endDay, b.rule[4]);
  }
  putValues(b, daylightAdjust, standardOffset, value);
  put(form, b.form);
  return 0;
}

uint32_t _KepDateReadTZOld(void* handle, uint8_t* startDay, uint8_t* startMonth, uint8_t* endDay,
                           uint8_t* endMonth, int32_t* daylightAdjust, int32_t* standardOffset,
                           unsigned long* value) {
  _KEP_DATE_TZ b;
  uint32_t rc = readBlock(handle, &b);
  if (rc != 0) return rc;
  put(startDay, b.rule[0]);
  put(startMonth, b.rule[3]);
  put(endDay, b.rule[4]);
  put(endMonth, b.rule[7]);
  putValues(b, daylightAdjust, standardOffset, value);
  return 0;
}
