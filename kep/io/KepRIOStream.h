// KepRIOStream: the body of KepIOStream and the base of every stream body.
#ifndef KEP_IO_KEPRIOSTREAM_H
#define KEP_IO_KEPRIOSTREAM_H

#include <atomic>
#include <cstddef>
#include <string>

#include "kep/base/KepRObject.h"
#include "kep/io/KepIOStream.h"

// The stream base. A derived body gives the stream its device by overriding the
// device operations:
//   read(buffer, offset, length), write(buffer, offset, length), flush(),
//   close(), available(), skip(), markSupported(), mark(), reset(),
//   isReadable(), isWritable()
// and inherits the composite ones (read(), readFully, readBytes, readLine,
// readText, the text writes, writeLine, into), which reach the device only
// through read(buffer, ...) and write(buffer, ...). When a caller's outer object
// is registered for the body, the composite operations call the outer object's
// read, write and close instead, so the caller's overrides receive them.
//
// This class itself has no device: reads answer -1 and writes 0; it keeps the
// closed state and the last error code for its derived classes.
//
// Thread safety: see KepIOStream; the closed flag and the error code are atomic.
class KEP_API KepRIOStream : public KepRObject {
  KEP_BODY_IDENTITY(IOStream, KepRObject)
  KEP_BODY_CREATE_ANOTHER(IOStream)

 public:
  KepRIOStream();
  ~KepRIOStream() override;

  KEP_METHODS_IOStream(KEP_DECLARE_METHOD)

      // The string's units narrowed to bytes (low byte each); "" for a null string.
      static std::string narrow(KepString const& text);
  // `count` bytes widened to a string (the empty string for count 0).
  static KepString widen(char const* bytes, size_t count);
  // True when (buffer, offset, length) is a usable range: a non-null buffer and
  // a non-negative offset and length.
  static bool validRange(signed char const* buffer, int offset, int length) {
    return buffer != nullptr && offset >= 0 && length >= 0;
  }

 protected:
  // The device operations as the composite ones call them: through the
  // registered outer object when there is one, else this body's own.
  int deviceRead(signed char* buffer, int offset, int length);
  int deviceWrite(signed char* buffer, int offset, int length);
  void deviceClose();

  // Appends to `out` what the device gives, up to `length` bytes (negative: up
  // to the end); true when anything came.
  bool readUpTo(int length, std::string* out);

  // Records `code` as the last failure (0 is ignored) and answers it.
  uint32_t fail(uint32_t code) const;

  std::atomic<bool> closed;
  mutable std::atomic<int> error;

 private:
  KepIOStream* outerStream();
};

#endif  // KEP_IO_KEPRIOSTREAM_H
