// The thread operations of KepProcess: starting threads on procedures and
// runnables, destroying them, and the calling thread's object.
#include <cstring>
#include <string>

#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepRThread.h"
#include "kep/base/KepRunnable.h"
#include "kep/base/_KepRunnableWrapper.h"
#include "kep/base/_KepThreadTable.h"
#include "kep/multi/_KepThread.h"

namespace {

// What a procedure thread needs besides its thread object.
struct ProcedureRecord {
  int (*procedure)(void*);
  void* argument;
};

KepThread* asThreadCopy(unsigned long word) {
  return reinterpret_cast<KepThread*>(static_cast<uintptr_t>(word));
}

// Runs on the new thread: status 1, bind the thread object, run the procedure,
// leave the table (the block is released by the layer under flag 8), status 8.
void _KepThreadFunctionForProcedure(void* tcb, void*, void* argument2, unsigned long argument3) {
  auto* record = static_cast<ProcedureRecord*>(argument2);
  KepThread* copy = asThreadCopy(argument3);
  if (_KepThrdSetStatus(tcb, KEP_THRD_STATUS_RUNNING) == 0) {
    KepRThread* body = copy != nullptr ? KepRThread::fromHandle(*copy) : nullptr;
    if (body != nullptr) body->_init(tcb);
    record->procedure(record->argument);
    delete record;
    record = nullptr;
    if (body != nullptr && (copy->getCreateFlags() & KEP_THRD_FLAG_SELF_RELEASE) != 0) {
      body->_deInit();
    }
  }
  delete record;
  delete copy;
  _KepThrdSetStatus(tcb, KEP_THRD_STATUS_ENDED);
}

// Runs on the new thread: status 1, bind the thread object, run the runnable
// and release it, leave the table, status 8.
void _KepThreadFunctionForRunnableObject(void* tcb, void*, void* argument2,
                                         unsigned long argument3) {
  auto* wrapper = static_cast<_KepRunnableWrapper*>(argument2);
  KepThread* copy = asThreadCopy(argument3);
  if (_KepThrdSetStatus(tcb, KEP_THRD_STATUS_RUNNING) == 0) {
    KepRThread* body = copy != nullptr ? KepRThread::fromHandle(*copy) : nullptr;
    if (body != nullptr) body->_init(tcb);
    wrapper->run();
    delete wrapper;
    wrapper = nullptr;
    if (copy != nullptr) _KepProcessRemoveThreadFromArray(*copy);
  }
  delete wrapper;
  delete copy;
  _KepThrdSetStatus(tcb, KEP_THRD_STATUS_ENDED);
}

// A new thread object from the factory and a heap copy of its handle for the
// new thread; null when the class is not available.
KepThread newThreadObject(KepThread** copy) {
  KepThread thread(KepGetObject(KepClassID::Thread, 0));
  *copy = KepRThread::fromHandle(thread) != nullptr ? new KepThread(thread) : nullptr;
  return *copy != nullptr ? thread : KepThread();
}

// Starts the thread and records its block on the object, so that the creator can
// steer it before the thread has bound itself. Cleans up and answers a null
// thread on failure.
template <class Argument>
KepThread start(KepThread thread, KepThread* copy, unsigned long flags, unsigned char* name,
                _KepThrdProcedure procedure, unsigned long userWord, Argument* argument) {
  void* tcb = nullptr;
  uint32_t rc = _KepThrdCreate(&tcb, flags, name, procedure, nullptr, userWord, nullptr, argument,
                               static_cast<unsigned long>(reinterpret_cast<uintptr_t>(copy)));
  if (rc != 0) {
    delete argument;
    delete copy;
    return KepThread();
  }
  KepRThread::fromHandle(thread)->adoptControlBlock(tcb);
  return thread;
}

}  // namespace

KepThread KepProcess::createThread(int (*procedure)(void*), void* argument) {
  if (procedure == nullptr) return KepThread();
  KepThread* copy = nullptr;
  KepThread thread = newThreadObject(&copy);
  if (copy == nullptr) return KepThread();
  KepRThread::fromHandle(thread)->setThreadName(KepString(""));
  return start(thread, copy, KEP_THRD_FLAG_SELF_RELEASE, nullptr, _KepThreadFunctionForProcedure, 0,
               new ProcedureRecord{procedure, argument});
}

KepThread KepProcess::createThread(int flags, KepString const& name, KepRunnable& runnable,
                                   int userWord) {
  unsigned char buffer[KEP_THRD_NAME_MAX + 1] = {0};
  std::string text = name.toStdString();
  std::strncpy(reinterpret_cast<char*>(buffer), text.c_str(), KEP_THRD_NAME_MAX);
  KepThread* copy = nullptr;
  KepThread thread = newThreadObject(&copy);
  if (copy == nullptr) return KepThread();
  KepRThread::fromHandle(thread)->setThreadName(KepString(reinterpret_cast<char*>(buffer)));
  return start(thread, copy, static_cast<unsigned long>(static_cast<unsigned>(flags)), buffer,
               _KepThreadFunctionForRunnableObject, static_cast<unsigned long>(userWord),
               new _KepRunnableWrapper(runnable));
}

void KepProcess::destroyThread(KepThread& thread) {
  if (thread.isNull()) return;
  thread.destroyThread();
  _KepProcessRemoveThreadFromArray(thread);
  thread = KepThread();
}

void KepProcess::_addThreadToArray(KepThread& thread) { _KepProcessAddThreadToArray(thread); }

void KepProcess::_removeThreadFromArray(KepThread& thread) {
  _KepProcessRemoveThreadFromArray(thread);
}
