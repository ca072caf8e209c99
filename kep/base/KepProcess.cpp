#include "kep/base/KepProcess.h"

#include <cstdarg>

#include "kep/base/KepLogger.h"

int KepProcess::nameToTag(KepString const&) { return 0; }

KepString KepProcess::tagToName(int) { return KepString(); }

void KepProcess::logDebugString(char const* format, ...) {
  va_list args;
  va_start(args, format);
  KepLogger::logV(KepLogger::kDebug, format, args);
  va_end(args);
}

int KepNameToTag(KepString const&) { return 0; }

int KepNameToTag(char const*) { return 0; }
