// Mutex semaphores, the recursive lock and System V counting semaphores.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace {

// Runs `take` on a thread of its own and checks that it gets through only after
// `release` has run on this one.
template <class Take, class Release>
void expectHeldUntil(Take take, Release release) {
  std::atomic<bool> got{false};
  std::thread other([&] {
    take();
    got = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(got.load()) << "got through before the release";
  release();
  other.join();
  EXPECT_TRUE(got.load());
}

// A counting-semaphore key of this process's own. Its set is removed again at the
// end of the scope, so that a test run leaves no System V semaphore behind.
struct CountKey {
  ~CountKey() {
    int id = 0;
    if (_KepOpenCount(key, &id) == 0) _KepDestroyCount(&id);
  }
  unsigned long const key = 0x4b700000UL + (static_cast<unsigned long>(_KepProcessId()) & 0xffffUL);
};

}  // namespace

TEST(MutexSemaphore, CreatedInStateZeroIsHeldUntilSignalledAndBadHandlesAreRefused) {
  void* sem = nullptr;
  ASSERT_EQ(_KepMSemCreateState(&sem, 0), 0u);
  expectHeldUntil(
      [&] {
        EXPECT_EQ(_KepMSemWait(&sem, 1), 0u);  // the timeout is ignored: it waits
        _KepMSemSignal(&sem);
      },
      [&] { EXPECT_EQ(_KepMSemSignal(&sem), 0u); });
  EXPECT_EQ(_KepMSemDestroy(&sem), 0u);
  EXPECT_EQ(sem, nullptr);
  EXPECT_EQ(_KepMSemWait(&sem, 0), KEP_SEM_BAD_HANDLE);
}

// CTest runs every case in a process of its own, so the first three locks are
// taken while the process has one thread (without the lock word), and the
// threads started afterwards must still wait for the owner's last unlock.
TEST(RecursiveLock, OwnerNestsAndOthersWaitForTheLastUnlock) {
  _KepSemaphore lock;
  lock.unlock();  // free lock: ignored
  EXPECT_EQ(lock.getDepth(), 0u);
  for (int i = 0; i < 3; ++i) lock.lock();
  EXPECT_EQ(lock.getDepth(), 3u);
  EXPECT_EQ(lock.getOwner(), _KepThrdId());
  std::thread([&] { lock.unlock(); }).join();  // not the owner: ignored
  EXPECT_EQ(lock.getDepth(), 3u);
  lock.unlock();
  lock.unlock();
  expectHeldUntil(
      [&] {
        lock.lock();
        lock.unlock();
      },
      [&] { lock.unlock(); });
  EXPECT_EQ(lock.getOwner(), 0u);
}

TEST(RecursiveLock, ContendingThreadsAreExcludedAndAllGetIn) {
  _KepSemaphore lock;
  long counter = 0;  // plain on purpose: only the lock protects it
  int const rounds = keptest::kSanitized ? 2000 : 20000;
  std::vector<std::thread> workers;
  for (int t = 0; t < 4; ++t) {
    workers.emplace_back([&] {
      for (int i = 0; i < rounds; ++i) {
        lock.lock();
        lock.lock();
        long seen = counter;
        if (i % 64 == 0) std::this_thread::yield();  // let others queue up on the lock
        counter = seen + 1;
        lock.unlock();
        lock.unlock();
      }
    });
  }
  for (auto& w : workers) w.join();
  EXPECT_EQ(counter, 4L * rounds);
  EXPECT_EQ(lock.getOwner(), 0u);
}

TEST(CountingSemaphore, KeysAreCreatedOnceCountsAreTakenAndWaitersReleasedBySignals) {
  CountKey key;
  int id = -1;
  EXPECT_EQ(_KepCreateCount(key.key, 1UL << 40, &id), KEP_SEM_COUNT_CREATE);
  EXPECT_EQ(_KepOpenCount(key.key, &id), KEP_SEM_COUNT_OPEN) << "a refused value leaves no set";
  ASSERT_EQ(_KepCreateCount(key.key, 2, &id), 0u);
  int opened = -1;
  EXPECT_EQ(_KepCreateCount(key.key, 2, &opened), KEP_SEM_COUNT_EXISTS);
  ASSERT_EQ(_KepOpenCount(key.key, &opened), 0u);
  EXPECT_EQ(opened, id);
  EXPECT_EQ(_KepWaitCount(&id, 0), 0u);
  EXPECT_EQ(_KepWaitCount(&opened, 0), 0u);
  for (int i = 0; i < 2; ++i) {  // the count is 0: each waiter waits for a signal
    expectHeldUntil([&] { EXPECT_EQ(_KepWaitCount(&opened, 1), 0u); },  // the timeout is ignored
                    [&] { EXPECT_EQ(_KepSignalCount(&id), 0u); });
  }
  EXPECT_EQ(_KepDestroyCount(&id), 0u);
  EXPECT_EQ(_KepOpenCount(key.key, &opened), KEP_SEM_COUNT_OPEN) << "the set is gone";
}
