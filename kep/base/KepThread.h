// KepThread: the handle on a thread's object. Every thread of the process, also
// one the library did not start, has one in the process thread table
// (KepProcess::getCurrThread()).
#ifndef KEP_BASE_KEPTHREAD_H
#define KEP_BASE_KEPTHREAD_H

#include "kep/base/KepObject.h"
#include "kep/base/KepString.h"

// The operations of KepThread, in the order of the body's virtual operations.
// The thread's error operations follow these in the body.
// clang-format off
#define KEP_METHODS_Thread(X)                                               \
  X(Thread, void, destroyThread, (), (), , 0)                               \
  X(Thread, int, getThreadID, (), (), const, 0)                             \
  X(Thread, KepString, getThreadName, (), (), const, 0)                     \
  X(Thread, int, getCommand, (), (), , 0)                                   \
  X(Thread, void, setCommand, (int command), (command), , 0)                \
  X(Thread, int, getCreateFlags, (), (), const, 0)                          \
  X(Thread, int, getStatus, (), (), const, 0)                               \
  X(Thread, void, setStatus, (int status), (status), , 0)
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
// Thread safety: every operation may be called from any thread.
class KEP_API KepThread : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepThread, KepObject)

 public:
  KEP_METHODS_Thread(KEP_DECLARE_METHOD)
};

KEP_METHODS_Thread(KEP_DECLARE_BRIDGE)

#endif  // KEP_BASE_KEPTHREAD_H
