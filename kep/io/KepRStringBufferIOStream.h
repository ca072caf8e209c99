// KepRStringBufferIOStream: the body of KepStringBufferIOStream.
#ifndef KEP_IO_KEPRSTRINGBUFFERIOSTREAM_H
#define KEP_IO_KEPRSTRINGBUFFERIOSTREAM_H

#include <cstddef>
#include <string>

#include "kep/io/KepRIOStream.h"
#include "kep/io/KepStringBufferIOStream.h"

// One byte array with a read position and a mark. Operations are those of
// KepStringBufferIOStream and KepIOStream.
//
// Thread safety: see KepIOStream.
class KEP_API KepRStringBufferIOStream : public KepRIOStream {
  KEP_BODY_IDENTITY(StringBufferIOStream, KepRIOStream)
  KEP_BODY_CREATE_ANOTHER(StringBufferIOStream)

 public:
  // An empty stream.
  KepRStringBufferIOStream();
  // A stream holding the text narrowed to bytes.
  explicit KepRStringBufferIOStream(KepString const& text);

  KEP_METHODS_StringBufferIOStream(KEP_DECLARE_METHOD)

      // Every byte held, widened.
      KepString toString() const override;

  using KepRIOStream::read;
  using KepRIOStream::write;
  int read() override;
  int read(signed char* buffer, int offset, int length) override;
  int write(signed char* buffer, int offset, int length) override;
  long skip(long count) override;
  int available() override;
  unsigned long markSupported() const override;
  void mark(int readLimit) override;
  unsigned long reset() override;

 private:
  void restart();

  std::string content;
  size_t readPosition;
  size_t markPosition;
};

#endif  // KEP_IO_KEPRSTRINGBUFFERIOSTREAM_H
