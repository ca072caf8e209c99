// KepProcess: the process object's static facade, through which the library's
// parts reach the process-wide services (tags, logging, the current thread).
#ifndef KEP_BASE_KEPPROCESS_H
#define KEP_BASE_KEPPROCESS_H

#include "kep/base/KepString.h"

// All operations are static and thread-safe.
class KEP_API KepProcess {
 public:
  // The tag of `name` in the process's tag manager, 0 when the name is unknown
  // (or no tag manager exists yet). Never creates a tag.
  static int nameToTag(KepString const& name);
  // The name of `tag`, or a null string when the tag is unknown.
  static KepString tagToName(int tag);

  // Writes a printf-style debug line through the logger.
  static void logDebugString(char const* format, ...) __attribute__((format(printf, 1, 2)));
};

// The tag of `name`, adding the name to the process's tag manager when it is new;
// taken under the tag lock (lock 5 of the process store). 0 for a null name, or
// while no tag manager exists.
KEP_API int KepNameToTag(KepString const& name);
KEP_API int KepNameToTag(char const* name);

#endif  // KEP_BASE_KEPPROCESS_H
