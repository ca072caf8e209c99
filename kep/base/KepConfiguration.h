// KepConfiguration: a configuration file held as an element tree.
#ifndef KEP_BASE_KEPCONFIGURATION_H
#define KEP_BASE_KEPCONFIGURATION_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"
#include "kep/xml/KepDOMElement.h"

// The operations of KepConfiguration, in the order of the body's virtual
// operations. All are bracketed by the body's lock.
//
//  load(path)              reads the XML file at `path` (bytes of the string,
//                          each unit narrowed) and makes its element tree the
//                          configuration, replacing what was held; 1 on
//                          success. Whatever happens, the earlier tree is gone:
//                          a null or empty path, a file that cannot be read and
//                          a file that is not well-formed XML leave the
//                          configuration empty, answer 0 and write one log line
//                          saying why (a debug line for no path, a warning
//                          naming the file otherwise; for malformed XML the
//                          parser's own error line gives the line and column).
//                          Outside Kep::init ... Kep::destroy nothing can be
//                          built and the answer is 0.
//  isLoaded()              1 while a tree is held
//  getPath()               the path given to the load that succeeded; a null
//                          string while nothing is held
//  getRoot()               the document element of the file (null when empty);
//                          its owner document holds it and nothing else
//  get(path)               the element at `path` below the root: element names
//                          joined by "." ("Logger.Level"), each step the first
//                          child of that name, empty steps skipped; a null or
//                          empty path answers the root. Null when a step is
//                          missing or nothing is held.
//  getString(path)         the text of get(path) (its text children joined);
//                          a null string when there is no such element
//  getInteger(path, defaultValue)
//                          the text of get(path) as a decimal integer (leading
//                          and trailing white space allowed, optional sign);
//                          `defaultValue` when the element is missing or its
//                          text is not a number that fits in an int
//  clear()                 drops the tree and the path
//
// Element names are kept as the file writes them (a prefixed name "a:b" is
// looked up as "a:b"), with their attributes; text is kept without its leading
// and trailing white space, only for elements without element children.
// Comments and processing instructions are not kept.
// clang-format off
#define KEP_METHODS_Configuration(X)                                                      \
  X(Configuration, unsigned long, load, (KepString const& path), (path), , 1)             \
  X(Configuration, unsigned long, isLoaded, (), (), const, 1)                             \
  X(Configuration, KepString, getPath, (), (), const, 1)                                  \
  X(Configuration, KepDOMElement, getRoot, (), (), const, 1)                              \
  X(Configuration, KepDOMElement, get, (KepString const& path), (path), const, 1)         \
  X(Configuration, KepString, getString, (KepString const& path), (path), const, 1)       \
  X(Configuration, int, getInteger, (KepString const& path, int defaultValue),            \
    (path, defaultValue), const, 1)                                                       \
  X(Configuration, void, clear, (), (), , 1)
// clang-format on

// A handle on a configuration (body KepRConfiguration, class "Configuration"
// 0x400d6), made by the factory:
//   KepConfiguration c(KepGetObject(KepClassID::Configuration, 0));
// A new configuration is empty. The process keeps one (KepProcess::
// getConfiguration), which the first Kep::init loads from the file named by its
// third argument.
//
// Thread safety: every operation takes the configuration's lock, so a
// configuration may be shared between threads; the elements handed out are
// not guarded and must not be changed while other threads read them.
class KEP_API KepConfiguration : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepConfiguration, KepObject)

 public:
  KEP_METHODS_Configuration(KEP_DECLARE_METHOD)

      // Writes the path of the start-up options file into `buffer` (`size`
      // bytes): the file named by the environment variable KEP_STARTUP_OPTIONS,
      // else "kepstartup.xml" in the current directory. `configName` does not
      // change it. False, with `buffer` emptied where it has room, when the path
      // does not fit or `buffer` is null.
      static bool getStartupConfigPath(char const* configName, char* buffer, int size);
};

KEP_METHODS_Configuration(KEP_DECLARE_BRIDGE)

#endif  // KEP_BASE_KEPCONFIGURATION_H
