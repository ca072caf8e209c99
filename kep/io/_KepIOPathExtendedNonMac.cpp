#include "kep/io/_KepIOPathExtendedNonMac.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "kep/io/_KepIO.h"
#include "kep/multi/_KepThread.h"

namespace {

// Appends one component to the text of `buffer` (length `*length`, capacity
// `capacity` bytes with the zero), after a "/" unless the text is empty or ends
// in one. False when it does not fit; the buffer is then unchanged.
bool appendComponent(char* buffer, size_t* length, size_t capacity, char const* component) {
  size_t add = strnlen(component, capacity);
  bool separator = false;
  if (*length > 0) {
    char const* last = __KepIOGetPrevChar(KEP_IO_LANGUAGE, buffer, buffer + *length);
    separator = *last != '/';
  }
  size_t total = *length + (separator ? 1 : 0) + add;
  if (total + 1 > capacity) return false;
  if (separator) buffer[(*length)++] = '/';
  std::memcpy(buffer + *length, component, add);
  *length = total;
  buffer[total] = 0;
  return true;
}

// Builds the path from `base` and the components into a scratch buffer, then
// copies it to `out`, so that `out` may be one of the inputs.
uint32_t buildPath(char const* base, char const* const* parts, int count, char* out, int outSize) {
  if (out == nullptr || outSize <= 0) return KEP_IO_NOT_FOUND;
  size_t capacity = static_cast<size_t>(outSize);
  std::string scratch(capacity, '\0');
  size_t length = 0;
  if (base != nullptr) {
    length = strnlen(base, capacity);
    if (length + 1 > capacity) return KEP_IO_PATH_TOO_LONG;
    std::memcpy(&scratch[0], base, length);
  }
  for (int i = 0; i < count; ++i) {
    if (parts[i] == nullptr) continue;
    if (!appendComponent(&scratch[0], &length, capacity, parts[i])) return KEP_IO_PATH_TOO_LONG;
  }
  std::memcpy(out, scratch.data(), length);
  out[length] = 0;
  return 0;
}

// The name `name` cut to at most 31 bytes at a character boundary, with
// `suffix` put before its extension; the extension is kept when it is shorter
// than 16 bytes. `out` holds KEP_IO_NAME31_MAX + 1 bytes.
void cutName(char const* name, char const* suffix, char* out) {
  size_t nameLength = strnlen(name, KEP_IO_PATH_MAX);
  char const* extension = __KepIOFindExtensionStart(KEP_IO_LANGUAGE, name);
  size_t extensionLength = static_cast<size_t>(name + nameLength - extension);
  if (extensionLength >= 16) {
    extension = name + nameLength;
    extensionLength = 0;
  }
  size_t suffixLength = std::strlen(suffix);
  size_t budget = KEP_IO_NAME31_MAX - extensionLength - suffixLength;
  char const* baseEnd = name;
  for (char const* q = name; q < extension;) {
    char const* next = __KepIOGetNextChar(KEP_IO_LANGUAGE, q);
    if (static_cast<size_t>(next - name) > budget || next == q) break;
    baseEnd = q = next;
  }
  size_t baseLength = static_cast<size_t>(baseEnd - name);
  std::memcpy(out, name, baseLength);
  std::memcpy(out + baseLength, suffix, suffixLength);
  std::memcpy(out + baseLength + suffixLength, extension, extensionLength);
  out[baseLength + suffixLength + extensionLength] = 0;
}

}  // namespace

uint32_t _KepIOPathBuildExt(char const* a, char const* b, char const* c, char const* d, char* out,
                            int outSize) {
  char const* parts[] = {a, b, c, d};
  return buildPath(nullptr, parts, 4, out, outSize);
}

uint32_t _KepIOPathModifyExt(char const* path, char const* b, char const* c, char* out,
                             int outSize) {
  char const* parts[] = {b, c};
  return buildPath(path, parts, 2, out, outSize);
}

uint32_t _KepIOPathReduceExt(char const* path, char* dir, int dirSize, char* name, int nameSize) {
  if (path == nullptr || dir == nullptr || dirSize <= 0) return KEP_IO_NOT_FOUND;
  size_t length = strnlen(path, KEP_IO_PATH_MAX);
  if (length == 0) return KEP_IO_REDUCE_EMPTY;
  if (length >= static_cast<size_t>(KEP_IO_PATH_MAX)) return KEP_IO_PATH_TOO_LONG;
  size_t end = length;
  while (end > 1 && path[end - 1] == '/') --end;
  size_t nameStart = 0;
  for (char const* q = path; q < path + end; q = __KepIOGetNextChar(KEP_IO_LANGUAGE, q)) {
    if (*q == '/') nameStart = static_cast<size_t>(q - path) + 1;
  }
  size_t dirEnd = nameStart;
  while (dirEnd > 0 && path[dirEnd - 1] == '/') --dirEnd;
  // The root keeps its separator: "/a" and "/" both have the parent "/".
  bool root = nameStart > 0 && dirEnd == 0;
  size_t dirLength = root ? 1 : dirEnd;
  size_t nameLength = end - nameStart;
  if (end == 1 && path[0] == '/') nameLength = 0;
  if (dirLength + 1 > static_cast<size_t>(dirSize)) return KEP_IO_PATH_TOO_LONG;
  if (name != nullptr && nameLength + 1 > static_cast<size_t>(nameSize > 0 ? nameSize : 0)) {
    return KEP_IO_PATH_TOO_LONG;
  }
  std::string scratch(path, length);
  if (name != nullptr) {
    std::memcpy(name, scratch.data() + nameStart, nameLength);
    name[nameLength] = 0;
  }
  std::memcpy(dir, scratch.data(), dirLength);
  dir[dirLength] = 0;
  return 0;
}

uint32_t _KepIOPathToStorageString(char const* path, char* out) {
  if (path == nullptr || out == nullptr) return KEP_IO_NOT_FOUND;
  size_t length = strnlen(path, KEP_IO_PATH_MAX);
  if (length >= static_cast<size_t>(KEP_IO_PATH_MAX)) return KEP_IO_PATH_TOO_LONG;
  try {
    std::string full;
    if (path[0] != '/') {
      char current[KEP_IO_PATH_MAX];
      uint32_t rc = __KepIOCurrentDirectory(current);
      if (rc != 0) return rc;
      full = current;
      full += '/';
    }
    full.append(path, length);
    std::vector<std::string> parts;
    size_t at = 0;
    while (at <= full.size()) {
      size_t slash = full.find('/', at);
      if (slash == std::string::npos) slash = full.size();
      std::string part = full.substr(at, slash - at);
      if (part == "..") {
        if (!parts.empty()) parts.pop_back();
      } else if (!part.empty() && part != ".") {
        parts.push_back(std::move(part));
      }
      at = slash + 1;
    }
    std::string result;
    for (auto const& part : parts) result += "/" + part;
    if (result.empty()) result = "/";
    if (result.size() >= static_cast<size_t>(KEP_IO_PATH_MAX)) return KEP_IO_PATH_TOO_LONG;
    std::memcpy(out, result.c_str(), result.size() + 1);
    return 0;
  } catch (std::bad_alloc const&) {
    return KEP_IO_FAILED;
  }
}

uint32_t _KepIOCreateUniqueName(char const* directory, char const* prefix, char const* extension,
                                char* out) {
  constexpr int kTries = 1000;
  static std::atomic<uint32_t> counter{0};
  if (out == nullptr) return KEP_IO_NOT_FOUND;
  uint64_t seed =
      static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
      (static_cast<uint64_t>(static_cast<uint32_t>(_KepProcessId())) << 20);
  uint32_t rc = KEP_IO_SHARING;
  for (int attempt = 0; attempt < kTries; ++attempt) {
    // A multiplicative mix of the seed and a process-wide counter, so that
    // threads and processes starting together spread over different names.
    uint64_t mixed =
        (seed + counter.fetch_add(1, std::memory_order_relaxed)) * 0x9E3779B97F4A7C15ull;
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(mixed >> 32));
    std::string name = std::string(prefix != nullptr ? prefix : "") + digits +
                       (extension != nullptr ? extension : "");
    char candidate[KEP_IO_PATH_MAX];
    rc = _KepIOPathBuild(directory, name.c_str(), nullptr, nullptr, candidate);
    if (rc != 0) return rc;
    rc = __KepIOCreateExclusive(candidate);
    if (rc == 0) return _KepIOPathCopy(candidate, out);
    if (rc != KEP_IO_SHARING) return rc;
  }
  return rc;
}

uint32_t _KepIOPath31CreatePrim(char const* directory, char const* name, char* out) {
  if (name == nullptr || out == nullptr) return KEP_IO_NOT_FOUND;
  char cut[KEP_IO_NAME31_MAX + 1];
  cutName(name, "", cut);
  return _KepIOPathBuild(directory, cut, nullptr, nullptr, out);
}

uint32_t __KepIORename31Unique(char const* path, char* out) {
  if (path == nullptr || out == nullptr) return KEP_IO_NOT_FOUND;
  char dir[KEP_IO_PATH_MAX];
  char name[KEP_IO_PATH_MAX];
  uint32_t rc = _KepIOPathReduceExt(path, dir, KEP_IO_PATH_MAX, name, KEP_IO_PATH_MAX);
  if (rc != 0) return rc;
  rc = _KepIOExist(path);
  if (rc != 0) return rc;
  if (std::strlen(name) <= static_cast<size_t>(KEP_IO_NAME31_MAX)) return _KepIOPathCopy(path, out);
  char const* directory = dir[0] != 0 ? dir : nullptr;
  char candidate[KEP_IO_PATH_MAX];
  char cut[KEP_IO_NAME31_MAX + 1];
  for (int n = 0; n < 10000; ++n) {
    char suffix[8] = "";
    if (n > 0) std::snprintf(suffix, sizeof suffix, "~%d", n);
    cutName(name, suffix, cut);
    rc = _KepIOPathBuild(directory, cut, nullptr, nullptr, candidate);
    if (rc != 0) return rc;
    rc = __KepIORenameNoReplace(path, candidate);
    if (rc == 0) return _KepIOPathCopy(candidate, out);
    if (rc != KEP_IO_SHARING) return rc;
  }
  return rc;
}
