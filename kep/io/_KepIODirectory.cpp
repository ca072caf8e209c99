#include "kep/io/_KepIODirectory.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "kep/io/_KepIO.h"
#include "kep/io/_KepIOFindList.h"

namespace {

// `directory` + "/" + `name`, without doubling a trailing separator.
std::string childPath(std::string const& directory, char const* name) {
  if (directory.empty()) return name;
  std::string child = directory;
  if (child.back() != '/') child += '/';
  child += name;
  return child;
}

inline bool isDotEntry(char const* name) {
  return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

// Reads the entries of `directory` (name and whether it is a real directory),
// "." and ".." left out. The stream is closed before anything is done with
// them, so a walk keeps one descriptor open at a time.
uint32_t readEntries(char const* directory,
                     std::vector<std::pair<std::string, unsigned long>>* entries) {
  void* stream = nullptr;
  uint32_t rc = __KepIODirOpen(directory, &stream);
  if (rc != 0) return rc;
  char name[256];
  unsigned long isDirectory = 0;
  try {
    while ((rc = __KepIODirRead(stream, name, &isDirectory)) == 0) {
      if (!isDotEntry(name)) entries->emplace_back(name, isDirectory);
    }
  } catch (std::bad_alloc const&) {
    rc = KEP_IO_FAILED;
  }
  __KepIODirClose(stream);
  return rc == KEP_IO_NOT_FOUND ? 0 : rc;
}

uint32_t removeTree(std::string const& path, bool keepDirectory) {
  std::vector<std::pair<std::string, unsigned long>> entries;
  uint32_t first = readEntries(path.c_str(), &entries);
  for (auto const& entry : entries) {
    std::string child = childPath(path, entry.first.c_str());
    uint32_t rc = child.size() >= static_cast<size_t>(KEP_IO_PATH_MAX) ? KEP_IO_PATH_TOO_LONG
                  : entry.second != 0                                  ? removeTree(child, false)
                                      : __KepIOUnlink(child.c_str());
    if (first == 0) first = rc;
  }
  if (!keepDirectory) {
    uint32_t rc = _KepIODirRemove(path.c_str());
    if (first == 0) first = rc;
  }
  return first;
}

// Gives back the list's next name in `info`, or KEP_IO_NOT_FOUND at the end.
uint32_t fillInfo(_KepIOFindList const* list, size_t index, _KEP_IO_FIND_INFO* info) {
  if (index >= list->names.size()) return KEP_IO_NOT_FOUND;
  if (info == nullptr) return 0;
  std::string const& name = list->names[index];
  size_t length = std::min(name.size(), sizeof info->name - 1);
  std::memcpy(info->name, name.data(), length);
  info->name[length] = 0;
  info->attribute = 0;
  info->size = 0;
  info->modified = 0;
  std::string full = childPath(list->directory, name.c_str());
  if (full.size() < static_cast<size_t>(KEP_IO_PATH_MAX)) __KepIOStatInfo(full.c_str(), info);
  return 0;
}

}  // namespace

uint32_t _KepIODirCreate(char const* path) {
  if (path == nullptr) return KEP_IO_NOT_FOUND;
  size_t length = strnlen(path, KEP_IO_PATH_MAX);
  if (length >= static_cast<size_t>(KEP_IO_PATH_MAX)) return KEP_IO_PATH_TOO_LONG;
  if (length == 0) return KEP_IO_NOT_FOUND;
  if (_KepIOExist(path) == 0) return 0;
  // Walk up to the first directory that is present, then make the missing ones
  // downwards.
  std::vector<std::string> missing;
  try {
    missing.emplace_back(path);
    char parent[KEP_IO_PATH_MAX];
    for (;;) {
      uint32_t rc =
          _KepIOPathReduceExt(missing.back().c_str(), parent, KEP_IO_PATH_MAX, nullptr, 0);
      if (rc != 0) return rc;
      if (parent[0] == 0 || missing.back() == parent) return KEP_IO_NOT_FOUND;
      if (_KepIOExist(parent) == 0) break;
      missing.emplace_back(parent);
    }
  } catch (std::bad_alloc const&) {
    return KEP_IO_FAILED;
  }
  for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
    uint32_t rc = __KepIODirCreate(it->c_str());
    unsigned long attribute = 0;
    // Made meanwhile by someone else: as good as made here.
    if (rc == KEP_IO_SHARING && _KepIOGetAttribute(it->c_str(), &attribute) == 0 &&
        attribute == 0x20) {
      rc = 0;
    }
    if (rc != 0) return rc;
  }
  return 0;
}

uint32_t _KepIODirCreateForFile(char const* path) {
  char parent[KEP_IO_PATH_MAX];
  uint32_t rc = _KepIOPathReduceExt(path, parent, KEP_IO_PATH_MAX, nullptr, 0);
  if (rc != 0) return rc;
  return parent[0] == 0 ? 0 : _KepIODirCreate(parent);
}

uint32_t _KepIODirRemoveAll(char const* path, unsigned long flags) {
  unsigned long isDirectory = 0;
  uint32_t rc = __KepIOIsRealDirectory(path, &isDirectory);
  if (rc != 0) return rc;
  if (isDirectory == 0) return KEP_IO_FAILED;
  try {
    return removeTree(path, (flags & KEP_IO_KEEP_DIRECTORY) != 0);
  } catch (std::bad_alloc const&) {
    return KEP_IO_FAILED;
  }
}

// --- Enumeration -----------------------------------------------------------------

uint32_t __KepIOFindListMake(char const* directory, char const* pattern, _KepIOFindList** list) {
  if (list == nullptr) return KEP_IO_FAILED;
  *list = nullptr;
  if (pattern == nullptr) return KEP_IO_NOT_FOUND;
  bool current = directory == nullptr || directory[0] == 0;
  if (!current && strnlen(directory, KEP_IO_PATH_MAX) >= static_cast<size_t>(KEP_IO_PATH_MAX)) {
    return KEP_IO_PATH_TOO_LONG;
  }
  try {
    std::vector<std::pair<std::string, unsigned long>> entries;
    uint32_t rc = readEntries(current ? "." : directory, &entries);
    if (rc != 0) return rc;
    std::unique_ptr<_KepIOFindList> made(new _KepIOFindList());
    made->signature = kKepIOFindListSignature;
    if (!current) made->directory = directory;
    for (auto& entry : entries) {
      if (__KepIODBCSStrMatch(KEP_IO_LANGUAGE, pattern, entry.first.c_str()) != 0) {
        made->names.push_back(std::move(entry.first));
      }
    }
    if (made->names.empty()) return KEP_IO_NOT_FOUND;
    std::sort(made->names.begin(), made->names.end());
    *list = made.release();
    return 0;
  } catch (std::bad_alloc const&) {
    return KEP_IO_FAILED;
  }
}

_KepIOFindList* __KepIOFindListOf(void* handle) {
  auto* list = static_cast<_KepIOFindList*>(handle);
  return list != nullptr && list->signature == kKepIOFindListSignature ? list : nullptr;
}

void __KepIOFindListFree(_KepIOFindList* list) {
  if (list == nullptr) return;
  list->signature = 0;
  delete list;
}

uint32_t QbioFileFindFirstPattern(char const* directory, char const* pattern, void** handle,
                                  _KEP_IO_FIND_INFO* info) {
  if (handle == nullptr) return KEP_IO_FAILED;
  *handle = nullptr;
  _KepIOFindList* list = nullptr;
  uint32_t rc = __KepIOFindListMake(directory, pattern, &list);
  if (rc != 0) return rc;
  list->next = 1;
  fillInfo(list, 0, info);
  *handle = list;
  return 0;
}

uint32_t _KepIOFileFindFirst(char const* pathPattern, void** handle, _KEP_IO_FIND_INFO* info) {
  if (handle != nullptr) *handle = nullptr;
  if (pathPattern == nullptr) return KEP_IO_NOT_FOUND;
  char directory[KEP_IO_PATH_MAX];
  char pattern[KEP_IO_PATH_MAX];
  uint32_t rc = _KepIOPathReduce(pathPattern, directory, pattern);
  if (rc != 0) return rc;
  // "/name" has the root as its directory.
  if (directory[0] == 0 && pathPattern[0] == '/') std::strcpy(directory, "/");
  return QbioFileFindFirstPattern(directory, pattern, handle, info);
}

uint32_t _KepIOFileFindNext(void* handle, _KEP_IO_FIND_INFO* info) {
  _KepIOFindList* list = __KepIOFindListOf(handle);
  if (list == nullptr) return KEP_IO_BAD_HANDLE;
  uint32_t rc = fillInfo(list, list->next, info);
  if (rc == 0) ++list->next;
  return rc;
}

uint32_t _KepIOFileFindInfo(void* handle, _KEP_IO_FIND_INFO* info) {
  _KepIOFindList* list = __KepIOFindListOf(handle);
  if (list == nullptr) return KEP_IO_BAD_HANDLE;
  return list->next == 0 ? KEP_IO_NOT_FOUND : fillInfo(list, list->next - 1, info);
}

uint32_t _KepIOFileFindClose(void* handle) {
  if (handle == nullptr) return 0;
  _KepIOFindList* list = __KepIOFindListOf(handle);
  if (list == nullptr) return KEP_IO_BAD_HANDLE;
  __KepIOFindListFree(list);
  return 0;
}
