// KepIOStream: the byte stream that the XML writer and parser, the files, the
// in-memory streams and the TCP streams share.
#ifndef KEP_IO_KEPIOSTREAM_H
#define KEP_IO_KEPIOSTREAM_H

#include "kep/base/KepByteArray.h"
#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

// The operations of KepIOStream, in the order of the body's virtual operations.
// All but markSupported, isClosed, isReadable and isWritable are bracketed by
// the body's lock.
//
// Reading
//  read()                  the next byte (0..255), -1 at the end or on failure
//  read(buffer, offset, length)
//                          reads at most `length` bytes into buffer + offset and
//                          answers their count: -1 at the end or on failure, 0
//                          for length 0. A device may answer fewer bytes than
//                          are left. A null buffer or a negative offset or length
//                          answers -1 (error KEP_IO_FAILED); the buffer must hold
//                          offset + length bytes.
//  readFully(buffer, offset, length)
//                          reads until `length` bytes have come or the stream
//                          ends; the count, or -1 when it was at its end already
//  readBytes(length)       up to `length` bytes as a byte array (empty at the end
//                          or for length <= 0)
//  readLine()              the bytes up to the next "\n" (excluded, as is a "\r"
//                          before it), widened to a string; the last line may
//                          lack its "\n". A null string at the end. Reads byte by
//                          byte, so nothing behind the line is consumed.
//  readText(length)        up to `length` bytes (-1: up to the end) widened to a
//                          string; a null string at the end
//  skip(count)             passes over up to `count` bytes; answers how many (0
//                          for count <= 0)
//  available()             bytes that can be read now without waiting (0 when the
//                          stream cannot tell)
//  markSupported()         1 when mark() and reset() work on this stream
//  mark(readLimit)         remembers the read position (readLimit is a hint)
//  reset()                 goes back to the marked position (the start when none
//                          was marked); 1 when it did, 0 when unsupported
//
// Writing (each answers the count of bytes written)
//  write(byte)             the low byte of `byte`: 1, or 0 on failure
//  write(buffer, offset, length)
//                          `length` bytes from buffer + offset; fewer on failure;
//                          a null buffer or negative offset or length write 0
//  write(text)             the string's units narrowed to bytes (low byte each);
//                          0 for a null or empty string
//  write(char const* text) the zero-terminated bytes (0 for null text)
//  writeLine(text)         write(text) and a "\n"
//  into(target, length, close)
//                          copies up to `length` bytes (negative: up to the end)
//                          from this stream into `target`, in pieces of 32 KiB,
//                          until this stream ends or the target takes fewer bytes
//                          than offered; answers the count the target took. With
//                          `close` non-zero this stream is closed afterwards (the
//                          target stays open). A stream copied into itself
//                          copies nothing.
//  flush()                 hands buffered bytes to the device (nothing to do for
//                          the library's streams, which do not buffer)
//
// State
//  close()                 closes the stream; afterwards reads answer -1 and
//                          writes 0 (each class says how it opens again)
//  isClosed()              1 after close()
//  isReadable(), isWritable()
//                          1 when reads (writes) may succeed now: the stream is
//                          not closed and its device allows it
//  getError()              the code (KEP_IO_...) of the last failure, 0 when none
//  clearError()            sets the code back to 0
// clang-format off
#define KEP_METHODS_IOStream(X)                                                                  \
  X(IOStream, int, read, (), (), , 1)                                                            \
  X(IOStream, int, read, (signed char* buffer, int offset, int length), (buffer, offset, length),\
    , 1)                                                                                         \
  X(IOStream, int, readFully, (signed char* buffer, int offset, int length),                     \
    (buffer, offset, length), , 1)                                                               \
  X(IOStream, KepByteArray, readBytes, (int length), (length), , 1)                              \
  X(IOStream, KepString, readLine, (), (), , 1)                                                  \
  X(IOStream, KepString, readText, (int length), (length), , 1)                                  \
  X(IOStream, long, skip, (long count), (count), , 1)                                            \
  X(IOStream, int, available, (), (), , 1)                                                       \
  X(IOStream, unsigned long, markSupported, (), (), const, 0)                                    \
  X(IOStream, void, mark, (int readLimit), (readLimit), , 1)                                     \
  X(IOStream, unsigned long, reset, (), (), , 1)                                                 \
  X(IOStream, int, write, (int byte), (byte), , 1)                                               \
  X(IOStream, int, write, (signed char* buffer, int offset, int length),                         \
    (buffer, offset, length), , 1)                                                               \
  X(IOStream, int, write, (KepString const& text), (text), , 1)                                  \
  X(IOStream, int, write, (char const* text), (text), , 1)                                       \
  X(IOStream, int, writeLine, (KepString const& text), (text), , 1)                              \
  X(IOStream, int, into, (KepIOStream& target, int length, unsigned long close),                 \
    (target, length, close), , 1)                                                                \
  X(IOStream, void, flush, (), (), , 1)                                                          \
  X(IOStream, void, close, (), (), , 1)                                                          \
  X(IOStream, unsigned long, isClosed, (), (), const, 0)                                         \
  X(IOStream, unsigned long, isReadable, (), (), const, 0)                                       \
  X(IOStream, unsigned long, isWritable, (), (), const, 0)                                       \
  X(IOStream, int, getError, (), (), const, 1)                                                   \
  X(IOStream, void, clearError, (), (), , 1)
// clang-format on

// A handle on a byte stream (class 0x40039). The library's own stream body has
// no device: it reads nothing (-1) and writes nothing (0). Files
// (KepFile), in-memory streams (KepStringBufferIOStream) and the network streams
// derive from it.
//
// A caller makes its own stream by deriving an outer object from this class and
// overriding read(buffer, offset, length) and write(buffer, offset, length) (and
// close() or flush() when it needs them):
//
//   class Counter : public KepIOStream {
//    public:
//     Counter() : KepIOStream(nullptr, KepClassIdArg(KepClassID::IOStream)) {}
//     unsigned long isBridge() const override { return 0; }
//     using KepIOStream::write;  // keeps the other overloads visible
//     int write(signed char* b, int offset, int length) override { ...; return length; }
//   };
//   KepIOStream stream(*new Counter);  // the object goes with its last handle
//
// Every other operation (write(text), readLine(), into() ...) then works over
// the caller's read and write, also when it is called through the library's
// handles. The library must be brought up (Kep::init) for the outer-object
// constructor to find the class.
//
// Thread safety: the bracketed operations run under the body's lock; a stream is
// meant for one reader and one writer thread at a time, or for callers that hold
// lock() around a sequence of calls.
class KEP_API KepIOStream : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepIOStream, KepObject)

 public:
  KEP_METHODS_IOStream(KEP_DECLARE_METHOD)
};

KEP_METHODS_IOStream(KEP_DECLARE_BRIDGE)

#endif  // KEP_IO_KEPIOSTREAM_H
