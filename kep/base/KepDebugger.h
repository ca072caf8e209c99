// KepDebugger: instance accounting of the object model. With bit 0 of gDiagKep
// set, the body and handle constructors and destructors report themselves here.
#ifndef KEP_BASE_KEPDEBUGGER_H
#define KEP_BASE_KEPDEBUGGER_H

#include <cstdint>

#include "kep/base/KepDefs.h"

// All operations are static and thread-safe.
class KEP_API KepDebugger {
 public:
  // Start-up and shut-down counters, called by Kep::init and Kep::destroy.
  static void init();
  static void destroy();

  // A body was constructed / destroyed.
  static void notifyObjectCreate(KepRObject* body);
  static void notifyObjectDestroy(KepRObject* body);
  // A handle was constructed / destroyed.
  static void notifyBridgeCreate(KepObject* handle);
  static void notifyBridgeDestroy(KepObject* handle);

  // With bit 0 of gKepDebuggerOptions set: a tag manager gave `name` the tag
  // `tag`, and the factory registered a class. Only counted so far.
  static void debugRegisterTagName(KepString const& name, int tag);
  static void debugRegisterClass(int classId);

  // Live bodies and handles counted since the counters were last reset.
  static int64_t liveObjects();
  static int64_t liveBridges();
  // Tag names and class registrations reported since the last reset.
  static int64_t registeredTagNames();
  static int64_t registeredClasses();
  // Clears every counter.
  static void resetCounts();
};

#endif  // KEP_BASE_KEPDEBUGGER_H
