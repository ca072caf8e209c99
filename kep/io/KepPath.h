// KepPath: a file path, taken apart and built up.
#ifndef KEP_IO_KEPPATH_H
#define KEP_IO_KEPPATH_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

// The operations of KepPath, in the order of the body's virtual operations. The
// first four are bracketed by the body's lock. Paths are "/"-separated; the text
// is handled as bytes (each unit narrowed), as the file layer takes it.
//
//  getDirectory()     the parent part, trailing separators ignored: "/a/b/"
//                     gives "/a", "/a" gives "/", "a" gives ""
//  getName()          the last component ("b" for "/a/b/"; "" for "/")
//  getExtension()     the last component's extension without its dot ("gz" for
//                     "x.tar.gz"; "" when there is none, also for ".profile")
//                     These three answer a null string for the empty path and
//                     for one of 1024 bytes or more.
//  append(component)  a new path: this one, a "/" unless it already ends in one
//                     (or is empty), and the component; a null handle when the
//                     result would be 1024 bytes or longer
//  toAbsolute()       a new path in absolute form: relative paths are taken from
//                     the current directory, ".", ".." and repeated separators
//                     are resolved by text; a null handle when that fails
//  isAbsolute()       1 when the path starts with "/"
// clang-format off
#define KEP_METHODS_Path(X)                                                                      \
  X(Path, KepString, getDirectory, (), (), const, 1)                                             \
  X(Path, KepString, getName, (), (), const, 1)                                                  \
  X(Path, KepString, getExtension, (), (), const, 1)                                             \
  X(Path, KepPath, append, (KepString const& component), (component), const, 1)                 \
  X(Path, KepPath, toAbsolute, (), (), const, 0)                                                 \
  X(Path, unsigned long, isAbsolute, (), (), const, 0)
// clang-format on

// A handle on an immutable path (class 0x40037). toString() answers the path;
// equals() is true for another path of the same text. A path made by the factory
// is empty.
//
// Thread safety: a path never changes; any thread may use it.
class KEP_API KepPath : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepPath, KepObject)

 public:
  // A new path holding `path` (the empty path for a null string).
  KepPath(KepString const& path);

  KEP_METHODS_Path(KEP_DECLARE_METHOD)
};

KEP_METHODS_Path(KEP_DECLARE_BRIDGE)

#endif  // KEP_IO_KEPPATH_H
