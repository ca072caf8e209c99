// KepLogger: the library's log output, steered by the bits of gKepLogOptions.
#ifndef KEP_BASE_KEPLOGGER_H
#define KEP_BASE_KEPLOGGER_H

#include <cstdarg>

#include "kep/base/KepDefs.h"

// With the console bit (4) of gKepLogOptions set, each line goes to standard
// error, prefixed by the process id and the level; without an output bit nothing
// is written. A line longer than 4095 bytes is cut.
//
// Thread safety: lines from several threads are written whole, one at a time.
class KEP_API KepLogger {
 public:
  enum Level { kDebug = 0, kInfo = 1, kWarning = 2, kError = 3 };

  static constexpr unsigned long kConsole = 4;

  // Start-up and shut-down counters, called by Kep::init and Kep::destroy.
  static void init();
  static void destroy();

  // Writes one line.
  static void log(Level level, char const* format, ...) __attribute__((format(printf, 2, 3)));
  static void logV(Level level, char const* format, va_list args);
};

#endif  // KEP_BASE_KEPLOGGER_H
