#include "kep/base/KepProcess.h"

#include <cstdarg>

#include "kep/base/KepLogger.h"
#include "kep/base/KepRTagManager.h"
#include "kep/base/_KepErrorRegistry.h"
#include "kep/base/_KepTagLock.h"

int KepProcess::nameToTag(KepString const& name) {
  KepRTagManager* m = KepRTagManager::process();
  return m != nullptr ? m->KepRTagManager::nameToTag(name) : 0;
}

KepString KepProcess::tagToName(int tag) {
  KepRTagManager* m = KepRTagManager::process();
  return m != nullptr ? m->KepRTagManager::tagToName(tag) : KepString();
}

int KepProcess::loadTagTable(int start, int end, int count, KepTagTable const* table) {
  KepRTagManager* m = KepRTagManager::process();
  return m != nullptr ? m->loadTagTable(start, end, count, table) : 0;
}

int KepProcess::registerErrors(KepDOMElement const& errors) {
  return _KepErrorRegistry::registerErrors(errors);
}

void KepProcess::logDebugString(char const* format, ...) {
  va_list args;
  va_start(args, format);
  KepLogger::logV(KepLogger::kDebug, format, args);
  va_end(args);
}

int KepNameToTag(KepString const& name) {
  _KepTagLock lock;
  KepRTagManager* m = KepRTagManager::process();
  return m != nullptr ? m->add(name) : 0;
}

int KepNameToTag(char const* name) {
  _KepTagLock lock;
  KepRTagManager* m = KepRTagManager::process();
  return m != nullptr ? m->add(reinterpret_cast<signed char const*>(name)) : 0;
}
