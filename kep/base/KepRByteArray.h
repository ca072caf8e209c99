// KepRByteArray: the body of KepByteArray.
#ifndef KEP_BASE_KEPRBYTEARRAY_H
#define KEP_BASE_KEPRBYTEARRAY_H

#include "kep/base/KepByteArray.h"
#include "kep/base/KepRObject.h"

// Owns one zero-terminated byte array, freed with the body.
//
// Thread safety: the array is fixed at construction; its bytes are the holder's.
class KEP_API KepRByteArray : public KepRObject {
  KEP_BODY_IDENTITY(ByteArray, KepRObject)
  KEP_BODY_CREATE_ANOTHER(ByteArray)

 public:
  // The empty array (a single zero byte).
  KepRByteArray();
  // `n` bytes copied from `bytes` (n <= 0 or null give the empty array), then a
  // zero byte.
  KepRByteArray(char const* bytes, int n);
  // `n` zero bytes and the terminator, for the caller to fill through data().
  explicit KepRByteArray(int n);
  ~KepRByteArray() override;

  KEP_METHODS_ByteArray(KEP_DECLARE_METHOD);

  operator char*() const { return asChars(); }
  operator signed char*() const { return asSignedChars(); }
  operator unsigned char*() const { return asUnsignedChars(); }

  // The bytes (zero-terminated) and their count without the terminator.
  char* data() const noexcept { return bytes; }
  int size() const noexcept { return count; }

 private:
  char* bytes;
  int count;
};

#endif  // KEP_BASE_KEPRBYTEARRAY_H
