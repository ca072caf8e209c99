#include <mutex>
#include <utility>

#include "kep/base/KepConfiguration.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepProcess.h"

namespace {

// The process configuration: a heap handle, or null while none is held. Never
// destroyed, as a thread may ask for the configuration while the process exits.
struct Holder {
  std::mutex mutex;
  KepObject* configuration = nullptr;
};

Holder& holder() {
  static Holder* h = new Holder;
  return *h;
}

}  // namespace

KepConfiguration KepProcess::getConfiguration() {
  Holder& h = holder();
  std::lock_guard<std::mutex> guard(h.mutex);
  if (h.configuration == nullptr && initCount() > 0 && !isShuttingDown()) {
    KepObject made = KepGetObject(KepClassID::Configuration, 0);
    if (!made.isNull()) h.configuration = made.newBridge();
  }
  return h.configuration != nullptr ? KepConfiguration(*h.configuration) : KepConfiguration();
}

void KepProcess::setConfiguration(KepConfiguration const& configuration) {
  KepConfiguration copy(configuration);
  KepObject* held = copy.isNull() ? nullptr : copy.newBridge();
  Holder& h = holder();
  {
    std::lock_guard<std::mutex> guard(h.mutex);
    std::swap(held, h.configuration);
  }
  if (held != nullptr) held->freeBridge();
}
