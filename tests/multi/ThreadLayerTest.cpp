// The portable thread layer: control blocks, their words, start hooks, the end
// of a thread, destroy, and System V counting semaphores.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace {

using keptest::eventually;

// What a test procedure sees and how it is told to finish.
struct Probe {
  std::atomic<bool> release{false};
  std::atomic<int> runs{0};
  std::atomic<unsigned long> selfId{0};
  std::atomic<void*> handleSeen{nullptr};
  std::atomic<void*> argument1Seen{nullptr};
  std::atomic<unsigned long> argument3Seen{0};
  std::atomic<bool> hookRanFirst{false};
  std::atomic<int> hookCalls{0};
  std::atomic<int> left{0};  // the procedure's last access, once per run
};

// Records what it was given, then waits until released.
void waitingProcedure(void* handle, void* argument1, void* argument2, unsigned long argument3) {
  auto* probe = static_cast<Probe*>(argument2);
  probe->selfId = _KepThrdId();
  probe->handleSeen = handle;
  probe->argument1Seen = argument1;
  probe->argument3Seen = argument3;
  ++probe->runs;
  while (!probe->release.load()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  ++probe->left;
}

char const kLongName[] = "abcdefghijklmnopqrstuvwxyz0123";
char const kCutName[] = "abcdefghijklmnopqrstuvw";  // its first 23 characters

int recordingHook(_KEP_TCB* tcb) {
  auto* probe = static_cast<Probe*>(tcb->argument2);
  probe->hookRanFirst = probe->runs.load() == 0 && std::strcmp(tcb->name, kCutName) == 0;
  ++probe->hookCalls;
  return 0;
}

unsigned long statusOf(void* handle) {
  unsigned long status = 0;
  EXPECT_EQ(_KepThrdGetStatus(handle, &status), 0u);
  return status;
}

bool ended(void* handle) {
  unsigned long status = 0;
  return _KepThrdGetStatus(handle, &status) == 0 && (status & KEP_THRD_STATUS_ENDED) != 0;
}

unsigned char* text(char const* s) {
  return reinterpret_cast<unsigned char*>(const_cast<char*>(s));
}

// Every test that starts threads ends with no control block left over.
class ThreadLayer : public ::testing::Test {
 protected:
  void SetUp() override { baseline_ = _KepMMTestLiveHandles(); }
  void TearDown() override {
    EXPECT_TRUE(eventually([&] { return _KepMMTestLiveHandles() == baseline_; }))
        << "a control block was left behind";
  }

  // Starts a waiting thread on `probe` with the given flags.
  void* start(Probe& probe, unsigned long flags) {
    void* handle = nullptr;
    EXPECT_EQ(_KepThrdCreate(&handle, flags, text("worker"), waitingProcedure, nullptr, 0, nullptr,
                             &probe, 0),
              0u);
    EXPECT_NE(handle, nullptr);
    return handle;
  }

  // Lets the thread finish, waits for its end mark and destroys the block.
  void finish(Probe& probe, void*& handle) {
    probe.release = true;
    EXPECT_TRUE(eventually([&] { return ended(handle); }));
    EXPECT_EQ(_KepThrdDestroy(&handle), 0u);
  }

  unsigned long baseline_ = 0;
};

}  // namespace

TEST_F(ThreadLayer, NamesAreCutTo23CharactersAndTheHookAndProcedureGetTheirArguments) {
  Probe probe;
  int marker = 0;
  void* handle = nullptr;
  ASSERT_EQ(_KepThrdCreate(&handle, 0, text(kLongName), waitingProcedure, recordingHook, 77,
                           &marker, &probe, 4242),
            0u);
  ASSERT_TRUE(eventually([&] { return probe.runs.load() == 1; }));
  unsigned char name[KEP_THRD_NAME_MAX + 1];
  ASSERT_EQ(_KepThrdGetName(handle, name), 0u);
  EXPECT_STREQ(reinterpret_cast<char*>(name), kCutName);
  EXPECT_EQ(probe.hookCalls.load(), 1);
  EXPECT_TRUE(probe.hookRanFirst.load()) << "the start hook runs first, with the cut name";
  EXPECT_EQ(probe.handleSeen.load(), handle) << "the procedure gets the block's own handle";
  EXPECT_EQ(probe.argument1Seen.load(), &marker);
  EXPECT_EQ(probe.argument3Seen.load(), 4242u);
  EXPECT_EQ(_KepThrdGetId(handle), probe.selfId.load());
  finish(probe, handle);
}

TEST_F(ThreadLayer, CommandBitsAccumulateAndAreClearedByEachRead) {
  for (unsigned long flags : {0UL, KEP_THRD_FLAG_NO_MUTEX}) {
    Probe probe;
    void* handle = start(probe, flags);
    EXPECT_EQ(_KepThrdSetCommand(handle, 2), 0u);
    EXPECT_EQ(_KepThrdSetCommand(handle, 4), 0u);
    unsigned long command = 0;
    ASSERT_EQ(_KepThrdGetCommand(handle, &command), 0u);
    EXPECT_EQ(command, 1u | 2u | 4u) << "the initial 1 and the bits sent since";
    ASSERT_EQ(_KepThrdGetCommand(handle, &command), 0u);
    EXPECT_EQ(command, 0u);
    unsigned long read = 0;
    ASSERT_EQ(_KepThrdGetCreateFlags(handle, &read), 0u);
    EXPECT_EQ(read, flags);

    // Senders and readers racing on the word lose no bit.
    std::atomic<unsigned long> seen{0};
    std::vector<std::thread> senders;
    for (int t = 0; t < 4; ++t) {
      senders.emplace_back([&, t] {
        for (int i = 0; i < 200; ++i) {
          _KepThrdSetCommand(handle, 1UL << (t + 4));
          unsigned long c = 0;
          if (_KepThrdGetCommand(handle, &c) == 0) seen.fetch_or(c);
        }
      });
    }
    for (auto& s : senders) s.join();
    _KepThrdGetCommand(handle, &command);
    EXPECT_EQ(seen.load() | command, 0xf0u) << flags;
    finish(probe, handle);
  }
}

TEST_F(ThreadLayer, StatusIsReplacedOrOredInAndTheEndMarkFollowsTheSameRule) {
  struct Case {
    unsigned long flags;
    unsigned long afterSet;
    unsigned long atEnd;
  };
  for (Case c : {Case{0, 1, 8}, Case{KEP_THRD_FLAG_OR_STATUS, 17, 25}}) {
    Probe probe;
    void* handle = start(probe, c.flags);
    EXPECT_EQ(statusOf(handle), KEP_THRD_STATUS_CREATED);
    ASSERT_EQ(_KepThrdSetStatus(handle, KEP_THRD_STATUS_RUNNING), 0u);
    EXPECT_EQ(statusOf(handle), c.afterSet);
    probe.release = true;
    ASSERT_TRUE(eventually([&] { return ended(handle); }));
    EXPECT_EQ(statusOf(handle), c.atEnd);
    ASSERT_EQ(_KepThrdDestroy(&handle), 0u);
  }
}

TEST_F(ThreadLayer, ABlockFreedByItsThreadOrWhileItRunsRefusesLaterCalls) {
  for (bool selfRelease : {true, false}) {
    Probe probe;
    void* handle = start(probe, selfRelease ? KEP_THRD_FLAG_SELF_RELEASE : 0);
    ASSERT_TRUE(eventually([&] { return probe.runs.load() == 1; }));
    EXPECT_EQ(_KepMMTestLiveHandles(), baseline_ + 1);
    if (!selfRelease) {
      void* copy = handle;
      ASSERT_EQ(_KepThrdDestroy(&copy), 0u);  // the thread ends later, its end mark refused
      EXPECT_EQ(copy, nullptr);
    }
    probe.release = true;
    ASSERT_TRUE(eventually([&] { return _KepMMTestLiveHandles() == baseline_; }));
    ASSERT_TRUE(eventually([&] { return probe.left.load() == 1; }));
    unsigned long word = 0;
    unsigned char name[KEP_THRD_NAME_MAX + 1];
    EXPECT_EQ(_KepThrdGetStatus(handle, &word), KEP_MM_BAD_HANDLE);
    EXPECT_EQ(_KepThrdSetCommand(handle, 4), KEP_MM_BAD_HANDLE);
    EXPECT_EQ(_KepThrdGetName(handle, name), KEP_MM_BAD_HANDLE);
    EXPECT_EQ(_KepThrdGetId(handle), 0u);
    EXPECT_EQ(_KepThrdDestroy(&handle), KEP_MM_BAD_HANDLE);
    EXPECT_EQ(handle, nullptr) << "the caller's handle is cleared first";
  }
}

TEST_F(ThreadLayer, RestartRunsANewThreadOnACopyOfTheBlockAndFreesTheOld) {
  Probe probe;
  int marker = 0;
  void* handle = nullptr;
  ASSERT_EQ(_KepThrdCreate(&handle, KEP_THRD_FLAG_OR_STATUS, text(kLongName), waitingProcedure,
                           recordingHook, 77, &marker, &probe, 4242),
            0u);
  ASSERT_TRUE(eventually([&] { return probe.runs.load() == 1; }));
  ASSERT_EQ(_KepThrdSetStatus(handle, KEP_THRD_STATUS_RUNNING), 0u);
  ASSERT_EQ(_KepThrdSetThreadType(handle, 3), 0u);
  unsigned long type = 0;
  ASSERT_EQ(_KepThrdGetThreadType(handle, &type), 0u);
  EXPECT_EQ(type, 3u);

  void* old = handle;
  ASSERT_EQ(_KepThrdRestart(&handle), 0u);
  ASSERT_NE(handle, old);
  EXPECT_EQ(_KepThrdGetStatus(old, &type), KEP_MM_BAD_HANDLE) << "the old block is freed";
  ASSERT_TRUE(eventually([&] { return probe.runs.load() == 2; }));
  EXPECT_EQ(probe.hookCalls.load(), 2);
  EXPECT_EQ(probe.handleSeen.load(), handle);
  EXPECT_EQ(probe.argument1Seen.load(), &marker);
  EXPECT_EQ(probe.argument3Seen.load(), 4242u);
  unsigned char name[KEP_THRD_NAME_MAX + 1];
  ASSERT_EQ(_KepThrdGetName(handle, name), 0u);
  EXPECT_STREQ(reinterpret_cast<char*>(name), kCutName);
  unsigned long word = 0;
  ASSERT_EQ(_KepThrdGetCreateFlags(handle, &word), 0u);
  EXPECT_EQ(word, KEP_THRD_FLAG_OR_STATUS);
  EXPECT_EQ(statusOf(handle), KEP_THRD_STATUS_CREATED) << "a new block starts afresh";
  ASSERT_EQ(_KepThrdGetThreadType(handle, &type), 0u);
  EXPECT_EQ(type, 0u);
  EXPECT_EQ(_KepMMTestLiveHandles(), baseline_ + 1);

  finish(probe, handle);  // releases both threads
  ASSERT_TRUE(eventually([&] { return probe.left.load() == 2; }));
}

TEST_F(ThreadLayer, ForeignBlocksAreRefused) {
  // A memory block of the right size without the signature, and a small block.
  for (unsigned long size : {static_cast<unsigned long>(sizeof(_KEP_TCB)), 4UL}) {
    void* other = nullptr;
    void* block = nullptr;
    ASSERT_EQ(_KepMMTestAllocLocked(size, &other, &block), 0u);
    std::memcpy(block, "bctm", 4);  // close, but not the signature
    EXPECT_EQ(_KepThrdSetCommand(other, 4), KEP_THRD_BAD_SIGNATURE);
    void* copy = other;
    EXPECT_EQ(_KepThrdDestroy(&copy), KEP_THRD_BAD_SIGNATURE);
    EXPECT_EQ(_KepMMTestFreeLocked(other), 0u) << "the foreign block was left alone";
  }
}

// --- Counting semaphores ---------------------------------------------------------

namespace {

// A key of this process's own, removed again by the guard.
class CountKey {
 public:
  explicit CountKey(int n)
      : key_(0x4b700000UL + (static_cast<unsigned long>(_KepProcessId()) & 0xffffUL) * 16 +
             static_cast<unsigned long>(n)) {}
  ~CountKey() {
    int id = 0;
    if (_KepOpenCount(key_, &id) == 0) _KepDestroyCount(&id);
  }
  unsigned long key() const { return key_; }

 private:
  unsigned long key_;
};

}  // namespace

TEST(CountingSemaphore, ASecondCreateOfAKeyIsRefusedAndUnknownKeysDoNotOpen) {
  CountKey key(1);
  int id = -1;
  ASSERT_EQ(_KepCreateCount(key.key(), 2, &id), 0u);
  int again = -1;
  EXPECT_EQ(_KepCreateCount(key.key(), 2, &again), KEP_SEM_COUNT_EXISTS);
  int opened = -1;
  ASSERT_EQ(_KepOpenCount(key.key(), &opened), 0u);
  EXPECT_EQ(opened, id);
  EXPECT_EQ(_KepDestroyCount(&id), 0u);
  EXPECT_EQ(_KepOpenCount(key.key(), &opened), KEP_SEM_COUNT_OPEN) << "the set is gone";
  // An initial value out of range leaves no set behind.
  EXPECT_EQ(_KepCreateCount(key.key(), 1UL << 40, &id), KEP_SEM_COUNT_CREATE);
  EXPECT_EQ(_KepOpenCount(key.key(), &id), KEP_SEM_COUNT_OPEN);
}

TEST(CountingSemaphore, CountsAreTakenAndWaitersReleasedBySignals) {
  CountKey key(3);
  int id = -1;
  ASSERT_EQ(_KepCreateCount(key.key(), 2, &id), 0u);
  EXPECT_EQ(_KepWaitCount(&id, 0), 0u);
  EXPECT_EQ(_KepWaitCount(&id, 0), 0u);
  std::atomic<int> taken{0};
  std::thread waiter([&] {
    int mine = -1;
    ASSERT_EQ(_KepOpenCount(key.key(), &mine), 0u);
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(_KepWaitCount(&mine, 1), 0u);  // the timeout is ignored
      ++taken;
    }
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(taken.load(), 0) << "the count is 0: the waiter waits";
  EXPECT_EQ(_KepSignalCount(&id), 0u);
  EXPECT_TRUE(eventually([&] { return taken.load() == 1; }));
  EXPECT_EQ(_KepSignalCount(&id), 0u);
  waiter.join();
  EXPECT_EQ(taken.load(), 2);
  EXPECT_EQ(_KepDestroyCount(&id), 0u);
}
