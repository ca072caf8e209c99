// Library start-up and shut-down: Kep::init, Kep::destroy and the loader hooks.
#ifndef KEP_BASE_KEPINIT_H
#define KEP_BASE_KEPINIT_H

#include <atomic>

#include "kep/base/KepDefs.h"

// 1 once the loader hook kep_init has made the process semaphore; 0 before that
// and after kep_fini.
KEP_API extern std::atomic<int> InitComplete;

// Start-up is counted: nested or repeated initialisations share one set of
// subsystems. Every init enters, in this order, the shared-data store, the
// logger, the debugger, the memory manager, the character classes, the process
// object and the factory; the first one also reads the start-up options file
// (before the logger, see _KepStartupOptions.h), registers the library's
// classes, loads the built-in tag tables, reads the error registry, loads the
// process configuration (KepProcess::getConfiguration) from the file named by
// `configName`, and then reports live tracked memory blocks when leak checking
// is on. A missing or malformed configuration file leaves the configuration
// empty and is reported on the log; start-up goes on. Every destroy leaves them
// in the reverse order; the last one drops the process configuration,
// unregisters every class start-up registered, reports the tracked memory
// blocks and (with bit 0 of gDiagKep) the object instances still live, and
// clears gDiagKep, gDiagKepAlloc, gDiagCPPAlloc and _gKepDiagQBAlloc.
//
// Thread safety: start-up and shut-down are expected to run on one thread; only
// the counter itself is guarded (lock 0 of the process store).
class KEP_API Kep {
 public:
  // Kep::init(a, 1, null).
  static void init(int a);
  // Kep::init(a, b, null).
  static void init(int a, int b);
  // Brings the library up. `a` is not used by the library; `b` is the default
  // log option word used when the start-up options name no logger words (0
  // means 130: no output); `configName` names the configuration to load (null
  // for none). Logs "Initializating KEP, invocation #<n>, for current process".
  static void init(int a, int b, char* configName);
  // Takes one initialisation down.
  static void destroy();
  // Writes major 1 and minor 0.
  static void version(int& major, int& minor);
  // The number of live initialisations.
  static int initCount();
};

extern "C" {
// Flat forms of Kep::init(a, b, configName), Kep::destroy() and Kep::version();
// KepVersion writes through each pointer only when it is not null.
KEP_API void KepInit(int a, int b, char* configName);
KEP_API void KepDestroy();
KEP_API void KepVersion(int* major, int* minor);
// Loader hooks, run when the library is loaded and unloaded.
KEP_API void kep_init();
KEP_API void kep_fini();
}

#endif  // KEP_BASE_KEPINIT_H
