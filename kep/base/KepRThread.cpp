#include "kep/base/KepRThread.h"

#include "kep/base/KepClassID.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"
#include "kep/base/_KepErrorRegistry.h"
#include "kep/base/_KepThreadTable.h"
#include "kep/multi/_KepThread.h"
#include "kep/xml/KepDOMDocument.h"
#include "kep/xml/KepRDOMNode.h"

namespace {

// Reads one word of the control block through the layer; 0 without a block or
// when the call fails.
int readWord(void* tcb, uint32_t (*read)(void*, unsigned long*)) {
  unsigned long value = 0;
  if (tcb == nullptr || read(tcb, &value) != 0) return 0;
  return static_cast<int>(value);
}

constexpr unsigned long kPollMs = 50;

// The tag an element of the error stack was named with: 0 for a mark, and for
// any node without a tag of its own.
int errorTag(KepDOMNode const& node) {
  KepRDOMNode* body = KepRDOMNode::of(node);
  return body != nullptr ? body->ownNodeID() : 0;
}

}  // namespace

KepRThread::KepRThread() : threadID(0), tcb(nullptr) {}

KepRThread::~KepRThread() {
  void* block = tcb.exchange(nullptr, std::memory_order_acq_rel);
  if (block != nullptr) _KepThrdDestroy(&block);
}

KepRThread* KepRThread::fromHandle(KepObject const& handle) {
  return dynamic_cast<KepRThread*>(handle.getRealKepObj());
}

void KepRThread::setThreadName(KepString const& name) {
  std::lock_guard<std::mutex> guard(nameMutex);
  threadName = name;
}

void KepRThread::adoptControlBlock(void* block) {
  void* none = nullptr;
  tcb.compare_exchange_strong(none, block, std::memory_order_acq_rel);
}

void KepRThread::_init(void* block) {
  threadID.store(static_cast<uint32_t>(_KepThrdId()), std::memory_order_release);
  tcb.store(block, std::memory_order_release);
  {
    std::lock_guard<std::mutex> guard(nameMutex);
    if (threadName.isNull()) {
      unsigned char name[KEP_THRD_NAME_MAX + 1] = {0};
      if (block != nullptr) _KepThrdGetName(block, name);
      threadName = KepString(reinterpret_cast<char const*>(name));
    }
  }
  KepThread self(this);
  _KepProcessAddThreadToArray(self);
}

void KepRThread::_deInit() {
  KepThread self(this);
  _KepProcessRemoveThreadFromArray(self);
  threadID.store(0, std::memory_order_release);
  tcb.store(nullptr, std::memory_order_release);
}

void KepRThread::destroyThread() {
  void* block = tcb.load(std::memory_order_acquire);
  if (block == nullptr) return;
  if (_KepThrdGetId(block) == _KepThrdId()) {
    // The thread asks itself to end; it reads the command on its own.
    _KepThrdSetCommand(block, KEP_THRD_COMMAND_DESTROY_SELF);
    return;
  }
  uint32_t rc = _KepThrdSetCommand(block, KEP_THRD_COMMAND_STOP);
  if (rc == 0) {
    unsigned long status = 0;
    while (_KepThrdGetStatus(block, &status) == 0 && (status & KEP_THRD_STATUS_ENDED) == 0) {
      _KepThrdDelay(kPollMs);
    }
  }
  // Ended, or the block is no longer a control block (or already gone): forget
  // it, and free it when it is still there.
  void* mine = block;
  if (tcb.compare_exchange_strong(mine, nullptr, std::memory_order_acq_rel) && rc == 0) {
    _KepThrdDestroy(&block);
  }
}

int KepRThread::getThreadID() const {
  return static_cast<int>(threadID.load(std::memory_order_acquire));
}

KepString KepRThread::getThreadName() const {
  std::lock_guard<std::mutex> guard(nameMutex);
  return threadName;
}

int KepRThread::getCommand() { return readWord(getControlBlock(), _KepThrdGetCommand); }

void KepRThread::setCommand(int command) {
  void* block = getControlBlock();
  if (block != nullptr) _KepThrdSetCommand(block, static_cast<unsigned long>(command));
}

int KepRThread::getCreateFlags() const {
  return readWord(getControlBlock(), _KepThrdGetCreateFlags);
}

int KepRThread::getStatus() const { return readWord(getControlBlock(), _KepThrdGetStatus); }

void KepRThread::setStatus(int status) {
  void* block = getControlBlock();
  if (block != nullptr) _KepThrdSetStatus(block, static_cast<unsigned long>(status));
}

// --- The error stack ------------------------------------------------------------

KepDOMElement KepRThread::newNamedElement(char const* name) const {
  KepDOMElement element(getObject(KepClassID::DOMElement));
  element.setNodeName(KepString(name));
  return element;
}

KepDOMElement KepRThread::newErrorElement(int tag) const {
  // A mark keeps node ID 0, which no document makes; an error comes from the
  // stack's document like any element named by a tag.
  if (tag == 0) return KepDOMElement(getObject(KepClassID::DOMElement));
  KepDOMDocument document = errors.getOwnerDocument();
  KepDOMElement error = document.createElement(tag);
  if (error.isNull()) {
    error = KepDOMElement(getObject(KepClassID::DOMElement));
    error.setNodeID(tag);
  }
  return error;
}

unsigned long KepRThread::errorOK() const { return getErrorID() == 0 ? 1 : 0; }

void KepRThread::setError(int tag, char const* file, int line) {
  if (errors.isNull()) errors = newNamedElement("ErrorStack");
  if (errors.isNull()) return;
  KepDOMElement error = newErrorElement(tag);
  if (error.isNull()) return;
  if (file != nullptr) {
    error.set(KepString("SourceFile"), KepString(file));
    error.set(KepString("SourceLine"), line);
  }
  errors.insertBefore(error, errors.getFirstChild());
}

void KepRThread::setError(KepString const& name, char const* file, int line) {
  setError(KepNameToTag(name), file, line);
}

int KepRThread::getErrorID() const {
  return errors.isNull() ? 0 : errorTag(errors.getFirstChild());
}

KepString KepRThread::getErrorName() const {
  int tag = getErrorID();
  return tag != 0 ? KepProcess::tagToName(tag) : KepString();
}

KepDOMElement KepRThread::getErrorObject() const {
  return errors.isNull() ? KepDOMElement() : KepDOMElement(errors.getFirstChild());
}

void KepRThread::clearErrors() {
  while (getErrorID() != 0) popError();
}

void KepRThread::popError() {
  if (errors.isNull()) return;
  KepDOMNode newest = errors.getFirstChild();
  if (!newest.isNull()) errors.removeChild(newest);
}

KepDOMElement KepRThread::getErrors() const { return errors; }

void KepRThread::logErrors() {
  // The event "LogError", which lets subscribers record the errors first, is
  // not published yet: the library has no events so far.
  if (errors.isNull() || errors.hasChildNodes() == 0) return;
  KepProcess::logDebugString("Unexpected Error:");
  for (KepDOMNode error = errors.getFirstChild(KepDOMNode::ELEMENT_NODE); !error.isNull();
       error = error.getNextSibling(KepDOMNode::ELEMENT_NODE)) {
    _KepLogError(KepDOMElement(error));
  }
}

KepDOMElement KepRThread::getXMLData() {
  if (errorData.isNull()) errorData = newNamedElement("ErrorData");
  return errorData;
}

KEP_REGISTER_LIBRARY_CLASS(Thread);
