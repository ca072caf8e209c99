// Mutex semaphores and the recursive lock.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

TEST(MutexSemaphore, CreatedInStateZeroIsHeldUntilSignalledAndBadHandlesAreRefused) {
  void* sem = nullptr;
  ASSERT_EQ(_KepMSemCreate(&sem), 0u);
  EXPECT_EQ(_KepMSemWait(&sem, 10), 0u) << "a plain new semaphore is free";
  EXPECT_EQ(_KepMSemSignal(&sem), 0u);
  EXPECT_EQ(_KepMSemDestroy(&sem), 0u);
  ASSERT_EQ(_KepMSemCreateState(&sem, 0), 0u);
  std::atomic<bool> got{false};
  std::thread other([&] {
    EXPECT_EQ(_KepMSemWait(&sem, 1), 0u);  // the timeout is ignored: it waits
    got = true;
    _KepMSemSignal(&sem);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(got.load());
  EXPECT_EQ(_KepMSemSignal(&sem), 0u);
  other.join();
  EXPECT_TRUE(got.load());
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
  lock.lock();
  lock.lock();
  lock.lock();
  EXPECT_EQ(lock.getDepth(), 3u);
  EXPECT_EQ(lock.getOwner(), _KepThrdId());
  std::thread([&] { lock.unlock(); }).join();  // not the owner: ignored
  EXPECT_EQ(lock.getDepth(), 3u);
  std::atomic<bool> got{false};
  std::thread other([&] {
    lock.lock();
    got = true;
    lock.unlock();
  });
  lock.unlock();
  lock.unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(got.load()) << "two unlocks of three must not let the other thread in";
  lock.unlock();
  other.join();
  EXPECT_TRUE(got.load());
  EXPECT_EQ(lock.getOwner(), 0u);
  lock.destroy();  // usable again afterwards
  lock.lock();
  lock.unlock();
}

TEST(RecursiveLock, ContendingThreadsAreExcludedAndAllGetIn) {
  _KepSemaphore lock;
  long counter = 0;  // plain on purpose: only the lock protects it
  int const threads = 4;
  int const rounds = keptest::kSanitized ? 2000 : 20000;
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
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
  EXPECT_EQ(counter, static_cast<long>(threads) * rounds);
  EXPECT_EQ(lock.getOwner(), 0u);
}
