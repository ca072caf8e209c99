#include "kep/io/_KepIOMatch.h"

#include <cstring>

#include "kep/io/_KepIO.h"
#include "kep/io/_KepIOFindList.h"

namespace {

// The byte length of the character at `p` (0 at the terminator).
inline size_t charLength(unsigned short language, char const* p) {
  return static_cast<size_t>(__KepIOGetNextChar(language, p) - p);
}

// Copies the list's next name to `name` (KEP_IO_PATH_MAX bytes).
uint32_t giveNext(_KepIOFindList* list, char* name) {
  if (list->next >= list->names.size()) return KEP_IO_NOT_FOUND;
  uint32_t rc = _KepIOPathCopy(list->names[list->next].c_str(), name);
  ++list->next;
  return rc;
}

}  // namespace

unsigned long __KepIODBCSStrMatch(unsigned short language, char const* pattern, char const* name) {
  if (pattern == nullptr || name == nullptr) return 0;
  // Greedy scan that remembers the last "*": on a mismatch the star takes one
  // more character of the name and the scan resumes behind the star.
  char const* p = pattern;
  char const* s = name;
  char const* starPattern = nullptr;
  char const* starName = nullptr;
  while (*s != 0) {
    size_t nameChar = charLength(language, s);
    if (*p == '*') {
      while (*p == '*') ++p;
      starPattern = p;
      starName = s;
      continue;
    }
    size_t patternChar = charLength(language, p);
    if (*p != 0 && (*p == '?' || (patternChar == nameChar && std::memcmp(p, s, nameChar) == 0))) {
      p += patternChar;
      s += nameChar;
      continue;
    }
    if (starPattern == nullptr) return 0;
    starName += charLength(language, starName);
    s = starName;
    p = starPattern;
  }
  while (*p == '*') ++p;
  return *p == 0 ? 1 : 0;
}

uint32_t _KepIOFindFirstMatch(char const* directory, char const* pattern, void** handle,
                              char* name) {
  if (handle == nullptr || name == nullptr) return KEP_IO_FAILED;
  *handle = nullptr;
  _KepIOFindList* list = nullptr;
  uint32_t rc = __KepIOFindListMake(directory, pattern, &list);
  if (rc != 0) return rc;
  *handle = list;
  return giveNext(list, name);
}

uint32_t _KepIOFindNextMatch(void* handle, char* name) {
  _KepIOFindList* list = __KepIOFindListOf(handle);
  if (list == nullptr || name == nullptr) return KEP_IO_BAD_HANDLE;
  return giveNext(list, name);
}

uint32_t _KepIOFindMatchClose(void* handle) { return _KepIOFileFindClose(handle); }
