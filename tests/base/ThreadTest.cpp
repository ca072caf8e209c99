// Thread objects, threads started by the process, runnables, the process thread
// table and the thread-data words kept in it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "kep/Kep.h"
#include "support/KepTestSupport.h"

namespace {

using keptest::eventually;

int ownId() { return static_cast<int>(static_cast<uint32_t>(_KepThrdId())); }

// Brings the library up for one test and checks, before taking it down, that
// every thread the test started has gone: no control block left and the thread
// table empty.
class Threads : public ::testing::Test {
 protected:
  void SetUp() override { handles_ = _KepMMTestLiveHandles(); }
  void TearDown() override {
    EXPECT_TRUE(eventually([&] { return _KepMMTestLiveHandles() == handles_; }))
        << "a control block was left behind";
    EXPECT_TRUE(eventually([&] { return _KepThreadTableCount() == 0; }))
        << "the thread table is not empty: " << _KepThreadTableCount();
  }
  keptest::ScopedKepInit init_;
  unsigned long handles_ = 0;
};

// A runnable outer object: records what its thread sees and runs until it is
// told to stop (command 4) or released.
class Job : public KepRunnable {
 public:
  Job() : KepRunnable(nullptr, KepClassIdArg(KepClassID::Runnable)) { ++live; }
  ~Job() override { --live; }
  unsigned long isBridge() const override { return 0; }

  int run() override {
    KepThread* me = KepProcess::getCurrThread();
    if (me == nullptr) return -1;
    threadId = me->getThreadID();
    name = me->getThreadName().toStdString();
    if (destroyItself) {
      me->destroyThread();  // returns at once
      commandAfterSelfDestroy = me->getCommand();
    }
    if (wordDestroy != nullptr) KepRSharedData::set(KEP_SCOPE_THREAD, 4, 0x4321, wordDestroy);
    running = true;
    while (!release.load()) {
      if (me->getCommand() & KEP_THRD_COMMAND_STOP) {
        stopped = true;
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return 1;
  }

  std::atomic<bool> running{false};
  std::atomic<bool> release{false};
  std::atomic<bool> stopped{false};
  std::atomic<int> threadId{0};
  std::atomic<int> commandAfterSelfDestroy{0};
  bool destroyItself = false;
  void (*wordDestroy)(void*) = nullptr;
  std::string name;
  static std::atomic<int> live;
};
std::atomic<int> Job::live{0};

std::atomic<int> gWordsDestroyed{0};
std::atomic<uintptr_t> gLastWord{0};
void countWord(void* word) {
  gLastWord = reinterpret_cast<uintptr_t>(word);
  ++gWordsDestroyed;
}

// A thread object with a chosen id, to place registrations in the table.
class FixedIdThread : public KepRThread {
 public:
  explicit FixedIdThread(int id) : id_(id) {}
  int getThreadID() const override { return id_; }

 private:
  int id_;
};

int registrationHome(int id) {
  return static_cast<int>(static_cast<uint64_t>(static_cast<int64_t>(id)) % KEP_THREAD_TABLE_SLOTS);
}

}  // namespace

TEST(ThreadObject, WithoutTheLibraryThereIsNoTableAndNullHandlesAnswerNeutrally) {
  EXPECT_EQ(KepProcess::getCurrThread(), nullptr);
  EXPECT_EQ(_KepGetCurrThreadData(), nullptr);
  EXPECT_EQ(_KepProcessThreadTable(), nullptr);
  KepThread none;
  KepProcess::_addThreadToArray(none);  // ignored
  EXPECT_EQ(_KepThreadTableCount(), 0);
  none.destroyThread();
  none.setCommand(4);
  EXPECT_EQ(none.getCommand(), 0);
  EXPECT_EQ(none.getThreadID(), 0);
  EXPECT_TRUE(none.getThreadName().isNull());
  KepProcess::destroyThread(none);  // nothing to do
  EXPECT_EQ(KepRunnable().run(), 0);
}

TEST_F(Threads, ForeignThreadsAreAdoptedWithAFreshThreadObject) {
  std::thread([] {
    EXPECT_EQ(_KepThreadTableCount(), 0);
    KepThread* me = KepProcess::getCurrThread();
    ASSERT_NE(me, nullptr);
    EXPECT_EQ(KepProcess::getCurrThread(), me) << "found again in its slot";
    EXPECT_EQ(_KepThreadTableCount(), 1);
    EXPECT_EQ(me->getThreadID(), ownId());
    EXPECT_EQ(me->getStatus(), 0) << "no control block";
    EXPECT_EQ(me->getCreateFlags(), 0);
    EXPECT_EQ(me->getThreadName().toStdString(), "");
    me->setCommand(4);
    EXPECT_EQ(me->getCommand(), 0);
    me->destroyThread();  // no control block: nothing
    EXPECT_NE(_KepGetCurrThreadData(), nullptr);
  }).join();
  // The thread's end freed its slot (checked by the fixture).
}

TEST_F(Threads, ProcedureThreadsRunReleaseTheirBlockAndLeaveTheTable) {
  struct Seen {
    std::atomic<bool> release{false};
    std::atomic<int> id{0};
    std::atomic<int> status{0};
  } seen;
  auto procedure = [](void* argument) -> int {
    auto* s = static_cast<Seen*>(argument);
    KepThread* me = KepProcess::getCurrThread();
    s->status = me->getStatus();
    s->id = me->getThreadID();  // last: the test waits for it before reading the rest
    while (!s->release.load()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return 7;
  };
  KepThread thread = KepProcess::createThread(procedure, &seen);
  ASSERT_FALSE(thread.isNull());
  EXPECT_EQ(thread.getCreateFlags(), 8) << "steerable at once, before the thread bound itself";
  ASSERT_TRUE(eventually([&] { return seen.id.load() != 0; }));
  EXPECT_EQ(seen.id.load(), thread.getThreadID());
  EXPECT_EQ(seen.status.load(), 1);
  EXPECT_EQ(_KepThreadTableCount(), 1);
  seen.release = true;
  ASSERT_TRUE(eventually([&] { return _KepMMTestLiveHandles() == handles_; }));
  EXPECT_EQ(thread.getStatus(), 0) << "the block is gone";
  EXPECT_EQ(thread.getThreadID(), 0) << "it left the table";
  EXPECT_TRUE(KepProcess::createThread(nullptr, nullptr).isNull());
}

TEST_F(Threads, RunnableThreadKeepsItsNameAndStopsWhenDestroyedFromAnotherThread) {
  for (int flags : {0, 4}) {
    auto* job = new Job;
    KepRunnable keep(job);  // keeps the job for the checks after the thread ended
    KepThread thread =
        KepProcess::createThread(flags, KepString("a-name-much-longer-than-23-chars"), *job, 5);
    ASSERT_FALSE(thread.isNull());
    ASSERT_TRUE(eventually([&] { return job->running.load(); }));
    EXPECT_EQ(job->name, "a-name-much-longer-than");
    EXPECT_EQ(thread.getThreadName().toStdString(), "a-name-much-longer-than");
    EXPECT_EQ(job->threadId.load(), thread.getThreadID());
    EXPECT_EQ(thread.getCreateFlags(), flags);
    EXPECT_EQ(thread.getStatus(), flags == 4 ? 17 : 1) << "status with and without flag 4";
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
}

TEST_F(Threads, DestroyThreadCalledOnItselfReturnsAtOnceWithCommand8) {
  auto* job = new Job;
  job->destroyItself = true;
  KepThread thread = KepProcess::createThread(0, KepString("self"), *job, 0);
  ASSERT_TRUE(eventually([&] { return job->running.load(); }));
  EXPECT_EQ(job->commandAfterSelfDestroy.load() & 8, 8);
  EXPECT_EQ(thread.getStatus(), 1) << "still running";
  job->release = true;
  thread.destroyThread();  // from here: waits for the end, frees the block
  EXPECT_EQ(thread.getStatus(), 0);
  EXPECT_EQ(_KepMMTestLiveHandles(), handles_);
}

TEST_F(Threads, HundredsOfThreadsStartAndEndRunningTheirDestroyFunctions) {
  gWordsDestroyed = 0;
  constexpr int kProcedures = 300;
  constexpr int kRunnables = 60;
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
    auto* job = new Job;
    job->wordDestroy = countWord;
    jobs.push_back(job);
    runnables.push_back(KepProcess::createThread(i % 2 == 0 ? 0 : 4, KepString("r"), *job, i));
  }
  for (Job* job : jobs) ASSERT_TRUE(eventually([job] { return job->running.load(); }));
  for (Job* job : jobs) job->release = true;
  for (KepThread& t : runnables) KepProcess::destroyThread(t);
  ASSERT_TRUE(eventually([] { return gWordsDestroyed.load() == kProcedures + kRunnables; }));
  ASSERT_TRUE(eventually([] { return _KepThreadTableCount() == 0; }));
  int slot = 0;
  void* value = nullptr;
  EXPECT_EQ(_KepGetNextThreadData(slot, 1, value), 0) << "no slot is in use";
  EXPECT_TRUE(eventually([] { return Job::live.load() == 0; }));
}

TEST_F(Threads, RegistrationProbesFromTheSignExtendedHomeAndWrapsOnce) {
  _KepThreadNode* table = _KepProcessThreadTable();
  ASSERT_NE(table, nullptr);
  int const last = KEP_THREAD_TABLE_SLOTS - 1;
  // Three ids sharing one home, one at the top of the table whose neighbour
  // wraps to slot 0, and a negative one.
  std::vector<int> ids = {1000, 1000 + KEP_THREAD_TABLE_SLOTS, 1000 + 2 * KEP_THREAD_TABLE_SLOTS,
                          last, last + KEP_THREAD_TABLE_SLOTS, -3};
  std::vector<int> slots = {1000, 1001, 1002, last, 0, registrationHome(-3)};
  ASSERT_EQ(registrationHome(-3), static_cast<int>((UINT64_MAX - 2) % KEP_THREAD_TABLE_SLOTS));
  std::vector<KepThread> threads;
  for (size_t i = 0; i < ids.size(); ++i) {
    threads.emplace_back(new FixedIdThread(ids[i]));
    KepProcess::_addThreadToArray(threads.back());
    EXPECT_EQ(static_cast<int>(table[slots[i]].id.load()), ids[i]);
    EXPECT_EQ(LookThroughArray(ids[i], table, nullptr), slots[i]);
  }
  int sawFree = 0;
  EXPECT_EQ(LookThroughArray(5, table, &sawFree), -1);
  EXPECT_EQ(sawFree, 1);
  EXPECT_EQ(LookThroughArray(0, table, &sawFree), -1) << "0 marks free slots, never a thread";

  // Words of slots registered by another thread: written from outside, walked
  // in slot order, and destroyed at removal on the remover.
  gWordsDestroyed = 0;
  _KepSetThreadData(1001, 3, reinterpret_cast<void*>(0x77));
  table[1001].destroyFunctions[3] = countWord;
  _KepSetThreadData(1003, 3, reinterpret_cast<void*>(0x88));  // not in use: ignored
  EXPECT_EQ(table[1003].data[3].load(), nullptr);
  std::vector<int> walked;
  void* value = nullptr;
  for (int slot = 0; _KepGetNextThreadData(slot, 3, value) != 0; ++slot) walked.push_back(slot);
  EXPECT_EQ(walked, (std::vector<int>{0, 1000, 1001, 1002, registrationHome(-3), last}));
  KepProcess::_removeThreadFromArray(threads[1]);
  EXPECT_EQ(gWordsDestroyed.load(), 1);
  EXPECT_EQ(gLastWord.load(), 0x77u);
  EXPECT_TRUE(table[1001].thread.isNull());
  EXPECT_EQ(LookThroughArray(ids[2], table, nullptr), 1002) << "found past the freed slot";
  for (KepThread& t : threads) KepProcess::_removeThreadFromArray(t);
  EXPECT_EQ(_KepThreadTableCount(), 0);
}

TEST(ThreadShutdown, DestroyFunctionsOfTheCallerRunAtShutdownAndOfOthersAtTheirEnd) {
  Kep::init(0, KepLogger::kConsole);
  gWordsDestroyed = 0;
  std::atomic<bool> registered{false};
  std::atomic<bool> release{false};
  std::thread other([&] {
    KepRSharedData::set(KEP_SCOPE_THREAD, 5, 0x55, countWord);
    registered = true;
    while (!release.load()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  ASSERT_TRUE(eventually([&] { return registered.load(); }));

  // A thread that has no slot gets no destroy-function words, and says so.
  testing::internal::CaptureStderr();
  EXPECT_EQ(_KepGetCurrThreadDataDestroyFunctions(), nullptr);
  std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("index is -1 in get destory function"), std::string::npos) << log;

  KepRSharedData::set(KEP_SCOPE_THREAD, 5, 0x66, countWord);
  KepThread* mine = KepProcess::getCurrThread();
  ASSERT_NE(mine, nullptr);
  Kep::destroy();
  EXPECT_EQ(gWordsDestroyed.load(), 1);
  EXPECT_EQ(gLastWord.load(), 0x66u) << "the caller's words at shut-down";
  EXPECT_TRUE(mine->isNull()) << "the caller's slot was emptied";
  EXPECT_EQ(_KepThreadTableCount(), 1) << "the running thread keeps its slot";
  release = true;
  other.join();
  EXPECT_EQ(gWordsDestroyed.load(), 2);
  EXPECT_EQ(gLastWord.load(), 0x55u);
  EXPECT_EQ(_KepThreadTableCount(), 0);
  EXPECT_EQ(_KepMMTestLiveHandles(), 0u) << "a clean shutdown";
}
