// The portable thread layer: control blocks, their words, start hooks, the end
// of a thread, destroy and restart.
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

unsigned char kLongName[] = "abcdefghijklmnopqrstuvwxyz0123";
char const kCutName[] = "abcdefghijklmnopqrstuvw";  // its first 23 characters

// Notes whether it runs before the procedure's run of the same start, with the cut name.
int recordingHook(_KEP_TCB* tcb) {
  auto* probe = static_cast<Probe*>(tcb->argument2);
  probe->hookRanFirst =
      probe->runs.load() == probe->hookCalls.load() && std::strcmp(tcb->name, kCutName) == 0;
  ++probe->hookCalls;
  return 0;
}

unsigned long statusOf(void* handle) {
  unsigned long status = 0;
  EXPECT_EQ(_KepThrdGetStatus(handle, &status), 0u);
  return status;
}

// Every test that starts threads ends with no control block left over.
class ThreadLayer : public ::testing::Test {
 protected:
  void SetUp() override { baseline_ = _KepMMTestLiveHandles(); }
  void TearDown() override {
    EXPECT_TRUE(eventually([&] { return _KepMMTestLiveHandles() == baseline_; }))
        << "a control block was left behind";
  }

  // Starts a waiting thread on `probe` with the given flags, the long name, the
  // recording hook and the probe also as first argument.
  void* start(Probe& probe, unsigned long flags) {
    void* handle = nullptr;
    EXPECT_EQ(_KepThrdCreate(&handle, flags, kLongName, waitingProcedure, recordingHook, 77, &probe,
                             &probe, 4242),
              0u);
    EXPECT_NE(handle, nullptr);
    return handle;
  }

  // Lets the thread finish, waits for its end mark and destroys the block;
  // answers the status word the end left.
  unsigned long finish(Probe& probe, void*& handle) {
    probe.release = true;
    EXPECT_TRUE(eventually([&] { return (statusOf(handle) & KEP_THRD_STATUS_ENDED) != 0; }));
    unsigned long status = statusOf(handle);
    EXPECT_EQ(_KepThrdDestroy(&handle), 0u);
    return status;
  }

  unsigned long baseline_ = 0;
};

}  // namespace

TEST_F(ThreadLayer, CommandBitsAccumulateUntilReadAndStatusIsReplacedOrOredIn) {
  struct Case {
    unsigned long flags, afterSet, atEnd;
  };
  for (Case c :
       {Case{0, 1, 8}, Case{KEP_THRD_FLAG_OR_STATUS, 17, 25}, Case{KEP_THRD_FLAG_NO_MUTEX, 1, 8}}) {
    SCOPED_TRACE(c.flags);
    Probe probe;
    void* handle = start(probe, c.flags);
    unsigned long word = 0;
    EXPECT_EQ(statusOf(handle), KEP_THRD_STATUS_CREATED);
    ASSERT_EQ(_KepThrdSetStatus(handle, KEP_THRD_STATUS_RUNNING), 0u);
    EXPECT_EQ(statusOf(handle), c.afterSet);
    EXPECT_EQ(_KepThrdSetCommand(handle, 2), 0u);
    EXPECT_EQ(_KepThrdSetCommand(handle, 4), 0u);
    ASSERT_EQ(_KepThrdGetCommand(handle, &word), 0u);
    EXPECT_EQ(word, 1u | 2u | 4u) << "the initial 1 and the bits sent since";
    ASSERT_EQ(_KepThrdGetCommand(handle, &word), 0u);
    EXPECT_EQ(word, 0u);

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
    _KepThrdGetCommand(handle, &word);
    EXPECT_EQ(seen.load() | word, 0xf0u);
    EXPECT_EQ(finish(probe, handle), c.atEnd) << "the end mark follows the status rule";
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
    EXPECT_EQ(_KepThrdGetStatus(handle, &word), KEP_MM_BAD_HANDLE);
    EXPECT_EQ(_KepThrdGetId(handle), 0u);
    EXPECT_EQ(_KepThrdDestroy(&handle), KEP_MM_BAD_HANDLE);
    EXPECT_EQ(handle, nullptr) << "the caller's handle is cleared first";
  }
}

TEST_F(ThreadLayer, NamesAreCutTo23CharactersAndRestartRepeatsTheStartOnAFreshBlock) {
  Probe probe;
  void* handle = start(probe, KEP_THRD_FLAG_OR_STATUS);
  // Every start runs the hook first, then the procedure with the block's own
  // handle and the arguments given at creation.
  auto checkRun = [&](int run) {
    ASSERT_TRUE(eventually([&] { return probe.runs.load() == run; }));
    EXPECT_EQ(probe.hookCalls.load(), run);
    EXPECT_TRUE(probe.hookRanFirst.load()) << run;
    EXPECT_EQ(probe.handleSeen.load(), handle);
    EXPECT_EQ(probe.argument1Seen.load(), &probe);
    EXPECT_EQ(probe.argument3Seen.load(), 4242u);
    EXPECT_EQ(_KepThrdGetId(handle), probe.selfId.load());
    unsigned char name[KEP_THRD_NAME_MAX + 1];
    ASSERT_EQ(_KepThrdGetName(handle, name), 0u);
    EXPECT_STREQ(reinterpret_cast<char*>(name), kCutName);
    unsigned long word = 0;
    ASSERT_EQ(_KepThrdGetCreateFlags(handle, &word), 0u);
    EXPECT_EQ(word, KEP_THRD_FLAG_OR_STATUS);
    EXPECT_EQ(statusOf(handle), KEP_THRD_STATUS_CREATED) << "a new block starts afresh";
  };
  checkRun(1);
  ASSERT_EQ(_KepThrdSetStatus(handle, KEP_THRD_STATUS_RUNNING), 0u);
  unsigned long type = 0;

  void* old = handle;
  ASSERT_EQ(_KepThrdRestart(&handle), 0u);
  ASSERT_NE(handle, old);
  EXPECT_EQ(_KepThrdGetStatus(old, &type), KEP_MM_BAD_HANDLE) << "the old block is freed";
  checkRun(2);
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
