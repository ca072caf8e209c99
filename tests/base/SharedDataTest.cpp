// The shared-data store: scopes, slots, locks, user-data probing, invocation
// counting and thread words.
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace {

std::atomic<int> gDestroyed{0};
std::atomic<uint64_t> gDestroyedValue{0};
std::atomic<uint64_t> gDestroyedOn{0};
void countDestroy(void* p) {
  ++gDestroyed;
  gDestroyedValue = reinterpret_cast<uintptr_t>(p);
  gDestroyedOn = _KepThrdId();
}

// Keeps the store created for one test.
class SharedData : public ::testing::Test {
 protected:
  void SetUp() override { KepRSharedData::init(); }
  void TearDown() override {
    KepRSharedData::destroy();
    EXPECT_FALSE(KepRSharedData::isCreated()) << "a test left the store counted";
  }
};

}  // namespace

TEST(SharedDataLifecycle, ReadsBeforeInitAnswerZeroAndTwoInitsNeedTwoDestroys) {
  ASSERT_FALSE(KepRSharedData::isCreated());
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, 9), 0u);
  KepRSharedData::set(KEP_SCOPE_PROCESS, 9, 5);  // ignored: no record yet
  EXPECT_EQ(KepRSharedData::lock(KEP_SCOPE_PROCESS, 2), 1);
  KepRSharedData::unlock(KEP_SCOPE_PROCESS, 2);

  KepRSharedData::init();
  KepRSharedData::init();
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_MARK), KEP_SHARED_INIT_MARK);
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, KEP_SLOT_STORE_COUNT), 2u);
  KepRSharedData::set(KEP_SCOPE_PROCESS, 60, 1234);
  KepRSharedData::destroy();
  EXPECT_TRUE(KepRSharedData::isCreated());
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, 60), 1234u) << "slots survive nesting";
  KepRSharedData::destroy();
  EXPECT_FALSE(KepRSharedData::isCreated());
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, 60), 0u);

  KepRSharedData::init();  // a new record starts zeroed
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, 60), 0u);
  KepRSharedData::destroy();
}

TEST_F(SharedData, ScopesAndNumbersOutsideTheirTablesAreRefused) {
  EXPECT_EQ(KepRSharedData::lock(KEP_SCOPE_NONE, 2), 0);
  KepRSharedData::set(KEP_SCOPE_NONE, 3, 9);
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_NONE, 3), 0u);
  EXPECT_EQ(KepRSharedData::alloc(KEP_SCOPE_THREAD, 16), nullptr);
  void* p = KepRSharedData::alloc(KEP_SCOPE_PROCESS, 24);
  ASSERT_NE(p, nullptr);
  KepRSharedData::free(KEP_SCOPE_PROCESS, p);
  for (int slot : {70, -1}) {
    KepRSharedData::set(KEP_SCOPE_PROCESS, slot, 1);
    EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, slot), 0u) << slot;
  }
  EXPECT_EQ(KepRSharedData::lock(KEP_SCOPE_PROCESS, 29), 1);
  KepRSharedData::unlock(KEP_SCOPE_PROCESS, 29);
  // Before Kep::init there is no thread table: thread words read 0, writes vanish.
  KepRSharedData::set(KEP_SCOPE_THREAD, 2, 11, countDestroy);
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_THREAD, 2), 0u);
  EXPECT_EQ(KepRSharedData::getDestroyFunc(KEP_SCOPE_THREAD, 2), nullptr);
  KepSharedDataIterator* it = KepRSharedData::getIterator(KEP_SCOPE_THREAD, 2);
  ASSERT_NE(it, nullptr);
  EXPECT_FALSE(it->next());
  KepRSharedData::freeIterator(it);
  EXPECT_EQ(KepRSharedData::getIterator(KEP_SCOPE_THREAD, 9), nullptr);
  EXPECT_EQ(_KepThreadTableCount(), 0);
}

TEST_F(SharedData, LockThreeNeverBlocksAndNumberedLocksAreRecursive) {
  KepRSharedData::lock(KEP_SCOPE_PROCESS, 5);
  KepRSharedData::lock(KEP_SCOPE_PROCESS, 5);
  std::atomic<int> entered{0};
  std::thread other([&] {
    EXPECT_EQ(KepRSharedData::lock(KEP_SCOPE_THREAD, 5), 1);  // never blocks
    entered = 1;
    KepRSharedData::lock(KEP_SCOPE_PROCESS, 5);
    entered = 2;
    KepRSharedData::unlock(KEP_SCOPE_PROCESS, 5);
  });
  while (entered.load() == 0) std::this_thread::yield();
  KepRSharedData::unlock(KEP_SCOPE_PROCESS, 5);
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(entered.load(), 1) << "one unlock of two must not let the other thread in";
  KepRSharedData::unlock(KEP_SCOPE_PROCESS, 5);
  other.join();
  EXPECT_EQ(entered.load(), 2);
}

TEST_F(SharedData, UserDataProbesPastCollisionsAndFreesEmptyEntries) {
  auto get = [](int key, int which) {
    return KepRSharedData::getUserData(KEP_SCOPE_PROCESS, key, which);
  };
  // 7, 108 and 209 share home index 7; -72 wraps to the same home as 7 as well
  // (sign-extended and taken unsigned: 2^64 - 72 = 7 mod 101).
  struct Entry {
    int key, which;
    uint64_t value;
  };
  Entry const entries[] = {{7, 1, 70}, {108, 2, 1080}, {209, 1, 2090}, {-72, 1, 940}};
  for (Entry e : entries) KepRSharedData::setUserData(KEP_SCOPE_PROCESS, e.key, e.which, e.value);
  for (Entry e : entries) EXPECT_EQ(get(e.key, e.which), e.value) << e.key;
  EXPECT_EQ(get(108, 1), 0u);
  EXPECT_EQ(get(310, 1), 0u);
  EXPECT_EQ(get(7, 3), 0u) << "which is 1 or 2";

  // Clearing value 1 of an entry whose value 2 is 0 frees the entry. With the
  // home entry free, lookups stop there: a key living further along is absent.
  KepRSharedData::setUserData(KEP_SCOPE_PROCESS, 7, 1, 0);
  EXPECT_EQ(get(108, 2), 0u);
  // Writing it again lands at home; the old entry further along is not reused.
  KepRSharedData::setUserData(KEP_SCOPE_PROCESS, 108, 2, 1);
  EXPECT_EQ(get(108, 2), 1u);
}

TEST_F(SharedData, FullUserDataTableRefusesNewKeysWithoutHarm) {
  for (int key = 1; key <= KEP_SHARED_USER_ENTRIES; ++key) {
    KepRSharedData::setUserData(KEP_SCOPE_PROCESS, key, 1, static_cast<uint64_t>(key));
  }
  KepRSharedData::setUserData(KEP_SCOPE_PROCESS, 5000, 1, 1);  // no room left
  for (int key = 1; key <= KEP_SHARED_USER_ENTRIES; ++key) {
    ASSERT_EQ(KepRSharedData::getUserData(KEP_SCOPE_PROCESS, key, 1), static_cast<uint64_t>(key));
  }
}

namespace {
// Thread words live in the thread table, which Kep::init sets up.
class ThreadWords : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(_KepThreadTableCount(), 1) << "only the test's own thread stays registered";
  }
  keptest::ScopedKepInit init_;
};
}  // namespace

TEST_F(ThreadWords, AreIndependentAndTheirDestroyFunctionsRunOnTheEndingThread) {
  gDestroyed = 0;
  KepRSharedData::set(KEP_SCOPE_THREAD, 2, 11);
  std::atomic<uint64_t> id{0};
  std::thread([&] {
    id = _KepThrdId();
    EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_THREAD, 2), 0u) << "a new thread's words are 0";
    KepRSharedData::set(KEP_SCOPE_THREAD, 2, 77, countDestroy);
    KepRSharedData::set(KEP_SCOPE_THREAD, 3, 88, countDestroy);
    KepRSharedData::set(KEP_SCOPE_THREAD, 3, 89);  // clears word 3's function
    EXPECT_EQ(KepRSharedData::getDestroyFunc(KEP_SCOPE_THREAD, 3), nullptr);
    EXPECT_EQ(_KepThreadTableCount(), 2);
  }).join();
  EXPECT_EQ(gDestroyed.load(), 1);
  EXPECT_EQ(gDestroyedValue.load(), 77u);
  EXPECT_EQ(gDestroyedOn.load(), id.load()) << "run by the thread itself, at its end";
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_THREAD, 2), 11u);
  KepRSharedData::set(KEP_SCOPE_THREAD, 2, 0);
}

TEST_F(ThreadWords, IteratorVisitsTheWordOfEveryRegisteredThreadAndWritesIt) {
  KepRSharedData::set(KEP_SCOPE_THREAD, 6, 100);
  std::atomic<int> ready{0};
  std::atomic<bool> release{false};
  std::vector<uint64_t> finalWords(2);
  std::vector<std::thread> threads;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([&, t] {
      KepRSharedData::set(KEP_SCOPE_THREAD, 6, static_cast<uint64_t>(101 + t));
      ++ready;
      while (!release.load()) std::this_thread::yield();
      finalWords[static_cast<size_t>(t)] = KepRSharedData::get(KEP_SCOPE_THREAD, 6);
    });
  }
  while (ready.load() < 2) std::this_thread::yield();
  std::multiset<uint64_t> seen;
  KepSharedDataIterator* it = KepRSharedData::getIterator(KEP_SCOPE_THREAD, 6);
  while (it->next()) {
    seen.insert(it->get());
    it->set(it->get() + 1000);
  }
  EXPECT_FALSE(it->next()) << "stays past the end";
  KepRSharedData::freeIterator(it);
  release = true;
  for (auto& t : threads) t.join();
  EXPECT_EQ(seen, (std::multiset<uint64_t>{100, 101, 102}));
  EXPECT_EQ(finalWords, (std::vector<uint64_t>{1101, 1102})) << "the writes reached them";
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_THREAD, 6), 1100u);
}
