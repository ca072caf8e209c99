// The body lock: lazy semaphore creation, recursion, blocking of bracketed calls,
// and counts and body storage shared between threads.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

// A small class family declared with the library's own bridge tables: one
// bracketed and one plain method.
#define KEP_METHODS_Counter(X)               \
  X(Counter, int, bump, (int by), (by), , 1) \
  X(Counter, int, peek, (), (), const, 0)

class KepCounter : public KepObject {
  KEP_HANDLE_CONSTRUCTORS(KepCounter, KepObject)

 public:
  KEP_METHODS_Counter(KEP_DECLARE_METHOD)
};
KEP_METHODS_Counter(KEP_DECLARE_BRIDGE)

    class KepRCounter : public KepRObject {
 public:
  int bump(int by) {
    // A read-modify-write that is only safe under the bracket.
    int v = value.load(std::memory_order_relaxed);
    std::this_thread::yield();
    value.store(v + by, std::memory_order_relaxed);
    return v + by;
  }
  int peek() const { return value.load(std::memory_order_relaxed); }
  std::atomic<int> value{0};
};

KEP_METHODS_Counter(KEP_DEFINE_BRIDGE) KEP_METHODS_Counter(KEP_DEFINE_HANDLE_METHOD);

namespace {

// Runs `work(t)` for t = 0 .. n - 1, each on its own thread, and waits for all.
template <class Work>
void onThreads(int n, Work work) {
  std::vector<std::thread> threads;
  for (int t = 0; t < n; ++t) threads.emplace_back(work, t);
  for (auto& thread : threads) thread.join();
}

// A body that fills its own storage with a pattern made from its address and
// checks it when it goes: a body handed storage smaller than itself, or storage
// another live body uses, breaks a pattern.
template <int kWords>
class PatternBody : public keptest::CountedBody {
 public:
  PatternBody() {
    for (int i = 0; i < kWords; ++i) words[i] = seal(i);
  }
  ~PatternBody() override {
    for (int i = 0; i < kWords; ++i) broken += words[i] != seal(i);
  }
  uintptr_t seal(int i) const { return reinterpret_cast<uintptr_t>(this) * 31 + i; }
  uintptr_t words[kWords];
  static inline std::atomic<int> broken{0};
};

}  // namespace

TEST(ObjectLock, OnlyTheCreatorsBracketOrAnExplicitLockMakesTheSemaphore) {
  // Wrapped and called first on another thread: that thread's brackets make no
  // semaphore; the creator's own call does.
  auto* body = new KepRCounter;
  KepCounter c;
  std::thread([&] {
    c = KepCounter(body);
    c.bump(1);
  }).join();
  EXPECT_FALSE(body->hasSemaphore()) << "a foreign thread's bracket makes none";
  c.bump(1);
  EXPECT_TRUE(body->hasSemaphore());
  EXPECT_EQ(c.peek(), 2);

  auto* plain = new KepRObject;
  KepObject o;
  std::thread([&] { o = KepObject(plain); }).join();
  o.unlock();  // no semaphore yet: nothing happens
  std::thread([&] {
    EXPECT_EQ(o.lock(5000), 1);
    o.unlock();
  }).join();
  EXPECT_TRUE(plain->hasSemaphore()) << "lock() makes it on any thread";
}

// Regression: a body wrapped by its creator and then only called from other
// threads ran its thread-safe methods unlocked, and concurrent updates were lost.
TEST(ObjectLock, BracketedCallsOfABodyItsCreatorWrappedAreSerialisedOnEveryThread) {
  KepCounter c(new KepRCounter);
  constexpr int kThreads = 4, kBumps = 500;
  onThreads(kThreads, [c](int) {
    for (int i = 0; i < kBumps; ++i) const_cast<KepCounter&>(c).bump(1);
  });
  EXPECT_EQ(c.peek(), kThreads * kBumps);
  EXPECT_TRUE(c.getRealKepObj()->hasSemaphore());
}

TEST(ObjectLock, ThreeLocksNeedThreeUnlocksBeforeAnotherThreadGetsIn) {
  KepObject o(new KepRObject);
  o.lock();
  o.lock();
  o.lock(5000);
  std::thread([&] { o.unlock(); }).join();  // not the owner: ignored
  std::atomic<bool> got{false};
  std::thread other([&] {
    o.lock(1);  // the timeout is ignored: it waits
    got = true;
    o.unlock();
  });
  o.unlock();
  o.unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // time to get in, wrongly
  EXPECT_FALSE(got.load());
  o.unlock();
  other.join();
  EXPECT_TRUE(got.load());
}

TEST(ObjectLock, CountsStayExactUnderConcurrentCopiesAndReleases) {
  auto* body = new keptest::CountedBody;
  {
    KepObject root(body);
    onThreads(4, [&](int) {
      for (int i = 0; i < 20000; ++i) {
        KepObject copy(root), other;
        other = copy;
      }
    });
    EXPECT_EQ(body->getRefCount(), 1);
  }
  EXPECT_EQ(keptest::CountedBody::live.load(), 0);
  // The last two handles released at once on two threads delete the body once.
  for (int round = 0; round < 200; ++round) {
    auto* a = new KepObject(new keptest::CountedBody);
    auto* b = new KepObject(*a);
    onThreads(2, [&](int t) { delete (t == 0 ? a : b); });
    ASSERT_EQ(keptest::CountedBody::live.load(), 0);
  }
}

TEST(ObjectLock, BodyStorageIsReusedOnlyForBodiesOfItsSizeAlsoAcrossThreads) {
  using Small = PatternBody<1>;
  using Large = PatternBody<9>;
  // Bodies made on one thread and released on others, of sizes that alternate,
  // while the threads that kept their storage come and go.
  for (int round = 0; round < 20; ++round) {
    std::vector<KepObject> made;
    for (int i = 0; i < 64; ++i) {
      made.emplace_back(i % 3 == 0 ? static_cast<KepRObject*>(new Large) : new Small);
    }
    onThreads(4, [&made](int t) {
      for (size_t i = t; i < made.size(); i += 4) made[i] = KepObject();
      for (int i = 0; i < 200; ++i) {
        KepObject small(new Small), large(new Large), again(new Small);
      }
    });
  }
  EXPECT_EQ(Small::broken.load() + Large::broken.load(), 0);
  EXPECT_EQ(keptest::CountedBody::live.load(), 0);
}
