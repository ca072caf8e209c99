// The extended path forms of the file layer: builders over buffers of any size,
// the parent split used by the directory functions, the absolute storage form,
// unique names and names kept to 31 bytes for file systems and peers that
// allow no longer names. Codes as in _KepIO.h; outputs are never written past
// their sizes, and on failure they are left as they were.
#ifndef KEP_IO_KEPIOPATHEXTENDEDNONMAC_H
#define KEP_IO_KEPIOPATHEXTENDEDNONMAC_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// The longest name the "31" functions make.
constexpr int KEP_IO_NAME31_MAX = 31;

// _KepIOPathBuild into a buffer of `outSize` bytes (KEP_IO_PATH_TOO_LONG when the
// result and its zero do not fit). Inputs are read up to `outSize` bytes.
KEP_API uint32_t _KepIOPathBuildExt(char const* a, char const* b, char const* c, char const* d,
                                    char* out, int outSize);
// _KepIOPathModify into a buffer of `outSize` bytes.
KEP_API uint32_t _KepIOPathModifyExt(char const* path, char const* b, char const* c, char* out,
                                     int outSize);
// Splits `path` into its parent and its last component, ignoring trailing
// separators: "/a/b/" gives "/a" and "b", "/a" gives "/" and "a", "a" gives ""
// and "a", "/" gives "/" and "". `dir` holds `dirSize` bytes; `name` (may be
// null) `nameSize`. KEP_IO_NOT_FOUND for a null path or dir, KEP_IO_REDUCE_EMPTY
// for "", KEP_IO_PATH_TOO_LONG when a part does not fit.
KEP_API uint32_t _KepIOPathReduceExt(char const* path, char* dir, int dirSize, char* name,
                                     int nameSize);
// The absolute form of `path` into `out` (KEP_IO_PATH_MAX bytes): a relative
// path is taken from the current directory; empty components, "." and ".." are
// resolved by text (symbolic links are not followed; ".." above "/" stays at
// "/"); no trailing separator except for "/" itself.
KEP_API uint32_t _KepIOPathToStorageString(char const* path, char* out);

// Creates a new empty file named `prefix`, eight hexadecimal digits and
// `extension` (either may be null) in `directory` (null: the current directory)
// and answers its path in `out` (KEP_IO_PATH_MAX bytes). The creation is
// exclusive, so the name is the caller's even against other processes.
KEP_API uint32_t _KepIOCreateUniqueName(char const* directory, char const* prefix,
                                        char const* extension, char* out);
// Builds `directory` + `name` into `out` (KEP_IO_PATH_MAX bytes), the name cut to
// at most 31 bytes at a character boundary: its extension (from the last ".") is
// kept when it is shorter than 16 bytes, the part before it is shortened.
KEP_API uint32_t _KepIOPath31CreatePrim(char const* directory, char const* name, char* out);
// Renames the file `path` to a name of at most 31 bytes in its directory that
// nothing else has: the name cut as by _KepIOPath31CreatePrim when that is free,
// else the cut name with "~N" (N counting from 1) before its extension. Never
// replaces another file. `out` (KEP_IO_PATH_MAX bytes) receives the new path; a
// name that is short enough already is kept and `path` copied to `out`.
KEP_API uint32_t __KepIORename31Unique(char const* path, char* out);

#endif  // KEP_IO_KEPIOPATHEXTENDEDNONMAC_H
