// KepCharacter: classification and case mapping of single UTF-16 code units, and
// the handle of a one-unit character object.
#ifndef KEP_BASE_KEPCHARACTER_H
#define KEP_BASE_KEPCHARACTER_H

#include "kep/base/KepObject.h"

// The static operations answer from three lookup tables built from the Unicode
// character database (Unicode 15.0, U+0000..U+FFFF): X (bytes, indexed by u >> 6),
// Y (16-bit, indexed by X[u >> 6] * 32 + ((u >> 1) & 31)) and A (32-bit property
// words, indexed by Y[...] | (u & 1)). A property word holds the character type in
// bits 0-4, a signed digit offset from bit 9, the letter-digit mark in bits 14-15
// (both set), the space class in bits 16-18 (4 for whitespace), the upper- and
// lower-case flags in bits 20 and 21 and the signed case difference d in bits
// 22-31 (lower = u + d, upper = u - d). Bit 5 marks the few mappings whose
// difference does not fit ten bits; they are answered from a separate list.
//
// Kep::init builds the tables into the process shared-data slots 3 (X), 4 (Y) and
// 5 (A), and the last Kep::destroy frees them. Before init (and after the last
// destroy) the operations answer the same from a private copy built on first use,
// so they are always correct.
//
// A KepCharacter handle wraps one unit as an object (body KepRCharacter): its
// toString() is the one-unit string and equals() compares the units.
//
// Thread safety: every static operation may be called from any thread; init()
// and destroy() run under Kep::init/Kep::destroy, which are single-threaded.
class KEP_API KepCharacter : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepCharacter, KepObject)

 public:
  // A handle on a new character object holding `unit`.
  explicit KepCharacter(unsigned short unit);
  // The unit of the object; 0 for a null handle or a handle on another class.
  unsigned short charValue() const;

  // Counted start-up and shut-down of the shared tables. The first init() builds
  // them into the process shared-data slots (when the store exists); the matching
  // last destroy() frees them and clears the slots.
  static void init();
  static void destroy();

  // Predicates answer 1 or 0.
  // Type UPPERCASE_LETTER, LOWERCASE_LETTER, TITLECASE_LETTER, DECIMAL_DIGIT_NUMBER.
  static unsigned long isUpperCase(unsigned short u);
  static unsigned long isLowerCase(unsigned short u);
  static unsigned long isTitleCase(unsigned short u);
  static unsigned long isDigit(unsigned short u);
  // True only for tab, line feed, form feed, carriage return and space (no table).
  static unsigned long isSpace(unsigned short u);
  // Type SPACE_SEPARATOR, LINE_SEPARATOR or PARAGRAPH_SEPARATOR (so U+00A0 too).
  static unsigned long isSpaceChar(unsigned short u);
  // Unicode White_Space without the no-break spaces U+00A0, U+2007 and U+202F.
  static unsigned long isWhitespace(unsigned short u);
  // Any type but UNASSIGNED.
  static unsigned long isDefined(unsigned short u);
  // Types 1 to 5 (upper, lower, title, modifier and other letters).
  static unsigned long isLetter(unsigned short u);
  static unsigned long isLetterOrDigit(unsigned short u);
  // The general category as one of the type constants below.
  static int getType(unsigned short u);
  // The Unicode simple case mapping of the unit; the unit itself when it has none.
  static unsigned short toLowerCase(unsigned short u);
  static unsigned short toUpperCase(unsigned short u);
  // The value of the unit as a digit in `radix`: decimal digits of every script
  // give 0-9, the Latin letters a-z and A-Z (also full-width) give 10-35. -1 when
  // the unit has no value, the value is not below the radix, or the radix is
  // outside MIN_RADIX..MAX_RADIX.
  static int digit(unsigned short u, int radix);
  // The character of `digit` in `radix`: '0'-'9', then lower-case 'a'-'z'. 0 when
  // the radix is outside MIN_RADIX..MAX_RADIX or the digit outside 0..radix-1.
  static unsigned short forDigit(int digit, int radix);
  // The raw 32-bit property word of the unit (layout above).
  static unsigned int getProperties(unsigned short u);

  // Character types (general categories).
  static constexpr int UNASSIGNED() { return 0; }
  static constexpr int UPPERCASE_LETTER() { return 1; }
  static constexpr int LOWERCASE_LETTER() { return 2; }
  static constexpr int TITLECASE_LETTER() { return 3; }
  static constexpr int MODIFIER_LETTER() { return 4; }
  static constexpr int OTHER_LETTER() { return 5; }
  static constexpr int NON_SPACING_MARK() { return 6; }
  static constexpr int ENCLOSING_MARK() { return 7; }
  static constexpr int COMBINING_SPACING_MARK() { return 8; }
  static constexpr int DECIMAL_DIGIT_NUMBER() { return 9; }
  static constexpr int LETTER_NUMBER() { return 10; }
  static constexpr int OTHER_NUMBER() { return 11; }
  static constexpr int SPACE_SEPARATOR() { return 12; }
  static constexpr int LINE_SEPARATOR() { return 13; }
  static constexpr int PARAGRAPH_SEPARATOR() { return 14; }
  static constexpr int CONTROL() { return 15; }
  static constexpr int FORMAT() { return 16; }
  static constexpr int PRIVATE_USE() { return 18; }
  static constexpr int SURROGATE() { return 19; }
  static constexpr int DASH_PUNCTUATION() { return 20; }
  static constexpr int START_PUNCTUATION() { return 21; }
  static constexpr int END_PUNCTUATION() { return 22; }
  static constexpr int CONNECTOR_PUNCTUATION() { return 23; }
  static constexpr int OTHER_PUNCTUATION() { return 24; }
  static constexpr int MATH_SYMBOL() { return 25; }
  static constexpr int CURRENCY_SYMBOL() { return 26; }
  static constexpr int MODIFIER_SYMBOL() { return 27; }
  static constexpr int OTHER_SYMBOL() { return 28; }
  static constexpr int INITIAL_QUOTE_PUNCTUATION() { return 29; }
  static constexpr int FINAL_QUOTE_PUNCTUATION() { return 30; }
  // Radix bounds of digit() and forDigit().
  static constexpr int MIN_RADIX() { return 2; }
  static constexpr int MAX_RADIX() { return 36; }
};

#endif  // KEP_BASE_KEPCHARACTER_H
