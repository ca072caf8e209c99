#include "kep/io/KepRPath.h"

#include <cstring>
#include <utility>

#include "kep/base/KepFactory.h"
#include "kep/io/KepRIOStream.h"
#include "kep/io/_KepIO.h"

namespace {

KepString text(char const* bytes) { return KepRIOStream::widen(bytes, std::strlen(bytes)); }

}  // namespace

KepRPath::KepRPath() = default;

KepRPath::KepRPath(std::string bytes) : path(std::move(bytes)) {}

KepString KepRPath::toString() const { return KepRIOStream::widen(path.data(), path.size()); }

unsigned long KepRPath::equals(KepObject const& other) const {
  KepRObject const* body = other.getRealKepObj();
  auto const* that = dynamic_cast<KepRPath const*>(body);
  return that != nullptr && that->path == path ? 1 : 0;
}

KepString KepRPath::getDirectory() const {
  char dir[KEP_IO_PATH_MAX];
  if (_KepIOPathReduceExt(path.c_str(), dir, KEP_IO_PATH_MAX, nullptr, 0) != 0) return KepString();
  return text(dir);
}

KepString KepRPath::getName() const {
  char dir[KEP_IO_PATH_MAX];
  char name[KEP_IO_PATH_MAX];
  if (_KepIOPathReduceExt(path.c_str(), dir, KEP_IO_PATH_MAX, name, KEP_IO_PATH_MAX) != 0) {
    return KepString();
  }
  return text(name);
}

KepString KepRPath::getExtension() const {
  KepString name = getName();
  if (name.isNull()) return name;
  std::string bytes = KepRIOStream::narrow(name);
  char const* dot = __KepIOFindExtensionStart(KEP_IO_LANGUAGE, bytes.c_str());
  return text(*dot == '.' ? dot + 1 : dot);
}

KepPath KepRPath::append(KepString const& component) const {
  char out[KEP_IO_PATH_MAX];
  std::string part = KepRIOStream::narrow(component);
  if (_KepIOPathModify(path.c_str(), part.c_str(), nullptr, out) != 0) return KepPath();
  return KepPath(new KepRPath(out));
}

KepPath KepRPath::toAbsolute() const {
  char out[KEP_IO_PATH_MAX];
  if (_KepIOPathToStorageString(path.c_str(), out) != 0) return KepPath();
  return KepPath(new KepRPath(out));
}

unsigned long KepRPath::isAbsolute() const { return !path.empty() && path[0] == '/' ? 1 : 0; }

KEP_REGISTER_LIBRARY_CLASS(Path);
