// The calendar layer: broken-down date records, GMT values (unsigned seconds since
// 1970-01-01 00:00:00), conversions between them under time-zone rule blocks,
// calendar arithmetic on records, period bounds, and (through _KepFileTime.h) file
// times.
//
// Leap years everywhere: divisible by 4 and not by 100, or divisible by 400.
//
// No range checks are made on record fields: out-of-range fields give whatever the
// arithmetic gives (never an access outside the tables; months past 11 read the
// December rows), except that _KepDateDate2Secs clamps dates after lastdatim.
// Record pointers must not be null unless a function says otherwise.
//
// Thread safety: all functions are stateless and may be called from any thread. A
// zone block is locked through the memory manager for each use, so one zone handle
// may be shared by threads as long as nobody frees it meanwhile.
#ifndef KEP_DATE_KEPDATE_H
#define KEP_DATE_KEPDATE_H

#include <cstdint>

#include "kep/base/KepDefs.h"
#include "kep/date/_KepFileTime.h"

// A broken-down date, ten bytes, packed. The same record serves as a duration when
// it is the second operand of the add and subtract functions (years, months, days,
// hours ... to add).
struct __attribute__((packed)) _KepDateTime {
  uint16_t year;          // full year, e.g. 2024; 0 is special in _KepDateDate2Secs
  uint8_t month;          // 0 = January ... 11 = December
  uint8_t day;            // day of month, 1-based
  uint8_t dayOfWeek;      // 0 = Sunday ... 6 = Saturday
  uint8_t hour;           // 0-23; 24 is accepted as the end of the day
  uint8_t minute;         // 0-59
  uint8_t second;         // 0-59
  uint16_t milliseconds;  // 0-999
};
static_assert(sizeof(_KepDateTime) == 10, "a date record is ten packed bytes");

// Bounds for day stepping: results before `lower` or after `upper` are clamped.
struct _KepTime {
  _KepDateTime lower;
  _KepDateTime upper;
};

// The time-zone rule block behind a zone handle (32 bytes). Build it with
// _KepDateCreateTZ (rule form) or _KepDateCreateTZOld (fixed-date form).
//
//   rule   rule form (form 1)            fixed-date form (form 0)
//   [0]    -                             start day of month
//   [1]    start day of week (0=Sunday)  -
//   [2]    start week of month (1-based; past the last week = the last one)
//   [3]    start month (0-11)            start month (0-11)
//   [4]    -                             end day of month
//   [5]    end day of week               -
//   [6]    end week of month             -
//   [7]    end month (0-11)              end month (0-11)
//
// A zone whose start month is after its end month is a southern one: its daylight
// adjustment applies outside the end-start range. An adjustment or offset holding
// KEP_DATE_TZ_NOT_SET reads as 0.
struct _KEP_DATE_TZ {
  uint8_t rule[8];
  int32_t daylightAdjust;  // seconds added while daylight time is in force
  int32_t standardOffset;  // seconds; local = GMT + offset
  unsigned long value;     // the creator's value, stored and returned unchanged
  unsigned long form;      // 1 rule form, 0 fixed-date form
};
static_assert(sizeof(_KEP_DATE_TZ) == 32, "a zone block is 32 bytes");

// The adjustment value that means "not set".
constexpr int32_t KEP_DATE_TZ_NOT_SET = 0x8080;

// Days of each month, [leap][month].
KEP_API extern const uint8_t mdays[2][12];
// Days before each month, [leap][month].
KEP_API extern const uint16_t ydays[2][12];
// Week-number offsets indexed by the weekday of 1 January (0 = Sunday).
KEP_API extern const uint8_t weekoffsets[7];
// The latest date _KepDateDate2Secs converts: 2106-02-06 11:00:00 (a Saturday).
KEP_API extern const _KepDateTime lastdatim;

// --- Records -----------------------------------------------------------------

// The current local wall-clock time (time and localtime_r); milliseconds are 0.
KEP_API void _KepDateGetLocalTime(_KepDateTime* out);
// Mode 0 copies the whole record, mode 1 year, month, day and dayOfWeek, mode 2
// hour, minute and second (not the milliseconds); other modes copy nothing.
KEP_API void _KepDateCopyDatim(_KepDateTime const* src, _KepDateTime* dst, uint8_t mode);
// out = a + b, b read as a duration. Modes 0 (date and time) and 2 (time only) add
// the time, carrying milliseconds into seconds at 1000 and seconds and minutes at
// 60; in mode 0 hours carry into days at 24, in mode 2 an hour past 23 clamps the
// time to 23:59:59. Modes 0 and 1 (date only) add years, months and days and
// normalise days past the month end into the following months. dayOfWeek is
// recomputed. `out` may be `a`.
KEP_API void _KepDateAddDatim(_KepDateTime const* a, _KepDateTime const* b, _KepDateTime* out,
                              uint8_t mode);
// out = the later of a and b minus the earlier (compared in `mode`: 0 date and
// time, 1 date, 2 time), with borrows through the calendar; answers 1 when a was
// the earlier (the operands were swapped), else 0. Minutes past 59 and hours past
// 23 are normalised first. Milliseconds are not subtracted: `out` keeps those of
// the later operand. A result with day 0 and a non-zero year becomes the last day
// of the previous month; with year 0 the result is a span. dayOfWeek is
// recomputed. `out` may be `a` or `b`.
KEP_API unsigned long _KepDateSubDatim(_KepDateTime const* a, _KepDateTime const* b,
                                       _KepDateTime* out, uint8_t mode);
// Steps the month `count` times forward (back), carrying into the year at December
// (January). The day and dayOfWeek are left as they are.
KEP_API void _KepDateAddDatimMonth(_KepDateTime* date, uint16_t count);
KEP_API void _KepDateSubDatimMonth(_KepDateTime* date, uint16_t count);
// 1 when a is later than b, 0xFFFFFFFF when earlier, 0 when equal. Mode 1 compares
// year, month and day; mode 2 hour, minute, second and milliseconds; any other
// mode all of them. dayOfWeek is never compared.
KEP_API uint32_t _KepDateCmpDate(_KepDateTime const* a, _KepDateTime const* b, uint8_t mode);
// The quotient of the records' minute counts (minutes since 1599-12-31 00:00 for a
// date; for a span with year 0, its days, hours and minutes in minutes, the month
// counted as a leap year's). Seconds and milliseconds are ignored. 0 when either
// count is 0.
KEP_API long _KepDateDivTime(_KepDateTime const* a, _KepDateTime const* b);

// Day of week of the record's date, 0 = Sunday (the dayOfWeek field is not read).
KEP_API int _KepDateWeekDay(_KepDateTime const* date);
// Day of week of the first day of the record's month.
KEP_API int _KepDateFirstOfMonth(_KepDateTime const* date);
// Day of year, 1-based.
KEP_API int _KepDateDayOfYear(_KepDateTime const* date);
// Number of days of the record's month.
KEP_API int _KepDateLastDayofMonth(_KepDateTime const* date);
// ISO-8601 week number, 1-53 (weeks start on Monday; week 1 holds the first
// Thursday).
KEP_API int _KepDateWeekNum(_KepDateTime const* date);
// Day of month (1-based) of the `week`-th `weekday` (0 = Sunday) of `month` (1-12)
// of `year`. Weeks 0 and 1 mean the first; week 5 or more the last.
KEP_API int __KepDateDoFormula(int month, int year, int weekday, int week);

// out = src moved toward `weekday` by day steps (through _KepDateResolveDay with
// flag 1 and `limits`):
//   mode 1: back while the weekday is greater than the target and the day is >= 2;
//   mode 2: forward at least once, until the weekday matches or the day is 1;
//   mode 3: back at least once, until the weekday matches or the day is 1;
//   mode 4: forward until the weekday matches, the day is the last of its month,
//           or the day is 0;
//   mode 5: as mode 4, stepping back.
// Other modes leave out = src. Stepping also stops when a step was clamped to the
// limits. `limits` may be null (no limits). `out` may be `src`.
KEP_API void _KepDateDayOfWeek(_KepDateTime const* src, _KepDateTime* out, uint8_t weekday,
                               uint8_t mode, _KepTime const* limits);
// Steps `date` by one unit in the sign's direction: |step| 1 a day, 2 a week, 3 a
// month, 4 a year; other steps change nothing and answer 0. Days past the month end
// move into the next month for day and week steps and clamp to the last day for
// month and year steps; days below 1 move into the previous month; months move the
// year. dayOfWeek is recomputed. With `flag` non-zero and `limits` given, a
// backward step landing before limits->lower is replaced by it and a forward step
// past limits->upper by that; the answer is 1 when so replaced.
KEP_API unsigned long _KepDateResolveDay(_KepDateTime* date, int16_t step, uint8_t flag,
                                         _KepTime const* limits);

// --- Conversions ---------------------------------------------------------------

// GMT value to a local date under `zone` (null: no zone, the date is GMT);
// milliseconds 0, dayOfWeek set. A zone adds its standard offset and, when the
// date falls in daylight time, its daylight adjustment. On the start day of
// daylight time it is in force from 02:00 standard time; on the end day until
// 01:59:59 standard time. Values up to about the year 34300 give true Gregorian
// dates; beyond, the 16-bit leap-day count wraps and the fields are whatever the
// arithmetic gives (month may read 12). Answers 0, or KEP_MM_BAD_HANDLE (0x8101)
// when the zone does not lock; `out` is then filled without the zone.
KEP_API uint32_t _KepDateSecs2Date(unsigned long secs, _KepDateTime* out, void* zone);
// Local date under `zone` (null: the date is GMT) to a GMT value; seconds of the
// date, milliseconds ignored. Dates after lastdatim convert as lastdatim. Year 0
// means: *secs holds a day count on entry, used instead of the date's year, month
// and day. The daylight decision is made on the given local date (start day: from
// 02:00; end day: up to 01:59:59). Answers 0, or 0x8101 when the zone does not lock
// (the value is then computed without the zone).
KEP_API uint32_t _KepDateDate2Secs(_KepDateTime const* date, unsigned long* secs, void* zone);
// Splits a span of seconds: days into the day byte (modulo 256), then hour, minute
// and second; the other fields are set to 0.
KEP_API void _KepDateSecs2Time(unsigned long secs, _KepDateTime* out);

// Period bounds: *secs is replaced by the bound of its period in local time under
// `zone` (null: GMT). "Begin" bounds are one second after midnight (00:00:01) of
// the first day; "End" bounds are midnight at the end of the last day. Weeks run
// Sunday to Saturday. Answer the first error of the two conversions.
KEP_API uint32_t _KepDateBeginYesterday(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateEndYesterday(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateBeginToday(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateEndToday(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateBeginTomorrow(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateEndTomorrow(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateBeginWeek(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateEndWeek(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateBeginMonth(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateEndMonth(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateBeginYear(void* zone, unsigned long* secs);
KEP_API uint32_t _KepDateEndYear(void* zone, unsigned long* secs);

// *out = secs plus (minus) the span `delta` in local calendar terms: `delta` is
// broken into years since 1970, months, days, hours, minutes and seconds, which
// are added to (subtracted from) the local date of `secs` under `zone` with
// _KepDateAddDatim (_KepDateSubDatim) in mode 0. Answers the first error of the
// two zone conversions.
KEP_API uint32_t _KepDateAddGMT(unsigned long secs, unsigned long delta, void* zone,
                                unsigned long* out);
KEP_API uint32_t _KepDateSubGMT(unsigned long secs, unsigned long delta, void* zone,
                                unsigned long* out);
// The local wall clock converted with _KepDateDate2Secs under `zone`. Without a zone
// the local wall-clock fields are read as GMT.
KEP_API uint32_t _KepDateGetGMT(unsigned long* secs, void* zone);

// --- Zone blocks ---------------------------------------------------------------

// Allocates a rule-form zone block and stores its handle in *handle (free it with
// _KepMMTestFree). Daylight time starts on the `startWeek`-th `startWeekday` of
// `startMonth` (0-11) and ends on the `endWeek`-th `endWeekday` of `endMonth`.
// Answers 0, or 0x8101 when no block could be had (*handle is then null).
KEP_API uint32_t _KepDateCreateTZ(uint8_t startWeekday, uint8_t startWeek, uint8_t startMonth,
                                  uint8_t endWeekday, uint8_t endWeek, uint8_t endMonth,
                                  int32_t daylightAdjust, int32_t standardOffset,
                                  unsigned long value, void** handle);
// Allocates a fixed-date zone block: daylight time from `startDay` of `startMonth`
// to `endDay` of `endMonth` (months 0-11).
KEP_API uint32_t _KepDateCreateTZOld(uint8_t startDay, uint8_t startMonth, uint8_t endDay,
                                     uint8_t endMonth, int32_t daylightAdjust,
                                     int32_t standardOffset, unsigned long value, void** handle);
// Reads a block of either form; every out pointer may be null. For the rule form
// `startDay` and `endDay` receive the days of month of this local year's
// transitions; for the fixed form the stored days (the rule-form fields then read
// the unused bytes). `form` receives 1 for the rule form, 0 for the fixed form.
// Adjustments holding KEP_DATE_TZ_NOT_SET read as 0. Answers 0 or 0x8101.
KEP_API uint32_t _KepDateReadTZ(void* handle, uint8_t* startWeekday, uint8_t* startWeek,
                                uint8_t* startMonth, uint8_t* endWeekday, uint8_t* endWeek,
                                uint8_t* endMonth, uint8_t* startDay, uint8_t* endDay,
                                int32_t* daylightAdjust, int32_t* standardOffset,
                                unsigned long* value, unsigned long* form);
// Reads the fixed-date fields of a block; every out pointer may be null.
KEP_API uint32_t _KepDateReadTZOld(void* handle, uint8_t* startDay, uint8_t* startMonth,
                                   uint8_t* endDay, uint8_t* endMonth, int32_t* daylightAdjust,
                                   int32_t* standardOffset, unsigned long* value);

#endif  // KEP_DATE_KEPDATE_H
