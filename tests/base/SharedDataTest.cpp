// The shared-data store: scopes, slots, locks, user-data probing and invocation
// counting.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "kep/Kep.h"

namespace {

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
}

TEST_F(SharedData, ScopesAndNumbersOutsideTheirTablesAreRefused) {
  EXPECT_EQ(KepRSharedData::lock(KEP_SCOPE_NONE, 2), 0);
  for (int slot : {70, -1}) {
    KepRSharedData::set(KEP_SCOPE_PROCESS, slot, 1);
    EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_PROCESS, slot), 0u) << slot;
  }
  // Before Kep::init there is no thread table: thread words read 0, writes vanish.
  KepRSharedData::set(KEP_SCOPE_THREAD, 2, 11);
  EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_THREAD, 2), 0u);
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
