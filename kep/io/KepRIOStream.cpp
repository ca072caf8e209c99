#include "kep/io/KepRIOStream.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "kep/base/KepFactory.h"
#include "kep/base/KepRByteArray.h"
#include "kep/base/KepRString.h"
#include "kep/io/_KepIO.h"

namespace {

constexpr int kCopyPiece = 32 * 1024;

}  // namespace

KepRIOStream::KepRIOStream() : closed(false), error(0) {}

KepRIOStream::~KepRIOStream() = default;

std::string KepRIOStream::narrow(KepString const& text) {
  KepRString const* body = KepRString::of(text);
  if (body == nullptr) return std::string();
  std::string bytes(static_cast<size_t>(body->unitCount()), '\0');
  unsigned short const* units = body->units();
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(units[i] & 0xFF);
  return bytes;
}

KepString KepRIOStream::widen(char const* bytes, size_t count) {
  return KepString(
      KepRString::createFromBytes(reinterpret_cast<unsigned char const*>(bytes), int(count)));
}

uint32_t KepRIOStream::fail(uint32_t code) const {
  if (code != 0) error.store(static_cast<int>(code), std::memory_order_relaxed);
  return code;
}

KepIOStream* KepRIOStream::outerStream() {
  KepObject* outer = getRealOuterObj();
  return outer != nullptr ? dynamic_cast<KepIOStream*>(outer) : nullptr;
}

int KepRIOStream::deviceRead(signed char* buffer, int offset, int length) {
  if (KepIOStream* outer = outerStream()) return outer->read(buffer, offset, length);
  return read(buffer, offset, length);
}

int KepRIOStream::deviceWrite(signed char* buffer, int offset, int length) {
  if (KepIOStream* outer = outerStream()) return outer->write(buffer, offset, length);
  return write(buffer, offset, length);
}

void KepRIOStream::deviceClose() {
  if (KepIOStream* outer = outerStream()) {
    outer->close();
  } else {
    close();
  }
}

// --- Device operations: none here ------------------------------------------------

int KepRIOStream::read(signed char* buffer, int offset, int length) {
  if (!validRange(buffer, offset, length)) {
    fail(KEP_IO_FAILED);
    return -1;
  }
  return length == 0 ? 0 : -1;
}

int KepRIOStream::write(signed char* buffer, int offset, int length) {
  if (!validRange(buffer, offset, length)) fail(KEP_IO_FAILED);
  return 0;
}

long KepRIOStream::skip(long count) {
  signed char scratch[4096];
  long done = 0;
  while (done < count) {
    int got =
        deviceRead(scratch, 0, static_cast<int>(std::min<long>(count - done, sizeof scratch)));
    if (got <= 0) break;
    done += got;
  }
  return done;
}

int KepRIOStream::available() { return 0; }

unsigned long KepRIOStream::markSupported() const { return 0; }

void KepRIOStream::mark(int /*readLimit*/) {}

unsigned long KepRIOStream::reset() { return 0; }

void KepRIOStream::flush() {}

void KepRIOStream::close() { closed.store(true, std::memory_order_release); }

unsigned long KepRIOStream::isClosed() const {
  return closed.load(std::memory_order_acquire) ? 1 : 0;
}

unsigned long KepRIOStream::isReadable() const { return isClosed() == 0 ? 1 : 0; }

unsigned long KepRIOStream::isWritable() const { return isClosed() == 0 ? 1 : 0; }

int KepRIOStream::getError() const { return error.load(std::memory_order_relaxed); }

void KepRIOStream::clearError() { error.store(0, std::memory_order_relaxed); }

// --- Composite operations ------------------------------------------------------------

int KepRIOStream::read() {
  signed char byte = 0;
  int got = deviceRead(&byte, 0, 1);
  return got == 1 ? static_cast<unsigned char>(byte) : -1;
}

int KepRIOStream::readFully(signed char* buffer, int offset, int length) {
  if (!validRange(buffer, offset, length)) {
    fail(KEP_IO_FAILED);
    return -1;
  }
  int done = 0;
  while (done < length) {
    int got = deviceRead(buffer, offset + done, length - done);
    if (got <= 0) break;
    done += got;
  }
  return done == 0 && length > 0 ? -1 : done;
}

bool KepRIOStream::readUpTo(int length, std::string* out) {
  signed char piece[4096];
  bool any = false;
  try {
    for (;;) {
      int want = static_cast<int>(sizeof piece);
      if (length >= 0) want = std::min<int>(want, length - static_cast<int>(out->size()));
      if (want <= 0) break;
      int got = deviceRead(piece, 0, want);
      if (got <= 0) break;
      any = true;
      out->append(reinterpret_cast<char const*>(piece), static_cast<size_t>(got));
    }
  } catch (std::bad_alloc const&) {
    fail(KEP_IO_FAILED);
  }
  return any;
}

KepByteArray KepRIOStream::readBytes(int length) {
  std::string bytes;
  if (length > 0) readUpTo(length, &bytes);
  return KepByteArray(bytes.data(), static_cast<int>(bytes.size()));
}

KepString KepRIOStream::readLine() {
  std::string line;
  bool any = false;
  for (;;) {
    int byte = read();
    if (byte < 0) break;
    any = true;
    if (byte == '\n') break;
    line.push_back(static_cast<char>(byte));
  }
  if (!any) return KepString();
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return widen(line.data(), line.size());
}

KepString KepRIOStream::readText(int length) {
  std::string text;
  if (!readUpTo(length, &text) && length != 0) return KepString();
  return widen(text.data(), text.size());
}

int KepRIOStream::write(int byte) {
  signed char b = static_cast<signed char>(byte);
  return deviceWrite(&b, 0, 1) == 1 ? 1 : 0;
}

int KepRIOStream::write(KepString const& text) {
  std::string bytes = narrow(text);
  if (bytes.empty()) return 0;
  return deviceWrite(reinterpret_cast<signed char*>(&bytes[0]), 0, static_cast<int>(bytes.size()));
}

int KepRIOStream::write(char const* text) {
  if (text == nullptr || *text == 0) return 0;
  size_t length = std::strlen(text);
  return deviceWrite(reinterpret_cast<signed char*>(const_cast<char*>(text)), 0,
                     static_cast<int>(std::min<size_t>(length, 0x7FFFFFFF)));
}

int KepRIOStream::writeLine(KepString const& text) {
  int wrote = write(text);
  signed char newline = '\n';
  return wrote + (deviceWrite(&newline, 0, 1) == 1 ? 1 : 0);
}

int KepRIOStream::into(KepIOStream& target, int length, unsigned long closeAfter) {
  if (target.getRealKepObj() == this) return 0;
  std::unique_ptr<signed char[]> piece(new signed char[kCopyPiece]);
  int done = 0;
  while (length < 0 || done < length) {
    int want = length < 0 ? kCopyPiece : std::min(kCopyPiece, length - done);
    int got = deviceRead(piece.get(), 0, want);
    if (got <= 0) break;
    int took = target.write(piece.get(), 0, got);
    if (took > 0) done += took;
    if (took < got) break;
  }
  if (closeAfter != 0) deviceClose();
  return done;
}

KEP_REGISTER_LIBRARY_CLASS(IOStream);
