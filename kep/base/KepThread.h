// KepThread: the handle on a thread's object. Every thread of the process, also
// one the library did not start, has one in the process thread table
// (KepProcess::getCurrThread()).
#ifndef KEP_BASE_KEPTHREAD_H
#define KEP_BASE_KEPTHREAD_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

class KepDOMElement;

// The operations of KepThread, in the order of the body's virtual operations:
// the thread's steering words, then its error stack.
// clang-format off
#define KEP_METHODS_Thread(X)                                                            \
  X(Thread, void, destroyThread, (), (), , 0)                                            \
  X(Thread, int, getThreadID, (), (), const, 0)                                          \
  X(Thread, KepString, getThreadName, (), (), const, 0)                                  \
  X(Thread, int, getCommand, (), (), , 0)                                                \
  X(Thread, void, setCommand, (int command), (command), , 0)                             \
  X(Thread, int, getCreateFlags, (), (), const, 0)                                       \
  X(Thread, int, getStatus, (), (), const, 0)                                            \
  X(Thread, void, setStatus, (int status), (status), , 0)                                \
  X(Thread, unsigned long, errorOK, (), (), const, 0)                                    \
  X(Thread, void, setError, (int tag, char const* file, int line), (tag, file, line), , 0) \
  X(Thread, void, setError, (KepString const& name, char const* file, int line),          \
    (name, file, line), , 0)                                                             \
  X(Thread, int, getErrorID, (), (), const, 0)                                           \
  X(Thread, KepString, getErrorName, (), (), const, 0)                                   \
  X(Thread, KepDOMElement, getErrorObject, (), (), const, 0)                             \
  X(Thread, void, clearErrors, (), (), , 0)                                              \
  X(Thread, void, popError, (), (), , 0)                                                 \
  X(Thread, KepDOMElement, getErrors, (), (), const, 0)                                  \
  X(Thread, void, logErrors, (), (), , 0)                                                \
  X(Thread, KepDOMElement, getXMLData, (), (), , 0)
// clang-format on

// A thread object (class 0x1a2). A thread started by KepProcess::createThread
// carries its control block: its command word, create flags and status are read
// and written through it. A thread the library did not start gets an object
// without a control block, whose getCommand(), getCreateFlags() and getStatus()
// answer 0 and whose setters do nothing.
//
//  - destroyThread(): from another thread, asks the thread to stop (command 4),
//    waits (polling every 50 ms) until it has ended, then frees its control
//    block; from the thread itself, sends command 8 and returns at once. A thread
//    body is expected to read getCommand() and end when it sees 4 or 8.
//  - getThreadID(): the low 32 bits of the thread's pthread_self(), 0 before the
//    thread registered itself or after it left the table.
//  - getThreadName(): the name given at creation (at most 23 characters); the
//    empty string for a thread the library did not start.
//  - getCommand(): the command bits sent since the last call, which it clears.
//  - setCommand(bits): ORs the bits into the command word.
//  - getCreateFlags(), getStatus(), setStatus(): the control block's words
//    (setStatus ORs the bits in under create flag 4).
//
// The error stack. A failing library call answers a neutral result and records
// an error on the calling thread's object; the errors stay until popped or
// cleared, across any number of later calls. The stack is an element
// "ErrorStack" made on the first setError(); each error is a child element of
// it named by the error's tag, the newest first, carrying the error's
// parameters as its child values. An element whose tag is 0 (a mark, pushed by
// setError(0, ...)) is no error: it ends what clearErrors() removes, so a
// caller can push a mark, make calls, and clear only the errors above it.
//  - errorOK(): true (1) when there is no stack, the stack is empty, or the
//    newest element is a mark (or a node without a tag of its own).
//  - setError(tag, file, line), setError(name, file, line): pushes a new error
//    element named by the tag (by the name, which is added to the tag manager
//    when new; a null or empty name counts as tag 0). When `file` is not null
//    the element gets the values "SourceFile" (the text of `file`) and
//    "SourceLine" (`line`), which say where the error was recorded; with a null
//    `file` neither is added.
//  - getErrorID(): the newest element's tag; 0 when there is none or it is a
//    mark.
//  - getErrorName(): the name of that tag; a null string when getErrorID() is 0.
//  - getErrorObject(): the newest element (its parameters are its children);
//    null when the stack is empty. It is the stack's own child: changing it
//    changes the stack.
//  - clearErrors(): pops until getErrorID() is 0 (the stack is empty or its
//    newest element is a mark, which stays).
//  - popError(): removes the newest element, mark or error; nothing when empty.
//  - getErrors(): the stack element itself; null before the first setError().
//  - logErrors(): writes the debug line "Unexpected Error:" and then one log
//    line per element of the stack, newest first, through the error registry's
//    formatter _KepLogError; writes nothing when the stack is empty. The errors
//    stay on the stack. (The event "LogError" that is to let subscribers record
//    the errors first is not published yet: the library has no events so far.)
//  - getXMLData(): the thread's error data: an element "ErrorData", made on the
//    first call and kept as long as the thread object, in which a caller keeps
//    what goes with the thread's errors beyond their parameters (the document
//    being read, a request being served). The error operations never change
//    it; it is the caller's to fill and empty.
// Elements the stack operations make belong to the process's default document.
//
// Thread safety: every operation may be called from any thread. The error
// operations take no lock: they are meant for the thread the object describes
// (KepProcess::getCurrThread()); another thread that reads a thread's errors
// must make sure that thread is not changing them at the same time.
class KEP_API KepThread : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepThread, KepObject)

 public:
  KEP_METHODS_Thread(KEP_DECLARE_METHOD)
};

KEP_METHODS_Thread(KEP_DECLARE_BRIDGE)

#endif  // KEP_BASE_KEPTHREAD_H
