// KepLogger: the library's log output, steered by the bits of gKepLogOptions.
#ifndef KEP_BASE_KEPLOGGER_H
#define KEP_BASE_KEPLOGGER_H

#include <cstdarg>

#include "kep/base/KepDefs.h"

// Every line is written as "[<process id>] <LEVEL>: <text>" and ends with one
// line feed (line feeds that the text brings at its end are dropped). Where it
// goes depends on gKepLogOptions, read at each line:
//  - kNone (2) set: nowhere, whatever else is set.
//  - kConsole (4): standard error.
//  - kGUI (1): the line handler that the host installed (setLineHandler); with
//    no handler the line goes nowhere.
//  - kNoBlock (128): a console line never waits for another thread's console
//    write; it is queued (up to 1024 lines, further ones are counted as dropped
//    and the count is reported in a line of its own) and written by the thread
//    that holds the console.
//  - kEvent (16) and kDebugger (32) are accepted; lines published as events and
//    lines for an attached debugger have no receiver yet and go nowhere.
// Without an output bit nothing is written. A line longer than 4095 bytes is cut.
//
// Levels print as DEBUG, INFO, WARNING, ERROR and FATAL. Lines about registered
// errors are formatted by the caller and written with logText at kError or
// kFatal.
//
// Thread safety: every operation may be called from any thread; lines from
// several threads are written whole, one at a time.
class KEP_API KepLogger {
 public:
  enum Level { kDebug = 0, kInfo = 1, kWarning = 2, kError = 3, kFatal = 4 };

  // Output bits of gKepLogOptions.
  static constexpr unsigned long kGUI = 1;
  static constexpr unsigned long kNone = 2;
  static constexpr unsigned long kConsole = 4;
  static constexpr unsigned long kEvent = 16;
  static constexpr unsigned long kDebugger = 32;
  static constexpr unsigned long kNoBlock = 128;

  // Start-up and shut-down counters, called by every Kep::init and
  // Kep::destroy. The last destroy writes out queued lines.
  static void init();
  static void destroy();
  // The first Kep::init has finished / the last Kep::destroy has begun: queued
  // lines are written out.
  static void notifyKepInit();
  static void notifyKepDestroy();
  // Live initialisations.
  static int initCount();

  // Formats and writes one line.
  static void log(Level level, char const* format, ...) __attribute__((format(printf, 2, 3)));
  static void logV(Level level, char const* format, va_list args);
  // Writes `text` as one line, unformatted (a null text writes nothing).
  static void logText(Level level, char const* text);

  // Receives each line written while kGUI is set: the level and the line without
  // the process id prefix or the final line feed, with `user` as installed. It
  // may run on any thread and must not wait for a thread that is logging. A
  // null handler removes the current one; the call answers the previous one.
  using LineHandler = void (*)(void* user, Level level, char const* text);
  static LineHandler setLineHandler(LineHandler handler, void* user);
};

#endif  // KEP_BASE_KEPLOGGER_H
