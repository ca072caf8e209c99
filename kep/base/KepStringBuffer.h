// KepStringBuffer: the mutable companion of KepString, for building text piece by
// piece.
#ifndef KEP_BASE_KEPSTRINGBUFFER_H
#define KEP_BASE_KEPSTRINGBUFFER_H

#include "kep/base/KepString.h"

// The operations of KepStringBuffer, in the order of the body's virtual
// operations. The ones that rebuild the array (insert, reverse, setLength) are
// bracketed by the body's lock.
//
//  append(unsigned long)         appends the decimal text ("%lu")
//  append(unsigned short)        appends one unit
//  append(signed char const*[, offset, count])
//                                appends bytes widened to units; offset and count
//                                as for KepString's constructors (the text is
//                                never read past its zero byte)
//  append(unsigned short const*[, offset, count])
//                                appends units (zero-terminated text, or count
//                                units from offset)
//  append(int)                   appends the decimal text ("%ld")
//  append(KepString const&)      appends the string's units (nothing for null)
//  capacity()                    answers the length, not the allocated size (kept
//                                so for callers that rely on it)
//  charAt(i)                     the unit at i; 0xFFFF when i is out of range
//  ensureCapacity(min)           when min > 0 and min > length(): setLength(n)
//                                with n = max((length + 1) * 2, min), so the
//                                length becomes n (kept so; the new units are 0)
//  getChars(begin, end, dst, dstBegin)
//                                copies min(end - begin, length - begin) units
//                                to dst + dstBegin; begin < 0 counts as 0; nothing
//                                when end < 0 or begin >= length
//  insert(at, unsigned long b)   inserts "1" when b == 1, else "0"
//  insert(at, unsigned short), insert(at, unsigned short const*), insert(at, int)
//                                inserts the unit, the zero-terminated text or the
//                                decimal text
//  insert(at, KepString const&)  inserts the string at `at` (< 0 counts as 0);
//                                nothing for a null or empty string or at > length
//  length()                      units in use
//  reverse()                     reverses the units
//  setCharAt(i, unit)            replaces one unit; nothing when i is out of range
//  setLength(n)                  n <= 0 empties the buffer; otherwise keeps the
//                                first min(length, n) units, fills up with zero
//                                units and makes the length n
//
// Every append and insert answers a new handle on the same body, so calls chain.
// Growth: an append that does not fit allocates 2 * (length + appended) units.
// toString() answers a new KepString of the units (empty for an empty buffer).
// Lengths beyond the int range raise std::bad_array_new_length.
// clang-format off
#define KEP_METHODS_StringBuffer(X)                                                              \
  X(StringBuffer, KepStringBuffer, append, (unsigned long value), (value), , 0)                  \
  X(StringBuffer, KepStringBuffer, append, (unsigned short unit), (unit), , 0)                   \
  X(StringBuffer, KepStringBuffer, append, (signed char const* text), (text), , 0)               \
  X(StringBuffer, KepStringBuffer, append, (signed char const* text, int offset, int count),     \
    (text, offset, count), , 0)                                                                  \
  X(StringBuffer, KepStringBuffer, append, (unsigned short const* units), (units), , 0)          \
  X(StringBuffer, KepStringBuffer, append, (unsigned short const* units, int offset, int count), \
    (units, offset, count), , 0)                                                                 \
  X(StringBuffer, KepStringBuffer, append, (int value), (value), , 0)                            \
  X(StringBuffer, KepStringBuffer, append, (KepString const& str), (str), , 0)                   \
  X(StringBuffer, int, capacity, (), (), const, 0)                                               \
  X(StringBuffer, unsigned short, charAt, (int index), (index), const, 0)                        \
  X(StringBuffer, void, ensureCapacity, (int minimum), (minimum), , 0)                           \
  X(StringBuffer, void, getChars, (int begin, int end, unsigned short* dst, int dstBegin),       \
    (begin, end, dst, dstBegin), const, 0)                                                       \
  X(StringBuffer, KepStringBuffer, insert, (int at, unsigned long value), (at, value), , 1)      \
  X(StringBuffer, KepStringBuffer, insert, (int at, unsigned short unit), (at, unit), , 1)       \
  X(StringBuffer, KepStringBuffer, insert, (int at, unsigned short const* units), (at, units), , \
    1)                                                                                           \
  X(StringBuffer, KepStringBuffer, insert, (int at, int value), (at, value), , 1)                \
  X(StringBuffer, KepStringBuffer, insert, (int at, KepString const& str), (at, str), , 1)       \
  X(StringBuffer, int, length, (), (), const, 0)                                                 \
  X(StringBuffer, void, reverse, (), (), , 1)                                                    \
  X(StringBuffer, void, setCharAt, (int index, unsigned short unit), (index, unit), , 0)         \
  X(StringBuffer, void, setLength, (int n), (n), , 1)
// clang-format on

// A handle on a growable array of UTF-16 units. A default handle is null; the
// constructors below make a new buffer.
//
// Thread safety: a buffer is meant for one thread at a time; only the rebuilding
// operations take the body's lock.
class KEP_API KepStringBuffer : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepStringBuffer, KepObject)

 public:
  // A new buffer holding the text, taken as by the KepString constructors of the
  // same arguments (null text gives an empty buffer).
  KepStringBuffer(char const* text);
  KepStringBuffer(signed char* text);
  KepStringBuffer(char const* text, int offset, int count);
  KepStringBuffer(signed char* text, int offset, int count);
  KepStringBuffer(unsigned short const* units);
  KepStringBuffer(unsigned short const* units, int offset, int count);
  // A new buffer holding the string's units (an empty buffer for a null string).
  KepStringBuffer(KepString const& text);

  KEP_METHODS_StringBuffer(KEP_DECLARE_METHOD);
};

KEP_METHODS_StringBuffer(KEP_DECLARE_BRIDGE);

#endif  // KEP_BASE_KEPSTRINGBUFFER_H
