// Buffered reading over the file layer: a file record with a read buffer, for
// readers that take a file in small pieces (the start-up options reader).
#ifndef KEP_IO_KEPIOBUFFERED_H
#define KEP_IO_KEPIOBUFFERED_H

#include <cstdint>

#include "kep/base/KepDefs.h"
#include "kep/io/_KepIO.h"

// The buffer size of the start-up options reader.
constexpr uint32_t KEP_IO_BUFFERED_DEFAULT = 4096;

// A buffered file: the record and its read buffer (KepMalloc'd, owned until
// _KepIOBufferedClose). Used by one thread at a time.
struct _KEP_IO_BUFFERED {
  _Io_File file;
  char* buffer;
  uint32_t capacity;  // bytes the buffer holds
  uint32_t position;  // next byte of the buffer to hand out
  uint32_t filled;    // bytes of the buffer that came from the file
  uint32_t atEnd;     // 1 once the file gave 0 bytes
};

// Opens `path` for reading with a buffer of `bufferSize` bytes (1 to 65535;
// other sizes are taken as KEP_IO_BUFFERED_DEFAULT). The codes of __KepIOOpen
// (KEP_IO_NOT_FOUND for a missing file); KEP_IO_FAILED when no buffer can be
// had. On failure `*out` is left closed (fd -1, no buffer).
KEP_API uint32_t _KepIOBufferedOpen(char const* path, uint32_t bufferSize, _KEP_IO_BUFFERED* out);
// Reads up to `length` bytes into `out` and stores the count in `*count` (when
// not null): fewer than `length` only at the end of the file or on a failure.
// Answers 0 when `length` bytes came, KEP_IO_SHORT_READ at the end of the file,
// or the file layer's failure code. Reads of at least the buffer's size go to the
// file directly.
KEP_API uint32_t _KepIOBufferedRead(_KEP_IO_BUFFERED* file, void* out, uint32_t length,
                                    uint32_t* count);
// Closes the record and frees the buffer; a closed file answers KEP_IO_BAD_HANDLE.
KEP_API uint32_t _KepIOBufferedClose(_KEP_IO_BUFFERED* file);

#endif  // KEP_IO_KEPIOBUFFERED_H
