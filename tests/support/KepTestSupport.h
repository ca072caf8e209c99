// Helpers for the test suites.
#ifndef KEP_TESTS_SUPPORT_KEPTESTSUPPORT_H
#define KEP_TESTS_SUPPORT_KEPTESTSUPPORT_H

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "kep/Kep.h"

namespace keptest {

// True in builds under AddressSanitizer or ThreadSanitizer, where long loops are
// shortened to keep the suites fast.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

// A body class that counts its live instances, to prove that nothing leaked and
// nothing was freed twice.
class CountedBody : public KepRObject {
 public:
  CountedBody() { ++live; }
  ~CountedBody() override { --live; }
  KepObject createAnother() const override { return KepObject(new CountedBody()); }
  static std::atomic<int> live;
};

// Polls `done` every 2 ms for up to ten seconds; answers whether it came true.
// For waiting on detached threads, which nobody joins.
template <class Pred>
bool eventually(Pred done) {
  auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!done()) {
    if (std::chrono::steady_clock::now() > until) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

// Brings the library up for one test and down again at its end.
class ScopedKepInit {
 public:
  ScopedKepInit() { Kep::init(0); }
  ~ScopedKepInit() { Kep::destroy(); }
  ScopedKepInit(ScopedKepInit const&) = delete;
  ScopedKepInit& operator=(ScopedKepInit const&) = delete;
};

// A fresh temporary directory, removed with everything in it at destruction.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(TempDir const&) = delete;
  TempDir& operator=(TempDir const&) = delete;
  std::string const& path() const { return path_; }
  std::string file(std::string const& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace keptest

#endif  // KEP_TESTS_SUPPORT_KEPTESTSUPPORT_H
