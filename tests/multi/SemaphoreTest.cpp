// Mutex semaphores and the recursive lock.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "kep/Kep.h"

TEST(MutexSemaphore, CreateWaitSignalDestroy) {
  void* sem = nullptr;
  ASSERT_EQ(_KepMSemCreate(&sem), 0u);
  ASSERT_NE(sem, nullptr);
  EXPECT_EQ(_KepMSemWait(&sem, 10), 0u);
  EXPECT_EQ(_KepMSemSignal(&sem), 0u);
  EXPECT_EQ(_KepMSemDestroy(&sem), 0u);
  EXPECT_EQ(sem, nullptr);
}

TEST(MutexSemaphore, BadHandlesAreRefused) {
  void* none = nullptr;
  EXPECT_EQ(_KepMSemWait(&none, 0), KEP_SEM_BAD_HANDLE);
  EXPECT_EQ(_KepMSemSignal(nullptr), KEP_SEM_BAD_HANDLE);
  EXPECT_EQ(_KepMSemDestroy(&none), KEP_SEM_BAD_HANDLE);
  alignas(16) char notASemaphore[48] = {'x'};
  void* fake = notASemaphore;
  EXPECT_EQ(_KepMSemWait(&fake, 0), KEP_SEM_BAD_HANDLE);
}

TEST(MutexSemaphore, CreatedInStateZeroIsHeldUntilSignalled) {
  void* sem = nullptr;
  ASSERT_EQ(_KepMSemCreateState(&sem, 0), 0u);
  std::atomic<bool> got{false};
  std::thread other([&] {
    _KepMSemWait(&sem, 1);  // the timeout is ignored: it waits
    got = true;
    _KepMSemSignal(&sem);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(got.load());
  _KepMSemSignal(&sem);
  other.join();
  EXPECT_TRUE(got.load());
  _KepMSemDestroy(&sem);
}

TEST(MutexSemaphore, ProcessSemaphoreExistsWhileTheLibraryIsLoaded) {
  EXPECT_NE(KepProcessSemaphore, nullptr);
  EXPECT_EQ(InitComplete.load(), 1);
}

TEST(RecursiveLock, OwnerNestsAndOthersWaitForTheLastUnlock) {
  _KepSemaphore lock;
  lock.lock();
  lock.lock();
  lock.lock();
  EXPECT_EQ(lock.getDepth(), 3u);
  EXPECT_EQ(lock.getOwner(), _KepThrdId());
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
}

TEST(RecursiveLock, UnlockByNonOwnerOrOnAFreeLockChangesNothing) {
  _KepSemaphore lock;
  lock.unlock();  // free lock: ignored
  EXPECT_EQ(lock.getDepth(), 0u);
  lock.lock();
  std::thread([&] { lock.unlock(); }).join();
  EXPECT_EQ(lock.getDepth(), 1u);
  EXPECT_EQ(lock.getOwner(), _KepThrdId());
  lock.unlock();
  lock.destroy();  // usable again afterwards
  lock.lock();
  lock.unlock();
}

TEST(RecursiveLock, FirstLockersOnManyThreadsShareOneMutexAndExcludeEachOther) {
  for (int round = 0; round < 20; ++round) {
    _KepSemaphore lock;
    int counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&] {
        for (int i = 0; i < 250; ++i) {
          lock.lock();
          lock.lock();
          ++counter;
          lock.unlock();
          lock.unlock();
        }
      });
    }
    for (auto& t : threads) t.join();
    ASSERT_EQ(counter, 1000);
  }
}
