#include <atomic>

#include "kep/base/KepProcess.h"
#include "kep/base/KepRTagManager.h"
#include "kep/base/KepTagManager.h"
#include "kep/base/_KepErrorRegistry.h"
#include "kep/base/_KepThreadTable.h"

namespace {

std::atomic<int> gProcessInitCount{0};
std::atomic<bool> gShuttingDown{false};

}  // namespace

void KepProcess::init() {
  if (gProcessInitCount.fetch_add(1, std::memory_order_acq_rel) != 0) return;
  gShuttingDown.store(false, std::memory_order_release);
  _KepProcessInitThreads();
  KepRTagManager::createProcessManager();
}

void KepProcess::destroy() {
  int n = gProcessInitCount.load(std::memory_order_acquire);
  while (n > 0 && !gProcessInitCount.compare_exchange_weak(n, n - 1, std::memory_order_acq_rel)) {
  }
  if (n != 1) return;
  _KepProcessDestroyThreads();
  _KepErrorRegistry::clear();
  KepRTagManager::destroyProcessManager();
}

void KepProcess::notifyKepDestroy() { gShuttingDown.store(true, std::memory_order_release); }

bool KepProcess::isShuttingDown() { return gShuttingDown.load(std::memory_order_acquire); }

int KepProcess::initCount() { return gProcessInitCount.load(std::memory_order_acquire); }

KepTagManager KepProcess::getTagManager() { return KepTagManager(KepRTagManager::process()); }
