// KepStringBufferIOStream: a byte stream over memory, read from a string and
// collecting what is written.
#ifndef KEP_IO_KEPSTRINGBUFFERIOSTREAM_H
#define KEP_IO_KEPSTRINGBUFFERIOSTREAM_H

#include "kep/io/KepIOStream.h"

// The operations KepStringBufferIOStream adds to KepIOStream, in the order of the
// body's virtual operations. All but isEmpty are bracketed by the body's lock.
//
//  size()                   the bytes the stream holds (read ones included)
//  clear()                  drops every byte; reading starts again at 0, the mark
//                           is forgotten and a closed stream is open again
//  toByteArray()            a copy of every byte held
//  toString(offset, length) `length` bytes from `offset` widened to a string
//                           (kept inside the content; length -1: to the end); the
//                           empty string when nothing is in range
//  getReadPosition()        the index of the next byte read()
//  setReadPosition(position) moves the read position (kept within 0..size())
//  setText(text)            replaces the content with the text narrowed to bytes,
//                           as clear() followed by write(text)
//  setBytes(bytes, offset, length)
//                           replaces the content with a copy of the bytes (as
//                           clear() alone for a null or negative range)
//  setLength(length)        keeps the first `length` bytes, or adds zero bytes up
//                           to it (negative: 0); the read position and mark are
//                           kept within the new size
//  rewind()                 sets the read position to 0
//  isEmpty()                1 when the stream holds no byte
// clang-format off
#define KEP_METHODS_StringBufferIOStream(X)                                                      \
  X(StringBufferIOStream, int, size, (), (), const, 1)                                           \
  X(StringBufferIOStream, void, clear, (), (), , 1)                                              \
  X(StringBufferIOStream, KepByteArray, toByteArray, (), (), const, 1)                           \
  X(StringBufferIOStream, KepString, toString, (int offset, int length), (offset, length), const,\
    1)                                                                                           \
  X(StringBufferIOStream, int, getReadPosition, (), (), const, 1)                                \
  X(StringBufferIOStream, void, setReadPosition, (int position), (position), , 1)                \
  X(StringBufferIOStream, void, setText, (KepString const& text), (text), , 1)                   \
  X(StringBufferIOStream, void, setBytes, (signed char const* bytes, int offset, int length),    \
    (bytes, offset, length), , 1)                                                                \
  X(StringBufferIOStream, void, setLength, (int length), (length), , 1)                          \
  X(StringBufferIOStream, void, rewind, (), (), , 1)                                             \
  X(StringBufferIOStream, unsigned long, isEmpty, (), (), const, 0)
// clang-format on

// A handle on an in-memory stream (class 0x4006c). The stream holds one array of
// bytes: reads take bytes from the read position on, writes append at the end.
// Made empty (default constructor) it collects what is written; made from a
// string it holds that string's units narrowed to bytes, ready to be read.
// toString() answers every byte held (the initial text and what was written),
// each widened to one unit.
//
// Unlike most handle classes, the default constructor makes a new, empty stream
// (not a null handle); a null handle is made from a null KepObject.
//
// mark() and reset() are supported; available() answers the bytes not yet read.
// After close() reads answer -1 and writes 0 until clear(), setText() or
// setBytes() starts a new content; the content stays readable through
// toString(), toByteArray() and size().
//
// Thread safety: see KepIOStream.
class KEP_API KepStringBufferIOStream : public KepIOStream {
  KEP_HANDLE_SHARING_CONSTRUCTORS(KepStringBufferIOStream, KepIOStream)

 public:
  // A new, empty stream.
  KepStringBufferIOStream();
  // A new stream holding `text` narrowed to bytes (empty for a null string).
  KepStringBufferIOStream(KepString const& text);

  KEP_METHODS_StringBufferIOStream(KEP_DECLARE_METHOD) using KepObject::toString;
};

KEP_METHODS_StringBufferIOStream(KEP_DECLARE_BRIDGE)

#endif  // KEP_IO_KEPSTRINGBUFFERIOSTREAM_H
