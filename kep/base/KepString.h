// KepString: the library's immutable UTF-16 string handle.
#ifndef KEP_BASE_KEPSTRING_H
#define KEP_BASE_KEPSTRING_H

#include <string>

#include "kep/base/KepByteArray.h"
#include "kep/base/KepObject.h"

// The operations of KepString, in the order of the body's virtual operations.
//
//  charAt(i)               the unit at i; 0xFFFF when i < 0 or i >= length()
//  compareTo(str)          0 for equal strings, else this unit minus the other unit
//                          at the first difference (a terminator counts as unit 0);
//                          -1 for a null argument
//  concat(str)             this followed by str; this string itself for a null or
//                          empty argument
//  equalsIgnoreCase(str)   equal lengths and regionMatches(1, 0, str, 0, length()),
//                          so two empty strings are not equal ignoring case
//  getBytes()              the units narrowed to bytes (low byte of each unit)
//  getBytes(begin, end, dst, dstBegin)
//                          narrows units begin..end-1 (kept inside the string)
//                          into dst from dstBegin, writes a zero byte behind them
//                          and answers the index of that zero byte; dst must have
//                          room for them. 0 for null dst.
//  getBytes(encoding)      getBytes(); the encoding name is ignored
//  getChars(begin, end, dst, dstBegin)
//                          copies units begin..end-1 (end kept inside the string)
//                          to dst + dstBegin, no terminator; nothing when begin < 0
//                          or end <= begin
//  hashCode()              h = h * 37 + unit over all units of strings of up to 15
//                          units; longer strings sample every (length / 8)-th unit
//                          with h = h * 39 + unit. Unsigned 32-bit, wrapping; the
//                          empty string gives 0.
//  indexOf(unit[, from])   first index >= from (negative: 0) holding the unit, -1
//  indexOf(str[, from])    first index >= from at which str occurs; -1 for a null
//                          or empty str or from >= length()
//  lastIndexOf(unit[, from])
//                          last index <= from (past the end: the last unit), -1
//  lastIndexOf(str[, from])
//                          last index <= from at which str starts; -1 when from < 0
//                          or str is null; an empty str gives min(from, length())
//  length()                the number of units
//  regionMatches([ignoreCase,] offset, other, otherOffset, len)
//                          true when len units at offset match len units of other
//                          at otherOffset; false for null other, negative offsets,
//                          len < 1 or a region past either end. Ignoring case, units
//                          match when equal, when their upper-case mappings are
//                          equal, or when the lower-case mappings of those are.
//  replace(old, new)       every old unit replaced; this string itself when old
//                          equals new or does not occur
//  startsWith(str[, offset])
//                          str occurs at offset; false for a null or empty str or
//                          an offset outside 0..length() - str.length()
//  substring(begin[, end]) units begin..end-1; end -1 (or absent) means length().
//                          A null handle when begin < 0, end > length() or begin >
//                          end; this string itself for the whole range.
//  toCharArray()           a copy of the units without terminator in a new array;
//                          the caller frees it with delete[]
//  toLowerCase(), toUpperCase()
//                          a copy mapped unit by unit with KepCharacter's simple case
//                          mappings; toUpperCase turns U+00DF into "SS" (one unit
//                          longer each time). The locale forms ignore the locale.
//  trim()                  without leading and trailing units <= 0x20; this string
//                          itself when there is nothing to remove
//  endsWith(str)           startsWith(str, length() - str.length()); false for a
//                          null or empty str
//  equals(str)             as equals(KepObject const&): a string of the same units
//  compareTo(KepRString const&)
//                          as compareTo(str), but an empty string orders first and
//                          two empty strings are equal
//  compareTo(signed char const* text)
//                          against zero-terminated 8-bit text (bytes unsigned): the
//                          difference at the first unit that differs, 0 when equal;
//                          null or empty text gives 0 for the empty string, else 1
// clang-format off
#define KEP_METHODS_String(X)                                                                    \
  X(String, unsigned short, charAt, (int index), (index), const, 0)                              \
  X(String, int, compareTo, (KepString const& other), (other), const, 0)                         \
  X(String, KepString, concat, (KepString const& other), (other), const, 0)                      \
  X(String, unsigned long, equalsIgnoreCase, (KepString const& other), (other), const, 0)        \
  X(String, KepByteArray, getBytes, (), (), const, 0)                                            \
  X(String, int, getBytes, (int begin, int end, signed char* dst, int dstBegin),                 \
    (begin, end, dst, dstBegin), const, 0)                                                       \
  X(String, KepByteArray, getBytes, (KepString const& encoding), (encoding), const, 0)           \
  X(String, void, getChars, (int begin, int end, unsigned short* dst, int dstBegin),             \
    (begin, end, dst, dstBegin), const, 0)                                                       \
  X(String, int, hashCode, (), (), const, 0)                                                     \
  X(String, int, indexOf, (unsigned short unit), (unit), const, 0)                               \
  X(String, int, indexOf, (unsigned short unit, int from), (unit, from), const, 0)               \
  X(String, int, indexOf, (KepString const& str), (str), const, 0)                               \
  X(String, int, indexOf, (KepString const& str, int from), (str, from), const, 0)               \
  X(String, int, lastIndexOf, (unsigned short unit), (unit), const, 0)                           \
  X(String, int, lastIndexOf, (unsigned short unit, int from), (unit, from), const, 0)           \
  X(String, int, lastIndexOf, (KepString const& str), (str), const, 0)                           \
  X(String, int, lastIndexOf, (KepString const& str, int from), (str, from), const, 0)           \
  X(String, int, length, (), (), const, 0)                                                       \
  X(String, unsigned long, regionMatches,                                                        \
    (unsigned long ignoreCase, int offset, KepString const& other, int otherOffset, int len),    \
    (ignoreCase, offset, other, otherOffset, len), const, 0)                                     \
  X(String, unsigned long, regionMatches,                                                        \
    (int offset, KepString const& other, int otherOffset, int len),                              \
    (offset, other, otherOffset, len), const, 0)                                                 \
  X(String, KepString, replace, (unsigned short oldUnit, unsigned short newUnit),                \
    (oldUnit, newUnit), const, 0)                                                                \
  X(String, unsigned long, startsWith, (KepString const& prefix), (prefix), const, 0)            \
  X(String, unsigned long, startsWith, (KepString const& prefix, int offset), (prefix, offset),  \
    const, 0)                                                                                    \
  X(String, KepString, substring, (int begin), (begin), const, 0)                                \
  X(String, KepString, substring, (int begin, int end), (begin, end), const, 0)                  \
  X(String, unsigned short*, toCharArray, (), (), const, 0)                                      \
  X(String, KepString, toLowerCase, (), (), const, 0)                                            \
  X(String, KepString, toUpperCase, (), (), const, 0)                                            \
  X(String, KepString, toLowerCase, (KepString const& locale), (locale), const, 0)               \
  X(String, KepString, toUpperCase, (KepString const& locale), (locale), const, 0)               \
  X(String, KepString, trim, (), (), const, 0)                                                   \
  X(String, unsigned long, endsWith, (KepString const& suffix), (suffix), const, 0)              \
  X(String, unsigned long, equals, (KepString const& other), (other), const, 0)                  \
  X(String, int, compareTo, (KepRString const& other), (other), const, 0)                        \
  X(String, int, compareTo, (signed char const* text), (text), const, 0)
// clang-format on

// An immutable sequence of UTF-16 code units with an explicit length, always
// followed by a zero unit. A default handle is null, which is distinct from the
// empty string. Text given as 8-bit bytes is widened byte by byte (ISO 8859-1, no
// multibyte decoding); narrowing keeps the low byte of each unit.
//
// Operations that would give a result equal to the string itself (trim() without
// anything to trim, substring(0, length()), replace() without a match, concat()
// of an empty string) answer the same body instead of a copy.
//
// Indexes are units. No operation reports an error: out-of-range indexes give -1,
// false, an empty result or a null handle as each operation states, and a null
// handle passed as an argument counts as absent. Every operation on a null handle
// answers 0, false or a null handle.
//
// Thread safety: strings never change after construction and may be read from any
// thread; copying a handle shares the body.
class KEP_API KepString : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepString, KepObject)

 public:
  // The whole zero-terminated 8-bit text; null or empty text gives the empty
  // string (not a null handle).
  KepString(char const* text);
  KepString(signed char* text);
  // `count` bytes from `offset`. A count of -1 takes the length of the whole text
  // measured from its start, not from the offset: KepString("abc", 1, -1) has three
  // units, 'b', 'c' and a zero unit (pass -1 with offset 0). A negative offset is
  // taken as 0; a count of 0 or less (other than -1) gives the empty string. The
  // text is never read past its terminating zero byte: a positive count stops
  // there, and the units of a -1 count that lie beyond it are zero.
  KepString(char const* text, int offset, int count);
  KepString(signed char* text, int offset, int count);
  // The whole zero-terminated UTF-16 text.
  KepString(unsigned short const* units);
  // `count` units from `offset` (the caller vouches that they exist; zero units
  // among them are kept). A count of -1 takes the zero-terminated length of the
  // whole text from its start, as for 8-bit text: units beyond the terminator are
  // zero, never read. A negative offset is taken as 0.
  KepString(unsigned short const* units, int offset, int count);

  KEP_METHODS_String(KEP_DECLARE_METHOD);
  using KepObject::equals;

  // This string followed by `other` (concat).
  KepString operator+(KepString const& other) const { return concat(other); }

  // The one-unit string.
  static KepString valueOf(unsigned short unit);
  // Decimal text ("%ld").
  static KepString valueOf(int value);
  // Text in `radix`: digits 0-9 then upper-case A-Z. Radix 10 writes a negative
  // value with a leading "-"; radix 16 begins with "0x" and radix 8 with "0".
  // Meant for non-negative values in the other radixes: a negative value there is
  // not negated, its remainders are written as characters at or below '0', and in
  // radix 16 the digits are padded with 'F' to 16 places (not a two's-complement
  // rendering). A radix outside 2..36 is taken as 10.
  static KepString valueOf(int value, int radix);
  // valueOf(value, 10).
  static KepString valueOf(long value);
  // As valueOf(int, int), on 64 bits.
  static KepString valueOf(long value, int radix);
  // "1" for a non-zero (true) value, else "0".
  static KepString valueOf(unsigned long boolean);
  // "%.7e" of the value widened to double.
  static KepString valueOf(float value);
  // "%.17e" of the value narrowed to double.
  static KepString valueOf(long double value);

  // The units narrowed to 8-bit bytes (low byte of each unit), for logging and
  // host code; empty for a null handle.
  std::string toStdString() const;
};

KEP_METHODS_String(KEP_DECLARE_BRIDGE);

// Length of zero-terminated 8-bit text (at most INT_MAX); 0 for null.
KEP_API int KepStrLen(signed char const* text);
// Number of units before the first zero unit; 0 for null.
KEP_API int KepWStrLen(unsigned short const* text);

#endif  // KEP_BASE_KEPSTRING_H
