// KepRPath: the body of KepPath.
#ifndef KEP_IO_KEPRPATH_H
#define KEP_IO_KEPRPATH_H

#include <string>

#include "kep/base/KepRObject.h"
#include "kep/io/KepPath.h"

// Holds the path as bytes. Operations are those of KepPath.
//
// Thread safety: immutable after construction.
class KEP_API KepRPath : public KepRObject {
  KEP_BODY_IDENTITY(Path, KepRObject)
  KEP_BODY_CREATE_ANOTHER(Path)

 public:
  // The empty path.
  KepRPath();
  // The path `path`, narrowed to bytes.
  explicit KepRPath(std::string path);

  KEP_METHODS_Path(KEP_DECLARE_METHOD)

      KepString toString() const override;
  unsigned long equals(KepObject const& other) const override;
  using KepRObject::equals;

  // The path's bytes.
  std::string const& bytes() const noexcept { return path; }

 private:
  std::string path;
};

#endif  // KEP_IO_KEPRPATH_H
