// KepProcess: the process object's static facade, through which the library's
// parts reach the process-wide services (tags, logging, the current thread).
#ifndef KEP_BASE_KEPPROCESS_H
#define KEP_BASE_KEPPROCESS_H

#include "kep/base/KepString.h"
#include "kep/base/KepTagRange.h"
#include "kep/base/_KepThreadTable.h"

class KepConfiguration;
class KepDOMElement;
class KepThread;
class KepRunnable;
class KepTagManager;

// All operations are static and thread-safe, except init() and destroy(), which
// Kep::init and Kep::destroy call on one thread.
//
// The process object is counted like the other subsystems: the first init()
// makes the process thread table and the process tag manager, the last
// destroy() takes them down and empties the error registry. Objects of
// subsystems the library does not have yet (services, workers, readers, time
// zones, listeners) have no getters here so far.
class KEP_API KepProcess {
 public:
  // --- Life cycle ------------------------------------------------------------------
  // Counts an initialisation; the first one makes the thread table and the tag
  // manager and clears the shut-down flag.
  static void init();
  // Counts one down; the last one releases the thread objects of the table and
  // the tag manager. Extra calls are ignored.
  static void destroy();
  // The last Kep::destroy has begun: sets the shut-down flag.
  static void notifyKepDestroy();
  // True from the last Kep::destroy until the next first Kep::init.
  static bool isShuttingDown();
  // Live initialisations of the process object.
  static int initCount();
  // A handle on the process's tag manager; a null handle outside Kep::init ...
  // Kep::destroy.
  static KepTagManager getTagManager();

  // The tag of `name` in the process's tag manager, 0 when the name is unknown
  // (or no tag manager exists yet). Never creates a tag.
  static int nameToTag(KepString const& name);
  // The name of `tag`, or a null string when the tag is unknown.
  static KepString tagToName(int tag);
  // Loads a table of built-in names into the process's tag manager
  // (KepTagManager::loadTagTable); 0 when there is no tag manager or the table
  // cannot be loaded.
  static int loadTagTable(int start, int end, int count, KepTagTable const* table);

  // Loads error definitions into the process's error registry: the Error
  // children of `errors` (the document element of a registry file; the layout
  // is described with _KepErrorRegistry). Answers how many were taken. The
  // last destroy() forgets them.
  static int registerErrors(KepDOMElement const& errors);

  // The process configuration (the first Kep::init loads it). While the
  // library is up and not shutting down, a new empty configuration is made
  // when none is held; otherwise the answer may be a null handle.
  static KepConfiguration getConfiguration();
  // Makes `configuration` the process configuration (a null handle drops it;
  // the last Kep::destroy does that).
  static void setConfiguration(KepConfiguration const& configuration);

  // Writes a printf-style debug line through the logger.
  static void logDebugString(char const* format, ...) __attribute__((format(printf, 1, 2)));

  // --- Threads -------------------------------------------------------------------
  // Starts a detached thread that calls `procedure(argument)` (its result is not
  // used) and answers its thread object. The thread releases its control block
  // and leaves the thread table when the procedure returns. A null thread when
  // the thread object or the thread cannot be made.
  static KepThread createThread(int (*procedure)(void*), void* argument);
  // Starts a detached thread with the create flags `flags` (4, 8, 16 of the
  // thread layer) and the first 23 characters of `name` (narrowed to bytes),
  // which calls `runnable.run()` and then leaves the thread table. The thread
  // holds a handle on the runnable while it runs. `userWord` is stored in the
  // control block and not used by the library. A null thread on failure.
  static KepThread createThread(int flags, KepString const& name, KepRunnable& runnable,
                                int userWord);
  // Unless `thread` is null: thread.destroyThread() (which waits for another
  // thread to end), removes the thread from the table and sets `thread` null.
  static void destroyThread(KepThread& thread);
  // The calling thread's object: a pointer to the handle in its slot of the
  // thread table. A thread the library did not start is given an object without
  // a control block on first use. Null before Kep::init, after the last
  // Kep::destroy, while the thread is ending or when the table is full. Copy the
  // handle before handing it to another thread.
  static inline KepThread* getCurrThread();
  // Registers / removes `thread` in the thread table by its getThreadID().
  static void _addThreadToArray(KepThread& thread);
  static void _removeThreadFromArray(KepThread& thread);
};

// The caller's slot is usually found in its thread-local cache: one read and one
// compare, no call.
inline KepThread* KepProcess::getCurrThread() {
  _KepThreadNode* node = _KepCachedThreadNode();
  return node != nullptr ? &node->thread : _KepProcessGetCurrThread();
}

// The tag of `name`, adding the name to the process's tag manager when it is new;
// the whole lookup runs under the tag lock (lock 5 of the process store), so
// threads adding the same new name at once all get the one tag it receives.
// 0 for a null or empty name, or while no tag manager exists (before Kep::init
// and after the last Kep::destroy). 8-bit text is widened byte by byte; a known
// name is found without building a string.
KEP_API int KepNameToTag(KepString const& name);
KEP_API int KepNameToTag(char const* name);

#endif  // KEP_BASE_KEPPROCESS_H
