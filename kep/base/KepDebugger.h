// KepDebugger: instance accounting of the object model. With bit 0 of gDiagKep
// set, the body and handle constructors and destructors report themselves here.
#ifndef KEP_BASE_KEPDEBUGGER_H
#define KEP_BASE_KEPDEBUGGER_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// Two kinds of accounting run side by side:
//  - counters: live bodies and handles (creations less destructions reported
//    since the last resetCounts(), so they may go below 0 when objects made
//    before the diagnostics were switched on are destroyed), and the tag names
//    and class registrations reported;
//  - the live set: every body and handle whose creation was reported and whose
//    destruction was not. A body's class is asked (getClassID()) only when a
//    report is made, since it is not known yet while the root constructor runs;
//    a handle is counted under the class of the body it leads to.
// The last Kep::destroy, with bit 0 of gDiagKep set, reports the live set, and
// then empties it, since objects destroyed after the diagnostics word is
// cleared no longer report their end. For the same reason, a caller that clears
// bit 0 by hand while reported objects live should call resetCounts() before
// the next report.
//
// All operations are static and thread-safe. A report asks each live body for
// its class while other threads may be destroying objects; make reports when
// no other thread is changing objects.
class KEP_API KepDebugger {
 public:
  // Start-up and shut-down counters, called by every Kep::init and Kep::destroy.
  // The last destroy calls reportLiveInstances() when bit 0 of gDiagKep is set
  // and then empties the live set (the counters stay).
  static void init();
  static void destroy();
  // Live initialisations.
  static int initCount();

  // A body was constructed / destroyed.
  static void notifyObjectCreate(KepRObject* body);
  static void notifyObjectDestroy(KepRObject* body);
  // A handle was constructed / destroyed.
  static void notifyBridgeCreate(KepObject* handle);
  static void notifyBridgeDestroy(KepObject* handle);

  // With bit 0 of gKepDebuggerOptions set: a tag manager gave `name` the tag
  // `tag`, and the factory registered a class. Only counted.
  static void debugRegisterTagName(KepString const& name, int tag);
  static void debugRegisterClass(int classId);

  // Live bodies and handles counted since the counters were last reset.
  static int64_t liveObjects();
  static int64_t liveBridges();
  // Tag names and class registrations reported since the last reset.
  static int64_t registeredTagNames();
  static int64_t registeredClasses();
  // Clears every counter and empties the live set.
  static void resetCounts();

  // Bodies in the live set whose class is `classId` now.
  static int64_t liveObjectsOf(int classId);
  // Writes the live set on the log: for each class with live bodies or handles
  // on its bodies, "KepDebugger: <n> live instances of <class name> (class
  // 0x<id>), <m> handles" (the name from the tag manager, or from the built-in
  // vocabulary once the tag manager is gone, or "?"), then "KepDebugger: <n> live
  // objects, <m> live handles, <k> null handles". Null handles are counted but
  // hold nothing. Answers the number of live bodies.
  static int64_t reportLiveInstances();
};

#endif  // KEP_BASE_KEPDEBUGGER_H
