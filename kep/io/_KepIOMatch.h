// Wildcard matching of file names and name-only directory enumeration.
#ifndef KEP_IO_KEPIOMATCH_H
#define KEP_IO_KEPIOMATCH_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// 1 when `name` matches `pattern` as a whole, else 0. In the pattern "*" stands
// for any run of characters (also none) and "?" for exactly one character;
// every other character matches itself, byte for byte (case matters). A
// double-byte character of `language` counts as one character. Null arguments
// give 0. Runs in time proportional to the product of the lengths at worst.
KEP_API unsigned long __KepIODBCSStrMatch(unsigned short language, char const* pattern,
                                          char const* name);

// Starts a name-only enumeration of the entries of `directory` that match
// `pattern`, in byte order of their names ("." and ".." left out), and copies
// the first name to `name` (KEP_IO_PATH_MAX bytes). KEP_IO_NOT_FOUND when none
// matches (`*handle` is then null).
KEP_API uint32_t _KepIOFindFirstMatch(char const* directory, char const* pattern, void** handle,
                                      char* name);
// The next name; KEP_IO_NOT_FOUND after the last.
KEP_API uint32_t _KepIOFindNextMatch(void* handle, char* name);
// Frees the enumeration (null is ignored).
KEP_API uint32_t _KepIOFindMatchClose(void* handle);

#endif  // KEP_IO_KEPIOMATCH_H
