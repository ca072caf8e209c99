// Thread objects, threads started by the process, runnables, the process thread
// table and the thread-data words kept in it.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepLogCapture.h"
#include "support/KepTestSupport.h"

namespace {

using keptest::eventually;

std::atomic<int> gWordsDestroyed{0};
std::atomic<uintptr_t> gLastWord{0};
void countWord(void* word) {
  gLastWord = reinterpret_cast<uintptr_t>(word);
  ++gWordsDestroyed;
}

int ownId() { return static_cast<int>(static_cast<uint32_t>(_KepThrdId())); }
void nap() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

// Brings the library up for one test and checks, before taking it down, that
// every thread the test started has gone: no control block left, the table empty.
class Threads : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_TRUE(eventually([&] { return _KepMMTestLiveHandles() == handles_; }));
    EXPECT_TRUE(eventually([] { return _KepThreadTableCount() == 0; }));
  }
  keptest::ScopedKepInit init_;
  unsigned long handles_ = _KepMMTestLiveHandles();
};

// A runnable outer object: records what its thread sees, sets a thread word that
// countWord destroys, and runs until it is told to stop (command 4), or destroys
// its own thread.
class Job : public KepRunnable {
 public:
  Job() : KepRunnable(nullptr, KepClassIdArg(KepClassID::Runnable)) { ++live; }
  ~Job() override { --live; }
  unsigned long isBridge() const override { return 0; }

  int run() override {
    KepThread* me = KepProcess::getCurrThread();
    if (me == nullptr) return -1;
    threadId = me->getThreadID();
    if (destroySelf) {
      me->destroyThread();  // only tells the thread to end
      selfCommand = me->getCommand();
      return 1;
    }
    KepRSharedData::set(KEP_SCOPE_THREAD, 4, 0x4321, countWord);
    running = true;
    while ((me->getCommand() & KEP_THRD_COMMAND_STOP) == 0) nap();
    stopped = true;
    return 1;
  }

  std::atomic<bool> running{false}, stopped{false};
  std::atomic<int> threadId{0}, selfCommand{0};
  bool destroySelf = false;
  static inline std::atomic<int> live{0};
};

}  // namespace

TEST(ThreadObject, WithoutTheLibraryThereIsNoTableAndNullHandlesAnswerNeutrally) {
  EXPECT_EQ(KepProcess::getCurrThread(), nullptr);
  EXPECT_EQ(_KepProcessThreadTable(), nullptr);
  KepThread none;
  KepProcess::_addThreadToArray(none);  // ignored
  EXPECT_EQ(_KepThreadTableCount(), 0);
  KepProcess::destroyThread(none);  // nothing to do
}

TEST_F(Threads, ForeignThreadsAreAdoptedWithAFreshThreadObject) {
  std::atomic<int> step{0};
  KepThread first;
  std::thread foreign([&] {
    EXPECT_EQ(_KepThreadTableCount(), 0);
    KepThread* me = KepProcess::getCurrThread();
    ASSERT_NE(me, nullptr);
    EXPECT_EQ(KepProcess::getCurrThread(), me) << "found again in its slot";
    EXPECT_EQ(me->getThreadID(), ownId());
    EXPECT_EQ(me->getStatus(), 0) << "no control block";
    me->setCommand(4);
    EXPECT_EQ(me->getCommand(), 0) << "no control block to take commands";
    KepRSharedData::set(KEP_SCOPE_THREAD, 2, 0x22);
    first = *me;
    step = 1;
    while (step.load() != 2) nap();
    // Another thread took its object out of the table: it is adopted afresh,
    // with words of its own.
    KepThread* again = KepProcess::getCurrThread();
    ASSERT_NE(again, nullptr);
    EXPECT_NE(again->getRealKepObj(), first.getRealKepObj());
    EXPECT_EQ(KepRSharedData::get(KEP_SCOPE_THREAD, 2), 0u);
  });
  ASSERT_TRUE(eventually([&] { return step.load() == 1; }));
  KepProcess::_removeThreadFromArray(first);
  std::thread([] {
    keptest::LogCapture log;
    EXPECT_EQ(_KepGetCurrThreadDataDestroyFunctions(), nullptr) << "asking does not register";
    EXPECT_EQ(log.count("index is -1 in get destory function"), 1u);
  }).join();
  step = 2;
  foreign.join();
}

TEST_F(Threads, RunnableThreadKeepsItsNameAndStopsWhenDestroyedFromAnotherThread) {
  for (int flags : {0, 4}) {
    auto* job = new Job;
    KepRunnable keep(job);  // keeps the job for the checks after the thread ended
    KepThread thread =
        KepProcess::createThread(flags, KepString("a-name-much-longer-than-23-chars"), *job, 5);
    ASSERT_TRUE(eventually([&] { return job->running.load(); }));
    EXPECT_EQ(thread.getThreadName().toStdString(), "a-name-much-longer-than");
    EXPECT_EQ(job->threadId.load(), thread.getThreadID());
    EXPECT_EQ(thread.getStatus(), flags == 4 ? 17 : 1);
    KepThread copy(thread);
    KepProcess::destroyThread(thread);  // waits until the thread has ended
    EXPECT_TRUE(thread.isNull());
    EXPECT_TRUE(job->stopped.load()) << "the thread saw command 4";
    EXPECT_EQ(_KepMMTestLiveHandles(), handles_) << "the control block is freed";
    EXPECT_EQ(copy.getStatus(), 0);
    EXPECT_TRUE(eventually([] { return Job::live.load() == 1; }));
    keep = KepRunnable();
    EXPECT_EQ(Job::live.load(), 0) << "the thread released the runnable";
  }
  // Called by the thread on itself, destroyThread() returns at once with
  // command 8 sent; the block stays until another thread destroys it.
  auto* job = new Job;
  job->destroySelf = true;
  KepRunnable keep(job);
  KepThread thread = KepProcess::createThread(0, KepString("self"), *job, 0);
  ASSERT_TRUE(eventually([&] { return job->selfCommand.load() != 0; }));
  EXPECT_EQ(job->selfCommand.load(), KEP_THRD_COMMAND_INITIAL | KEP_THRD_COMMAND_DESTROY_SELF);
  ASSERT_TRUE(eventually([&] { return (thread.getStatus() & KEP_THRD_STATUS_ENDED) != 0; }));
  KepProcess::destroyThread(thread);
}

TEST_F(Threads, HundredsOfThreadsStartAndEndRunningTheirDestroyFunctions) {
  gWordsDestroyed = 0;
  constexpr int kProcedures = 300, kRunnables = 60;
  auto procedure = [](void*) -> int {
    KepRSharedData::set(KEP_SCOPE_THREAD, 1, static_cast<uint64_t>(ownId()), countWord);
    return 0;
  };
  for (int i = 0; i < kProcedures; ++i) {
    ASSERT_FALSE(KepProcess::createThread(procedure, nullptr).isNull());
  }
  std::vector<KepThread> runnables;
  std::vector<Job*> jobs;
  for (int i = 0; i < kRunnables; ++i) {
    jobs.push_back(new Job);
    runnables.push_back(KepProcess::createThread(i % 2 * 4, KepString("r"), *jobs.back(), i));
  }
  for (Job* job : jobs) ASSERT_TRUE(eventually([job] { return job->running.load(); }));
  for (KepThread& t : runnables) KepProcess::destroyThread(t);
  ASSERT_TRUE(eventually([] { return gWordsDestroyed.load() == kProcedures + kRunnables; }));
  EXPECT_TRUE(eventually([] { return Job::live.load() == 0; }));
}

TEST(ThreadShutdown, DestroyFunctionsOfTheCallerRunAtShutdownAndOfOthersAtTheirEnd) {
  Kep::init(0);
  gWordsDestroyed = 0;
  std::atomic<bool> registered{false}, release{false};
  std::thread other([&] {
    KepRSharedData::set(KEP_SCOPE_THREAD, 5, 0x55, countWord);
    registered = true;
    while (!release.load()) nap();
  });
  ASSERT_TRUE(eventually([&] { return registered.load(); }));
  KepRSharedData::set(KEP_SCOPE_THREAD, 5, 0x66, countWord);
  KepThread* mine = KepProcess::getCurrThread();
  ASSERT_NE(mine, nullptr);
  // The process-scope iterator walks word 5 of every thread; what it writes is
  // what the destroy functions get.
  KepSharedDataIterator* it = KepRSharedData::getIterator(KEP_SCOPE_PROCESS, 5);
  ASSERT_NE(it, nullptr);
  std::vector<uint64_t> seen;
  while (it->next()) {
    seen.push_back(it->get());
    it->set(it->get() + 0x100);
  }
  KepRSharedData::freeIterator(it);
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<uint64_t>{0x55, 0x66}));
  Kep::destroy();
  EXPECT_EQ(gWordsDestroyed.load(), 1);
  EXPECT_EQ(gLastWord.load(), 0x166u) << "the caller's words at shut-down";
  EXPECT_TRUE(mine->isNull()) << "the caller's slot was emptied";
  EXPECT_EQ(_KepThreadTableCount(), 1) << "the running thread keeps its slot";
  release = true;
  other.join();
  EXPECT_EQ(gWordsDestroyed.load(), 2);
  EXPECT_EQ(gLastWord.load(), 0x155u);
  EXPECT_EQ(_KepThreadTableCount(), 0);
  EXPECT_EQ(_KepMMTestLiveHandles(), 0u) << "a clean shutdown";
}
