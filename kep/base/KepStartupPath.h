// Where the start-up options file is.
#ifndef KEP_BASE_KEPSTARTUPPATH_H
#define KEP_BASE_KEPSTARTUPPATH_H

#include "kep/base/KepDefs.h"

// The name of the environment variable that names the start-up options file.
constexpr char const KEP_STARTUP_OPTIONS_VARIABLE[] = "KEP_STARTUP_OPTIONS";
// The file read when the variable is not set: in the current directory.
constexpr char const KEP_STARTUP_OPTIONS_FILE[] = "kepstartup.xml";

// Writes the path of the start-up options file into `buffer` (`size` bytes):
// the value of KEP_STARTUP_OPTIONS when it is set and not empty, else
// "kepstartup.xml". `configName` (the configuration Kep::init was given) does
// not change the path. Answers false, with `buffer` empty when it has room for
// that, when the path does not fit or `buffer` is null.
KEP_API bool _KepGetStartupConfigPath(char const* configName, char* buffer, int size);

#endif  // KEP_BASE_KEPSTARTUPPATH_H
