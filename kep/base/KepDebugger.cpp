#include "kep/base/KepDebugger.h"

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "kep/base/KepGlobals.h"
#include "kep/base/KepLogger.h"
#include "kep/base/KepObject.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepRObject.h"
#include "kep/base/_KepTagTables.h"

namespace {

std::atomic<int64_t> gLiveObjects{0};
std::atomic<int64_t> gLiveBridges{0};
std::atomic<int> gDebuggerInitCount{0};
std::atomic<int64_t> gTagNames{0};
std::atomic<int64_t> gClasses{0};

// The bodies and handles whose creation was reported and whose destruction was
// not.
struct LiveSet {
  std::mutex mutex;
  std::unordered_set<KepRObject const*> bodies;
  std::unordered_set<KepObject const*> handles;
};

LiveSet& liveSet() {
  // Never destroyed: objects may die during static destruction at exit.
  static LiveSet* s = new LiveSet;
  return *s;
}

// Copies of the live set, taken under its lock so that the classes can be asked
// without it (asking may make objects, which report here).
void snapshot(std::vector<KepRObject const*>& bodies, std::vector<KepObject const*>& handles) {
  LiveSet& s = liveSet();
  std::lock_guard<std::mutex> guard(s.mutex);
  bodies.assign(s.bodies.begin(), s.bodies.end());
  handles.assign(s.handles.begin(), s.handles.end());
}

// The name of a class id: from the process's tag manager while there is one,
// else from the built-in vocabulary (the last Kep::destroy reports after the tag
// manager is gone), else "?".
std::string className(int classId) {
  KepString name = KepProcess::tagToName(classId);
  if (!name.isNull()) return name.toStdString();
  int n = 0;
  _KepBuiltInTagTable const* tables = _KepGetBuiltInTagTables(n);
  for (int i = 0; i < n; ++i) {
    if (classId >= tables[i].start && classId - tables[i].start < tables[i].count) {
      return tables[i].names[classId - tables[i].start];
    }
  }
  return "?";
}

}  // namespace

void KepDebugger::init() { gDebuggerInitCount.fetch_add(1, std::memory_order_relaxed); }

void KepDebugger::destroy() {
  int n = gDebuggerInitCount.load(std::memory_order_relaxed);
  while (n > 0 && !gDebuggerInitCount.compare_exchange_weak(n, n - 1, std::memory_order_relaxed)) {
  }
  if (n != 1) return;
  if ((gDiagKep.load(std::memory_order_relaxed) & 1u) != 0) reportLiveInstances();
  // The diagnostics word is cleared next, after which objects no longer report
  // their end: forget them now rather than keep addresses that will go stale.
  LiveSet& s = liveSet();
  std::lock_guard<std::mutex> guard(s.mutex);
  s.bodies.clear();
  s.handles.clear();
}

int KepDebugger::initCount() { return gDebuggerInitCount.load(std::memory_order_relaxed); }

namespace {

// Counts one instance in or out and keeps the matching live set in step.
template <class T>
void track(std::atomic<int64_t>& live, std::unordered_set<T const*> LiveSet::*members, T* item,
           bool created) {
  live.fetch_add(created ? 1 : -1, std::memory_order_relaxed);
  LiveSet& s = liveSet();
  std::lock_guard<std::mutex> guard(s.mutex);
  if (created) {
    (s.*members).insert(item);
  } else {
    (s.*members).erase(item);
  }
}

}  // namespace

void KepDebugger::notifyObjectCreate(KepRObject* body) {
  track(gLiveObjects, &LiveSet::bodies, body, true);
}

void KepDebugger::notifyObjectDestroy(KepRObject* body) {
  track(gLiveObjects, &LiveSet::bodies, body, false);
}

void KepDebugger::notifyBridgeCreate(KepObject* handle) {
  track(gLiveBridges, &LiveSet::handles, handle, true);
}

void KepDebugger::notifyBridgeDestroy(KepObject* handle) {
  track(gLiveBridges, &LiveSet::handles, handle, false);
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
  LiveSet& s = liveSet();
  std::lock_guard<std::mutex> guard(s.mutex);
  s.bodies.clear();
  s.handles.clear();
}

int64_t KepDebugger::liveObjectsOf(int classId) {
  std::vector<KepRObject const*> bodies;
  std::vector<KepObject const*> handles;
  snapshot(bodies, handles);
  int64_t n = 0;
  for (KepRObject const* body : bodies) {
    if (body->getClassID() == classId) ++n;
  }
  return n;
}

int64_t KepDebugger::reportLiveInstances() {
  std::vector<KepRObject const*> bodies;
  std::vector<KepObject const*> handles;
  snapshot(bodies, handles);
  struct Count {
    int64_t bodies = 0;
    int64_t handles = 0;
  };
  std::map<int, Count> byClass;
  for (KepRObject const* body : bodies) ++byClass[body->getClassID()].bodies;
  int64_t nullHandles = 0;
  for (KepObject const* handle : handles) {
    KepRObject const* body = handle->getRealKepObj();
    if (body == nullptr) {
      ++nullHandles;
    } else {
      ++byClass[body->getClassID()].handles;
    }
  }
  for (auto const& [classId, count] : byClass) {
    KepLogger::log(KepLogger::kWarning,
                   "KepDebugger: %lld live instances of %s (class 0x%x), %lld handles",
                   static_cast<long long>(count.bodies), className(classId).c_str(),
                   static_cast<unsigned>(classId), static_cast<long long>(count.handles));
  }
  auto liveHandles = static_cast<int64_t>(handles.size()) - nullHandles;
  KepLogger::log(bodies.empty() && liveHandles == 0 ? KepLogger::kInfo : KepLogger::kWarning,
                 "KepDebugger: %lld live objects, %lld live handles, %lld null handles",
                 static_cast<long long>(bodies.size()), static_cast<long long>(liveHandles),
                 static_cast<long long>(nullHandles));
  return static_cast<int64_t>(bodies.size());
}
