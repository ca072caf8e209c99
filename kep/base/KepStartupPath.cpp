#include "kep/base/KepStartupPath.h"

#include <cstdlib>
#include <cstring>

bool _KepGetStartupConfigPath(char const* /*configName*/, char* buffer, int size) {
  if (buffer == nullptr || size <= 0) return false;
  char const* path = std::getenv(KEP_STARTUP_OPTIONS_VARIABLE);
  if (path == nullptr || *path == '\0') path = KEP_STARTUP_OPTIONS_FILE;
  size_t length = std::strlen(path);
  if (length >= static_cast<size_t>(size)) {
    buffer[0] = '\0';
    return false;
  }
  std::memcpy(buffer, path, length + 1);
  return true;
}
