// KepSetThreadError: how the library's own operations record a failure on the
// calling thread's error stack (see KepThread).
#ifndef KEP_BASE_KEPTHREADERROR_H
#define KEP_BASE_KEPTHREADERROR_H

#include "kep/base/KepString.h"
#include "kep/xml/KepDOMElement.h"

// Pushes an error named `name` on the calling thread's error stack, as
// KepThread::setError(name, file, line) does, and answers the new error
// element; the caller adds the error's parameters to it as child values, for
// example error.set(KepString("Index"), index). `file` names the source that
// records the error (for example "contain/KepRArray") and `line` the line in
// it; a null `file` records neither.
//
// Answers a null element, recording nothing, when the name is null or empty,
// when there is no tag manager to name it, or when the calling thread has no
// thread object (before Kep::init, after the last Kep::destroy, while the
// thread is ending, or with a full thread table). Calling set() on the null
// element then does nothing, so callers need not test the answer.
//
// Thread safety: may be called from any thread; it changes only the calling
// thread's own stack.
KEP_API KepDOMElement KepSetThreadError(KepString const& name, char const* file, int line);

#endif  // KEP_BASE_KEPTHREADERROR_H
