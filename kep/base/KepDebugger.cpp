#include "kep/base/KepDebugger.h"

#include <atomic>

namespace {

std::atomic<int64_t> gLiveObjects{0};
std::atomic<int64_t> gLiveBridges{0};
std::atomic<int> gDebuggerInitCount{0};
std::atomic<int64_t> gTagNames{0};
std::atomic<int64_t> gClasses{0};

}  // namespace

void KepDebugger::init() { gDebuggerInitCount.fetch_add(1, std::memory_order_relaxed); }

void KepDebugger::destroy() {
  if (gDebuggerInitCount.load(std::memory_order_relaxed) > 0) {
    gDebuggerInitCount.fetch_sub(1, std::memory_order_relaxed);
  }
}

void KepDebugger::notifyObjectCreate(KepRObject*) {
  gLiveObjects.fetch_add(1, std::memory_order_relaxed);
}

void KepDebugger::notifyObjectDestroy(KepRObject*) {
  gLiveObjects.fetch_sub(1, std::memory_order_relaxed);
}

void KepDebugger::notifyBridgeCreate(KepObject*) {
  gLiveBridges.fetch_add(1, std::memory_order_relaxed);
}

void KepDebugger::notifyBridgeDestroy(KepObject*) {
  gLiveBridges.fetch_sub(1, std::memory_order_relaxed);
}

void KepDebugger::debugRegisterTagName(KepString const&, int) {
  gTagNames.fetch_add(1, std::memory_order_relaxed);
}

void KepDebugger::debugRegisterClass(int) { gClasses.fetch_add(1, std::memory_order_relaxed); }

int64_t KepDebugger::registeredTagNames() { return gTagNames.load(std::memory_order_relaxed); }

int64_t KepDebugger::registeredClasses() { return gClasses.load(std::memory_order_relaxed); }

int64_t KepDebugger::liveObjects() { return gLiveObjects.load(std::memory_order_relaxed); }

int64_t KepDebugger::liveBridges() { return gLiveBridges.load(std::memory_order_relaxed); }

void KepDebugger::resetCounts() {
  gLiveObjects.store(0, std::memory_order_relaxed);
  gLiveBridges.store(0, std::memory_order_relaxed);
  gTagNames.store(0, std::memory_order_relaxed);
  gClasses.store(0, std::memory_order_relaxed);
}
