// The list behind the layer's enumeration handles: the matching names of one
// directory, read at the start and given back in byte order. Private to the
// file layer.
#ifndef KEP_IO_KEPIOFINDLIST_H
#define KEP_IO_KEPIOFINDLIST_H

#include <cstdint>
#include <string>
#include <vector>

struct _KepIOFindList {
  uint32_t signature;              // kKepIOFindListSignature while the list lives
  std::string directory;           // "" for the current directory
  std::vector<std::string> names;  // matching names, sorted
  size_t next = 0;                 // index of the name to give back next
};

constexpr uint32_t kKepIOFindListSignature = 0x646e6966;  // "find"

// Reads the names of `directory` (null or "": the current directory) that match
// `pattern`, "." and ".." left out. KEP_IO_NOT_FOUND when none matches (no list
// is made), the mapped error when the directory cannot be read.
uint32_t __KepIOFindListMake(char const* directory, char const* pattern, _KepIOFindList** list);
// The list behind an enumeration handle, or null when it is not one.
_KepIOFindList* __KepIOFindListOf(void* handle);
// Frees the list (null is ignored).
void __KepIOFindListFree(_KepIOFindList* list);

#endif  // KEP_IO_KEPIOFINDLIST_H
