#include "kep/io/_KepIOBuffered.h"

#include <cstring>

#include "kep/memory/KepMemory.h"

namespace {

// One read of the file layer, at most 65535 bytes; answers the code and adds
// the count to `*got`.
uint32_t readFile(_KEP_IO_BUFFERED* f, char* into, uint32_t length, uint32_t* got) {
  uint16_t n = 0;
  uint16_t ask = static_cast<uint16_t>(length > 0xffffu ? 0xffffu : length);
  uint32_t rc = _KepIORead(&f->file, KEP_IO_CURRENT, ask, into, &n);
  *got += n;
  if (n == 0 && (rc == 0 || rc == KEP_IO_SHORT_READ)) f->atEnd = 1;
  return rc;
}

}  // namespace

uint32_t _KepIOBufferedOpen(char const* path, uint32_t bufferSize, _KEP_IO_BUFFERED* out) {
  if (out == nullptr) return KEP_IO_FAILED;
  *out = _KEP_IO_BUFFERED{{-1, nullptr, 0}, nullptr, 0, 0, 0, 0};
  if (bufferSize == 0 || bufferSize > 0xffffu) bufferSize = KEP_IO_BUFFERED_DEFAULT;
  auto* buffer = static_cast<char*>(KepMalloc(bufferSize));
  if (buffer == nullptr) return KEP_IO_FAILED;
  uint32_t rc = __KepIOOpen(path, KEP_IO_READ, &out->file, 1);
  if (rc != 0) {
    KepFree(buffer);
    out->file.fd = -1;
    return rc;
  }
  out->buffer = buffer;
  out->capacity = bufferSize;
  return 0;
}

uint32_t _KepIOBufferedRead(_KEP_IO_BUFFERED* f, void* out, uint32_t length, uint32_t* count) {
  if (count != nullptr) *count = 0;
  if (f == nullptr || f->buffer == nullptr) return KEP_IO_BAD_HANDLE;
  if (out == nullptr && length > 0) return KEP_IO_FAILED;
  auto* dst = static_cast<char*>(out);
  uint32_t done = 0;
  uint32_t rc = 0;
  while (done < length) {
    if (f->position < f->filled) {
      uint32_t take = f->filled - f->position;
      if (take > length - done) take = length - done;
      std::memcpy(dst + done, f->buffer + f->position, take);
      f->position += take;
      done += take;
      continue;
    }
    if (f->atEnd) break;
    if (length - done >= f->capacity) {
      rc = readFile(f, dst + done, length - done, &done);
    } else {
      f->position = 0;
      f->filled = 0;
      rc = readFile(f, f->buffer, f->capacity, &f->filled);
    }
    if (rc != 0 && rc != KEP_IO_SHORT_READ) break;
    rc = 0;
  }
  if (count != nullptr) *count = done;
  if (rc != 0) return rc;
  return done == length ? 0 : KEP_IO_SHORT_READ;
}

uint32_t _KepIOBufferedClose(_KEP_IO_BUFFERED* f) {
  if (f == nullptr || f->buffer == nullptr) return KEP_IO_BAD_HANDLE;
  uint32_t rc = _KepIOClose(&f->file);
  KepFree(f->buffer);
  f->buffer = nullptr;
  f->position = f->filled = f->capacity = 0;
  return rc;
}
