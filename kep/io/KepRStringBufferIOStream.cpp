#include "kep/io/KepRStringBufferIOStream.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "kep/base/KepFactory.h"
#include "kep/io/_KepIO.h"

KepRStringBufferIOStream::KepRStringBufferIOStream() : readPosition(0), markPosition(0) {}

KepRStringBufferIOStream::KepRStringBufferIOStream(KepString const& text)
    : content(narrow(text)), readPosition(0), markPosition(0) {}

void KepRStringBufferIOStream::restart() {
  content.clear();
  readPosition = 0;
  markPosition = 0;
  closed.store(false, std::memory_order_release);
}

// --- Device operations -------------------------------------------------------------

int KepRStringBufferIOStream::read() {
  // A caller's outer object may read differently: let the base route to it.
  if (getRealOuterObj() != nullptr) return KepRIOStream::read();
  if (closed.load(std::memory_order_acquire) || readPosition >= content.size()) return -1;
  return static_cast<unsigned char>(content[readPosition++]);
}

int KepRStringBufferIOStream::read(signed char* buffer, int offset, int length) {
  if (!validRange(buffer, offset, length)) {
    fail(KEP_IO_FAILED);
    return -1;
  }
  if (length == 0) return 0;
  if (closed.load(std::memory_order_acquire) || readPosition >= content.size()) return -1;
  size_t count = std::min(content.size() - readPosition, static_cast<size_t>(length));
  std::memcpy(buffer + offset, content.data() + readPosition, count);
  readPosition += count;
  return static_cast<int>(count);
}

int KepRStringBufferIOStream::write(signed char* buffer, int offset, int length) {
  if (!validRange(buffer, offset, length)) {
    fail(KEP_IO_FAILED);
    return 0;
  }
  if (closed.load(std::memory_order_acquire)) return 0;
  try {
    content.append(reinterpret_cast<char const*>(buffer + offset), static_cast<size_t>(length));
  } catch (std::bad_alloc const&) {
    fail(KEP_IO_FAILED);
    return 0;
  }
  return length;
}

long KepRStringBufferIOStream::skip(long count) {
  if (count <= 0 || closed.load(std::memory_order_acquire)) return 0;
  size_t step =
      std::min(content.size() - std::min(readPosition, content.size()), static_cast<size_t>(count));
  readPosition += step;
  return static_cast<long>(step);
}

int KepRStringBufferIOStream::available() {
  if (closed.load(std::memory_order_acquire) || readPosition >= content.size()) return 0;
  return static_cast<int>(std::min<size_t>(content.size() - readPosition, 0x7FFFFFFF));
}

unsigned long KepRStringBufferIOStream::markSupported() const { return 1; }

void KepRStringBufferIOStream::mark(int /*readLimit*/) { markPosition = readPosition; }

unsigned long KepRStringBufferIOStream::reset() {
  readPosition = std::min(markPosition, content.size());
  return 1;
}

// --- Content -----------------------------------------------------------------------

KepString KepRStringBufferIOStream::toString() const {
  return widen(content.data(), content.size());
}

int KepRStringBufferIOStream::size() const {
  return static_cast<int>(std::min<size_t>(content.size(), 0x7FFFFFFF));
}

void KepRStringBufferIOStream::clear() { restart(); }

KepByteArray KepRStringBufferIOStream::toByteArray() const {
  return KepByteArray(content.data(), size());
}

KepString KepRStringBufferIOStream::toString(int offset, int length) const {
  size_t from = static_cast<size_t>(std::max(offset, 0));
  if (from >= content.size() || length == 0 || length < -1) return widen(nullptr, 0);
  size_t count = content.size() - from;
  if (length > 0) count = std::min(count, static_cast<size_t>(length));
  return widen(content.data() + from, count);
}

int KepRStringBufferIOStream::getReadPosition() const { return static_cast<int>(readPosition); }

void KepRStringBufferIOStream::setReadPosition(int position) {
  readPosition = std::min(static_cast<size_t>(std::max(position, 0)), content.size());
}

void KepRStringBufferIOStream::setText(KepString const& text) {
  restart();
  content = narrow(text);
}

void KepRStringBufferIOStream::setBytes(signed char const* bytes, int offset, int length) {
  restart();
  if (validRange(bytes, offset, length)) {
    content.assign(reinterpret_cast<char const*>(bytes + offset), static_cast<size_t>(length));
  }
}

void KepRStringBufferIOStream::setLength(int length) {
  content.resize(static_cast<size_t>(std::max(length, 0)), '\0');
  readPosition = std::min(readPosition, content.size());
  markPosition = std::min(markPosition, content.size());
}

void KepRStringBufferIOStream::rewind() { readPosition = 0; }

unsigned long KepRStringBufferIOStream::isEmpty() const { return content.empty() ? 1 : 0; }

KEP_REGISTER_LIBRARY_CLASS(StringBufferIOStream);
