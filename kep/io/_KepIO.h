// The portable file layer: the file record, the layer's result codes and open
// flags, the open-path table, the path builders over 1024-byte buffers and the
// multi-byte (DBCS) character helpers. The functions that call the system are
// declared in _KepIOUnix.h, directories and enumeration in _KepIODirectory.h,
// wildcard matching in _KepIOMatch.h and the extended path forms in
// _KepIOPathExtendedNonMac.h; this header includes them all and no system
// header.
//
// Every function answers a 32-bit code, 0 for success (0x82xx, below) unless it
// says otherwise.
//
// Paths are zero-terminated byte strings with "/" as the separator. Output paths
// go to caller buffers of KEP_IO_PATH_MAX (1024) bytes; no function writes past
// them, and input paths are read no further than 1024 bytes (a path without a
// terminating zero within them counts as too long).
#ifndef KEP_IO_KEPIO_H
#define KEP_IO_KEPIO_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// --- Result codes -------------------------------------------------------------

// General failure: allocation, the open-path table's semaphore, an error the
// layer has no code for, removal of a directory through _KepIODelete.
constexpr uint32_t KEP_IO_FAILED = 0x8200;
// Sharing violation: the path is open exclusively, or a lock was requested on an
// open path; errno EAGAIN, EACCES or EEXIST; EBADF on write.
constexpr uint32_t KEP_IO_SHARING = 0x8201;
// Bad handle: a null or closed record, errno EBADF; a failed seek of a
// positioned read or write.
constexpr uint32_t KEP_IO_BAD_HANDLE = 0x8202;
// A move across devices whose copy failed.
constexpr uint32_t KEP_IO_MOVE_COPY_FAILED = 0x8203;
// Disk full: errno ENOSPC, or fewer bytes written than asked.
constexpr uint32_t KEP_IO_DISK_FULL = 0x8204;
// Fewer bytes read than asked (the count read is still given).
constexpr uint32_t KEP_IO_SHORT_READ = 0x8205;
// Copy: the destination could not be opened.
constexpr uint32_t KEP_IO_COPY_DESTINATION = 0x8206;
// Not found: errno ENOENT; a null output buffer of the path builders; the end
// of an enumeration.
constexpr uint32_t KEP_IO_NOT_FOUND = 0x8209;
// Too many open files: errno EMFILE.
constexpr uint32_t KEP_IO_TOO_MANY_FILES = 0x820A;
// A path (or a path being built) longer than its buffer allows.
constexpr uint32_t KEP_IO_PATH_TOO_LONG = 0x820B;
// Truncation to a length beyond the end of the file.
constexpr uint32_t KEP_IO_TRUNCATE_BEYOND_END = 0x820D;
// A record lock was not obtained.
constexpr uint32_t KEP_IO_LOCK_FAILED = 0x820E;
// A record lock could not be released.
constexpr uint32_t KEP_IO_UNLOCK_FAILED = 0x820F;
// A move across devices was refused because the source is a directory.
constexpr uint32_t KEP_IO_MOVE_DIRECTORY = 0x8210;
// Move: the source is not there.
constexpr uint32_t KEP_IO_MOVE_NOT_FOUND = 0x8211;
// A path reduce of an empty path.
constexpr uint32_t KEP_IO_REDUCE_EMPTY = 0x8215;

// --- Sizes and flags ------------------------------------------------------------

// The size of every path buffer of the layer, terminating zero included.
constexpr int KEP_IO_PATH_MAX = 1024;
// The language identifier the layer passes to the character helpers: plain
// single-byte text.
constexpr unsigned short KEP_IO_LANGUAGE = 14;
// Shift-JIS text for the character helpers (lead bytes 0x81-0x9F, 0xE0-0xFC).
// Every other identifier but 14 uses the lead bytes 0x81-0xFE.
constexpr unsigned short KEP_IO_LANGUAGE_SHIFT_JIS = 17;

// Open flags: the system's open flags, some of which the open functions give a
// meaning of their own (see __KepIOOpen). The values are Linux's.
constexpr unsigned long KEP_IO_READ = 0x0;
constexpr unsigned long KEP_IO_WRITE = 0x1;
constexpr unsigned long KEP_IO_READ_WRITE = 0x2;
constexpr unsigned long KEP_IO_LOCK_EXCLUSIVE = 0x20;  // write lock, read-write access
constexpr unsigned long KEP_IO_CREATE = 0x40;          // creating call, shared lock
constexpr unsigned long KEP_IO_EXCLUSIVE = 0x80;       // nobody else may open the path
constexpr unsigned long KEP_IO_TRUNCATE = 0x200;
constexpr unsigned long KEP_IO_APPEND = 0x400;
constexpr unsigned long KEP_IO_CREATE_DIRECTORIES = 0x1000;  // make missing directories

// The `whence` values of the seek and write functions.
constexpr int KEP_IO_SEEK_SET = 0;
constexpr int KEP_IO_SEEK_CUR = 1;
constexpr int KEP_IO_SEEK_END = 2;

// A read position that means "where the file is": no seek.
constexpr long KEP_IO_CURRENT = -1;

// The file record, filled by the open functions and passed by pointer to the
// others. A record whose fd is -1 is closed; the path copy (allocated with
// KepMalloc) belongs to the record until _KepIOClose frees it.
//
// Records are not shared between threads by the layer: one thread uses a record
// at a time.
struct _Io_File {
  int32_t fd;           // the descriptor; -1 once closed
  char* path;           // heap copy of the path the record was opened with
  uint32_t pathLength;  // strlen(path) + 1
};

// --- Open-path table --------------------------------------------------------------
// One table per process of the paths opened through the layer, by exact path
// text, each with its count of opens, whether it was opened exclusively and the
// lock mode it was first opened with. Guarded by one mutex semaphore made on the
// first open. Thread-safe.

// Made by the first open: clears the table and creates its semaphore. Answers 0,
// or KEP_IO_FAILED when the semaphore cannot be made (a later call tries again).
KEP_API uint32_t __KepIOTableInit();
// Counts an open of `path`: an unknown path gets an entry with count 1; a known
// path gets count + 1 when neither this call (exclusive != 0 or lockMode != 0)
// nor the entry (exclusive) objects, else KEP_IO_SHARING. KEP_IO_FAILED when the
// table is not made or memory runs out.
KEP_API uint32_t __KepIOTableAcquire(char const* path, unsigned exclusive, unsigned lockMode);
// Counts down an open of `path`, removing the entry at 0. Unknown paths are
// ignored.
KEP_API void __KepIOTableRelease(char const* path);
// The number of opens of `path` the table holds now (0 when none).
KEP_API uint64_t _KepIOOpenCount(char const* path);

// --- Path builders ------------------------------------------------------------------
// Buffers are KEP_IO_PATH_MAX bytes. An output may be the same buffer as an
// input. On failure the output is left as it was.

// Builds a path from the non-null components a, b, c, d in that order: each is
// appended after a "/", which is put only when the text so far is not empty and
// does not already end in "/". KEP_IO_NOT_FOUND for a null `out`;
// KEP_IO_PATH_TOO_LONG when the result would not fit 1024 bytes with its zero.
KEP_API uint32_t _KepIOPathBuild(char const* a, char const* b, char const* c, char const* d,
                                 char* out);
// Copies `path` to `out` and appends b and c as _KepIOPathBuild does; without
// `path` it is _KepIOPathBuild(null, null, b, c, out).
KEP_API uint32_t _KepIOPathModify(char const* path, char const* b, char const* c, char* out);
// Splits `path` at the start of its file name (after the last "/"): `dir` gets
// everything before that separator ("" when there is none, also for "/name"),
// `name` (when not null) the file name ("" for a path ending in "/").
// KEP_IO_NOT_FOUND for a null path or dir; KEP_IO_REDUCE_EMPTY for "".
KEP_API uint32_t _KepIOPathReduce(char const* path, char* dir, char* name);
// Copies `src` to `dst`. KEP_IO_NOT_FOUND for null arguments; KEP_IO_PATH_TOO_LONG
// (dst becomes "") when src has no terminating zero within 1024 bytes.
KEP_API uint32_t _KepIOPathCopy(char const* src, char* dst);
// The file-name part of the record's path, or of `path` when `file` is null or
// holds no path. KEP_IO_BAD_HANDLE when both are missing; KEP_IO_NOT_FOUND for a
// null `name`.
KEP_API uint32_t _KepIOExtractName(_Io_File const* file, char const* path, char* name);

// --- Character helpers ------------------------------------------------------------
// Text in `language` (14: single-byte; see KEP_IO_LANGUAGE_SHIFT_JIS) is scanned
// character by character; a double-byte character is a lead byte and the byte
// after it. A lead byte followed by the terminating zero counts as one byte, so no
// helper reads past the terminator.

// 1 when `byte` starts a double-byte character in `language`, else 0.
KEP_API unsigned long __KepIOIsDBCSLead(unsigned short language, unsigned char byte);
// The character after the one at `p` (`p` itself at the terminator).
KEP_API char const* __KepIOGetNextChar(unsigned short language, char const* p);
// The start of the character before `p` in the text that starts at `start`
// (`start` when p <= start).
KEP_API char const* __KepIOGetPrevChar(unsigned short language, char const* start, char const* p);
// The start of the file name of `path`: the character after its last "/", or
// `path` itself. Reads at most 1024 bytes.
KEP_API char const* __KepIOFindFileNameStart(unsigned short language, char const* path);
// The "." that starts the extension of the file name of `path` (the last "." of
// the name, when it is not the name's first character), or the name's terminator.
KEP_API char const* __KepIOFindExtensionStart(unsigned short language, char const* path);
// The number of characters of `text` (double-byte characters count once).
KEP_API int __KepIOCharCount(unsigned short language, char const* text);

// --- Error handler ----------------------------------------------------------------

// A caller's handler for the layer's errors.
using QbioErrorHandlerProc = void (*)(uint32_t code);
// Accepts `handler` for `code` and does nothing else: this layer reports errors
// only through its results. Answers 0.
KEP_API uint32_t QbioErrorHandler(uint32_t code, QbioErrorHandlerProc handler);

// --- Copying ----------------------------------------------------------------------

// Copies `length` bytes (KEP_IO_ALL: up to the end) from `from` at `fromPosition`
// to `to` at `toPosition` (KEP_IO_CURRENT for either: where the file is now), in
// pieces of 32 KiB, and stores the count copied in `*copied` (when not null).
// Both files are left after the bytes copied. KEP_IO_SHORT_READ when the source
// ended before `length` bytes; otherwise the first read or write failure.
constexpr unsigned long KEP_IO_ALL = static_cast<unsigned long>(-1);
KEP_API uint32_t _KepIOCopyPartial(_Io_File* from, long fromPosition, _Io_File* to, long toPosition,
                                   unsigned long length, unsigned long* copied);

#include "kep/io/_KepIODirectory.h"
#include "kep/io/_KepIOMatch.h"
#include "kep/io/_KepIOPathExtendedNonMac.h"
#include "kep/io/_KepIOUnix.h"

#endif  // KEP_IO_KEPIO_H
