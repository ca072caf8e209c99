// Directories of the file layer: recursive creation and removal, and directory
// enumeration with wildcard patterns ("*" any run of characters, "?" one
// character; see __KepIODBCSStrMatch). Portable code over the primitives of
// _KepIOUnix.h; codes as in _KepIO.h.
//
// Enumeration: the matching names of a directory are read when the enumeration
// starts ("." and ".." are left out) and given back in byte order of their names,
// one per call; the entry's size, time and attribute are read when it is given
// back, so an entry removed meanwhile answers zeros. A handle is owned by its
// caller until the close function frees it; handles are not shared between
// threads (separate enumerations may run on any threads).
#ifndef KEP_IO_KEPIODIRECTORY_H
#define KEP_IO_KEPIODIRECTORY_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// What an enumeration tells about an entry.
struct _KEP_IO_FIND_INFO {
  char name[256];           // the entry's name, without its directory
  unsigned long attribute;  // as _KepIOGetAttribute: 0x20 directory, 1 read-write, 2 read-only
  unsigned long size;       // bytes
  unsigned long modified;   // modification time, GMT seconds
};

// Makes the directory `path` and every missing directory above it. A path that
// is present already succeeds at once; a missing path without a directory part
// (a single relative name) gives KEP_IO_NOT_FOUND. The parents are split off with
// _KepIOPathReduceExt, so trailing separators are ignored.
KEP_API uint32_t _KepIODirCreate(char const* path);
// Makes the directory part of the file path `path` (nothing for a bare name).
KEP_API uint32_t _KepIODirCreateForFile(char const* path);

// Flag of _KepIODirRemoveAll: remove what the directory holds and keep it.
constexpr unsigned long KEP_IO_KEEP_DIRECTORY = 1;
// Removes the directory `path` with everything below it. Symbolic links are
// removed themselves, never followed. Goes on past failures and answers the
// first one.
KEP_API uint32_t _KepIODirRemoveAll(char const* path, unsigned long flags);

// Starts an enumeration of the entries matching the last component of
// `pathPattern` (for example "/var/log/*.log") in the directory before it (the
// current directory when there is none). On success `*handle` is the enumeration
// and `*info` (when not null) the first entry; KEP_IO_NOT_FOUND when nothing
// matches (`*handle` is then null), the mapped error when the directory cannot
// be read.
KEP_API uint32_t _KepIOFileFindFirst(char const* pathPattern, void** handle,
                                     _KEP_IO_FIND_INFO* info);
// As _KepIOFileFindFirst with the directory and the pattern given apart.
KEP_API uint32_t QbioFileFindFirstPattern(char const* directory, char const* pattern, void** handle,
                                          _KEP_IO_FIND_INFO* info);
// The next entry into `*info`; KEP_IO_NOT_FOUND after the last one.
KEP_API uint32_t _KepIOFileFindNext(void* handle, _KEP_IO_FIND_INFO* info);
// The entry given back last, read again.
KEP_API uint32_t _KepIOFileFindInfo(void* handle, _KEP_IO_FIND_INFO* info);
// Frees the enumeration (null is ignored).
KEP_API uint32_t _KepIOFileFindClose(void* handle);

#endif  // KEP_IO_KEPIODIRECTORY_H
