// KepString: the library's immutable UTF-16 string handle.
#ifndef KEP_BASE_KEPSTRING_H
#define KEP_BASE_KEPSTRING_H

#include <string>

#include "kep/base/KepObject.h"

// The operations of KepString, in the order of the body's virtual operations.
// clang-format off
#define KEP_METHODS_String(X)                                                      \
  X(String, unsigned short, charAt, (int index), (index), const, 0)                \
  X(String, int, length, (), (), const, 0)
// clang-format on

// An immutable sequence of UTF-16 code units with an explicit length. A default
// handle is null, which is distinct from the empty string. Text given as 8-bit
// bytes is widened byte by byte (ISO 8859-1, no multibyte decoding).
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
  // `count` bytes from `offset`; count -1 takes the length of the whole text
  // measured from its start. A negative offset is taken as 0; a count of 0 or less
  // (other than -1) gives the empty string.
  KepString(char const* text, int offset, int count);
  KepString(signed char* text, int offset, int count);
  // The whole zero-terminated UTF-16 text.
  KepString(unsigned short const* units);
  // `count` units from `offset`; count -1 takes the length of the whole text.
  KepString(unsigned short const* units, int offset, int count);

  KEP_METHODS_String(KEP_DECLARE_METHOD) using KepObject::equals;

  // The units narrowed to 8-bit bytes (low byte of each unit), for logging and
  // host code; empty for a null handle.
  std::string toStdString() const;
};

KEP_METHODS_String(KEP_DECLARE_BRIDGE)

    // Length of zero-terminated 8-bit text; 0 for null.
    KEP_API int KepStrLen(signed char const* text);
// Number of units before the first zero unit; 0 for null.
KEP_API int KepWStrLen(unsigned short const* text);

#endif  // KEP_BASE_KEPSTRING_H
