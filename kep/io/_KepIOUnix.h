// The file layer's functions that call the system: opening and closing records,
// reading and writing, positioning, sizes, deletion, attributes, file times,
// moving and copying, record locks, directories and the primitives the portable
// directory and path code builds on. Implemented over POSIX descriptors in
// _KepIOUnix.cpp; this header includes no system header.
//
// Codes and flags are those of _KepIO.h. System errors are mapped everywhere
// the same way (_KepIOMapErrno). A null or closed record (fd -1) is answered with
// KEP_IO_BAD_HANDLE without a system call.
//
// Thread safety: every function may be called from any thread; one record is
// used by one thread at a time.
#ifndef KEP_IO_KEPIOUNIX_H
#define KEP_IO_KEPIOUNIX_H

#include <cstdint>

#include "kep/base/KepDefs.h"
#include "kep/io/_KepIO.h"

struct _KEP_IO_FIND_INFO;

// The layer's code for a system error number: ENOENT KEP_IO_NOT_FOUND, EBADF
// KEP_IO_BAD_HANDLE, EAGAIN, EACCES and EEXIST (17) KEP_IO_SHARING, EMFILE
// KEP_IO_TOO_MANY_FILES, ENOSPC KEP_IO_DISK_FULL, anything else KEP_IO_FAILED.
KEP_API uint32_t _KepIOMapErrno(int error);

// --- Records ----------------------------------------------------------------------

// Opens `path` into `*file`. `flags` are system open flags in which some bits
// have the layer's own meaning, applied in this order:
//  - KEP_IO_EXCLUSIVE (0x80) clears KEP_IO_TRUNCATE (0x200) and makes the open
//    exclusive: no other open of the path through the layer succeeds while this
//    one lasts (it is passed on to the system as O_EXCL).
//  - KEP_IO_CREATE (0x40) makes the call a creating one (mustBePresent becomes 0)
//    and ORs 0x42 (read-write) into the flags; it then asks for a shared lock and
//    is removed before the system call. So a creating open does not create a
//    missing file (it answers KEP_IO_NOT_FOUND); it opens and truncates an
//    existing one. This is deliberate: files are created by __KepIOOpenCreating.
//  - KEP_IO_LOCK_EXCLUSIVE (0x20) asks for an exclusive lock and is replaced by
//    read-write (0x2, ORed in). With both lock bits the exclusive lock is taken.
//    Either lock bit with KEP_IO_WRITE gives the access mode 3, which Linux opens
//    for neither reading nor writing; its lock then fails (KEP_IO_LOCK_FAILED).
//  - KEP_IO_CREATE_DIRECTORIES (0x1000) is removed; when the open fails with
//    KEP_IO_NOT_FOUND, the directories of the path are created once
//    (_KepIODirCreateForFile) and the open is tried again.
// An open with a lock, or an exclusive one, of a path that is open already is
// refused with KEP_IO_SHARING, as is any open of a path open exclusively. The
// lock itself is a record lock on byte 1 (read lock for shared, write lock for
// exclusive) against other processes; KEP_IO_LOCK_FAILED when the descriptor
// does not allow it, KEP_IO_SHARING when another process holds it.
// `mustBePresent` is accepted for callers' bookkeeping; the system call decides.
// On failure `*file` is a closed record (fd -1, no path). KEP_IO_FAILED for a
// null file, KEP_IO_NOT_FOUND for a null path, KEP_IO_PATH_TOO_LONG for a path of
// 1024 bytes or more.
KEP_API uint32_t __KepIOOpen(char const* path, unsigned long flags, _Io_File* file,
                             unsigned long mustBePresent);
// __KepIOOpen(path, flags | 0x240, file, 0): opens an existing file read-write,
// truncated, under a shared lock. `mode` is accepted and not used (see above).
KEP_API uint32_t __KepIOCreate(char const* path, unsigned long flags, unsigned long mode,
                               _Io_File* file);
// Opens `path` as __KepIOOpen does, except that KEP_IO_CREATE keeps its system
// meaning (O_CREAT: the file is created with `mode`, less the umask, when it is
// missing), leaves the access mode alone and asks for no lock. The open counts in the open-path
// table like any other. Used for copy destinations and files the stream classes write.
KEP_API uint32_t __KepIOOpenCreating(char const* path, unsigned long flags, unsigned long mode,
                                     _Io_File* file);
// Closes the record: the descriptor is closed and set to -1, the path's count in
// the open-path table goes down and the path copy is freed. KEP_IO_BAD_HANDLE for
// a closed record; KEP_IO_FAILED when the record held no path copy; a failing
// close() is mapped (the record is closed all the same).
KEP_API uint32_t _KepIOClose(_Io_File* file);

// Reads up to `length` bytes into `buffer`, first seeking to `position` unless it
// is KEP_IO_CURRENT (positions of 2^31 and more are reached in steps). The read is
// tried up to ten times, pausing 250 ms (_KepIOSetReadRetryPause) between failed
// tries; failures that no retry can change (a descriptor not open for reading,
// a directory, a bad buffer) end the tries at once. `*count` (when not null)
// receives the bytes read; KEP_IO_SHORT_READ when that is not `length` (0 at
// the end of the file), the mapped error when every try failed. A failed seek gives
// KEP_IO_BAD_HANDLE (KEP_IO_FAILED in the steps).
KEP_API uint32_t _KepIORead(_Io_File* file, long position, uint16_t length, void* buffer,
                            uint16_t* count);
// Writes `length` bytes of `buffer` at `position` relative to `whence`
// (KEP_IO_SEEK_SET, _CUR or _END); no seek is made for KEP_IO_SEEK_CUR with
// position 0. Partial writes are continued; `*count` (when not null) receives the
// bytes written. KEP_IO_DISK_FULL when fewer than `length` were written;
// KEP_IO_SHARING for EBADF (a record opened for reading only); a failed seek as
// for _KepIORead.
KEP_API uint32_t _KepIOWrite(_Io_File* file, int whence, long position, uint32_t length,
                             void const* buffer, uint32_t* count);
// Moves the file position by `offset` from `whence` and stores the new position.
KEP_API uint32_t _KepIOSeek(_Io_File* file, long offset, int whence, unsigned long* position);
// Stores the current position.
KEP_API uint32_t _KepIOTell(_Io_File* file, unsigned long* position);
// Stores the file's length (unix_filelength).
KEP_API uint32_t _KepIOSize(_Io_File* file, unsigned long* size);
// Cuts the file to `length`. KEP_IO_TRUNCATE_BEYOND_END when `length` is above the
// size (the file is not changed). In both cases the position is then `length`.
KEP_API uint32_t _KepIOTruncate(_Io_File* file, unsigned long length);
// Writes are not buffered by the layer: answers 0 and does nothing.
KEP_API uint32_t _KepIOFlush(_Io_File* file);

// Sets the pause between failed read tries (250 ms unless changed) and answers
// the previous one. For tests that provoke failing reads.
KEP_API unsigned long _KepIOSetReadRetryPause(unsigned long milliseconds);

// --- Paths --------------------------------------------------------------------------

// Deletes a file. A directory is refused with KEP_IO_FAILED.
KEP_API uint32_t _KepIODelete(char const* path);
// 0 when something is at `path`, else the mapped error (KEP_IO_NOT_FOUND).
KEP_API uint32_t _KepIOExist(char const* path);
// Stores 0x20 for a directory, 1 for a file the process may read and write, 2 for
// one it may only read, 0 otherwise.
KEP_API uint32_t _KepIOGetAttribute(char const* path, unsigned long* attribute);
// The file's modification time as a GMT value: the time is broken down without a
// zone (_KepDateSecs2Date) and converted back under `zone` (_KepDateDate2Secs),
// that is read as a local time of the zone. A null zone gives the time itself.
KEP_API uint32_t _KepIOGetFileGMTVAL(char const* path, void* zone, unsigned long* value);
// Sets the access and modification times to `value` converted the same way as
// _KepIOGetFileGMTVAL converts (broken down without a zone, converted back under
// `zone`). With a null zone the value is stored as it is and reads back equal.
KEP_API uint32_t _KepIOSetFileGMTVAL(char const* path, void* zone, unsigned long value);
// Renames `from` to `to`. Across devices a file is copied (_KepIOCopy with flags
// 194: read-write, created, exclusive, so an existing destination is not
// replaced) and the source deleted; KEP_IO_MOVE_COPY_FAILED when the copy fails,
// KEP_IO_MOVE_DIRECTORY for a directory. KEP_IO_MOVE_NOT_FOUND when `from` is not
// there.
KEP_API uint32_t _KepIOMove(char const* from, char const* to);
// Copies the file `from` (opened with `fromFlags`, must be present) to `to`
// (opened with flags | 0x240 through __KepIOOpenCreating: created or truncated,
// and read-write when the flags name read-only access; KEP_IO_COPY_DESTINATION
// when that fails, or when `to` is the file `from` itself, which is then left
// alone). A failed copy closes and deletes the destination. A complete one
// gives the destination the source's access and modification times (whole
// seconds) and mode, less the write permissions when flag 2 (read-write) is
// clear: all write bits when flag 1 (write) is set, else the group and other
// write bits.
KEP_API uint32_t _KepIOCopy(char const* from, unsigned long fromFlags, char const* to,
                            unsigned long flags);

// A write lock on byte 0 of the file (record lock, against other processes),
// tried again every 300 ms until `seconds` have passed since the first try;
// KEP_IO_LOCK_FAILED then (at once for 0 seconds).
KEP_API uint32_t _KepIODBLock(int fd, unsigned long seconds);
// Releases the lock of _KepIODBLock. KEP_IO_UNLOCK_FAILED when it cannot.
KEP_API uint32_t _KepIODBUnlock(int fd);

// --- Directories -------------------------------------------------------------------

// Makes one directory (mode 0777 less the umask). An existing path gives
// KEP_IO_SHARING (EEXIST).
KEP_API uint32_t __KepIODirCreate(char const* path);
// Removes one empty directory.
KEP_API uint32_t _KepIODirRemove(char const* path);

// Primitives of the portable directory code. A directory stream is opened, read
// entry by entry ("." and ".." included; KEP_IO_NOT_FOUND at the end) and closed.
// `name` receives at most 255 bytes and a zero; `*isDirectory` (when not null)
// is 1 for an entry that is itself a directory and not a symbolic link.
KEP_API uint32_t __KepIODirOpen(char const* path, void** stream);
KEP_API uint32_t __KepIODirRead(void* stream, char* name, unsigned long* isDirectory);
KEP_API uint32_t __KepIODirClose(void* stream);
// Fills the size, modification time (GMT seconds) and attribute (as
// _KepIOGetAttribute) of what is at `path`; the name is not touched.
KEP_API uint32_t __KepIOStatInfo(char const* path, _KEP_IO_FIND_INFO* info);
// 1 in `*isDirectory` when `path` is a directory and not a symbolic link.
KEP_API uint32_t __KepIOIsRealDirectory(char const* path, unsigned long* isDirectory);
// Removes the directory entry `path` (a file or a symbolic link).
KEP_API uint32_t __KepIOUnlink(char const* path);
// Creates `path` as a new empty file (mode 0666 less the umask); KEP_IO_SHARING
// when something is there already.
KEP_API uint32_t __KepIOCreateExclusive(char const* path);
// Renames `from` to `to` unless something is at `to` (KEP_IO_SHARING then).
KEP_API uint32_t __KepIORenameNoReplace(char const* from, char const* to);
// The current directory into `out` (KEP_IO_PATH_MAX bytes).
KEP_API uint32_t __KepIOCurrentDirectory(char* out);

// --- Odds and ends -----------------------------------------------------------------

// Sleeps `milliseconds` (nanosleep, resumed after signals).
KEP_API void _KepIOTimeDelay(unsigned long milliseconds);
// ftruncate(fd, length): 0, or -1 on failure.
KEP_API int unix_chsize(int fd, long length);
// The length of the open file: the position is saved, the file sought to its end
// and back, and the size taken from fstat. -1 on any failure.
KEP_API long unix_filelength(int fd);

#endif  // KEP_IO_KEPIOUNIX_H
