// Helpers of the file-layer tests: whole-file reads and writes, file status and
// the count of open descriptors, by the standard library and plain system calls
// (independent of the layer under test).
#ifndef KEP_TESTS_IO_IOTESTUTIL_H
#define KEP_TESTS_IO_IOTESTUTIL_H

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace iotest {

// Writes `content` to `path` and answers the path.
inline std::string writeFile(std::string const& path, std::string const& content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
  return path;
}

inline std::string readFile(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline bool present(std::string const& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0;
}

inline unsigned modeOf(std::string const& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? unsigned(info.st_mode & 07777) : 0u;
}

inline long mtimeOf(std::string const& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? long(info.st_mtime) : -1;
}

// What a path function wrote to `out`, or "error" and its code when it refused.
inline std::string written(uint32_t rc, char const* out) {
  return rc == 0 ? std::string(out) : "error " + std::to_string(rc);
}

// Descriptors open in this process right now.
inline long openDescriptors() {
  std::filesystem::directory_iterator entries("/proc/self/fd");
  return std::distance(begin(entries), end(entries));
}

}  // namespace iotest

#endif  // KEP_TESTS_IO_IOTESTUTIL_H
