#include "kep/base/KepThreadError.h"

#include "kep/base/KepProcess.h"
#include "kep/base/KepThread.h"

KepDOMElement KepSetThreadError(KepString const& name, char const* file, int line) {
  // The tag is taken first: without a tag manager the name would otherwise
  // become tag 0, which the stack takes as a mark, not as an error.
  int tag = KepNameToTag(name);
  if (tag == 0) return KepDOMElement();
  KepThread* thread = KepProcess::getCurrThread();
  if (thread == nullptr || thread->isNull()) return KepDOMElement();
  thread->setError(tag, file, line);
  return thread->getErrorObject();
}
