// KepFile: a byte stream over a file, and the operations on the file's path.
#ifndef KEP_IO_KEPFILE_H
#define KEP_IO_KEPFILE_H

#include "kep/base/KepStringBuffer.h"
#include "kep/io/KepIOStream.h"
#include "kep/io/KepPath.h"

// The operations KepFile adds to KepIOStream, in the order of the body's
// virtual operations. All but the last six (the path accessors) are bracketed by
// the body's lock. Failures are answered with 0 (-1 where a count or position is
// answered) and leave their file-layer code in getError().
//
// The open file
//  open(mode)              opens the file anew (closing it first when open):
//                          KepFile::kRead an existing file from its start,
//                          kWrite created or truncated, kReadWrite created when
//                          missing and not truncated, kAppend created when
//                          missing, writes going to its end. Also opens a closed
//                          stream again. 1 on success.
//  isOpen()                1 while the file is open
//  seek(offset, whence)    moves the position of the open file (whence
//                          KEP_IO_SEEK_SET, _CUR, _END); the new position, -1
//                          when the file is not open or the seek fails
//  tell()                  the position of the open file; -1 when not open
//  setLength(length)       cuts the file to `length` bytes (opening it read-write
//                          when it is not open); a length beyond the end is
//                          refused (KEP_IO_TRUNCATE_BEYOND_END) but the position
//                          still moves there. 1 on success.
//  length()                the file's size in bytes; -1 when it is not there
//
// The file on disk
//  exists(), isFile(), isDirectory()
//                          whether something, a file (anything but a directory)
//                          or a directory is at the path
//  canRead(), canWrite()   whether the process may read (write) it; a directory
//                          counts as readable and writable when it exists
//  lastModified()          modification time as a GMT value (seconds since 1970);
//                          0 when the file is not there
//  setLastModified(time)   sets access and modification time; 1 on success
//  createNewFile()         creates the file empty when nothing is at the path; 1
//                          when it did, 0 when something was there (or failure)
//  remove()                closes the file if open and deletes it, or removes the
//                          empty directory at the path; 1 on success
//  renameTo(path)          closes the file if open and moves it to `path` (also
//                          across devices, by copying a file); this object keeps
//                          its own path. 1 on success.
//  copyTo(path)            copies the file with its times and mode to `path`,
//                          replacing what is there; 1 on success
//  mkdir()                 makes the directory at the path (its parent must be
//                          there); mkdirs() also every missing parent. 1 on success
//                          (mkdirs also when the directory is there already).
//  removeAll()             removes the directory and everything below it; 1 on
//                          success
//  list(pattern, names)    appends to `names` the names in the directory at the
//                          path that match `pattern` ("*" and "?"; null: all), in
//                          byte order, each followed by "\n"; answers how many, or
//                          -1 when the path is not a directory
//  createTempFile(prefix, suffix)
//                          creates a new, empty file with a unique name (prefix,
//                          eight hexadecimal digits, suffix) in the directory at
//                          the path and answers a KepFile on it; a null handle on
//                          failure
//  lockRecord(seconds)     takes the record lock of _KepIODBLock (a write lock on
//                          byte 0 against other processes), opening the file
//                          read-write when it is not open and trying until
//                          `seconds` have passed; 1 when locked
//  unlockRecord()          releases it; 1 on success
//
// The path (not bracketed; the path never changes)
//  getName()               the last component of the path
//  getPath()               the path as given
//  getParent()             the parent part; a null string when there is none
//  getAbsolutePath()       the absolute form (see KepPath::toAbsolute)
//  toPath()                the path as a KepPath
//  getParentFile()         a KepFile on getParent(); a null handle when none
// clang-format off
#define KEP_METHODS_File(X)                                                                      \
  X(File, unsigned long, open, (int mode), (mode), , 1)                                          \
  X(File, unsigned long, isOpen, (), (), const, 1)                                               \
  X(File, long, seek, (long offset, int whence), (offset, whence), , 1)                          \
  X(File, long, tell, (), (), const, 1)                                                          \
  X(File, unsigned long, setLength, (long length), (length), , 1)                                \
  X(File, long, length, (), (), const, 1)                                                        \
  X(File, unsigned long, exists, (), (), const, 1)                                               \
  X(File, unsigned long, isFile, (), (), const, 1)                                               \
  X(File, unsigned long, isDirectory, (), (), const, 1)                                          \
  X(File, unsigned long, canRead, (), (), const, 1)                                              \
  X(File, unsigned long, canWrite, (), (), const, 1)                                             \
  X(File, unsigned long, lastModified, (), (), const, 1)                                         \
  X(File, unsigned long, setLastModified, (unsigned long time), (time), , 1)                     \
  X(File, unsigned long, createNewFile, (), (), , 1)                                             \
  X(File, unsigned long, remove, (), (), , 1)                                                    \
  X(File, unsigned long, renameTo, (KepString const& path), (path), , 1)                         \
  X(File, unsigned long, copyTo, (KepString const& path), (path), , 1)                           \
  X(File, unsigned long, mkdir, (), (), , 1)                                                     \
  X(File, unsigned long, mkdirs, (), (), , 1)                                                    \
  X(File, unsigned long, removeAll, (), (), , 1)                                                 \
  X(File, int, list, (KepString const& pattern, KepStringBuffer& names), (pattern, names),       \
    const, 1)                                                                                    \
  X(File, KepFile, createTempFile, (KepString const& prefix, KepString const& suffix),           \
    (prefix, suffix), const, 1)                                                                  \
  X(File, unsigned long, lockRecord, (int seconds), (seconds), , 1)                              \
  X(File, unsigned long, unlockRecord, (), (), , 1)                                              \
  X(File, KepString, getName, (), (), const, 0)                                                  \
  X(File, KepString, getPath, (), (), const, 0)                                                  \
  X(File, KepString, getParent, (), (), const, 0)                                                \
  X(File, KepString, getAbsolutePath, (), (), const, 0)                                          \
  X(File, KepPath, toPath, (), (), const, 0)                                                     \
  X(File, KepFile, getParentFile, (), (), const, 0)
// clang-format on

// A handle on a file (class 0x40036): a stream over the file at a path, and the
// operations on that path. The path is fixed when the object is made.
//
// As a stream: the first read opens the file for reading (it must exist); the
// first write creates the file, or truncates it when it exists, and opens it for
// writing. Reads on a file opened for writing only answer -1, writes on a file
// opened for reading 0 (use open(kReadWrite) for both). close() closes the
// file; afterwards reads and writes are refused until open() is called. Reads
// and writes go straight to the file layer (no buffering); mark() and reset()
// work by position, available() answers the bytes between the position and the
// end. The file is closed when the last handle goes.
//
// Opens go through the file layer's open-path table: several objects may have
// the same file open (none asks for a lock or exclusive use).
//
// Thread safety: see KepIOStream; the path accessors may be called from any
// thread.
class KEP_API KepFile : public KepIOStream {
  KEP_HANDLE_CONSTRUCTORS(KepFile, KepIOStream)

 public:
  // Modes of open().
  static constexpr int kRead = 1;
  static constexpr int kWrite = 2;
  static constexpr int kReadWrite = 3;
  static constexpr int kAppend = 4;

  // A file object for `path` (its units narrowed to bytes); nothing is opened
  // or created yet.
  KepFile(KepString const& path);

  KEP_METHODS_File(KEP_DECLARE_METHOD)
};

KEP_METHODS_File(KEP_DECLARE_BRIDGE)

#endif  // KEP_IO_KEPFILE_H
