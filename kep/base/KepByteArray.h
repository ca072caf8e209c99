// KepByteArray: a zero-terminated 8-bit byte string, the result of narrowing a
// KepString.
#ifndef KEP_BASE_KEPBYTEARRAY_H
#define KEP_BASE_KEPBYTEARRAY_H

#include "kep/base/KepObject.h"

// The operations of KepByteArray: the three views of the bytes behind the
// conversion operators. Each is bracketed by the body's lock.
// clang-format off
#define KEP_METHODS_ByteArray(X)                                          \
  X(ByteArray, char*, asChars, (), (), const, 1)                          \
  X(ByteArray, signed char*, asSignedChars, (), (), const, 1)             \
  X(ByteArray, unsigned char*, asUnsignedChars, (), (), const, 1)
// clang-format on

// A handle on an owned, zero-terminated array of bytes. The conversions answer
// the array itself (valid while the body lives; null for a null handle); the
// caller may change bytes in place but not beyond the terminator.
//
// Thread safety: the views are bracketed by the body's lock; writing bytes
// through them is the caller's business.
class KEP_API KepByteArray : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepByteArray, KepObject)

 public:
  // A new array holding a copy of `n` bytes of `bytes` and a terminating zero
  // (n <= 0 or null bytes give the empty array).
  KepByteArray(char const* bytes, int n);

  KEP_METHODS_ByteArray(KEP_DECLARE_METHOD);

  operator char*() const { return asChars(); }
  operator signed char*() const { return asSignedChars(); }
  operator unsigned char*() const { return asUnsignedChars(); }
};

KEP_METHODS_ByteArray(KEP_DECLARE_BRIDGE);

#endif  // KEP_BASE_KEPBYTEARRAY_H
