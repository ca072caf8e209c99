// _KepDOMValue: the native form of an element's value, cached beside its text.
#ifndef KEP_XML_KEPDOMVALUE_H
#define KEP_XML_KEPDOMVALUE_H

#include <cstdint>
#include <cstring>

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

// One cached value and its kind. The kinds:
//   1 text (a KepString), 2 32-bit integer, 3 date (GMT seconds since 1970),
//   4 object, 5 boolean, 6 double, 7 long double, 8 object reached through its
//   string form (a KepString object made from the text);
//   0 means "nothing cached".
// A double that came from a float and a long double that came from a long
// remember it, so their text is the shortest exact form ("%.9g", "%ld").
//
// The conversions follow one rule for every kind: numbers convert directly, a
// date gives its seconds, a boolean 1 or 0, text and objects are parsed from
// their text (an object's toString()). Parsing reads decimal numbers after
// optional white space; a fraction or exponent makes the text a floating
// number; text that is not a number gives 0.
//
// Thread safety: none; the owning element guards it.
class KEP_API _KepDOMValue {
 public:
  enum Kind : uint8_t {
    kNone = 0,
    kText = 1,
    kInt = 2,
    kDate = 3,
    kObject = 4,
    kBool = 5,
    kDouble = 6,
    kLongDouble = 7,
    kObjectText = 8
  };

  _KepDOMValue() noexcept;

  static _KepDOMValue ofText(KepString const& text);
  static _KepDOMValue ofInt(int value);
  static _KepDOMValue ofDate(uint32_t seconds);
  static _KepDOMValue ofObject(KepObject const& object, Kind kind = kObject);
  static _KepDOMValue ofBool(unsigned long value);
  static _KepDOMValue ofFloat(float value);
  static _KepDOMValue ofLong(long value);
  static _KepDOMValue ofLongDouble(long double value);

  // An empty value, for holders that have none.
  static _KepDOMValue const& none() noexcept;

  Kind kind() const noexcept { return k; }
  bool empty() const noexcept { return k == kNone; }
  bool holdsObject() const noexcept { return k == kObject || k == kObjectText; }
  void clear();
  // Whether clear() would change nothing: the state of a new value.
  bool isClear() const noexcept {
    if (k != kNone || narrow || obj.getTarget() != nullptr) return false;
    static constexpr decltype(u) zero{};
    return std::memcmp(&u, &zero, sizeof u) == 0;
  }

  // The value's text: the text itself, an object's toString(), numbers printed
  // ("%d", "%u" for dates, "1"/"0", "%.9g" for floats, "%.17g", "%ld" for longs,
  // "%.21Lg"). A null string when nothing is cached.
  KepString text() const;
  long toLong() const;
  long double toLongDouble() const;
  unsigned long toBool() const;
  // The object of kinds 4 and 8 (a null handle for the other kinds).
  KepObject const& object() const noexcept { return obj; }

  // The parsers used for text.
  static long parseLong(KepString const& text);
  static long double parseLongDouble(KepString const& text);
  static unsigned long parseBool(KepString const& text);
  // A floating value as a 64-bit integer: truncated toward zero; from 2^63 up
  // taken as an unsigned value and wrapped; NaN gives 0, values beyond the
  // 64-bit ranges the nearest end.
  static long longOf(long double value);

 private:
  long double longDouble() const noexcept;
  void setLongDouble(long double value) noexcept;

  Kind k;
  // Set for a double that came from a float, or a long double from a long.
  bool narrow;
  union {
    int i;
    uint32_t seconds;
    unsigned long b;
    double d;
    // A long double, kept as bytes so that the value needs no 16-byte alignment
    // (which would add padding to every element); see longDouble().
    unsigned char ld[sizeof(long double)];
  } u;
  // The text of kind 1, the object of kinds 4 and 8.
  KepObject obj;
};

#endif  // KEP_XML_KEPDOMVALUE_H
